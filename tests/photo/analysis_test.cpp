// Nothing here starts libvips before the first photograph does, as in a program that uses it for
// nothing else.
#include "vistaTrimPhoto/analysis.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "vistaTrim/vistaTrim.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {
namespace {

// A ramp with a bright block at X = 120, Y = 90.
PixelImage BlockOnARamp(PixelSize size)
{
    PixelImage image{size, 3, {}};
    for (int32_t y = 0; y < size.Height; ++y)
        for (int32_t x = 0; x < size.Width; ++x) {
            const bool block = x >= 120 && x < 220 && y >= 90 && y < 170;
            for (int32_t c = 0; c < 3; ++c)
                image.Bytes.push_back(
                    static_cast<uint8_t>(block ? 250 - 90 * c : 40 + (x + 2 * y) % 97 / 3 + 4 * c));
        }
    return image;
}

Analysis AnalysisOfABlock()
{
    const PixelImage image = BlockOnARamp({800, 500});
    return Analysis(Photograph::FromPixels(ViewOf(image)));
}

std::vector<Request> DifferentRequests()
{
    std::vector<Request> requests(6);
    requests[1].Aspects = {{1, 1}, {16, 9}};
    requests[1].Explain = true;
    requests[2].Size = PixelSize{300, 200};
    requests[3].Scales = {0.6};
    requests[3].Top = 40;
    requests[4].Wishes = {{WishKind::MustKeep, {120, 90, 100, 80}},
                          {WishKind::Avoid, {600, 300, 50, 50}}};
    requests[4].Explain = true;
    requests[5].Ranking = RankBy::Coverage;
    requests[5].Weights = {1, 0, 0, 0, 0};
    requests[5].Density = 12;
    return requests;
}

void ExpectSame(const Suggestions& a, const Suggestions& b)
{
    EXPECT_EQ(a.Size, b.Size);
    ASSERT_EQ(a.Crops.size(), b.Crops.size());
    for (size_t i = 0; i < a.Crops.size(); ++i) {
        EXPECT_EQ(a.Crops[i].Rect, b.Crops[i].Rect);
        EXPECT_EQ(a.Crops[i].Aspect, b.Crops[i].Aspect);
        EXPECT_EQ(a.Crops[i].CoversContent, b.Crops[i].CoversContent);
        for (const Measure& measure : kMeasures)
            EXPECT_EQ(a.Crops[i].Scores.*measure.Value, b.Crops[i].Scores.*measure.Value)
                << measure.Name;
        ASSERT_EQ(a.Crops[i].Explained.has_value(), b.Crops[i].Explained.has_value());
        if (a.Crops[i].Explained) {
            EXPECT_EQ(a.Crops[i].Explained->Ranks, b.Crops[i].Explained->Ranks);
            EXPECT_EQ(a.Crops[i].Explained->WishesMet, b.Crops[i].Explained->WishesMet);
        }
    }
    ASSERT_EQ(a.Explained.has_value(), b.Explained.has_value());
    if (a.Explained) {
        EXPECT_EQ(a.Explained->Candidates, b.Explained->Candidates);
        EXPECT_EQ(a.Explained->Passing, b.Explained->Passing);
        EXPECT_EQ(a.Explained->MetBy, b.Explained->MetBy);
        EXPECT_EQ(a.Explained->Why, b.Explained->Why);
    }
}

// The error that the request throws.
PhotoError ErrorOf(const Analysis& analysis, const Request& request)
{
    try {
        analysis.Suggest(request);
    } catch (const PhotoError& error) {
        return error;
    }
    ADD_FAILURE() << "no error";
    return PhotoError(PhotoError::Kind::Internal, "");
}

TEST(Analysis, AnswersEachRequestLikeAFreshAnalysis)
{
    const Analysis kept = AnalysisOfABlock();
    for (int round = 0; round < 2; ++round)
        for (const Request& request : DifferentRequests()) {
            const Suggestions answer = kept.Suggest(request);
            EXPECT_FALSE(answer.Crops.empty());
            ExpectSame(answer, AnalysisOfABlock().Suggest(request));
        }
}

TEST(Analysis, AnswersSeveralThreadsLikeOne)
{
    const Analysis shared = AnalysisOfABlock();
    const std::vector<Request> requests = DifferentRequests();
    std::vector<Suggestions> expected;
    for (const Request& request : requests)
        expected.push_back(shared.Suggest(request));
    std::vector<Suggestions> answers(4 * requests.size());
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            // Two threads share one analysis, two have their own.
            const Analysis own = t < 2 ? shared : Analysis(shared.Picture());
            for (size_t i = 0; i < requests.size(); ++i) {
                const size_t which = (i + t) % requests.size();
                answers[t * requests.size() + which] = own.Suggest(requests[which]);
            }
            EXPECT_EQ(own.Maps().size(), 10U);
        });
    for (std::thread& thread : threads)
        thread.join();
    for (size_t i = 0; i < answers.size(); ++i)
        ExpectSame(answers[i], expected[i % requests.size()]);
}

// Calling the engine directly, with one weight at a time, gives the same crops in the same order
// and each measure under its own name.
TEST(Analysis, KeepsTheOrderOfWeightsAndScores)
{
    const PixelImage image = BlockOnARamp({640, 400});
    const Analysis analysis(Photograph::FromPixels(ViewOf(image)));
    const int32_t offsets[] = {0, 1, 2};
    IImage* const engineImage = CreateImageObj(400, 640, 3, offsets, image.Bytes.data());
    for (int which = 0; which < 5; ++which) {
        SCOPED_TRACE(which);
        Request request;
        request.Aspects = {{3, 2}, {1, 1}};
        request.Scales = {0.6, 0.8};
        request.Top = 12;
        request.Ranking = RankBy::Engine;
        const Weights kUnits[] = {
            {1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}};
        request.Weights = kUnits[which];

        VistaTrimParameters parameters;
        parameters.NumAspectRatios = 2;
        parameters.AspectRatios = new DoubleInfo[2]{DoubleInfo(1.5, true), DoubleInfo(1.0, true)};
        parameters.NumCropRectScaleRatios = 2;
        parameters.CropRectScaleRatios =
            new DoubleInfo[2]{DoubleInfo(0.6, true), DoubleInfo(0.8, true)};
        parameters.NumMaxCropRectsPerSide = request.Density;
        IVistaTrim* driver = CreateVistaTrimObj(engineImage, &parameters);
        ICropRects* list = nullptr;
        const SuggestionParameters whole(false);
        const auto unit = [which](int weight) { return weight == which ? 1.0 : 0.0; };
        GetNTopCropSuggestions(driver, 12, &list, &whole, 0,
                               WeightDistribution(unit(0), unit(1), unit(2), unit(3), unit(4)));
        ICropRects* const expected = list;

        const Suggestions answer = analysis.Suggest(request);
        ASSERT_EQ(answer.Crops.size(), expected->Count());
        for (size_t i = 0; i < answer.Crops.size(); ++i) {
            const Score& score = expected->Data()[i].Score;
            const Scores& own = answer.Crops[i].Scores;
            EXPECT_EQ(own.Composition, score.CompositionScore);
            EXPECT_EQ(own.Coverage, score.CoverageScore);
            EXPECT_EQ(own.Border, score.BorderScore);
            EXPECT_EQ(own.Peak, score.PeakScore);
            EXPECT_EQ(own.CentrePeak, score.CentrePeakScore);
            EXPECT_EQ(own.Roi, score.RoiScore);
            EXPECT_EQ(own.Merged, score.MergedScore);
            EXPECT_EQ(answer.Crops[i].CoversContent, expected->Data()[i].CoversContent);
        }
        static_cast<CCropRects*>(list)->Release();
        DestroyVistaTrimObj(driver);
    }
    DestroyImageObj(engineImage);
}

TEST(Analysis, OutlivesThePhotographAndItsPixels)
{
    const Analysis analysis = AnalysisOfABlock();
    EXPECT_EQ(analysis.Picture().Photo, (PixelSize{800, 500}));
    EXPECT_EQ(analysis.Picture().Pixels.Size, (PixelSize{640, 400}));
    const Suggestions result = analysis.Suggest(Request());
    EXPECT_EQ(result.Size, (PixelSize{800, 500}));
    EXPECT_EQ(result.Crops.size(), 5U);
    EXPECT_GT(result.Times.Read, 0.0);
    EXPECT_GT(result.Times.Analyse, 0.0);
    EXPECT_GT(result.Times.Score, 0.0);
    EXPECT_FALSE(result.Explained.has_value());
    EXPECT_FALSE(result.Crops[0].Explained.has_value());
}

TEST(Analysis, GivesWhatIsRequested)
{
    const Analysis analysis = AnalysisOfABlock();
    const std::vector<Request> requests = DifferentRequests();
    for (const Crop& crop : analysis.Suggest(requests[1]).Crops) {
        EXPECT_TRUE(crop.Aspect == (Ratio{1, 1}) || crop.Aspect == (Ratio{16, 9}));
        EXPECT_EQ(crop.Rect.Width * crop.Aspect.Height, crop.Rect.Height * crop.Aspect.Width);
        ASSERT_TRUE(crop.Explained);
        for (const double rank : crop.Explained->Ranks) {
            EXPECT_GT(rank, 0.0);
            EXPECT_LE(rank, 1.0);
        }
    }
    for (const Crop& crop : analysis.Suggest(requests[2]).Crops)
        EXPECT_EQ((PixelSize{crop.Rect.Width, crop.Rect.Height}), (PixelSize{300, 200}));
    const Suggestions wished = analysis.Suggest(requests[4]);
    for (const Crop& crop : wished.Crops) {
        EXPECT_TRUE(Contains(crop.Rect, {120, 90, 100, 80}));
        ASSERT_EQ(crop.Explained->WishesMet.size(), 2U);
        EXPECT_TRUE(crop.Explained->WishesMet[0]);
        EXPECT_EQ(crop.Explained->WishesMet[1], !Overlaps(crop.Rect, {600, 300, 50, 50}));
    }
    ASSERT_TRUE(wished.Explained);
    EXPECT_EQ(wished.Explained->Passing, wished.Explained->MetBy[0]);
    EXPECT_LT(wished.Explained->Passing, wished.Explained->Candidates);
}

// Every passing candidate is returned, so the ranks can be recounted.
TEST(Analysis, RanksAreSharesOfTheCandidatesThatPass)
{
    Request request;
    request.Aspects = {{3, 2}};
    request.Scales = {0.5, 0.7};
    request.Top = 10000;
    request.Ranking = RankBy::Coverage;
    request.Wishes = {{WishKind::MustKeep, {120, 90, 100, 80}}};
    request.Explain = true;
    const Suggestions answer = AnalysisOfABlock().Suggest(request);
    const std::vector<Crop>& crops = answer.Crops;
    const double passing = static_cast<double>(crops.size());
    ASSERT_EQ(answer.Explained->Passing, static_cast<int64_t>(crops.size()));
    ASSERT_GT(answer.Explained->Candidates, answer.Explained->Passing);
    const auto shareUpTo = [&](double Scores::*measure, double value) {
        return static_cast<double>(
                   std::count_if(crops.begin(), crops.end(),
                                 [&](const Crop& c) { return c.Scores.*measure <= value; })) /
               passing;
    };
    for (const Crop& crop : crops) {
        for (size_t i = 0; i < kNumWeighed; ++i)
            EXPECT_EQ(crop.Explained->Ranks[i],
                      shareUpTo(kMeasures[i].Value, crop.Scores.*kMeasures[i].Value))
                << kMeasures[i].Name;
        EXPECT_EQ(crop.Scores.Merged, shareUpTo(&Scores::Coverage, crop.Scores.Coverage));
    }
    EXPECT_EQ(crops[0].Scores.Merged, 1.0);
}

// Detectors make mistakes; users know what they want.
TEST(Analysis, FoundRegionsNeverOutrankNamedOnes)
{
    const PixelImage image = BlockOnARamp({800, 500});
    const PixelRect named{600, 350, 60, 60};
    FoundRegion found; // on the bright block, which crops hold anyway
    found.Rect = {120, 90, 100, 80};
    found.Wish = WishKind::Keep;
    RegionOptions regions;
    regions.Faces = FaceSearch::Off;
    regions.Regions = {found};
    const Analysis analysis(Photograph::FromPixels(ViewOf(image)), regions);
    Request request;
    request.Aspects = {{1, 1}};
    request.Scales = {0.6};
    request.Top = 10000;
    request.Wishes = {{WishKind::Keep, named}};
    bool missed = false;
    size_t holdFound = 0;
    for (const Crop& crop : analysis.Suggest(request).Crops) {
        missed = missed || !Contains(crop.Rect, named);
        EXPECT_EQ(Contains(crop.Rect, named), !missed);
        holdFound += Contains(crop.Rect, found.Rect) ? 1 : 0;
    }
    EXPECT_TRUE(missed);
    EXPECT_GT(holdFound, 0U);
}

TEST(Analysis, ReportsTheTimeOfEachStepUnderItsName)
{
    const Analysis analysis = AnalysisOfABlock();
    const Timings times = analysis.Suggest(Request()).Times;
    EXPECT_EQ(times.Read, analysis.Picture().ReadMilliseconds);
    EXPECT_EQ(times.Analyse, analysis.Milliseconds());
    EXPECT_EQ(times.Faces, analysis.FacesMilliseconds());
    EXPECT_NE(times.Analyse, times.Faces);
}

TEST(Analysis, RejectsInvalidRequestsByKind)
{
    const Analysis analysis = AnalysisOfABlock();
    const auto invalid = [&analysis](const auto& spoil) {
        Request request;
        spoil(request);
        const PhotoError error = ErrorOf(analysis, request);
        EXPECT_EQ(error.GetKind(), PhotoError::Kind::InvalidRequest) << error.what();
    };
    invalid([](Request& r) { r.Top = 0; });
    invalid([](Request& r) { r.Density = 0; });
    invalid([](Request& r) { r.Density = kHighestDensity + 1; });
    invalid([](Request& r) { r.Scales = {0.5, 0.0}; });
    invalid([](Request& r) { r.Scales = {1.01}; });
    invalid([](Request& r) { r.Scales = {std::nan("")}; });
    invalid([](Request& r) { r.Aspects = {{3, 0}}; });
    invalid([](Request& r) { r.Aspects = {{-3, 2}}; });
    invalid([](Request& r) { r.Size = PixelSize{0, 5}; });
    invalid([](Request& r) { r.Weights.Peak = std::nan(""); });
    invalid([](Request& r) { r.Weights.CentrePeak = std::numeric_limits<double>::infinity(); });
    invalid([](Request& r) { r.Wishes = {{WishKind::Keep, {1, 1, 0, 5}}}; });
    invalid([](Request& r) { r.Wishes = {{WishKind::MustAvoid, {1, 1, 5, -1}}}; });
}

TEST(Analysis, SaysWhatDoesNotFitAndWhichWish)
{
    const Analysis analysis = AnalysisOfABlock();
    Request large;
    large.Size = PixelSize{801, 10};
    EXPECT_EQ(ErrorOf(analysis, large).GetKind(), PhotoError::Kind::DoesNotFit);
    EXPECT_EQ(std::string(ErrorOf(analysis, large).what()),
              "a crop of 801 x 10 does not fit the photograph, which is 800 x 500");

    Request outside;
    outside.Wishes = {{WishKind::Keep, {0, 0, 10, 10}}, {WishKind::MustKeep, {800, 0, 10, 20}}};
    const PhotoError error = ErrorOf(analysis, outside);
    EXPECT_EQ(error.GetKind(), PhotoError::Kind::DoesNotFit);
    ASSERT_TRUE(error.ConcernedWish());
    EXPECT_EQ(error.ConcernedWish()->Kind, WishKind::MustKeep);
    EXPECT_EQ(error.ConcernedWish()->Rect, (PixelRect{800, 0, 10, 20}));
    EXPECT_EQ(std::string(error.what()), "the region of must-keep 800,0,10,20 lies outside the "
                                         "photograph, which is 800 x 500");
    EXPECT_EQ(error.Text("--"), "the region of --must-keep 800,0,10,20 lies outside the "
                                "photograph, which is 800 x 500");
    EXPECT_FALSE(ErrorOf(analysis, large).ConcernedWish());
    EXPECT_EQ(ErrorOf(analysis, large).Text("--"), ErrorOf(analysis, large).what());

    // A region to avoid outside the photograph is avoided already, wherever it is.
    Request avoided;
    avoided.Wishes = {
        {WishKind::MustAvoid,
         {std::numeric_limits<int32_t>::max() - 3, -5, std::numeric_limits<int32_t>::max(), 10}}};
    ExpectSame(analysis.Suggest(avoided), analysis.Suggest(Request()));
}

// The same error as from Suggest, without an analysis.
TEST(CheckRequest, RejectsWhatThePhotographCannotMeet)
{
    const Analysis analysis = AnalysisOfABlock();
    std::vector<Request> bad(4);
    bad[0].Top = 0;
    bad[1].Size = PixelSize{801, 10};
    bad[2].Size = PixelSize{10, 501};
    bad[3].Wishes = {{WishKind::Keep, {0, 0, 10, 10}}, {WishKind::MustKeep, {800, 0, 10, 20}}};
    for (const Request& request : bad) {
        const PhotoError expected = ErrorOf(analysis, request);
        try {
            CheckRequest(request, {800, 500});
            ADD_FAILURE() << "accepted: " << expected.what();
        } catch (const PhotoError& error) {
            EXPECT_EQ(error.GetKind(), expected.GetKind());
            EXPECT_STREQ(error.what(), expected.what());
        }
    }

    Request fits;
    fits.Size = PixelSize{800, 500};
    fits.Wishes = {{WishKind::MustAvoid, {800, 0, 10, 20}}, {WishKind::Keep, {790, 0, 100, 20}}};
    CheckRequest(fits, {800, 500});
}

TEST(Analysis, ExplainsEveryShortfall)
{
    const Analysis analysis = AnalysisOfABlock();
    const auto explained = [&analysis](const Request& base) {
        Request request = base;
        request.Explain = true;
        return *analysis.Suggest(request).Explained;
    };
    Request request;
    EXPECT_EQ(explained(request).Why, Shortfall::None);
    EXPECT_EQ(NoteOf(explained(request)), "");

    request.Scales = {0.3};
    request.Wishes = {{WishKind::MustKeep, {0, 0, 800, 500}}};
    EXPECT_EQ(explained(request).Why, Shortfall::WishMetByNone);
    EXPECT_EQ(explained(request).UnmetWish, WishKind::MustKeep);
    EXPECT_EQ(NoteOf(explained(request)),
              "no candidate meets must-keep; try more ratios or scales");
    EXPECT_EQ(NoteOf(explained(request), "--"),
              "no candidate meets --must-keep; try more ratios or scales");

    // The wish that nothing meets is named, wherever it is in the list.
    request.Scales = {0.5};
    const Wish possible{WishKind::MustKeep, {100, 100, 10, 10}};
    const Wish preferred{WishKind::Avoid, {0, 0, 800, 500}};
    const Wish impossible{WishKind::MustAvoid, {0, 0, 800, 500}};
    for (const std::vector<Wish>& wishes : {std::vector<Wish>{impossible, possible},
                                            {possible, impossible},
                                            {preferred, impossible}}) {
        request.Wishes = wishes;
        EXPECT_EQ(explained(request).Why, Shortfall::WishMetByNone);
        EXPECT_EQ(explained(request).UnmetWish, WishKind::MustAvoid);
    }

    request.Wishes = {{WishKind::MustKeep, {100, 100, 10, 10}},
                      {WishKind::MustAvoid, {100, 100, 10, 10}}};
    EXPECT_EQ(explained(request).Why, Shortfall::HardWishesTogether);
    EXPECT_EQ(NoteOf(explained(request), "--"),
              "no candidate meets all of --must-keep and --must-avoid at once");

    Request whole;
    whole.Aspects = {{8, 5}};
    whole.Scales = {1.0};
    EXPECT_EQ(explained(whole).Why, Shortfall::FewCandidates);
    EXPECT_EQ(NoteOf(explained(whole)), "only one candidate is left");

    Request many;
    many.Aspects = {{8, 5}};
    many.Ranking = RankBy::Engine;
    many.Top = 200; // fewer than there are, more than the engine's pool of the best fifth
    EXPECT_EQ(explained(many).Why, Shortfall::OthersRankTooLow);
    EXPECT_EQ(NoteOf(explained(many)).find("of "), 0U);
}

TEST(Analysis, ExplainsWhyThereIsNoCandidate)
{
    struct Case {
        PixelSize Photo;
        std::vector<Ratio> Aspects;
        std::vector<double> Scales;
        std::optional<PixelSize> Size;
        Shortfall Why;
    };
    // The working picture is 640 pixels long. A size below one of its pixels gives no candidate.
    const Case cases[] = {{{640, 1}, {{1, 400}}, {}, {}, Shortfall::PhotographTooSmall},
                          {{640, 1}, {}, {0.01}, {}, Shortfall::PhotographTooSmall},
                          {{4000, 10}, {}, {}, PixelSize{1, 1}, Shortfall::PhotographTooSmall},
                          {{640, 2}, {{1, 400}}, {}, {}, Shortfall::RatioTooExtreme},
                          {{1, 300}, {{400, 1}}, {}, {}, Shortfall::RatioTooExtreme},
                          {{640, 2}, {}, {0.01}, {}, Shortfall::ScaleTooSmall},
                          {{640, 2}, {{1, 400}, {1, 1}}, {0.01}, {}, Shortfall::ScaleTooSmall}};
    for (const Case& c : cases) {
        Request request;
        request.Aspects = c.Aspects;
        request.Scales = c.Scales;
        request.Size = c.Size;
        request.Explain = true;
        const PixelImage image = BlockOnARamp(c.Photo);
        const Suggestions none = Analysis(Photograph::FromPixels(ViewOf(image))).Suggest(request);
        SCOPED_TRACE(&c - cases);
        EXPECT_TRUE(none.Crops.empty());
        EXPECT_EQ(none.Explained->Candidates, 0);
        EXPECT_EQ(none.Explained->Why, c.Why);
    }
}

PixelImage Uniform(PixelSize size)
{
    PixelImage image{size, 3, {}};
    image.Bytes.assign(
        size_t{3} * static_cast<size_t>(size.Width) * static_cast<size_t>(size.Height), 120);
    return image;
}

TEST(Analysis, LargestCropOfAUniformPictureIsCentred)
{
    for (const PixelSize size : {PixelSize{640, 480}, {480, 640}, {1280, 960}}) {
        const PixelImage image = Uniform(size);
        const Analysis analysis(Photograph::FromPixels(ViewOf(image)));
        Request request;
        request.Aspects = {{1, 1}};
        const Suggestions suggestions = analysis.Suggest(request);
        ASSERT_FALSE(suggestions.Crops.empty());
        const int32_t side = std::min(size.Width, size.Height);
        EXPECT_EQ(suggestions.Crops[0].Rect,
                  (PixelRect{(size.Width - side) / 2, (size.Height - side) / 2, side, side}));
    }
}

bool Holds(const PixelRect& crop, const PixelRect& rect)
{
    return crop.X <= rect.X && rect.X + rect.Width <= crop.X + crop.Width && crop.Y <= rect.Y &&
           rect.Y + rect.Height <= crop.Y + crop.Height;
}

Suggestions SuggestAround(const std::vector<PixelRect>& faces, const Ratio& ratio)
{
    const PixelImage image = BlockOnARamp({640, 480});
    RegionOptions regions;
    for (const PixelRect& face : faces)
        regions.Regions.push_back(
            {face, RegionKind::Face, RegionSource::File, 1.0, "", WishKind::Keep});
    Request request;
    request.Aspects = {ratio};
    return Analysis(Photograph::FromPixels(ViewOf(image)), regions).Suggest(request);
}

// The largest crop of 9:16 is 270 wide, and the lattice has one every 53 pixels.
TEST(Analysis, ACropMovesOffTheLatticeToHoldAFace)
{
    for (int32_t x = 20; x <= 380; x += 24) {
        const PixelRect face{x, 60, 210, 210};
        const Suggestions suggestions = SuggestAround({face}, {9, 16});
        ASSERT_FALSE(suggestions.Crops.empty());
        EXPECT_TRUE(Holds(suggestions.Crops[0].Rect, face)) << x;
    }
}

// 16:9 crops are at most 360 high; the head takes 1.6 times the face.
TEST(Analysis, WhereTheHeadDoesNotFitTheFaceIsStillUncut)
{
    for (int32_t y = 20; y <= 160; y += 20) {
        const PixelRect face{200, y, 290, 290};
        const Suggestions suggestions = SuggestAround({face}, {16, 9});
        ASSERT_FALSE(suggestions.Crops.empty());
        EXPECT_TRUE(Holds(suggestions.Crops[0].Rect, face)) << y;
    }
}

TEST(Analysis, TwoFacesWhoseHeadsDoNotFitTogetherAreBothUncut)
{
    for (int32_t x = 10; x <= 270; x += 20) {
        const PixelRect left{x, 150, 110, 110};
        const PixelRect right{x + 230, 180, 110, 110}; // 340 in all; a 4:5 crop has 384
        const Suggestions suggestions = SuggestAround({left, right}, {4, 5});
        ASSERT_FALSE(suggestions.Crops.empty());
        EXPECT_TRUE(Holds(suggestions.Crops[0].Rect, left)) << x;
        EXPECT_TRUE(Holds(suggestions.Crops[0].Rect, right)) << x;
    }
}

constexpr RankBy kRankings[] = {RankBy::People, RankBy::Composition, RankBy::Coverage,
                                RankBy::Border, RankBy::Peak,        RankBy::CentrePeak,
                                RankBy::Engine};

// Some of the crops moved to hold a face would break a wish that the lattice crops meet.
TEST(Analysis, NoCropBreaksAHardWishToHoldAFace)
{
    const PixelImage image = BlockOnARamp({640, 480});
    RegionOptions regions;
    regions.Regions = {
        {{300, 180, 80, 80}, RegionKind::Face, RegionSource::File, 1.0, "", WishKind::Keep}};
    const Analysis analysis(Photograph::FromPixels(ViewOf(image)), regions);
    const std::vector<Wish> wishes = {{WishKind::MustAvoid, {410, 100, 20, 200}},
                                      {WishKind::MustAvoid, {250, 100, 20, 200}},
                                      {WishKind::MustAvoid, {200, 290, 200, 20}},
                                      {WishKind::MustKeep, {60, 60, 30, 30}},
                                      {WishKind::MustKeep, {560, 400, 30, 30}}};
    for (const Wish& wish : wishes)
        for (const RankBy ranking : kRankings) {
            SCOPED_TRACE(testing::Message() << NameOf(wish.Kind) << " at " << wish.Rect.X
                                            << ", ranking " << static_cast<int>(ranking));
            Request request;
            request.Aspects = {{1, 1}, {3, 4}};
            request.Top = 10000;
            request.Ranking = ranking;
            request.Wishes = {wish};
            const std::vector<Crop> crops = analysis.Suggest(request).Crops;
            ASSERT_FALSE(crops.empty());
            for (const Crop& crop : crops)
                EXPECT_TRUE(IsMet(wish, crop.Rect)) << crop.Rect.X << ", " << crop.Rect.Y;
        }
}

// A request has one set of candidates; the ranking only orders them.
TEST(Analysis, EveryRankingChoosesFromTheSameCandidates)
{
    const Analysis analysis = AnalysisOfABlock();
    std::vector<Request> requests(4);
    requests[0].Size = PixelSize{300, 200};
    requests[1].Aspects = {{1, 1}, {16, 9}};
    requests[2].Scales = {0.6, 0.9};
    requests[3].Wishes = {{WishKind::MustKeep, {120, 90, 100, 80}}};
    for (size_t i = 0; i < requests.size(); ++i) {
        SCOPED_TRACE(i);
        requests[i].Top = 10000;
        requests[i].Ranking = RankBy::Coverage;
        const std::vector<Crop> all = analysis.Suggest(requests[i]).Crops;
        for (const RankBy ranking : kRankings) {
            SCOPED_TRACE(static_cast<int>(ranking));
            requests[i].Ranking = ranking;
            requests[i].Top = 12;
            const std::vector<Crop> best = analysis.Suggest(requests[i]).Crops;
            EXPECT_EQ(best.size(), 12U);
            for (const Crop& crop : best)
                EXPECT_TRUE(std::any_of(all.begin(), all.end(),
                                        [&crop](const Crop& other) {
                                            return other.Rect == crop.Rect &&
                                                   other.Aspect == crop.Aspect &&
                                                   other.Scores.Coverage == crop.Scores.Coverage;
                                        }))
                    << crop.Rect.X << ", " << crop.Rect.Y << " " << crop.Aspect.Text();
        }
    }
}

TEST(Analysis, RejectsAnInconsistentWorkingPicture)
{
    const WorkingPicture good = AnalysisOfABlock().Picture();
    EXPECT_NO_THROW(Analysis{good});
    const auto refused = [&good](const auto& spoil) {
        WorkingPicture bad = good;
        spoil(bad);
        EXPECT_THROW(Analysis{bad}, PhotoError);
    };
    refused([](WorkingPicture& p) { p.Photo = {0, 0}; });
    refused([](WorkingPicture& p) { p.Photo = {500, 800}; });
    refused([](WorkingPicture& p) { p.Pixels.Bytes.pop_back(); });
    refused([](WorkingPicture& p) { p.Pixels.Channels = 1; });
    refused([](WorkingPicture& p) { p.Pixels.Size = {320, 200}; });
}

TEST(Analysis, GivesTheMapsByName)
{
    const std::vector<Map> maps = AnalysisOfABlock().Maps();
    ASSERT_EQ(maps.size(), 10U);
    for (const Map& map : maps) {
        SCOPED_TRACE(map.Name);
        EXPECT_EQ(map.Size, (PixelSize{640, 400}));
        EXPECT_EQ(map.Values.size(), 640U * 400);
    }
    EXPECT_EQ(maps[0].Name, "ContrastMap");
    EXPECT_EQ(maps[5].Name, "EdgeMap");
}

TEST(GreyOf, StretchesToTheMapsOwnMaximum)
{
    const PixelImage grey = GreyOf({"x", {4, 1}, {0.0F, 0.25F, 0.5F, 0.125F}});
    EXPECT_EQ(grey.Size, (PixelSize{4, 1}));
    EXPECT_EQ(grey.Channels, 1);
    EXPECT_EQ(grey.Bytes, (std::vector<uint8_t>{0, 128, 255, 64}));
    EXPECT_EQ(GreyOf({"x", {2, 1}, {0.0F, 0.0F}}).Bytes, (std::vector<uint8_t>{0, 0}));
    EXPECT_TRUE(GreyOf({"x", {0, 0}, {}}).Bytes.empty());
}

TEST(Analysis, AcceptsTheSmallestAndLargestValuesOfARequest)
{
    const Analysis analysis = AnalysisOfABlock();
    const auto accepted = [&analysis](const auto& change) {
        Request request;
        change(request);
        EXPECT_NO_THROW(analysis.Suggest(request));
    };
    accepted([](Request& r) { r.Scales = {0.01}; });
    accepted([](Request& r) { r.Scales = {1.0}; });
    accepted([](Request& r) { r.Top = 1; });
    accepted([](Request& r) { r.Density = 1; });
    accepted([](Request& r) { r.Aspects = {{1, 1}}; });
    accepted([](Request& r) { r.Size = PixelSize{1, 1}; });
    accepted([](Request& r) { r.Size = PixelSize{800, 500}; });
    accepted([](Request& r) { r.Wishes = {{WishKind::Keep, {799, 499, 1, 1}}}; });
    accepted([](Request& r) { r.Weights = {0, 0, 0, 0, 0}; });
}

// In small crops, one pixel more or less decides between ratios that are close to each other.
TEST(Analysis, ServesSmallCropsOfEachOfSeveralCloseRatios)
{
    const PixelImage image = BlockOnARamp({640, 400});
    const Analysis analysis(Photograph::FromPixels(ViewOf(image)));
    Request request;
    request.Aspects = {{24, 25}, {1, 1}, {25, 24}};
    request.Scales = {0.1, 0.12};
    request.Ranking = RankBy::Engine;
    request.Top = 60;
    const Suggestions suggestions = analysis.Suggest(request);
    for (const Ratio& ratio : request.Aspects) {
        SCOPED_TRACE(ratio.Text());
        const auto isOf = [&ratio](const Crop& crop) { return crop.Aspect == ratio; };
        EXPECT_GE(std::count_if(suggestions.Crops.begin(), suggestions.Crops.end(), isOf), 5);
    }
}

} // namespace
} // namespace vistaTrim::photo
