// A host that was compiled from its own declarations: it includes no header of the library,
// opens the built file with dlopen, and calls every function and every slot.
#include <cstddef>
#include <cstdint>
#include <dlfcn.h>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ownDeclarations {

// Visible outside this file: otherwise the compiler concludes that no object of these classes can
// exist.

struct Measures {
    bool scored;
    double composition, coverage, border, peak, centrePeak, roi, merged;
};

struct Crop {
    int32_t left, right, top, bottom;
    bool coversContent;
    Measures score;
};

struct Region {
    int32_t left, right, top, bottom;
    bool marked, enabled;
    int32_t kind;
};

struct Ratio {
    double value;
    bool enabled;
};

struct Weights {
    double weight1, weight2, weight3, weight4, weight5;
};

struct Request {
    double cropWidth, cropHeight, aspectRatio;
    bool detectFaces;
};

// Not trivial, so it is returned by value in storage that the caller provides.
struct Parameters {
    Ratio* aspects = nullptr;
    uint32_t numAspects = 0;
    Ratio* scales = nullptr;
    uint32_t numScales = 0;
    Region* regions = nullptr;
    uint32_t numRegions = 0;
    uint32_t maxPerSide = 0;
    bool useDetector = false;

    Parameters() = default;
    Parameters(const Parameters&) = delete;
    Parameters& operator=(const Parameters&) = delete;
    ~Parameters()
    {
        delete[] aspects;
        delete[] scales;
        delete[] regions;
    }
};

// The slots, in their published order.
class Base {
protected:
    virtual ~Base()
    {
    }

public:
    virtual void Release() = 0;
    virtual void AddRef() = 0;
};

class Image : public Base {
protected:
    ~Image() override
    {
    }

public:
    virtual void Destroy() = 0;
    virtual uint8_t* GetData() = 0;
    virtual const uint8_t* GetPixels() const = 0;
    virtual uint32_t GetWidth() const = 0;
    virtual uint32_t GetHeight() const = 0;
    virtual uint32_t GetNumChannels() const = 0;
    virtual uint32_t GetRowStride() const = 0;
    virtual uint32_t GetPixelStride() const = 0;
    virtual int32_t GetChannelOffset(int index) const = 0;
};

class List : public Base {
protected:
    ~List() override
    {
    }

public:
    virtual uint32_t Count() const = 0;
    virtual Crop* Data() = 0;
    virtual void Destroy() = 0;
};

class Driver : public Base {
protected:
    ~Driver() override
    {
    }

public:
    virtual void Destroy() = 0;
    virtual void Initialize(Image* image, const Parameters& parameters) = 0;
    virtual void InitializeWithDefaults(Image* image) = 0;
    virtual void ReservedA() = 0;
    virtual Parameters GetParameters() = 0;
    virtual void GetAspectRatios(Ratio** table, uint32_t* count) = 0;
    virtual void SetAspectRatioEnabled(double value, bool enabled) = 0;
    virtual void GetCropRectScaleRatios(Ratio** table, uint32_t* count) = 0;
    virtual void SetCropRectScaleRatioEnabled(double value, bool enabled) = 0;
    virtual void GetRectsOfInterest(Region** table, uint32_t* count) = 0;
    virtual void AddRectOfInterest(const Region& rect) = 0;
    virtual void ReservedB(uint32_t unused) = 0;
    virtual void ComputeCropSuggestions(List** result, const Request& request) = 0;
    virtual void GetNTopCropSuggestions(int32_t n, List** result, const Request& request,
                                        int32_t rankingMode, Weights weights) = 0;
    virtual void EvaluateScores(Crop& rect) = 0;
};

namespace {

// The library, open for the life of the program.
void* Library()
{
    static void* const library = dlopen(VISTATRIM_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
    return library;
}

void* Address(const char* name)
{
    void* const address = dlsym(Library(), name);
    EXPECT_NE(address, nullptr) << name;
    return address;
}

using CreateImage = Image* (*)(uint32_t, uint32_t, uint32_t, const int32_t*, const uint8_t*);
using DestroyImage = void (*)(Image*);
using CreateDriver = Driver* (*)(Image*, const Parameters*);
using DestroyDriver = void (*)(Driver*);
using Compute = void (*)(Driver*, List**, const Request*);
using GetTop = void (*)(Driver*, int32_t, List**, const Request*, int32_t, Weights);
using Evaluate = void (*)(Driver*, Crop*);

const int32_t kOffsets[4] = {2, 1, 0, 9};

std::vector<uint8_t> Pixels(uint32_t width, uint32_t height)
{
    std::vector<uint8_t> pixels(size_t{3} * width * height);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>((i * i / 7 + i / 300) % 251);
    return pixels;
}

class OwnDeclarations : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(Library(), nullptr) << dlerror();
        createImage = reinterpret_cast<CreateImage>(Address("CreateImageObj"));
        destroyImage = reinterpret_cast<DestroyImage>(Address("DestroyImageObj"));
        createDriver = reinterpret_cast<CreateDriver>(Address("CreateVistaTrimObj"));
        destroyDriver = reinterpret_cast<DestroyDriver>(Address("DestroyVistaTrimObj"));
        compute = reinterpret_cast<Compute>(Address("ComputeCropSuggestions"));
        getTop = reinterpret_cast<GetTop>(Address("GetNTopCropSuggestions"));
        evaluate = reinterpret_cast<Evaluate>(Address("EvaluateScores"));

        // The host's own tables, so that no default is used.
        parameters.numAspects = 2;
        parameters.aspects = new Ratio[2]{{1.5, true}, {1.0, true}};
        parameters.numScales = 2;
        parameters.scales = new Ratio[2]{{0.5, true}, {0.9, true}};
        parameters.numRegions = 1;
        parameters.regions = new Region[1]{{10, 19, 20, 29, true, true, 0}};
        parameters.maxPerSide = 7;
        image = createImage(96, 640, 3, kOffsets, Pixels(640, 96).data());
        driver = createDriver(image, &parameters);
    }

    void TearDown() override
    {
        if (driver != nullptr)
            destroyDriver(driver);
        if (image != nullptr)
            destroyImage(image);
    }

    CreateImage createImage = nullptr;
    DestroyImage destroyImage = nullptr;
    CreateDriver createDriver = nullptr;
    DestroyDriver destroyDriver = nullptr;
    Compute compute = nullptr;
    GetTop getTop = nullptr;
    Evaluate evaluate = nullptr;
    Parameters parameters;
    Image* image = nullptr;
    Driver* driver = nullptr;
};

TEST_F(OwnDeclarations, EveryListedSymbolIsExported)
{
    std::ifstream file(VISTATRIM_EXPORTED_SYMBOLS);
    std::string name;
    int count = 0;
    while (std::getline(file, name)) {
        EXPECT_NE(dlsym(Library(), name.c_str()), nullptr) << name;
        ++count;
    }
    EXPECT_GT(count, 100);
}

TEST_F(OwnDeclarations, NothingElseIsExported)
{
    for (const char* name : {"_ZN9vistaTrim9VistaTrimC1Ev", "_ZN9vistaTrim10CCropRectsC1Ev",
                             "_ZN9vistaTrim19RandomCropGenerator11GenerateAllEv",
                             "_ZTVN9vistaTrim10CRGB8ImageE", "_ZN9vistaTrim15AllocateAlignedEmm"})
        EXPECT_EQ(dlsym(Library(), name), nullptr) << name;
}

TEST_F(OwnDeclarations, BothDestroyFunctionsHaveOneAddress)
{
    EXPECT_EQ(Address("DestroyImageObj"), Address("DestroyVistaTrimObj"));
}

TEST_F(OwnDeclarations, EverySlotOfTheImageWorks)
{
    EXPECT_EQ(image->GetWidth(), 640U);
    EXPECT_EQ(image->GetHeight(), 96U);
    EXPECT_EQ(image->GetNumChannels(), 3U);
    EXPECT_EQ(image->GetRowStride(), 1920U);
    EXPECT_EQ(image->GetPixelStride(), 3U);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(image->GetChannelOffset(i), kOffsets[i]);
    EXPECT_EQ(image->GetData(), image->GetPixels());
    EXPECT_EQ(image->GetPixels()[5], Pixels(640, 96)[5]);
    image->AddRef();
    image->Release();
    EXPECT_EQ(image->GetWidth(), 640U);

    Image* other = createImage(1, 2, 3, kOffsets, nullptr);
    EXPECT_EQ(other->GetPixels()[5], 0);
    other->AddRef();
    other->Destroy();
    other = createImage(1, 2, 3, kOffsets, nullptr);
    other->Release();
}

TEST_F(OwnDeclarations, EverySlotOfTheListWorks)
{
    const Request request{0, 0, 1.5, false};
    List* list = nullptr;
    compute(driver, &list, &request);
    ASSERT_NE(list, nullptr);
    ASSERT_GT(list->Count(), 0U);
    for (uint32_t i = 0; i < list->Count(); ++i) {
        const Crop& crop = list->Data()[i];
        EXPECT_LE(0, crop.left);
        EXPECT_LT(crop.right, 640);
        EXPECT_LE(0, crop.top);
        EXPECT_LT(crop.bottom, 96);
        EXPECT_EQ(2 * (crop.right - crop.left + 1) / 3, crop.bottom - crop.top + 1);
        EXPECT_TRUE(crop.score.scored);
        EXPECT_GT(crop.score.border, 0.0);
        EXPECT_LE(crop.score.border, 1.0);
    }
    list->AddRef();
    list->Release();
    EXPECT_GT(list->Count(), 0U);
    list->Release();
    compute(driver, &list, &request);
    list->AddRef();
    list->Destroy();
}

TEST_F(OwnDeclarations, RequestsThroughSlotsAndFunctionsAgree)
{
    const Request request{0, 0, 0, false};
    List* bySlot = nullptr;
    List* byFunction = nullptr;
    driver->ComputeCropSuggestions(&bySlot, request);
    compute(driver, &byFunction, &request);
    ASSERT_EQ(bySlot->Count(), byFunction->Count());
    EXPECT_EQ(bySlot->Data()[3].score.composition, byFunction->Data()[3].score.composition);
    bySlot->Release();
    byFunction->Release();
}

// The five doubles are passed by value. Mode 1 and a first weight alone select the same; another
// weight alone selects differently.
TEST_F(OwnDeclarations, WeightsPassByValue)
{
    const Request request{0, 0, 0, false};
    const auto merged = [&](int32_t mode, Weights weights, bool slot) {
        List* list = nullptr;
        if (slot)
            driver->GetNTopCropSuggestions(6, &list, request, mode, weights);
        else
            getTop(driver, 6, &list, &request, mode, weights);
        std::vector<double> values;
        for (uint32_t i = 0; i < list->Count(); ++i) {
            values.push_back(list->Data()[i].left);
            values.push_back(list->Data()[i].bottom);
            values.push_back(list->Data()[i].score.merged);
        }
        EXPECT_LE(list->Count(), 6U);
        EXPECT_GT(list->Count(), 0U);
        list->Release();
        return values;
    };
    const Weights all{1, 1, 1, 1, 1};
    const Weights one[5] = {
        {1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}};
    for (int32_t mode = 1; mode <= 3; ++mode) {
        EXPECT_EQ(merged(mode, all, true), merged(0, one[mode - 1], true)) << mode;
        EXPECT_EQ(merged(mode, all, true), merged(0, one[mode - 1], false)) << mode;
    }
    EXPECT_NE(merged(0, one[0], false), merged(0, one[1], false));
    EXPECT_NE(merged(0, one[1], false), merged(0, one[2], false));
    EXPECT_NE(merged(0, one[3], false), merged(0, one[4], false));
}

TEST_F(OwnDeclarations, ParametersComeBackByValue)
{
    const Parameters copy = driver->GetParameters();
    ASSERT_EQ(copy.numAspects, 2U);
    EXPECT_EQ(copy.aspects[0].value, 1.5);
    EXPECT_NE(copy.aspects, parameters.aspects);
    ASSERT_EQ(copy.numScales, 2U);
    EXPECT_EQ(copy.scales[1].value, 0.9);
    ASSERT_EQ(copy.numRegions, 1U);
    EXPECT_EQ(copy.regions[0].bottom, 29);
    EXPECT_TRUE(copy.regions[0].marked);
    EXPECT_EQ(copy.maxPerSide, 7U);
    EXPECT_FALSE(copy.useDetector);
}

TEST_F(OwnDeclarations, SettingAFlagOfANewRatioExtendsItsTable)
{
    Ratio* table = nullptr;
    uint32_t count = 0;
    driver->GetAspectRatios(&table, &count);
    EXPECT_EQ(count, 2U);
    driver->SetAspectRatioEnabled(2.0, true);
    driver->GetAspectRatios(&table, &count);
    EXPECT_EQ(count, 3U);
    driver->GetCropRectScaleRatios(&table, &count);
    EXPECT_EQ(count, 2U);
    driver->SetCropRectScaleRatioEnabled(0.7, true);
    driver->GetCropRectScaleRatios(&table, &count);
    EXPECT_EQ(count, 3U);
    driver->ReservedA();
    driver->ReservedB(0xFFFFFFFFU);
}

TEST_F(OwnDeclarations, AnAddedRegionJoinsTheTable)
{
    Region* table = nullptr;
    uint32_t count = 0;
    const Region added{1, 2, 3, 4, false, true, 2};
    driver->AddRectOfInterest(added);
    driver->GetRectsOfInterest(&table, &count);
    ASSERT_EQ(count, 2U);
    EXPECT_EQ(table[0].left, 10);
    EXPECT_EQ(table[1].bottom, 4);
    EXPECT_EQ(table[1].kind, 2);
}

TEST_F(OwnDeclarations, ScoresAHostsOwnRectangleOnce)
{
    const auto fresh = [] {
        Crop crop{};
        crop.right = 299;
        crop.bottom = 89;
        crop.score.roi = 0.25;
        return crop;
    };
    Crop bySlot = fresh();
    Crop byFunction = fresh();
    driver->EvaluateScores(bySlot);
    evaluate(driver, &byFunction);
    EXPECT_TRUE(bySlot.score.scored);
    EXPECT_TRUE(byFunction.score.scored);
    EXPECT_EQ(bySlot.score.composition, byFunction.score.composition);
    EXPECT_EQ(bySlot.score.border, byFunction.score.border);
    EXPECT_EQ(bySlot.score.roi, 0.25);
    EXPECT_GT(bySlot.score.border, 0.0);

    Crop scored = fresh();
    scored.score.scored = true;
    driver->EvaluateScores(scored);
    EXPECT_EQ(scored.score.border, 0.0);
}

TEST_F(OwnDeclarations, MessagesAreCaughtByHandlersOfThreePointerTypes)
{
    driver->SetAspectRatioEnabled(1.5, false);
    const Request ratio{0, 0, 1.5, false};
    const Request size{72, 48, 0, false};
    List* const untouched = reinterpret_cast<List*>(uintptr_t{0x5555});
    List* result = untouched;
    std::string text;
    try {
        compute(driver, &result, &ratio);
    } catch (char* thrown) {
        text = thrown;
    }
    EXPECT_EQ(text, "VistaTrim: input aspect ratio is disabled.\n");
    try {
        compute(driver, &result, &size);
    } catch (const char* thrown) {
        text = thrown;
    }
    EXPECT_EQ(text, "VistaTrim: input aspect ratio or scale ratio is disabled.\n");
    driver->SetCropRectScaleRatioEnabled(1.5, true);
    const Request all{0, 0, 0, false};
    try {
        getTop(driver, 3, &result, &all, 0, Weights{1, 1, 1, 0, 0});
    } catch (void* thrown) {
        text = static_cast<const char*>(thrown);
    }
    EXPECT_EQ(text, "RandomCropGenerator: error\n");
    EXPECT_EQ(result, untouched);
}

// Leaks the previous generator and analyzer, as the suppressions list.
TEST_F(OwnDeclarations, BothInitializingSlotsWork)
{
    driver->InitializeWithDefaults(image);
    EXPECT_EQ(driver->GetParameters().numAspects, 6U);
    driver->Initialize(image, parameters);
    EXPECT_EQ(driver->GetParameters().numAspects, 2U);
    Ratio* table = nullptr;
    uint32_t count = 0;
    driver->GetAspectRatios(&table, &count);
    EXPECT_EQ(count, 2U);
    driver->AddRef();
    driver->Release();
    driver->Destroy();
    driver = nullptr;
}

TEST_F(OwnDeclarations, LastReleaseEndsTheDriver)
{
    driver->Release();
    driver = nullptr;
    EXPECT_EQ(image->GetWidth(), 640U);
}

// The first words of an object are the table of its slots: two destructors, then Release.
TEST_F(OwnDeclarations, DestroySlotsDoNothingOnNull)
{
    using Slot = void (*)(void*);
    const auto slot = [](void* object, size_t index) {
        return (*reinterpret_cast<Slot* const*>(object))[index];
    };
    slot(image, 4)(nullptr);
    slot(driver, 4)(nullptr);
    const Request request{0, 0, 1.5, false};
    List* list = nullptr;
    compute(driver, &list, &request);
    slot(list, 6)(nullptr);
    list->Release();
}

// Calls exported members through their mangled names: the object is the first argument.
TEST_F(OwnDeclarations, ExportedMembersWorkOnPlainRecords)
{
    using Make = void (*)(void*);
    using MakeSides = void (*)(void*, int, int, int, int);
    using MakeSidesMarked = void (*)(void*, int, int, int, int, bool);
    using Assign = void* (*)(void*, const void*);

    Crop crop{};
    reinterpret_cast<MakeSides>(Address("_ZN9vistaTrim14CInt32CropRectC1Eiiii"))(&crop, 1, 2, 3, 4);
    EXPECT_EQ(crop.right, 2);
    EXPECT_EQ(crop.score.roi, 1.0);
    Crop copy{};
    EXPECT_EQ(
        reinterpret_cast<Assign>(Address("_ZN9vistaTrim14CInt32CropRectaSERKS0_"))(&copy, &crop),
        &copy);
    EXPECT_EQ(copy.bottom, 4);

    Region regions[2] = {};
    for (Region& region : regions)
        reinterpret_cast<Make>(Address("_ZN9vistaTrim15CRectOfInterestC1Ev"))(&region);
    EXPECT_TRUE(regions[1].enabled);
    reinterpret_cast<MakeSidesMarked>(Address("_ZN9vistaTrim15CRectOfInterestC1Eiiiib"))(
        &regions[0], 5, 6, 7, 8, true);
    EXPECT_TRUE(regions[0].marked);
    EXPECT_EQ(regions[0].top, 7);

    const int32_t sides[4] = {0, 639, 0, 479};
    EXPECT_EQ(reinterpret_cast<int64_t (*)(const void*)>(
                  Address("_ZNK9vistaTrim10CInt32Rect4AreaEv"))(sides),
              307200);
    EXPECT_FALSE(reinterpret_cast<bool (*)(const void*)>(
        Address("_ZNK9vistaTrim10CInt32Rect5EmptyEv"))(sides));

    Request request{9, 9, 9, true};
    reinterpret_cast<Make>(Address("_ZN9vistaTrim20SuggestionParametersC1Ev"))(&request);
    EXPECT_EQ(request.aspectRatio, 0.0);
    EXPECT_FALSE(request.detectFaces);

    const Weights weights{1, 2, 3, 4, 5};
    Weights target{};
    EXPECT_EQ(reinterpret_cast<Assign>(Address("_ZN9vistaTrim18WeightDistributionaSERKS0_"))(
                  &target, &weights),
              &target);
    EXPECT_EQ(target.weight5, 5.0);

    Parameters defaults;
    reinterpret_cast<Make>(Address("_ZN9vistaTrim19VistaTrimParametersC1Ev"))(&defaults);
    reinterpret_cast<Make>(Address("_ZN9vistaTrim19VistaTrimParameters11SetDefaultsEv"))(&defaults);
    EXPECT_EQ(defaults.numAspects, 6U);
    EXPECT_EQ(defaults.scales[6].value, 1.0);
}

} // namespace
} // namespace ownDeclarations
