#include "vistaTrimPhoto/analysis.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>
#include <string>
#include <utility>

#include "public/analysed_picture.h"
#include "ranking/engine_lists.h"
#include "ranking/serving.h"
#include "regions/find_regions.h"
#include "regions/region_wishes.h"
#include "regions/working_regions.h"
#include "suggest/engine_scores.h"
#include "suggest/explanation.h"
#include "suggest/lent_image.h"
#include "suggest/way_back.h"
#include "suggest/wished_region_list.h"
#include "vistaTrim/vistaTrim.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/stopwatch.h"

namespace vistaTrim::photo {

namespace {

struct DriverDeleter {
    void operator()(IVistaTrim* driver) const
    {
        DestroyVistaTrimObj(driver);
    }
};
using DriverHandle = std::unique_ptr<IVistaTrim, DriverDeleter>;

// The ratios that the driver's table will hold, in its order. No ratio twice: the engine
// would score its candidates twice and never serve the second set.
std::vector<Ratio> RequestedRatios(const Request& request)
{
    std::vector<Ratio> ratios;
    if (request.Size) {
        ratios.push_back(Reduced(request.Size->Width, request.Size->Height));
    } else if (!request.Aspects.empty()) {
        for (const Ratio& ratio : request.Aspects)
            if (std::find(ratios.begin(), ratios.end(), ratio) == ratios.end())
                ratios.push_back(ratio);
    } else {
        VistaTrimParameters defaults;
        defaults.SetDefaultAspectRatios();
        for (uint32_t i = 0; i < defaults.NumAspectRatios; ++i)
            ratios.push_back(RatioOfValue(defaults.AspectRatios[i].Value));
    }
    return ratios;
}

void FillParameters(const Request& request, const std::vector<Ratio>& ratios,
                    const std::vector<Wish>& wishes, const WorkingPicture& picture,
                    VistaTrimParameters& parameters)
{
    parameters.NumAspectRatios = static_cast<uint32_t>(ratios.size());
    parameters.AspectRatios = new DoubleInfo[ratios.size()];
    for (size_t i = 0; i < ratios.size(); ++i)
        parameters.AspectRatios[i] = DoubleInfo(ratios[i].Value(), true);

    const std::vector<double> scales =
        request.Scales.empty()
            ? std::vector<double>(std::begin(kDefaultScales), std::end(kDefaultScales))
            : request.Scales;
    parameters.NumCropRectScaleRatios = static_cast<uint32_t>(scales.size());
    parameters.CropRectScaleRatios = new DoubleInfo[scales.size()];
    for (size_t i = 0; i < scales.size(); ++i)
        parameters.CropRectScaleRatios[i] = DoubleInfo(scales[i], true);

    parameters.NumRectsOfInterest = static_cast<uint32_t>(wishes.size());
    parameters.RectsOfInterest = new CRectOfInterest[wishes.size()];
    for (size_t i = 0; i < wishes.size(); ++i) {
        CRectOfInterest& rect = parameters.RectsOfInterest[i];
        rect = CRectOfInterest(ToWorkingOutward(wishes[i].Rect, picture.Photo, picture.Pixels.Size),
                               false);
        rect.Kind = EngineKind(wishes[i].Kind);
    }
    parameters.NumMaxCropRectsPerSide = request.Density;
}

// The size in working pixels.
SuggestionParameters MakeEngineRequest(const Request& request, const WorkingPicture& picture)
{
    if (!request.Size)
        return SuggestionParameters(false);
    const PixelSize photo = picture.Photo;
    const double width =
        static_cast<double>(request.Size->Width) * picture.Pixels.Size.Width / photo.Width;
    const double height =
        static_cast<double>(request.Size->Height) * picture.Pixels.Size.Height / photo.Height;
    return SuggestionParameters(width, height, false);
}

// The requested ratio that the engine made the crop for. The engine rounds one side to fit the
// other, so it is the nearest one.
Ratio NearestRatio(const CInt32CropRect& crop, const std::vector<Ratio>& ratios)
{
    const double made = static_cast<double>(crop.Right - crop.Left + 1) /
                        static_cast<double>(crop.Bottom - crop.Top + 1);
    const auto off = [made](const Ratio& ratio) {
        return std::abs(std::log(made / ratio.Value()));
    };
    return *std::min_element(ratios.begin(), ratios.end(),
                             [&off](const Ratio& a, const Ratio& b) { return off(a) < off(b); });
}

void AnswerRequest(const WorkingPicture& picture, const CAnalysedPicture& analysed,
                   const Request& request, Suggestions& result)
{
    CheckRequest(request, picture.Photo);
    std::vector<Wish> wishes = WishesInside(request.Wishes, picture.Photo);
    const std::vector<RegionWish> found = WishesOf(result.Regions, picture.Photo);
    const std::vector<WishedRegion> regions =
        ListWishedRegions(wishes, found, result.Regions, picture.Photo, picture.Pixels.Size);
    for (const RegionWish& wish : found)
        wishes.push_back(wish.Wish);
    // Rounding to whole pixels must not cut faces either.
    std::vector<Wish> kept = wishes;
    for (const RegionWish& wish : found)
        if (wish.Core)
            kept.push_back({WishKind::Keep, *wish.Core});
    const std::vector<Ratio> ratios = RequestedRatios(request);
    const SuggestionParameters engineRequest = MakeEngineRequest(request, picture);
    VistaTrimParameters parameters;
    FillParameters(request, ratios, wishes, picture, parameters);

    const Stopwatch scoring;
    const DriverHandle driver(analysed.MakeDriver(parameters));
    const std::vector<ServedCrop> best =
        Serve(analysed, *driver, picture.Pixels, request, ratios, engineRequest, regions);
    result.Times.Score = scoring.Milliseconds();

    for (const ServedCrop& served : best) {
        const CInt32CropRect& crop = served.Crop;
        const CropShape shape{NearestRatio(crop, ratios), request.Size};
        const std::optional<PixelRect> rect =
            ToPhotograph({crop.Left, crop.Right, crop.Top, crop.Bottom}, picture.Pixels.Size,
                         picture.Photo, shape, kept);
        if (!rect)
            continue;
        // In a photograph smaller than the working picture several crops can cover the same pixels;
        // the first is the best.
        const auto same = [&rect](const Crop& other) { return other.Rect == *rect; };
        if (std::any_of(result.Crops.begin(), result.Crops.end(), same))
            continue;
        result.Crops.push_back({*rect,
                                shape.Aspect,
                                crop.CoversContent,
                                served.ExpectedOverlap,
                                ScoresOf(crop.Score),
                                {}});
    }

    if (request.Explain)
        Explain(AllOf(*driver, engineRequest), wishes, found, picture, request, result);
}

// The engine throws bare texts that end in a line feed.
[[noreturn]] void ThrowEngineText(const char* text)
{
    std::string reason = text;
    while (!reason.empty() && reason.back() == '\n')
        reason.pop_back();
    throw PhotoError(PhotoError::Kind::Internal, reason);
}

[[noreturn]] void ThrowOutOfMemory()
{
    throw PhotoError(PhotoError::Kind::OutOfMemory, "not enough memory");
}

// For pictures that callers assemble themselves.
void CheckPicture(const WorkingPicture& picture)
{
    const PixelImage& pixels = picture.Pixels;
    const bool holds = picture.Photo.Width >= 1 && picture.Photo.Height >= 1 &&
                       pixels.Size == WorkingSize(picture.Photo) && pixels.Channels == 3 &&
                       pixels.Bytes.size() == static_cast<size_t>(pixels.Size.Width) *
                                                  static_cast<size_t>(pixels.Size.Height) * 3;
    if (!holds)
        throw PhotoError(PhotoError::Kind::InvalidRequest,
                         "the working picture does not have the size that its photograph asks for");
}

} // namespace

class Analysis::State {
public:
    State(WorkingPicture picture, const RegionOptions& regions)
        : Picture(std::move(picture)), Search(Picture, regions),
          Engine(*LendToEngine(Picture.Pixels)), Milliseconds(Analysing.Milliseconds()),
          Regions(Search.Finish()), FacesMilliseconds(Analysing.Milliseconds() - Milliseconds)
    {
    }

    // In this order: the search may run beside the engine.
    const WorkingPicture Picture;
    RegionSearch Search;
    const Stopwatch Analysing; // declared before the engine, so that it starts first
    const CAnalysedPicture Engine;
    const double Milliseconds; // time that the analysis took
    const std::vector<FoundRegion> Regions;
    const double FacesMilliseconds; // time it waited for the face finder
};

Analysis::Analysis(const Photograph& photograph, const RegionOptions& regions)
    : Analysis(photograph.ReadWorkingPicture(), regions)
{
}

Analysis::Analysis(WorkingPicture picture, const RegionOptions& regions)
{
    CheckPicture(picture);
    try {
        Shared = std::make_shared<const State>(std::move(picture), regions);
    } catch (const char* text) {
        ThrowEngineText(text);
    } catch (const std::bad_alloc&) {
        ThrowOutOfMemory();
    }
}

const WorkingPicture& Analysis::Picture() const
{
    return Shared->Picture;
}

const std::vector<FoundRegion>& Analysis::Regions() const
{
    return Shared->Regions;
}

double Analysis::FacesMilliseconds() const
{
    return Shared->FacesMilliseconds;
}

double Analysis::Milliseconds() const
{
    return Shared->Milliseconds;
}

Suggestions Analysis::Suggest(const Request& request) const
{
    Suggestions result;
    result.Size = Shared->Picture.Photo;
    result.Times.Read = Shared->Picture.ReadMilliseconds;
    result.Times.Analyse = Shared->Milliseconds;
    result.Times.Faces = Shared->FacesMilliseconds;
    result.Regions = Shared->Regions;
    try {
        AnswerRequest(Shared->Picture, Shared->Engine, request, result);
    } catch (const char* text) {
        ThrowEngineText(text);
    } catch (const std::bad_alloc&) {
        ThrowOutOfMemory();
    }
    return result;
}

std::vector<Map> Analysis::Maps() const
{
    std::vector<Map> maps;
    for (const NamedPictureMap& map : Shared->Engine.Maps())
        maps.push_back({map.Name,
                        {map.Cols, map.Rows},
                        {map.Data, map.Data + static_cast<ptrdiff_t>(map.Cols) * map.Rows}});
    return maps;
}

PixelImage GreyOf(const Map& map)
{
    PixelImage grey{map.Size, 1, {}};
    if (map.Values.empty())
        return grey;
    const float maximum = *std::max_element(map.Values.begin(), map.Values.end());
    const float gain = maximum > 0.0F ? 255.0F / maximum : 0.0F;
    grey.Bytes.reserve(map.Values.size());
    for (const float value : map.Values)
        grey.Bytes.push_back(static_cast<uint8_t>(std::clamp(value * gain + 0.5F, 0.0F, 255.0F)));
    return grey;
}

} // namespace vistaTrim::photo
