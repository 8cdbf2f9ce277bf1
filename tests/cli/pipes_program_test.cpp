// Standard input and output, lists of names, chosen crops and sidecars.
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using nlohmann::json;
using vips::VImage;
using Words = std::vector<std::string>;

VImage Open(const std::string& path)
{
    return VImage::new_from_file(path.c_str());
}

class Pipes : public testing::Test {
protected:
    Pipes()
    {
        TheScene.write_to_file(Folder.Path("a.png").c_str());
    }

    const VImage TheScene = Scene(900, 600, 0.3, 0.6);
    TempFolder Folder;
};

TEST_F(Pipes, APhotographComesFromStandardInputAndItsBestCropGoesToStandardOutput)
{
    RunOptions input;
    input.Input = ReadText(Folder.Path("a.png"));
    const json fromFile = json::parse(RunProgram({"suggest", "--json", Folder.Path("a.png")}).Out);
    json fromInput = json::parse(RunProgram({"suggest", "--json", "-"}, input).Out);
    EXPECT_EQ(fromInput["file"], "-");
    EXPECT_EQ(fromInput["crops"], fromFile["crops"]);

    input.OutTo = Folder.Path("out.png");
    const Outcome outcome = RunProgram({"crop", "-", "-o", "-"}, input);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    const json best = fromFile["crops"][0];
    const VImage expected =
        TheScene.extract_area(best["x"], best["y"], best["width"], best["height"]);
    EXPECT_EQ((Open(Folder.Path("out.png")) - expected).abs().max(), 0.0);

    // Into a folder, too, under a fixed name.
    input.OutTo.clear();
    EXPECT_EQ(RunProgram({"crop", "-", "-n", "1", "-o", Folder.Path("dir")}, input).Out,
              Folder.Path("dir/stdin-1.png") + "\n");
}

TEST_F(Pipes, WhatStandardInputAndOutputCannotDoIsRefused)
{
    const Outcome nothing = RunProgram({"suggest", "-"});
    EXPECT_EQ(nothing.Status, 1);
    EXPECT_NE(nothing.Err.find("standard input: there is nothing to read"), std::string::npos)
        << nothing.Err;
    RunOptions list;
    list.Input = Folder.Path("a.png") + "\n";
    EXPECT_NE(RunProgram({"suggest", "-"}, list).Err.find("--files-from -"), std::string::npos);
    EXPECT_EQ(RunProgram({"suggest", "-", "--files-from", "-"}, list).Status, 2);
    const std::string a = Folder.Path("a.png");
    EXPECT_EQ(RunProgram({"crop", a, "-o", "-", "-n", "2"}).Status, 2);
    EXPECT_EQ(RunProgram({"crop", a, "-o", "-", "--manifest", Folder.Path("m")}).Status, 2);
    EXPECT_EQ(RunProgram({"crop", a, "-o", "-", "--widths", "5,6"}).Status, 2);
    const Outcome two = RunProgram({"crop", a, a, "-o", "-"});
    EXPECT_EQ(two.Status, 1);
    EXPECT_EQ(two.Out, "");
}

TEST_F(Pipes, NoPictureGoesToATerminal)
{
    RunOptions terminal;
    terminal.OutIsTerminal = true;
    const Outcome outcome = RunProgram({"crop", Folder.Path("a.png"), "-o", "-"}, terminal);
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Err.find("standard output is a terminal"), std::string::npos) << outcome.Err;
    EXPECT_EQ(outcome.Out, "");
}

TEST_F(Pipes, ListsOfNamesComeInEveryForm)
{
    std::filesystem::copy_file(Folder.Path("a.png"), Folder.Path("b.png"));
    const auto files = [this](const std::string& list, Words more) {
        WriteText(Folder.Path("list"), list);
        more.insert(more.begin(),
                    {"suggest", "--json", "-n", "1", "--files-from", Folder.Path("list")});
        Words names;
        std::istringstream lines(RunProgram(more).Out);
        for (std::string line; std::getline(lines, line);)
            names.push_back(std::filesystem::path(json::parse(line)["file"].get<std::string>())
                                .filename()
                                .string());
        return names;
    };
    const std::string a = Folder.Path("a.png");
    const std::string b = Folder.Path("b.png");
    const Words both = {"a.png", "b.png"};
    EXPECT_EQ(files(a + "\n" + b + "\n", {}), both);
    EXPECT_EQ(files("\xEF\xBB\xBF" + a + "\r\n\r\n" + b + "\r\n", {}), both); // from other systems
    EXPECT_EQ(files(a + std::string(1, '\0') + b + std::string(1, '\0'), {"-0"}), both);
    EXPECT_EQ(files(b + "\n", {a}), both); // in addition to names
}

TEST_F(Pipes, AnEmptyListSaysSo)
{
    const Outcome input = RunProgram({"suggest", "--files-from", "-"});
    EXPECT_EQ(input.Status, 1);
    EXPECT_EQ(input.Err, "vistatrim: standard input: the list names no photograph\n");
    WriteText(Folder.Path("list"), "\n\r\n");
    const Outcome file = RunProgram({"suggest", "--files-from", Folder.Path("list")});
    EXPECT_EQ(file.Status, 1);
    EXPECT_NE(file.Err.find("list: the list names no photograph"), std::string::npos);
    const Outcome none = RunProgram({"suggest", "--files-from", Folder.Path("none")});
    EXPECT_EQ(none.Status, 2);
    EXPECT_EQ(RunProgram({"suggest", "--files-from", Folder.Path("")}).Status, 2);
}

TEST_F(Pipes, FromCutsWhatAnEditedListSays)
{
    json line = json::parse(RunProgram({"suggest", "--json", Folder.Path("a.png")}).Out);
    json crop = line["crops"][2];
    crop["x"] = 10;
    crop["y"] = 20;
    crop["width"] = 301;
    crop["height"] = 203;
    line["crops"] = json::array({crop});
    RunOptions input;
    input.Input = line.dump() + "\n";
    const Outcome outcome = RunProgram({"crop", "--from", "-", "-o", Folder.Path("out")}, input);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(outcome.Out, Folder.Path("out/a-1.png") + "\n");
    const VImage written = Open(Folder.Path("out/a-1.png"));
    ASSERT_EQ(written.width(), 301);
    EXPECT_EQ((written - TheScene.extract_area(10, 20, 301, 203)).abs().max(), 0.0);
}

TEST_F(Pipes, FromAManifestCutsTheSameFilesAgain)
{
    const Outcome first =
        RunProgram({"crop", Folder.Path("a.png"), "-o", Folder.Path("one"), "--preset", "thumbnail",
                    "--preset", "wide", "-n", "2", "--manifest", Folder.Path("m.json")});
    ASSERT_EQ(first.Status, 0) << first.Err;
    const Outcome again = RunProgram({"crop", "--from", Folder.Path("m.json"), "-o",
                                      Folder.Path("two"), "--manifest", Folder.Path("n.json")});
    ASSERT_EQ(again.Status, 0) << again.Err;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(Folder.Path("one"))) {
        const std::string name = entry.path().filename().string();
        if (name[0] == '.')
            continue;
        EXPECT_TRUE(ReadText(entry.path().string()) == ReadText(Folder.Path("two/" + name)))
            << name;
        ++files;
    }
    EXPECT_EQ(files, 4);
    EXPECT_EQ(json::parse(ReadText(Folder.Path("n.json")))[0]["crops"][0]["scores"],
              json::parse(ReadText(Folder.Path("m.json")))[0]["crops"][0]["scores"]);
}

TEST_F(Pipes, FromRefusesWhatDoesNotFitBeforeAnythingIsWritten)
{
    const std::string a = Folder.Path("a.png");
    const auto from = [this](const std::string& text) {
        WriteText(Folder.Path("c.json"), text);
        return RunProgram({"crop", "--from", Folder.Path("c.json"), "-o", Folder.Path("out")});
    };
    const std::string good =
        "{\"file\":\"" + a + "\",\"crops\":[{\"x\":0,\"y\":0,\"width\":9,\"height\":9}]}\n";
    const Outcome outside =
        from(good + "{\"file\":\"b\",\"width\":5,\"height\":5,\"crops\":[{\"x\":0,\"y\":0,"
                    "\"width\":9,\"height\":9}]}\n");
    EXPECT_EQ(outside.Status, 2);
    EXPECT_NE(outside.Err.find("c.json:2: crop 1: leaves the photograph"), std::string::npos)
        << outside.Err;
    EXPECT_EQ(from(good + good).Status, 1); // the same names twice
    EXPECT_FALSE(std::filesystem::exists(Folder.Path("out")));

    // Detected only when the photograph is opened.
    const Outcome other = from("{\"file\":\"" + a +
                               "\",\"width\":90,\"height\":60,\"crops\":[{\"x\":0,\"y\":0,"
                               "\"width\":9,\"height\":9}]}\n");
    EXPECT_EQ(other.Status, 1);
    EXPECT_NE(other.Err.find("is 900 x 600 pixels, but "), std::string::npos) << other.Err;
    const Outcome large =
        from("{\"file\":\"" + a + "\",\"crops\":[{\"x\":895,\"y\":0,\"width\":9,\"height\":9}]}\n");
    EXPECT_NE(large.Err.find("c.json:1: crop 1 leaves the photograph"), std::string::npos);
    EXPECT_NE(from("").Err.find("names no crops"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(Folder.Path("out")));

    EXPECT_EQ(RunProgram({"crop", "--from", "x", a, "-o", "out"}).Status, 2);
    EXPECT_EQ(RunProgram({"crop", "--from", "x", "--top", "2", "-o", "out"}).Status, 2);
    EXPECT_EQ(RunProgram({"crop", "--from", "x", "--fill", "2x2", "-o", "out"}).Status, 2);
    EXPECT_EQ(RunProgram({"crop", "--from", "x", "--aspect", "1:1", "-o", "out"}).Status, 2);
    EXPECT_EQ(RunProgram({"crop", "--from", "x", "--keep", "1,1,1,1", "-o", "out"}).Status, 2);
}

double FieldOf(const std::string& xmp, const std::string& name)
{
    const size_t at = xmp.find("crs:" + name + "=\"");
    return at == std::string::npos ? -1.0 : std::stod(xmp.substr(at + name.size() + 6));
}

TEST_F(Pipes, SidecarsHoldTheBestCropOfTheStoredPicture)
{
    StoredWithOrientation(Scene(900, 600, 0.3, 0.6), 6).write_to_file(Folder.Path("b.jpg").c_str());
    const std::string before = ReadText(Folder.Path("b.jpg"));
    const json line = json::parse(RunProgram({"suggest", "--json", Folder.Path("b.jpg")}).Out);
    const Words words = {"crop", Folder.Path("b.jpg"), "--xmp-only", "-o", Folder.Path("")};
    const Outcome outcome = RunProgram(words);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(Folder.Files(), (Words{".vistatrim.options", "a.png", "b.jpg", "b.xmp"}));
    const std::string xmp = ReadText(Folder.Path("b.xmp"));
    // Stored lying on its side: the upright left is the stored bottom.
    const json crop = line["crops"][0];
    const double x = crop["x"].get<double>() / 900.0;
    const double y = crop["y"].get<double>() / 600.0;
    EXPECT_NEAR(FieldOf(xmp, "CropBottom"), 1.0 - x, 1e-8);
    EXPECT_NEAR(FieldOf(xmp, "CropTop"), 1.0 - x - crop["width"].get<double>() / 900.0, 1e-8);
    EXPECT_NEAR(FieldOf(xmp, "CropLeft"), y, 1e-8);
    EXPECT_NEAR(FieldOf(xmp, "CropRight"), y + crop["height"].get<double>() / 600.0, 1e-8);
    EXPECT_TRUE(ReadText(Folder.Path("b.jpg")) == before);

    WriteText(Folder.Path("b.xmp"), "edits of years");
    EXPECT_EQ(RunProgram(words).Status, 1);
    EXPECT_EQ(ReadText(Folder.Path("b.xmp")), "edits of years");
    // Nor are the crops written if the sidecar cannot be.
    EXPECT_EQ(RunProgram({"crop", Folder.Path("b.jpg"), "--xmp", "-o", Folder.Path("")}).Status, 1);
    EXPECT_EQ(Folder.Files(), (Words{".vistatrim.options", "a.png", "b.jpg", "b.xmp"}));
    Words forced = words;
    forced.emplace_back("--force");
    EXPECT_EQ(RunProgram(forced).Status, 0);
    EXPECT_EQ(ReadText(Folder.Path("b.xmp")), xmp);
    EXPECT_EQ(
        RunProgram({"crop", Folder.Path("b.jpg"), "--xmp", "-n", "1", "-o", Folder.Path("new")})
            .Out,
        Folder.Path("new/b-1.jpg") + "\n" + Folder.Path("new/b.xmp") + "\n");
}

// The crops have the ranks, shapes and sizes of the list, and each crop is checked.
TEST_F(Pipes, FromTakesEachCropOfEachPhotographAsListed)
{
    TheScene.write_to_file(Folder.Path("b.jpg").c_str());
    const std::string text =
        R"([{"file": ")" + Folder.Path("a.png") + R"(", "width": 900, "height": 600, "crops": [)" +
        R"({"x": 1, "y": 2, "width": 300, "height": 200, "rank": 7},)" +
        R"({"x": 100, "y": 50, "width": 400, "height": 100, "shape": "wide", "rank": 3,)" +
        R"( "fill": {"width": 80, "height": 20}}]},)" + R"({"file": ")" + Folder.Path("b.jpg") +
        R"(", "crops": []},)" + "\n" + R"({"file": ")" + Folder.Path("b.jpg") + R"(", "crops": [)" +
        R"({"x": 0, "y": 0, "width": 9, "height": 9}, {"x": 0, "y": 0, "width": 8, "height": 9}]}])";
    RunOptions input;
    input.Input = text;
    const Outcome outcome = RunProgram({"crop", "--from", "-", "-o", Folder.Path("out")}, input);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(outcome.Out, Folder.Path("out/a-7.png") + "\n" + Folder.Path("out/a-wide-3.png") +
                               "\n" + Folder.Path("out/b-1.jpg") + "\n" +
                               Folder.Path("out/b-2.jpg") + "\n");
    const VImage seventh = Open(Folder.Path("out/a-7.png"));
    ASSERT_EQ(seventh.width(), 300);
    EXPECT_EQ((seventh - TheScene.extract_area(1, 2, 300, 200)).abs().max(), 0.0);
    EXPECT_EQ(Open(Folder.Path("out/a-wide-3.png")).width(), 80);
    EXPECT_EQ(Open(Folder.Path("out/a-wide-3.png")).height(), 20);
    EXPECT_EQ(Open(Folder.Path("out/b-2.jpg")).width(), 8);

    // An invalid crop or too many for standard output: none is written.
    const std::string two = R"({"file": ")" + Folder.Path("a.png") +
                            R"(", "crops": [{"x": 0, "y": 0, "width": 9, )" +
                            R"("height": 9}, {"x": 892, "y": 0, "width": 9, "height": 9}]})";
    input.Input = two;
    const Outcome outside = RunProgram({"crop", "--from", "-", "-o", Folder.Path("new")}, input);
    EXPECT_EQ(outside.Status, 1);
    EXPECT_EQ(outside.Err, "vistatrim: " + Folder.Path("a.png") +
                               ": standard input:1: crop 2 leaves the photograph, which is 900 x "
                               "600\n");
    input.Input = two;
    input.Input.replace(input.Input.find("892"), 3, "800");
    const Outcome many = RunProgram({"crop", "--from", "-", "-o", "-"}, input);
    EXPECT_EQ(many.Status, 1);
    EXPECT_EQ(many.Out, "");
    EXPECT_EQ(many.Err,
              "vistatrim: " + Folder.Path("a.png") + ": standard output takes one crop, not 2\n");

    // A photograph from standard input cannot be read twice.
    input.Input = R"({"file": "-", "crops": [{"x": 0, "y": 0, "width": 9, "height": 9}]})";
    const Outcome gone = RunProgram({"crop", "--from", "-", "-o", Folder.Path("new")}, input);
    EXPECT_EQ(gone.Status, 1);
    EXPECT_EQ(gone.Err,
              "vistatrim: standard input: a photograph from standard input cannot be read again\n");
}

// Only input that is not a picture at all can be a list of names.
TEST_F(Pipes, ABrokenPhotographOnStandardInputIsNotTakenForAList)
{
    RunOptions input;
    for (const size_t bytes : {20, 50, 2000}) {
        input.Input = ReadText(Folder.Path("a.png")).substr(0, bytes);
        const Outcome cut = RunProgram({"suggest", "-"}, input);
        EXPECT_EQ(cut.Status, 1);
        EXPECT_EQ(cut.Err.find("vistatrim: standard input: "), 0U) << cut.Err;
        EXPECT_EQ(cut.Err.find("--files-from"), std::string::npos) << cut.Err;
    }
}

} // namespace
} // namespace vistaTrim::cli
