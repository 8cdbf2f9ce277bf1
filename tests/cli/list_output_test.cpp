// The list that suggest writes: to a new file, over another, after what an earlier run wrote.
#include "output/list_output.h"

#include <gtest/gtest.h>

#include "options/program_error.h"
#include "output/result_text.h"
#include "photo/sample_pictures.h"

namespace vistaTrim::cli {
namespace {

using photo::ReadText;
using photo::TempFolder;
using photo::WriteText;

PhotoResult ResultOf(const std::string& file)
{
    PhotoResult result;
    result.File = file;
    result.Found.Size = {400, 300};
    photo::Crop crop;
    crop.Rect = {1, 2, 30, 20};
    crop.Aspect = {3, 2};
    result.Found.Crops = {crop};
    return result;
}

std::string Of(ListFormat format, const PhotoResult& result)
{
    return format == ListFormat::Json  ? JsonLine(result)
           : format == ListFormat::Csv ? CsvLines(result)
                                       : PeopleText(result);
}

Options Into(const std::string& path, ListFormat format)
{
    Options options;
    options.Output = path;
    options.Format = format;
    return options;
}

class ListFiles : public testing::TestWithParam<ListFormat> {
protected:
    const ListFormat Format = GetParam();
    const std::string Header = Format == ListFormat::Csv ? CsvHeader() : "";
    const TempFolder Folder;
    const std::string Path = Folder.Path("list");
};

TEST_P(ListFiles, GrowResultByResult)
{
    ListOutput output(Into(Path, Format));
    EXPECT_EQ(ReadText(Path), Header);
    output.Write(ResultOf("a"));
    EXPECT_EQ(ReadText(Path), Header + Of(Format, ResultOf("a"))); // at once, not at the end
    output.Write(ResultOf("b"));
    EXPECT_EQ(ReadText(Path), Header + Of(Format, ResultOf("a")) + Of(Format, ResultOf("b")));
    const auto all = output.StillToDo({{"a", "", "", nullptr}, {"c", "", "", nullptr}});
    EXPECT_EQ(all.size(), 2U); // nothing was there before
}

TEST_P(ListFiles, AreReplacedOnlyIfAllowed)
{
    WriteText(Path, "precious and longer than what comes");
    EXPECT_THROW(ListOutput(Into(Path, Format)), ProgramError);
    EXPECT_EQ(ReadText(Path), "precious and longer than what comes");
    Options options = Into(Path, Format);
    options.Force = true;
    {
        ListOutput output(options);
        output.Write(ResultOf("a"));
    }
    EXPECT_EQ(ReadText(Path), Header + Of(Format, ResultOf("a")));
}

INSTANTIATE_TEST_SUITE_P(EachFormat, ListFiles,
                         testing::Values(ListFormat::Text, ListFormat::Json, ListFormat::Csv));

// The options refuse this too. A list that cannot be read back must not be emptied.
TEST(TextLists, AreNotResumed)
{
    const TempFolder folder;
    const std::string path = folder.Path("list");
    const std::string text = PeopleText(ResultOf("a"));
    WriteText(path, text);
    Options options = Into(path, ListFormat::Text);
    options.Resume = true;
    EXPECT_THROW(ListOutput{options}, ProgramError);
    EXPECT_EQ(ReadText(path), text);
}

class ResumedLists : public ListFiles {
protected:
    Options Resuming() const
    {
        Options options = Into(Path, Format);
        options.Resume = true;
        return options;
    }
};

TEST_P(ResumedLists, KeepWhatIsCompleteAndContinueAfterIt)
{
    PhotoResult failed;
    failed.File = "b";
    failed.Error = "broken";
    const std::string a = Of(Format, ResultOf("a"));
    const std::string c = Of(Format, ResultOf("c"));
    WriteText(Path, Header + a + Of(Format, failed) + c.substr(0, c.size() / 2));
    {
        ListOutput output(Resuming());
        EXPECT_EQ(ReadText(Path), Header + a); // the half line and the failure are gone
        const auto left = output.StillToDo(
            {{"a", "", "", nullptr}, {"b", "", "", nullptr}, {"c", "", "", nullptr}});
        ASSERT_EQ(left.size(), 2U);
        EXPECT_EQ(left[0].Path, "b");
        EXPECT_EQ(left[1].Path, "c");
        output.Write(ResultOf("b"));
    }
    EXPECT_EQ(ReadText(Path), Header + a + Of(Format, ResultOf("b")));
}

TEST_P(ResumedLists, OfNothingStartAfresh)
{
    {
        ListOutput output(Resuming()); // the file does not exist
        output.Write(ResultOf("a"));
    }
    EXPECT_EQ(ReadText(Path), Header + Of(Format, ResultOf("a")));
    WriteText(Path, "");
    {
        ListOutput output(Resuming());
        output.Write(ResultOf("a"));
    }
    EXPECT_EQ(ReadText(Path), Header + Of(Format, ResultOf("a")));
}

TEST_P(ResumedLists, OfAForeignFileAreRefusedByName)
{
    WriteText(Path, "dear diary\n");
    try {
        const ListOutput output(Resuming());
        FAIL() << "no error";
    } catch (const ProgramError& error) {
        EXPECT_EQ(std::string(error.what()).find(Path + " "), 0U) << error.what();
    }
    EXPECT_EQ(ReadText(Path), "dear diary\n");
}

INSTANTIATE_TEST_SUITE_P(EachFormat, ResumedLists,
                         testing::Values(ListFormat::Json, ListFormat::Csv));

TEST(ListOutput, SaysWhereItCannotWrite)
{
    const TempFolder folder;
    EXPECT_THROW(ListOutput(Into(folder.Path("none/list"), ListFormat::Json)), ProgramError);
    Options full = Into("/dev/full", ListFormat::Json);
    full.Force = true;
    try {
        ListOutput output(full);
        output.Write(ResultOf("a"));
        FAIL() << "no error";
    } catch (const ProgramError& error) {
        EXPECT_NE(std::string(error.what()).find("/dev/full"), std::string::npos) << error.what();
    }
}

// Taken for empty, it would lose what it holds.
TEST(ListOutput, GoesOnOnlyWithWhatItCanRead)
{
    Options options = Into("/proc/self/mem", ListFormat::Json); // opens, but reading fails
    options.Resume = true;
    try {
        ListOutput output(options);
        FAIL() << "no error";
    } catch (const ProgramError& error) {
        EXPECT_STREQ(error.what(), "cannot read /proc/self/mem: Input/output error");
    }
}

} // namespace
} // namespace vistaTrim::cli
