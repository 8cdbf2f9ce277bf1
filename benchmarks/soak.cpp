// Does memory stay flat? Creates, queries and destroys thousands of drivers in one process, as a
// host with a large album does, and prints how much memory the process holds along the way.
//
// usage: soak [ROUNDS] [COLSxROWS] [--tidy] [--check]
//   ROUNDS     10000 by default
//   COLSxROWS  size of every picture; the longer side must be 640. Mixed sizes by default
//   --tidy     use only calls that leak nothing
//   --check    exit with status 1 if memory grew by more than the library leaks on purpose
//
// The library leaks on purpose: three empty arrays per driver whose parameters have no aspect
// ratios, and one record per call of GetRectsOfInterest on a driver without any. Every second round
// does both, unless --tidy is given; the others leak nothing.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include <malloc.h>
#include <unistd.h>

#include "vistaTrim/vistaTrim.h"

using namespace vistaTrim;

namespace {

constexpr int kWarm = 100; // rounds in which the allocator and the libraries warm up

// The smallest allocation of the C library's allocator.
constexpr int64_t kPiece = 32;
constexpr int64_t kAbandonedPieces = 3 + 1;

struct Picture {
    uint32_t Cols, Rows;
    std::vector<uint8_t> Pixels;
};

// A gradient with a bright disc and some noise; `seed` moves the disc.
Picture MakePicture(uint32_t cols, uint32_t rows, uint32_t seed)
{
    Picture picture = {cols, rows, {}};
    uint32_t grain = seed;
    const double centreX = cols * (0.2 + 0.6 * (seed % 7) / 6.0);
    const double centreY = rows * (0.3 + 0.4 * (seed % 5) / 4.0);
    const double radius = 0.2 * (cols < rows ? cols : rows) + 1.0;
    for (uint32_t y = 0; y < rows; ++y)
        for (uint32_t x = 0; x < cols; ++x)
            for (uint32_t channel = 0; channel < 3; ++channel) {
                grain = grain * 1664525U + 1013904223U;
                const double distance = std::hypot(x - centreX, y - centreY) / radius;
                const double value = 40.0 + 0.1 * x + 0.05 * y + (grain >> 29) +
                                     (90.0 + 30.0 * channel) * std::exp(-distance * distance);
                picture.Pixels.push_back(static_cast<uint8_t>(value > 255.0 ? 255.0 : value));
            }
    return picture;
}

struct Memory {
    int64_t Resident; // resident bytes of the process
    int64_t InUse;    // heap bytes allocated and not freed
};

Memory MemoryNow()
{
    std::ifstream file("/proc/self/statm");
    int64_t size = 0;
    int64_t resident = 0;
    file >> size >> resident;
    const auto info = mallinfo2();
    const size_t inUse = info.uordblks + info.hblkhd;
    return {resident * sysconf(_SC_PAGESIZE), static_cast<int64_t>(inUse)};
}

// Everything a host does with one photograph.
size_t WorkOn(const Picture& picture, bool abandon)
{
    const int32_t offsets[4] = {0, 1, 2, 3};
    IImage* const image =
        CreateImageObj(picture.Rows, picture.Cols, 3, offsets, picture.Pixels.data());
    VistaTrimParameters parameters;
    if (!abandon)
        parameters.SetDefaults();
    IVistaTrim* const driver = CreateVistaTrimObj(image, &parameters);
    if (abandon) {
        CRectOfInterest* rects = nullptr;
        uint32_t count = 0;
        driver->GetRectsOfInterest(&rects, &count);
    }

    size_t crops = 0;
    ICropRects* list = nullptr;
    const SuggestionParameters whole;
    GetNTopCropSuggestions(driver, 10, &list, &whole, 0, WeightDistribution(0.3, 0.4, 0.3));
    crops += list->Count();
    list->Release();
    const SuggestionParameters ratio(1.25, false);
    ComputeCropSuggestions(driver, &list, &ratio);
    crops += list->Count();
    list->Release();
    const SuggestionParameters size(picture.Cols / 2.0, picture.Rows / 2.0, false);
    ComputeCropSuggestions(driver, &list, &size);
    DestroyVistaTrimObj(driver);
    DestroyImageObj(image);
    crops += list->Count(); // the list outlives both
    list->Destroy();
    return crops;
}

void Print(const char* when, int rounds, const Memory& memory)
{
    std::printf("%-8s %6d rounds: resident %8.2f MB, in use %10.6f MB\n", when, rounds,
                static_cast<double>(memory.Resident) / 1e6,
                static_cast<double>(memory.InUse) / 1e6);
    std::fflush(stdout);
}

} // namespace

int main(int count, char** arguments)
{
    int rounds = 10000;
    uint32_t cols = 0;
    uint32_t rows = 0;
    bool check = false;
    bool tidy = false;
    for (int i = 1; i < count; ++i) {
        if (std::strcmp(arguments[i], "--check") == 0)
            check = true;
        else if (std::strcmp(arguments[i], "--tidy") == 0)
            tidy = true;
        else if (std::strchr(arguments[i], 'x') == nullptr)
            rounds = std::atoi(arguments[i]);
        else if (std::sscanf(arguments[i], "%ux%u", &cols, &rows) != 2)
            rounds = 0;
    }
    if (rounds <= kWarm) {
        std::fprintf(stderr, "soak: ROUNDS must be greater than %d, and COLSxROWS two numbers\n",
                     kWarm);
        return 2;
    }

    std::vector<Picture> pictures;
    if (cols > 0)
        for (uint32_t seed = 0; seed < 4; ++seed)
            pictures.push_back(MakePicture(cols, rows, seed));
    else
        pictures = {MakePicture(640, 480, 0), MakePicture(427, 640, 1), MakePicture(640, 360, 2),
                    MakePicture(640, 100, 3), MakePicture(640, 640, 4)};

    // Prints now so that the stream allocates its buffer before the first measurement.
    std::printf("resident: physical memory of the process; in use: heap memory not freed\n");
    std::fflush(stdout);
    Memory warm = {};
    size_t crops = 0;
    for (int round = 1; round <= rounds; ++round) {
        const size_t which = static_cast<size_t>(round) % pictures.size();
        crops += WorkOn(pictures[which], !tidy && round % 2 == 0);
        if (round == kWarm) {
            warm = MemoryNow();
            Print("warm", round, warm);
        } else if (round % ((rounds + 9) / 10) == 0 && round != rounds) {
            Print("", round, MemoryNow());
        }
    }
    const Memory end = MemoryNow();
    Print("end", rounds, end);

    const int64_t abandoned = tidy ? 0 : (rounds / 2 - kWarm / 2) * kAbandonedPieces * kPiece;
    const int64_t unexplained = end.InUse - warm.InUse - abandoned;
    std::printf(
        "%zu crops; growth after %d rounds: in use %+lld bytes, of which abandoned on purpose "
        "%lld, unexplained %+lld; resident %+lld bytes\n",
        crops, kWarm, static_cast<long long>(end.InUse - warm.InUse),
        static_cast<long long>(abandoned), static_cast<long long>(unexplained),
        static_cast<long long>(end.Resident - warm.Resident));

    // Pages come and go a few at a time. The heap count is exact except for a few allocations that
    // the allocator caches and counts as in use; leaking one allocation every fourth round exceeds
    // this bound within 150 rounds.
    constexpr int64_t kPages = int64_t{2} << 20;
    constexpr int64_t kKeptReady = 1024;
    const bool flat =
        unexplained <= kKeptReady && end.Resident - warm.Resident - abandoned <= kPages;
    if (check && !flat)
        std::fprintf(stderr, "soak: memory grows\n");
    return check && !flat ? 1 : 0;
}
