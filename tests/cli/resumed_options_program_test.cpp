// --resume with options other than those of the existing output.
#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

class ResumedOptions : public testing::Test {
protected:
    ResumedOptions()
    {
        for (const char* name : {"a.jpg", "b.jpg"})
            Scene(300, 200, 0.3, 0.6).write_to_file(Folder.Path(name).c_str());
    }

    Outcome Run(const std::string& command, const Words& more) const
    {
        Words arguments = {command, "--faces", "off"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(arguments);
    }

    Outcome Crop(const std::string& photo, const Words& more) const
    {
        Words arguments = {Folder.Path(photo), "-o", Out};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run("crop", arguments);
    }

    std::string MadeWithOther(const std::string& output, const std::string& differences) const
    {
        return "vistatrim: " + output + " was made with other options: " + differences + "\n";
    }

    const TempFolder Folder;
    const std::string A = Folder.Path("a.jpg");
    const std::string B = Folder.Path("b.jpg");
    const std::string Out = Folder.Path("out");
};

TEST_F(ResumedOptions, OfAListAreRefusedByName)
{
    for (const char* format : {"--json", "--csv"}) {
        SCOPED_TRACE(format);
        const std::string list = Folder.Path(std::string("list") + format);
        ASSERT_EQ(Run("suggest", {format, "-o", list, "--top", "2", "--aspect", "16:9", A}).Status,
                  0);
        const std::string before = ReadText(list);
        const auto resume = [&](Words more) {
            more.insert(more.end(), {format, "-o", list, "--resume", A, B});
            return Run("suggest", more);
        };
        const Outcome other = resume({"--top", "3", "--largest"});
        EXPECT_EQ(other.Status, 1);
        EXPECT_EQ(other.Err,
                  MadeWithOther(list, "--aspect was 16x9 and is not given; --largest was not given "
                                      "and is given; --top was 2 and is 3"));
        EXPECT_EQ(ReadText(list), before);
        // Options that do not change the output may differ, and so may the spelling.
        const Outcome same = resume({"--top=2", "--aspect", "16/9", "-j", "1", "-q", "--timings"});
        EXPECT_EQ(same.Status, 0) << same.Err;
        EXPECT_EQ(ReadText(list).substr(0, before.size()), before);
        EXPECT_GT(ReadText(list).size(), before.size());
    }
}

TEST_F(ResumedOptions, CompareFilesByContentAndIgnoreExplicitDefaults)
{
    const std::string list = Folder.Path("list.json");
    const std::string regions = Folder.Path("r.json");
    const std::string row =
        "{\"file\":\"" + A + "\",\"regions\":[{\"x\":1,\"y\":1,\"width\":9,\"height\":9}]}\n";
    WriteText(regions, row);
    ASSERT_EQ(Run("suggest", {"--json", "-o", list, "--regions", regions, A}).Status, 0);
    const auto resume = [&](const std::string& file) {
        return Run("suggest",
                   {"--json", "-o", list, "--top", "5", "--resume", "--regions", file, A, B});
    };
    fs::rename(regions, Folder.Path("moved.json"));
    EXPECT_EQ(resume(Folder.Path("moved.json")).Status, 0);
    WriteText(regions, row + row);
    const Outcome changed = resume(regions);
    EXPECT_EQ(changed.Status, 1);
    EXPECT_NE(changed.Err.find("--regions was content "), std::string::npos) << changed.Err;
}

TEST_F(ResumedOptions, OfAnOutputWithoutARecordAreTrustedWithAMessage)
{
    const std::string list = Folder.Path("list.json");
    ASSERT_EQ(Run("suggest", {"--json", "-o", list, A}).Status, 0);
    ASSERT_TRUE(fs::remove(Folder.Path(".list.json.options")));
    const Outcome lines = Run("suggest", {"--json", "-o", list, "--resume", A, B});
    EXPECT_EQ(lines.Status, 0);
    EXPECT_EQ(lines.Err, "vistatrim: " + list +
                             " does not say with which options it was made; they are taken to be "
                             "those of this run\n");
    EXPECT_EQ(Run("suggest", {"--json", "-o", list, "--resume", A, B}).Err,
              "vistatrim: nothing left to do: " + list + " holds all the photographs\n");
    EXPECT_EQ(Run("suggest", {"--json", "-o", list, "--resume", "-q", A, B}).Err, "");

    ASSERT_EQ(Crop("a.jpg", {}).Status, 0);
    ASSERT_TRUE(fs::remove(Folder.Path("out/.vistatrim.options")));
    const Outcome crops = Crop("b.jpg", {"--resume"});
    EXPECT_EQ(crops.Status, 0);
    EXPECT_EQ(crops.Err, "vistatrim: " + Out +
                             " does not say with which options its crops were made; they are taken "
                             "to be those of this run\n");
    EXPECT_EQ(Crop("a.jpg", {"--resume"}).Err,
              "vistatrim: nothing left to do: " + Out + " holds all the crops\n");
    EXPECT_EQ(Crop("a.jpg", {"--resume", "-q"}).Err, "");
}

TEST_F(ResumedOptions, OfCropsAreRefusedByName)
{
    ASSERT_EQ(Crop("a.jpg", {"--quality", "80"}).Status, 0);
    const Outcome other = Crop("b.jpg", {"--resume", "--quality", "90", "--strip"});
    EXPECT_EQ(other.Status, 1);
    EXPECT_EQ(other.Err, MadeWithOther(Out, "--quality was 80 and is 90; --strip was not given and "
                                            "is given"));
    EXPECT_FALSE(fs::exists(Folder.Path("out/b-1.jpg")));
    EXPECT_EQ(Crop("b.jpg", {"--resume", "--quality", "80", "-j", "1"}).Err, "");
    EXPECT_TRUE(fs::exists(Folder.Path("out/b-1.jpg")));
}

TEST_F(ResumedOptions, OfRunsWithOtherFileNamesMayDiffer)
{
    const Words story = {"--preset", "story"};
    const Words square = {"--preset", "square", "--quality", "50"};
    ASSERT_EQ(Crop("a.jpg", story).Status, 0);
    ASSERT_EQ(Crop("a.jpg", square).Status, 0);
    for (Words again : {story, square}) {
        again.emplace_back("--resume");
        const Outcome outcome = Crop("b.jpg", again);
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    }
    const Outcome mixed = Crop("b.jpg", {"--preset", "story", "--quality", "50", "--resume"});
    EXPECT_EQ(mixed.Err, MadeWithOther(Out, "--quality was not given and is 50"));
    // Every recorded run counts, whichever was first.
    const Outcome later = Crop("b.jpg", {"--preset", "square", "--resume"});
    EXPECT_EQ(later.Status, 1);
    EXPECT_EQ(later.Err, MadeWithOther(Out, "--quality was 50 and is not given"));
}

TEST_F(ResumedOptions, CompareTheFormatByTheFileNamesThatItGives)
{
    ASSERT_EQ(Crop("a.jpg", {"--quality", "80"}).Status, 0);
    const Outcome same = Crop("a.jpg", {"--quality", "80", "--format", "jpeg", "--resume"});
    EXPECT_EQ(same.Status, 0);
    EXPECT_EQ(same.Err, "vistatrim: nothing left to do: " + Out + " holds all the crops\n");
    const Outcome other = Crop("a.jpg", {"--quality", "90", "--format", "jpg", "--resume"});
    EXPECT_EQ(other.Err, MadeWithOther(Out, "--quality was 80 and is 90"));
    // Files of another format do not affect these.
    const Outcome webp = Crop("a.jpg", {"--quality", "90", "--format", "webp", "--resume"});
    EXPECT_EQ(webp.Status, 0) << webp.Err;
    EXPECT_TRUE(fs::exists(Folder.Path("out/a-1.webp")));

    // As the first versions recorded it.
    WriteText(Folder.Path("out/.vistatrim.options"),
              R"({"format": "vistatrim-options", "version": 1, "runs": [
                  {"names": ["{stem}-1"], "options": {"--faces": "off", "--top": "5"}},
                  {"names": ["{stem}-1.png"],
                   "options": {"--faces": "off", "--format": "png", "--top": "3"}}]})");
    EXPECT_EQ(Crop("a.jpg", {"--top", "4", "--resume"}).Err,
              MadeWithOther(Out, "--top was 5 and is 4"));
    EXPECT_EQ(Crop("a.jpg", {"--resume"}).Status, 0);
    EXPECT_EQ(Crop("a.jpg", {"--top", "3", "--format", "png", "--resume"}).Status, 1); // as jpg
}

TEST_F(ResumedOptions, OfARunThatWroteNothingOrWasReplacedDoNotCount)
{
    const Words resume = {"--resume"};
    ASSERT_EQ(Crop("a.jpg", {}).Status, 0);
    ASSERT_EQ(Crop("a.jpg", {"--quality", "50"}).Status, 1); // exists already
    EXPECT_EQ(Crop("a.jpg", resume).Status, 0);
    ASSERT_EQ(Crop("a.jpg", {"--quality", "50", "--force"}).Status, 0);
    EXPECT_EQ(Crop("a.jpg", resume).Status, 1);
    EXPECT_EQ(Crop("a.jpg", {"--quality", "50", "--resume"}).Status, 0);
    // People who empty a folder overlook the hidden record.
    for (int rank = 1; rank <= 5; ++rank)
        fs::remove(Folder.Path("out/a-" + std::to_string(rank) + ".jpg"));
    EXPECT_EQ(Crop("a.jpg", resume).Status, 0);
    EXPECT_EQ(Crop("b.jpg", resume).Status, 0);
}

// Whichever file is missing is written again, and the others stay as they are.
TEST_F(ResumedOptions, EachMissingFileIsWrittenAgain)
{
    const Words files = {"out/a-1-100.jpg", "out/a-1-50.jpg", "out/a-2-100.jpg", "out/a-2-50.jpg",
                         "out/a.xmp"};
    const Words words = {"--top", "2", "--widths", "50,100", "--xmp"};
    ASSERT_EQ(Crop("a.jpg", words).Status, 0);
    Words again = words;
    again.emplace_back("--resume");
    EXPECT_EQ(Crop("a.jpg", again).Out, "");
    std::map<std::string, std::string> written;
    for (const std::string& file : files)
        written[file] = ReadText(Folder.Path(file));
    for (const std::string& missing : files) {
        SCOPED_TRACE(missing);
        for (const std::string& file : files)
            WriteText(Folder.Path(file), "retouched");
        ASSERT_TRUE(fs::remove(Folder.Path(missing)));
        const Outcome outcome = Crop("a.jpg", again);
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
        EXPECT_EQ(outcome.Out, Folder.Path(missing) + "\n");
        for (const std::string& file : files)
            EXPECT_TRUE(ReadText(Folder.Path(file)) ==
                        (file == missing ? written[file] : "retouched"))
                << file;
    }
}

TEST_F(ResumedOptions, CompareTheListOfChosenCropsByContent)
{
    const std::string choice = Folder.Path("choice.json");
    const auto write = [&](const std::string& width) {
        WriteText(choice, "{\"file\":\"" + A +
                              "\",\"crops\":[{\"x\":0,\"y\":0,\"height\":100,\"width\":" + width +
                              "}]}\n");
    };
    const Words cut = {"crop", "--from", choice, "-o", Out};
    write("100");
    ASSERT_EQ(RunProgram(cut).Status, 0);
    Words again = cut;
    again.emplace_back("--resume");
    EXPECT_EQ(RunProgram(again).Status, 0);
    write("120");
    const Outcome other = RunProgram(again);
    EXPECT_EQ(other.Status, 1);
    EXPECT_NE(other.Err.find(" was made with other options: --from was content "),
              std::string::npos)
        << other.Err;
}

// One by one, because each option is recorded separately. A row has the options of both runs, those
// of only the second, and the difference as the message states it.
TEST_F(ResumedOptions, OfEachKindThatChangesTheFilesAreRefused)
{
    const auto presets = [&](const char* name, const std::string& content) {
        WriteText(Folder.Path(name), content);
        return Folder.Path(name);
    };
    const std::string table = presets("mine.tsv", "poster\t2:3\n");
    struct Row {
        Words Both;
        Words More;
        std::string Difference;
    };
    const std::vector<Row> rows = {
        {{}, {"--background", "black"}, "--background was not given and is black"},
        {{}, {"--ignore-metadata-regions"}, "--ignore-metadata-regions was not given and is given"},
        {{}, {"--largest"}, "--largest was not given and is given"},
        {{}, {"--density", "9"}, "--density was not given and is 9"},
        {{}, {"--scale", "0.5,1", "--scale", "0.7"}, "--scale was not given and is 0.5,1,0.7"},
        {{}, {"--size", "90x60"}, "--size was not given and is 90x60"},
        {{}, {"--rank-by", "peak"}, "--rank-by was not given and is peak"},
        {{}, {"--weights", "1,0,0"}, "--weights was not given and is 1,0,0"},
        {{}, {"--resize", "50x50"}, "--resize was not given and is 50x50"},
        {{}, {"--chroma", "4:2:0"}, "--chroma was not given and is 4:2:0"},
        {{}, {"--quality", "7"}, "--quality was not given and is 7"},
        {{}, {"--strip"}, "--strip was not given and is given"},
        {{}, {"--xmp"}, "--xmp was not given and is given"},
        {{}, {"--name", "{stem}-{rank}"}, "--name was not given and is {stem}-{rank}"},
        {{}, {"--avoid", "1,2,3,4"}, "--avoid was not given and is 1,2,3,4"},
        {{}, {"--must-avoid", "1,2,3,4"}, "--must-avoid was not given and is 1,2,3,4"},
        {{}, {"--must-keep", "1,2,3,4"}, "--must-keep was not given and is 1,2,3,4"},
        {{"--keep", "1,2,3,4"}, {"--keep", "5,6,7,8"}, "--keep was 1,2,3,4 and is 1,2,3,4,5,6,7,8"},
        {{"--fill", "30x20"}, {"--fill", "40x20"}, "--fill was 30x20 and is 30x20,40x20"},
        {{"--preset", "square"}, {"--preset", "story"}, "--preset was square and is square,story"},
        {{"--widths", "50,5000"}, {"--upscale"}, "--upscale was not given and is given"},
        {{}, {"--presets", table}, "--presets was not given and is content "},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Difference);
        fs::remove_all(Out);
        Words both = {"-n", "1"};
        both.insert(both.end(), row.Both.begin(), row.Both.end());
        ASSERT_EQ(Crop("a.jpg", both).Status, 0);
        both.emplace_back("--resume");
        const Outcome same = Crop("a.jpg", both);
        EXPECT_EQ(same.Status, 0) << same.Err;
        both.insert(both.end(), row.More.begin(), row.More.end());
        const Outcome other = Crop("b.jpg", both);
        EXPECT_EQ(other.Status, 1);
        const std::string start =
            "vistatrim: " + Out + " was made with other options: " + row.Difference;
        EXPECT_EQ(other.Err.compare(0, start.size(), start), 0) << other.Err;
    }

    // A table of presets is compared by its content, whatever its path.
    fs::remove_all(Out);
    const auto poster = [&](const std::string& file) {
        return Crop("a.jpg", {"--preset", "poster", "--presets", file, "--resume"});
    };
    EXPECT_EQ(poster(table).Status, 0);
    EXPECT_EQ(poster(presets("moved.tsv", "poster\t2:3\n")).Status, 0);
    const Outcome changed = poster(presets("moved.tsv", "poster\t3:4\n"));
    EXPECT_EQ(changed.Status, 1);
    EXPECT_NE(changed.Err.find("--presets was content "), std::string::npos) << changed.Err;
}

TEST_F(ResumedOptions, OfEachOfSeveralRunsCountUntilAllItsFilesAreReplaced)
{
    const auto crop = [&](const std::string& photo, const std::string& preset,
                          const std::string& quality, Words more) {
        more.insert(more.end(), {"--preset", preset, "--quality", quality});
        return Crop(photo, more);
    };
    ASSERT_EQ(crop("a.jpg", "story", "50", {}).Status, 0);
    ASSERT_EQ(crop("a.jpg", "square", "60", {}).Status, 0);
    ASSERT_EQ(crop("a.jpg", "avatar", "70", {}).Status, 0);
    const auto refused = [&](const std::string& preset, const std::string& was,
                             const std::string& is) {
        const Outcome outcome = crop("b.jpg", preset, is, {"--resume"});
        EXPECT_EQ(outcome.Status, 1);
        EXPECT_EQ(outcome.Err, MadeWithOther(Out, "--quality was " + was + " and is " + is));
    };
    refused("story", "50", "60");
    refused("square", "60", "70");
    refused("avatar", "70", "50");
    // A run that failed on one photograph may have left files of another in place.
    EXPECT_EQ(crop("a.jpg", "square", "80", {"--force", Folder.Path("none.jpg")}).Status, 1);
    refused("square", "60", "80");
    // After a run without failures, only its options count for its files; the other runs still
    // count for theirs.
    EXPECT_EQ(crop("a.jpg", "square", "80", {"--force"}).Status, 0);
    EXPECT_EQ(crop("b.jpg", "square", "80", {"--resume"}).Status, 0);
    refused("square", "80", "60");
    refused("story", "50", "80");
    refused("avatar", "70", "80");
}

// The same options give other files in another format, so that is another run.
TEST_F(ResumedOptions, OfTheSameOptionsInSeveralFormatsAreSeveralRuns)
{
    ASSERT_EQ(Crop("a.jpg", {"--quality", "80"}).Status, 0);
    ASSERT_EQ(Crop("a.jpg", {"--quality", "80", "--format", "webp"}).Status, 0);
    EXPECT_EQ(Crop("b.jpg", {"--quality", "70", "--format", "webp", "--resume"}).Err,
              MadeWithOther(Out, "--quality was 80 and is 70"));
    // A run over photographs of several formats counts for each format.
    fs::remove_all(Out);
    Scene(300, 200, 0.3, 0.6).write_to_file(Folder.Path("c.png").c_str());
    ASSERT_EQ(Crop("a.jpg", {Folder.Path("c.png"), "-n", "2"}).Status, 0);
    EXPECT_EQ(Crop("b.jpg", {"-n", "3", "--resume"}).Err,
              MadeWithOther(Out, "--top was 2 and is 3"));
    EXPECT_EQ(Crop("c.png", {"-n", "3", "--resume"}).Err,
              MadeWithOther(Out, "--top was 2 and is 3"));
}

// Two lists side by side, whose names differ only in their endings.
TEST_F(ResumedOptions, OfTwoListsInAFolderAreSeparate)
{
    const auto list = [&](const char* format, const char* top, Words more) {
        more.insert(more.end(),
                    {format, "-n", top, "-o", Folder.Path(std::string("list.") + (format + 2)), A});
        return Run("suggest", more);
    };
    ASSERT_EQ(list("--json", "2", {}).Status, 0);
    ASSERT_EQ(list("--csv", "3", {}).Status, 0);
    EXPECT_EQ(list("--json", "2", {"--resume", B}).Status, 0);
    EXPECT_EQ(list("--csv", "3", {"--resume", B}).Status, 0);
    EXPECT_EQ(list("--json", "3", {"--resume", B}).Err,
              MadeWithOther(Folder.Path("list.json"), "--top was 2 and is 3"));
    // Once it is replaced, a list has only the options of the new run.
    EXPECT_EQ(list("--json", "4", {"--force"}).Status, 0);
    EXPECT_EQ(list("--json", "4", {"--resume", B}).Status, 0);
    EXPECT_EQ(list("--json", "2", {"--resume", B}).Err,
              MadeWithOther(Folder.Path("list.json"), "--top was 4 and is 2"));
}

// Failures are tried again and finished photographs are not, whatever their names, even if they
// have no crop.
TEST_F(ResumedOptions, TheListEndsUpAsIfNothingHadFailed)
{
    const std::string comma = Folder.Path("c, \"d\" \r.jpg");
    const std::string latin = Folder.Path("caf\xe9.jpg");
    for (const std::string& name : {comma, latin})
        fs::copy_file(A, name);
    for (const char* format : {"--json", "--csv"})
        for (const bool none : {false, true}) {
            SCOPED_TRACE(std::string(format) + (none ? " without crops" : ""));
            fs::remove(B);
            const std::string output =
                Folder.Path(std::string("list") + (none ? "0" : "") + format);
            // No square crop is as wide as the photograph.
            Words words = {format, "-n", "2", "--aspect", "1:1"};
            if (none)
                words.insert(words.end(), {"--must-keep", "0,0,300,9"});
            const auto run = [&](Words more, const Words& photos) {
                more.insert(more.end(), words.begin(), words.end());
                more.insert(more.end(), photos.begin(), photos.end());
                return Run("suggest", more);
            };
            EXPECT_EQ(run({"-o", output}, {comma, B, latin}).Status, 1);
            Scene(300, 200, 0.6, 0.3).write_to_file(B.c_str());
            const Outcome resumed = run({"-o", output, "--resume"}, {comma, B, latin, A});
            EXPECT_EQ(resumed.Status, 0) << resumed.Err;
            EXPECT_EQ(resumed.Err, "");
            // Those that did not fail come first.
            EXPECT_EQ(ReadText(output), run({}, {comma, latin, B, A}).Out);
            const Outcome again = run({"-o", output, "--resume"}, {A, B, latin, comma});
            EXPECT_EQ(again.Err,
                      "vistatrim: nothing left to do: " + output + " holds all the photographs\n");
            EXPECT_EQ(run({"-o", output, "--resume", "-q"}, {A, B, latin, comma}).Err, "");
        }
}

// "Nothing left to do" appears only if nothing was written, whichever photograph came last.
TEST_F(ResumedOptions, NothingIsLeftOnceEveryPhotographHasItsFiles)
{
    Words files;
    for (const char* stem : {"a", "b"})
        for (const char* end : {"-1-50", "-1-100", "-2-50", "-2-100"})
            files.push_back(std::string("out/") + stem + end + ".png");
    const Words words = {B, "-n", "2", "--widths", "50,100", "--format", "png", "--resume"};
    ASSERT_EQ(Crop("a.jpg", words).Status, 0);
    for (const std::string& gone : files) {
        SCOPED_TRACE(gone);
        const std::string before = ReadText(Folder.Path(gone));
        ASSERT_TRUE(fs::remove(Folder.Path(gone)));
        const Outcome outcome = Crop("a.jpg", words);
        EXPECT_EQ(outcome.Status, 0);
        EXPECT_EQ(outcome.Out, Folder.Path(gone) + "\n");
        EXPECT_EQ(outcome.Err, "");
        EXPECT_TRUE(ReadText(Folder.Path(gone)) == before);
    }
    const std::string done = "vistatrim: nothing left to do: " + Out + " holds all the crops\n";
    EXPECT_EQ(Crop("a.jpg", words).Err, done);
    Words quiet = words;
    quiet.emplace_back("-q");
    EXPECT_EQ(Crop("a.jpg", quiet).Err, "");
}

// Sidecars are in the folder of the crops of their photograph.
TEST_F(ResumedOptions, OnlyMissingSidecarsInFoldersAreWrittenAgain)
{
    fs::create_directories(Folder.Path("in/one"));
    fs::copy_file(A, Folder.Path("in/a.jpg"));
    fs::copy_file(B, Folder.Path("in/one/a.jpg"));
    const auto run = [&](const char* option) {
        return Run("crop", {"-r", "-n", "1", option, "--resume", "-o", Out, Folder.Path("in")});
    };
    EXPECT_EQ(run("--xmp").Out, Out + "/a-1.jpg\n" + Out + "/a.xmp\n" + Out + "/one/a-1.jpg\n" +
                                    Out + "/one/a.xmp\n");
    for (const char* gone : {"/a.xmp", "/one/a.xmp", "/one/a-1.jpg"}) {
        ASSERT_TRUE(fs::remove(Out + gone));
        EXPECT_EQ(run("--xmp").Out, Out + gone + "\n");
    }
    // Only sidecars, next to crops that another program wrote.
    fs::remove_all(Out);
    fs::create_directories(Out + "/one");
    WriteText(Out + "/a-1.jpg", "not of this program");
    EXPECT_EQ(run("--xmp-only").Out, Out + "/a.xmp\n" + Out + "/one/a.xmp\n");
    EXPECT_EQ(run("--xmp-only").Out, "");
}

} // namespace
} // namespace vistaTrim::cli
