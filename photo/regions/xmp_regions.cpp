#include "regions/xmp_regions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>

namespace vistaTrim::photo {

namespace {

// More than any group photograph has.
constexpr size_t kMostRegions = 1000;

// The properties of one region, by their paths below its structure.
using Fields = std::map<std::string, std::string>;

struct Item {
    std::string Key;
    Fields Values;
};

std::string WithoutPrefixes(const std::string& path)
{
    std::string plain;
    size_t at = 0;
    while (at < path.size()) {
        const size_t end = std::min(path.find('/', at), path.size());
        const size_t colon = path.find(':', at);
        const size_t from = colon < end ? colon + 1 : at;
        plain.append(path, from, end - from);
        if (end < path.size())
            plain += '/';
        at = end + 1;
    }
    return plain;
}

std::optional<double> NumberOf(std::string text)
{
    text.erase(0, text.find_first_not_of(" \t\r\n+"));
    text.erase(text.find_last_not_of(" \t\r\n") + 1);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        return std::nullopt;
    return number;
}

std::optional<double> NumberAt(const Fields& fields, const std::string& path)
{
    const auto found = fields.find(path);
    return found == fields.end() ? std::nullopt : NumberOf(found->second);
}

std::string TextAt(const Fields& fields, const std::string& path)
{
    const auto found = fields.find(path);
    return found == fields.end() ? "" : found->second;
}

// The text in one language, for a value that may have several.
std::string LabelText(const Exiv2::Xmpdatum& datum)
{
    if (const auto* languages = dynamic_cast<const Exiv2::LangAltValue*>(&datum.value()))
        return languages->value_.empty()                  ? ""
               : languages->toString("x-default").empty() ? languages->value_.begin()->second
                                                          : languages->toString("x-default");
    return datum.toString();
}

// "RegionList[12]/Area/x": the list's name, the item, the rest. False if it is something else.
bool SplitItem(const std::string& path, const std::string& list, std::string& item,
               std::string& rest)
{
    if (path.compare(0, list.size() + 1, list + "[") != 0)
        return false;
    const size_t end = path.find(']', list.size());
    if (end == std::string::npos)
        return false;
    item = path.substr(list.size() + 1, end - list.size() - 1);
    rest = end + 2 <= path.size() ? path.substr(end + 2) : "";
    return true;
}

// The list is the root itself if it has no name.
std::vector<Item> ItemsOf(const Exiv2::XmpData& data, const std::string& root,
                          const std::string& list)
{
    std::vector<Item> items;
    std::map<std::string, size_t> places; // by item
    for (const Exiv2::Xmpdatum& datum : data) {
        const std::string key = datum.key();
        std::string item;
        std::string rest;
        if (!SplitItem(PathBelow(root, key), list, item, rest))
            continue;
        const auto [place, isNew] = places.emplace(item, items.size());
        if (isNew) {
            if (items.size() == kMostRegions)
                break;
            const size_t end = key.find("[" + item + "]");
            items.push_back({key.substr(0, end + item.size() + 2), {}});
        }
        items[place->second].Values.emplace(rest, LabelText(datum));
    }
    return items;
}

bool IsSensible(const RelativeRect& rect)
{
    const double values[] = {rect.X, rect.Y, rect.Width, rect.Height};
    return rect.Width >= 0 && rect.Height >= 0 &&
           std::all_of(std::begin(values), std::end(values),
                       [](double value) { return std::abs(value) <= 100.0; });
}

// True if both sizes have one ratio, as far as rounding shows at a small size.
bool HaveOneShape(double width, double height, PixelSize size)
{
    const double there = width / height;
    const double here = static_cast<double>(size.Width) / size.Height;
    return std::abs(std::log(there / here)) < 0.02;
}

enum class Frame { Stored, Displayed, Other };

// Which picture the Working Group's coordinates refer to: the stored one, unless the size given
// with them shows that a program has rotated it.
Frame FrameOf(const Fields& fields, PixelSize displayed, int orientation)
{
    const auto width = NumberAt(fields, "AppliedToDimensions/w");
    const auto height = NumberAt(fields, "AppliedToDimensions/h");
    if (!width || !height || *width <= 0 || *height <= 0)
        return Frame::Stored;
    if (HaveOneShape(*width, *height, StoredSize(displayed, orientation)))
        return Frame::Stored;
    return HaveOneShape(*width, *height, displayed) ? Frame::Displayed : Frame::Other;
}

RegionKind KindOfType(const std::string& type)
{
    if (type == "Face")
        return RegionKind::Face;
    if (type == "Pet")
        return RegionKind::Animal;
    return type == "Focus" ? RegionKind::Subject : RegionKind::Other;
}

void AddWorkingGroupRegions(const Exiv2::XmpData& data, PixelSize displayed, int orientation,
                            std::vector<XmpRegion>& regions)
{
    const std::string root = RootKeyOf(RegionStandard::MetadataWorkingGroup);
    Fields common;
    for (const Exiv2::Xmpdatum& datum : data) {
        const std::string path = PathBelow(root, datum.key());
        if (path.compare(0, 19, "AppliedToDimensions") == 0)
            common.emplace(path, datum.toString());
    }
    const Frame frame = FrameOf(common, displayed, orientation);
    if (frame == Frame::Other)
        return;
    const PixelSize stored = StoredSize(displayed, orientation);
    for (const Item& item : ItemsOf(data, root, "RegionList")) {
        const auto x = NumberAt(item.Values, "Area/x");
        const auto y = NumberAt(item.Values, "Area/y");
        if (!x || !y)
            continue;
        double width = NumberAt(item.Values, "Area/w").value_or(0);
        double height = NumberAt(item.Values, "Area/h").value_or(0);
        // A circle; its diameter is a share of the shorter side.
        if (const auto diameter = NumberAt(item.Values, "Area/d"); diameter && width == 0) {
            const double side = *diameter * std::min(stored.Width, stored.Height);
            width = side / stored.Width;
            height = side / stored.Height;
        }
        RelativeRect rect{*x - width / 2, *y - height / 2, width, height};
        if (!IsSensible(rect))
            continue;
        if (frame == Frame::Stored)
            rect = ToDisplayed(rect, orientation);
        regions.push_back({RegionStandard::MetadataWorkingGroup, item.Key, rect,
                           KindOfType(TextAt(item.Values, "Type")), TextAt(item.Values, "Name")});
    }
}

// "x, y, width, height"
std::optional<RelativeRect> RectOfText(const std::string& text)
{
    std::array<double, 4> numbers{};
    size_t at = 0;
    for (size_t i = 0; i < numbers.size(); ++i) {
        const size_t end = std::min(text.find(',', at), text.size());
        const auto number = NumberOf(text.substr(std::min(at, text.size()), end - at));
        if (!number || (i + 1 == numbers.size()) != (end == text.size()))
            return std::nullopt;
        numbers[i] = *number;
        at = end + 1;
    }
    return RelativeRect{numbers[0], numbers[1], numbers[2], numbers[3]};
}

void AddMicrosoftRegions(const Exiv2::XmpData& data, int orientation,
                         std::vector<XmpRegion>& regions)
{
    const std::string root = RootKeyOf(RegionStandard::Microsoft);
    for (const Item& item : ItemsOf(data, root, "Regions")) {
        const auto rect = RectOfText(TextAt(item.Values, "Rectangle"));
        if (rect && IsSensible(*rect))
            regions.push_back({RegionStandard::Microsoft, item.Key, ToDisplayed(*rect, orientation),
                               RegionKind::Face, TextAt(item.Values, "PersonDisplayName")});
    }
}

// The bounding rectangle of a polygon. nullopt if it has no corner.
std::optional<RelativeRect> AroundCorners(const Fields& fields)
{
    double left = HUGE_VAL;
    double top = HUGE_VAL;
    double right = -HUGE_VAL;
    double bottom = -HUGE_VAL;
    for (size_t i = 1;; ++i) {
        const std::string corner = "RegionBoundary/rbVertices[" + std::to_string(i) + "]/";
        const auto x = NumberAt(fields, corner + "rbX");
        const auto y = NumberAt(fields, corner + "rbY");
        if (!x || !y)
            break;
        left = std::min(left, *x);
        right = std::max(right, *x);
        top = std::min(top, *y);
        bottom = std::max(bottom, *y);
    }
    if (left > right)
        return std::nullopt;
    return RelativeRect{left, top, right - left, bottom - top};
}

// In the units of the region.
std::optional<RelativeRect> IptcBoundary(const Fields& fields, PixelSize stored, bool isInPixels)
{
    const std::string shape = TextAt(fields, "RegionBoundary/rbShape");
    if (shape == "polygon")
        return AroundCorners(fields);
    const auto x = NumberAt(fields, "RegionBoundary/rbX");
    const auto y = NumberAt(fields, "RegionBoundary/rbY");
    if (!x || !y)
        return std::nullopt;
    if (shape == "circle") { // the radius is a share of the width
        const double across = NumberAt(fields, "RegionBoundary/rbRx").value_or(0);
        const double down = isInPixels ? across : across * stored.Width / stored.Height;
        return RelativeRect{*x - across, *y - down, 2 * across, 2 * down};
    }
    return RelativeRect{*x, *y, NumberAt(fields, "RegionBoundary/rbW").value_or(0),
                        NumberAt(fields, "RegionBoundary/rbH").value_or(0)};
}

// IPTC's roles and types are identifiers of its vocabularies. A region that says how to crop,
// rather than what is there, is no subject.
RegionKind KindOfIdentifiers(const Fields& fields)
{
    bool isAnimal = false;
    for (const auto& [path, text] : fields) {
        const bool isRole = path.compare(0, 5, "rRole") == 0;
        const bool isType = path.compare(0, 6, "rCtype") == 0;
        if (isRole && (text.find("ropping") != std::string::npos ||
                       text.find("recomCrop") != std::string::npos))
            return RegionKind::Other;
        isAnimal = isAnimal || (isType && text.find("animal") != std::string::npos);
    }
    return isAnimal ? RegionKind::Animal : RegionKind::Subject;
}

void AddIptcRegions(const Exiv2::XmpData& data, PixelSize displayed, int orientation,
                    std::vector<XmpRegion>& regions)
{
    const PixelSize stored = StoredSize(displayed, orientation);
    for (const Item& item : ItemsOf(data, RootKeyOf(RegionStandard::Iptc), "")) {
        const bool isInPixels = TextAt(item.Values, "RegionBoundary/rbUnit") == "pixel";
        auto rect = IptcBoundary(item.Values, stored, isInPixels);
        if (!rect)
            continue;
        if (isInPixels)
            rect = RelativeRect{rect->X / stored.Width, rect->Y / stored.Height,
                                rect->Width / stored.Width, rect->Height / stored.Height};
        if (IsSensible(*rect))
            regions.push_back({RegionStandard::Iptc, item.Key, ToDisplayed(*rect, orientation),
                               KindOfIdentifiers(item.Values), TextAt(item.Values, "Name")});
    }
}

} // namespace

const char* RootKeyOf(RegionStandard standard)
{
    switch (standard) {
    case RegionStandard::MetadataWorkingGroup: return "Xmp.mwg-rs.Regions";
    case RegionStandard::Iptc: return "Xmp.iptcExt.ImageRegion";
    case RegionStandard::Microsoft: break;
    }
    return "Xmp.MP.RegionInfo";
}

std::string PathBelow(const std::string& root, const std::string& key)
{
    if (key.compare(0, root.size(), root) != 0 || key.size() <= root.size())
        return "";
    if (key[root.size()] == '/')
        return WithoutPrefixes(key.substr(root.size() + 1));
    return key[root.size()] == '[' ? WithoutPrefixes(key.substr(root.size())) : "";
}

std::vector<XmpRegion> ListXmpRegions(const Exiv2::XmpData& data, PixelSize displayed,
                                      int orientation)
{
    std::vector<XmpRegion> regions;
    AddWorkingGroupRegions(data, displayed, orientation, regions);
    AddIptcRegions(data, displayed, orientation, regions);
    AddMicrosoftRegions(data, orientation, regions);
    return regions;
}

} // namespace vistaTrim::photo
