#include "batch/run_photos.h"

#include <algorithm>
#include <csignal>
#include <new>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>
#include <vips/vips.h>

#include "batch/interruption.h"
#include "options/program_error.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::cli {
namespace {

using photo::PhotoError;

struct RunOutcome {
    int Status = -1;
    std::string Err;
    std::vector<PhotoResult> Results;
};

std::vector<ListedPhoto> Named(const std::vector<std::string>& names)
{
    std::vector<ListedPhoto> photos;
    for (const std::string& name : names)
        photos.push_back({name, "", "", nullptr});
    return photos;
}

RunOutcome RunAll(const std::vector<ListedPhoto>& photos, const Options& options,
                  const std::function<void(const ListedPhoto&, PhotoResult&)>& work)
{
    RunOutcome ran;
    PhotoSteps steps;
    steps.Work = work;
    steps.Emit = [&ran](const PhotoResult& result) { ran.Results.push_back(result); };
    testing::internal::CaptureStderr();
    ran.Status = RunPhotos(options, photos, steps);
    ran.Err = testing::internal::GetCapturedStderr();
    return ran;
}

TEST(RunPhotos, GivesEachResultInOrder)
{
    for (const int workers : {1, 3}) {
        Options options;
        options.Workers = workers;
        const RunOutcome ran = RunAll(Named({"a", "b", "c"}), options,
                                      [](const ListedPhoto& photo, PhotoResult& result) {
                                          result.Written = {photo.Path + ".out"};
                                      });
        EXPECT_EQ(ran.Status, 0);
        EXPECT_EQ(ran.Err, "");
        ASSERT_EQ(ran.Results.size(), 3U);
        for (size_t i = 0; i < 3; ++i) {
            const std::string name(1, static_cast<char>('a' + i));
            EXPECT_EQ(ran.Results[i].File, name);
            EXPECT_EQ(ran.Results[i].Error, "");
            EXPECT_EQ(ran.Results[i].Written, (std::vector<std::string>{name + ".out"}));
        }
    }
}

TEST(RunPhotos, WhatWorkThrowsIsTheErrorOfThatPhotographAlone)
{
    std::vector<ListedPhoto> photos = Named({"wish", "memory", "plain", "good", "-"});
    photos.push_back({"listed", "", "is empty", nullptr});
    Options options;
    options.Workers = 1;
    std::vector<std::string> worked;
    const RunOutcome ran =
        RunAll(photos, options, [&worked](const ListedPhoto& photo, PhotoResult&) {
            worked.push_back(photo.Path);
            if (photo.Path == "wish")
                throw PhotoError(PhotoError::Kind::DoesNotFit,
                                 photo::Wish{photo::WishKind::MustKeep, {1, 2, 3, 4}},
                                 "is too large");
            if (photo.Path == "memory")
                throw std::bad_alloc();
            if (photo.Path == "plain" || photo.Path == "-")
                throw std::runtime_error("of some reason");
        });
    EXPECT_EQ(ran.Status, 1);
    EXPECT_EQ(ran.Err, "vistatrim: wish: the region of --must-keep 1,2,3,4 is too large\n"
                       "vistatrim: memory: not enough memory\n"
                       "vistatrim: plain: of some reason\n"
                       "vistatrim: standard input: of some reason\n"
                       "vistatrim: listed: is empty\n");
    ASSERT_EQ(ran.Results.size(), 6U);
    EXPECT_EQ(ran.Results[1].Error, "not enough memory");
    EXPECT_EQ(ran.Results[3].Error, "");
    EXPECT_EQ(ran.Results[5].Error, "is empty");
    // A photograph that already has an error is not processed.
    EXPECT_EQ(worked, (std::vector<std::string>{"wish", "memory", "plain", "good", "-"}));
}

TEST(RunPhotos, EndsWhenTheOutputCannotBeWritten)
{
    const std::vector<std::string> names(200, "a");
    Options options;
    options.Workers = 1;
    size_t worked = 0;
    size_t emitted = 0;
    PhotoSteps steps;
    steps.Work = [&worked](const ListedPhoto&, PhotoResult&) { ++worked; };
    steps.Emit = [&emitted](const PhotoResult&) {
        if (++emitted == 3)
            throw ProgramError("the disk is full");
    };
    testing::internal::CaptureStderr();
    EXPECT_EQ(RunPhotos(options, Named(names), steps), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vistatrim: the disk is full\n");
    EXPECT_EQ(emitted, 3U); // nothing after the failure
    EXPECT_LT(worked, 200U);
}

TEST(RunPhotos, TimingsAreShownForSuccessesOnly)
{
    Options options;
    options.Timings = true;
    options.Workers = 1;
    const RunOutcome ran =
        RunAll(Named({"a", "b"}), options, [](const ListedPhoto& photo, PhotoResult& r) {
            r.Found.Times = {1.0, 2.0, 3.0, 4.0};
            r.WriteMilliseconds = 5.0;
            if (photo.Path == "b")
                throw std::runtime_error("broken");
        });
    EXPECT_EQ(
        ran.Err,
        "vistatrim: a: read 1.0 ms, analyse 2.0 ms, faces 3.0 ms, score 4.0 ms, write 5.0 ms\n"
        "vistatrim: b: broken\n");
}

TEST(RunPhotos, ThreadsOfAPhotographShareTheWorkers)
{
    Options options;
    options.Workers = 8;
    EXPECT_EQ(ThreadsPerPhoto(options, 0), 8);
    EXPECT_EQ(ThreadsPerPhoto(options, 1), 8);
    EXPECT_EQ(ThreadsPerPhoto(options, 2), 4);
    EXPECT_EQ(ThreadsPerPhoto(options, 3), 2);
    EXPECT_EQ(ThreadsPerPhoto(options, 8), 1);
    EXPECT_EQ(ThreadsPerPhoto(options, 900), 1);
    options.Workers = 0; // as many as there are processors
    const int processors = static_cast<int>(std::thread::hardware_concurrency());
    EXPECT_EQ(ThreadsPerPhoto(options, 1), std::max(1, processors));
    EXPECT_EQ(ThreadsPerPhoto(options, 100000), 1);
}

// With several at a time, more threads would compete with the other workers.
TEST(RunPhotos, OnlyASinglePhotographIsReadByAllWorkers)
{
    Options options;
    options.Workers = 5;
    const auto threads = [&options](size_t photos) {
        int seen = 0;
        RunAll(Named(std::vector<std::string>(photos, "a")), options,
               [&seen](const ListedPhoto&, PhotoResult&) { seen = vips_concurrency_get(); });
        return seen;
    };
    EXPECT_EQ(threads(1), 5);
    options.Workers = 1;
    EXPECT_EQ(threads(1), 1);
    EXPECT_EQ(threads(3), 1);
    options.Workers = 5;
    EXPECT_EQ(threads(1), 5);
}

// The last test of the program: a noted signal stays noted.
TEST(RunPhotosInterrupted, ReportsHowManyWereDoneAndTheSignal)
{
    const auto run = [](size_t photos) {
        NoteInterruptions();
        Options options;
        options.Workers = 1;
        return RunAll(Named(std::vector<std::string>(photos, "a")), options,
                      [calls = 0](const ListedPhoto&, PhotoResult&) mutable {
                          if (++calls == 2)
                              std::raise(SIGTERM);
                      });
    };
    EXPECT_EQ(NotedInterruption(), 0);
    const RunOutcome whole = run(2); // the last one was already being processed: nothing is missing
    EXPECT_EQ(NotedInterruption(), SIGTERM);
    EXPECT_EQ(whole.Status, 0);
    EXPECT_EQ(whole.Err, "");
    const RunOutcome none = run(5);
    EXPECT_EQ(none.Status, 128 + SIGTERM);
    EXPECT_EQ(none.Err, "vistatrim: interrupted after 0 of 5 photographs\n");
    EXPECT_TRUE(none.Results.empty());
}

} // namespace
} // namespace vistaTrim::cli
