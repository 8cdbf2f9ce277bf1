// The commands, and the formats of one command, show the same results for the same options.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

namespace fs = std::filesystem;
using nlohmann::json;
using vips::VImage;
using Words = std::vector<std::string>;

Words Joined(Words words, const Words& more)
{
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

Words LinesOf(const std::string& text)
{
    Words lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// The data of each photograph of a report, in the order of the page.
std::vector<json> DataOf(const std::string& page)
{
    const std::string start = "<script type=\"application/json\" class=\"data\">";
    std::vector<json> data;
    for (size_t at = page.find(start); at != std::string::npos; at = page.find(start, at)) {
        at += start.size();
        data.push_back(json::parse(page.substr(at, page.find("</script>", at) - at)));
    }
    return data;
}

std::string Fixed(double value, int decimals)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

// in/a.jpg and in/one/b.jpg, which differ, and room for outputs.
class CommandsAgree : public testing::Test {
protected:
    CommandsAgree()
    {
        fs::create_directories(Folder.Path("in/one"));
        Scene(300, 200, 0.3, 0.6).write_to_file(A.c_str());
        Scene(240, 320, 0.7, 0.3).write_to_file(B.c_str());
    }

    std::vector<json> Suggested(const Words& options) const
    {
        const Outcome outcome = RunProgram(Joined({"suggest", "--json"}, options));
        std::vector<json> lines;
        for (const std::string& line : LinesOf(outcome.Out))
            lines.push_back(json::parse(line));
        return lines;
    }

    const TempFolder Folder;
    const std::string A = Folder.Path("in/a.jpg");
    const std::string B = Folder.Path("in/one/b.jpg");
};

TEST_F(CommandsAgree, OnTheCropsOfEveryOption)
{
    WriteText(Folder.Path("regions.json"),
              "{\"file\":\"" + A +
                  "\",\"regions\":[{\"x\":210,\"y\":20,\"width\":60,\"height\":50}]}\n");
    const std::vector<Words> table = {
        {},
        {"--top", "3"},
        {"--weights", "0,1,0"},
        {"--rank-by", "border"},
        {"--rank-by", "engine"},
        {"--size", "120x90"},
        {"--aspect", "1:1", "--scale", "0.6"},
        {"--largest", "--density", "20"},
        {"--keep", "200,10,60,60", "--avoid", "0,100,80,80"},
        {"--must-keep", "200,10,60,60", "--must-avoid", "0,150,100,50"},
        {"--regions", Folder.Path("regions.json")},
        {"--each-ratio", "--aspect", "1:1", "--aspect", "21:9", "-n", "2"},
        {"--preset", "square", "--preset", "avatar", "--preset", "og-image"},
    };
    std::vector<json> all;
    for (const Words& row : table) {
        SCOPED_TRACE(testing::PrintToString(row));
        const Words options = Joined({A, "--faces", "off"}, row);
        const json line = Suggested(options).at(0);
        ASSERT_FALSE(line["crops"].empty());
        all.push_back(line["crops"]);

        const std::string manifest = Folder.Path("m.json");
        const Outcome cut = RunProgram(
            Joined({"crop", "-o", Folder.Path("out"), "--force", "--manifest", manifest}, options));
        ASSERT_EQ(cut.Status, 0) << cut.Err;
        json written = json::parse(ReadText(manifest)).at(0);
        ASSERT_EQ(written["crops"].size(), line["crops"].size());
        for (size_t i = 0; i < line["crops"].size(); ++i) {
            json& crop = written["crops"][i];
            ASSERT_EQ(crop["files"].size(), 1U);
            const VImage image =
                VImage::new_from_file(crop["files"][0]["file"].get<std::string>().c_str());
            const json& wanted = crop.contains("fill") ? crop["fill"] : crop;
            EXPECT_EQ(image.width(), wanted["width"]);
            EXPECT_EQ(image.height(), wanted["height"]);
            crop.erase("files");
        }
        EXPECT_EQ(written, line);

        const std::string page = Folder.Path("r.html");
        const Outcome report =
            RunProgram(Joined({"report", "-o", page, "--force", "--maps", "no"}, options));
        ASSERT_EQ(report.Status, 0) << report.Err;
        json shown = DataOf(ReadText(page)).at(0)["line"];
        json plain = line;
        plain.erase("regions");
        EXPECT_EQ(shown, plain);
    }
    // Every option changes something; otherwise, commands that ignore it would agree too.
    for (size_t i = 0; i < all.size(); ++i)
        for (size_t k = 0; k < i; ++k)
            EXPECT_NE(all[i], all[k]) << i << " " << k;
}

// The numbers on the page are those of `suggest --json --explain`.
TEST_F(CommandsAgree, OnThePageOfGoodAndBrokenPhotographs)
{
    WriteText(Folder.Path("in/broken.jpg"), "no picture");
    WriteText(Folder.Path("in/one/late.jpg"), "");
    Scene(1800, 1200, 0.3, 0.6).write_to_file(A.c_str()); // takes longer than those after it
    const Words options = {
        "-r", "--faces", "off", "--aspect", "3:2", "--aspect", "1:1",       "--scale",
        "1",  "-n",      "30",  "-j",       "3",   "--keep",   "10,10,9,9", Folder.Path("in")};
    const std::vector<json> lines = Suggested(Joined(options, {"--explain"}));
    ASSERT_EQ(lines.size(), 4U);
    const Outcome outcome =
        RunProgram(Joined({"report", "-o", Folder.Path("r.html"), "--maps", "no"}, options));
    EXPECT_EQ(outcome.Status, 1);
    const std::string page = ReadText(Folder.Path("r.html"));
    EXPECT_NE(page.find("4 photographs, 2 not readable."), std::string::npos);

    const std::vector<json> data = DataOf(page);
    ASSERT_EQ(data.size(), 2U);
    size_t at = 0;
    size_t good = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        const json& line = lines[i];
        SCOPED_TRACE(line["file"].get<std::string>());
        const bool failed = line.contains("error");
        at = page.find("<article class=\"photo" + std::string(failed ? " failed" : "") +
                           "\" id=\"photo-" + std::to_string(i + 1) + "\" data-file=\"" +
                           line["file"].get<std::string>() + "\">",
                       at);
        ASSERT_NE(at, std::string::npos);
        const std::string section = page.substr(at, page.find("</article>", at) - at);
        if (failed) {
            EXPECT_NE(section.find("<p>" + line["error"].get<std::string>() + "</p>"),
                      std::string::npos);
            EXPECT_NE(outcome.Err.find(": " + line["error"].get<std::string>() + "\n"),
                      std::string::npos);
            continue;
        }
        EXPECT_NE(section.find("<small>" + std::to_string(line["width"].get<int>()) + " &times; " +
                               std::to_string(line["height"].get<int>())),
                  std::string::npos);
        size_t item = section.find("<ol class=\"list\">");
        for (size_t rank = 0; rank < line["crops"].size(); ++rank) {
            const json& crop = line["crops"][rank];
            EXPECT_EQ(data[good]["ranks"][rank], crop["explain"]["ranks"]);
            const std::string text = "<li><b>" + std::to_string(rank + 1) + " &middot; " +
                                     crop["aspect"].get<std::string>() + "</b><span>" +
                                     std::to_string(crop["width"].get<int>()) + " &times; " +
                                     std::to_string(crop["height"].get<int>()) + " at " +
                                     std::to_string(crop["x"].get<int>()) + ", " +
                                     std::to_string(crop["y"].get<int>()) +
                                     "</span><span>expected overlap " +
                                     Fixed(crop["expectedOverlap"], 2) + "</span></li>";
            item = section.find(text, item);
            EXPECT_NE(item, std::string::npos) << text;
        }
        EXPECT_EQ(data[good]["candidates"], line["explain"]["passing"]);
        const std::string note = line["explain"]["note"];
        EXPECT_NE(note, ""); // there are fewer than thirty crops
        EXPECT_EQ(data[good]["note"], note);
        EXPECT_NE(section.find("<p>" + note + "</p>"), std::string::npos) << note;
        ++good;
    }
}

TEST_F(CommandsAgree, OnEveryFieldOfEachListFormat)
{
    const Words options = {
        "--faces", "off", "--each-ratio",          "--aspect", "1:1", "--aspect", "21:9", "-n",
        "2",       A,     Folder.Path("none.jpg"), B};
    const std::vector<json> lines = Suggested(options);
    ASSERT_EQ(lines.size(), 3U);
    const Words csv = LinesOf(RunProgram(Joined({"suggest", "--csv"}, options)).Out);
    const Words text = LinesOf(RunProgram(Joined({"suggest"}, options)).Out);
    ASSERT_EQ(csv.size(), 1 + 4 + 1 + 4U);
    ASSERT_EQ(text.size(), 2 * (2 + 4U)); // the failure is on standard error
    size_t row = 1;
    size_t shown = 0;
    for (const json& line : lines) {
        SCOPED_TRACE(line["file"].get<std::string>());
        if (line.contains("error")) {
            EXPECT_EQ(csv[row++], line["file"].get<std::string>() + std::string(18, ',') +
                                      line["error"].get<std::string>());
            continue;
        }
        const std::string width = std::to_string(line["width"].get<int>());
        const std::string height = std::to_string(line["height"].get<int>());
        EXPECT_EQ(text[shown++], line["file"].get<std::string>() + ": " + width + " x " + height);
        Words headings;
        std::istringstream heads(text[shown++]);
        for (std::string heading; heads >> heading;)
            headings.push_back(heading);
        EXPECT_EQ(headings, (Words{"#", "ratio", "x", "y", "width", "height", "expect", "merged",
                                   "comp", "cover", "border", "peak", "centre", "roi", "content"}));
        for (size_t i = 0; i < line["crops"].size(); ++i, ++row, ++shown) {
            const json& crop = line["crops"][i];
            const json& scores = crop["scores"];
            EXPECT_EQ(crop["rank"], 1 + i % 2); // within its ratio
            const bool covers = crop["coversContent"];
            Words fields;
            std::istringstream record(csv[row]);
            for (std::string field; std::getline(record, field, ',');)
                fields.push_back(field);
            Words first = {line["file"],
                           width,
                           height,
                           "4",
                           std::to_string(i + 1),
                           std::to_string(crop["x"].get<int>()),
                           std::to_string(crop["y"].get<int>()),
                           std::to_string(crop["width"].get<int>()),
                           std::to_string(crop["height"].get<int>()),
                           covers ? "true" : "false"};
            ASSERT_EQ(fields.size(), 18U);
            EXPECT_EQ(Words(fields.begin(), fields.begin() + 10), first);
            const std::pair<size_t, double> numbers[] = {
                {10, scores["composition"]}, {11, scores["coverage"]},     {12, scores["border"]},
                {13, scores["peak"]},        {14, scores["centrePeak"]},   {15, scores["roi"]},
                {16, scores["merged"]},      {17, crop["expectedOverlap"]}};
            for (const auto& [column, value] : numbers)
                EXPECT_EQ(std::stod(fields[column]), value) << column;

            Words cells;
            std::istringstream columns(text[shown]);
            for (std::string cell; columns >> cell;)
                cells.push_back(cell);
            EXPECT_EQ(cells, (Words{std::to_string(i + 1), i < 2 ? "1:1" : "21:9", first[5],
                                    first[6], first[7], first[8], Fixed(crop["expectedOverlap"], 4),
                                    Fixed(scores["merged"], 4), Fixed(scores["composition"], 4),
                                    Fixed(scores["coverage"], 4), Fixed(scores["border"], 4),
                                    Fixed(scores["peak"], 4), Fixed(scores["centrePeak"], 4),
                                    Fixed(scores["roi"], 4), covers ? "covered" : "-"}));
        }
    }
}

// Manifest, snippet, standard output and the files themselves, for folders with a broken
// photograph.
TEST_F(CommandsAgree, OnTheFilesOfFolders)
{
    WriteText(Folder.Path("in/one/broken.jpg"), "no picture");
    fs::create_directory(Folder.Path("web"));
    const Words options = {"-r", "--faces", "off", "-n", "2", "--aspect", "3:2", Folder.Path("in")};
    const Words files = {"--widths",
                         "50,120",
                         "--xmp",
                         "--manifest",
                         Folder.Path("m.json"),
                         "--picture",
                         Folder.Path("web/p.html"),
                         "--sizes",
                         "50vw",
                         "-o",
                         Folder.Path("out")};
    const Outcome outcome = RunProgram(Joined(Joined({"crop"}, options), files));
    EXPECT_EQ(outcome.Status, 1);
    Words names;
    for (const auto& [stem, crops] : {std::pair<std::string, int>{"a", 2}, {"one/b", 2}}) {
        for (int rank = 1; rank <= crops; ++rank)
            for (const char* width : {"50", "120"})
                names.push_back(
                    Folder.Path("out/" + stem + "-" + std::to_string(rank) + "-" + width + ".jpg"));
        names.push_back(Folder.Path("out/" + stem + ".xmp"));
    }
    EXPECT_EQ(LinesOf(outcome.Out), names);
    Words found;
    for (const auto& entry : fs::recursive_directory_iterator(Folder.Path("out")))
        if (entry.is_regular_file() && entry.path().filename().string()[0] != '.')
            found.push_back(entry.path().string());
    std::sort(found.begin(), found.end());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(found, names);

    std::vector<json> lines = Suggested(options);
    const json manifest = json::parse(ReadText(Folder.Path("m.json")));
    ASSERT_EQ(manifest.size(), 3U);
    ASSERT_EQ(lines.size(), 3U);
    for (size_t i = 0; i < lines.size(); ++i) {
        json line = manifest[i];
        if (line.contains("crops"))
            for (json& crop : line["crops"]) {
                ASSERT_EQ(crop["files"].size(), 2U);
                for (const json& file : crop["files"]) {
                    const VImage image =
                        VImage::new_from_file(file["file"].get<std::string>().c_str());
                    EXPECT_EQ(file["width"], image.width());
                    EXPECT_EQ(file["height"], image.height());
                }
                crop.erase("files");
            }
        EXPECT_EQ(line, lines[i]);
    }
    EXPECT_EQ(outcome.Err, "vistatrim: " + manifest[2]["file"].get<std::string>() + ": " +
                               manifest[2]["error"].get<std::string>() + "\n");

    // The snippet offers the files of the first crop of each, with addresses relative to the page.
    const std::string html = ReadText(Folder.Path("web/p.html"));
    const std::regex address("([^ \",]+\\.jpg) ([0-9]+)w");
    Words offered;
    for (std::sregex_iterator it(html.begin(), html.end(), address), end; it != end; ++it) {
        const fs::path file = fs::path(Folder.Path("web")) / (*it)[1].str();
        offered.push_back(file.lexically_normal().string());
        EXPECT_EQ(VImage::new_from_file(file.c_str()).width(), std::stoi((*it)[2]));
    }
    EXPECT_EQ(offered,
              (Words{Folder.Path("out/a-1-50.jpg"), Folder.Path("out/a-1-120.jpg"),
                     Folder.Path("out/one/b-1-50.jpg"), Folder.Path("out/one/b-1-120.jpg")}));
    EXPECT_EQ(html.find("100vw"), std::string::npos);
    EXPECT_NE(html.find(" sizes=\"50vw\" width=\"120\" height=\"80\" "), std::string::npos) << html;

    // The manifest can be read back as a list of crops, which gives the same files.
    const Outcome again =
        RunProgram({"crop", "--from", Folder.Path("m.json"), "--widths", "120", "--manifest",
                    Folder.Path("n.json"), "-o", Folder.Path("again")});
    EXPECT_EQ(again.Status, 0) << again.Err;
    EXPECT_TRUE(ReadText(Folder.Path("again/b-2-120.jpg")) ==
                ReadText(Folder.Path("out/one/b-2-120.jpg")));
    const json second = json::parse(ReadText(Folder.Path("n.json")));
    ASSERT_EQ(second.size(), 2U);
    for (size_t i = 0; i < 2; ++i)
        for (size_t k = 0; k < 2; ++k)
            for (const char* name :
                 {"x", "y", "width", "height", "aspect", "coversContent", "scores"})
                EXPECT_EQ(second[i]["crops"][k][name], lines[i]["crops"][k][name]) << name;
}

// Regions belong to the photograph at their path, even if another has the same name.
TEST_F(CommandsAgree, OnTheRegionsOfPhotographsWithTheSameName)
{
    fs::copy_file(A, Folder.Path("in/one/a.jpg"));
    const auto row = [](const std::string& file, const std::string& rect, const char* label) {
        return "{\"file\":\"" + file + "\",\"regions\":[{" + rect + ",\"label\":\"" + label +
               "\",\"kind\":\"animal\",\"confidence\":0.25,\"wish\":\"must-keep\"}]}\n";
    };
    WriteText(Folder.Path("r.json"), row(A, R"("x":200,"y":10,"width":80,"height":60)", "hen") +
                                         row(Folder.Path("in/one/a.jpg"),
                                             R"("x":5,"y":120,"width":80,"height":60)", "cock"));
    const Words options = {
        "-r", "-n", "1", "--faces", "off", "--regions", Folder.Path("r.json"), Folder.Path("in")};
    const std::vector<json> lines = Suggested(options);
    ASSERT_EQ(lines.size(), 3U); // one/b.jpg has none
    const json hen =
        json::parse(R"([{"x":200,"y":10,"width":80,"height":60,"kind":"animal","source":"file",)"
                    R"("confidence":0.25,"label":"hen","wish":"must-keep"}])");
    EXPECT_EQ(lines[0]["regions"], hen);
    EXPECT_EQ(lines[1]["regions"][0]["label"], "cock");
    EXPECT_FALSE(lines[2].contains("regions"));
    EXPECT_LE(lines[0]["crops"][0]["y"], 10);
    EXPECT_GE(lines[1]["crops"][0]["y"].get<int>() + lines[1]["crops"][0]["height"].get<int>(),
              180);
    EXPECT_EQ(RunProgram(Joined({"report", "-o", Folder.Path("r.html")}, options)).Status, 0);
    const std::vector<json> data = DataOf(ReadText(Folder.Path("r.html")));
    ASSERT_EQ(data.size(), 3U);
    EXPECT_EQ(data[0]["regions"][0]["label"], "hen");
    EXPECT_EQ(data[1]["regions"][0]["label"], "cock");
    EXPECT_TRUE(data[2]["regions"].empty());

    // The same holds if each shape has its own request.
    const std::vector<json> shapes =
        Suggested(Joined(options, {"--each-ratio", "--aspect", "1:1", "--aspect", "3:2"}));
    ASSERT_EQ(shapes.size(), 3U);
    EXPECT_EQ(shapes[0]["regions"], hen);

    // The file of regions need not name more than the last photograph.
    WriteText(Folder.Path("last.json"), row(B, R"("x":5,"y":120,"width":80,"height":60)", "fox"));
    const Words last = {"suggest",   "-n", "1", "--faces",   "off",
                        "--explain", A,    B,   "--regions", Folder.Path("last.json")};
    const Outcome outcome = RunProgram(last);
    EXPECT_EQ(outcome.Status, 0) << outcome.Err;
    EXPECT_EQ(outcome.Err, "");
    EXPECT_NE(outcome.Out.find("animal, must-keep 5,120,80,60"), std::string::npos) << outcome.Out;
}

} // namespace
} // namespace vistaTrim::cli
