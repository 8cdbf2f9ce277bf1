// Which files of a folder the program reads.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> FilesOf(const std::string& csv, const std::string& folder)
{
    std::vector<std::string> files;
    for (size_t at = csv.find(folder); at != std::string::npos; at = csv.find(folder, at + 1)) {
        const size_t begin = at + folder.size();
        const std::string name = csv.substr(begin, csv.find(',', begin) - begin);
        if (files.empty() || files.back() != name)
            files.push_back(name);
    }
    return files;
}

TEST(Folder, GivesPhotographsOfEveryReadableFormat)
{
    const TempFolder folder;
    Quarters(90, 60).write_to_file(folder.Path("b.jpg").c_str());
    const std::string jpeg = ReadText(folder.Path("b.jpg"));
    for (const char* name : {"a.jfif", "c", "IMG.2026", ".hidden.jpg", "f.jpg~"})
        WriteText(folder.Path(name), jpeg);
    Quarters(90, 60).write_to_file(folder.Path("d.jp2").c_str());
    WriteText(folder.Path("notes.txt"), "none");
    WriteText(folder.Path("raw.cr2"), "none");

    const Outcome outcome = RunProgram({"suggest", "--csv", "--top", "1", folder.Path("")});

    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_THAT(FilesOf(outcome.Out, folder.Path("")),
                testing::ElementsAre("IMG.2026", "a.jfif", "b.jpg", "c", "d.jp2"));
    EXPECT_EQ(outcome.Err,
              "vistatrim: skipped 3 files that are not photographs, or raw (1), and then "
              "to be developed to JPEG or TIFF first\n");
}

TEST(Folder, SaysHowManyFilesItSkipped)
{
    const TempFolder folder;
    Quarters(90, 60).write_to_file(folder.Path("b.jpg").c_str());
    const auto said = [&folder](const std::vector<std::string>& more) {
        std::vector<std::string> words = {"suggest", "--top", "1", folder.Path("")};
        words.insert(words.end(), more.begin(), more.end());
        return RunProgram(words).Err;
    };
    EXPECT_EQ(said({}), "");
    WriteText(folder.Path("notes.txt"), "none");
    EXPECT_EQ(said({}), "vistatrim: skipped 1 file that is not a photograph\n");
    EXPECT_EQ(said({"--quiet"}), "");
    WriteText(folder.Path("more.txt"), "none");
    EXPECT_EQ(said({}), "vistatrim: skipped 2 files that are not photographs\n");
    std::filesystem::remove(folder.Path("notes.txt"));
    std::filesystem::remove(folder.Path("more.txt"));
    WriteText(folder.Path("a.nef"), "none");
    EXPECT_EQ(said({}), "vistatrim: skipped 1 raw photograph, which has to be developed to JPEG or "
                        "TIFF first\n");
}

TEST(Help, ListsWhatCanBeRead)
{
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"--help"}, {"suggest", "--help"}, {"crop", "--help"}}) {
        const Outcome outcome = RunProgram(words);
        EXPECT_EQ(outcome.Status, 0);
        EXPECT_EQ(outcome.Err, "");
        EXPECT_THAT(outcome.Out, HasSubstr("PNG (png)"));
        EXPECT_THAT(outcome.Out, HasSubstr("jfif"));
        EXPECT_THAT(outcome.Out, Not(HasSubstr("svg")));
    }
}

} // namespace
} // namespace vistaTrim::cli
