// Texts of fitted weights: what is read, and what is rejected.
#include <functional>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ranking/choice_model.h"
#include "ranking/crop_utility.h"
#include "ranking/input_grid.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/ranking_model.h"

namespace vistaTrim::photo {
namespace {

using nlohmann::json;

json SmallModel()
{
    return {{"format", "vistatrim-ranking"},
            {"version", 1},
            {"grid", kGridSide},
            {"inputMeans", std::vector<float>(kNumInputs, 0.5F)},
            {"inputScales", std::vector<float>(kNumInputs, 2.0F)},
            {"layers",
             {{{"outputs", kNumCropParts},
               {"dilation", 2},
               {"weights", std::vector<float>(kNumCropParts * kNumInputs * 9, 0.25F)},
               {"biases", std::vector<float>(kNumCropParts, 0.125F)}}}},
            {"featureWeights", std::vector<double>(kNumCropFeatures, 1.5)},
            {"sharpness", 2.0},
            {"overlapOffset", 0.1},
            {"overlapSlope", 0.9}};
}

std::string FaultOf(const std::string& text)
{
    try {
        ReadRankingModel(text, "r.json");
    } catch (const PhotoError& error) {
        EXPECT_EQ(error.GetKind(), PhotoError::Kind::InvalidRequest);
        EXPECT_EQ(std::string(error.what()).find("r.json: "), 0U);
        return error.what();
    }
    return "";
}

TEST(RankingModel, ReadsWhatTheTextHolds)
{
    const RankingModel model = ReadRankingModel(SmallModel().dump(), "r.json");
    ASSERT_EQ(model->Layers.size(), 1U);
    EXPECT_EQ(model->Layers[0].Inputs, kNumInputs);
    EXPECT_EQ(model->Layers[0].Outputs, kNumCropParts);
    EXPECT_EQ(model->Layers[0].Dilation, 2);
    EXPECT_EQ(model->Layers[0].Weights.front(), 0.25F);
    EXPECT_EQ(model->Layers[0].Biases.back(), 0.125F);
    EXPECT_EQ(model->InputScales.front(), 2.0F);
    EXPECT_EQ(model->FeatureWeights.back(), 1.5);
    EXPECT_EQ(model->Sharpness, 2.0);
    EXPECT_EQ(model->OverlapOffset, 0.1);
    EXPECT_EQ(model->OverlapSlope, 0.9);
}

TEST(RankingModel, NamesWhatIsWrong)
{
    struct Case {
        std::string Named;
        std::function<void(json&)> Spoil;
    };
    const std::vector<Case> cases = {
        {"'format'", [](json& root) { root["format"] = "other"; }},
        {"'version' must be 1", [](json& root) { root["version"] = 2; }},
        {"'grid'", [](json& root) { root["grid"] = 64; }},
        {"'inputMeans'", [](json& root) { root["inputMeans"].push_back(1); }},
        {"'inputScales'", [](json& root) { root["inputScales"][3] = "2"; }},
        {"'layers'", [](json& root) { root["layers"] = json::array(); }},
        {"'outputs'", [](json& root) { root["layers"][0]["outputs"] = 0; }},
        {"'outputs'", [](json& root) { root["layers"][0]["outputs"] = 1e12; }},
        {"'dilation'", [](json& root) { root["layers"][0]["dilation"] = kMaxDilation + 1; }},
        {"'weights'", [](json& root) { root["layers"][0]["weights"].erase(0); }},
        {"'weights'", [](json& root) { root["layers"][0]["weights"][5] = 1e300; }},
        {"'biases'", [](json& root) { root["layers"][0].erase("biases"); }},
        {"last of 'layers'",
         [](json& root) {
             root["layers"][0]["outputs"] = 1;
             root["layers"][0]["weights"] = std::vector<float>(kNumInputs * 9, 0.0F);
             root["layers"][0]["biases"] = {0};
         }},
        {"'featureWeights'", [](json& root) { root["featureWeights"] = 1; }},
        {"'sharpness'", [](json& root) { root["sharpness"] = 0; }},
        {"'overlapSlope'", [](json& root) { root.erase("overlapSlope"); }},
    };
    for (const Case& wrong : cases) {
        json root = SmallModel();
        wrong.Spoil(root);
        EXPECT_NE(FaultOf(root.dump()).find(wrong.Named), std::string::npos)
            << wrong.Named << " but: " << FaultOf(root.dump());
    }
    EXPECT_NE(FaultOf("{ half").find("not valid JSON"), std::string::npos);
    // A copy of a list this deep would need more stack than there is.
    const std::string deep = std::string(300000, '[') + std::string(300000, ']');
    EXPECT_NE(FaultOf("{\"format\":" + deep + "}").find("'format'"), std::string::npos);
    EXPECT_NE(FaultOf("[]").find("'format'"), std::string::npos);
}

} // namespace
} // namespace vistaTrim::photo
