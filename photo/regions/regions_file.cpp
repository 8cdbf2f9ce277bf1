#include "vistaTrimPhoto/regions_file.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

using Json = nlohmann::json;

// Says what is wrong with a line; the reader adds the line number.
class LineFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

double NumberOf(const Json& region, const char* name)
{
    const Json& value = region.at(name);
    if (!value.is_number() || !std::isfinite(value.get<double>()))
        throw LineFault(std::string("\"") + name + "\" is not a number");
    return value.get<double>();
}

double SideOf(const Json& region, const char* name, const char* shortName)
{
    const char* used = region.contains(name) ? name : shortName;
    if (!region.contains(used))
        throw LineFault(std::string("a region has no \"") + name + "\"");
    const double side = NumberOf(region, used);
    if (!(side > 0))
        throw LineFault(std::string("\"") + used + "\" is not above 0");
    return side;
}

double CornerOf(const Json& region, const char* name)
{
    if (!region.contains(name))
        throw LineFault(std::string("a region has no \"") + name + "\"");
    return NumberOf(region, name);
}

std::string TextOf(const Json& region, const char* name)
{
    if (!region.contains(name))
        return "";
    if (!region.at(name).is_string())
        throw LineFault(std::string("\"") + name + "\" is not a string");
    return region.at(name).get<std::string>();
}

PixelRect OutwardRect(double x, double y, double width, double height)
{
    constexpr double kFarthest = 1e9;
    if (!(std::abs(x) <= kFarthest && std::abs(y) <= kFarthest && width <= kFarthest &&
          height <= kFarthest))
        throw LineFault("a region extends beyond the size of any photograph");
    const double left = std::floor(x);
    const double top = std::floor(y);
    // A side can be too short to change the sum.
    return {static_cast<int32_t>(left), static_cast<int32_t>(top),
            static_cast<int32_t>(std::max(1.0, std::ceil(x + width) - left)),
            static_cast<int32_t>(std::max(1.0, std::ceil(y + height) - top))};
}

// Without a wish the region is to be kept.
std::optional<WishKind> WishOf(const Json& region)
{
    if (!region.contains("wish"))
        return WishKind::Keep;
    const std::string name = TextOf(region, "wish");
    if (name == "none")
        return std::nullopt;
    for (const WishKind kind :
         {WishKind::Keep, WishKind::MustKeep, WishKind::Avoid, WishKind::MustAvoid})
        if (name == NameOf(kind))
            return kind;
    throw LineFault("\"wish\" is not one of keep, must-keep, avoid, must-avoid and none");
}

RegionKind KindOf(const Json& region)
{
    if (!region.contains("kind"))
        return RegionKind::Other;
    const auto kind = RegionKindOfName(TextOf(region, "kind"));
    if (!kind)
        throw LineFault("\"kind\" is not one of face, animal, subject and other");
    return *kind;
}

FoundRegion RegionOf(const Json& region)
{
    if (!region.is_object())
        throw LineFault("a region is not an object");
    FoundRegion found;
    found.Source = RegionSource::File;
    found.Rect = OutwardRect(CornerOf(region, "x"), CornerOf(region, "y"),
                             SideOf(region, "width", "w"), SideOf(region, "height", "h"));
    found.Kind = KindOf(region);
    found.Label = TextOf(region, "label");
    found.Wish = WishOf(region);
    if (region.contains("confidence")) {
        found.Confidence = NumberOf(region, "confidence");
        if (!(found.Confidence >= 0 && found.Confidence <= 1))
            throw LineFault("\"confidence\" is not between 0 and 1");
    }
    return found;
}

void ReadLine(const std::string& line, std::map<std::string, std::vector<FoundRegion>>& byName)
{
    const Json json = Json::parse(line, nullptr, false);
    if (json.is_discarded())
        throw LineFault("is not JSON");
    if (!json.is_object())
        throw LineFault("is not a JSON object");
    const std::string file = TextOf(json, "file");
    if (file.empty())
        throw LineFault("has no \"file\"");
    if (!json.contains("regions") || !json.at("regions").is_array())
        throw LineFault("has no list of \"regions\"");
    std::vector<FoundRegion>& regions = byName[file];
    for (const Json& region : json.at("regions"))
        regions.push_back(RegionOf(region));
}

std::string LastPartOf(const std::string& path)
{
    return path.substr(path.find_last_of('/') + 1);
}

} // namespace

RegionsFile::RegionsFile(const std::string& text, const std::string& source)
{
    std::istringstream stream(text);
    size_t number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (line.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        try {
            ReadLine(line, ByName);
        } catch (const LineFault& fault) {
            throw PhotoError(PhotoError::Kind::InvalidRequest,
                             source + ":" + std::to_string(number) + ": " + fault.what());
        }
    }
}

bool RegionsFile::Names(const std::string& photo) const
{
    return ByName.count(photo) != 0 || ByName.count(LastPartOf(photo)) != 0;
}

const std::vector<FoundRegion>& RegionsFile::RegionsOf(const std::string& photo) const
{
    static const std::vector<FoundRegion> kNone;
    auto found = ByName.find(photo);
    if (found == ByName.end())
        found = ByName.find(LastPartOf(photo));
    return found == ByName.end() ? kNone : found->second;
}

} // namespace vistaTrim::photo
