#include "public/analysed_picture.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/test_pictures.h"
#include "host_objects.h"
#include "scoring/composition_model.h"

namespace vistaTrim {
namespace {

using namespace testPictures;

std::shared_ptr<const CAnalysedPicture> AnalysedOnce(const Picture& picture)
{
    const ImageHolder image = MakeImage(picture);
    return std::make_shared<CAnalysedPicture>(*image); // the image is destroyed here
}

std::shared_ptr<const CAnalysedPicture> RejectedPicture()
{
    testing::internal::CaptureStderr();
    std::shared_ptr<const CAnalysedPicture> analysed = AnalysedOnce(Flat(1, 1281, 1, 2, 3));
    testing::internal::GetCapturedStderr();
    return analysed;
}

TEST(AnalysedPictureMaps, MatchTheAnalyzersMapsByName)
{
    const Picture picture = Blobs(640, 400, 1);
    const auto analyzer = Analyse(picture);
    const auto analysed = AnalysedOnce(picture);

    const std::vector<NamedFloats> expected = AllMaps(*analyzer);
    ASSERT_EQ(analysed->Maps().size(), expected.size());
    for (size_t k = 0; k < expected.size(); ++k) {
        SCOPED_TRACE(expected[k].Name);
        EXPECT_EQ(analysed->Maps()[k].Name, expected[k].Name);
        const NamedPictureMap* const map = analysed->Find(expected[k].Name);
        ASSERT_EQ(map, &analysed->Maps()[k]);
        ASSERT_EQ(map->Cols, 640);
        ASSERT_EQ(map->Rows, 400);
        EXPECT_TRUE(std::equal(map->Data, map->Data + 640 * 400, expected[k].Map->Data));
    }
}

TEST(AnalysedPictureMaps, AreNotFoundUnderOtherNames)
{
    const auto analysed = AnalysedOnce(Flat(640, 10, 1, 2, 3));
    EXPECT_EQ(analysed->Find("contrastmap"), nullptr);
    EXPECT_EQ(analysed->Find(""), nullptr);
}

TEST(AnalysedPictureMaps, OfARejectedPictureAreEmpty)
{
    const auto analysed = RejectedPicture();
    ASSERT_EQ(analysed->Maps().size(), 10u);
    for (const NamedPictureMap& map : analysed->Maps()) {
        EXPECT_EQ(map.Data, nullptr) << map.Name;
        EXPECT_EQ(map.Cols, 0) << map.Name;
        EXPECT_EQ(map.Rows, 0) << map.Name;
    }
}

constexpr float kUntouched = -7.5f;

std::vector<float> Untouched()
{
    return std::vector<float>(kPictureDescriptorSize, kUntouched);
}

TEST(AnalysedPictureDescriptor, HoldsTheCellMeansBeforeTheyAreStandardised)
{
    const Picture picture = Blobs(640, 400, 2);
    const auto analyzer = Analyse(picture);
    const auto analysed = AnalysedOnce(picture);
    for (const CInt32CropRect& crop :
         {CInt32CropRect(0, 639, 0, 399), CInt32CropRect(31, 402, 77, 300),
          CInt32CropRect(639, 639, 399, 399)}) {
        std::vector<float> expected = Untouched();
        ComputeCompositionDescriptor(analyzer->ContrastTable, analyzer->SaliencyTable,
                                     expected.data(), analyzer->ToWorkingRect(crop));
        std::vector<float> found = Untouched();
        EXPECT_TRUE(analysed->ReadDescriptor(crop, found.data()));
        EXPECT_EQ(found, expected);
    }
}

TEST(AnalysedPictureDescriptor, IsNotWrittenForACropWithoutPixels)
{
    const auto analysed = AnalysedOnce(Blobs(640, 20, 3));
    for (const CInt32CropRect& crop :
         {CInt32CropRect(10, 9, 0, 19), CInt32CropRect(0, 639, 5, 4),
          CInt32CropRect(640, 700, 0, 19), CInt32CropRect(0, 639, -9, -1)}) {
        std::vector<float> found = Untouched();
        EXPECT_FALSE(analysed->ReadDescriptor(crop, found.data()));
        EXPECT_EQ(found, Untouched());
    }
}

TEST(AnalysedPictureDescriptor, OfARejectedPictureIsNeverWritten)
{
    std::vector<float> found = Untouched();
    EXPECT_FALSE(RejectedPicture()->ReadDescriptor(CInt32CropRect(0, 0, 0, 1280), found.data()));
    EXPECT_EQ(found, Untouched());
}

struct DriverEnd {
    void operator()(IVistaTrim* driver) const
    {
        DestroyVistaTrimObj(driver);
    }
};
using DriverHolder = std::unique_ptr<IVistaTrim, DriverEnd>;

VistaTrimParameters WithRatios(const std::vector<double>& aspects, uint32_t density)
{
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    parameters.NumMaxCropRectsPerSide = density;
    if (!aspects.empty()) {
        delete[] parameters.AspectRatios;
        parameters.NumAspectRatios = static_cast<uint32_t>(aspects.size());
        parameters.AspectRatios = new DoubleInfo[aspects.size()];
        std::copy(aspects.begin(), aspects.end(), parameters.AspectRatios);
    }
    return parameters;
}

void Append(std::vector<CInt32CropRect>& records, ICropRects* list)
{
    records.insert(records.end(), list->Data(), list->Data() + list->Count());
    list->Release();
}

// Every kind of request, one after the other.
std::vector<CInt32CropRect> Answers(IVistaTrim* driver)
{
    std::vector<CInt32CropRect> records;
    ICropRects* list = nullptr;
    for (const SuggestionParameters& request :
         {SuggestionParameters(300.0, 200.0, false), SuggestionParameters(900.0, 200.0, false),
          SuggestionParameters(1.3, false), SuggestionParameters()}) {
        ComputeCropSuggestions(driver, &list, &request);
        Append(records, list);
        GetNTopCropSuggestions(driver, 7, &list, &request, 0,
                               WeightDistribution(0.3, 0.2, 0.2, 0.2, 0.1));
        Append(records, list);
    }
    CInt32CropRect own(13, 333, 17, 222);
    EvaluateScores(driver, &own);
    records.push_back(own);
    return records;
}

std::vector<CInt32CropRect> AnswersOfTheExports(const Picture& picture,
                                                const VistaTrimParameters& parameters)
{
    const ImageHolder image = MakeImage(picture);
    const DriverHolder driver(CreateVistaTrimObj(image.get(), &parameters));
    return Answers(driver.get());
}

TEST(AnalysedPictureDrivers, AnswerLikeExportedDrivers)
{
    for (const Picture& picture : {Blobs(640, 427, 4), Noise(300, 640, 5), Blobs(1280, 855, 6)}) {
        const auto analysed = AnalysedOnce(picture);
        for (const VistaTrimParameters& parameters :
             {VistaTrimParameters(), WithRatios({}, 5), WithRatios({1.0, 5.0}, 9)}) {
            const DriverHolder driver(analysed->MakeDriver(parameters));
            const std::vector<CInt32CropRect> expected = AnswersOfTheExports(picture, parameters);
            ASSERT_GT(expected.size(), 100u);
            EXPECT_TRUE(SameRecords(Answers(driver.get()), expected));
        }
    }
}

TEST(AnalysedPictureDrivers, KeepTheAnalysisAndShareNothingElse)
{
    const Picture picture = Blobs(640, 300, 7);
    auto analysed = AnalysedOnce(picture);
    VistaTrimParameters withRect = WithRatios({}, 5);
    withRect.NumRectsOfInterest = 1;
    withRect.RectsOfInterest = new CRectOfInterest[1];
    withRect.RectsOfInterest[0] = CRectOfInterest(10, 60, 10, 60, false);
    const DriverHolder first(analysed->MakeDriver(withRect));
    const DriverHolder second(analysed->MakeDriver(WithRatios({}, 5)));
    analysed.reset();

    EXPECT_TRUE(SameRecords(Answers(first.get()), AnswersOfTheExports(picture, withRect)));
    EXPECT_TRUE(
        SameRecords(Answers(second.get()), AnswersOfTheExports(picture, WithRatios({}, 5))));
    CRectOfInterest* table = nullptr;
    uint32_t count = 0;
    first->GetRectsOfInterest(&table, &count);
    EXPECT_EQ(count, 1u);
}

TEST(AnalysedPictureDrivers, OfOneAnalysisRunInSeveralThreads)
{
    const Picture picture = Blobs(640, 360, 8);
    const auto analysed = AnalysedOnce(picture);
    const std::vector<CInt32CropRect> expected = AnswersOfTheExports(picture, WithRatios({}, 9));
    std::vector<CInt32CropRect> found[4];
    std::vector<std::thread> threads;
    for (std::vector<CInt32CropRect>& answers : found)
        threads.emplace_back([&analysed, &answers] {
            const DriverHolder driver(analysed->MakeDriver(WithRatios({}, 9)));
            answers = Answers(driver.get());
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<CInt32CropRect>& answers : found)
        EXPECT_TRUE(SameRecords(answers, expected));
}

TEST(AnalysedPictureDrivers, CanBeInitializedOnAnotherImage)
{
    const Picture other = Noise(640, 200, 9);
    const ImageHolder image = MakeImage(other);
    const auto analysed = AnalysedOnce(Blobs(640, 480, 10));
    IVistaTrim* const driver = analysed->MakeDriver(WithRatios({}, 5));
    driver->Initialize(image.get(), WithRatios({}, 5)); // leaks what it held before
    EXPECT_TRUE(SameRecords(Answers(driver), AnswersOfTheExports(other, WithRatios({}, 5))));
    DestroyVistaTrimObj(driver);
}

} // namespace
} // namespace vistaTrim
