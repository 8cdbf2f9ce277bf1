#include "numeric/kernel_test_support.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <random>
#include <utility>

#include "numeric/aligned_memory.h"

// The linker redirects calls of AllocateAligned and FreeAligned here (--wrap), by their mangled
// names; __real_ names the originals.
extern "C" {
void* __real__ZN9vistaTrim15AllocateAlignedEmm(size_t size, size_t alignment);
void __real__ZN9vistaTrim11FreeAlignedEPv(void* pointer);
void* __wrap__ZN9vistaTrim15AllocateAlignedEmm(size_t size, size_t alignment);
void __wrap__ZN9vistaTrim11FreeAlignedEPv(void* pointer);

void* __wrap__ZN9vistaTrim15AllocateAlignedEmm(size_t size, size_t alignment)
{
    vistaTrim::AllocationFaults* faults = vistaTrim::AllocationFaults::Active();
    if (faults && faults->Deny())
        return nullptr;
    void* pointer = __real__ZN9vistaTrim15AllocateAlignedEmm(size, alignment);
    if (faults && pointer)
        faults->Count(1);
    return pointer;
}

void __wrap__ZN9vistaTrim11FreeAlignedEPv(void* pointer)
{
    vistaTrim::AllocationFaults* faults = vistaTrim::AllocationFaults::Active();
    if (faults && pointer)
        faults->Count(-1);
    __real__ZN9vistaTrim11FreeAlignedEPv(pointer);
}
}

namespace vistaTrim {

namespace {

// Not a multiple of any vector width, so that planes start unaligned for every register load.
constexpr size_t kGuard = 67;
constexpr uint32_t kGuardBits = 0x7FC0BEEF;

AllocationFaults* activeFaults = nullptr;

float GuardValue()
{
    float value;
    std::memcpy(&value, &kGuardBits, sizeof value);
    return value;
}

uint32_t BitsOf(float value)
{
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

} // namespace

GuardedPlane::GuardedPlane(int32_t cols, int32_t rows, float fill)
    : Cols(cols), Rows(rows),
      storage(2 * kGuard + static_cast<size_t>(cols) * static_cast<size_t>(rows), GuardValue())
{
    std::fill(storage.begin() + kGuard, storage.end() - kGuard, fill);
}

GuardedPlane GuardedPlane::FromFunction(int32_t cols, int32_t rows,
                                        const std::function<float(int32_t x, int32_t y)>& pixel)
{
    GuardedPlane plane(cols, rows);
    for (int32_t y = 0; y < rows; ++y)
        for (int32_t x = 0; x < cols; ++x)
            plane.Data()[y * cols + x] = pixel(x, y);
    return plane;
}

GuardedPlane GuardedPlane::WholeNumbers(int32_t cols, int32_t rows, uint32_t seed)
{
    std::mt19937 random(seed);
    return FromFunction(cols, rows,
                        [&](int32_t, int32_t) { return static_cast<float>(random() % 256); });
}

GuardedPlane GuardedPlane::Fractions(int32_t cols, int32_t rows, uint32_t seed)
{
    std::mt19937 random(seed);
    return FromFunction(cols, rows, [&](int32_t, int32_t) {
        return static_cast<float>(random()) * (255.0f / 4294967296.0f);
    });
}

float* GuardedPlane::Data()
{
    return storage.data() + kGuard;
}

const float* GuardedPlane::Data() const
{
    return storage.data() + kGuard;
}

float GuardedPlane::At(int32_t x, int32_t y) const
{
    return Data()[y * Cols + x];
}

float GuardedPlane::Replicated(int32_t x, int32_t y) const
{
    return At(std::clamp(x, 0, Cols - 1), std::clamp(y, 0, Rows - 1));
}

bool GuardedPlane::GuardsIntact() const
{
    const auto isGuard = [](float value) { return BitsOf(value) == kGuardBits; };
    return std::all_of(storage.begin(), storage.begin() + kGuard, isGuard) &&
           std::all_of(storage.end() - kGuard, storage.end(), isGuard);
}

std::vector<float> GuardedPlane::Pixels() const
{
    return {storage.begin() + kGuard, storage.end() - kGuard};
}

std::vector<uint32_t> GuardedPlane::Bits() const
{
    std::vector<uint32_t> bits;
    bits.reserve(storage.size());
    std::transform(storage.begin() + kGuard, storage.end() - kGuard, std::back_inserter(bits),
                   BitsOf);
    return bits;
}

KernelTest::KernelTest() : previous(std::cerr.rdbuf(written.rdbuf()))
{
}

KernelTest::~KernelTest()
{
    std::cerr.rdbuf(previous);
}

void KernelTest::TearDown()
{
    EXPECT_EQ(TakeErrors(), "") << "unexpected text on the error stream";
}

std::string KernelTest::TakeErrors()
{
    std::string text = written.str();
    written.str("");
    return text;
}

AllocationFaults::AllocationFaults(std::set<int> deniedCalls) : denied(std::move(deniedCalls))
{
    activeFaults = this;
}

AllocationFaults::~AllocationFaults()
{
    activeFaults = nullptr;
}

AllocationFaults* AllocationFaults::Active()
{
    return activeFaults;
}

bool AllocationFaults::Deny()
{
    return denied.count(Requests++) != 0;
}

void AllocationFaults::Count(int change)
{
    Live += change;
}

std::vector<IsaVariant> AvailableVariants()
{
    std::vector<IsaVariant> variants;
    for (int variant = 0; variant < IsaVariantCount; ++variant)
        if (IsaVariantAvailable(static_cast<IsaVariant>(variant)))
            variants.push_back(static_cast<IsaVariant>(variant));
    return variants;
}

VariantScope::VariantScope() : before(ActiveIsaVariant())
{
}

VariantScope::~VariantScope()
{
    SelectIsaVariant(before);
}

std::vector<PlaneSize> AwkwardSizes()
{
    std::vector<PlaneSize> sizes;
    for (int32_t cols : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 65})
        for (int32_t rows : {1, 2, 3, 5, 6, 7, 9, 15, 17, 33})
            sizes.push_back({cols, rows});
    sizes.push_back({640, 427});
    return sizes;
}

} // namespace vistaTrim
