// What the tests of the image kernels share: planes with guards, the error stream, failing
// allocations, ISA variants and awkward sizes.
#ifndef VISTATRIM_TESTS_NUMERIC_KERNEL_TEST_SUPPORT_H
#define VISTATRIM_TESTS_NUMERIC_KERNEL_TEST_SUPPORT_H

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/isa_variants.h"

namespace vistaTrim {

// A plane between two runs of guard values, all the same NaN. A kernel that writes past the plane
// overwrites them, and one that reads past the plane carries NaN into its result.
class GuardedPlane {
public:
    GuardedPlane(int32_t cols, int32_t rows, float fill = 0.0f);
    static GuardedPlane FromFunction(int32_t cols, int32_t rows,
                                     const std::function<float(int32_t x, int32_t y)>& pixel);
    // The same numbers on every call: integers of 0..255, or fractions in that range.
    static GuardedPlane WholeNumbers(int32_t cols, int32_t rows, uint32_t seed);
    static GuardedPlane Fractions(int32_t cols, int32_t rows, uint32_t seed);

    float* Data();
    const float* Data() const;
    float At(int32_t x, int32_t y) const;         // inside the plane
    float Replicated(int32_t x, int32_t y) const; // the nearest pixel inside
    bool GuardsIntact() const;
    std::vector<float> Pixels() const;
    // All bits of all pixels, so that the two zeros differ and NaN equals itself.
    std::vector<uint32_t> Bits() const;

    int32_t Cols;
    int32_t Rows;

private:
    std::vector<float> storage;
};

// Catches what is written to the error stream; a test that leaves output uncollected fails.
class KernelTest : public testing::Test {
protected:
    KernelTest();
    ~KernelTest() override;
    void TearDown() override;
    // What was written since the last call.
    std::string TakeErrors();

private:
    std::ostringstream written;
    std::streambuf* previous;
};

// While one exists, the chosen aligned allocations fail, counted from 0, and all are counted.
class AllocationFaults {
public:
    explicit AllocationFaults(std::set<int> denied);
    static AllocationFaults* Active();
    AllocationFaults(const AllocationFaults&) = delete;
    AllocationFaults& operator=(const AllocationFaults&) = delete;
    ~AllocationFaults();

    // For the replacement allocator.
    bool Deny();
    void Count(int change);

    int Requests = 0;
    int Live = 0; // allocated and not yet freed

private:
    std::set<int> denied;
};

// Every variant that this machine supports.
std::vector<IsaVariant> AvailableVariants();

// Restores the variant that was in use.
class VariantScope {
public:
    VariantScope();
    ~VariantScope();
    VariantScope(const VariantScope&) = delete;
    VariantScope& operator=(const VariantScope&) = delete;

private:
    IsaVariant before;
};

struct PlaneSize {
    int32_t Cols;
    int32_t Rows;
};
// One pixel, single rows and columns, sides shorter than every mask, widths around every vector
// width and, at the end, a full picture.
std::vector<PlaneSize> AwkwardSizes();

} // namespace vistaTrim

#endif
