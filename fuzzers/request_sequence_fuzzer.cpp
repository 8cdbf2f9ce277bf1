// Runs sequences of calls through the exported functions and the driver's operations, with
// arbitrary tables, densities, rectangles and requests. The slow model of the generator runs the
// same sequence: lists, messages thrown and table sizes must match, and the best crops must be
// those of the slow selection from the driver's own scored candidates.
//
// Misuse by the host is left out: both face flags at once, an aspect table without a scale table,
// null pointers.
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "oracle/record_bridge.h"
#include "oracle/slow_candidates.h"
#include "oracle/slow_selection.h"
#include "vistaTrim/vistaTrim.h"

using namespace fuzzing;
using namespace vistaTrim;
using slowOracle::CropCell;
using slowOracle::FromRecord;
using slowOracle::FromRecords;
using slowOracle::kNoIndex;

namespace {

constexpr const char* kDisabledAspect = "VistaTrim: input aspect ratio is disabled.\n";
constexpr const char* kDisabledPair = "VistaTrim: input aspect ratio or scale ratio is disabled.\n";

constexpr int32_t kMostSteps = 16;
constexpr size_t kMostRects = 6;
constexpr size_t kMostRows = 10;
// The slow selection takes quadratic time.
constexpr size_t kMostForSlowSelection = 400;

// The message thrown, or the crops and the list that holds them.
struct Answer {
    std::string Text;
    CropCell Crops;
    ICropRects* List = nullptr;
};

std::vector<DoubleInfo> Table(FuzzedDataProvider& data, int32_t fewest, bool scales)
{
    std::vector<DoubleInfo> rows;
    const int32_t count = Whole(data, fewest, 5);
    for (int32_t i = 0; i < count; ++i) {
        // Scales above 1 make most requests throw, so they are rare.
        const double value =
            scales && Whole(data, 0, 7) != 0 ? Whole(data, 0, 64) / 64.0 : Number(data);
        rows.emplace_back(value, Whole(data, 0, 3) != 0);
    }
    return rows;
}

DoubleInfo* CopyOf(const std::vector<DoubleInfo>& rows)
{
    DoubleInfo* const copy = new DoubleInfo[rows.size()];
    for (size_t i = 0; i < rows.size(); ++i)
        copy[i] = rows[i];
    return copy;
}

int32_t Coordinate(FuzzedDataProvider& data)
{
    // Extents stay below 2^31, beyond which the width and height of a rectangle overflow.
    constexpr int32_t kFar = (1 << 30) - 1;
    return Whole(data, 0, 7) == 0 ? Whole(data, -kFar, kFar) : Whole(data, -20, 660);
}

CRectOfInterest Rectangle(FuzzedDataProvider& data)
{
    CRectOfInterest rect(Coordinate(data), 0, Coordinate(data), 0, Whole(data, 0, 1) != 0);
    const bool arbitrary = Whole(data, 0, 7) == 0;
    rect.Right = arbitrary ? Coordinate(data) : rect.Left + Whole(data, 0, 200);
    rect.Bottom = arbitrary ? Coordinate(data) : rect.Top + Whole(data, 0, 200);
    rect.Kind = Whole(data, 0, 15) == 0 ? Whole(data, INT32_MIN, INT32_MAX) : Whole(data, 0, 3);
    rect.Enabled = Whole(data, 0, 7) != 0;
    return rect;
}

// The driver sets no limit; these are small enough for a fuzzer's memory. At 0 the count minus
// one wraps; at 1 a single position is wanted on each axis.
uint32_t Density(FuzzedDataProvider& data)
{
    return static_cast<uint32_t>(Whole(data, 0, 15) == 0 ? Whole(data, 0, 32) : Whole(data, 0, 6));
}

// One picture, its driver and the expected state.
class Session {
public:
    explicit Session(FuzzedDataProvider& data);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Step(FuzzedDataProvider& data);

private:
    SuggestionParameters Request(FuzzedDataProvider& data) const;
    Answer FromDriver(const SuggestionParameters& request);
    Answer FromModel(const SuggestionParameters& request);
    // Sends the request to both and compares the answers.
    Answer AnswerOfBoth(const SuggestionParameters& request);
    void CheckBest(FuzzedDataProvider& data);
    void EvaluateOne(FuzzedDataProvider& data);
    void CheckTables() const;
    void CheckRects() const;
    void CheckParameters() const;
    void CheckRecord(const CInt32CropRect& record) const;
    bool SoftRectsHaveArea() const;

    Size PictureOf;
    VistaTrimParameters Parameters;
    IImage* Image = nullptr;
    IVistaTrim* Driver = nullptr;
    slowOracle::GeneratorModel Model;
    std::vector<CRectOfInterest> Rects;
    std::vector<Answer> Kept;
};

Session::Session(FuzzedDataProvider& data) : PictureOf(PictureSize(data)), Model(1, 1, {}, {}, 1)
{
    // The default tables come from SetDefaults. An empty aspect table would give the same tables
    // but leak three small arrays, which the leak checker would report on every run.
    if (Whole(data, 0, 31) == 0) {
        Parameters.SetDefaults();
    } else {
        const std::vector<DoubleInfo> aspects = Table(data, 1, false);
        const std::vector<DoubleInfo> scales = Table(data, 1, true);
        Parameters.AspectRatios = CopyOf(aspects);
        Parameters.NumAspectRatios = static_cast<uint32_t>(aspects.size());
        Parameters.CropRectScaleRatios = CopyOf(scales);
        Parameters.NumCropRectScaleRatios = static_cast<uint32_t>(scales.size());
    }
    Parameters.NumMaxCropRectsPerSide = Density(data);
    Parameters.UseBuiltInFaceDetector = Whole(data, 0, 3) == 0;
    const int32_t rects = Whole(data, 0, 3) == 0 ? Whole(data, 0, 3) : 0;
    for (int32_t i = 0; i < rects; ++i)
        Rects.push_back(Rectangle(data));
    Parameters.RectsOfInterest = new CRectOfInterest[Rects.size()];
    for (size_t i = 0; i < Rects.size(); ++i)
        Parameters.RectsOfInterest[i] = Rects[i];
    Parameters.NumRectsOfInterest = static_cast<uint32_t>(Rects.size());

    const std::vector<uint8_t> pixels = Pixels(data, PictureOf);
    const int32_t offsets[4] = {2, 1, 0, -1};
    Image = CreateImageObj(static_cast<uint32_t>(PictureOf.Rows),
                           static_cast<uint32_t>(PictureOf.Cols), 3, offsets, pixels.data());
    Driver = CreateVistaTrimObj(Image, &Parameters);
    Model = slowOracle::GeneratorModel(
        static_cast<uint32_t>(PictureOf.Cols), static_cast<uint32_t>(PictureOf.Rows),
        FromRecords(Parameters.AspectRatios, Parameters.NumAspectRatios),
        FromRecords(Parameters.CropRectScaleRatios, Parameters.NumCropRectScaleRatios),
        Parameters.NumMaxCropRectsPerSide);
}

// Lists outlive the driver and the image.
Session::~Session()
{
    DestroyVistaTrimObj(Driver);
    DestroyImageObj(Image);
    for (Answer& answer : Kept) {
        const CropCell now = FromRecords(answer.List->Data(), answer.List->Count());
        Demand(now.size() == answer.Crops.size(), "a kept list keeps its length");
        for (size_t i = 0; i < now.size(); ++i)
            Demand(slowOracle::SameCrop(now[i], answer.Crops[i]), "a kept list keeps its records");
        answer.List->Release();
    }
}

SuggestionParameters Session::Request(FuzzedDataProvider& data) const
{
    SuggestionParameters request;
    switch (Whole(data, 0, 5)) {
    case 0: break;
    case 1: request.AspectRatio = Number(data); break;
    case 2: {
        const size_t row = static_cast<size_t>(Whole(data, 0, 31)) % Model.Aspects.size();
        request.AspectRatio = Model.Aspects[row].Value;
        break;
    }
    case 3:
        request.CropWidth = Whole(data, 1, PictureOf.Cols);
        request.CropHeight = Whole(data, 1, PictureOf.Rows);
        break;
    default:
        request.CropWidth = Number(data);
        request.CropHeight = Number(data);
        request.AspectRatio = Whole(data, 0, 3) == 0 ? Number(data) : 0.0;
    }
    request.DetectFaces = !Parameters.UseBuiltInFaceDetector && Whole(data, 0, 1) != 0;
    return request;
}

Answer Session::FromDriver(const SuggestionParameters& request)
{
    Answer answer;
    try {
        ComputeCropSuggestions(Driver, &answer.List, &request);
    } catch (const char* text) {
        answer.Text = text;
        Demand(answer.List == nullptr, "the result is untouched when a request throws");
        return answer;
    }
    answer.Crops = FromRecords(answer.List->Data(), answer.List->Count());
    return answer;
}

Answer Session::FromModel(const SuggestionParameters& request)
{
    Answer answer;
    uint32_t aspectIndex = kNoIndex;
    uint32_t scaleIndex = kNoIndex;
    try {
        if (request.AspectRatio > 0.0) {
            Model.GenerateForAspectRatio(request.AspectRatio, aspectIndex);
            if (!Model.Aspects[aspectIndex].Enabled)
                throw kDisabledAspect;
            // Infinity does not match itself and gets a second row here.
            Model.GenerateForAspectRatio(request.AspectRatio, aspectIndex);
            answer.Crops = Model.GetEnabledCropRects(aspectIndex);
        } else if (request.CropWidth > 0.0 && request.CropHeight > 0.0 &&
                   PictureOf.Cols >= request.CropWidth && PictureOf.Rows >= request.CropHeight) {
            Model.GenerateForCropSize(request.CropWidth, request.CropHeight, aspectIndex,
                                      scaleIndex);
            if (!Model.Aspects[aspectIndex].Enabled || !Model.Scales[scaleIndex].Enabled)
                throw kDisabledPair;
            answer.Crops = Model.Grid[aspectIndex][scaleIndex];
        } else {
            Model.GenerateAll();
            answer.Crops = Model.GetEnabledCropRects(kNoIndex);
        }
    } catch (const char* text) {
        answer.Text = text;
        answer.Crops.clear();
    }
    return answer;
}

// A soft rectangle without area makes the score NaN.
bool Session::SoftRectsHaveArea() const
{
    for (const CRectOfInterest& rect : Rects)
        if (rect.Right < rect.Left || rect.Bottom < rect.Top)
            return false;
    return true;
}

void Session::CheckRecord(const CInt32CropRect& record) const
{
    const Score& score = record.Score;
    const auto share = [](double value) { return value >= -1e-6 && value <= 1.0 + 1e-6; };
    Demand(score.Scored, "a returned record is scored");
    Demand(share(score.CompositionScore) && share(score.CoverageScore) &&
               share(score.BorderScore) && share(score.PeakScore) && share(score.CentrePeakScore),
           "measures are in 0..1");
    if (SoftRectsHaveArea())
        Demand(score.RoiScore >= 0.0 && score.RoiScore <= 1.0, "soft score is in 0..1");
}

Answer Session::AnswerOfBoth(const SuggestionParameters& request)
{
    const Answer expected = FromModel(request);
    Answer found = FromDriver(request);
    Demand(found.Text == expected.Text, "the message of the model");
    Demand(found.Crops.size() == expected.Crops.size(), "as many candidates as the model");
    for (size_t i = 0; i < found.Crops.size(); ++i) {
        Demand(slowOracle::SameSides(found.Crops[i], expected.Crops[i]),
               "the candidates of the model, in its order");
        CheckRecord(found.List->Data()[i]);
    }
    if (found.List != nullptr)
        Demand(found.Crops.empty() == (found.List->Data() == nullptr), "an empty list has no data");
    CheckTables();
    return found;
}

void Session::CheckBest(FuzzedDataProvider& data)
{
    const SuggestionParameters request = Request(data);
    const int32_t n =
        Whole(data, 0, 3) == 0 ? Whole(data, INT32_MIN, INT32_MAX) : Whole(data, -1, 40);
    const int32_t mode =
        Whole(data, 0, 7) == 0 ? Whole(data, INT32_MIN, INT32_MAX) : Whole(data, 0, 3);
    const WeightDistribution weights(Number(data), Number(data), Number(data), Number(data),
                                     Number(data));
    const Answer all = AnswerOfBoth(request);
    Answer best;
    FromModel(request); // the second request may grow the tables again
    try {
        GetNTopCropSuggestions(Driver, n, &best.List, &request, mode, weights);
    } catch (const char* text) {
        best.Text = text;
        Demand(best.List == nullptr, "the result is untouched when a request throws");
    }
    CheckTables();
    Demand(best.Text == all.Text, "both requests throw the same message");
    if (all.List != nullptr)
        all.List->Release();
    if (best.List == nullptr)
        return;

    best.Crops = FromRecords(best.List->Data(), best.List->Count());
    Demand(best.Crops.size() <= static_cast<size_t>(n > 0 ? n : 0), "at most n crops");
    if (all.Crops.size() <= kMostForSlowSelection) {
        const slowOracle::CropGrid grid(1, slowOracle::CropRow(1, all.Crops));
        const slowOracle::Selection expected = slowOracle::SelectTopCrops(
            n, grid, mode, kNoIndex, kNoIndex, FromRecord(weights), FromRecords(Rects));
        Demand(best.Crops.size() == expected.Result.size(), "as many as the slow selection");
        for (size_t i = 0; i < best.Crops.size(); ++i)
            Demand(slowOracle::SameCrop(best.Crops[i], expected.Result[i]),
                   "the crops of the slow selection, in its order");
    }
    Kept.push_back(best);
}

void Session::EvaluateOne(FuzzedDataProvider& data)
{
    CInt32CropRect rect;
    const bool inside = Whole(data, 0, 3) != 0;
    if (inside) {
        rect.Left = Whole(data, 0, PictureOf.Cols - 1);
        rect.Right = Whole(data, rect.Left, PictureOf.Cols - 1);
        rect.Top = Whole(data, 0, PictureOf.Rows - 1);
        rect.Bottom = Whole(data, rect.Top, PictureOf.Rows - 1);
    } else {
        // The measures are undefined, but the call must do no harm.
        for (int32_t* const side : {&rect.Left, &rect.Right, &rect.Top, &rect.Bottom})
            *side =
                Whole(data, 0, 1) != 0 ? Whole(data, INT32_MIN, INT32_MAX) : Whole(data, -5, 645);
    }
    rect.Score.Scored = Whole(data, 0, 7) == 0;
    rect.Score.RoiScore = 0.25;
    rect.Score.MergedScore = 0.75;
    const CInt32CropRect before = rect;
    EvaluateScores(Driver, &rect);
    Demand(rect.Score.Scored, "a measured record is marked as scored");
    Demand(rect.Score.RoiScore == 0.25 && rect.Score.MergedScore == 0.75,
           "the other scores are unchanged");
    if (before.Score.Scored)
        Demand(slowOracle::SameCrop(FromRecord(rect), FromRecord(before)),
               "a scored record is not scored again");
    else if (inside)
        CheckRecord(rect);
}

void Session::CheckTables() const
{
    DoubleInfo* table = nullptr;
    uint32_t count = 0;
    Driver->GetAspectRatios(&table, &count);
    Demand(count == Model.Aspects.size(), "as many aspect rows as the model");
    Driver->GetCropRectScaleRatios(&table, &count);
    Demand(count == Model.Scales.size(), "as many scale rows as the model");
}

void Session::CheckRects() const
{
    CRectOfInterest* rects = nullptr;
    uint32_t count = 0;
    Driver->GetRectsOfInterest(&rects, &count);
    Demand(rects != nullptr && count == Rects.size(), "number of rectangles of interest");
    for (uint32_t i = 0; i < count; ++i)
        Demand(rects[i].Left == Rects[i].Left && rects[i].Right == Rects[i].Right &&
                   rects[i].Top == Rects[i].Top && rects[i].Bottom == Rects[i].Bottom &&
                   rects[i].Kind == Rects[i].Kind && rects[i].Enabled == Rects[i].Enabled &&
                   rects[i].Marked == Rects[i].Marked,
               "the fields of a rectangle of interest");
    // The library leaks this record on purpose; the leak checker would report it.
    if (count == 0)
        ::operator delete(rects);
}

// Compares bits, because a NaN in a table must come back unchanged.
bool SameBits(double a, double b)
{
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void Session::CheckParameters() const
{
    const VistaTrimParameters now = Driver->GetParameters();
    Demand(now.NumAspectRatios == Parameters.NumAspectRatios &&
               now.NumCropRectScaleRatios == Parameters.NumCropRectScaleRatios &&
               now.NumRectsOfInterest == Parameters.NumRectsOfInterest &&
               now.NumMaxCropRectsPerSide == Parameters.NumMaxCropRectsPerSide &&
               now.UseBuiltInFaceDetector == Parameters.UseBuiltInFaceDetector,
           "the parameters are unchanged");
    for (uint32_t i = 0; i < now.NumAspectRatios; ++i)
        Demand(SameBits(now.AspectRatios[i].Value, Parameters.AspectRatios[i].Value) &&
                   now.AspectRatios[i].Enabled == Parameters.AspectRatios[i].Enabled,
               "an aspect row is unchanged");
}

void Session::Step(FuzzedDataProvider& data)
{
    switch (Whole(data, 0, 9)) {
    case 0: {
        const double ratio = Number(data);
        const bool enabled = Whole(data, 0, 1) != 0;
        if (Model.Aspects.size() < kMostRows) {
            Driver->SetAspectRatioEnabled(ratio, enabled);
            Model.SetAspectRatioEnabled(ratio, enabled);
        }
        CheckTables();
        break;
    }
    case 1: {
        const double scale = Whole(data, 0, 3) == 0 ? Number(data) : Whole(data, 0, 64) / 64.0;
        const bool enabled = Whole(data, 0, 1) != 0;
        if (Model.Scales.size() < kMostRows) {
            Driver->SetCropRectScaleRatioEnabled(scale, enabled);
            Model.SetCropRectScaleRatioEnabled(scale, enabled);
        }
        CheckTables();
        break;
    }
    case 2:
        if (Rects.size() < kMostRects) {
            const CRectOfInterest rect = Rectangle(data);
            Driver->AddRectOfInterest(rect);
            Rects.push_back(rect);
        }
        CheckRects();
        break;
    case 3: EvaluateOne(data); break;
    case 4: CheckParameters(); break;
    case 5: {
        Driver->AddRef();
        Driver->Release();
        Image->AddRef();
        Image->Release();
        Driver->ReservedA();
        Driver->ReservedB(7);
        break;
    }
    case 6:
    case 7:
        if (Model.Aspects.size() < kMostRows && Model.Scales.size() < kMostRows)
            CheckBest(data);
        break;
    default:
        if (Model.Aspects.size() < kMostRows && Model.Scales.size() < kMostRows) {
            const Answer answer = AnswerOfBoth(Request(data));
            if (answer.List != nullptr)
                Kept.push_back(answer);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    SilenceKernelMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    FuzzedDataProvider data(bytes, count);
    Session session(data);
    for (int32_t step = 0; step < kMostSteps && data.remaining_bytes() > 0; ++step)
        session.Step(data);
    return 0;
}
