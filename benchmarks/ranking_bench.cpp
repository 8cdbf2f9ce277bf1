// The whole ranking of one photograph at 640 pixels, and each of its steps.
//
//     taskset -c 0 build/release/benchmarks/ranking_bench
//
// Each iteration takes the next photograph of the Debian package lomiri-wallpapers-16.04, or a
// synthetic image where that is not installed. The engine's analysis, candidates and scores are
// computed in advance.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <benchmark/benchmark.h>
#include <vips/vips.h>

#include "public/analysed_picture.h"
#include "ranking/choice_model.h"
#include "ranking/choice_network.h"
#include "ranking/covering_set.h"
#include "ranking/crop_utility.h"
#include "ranking/engine_lists.h"
#include "ranking/input_grid.h"
#include "vistaTrim/vistaTrim.h"
#include "vistaTrimPhoto/request.h"

namespace vistaTrim::photo {
namespace {

constexpr int kWanted = 5;

// A soft disc on a gradient, with grain.
PixelImage SyntheticImage()
{
    PixelImage picture{{640, 480}, 3, {}};
    std::mt19937 random(1);
    for (int y = 0; y < 480; ++y)
        for (int x = 0; x < 640; ++x) {
            const double disc = 120 / (1 + std::exp((std::hypot(x - 350, y - 290) - 90) / 4));
            for (int p = 0; p < 3; ++p)
                picture.Bytes.push_back(static_cast<uint8_t>(30 + 40 * p + 60.0 * x / 640 +
                                                             (p == 1 ? -disc / 4 : disc / 1.5) +
                                                             static_cast<double>(random() >> 28)));
        }
    return picture;
}

PixelImage ReadPhotograph(const std::string& file)
{
    VipsImage* small = nullptr;
    VipsImage* flat = nullptr;
    if (vips_thumbnail(file.c_str(), &small, 640, "height", 640, "export_profile", "srgb",
                       nullptr) != 0 ||
        vips_extract_band(small, &flat, 0, "n", 3, nullptr) != 0)
        throw std::runtime_error(vips_error_buffer());
    size_t size = 0;
    auto* bytes = static_cast<uint8_t*>(vips_image_write_to_memory(flat, &size));
    PixelImage picture{{vips_image_get_width(flat), vips_image_get_height(flat)},
                       3,
                       std::vector<uint8_t>(bytes, bytes + size)};
    g_free(bytes);
    g_object_unref(flat);
    g_object_unref(small);
    return picture;
}

std::vector<PixelImage> ReadPictures()
{
    std::vector<std::string> files;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/share/backgrounds", none))
        if (entry.path().extension() == ".jpg")
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    if (files.empty())
        return {SyntheticImage()};
    if (VIPS_INIT("ranking_bench") != 0)
        throw std::runtime_error(vips_error_buffer());
    std::vector<PixelImage> pictures;
    pictures.reserve(files.size());
    for (const std::string& file : files)
        pictures.push_back(ReadPhotograph(file));
    return pictures;
}

struct DriverDeleter {
    void operator()(IVistaTrim* driver) const
    {
        DestroyVistaTrimObj(driver);
    }
};

// The program's default candidates.
IVistaTrim* MakeDriver(const CAnalysedPicture& analysed)
{
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    parameters.NumMaxCropRectsPerSide = kDefaultDensity;
    delete[] parameters.CropRectScaleRatios;
    parameters.CropRectScaleRatios = nullptr;
    parameters.NumCropRectScaleRatios = std::size(kDefaultScales);
    parameters.CropRectScaleRatios = new DoubleInfo[std::size(kDefaultScales)];
    for (size_t i = 0; i < std::size(kDefaultScales); ++i)
        parameters.CropRectScaleRatios[i] = DoubleInfo(kDefaultScales[i], true);
    return analysed.MakeDriver(parameters);
}

// One photograph, with the inputs of ranking and the result of each step.
class RankedPicture {
public:
    explicit RankedPicture(const PixelImage& picture)
        : Picture(picture), Model(DefaultChoiceModel())
    {
        const int32_t offsets[4] = {0, 1, 2, 3};
        IImage* const image = CreateImageObj(static_cast<uint32_t>(picture.Size.Height),
                                             static_cast<uint32_t>(picture.Size.Width), 3, offsets,
                                             picture.Bytes.data());
        const CAnalysedPicture analysed(*image);
        DestroyImageObj(image);
        // Copied, because the analysis is destroyed at the end of this constructor.
        for (const NamedPictureMap& map : analysed.Maps()) {
            MapCopies.emplace_back(map.Data, map.Data + static_cast<size_t>(map.Rows) *
                                                            static_cast<size_t>(map.Cols));
            Maps.push_back({MapCopies.back().data(), map.Rows, map.Cols});
        }
        Driver.reset(MakeDriver(analysed));
        Candidates = AllOf(*Driver, SuggestionParameters(false));
        All();
    }

    void Reference()
    {
        CropList crops = ReferenceCrops(Picture.Size);
        for (CInt32CropRect& crop : crops)
            EvaluateScores(Driver.get(), &crop);
        Ranks = std::make_unique<MeasureRanks>(crops);
    }
    void Average()
    {
        Grid = AverageInputs(Maps, Picture);
    }
    void Network()
    {
        Parts = std::make_unique<PartSums>(RunChoiceNetwork(*Model, Grid));
    }
    void Rate()
    {
        Rates = Utilities(*Model, Candidates, Picture.Size, *Ranks, *Parts);
        for (double& rate : Rates)
            rate *= Model->Sharpness;
    }
    void Cover()
    {
        CoveringSet set(Candidates, Rates, std::vector<size_t>(Candidates.size(), 0));
        CoveringSet::Served served{};
        for (int i = 0; i < kWanted && set.Next(served); ++i)
            benchmark::DoNotOptimize(served.Crop);
    }
    void All()
    {
        Reference();
        Average();
        Network();
        Rate();
        Cover();
    }

    double NumCandidates() const
    {
        return static_cast<double>(Candidates.size());
    }

private:
    const PixelImage& Picture;
    std::shared_ptr<const ChoiceModel> Model;
    std::vector<std::vector<float>> MapCopies;
    std::vector<InputMap> Maps;
    std::unique_ptr<IVistaTrim, DriverDeleter> Driver;
    CropList Candidates;
    std::unique_ptr<MeasureRanks> Ranks;
    InputGrid Grid;
    std::unique_ptr<PartSums> Parts;
    std::vector<double> Rates;
};

std::vector<std::unique_ptr<RankedPicture>>& Pictures()
{
    static const std::vector<PixelImage> pixels = ReadPictures();
    static std::vector<std::unique_ptr<RankedPicture>> pictures = [] {
        std::vector<std::unique_ptr<RankedPicture>> ranked;
        ranked.reserve(pixels.size());
        for (const PixelImage& picture : pixels)
            ranked.push_back(std::make_unique<RankedPicture>(picture));
        return ranked;
    }();
    return pictures;
}

void Step(benchmark::State& state, void (RankedPicture::*step)())
{
    std::vector<std::unique_ptr<RankedPicture>>& pictures = Pictures();
    double candidates = 0;
    size_t next = 0;
    for (auto _ : state) {
        const std::unique_ptr<RankedPicture>& picture = pictures[next++ % pictures.size()];
        ((*picture).*step)();
        candidates += picture->NumCandidates();
    }
    state.counters["candidates/s"] = benchmark::Counter(candidates, benchmark::Counter::kIsRate);
    state.counters["photographs"] = static_cast<double>(pictures.size());
}

// A whole number of rounds over the 15 photographs, so that each counts equally.
#define RANKING_STEP(name, step)                                                                   \
    BENCHMARK_CAPTURE(Step, name, &RankedPicture::step)                                            \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->Iterations(300)

RANKING_STEP(WholeRanking640, All);
RANKING_STEP(ReferenceCrops, Reference);
RANKING_STEP(InputGrid, Average);
RANKING_STEP(Network, Network);
RANKING_STEP(UtilitiesOfDefaultCandidates, Rate);
RANKING_STEP(CoveringSetOfFive, Cover);

} // namespace
} // namespace vistaTrim::photo
