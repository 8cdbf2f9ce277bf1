// One valid example of every text that cli_texts_fuzzer reads; the seeds hold them, and the fuzzer
// spoils them.
#ifndef VISTATRIM_FUZZERS_TEXT_EXAMPLES_H
#define VISTATRIM_FUZZERS_TEXT_EXAMPLES_H

#include <cstdint>
#include <string>

#include "ranking/crop_utility.h"
#include "ranking/input_grid.h"

namespace fuzzing {

enum class TextKind { Regions, Presets, Ranking, Crops, Record };
constexpr int32_t kNumTextKinds = 5;

inline std::string Ones(int32_t count)
{
    std::string list = "[1";
    for (int32_t i = 1; i < count; ++i)
        list += ",1";
    return list + "]";
}

// One layer of single digits, the smallest model: libFuzzer's inputs are 4096 bytes at most.
inline std::string RankingExample()
{
    using namespace vistaTrim::photo;
    return R"({"format":"vistatrim-ranking","version":1,"grid":)" + std::to_string(kGridSide) +
           R"(,"sharpness":2,"overlapOffset":0.1,"overlapSlope":0.9,"inputMeans":)" +
           Ones(kNumInputs) + R"(,"inputScales":)" + Ones(kNumInputs) + R"(,"featureWeights":)" +
           Ones(kNumCropFeatures) + R"(,"layers":[{"outputs":)" + std::to_string(kNumCropParts) +
           R"(,"dilation":1,"biases":)" + Ones(kNumCropParts) + R"(,"weights":)" +
           Ones(kNumCropParts * kNumInputs * 9) + "}]}";
}

inline std::string ExampleOf(TextKind kind)
{
    switch (kind) {
    case TextKind::Regions:
        return R"({"file":"a.jpg","regions":[{"x":10.5,"y":20,"width":30,"height":40.25,)"
               R"("kind":"face","label":"Ada","confidence":0.5,"wish":"must-keep"},)"
               R"({"x":1,"y":2,"w":3,"h":4}]})"
               "\n\n"
               R"({"file":"a.jpg","regions":[{"x":5,"y":6,"w":7,"h":8,"wish":"none"}]})"
               "\n";
    case TextKind::Presets:
        return "# name, ratio, size, use\nposter\t2:3\r\nsquare\t-\t64x64\tsmall\n"
               "wide\t16:9\t1920x1080\tfilm\ntall\t1.5\t-\n";
    case TextKind::Ranking: return RankingExample();
    case TextKind::Crops:
        return R"([{"file":"a.jpg","width":4000,"height":3000,"crops":[{"x":0,"y":10,)"
               R"("width":1600,"height":900,"aspect":"16/9","ratio":"16x9","shape":"wide",)"
               R"("rank":1,"coversContent":true,"scores":{"composition":0.5,"peak":0.25},)"
               R"("fill":{"width":320,"height":180}},{"x":1,"y":1,"width":30,"height":20}]},)"
               "\n"
               R"({"file":"b.jpg","error":"broken"}])"
               "\n";
    case TextKind::Record: break;
    }
    return R"({"format":"vistatrim-options","version":1,"runs":[{"names":["{stem}-{rank}.jpg"],)"
           R"("options":{"--top":"5","--format":"jpg"}},{"names":[],"options":{}}]})"
           "\n";
}

} // namespace fuzzing

#endif
