// What a host may do from several threads: use separate drivers, add and drop references to any
// object, and read lists, even when the drivers that made them are gone. Built with the thread
// sanitizer these tests look for races; built without, they compare bits.
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/test_pictures.h"
#include "answers.h"
#include "vistaTrim/vistaTrim.h"

// OpenBLAS's own call; weak, so that these tests also build with another BLAS.
extern "C" void openblas_set_num_threads(int count) __attribute__((weak));

namespace vistaTrim {
namespace {

using testPictures::Picture;

// BLAS threads busy-wait for one another, so with them these tests would take minutes on a loaded
// machine. Only one test uses more than one.
void SetBlasThreads(int count)
{
    if (openblas_set_num_threads != nullptr)
        openblas_set_num_threads(count);
}

class Threads : public testing::Test {
protected:
    void SetUp() override
    {
        SetBlasThreads(1);
    }
};

constexpr int kThreads = 4;

// Runs work(0) .. work(kThreads - 1) at the same time: all wait until the last one has started.
void RunTogether(const std::function<void(int)>& work)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&, thread] {
            ++ready;
            while (ready < kThreads)
                std::this_thread::yield();
            work(thread);
        });
    for (std::thread& thread : threads)
        thread.join();
}

struct DestroyDriver {
    void operator()(IVistaTrim* driver) const
    {
        DestroyVistaTrimObj(driver);
    }
};
using DriverHolder = std::unique_ptr<IVistaTrim, DestroyDriver>;

DriverHolder MakeDriver(IImage* image)
{
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    parameters.NumMaxCropRectsPerSide = 6;
    return DriverHolder(CreateVistaTrimObj(image, &parameters));
}

Answers AnswersOf(const Picture& picture)
{
    const testPictures::ImageHolder image = testPictures::MakeImage(picture);
    const DriverHolder driver = MakeDriver(image.get());
    return AnswersOf(driver.get(), picture.Cols, picture.Rows);
}

// Of different sizes, so that shared scratch would not fit.
std::vector<Picture> SomePictures()
{
    return {testPictures::Blobs(640, 96, 1), testPictures::Blobs(80, 640, 2),
            testPictures::Noise(640, 51, 3), testPictures::Checkerboard(640, 110, 16),
            testPictures::Gradient(60, 640)};
}

TEST_F(Threads, SeparateDriversGiveTheSameBitsAsOneThread)
{
    const std::vector<Picture> pictures = SomePictures();
    std::vector<Answers> alone;
    for (const Picture& picture : pictures) {
        alone.push_back(AnswersOf(picture));
        ASSERT_GT(alone.back().All.size(), 100U);
        ASSERT_GT(alone.back().Best.size(), 1U);
    }

    std::atomic<int> different{0};
    RunTogether([&](int thread) {
        for (size_t round = 0; round < 2 * pictures.size(); ++round) {
            const size_t which = (round + static_cast<size_t>(thread)) % pictures.size();
            if (!SameBits(AnswersOf(pictures[which]), alone[which]))
                ++different;
        }
    });
    EXPECT_EQ(different, 0);
}

// The same picture at the same moment in every thread: the same stages run at once.
TEST_F(Threads, ManyDriversOfOnePictureAgree)
{
    const Picture picture = testPictures::Blobs(640, 20, 4);
    const Answers alone = AnswersOf(picture);
    SetBlasThreads(2);
    std::vector<Answers> together(kThreads);
    RunTogether([&](int thread) { together[static_cast<size_t>(thread)] = AnswersOf(picture); });
    for (const Answers& answers : together)
        EXPECT_TRUE(SameBits(answers, alone));
}

// Drivers only read the image that they borrow.
TEST_F(Threads, OneImageServesDriversOfManyThreads)
{
    const Picture picture = testPictures::Blobs(640, 70, 5);
    const testPictures::ImageHolder image = testPictures::MakeImage(picture);
    const Answers alone = AnswersOf(picture);
    std::atomic<int> different{0};
    RunTogether([&](int) {
        const DriverHolder driver = MakeDriver(image.get());
        if (!SameBits(AnswersOf(driver.get(), picture.Cols, picture.Rows), alone))
            ++different;
    });
    EXPECT_EQ(different, 0);
}

// Created in one thread, used in another, destroyed in a third; one at a time.
TEST_F(Threads, ADriverMayMoveBetweenThreads)
{
    const Picture picture = testPictures::Blobs(640, 52, 6);
    const Answers alone = AnswersOf(picture);
    testPictures::ImageHolder image = testPictures::MakeImage(picture);
    DriverHolder driver;
    Answers answers;
    std::thread([&] { driver = MakeDriver(image.get()); }).join();
    std::thread([&] { answers = AnswersOf(driver.get(), picture.Cols, picture.Rows); }).join();
    std::thread([&] {
        driver.reset();
        image.reset();
    }).join();
    EXPECT_TRUE(SameBits(answers, alone));
}

// An object that reports its destruction, and which writes of the threads it sees then.
class WitnessedObject : public CRefCount {
public:
    WitnessedObject(std::atomic<int>& ended, int& seen) : Ended(ended), Seen(seen)
    {
    }
    ~WitnessedObject() override
    {
        // Not atomic: only the order of the references makes these reads safe.
        Seen = 0;
        for (const int note : Notes)
            Seen += note;
        ++Ended;
    }
    void AddRef()
    {
        TakeReference();
    }
    void Release()
    {
        GiveUpReference();
    }

    int Notes[kThreads] = {};

private:
    std::atomic<int>& Ended;
    int& Seen;
};

TEST_F(Threads, TheLastReferenceDestroysTheObjectOnceAndSeesAllWrites)
{
    for (int round = 0; round < 200; ++round) {
        std::atomic<int> ended{0};
        int seen = -1;
        WitnessedObject* const object = new WitnessedObject(ended, seen);
        for (int thread = 1; thread < kThreads; ++thread)
            object->AddRef(); // with the first one, a reference for each thread
        RunTogether([&](int thread) {
            for (int i = 0; i < 20; ++i) {
                object->AddRef();
                ++object->Notes[thread];
                object->Release();
            }
            object->Release();
        });
        ASSERT_EQ(ended, 1);
        ASSERT_EQ(seen, 20 * kThreads);
    }
}

TEST_F(Threads, ReferencesOfEveryObjectAreAddedAndDroppedFromManyThreads)
{
    const Picture picture = testPictures::Blobs(640, 52, 7);
    const testPictures::ImageHolder image = testPictures::MakeImage(picture);
    const DriverHolder driver = MakeDriver(image.get());
    ICropRects* list = nullptr;
    const SuggestionParameters request;
    ComputeCropSuggestions(driver.get(), &list, &request);
    const uint32_t count = list->Count();

    RunTogether([&](int) {
        for (int i = 0; i < 2000; ++i) {
            image->AddRef();
            driver->AddRef();
            list->AddRef();
            image->Release();
            driver->Release();
            list->Release();
        }
    });

    // A lost update of a count would have destroyed one of them, or would leak it.
    EXPECT_EQ(list->Count(), count);
    EXPECT_EQ(AllOf(driver.get(), request).size(), count);
    list->Release();
}

uint64_t SumOf(ICropRects& list)
{
    uint64_t sum = 0;
    for (uint32_t i = 0; i < list.Count(); ++i) {
        const CInt32CropRect& record = list.Data()[i];
        uint64_t bits = 0;
        std::memcpy(&bits, &record.Score.CompositionScore, sizeof bits);
        sum = sum * 31 + bits + static_cast<uint64_t>(record.Left) * 7 +
              static_cast<uint64_t>(record.Bottom);
    }
    return sum;
}

TEST_F(Threads, ListsAreReadWhileTheDriverRunsAndIsDestroyed)
{
    const Picture picture = testPictures::Blobs(640, 52, 8);
    for (int round = 0; round < 3; ++round) {
        testPictures::ImageHolder image = testPictures::MakeImage(picture);
        DriverHolder driver = MakeDriver(image.get());
        ICropRects* list = nullptr;
        const SuggestionParameters request;
        ComputeCropSuggestions(driver.get(), &list, &request);
        ASSERT_GT(list->Count(), 0U);
        const uint64_t before = SumOf(*list);
        for (int thread = 1; thread < kThreads; ++thread)
            list->AddRef(); // with the first one, a reference for each thread

        std::atomic<int> changed{0};
        RunTogether([&](int thread) {
            if (thread == 0) {
                // The candidates get new soft scores while the others read their copies.
                CRectOfInterest rect(10, 60, 5, 40, false);
                driver->AddRectOfInterest(rect);
                AllOf(driver.get(), request);
                driver.reset();
                image.reset();
            }
            for (int i = 0; i < 20; ++i)
                if (SumOf(*list) != before)
                    ++changed;
            list->Release();
        });
        EXPECT_EQ(changed, 0);
    }
}

} // namespace
} // namespace vistaTrim
