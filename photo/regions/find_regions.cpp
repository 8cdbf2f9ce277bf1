#include "regions/find_regions.h"

#include <algorithm>
#include <string>
#include <utility>

#include "regions/face_finder.h"
#include "regions/same_region.h"
#include "regions/working_regions.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

void AddRegionsOfCaller(const std::vector<FoundRegion>& regions, PixelSize photo,
                        std::vector<FoundRegion>& known)
{
    for (FoundRegion region : regions) {
        if (region.Rect.Width < 1 || region.Rect.Height < 1)
            throw PhotoError(PhotoError::Kind::InvalidRequest, "a region holds no pixel");
        const PixelRect inside = ClippedTo(region.Rect, photo);
        if (inside.Width >= 1 && inside.Height >= 1) {
            region.Rect = inside;
            AddUnlessKnown(region, known);
        } else if (region.Wish && WantsInside(*region.Wish)) {
            throw PhotoError(PhotoError::Kind::DoesNotFit, Wish{*region.Wish, region.Rect},
                             "lies outside the photograph, which is " +
                                 std::to_string(photo.Width) + " x " +
                                 std::to_string(photo.Height));
        }
    }
}

bool NamesAFace(const std::vector<FoundRegion>& regions)
{
    return std::any_of(regions.begin(), regions.end(),
                       [](const FoundRegion& region) { return region.Kind == RegionKind::Face; });
}

} // namespace

RegionSearch::RegionSearch(const WorkingPicture& picture, const RegionOptions& options)
    : Picture(picture)
{
    AddRegionsOfCaller(options.Regions, picture.Photo, Known);
    if (options.UseNamed)
        for (const FoundRegion& region : picture.NamedRegions)
            AddUnlessKnown(region, Known);
    if (options.Faces != FaceSearch::Off && !NamesAFace(Known))
        Faces = std::async(
            options.Threads > 1 ? std::launch::async : std::launch::deferred,
            [&picture, search = options.Faces] { return FindFaces(picture.Pixels, search); });
}

std::vector<FoundRegion> RegionSearch::Finish()
{
    std::vector<FoundRegion> found = std::move(Known);
    if (!Faces.valid())
        return found;
    for (FoundRegion face : Faces.get()) {
        face.Rect = ToPhotographOutward(face.Rect, Picture.Pixels.Size, Picture.Photo);
        AddUnlessKnown(face, found);
    }
    return found;
}

} // namespace vistaTrim::photo
