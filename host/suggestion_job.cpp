#include "suggestion_job.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <string>

#include "explanation.h"
#include "photo_error.h"
#include "stopwatch.h"
#include "turns.h"
#include "way_back.h"

namespace vistaTrim::host {

namespace {

struct DriverDeleter {
    void operator()(IVistaTrim* driver) const
    {
        DestroyVistaTrimObj(driver);
    }
};
using DriverHandle = std::unique_ptr<IVistaTrim, DriverDeleter>;

std::string SizeText(PixelSize size)
{
    return std::to_string(size.Width) + " x " + std::to_string(size.Height);
}

// The ratios that the driver's table will hold, in its order. No ratio twice: the library
// would score its candidates twice and never serve the second set.
std::vector<Ratio> AskedRatios(const Request& request)
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

// All wishes as far as they lie inside the photograph. A region that must or should be kept
// and lies wholly outside cannot be; one that is to be avoided is avoided already.
std::vector<Wish> WishesInside(const std::vector<Wish>& wishes, PixelSize photo)
{
    std::vector<Wish> inside;
    for (const Wish& wish : wishes) {
        const PixelRect clipped = ClippedTo(wish.Rect, photo);
        if (clipped.Width > 0 && clipped.Height > 0) {
            inside.push_back({wish.Kind, clipped});
        } else if (WantsInside(wish.Kind)) {
            throw PhotoError("the region of --" + std::string(NameOf(wish.Kind)) + " " +
                             std::to_string(wish.Rect.X) + "," + std::to_string(wish.Rect.Y) + "," +
                             std::to_string(wish.Rect.Width) + "," +
                             std::to_string(wish.Rect.Height) +
                             " lies outside the photograph, which is " + SizeText(photo));
        }
    }
    return inside;
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
        rect =
            CRectOfInterest(ToWorkingOutward(wishes[i].Rect, picture.Photo, picture.Size), false);
        rect.Kind = LibraryKind(wishes[i].Kind);
    }
    parameters.NumMaxCropRectsPerSide = request.Density;
}

// The size in working pixels. The library quietly takes a size that does not fit for no size
// at all, so the question is asked here.
SuggestionParameters MakeLibraryRequest(const Request& request, const WorkingPicture& picture)
{
    if (!request.Size)
        return SuggestionParameters(false);
    const PixelSize photo = picture.Photo;
    if (request.Size->Width > photo.Width || request.Size->Height > photo.Height)
        throw PhotoError("a crop of " + SizeText(*request.Size) +
                         " does not fit the photograph, which is " + SizeText(photo));
    const double width =
        static_cast<double>(request.Size->Width) * picture.Size.Width / photo.Width;
    const double height =
        static_cast<double>(request.Size->Height) * picture.Size.Height / photo.Height;
    return SuggestionParameters(width, height, false);
}

// Which of the asked ratios the library made the crop of. It rounds one side of the crop to
// the other, so the nearest ratio is the one.
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

// Without those that hold no pixel: of a very thin picture the library also lays out crops whose
// sides rounded to nothing; nothing was measured on them.
CropList CopyAndRelease(ICropRects* list)
{
    SmartPtr<CCropRects> held(static_cast<CCropRects*>(list), false);
    CropList crops;
    std::copy_if(held->Data(), held->Data() + held->Count(), std::back_inserter(crops),
                 [](const CInt32CropRect& crop) {
                     return crop.Left <= crop.Right && crop.Top <= crop.Bottom;
                 });
    return crops;
}

CropList BestOf(IVistaTrim& driver, const Request& request, int32_t wanted,
                const SuggestionParameters& libraryRequest)
{
    ICropRects* list = nullptr;
    GetNTopCropSuggestions(&driver, wanted, &list, &libraryRequest,
                           static_cast<int32_t>(request.Ranking), request.Weights);
    return CopyAndRelease(list);
}

// The ratios that are clearly wider than the photograph, the nearest first.
std::vector<double> WiderRatios(const std::vector<Ratio>& ratios, PixelSize photo)
{
    const double own = static_cast<double>(photo.Width) / photo.Height;
    std::vector<double> wider;
    for (const Ratio& ratio : ratios)
        if (ratio.Value() > 1.05 * own)
            wider.push_back(ratio.Value());
    std::sort(wider.begin(), wider.end());
    return wider;
}

// Of a free choice, the first few are to differ in shape: people who crop a photograph often cut
// it wider than it was, and a single list leaves that to its tail. So two wider ratios get turns
// of their own between those of the whole table. The candidates are scored once all the same.
CropList FreeChoice(IVistaTrim& driver, const Request& request, const std::vector<Ratio>& ratios,
                    PixelSize photo)
{
    // The same length whatever --top is: the library groups like crops only as long as it finds
    // more candidates than are asked for, and the first crops are not to depend on their number.
    constexpr int32_t kListLength = 60;
    std::vector<CropList> lists = {
        BestOf(driver, request, kListLength, SuggestionParameters(false))};
    const std::vector<double> wider = WiderRatios(ratios, photo);
    for (size_t i = 0; i < wider.size() && i < 2; ++i)
        lists.push_back(
            BestOf(driver, request, kListLength, SuggestionParameters(wider[i], false)));
    std::vector<size_t> order;
    for (size_t list = lists.size() - 1; list > 0; --list) {
        order.push_back(0);
        order.push_back(list);
    }
    // Without turns of its own, for those who want more than the lists hold: all that rank high,
    // ungrouped, which is what the library gives when asked for more than there is.
    constexpr int32_t kMoreThanThereIs = 100'000'000;
    lists.push_back(BestOf(driver, request, kMoreThanThereIs, SuggestionParameters(false)));
    return TakeTurns(lists, order, static_cast<size_t>(request.Top));
}

void Ask(const WorkingPicture& picture, const Request& request, PhotoResult& result)
{
    const std::vector<Wish> wishes = WishesInside(request.Wishes, picture.Photo);
    const std::vector<Ratio> ratios = AskedRatios(request);
    const SuggestionParameters libraryRequest = MakeLibraryRequest(request, picture);
    VistaTrimParameters parameters;
    FillParameters(request, ratios, wishes, picture, parameters);

    const Stopwatch analysing;
    const ImageHandle image = MakeLibraryImage(picture);
    const DriverHandle driver(CreateVistaTrimObj(image.get(), &parameters));
    result.Times.Analyse = analysing.Milliseconds();

    const Stopwatch scoring;
    // Whoever names ratios, a size or one measure gets the library's own order.
    const bool free = request.Aspects.empty() && !request.Size && request.Ranking == RankBy::All;
    const CropList best = free ? FreeChoice(*driver, request, ratios, picture.Photo)
                               : BestOf(*driver, request, request.Top, libraryRequest);
    result.Times.Score = scoring.Milliseconds();

    CropList used;
    for (const CInt32CropRect& crop : best) {
        const CropShape shape{NearestRatio(crop, ratios), request.Size};
        const std::optional<PixelRect> rect =
            ToPhotograph({crop.Left, crop.Right, crop.Top, crop.Bottom}, picture.Size,
                         picture.Photo, shape, wishes);
        if (!rect)
            continue;
        // Of a photograph smaller than the working picture, several crops can be the same
        // pixels; the first of them is the best.
        const auto same = [&rect](const SuggestedCrop& other) { return other.Rect == *rect; };
        if (std::any_of(result.Crops.begin(), result.Crops.end(), same))
            continue;
        result.Crops.push_back({*rect, shape.Aspect, crop.CoversContent, crop.Score, {}});
        used.push_back(crop);
    }

    if (request.Explain) {
        ICropRects* list = nullptr;
        ComputeCropSuggestions(driver.get(), &list, &libraryRequest);
        Explain(CopyAndRelease(list), used, wishes, picture, request.Top, result);
    }
}

} // namespace

void SuggestCrops(const WorkingPicture& picture, const Request& request, PhotoResult& result)
{
    result.Size = picture.Photo;
    try {
        Ask(picture, request, result);
    } catch (const char* text) {
        // The library throws bare texts that end in a line feed.
        std::string reason = text;
        while (!reason.empty() && reason.back() == '\n')
            reason.pop_back();
        throw PhotoError(reason);
    }
}

} // namespace vistaTrim::host
