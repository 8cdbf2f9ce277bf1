// Writes the choice model's inputs for photographs whose best crop a person chose, for the fit: the
// inputs of its network, and the features of candidates and of voted pairs of crops. The features
// come from the code that the program runs, so there is only one definition of them.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "crop_tables.h"
#include "photo_loop.h"
#include "photo_reader.h"
#include "public/analysed_picture.h"
#include "ranking/crop_utility.h"
#include "ranking/input_grid.h"
#include "vistaTrim/vistaTrim.h"
#include "vistaTrimPhoto/request.h"

namespace {

using namespace vistaTrim;

struct Options {
    std::string Photos;
    std::string Boxes;
    std::string Pairs;
    std::string Split = "fit";
    std::string Output;
    int Workers = 1;
};

// One crop: its sides as shares of the photograph, a number, its features.
struct CropRow {
    float Left, Top, Right, Bottom;
    float Value; // overlap with the chosen crop, or the votes
    float Features[photo::kNumCropFeatures];
};
static_assert(sizeof(CropRow) == 4 * (5 + photo::kNumCropFeatures), "packed floats");

struct PhotoRows {
    photo::PixelSize Size;
    std::vector<float> Inputs;
    std::vector<CropRow> Free;  // the program's candidates without a ratio
    std::vector<CropRow> Asked; // at the ratio that the person chose
    std::vector<CropRow> Pairs; // crop 0 and crop 1 in turn
};

// A driver with the program's default candidates.
IVistaTrim* MakeDriver(const CAnalysedPicture& analysed)
{
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    parameters.NumMaxCropRectsPerSide = photo::kDefaultDensity;
    delete[] parameters.CropRectScaleRatios;
    parameters.CropRectScaleRatios = nullptr;
    parameters.NumCropRectScaleRatios = std::size(photo::kDefaultScales);
    parameters.CropRectScaleRatios = new DoubleInfo[std::size(photo::kDefaultScales)];
    for (size_t i = 0; i < std::size(photo::kDefaultScales); ++i)
        parameters.CropRectScaleRatios[i] = DoubleInfo(photo::kDefaultScales[i], true);
    return analysed.MakeDriver(parameters);
}

std::vector<CInt32CropRect> Candidates(IVistaTrim* driver, const SuggestionParameters& request)
{
    ICropRects* list = nullptr;
    ComputeCropSuggestions(driver, &list, &request);
    std::vector<CInt32CropRect> crops;
    for (uint32_t i = 0; i < list->Count(); ++i)
        if (!(list->Data()[i].Right < list->Data()[i].Left ||
              list->Data()[i].Bottom < list->Data()[i].Top))
            crops.push_back(list->Data()[i]);
    list->Release();
    return crops;
}

CropRow Describe(const CInt32CropRect& crop, double value, photo::PixelSize size,
                 const photo::MeasureRanks& ranks)
{
    CropRow row{static_cast<float>(crop.Left) / static_cast<float>(size.Width),
                static_cast<float>(crop.Top) / static_cast<float>(size.Height),
                static_cast<float>(crop.Right + 1) / static_cast<float>(size.Width),
                static_cast<float>(crop.Bottom + 1) / static_cast<float>(size.Height),
                static_cast<float>(value),
                {}};
    const auto features = photo::CropFeatures(crop, size, ranks);
    for (size_t i = 0; i < features.size(); ++i)
        row.Features[i] = static_cast<float>(features[i]);
    return row;
}

CropBox ToBox(const CInt32CropRect& crop)
{
    return {static_cast<double>(crop.Left), static_cast<double>(crop.Top),
            static_cast<double>(crop.Right - crop.Left + 1),
            static_cast<double>(crop.Bottom - crop.Top + 1)};
}

PhotoRows DescribePhoto(const JudgedPhoto& judged, const Options& options)
{
    WorkingPhoto read = ReadWorkingPhoto(options.Photos + "/" + judged.File);
    photo::PixelImage picture{{read.Width, read.Height}, 3, std::move(read.Pixels)};
    const int32_t offsets[4] = {0, 1, 2, 3};
    IImage* image =
        CreateImageObj(static_cast<uint32_t>(picture.Size.Height),
                       static_cast<uint32_t>(picture.Size.Width), 3, offsets, picture.Bytes.data());
    const CAnalysedPicture analysed(*image);
    DestroyImageObj(image);
    IVistaTrim* driver = MakeDriver(analysed);

    PhotoRows rows;
    rows.Size = picture.Size;
    std::vector<CInt32CropRect> reference = photo::ReferenceCrops(picture.Size);
    for (CInt32CropRect& crop : reference)
        EvaluateScores(driver, &crop);
    const photo::MeasureRanks ranks(reference);
    const CropBox& chosen = judged.Chosen.front();
    for (const CInt32CropRect& crop : Candidates(driver, SuggestionParameters(false)))
        rows.Free.push_back(
            Describe(crop, IntersectionOverUnion(ToBox(crop), chosen), picture.Size, ranks));
    const SuggestionParameters asked(chosen.Width / chosen.Height, false);
    for (const CInt32CropRect& crop : Candidates(driver, asked))
        rows.Asked.push_back(
            Describe(crop, IntersectionOverUnion(ToBox(crop), chosen), picture.Size, ranks));
    for (const VotedPair& pair : judged.Pairs)
        for (int side = 0; side < 2; ++side) {
            CInt32CropRect crop = ToCrop(pair.Crops[side], picture.Size.Width, picture.Size.Height);
            EvaluateScores(driver, &crop);
            rows.Pairs.push_back(Describe(crop, pair.Votes[side], picture.Size, ranks));
        }
    DestroyVistaTrimObj(driver);

    std::vector<photo::InputMap> maps;
    for (const NamedPictureMap& map : analysed.Maps())
        maps.push_back({map.Data, map.Rows, map.Cols});
    rows.Inputs = photo::AverageInputs(maps, picture).Planes;
    return rows;
}

void Write(std::ofstream& stream, const void* data, size_t size)
{
    stream.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

int Run(const Options& options)
{
    std::vector<JudgedPhoto> photos;
    for (JudgedPhoto& photo : ReadCropTables(options.Boxes, options.Pairs, options.Split))
        if (!photo.Chosen.empty())
            photos.push_back(std::move(photo));
    std::vector<PhotoRows> all(photos.size());
    ForEachPhoto(photos.size(), options.Workers,
                 [&](size_t i) { all[i] = DescribePhoto(photos[i], options); });

    std::ofstream stream(options.Output, std::ios::binary);
    for (const PhotoRows& rows : all) {
        const int32_t head[8] = {photo::kNumInputs,
                                 photo::kGridSide,
                                 photo::kNumCropFeatures,
                                 rows.Size.Width,
                                 rows.Size.Height,
                                 static_cast<int32_t>(rows.Free.size()),
                                 static_cast<int32_t>(rows.Asked.size()),
                                 static_cast<int32_t>(rows.Pairs.size())};
        Write(stream, head, sizeof head);
        Write(stream, rows.Inputs.data(), rows.Inputs.size() * sizeof(float));
        for (const std::vector<CropRow>* list : {&rows.Free, &rows.Asked, &rows.Pairs})
            Write(stream, list->data(), list->size() * sizeof(CropRow));
    }
    stream.flush();
    if (!stream)
        throw std::runtime_error(options.Output + ": cannot be written");
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"Writes the choice model's inputs for judged photographs, for fit_ranking.py."};
    app.footer(kCropTableHelp);
    Options options;
    app.add_option("--photos", options.Photos, "folder of the photographs")->required();
    app.add_option("--boxes", options.Boxes, "table of chosen crops")->required();
    app.add_option("--pairs", options.Pairs, "table of voted pairs");
    app.add_option("--split", options.Split, "split to read")->capture_default_str();
    app.add_option("--output", options.Output, "file to write")->required();
    app.add_option("-j,--jobs", options.Workers, "threads")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    CLI11_PARSE(app, argc, argv);

    try {
        StartPhotoReader(argv[0]);
        return Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ranking_features: %s\n", error.what());
        return 1;
    } catch (const char* text) {
        std::fprintf(stderr, "ranking_features: %s", text);
        return 1;
    }
}
