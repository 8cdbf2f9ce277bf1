#include <cmath>
#include <csignal>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "host_objects.h"
#include "public/vista_trim.h"

namespace vistaTrim {
namespace {

static_assert(!std::is_copy_constructible<VistaTrim>::value, "drivers are counted, not copied");
static_assert(!std::is_copy_assignable<VistaTrim>::value, "drivers are counted, not copied");

constexpr double kTolerance = 0.001 / 640;
const char* const kAspectText = "VistaTrim: input aspect ratio is disabled.\n";
const char* const kPairText = "VistaTrim: input aspect ratio or scale ratio is disabled.\n";
const char* const kCellText = "RandomCropGenerator: error\n";

int32_t WidthOf(const CInt32CropRect& crop)
{
    return crop.Right - crop.Left + 1;
}

int32_t HeightOf(const CInt32CropRect& crop)
{
    return crop.Bottom - crop.Top + 1;
}

// A result that no driver has set; a failed request must leave it unchanged.
ICropRects* const kUntouched = reinterpret_cast<ICropRects*>(uintptr_t{0x5555});

// The message that a request throws, by each of the three handlers; empty if it throws none.
std::string ThrownText(HostObjects& host, const SuggestionParameters& request, bool best)
{
    std::string texts[3];
    for (int handler = 0; handler < 3; ++handler) {
        ICropRects* result = kUntouched;
        const auto run = [&] {
            if (best)
                GetNTopCropSuggestions(host.Driver, 5, &result, &request, 0,
                                       WeightDistribution(1, 1, 1));
            else
                ComputeCropSuggestions(host.Driver, &result, &request);
            result->Release();
        };
        if (handler == 0) {
            try {
                run();
                return std::string();
            } catch (char* text) {
                texts[0] = text;
            }
        } else if (handler == 1) {
            try {
                run();
            } catch (const char* text) {
                texts[1] = text;
            }
        } else {
            try {
                run();
            } catch (void* text) {
                texts[2] = static_cast<const char*>(text);
            }
        }
        EXPECT_EQ(result, kUntouched);
    }
    EXPECT_EQ(texts[0], texts[1]);
    EXPECT_EQ(texts[0], texts[2]);
    return texts[0];
}

std::string ThrownText(HostObjects& host, const SuggestionParameters& request)
{
    const std::string text = ThrownText(host, request, false);
    EXPECT_EQ(ThrownText(host, request, true), text);
    return text;
}

TEST(Driver, DefaultRequestReturnsEveryPair)
{
    HostObjects host(640, 480);
    EXPECT_EQ(host.Suggestions(SuggestionParameters()).size(), 14501U);
}

TEST(Driver, EmptyParametersMeanAllDefaults)
{
    HostObjects host(640, 480, VistaTrimParameters());
    const VistaTrimParameters defaults = DefaultParameters();
    EXPECT_EQ(host.NumAspectRows(), defaults.NumAspectRatios);
    EXPECT_EQ(host.NumScaleRows(), defaults.NumCropRectScaleRatios);
    const VistaTrimParameters stored = host.Driver->GetParameters();
    EXPECT_EQ(stored.NumAspectRatios, defaults.NumAspectRatios);
    EXPECT_EQ(stored.NumMaxCropRectsPerSide, defaults.NumMaxCropRectsPerSide);
    EXPECT_EQ(stored.AspectRatios[0].Value, defaults.AspectRatios[0].Value);
    EXPECT_EQ(host.Suggestions(SuggestionParameters(4.0 / 3.0, false)).size(),
              HostObjects(640, 480).Suggestions(SuggestionParameters(4.0 / 3.0, false)).size());
}

// An empty aspect table drops the host's scales, density, rectangles and flag with it.
TEST(Driver, EmptyAspectTableReplacesTheWholeSet)
{
    VistaTrimParameters parameters;
    parameters.CropRectScaleRatios = new DoubleInfo[1];
    parameters.CropRectScaleRatios[0] = DoubleInfo(0.3);
    parameters.NumCropRectScaleRatios = 1;
    parameters.RectsOfInterest = new CRectOfInterest[1];
    parameters.NumRectsOfInterest = 1;
    parameters.NumMaxCropRectsPerSide = 3;
    parameters.UseBuiltInFaceDetector = true;
    HostObjects host(640, 96, parameters);
    EXPECT_EQ(host.NumScaleRows(), 7U);
    const VistaTrimParameters stored = host.Driver->GetParameters();
    EXPECT_EQ(stored.CropRectScaleRatios[0].Value, 0.4);
    EXPECT_EQ(stored.NumRectsOfInterest, 0U);
    EXPECT_EQ(stored.NumMaxCropRectsPerSide, 25U);
    EXPECT_FALSE(stored.UseBuiltInFaceDetector);
    CRectOfInterest* table = nullptr;
    uint32_t count = 99;
    const CRectOfInterest own(0, 9, 0, 9, true);
    host.Driver->AddRectOfInterest(own); // an empty list would leak a default record
    host.Driver->GetRectsOfInterest(&table, &count);
    EXPECT_EQ(count, 1U);
}

// A row of the grid without cells holds no candidates. That is an empty list, not an error.
TEST(Driver, AspectRowsWithoutScaleRowsGiveEmptyLists)
{
    VistaTrimParameters parameters;
    parameters.AspectRatios = new DoubleInfo[2];
    parameters.AspectRatios[0] = DoubleInfo(1.5);
    parameters.AspectRatios[1] = DoubleInfo(1.0);
    parameters.NumAspectRatios = 2;
    parameters.NumMaxCropRectsPerSide = 25;
    HostObjects host(640, 96, parameters);
    ASSERT_EQ(host.NumScaleRows(), 0U);
    for (const SuggestionParameters& request :
         {SuggestionParameters(), SuggestionParameters(1.5, false),
          SuggestionParameters(1.25, false)}) {
        EXPECT_TRUE(host.Suggestions(request).empty());
        EXPECT_TRUE(host.BestCrops(5, request).empty());
    }
    // A crop size brings the first scale row, and from then on there are candidates.
    EXPECT_FALSE(host.BestCrops(5, SuggestionParameters(120, 80, false)).empty());
    EXPECT_EQ(host.NumScaleRows(), 1U);
    EXPECT_FALSE(host.Suggestions(SuggestionParameters()).empty());
}

// With one aspect row nothing is defaulted, not even a density of 0, which wraps.
TEST(Driver, AnAspectTableKeepsTheHostsOtherParameters)
{
    VistaTrimParameters parameters;
    parameters.AspectRatios = new DoubleInfo[1];
    parameters.AspectRatios[0] = DoubleInfo(2.0);
    parameters.NumAspectRatios = 1;
    parameters.SetDefaultCropRectScaleRatios();
    HostObjects host(640, 96, parameters);
    EXPECT_EQ(host.NumAspectRows(), 1U);
    const VistaTrimParameters stored = host.Driver->GetParameters();
    EXPECT_EQ(stored.NumMaxCropRectsPerSide, 0U);
    EXPECT_EQ(stored.AspectRatios[0].Value, 2.0);
    // Crops of 96 x 48: both ends across, every row down.
    EXPECT_EQ(host.Suggestions(SuggestionParameters(96, 48, false)).size(), 2U * 49U);
}

TEST(Driver, OneScaleRowIsEnough)
{
    VistaTrimParameters parameters;
    parameters.AspectRatios = new DoubleInfo[1];
    parameters.AspectRatios[0] = DoubleInfo(1.5);
    parameters.NumAspectRatios = 1;
    parameters.CropRectScaleRatios = new DoubleInfo[1];
    parameters.CropRectScaleRatios[0] = DoubleInfo(0.5);
    parameters.NumCropRectScaleRatios = 1;
    parameters.NumMaxCropRectsPerSide = 6;
    HostObjects host(640, 96, parameters);
    ASSERT_EQ(host.NumScaleRows(), 1U);
    const std::vector<CInt32CropRect> crops = host.Suggestions(SuggestionParameters());
    EXPECT_FALSE(crops.empty());
    for (const CInt32CropRect& crop : crops) {
        EXPECT_EQ(WidthOf(crop), 72);
        EXPECT_EQ(HeightOf(crop), 48);
    }
}

TEST(Driver, ParametersAreCopied)
{
    VistaTrimParameters parameters = DefaultParameters();
    HostObjects host(640, 96, parameters);
    parameters.AspectRatios[0].Value = 9.0;
    EXPECT_EQ(host.Driver->GetParameters().AspectRatios[0].Value,
              DefaultParameters().AspectRatios[0].Value);
}

TEST(Driver, TwoRequestsGiveTwoListsOfEqualContents)
{
    HostObjects host(640, 96);
    const SuggestionParameters request;
    ICropRects* first = nullptr;
    ICropRects* second = nullptr;
    ComputeCropSuggestions(host.Driver, &first, &request);
    ComputeCropSuggestions(host.Driver, &second, &request);
    ASSERT_NE(first, second);
    ASSERT_EQ(first->Count(), second->Count());
    ASSERT_NE(first->Data(), second->Data());
    const std::vector<CInt32CropRect> kept(first->Data(), first->Data() + first->Count());
    first->Release();
    for (uint32_t i = 0; i < second->Count(); ++i)
        EXPECT_TRUE(SameRecord(second->Data()[i], kept[i]));
    second->Release();
}

TEST(Driver, ListOutlivesTheDriverAndTheImage)
{
    ICropRects* list = nullptr;
    {
        HostObjects host(640, 96);
        const SuggestionParameters request(4.0 / 3.0, false);
        ComputeCropSuggestions(host.Driver, &list, &request);
    }
    ASSERT_GT(list->Count(), 0U);
    EXPECT_EQ(list->Data()[0].Left, 0);
    EXPECT_EQ(list->Data()[0].Top, 0);
    list->Release();
}

TEST(Driver, RequestThatYieldsNothingGivesAnEmptyListWithoutData)
{
    VistaTrimParameters parameters = DefaultParameters();
    for (uint32_t i = 0; i < parameters.NumCropRectScaleRatios; ++i)
        parameters.CropRectScaleRatios[i].Enabled = false;
    HostObjects host(640, 96, parameters);
    for (const SuggestionParameters& request :
         {SuggestionParameters(), SuggestionParameters(1.5, false)}) {
        ICropRects* list = nullptr;
        ComputeCropSuggestions(host.Driver, &list, &request);
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(list->Count(), 0U);
        EXPECT_EQ(list->Data(), nullptr);
        list->Release();
    }
}

TEST(Driver, RatioRequestReturnsItsRowInLatticeOrder)
{
    HostObjects host(640, 480);
    const std::vector<CInt32CropRect> crops =
        host.Suggestions(SuggestionParameters(4.0 / 3.0, false));
    int32_t width = 0;
    for (const CInt32CropRect& crop : crops) {
        EXPECT_EQ(HeightOf(crop) * 4, WidthOf(crop) * 3);
        EXPECT_GE(WidthOf(crop), width); // scales in table order
        width = WidthOf(crop);
    }
    EXPECT_EQ(width, 640);
}

TEST(Driver, RatioWithinTheToleranceUsesTheTablesRow)
{
    HostObjects host(640, 96);
    EXPECT_TRUE(SameRecords(host.Suggestions(SuggestionParameters(1.5 + 0.9 * kTolerance, false)),
                            host.Suggestions(SuggestionParameters(1.5, false))));
    EXPECT_EQ(host.NumAspectRows(), 6U);
}

TEST(Driver, RatioOutsideTheToleranceAddsAnEnabledRow)
{
    HostObjects host(640, 96);
    EXPECT_FALSE(host.Suggestions(SuggestionParameters(1.5 + 1.1 * kTolerance, false)).empty());
    EXPECT_EQ(host.NumAspectRows(), 7U);
    // The row stays: the same ratio finds it, and a default request includes it.
    EXPECT_FALSE(host.Suggestions(SuggestionParameters(1.5 + 1.1 * kTolerance, false)).empty());
    EXPECT_EQ(host.NumAspectRows(), 7U);
    EXPECT_EQ(host.Driver->GetParameters().NumAspectRatios, 6U);
}

// The row is filled twice in one request; a ratio that does not match even itself gets a row each
// time.
TEST(Driver, InfiniteRatioAddsTwoRowsPerRequest)
{
    HostObjects host(640, 96);
    host.Suggestions(SuggestionParameters(std::numeric_limits<double>::infinity(), false));
    EXPECT_EQ(host.NumAspectRows(), 8U);
}

TEST(Driver, RatioTakesPrecedenceOverACropSize)
{
    HostObjects host(640, 480);
    SuggestionParameters both(300, 200, false);
    both.AspectRatio = 4.0 / 3.0;
    EXPECT_TRUE(SameRecords(host.Suggestions(both),
                            host.Suggestions(SuggestionParameters(4.0 / 3.0, false))));
    EXPECT_EQ(host.NumScaleRows(), 7U);
}

TEST(Driver, CropSizeReturnsOneCell)
{
    HostObjects host(640, 480);
    const std::vector<CInt32CropRect> crops =
        host.Suggestions(SuggestionParameters(300, 200, false));
    ASSERT_FALSE(crops.empty());
    for (const CInt32CropRect& crop : crops) {
        EXPECT_EQ(WidthOf(crop), 300);
        EXPECT_EQ(HeightOf(crop), 200);
    }
    EXPECT_EQ(host.NumAspectRows(), 6U);
    EXPECT_EQ(host.NumScaleRows(), 8U);
}

TEST(Driver, CropSizeOnTheTableAddsNothing)
{
    HostObjects host(640, 480);
    EXPECT_EQ(host.Suggestions(SuggestionParameters(320, 240, false)).size(), 475U);
    EXPECT_EQ(host.NumAspectRows(), 6U);
    EXPECT_EQ(host.NumScaleRows(), 7U);
}

TEST(Driver, CropSizeOfTheWholePictureIsAccepted)
{
    HostObjects host(640, 480);
    EXPECT_EQ(host.Suggestions(SuggestionParameters(640, 480, false)).size(), 1U);
}

// Larger than the picture, only one side, NaN, negative: none of these counts as a crop size.
TEST(Driver, UnusableCropSizeIsIgnored)
{
    HostObjects host(640, 96);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const size_t all = host.Suggestions(SuggestionParameters()).size();
    const double sizes[][2] = {{640.5, 50}, {300, 96.5}, {300, 0}, {0, 50},
                               {nan, 50},   {300, nan},  {-1, 50}, {300, -1}};
    for (const double(&size)[2] : sizes) {
        SCOPED_TRACE(testing::Message() << size[0] << " x " << size[1]);
        EXPECT_EQ(host.Suggestions(SuggestionParameters(size[0], size[1], false)).size(), all);
    }
    for (const double ratio : {nan, -1.0, 0.0}) {
        SuggestionParameters request(ratio, false);
        EXPECT_EQ(host.Suggestions(request).size(), all);
    }
    EXPECT_EQ(host.NumAspectRows(), 6U);
    EXPECT_EQ(host.NumScaleRows(), 7U);
}

TEST(Driver, DisabledRatioThrowsWhenRequestedAndIsLeftOutOtherwise)
{
    HostObjects host(640, 480);
    host.Driver->SetAspectRatioEnabled(4.0 / 3.0, false);
    EXPECT_EQ(ThrownText(host, SuggestionParameters(4.0 / 3.0, false)), kAspectText);
    EXPECT_EQ(host.NumAspectRows(), 6U);
    const std::vector<CInt32CropRect> crops = host.Suggestions(SuggestionParameters());
    EXPECT_LT(crops.size(), 14501U);
    for (const CInt32CropRect& crop : crops)
        EXPECT_FALSE(WidthOf(crop) == 640 && HeightOf(crop) == 480);

    host.Driver->SetAspectRatioEnabled(4.0 / 3.0, true);
    EXPECT_EQ(host.Suggestions(SuggestionParameters()).size(), 14501U);
    EXPECT_EQ(ThrownText(host, SuggestionParameters(4.0 / 3.0, false)), "");
}

TEST(Driver, UnknownRatioThatIsDisabledGetsARow)
{
    HostObjects host(640, 96);
    host.Driver->SetAspectRatioEnabled(1.0, false);
    EXPECT_EQ(host.NumAspectRows(), 7U);
    EXPECT_EQ(ThrownText(host, SuggestionParameters(1.0, false)), kAspectText);
    host.Driver->SetCropRectScaleRatioEnabled(0.25, true);
    EXPECT_EQ(host.NumScaleRows(), 8U);
    EXPECT_EQ(host.Driver->GetParameters().NumAspectRatios, 6U);
    EXPECT_EQ(host.Driver->GetParameters().NumCropRectScaleRatios, 7U);
}

TEST(Driver, CropSizeOnADisabledRowThrows)
{
    HostObjects host(640, 480);
    host.Driver->SetAspectRatioEnabled(4.0 / 3.0, false);
    EXPECT_EQ(ThrownText(host, SuggestionParameters(320, 240, false)), kPairText);
    host.Driver->SetAspectRatioEnabled(4.0 / 3.0, true);
    host.Driver->SetCropRectScaleRatioEnabled(0.5, false);
    EXPECT_EQ(ThrownText(host, SuggestionParameters(320, 240, false)), kPairText);
    EXPECT_EQ(ThrownText(host, SuggestionParameters(384, 288, false)), "");
}

// The tables keep the rows that the failed request added.
TEST(Driver, FailedCropSizeRequestKeepsItsNewScaleRow)
{
    HostObjects host(640, 480);
    host.Driver->SetAspectRatioEnabled(3.0 / 2.0, false);
    EXPECT_EQ(ThrownText(host, SuggestionParameters(300, 200, false)), kPairText);
    EXPECT_EQ(host.NumAspectRows(), 6U);
    EXPECT_EQ(host.NumScaleRows(), 8U);
}

TEST(Driver, ScaleAboveOneBreaksAllButCropSizeRequests)
{
    HostObjects host(640, 480);
    host.Driver->SetCropRectScaleRatioEnabled(1.5, false); // disabled rows are enumerated too
    EXPECT_EQ(ThrownText(host, SuggestionParameters()), kCellText);
    EXPECT_EQ(ThrownText(host, SuggestionParameters(1.0, false)), kCellText);
    EXPECT_EQ(host.NumAspectRows(), 7U); // extended before the cell failed
    EXPECT_EQ(host.Suggestions(SuggestionParameters(320, 240, false)).size(), 475U);
}

TEST(Driver, DisabledScaleIsLeftOutOfAList)
{
    HostObjects host(640, 480);
    host.Driver->SetCropRectScaleRatioEnabled(1.0, false);
    for (const CInt32CropRect& crop : host.Suggestions(SuggestionParameters(2.0 / 3.0, false)))
        EXPECT_LT(HeightOf(crop), 480);
}

TEST(Driver, SecondRequestFindsItsCandidatesScored)
{
    HostObjects host(640, 96);
    const std::vector<CInt32CropRect> first = host.Suggestions(SuggestionParameters());
    for (const CInt32CropRect& crop : first)
        ASSERT_TRUE(crop.Score.Scored);
    EXPECT_TRUE(SameRecords(host.Suggestions(SuggestionParameters()), first));
}

TEST(Driver, DetectFacesAloneChangesNothing)
{
    HostObjects host(640, 96);
    EXPECT_TRUE(SameRecords(host.Suggestions(SuggestionParameters(true)),
                            host.Suggestions(SuggestionParameters(false))));
}

TEST(Driver, BuiltInDetectorAloneChangesNothing)
{
    VistaTrimParameters parameters = DefaultParameters();
    parameters.UseBuiltInFaceDetector = true;
    HostObjects host(640, 96, parameters);
    EXPECT_TRUE(SameRecords(host.Suggestions(SuggestionParameters(false)),
                            HostObjects(640, 96).Suggestions(SuggestionParameters(false))));
}

TEST(DriverDeathTest, RequestingTheDetectorTerminates)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            VistaTrimParameters parameters = DefaultParameters();
            parameters.UseBuiltInFaceDetector = true;
            HostObjects host(640, 40, parameters);
            host.Suggestions(SuggestionParameters(true));
        },
        testing::KilledBySignal(SIGABRT), "");
}

TEST(Driver, TableGettersReturnTheCount)
{
    HostObjects host(640, 96);
    DoubleInfo* table = nullptr;
    uint32_t count = 0;
    host.Driver->GetAspectRatios(&table, &count);
    EXPECT_EQ(count, 6U);
    host.Driver->GetCropRectScaleRatios(&table, &count);
    EXPECT_EQ(count, 7U);
}

TEST(Driver, ReservedSlotsDoNothing)
{
    HostObjects host(640, 96);
    const std::vector<CInt32CropRect> before = host.Suggestions(SuggestionParameters());
    host.Driver->ReservedA();
    host.Driver->ReservedB(7);
    EXPECT_TRUE(SameRecords(host.Suggestions(SuggestionParameters()), before));
}

TEST(Driver, RectsOfInterestLiveInTheDriverAndNotInTheParameters)
{
    VistaTrimParameters parameters = DefaultParameters();
    parameters.RectsOfInterest = new CRectOfInterest[2];
    parameters.NumRectsOfInterest = 2;
    parameters.RectsOfInterest[1] = CRectOfInterest(10, 19, 20, 29, true);
    HostObjects host(640, 96, parameters);

    CRectOfInterest added(30, 39, 40, 49, false);
    added.Kind = RoiSoftExclude;
    host.Driver->AddRectOfInterest(added);
    CRectOfInterest* table = nullptr;
    uint32_t count = 0;
    host.Driver->GetRectsOfInterest(&table, &count);
    ASSERT_EQ(count, 3U);
    EXPECT_EQ(table[1].Left, 10);
    EXPECT_TRUE(table[1].Marked);
    EXPECT_EQ(table[2].Left, 30);
    EXPECT_EQ(table[2].Kind, RoiSoftExclude);

    CRectOfInterest* again = nullptr;
    host.Driver->GetRectsOfInterest(&again, &count);
    EXPECT_EQ(again, table); // the driver's own storage
    EXPECT_EQ(host.Driver->GetParameters().NumRectsOfInterest, 2U);
}

TEST(Driver, DestroyIgnoresTheCount)
{
    HostObjects host(640, 96);
    host.Driver->AddRef();
    host.Driver->AddRef();
    host.Driver->Destroy(); // the leak check would notice a surviving driver
    host.Driver = nullptr;
    EXPECT_EQ(host.Image->GetWidth(), 640U); // borrowed, not destroyed
}

TEST(Driver, LastReleaseDestroysIt)
{
    HostObjects host(640, 96);
    host.Driver->AddRef();
    host.Driver->Release();
    EXPECT_FALSE(host.Suggestions(SuggestionParameters()).empty());
    host.Driver->Release();
    host.Driver = nullptr;
}

// Counts the references that others take.
class CountingImage : public IImage {
public:
    explicit CountingImage(uint32_t width, uint32_t height)
        : Pixels(TestPixels(width, height)), Width(width), Height(height)
    {
    }
    void Release() override
    {
        --References;
    }
    void AddRef() override
    {
        ++References;
    }
    void Destroy() override
    {
        References = -100;
    }
    uint8_t* GetData() override
    {
        return Pixels.data();
    }
    const uint8_t* GetPixels() const override
    {
        return Pixels.data();
    }
    uint32_t GetWidth() const override
    {
        return Width;
    }
    uint32_t GetHeight() const override
    {
        return Height;
    }
    uint32_t GetNumChannels() const override
    {
        return 3;
    }
    uint32_t GetRowStride() const override
    {
        return 3 * Width;
    }
    uint32_t GetPixelStride() const override
    {
        return 3;
    }
    int32_t GetChannelOffset(int index) const override
    {
        return index;
    }

    int References = 1;

private:
    std::vector<uint8_t> Pixels;
    uint32_t Width;
    uint32_t Height;
};

TEST(Driver, BorrowsAHostsOwnImage)
{
    CountingImage image(640, 96);
    const VistaTrimParameters parameters = DefaultParameters();
    IVistaTrim* driver = CreateVistaTrimObj(&image, &parameters);
    const SuggestionParameters request;
    ICropRects* list = nullptr;
    ComputeCropSuggestions(driver, &list, &request);
    const std::vector<CInt32CropRect> crops(list->Data(), list->Data() + list->Count());
    list->Release();
    DestroyVistaTrimObj(driver);
    EXPECT_EQ(image.References, 1);
    EXPECT_TRUE(SameRecords(crops, HostObjects(640, 96).Suggestions(request)));
}

TEST(Interfaces, CopyingTransfersNoState)
{
    CountingImage first(640, 40);
    CountingImage second(320, 16);
    IImage& target = second;
    EXPECT_EQ(&(target = static_cast<IImage&>(first)), &target);
    EXPECT_EQ(second.GetWidth(), 320U);
}

// Builds neither generator nor analyzer, so only GetParameters can inspect it.
TEST(Driver, InitializeWithDefaultsStoresTheDefaults)
{
    IImage* image = MakeTestImage(640, 40);
    VistaTrim* driver = new VistaTrim;
    EXPECT_EQ(driver->GetParameters().NumAspectRatios, 0U);
    driver->InitializeWithDefaults(image);
    const VistaTrimParameters stored = driver->GetParameters();
    EXPECT_EQ(stored.NumAspectRatios, 6U);
    EXPECT_EQ(stored.NumCropRectScaleRatios, 7U);
    EXPECT_EQ(stored.NumMaxCropRectsPerSide, 25U);
    driver->Release();
    DestroyImageObj(image);
}

const char* const kSmallImageText =
    "VistaTrim: the image holds fewer pixels than the analysis reads.\n";

// What creating a driver on a black image of this size throws; empty if it throws nothing.
std::string ThrownByCreation(uint32_t width, uint32_t height, uint32_t channels)
{
    const int32_t offsets[4] = {0, 1, 2, 3};
    IImage* image = CreateImageObj(height, width, channels, offsets, nullptr);
    const VistaTrimParameters parameters = DefaultParameters();
    std::string text;
    try {
        DestroyVistaTrimObj(CreateVistaTrimObj(image, &parameters));
    } catch (char* thrown) {
        text = thrown;
    }
    DestroyImageObj(image);
    return text;
}

TEST(ImageSize, FewerPixelsThanAreReadIsAnError)
{
    EXPECT_EQ(ThrownByCreation(320, 240, 3), kSmallImageText);
    EXPECT_EQ(ThrownByCreation(640, 480, 1), kSmallImageText);
    EXPECT_EQ(ThrownByCreation(100, 64, 3), kSmallImageText);
    EXPECT_EQ(ThrownByCreation(1, 1, 3), kSmallImageText);
    EXPECT_EQ(ThrownByCreation(639, 480, 3), kSmallImageText);
    EXPECT_EQ(ThrownByCreation(640, 480, 2), kSmallImageText);
    EXPECT_EQ(ThrownByCreation(640, 480, 0), kSmallImageText);
    // 2^32 bytes wrap to 0.
    EXPECT_EQ(ThrownByCreation(65536, 65536, 1), kSmallImageText);
}

TEST(ImageSize, ExactlyThePixelsThatAreReadAreEnough)
{
    EXPECT_EQ(ThrownByCreation(640, 48, 3), "");
    EXPECT_EQ(ThrownByCreation(48, 640, 3), "");
    EXPECT_EQ(ThrownByCreation(1280, 48, 3), "");
    // Both are read as 640 x 7 pixels of three bytes, 13,440 in all.
    EXPECT_EQ(ThrownByCreation(1120, 12, 1), "");              // holds 13,440
    EXPECT_EQ(ThrownByCreation(1100, 12, 1), kSmallImageText); // holds 13,200
    EXPECT_EQ(ThrownByCreation(640, 480, 4), "");
}

// Only Initialize may be called on a ready driver.
TEST(Driver, InitializeThatThrowsLeavesTheDriverUnchanged)
{
    HostObjects host(640, 96);
    host.Driver->SetAspectRatioEnabled(1.0, true);
    host.Driver->AddRectOfInterest(CRectOfInterest(300, 309, 30, 39, true));
    const std::vector<CInt32CropRect> before = host.Suggestions(SuggestionParameters());
    VistaTrimParameters parameters = DefaultParameters();
    parameters.NumMaxCropRectsPerSide = 3;
    IImage* small = MakeTestImage(320, 240);
    EXPECT_THROW(host.Driver->Initialize(small, parameters), char*);
    DestroyImageObj(small);

    EXPECT_EQ(host.NumAspectRows(), 7U);
    EXPECT_EQ(host.Driver->GetParameters().NumMaxCropRectsPerSide, 25U);
    EXPECT_TRUE(SameRecords(host.Suggestions(SuggestionParameters()), before));
    // Taller than the first image, so it counts as a request for everything.
    EXPECT_EQ(host.Suggestions(SuggestionParameters(100.0, 97.0, false)).size(), before.size());
}

// The leak suppressions list what these tests leak.

TEST(DriverDeliberateLeaks, ListWithoutRectanglesReturnsADefaultRecord)
{
    HostObjects host(640, 40);
    CRectOfInterest* table = nullptr;
    uint32_t count = 99;
    host.Driver->GetRectsOfInterest(&table, &count);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(table->Right, 0);
    EXPECT_TRUE(table->Enabled);
    CRectOfInterest* another = nullptr;
    host.Driver->GetRectsOfInterest(&another, &count);
    EXPECT_NE(another, table);
}

TEST(DriverDeliberateLeaks, SecondInitializeStartsAnew)
{
    HostObjects host(640, 40);
    host.Driver->SetAspectRatioEnabled(1.0, true);
    host.Driver->AddRectOfInterest(CRectOfInterest(0, 9, 0, 9, true));
    IImage* other = MakeTestImage(640, 96);
    VistaTrimParameters parameters = DefaultParameters();
    parameters.RectsOfInterest = new CRectOfInterest[1];
    parameters.NumRectsOfInterest = 1;
    parameters.RectsOfInterest[0] = CRectOfInterest(5, 6, 7, 8, false);
    host.Driver->Initialize(other, parameters);

    EXPECT_EQ(host.NumAspectRows(), 6U);
    CRectOfInterest* table = nullptr;
    uint32_t count = 0;
    host.Driver->GetRectsOfInterest(&table, &count);
    ASSERT_EQ(count, 1U);
    EXPECT_EQ(table[0].Left, 5);
    EXPECT_TRUE(SameRecords(
        host.Suggestions(SuggestionParameters(1.5, false)),
        HostObjects(640, 96, parameters).Suggestions(SuggestionParameters(1.5, false))));
    DestroyVistaTrimObj(host.Driver);
    host.Driver = nullptr;
    DestroyImageObj(other);
}

} // namespace
} // namespace vistaTrim
