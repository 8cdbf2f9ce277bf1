#include "commands/suggest_crops.h"

namespace vistaTrim::cli {

namespace {

using photo::Crop;

std::string RatioTextOf(const Crop& crop, const Options& options)
{
    for (const photo::Shape& shape : options.Shapes)
        if (shape.Aspect == crop.Aspect)
            return shape.RatioText;
    return photo::FileSafeRatio(crop.Aspect.CommonName());
}

void AddExplanation(const photo::Explanation& more, std::optional<photo::Explanation>& sum)
{
    if (!sum) {
        sum = more;
        return;
    }
    sum->Candidates += more.Candidates;
    sum->Passing += more.Passing;
    for (size_t i = 0; i < sum->MetBy.size() && i < more.MetBy.size(); ++i)
        sum->MetBy[i] += more.MetBy[i];
    if (sum->Why == photo::Shortfall::None) {
        sum->Why = more.Why;
        sum->UnmetWish = more.UnmetWish;
    }
}

} // namespace

std::vector<std::string> SuggestCrops(const photo::Analysis& analysis, const Options& options,
                                      PhotoResult& result)
{
    if (!options.EachShape) {
        result.Found = analysis.Suggest(options.Request);
        int32_t rank = 0;
        for (const Crop& crop : result.Found.Crops)
            result.Labels.push_back({"", RatioTextOf(crop, options), ++rank, {}});
        return {};
    }

    std::vector<std::string> missing;
    double scored = 0;
    for (const photo::Shape& shape : options.Shapes) {
        const photo::Suggestions found =
            analysis.Suggest(photo::RequestFor(shape, options.Request, analysis.Picture().Photo));
        result.Found.Size = found.Size;
        result.Found.Regions = found.Regions;
        scored += found.Times.Score;
        result.Found.Times = found.Times;
        if (found.Crops.empty())
            missing.push_back(photo::ShownName(shape));
        int32_t rank = 0;
        for (const Crop& crop : found.Crops) {
            result.Found.Crops.push_back(crop);
            result.Labels.push_back({shape.Name, shape.RatioText, ++rank, shape.Fill});
        }
        if (found.Explained)
            AddExplanation(*found.Explained, result.Found.Explained);
    }
    result.Found.Times.Score = scored;
    return missing;
}

std::string WhyNoCrop(const photo::Analysis& analysis, const Options& options)
{
    Options explained = options;
    explained.Request.Explain = true;
    PhotoResult again;
    SuggestCrops(analysis, explained, again);
    return photo::NoteOf(*again.Found.Explained, kWishPrefix);
}

} // namespace vistaTrim::cli
