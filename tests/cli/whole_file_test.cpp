#include "batch/whole_file.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "options/program_error.h"
#include "photo/sample_pictures.h"

namespace vistaTrim::cli {
namespace {

using photo::ReadText;
using photo::TempFolder;
using photo::WriteText;
using Words = std::vector<std::string>;

std::string FaultOf(const std::string& target, bool replace)
{
    try {
        WriteWholeFile(target, replace, "new");
    } catch (const ProgramError& error) {
        return error.what();
    }
    return "none";
}

TEST(WholeFile, IsHiddenUntilItIsWhole)
{
    const TempFolder folder;
    WholeFile file(folder.Path("a.png"), false);
    EXPECT_EQ(file.Target(), folder.Path("a.png"));
    const std::filesystem::path temporary = file.TemporaryPath();
    EXPECT_EQ(temporary.parent_path(), std::filesystem::path(folder.Path("a.png")).parent_path());
    EXPECT_EQ(temporary.filename().string()[0], '.');
    EXPECT_EQ(temporary.extension(), ".png");
    EXPECT_NE(WholeFile(folder.Path("b.png"), false).TemporaryPath(),
              WholeFile(folder.Path("b.png"), false).TemporaryPath());
    WriteText(file.TemporaryPath(), "text");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("a.png")));
    file.Appear();
    EXPECT_EQ(ReadText(folder.Path("a.png")), "text");
    EXPECT_EQ(folder.Files(), (Words{"a.png"}));
}

TEST(WholeFile, ThatNeverAppearsLeavesNothing)
{
    const TempFolder folder;
    {
        WholeFile file(folder.Path("a.png"), false);
        WriteText(file.TemporaryPath(), "half");
        EXPECT_FALSE(folder.Files().empty());
    }
    EXPECT_TRUE(folder.Files().empty());
}

TEST(WholeFile, ReplacesOnlyIfAllowed)
{
    const TempFolder folder;
    WriteText(folder.Path("a"), "old");
    EXPECT_EQ(FaultOf(folder.Path("a"), false),
              folder.Path("a") + " exists already; --force replaces it");
    EXPECT_EQ(ReadText(folder.Path("a")), "old");
    EXPECT_EQ(FaultOf(folder.Path("a"), true), "none");
    EXPECT_EQ(ReadText(folder.Path("a")), "new");
    EXPECT_EQ(FaultOf(folder.Path("b"), false), "none");
    EXPECT_EQ(ReadText(folder.Path("b")), "new");
}

// Between the check and the end of the work another program can write the file.
TEST(WholeFile, NeverReplacesAFileThatAppearedMeanwhile)
{
    const TempFolder folder;
    {
        WholeFile file(folder.Path("a"), false);
        WriteText(file.TemporaryPath(), "mine");
        WriteText(folder.Path("a"), "theirs");
        EXPECT_THROW(file.Appear(), ProgramError);
    }
    EXPECT_EQ(ReadText(folder.Path("a")), "theirs");
    EXPECT_EQ(folder.Files(), (Words{"a"}));
}

TEST(WholeFile, SaysWhyItCannotBeWritten)
{
    const TempFolder folder;
    for (const bool replace : {false, true}) {
        EXPECT_EQ(FaultOf(folder.Path("none/a"), replace),
                  "cannot write " + folder.Path("none/a") + ": No such file or directory");
    }
    // The text is written, but a folder is in the way.
    std::filesystem::create_directories(folder.Path("full/of"));
    EXPECT_EQ(FaultOf(folder.Path("full"), true),
              "cannot write " + folder.Path("full") + ": Is a directory");
    EXPECT_TRUE(folder.Files().empty());
}

} // namespace
} // namespace vistaTrim::cli
