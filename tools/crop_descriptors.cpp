// Writes the raw composition descriptors of crops that people judged, and of crops to compare them
// with, for the fit. Size must not leak into the fit, so a chosen crop is compared with crops of
// about equal area from the same photograph.
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "crop_tables.h"
#include "photo_loop.h"
#include "photo_reader.h"
#include "public/analysed_picture.h"
#include "vistaTrim/vistaTrim.h"

namespace {

struct Options {
    std::string Photos;
    std::string Boxes;
    std::string Pairs;
    std::string Split = "fit";
    std::string Output;
    uint32_t Seed = 1;
    int Rivals = 24;     // crops of about equal area per chosen crop
    int Candidates = 24; // crops from the default lattice per photograph
    int Workers = 1;
};

struct DescriptorRow {
    std::string Kind; // chosen, rival, pair or candidate
    int Group;        // number of the judgement within the photograph
    int Side;         // 0 or 1 of a pair
    double Votes;     // of a pair's crop
    bool EqualArea;   // whether a pair's crops have equal areas
    vistaTrim::CInt32CropRect Crop;
    std::vector<float> Values;
};

// Crops with about the chosen one's area (within a tenth) that clearly differ from it. Half keep
// its shape and only move; half change shape too.
std::vector<CropBox> DrawRivals(const CropBox& chosen, const WorkingPhoto& photo, int count,
                                std::mt19937& random)
{
    // Not std::uniform_real_distribution: its values differ between standard libraries.
    const auto draw = [&random](double low, double high) {
        return low + (high - low) * (static_cast<double>(random()) / 4294967296.0);
    };
    std::vector<CropBox> rivals;
    for (int attempt = 0; attempt < 40 * count && static_cast<int>(rivals.size()) < count;
         ++attempt) {
        const double area = chosen.Area() * draw(0.9, 1.1);
        double ratio = chosen.Width / chosen.Height;
        if (attempt % 2 == 1)
            ratio *= std::exp(draw(-0.6, 0.6));
        CropBox rival;
        rival.Width = std::sqrt(area * ratio);
        rival.Height = area / rival.Width;
        if (rival.Width > photo.Width || rival.Height > photo.Height)
            continue;
        rival.X = draw(0, photo.Width - rival.Width);
        rival.Y = draw(0, photo.Height - rival.Height);
        if (IntersectionOverUnion(rival, chosen) < 0.85)
            rivals.push_back(rival);
    }
    return rivals;
}

std::vector<vistaTrim::CInt32CropRect>
DefaultCandidates(const vistaTrim::CAnalysedPicture& analysed)
{
    const vistaTrim::VistaTrimParameters defaults;
    vistaTrim::IVistaTrim* driver = analysed.MakeDriver(defaults);
    vistaTrim::ICropRects* list = nullptr;
    const vistaTrim::SuggestionParameters everything;
    ComputeCropSuggestions(driver, &list, &everything);
    DestroyVistaTrimObj(driver);
    std::vector<vistaTrim::CInt32CropRect> crops(list->Data(), list->Data() + list->Count());
    list->Release();
    return crops;
}

std::vector<DescriptorRow> DescribePhoto(const JudgedPhoto& judged, const Options& options,
                                         size_t number)
{
    WorkingPhoto photo = ReadWorkingPhoto(options.Photos + "/" + judged.File);
    const int32_t offsets[4] = {0, 1, 2, 3};
    vistaTrim::IImage* image =
        CreateImageObj(static_cast<uint32_t>(photo.Height), static_cast<uint32_t>(photo.Width), 3,
                       offsets, photo.Pixels.data());
    const vistaTrim::CAnalysedPicture analysed(*image);
    DestroyImageObj(image);
    const std::vector<vistaTrim::CInt32CropRect> lattice = DefaultCandidates(analysed);

    std::vector<DescriptorRow> rows;
    const auto add = [&](const char* kind, int group, const vistaTrim::CInt32CropRect& crop,
                         int side, double votes, bool equalArea) {
        DescriptorRow row{kind,
                          group,
                          side,
                          votes,
                          equalArea,
                          crop,
                          std::vector<float>(vistaTrim::kPictureDescriptorSize)};
        // The lattice of a very thin photograph contains crops without pixels; nothing to fit.
        if (analysed.ReadDescriptor(crop, row.Values.data()))
            rows.push_back(std::move(row));
    };

    std::mt19937 random(options.Seed * 1000003U + static_cast<uint32_t>(number));
    for (size_t i = 0; i < judged.Chosen.size(); ++i) {
        const int group = static_cast<int>(i);
        add("chosen", group, ToCrop(judged.Chosen[i], photo.Width, photo.Height), 0, 0, false);
        for (const CropBox& rival : DrawRivals(judged.Chosen[i], photo, options.Rivals, random))
            add("rival", group, ToCrop(rival, photo.Width, photo.Height), 0, 0, false);
    }
    for (size_t i = 0; i < judged.Pairs.size(); ++i)
        for (int side = 0; side < 2; ++side)
            add("pair", static_cast<int>(i),
                ToCrop(judged.Pairs[i].Crops[side], photo.Width, photo.Height), side,
                judged.Pairs[i].Votes[side], judged.Pairs[i].EqualArea());

    for (int i = 0; i < options.Candidates && !lattice.empty(); ++i)
        add("candidate", i, lattice[random() % lattice.size()], 0, 0, false);
    return rows;
}

void WriteRows(const std::vector<std::vector<DescriptorRow>>& all,
               const std::vector<JudgedPhoto>& photos, const std::string& output)
{
    std::ofstream values(output + ".f32", std::ios::binary);
    std::ofstream table(output + ".tsv");
    table << "photo\tkind\tgroup\tside\tvotes\tequal_area\tleft\tright\ttop\tbottom\n";
    for (size_t i = 0; i < all.size(); ++i)
        for (const DescriptorRow& row : all[i]) {
            table << photos[i].File << '\t' << row.Kind << '\t' << row.Group << '\t' << row.Side
                  << '\t' << row.Votes << '\t' << row.EqualArea << '\t' << row.Crop.Left << '\t'
                  << row.Crop.Right << '\t' << row.Crop.Top << '\t' << row.Crop.Bottom << '\n';
            values.write(reinterpret_cast<const char*>(row.Values.data()),
                         static_cast<std::streamsize>(row.Values.size() * sizeof(float)));
        }
    values.flush();
    table.flush();
    if (!values || !table)
        throw std::runtime_error(output + ": cannot write");
}

int Run(const Options& options)
{
    const std::vector<JudgedPhoto> photos =
        ReadCropTables(options.Boxes, options.Pairs, options.Split);

    std::vector<std::vector<DescriptorRow>> all(photos.size());
    ForEachPhoto(photos.size(), options.Workers,
                 [&](size_t i) { all[i] = DescribePhoto(photos[i], options, i); });
    WriteRows(all, photos, options.Output);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"Writes raw composition descriptors of judged crops, for fit_composition.\n"
                 "OUTPUT.tsv has one line per crop, OUTPUT.f32 its 304 floats."};
    app.footer(kCropTableHelp);
    Options options;
    app.add_option("--photos", options.Photos, "folder of the photographs")->required();
    app.add_option("--boxes", options.Boxes, "table of chosen crops");
    app.add_option("--pairs", options.Pairs, "table of voted pairs");
    app.add_option("--split", options.Split, "split to read")->capture_default_str();
    app.add_option("--output", options.Output, "path of the two files, without extension")
        ->required();
    app.add_option("--seed", options.Seed, "seed for drawing crops")->capture_default_str();
    app.add_option("--rivals", options.Rivals, "crops of about equal area per chosen crop")
        ->capture_default_str()
        ->check(CLI::Range(0, 1000));
    app.add_option("--candidates", options.Candidates, "default candidates per photograph")
        ->capture_default_str()
        ->check(CLI::Range(0, 1000));
    app.add_option("-j,--jobs", options.Workers, "threads")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    CLI11_PARSE(app, argc, argv);

    try {
        StartPhotoReader(argv[0]);
        return Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "crop_descriptors: %s\n", error.what());
        return 1;
    } catch (const char* text) {
        std::fprintf(stderr, "crop_descriptors: %s", text);
        return 1;
    }
}
