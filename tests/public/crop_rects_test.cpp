#include "vistaTrim/crop_rects.h"

#include <cstdint>
#include <stdexcept>
#include <type_traits>

#include <gtest/gtest.h>

#include "public/crop_list_builder.h"

namespace vistaTrim {
namespace {

static_assert(!std::is_copy_constructible<CCropRects>::value, "lists are counted, not copied");
static_assert(!std::is_copy_assignable<CCropRects>::value, "lists are counted, not copied");

// Reports its destruction.
class WatchedList : public CCropRects {
public:
    explicit WatchedList(bool& ended) : Ended(ended)
    {
    }
    ~WatchedList() override
    {
        Ended = true;
    }

private:
    bool& Ended;
};

TEST(CropRects, ListThatNeverHeldARecordHasNoData)
{
    CCropListBuilder builder;
    builder.Reserve(0);
    CCropRects* list = builder.Take();
    EXPECT_EQ(list->Count(), 0U);
    EXPECT_EQ(list->Data(), nullptr);
    list->Release();
}

TEST(CropRects, RecordsAreContiguousCopiesInOrder)
{
    CCropListBuilder builder;
    for (int i = 0; i < 100; ++i) {
        CInt32CropRect record(i, i + 1, i + 2, i + 3);
        record.Score.MergedScore = i;
        builder.Append(record);
        record.Left = -1;
    }
    CCropRects* list = builder.Take();
    ASSERT_EQ(list->Count(), 100U);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(list->Data()[i].Left, i);
        EXPECT_EQ(list->Data()[i].Bottom, i + 3);
        EXPECT_EQ(list->Data()[i].Score.MergedScore, i);
    }
    list->Destroy();
}

TEST(CropRects, ReleaseWithTwoReferencesOnlyLowersTheCount)
{
    bool ended = false;
    ICropRects* list = new WatchedList(ended);
    list->AddRef();
    list->Release();
    EXPECT_FALSE(ended);
    list->Release();
    EXPECT_TRUE(ended);
}

TEST(CropRects, DestroyIgnoresTheCount)
{
    bool ended = false;
    ICropRects* list = new WatchedList(ended);
    list->AddRef();
    list->Destroy();
    EXPECT_TRUE(ended);
}

TEST(SmartPtrOfCropRects, AddingAReferenceKeepsTheCallers)
{
    bool ended = false;
    CCropRects* list = new WatchedList(ended);
    {
        SmartPtr<CCropRects> holder(list, true);
    }
    EXPECT_FALSE(ended);
    list->Release();
    EXPECT_TRUE(ended);
}

TEST(SmartPtrOfCropRects, TakingOverAReferenceDropsItAtTheEnd)
{
    bool ended = false;
    {
        SmartPtr<CCropRects> holder(new WatchedList(ended), false);
        EXPECT_EQ(holder->Count(), 0U);
        EXPECT_FALSE(ended);
    }
    EXPECT_TRUE(ended);
}

TEST(CropRects, ReservingMoreThanAListCanHoldThrowsALengthErrorAndChangesNothing)
{
    CCropListBuilder builder;
    builder.Append(CInt32CropRect(1, 2, 3, 4));
    try {
        builder.Reserve(SIZE_MAX);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "vector<T> too long");
    }
    CCropRects* list = builder.Take();
    ASSERT_EQ(list->Count(), 1U);
    EXPECT_EQ(list->Data()[0].Right, 2);
    list->Release();
}

TEST(SmartPtrOfCropRects, ReleaseHandsTheReferenceOver)
{
    bool ended = false;
    CCropRects* list = nullptr;
    {
        SmartPtr<CCropRects> holder(new WatchedList(ended), false);
        list = holder.release();
        EXPECT_EQ(holder.operator->(), nullptr);
        EXPECT_EQ(holder.release(), nullptr);
    }
    EXPECT_FALSE(ended);
    list->Release();
    EXPECT_TRUE(ended);
}

TEST(SmartPtrOfCropRects, AcceptsNull)
{
    SmartPtr<CCropRects> added(nullptr, true);
    SmartPtr<CCropRects> taken(nullptr, false);
    EXPECT_EQ(added.operator->(), nullptr);
    EXPECT_EQ(taken.operator->(), nullptr);
}

} // namespace
} // namespace vistaTrim
