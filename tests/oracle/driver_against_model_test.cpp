// Runs the driver and the generator model through the same random sequences of operations. Both
// must return the same rectangles, throw the same messages and grow the same tables.
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "oracle/record_bridge.h"
#include "oracle/slow_candidates.h"
#include "vistaTrim/vistaTrim.h"

namespace slowOracle {
namespace {

using vistaTrim::SuggestionParameters;

constexpr const char* kDisabledAspect = "VistaTrim: input aspect ratio is disabled.\n";
constexpr const char* kDisabledPair = "VistaTrim: input aspect ratio or scale ratio is disabled.\n";

// The outcome of a request: crops, or the message it throws.
struct Answer {
    std::string Text;
    CropCell Crops;
};

// One picture with its driver and model.
struct Pair {
    uint32_t Width;
    uint32_t Height;
    vistaTrim::IImage* Image;
    vistaTrim::IVistaTrim* Driver;
    GeneratorModel Model;

    Pair(uint32_t width, uint32_t height, const vistaTrim::VistaTrimParameters& parameters)
        : Width(width), Height(height), Image(MakeImage(width, height)),
          Driver(CreateVistaTrimObj(Image, &parameters)),
          Model(width, height, FromRecords(parameters.AspectRatios, parameters.NumAspectRatios),
                FromRecords(parameters.CropRectScaleRatios, parameters.NumCropRectScaleRatios),
                parameters.NumMaxCropRectsPerSide)
    {
    }
    ~Pair()
    {
        DestroyVistaTrimObj(Driver);
        DestroyImageObj(Image);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    static vistaTrim::IImage* MakeImage(uint32_t width, uint32_t height)
    {
        std::vector<uint8_t> pixels(size_t{3} * width * height);
        std::mt19937 random(width * 1000U + height);
        for (uint8_t& pixel : pixels)
            pixel = static_cast<uint8_t>(random() & 0xFFU);
        const int32_t offsets[4] = {0, 1, 2, 3};
        return CreateImageObj(height, width, 3, offsets, pixels.data());
    }
};

Answer AnswerOfDriver(Pair& pair, const SuggestionParameters& request)
{
    Answer answer;
    vistaTrim::ICropRects* list = nullptr;
    try {
        ComputeCropSuggestions(pair.Driver, &list, &request);
    } catch (const char* text) {
        answer.Text = text;
        EXPECT_EQ(list, nullptr);
        return answer;
    }
    answer.Crops = FromRecords(list->Data(), list->Count());
    list->Release();
    return answer;
}

Answer AnswerOfModel(Pair& pair, const SuggestionParameters& request)
{
    Answer answer;
    GeneratorModel& model = pair.Model;
    uint32_t aspectIndex = kNoIndex;
    uint32_t scaleIndex = kNoIndex;
    try {
        if (request.AspectRatio > 0.0) {
            model.GenerateForAspectRatio(request.AspectRatio, aspectIndex);
            if (!model.Aspects[aspectIndex].Enabled)
                throw kDisabledAspect;
            answer.Crops = model.GetEnabledCropRects(aspectIndex);
        } else if (request.CropWidth > 0.0 && request.CropHeight > 0.0 &&
                   pair.Width >= request.CropWidth && pair.Height >= request.CropHeight) {
            model.GenerateForCropSize(request.CropWidth, request.CropHeight, aspectIndex,
                                      scaleIndex);
            if (!model.Aspects[aspectIndex].Enabled || !model.Scales[scaleIndex].Enabled)
                throw kDisabledPair;
            answer.Crops = model.Grid[aspectIndex][scaleIndex];
        } else {
            model.GenerateAll();
            answer.Crops = model.GetEnabledCropRects(kNoIndex);
        }
    } catch (const char* text) {
        answer.Text = text;
    }
    return answer;
}

void ExpectSameTables(Pair& pair)
{
    vistaTrim::DoubleInfo* table = nullptr;
    uint32_t count = 0;
    pair.Driver->GetAspectRatios(&table, &count);
    EXPECT_EQ(count, pair.Model.Aspects.size());
    pair.Driver->GetCropRectScaleRatios(&table, &count);
    EXPECT_EQ(count, pair.Model.Scales.size());
}

// Returns false if the two differ.
bool ExpectSameAnswer(Pair& pair, const SuggestionParameters& request)
{
    const Answer expected = AnswerOfModel(pair, request);
    const Answer found = AnswerOfDriver(pair, request);
    EXPECT_EQ(found.Text, expected.Text);
    EXPECT_EQ(found.Crops.size(), expected.Crops.size());
    if (found.Text != expected.Text || found.Crops.size() != expected.Crops.size())
        return false;
    for (size_t i = 0; i < found.Crops.size(); ++i)
        if (!SameSides(found.Crops[i], expected.Crops[i])) {
            ADD_FAILURE() << "candidate " << i << " of " << found.Crops.size();
            return false;
        }
    ExpectSameTables(pair);
    return true;
}

// A ratio from the table, one just off it (inside or outside the tolerance), or a new one.
double SomeRatio(std::mt19937& random, const std::vector<Ratio>& table, double tolerance,
                 double lowest, double highest)
{
    std::uniform_real_distribution<double> any(lowest, highest);
    const double known = table[random() % table.size()].Value;
    switch (random() % 8U) {
    case 0: return any(random);
    case 1: return known + 0.9 * tolerance;
    case 2: return known - 0.9 * tolerance;
    case 3: return known - 1.1 * tolerance;
    default: return known;
    }
}

void RunSequence(uint32_t width, uint32_t height, uint32_t maxPerSide, uint32_t seed)
{
    SCOPED_TRACE(testing::Message() << width << " x " << height << ", at most " << maxPerSide
                                    << " a side, seed " << seed);
    vistaTrim::VistaTrimParameters parameters;
    parameters.SetDefaults();
    parameters.NumMaxCropRectsPerSide = maxPerSide;
    Pair pair(width, height, parameters);
    std::mt19937 random(seed);
    const double tolerance = 0.001 / (width > height ? width : height);

    for (int step = 0; step < 40; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        const bool enabled = random() % 3U != 0U;
        switch (random() % 6U) {
        case 0: {
            const double ratio = SomeRatio(random, pair.Model.Aspects, tolerance, 0.3, 3.0);
            pair.Driver->SetAspectRatioEnabled(ratio, enabled);
            pair.Model.SetAspectRatioEnabled(ratio, enabled);
            ExpectSameTables(pair);
            break;
        }
        case 1: {
            // Rarely, a scale above 1: its crops never fit the picture.
            const double ratio = step > 30 && random() % 4U == 0U
                                     ? 1.25
                                     : SomeRatio(random, pair.Model.Scales, tolerance, 0.2, 1.0);
            pair.Driver->SetCropRectScaleRatioEnabled(ratio, enabled);
            pair.Model.SetCropRectScaleRatioEnabled(ratio, enabled);
            ExpectSameTables(pair);
            break;
        }
        case 2:
        case 3: {
            const double ratio = SomeRatio(random, pair.Model.Aspects, tolerance, 0.3, 3.0);
            if (!ExpectSameAnswer(pair, SuggestionParameters(ratio, false)))
                return;
            break;
        }
        case 4: {
            // Whole and fractional sizes. One larger than the picture counts as no size.
            const double side = height < width ? height : width;
            std::uniform_real_distribution<double> any(0.4 * side, 1.1 * side);
            double cropWidth = any(random);
            double cropHeight = any(random);
            if (random() % 2U == 0U) {
                cropWidth = static_cast<int>(cropWidth);
                cropHeight = static_cast<int>(cropHeight);
            }
            if (!ExpectSameAnswer(pair, SuggestionParameters(cropWidth, cropHeight, false)))
                return;
            break;
        }
        default:
            if (!ExpectSameAnswer(pair, SuggestionParameters()))
                return;
        }
    }
}

TEST(DriverAgainstModel, RandomSequencesAgree)
{
    const uint32_t sizes[][2] = {{640, 480}, {480, 640}, {640, 640}, {640, 97}};
    uint32_t seed = 1;
    for (const uint32_t(&size)[2] : sizes)
        for (const uint32_t maxPerSide : {1U, 2U, 7U, 25U})
            RunSequence(size[0], size[1], maxPerSide, seed++);
}

TEST(DriverAgainstModel, DefaultRequestReturnsTheKnownNumber)
{
    vistaTrim::VistaTrimParameters parameters;
    parameters.SetDefaults();
    Pair pair(640, 480, parameters);
    EXPECT_EQ(AnswerOfDriver(pair, SuggestionParameters()).Crops.size(), 14501U);
    EXPECT_TRUE(ExpectSameAnswer(pair, SuggestionParameters()));
}

} // namespace
} // namespace slowOracle
