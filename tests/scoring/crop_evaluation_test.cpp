#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "scoring/crop_analyzer.h"
#include "scoring/scoring_test_support.h"

using namespace vistaTrim;

namespace scoringTests {
namespace {

CInt32CropRect Evaluated(CCropAnalyzer& analyzer, int left, int right, int top, int bottom)
{
    CInt32CropRect crop(left, right, top, bottom);
    analyzer.EvaluateCropRect(crop);
    return crop;
}

// Compares the record with the slow oracle's bit for bit, except the composition score, which goes
// through BLAS.
void ExpectMatchesTheOracle(const CInt32CropRect& crop, const slowOracle::ScoringInput& in)
{
    slowOracle::Crop slow;
    slow.Left = crop.Left;
    slow.Right = crop.Right;
    slow.Top = crop.Top;
    slow.Bottom = crop.Bottom;
    slowOracle::EvaluateCropRect(in, slow);
    SCOPED_TRACE(testing::Message()
                 << crop.Left << ".." << crop.Right << " x " << crop.Top << ".." << crop.Bottom);
    EXPECT_EQ(crop.Score.Scored, slow.Scored);
    EXPECT_EQ(crop.CoversContent, slow.CoversContent);
    EXPECT_TRUE(SameBits(crop.Score.CoverageScore, slow.CoverageScore));
    EXPECT_TRUE(SameBits(crop.Score.BorderScore, slow.BorderScore));
    EXPECT_TRUE(SameBits(crop.Score.PeakScore, slow.PeakScore));
    EXPECT_TRUE(SameBits(crop.Score.CentrePeakScore, slow.CentrePeakScore));
    const slowOracle::Composition composition =
        slowOracle::EvaluateComposition(in, slowOracle::ToWorkingRect(in, slow));
    const double bound = 304 * std::ldexp(composition.DotMagnitude, -24) / 6 + std::ldexp(1.0, -23);
    EXPECT_NEAR(crop.Score.CompositionScore, slow.CompositionScore, bound);
}

TEST(CropEvaluation, ASecondEvaluationChangesNothingEvenOnOtherMaps)
{
    const auto first = NoiseAnalyzer(60, 80, 1);
    const auto second = NoiseAnalyzer(60, 80, 2);
    const CInt32CropRect once = Evaluated(*first, 10, 49, 5, 44);
    CInt32CropRect twice = once;
    second->EvaluateCropRect(twice);
    EXPECT_TRUE(SameRecord(once, twice));

    CInt32CropRect moved = once;
    moved.Left = 0; // the flag keeps the old measures
    second->EvaluateCropRect(moved);
    EXPECT_EQ(moved.Score.CoverageScore, once.Score.CoverageScore);
}

TEST(CropEvaluation, TheWholePictureHoldsAllContent)
{
    const auto analyzer = NoiseAnalyzer(48, 64, 3);
    const CInt32CropRect crop = Evaluated(*analyzer, 0, 63, 0, 47);
    // A total is its table's last element rounded to float, so a share is 1 within 2^-24.
    EXPECT_NEAR(crop.Score.CoverageScore, 1.0, 1e-6);
    EXPECT_NEAR(crop.Score.PeakScore, 1.0, 1e-6);
    EXPECT_TRUE(crop.CoversContent);
}

TEST(CropEvaluation, NoCropCoversMapsOfZeros)
{
    const auto analyzer = ZeroAnalyzer(48, 64);
    const CInt32CropRect crop = Evaluated(*analyzer, 0, 63, 0, 47);
    EXPECT_EQ(crop.Score.CoverageScore, 0.0);
    EXPECT_EQ(crop.Score.PeakScore, 0.0);
    EXPECT_EQ(crop.Score.CentrePeakScore, 0.0);
    EXPECT_EQ(crop.Score.BorderScore, 1.0); // nothing differs from the borders
    EXPECT_FALSE(crop.CoversContent);
    EXPECT_TRUE(crop.Score.Scored);
}

// A picture of 200 columns whose first 100 are the crop. The mask is 1 in maskAll columns, of which
// the crop holds maskInside; so is the colour contrast, in colorAll and colorInside columns.
bool HalfCovers(int maskInside, int maskAll, int colorInside, int colorAll)
{
    const auto analyzer = ZeroAnalyzer(1, 200);
    FillMap(analyzer->Writable, MapContrastMask,
            WorkingRect{0, 100 - maskInside, 0, 100 - maskInside + maskAll - 1}, 1.0f);
    FillMap(analyzer->Writable, MapColorContrast,
            WorkingRect{0, 100 - colorInside, 0, 100 - colorInside + colorAll - 1}, 1.0f);
    analyzer->Writable.Totals[MapContrastMask] = static_cast<float>(maskAll);
    analyzer->Writable.Totals[MapColorContrast] = static_cast<float>(colorAll);
    FillMap(analyzer->Writable, MapEdge, 1.0f);
    analyzer->Writable.Totals[MapEdge] = 1.0f; // the highest coverage possible
    return Evaluated(*analyzer, 0, 99, 0, 0).CoversContent;
}

TEST(CropEvaluation, ContentIsCoveredOnlyByBothContrastsTogether)
{
    EXPECT_TRUE(HalfCovers(50, 100, 50, 100));
    EXPECT_FALSE(HalfCovers(50, 100, 39, 100));
    EXPECT_FALSE(HalfCovers(39, 100, 50, 100));
    EXPECT_FALSE(HalfCovers(0, 100, 0, 100));
}

TEST(CropEvaluation, AShareOfExactlyTheThresholdCovers)
{
    // The threshold is the float 0.4f, a little above two fifths: a share of exactly two fifths
    // falls short of it, and a share of exactly 0.4f reaches it.
    EXPECT_FALSE(HalfCovers(40, 100, 40, 100));
    EXPECT_TRUE(HalfCovers(41, 100, 41, 100));

    const auto analyzer = ZeroAnalyzer(1, 2);
    for (const float value : {0.4f, std::nextafter(0.4f, 0.0f)}) {
        FillMap(analyzer->Writable, MapContrastMask, WorkingRect{0, 0, 0, 0}, value);
        FillMap(analyzer->Writable, MapColorContrast, WorkingRect{0, 0, 0, 0}, 0.4f);
        analyzer->Writable.Totals[MapContrastMask] = 1.0f;
        analyzer->Writable.Totals[MapColorContrast] = 1.0f;
        EXPECT_EQ(Evaluated(*analyzer, 0, 0, 0, 0).CoversContent, value == 0.4f);
    }
}

TEST(CropEvaluation, ASetFlagIsNotCleared)
{
    const auto analyzer = ZeroAnalyzer(10, 10);
    CInt32CropRect crop(0, 4, 0, 4);
    crop.CoversContent = true;
    analyzer->EvaluateCropRect(crop);
    EXPECT_TRUE(crop.CoversContent);
}

TEST(CropEvaluation, MeasuresAreFloatsAndTheOtherTwoFieldsAreUntouched)
{
    const auto analyzer = NoiseAnalyzer(60, 80, 4);
    CInt32CropRect crop(10, 49, 5, 44);
    crop.Score.RoiScore = 0.123456789;
    crop.Score.MergedScore = 7.123456789;
    analyzer->EvaluateCropRect(crop);
    EXPECT_EQ(crop.Score.RoiScore, 0.123456789);
    EXPECT_EQ(crop.Score.MergedScore, 7.123456789);
    for (const double measure :
         {crop.Score.CompositionScore, crop.Score.CoverageScore, crop.Score.BorderScore,
          crop.Score.PeakScore, crop.Score.CentrePeakScore})
        EXPECT_EQ(measure, static_cast<double>(static_cast<float>(measure)));
}

TEST(CropEvaluation, FirstSidesAreClampedFromBelowAndLastSidesFromAbove)
{
    const auto analyzer = NoiseAnalyzer(60, 80, 4);
    WorkingRect rect = analyzer->ToWorkingRect(CInt32CropRect(-5, 99, -7, 77));
    EXPECT_EQ(rect.FirstRow, 0);
    EXPECT_EQ(rect.FirstCol, 0);
    EXPECT_EQ(rect.LastRow, 59);
    EXPECT_EQ(rect.LastCol, 79);
    rect = analyzer->ToWorkingRect(CInt32CropRect(90, 95, 70, 75));
    EXPECT_EQ(rect.FirstRow, 70);
    EXPECT_EQ(rect.FirstCol, 90);

    analyzer->Writable.ScaleFactor = 0.3f;
    rect = analyzer->ToWorkingRect(CInt32CropRect(10, 19, 7, 23));
    EXPECT_EQ(rect.FirstCol, 3); // 10 x 0.3f
    EXPECT_EQ(rect.LastCol, 5);
    EXPECT_EQ(rect.FirstRow, 2);
    EXPECT_EQ(rect.LastRow, 6);
}

TEST(CropEvaluation, WorkingRectanglesMatchTheSlowForm)
{
    const auto analyzer = NoiseAnalyzer(60, 80, 4);
    std::mt19937 random(31);
    for (int trial = 0; trial < 100000; ++trial) {
        analyzer->Writable.ScaleFactor = 640.0f / static_cast<float>(1 + random() % 9000);
        const auto coordinate = [&random] { return static_cast<int>(random() % 10000) - 500; };
        const CInt32CropRect crop(coordinate(), coordinate(), coordinate(), coordinate());
        slowOracle::ScoringInput in;
        in.WorkRows = 60;
        in.WorkCols = 80;
        in.ScaleFactor = analyzer->ScaleFactor;
        ASSERT_TRUE(OracleRect(analyzer->ToWorkingRect(crop)) ==
                    slowOracle::ToWorkingRect(in, OracleCrop(crop)));
    }
}

TEST(CropEvaluation, TheCentralPartIsAThirdOfTheCrop)
{
    const auto analyzer = NoiseAnalyzer(60, 80, 4);
    const WorkingRect centre = analyzer->ShrinkAboutCentre({0, 0, 99, 199}, 0.33f);
    EXPECT_EQ(centre.FirstRow, 33);
    EXPECT_EQ(centre.LastRow, 66);
    EXPECT_EQ(centre.FirstCol, 67);
    EXPECT_EQ(centre.LastCol, 132);
    for (const int32_t at : {0, 1, 5, 639}) {
        const WorkingRect pixel = analyzer->ShrinkAboutCentre({at, at, at, at}, 0.33f);
        EXPECT_TRUE(OracleRect(pixel) == (slowOracle::WorkRect{at, at, at, at}));
    }
    std::mt19937 random(32);
    for (int trial = 0; trial < 100000; ++trial) {
        const WorkingRect rect = RandomRect(random, 640, 640);
        ASSERT_TRUE(OracleRect(analyzer->ShrinkAboutCentre(rect, 0.33f)) ==
                    slowOracle::ShrinkAboutCentre(OracleRect(rect), 0.33f));
    }
}

TEST(CropEvaluation, ABandOutsideThePictureGivesBorderScoreZero)
{
    const auto analyzer = ZeroAnalyzer(40, 60);
    analyzer->Writable.BorderBand = 12; // bands six pixels deep
    EXPECT_EQ(Evaluated(*analyzer, 10, 39, 10, 29).Score.BorderScore, 1.0);
    // A crop at a border must be six pixels deep for the opposite band to fit.
    EXPECT_EQ(Evaluated(*analyzer, 10, 39, 0, 5).Score.BorderScore, 1.0);
    EXPECT_EQ(Evaluated(*analyzer, 10, 39, 0, 4).Score.BorderScore, 0.0); // bottom band
    EXPECT_EQ(Evaluated(*analyzer, 10, 39, 34, 39).Score.BorderScore, 1.0);
    EXPECT_EQ(Evaluated(*analyzer, 10, 39, 35, 39).Score.BorderScore, 0.0); // top band
    EXPECT_EQ(Evaluated(*analyzer, 0, 4, 10, 29).Score.BorderScore, 0.0);   // right band
    EXPECT_EQ(Evaluated(*analyzer, 55, 59, 10, 29).Score.BorderScore, 0.0); // left band
    // Away from the borders a band may reach past the other side of a small crop.
    EXPECT_EQ(Evaluated(*analyzer, 20, 22, 20, 22).Score.BorderScore, 1.0);
}

TEST(CropEvaluation, BandsAreNeverThinnerThanAPixel)
{
    const auto analyzer = ZeroAnalyzer(40, 60);
    FillMap(analyzer->Writable, MapSideTop, WorkingRect{10, 0, 10, 59}, 1.0f);
    for (float& gain : analyzer->Writable.SideGain)
        gain = 1.0f;
    const WorkingRect rect{10, 20, 19, 39};
    for (const int32_t band : {0, 1, 2, 3}) {
        analyzer->Writable.BorderBand = band;
        // Only row 10 of the top side counts: 20 over the width of 20, plus 20 over 20 + 10.
        EXPECT_EQ(analyzer->BorderCost(rect), 1.0f + static_cast<float>(20.0 / 30.0));
    }
    analyzer->Writable.BorderBand = 4; // two rows, one of them 0
    EXPECT_EQ(analyzer->BorderCost(rect), 0.5f + static_cast<float>(10.0 / 30.0));
}

TEST(CropEvaluation, EachSideReadsItsOwnMapAndGain)
{
    for (int side = 0; side < 4; ++side) {
        const auto analyzer = ZeroAnalyzer(40, 60);
        analyzer->Writable.BorderBand = 2;
        FillMap(analyzer->Writable, static_cast<PictureMap>(MapSideTop + side), 1.0f);
        for (int other = 0; other < 4; ++other)
            analyzer->Writable.SideGain[other] = other == side ? 3.0f : 1000.0f;
        const WorkingRect rect{10, 20, 19, 39}; // 10 rows, 20 columns
        const double sum = side < 2 ? 60.0 : 30.0;
        EXPECT_EQ(analyzer->BorderCost(rect), 3.0f + static_cast<float>(sum / 30.0));
    }
}

TEST(CropEvaluation, OnePixelHasDefinedMeasures)
{
    const auto analyzer = NoiseAnalyzer(20, 30, 6);
    const slowOracle::ScoringInput in = OracleInput(*analyzer);
    for (const int at : {0, 7, 19})
        ExpectMatchesTheOracle(Evaluated(*analyzer, at, at, at, at), in);
}

TEST(CropEvaluation, RandomRectanglesMatchTheSlowForm)
{
    struct Size {
        int32_t Rows, Cols;
    };
    std::mt19937 random(41);
    for (const Size& size :
         {Size{480, 640}, Size{640, 361}, Size{6, 640}, Size{640, 2}, Size{1, 640}, Size{14, 15}}) {
        const auto analyzer = NoiseAnalyzer(size.Rows, size.Cols, 70);
        const slowOracle::ScoringInput in = OracleInput(*analyzer);
        for (int trial = 0; trial < 800; ++trial) {
            const WorkingRect rect = RandomRect(random, size.Rows, size.Cols);
            ExpectMatchesTheOracle(
                Evaluated(*analyzer, rect.FirstCol, rect.LastCol, rect.FirstRow, rect.LastRow), in);
        }
    }
}

TEST(CropEvaluation, ScaledCoordinatesMatchTheSlowForm)
{
    const auto analyzer = NoiseAnalyzer(427, 640, 42);
    analyzer->Writable.ScaleFactor = 640.0f / 4272.0f;
    const slowOracle::ScoringInput in = OracleInput(*analyzer);
    std::mt19937 random(43);
    for (int trial = 0; trial < 1000; ++trial) {
        const WorkingRect rect = RandomRect(random, 2848, 4272);
        const CInt32CropRect crop =
            Evaluated(*analyzer, rect.FirstCol, rect.LastCol, rect.FirstRow, rect.LastRow);
        if (analyzer->ToWorkingRect(crop).FirstRow < 427 &&
            analyzer->ToWorkingRect(crop).FirstCol < 640)
            ExpectMatchesTheOracle(crop, in);
    }
}

TEST(CropEvaluation, RectanglesWithoutPixelsGetMeasuresOfZeroAndAreScored)
{
    const auto analyzer = NoiseAnalyzer(40, 60, 7);
    for (const CInt32Rect& rect :
         {CInt32Rect(10, 9, 5, 20), CInt32Rect(10, 20, 5, 4), CInt32Rect(30, 10, 30, 10),
          CInt32Rect(60, 70, 5, 20), CInt32Rect(5, 20, 40, 45), CInt32Rect(-9, -1, 5, 20),
          CInt32Rect(5, 20, -9, -1), CInt32Rect(60, 59, 40, 39),
          CInt32Rect(INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN)}) {
        CInt32CropRect crop(rect.Left, rect.Right, rect.Top, rect.Bottom);
        crop.Score.PeakScore = 0.5; // as a host might have left it
        analyzer->EvaluateCropRect(crop);
        EXPECT_TRUE(crop.Score.Scored);
        EXPECT_FALSE(crop.CoversContent);
        EXPECT_EQ(crop.Score.CompositionScore, 0.0);
        EXPECT_EQ(crop.Score.CoverageScore, 0.0);
        EXPECT_EQ(crop.Score.BorderScore, 0.0);
        EXPECT_EQ(crop.Score.PeakScore, 0.0);
        EXPECT_EQ(crop.Score.CentrePeakScore, 0.0);
    }
}

TEST(CropEvaluation, EveryRectangleOnTheMapPassesTheGuard)
{
    const auto analyzer = NoiseAnalyzer(5, 7, 8);
    const slowOracle::ScoringInput in = OracleInput(*analyzer);
    for (int left = 0; left < 7; ++left)
        for (int right = left; right < 7; ++right)
            for (int top = 0; top < 5; ++top)
                for (int bottom = top; bottom < 5; ++bottom)
                    ExpectMatchesTheOracle(Evaluated(*analyzer, left, right, top, bottom), in);
}

// Three rows of two cells each, of crops whose order and rows are mixed.
CropGridRows MixedGrid(uint32_t seed)
{
    std::mt19937 random(seed);
    CropGridRows grid(3, CropRow(2));
    for (CropRow& row : grid)
        for (CropCell& cell : row)
            for (int i = 0; i < 90; ++i) {
                WorkingRect rect = RandomRect(random, 60, 80);
                // Many share their rows, as the crops of a lattice do.
                if (i % 3 != 0) {
                    rect.FirstRow = 10;
                    rect.LastRow = 49;
                }
                cell.push_back(
                    CInt32CropRect(rect.FirstCol, rect.LastCol, rect.FirstRow, rect.LastRow));
            }
    return grid;
}

TEST(CropEvaluation, TheWalkMatchesSingleRecordsInEveryIsaVariant)
{
    const auto analyzer = NoiseAnalyzer(60, 80, 9);
    CropGridRows expected = MixedGrid(50);
    for (CropRow& row : expected)
        for (CropCell& cell : row)
            for (CInt32CropRect& crop : cell)
                analyzer->EvaluateCropRect(crop);

    const EachVariant variants;
    for (const IsaVariant variant : variants.Variants) {
        SelectIsaVariant(variant);
        CropGridRows grid = MixedGrid(50);
        // Some are scored already.
        for (size_t i = 0; i < 90; i += 7)
            grid[1][0][i] = expected[1][0][i];
        analyzer->EvaluateCropRects(grid, NoIndex, NoIndex);
        for (size_t a = 0; a < 3; ++a)
            for (size_t s = 0; s < 2; ++s)
                for (size_t i = 0; i < 90; ++i)
                    ASSERT_TRUE(SameRecord(grid[a][s][i], expected[a][s][i]))
                        << variant << ": " << a << " " << s << " " << i;
    }
}

// More columns than any cached state could hold, with gaps of scored records between them: the
// limits of one crop must not be used for another.
TEST(CropEvaluation, LongLatticeRowsWithGapsGiveEachRecordItsOwnMeasures)
{
    const auto analyzer = NoiseAnalyzer(60, 400, 10);
    for (const int step : {1, 2, 3, 31, 32, 33, 64}) {
        CropGridRows grid(1, CropRow(1));
        for (int x = 0; x < 300; ++x)
            for (int y = 0; y < 3; ++y)
                grid[0][0].push_back(CInt32CropRect(x, x + 40 + x % 5, 10 * y, 10 * y + 30));
        const CropCell plain = grid[0][0];
        for (size_t i = 0; i < plain.size(); ++i)
            grid[0][0][i].Score.Scored = static_cast<int>(i / 3) % step != 0;
        analyzer->EvaluateCropRects(grid, NoIndex, NoIndex);
        for (size_t i = 0; i < plain.size(); ++i) {
            if (static_cast<int>(i / 3) % step != 0)
                continue;
            CInt32CropRect alone = plain[i];
            analyzer->EvaluateCropRect(alone);
            ASSERT_TRUE(SameRecord(grid[0][0][i], alone)) << step << " " << i;
        }
    }
}

// No lattice holds such a cell: within its second column only the left side differs, within its
// third only the right one.
TEST(CropEvaluation, RecordsOfAnUnevenColumnAreMeasuredWithinTheirOwnSides)
{
    const auto analyzer = NoiseAnalyzer(60, 200, 15);
    const CropCell cell = {CInt32CropRect(10, 99, 0, 29),  CInt32CropRect(10, 99, 20, 49),
                           CInt32CropRect(30, 119, 0, 29), CInt32CropRect(50, 119, 20, 49),
                           CInt32CropRect(70, 139, 0, 29), CInt32CropRect(70, 169, 20, 49)};
    CropGridRows grid(1, CropRow(1, cell));
    analyzer->EvaluateCropRects(grid, NoIndex, NoIndex);
    for (size_t i = 0; i < cell.size(); ++i) {
        CInt32CropRect alone = cell[i];
        analyzer->EvaluateCropRect(alone);
        EXPECT_TRUE(SameRecord(grid[0][0][i], alone)) << i;
    }
}

// Several times as many records as are measured at once. A batch that is not cleared measures
// records twice or gives one the values of another.
TEST(CropEvaluation, AWalkOverManyRecordsGivesEachItsOwnMeasures)
{
    const auto analyzer = NoiseAnalyzer(60, 400, 14);
    CropGridRows grid(2, CropRow(4));
    int cells = 0;
    for (CropRow& row : grid)
        for (CropCell& cell : row) {
            ++cells;
            for (int x = 0; x < 300; ++x)
                for (int y = 0; y < 23; ++y)
                    cell.push_back(CInt32CropRect(x, x + 60 + cells, y, y + 30));
        }
    analyzer->EvaluateCropRects(grid, NoIndex, NoIndex);
    size_t count = 0;
    for (const CropRow& row : grid)
        for (const CropCell& cell : row)
            for (const CInt32CropRect& crop : cell) {
                ASSERT_TRUE(crop.Score.Scored) << count;
                // Every record around the ends of power-of-two batches, and a sample elsewhere.
                const size_t fromEnd = (count + 8) % 1024;
                if (fromEnd < 16 || count % 7 == 0) {
                    CInt32CropRect alone(crop.Left, crop.Right, crop.Top, crop.Bottom);
                    analyzer->EvaluateCropRect(alone);
                    ASSERT_TRUE(SameRecord(crop, alone)) << count;
                }
                ++count;
            }
    EXPECT_EQ(count, 55200u);
}

size_t CountScored(const CropCell& cell)
{
    size_t count = 0;
    for (const CInt32CropRect& crop : cell)
        count += crop.Score.Scored ? 1 : 0;
    return count;
}

TEST(CropEvaluation, IndicesChooseRowsCellsOrOneCellOfEveryRow)
{
    const auto analyzer = NoiseAnalyzer(60, 80, 11);
    struct Case {
        uint32_t Aspect, Scale;
    };
    for (const Case& chosen :
         {Case{NoIndex, NoIndex}, Case{1, NoIndex}, Case{NoIndex, 1}, Case{2, 0}}) {
        CropGridRows grid = MixedGrid(51);
        analyzer->EvaluateCropRects(grid, chosen.Aspect, chosen.Scale);
        for (uint32_t a = 0; a < 3; ++a)
            for (uint32_t s = 0; s < 2; ++s) {
                const bool walked = (chosen.Aspect == NoIndex || chosen.Aspect == a) &&
                                    (chosen.Scale == NoIndex || chosen.Scale == s);
                EXPECT_EQ(CountScored(grid[a][s]), walked ? 90u : 0u);
            }
    }
}

TEST(CropEvaluation, RoiScoreIsRewrittenOnEveryWalkAndIsOneWithoutSoftRectangles)
{
    const auto analyzer = NoiseAnalyzer(60, 80, 12);
    CropGridRows grid = MixedGrid(52);
    grid[0][0][0].Score.RoiScore = 17.0;
    analyzer->EvaluateCropRects(grid, NoIndex, NoIndex);
    const CropGridRows before = grid;
    for (const CropRow& row : grid)
        for (const CropCell& cell : row)
            for (const CInt32CropRect& crop : cell)
                ASSERT_EQ(crop.Score.RoiScore, 1.0);

    CRectOfInterest wish(20, 29, 20, 29, false);
    analyzer->RectsOfInterest.push_back(wish);
    analyzer->EvaluateCropRects(grid, NoIndex, NoIndex);
    const std::vector<slowOracle::Roi> slowWish(1, OracleRoi(wish));
    for (size_t a = 0; a < 3; ++a)
        for (size_t s = 0; s < 2; ++s)
            for (size_t i = 0; i < 90; ++i) {
                const CInt32CropRect& crop = grid[a][s][i];
                const slowOracle::Rect sides{crop.Left, crop.Right, crop.Top, crop.Bottom};
                ASSERT_EQ(crop.Score.RoiScore, slowOracle::RoiScore(slowWish, sides));
                CInt32CropRect unchanged = crop;
                unchanged.Score.RoiScore = 1.0;
                ASSERT_TRUE(SameRecord(unchanged, before[a][s][i])); // nothing else was measured
            }

    analyzer->RectsOfInterest[0].Enabled = false;
    analyzer->EvaluateCropRects(grid, NoIndex, NoIndex);
    EXPECT_EQ(grid[2][1][5].Score.RoiScore, 1.0);
}

TEST(CropEvaluation, RowsWithoutCellsAndEmptyCellsAreSkipped)
{
    const auto analyzer = NoiseAnalyzer(60, 80, 13);
    CropGridRows grid(3);
    grid[1].resize(2);
    grid[1][1].push_back(CInt32CropRect(0, 9, 0, 9));
    analyzer->EvaluateCropRects(grid, NoIndex, NoIndex);
    EXPECT_TRUE(grid[1][1][0].Score.Scored);
}

} // namespace
} // namespace scoringTests
