// Writes the inputs that the fuzzers of photo/ and cli/ start from: program_fuzz_seeds DIRECTORY
// creates one subdirectory per fuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <vips/vips8>

#include "output/result_text.h"
#include "text_examples.h"

using namespace vistaTrim::cli;
using namespace vistaTrim::photo;

namespace {

void Write(const std::filesystem::path& file, const std::string& bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

// One argument per line.
void WriteOptionSeeds(const std::filesystem::path& directory)
{
    const char* lines[] = {
        "suggest\na.jpg",
        "suggest\n-r\n-0\n--background\n#10ff00\n-j\n4\n-q\n--timings\nfolder\n-",
        "suggest\n-n\n7\n--rank-by\ncoverage\n--weights\n0.5,0.25,.25\na.jpg\nb.png",
        "suggest\n--weights\n1,2,3,4,5\n--aspect\n16:9\n--aspect\n2.35:1\n--aspect\n1.5\na",
        "suggest\n--scale\n0.5,1\n--scale\n.25\n--density\n40\n--json\n--explain\na.jpg",
        "suggest\n--csv\n-o\nout.csv\n--resume\na.jpg",
        "suggest\n--json\n-o\nout.json\n--force\na.jpg",
        "suggest\n--size\n1920x1080\n--keep\n1,2,3,4\n--must-keep\n0,0,10,10\na.jpg",
        "suggest\n--avoid\n5,6,7,8\n--avoid\n9,9,9,9\n--must-avoid\n100,100,1,1\na.jpg",
        "crop\n-o\nfolder\n--resize\n640x480\n--format\nwebp\n--quality\n80\n--strip\na.jpg",
        "crop\n-o\nfolder\n--resume\n--background=white\na.jpg",
        "report\n-o\npage.html\n--force\na.jpg",
        "maps\n-o\nfolder\n--background\nblack\na.jpg",
        "--help",
        "--version",
        "suggest\n--help",
        "suggest\n--\n-strange-name"};
    int number = 0;
    for (const char* line : lines)
        Write(directory / std::to_string(number++), line);
}

// The kind of text is the last byte; see the fuzzer.
void WriteFileSeeds(const std::filesystem::path& directory)
{
    PhotoResult result;
    result.File = "a \"strange\", name.jpg";
    result.Found.Size = {4000, 3000};
    for (int32_t i = 0; i < 3; ++i) {
        Crop crop;
        crop.Rect = {10 * i, 20, 1600, 900};
        crop.Aspect = {16, 9};
        crop.Scores.Composition = 0.125 * i;
        result.Found.Crops.push_back(crop);
    }
    PhotoResult failed;
    failed.File = "b.jpg";
    failed.Error = "the file is empty";
    const std::string json = JsonLine(result) + JsonLine(failed);
    const std::string csv = CsvLines(result) + CsvLines(failed);
    Write(directory / "json", json + '\1');
    Write(directory / "json_cut_short", json.substr(0, json.size() / 3) + '\1');
    Write(directory / "csv", CsvHeader() + csv + '\2');
    Write(directory / "csv_lines", csv + '\3');
    Write(directory / "csv_cut_short", csv.substr(0, csv.size() / 3) + '\3');
    Write(directory / "xmp", std::string("<x tiff:Orientation=\"6\"/><tiff:Orientation>8<") + '\4');
    Write(directory / "result",
          std::string("a name\\\\ and what failed") + std::string(40, '\7') + std::string(1, '\0'));
}

// The last byte says which text, and whether it is spoilt; see the fuzzer.
void WriteTextSeeds(const std::filesystem::path& directory)
{
    for (int32_t i = 0; i < fuzzing::kNumTextKinds; ++i) {
        const auto kind = static_cast<fuzzing::TextKind>(i);
        const std::string text = fuzzing::ExampleOf(kind);
        Write(directory / std::to_string(i), text + static_cast<char>(i));
        Write(directory / (std::to_string(i) + "_cut_short"),
              text.substr(0, text.size() / 2) + static_cast<char>(i));
        for (char word = 0; word < 8; ++word)
            Write(directory / (std::to_string(i) + "_spoilt_" + std::to_string(word)),
                  std::string(6, word) + static_cast<char>(i + fuzzing::kNumTextKinds));
    }
}

void WriteGeometrySeeds(const std::filesystem::path& directory)
{
    // The fuzzer reads numbers from the end; any bytes will do.
    for (int seed = 0; seed < 16; ++seed) {
        uint32_t state = static_cast<uint32_t>(seed);
        std::string bytes;
        for (int i = 0; i < 120; ++i) {
            state = state * 1664525U + 1013904223U;
            bytes.push_back(static_cast<char>(state >> 24));
        }
        Write(directory / std::to_string(seed), bytes);
    }
}

// Small pictures of every kind that readers distinguish: bands, depth, transparency, orientation.
void WritePhotographSeeds(const std::filesystem::path& directory)
{
    Write(directory / "p6.ppm", "P6\n4 3\n255\n" + std::string(36, 'x'));
    Write(directory / "p5.pgm", "P5\n5 2\n65535\n" + std::string(20, 'y'));
    const vips::VImage grey =
        vips::VImage::grey(24, 16, vips::VImage::option()->set("uchar", true));
    const vips::VImage colour =
        grey.bandjoin(grey.invert())
            .bandjoin(grey)
            .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    const vips::VImage clear = colour.bandjoin(grey);
    const vips::VImage deep =
        (colour * 257)
            .cast(VIPS_FORMAT_USHORT)
            .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16));
    vips::VImage turned = colour.copy();
    turned.set("orientation", 6);
    const std::pair<const char*, const vips::VImage*> pictures[] = {{"grey", &grey},
                                                                    {"colour", &colour},
                                                                    {"clear", &clear},
                                                                    {"deep", &deep},
                                                                    {"turned", &turned}};
    for (const auto& [name, image] : pictures)
        for (const char* ending : {".jpg", ".png", ".webp", ".tif", ".gif"})
            try {
                image->write_to_file((directory / (std::string(name) + ending)).c_str());
            } catch (const vips::VError&) {
                // Not every format supports every kind, and a build may lack a format.
                vips_error_clear();
            }
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2 || VIPS_INIT(arguments[0]) != 0) {
        std::fprintf(stderr, "usage: program_fuzz_seeds DIRECTORY\n");
        return 2;
    }
    const std::filesystem::path top = arguments[1];
    for (const char* name :
         {"cli_options", "cli_files", "cli_texts", "photo_geometry", "photo_bytes"})
        std::filesystem::create_directories(top / name);
    WriteOptionSeeds(top / "cli_options");
    WriteFileSeeds(top / "cli_files");
    WriteTextSeeds(top / "cli_texts");
    WriteGeometrySeeds(top / "photo_geometry");
    WritePhotographSeeds(top / "photo_bytes");
    vips_shutdown();
    return 0;
}
