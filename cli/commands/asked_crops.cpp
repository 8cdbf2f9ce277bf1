#include "commands/asked_crops.h"

#include <algorithm>
#include <iterator>

namespace vistaTrim::cli {

namespace {

using photo::Crop;
using photo::PixelSize;
using photo::Request;

std::string RatioTextOf(const Crop& crop, const Options& options)
{
    for (const Shape& shape : options.Shapes)
        if (shape.Aspect == crop.Aspect)
            return shape.RatioText;
    return FileSafeRatio(crop.Aspect.Text());
}

// A crop with fewer pixels than the file that it fills would be scaled up. So smaller crops are
// not tried, unless even the largest one of the ratio is too small: then it is the only one.
std::vector<double> ScalesToFill(const Shape& shape, const Request& request, PixelSize photo)
{
    std::vector<double> scales = request.Scales;
    if (scales.empty())
        scales.assign(std::begin(photo::kDefaultScales), std::end(photo::kDefaultScales));
    const double largest = std::min<double>(photo.Width, photo.Height * shape.Aspect.Value());
    const auto tooSmall = [&](double scale) { return largest * scale < shape.Fill->Width; };
    const double top = *std::max_element(scales.begin(), scales.end());
    scales.erase(std::remove_if(scales.begin(), scales.end(), tooSmall), scales.end());
    if (scales.empty())
        scales.push_back(top);
    return scales;
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

std::vector<std::string> SuggestAsked(const photo::Analysis& analysis, const Options& options,
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
    for (const Shape& shape : options.Shapes) {
        Request request = options.Request;
        request.Aspects = {shape.Aspect};
        if (shape.Fill)
            request.Scales = ScalesToFill(shape, request, analysis.Picture().Photo);
        const photo::Suggestions found = analysis.Suggest(request);
        result.Found.Size = found.Size;
        result.Found.Regions = found.Regions;
        scored += found.Times.Score;
        result.Found.Times = found.Times;
        if (found.Crops.empty())
            missing.push_back(shape.Name);
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

} // namespace vistaTrim::cli
