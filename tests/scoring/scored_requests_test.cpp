// Scored requests through the exported functions.
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/test_pictures.h"
#include "candidates/random_crop_generator.h"
#include "scoring/scoring_test_support.h"
#include "vistaTrim/vistaTrim.h"

using namespace vistaTrim;
using testPictures::Picture;

namespace {
long exponentials = 0; // one for each measured record, for its border score
} // namespace

// Replaces the C library's exp.
extern "C" {
double __real_exp(double x);
double __wrap_exp(double x);

double __wrap_exp(double x)
{
    ++exponentials;
    return __real_exp(x);
}
}

namespace scoringTests {
namespace {

struct ReleaseObject {
    void operator()(IBaseClass* object) const
    {
        object->Release();
    }
};
using List = std::unique_ptr<ICropRects, ReleaseObject>;

// A picture and its driver, which must be destroyed first.
class Session {
public:
    explicit Session(const Picture& picture,
                     const VistaTrimParameters& parameters = VistaTrimParameters())
        : Image(testPictures::MakeImage(picture)),
          Driver(CreateVistaTrimObj(Image.get(), &parameters), DestroyVistaTrimObj)
    {
    }

    List All(const SuggestionParameters& request = SuggestionParameters())
    {
        ICropRects* list = nullptr;
        ComputeCropSuggestions(Driver.get(), &list, &request);
        return List(list);
    }
    List Best(int32_t n, const SuggestionParameters& request = SuggestionParameters(),
              int32_t rankingMode = 0,
              const WeightDistribution& weights = WeightDistribution(0.3, 0.2, 0.2, 0.15, 0.15))
    {
        ICropRects* list = nullptr;
        GetNTopCropSuggestions(Driver.get(), n, &list, &request, rankingMode, weights);
        return List(list);
    }
    IVistaTrim* operator->()
    {
        return Driver.get();
    }
    IVistaTrim* get()
    {
        return Driver.get();
    }

private:
    testPictures::ImageHolder Image;
    std::unique_ptr<IVistaTrim, decltype(&DestroyVistaTrimObj)> Driver;
};

bool SameLists(ICropRects& a, ICropRects& b)
{
    if (a.Count() != b.Count())
        return false;
    for (uint32_t i = 0; i < a.Count(); ++i)
        if (!SameRecord(a.Data()[i], b.Data()[i]))
            return false;
    return true;
}

Picture SmallPicture()
{
    return testPictures::Blobs(640, 96, 3);
}

const SuggestionParameters kThreeToTwo(1.5, false);
const SuggestionParameters kSize(120, 80, false);

CRectOfInterest Roi(int32_t kind, int left, int right, int top, int bottom)
{
    CRectOfInterest rect(left, right, top, bottom, false);
    rect.Kind = kind;
    return rect;
}

TEST(ScoredRequests, TheDefaultRequestScoresEveryCandidateAsTheAnalyzerDoes)
{
    const Picture picture = testPictures::Blobs(640, 480, 1);
    Session session(picture);
    const List list = session.All();
    ASSERT_EQ(list->Count(), 14501u);

    const auto analyzer = testPictures::Analyse(picture);
    for (uint32_t i = 0; i < list->Count(); i += 13) {
        const CInt32CropRect& crop = list->Data()[i];
        CInt32CropRect alone(crop.Left, crop.Right, crop.Top, crop.Bottom);
        analyzer->EvaluateCropRect(alone);
        ASSERT_TRUE(SameRecord(crop, alone));
        EXPECT_TRUE(crop.Score.Scored);
        EXPECT_EQ(crop.Score.RoiScore, 1.0);
        EXPECT_EQ(crop.Score.MergedScore, 0.0);
    }
}

TEST(ScoredRequests, EveryKindOfRequestIsScored)
{
    Session session(SmallPicture());
    for (const SuggestionParameters& request : {kThreeToTwo, kSize, SuggestionParameters()}) {
        const List list = session.All(request);
        ASSERT_GT(list->Count(), 0u);
        for (uint32_t i = 0; i < list->Count(); ++i)
            ASSERT_TRUE(list->Data()[i].Score.Scored);
    }
}

TEST(ScoredRequests, TwoRequestsGiveTwoListsWithEqualContents)
{
    Session session(SmallPicture());
    List first = session.All();
    const List second = session.All();
    EXPECT_NE(first.get(), second.get());
    EXPECT_NE(first->Data(), second->Data());
    EXPECT_TRUE(SameLists(*first, *second));
    first.reset();
    EXPECT_TRUE(second->Data()[second->Count() - 1].Score.Scored);
}

// Each measured candidate takes one exponential, for its border score.
TEST(ScoredRequests, ASecondRequestMeasuresNothingAgain)
{
    Session session(SmallPicture());
    const long before = exponentials;
    const List first = session.All();
    EXPECT_GT(exponentials - before, static_cast<long>(first->Count()) / 2);
    EXPECT_LE(exponentials - before, static_cast<long>(first->Count()));

    const long measured = exponentials;
    const List second = session.All();
    session.Best(5);
    session.All(kThreeToTwo);
    EXPECT_EQ(exponentials, measured);
    EXPECT_TRUE(SameLists(*first, *second));

    // Only the cells of a new scale row are measured, each of their candidates once.
    const List size = session.All(kSize);
    EXPECT_EQ(exponentials - measured, static_cast<long>(size->Count()));
    session.All(kSize);
    EXPECT_EQ(exponentials - measured, static_cast<long>(size->Count()));
}

// Scores in the grid are served unchanged, even nonsense.
TEST(ScoredRequests, ScoresInTheGridPersist)
{
    const auto analyzer = testPictures::Analyse(SmallPicture());
    RandomCropGenerator generator;
    generator.Initialize(640, 96, {DoubleInfo(1.5), DoubleInfo(3.0)},
                         {DoubleInfo(0.5), DoubleInfo(0.8)}, 9);
    generator.GenerateAll();
    analyzer->EvaluateCropRects(generator.CropGrid, NoIndex, NoIndex);
    for (CropRow& row : generator.CropGrid)
        for (CropCell& cell : row)
            for (CInt32CropRect& crop : cell) {
                crop.Score.CompositionScore = -1.0;
                crop.Score.CoverageScore = -2.0;
                crop.Score.BorderScore = -3.0;
                crop.Score.PeakScore = -4.0;
                crop.Score.CentrePeakScore = -5.0;
                crop.CoversContent = false;
            }
    generator.CropGrid[1][0][7].Score.Scored = false; // a new one among scored ones
    const CropGridRows nonsense = generator.CropGrid;

    generator.GenerateAll();
    analyzer->EvaluateCropRects(generator.CropGrid, NoIndex, NoIndex);
    uint32_t aspect = NoIndex;
    generator.GenerateForAspectRatio(1.5, aspect);
    analyzer->EvaluateCropRects(generator.CropGrid, aspect, NoIndex);

    for (size_t a = 0; a < 2; ++a)
        for (size_t s = 0; s < 2; ++s)
            for (size_t i = 0; i < nonsense[a][s].size(); ++i) {
                const CInt32CropRect& crop = generator.CropGrid[a][s][i];
                if (a == 1 && s == 0 && i == 7) {
                    EXPECT_TRUE(crop.Score.Scored && crop.Score.BorderScore >= 0.0);
                } else {
                    ASSERT_TRUE(SameRecord(crop, nonsense[a][s][i]));
                }
            }
}

TEST(ScoredRequests, ASelectionLeavesNoTraceInTheCandidates)
{
    Session session(SmallPicture());
    const List before = session.All();
    session.Best(5);
    const List after = session.All();
    EXPECT_TRUE(SameLists(*before, *after));
}

TEST(ScoredRequests, ListsOutliveTheDriver)
{
    List list;
    {
        Session session(SmallPicture());
        list = session.Best(3);
    }
    ASSERT_EQ(list->Count(), 3u);
    EXPECT_TRUE(list->Data()[2].Score.Scored);
}

TEST(ScoredRequests, TheBestAreThoseOfASelectionFromTheEnabledCandidates)
{
    const Picture picture = testPictures::Blobs(640, 320, 5);
    Session session(picture);
    session->SetAspectRatioEnabled(1.5, false);
    session->SetCropRectScaleRatioEnabled(0.7, false);
    VistaTrimParameters defaults;
    defaults.SetDefaults();
    RandomCropGenerator generator;
    generator.Initialize(
        640, 320, std::vector<DoubleInfo>(defaults.AspectRatios, defaults.AspectRatios + 6),
        std::vector<DoubleInfo>(defaults.CropRectScaleRatios, defaults.CropRectScaleRatios + 7),
        25);
    generator.SetAspectRatioEnabled(1.5, false);
    generator.SetCropRectScaleRatioEnabled(0.7, false);
    const auto analyzer = testPictures::Analyse(picture);
    const WeightDistribution weights(0.3, 0.2, 0.2, 0.15, 0.15);
    const auto expectSame = [](ICropRects& list, const std::vector<CInt32CropRect>& expected) {
        ASSERT_EQ(list.Count(), expected.size());
        for (uint32_t i = 0; i < list.Count(); ++i)
            EXPECT_TRUE(SameRecord(list.Data()[i], expected[i]));
    };

    generator.GenerateAll();
    analyzer->EvaluateCropRects(generator.CropGrid, NoIndex, NoIndex);
    for (const int32_t mode : {0, 1, 2, 3, 4}) {
        const List best = session.Best(10, SuggestionParameters(), mode);
        EXPECT_EQ(best->Count(), 10u);
        expectSame(*best, analyzer->SelectTopCrops(10, generator.GetEnabledCropRects(NoIndex), mode,
                                                   weights));
    }

    uint32_t aspect = NoIndex;
    uint32_t scale = NoIndex;
    generator.GenerateForAspectRatio(1.25, aspect);
    analyzer->EvaluateCropRects(generator.CropGrid, aspect, NoIndex);
    expectSame(*session.Best(7, SuggestionParameters(1.25, false)),
               analyzer->SelectTopCrops(7, generator.GetEnabledCropRects(aspect), 0, weights));

    generator.GenerateForCropSize(200, 100, aspect, scale);
    analyzer->EvaluateCropRects(generator.CropGrid, aspect, scale);
    expectSame(
        *session.Best(4, SuggestionParameters(200, 100, false)),
        analyzer->SelectTopCrops(4, CropCells(1, &generator.CropGrid[aspect][scale]), 0, weights));
}

// As driver.h documents: the best fifth is kept, and serving ends at the first empty cluster.
TEST(ScoredRequests, ThousandsOfCropsAreNeverReturned)
{
    Session session(testPictures::Blobs(640, 480, 1));
    EXPECT_EQ(session.Best(2901)->Count(), 2900u);
    EXPECT_EQ(session.Best(100000)->Count(), 2900u);
    const uint32_t ofThousand = session.Best(1000)->Count();
    EXPECT_GT(ofThousand, 0u);
    EXPECT_LT(ofThousand, 1000u);
    RecordProperty("OfThousand", static_cast<int>(ofThousand));
}

TEST(ScoredRequests, DisabledRatiosAreScoredButNotServed)
{
    Session session(SmallPicture());
    session->SetAspectRatioEnabled(16.0 / 9, false);
    const List best = session.Best(100000);
    for (uint32_t i = 0; i < best->Count(); ++i) {
        const CInt32CropRect& crop = best->Data()[i];
        const double ratio =
            static_cast<double>(crop.Right - crop.Left + 1) / (crop.Bottom - crop.Top + 1);
        EXPECT_TRUE(std::fabs(ratio - 16.0 / 9) > 0.05) << ratio;
    }
}

TEST(ScoredRequests, WithEveryScaleDisabledTheListsAreEmpty)
{
    Session session(SmallPicture());
    VistaTrimParameters defaults;
    defaults.SetDefaultCropRectScaleRatios();
    for (uint32_t s = 0; s < defaults.NumCropRectScaleRatios; ++s)
        session->SetCropRectScaleRatioEnabled(defaults.CropRectScaleRatios[s].Value, false);
    const List best = session.Best(5);
    EXPECT_EQ(best->Count(), 0u);
    EXPECT_EQ(best->Data(), nullptr);
    EXPECT_EQ(session.All()->Count(), 0u);
}

TEST(ScoredRequests, RequestForZeroGivesAnEmptyList)
{
    Session session(SmallPicture());
    EXPECT_EQ(session.Best(0)->Count(), 0u);
    EXPECT_EQ(session.Best(-1)->Count(), 0u);
    EXPECT_EQ(session.Best(0)->Data(), nullptr);
}

TEST(ScoredRequests, ARequestThatThrowsLeavesTheResultUnchanged)
{
    Session session(SmallPicture());
    session->SetAspectRatioEnabled(1.5, false);
    ICropRects* result = reinterpret_cast<ICropRects*>(16);
    EXPECT_THROW(GetNTopCropSuggestions(session.get(), 3, &result, &kThreeToTwo, 0,
                                        WeightDistribution(1, 1, 1)),
                 const char*);
    EXPECT_EQ(result, reinterpret_cast<ICropRects*>(16));
}

TEST(ScoredRequests, ServedCropsDifferAndComeFromTheBestClusters)
{
    Session session(testPictures::Blobs(640, 480, 1));
    const List best = session.Best(10);
    ASSERT_EQ(best->Count(), 10u);
    for (uint32_t i = 0; i < 10; ++i) {
        EXPECT_GT(best->Data()[i].Score.MergedScore, 0.0);
        for (uint32_t j = 0; j < i; ++j)
            EXPECT_FALSE(SameRecord(best->Data()[i], best->Data()[j]));
    }
}

TEST(EvaluateScores, MeasuresARectangleOutsideTheLattice)
{
    const Picture picture = SmallPicture();
    Session session(picture);
    CInt32CropRect crop(13, 217, 5, 88);
    crop.Score.RoiScore = 0.25;
    crop.Score.MergedScore = 0.75;
    EvaluateScores(session.get(), &crop);
    EXPECT_TRUE(crop.Score.Scored);
    EXPECT_EQ(crop.Score.RoiScore, 0.25);
    EXPECT_EQ(crop.Score.MergedScore, 0.75);

    const CInt32CropRect once = crop;
    EvaluateScores(session.get(), &crop);
    EXPECT_TRUE(SameRecord(once, crop));

    CInt32CropRect claimed(0, 639, 0, 95); // claims to be scored
    claimed.Score.Scored = true;
    const CInt32CropRect before = claimed;
    EvaluateScores(session.get(), &claimed);
    EXPECT_TRUE(SameRecord(before, claimed));
}

TEST(EvaluateScores, MatchesTheRequestForACandidate)
{
    Session session(SmallPicture());
    const List list = session.All();
    for (uint32_t i = 0; i < list->Count(); i += 101) {
        const CInt32CropRect& candidate = list->Data()[i];
        CInt32CropRect crop(candidate.Left, candidate.Right, candidate.Top, candidate.Bottom);
        EvaluateScores(session.get(), &crop);
        EXPECT_TRUE(SameRecord(crop, candidate));
    }
}

TEST(RectsOfInterestOfADriver, WithoutAnyTheTableIsNotNullAndTheCountIsZero)
{
    Session session(SmallPicture());
    CRectOfInterest* table = nullptr;
    uint32_t count = 99;
    session->GetRectsOfInterest(&table, &count);
    EXPECT_EQ(count, 0u);
    ASSERT_NE(table, nullptr);
    EXPECT_TRUE(table->Enabled);
    delete table; // the caller owns it
}

TEST(RectsOfInterestOfADriver, AddingOneKeepsTheParametersAndReachesTheNextRequest)
{
    VistaTrimParameters parameters;
    parameters.SetDefaults();
    parameters.RectsOfInterest = new CRectOfInterest[1];
    parameters.RectsOfInterest[0] = Roi(RoiSoftInclude, 300, 309, 40, 49);
    parameters.NumRectsOfInterest = 1;
    Session session(SmallPicture(), parameters);
    const List before = session.All();

    session->AddRectOfInterest(Roi(RoiSoftExclude, 0, 19, 0, 95));
    EXPECT_EQ(session->GetParameters().NumRectsOfInterest, 1u);
    CRectOfInterest* table = nullptr;
    uint32_t count = 0;
    session->GetRectsOfInterest(&table, &count);
    ASSERT_EQ(count, 2u);
    EXPECT_EQ(table[0].Left, 300);
    EXPECT_EQ(table[1].Kind, RoiSoftExclude);

    const List after = session.All();
    ASSERT_EQ(after->Count(), before->Count());
    const std::vector<slowOracle::Roi> one = {OracleRoi(table[0])};
    const std::vector<slowOracle::Roi> both = {OracleRoi(table[0]), OracleRoi(table[1])};
    int changed = 0;
    for (uint32_t i = 0; i < after->Count(); ++i) {
        const CInt32CropRect& crop = after->Data()[i];
        const slowOracle::Rect sides{crop.Left, crop.Right, crop.Top, crop.Bottom};
        EXPECT_EQ(before->Data()[i].Score.RoiScore, slowOracle::RoiScore(one, sides));
        EXPECT_EQ(crop.Score.RoiScore, slowOracle::RoiScore(both, sides));
        changed += crop.Score.RoiScore != before->Data()[i].Score.RoiScore;
        EXPECT_EQ(crop.Score.CompositionScore, before->Data()[i].Score.CompositionScore);
    }
    EXPECT_GT(changed, 0);
}

TEST(RectsOfInterestOfADriver, ACropThatMeetsEveryWishComesFirst)
{
    Session session(SmallPicture());
    session->AddRectOfInterest(Roi(RoiSoftInclude, 600, 630, 10, 40));
    const List best = session.Best(5);
    ASSERT_GT(best->Count(), 0u);
    EXPECT_EQ(best->Data()[0].Score.RoiScore, 1.0);
    EXPECT_GE(best->Data()[0].Right, 630);
}

TEST(RectsOfInterestOfADriver, HardKindsFilterTheBestButNotTheWholeList)
{
    Session session(SmallPicture());
    const uint32_t all = session.All()->Count();
    session->AddRectOfInterest(Roi(RoiHardInclude, 600, 630, 10, 40));
    const List best = session.Best(100000);
    ASSERT_GT(best->Count(), 0u);
    EXPECT_LT(best->Count(), all);
    for (uint32_t i = 0; i < best->Count(); ++i)
        EXPECT_TRUE(best->Data()[i].Left <= 600 && best->Data()[i].Right >= 630 &&
                    best->Data()[i].Top <= 10 && best->Data()[i].Bottom >= 40);
    EXPECT_EQ(session.All()->Count(), all);
    EXPECT_EQ(session.All()->Data()[0].Score.RoiScore, 1.0);

    session->AddRectOfInterest(Roi(RoiHardExclude, 610, 612, 20, 21)); // contradicts the first
    EXPECT_EQ(session.Best(10)->Count(), 0u);
}

TEST(RectsOfInterestOfADriver, DisabledUnknownAndMarkedOnesChangeNothing)
{
    Session plain(SmallPicture());
    Session other(SmallPicture());
    CRectOfInterest disabled = Roi(RoiHardExclude, 0, 639, 0, 95);
    disabled.Enabled = false;
    other->AddRectOfInterest(disabled);
    other->AddRectOfInterest(Roi(4, 0, 639, 0, 95));
    other->AddRectOfInterest(Roi(-7, 0, 639, 0, 95));
    EXPECT_TRUE(SameLists(*plain.Best(10), *other.Best(10)));
    EXPECT_TRUE(SameLists(*plain.All(), *other.All()));
}

TEST(RectsOfInterestOfADriver, NoAreaMakesTheSoftScoreNaNAndTheHardFilterRejectAll)
{
    Session soft(SmallPicture());
    const List withoutIt = soft.Best(10);
    soft->AddRectOfInterest(Roi(RoiSoftInclude, 50, 49, 10, 20));
    const List all = soft.All();
    for (uint32_t i = 0; i < all->Count(); ++i)
        ASSERT_TRUE(std::isnan(all->Data()[i].Score.RoiScore));
    const List best = soft.Best(10);
    EXPECT_EQ(best->Count(), withoutIt->Count());

    Session hard(SmallPicture());
    hard->AddRectOfInterest(Roi(RoiHardExclude, 50, 49, 10, 20));
    EXPECT_EQ(hard.Best(10)->Count(), 0u);
}

void ExpectRequestsRun(int32_t cols, int32_t rows)
{
    SCOPED_TRACE(testing::Message() << cols << " x " << rows);
    Session session(testPictures::Noise(cols, rows, 9));
    const List all = session.All();
    for (uint32_t i = 0; i < all->Count(); ++i) {
        const CInt32CropRect& crop = all->Data()[i];
        EXPECT_TRUE(crop.Score.Scored);
        EXPECT_TRUE(crop.Score.CoverageScore >= 0.0 && crop.Score.CoverageScore < 1.0001);
        EXPECT_TRUE(crop.Score.CompositionScore >= 0.0 && crop.Score.CompositionScore <= 1.0);
        // At another scale an empty rectangle can become a pixel of the maps.
        if (std::max(cols, rows) == 640 &&
            CInt32Rect(crop.Left, crop.Right, crop.Top, crop.Bottom).Empty()) {
            EXPECT_EQ(crop.Score.BorderScore, 0.0);
            EXPECT_EQ(crop.Score.CompositionScore, 0.0);
        }
    }
    session.Best(10);
    session.Best(static_cast<int32_t>(all->Count()));
    session.All(SuggestionParameters(1.0, false));
    session.Best(3, SuggestionParameters(std::max(1, cols / 2), std::max(1, rows / 2), false));
}

// Crops of thin pictures can be empty. They must neither end the run nor make it read outside the
// maps.
TEST(ThinPictures, RequestsRunAtEverySizeFromOnePixelUp)
{
    for (const int32_t thin : {1, 2, 3, 4, 5, 6, 7, 9, 11, 12, 13, 14, 23})
        ExpectRequestsRun(640, thin);
    for (const int32_t thin : {1, 2, 3, 4, 5, 6, 7, 9, 11, 12, 13, 14, 23})
        ExpectRequestsRun(thin, 640);
}

void ExpectAllFinite(const Picture& picture)
{
    testing::internal::CaptureStderr(); // the edges of one row cannot be resized
    const auto analyzer = testPictures::Analyse(picture);
    testing::internal::GetCapturedStderr();
    const auto finite = [](auto first, auto count) {
        return std::all_of(first, first + count, [](auto value) { return std::isfinite(value); });
    };
    for (const testPictures::NamedFloats& map : testPictures::AllMaps(*analyzer)) {
        EXPECT_EQ(map.Map->Count, 640u);
        EXPECT_TRUE(finite(map.Map->Data, map.Map->Count)) << map.Name;
    }
    for (const float total : {analyzer->ContrastMaskTotal, analyzer->ColorContrastTotal,
                              analyzer->EdgeTotal, analyzer->PeakTotal})
        EXPECT_TRUE(std::isfinite(total) && total >= 1e-10f);
    EXPECT_TRUE(finite(analyzer->SideGain, 4));

    testing::internal::CaptureStderr();
    Session session(picture);
    testing::internal::GetCapturedStderr();
    const List lists[] = {session.All(), session.All(SuggestionParameters(5.0, false)),
                          session.Best(20)};
    for (const List& list : lists) {
        ASSERT_GT(list->Count(), 0u);
        for (uint32_t i = 0; i < list->Count(); ++i)
            ASSERT_TRUE(finite(&list->Data()[i].Score.CompositionScore, 7)) << i;
    }
    CInt32CropRect whole(0, picture.Cols - 1, 0, picture.Rows - 1);
    EvaluateScores(session.get(), &whole);
    EXPECT_TRUE(finite(&whole.Score.CompositionScore, 7));
}

TEST(ThinPictures, OfOneRowOrColumnHaveFiniteMapsAndScores)
{
    for (const auto& [cols, rows] : {std::pair(640, 1), std::pair(1, 640)}) {
        SCOPED_TRACE(testing::Message() << cols << " x " << rows);
        ExpectAllFinite(testPictures::Noise(cols, rows, 9));
        ExpectAllFinite(testPictures::Blobs(cols, rows, 4));
        ExpectAllFinite(testPictures::HalfAndHalf(cols, rows));
        ExpectAllFinite(testPictures::OneBrightPixel(cols, rows));
        for (const int value : {0, 128, 255})
            ExpectAllFinite(testPictures::Flat(cols, rows, value, value, value));
    }
}

// The analysis rejects these pictures or reads a sheared piece of them.
TEST(ThinPictures, RequestsRunOnPicturesThatTheHostDidNotResample)
{
    testing::internal::CaptureStderr();
    ExpectRequestsRun(1, 1281);
    ExpectRequestsRun(1281, 1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("larger than 1:640"), std::string::npos);
    ExpectRequestsRun(1, 1280);
    ExpectRequestsRun(6400, 48);
    ExpectRequestsRun(900, 701);
}

TEST(ThinPictures, HaveCandidatesWithoutPixels)
{
    Session session(testPictures::Noise(640, 1, 9));
    const List all = session.All();
    uint32_t empty = 0;
    for (uint32_t i = 0; i < all->Count(); ++i) {
        const CInt32CropRect& crop = all->Data()[i];
        empty += CInt32Rect(crop.Left, crop.Right, crop.Top, crop.Bottom).Empty() ? 1 : 0;
    }
    EXPECT_GT(empty, 0u);
}

} // namespace
} // namespace scoringTests
