// Rankings, shapes, sizes, wishes and regions together, in photographs of every size: what holds
// for every crop served, and that the crops and their explanation agree.
#include "vistaTrimPhoto/analysis.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "ranking/choice_model.h"
#include "ranking/crop_utility.h"
#include "ranking/input_grid.h"

namespace vistaTrim::photo {
namespace {

constexpr RankBy kRankings[] = {RankBy::People, RankBy::Composition, RankBy::Coverage,
                                RankBy::Border, RankBy::Peak,        RankBy::CentrePeak,
                                RankBy::Engine};

// Uneven stripes and a bright block: no two places are alike.
WorkingPicture PictureOf(PixelSize photo)
{
    WorkingPicture picture;
    picture.Photo = photo;
    picture.Pixels.Size = WorkingSize(photo);
    const PixelSize size = picture.Pixels.Size;
    for (int32_t y = 0; y < size.Height; ++y)
        for (int32_t x = 0; x < size.Width; ++x) {
            const bool block = 5 * x > size.Width && 3 * x < size.Width && 4 * y > size.Height &&
                               2 * y < size.Height;
            for (int32_t c = 0; c < 3; ++c)
                picture.Pixels.Bytes.push_back(static_cast<uint8_t>(
                    block ? 250 - 90 * c : 40 + (x * x / 97 + 2 * y) % 89 / 2 + 5 * c));
        }
    return picture;
}

WorkingPicture PlainPicture(PixelSize photo)
{
    WorkingPicture picture = PictureOf(photo);
    std::fill(picture.Pixels.Bytes.begin(), picture.Pixels.Bytes.end(), uint8_t{90});
    return picture;
}

Analysis AnalysisWith(const WorkingPicture& picture, const std::vector<FoundRegion>& regions = {})
{
    RegionOptions options;
    options.Faces = FaceSearch::Off;
    options.Regions = regions;
    return Analysis(picture, options);
}

PixelRect Shares(PixelSize photo, double x, double y, double width, double height)
{
    const auto pixels = [](double share, int32_t side) {
        return std::max(1, static_cast<int32_t>(std::lround(share * side)));
    };
    return {pixels(x, photo.Width), pixels(y, photo.Height), pixels(width, photo.Width),
            pixels(height, photo.Height)};
}

FoundRegion Region(const PixelRect& rect, RegionKind kind, std::optional<WishKind> wish)
{
    return {rect, kind, RegionSource::File, 1.0, "", wish};
}

// Counts column by column and row by row, so that it shares no shortcut with the code.
int64_t SharedPixels(const PixelRect& a, const PixelRect& b)
{
    int64_t columns = 0;
    int64_t rows = 0;
    for (int32_t x = a.X; x < a.X + a.Width; ++x)
        columns += x >= b.X && x < b.X + b.Width ? 1 : 0;
    for (int32_t y = a.Y; y < a.Y + a.Height; ++y)
        rows += y >= b.Y && y < b.Y + b.Height ? 1 : 0;
    return columns * rows;
}

int64_t PixelsOf(const PixelRect& rect)
{
    return int64_t{rect.Width} * rect.Height;
}

bool Meets(const Wish& wish, const PixelRect& crop)
{
    const int64_t shared = SharedPixels(wish.Rect, crop);
    const bool keep = wish.Kind == WishKind::Keep || wish.Kind == WishKind::MustKeep;
    return keep ? shared == PixelsOf(wish.Rect) : shared == 0;
}

bool IsHardWish(const Wish& wish)
{
    return wish.Kind == WishKind::MustKeep || wish.Kind == WishKind::MustAvoid;
}

using Place = std::tuple<int32_t, int32_t, int32_t, int32_t>;

Place PlaceOf(const PixelRect& rect)
{
    return {rect.X, rect.Y, rect.Width, rect.Height};
}

std::set<Place> PlacesOf(const std::vector<Crop>& crops)
{
    std::set<Place> places;
    for (const Crop& crop : crops)
        places.insert(PlaceOf(crop.Rect));
    return places;
}

// A crop has its ratio to within a working pixel or 2 % of a side, plus the engine's own rounding.
void ExpectShape(const Crop& crop, const Request& request, PixelSize photo)
{
    if (request.Size) {
        EXPECT_EQ((PixelSize{crop.Rect.Width, crop.Rect.Height}), *request.Size);
        return;
    }
    if (!request.Aspects.empty()) {
        EXPECT_TRUE(std::find(request.Aspects.begin(), request.Aspects.end(), crop.Aspect) !=
                    request.Aspects.end());
    }
    const double step = std::max(photo.Width, photo.Height) / 640.0;
    const double width = crop.Rect.Height * crop.Aspect.Value();
    EXPECT_LE(std::abs(crop.Rect.Width - width),
              std::max(1.0, 2 * step * std::max(1.0, crop.Aspect.Value())) + 0.02 * width);
}

void ExpectExplained(const Suggestions& answer, const Request& request)
{
    ASSERT_TRUE(answer.Explained);
    const Explanation& explanation = *answer.Explained;
    ASSERT_GE(explanation.Wishes.size(), request.Wishes.size());
    ASSERT_EQ(explanation.WishRegions.size(), explanation.Wishes.size());
    ASSERT_EQ(explanation.MetBy.size(), explanation.Wishes.size());
    size_t ofRegions = 0;
    for (size_t i = 0; i < explanation.Wishes.size(); ++i) {
        EXPECT_EQ(explanation.WishRegions[i].has_value(), i >= request.Wishes.size());
        if (!explanation.WishRegions[i])
            continue;
        ++ofRegions;
        ASSERT_LT(*explanation.WishRegions[i], answer.Regions.size());
        const FoundRegion& region = answer.Regions[*explanation.WishRegions[i]];
        EXPECT_EQ(region.Wish, explanation.Wishes[i].Kind);
        EXPECT_EQ(SharedPixels(region.Rect, explanation.Wishes[i].Rect), PixelsOf(region.Rect));
    }
    EXPECT_EQ(ofRegions, static_cast<size_t>(std::count_if(
                             answer.Regions.begin(), answer.Regions.end(),
                             [](const FoundRegion& region) { return region.Wish.has_value(); })));
    for (const Crop& crop : answer.Crops) {
        ASSERT_TRUE(crop.Explained);
        for (size_t i = 0; i < explanation.Wishes.size(); ++i)
            EXPECT_EQ(crop.Explained->WishesMet.at(i), Meets(explanation.Wishes[i], crop.Rect))
                << NameOf(explanation.Wishes[i].Kind) << " " << i;
    }
}

void ExpectServed(const Suggestions& answer, const Request& request, PixelSize photo)
{
    ASSERT_FALSE(answer.Crops.empty());
    EXPECT_LE(answer.Crops.size(), static_cast<size_t>(request.Top));
    EXPECT_EQ(PlacesOf(answer.Crops).size(), answer.Crops.size()); // none twice
    for (const Crop& crop : answer.Crops) {
        SCOPED_TRACE(testing::Message() << crop.Rect.Width << " x " << crop.Rect.Height << " at "
                                        << crop.Rect.X << "," << crop.Rect.Y);
        EXPECT_EQ(SharedPixels(crop.Rect, {0, 0, photo.Width, photo.Height}), PixelsOf(crop.Rect));
        for (const Wish& wish : answer.Explained->Wishes)
            EXPECT_TRUE(!IsHardWish(wish) || Meets(wish, crop.Rect)) << NameOf(wish.Kind);
        EXPECT_GT(crop.Scores.Merged, 0.0);
        EXPECT_LE(crop.Scores.Merged, 1.0);
        EXPECT_GT(crop.Scores.Coverage, 0.0); // moved crops are measured too
        EXPECT_GE(crop.ExpectedOverlap, 0.0);
        EXPECT_LE(crop.ExpectedOverlap, 1.0);
        ExpectShape(crop, request, photo);
    }
}

TEST(RequestCombinations, EveryCropIsOneThatTheRequestAllows)
{
    for (const PixelSize photo : {PixelSize{640, 400}, {97, 61}, {2011, 3001}, {12000, 2600}}) {
        // The first region has no wish, so that a wish and its region have different indices.
        const Analysis analysis = AnalysisWith(
            PictureOf(photo),
            {Region(Shares(photo, 0.6, 0.6, 0.1, 0.1), RegionKind::Other, std::nullopt),
             Region(Shares(photo, 0.4, 0.35, 0.1, 0.15), RegionKind::Face, WishKind::Keep),
             Region(Shares(photo, 0.92, 0.3, 0.03, 0.1), RegionKind::Subject, WishKind::MustAvoid),
             Region(Shares(photo, 0.5, 0.2, 0.03, 0.05), RegionKind::Animal, WishKind::MustKeep),
             Region(Shares(photo, 0.3, 0.8, 0.1, 0.1), RegionKind::Other, WishKind::Avoid)});
        std::vector<Request> shapes(3);
        shapes[1].Aspects = {{1, 1}, {16, 9}, {4, 5}};
        shapes[2].Size = PixelSize{photo.Width * 2 / 3, photo.Height * 2 / 3};
        for (size_t shape = 0; shape < shapes.size(); ++shape)
            for (const RankBy ranking : kRankings) {
                SCOPED_TRACE(testing::Message()
                             << photo.Width << " x " << photo.Height << ", shape " << shape
                             << ", ranking " << static_cast<int>(ranking));
                Request request = shapes[shape];
                request.Ranking = ranking;
                request.Top = 7;
                request.Explain = true;
                request.Wishes = {{WishKind::MustKeep, Shares(photo, 0.55, 0.5, 0.02, 0.02)},
                                  {WishKind::Keep, Shares(photo, 0.25, 0.3, 0.05, 0.05)},
                                  {WishKind::MustAvoid, Shares(photo, 0.1, 0.94, 0.5, 0.04)},
                                  {WishKind::Avoid, Shares(photo, 0.03, 0.03, 0.05, 0.05)}};
                const Suggestions answer = analysis.Suggest(request);
                ExpectExplained(answer, request);
                ExpectServed(answer, request, photo);
            }
    }
}

// With an exact size, in a photograph of the working size, each candidate is one crop, so that the
// figures of the explanation can be recounted.
TEST(RequestCombinations, TheExplanationCountsTheCandidates)
{
    const Analysis analysis = AnalysisWith(PictureOf({640, 400}));
    Request request;
    request.Top = std::numeric_limits<int32_t>::max();
    request.Ranking = RankBy::Coverage;
    request.Explain = true;
    request.Size = PixelSize{400, 250};
    request.Wishes = {{WishKind::Avoid, {0, 0, 90, 60}},
                      {WishKind::Keep, {200, 90, 250, 130}},
                      {WishKind::Keep, {580, 0, 200, 60}}, // ends beyond the photograph
                      {WishKind::Avoid, {300, 350, 50, 50}}};
    size_t fewer = 0;
    for (const uint32_t density : {7U, 16U}) {
        request.Density = density;
        const Suggestions soft = analysis.Suggest(request);
        EXPECT_GT(soft.Crops.size(), fewer);
        fewer = soft.Crops.size();
        EXPECT_EQ(soft.Explained->Candidates, static_cast<int64_t>(soft.Crops.size()));
        EXPECT_EQ(soft.Explained->Passing, soft.Explained->Candidates);
        EXPECT_EQ(soft.Explained->Why, Shortfall::FewCandidates);
        const std::vector<Wish>& wishes = soft.Explained->Wishes;
        ASSERT_EQ(wishes.size(), 4U);
        EXPECT_EQ(wishes[2].Rect, (PixelRect{580, 0, 60, 60}));
        for (size_t i = 0; i < wishes.size(); ++i) {
            const auto meets = [&](const Crop& crop) { return Meets(wishes[i], crop.Rect); };
            const auto count = std::count_if(soft.Crops.begin(), soft.Crops.end(), meets);
            EXPECT_EQ(soft.Explained->MetBy[i], count);
            EXPECT_GT(count, 0);
        }
        // What a hard wish leaves are the crops that met it when it was soft.
        for (const std::vector<size_t>& hard :
             {std::vector<size_t>{0}, {1}, {2}, {3}, {0, 1}, {2, 3}, {0, 3}}) {
            Request strict = request;
            for (const size_t i : hard)
                strict.Wishes[i].Kind =
                    WantsInside(strict.Wishes[i].Kind) ? WishKind::MustKeep : WishKind::MustAvoid;
            std::vector<Crop> expected;
            for (const Crop& crop : soft.Crops)
                if (std::all_of(hard.begin(), hard.end(),
                                [&](size_t i) { return Meets(wishes[i], crop.Rect); }))
                    expected.push_back(crop);
            const Suggestions left = analysis.Suggest(strict);
            EXPECT_EQ(PlacesOf(left.Crops), PlacesOf(expected));
            EXPECT_EQ(left.Explained->Candidates, soft.Explained->Candidates);
            EXPECT_EQ(left.Explained->Passing, static_cast<int64_t>(expected.size()));
            EXPECT_EQ(left.Explained->MetBy, soft.Explained->MetBy);
            // Nothing is missing if exactly as many crops are requested as there are.
            strict.Top = static_cast<int32_t>(expected.size());
            EXPECT_EQ(analysis.Suggest(strict).Explained->Why, Shortfall::None);
            strict.Top += 1;
            EXPECT_EQ(analysis.Suggest(strict).Explained->Why, Shortfall::FewCandidates);
        }
    }
}

// In a large photograph, a size can lie between two sizes of the working picture. A crop that seems
// to hold both regions there would be too large; it is not served at another size.
TEST(RequestCombinations, ASizeIsNeverChangedForAWish)
{
    const PixelSize photo{6400, 4000};
    const Analysis analysis = AnalysisWith(PictureOf(photo));
    Request request;
    request.Density = 200;
    request.Explain = true;
    size_t served = 0;
    size_t missed = 0;
    for (const int32_t wide : {1011, 1015, 1016, 1019, 1025}) {
        request.Size = PixelSize{wide, wide};
        // 1020 columns from the first to the last.
        request.Wishes = {{WishKind::MustKeep, {1000, 1500, 3, 3}},
                          {WishKind::MustKeep, {2017, 1500, 3, 3}}};
        const Suggestions answer = analysis.Suggest(request);
        for (const Crop& crop : answer.Crops) {
            EXPECT_EQ((PixelSize{crop.Rect.Width, crop.Rect.Height}), *request.Size);
            for (const Wish& wish : request.Wishes)
                EXPECT_TRUE(Meets(wish, crop.Rect));
        }
        if (wide < 1020) {
            EXPECT_TRUE(answer.Crops.empty());
            const bool seemed = answer.Explained->Passing > 0;
            EXPECT_EQ(answer.Explained->Why,
                      seemed ? Shortfall::SizeMissesWishes : Shortfall::HardWishesTogether);
            missed += seemed ? 1 : 0;
        }
        served += answer.Crops.empty() ? 0 : 1;
    }
    EXPECT_GT(missed, 0U);
    EXPECT_GT(served, 0U);
}

// Each round takes the next crop of each ratio, those that meet more wishes first.
TEST(RequestCombinations, SeveralRatiosTakeTurnsByTheWishesTheyMeet)
{
    const Analysis analysis = AnalysisWith(PictureOf({640, 400}));
    Request request;
    request.Aspects = {{1, 1}, {2, 1}, {1, 2}};
    request.Scales = {0.5, 0.75, 1.0}; // whole pixels for each ratio
    request.Density = 9;
    request.Wishes = {{WishKind::Keep, {150, 150, 250, 100}}, {WishKind::Avoid, {560, 0, 80, 150}}};
    size_t changes = 0;
    for (const RankBy ranking : kRankings) {
        if (ranking == RankBy::Engine)
            continue; // it ranks all ratios together
        request.Ranking = ranking;
        request.Top = 10000;
        std::vector<std::vector<PixelRect>> lines;
        for (const Ratio& ratio : request.Aspects) {
            Request alone = request;
            alone.Aspects = {ratio};
            lines.emplace_back();
            for (const Crop& crop : analysis.Suggest(alone).Crops)
                lines.back().push_back(crop.Rect);
        }
        std::vector<PixelRect> expected;
        for (size_t round = 0; expected.size() < 60; ++round)
            for (const int64_t met : {2, 1, 0})
                for (size_t i = 0; i < lines.size(); ++i) {
                    if (round >= lines[i].size() ||
                        met != std::count_if(
                                   request.Wishes.begin(), request.Wishes.end(),
                                   [&](const Wish& wish) { return Meets(wish, lines[i][round]); }))
                        continue;
                    changes += expected.size() % 3 != i ? 1 : 0;
                    expected.push_back(lines[i][round]);
                }
        for (const int32_t top : {1, 2, 5, 50}) {
            request.Top = top;
            const std::vector<Crop> crops = analysis.Suggest(request).Crops;
            ASSERT_EQ(crops.size(), static_cast<size_t>(top));
            for (size_t i = 0; i < crops.size(); ++i)
                EXPECT_EQ(PlaceOf(crops[i].Rect), PlaceOf(expected[i]))
                    << i << ", ranking " << static_cast<int>(ranking);
        }
    }
    EXPECT_GT(changes, 0U); // wishes did change the order of the ratios
}

// Whatever the ranking, the user's wishes come first.
TEST(RequestCombinations, CropsThatMeetMoreWishesComeFirst)
{
    const Analysis analysis = AnalysisWith(PictureOf({640, 400}));
    const std::vector<Wish> wishes = {{WishKind::Avoid, {0, 0, 90, 60}},
                                      {WishKind::Keep, {200, 90, 250, 130}},
                                      {WishKind::Avoid, {560, 330, 80, 70}},
                                      {WishKind::Keep, {20, 100, 60, 60}}};
    for (const RankBy ranking : kRankings) {
        if (ranking == RankBy::Engine)
            continue; // it weighs wishes along with the measures
        for (const std::vector<size_t>& some :
             {std::vector<size_t>{0}, {1}, {2}, {3}, {0, 1}, {1, 3}, {0, 1, 2, 3}}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(ranking) << ", " << some.size()
                                            << " from " << some[0]);
            Request request;
            request.Size = PixelSize{400, 250};
            request.Top = 10000;
            request.Ranking = ranking;
            for (const size_t i : some)
                request.Wishes.push_back(wishes[i]);
            std::vector<int64_t> met;
            for (const Crop& crop : analysis.Suggest(request).Crops)
                met.push_back(
                    std::count_if(request.Wishes.begin(), request.Wishes.end(),
                                  [&crop](const Wish& wish) { return Meets(wish, crop.Rect); }));
            EXPECT_TRUE(std::is_sorted(met.rbegin(), met.rend()));
            EXPECT_GT(met.front(), met.back());
        }
    }
}

// A score of 1 means that all wishes are met, whether they come from the request or from regions.
TEST(RequestCombinations, TheScoreForWishesIsOneIfAllAreMet)
{
    const WorkingPicture picture = PictureOf({640, 400});
    for (const WishKind kind : {WishKind::Keep, WishKind::Avoid})
        for (const bool isFound : {false, true}) {
            SCOPED_TRACE(testing::Message() << NameOf(kind) << (isFound ? " found" : " named"));
            const Wish wish{kind, {140, 100, 80, 60}};
            Request request;
            request.Size = PixelSize{400, 250};
            request.Top = 10000;
            std::vector<FoundRegion> regions;
            if (isFound)
                regions = {Region(wish.Rect, RegionKind::Subject, kind)};
            else
                request.Wishes = {wish};
            std::set<bool> seen;
            for (const Crop& crop : AnalysisWith(picture, regions).Suggest(request).Crops) {
                EXPECT_EQ(crop.Scores.Roi == 1.0, Meets(wish, crop.Rect)) << crop.Scores.Roi;
                seen.insert(crop.Scores.Roi == 1.0);
            }
            EXPECT_EQ(seen.size(), 2U);
        }
}

// A model without preferences: crops differ only by the wishes that they miss.
RankingModel NoPreference()
{
    auto model = std::make_shared<ChoiceModel>();
    model->InputMeans.assign(kNumInputs, 0.0F);
    model->InputScales.assign(kNumInputs, 1.0F);
    ConvolutionLayer layer;
    layer.Inputs = kNumInputs;
    layer.Outputs = kNumCropParts;
    layer.Weights.assign(size_t{kNumCropParts} * kNumInputs * 9, 0.0F);
    layer.Biases.assign(kNumCropParts, 0.0F);
    model->Layers = {layer};
    model->FeatureWeights.assign(kNumCropFeatures, 0.0);
    return model;
}

// A region that no crop can hold or avoid completely is held or avoided as far as possible.
TEST(RequestCombinations, AWishThatNoCropMeetsIsMetInPart)
{
    const Analysis analysis = AnalysisWith(PictureOf({640, 400}));
    Request request;
    request.Aspects = {{4, 3}};
    request.Scales = {0.6}; // 320 x 240
    request.Density = 12;
    request.Model = NoPreference();
    for (const Wish& wish : {Wish{WishKind::Keep, {330, 0, 310, 400}},
                             {WishKind::Keep, {0, 0, 310, 400}},
                             {WishKind::Avoid, {240, 0, 160, 400}},
                             {WishKind::Avoid, {100, 180, 500, 200}}}) {
        request.Wishes = {wish};
        request.Top = 10000;
        std::vector<int64_t> shared;
        for (const Crop& crop : analysis.Suggest(request).Crops)
            shared.push_back(SharedPixels(wish.Rect, crop.Rect));
        const auto [least, most] = std::minmax_element(shared.begin(), shared.end());
        ASSERT_LT(*least, *most);
        // The first crop overlaps all good ones, so it need not be the very best.
        const double share =
            static_cast<double>(shared.front() - *least) / static_cast<double>(*most - *least);
        EXPECT_NEAR(share, WantsInside(wish.Kind) ? 1.0 : 0.0, 0.2)
            << NameOf(wish.Kind) << " " << wish.Rect.X;
    }
}

// If no crop of the ratio can hold both faces, the one with the higher confidence is held. Only
// confidences of the face finder count; those of a file are on a scale of their own.
TEST(RequestCombinations, OfTwoFacesTheMoreConfidentOneCounts)
{
    const WorkingPicture picture = PictureOf({640, 400});
    for (const RegionSource source :
         {RegionSource::FaceFinder, RegionSource::File, RegionSource::Metadata}) {
        std::vector<Place> best;
        for (const bool leftIsSure : {true, false}) {
            std::vector<FoundRegion> faces = {
                Region({60, 150, 60, 60}, RegionKind::Face, WishKind::Keep),
                Region({520, 150, 60, 60}, RegionKind::Face, WishKind::Keep)};
            for (FoundRegion& face : faces)
                face.Source = source;
            faces[leftIsSure ? 0 : 1].Confidence = 0.95;
            faces[leftIsSure ? 1 : 0].Confidence = 0.3;
            Request request;
            request.Aspects = {{1, 1}};
            request.Model = NoPreference();
            const Crop crop = AnalysisWith(picture, faces).Suggest(request).Crops.at(0);
            best.push_back(PlaceOf(crop.Rect));
            if (source == RegionSource::FaceFinder) {
                EXPECT_EQ(SharedPixels(faces[leftIsSure ? 0 : 1].Rect, crop.Rect), 3600);
                EXPECT_EQ(SharedPixels(faces[leftIsSure ? 1 : 0].Rect, crop.Rect), 0);
            }
        }
        EXPECT_EQ(best[0] == best[1], source != RegionSource::FaceFinder);
    }
}

// The pixels of a large photograph are finer than working pixels, and the exact ratio takes some of
// them away, but never from a face.
TEST(RequestCombinations, FacesOfLargePhotographsAreUncut)
{
    const PixelSize photo{6007, 4003};
    const WorkingPicture picture = PictureOf(photo);
    for (const Ratio& ratio : {Ratio{16, 9}, {9, 16}, {1, 1}, {64, 27}})
        for (int32_t step = 0; step < 6; ++step) {
            // As large as the crop just allows without the whole head.
            const double high = ratio.Value() >= 1 ? 6007 / ratio.Value() : 4003;
            const double wide = ratio.Value() >= 1 ? 6007 : 4003 * ratio.Value();
            const auto side = static_cast<int32_t>(std::min({high, wide, 4003.0}) / 1.26);
            const PixelRect face{(6007 - side) * step / 6 + 131 * step % 97,
                                 (4003 - side) / 2 + 37 * step, side, side};
            const PixelRect core = ClippedTo({face.X - side / 10, face.Y - side / 10,
                                              side + side / 10 * 2, side + side / 10 * 2},
                                             photo);
            Request request;
            request.Aspects = {ratio};
            request.Top = 3;
            const Analysis analysis =
                AnalysisWith(picture, {Region(face, RegionKind::Face, WishKind::Keep)});
            const Crop crop = analysis.Suggest(request).Crops.at(0);
            EXPECT_EQ(SharedPixels(core, crop.Rect), PixelsOf(core))
                << ratio.Text() << " " << face.X << "," << face.Y << " " << side << ": "
                << crop.Rect.X << "," << crop.Rect.Y << " " << crop.Rect.Width << " x "
                << crop.Rect.Height;
        }
}

// Candidates move to hold a region to keep, and for nothing else.
TEST(RequestCombinations, OnlyRegionsToHoldAddCandidates)
{
    const WorkingPicture picture = PictureOf({640, 400});
    const PixelRect place{311, 203, 37, 29};
    for (const RankBy ranking : {RankBy::People, RankBy::Coverage, RankBy::Peak}) {
        Request request;
        request.Aspects = {{1, 1}};
        request.Top = 10000;
        request.Ranking = ranking;
        const auto served = [&](std::optional<WishKind> wish) {
            return PlacesOf(AnalysisWith(picture, {Region(place, RegionKind::Subject, wish)})
                                .Suggest(request)
                                .Crops);
        };
        const std::set<Place> all = served(std::nullopt);
        EXPECT_EQ(served(WishKind::Avoid), all);
        const std::set<Place> more = served(WishKind::Keep);
        EXPECT_GT(more.size(), all.size());
        EXPECT_TRUE(std::includes(more.begin(), more.end(), all.begin(), all.end()));
        for (const WishKind hard : {WishKind::MustKeep, WishKind::MustAvoid}) {
            const std::set<Place> left = served(hard);
            EXPECT_LT(left.size(), all.size());
            EXPECT_TRUE(std::includes(all.begin(), all.end(), left.begin(), left.end()));
        }
    }
}

// A crop's scores depend on its place alone: whatever was requested, they are the same.
TEST(RequestCombinations, ACropHasOneSetOfScores)
{
    const Analysis analysis = AnalysisWith(
        PictureOf({640, 400}), {Region({311, 203, 37, 29}, RegionKind::Subject, WishKind::Keep)});
    std::vector<Request> requests(5);
    requests[0].Size = PixelSize{400, 250};
    requests[1].Aspects = {{8, 5}};
    requests[1].Scales = {0.625};
    requests[2] = requests[0];
    requests[2].Wishes = {{WishKind::Keep, {300, 200, 50, 50}}};
    requests[3] = requests[0];
    requests[3].Aspects = {{1, 3}, {5, 1}}; // the size takes precedence
    requests[4] = requests[0];
    requests[4].Model = NoPreference();
    std::map<Place, Crop> known;
    size_t again = 0;
    for (const Request& base : requests)
        for (const RankBy ranking : kRankings) {
            Request request = base;
            request.Ranking = ranking;
            request.Top = 10000;
            for (const Crop& crop : analysis.Suggest(request).Crops) {
                EXPECT_EQ((PixelSize{crop.Rect.Width, crop.Rect.Height}), (PixelSize{400, 250}));
                EXPECT_EQ(crop.Aspect, (Ratio{8, 5}));
                const auto [place, isNew] = known.emplace(PlaceOf(crop.Rect), crop);
                again += isNew ? 0 : 1;
                for (size_t i = 0; i < kNumWeighed; ++i)
                    EXPECT_EQ(crop.Scores.*kMeasures[i].Value,
                              place->second.Scores.*kMeasures[i].Value)
                        << kMeasures[i].Name;
                EXPECT_EQ(crop.CoversContent, place->second.CoversContent);
            }
        }
    EXPECT_GT(known.size(), 30U);
    EXPECT_GT(again, 10 * known.size());
    const auto covers = std::count_if(known.begin(), known.end(),
                                      [](const auto& entry) { return entry.second.CoversContent; });
    EXPECT_GT(covers, 0);
    EXPECT_LT(static_cast<size_t>(covers), known.size());
}

// What a person would choose has nothing to do with how the crops are ranked.
TEST(RequestCombinations, TheExpectedOverlapDoesNotDependOnTheRanking)
{
    auto lower = std::make_shared<ChoiceModel>(*NoPreference());
    lower->FeatureWeights[2 * kNumModelMeasures + 2] = 9; // how far below the middle
    const PixelRect place{400, 60, 90, 90};
    for (const RankingModel& model : {RankingModel(), RankingModel(lower)})
        for (const auto& wish :
             {std::optional<WishKind>(), std::optional(WishKind::Avoid),
              std::optional(WishKind::MustKeep), std::optional(WishKind::MustAvoid)}) {
            const Analysis analysis =
                AnalysisWith(PictureOf({640, 400}), {Region(place, RegionKind::Subject, wish)});
            Request request;
            request.Size = PixelSize{400, 250};
            request.Model = model;
            request.Top = 10000;
            std::map<Place, double> known;
            for (const RankBy ranking : kRankings) {
                request.Ranking = ranking;
                for (const Crop& crop : analysis.Suggest(request).Crops) {
                    const auto entry = known.emplace(PlaceOf(crop.Rect), crop.ExpectedOverlap);
                    // The sums are the same, but added in another order.
                    EXPECT_NEAR(crop.ExpectedOverlap, entry.first->second, 1e-9)
                        << static_cast<int>(ranking) << (wish ? NameOf(*wish) : " none");
                }
            }
            EXPECT_GE(known.size(), 10U);
        }
}

// The same picture in a photograph a hundred times as large has the same crops, a hundred times as
// large.
TEST(RequestCombinations, APhotographOfAnySizeHasTheSameCrops)
{
    const PixelSize small{640, 400};
    WorkingPicture picture = PictureOf(small);
    const std::vector<FoundRegion> regions = {
        Region({400, 150, 60, 60}, RegionKind::Face, WishKind::Keep)};
    const Analysis own = AnalysisWith(picture, regions);
    for (const int32_t times : {3, 100}) {
        picture.Photo = {small.Width * times, small.Height * times};
        const auto scaled = [times](const PixelRect& r) {
            return PixelRect{r.X * times, r.Y * times, r.Width * times, r.Height * times};
        };
        const Analysis larger = AnalysisWith(
            picture, {Region(scaled(regions[0].Rect), RegionKind::Face, WishKind::Keep)});
        for (const RankBy ranking : kRankings)
            for (const bool hasSize : {false, true}) {
                Request request;
                request.Ranking = ranking;
                request.Top = 12;
                request.Wishes = {{WishKind::Avoid, {0, 0, 50, 40}},
                                  {WishKind::MustKeep, {300, 200, 40, 40}}};
                if (hasSize)
                    request.Size = PixelSize{480, 320};
                const std::vector<Crop> crops = own.Suggest(request).Crops;
                for (Wish& wish : request.Wishes)
                    wish.Rect = scaled(wish.Rect);
                if (hasSize)
                    request.Size = PixelSize{480 * times, 320 * times};
                const std::vector<Crop> large = larger.Suggest(request).Crops;
                ASSERT_EQ(large.size(), crops.size());
                for (size_t i = 0; i < crops.size(); ++i) {
                    for (const Measure& measure : kMeasures)
                        EXPECT_EQ(large[i].Scores.*measure.Value, crops[i].Scores.*measure.Value)
                            << measure.Name;
                    EXPECT_EQ(large[i].ExpectedOverlap, crops[i].ExpectedOverlap);
                    EXPECT_EQ(large[i].Aspect, crops[i].Aspect);
                    // To make the ratio exact, a side may change by 2 %.
                    const PixelRect expected = scaled(crops[i].Rect);
                    const double tolerance =
                        hasSize ? 0 : times + 0.02 * std::max(expected.Width, expected.Height);
                    EXPECT_NEAR(large[i].Rect.X, expected.X, tolerance);
                    EXPECT_NEAR(large[i].Rect.Y, expected.Y, tolerance);
                    EXPECT_NEAR(large[i].Rect.Width, expected.Width, tolerance);
                    EXPECT_NEAR(large[i].Rect.Height, expected.Height, tolerance);
                }
            }
    }
}

// Naming a ratio twice requests nothing new.
TEST(RequestCombinations, ARatioNamedTwiceCountsOnce)
{
    const Analysis analysis = AnalysisWith(PictureOf({640, 400}));
    for (const RankBy ranking : kRankings) {
        Request once;
        once.Aspects = {{1, 1}, {3, 2}};
        once.Ranking = ranking;
        once.Explain = true;
        once.Top = 6;
        Request twice = once;
        twice.Aspects = {{1, 1}, {3, 2}, {1, 1}, {3, 2}};
        const Suggestions a = analysis.Suggest(once);
        const Suggestions b = analysis.Suggest(twice);
        EXPECT_EQ(b.Explained->Candidates, a.Explained->Candidates);
        ASSERT_EQ(b.Crops.size(), a.Crops.size());
        for (size_t i = 0; i < a.Crops.size(); ++i) {
            EXPECT_EQ(PlaceOf(b.Crops[i].Rect), PlaceOf(a.Crops[i].Rect));
            EXPECT_EQ(b.Crops[i].Scores.Merged, a.Crops[i].Scores.Merged);
        }
    }
}

// In a picture of one colour, crops are ranked by size and then by their distance from the middle,
// unless the request names a measure.
TEST(RequestCombinations, APlainPictureIsRankedBySizeAndPlace)
{
    for (const PixelSize photo : {PixelSize{640, 400}, {400, 640}}) {
        const Analysis analysis = AnalysisWith(PlainPicture(photo));
        Request request;
        request.Aspects = {{1, 1}};
        request.Scales = {0.5, 0.75, 0.9};
        request.Density = 9;
        request.Top = 10000;
        const std::vector<Crop> crops = analysis.Suggest(request).Crops;
        ASSERT_GT(crops.size(), 60U);
        // The largest size, exactly in the middle, in addition to those of the grid.
        EXPECT_EQ(PlaceOf(crops[0].Rect),
                  PlaceOf({(photo.Width - 360) / 2, (photo.Height - 360) / 2, 360, 360}));
        const auto offCentre = [&photo](const Crop& crop) {
            return std::abs(2.0 * crop.Rect.X + crop.Rect.Width - photo.Width) / photo.Width +
                   std::abs(2.0 * crop.Rect.Y + crop.Rect.Height - photo.Height) / photo.Height;
        };
        const auto ranksAbove = [&offCentre](const Crop& a, const Crop& b) {
            return PixelsOf(a.Rect) != PixelsOf(b.Rect) ? PixelsOf(a.Rect) > PixelsOf(b.Rect)
                                                        : offCentre(a) < offCentre(b) - 1e-9;
        };
        for (const Crop& a : crops)
            for (const Crop& b : crops)
                if (ranksAbove(a, b)) {
                    EXPECT_GT(a.Scores.Merged, b.Scores.Merged);
                }
    }
}

// In a picture of one colour, no measure prefers a crop: all share the first place.
TEST(RequestCombinations, AMeasureRanksCropsOfAPlainPictureEqually)
{
    const Analysis analysis = AnalysisWith(PlainPicture({640, 400}));
    for (const RankBy ranking : {RankBy::Composition, RankBy::Coverage, RankBy::Border}) {
        Request request;
        request.Aspects = {{1, 1}};
        request.Top = 10000;
        request.Ranking = ranking;
        for (const Crop& crop : analysis.Suggest(request).Crops)
            EXPECT_EQ(crop.Scores.Merged, 1.0) << static_cast<int>(ranking);
    }
}

} // namespace
} // namespace vistaTrim::photo
