#include "numeric/plane_stack.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "numeric/kernel_test_support.h"
#include "numeric/summed_area.h"

namespace vistaTrim {
namespace {

bool IsAligned(const float* pointer)
{
    return reinterpret_cast<uintptr_t>(pointer) % 64 == 0;
}

std::vector<uint8_t> RandomBytes(size_t count)
{
    std::mt19937 random(7);
    std::vector<uint8_t> bytes(count);
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(random());
    return bytes;
}

TEST(PlaneStack, StartsEmpty)
{
    const CPlaneStack stack;
    EXPECT_TRUE(stack.Planes.empty());
    EXPECT_TRUE(stack.PlaneTables.empty());
    EXPECT_TRUE(stack.PairTables.empty());
    EXPECT_EQ(stack.Cols, 0);
    EXPECT_EQ(stack.Rows, 0);
    EXPECT_EQ(stack.PlaneCount, 0);
    EXPECT_EQ(stack.ElementCount, 0);
    EXPECT_FALSE(stack.TablesBuilt);
}

TEST(PlaneStack, CreateMakesAlignedPlanesAndRoomForEveryPair)
{
    const size_t pairs[] = {0, 1, 3, 6, 10};
    for (int32_t n = 1; n <= 4; ++n) {
        SCOPED_TRACE(n);
        AllocationFaults memory({});
        CPlaneStack stack;
        stack.Create(n, 13, 7);

        EXPECT_EQ(stack.Cols, 13);
        EXPECT_EQ(stack.Rows, 7);
        EXPECT_EQ(stack.PlaneCount, n);
        EXPECT_EQ(stack.ElementCount, 91);
        EXPECT_FALSE(stack.TablesBuilt);
        ASSERT_EQ(stack.Planes.size(), static_cast<size_t>(n));
        for (float* plane : stack.Planes) {
            EXPECT_TRUE(IsAligned(plane));
            plane[90] = 1.0f;
        }
        EXPECT_EQ(stack.PlaneTables, std::vector<float*>(static_cast<size_t>(n), nullptr));
        EXPECT_EQ(stack.PairTables, std::vector<float*>(pairs[n], nullptr));
        EXPECT_EQ(memory.Live, n);

        stack.Release();
        EXPECT_EQ(memory.Live, 0);
    }
}

TEST(PlaneStack, CreateOnAStackInUseFreesItsPlanesAndTables)
{
    AllocationFaults memory({});
    CPlaneStack stack;
    stack.Create(2, 8, 8);
    for (float* plane : stack.Planes)
        std::fill_n(plane, 64, 1.0f);
    BuildTables(stack);
    EXPECT_EQ(memory.Live, 2 + 2 + 3);

    stack.Create(1, 4, 4);

    EXPECT_EQ(memory.Live, 1);
    EXPECT_EQ(stack.Planes.size(), 1u);
    EXPECT_EQ(stack.PairTables.size(), 1u);
    EXPECT_FALSE(stack.TablesBuilt);
    stack.Release();
    EXPECT_EQ(memory.Live, 0);
}

TEST(PlaneStack, ReleaseFreesPlanesAndTablesAndKeepsTheSizes)
{
    AllocationFaults memory({});
    CPlaneStack stack;
    stack.Create(3, 9, 5);
    for (float* plane : stack.Planes)
        std::fill_n(plane, 45, 2.0f);
    BuildTables(stack);
    EXPECT_EQ(memory.Live, 3 + 3 + 6);

    // The second time there is nothing left to free, though PlaneCount still says 3.
    for (int round = 0; round < 2; ++round) {
        stack.Release();
        EXPECT_EQ(memory.Live, 0);
        EXPECT_TRUE(stack.Planes.empty());
        EXPECT_TRUE(stack.PlaneTables.empty());
        EXPECT_TRUE(stack.PairTables.empty());
        EXPECT_FALSE(stack.TablesBuilt);
        EXPECT_EQ(stack.Cols, 9);
        EXPECT_EQ(stack.Rows, 5);
        EXPECT_EQ(stack.PlaneCount, 3);
        EXPECT_EQ(stack.ElementCount, 45);
    }
}

TEST(PlaneStack, APlaneThatFailsToAllocateIsNull)
{
    AllocationFaults memory({1});
    CPlaneStack stack;
    stack.Create(3, 4, 4);
    EXPECT_NE(stack.Planes[0], nullptr);
    EXPECT_EQ(stack.Planes[1], nullptr);
    EXPECT_NE(stack.Planes[2], nullptr);
    stack.Release();
    EXPECT_EQ(memory.Live, 0);
}

TEST(PlaneStack, WrappersBorrowTheirPlane)
{
    float plane[12] = {};
    AllocationFaults memory({});
    {
        CPlaneStack withRoom;
        withRoom.WrapPlane(4, 3, plane);
        EXPECT_EQ(withRoom.Planes, std::vector<float*>{plane});
        EXPECT_EQ(withRoom.PlaneTables, std::vector<float*>{nullptr});
        EXPECT_EQ(withRoom.PairTables, std::vector<float*>{nullptr});
        EXPECT_EQ(withRoom.Cols, 4);
        EXPECT_EQ(withRoom.Rows, 3);
        EXPECT_EQ(withRoom.PlaneCount, 1);
        EXPECT_EQ(withRoom.ElementCount, 12);
        EXPECT_FALSE(withRoom.TablesBuilt);

        // Wrapping again leaves nothing of the previous plane.
        CPlaneStack planeOnly = withRoom;
        planeOnly.TablesBuilt = true;
        planeOnly.WrapPlaneOnly(3, 4, plane);
        EXPECT_EQ(planeOnly.Planes, std::vector<float*>{plane});
        EXPECT_TRUE(planeOnly.PlaneTables.empty());
        EXPECT_TRUE(planeOnly.PairTables.empty());
        EXPECT_EQ(planeOnly.Cols, 3);
        EXPECT_EQ(planeOnly.Rows, 4);
        EXPECT_EQ(planeOnly.PlaneCount, 1);
        EXPECT_EQ(planeOnly.ElementCount, 12);
        EXPECT_FALSE(planeOnly.TablesBuilt);
    }
    EXPECT_EQ(memory.Requests, 0);
    EXPECT_EQ(memory.Live, 0);
}

TEST(PlaneStack, ACopyIsAHandleOnTheSamePlanes)
{
    AllocationFaults memory({});
    CPlaneStack stack;
    stack.Create(2, 3, 3);
    {
        CPlaneStack copy = stack;
        EXPECT_EQ(copy.Planes, stack.Planes);
        copy.Planes[1][4] = 17.0f;
    }
    EXPECT_EQ(memory.Live, 2);
    EXPECT_EQ(stack.Planes[1][4], 17.0f);
    stack.Release();
}

// A stack does not record whether it owns its planes: Release on a copy frees planes that the
// others still point to. So only the stack on which Create was called is released.
TEST(PlaneStack, ReleaseOnACopyFreesThePlanesOfAll)
{
    AllocationFaults memory({});
    CPlaneStack stack;
    stack.Create(2, 3, 3);
    for (float* plane : stack.Planes)
        std::fill_n(plane, 9, 1.0f);
    BuildTables(stack);
    const std::vector<float*> planes = stack.Planes;

    CPlaneStack copy = stack;
    copy.Release();

    EXPECT_EQ(memory.Live, 0);
    EXPECT_TRUE(copy.Planes.empty());
    EXPECT_FALSE(copy.TablesBuilt);
    // The first stack does not notice.
    EXPECT_EQ(stack.Planes, planes);
    EXPECT_EQ(stack.PlaneTables.size(), 2u);
    EXPECT_EQ(stack.PairTables.size(), 3u);
    EXPECT_TRUE(stack.TablesBuilt);
    // It is simply dropped: its destructor frees nothing.
}

TEST(PlaneStack, PlanePointersAreACopyOfTheList)
{
    float plane[4] = {};
    CPlaneStack stack;
    stack.WrapPlane(2, 2, plane);
    std::vector<float*> pointers = stack.PlanePointers();
    ASSERT_EQ(pointers, std::vector<float*>{plane});
    pointers[0] = nullptr;
    EXPECT_EQ(stack.Planes[0], plane);
}

TEST(PlaneStack, OnePlaneTakesTheBytesInOrder)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (const PlaneSize& size : AwkwardSizes()) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << size.Cols << " x " << size.Rows);
            SelectIsaVariant(variant);
            const size_t count = static_cast<size_t>(size.Cols * size.Rows);
            const std::vector<uint8_t> bytes = RandomBytes(count);
            GuardedPlane plane(size.Cols, size.Rows);
            CPlaneStack stack;
            stack.WrapPlane(size.Cols, size.Rows, plane.Data());

            stack.FillFromBytes(bytes.data());

            EXPECT_EQ(plane.Pixels(), std::vector<float>(bytes.begin(), bytes.end()));
            EXPECT_TRUE(plane.GuardsIntact());
        }
}

TEST(PlaneStack, ThreePlanesDeinterleaveTheBytes)
{
    const VariantScope scope;
    for (IsaVariant variant : AvailableVariants())
        for (const PlaneSize& size : AwkwardSizes()) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << ", " << size.Cols << " x " << size.Rows);
            SelectIsaVariant(variant);
            const size_t count = static_cast<size_t>(size.Cols * size.Rows);
            const std::vector<uint8_t> bytes = RandomBytes(3 * count);
            std::vector<GuardedPlane> planes(3, GuardedPlane(size.Cols, size.Rows));
            CPlaneStack stack;
            stack.WrapPlane(size.Cols, size.Rows, planes[0].Data());
            stack.Planes = {planes[0].Data(), planes[1].Data(), planes[2].Data()};
            stack.PlaneCount = 3;

            stack.FillFromBytes(bytes.data());

            for (size_t k = 0; k < 3; ++k) {
                std::vector<float> expected(count);
                for (size_t i = 0; i < count; ++i)
                    expected[i] = bytes[3 * i + k];
                EXPECT_EQ(planes[k].Pixels(), expected);
                EXPECT_TRUE(planes[k].GuardsIntact());
            }
        }
}

TEST(PlaneStack, AFourthPlaneIsNotFilled)
{
    CPlaneStack stack;
    stack.Create(4, 2, 1);
    stack.Planes[3][0] = -5.0f;
    stack.Planes[3][1] = -6.0f;
    const uint8_t bytes[] = {0, 1, 2, 253, 254, 255};

    stack.FillFromBytes(bytes);

    EXPECT_EQ(stack.Planes[0][1], 253.0f);
    EXPECT_EQ(stack.Planes[2][1], 255.0f);
    EXPECT_EQ(stack.Planes[3][0], -5.0f);
    EXPECT_EQ(stack.Planes[3][1], -6.0f);
    stack.Release();
}

} // namespace
} // namespace vistaTrim
