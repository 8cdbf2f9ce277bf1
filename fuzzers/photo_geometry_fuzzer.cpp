// Maps crops of the working picture back to the photograph, for any size of photograph, any crop
// that the generator can return and any wishes.
#include <algorithm>
#include <optional>
#include <vector>

#include "fuzz_support.h"
#include "regions/working_regions.h"
#include "suggest/way_back.h"

using namespace fuzzing;
using namespace vistaTrim;
using namespace vistaTrim::photo;

namespace {

PixelSize PhotoSize(FuzzedDataProvider& data)
{
    // libvips takes sides of up to ten million.
    const auto side = [&data] {
        switch (Whole(data, 0, 7)) {
        case 0: return Whole(data, 1, 10000000);
        case 1:
        case 2: return Whole(data, 1, 40);
        default: return Whole(data, 1, 12000);
        }
    };
    const int32_t width = side();
    return {width, side()};
}

Ratio AnyRatio(FuzzedDataProvider& data)
{
    if (Whole(data, 0, 3) == 0)
        return Reduced(Whole(data, 1, 1000000000), Whole(data, 1, 1000000000));
    return Reduced(Whole(data, 1, 20), Whole(data, 1, 20));
}

PixelRect Region(FuzzedDataProvider& data, PixelSize photo)
{
    PixelRect rect;
    rect.X = Whole(data, 0, photo.Width - 1);
    rect.Y = Whole(data, 0, photo.Height - 1);
    rect.Width = Whole(data, 1, photo.Width - rect.X);
    rect.Height = Whole(data, 1, photo.Height - rect.Y);
    return rect;
}

void CheckOutward(const PixelRect& region, PixelSize photo, PixelSize working)
{
    const CInt32Rect outward = ToWorkingOutward(region, photo, working);
    Demand(outward.Left >= 0 && outward.Right < working.Width && outward.Top >= 0 &&
               outward.Bottom < working.Height && !outward.Empty(),
           "a wish lies in the working picture");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    FuzzedDataProvider data(bytes, count);
    const PixelSize photo = PhotoSize(data);
    const PixelSize working = WorkingSize(photo);
    Demand(std::max(working.Width, working.Height) == kWorkingLongSide &&
               std::min(working.Width, working.Height) >= 1,
           "working size");

    // On very thin pictures a side of a candidate can be 0; it then ends before it begins.
    CInt32Rect crop;
    crop.Left = Whole(data, 0, working.Width - 1);
    crop.Right = Whole(data, crop.Left, working.Width - 1);
    crop.Top = Whole(data, 0, working.Height - 1);
    crop.Bottom = Whole(data, crop.Top, working.Height - 1);
    if (Whole(data, 0, 15) == 0) {
        crop.Left = Whole(data, 1, working.Width);
        crop.Right = crop.Left - 1;
    }
    if (Whole(data, 0, 15) == 0) {
        crop.Top = Whole(data, 1, working.Height);
        crop.Bottom = crop.Top - 1;
    }

    CropShape shape;
    shape.Aspect = AnyRatio(data);
    if (Whole(data, 0, 3) == 0)
        shape.Size = PixelSize{Whole(data, 1, 12000), Whole(data, 1, 12000)};
    std::vector<Wish> wishes;
    const int32_t wishCount = Whole(data, 0, 3);
    for (int32_t i = 0; i < wishCount; ++i) {
        Wish wish;
        wish.Kind = static_cast<WishKind>(Whole(data, 0, 3));
        wish.Rect = Region(data, photo);
        CheckOutward(wish.Rect, photo, working);
        wishes.push_back(wish);
    }

    const std::optional<PixelRect> back = ToPhotograph(crop, working, photo, shape, wishes);
    Demand(back.has_value() || shape.Size.has_value(), "only a crop with a size may be rejected");
    if (!back)
        return 0;
    Demand(back->Width >= 1 && back->Height >= 1, "a crop holds a pixel");
    Demand(Contains({0, 0, photo.Width, photo.Height}, *back), "a crop lies in the photograph");
    if (shape.Size)
        Demand(back->Width == shape.Size->Width && back->Height == shape.Size->Height,
               "the requested size");
    // Every wish that the working crop meets is met by the crop of the photograph.
    for (const Wish& wish : wishes) {
        if (crop.Empty())
            break;
        const CInt32Rect region = ToWorkingOutward(wish.Rect, photo, working);
        const bool inside = crop.Left <= region.Left && crop.Right >= region.Right &&
                            crop.Top <= region.Top && crop.Bottom >= region.Bottom;
        const bool outside = crop.Left > region.Right || crop.Right < region.Left ||
                             crop.Top > region.Bottom || crop.Bottom < region.Top;
        if (WantsInside(wish.Kind) ? inside : outside)
            Demand(IsMet(wish, *back), "a wish that was met stays met");
    }
    return 0;
}
