#include "vistaTrim/parameters.h"

#include <cstring>
#include <memory>

#include <gtest/gtest.h>

namespace vistaTrim {
namespace {

// Two aspect rows, one scale row, one rectangle.
VistaTrimParameters SomeParameters()
{
    VistaTrimParameters parameters;
    parameters.NumAspectRatios = 2;
    parameters.AspectRatios = new DoubleInfo[2];
    parameters.AspectRatios[0] = DoubleInfo(1.5, false);
    parameters.AspectRatios[1] = DoubleInfo(0.5);
    parameters.NumCropRectScaleRatios = 1;
    parameters.CropRectScaleRatios = new DoubleInfo[1];
    parameters.CropRectScaleRatios[0] = DoubleInfo(0.7);
    parameters.NumRectsOfInterest = 1;
    parameters.RectsOfInterest = new CRectOfInterest[1];
    parameters.RectsOfInterest[0] = CRectOfInterest(1, 2, 3, 4, true);
    parameters.RectsOfInterest[0].Kind = RoiHardInclude;
    parameters.NumMaxCropRectsPerSide = 9;
    parameters.UseBuiltInFaceDetector = true;
    return parameters;
}

void ExpectSomeParameters(const VistaTrimParameters& parameters)
{
    ASSERT_EQ(parameters.NumAspectRatios, 2U);
    EXPECT_EQ(parameters.AspectRatios[0].Value, 1.5);
    EXPECT_FALSE(parameters.AspectRatios[0].Enabled);
    EXPECT_EQ(parameters.AspectRatios[1].Value, 0.5);
    EXPECT_TRUE(parameters.AspectRatios[1].Enabled);
    ASSERT_EQ(parameters.NumCropRectScaleRatios, 1U);
    EXPECT_EQ(parameters.CropRectScaleRatios[0].Value, 0.7);
    ASSERT_EQ(parameters.NumRectsOfInterest, 1U);
    EXPECT_EQ(parameters.RectsOfInterest[0].Right, 2);
    EXPECT_TRUE(parameters.RectsOfInterest[0].Marked);
    EXPECT_EQ(parameters.RectsOfInterest[0].Kind, RoiHardInclude);
    EXPECT_EQ(parameters.NumMaxCropRectsPerSide, 9U);
    EXPECT_TRUE(parameters.UseBuiltInFaceDetector);
}

TEST(VistaTrimParameters, NewObjectIsEmptyAndHasNoDefaults)
{
    const VistaTrimParameters parameters;
    EXPECT_EQ(parameters.AspectRatios, nullptr);
    EXPECT_EQ(parameters.NumAspectRatios, 0U);
    EXPECT_EQ(parameters.CropRectScaleRatios, nullptr);
    EXPECT_EQ(parameters.NumCropRectScaleRatios, 0U);
    EXPECT_EQ(parameters.RectsOfInterest, nullptr);
    EXPECT_EQ(parameters.NumRectsOfInterest, 0U);
    EXPECT_EQ(parameters.NumMaxCropRectsPerSide, 0U);
    EXPECT_FALSE(parameters.UseBuiltInFaceDetector);
}

TEST(VistaTrimParameters, DefaultsAreSixRatiosAndSevenScalesAllEnabled)
{
    VistaTrimParameters parameters;
    parameters.NumRectsOfInterest = 3;
    parameters.UseBuiltInFaceDetector = true;
    parameters.SetDefaults();

    const double aspects[] = {64.0 / 27.0, 16.0 / 9.0, 3.0 / 2.0, 4.0 / 3.0, 3.0 / 4.0, 2.0 / 3.0};
    ASSERT_EQ(parameters.NumAspectRatios, 6U);
    for (uint32_t i = 0; i < 6; ++i) {
        EXPECT_EQ(parameters.AspectRatios[i].Value, aspects[i]);
        EXPECT_TRUE(parameters.AspectRatios[i].Enabled);
    }
    const double scales[] = {0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0};
    ASSERT_EQ(parameters.NumCropRectScaleRatios, 7U);
    for (uint32_t i = 0; i < 7; ++i) {
        EXPECT_EQ(parameters.CropRectScaleRatios[i].Value, scales[i]);
        EXPECT_TRUE(parameters.CropRectScaleRatios[i].Enabled);
    }
    EXPECT_EQ(parameters.NumMaxCropRectsPerSide, 25U);
    EXPECT_EQ(parameters.RectsOfInterest, nullptr);
    EXPECT_EQ(parameters.NumRectsOfInterest, 0U);
    EXPECT_FALSE(parameters.UseBuiltInFaceDetector);
}

TEST(VistaTrimParameters, EachDefaultCanBeSetByItself)
{
    VistaTrimParameters parameters;
    parameters.SetDefaultAspectRatios();
    EXPECT_EQ(parameters.NumAspectRatios, 6U);
    EXPECT_EQ(parameters.NumCropRectScaleRatios, 0U);
    parameters.SetDefaultCropRectScaleRatios();
    EXPECT_EQ(parameters.NumCropRectScaleRatios, 7U);
    EXPECT_EQ(parameters.NumMaxCropRectsPerSide, 0U);
    parameters.SetDefaultNumMaxCropRectsPerSide();
    EXPECT_EQ(parameters.NumMaxCropRectsPerSide, 25U);
    parameters.NumRectsOfInterest = 4;
    parameters.SetDefaultRectsOfInterest();
    EXPECT_EQ(parameters.NumRectsOfInterest, 0U);
    parameters.UseBuiltInFaceDetector = true;
    parameters.SetDefaultUseBuiltInFaceDetector();
    EXPECT_FALSE(parameters.UseBuiltInFaceDetector);
}

// The operations are for new objects: an existing array is leaked, not freed, so a host that kept
// the pointer still owns it.
TEST(VistaTrimParameters, SettingADefaultLeaksTheOldArray)
{
    const std::unique_ptr<DoubleInfo[]> mine(new DoubleInfo[1]);
    mine[0] = DoubleInfo(9.0);
    VistaTrimParameters parameters;
    parameters.AspectRatios = mine.get();
    parameters.SetDefaultAspectRatios();
    EXPECT_NE(parameters.AspectRatios, mine.get());
    EXPECT_EQ(mine[0].Value, 9.0);
}

TEST(VistaTrimParameters, CopyIsDeepAndComplete)
{
    const VistaTrimParameters source = SomeParameters();
    VistaTrimParameters copy(source);
    ExpectSomeParameters(copy);
    EXPECT_NE(copy.AspectRatios, source.AspectRatios);
    EXPECT_NE(copy.CropRectScaleRatios, source.CropRectScaleRatios);
    EXPECT_NE(copy.RectsOfInterest, source.RectsOfInterest);

    copy.AspectRatios[0].Value = 7.0;
    copy.CropRectScaleRatios[0].Enabled = false;
    copy.RectsOfInterest[0].Left = 7;
    ExpectSomeParameters(source);
    EXPECT_TRUE(source.CropRectScaleRatios[0].Enabled);
    EXPECT_EQ(source.RectsOfInterest[0].Left, 1);
}

void ExpectSameBytes(const void* copy, const void* rows, size_t bytes)
{
    EXPECT_EQ(std::memcmp(copy, rows, bytes), 0);
}

// The padding between the fields of a row is copied too.
TEST(VistaTrimParameters, RowsAreCopiedByteByByte)
{
    VistaTrimParameters source = SomeParameters();
    const auto fill = [](void* rows, size_t bytes) {
        std::memset(rows, 1, bytes); // 1, so that every bool is valid
    };
    fill(source.AspectRatios, 2 * sizeof(DoubleInfo));
    fill(source.CropRectScaleRatios, sizeof(DoubleInfo));
    fill(source.RectsOfInterest, sizeof(CRectOfInterest));

    const VistaTrimParameters copy(source);
    VistaTrimParameters assigned;
    assigned = source;
    for (const VistaTrimParameters* other :
         {&copy, &static_cast<const VistaTrimParameters&>(assigned)}) {
        ExpectSameBytes(other->AspectRatios, source.AspectRatios, 2 * sizeof(DoubleInfo));
        ExpectSameBytes(other->CropRectScaleRatios, source.CropRectScaleRatios, sizeof(DoubleInfo));
        ExpectSameBytes(other->RectsOfInterest, source.RectsOfInterest, sizeof(CRectOfInterest));
    }
}

// The sanitizers and valgrind see a double free or a leak here.
TEST(VistaTrimParameters, SourceAndCopyFreeTheirOwnArrays)
{
    auto source = std::make_unique<VistaTrimParameters>(SomeParameters());
    const VistaTrimParameters copy(*source);
    source.reset();
    ExpectSomeParameters(copy);
}

TEST(VistaTrimParameters, AssignmentReplacesWhatTheTargetOwned)
{
    VistaTrimParameters target;
    target.SetDefaults();
    const VistaTrimParameters source = SomeParameters();
    EXPECT_EQ(&(target = source), &target);
    ExpectSomeParameters(target);
    EXPECT_NE(target.AspectRatios, source.AspectRatios);
}

TEST(VistaTrimParameters, AssignmentToItselfDoesNothing)
{
    VistaTrimParameters parameters = SomeParameters();
    DoubleInfo* const aspects = parameters.AspectRatios;
    DoubleInfo* const scales = parameters.CropRectScaleRatios;
    CRectOfInterest* const rects = parameters.RectsOfInterest;
    VistaTrimParameters& itself = parameters;
    parameters = itself;
    EXPECT_EQ(parameters.AspectRatios, aspects);
    EXPECT_EQ(parameters.CropRectScaleRatios, scales);
    EXPECT_EQ(parameters.RectsOfInterest, rects);
    ExpectSomeParameters(parameters);
}

TEST(VistaTrimParameters, CopyOfAnEmptyObjectHoldsEmptyArrays)
{
    const VistaTrimParameters source;
    const VistaTrimParameters deep(source);
    EXPECT_NE(deep.AspectRatios, nullptr);
    EXPECT_NE(deep.CropRectScaleRatios, nullptr);
    EXPECT_NE(deep.RectsOfInterest, nullptr);
    EXPECT_EQ(deep.NumAspectRatios, 0U);
    EXPECT_EQ(deep.NumCropRectScaleRatios, 0U);
    EXPECT_EQ(deep.NumRectsOfInterest, 0U);
}

TEST(VistaTrimParameters, DestructFreesTheArraysAndLeavesPointersAndCounts)
{
    VistaTrimParameters parameters = SomeParameters();
    DoubleInfo* const aspects = parameters.AspectRatios;
    DoubleInfo* const scales = parameters.CropRectScaleRatios;
    CRectOfInterest* const rects = parameters.RectsOfInterest;
    parameters.Destruct();
    EXPECT_EQ(parameters.AspectRatios, aspects);
    EXPECT_EQ(parameters.CropRectScaleRatios, scales);
    EXPECT_EQ(parameters.RectsOfInterest, rects);
    EXPECT_EQ(parameters.NumAspectRatios, 2U);
    EXPECT_EQ(parameters.NumCropRectScaleRatios, 1U);
    EXPECT_EQ(parameters.NumRectsOfInterest, 1U);
    // Replaces the freed arrays before the object is destroyed.
    parameters.SetDefaults();
}

TEST(VistaTrimParameters, DestructorClearsThePointersAndKeepsTheCounts)
{
    alignas(VistaTrimParameters) unsigned char storage[sizeof(VistaTrimParameters)];
    VistaTrimParameters* const parameters = new (storage) VistaTrimParameters(SomeParameters());
    parameters->~VistaTrimParameters();
    // Read as bytes: the object is gone, its storage is not.
    const volatile unsigned char* bytes = storage;
    EXPECT_EQ(bytes[offsetof(VistaTrimParameters, NumAspectRatios)], 2);
    for (size_t i = 0; i < sizeof(void*); ++i) {
        EXPECT_EQ(bytes[offsetof(VistaTrimParameters, AspectRatios) + i], 0);
        EXPECT_EQ(bytes[offsetof(VistaTrimParameters, CropRectScaleRatios) + i], 0);
        EXPECT_EQ(bytes[offsetof(VistaTrimParameters, RectsOfInterest) + i], 0);
    }
}

} // namespace
} // namespace vistaTrim
