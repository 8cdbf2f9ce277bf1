// Reads any text as the output file of an earlier run, as --resume does: it is accepted or
// rejected, and what the program writes is read back.
#include <string>

#include "batch/resume.h"
#include "fuzz_support.h"
#include "options/program_error.h"
#include "output/result_text.h"
#include "picture/crop_metadata.h"

using namespace fuzzing;
using namespace vistaTrim;
using namespace vistaTrim::cli;
using namespace vistaTrim::photo;

namespace {

EarlierOutput HeldByOurCsv(const std::string& text)
{
    return HeldByCsv(text, CsvHeader());
}

// Kept text comes from the input, and reads back unchanged.
void CheckHeld(EarlierOutput (*read)(const std::string&), const std::string& text)
{
    EarlierOutput held;
    try {
        held = read(text);
    } catch (const ProgramError&) {
        return;
    }
    Demand(held.Kept.size() <= text.size() + CsvHeader().size(), "nothing is added");
    const EarlierOutput again = read(held.Kept);
    Demand(again.Kept == held.Kept && again.Files == held.Files, "kept text reads back unchanged");
}

PhotoResult Result(FuzzedDataProvider& data)
{
    PhotoResult result;
    result.File = data.ConsumeRandomLengthString(40);
    result.Found.Size = {Whole(data, 1, 9000), Whole(data, 1, 9000)};
    if (Whole(data, 0, 3) == 0)
        result.Error = data.ConsumeRandomLengthString(40);
    const int32_t crops = Whole(data, 0, 4);
    for (int32_t i = 0; i < crops; ++i) {
        Crop crop;
        crop.Rect = {Whole(data, 0, 9000), Whole(data, 0, 9000), Whole(data, 1, 9000),
                     Whole(data, 1, 9000)};
        crop.Aspect = Reduced(Whole(data, 1, 100), Whole(data, 1, 100));
        crop.Scores.Border = Number(data);
        crop.Scores.Merged = Number(data);
        result.Found.Crops.push_back(crop);
    }
    return result;
}

void CheckRoundTrip(const PhotoResult& result)
{
    const bool succeeded = result.Error.empty();
    const EarlierOutput json = HeldByJson(JsonLine(result));
    Demand(json.Files.count(JsonFileKey(result.File)) == (succeeded ? 1U : 0U), "a line of JSON");
    const EarlierOutput csv = HeldByOurCsv(CsvHeader() + CsvLines(result));
    Demand(csv.Files.count(result.File) == (succeeded ? 1U : 0U), "lines of CSV");
    PeopleText(result);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    FuzzedDataProvider data(bytes, count);
    const int32_t kind = Whole(data, 0, 4);
    if (kind == 0) {
        CheckRoundTrip(Result(data));
        return 0;
    }
    const std::string text = data.ConsumeRemainingBytesAsString();
    switch (kind) {
    case 1: CheckHeld(HeldByJson, text); break;
    case 2: CheckHeld(HeldByOurCsv, text); break;
    case 3: CheckHeld(HeldByOurCsv, CsvHeader() + text); break;
    default: Demand(UprightXmp(text).size() == text.size(), "metadata keeps its length");
    }
    return 0;
}
