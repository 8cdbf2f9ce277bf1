#include <cmath>
#include <string>

#include "regions/working_regions.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/request.h"

namespace vistaTrim::photo {

namespace {

void Demand(bool holds, const std::string& text)
{
    if (!holds)
        throw PhotoError(PhotoError::Kind::InvalidRequest, text);
}

std::string TextOf(PixelSize size)
{
    return std::to_string(size.Width) + " x " + std::to_string(size.Height);
}

void CheckValues(const Request& request)
{
    Demand(request.Top >= 1, "the number of crops must be at least 1");
    Demand(request.Density >= 1 && request.Density <= kHighestDensity,
           "the density must be 1 to " + std::to_string(kHighestDensity) + " positions");
    for (const Ratio& ratio : request.Aspects)
        Demand(ratio.Width > 0 && ratio.Height > 0, "both terms of a ratio must be above 0");
    for (const double scale : request.Scales)
        Demand(scale > 0.0 && scale <= 1.0, "a scale must be above 0 and at most 1");
    if (request.Size)
        Demand(request.Size->Width >= 1 && request.Size->Height >= 1,
               "both sides of the size must be at least 1");
    for (const Measure& measure : kMeasures)
        if (measure.Weight != nullptr)
            Demand(std::isfinite(request.Weights.*measure.Weight),
                   "the weights must be finite numbers");
    for (const Wish& wish : request.Wishes)
        if (wish.Rect.Width < 1 || wish.Rect.Height < 1)
            throw PhotoError(PhotoError::Kind::InvalidRequest, wish, "holds no pixel");
}

} // namespace

void CheckRequest(const Request& request, PixelSize photo)
{
    CheckValues(request);
    WishesInside(request.Wishes, photo);
    // The engine ignores a size that does not fit.
    if (request.Size && (request.Size->Width > photo.Width || request.Size->Height > photo.Height))
        throw PhotoError(PhotoError::Kind::DoesNotFit,
                         "a crop of " + TextOf(*request.Size) +
                             " does not fit the photograph, which is " + TextOf(photo));
}

} // namespace vistaTrim::photo
