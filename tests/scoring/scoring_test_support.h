// What the tests of scoring and selection share: analyses set up table by table, and conversions
// between the library's records and the slow oracle's.
#ifndef VISTATRIM_TESTS_SCORING_SCORING_TEST_SUPPORT_H
#define VISTATRIM_TESTS_SCORING_SCORING_TEST_SUPPORT_H

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "numeric/isa_variants.h"
#include "oracle/slow_scoring.h"
#include "scoring/crop_analyzer.h"

namespace scoringTests {

// An analyzer on an analysis that a test may write.
class WritableAnalyzer : public vistaTrim::CCropAnalyzer {
public:
    explicit WritableAnalyzer(const std::shared_ptr<vistaTrim::CPictureAnalysis>& analysis)
        : vistaTrim::CCropAnalyzer(analysis), Writable(*analysis)
    {
    }

    vistaTrim::CPictureAnalysis& Writable;
};

// An analyzer of rows x cols working pixels, with maps of noise and a ScaleFactor of 1.
std::unique_ptr<WritableAnalyzer> NoiseAnalyzer(int32_t rows, int32_t cols, uint32_t seed);

// The same with every map 0 and every total at its floor.
std::unique_ptr<WritableAnalyzer> ZeroAnalyzer(int32_t rows, int32_t cols);

// Sets a map to value everywhere or inside a rectangle, and builds its table.
void FillMap(vistaTrim::CPictureAnalysis& analysis, vistaTrim::PictureMap map, float value);
void FillMap(vistaTrim::CPictureAnalysis& analysis, vistaTrim::PictureMap map,
             const vistaTrim::WorkingRect& where, float value);

slowOracle::ScoringInput OracleInput(const vistaTrim::CCropAnalyzer& analyzer);
slowOracle::Crop OracleCrop(const vistaTrim::CInt32CropRect& crop);
slowOracle::Roi OracleRoi(const vistaTrim::CRectOfInterest& rect);
slowOracle::WorkRect OracleRect(const vistaTrim::WorkingRect& rect);

// A rectangle of any size inside rows x cols, including thin ones and whole sides.
vistaTrim::WorkingRect RandomRect(std::mt19937& random, int32_t rows, int32_t cols);

// These compare bits: NaN equals NaN, and the two zeros differ.
bool SameBits(float a, float b);
bool SameBits(double a, double b);
bool SameRecord(const vistaTrim::CInt32CropRect& a, const vistaTrim::CInt32CropRect& b);

// Every ISA variant that this machine supports; restores the active one at the end.
class EachVariant {
public:
    EachVariant() : Before(vistaTrim::ActiveIsaVariant())
    {
        for (int variant = 0; variant < vistaTrim::IsaVariantCount; ++variant)
            if (vistaTrim::IsaVariantAvailable(static_cast<vistaTrim::IsaVariant>(variant)))
                Variants.push_back(static_cast<vistaTrim::IsaVariant>(variant));
    }
    ~EachVariant()
    {
        vistaTrim::SelectIsaVariant(Before);
    }
    EachVariant(const EachVariant&) = delete;
    EachVariant& operator=(const EachVariant&) = delete;

    std::vector<vistaTrim::IsaVariant> Variants;

private:
    vistaTrim::IsaVariant Before;
};

} // namespace scoringTests

#endif
