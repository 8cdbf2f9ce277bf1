// Requests on one picture, and libvips' smart crop on the same picture in the same run. The
// figures are medians of interleaved rounds, so that ratios hold on a machine that others use.
//
//     OPENBLAS_NUM_THREADS=1 taskset -c 0 build/benchmarks/request_bench [photograph]
//
// Ours judges every candidate and returns ten crops that differ; theirs returns one crop.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <vips/vips.h>

#include "vistaTrim/vistaTrim.h"

using namespace vistaTrim;

namespace {

constexpr int kRounds = 41;

struct Picture {
    uint32_t Width = 0;
    uint32_t Height = 0;
    std::vector<uint8_t> Pixels;
};

// A soft disc on a gradient, with grain.
Picture MadePicture()
{
    Picture picture{640, 480, {}};
    std::mt19937 random(1);
    for (uint32_t y = 0; y < picture.Height; ++y)
        for (uint32_t x = 0; x < picture.Width; ++x) {
            const double dx = x - 350.0;
            const double dy = y - 290.0;
            const double disc = 120 / (1 + std::exp((std::sqrt(dx * dx + dy * dy) - 90) / 4));
            for (uint32_t p = 0; p < 3; ++p)
                picture.Pixels.push_back(static_cast<uint8_t>(30 + 40 * p + 60.0 * x / 640 +
                                                              (p == 1 ? -disc / 4 : disc / 1.5) +
                                                              static_cast<double>(random() >> 28)));
        }
    return picture;
}

Picture ReadPhotograph(const char* file)
{
    VipsImage* small = nullptr;
    VipsImage* flat = nullptr;
    if (vips_thumbnail(file, &small, 640, "height", 640, "export_profile", "srgb", nullptr) != 0 ||
        vips_extract_band(small, &flat, 0, "n", 3, nullptr) != 0)
        throw std::runtime_error(vips_error_buffer());
    size_t size = 0;
    uint8_t* bytes = static_cast<uint8_t*>(vips_image_write_to_memory(flat, &size));
    Picture picture{static_cast<uint32_t>(vips_image_get_width(flat)),
                    static_cast<uint32_t>(vips_image_get_height(flat)),
                    std::vector<uint8_t>(bytes, bytes + size)};
    g_free(bytes);
    g_object_unref(flat);
    g_object_unref(small);
    return picture;
}

IImage* MakeImage(const Picture& picture)
{
    const int32_t offsets[4] = {0, 1, 2, 3};
    return CreateImageObj(picture.Height, picture.Width, 3, offsets, picture.Pixels.data());
}

double Milliseconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> spent =
        std::chrono::steady_clock::now() - start;
    return spent.count();
}

struct Row {
    std::string Name;
    std::vector<double> Times;

    double Median()
    {
        std::sort(Times.begin(), Times.end());
        return Times[Times.size() / 2];
    }
};

const SuggestionParameters kEverything;

void BestTen(IVistaTrim* driver)
{
    ICropRects* list = nullptr;
    GetNTopCropSuggestions(driver, 10, &list, &kEverything, 0,
                           WeightDistribution(0.2, 0.2, 0.2, 0.2, 0.2));
    list->Release();
}

uint32_t All(IVistaTrim* driver)
{
    ICropRects* list = nullptr;
    ComputeCropSuggestions(driver, &list, &kEverything);
    const uint32_t count = list->Count();
    list->Release();
    return count;
}

void SmartCrop(VipsImage* in, VipsInteresting interesting)
{
    VipsImage* out = nullptr;
    if (vips_smartcrop(in, &out, vips_image_get_width(in) / 2, vips_image_get_height(in) / 2,
                       "interesting", interesting, nullptr) != 0)
        throw std::runtime_error(vips_error_buffer());
    g_object_unref(out);
}

} // namespace

int main(int argc, char** argv)
{
    if (VIPS_INIT(argv[0]) != 0)
        return 1;
    vips_concurrency_set(1);
    vips_cache_set_max(0); // or its second call would return the first one's result

    const Picture picture = argc > 1 ? ReadPhotograph(argv[1]) : MadePicture();
    VipsImage* theirs = vips_image_new_from_memory_copy(
        picture.Pixels.data(), picture.Pixels.size(), static_cast<int>(picture.Width),
        static_cast<int>(picture.Height), 3, VIPS_FORMAT_UCHAR);
    theirs->Type = VIPS_INTERPRETATION_sRGB;

    const VistaTrimParameters parameters;
    Row analysis{"analysis (CreateVistaTrimObj)", {}};
    Row first{"first full request", {}};
    Row repeat{"the same request again", {}};
    Row best{"best 10 after that", {}};
    Row whole{"photograph to best 10", {}};
    Row attention{"vips_smartcrop, attention", {}};
    Row entropy{"vips_smartcrop, entropy", {}};
    uint32_t candidates = 0;
    for (int round = 0; round < kRounds; ++round) {
        IImage* image = MakeImage(picture);
        IVistaTrim* driver = nullptr;
        analysis.Times.push_back(
            Milliseconds([&] { driver = CreateVistaTrimObj(image, &parameters); }));
        first.Times.push_back(Milliseconds([&] { candidates = All(driver); }));
        repeat.Times.push_back(Milliseconds([&] { All(driver); }));
        best.Times.push_back(Milliseconds([&] { BestTen(driver); }));
        DestroyVistaTrimObj(driver);
        DestroyImageObj(image);

        whole.Times.push_back(Milliseconds([&] {
            IImage* own = MakeImage(picture);
            IVistaTrim* ownDriver = CreateVistaTrimObj(own, &parameters);
            BestTen(ownDriver);
            DestroyVistaTrimObj(ownDriver);
            DestroyImageObj(own);
        }));
        attention.Times.push_back(
            Milliseconds([&] { SmartCrop(theirs, VIPS_INTERESTING_ATTENTION); }));
        entropy.Times.push_back(Milliseconds([&] { SmartCrop(theirs, VIPS_INTERESTING_ENTROPY); }));
    }

    const double attentionTime = attention.Median();
    const double entropyTime = entropy.Median();
    std::printf("%u x %u, %u candidates, %d rounds, medians\n", picture.Width, picture.Height,
                candidates, kRounds);
    std::printf("%-32s %9s %9s %12s %12s\n", "", "ms", "least", "/ attention", "/ entropy");
    for (Row* row : {&analysis, &first, &repeat, &best, &whole, &attention, &entropy}) {
        const double median = row->Median();
        std::printf("%-32s %9.3f %9.3f %12.3f %12.3f\n", row->Name.c_str(), median,
                    row->Times.front(), median / attentionTime, median / entropyTime);
    }
    std::printf("%-32s %9.3f\n", "us a candidate, first request",
                first.Median() * 1000 / std::max(candidates, 1u));
    g_object_unref(theirs);
    vips_shutdown();
    return 0;
}
