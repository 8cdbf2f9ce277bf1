#include "blas_threads.h"

#include <filesystem>
#include <iterator>

#include <gtest/gtest.h>

#include "suggestion_job.h"

namespace vistaTrim::host {
namespace {

size_t Threads()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<size_t>(std::distance(begin(tasks), end(tasks)));
}

PhotoResult CropsOfAGradient()
{
    WorkingPicture picture;
    picture.Photo = {640, 480};
    picture.Size = picture.Photo;
    for (int32_t y = 0; y < picture.Size.Height; ++y)
        for (int32_t x = 0; x < picture.Size.Width; ++x)
            for (int32_t band : {x, y, x + y})
                picture.Pixels.push_back(static_cast<uint8_t>(band / 5));
    PhotoResult result;
    SuggestCrops(picture, Request(), result);
    return result;
}

TEST(BlasThreads, EndAndTheAnalysisGoesOnWithoutThem)
{
    HoldBlasToOneThread();
    EXPECT_EQ(Threads(), 1U);
    EXPECT_FALSE(CropsOfAGradient().Crops.empty());
    EXPECT_EQ(Threads(), 1U);
}

} // namespace
} // namespace vistaTrim::host
