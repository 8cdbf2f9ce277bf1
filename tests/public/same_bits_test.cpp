// Every candidate of eight pictures, with all measures, has the same bits in every run, in every
// ISA variant, with any number of drivers at work at the same time, and whichever kernels OpenBLAS
// and the C library choose for the processor: the engine does not call those of OpenBLAS unless it
// is built to.
//
// With --print the program prints one line for each picture and runs no test: it starts itself that
// way in another process.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

#include "analysis/test_pictures.h"
#include "numeric/isa_variants.h"
#include "numeric/linear_algebra.h"
#include "vistaTrim/vistaTrim.h"
#if VISTATRIM_HAVE_PHOTOGRAPHS
#include "analysis/real_photographs.h"
#endif

namespace vistaTrim {
namespace {

using testPictures::Picture;

constexpr size_t kPictures = 8;

// Photographs where they are installed, synthetic images for the rest.
struct SamplePictures {
    std::vector<Picture> All;
    size_t Photographs = 0; // the first ones
};

SamplePictures SomePictures()
{
    SamplePictures samples;
    std::vector<Picture>& pictures = samples.All;
#if VISTATRIM_HAVE_PHOTOGRAPHS
    for (const std::string& path : testPictures::PhotographPaths()) {
        if (pictures.size() == kPictures)
            break;
        const slowOracle::Picture photograph = testPictures::ReadPhotograph(path);
        Picture picture(photograph.Cols, photograph.Rows);
        picture.Bytes = photograph.Bytes;
        pictures.push_back(picture);
    }
    samples.Photographs = pictures.size();
#endif
    for (uint32_t seed = 1; pictures.size() < kPictures; ++seed)
        pictures.push_back(seed % 2 != 0 ? testPictures::Blobs(640, 480, seed)
                                         : testPictures::Noise(480, 640, seed));
    return samples;
}

struct Candidates {
    uint32_t Count;
    uint64_t Hash; // FNV-1a over all fields, without the padding between them
};

void Include(uint64_t& hash, const void* data, size_t size)
{
    const unsigned char* const bytes = static_cast<const unsigned char*>(data);
    for (size_t i = 0; i < size; ++i)
        hash = (hash ^ bytes[i]) * 1099511628211U;
}

Candidates CandidatesOf(const Picture& picture)
{
    const testPictures::ImageHolder image = testPictures::MakeImage(picture);
    const VistaTrimParameters parameters;
    IVistaTrim* const driver = CreateVistaTrimObj(image.get(), &parameters);
    const SuggestionParameters everything;
    ICropRects* list = nullptr;
    ComputeCropSuggestions(driver, &list, &everything);
    Candidates found = {list->Count(), 14695981039346656037U};
    for (uint32_t i = 0; i < list->Count(); ++i) {
        const CInt32CropRect& crop = list->Data()[i];
        for (const int32_t side : {crop.Left, crop.Right, crop.Top, crop.Bottom})
            Include(found.Hash, &side, sizeof side);
        const char covers = crop.CoversContent ? 1 : 0;
        Include(found.Hash, &covers, 1);
        for (const double measure :
             {crop.Score.CompositionScore, crop.Score.CoverageScore, crop.Score.BorderScore,
              crop.Score.PeakScore, crop.Score.CentrePeakScore, crop.Score.RoiScore})
            Include(found.Hash, &measure, sizeof measure);
    }
    list->Release();
    DestroyVistaTrimObj(driver);
    return found;
}

std::vector<std::string> LinesOf(const std::vector<Picture>& pictures)
{
    std::vector<std::string> lines;
    for (const Picture& picture : pictures) {
        const Candidates found = CandidatesOf(picture);
        char line[80];
        std::snprintf(line, sizeof line, "%d x %d: %u candidates, %016llx", picture.Cols,
                      picture.Rows, found.Count, static_cast<unsigned long long>(found.Hash));
        lines.push_back(line);
    }
    return lines;
}

class SameBits : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        const SamplePictures samples = SomePictures();
        Pictures = new std::vector<Picture>(samples.All);
        Expected = new std::vector<std::string>(LinesOf(*Pictures));
        std::printf("%zu of %zu pictures are photographs:\n", samples.Photographs, kPictures);
        for (const std::string& line : *Expected)
            std::printf("%s\n", line.c_str());
    }
    static void TearDownTestSuite()
    {
        delete Expected;
        delete Pictures;
    }

    static const std::vector<Picture>* Pictures;
    static const std::vector<std::string>* Expected;
};
const std::vector<Picture>* SameBits::Pictures = nullptr;
const std::vector<std::string>* SameBits::Expected = nullptr;

// A hash that did not depend on the pixels would hide every difference.
TEST_F(SameBits, OneChangedPixelBitIsNoticed)
{
    for (size_t i = 0; i < kPictures; ++i) {
        Picture other = (*Pictures)[i];
        other.At(other.Rows / 2, other.Cols / 2)[1] ^= 1;
        EXPECT_NE(LinesOf({other})[0], (*Expected)[i]);
    }
}

TEST_F(SameBits, InEveryRunAndVariant)
{
    const IsaVariant before = ActiveIsaVariant();
    for (int variant = IsaVariantPlain; variant < IsaVariantCount; ++variant) {
        if (!IsaVariantAvailable(static_cast<IsaVariant>(variant)))
            continue;
        SelectIsaVariant(static_cast<IsaVariant>(variant));
        EXPECT_EQ(LinesOf(*Pictures), *Expected) << "variant " << variant;
    }
    SelectIsaVariant(before);
}

TEST_F(SameBits, WithSeveralDriversAtOnce)
{
    for (const size_t threads : {2U, 4U, 8U}) {
        std::vector<std::vector<std::string>> lines(threads);
        std::vector<std::thread> running;
        for (size_t thread = 0; thread < threads; ++thread)
            running.emplace_back([&, thread] {
                for (size_t i = thread; i < kPictures; i += threads)
                    lines[thread].push_back(LinesOf({(*Pictures)[i]})[0]);
            });
        for (std::thread& thread : running)
            thread.join();
        for (size_t i = 0; i < kPictures; ++i)
            EXPECT_EQ(lines[i % threads][i / threads], (*Expected)[i]) << threads << " threads";
    }
}

// The lines of another process of this program.
std::vector<std::string> LinesWithEnvironment(const std::string& setting)
{
    char self[4096] = {};
    EXPECT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
    const std::string command = setting + " '" + self + "' --print";
    FILE* const output = popen(command.c_str(), "r");
    if (output == nullptr) {
        ADD_FAILURE() << "cannot run " << command;
        return {};
    }
    std::vector<std::string> lines;
    char line[200];
    while (std::fgets(line, sizeof line, output) != nullptr)
        lines.push_back(std::string(line, std::strcspn(line, "\n")));
    EXPECT_EQ(pclose(output), 0);
    return lines;
}

TEST_F(SameBits, WithEveryOpenBlasKernel)
{
    if (!kFixedOrder)
        GTEST_SKIP() << "with BLAS the last bits are those of its kernels";
    for (const char* core : {"Prescott", "Nehalem", "Haswell", "SkylakeX"})
        EXPECT_EQ(LinesWithEnvironment(std::string("OPENBLAS_CORETYPE=") + core), *Expected)
            << core;
}

// For processors without these instructions glibc has other variants of exp and pow. They differ in
// the last bit of some doubles, which the rounding to float hides.
TEST_F(SameBits, WithTheMathFunctionsOfOlderProcessors)
{
    EXPECT_EQ(LinesWithEnvironment("GLIBC_TUNABLES=glibc.cpu.hwcaps=-FMA,-AVX2,-FMA4"), *Expected);
}

} // namespace
} // namespace vistaTrim

int main(int count, char** arguments)
{
    if (count == 2 && std::string(arguments[1]) == "--print") {
        for (const std::string& line : vistaTrim::LinesOf(vistaTrim::SomePictures().All))
            std::printf("%s\n", line.c_str());
        return 0;
    }
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
