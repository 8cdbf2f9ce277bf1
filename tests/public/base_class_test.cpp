// The interfaces as bases of a host's own classes: copying one copies the fields of the host's
// class and nothing of the interface.
#include <gtest/gtest.h>

#include "vistaTrim/vistaTrim.h"

namespace vistaTrim {
namespace {

class CHostObject : public IBaseClass {
public:
    explicit CHostObject(int held) : Held(held)
    {
    }
    void Release() override
    {
    }
    void AddRef() override
    {
    }
    int Held;
};

class CHostImage : public IImage {
public:
    explicit CHostImage(int held) : Held(held)
    {
    }
    void Release() override
    {
    }
    void AddRef() override
    {
    }
    void Destroy() override
    {
    }
    uint8_t* GetData() override
    {
        return nullptr;
    }
    const uint8_t* GetPixels() const override
    {
        return nullptr;
    }
    uint32_t GetWidth() const override
    {
        return 0;
    }
    uint32_t GetHeight() const override
    {
        return 0;
    }
    uint32_t GetNumChannels() const override
    {
        return 0;
    }
    uint32_t GetRowStride() const override
    {
        return 0;
    }
    uint32_t GetPixelStride() const override
    {
        return 0;
    }
    int32_t GetChannelOffset(int) const override
    {
        return 0;
    }
    int Held;
};

class CHostList : public ICropRects {
public:
    explicit CHostList(int held) : Held(held)
    {
    }
    void Release() override
    {
    }
    void AddRef() override
    {
    }
    uint32_t Count() const override
    {
        return 0;
    }
    CInt32CropRect* Data() override
    {
        return nullptr;
    }
    void Destroy() override
    {
    }
    int Held;
};

class CHostDriver : public IVistaTrim {
public:
    explicit CHostDriver(int held) : Held(held)
    {
    }
    void Release() override
    {
    }
    void AddRef() override
    {
    }
    void Destroy() override
    {
    }
    void Initialize(IImage*, const VistaTrimParameters&) override
    {
    }
    void InitializeWithDefaults(IImage*) override
    {
    }
    void ReservedA() override
    {
    }
    VistaTrimParameters GetParameters() override
    {
        return {};
    }
    void GetAspectRatios(DoubleInfo**, uint32_t*) override
    {
    }
    void SetAspectRatioEnabled(double, bool) override
    {
    }
    void GetCropRectScaleRatios(DoubleInfo**, uint32_t*) override
    {
    }
    void SetCropRectScaleRatioEnabled(double, bool) override
    {
    }
    void GetRectsOfInterest(CRectOfInterest**, uint32_t*) override
    {
    }
    void AddRectOfInterest(const CRectOfInterest&) override
    {
    }
    void ReservedB(uint32_t) override
    {
    }
    void ComputeCropSuggestions(ICropRects**, const SuggestionParameters&) override
    {
    }
    void GetNTopCropSuggestions(int32_t, ICropRects**, const SuggestionParameters&, int32_t,
                                WeightDistribution) override
    {
    }
    void EvaluateScores(CInt32CropRect&) override
    {
    }
    int Held;
};

template <typename Host> class HostClass : public testing::Test {
};
using HostClasses = testing::Types<CHostObject, CHostImage, CHostList, CHostDriver>;
TYPED_TEST_SUITE(HostClass, HostClasses);

TYPED_TEST(HostClass, CopyKeepsTheHostsFields)
{
    const TypeParam first(1);
    const TypeParam copy(first);
    EXPECT_EQ(copy.Held, 1);
    TypeParam target(2);
    EXPECT_EQ(&(target = first), &target);
    EXPECT_EQ(target.Held, 1);
}

template <typename Interface, typename Host> void ExpectThatAssignmentCopiesNothing()
{
    const Host first(1);
    Host second(2);
    Interface& target = second;
    EXPECT_EQ(&(target = static_cast<const Interface&>(first)), &target);
    EXPECT_EQ(second.Held, 2);
}

TEST(Interface, AssignmentCopiesNothingAndReturnsTheTarget)
{
    ExpectThatAssignmentCopiesNothing<IBaseClass, CHostObject>();
    ExpectThatAssignmentCopiesNothing<IImage, CHostImage>();
    ExpectThatAssignmentCopiesNothing<ICropRects, CHostList>();
    ExpectThatAssignmentCopiesNothing<IVistaTrim, CHostDriver>();
}

} // namespace
} // namespace vistaTrim
