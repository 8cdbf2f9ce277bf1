// Times requests on photographs, and libvips' attention crop on the same pictures in the same run.
//
//     taskset -c 0 build/benchmarks/request_bench [photograph...]
//
// Without arguments: the photographs of the Debian package lomiri-wallpapers-16.04, or a synthetic
// image where it is not installed. Figures are processor time, so that they hold on a shared
// machine: per picture the median of interleaved rounds, then the sum over the pictures. The engine
// returns ten different crops, libvips one.

#include <malloc.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <vips/vips.h>

#include "analysis/border_contrast.h"
#include "analysis/multi_scale_edges.h"
#include "numeric/image_kernels.h"
#include "numeric/isa_variants.h"
#include "numeric/linear_algebra.h"
#include "numeric/owned_stack.h"
#include "vistaTrim/vistaTrim.h"

using namespace vistaTrim;

namespace {

constexpr int kRounds = 15;

struct Picture {
    uint32_t Width = 0;
    uint32_t Height = 0;
    std::vector<uint8_t> Pixels;
};

// A soft disc on a gradient, with grain.
Picture SyntheticImage()
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

// Of all threads of the process, including libvips's.
double ProcessorMilliseconds(const std::function<void()>& work)
{
    const auto now = [] {
        timespec time;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
    };
    const double start = now();
    work();
    return now() - start;
}

enum RowIndex {
    kAnalysis,
    kFirst,
    kRepeat,
    kBest,
    kWhole,
    kOneRatio,
    kAttentionSix,
    kAttentionOne,
    kSmoothing,
    kBorders,
    kCoarseEdges,
    kEdgeGradients,
    kRows
};
const char* const kNames[kRows] = {"analysis (CreateVistaTrimObj)",
                                   "first full request",
                                   "the same request again",
                                   "best ten of that",
                                   "picture to best ten of everything",
                                   "picture to ten crops of one ratio",
                                   "attention crop, six ratios",
                                   "attention crop, one ratio",
                                   "floats and their smoothing",
                                   "contrasts against the borders",
                                   "coarse edges",
                                   "blur and gradients of the edge map"};

double MedianOf(std::vector<double>& times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

const SuggestionParameters kEverything;

void BestTen(IVistaTrim* driver, const SuggestionParameters& request)
{
    ICropRects* list = nullptr;
    GetNTopCropSuggestions(driver, 10, &list, &request, 0,
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

void PictureToBestTen(const Picture& picture, const VistaTrimParameters& parameters,
                      const SuggestionParameters& request)
{
    IImage* const image = MakeImage(picture);
    IVistaTrim* const driver = CreateVistaTrimObj(image, &parameters);
    BestTen(driver, request);
    DestroyVistaTrimObj(driver);
    DestroyImageObj(image);
}

// The largest rectangle of a ratio.
void AttentionCrop(VipsImage* in, double ratio)
{
    const double width = std::min<double>(in->Xsize, in->Ysize * ratio);
    VipsImage* out = nullptr;
    if (vips_smartcrop(in, &out, static_cast<int>(width), static_cast<int>(width / ratio),
                       "interesting", VIPS_INTERESTING_ATTENTION, nullptr) != 0)
        throw std::runtime_error(vips_error_buffer());
    g_object_unref(out);
}

// The stages that can be run by themselves, on their own memory.
void TimeStages(const Picture& picture, std::vector<double> (&times)[kRows])
{
    const int32_t cols = static_cast<int32_t>(picture.Width);
    const int32_t rows = static_cast<int32_t>(picture.Height);
    static COwnedStack pixels, blurred, scratch, maps;
    for (COwnedStack* stack : {&pixels, &blurred})
        stack->Create(3, cols, rows);
    scratch.Create(1, cols, rows);
    maps.Create(6, cols, rows);
    const BorderContrastMaps borders = {
        maps.Planes[0],
        maps.Planes[1],
        {maps.Planes[2], maps.Planes[3], maps.Planes[4], maps.Planes[5]}};
    const auto time = [&](RowIndex row, const std::function<void()>& work) {
        work(); // faults in the pages
        times[row].push_back(ProcessorMilliseconds(work));
    };
    time(kSmoothing, [&] {
        pixels.FillFromBytes(picture.Pixels.data());
        SmoothStack(pixels.Handle(), blurred.Handle(), 0.7f);
    });
    time(kBorders, [&] { MeasureBorderContrasts(blurred.Handle(), scratch.Planes[0], borders); });
    time(kCoarseEdges, [&] {
        ComputeMultiScaleEdges(pixels.Handle(), scratch.Handle(), false, false, {0.04f, 0.2f});
    });
    time(kEdgeGradients, [&] {
        BlurPlanes(pixels.Handle(), 2.0f, blurred.Planes.data());
        SumGradientStrengths(blurred.Handle(), scratch.Planes[0]);
    });
}

// Adds the medians of one picture to the sums. Returns its number of candidates.
uint32_t MeasurePicture(const Picture& picture, double (&sums)[kRows])
{
    VipsImage* theirs = vips_image_new_from_memory_copy(
        picture.Pixels.data(), picture.Pixels.size(), static_cast<int>(picture.Width),
        static_cast<int>(picture.Height), 3, VIPS_FORMAT_UCHAR);
    theirs->Type = VIPS_INTERPRETATION_sRGB;
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    const double oneRatio = parameters.AspectRatios[0].Value;
    const SuggestionParameters ofOneRatio(oneRatio, false);

    std::vector<double> times[kRows];
    uint32_t candidates = 0;
    for (int round = 0; round < kRounds; ++round) {
        const auto time = [&](RowIndex row, const std::function<void()>& work) {
            times[row].push_back(ProcessorMilliseconds(work));
        };
        IImage* const image = MakeImage(picture);
        IVistaTrim* driver = nullptr;
        time(kAnalysis, [&] { driver = CreateVistaTrimObj(image, &parameters); });
        time(kFirst, [&] { candidates = All(driver); });
        time(kRepeat, [&] { All(driver); });
        time(kBest, [&] { BestTen(driver, kEverything); });
        DestroyVistaTrimObj(driver);
        DestroyImageObj(image);

        time(kWhole, [&] { PictureToBestTen(picture, parameters, kEverything); });
        time(kOneRatio, [&] { PictureToBestTen(picture, parameters, ofOneRatio); });
        time(kAttentionSix, [&] {
            for (uint32_t k = 0; k < parameters.NumAspectRatios; ++k)
                AttentionCrop(theirs, parameters.AspectRatios[k].Value);
        });
        time(kAttentionOne, [&] { AttentionCrop(theirs, oneRatio); });
        TimeStages(picture, times);
    }
    for (size_t row = 0; row < kRows; ++row)
        sums[row] += MedianOf(times[row]);
    g_object_unref(theirs);
    return candidates;
}

// What the allocator holds for a driver of a 640 x 480 picture, in 10^6 bytes.
double DriverMegabytes()
{
    IImage* const image = MakeImage(SyntheticImage());
    const VistaTrimParameters parameters;
    const auto held = [] {
        const struct mallinfo2 info = mallinfo2();
        return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
    };
    const double before = held();
    IVistaTrim* const driver = CreateVistaTrimObj(image, &parameters);
    const double after = held();
    DestroyVistaTrimObj(driver);
    DestroyImageObj(image);
    return (after - before) / 1e6;
}

// How often one thread does the work per second, measured over at least half a second.
double Rate(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    double seconds = 0;
    int done = 0;
    while (seconds < 0.5) {
        work();
        ++done;
        seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    return done / seconds;
}

// Work done in a second by two threads over that of one. The rounds alternate, and the median of
// their ratios counts: neighbours on a shared machine disturb some rounds of either kind.
class ThreadScaling {
public:
    explicit ThreadScaling(std::function<void()> work) : Work(std::move(work))
    {
    }

    void Round()
    {
        const double one = Rate(Work);
        double second = 0;
        std::thread other([&] { second = Rate(Work); });
        const double first = Rate(Work);
        other.join();
        Gains.push_back((first + second) / one);
    }

    double Gain()
    {
        return MedianOf(Gains);
    }

private:
    std::function<void()> Work;
    std::vector<double> Gains;
};

// Arithmetic that touches no memory: the gain of two threads here is the most that the machine can
// give.
void WorkInRegisters()
{
    double values[4] = {1.0, 1.1, 1.2, 1.3};
    for (int64_t i = 0; i < 10'000'000; ++i)
        for (double& value : values)
            value = value * 0.999999999 + 1e-9;
    volatile double sink = 0.0; // keeps the compiler from removing the loop
    sink = values[0] + values[1] + values[2] + values[3];
    static_cast<void>(sink);
}

void PrintThreadScaling(const std::vector<Picture>& pictures)
{
    const VistaTrimParameters parameters;
    ThreadScaling requests([&] {
        for (const Picture& picture : pictures)
            PictureToBestTen(picture, parameters, kEverything);
    });
    ThreadScaling arithmetic(WorkInRegisters);
    for (int round = 0; round < 21; ++round) {
        requests.Round();
        arithmetic.Round();
    }
    std::printf("%.2f times as many pictures a second in two threads as in one", requests.Gain());
    std::printf(" (arithmetic in registers: %.2f times)\n", arithmetic.Gain());
}

// The first analysis of this process and the median of later ones, in ms.
void PrintFirstAnalysis()
{
    const Picture picture = SyntheticImage();
    const VistaTrimParameters parameters;
    std::vector<double> times;
    for (int k = 0; k < 12; ++k) {
        IImage* const image = MakeImage(picture);
        IVistaTrim* driver = nullptr;
        times.push_back(
            ProcessorMilliseconds([&] { driver = CreateVistaTrimObj(image, &parameters); }));
        DestroyVistaTrimObj(driver);
        DestroyImageObj(image);
    }
    const double first = times.front();
    times.erase(times.begin(), times.begin() + 2); // the allocator settles after the first free
    std::printf("analysis of a synthetic 640 x 480 image: %.2f ms first, %.2f ms later\n\n", first,
                MedianOf(times));
}

std::vector<std::string> PhotographFiles(int argc, char** argv)
{
    if (argc > 1)
        return std::vector<std::string>(argv + 1, argv + argc);
    std::vector<std::string> files;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/share/backgrounds", none))
        if (entry.path().extension() == ".jpg")
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

// Prints the stages that are measured by themselves, and what remains of the analysis and of the
// whole: these two are not measured.
void PrintShares(const double (&sums)[kRows])
{
    const auto print = [&](const char* name, double time) {
        std::printf("  %-46s %9.2f %8.1f %%\n", name, time, 100 * time / sums[kWhole]);
    };
    double rest = sums[kAnalysis];
    std::printf("\nshares of picture to best ten of everything\n");
    for (const RowIndex row : {kSmoothing, kBorders, kCoarseEdges, kEdgeGradients}) {
        print(kNames[row], sums[row]);
        rest -= sums[row];
    }
    print("the rest of the analysis: ten maps and tables", rest);
    print("candidates and their scores: what remains",
          sums[kWhole] - sums[kAnalysis] - sums[kBest]);
    print("selection of ten", sums[kBest]);
}

int CoresAllowed()
{
    cpu_set_t set;
    return sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
}

} // namespace

int main(int argc, char** argv)
{
    PrintFirstAnalysis(); // before anything else grows the heap
    if (VIPS_INIT(argv[0]) != 0)
        return 1;
    vips_concurrency_set(1);
    vips_cache_set_max(0); // otherwise a second call would return the cached result

    try {
        std::vector<Picture> pictures;
        for (const std::string& file : PhotographFiles(argc, argv))
            pictures.push_back(ReadPhotograph(file.c_str()));
        if (pictures.empty())
            pictures.push_back(SyntheticImage());

        double sums[kRows] = {};
        uint64_t candidates = 0;
        for (const Picture& picture : pictures)
            candidates += MeasurePicture(picture, sums);

        std::printf("%zu pictures, %llu candidates, %d rounds, %s, linear algebra: %s\n",
                    pictures.size(), static_cast<unsigned long long>(candidates), kRounds,
                    NameOf(ActiveIsaVariant()), kFixedOrder ? "fixed order" : "BLAS");
        std::printf("%-38s %9s %12s %11s\n", "", "ms", "/ attention", "/ six");
        for (int row = 0; row <= kAttentionOne; ++row)
            std::printf("%-38s %9.2f %12.3f %11.3f\n", kNames[row], sums[row],
                        sums[row] / sums[kAttentionOne], sums[row] / sums[kAttentionSix]);
        PrintShares(sums);
        std::printf("\n%.2f us a candidate in the first request\n",
                    sums[kFirst] * 1000 / static_cast<double>(std::max<uint64_t>(candidates, 1)));
        std::printf("%.2f MB held by a driver of 640 x 480\n", DriverMegabytes());
        if (CoresAllowed() > 1)
            PrintThreadScaling(pictures);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "request_bench: %s\n", error.what());
        return 1;
    }
    vips_shutdown();
    return 0;
}
