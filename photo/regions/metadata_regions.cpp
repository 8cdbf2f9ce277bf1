#include "regions/metadata_regions.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "regions/same_region.h"
#include "regions/xmp_regions.h"

namespace vistaTrim::photo {

namespace {

// Whether the text may hold regions. Cheap, so that the many photographs without any need no
// parser. All namespaces of the three standards are spelled out in a packet that uses them.
bool MayHoldRegions(const std::string& xmp)
{
    constexpr const char* kNamespaces[] = {"metadataworkinggroup.com/schemas/regions",
                                           "ns.microsoft.com/photo/1.2",
                                           "iptc.org/std/Iptc4xmpExt"};
    return std::any_of(std::begin(kNamespaces), std::end(kNamespaces),
                       [&xmp](const char* name) { return xmp.find(name) != std::string::npos; });
}

bool IsBelow(const std::string& key, const std::string& root)
{
    return key.compare(0, root.size(), root) == 0 &&
           (key.size() == root.size() || key[root.size()] == '/' || key[root.size()] == '[');
}

// Avoids Exiv2's operator[], which looks the property's type up in tables that lack some of them.
void AddText(const std::string& key, const std::string& text, Exiv2::XmpData& to)
{
    const Exiv2::XmpTextValue value(text);
    to.add(Exiv2::XmpKey(key), &value);
}

std::string Shortest(double value)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

// Where the region lies in the crop, in shares of its sides. nullopt if it lies outside.
std::optional<RelativeRect> InCrop(const RelativeRect& rect, PixelSize displayed,
                                   const PixelRect& crop)
{
    const double left = (rect.X * displayed.Width - crop.X) / crop.Width;
    const double top = (rect.Y * displayed.Height - crop.Y) / crop.Height;
    const double right = left + rect.Width * displayed.Width / crop.Width;
    const double bottom = top + rect.Height * displayed.Height / crop.Height;
    const bool isPoint = rect.Width == 0 && rect.Height == 0;
    if (right < 0 || bottom < 0 || left > 1 || top > 1)
        return std::nullopt;
    const RelativeRect inside{std::max(left, 0.0), std::max(top, 0.0),
                              std::min(right, 1.0) - std::max(left, 0.0),
                              std::min(bottom, 1.0) - std::max(top, 0.0)};
    if (!isPoint && (inside.Width <= 0 || inside.Height <= 0))
        return std::nullopt;
    return inside;
}

// The values of one region's own properties, by their paths below its structure. An empty value
// removes the property.
std::map<std::string, std::string> PlaceFields(RegionStandard standard, const RelativeRect& rect)
{
    const std::string x = Shortest(rect.X);
    const std::string y = Shortest(rect.Y);
    const std::string width = Shortest(rect.Width);
    const std::string height = Shortest(rect.Height);
    switch (standard) {
    case RegionStandard::MetadataWorkingGroup:
        return {{"Area/x", Shortest(rect.X + rect.Width / 2)},
                {"Area/y", Shortest(rect.Y + rect.Height / 2)},
                {"Area/w", width},
                {"Area/h", height},
                {"Area/d", ""}};
    case RegionStandard::Iptc:
        return {{"RegionBoundary/rbShape", "rectangle"},
                {"RegionBoundary/rbUnit", "relative"},
                {"RegionBoundary/rbX", x},
                {"RegionBoundary/rbY", y},
                {"RegionBoundary/rbW", width},
                {"RegionBoundary/rbH", height},
                {"RegionBoundary/rbRx", ""},
                {"RegionBoundary/rbVertices", ""}};
    case RegionStandard::Microsoft: break;
    }
    return {{"Rectangle", x + ", " + y + ", " + width + ", " + height}};
}

std::string ParentOf(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

// The path of a property of the structure: "Iptc4xmpExt:RegionBoundary/Iptc4xmpExt:rbX". Children
// have the prefix of the siblings that are there already.
std::string PrefixedPath(const std::string& path, const std::string& sibling,
                         const std::string& siblingKey)
{
    const size_t colon = siblingKey.find(':', siblingKey.find_last_of('/') + 1);
    if (colon == std::string::npos || ParentOf(path) != ParentOf(sibling))
        return "";
    return siblingKey.substr(0, colon + 1) + path.substr(path.find_last_of('/') + 1);
}

// Copies one region to item `index` of its list in `to`, at its new place.
void CopyRegion(const Exiv2::XmpData& from, const XmpRegion& region, size_t index,
                const RelativeRect& rect, Exiv2::XmpData& to)
{
    const std::string item =
        region.Key.substr(0, region.Key.find_last_of('[')) + "[" + std::to_string(index) + "]";
    std::map<std::string, std::string> place = PlaceFields(region.Standard, rect);
    std::map<std::string, std::string> siblings; // keys by parent path
    for (const Exiv2::Xmpdatum& datum : from) {
        const std::string key = datum.key();
        if (!IsBelow(key, region.Key))
            continue;
        const std::string path = PathBelow(region.Key, key);
        const std::string first = path.substr(0, path.find('['));
        const std::string newKey = item + key.substr(region.Key.size());
        const auto field = place.find(path.size() == first.size() ? path : first);
        if (field != place.end() && field->second.empty())
            continue;
        siblings[path] = newKey;
        if (field == place.end()) {
            to.add(Exiv2::XmpKey(newKey), &datum.value());
            continue;
        }
        AddText(newKey, field->second, to);
        place.erase(field);
    }
    // Adds what the old shape did not need: a polygon has no width, for example.
    for (const auto& [path, text] : place) {
        if (text.empty() || region.Standard != RegionStandard::Iptc)
            continue;
        for (const auto& [sibling, key] : siblings) {
            const std::string newKey = PrefixedPath(path, sibling, key);
            if (newKey.empty())
                continue;
            AddText(newKey, text, to);
            break;
        }
    }
}

// Everything besides the regions of a standard: the properties that hold their list, and the size
// that they apply to.
void CopyFrame(const Exiv2::XmpData& from, RegionStandard standard, const std::string& list,
               PixelSize output, Exiv2::XmpData& to)
{
    const std::string root = RootKeyOf(standard);
    for (const Exiv2::Xmpdatum& datum : from) {
        const std::string key = datum.key();
        if (!IsBelow(key, root) || (IsBelow(key, list) && key.size() > list.size()))
            continue;
        const std::string path = PathBelow(root, key);
        if (path == "AppliedToDimensions/w")
            AddText(key, std::to_string(output.Width), to);
        else if (path == "AppliedToDimensions/h")
            AddText(key, std::to_string(output.Height), to);
        else if (path == "AppliedToDimensions/unit")
            AddText(key, "pixel", to);
        else
            to.add(Exiv2::XmpKey(key), &datum.value());
    }
}

Exiv2::XmpData ForCrop(const Exiv2::XmpData& data, PixelSize displayed, int orientation,
                       const PixelRect& crop, PixelSize output)
{
    Exiv2::XmpData result;
    for (const Exiv2::Xmpdatum& datum : data)
        if (std::none_of(std::begin(kRegionStandards), std::end(kRegionStandards),
                         [&datum](RegionStandard standard) {
                             return IsBelow(datum.key(), RootKeyOf(standard));
                         }))
            result.add(datum);
    const std::vector<XmpRegion> regions = ListXmpRegions(data, displayed, orientation);
    for (const RegionStandard standard : kRegionStandards) {
        size_t kept = 0;
        for (const XmpRegion& region : regions) {
            if (region.Standard != standard)
                continue;
            const auto rect = InCrop(region.Rect, displayed, crop);
            if (!rect)
                continue;
            if (kept == 0)
                CopyFrame(data, standard, region.Key.substr(0, region.Key.find_last_of('[')),
                          output, result);
            CopyRegion(data, region, ++kept, *rect, result);
        }
    }
    return result;
}

} // namespace

std::vector<FoundRegion> RegionsOfXmp(const std::string& xmp, PixelSize displayed, int orientation)
{
    std::vector<FoundRegion> found;
    if (!MayHoldRegions(xmp))
        return found;
    const auto data = ParseXmp(xmp);
    if (!data)
        return found;
    for (const XmpRegion& region : ListXmpRegions(*data, displayed, orientation)) {
        const PixelRect rect = ToPixelsOutward(region.Rect, displayed);
        if (rect.Width < 1 || rect.Height < 1)
            continue;
        FoundRegion next{rect, region.Kind, RegionSource::Metadata, 1.0, region.Label, {}};
        if (region.Kind != RegionKind::Other)
            next.Wish = WishKind::Keep;
        AddUnlessKnown(next, found);
    }
    return found;
}

std::optional<std::string> XmpForCrop(const std::string& xmp, PixelSize displayed, int orientation,
                                      const PixelRect& crop, PixelSize output)
{
    if (!MayHoldRegions(xmp))
        return xmp;
    const auto data = ParseXmp(xmp);
    if (!data)
        return std::nullopt;
    const bool hasRegions =
        std::any_of(data->begin(), data->end(), [](const Exiv2::Xmpdatum& datum) {
            return std::any_of(std::begin(kRegionStandards), std::end(kRegionStandards),
                               [&datum](RegionStandard standard) {
                                   return IsBelow(datum.key(), RootKeyOf(standard));
                               });
        });
    if (!hasRegions)
        return xmp;
    try {
        return WriteXmp(ForCrop(*data, displayed, orientation, crop, output));
    } catch (const std::exception&) { // the parser accepts some keys that the writer rejects
        return std::nullopt;
    }
}

} // namespace vistaTrim::photo
