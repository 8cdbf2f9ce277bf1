// Which files of a folder the program reads.
#include <algorithm>
#include <filesystem>
#include <sstream>

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
        // Its lists fit a terminal of 80 columns and use most of it.
        std::istringstream lines(outcome.Out);
        size_t longest = 0;
        bool isList = false;
        for (std::string line; std::getline(lines, line);) {
            isList = isList || line.rfind("Presets:", 0) == 0 || line.rfind("Reads ", 0) == 0;
            longest = isList ? std::max(longest, line.size()) : longest;
        }
        EXPECT_GT(longest, 70U);
        EXPECT_LE(longest, 80U);
    }
}

// Names, folders at every level and several lists in one run: each photograph appears once, in the
// order given, with its own error.
TEST(Folder, NamesAndListsTogetherKeepTheirOrder)
{
    const TempFolder folder;
    namespace fs = std::filesystem;
    for (const char* name : {"in/.cache", "in/empty", "in/locked", "in/one/two", "other", "none"})
        fs::create_directories(folder.Path(name));
    Quarters(90, 60).write_to_file(folder.Path("a.jpg").c_str());
    for (const char* name : {"in/.cache/h.jpg", "in/b.jpg", "in/locked/l.jpg", "in/one/c.jpg",
                             "in/one/two/d.jpg", "other/e.jpg", "f.jpg", "g.jpg", "g.jpg\r"})
        fs::copy_file(folder.Path("a.jpg"), folder.Path(name));
    fs::create_directory_symlink(folder.Path("in"), folder.Path("in/loop"));
    fs::create_directory_symlink(folder.Path("other"), folder.Path("in/link"));
    fs::permissions(folder.Path("in/locked"), fs::perms::none);
    fs::permissions(folder.Path(""), fs::perms(0755));
    const std::string mark = "\xEF\xBB\xBF";
    WriteText(folder.Path("l1"), mark + folder.Path("f.jpg") + "\r\n\n" + folder.Path("other"));
    WriteText(folder.Path("l2"), mark + folder.Path("g.jpg") + "\n");
    RunOptions nobody;
    nobody.AsNobody = true;
    const Outcome outcome =
        RunProgram({"suggest", "--csv", "-n", "1", "-r", "-j", "2", "--faces", "off",
                    folder.Path("a.jpg"), folder.Path("in"), folder.Path("none"), "--files-from",
                    folder.Path("l1"), "--files-from", folder.Path("l2")},
                   nobody);
    fs::permissions(folder.Path("in/locked"), fs::perms(0755));
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_THAT(FilesOf(outcome.Out, folder.Path("")),
                testing::ElementsAre("a.jpg", "in/b.jpg", "in/locked", "in/one/c.jpg",
                                     "in/one/two/d.jpg", "none", "f.jpg", "other/e.jpg", "g.jpg"));
    EXPECT_EQ(outcome.Err, "vistatrim: " + folder.Path("in/locked") + ": Permission denied\n" +
                               "vistatrim: " + folder.Path("none") +
                               ": no photograph in this folder or its subfolders\n");

    // Names that end in a null byte may contain any other byte.
    WriteText(folder.Path("l3"),
              folder.Path("g.jpg\r") + std::string(1, '\0') + folder.Path("f.jpg"));
    const Outcome nulls =
        RunProgram({"suggest", "--csv", "-n", "1", "-0", "--files-from", folder.Path("l3")});
    EXPECT_EQ(nulls.Status, 0) << nulls.Err;
    EXPECT_THAT(nulls.Out, HasSubstr("\"" + folder.Path("g.jpg\r") + "\","));

    // Every list is checked before the work starts.
    const Outcome missing = RunProgram(
        {"suggest", "--csv", "--files-from", folder.Path("l2"), "--files-from", folder.Path("l4")});
    EXPECT_EQ(missing.Status, 2);
    EXPECT_EQ(missing.Out, "");

    // The warning for a folder that is both read and written covers the second folder too.
    const Outcome both = RunProgram({"crop", "-n", "1", "-o", folder.Path("other"),
                                     folder.Path("in/one"), folder.Path("other")});
    EXPECT_EQ(both.Status, 0);
    EXPECT_EQ(both.Err, "vistatrim: " + folder.Path("other") +
                            " is both read and written: files of earlier runs in it count as "
                            "photographs\n");
}

} // namespace
} // namespace vistaTrim::cli
