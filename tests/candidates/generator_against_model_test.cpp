// Compares the generator with a slow model of it: same rectangles in the same order, same tables,
// same messages, over random sizes, tables, densities and sequences of operations.
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "candidates/random_crop_generator.h"
#include "cells_of_grid.h"
#include "oracle/record_bridge.h"
#include "oracle/slow_candidates.h"

namespace slowOracle {
namespace {

using vistaTrim::DoubleInfo;
using vistaTrim::RandomCropGenerator;

uint32_t Below(std::mt19937& random, uint32_t bound)
{
    return static_cast<uint32_t>(random() % bound);
}

double Between(std::mt19937& random, double low, double high)
{
    return std::uniform_real_distribution<double>(low, high)(random);
}

// 1 to 5000 on a logarithmic scale: small sides are as likely as large ones.
uint32_t SomeSide(std::mt19937& random)
{
    const double side = std::floor(std::exp(Between(random, 0.0, std::log(5001.0))));
    return std::min(5000U, std::max(1U, static_cast<uint32_t>(side)));
}

double SomeAspect(std::mt19937& random, uint32_t width, uint32_t height)
{
    constexpr double usual[] = {64.0 / 27.0, 16.0 / 9.0, 1.5, 4.0 / 3.0, 1.0, 0.75, 2.0 / 3.0};
    switch (Below(random, 8)) {
    case 0: return static_cast<double>(width) / height; // the picture's own
    case 1: return std::exp(Between(random, std::log(0.001), std::log(1000.0)));
    case 2: return static_cast<double>(1 + Below(random, width)) / (1 + Below(random, height));
    case 3: return Between(random, 0.2, 5.0);
    default: return usual[Below(random, 7)];
    }
}

double SomeScale(std::mt19937& random)
{
    switch (Below(random, 8)) {
    case 0: return 1.0;
    case 1: return Between(random, 1.0, 1.002); // may round to the whole picture
    case 2: return Between(random, 0.0, 0.1);
    case 3: return 0.1 * (1 + Below(random, 10));
    default: return Between(random, 0.1, 1.0);
    }
}

uint32_t SomeDensity(std::mt19937& random)
{
    constexpr uint32_t usual[] = {0, 1, 2, 3, 25, 28};
    return Below(random, 2) == 0 ? usual[Below(random, 6)] : 1 + Below(random, 60);
}

// A generator with its model.
struct Pair {
    RandomCropGenerator Generator;
    GeneratorModel Model;
    uint32_t Width;
    uint32_t Height;

    Pair(uint32_t width, uint32_t height, const std::vector<DoubleInfo>& aspects,
         const std::vector<DoubleInfo>& scales, uint32_t density)
        : Model(width, height, FromRecords(aspects.data(), aspects.size()),
                FromRecords(scales.data(), scales.size()), density),
          Width(width), Height(height)
    {
        Generator.Initialize(width, height, aspects, scales, density);
    }
};

Pair SomePair(std::mt19937& random)
{
    const uint32_t width = SomeSide(random);
    const uint32_t height = SomeSide(random);
    std::vector<DoubleInfo> aspects;
    std::vector<DoubleInfo> scales;
    for (uint32_t i = 1 + Below(random, 3); i > 0; --i)
        aspects.push_back(DoubleInfo(SomeAspect(random, width, height), Below(random, 4) != 0));
    for (uint32_t i = 1 + Below(random, 3); i > 0; --i)
        scales.push_back(DoubleInfo(SomeScale(random), Below(random, 4) != 0));
    return Pair(width, height, aspects, scales, SomeDensity(random));
}

std::string Show(const Pair& pair)
{
    std::string text = std::to_string(pair.Width) + " x " + std::to_string(pair.Height);
    for (const Ratio& row : pair.Model.Aspects)
        text += ", aspect " + testing::PrintToString(row.Value);
    for (const Ratio& row : pair.Model.Scales)
        text += ", scale " + testing::PrintToString(row.Value);
    return text;
}

bool SameCell(const CropCell& found, const CropCell& expected)
{
    if (found.size() != expected.size())
        return false;
    for (size_t i = 0; i < found.size(); ++i)
        if (!SameCrop(found[i], expected[i]))
            return false;
    return true;
}

bool SameCellRow(const CropRow& found, const CropRow& expected)
{
    if (found.size() != expected.size())
        return false;
    for (size_t s = 0; s < found.size(); ++s)
        if (!SameCell(found[s], expected[s]))
            return false;
    return true;
}

bool SameGrid(const CropGrid& found, const CropGrid& expected)
{
    if (found.size() != expected.size())
        return false;
    for (size_t a = 0; a < found.size(); ++a)
        if (!SameCellRow(found[a], expected[a]))
            return false;
    return true;
}

bool SameTable(const std::vector<DoubleInfo>& found, const std::vector<Ratio>& expected)
{
    if (found.size() != expected.size())
        return false;
    for (size_t i = 0; i < found.size(); ++i) {
        const bool same = found[i].Value == expected[i].Value ||
                          (std::isnan(found[i].Value) && std::isnan(expected[i].Value));
        if (!same || found[i].Enabled != expected[i].Enabled)
            return false;
    }
    return true;
}

CropRow FromRow(const vistaTrim::CropRow& row)
{
    return FromRecords(vistaTrim::CropGridRows{row}).at(0);
}

CropCell FromCell(const vistaTrim::CropCell& cell)
{
    return FromRecords(cell.data(), cell.size());
}

// Makes every query that leaves the grid unchanged.
void ExpectSameState(Pair& pair)
{
    ASSERT_TRUE(SameGrid(FromRecords(pair.Generator.CropGrid), pair.Model.Grid)) << Show(pair);
    ASSERT_TRUE(SameTable(pair.Generator.GetAspectRatios(), pair.Model.Aspects)) << Show(pair);
    ASSERT_TRUE(SameTable(pair.Generator.GetCropRectScaleRatios(), pair.Model.Scales));
    ASSERT_TRUE(SameCell(FromCell(CandidatesOf(pair.Generator.GetEnabledCropRects(kNoIndex))),
                         pair.Model.GetEnabledCropRects(kNoIndex)));
    for (uint32_t a = 0; a < pair.Model.Grid.size(); ++a)
        ASSERT_TRUE(SameCell(FromCell(CandidatesOf(pair.Generator.GetEnabledCropRects(a))),
                             pair.Model.GetEnabledCropRects(a)));
}

// Fills both grids. Both must throw the same message or give the same grid.
void ExpectSameGenerateAll(Pair& pair)
{
    std::string found;
    std::string expected;
    CropGrid foundGrid;
    CropGrid expectedGrid;
    try {
        expectedGrid = pair.Model.GenerateAll();
    } catch (const char* text) {
        expected = text;
    }
    try {
        foundGrid = FromRecords(pair.Generator.GenerateAll());
    } catch (const char* text) {
        found = text;
    }
    ASSERT_EQ(found, expected) << Show(pair);
    ASSERT_TRUE(SameGrid(foundGrid, expectedGrid)) << Show(pair);
    ExpectSameState(pair);
}

TEST(GeneratorAgainstModel, AgreesOnRandomSizesTablesAndDensities)
{
    std::mt19937 random(20);
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        Pair pair = SomePair(random);
        ExpectSameGenerateAll(pair);
        if (HasFatalFailure())
            return;
    }
}

// Every size up to 12 x 12 with coarse tables: crops without pixels occur here.
TEST(GeneratorAgainstModel, AgreesOnEverySmallPicture)
{
    for (uint32_t width = 1; width <= 12; ++width)
        for (uint32_t height = 1; height <= 12; ++height)
            for (const uint32_t density : {0U, 1U, 2U, 25U}) {
                SCOPED_TRACE(testing::Message() << "density " << density);
                Pair pair(width, height, {64.0 / 27.0, 1.0, 0.1, 100.0}, {0.05, 0.4, 0.5, 1.0},
                          density);
                ExpectSameGenerateAll(pair);
                if (HasFatalFailure())
                    return;
            }
}

// A host may write anything into the tables: every value has a defined result.
TEST(GeneratorAgainstModel, AgreesOnWildTableValues)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double wild[] = {0.0,
                           -0.0,
                           -1.0,
                           -1e-9,
                           std::numeric_limits<double>::quiet_NaN(),
                           infinity,
                           -infinity,
                           1e300,
                           -1e300,
                           std::numeric_limits<double>::denorm_min(),
                           4294967296.0 / 640.0,
                           9223372036854775808.0,
                           -9223372036854775808.0 / 480.0,
                           6710886.41,
                           1.0};
    for (const double aspect : wild)
        for (const double scale : wild)
            for (const uint32_t height : {0U, 1U, 480U}) {
                Pair pair(640, height, {aspect, 1.0}, {scale}, 3);
                ExpectSameGenerateAll(pair);
                if (HasFatalFailure())
                    return;
            }
}

// A ratio from the table, one just off it (inside or outside the tolerance), or a new one.
double NearRatio(std::mt19937& random, const std::vector<Ratio>& table, double tolerance,
                 double fresh)
{
    const double known = table[Below(random, static_cast<uint32_t>(table.size()))].Value;
    switch (Below(random, 6)) {
    case 0: return fresh;
    case 1: return known + 0.9 * tolerance;
    case 2: return known - 0.9 * tolerance;
    case 3: return known + 1.1 * tolerance;
    default: return known;
    }
}

// Applies one operation to both. The results, or the messages thrown, must agree.
void Step(std::mt19937& random, Pair& pair)
{
    const double tolerance = 0.001 / std::max(pair.Width, pair.Height);
    const bool enabled = Below(random, 3) != 0;
    const double aspect = NearRatio(random, pair.Model.Aspects, tolerance,
                                    SomeAspect(random, pair.Width, pair.Height));
    const double scale = NearRatio(random, pair.Model.Scales, tolerance, SomeScale(random));
    const uint32_t operation = Below(random, 7);
    // GenerateCell and GenerateAspectRow accept an existing index or the one just past the end.
    const uint32_t gridRows = static_cast<uint32_t>(pair.Model.Grid.size());
    const uint32_t rows =
        std::min<uint32_t>(static_cast<uint32_t>(pair.Model.Aspects.size()), gridRows + 1);
    const uint32_t row = Below(random, rows);
    const uint32_t cells = row < gridRows
                               ? std::min(static_cast<uint32_t>(pair.Model.Scales.size()),
                                          static_cast<uint32_t>(pair.Model.Grid[row].size()) + 1)
                               : 0;
    const uint32_t cell = cells > 0 ? Below(random, cells) : 0;
    const double cropWidth = Between(random, 0.1, pair.Width);
    const double cropHeight = Between(random, 0.1, pair.Height);

    std::string expected;
    std::string found;
    CropGrid expectedGrid(1, CropRow(1));
    CropGrid foundGrid(1, CropRow(1));
    uint32_t expectedIndex[2] = {kNoIndex, kNoIndex};
    uint32_t foundIndex[2] = {kNoIndex, kNoIndex};
    RandomCropGenerator& generator = pair.Generator;
    GeneratorModel& model = pair.Model;
    try {
        switch (operation) {
        case 0: model.SetAspectRatioEnabled(aspect, enabled); break;
        case 1: model.SetCropRectScaleRatioEnabled(scale, enabled); break;
        case 2:
            if (cells > 0)
                expectedGrid[0][0] = model.GenerateCell(row, cell);
            break;
        case 3: expectedGrid[0] = model.GenerateAspectRow(row); break;
        case 4: expectedGrid[0] = model.GenerateForAspectRatio(aspect, expectedIndex[0]); break;
        case 5:
            expectedGrid[0][0] = model.GenerateForCropSize(cropWidth, cropHeight, expectedIndex[0],
                                                           expectedIndex[1]);
            break;
        default: expectedGrid = model.GenerateAll();
        }
    } catch (const char* text) {
        expected = text;
    }
    try {
        switch (operation) {
        case 0: generator.SetAspectRatioEnabled(aspect, enabled); break;
        case 1: generator.SetCropRectScaleRatioEnabled(scale, enabled); break;
        case 2:
            if (cells > 0)
                foundGrid[0][0] = FromCell(generator.GenerateCell(row, cell));
            break;
        case 3: foundGrid[0] = FromRow(generator.GenerateAspectRow(row)); break;
        case 4:
            foundGrid[0] = FromRow(generator.GenerateForAspectRatio(aspect, foundIndex[0]));
            break;
        case 5:
            foundGrid[0][0] = FromCell(
                generator.GenerateForCropSize(cropWidth, cropHeight, foundIndex[0], foundIndex[1]));
            break;
        default: foundGrid = FromRecords(generator.GenerateAll());
        }
    } catch (const char* text) {
        found = text;
    }
    ASSERT_EQ(found, expected) << Show(pair);
    ASSERT_TRUE(SameGrid(foundGrid, expectedGrid)) << Show(pair);
    if (expected.empty()) {
        ASSERT_EQ(foundIndex[0], expectedIndex[0]);
        ASSERT_EQ(foundIndex[1], expectedIndex[1]);
    }
    ExpectSameState(pair);
}

TEST(GeneratorAgainstModel, AgreesOnRandomSequencesOfOperations)
{
    std::mt19937 random(21);
    for (int sequence = 0; sequence < 500; ++sequence) {
        Pair pair = SomePair(random);
        for (int step = 0; step < 12; ++step) {
            SCOPED_TRACE(testing::Message() << "sequence " << sequence << ", step " << step);
            Step(random, pair);
            if (HasFatalFailure())
                return;
        }
    }
}

} // namespace
} // namespace slowOracle
