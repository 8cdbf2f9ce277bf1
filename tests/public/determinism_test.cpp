// The same picture gives the same bits: in every run, whatever the memory held before, in every ISA
// variant, and with any number of BLAS threads. Other BLAS kernels round differently; these tests
// measure by how much.
//
// With --dump FILE the program writes the results of its pictures there and runs no test: it starts
// itself that way under another kernel, which is chosen when a process starts.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "analysis/test_pictures.h"
#include "answers.h"
#include "numeric/isa_variants.h"
#include "public/analysed_picture.h"
#include "vistaTrim/vistaTrim.h"

// OpenBLAS's own calls; weak, so that these tests also build with another BLAS.
extern "C" {
void openblas_set_num_threads(int count) __attribute__((weak));
int openblas_get_num_threads() __attribute__((weak));
char* openblas_get_corename() __attribute__((weak));
}

namespace vistaTrim {
namespace {

using testPictures::Picture;

struct NamedPicture {
    const char* Name;
    Picture Pixels;
};

// Content, noise, hard edges, bright flat areas, whose statistics lose the most digits, and a
// picture so thin that its smallest copy is rejected.
std::vector<NamedPicture> SomePictures()
{
    return {{"blobs", testPictures::Blobs(640, 160, 1)},
            {"portrait", testPictures::Blobs(100, 640, 2)},
            {"thin", testPictures::Blobs(640, 30, 4)},
            {"noise", testPictures::Noise(640, 80, 3)},
            {"halves", testPictures::HalfAndHalf(640, 100)},
            {"bright", testPictures::Flat(640, 240, 255, 254, 250)}};
}

struct MapCopy {
    std::string Name;
    std::vector<float> Values;
};

struct Results {
    std::vector<MapCopy> Maps;
    Answers Crops;
};

Results ResultsOf(const Picture& picture)
{
    const testPictures::ImageHolder image = testPictures::MakeImage(picture);
    Results results;
    const CAnalysedPicture reader(*image);
    for (const NamedPictureMap& map : reader.Maps())
        results.Maps.push_back(
            {map.Name, std::vector<float>(map.Data, map.Data + int64_t{map.Cols} * map.Rows)});
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    parameters.NumMaxCropRectsPerSide = 10;
    IVistaTrim* const driver = CreateVistaTrimObj(image.get(), &parameters);
    results.Crops = AnswersOf(driver, picture.Cols, picture.Rows);
    DestroyVistaTrimObj(driver);
    return results;
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

void ExpectSameBits(const Results& found, const Results& expected)
{
    ASSERT_EQ(found.Maps.size(), 10U);
    ASSERT_EQ(found.Maps.size(), expected.Maps.size());
    for (size_t i = 0; i < found.Maps.size(); ++i)
        EXPECT_TRUE(SameBits(found.Maps[i].Values, expected.Maps[i].Values)) << found.Maps[i].Name;
    EXPECT_GT(found.Crops.All.size(), 100U);
    EXPECT_TRUE(SameBits(found.Crops.All, expected.Crops.All));
    EXPECT_TRUE(SameBits(found.Crops.Best, expected.Crops.Best));
    EXPECT_TRUE(SameBits(found.Crops.Ratio, expected.Crops.Ratio));
    EXPECT_TRUE(SameBits(found.Crops.Size, expected.Crops.Size));
    EXPECT_TRUE(SameBits(found.Crops.Own, expected.Crops.Own));
}

// Fills the memory that the next analysis will get with a byte that would show in its results.
void DirtyTheHeap(int byte)
{
    std::vector<std::unique_ptr<char[]>> blocks;
    for (const size_t size : {size_t{64}, size_t{4096}, size_t{1} << 18, size_t{1} << 22,
                              size_t{1} << 25, size_t{1} << 25})
        for (int i = 0; i < 8; ++i) {
            blocks.emplace_back(new char[size]);
            std::memset(blocks.back().get(), byte, size);
            // So that the writes are not optimised away.
            asm volatile("" : : "r"(blocks.back().get()) : "memory");
            if (size >= (size_t{1} << 25))
                break;
        }
}

TEST(Determinism, TheSameBitsWhateverTheMemoryHeldBefore)
{
    for (const NamedPicture& picture : SomePictures()) {
        SCOPED_TRACE(picture.Name);
        const Results first = ResultsOf(picture.Pixels);
        for (const int byte : {0xFF, 0x7F, 0x3C}) {
            DirtyTheHeap(byte);
            ExpectSameBits(ResultsOf(picture.Pixels), first);
        }
    }
}

// Nothing of an earlier picture remains in a later driver.
TEST(Determinism, TheSameBitsAfterOtherPictures)
{
    const std::vector<NamedPicture> pictures = SomePictures();
    std::vector<Results> first;
    for (const NamedPicture& picture : pictures)
        first.push_back(ResultsOf(picture.Pixels));
    for (size_t i = pictures.size(); i > 0; --i) {
        SCOPED_TRACE(pictures[i - 1].Name);
        ExpectSameBits(ResultsOf(pictures[i - 1].Pixels), first[i - 1]);
    }
}

// BLAS picks its kernels by the processor, not by our variant, so its results are the same in every
// variant, and so is everything else.
TEST(Determinism, EveryIsaVariantGivesTheSameBits)
{
    const IsaVariant before = ActiveIsaVariant();
    int variants = 0;
    for (const NamedPicture& picture : SomePictures()) {
        SCOPED_TRACE(picture.Name);
        SelectIsaVariant(IsaVariantPlain);
        const Results plain = ResultsOf(picture.Pixels);
        for (int variant = IsaVariantPlain + 1; variant < IsaVariantCount; ++variant) {
            if (!IsaVariantAvailable(static_cast<IsaVariant>(variant)))
                continue;
            SCOPED_TRACE(testing::Message() << "variant " << variant);
            SelectIsaVariant(static_cast<IsaVariant>(variant));
            ExpectSameBits(ResultsOf(picture.Pixels), plain);
            ++variants;
        }
    }
    SelectIsaVariant(before);
    if (variants == 0)
        GTEST_SKIP() << "this machine has the plain variant only";
    RecordProperty("variantsBesidesPlain", variants / static_cast<int>(SomePictures().size()));
}

// BLAS divides a product by rows, so each element is summed by one thread and in one order, and the
// dot product of 304 values stays with one thread. If a later version does otherwise, this test
// fails, and the difference must be measured as below for the kernels.
TEST(Determinism, BlasThreadCountChangesNoBit)
{
    if (openblas_set_num_threads == nullptr || openblas_get_num_threads == nullptr)
        GTEST_SKIP() << "not OpenBLAS";
    // Small pictures: on a loaded machine each product waits for all its threads to be scheduled.
    const Picture pictures[] = {testPictures::Blobs(640, 20, 1), testPictures::Noise(14, 640, 3)};
    for (const Picture& picture : pictures) {
        const Results one = ResultsOf(picture);
        for (const int threads : {2, 3, 8}) {
            openblas_set_num_threads(threads);
            EXPECT_EQ(openblas_get_num_threads(), threads);
            SCOPED_TRACE(testing::Message() << threads << " threads");
            ExpectSameBits(ResultsOf(picture), one);
            openblas_set_num_threads(1);
        }
    }
}

// --- Other kernels of the linear algebra library ----------------------------------------------

void WriteBytes(std::ofstream& out, const void* data, uint64_t bytes)
{
    out.write(reinterpret_cast<const char*>(&bytes), sizeof bytes);
    out.write(static_cast<const char*>(data), static_cast<std::streamsize>(bytes));
}

uint64_t ReadCount(std::ifstream& in)
{
    uint64_t bytes = 0;
    in.read(reinterpret_cast<char*>(&bytes), sizeof bytes);
    return in ? bytes : 0;
}

int Dump(const char* file)
{
    std::ofstream out(file, std::ios::binary);
    for (const NamedPicture& picture : SomePictures()) {
        const Results results = ResultsOf(picture.Pixels);
        for (const MapCopy& map : results.Maps)
            WriteBytes(out, map.Values.data(), map.Values.size() * sizeof(float));
        for (const auto* list : {&results.Crops.All, &results.Crops.Best})
            WriteBytes(out, list->data(), list->size() * sizeof(CInt32CropRect));
    }
    out.close();
    return out ? 0 : 1;
}

// The results of a process whose BLAS uses the kernels of `core`; `here` has their shape.
bool ReadResultsUnder(const char* core, const std::vector<Results>& here, std::vector<Results>& all)
{
    char file[] = "/tmp/determinism_XXXXXX";
    const int descriptor = mkstemp(file);
    if (descriptor < 0)
        return false;
    close(descriptor);
    const pid_t child = fork();
    if (child == 0) {
        setenv("OPENBLAS_CORETYPE", core, 1);
        execl("/proc/self/exe", "determinism_test", "--dump", file, static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = -1;
    waitpid(child, &status, 0);
    std::ifstream in(file, std::ios::binary);
    for (const Results& mine : here) {
        Results there;
        for (const MapCopy& map : mine.Maps) {
            std::vector<float> values(ReadCount(in) / sizeof(float));
            in.read(reinterpret_cast<char*>(values.data()),
                    static_cast<std::streamsize>(values.size() * sizeof(float)));
            there.Maps.push_back({map.Name, values});
        }
        for (auto* list : {&there.Crops.All, &there.Crops.Best}) {
            list->resize(ReadCount(in) / sizeof(CInt32CropRect));
            in.read(reinterpret_cast<char*>(list->data()),
                    static_cast<std::streamsize>(list->size() * sizeof(CInt32CropRect)));
        }
        all.push_back(there);
    }
    const bool whole = static_cast<bool>(in);
    unlink(file);
    return whole && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

double LargestDifference(const std::vector<float>& a, const std::vector<float>& b)
{
    double largest = 0.0;
    for (size_t i = 0; i < a.size(); ++i)
        largest = std::max(largest, std::abs(double(a[i]) - double(b[i])));
    return largest;
}

double LargestDifference(const std::vector<CInt32CropRect>& a, const std::vector<CInt32CropRect>& b,
                         double Score::*measure)
{
    double largest = 0.0;
    for (size_t i = 0; i < a.size(); ++i)
        largest = std::max(largest, std::abs(a[i].Score.*measure - b[i].Score.*measure));
    return largest;
}

size_t InBoth(const std::vector<CInt32CropRect>& a, const std::vector<CInt32CropRect>& b)
{
    size_t both = 0;
    for (const CInt32CropRect& crop : a)
        for (const CInt32CropRect& other : b)
            if (crop.Left == other.Left && crop.Right == other.Right && crop.Top == other.Top &&
                crop.Bottom == other.Bottom)
                ++both;
    return both;
}

// Largest differences seen between the kernels of SkylakeX and those of Haswell, Nehalem and
// Prescott (OpenBLAS 0.3.21), on these pictures: maps 5.4e-7 and, on the picture of two flat
// halves, 7.2e-5; composition score 9.5e-6, the other measures 1.9e-7. The halves' strips hold one
// or two colours, so the inverse of their covariances is mostly that of the regulariser. The limits
// are four times these differences.
constexpr double kMapTolerance = 2.2e-6;
constexpr double kFlatMapTolerance = 2.9e-4;
constexpr double kCompositionTolerance = 3.8e-5;
constexpr double kMeasureTolerance = 8e-7;

void ExpectNear(const char* core, const NamedPicture& picture, const Results& here,
                const Results& there)
{
    SCOPED_TRACE(testing::Message() << core << ", " << picture.Name);
    const bool flat = std::string(picture.Name) == "halves";
    double maps = 0.0;
    for (size_t i = 0; i < here.Maps.size(); ++i) {
        const MapCopy& map = here.Maps[i];
        ASSERT_EQ(map.Values.size(), there.Maps[i].Values.size());
        // Edges never pass through BLAS.
        if (map.Name == "EdgeMap") {
            EXPECT_TRUE(SameBits(map.Values, there.Maps[i].Values));
        }
        const double difference = LargestDifference(map.Values, there.Maps[i].Values);
        EXPECT_LE(difference, flat ? kFlatMapTolerance : kMapTolerance) << map.Name;
        maps = std::max(maps, difference);
    }

    const std::vector<CInt32CropRect>& a = here.Crops.All;
    const std::vector<CInt32CropRect>& b = there.Crops.All;
    ASSERT_EQ(a.size(), b.size());
    const double composition = LargestDifference(a, b, &Score::CompositionScore);
    double others = 0.0;
    for (double Score::*measure :
         {&Score::CoverageScore, &Score::BorderScore, &Score::PeakScore, &Score::CentrePeakScore})
        others = std::max(others, LargestDifference(a, b, measure));
    EXPECT_LE(composition, kCompositionTolerance);
    EXPECT_LE(others, kMeasureTolerance);
    std::printf("%-9s %-9s maps %8.2g  composition %8.2g  other measures %8.2g  "
                "best crops in common %zu of %zu\n",
                core, picture.Name, maps, composition, others,
                InBoth(here.Crops.Best, there.Crops.Best), here.Crops.Best.size());
}

TEST(Determinism, OtherBlasKernelsStayClose)
{
    if (openblas_get_corename == nullptr)
        GTEST_SKIP() << "not OpenBLAS";
    const std::vector<NamedPicture> pictures = SomePictures();
    std::vector<Results> here;
    for (const NamedPicture& picture : pictures)
        here.push_back(ResultsOf(picture.Pixels));
    std::printf("compared with the kernels of %s:\n", openblas_get_corename());
    for (const char* core : {"Haswell", "Nehalem", "Prescott"}) {
        std::vector<Results> there;
        ASSERT_TRUE(ReadResultsUnder(core, here, there)) << core;
        for (size_t i = 0; i < pictures.size(); ++i)
            ExpectNear(core, pictures[i], here[i], there[i]);
    }
}

} // namespace
} // namespace vistaTrim

int main(int count, char** arguments)
{
    std::cerr.rdbuf(nullptr); // the kernels report the thin picture
    // BLAS threads busy-wait for one another; only one test needs them.
    if (openblas_set_num_threads != nullptr)
        openblas_set_num_threads(1);
    if (count == 3 && std::string(arguments[1]) == "--dump")
        return vistaTrim::Dump(arguments[2]);
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
