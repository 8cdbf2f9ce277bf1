#include "batch/blas_threads.h"

#include <filesystem>
#include <iterator>

#include <gtest/gtest.h>

#include "vistaTrimPhoto/analysis.h"

namespace vistaTrim::cli {
namespace {

size_t Threads()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<size_t>(std::distance(begin(tasks), end(tasks)));
}

photo::Suggestions CropsOfAGradient()
{
    photo::WorkingPicture picture;
    picture.Photo = {640, 480};
    picture.Pixels.Size = picture.Photo;
    for (int32_t y = 0; y < picture.Photo.Height; ++y)
        for (int32_t x = 0; x < picture.Photo.Width; ++x)
            for (int32_t band : {x, y, x + y})
                picture.Pixels.Bytes.push_back(static_cast<uint8_t>(band / 5));
    return photo::Analysis(picture).Suggest(photo::Request());
}

TEST(BlasThreads, StopAndTheAnalysisStillWorks)
{
    HoldBlasToOneThread();
    EXPECT_EQ(Threads(), 1U);
    EXPECT_FALSE(CropsOfAGradient().Crops.empty());
    EXPECT_EQ(Threads(), 1U);
}

} // namespace
} // namespace vistaTrim::cli
