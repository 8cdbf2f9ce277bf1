#include "output/shown_ratio.h"

#include <cmath>

#include "vistaTrimPhoto/shape.h"

namespace vistaTrim::cli {

std::string ShownRatioOf(const PhotoResult& result, size_t index)
{
    const photo::Crop& crop = result.Found.Crops[index];
    const double width = crop.Rect.Width;
    const double height = crop.Rect.Height;
    constexpr double kClose = 0.025; // crops of more than some forty pixels keep to 2 %
    if (std::abs(width / height / crop.Aspect.Value() - 1.0) > kClose)
        return photo::Reduced(crop.Rect.Width, crop.Rect.Height).CommonName();
    return index < result.Labels.size() ? photo::ShownRatio(result.Labels[index].Ratio)
                                        : crop.Aspect.CommonName();
}

} // namespace vistaTrim::cli
