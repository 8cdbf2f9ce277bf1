#include "batch/chosen_crops.h"

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>

#include "options/program_error.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/shape.h"

namespace vistaTrim::cli {

namespace {

using nlohmann::json;

constexpr int64_t kLargestPixel = 100'000'000; // sums of two still fit 32 bits

size_t LinesIn(const std::string& text, size_t begin, size_t end)
{
    return static_cast<size_t>(std::count(text.begin() + static_cast<ptrdiff_t>(begin),
                                          text.begin() + static_cast<ptrdiff_t>(end), '\n'));
}

[[noreturn]] void Fail(const std::string& place, const std::string& fault)
{
    throw ProgramError(place + ": " + OneLine(fault));
}

// Lists and objects can be nested so deeply that writing them out overflows the stack.
std::string ShownValue(const json& value)
{
    return value.is_structured() ? std::string("an ") + value.type_name() : value.dump();
}

struct ObjectText {
    size_t Begin;
    size_t End;  // past the closing brace
    size_t Line; // on which it begins, from 1
};

// Finds the objects of the text by their braces, so that messages can name the line of each.
class ObjectFinder {
public:
    ObjectFinder(const std::string& text, const std::string& source) : Text(text), Source(source)
    {
    }

    std::vector<ObjectText> Find()
    {
        std::vector<ObjectText> objects;
        bool inArray = false;
        size_t line = 1;
        size_t counted = 0; // counts on, because files can hold a great many objects
        for (size_t i = 0; i < Text.size();) {
            const char c = Text[i];
            if (c == '{') {
                line += LinesIn(Text, counted, i);
                counted = i;
                objects.push_back({i, EndOfObject(i), line});
                i = objects.back().End;
            } else if (c == '[' && objects.empty() && !inArray) {
                inArray = true;
                ++i;
            } else if (c == ' ' || c == '\t' || c == '\r' || c == '\n' ||
                       (inArray && (c == ',' || c == ']'))) {
                ++i;
            } else {
                Fail(Place(i), "is not the JSON of suggest or of a manifest");
            }
        }
        return objects;
    }

    std::string Place(size_t at) const
    {
        return PlaceOfLine(LinesIn(Text, 0, at) + 1);
    }

    std::string PlaceOf(const ObjectText& object) const
    {
        return PlaceOfLine(object.Line);
    }

private:
    std::string PlaceOfLine(size_t line) const
    {
        return Source + ":" + std::to_string(line);
    }

    size_t EndOfObject(size_t begin) const
    {
        int depth = 0;
        bool inString = false;
        for (size_t i = begin; i < Text.size(); ++i) {
            const char c = Text[i];
            if (inString && c == '\\')
                ++i;
            else if (c == '"')
                inString = !inString;
            else if (!inString && c == '{')
                ++depth;
            else if (!inString && c == '}' && --depth == 0)
                return i + 1;
        }
        Fail(Place(begin), "this object is never closed");
    }

    const std::string& Text;
    const std::string& Source;
};

int32_t Whole(const json& object, const char* name, int64_t least, const std::string& place)
{
    if (!object.contains(name))
        Fail(place, std::string("has no ") + name);
    const json& value = object[name];
    if (!value.is_number_integer() || value.get<double>() < static_cast<double>(least) ||
        value.get<double>() > static_cast<double>(kLargestPixel))
        Fail(place, std::string(name) + " must be an integer of at least " + std::to_string(least) +
                        ", not " + ShownValue(value));
    return value.get<int32_t>();
}

std::string Word(const json& object, const char* name, const std::string& place)
{
    if (!object.contains(name))
        return "";
    if (!object[name].is_string())
        Fail(place, std::string(name) + " must be a string, not " + ShownValue(object[name]));
    return object[name].get<std::string>();
}

// The shape becomes part of a file name.
void CheckShapeName(const std::string& name, const std::string& place)
{
    if (name.find('/') != std::string::npos || name.find('\0') != std::string::npos)
        Fail(place, "shape must not contain a slash");
}

CropLabel LabelOf(const json& crop, const photo::Crop& made, size_t index, const std::string& place)
{
    CropLabel label;
    label.Shape = Word(crop, "shape", place);
    CheckShapeName(label.Shape, place);
    const std::string ratio = Word(crop, "ratio", place);
    if (!ratio.empty() && !photo::ParseRatio(ratio))
        Fail(place, "ratio '" + ratio + "' is not W:H");
    label.Ratio = photo::FileSafeRatio(ratio.empty() ? made.Aspect.CommonName() : ratio);
    label.Rank =
        crop.contains("rank") ? Whole(crop, "rank", 1, place) : static_cast<int32_t>(index) + 1;
    if (!crop.contains("fill"))
        return label;
    const json& fill = crop["fill"];
    if (!fill.is_object())
        Fail(place, "fill must have width and height");
    label.Fill = {Whole(fill, "width", 1, place + ", fill"),
                  Whole(fill, "height", 1, place + ", fill")};
    // A crop of another shape would come out stretched. A few pixels given up for a wish are fine.
    const double across = static_cast<double>(label.Fill->Width) / made.Rect.Width;
    const double down = static_cast<double>(label.Fill->Height) / made.Rect.Height;
    const double slack = 0.02 + 1.0 / std::min(made.Rect.Width, made.Rect.Height);
    if (std::abs(across / down - 1.0) > slack)
        Fail(place, "the crop does not have the ratio of its fill; change or remove fill");
    return label;
}

photo::Crop CropOf(const json& crop, const std::optional<photo::PixelSize>& photo,
                   const std::string& place)
{
    if (!crop.is_object())
        Fail(place, "must be an object");
    photo::Crop made;
    made.Rect = {Whole(crop, "x", 0, place), Whole(crop, "y", 0, place),
                 Whole(crop, "width", 1, place), Whole(crop, "height", 1, place)};
    if (photo && !photo::Contains({0, 0, photo->Width, photo->Height}, made.Rect))
        Fail(place, "leaves the photograph, which is " + std::to_string(photo->Width) + " x " +
                        std::to_string(photo->Height));
    const std::string aspect = Word(crop, "aspect", place);
    const auto ratio = photo::ParseRatio(aspect);
    if (!aspect.empty() && !ratio)
        Fail(place, "aspect '" + aspect + "' is not W:H");
    made.Aspect = ratio.value_or(photo::Reduced(made.Rect.Width, made.Rect.Height));
    made.CoversContent = crop.contains("coversContent") && crop["coversContent"] == true;
    if (crop.contains("scores") && crop["scores"].is_object())
        for (const photo::Measure& measure : photo::kMeasures)
            if (crop["scores"].contains(measure.Name) && crop["scores"][measure.Name].is_number())
                made.Scores.*measure.Value = crop["scores"][measure.Name].get<double>();
    return made;
}

ChosenPhoto PhotoOf(const json& object, const std::string& place)
{
    ChosenPhoto photo;
    photo.Source = place;
    photo.File = Word(object, "file", place);
    if (photo.File.empty())
        Fail(place, "has no file");
    if (object.contains("width") || object.contains("height"))
        photo.Size = {Whole(object, "width", 1, place), Whole(object, "height", 1, place)};
    if (!object.contains("crops"))
        return photo;
    const json& crops = object["crops"];
    if (!crops.is_array())
        Fail(place, "crops must be an array");
    for (size_t i = 0; i < crops.size(); ++i) {
        const std::string at = place + ": crop " + std::to_string(i + 1);
        photo.Crops.push_back(CropOf(crops[i], photo.Size, at));
        photo.Labels.push_back(LabelOf(crops[i], photo.Crops.back(), i, at));
    }
    return photo;
}

json Parsed(const std::string& text, const ObjectText& object, const ObjectFinder& finder)
{
    try {
        return json::parse(text.begin() + static_cast<ptrdiff_t>(object.Begin),
                           text.begin() + static_cast<ptrdiff_t>(object.End));
    } catch (const json::parse_error& error) {
        const size_t at = object.Begin + (error.byte > 0 ? error.byte - 1 : 0);
        Fail(finder.Place(std::min(at, object.End)), "is not JSON");
    } catch (const json::out_of_range&) {
        Fail(finder.PlaceOf(object), "holds a number that is too large");
    }
}

} // namespace

ChosenCrops ReadChosenCrops(const std::string& text, const std::string& source)
{
    ObjectFinder finder(text, source);
    ChosenCrops chosen;
    for (const ObjectText& object : finder.Find()) {
        const ChosenPhoto photo = PhotoOf(Parsed(text, object, finder), finder.PlaceOf(object));
        if (photo.Crops.empty())
            ++chosen.WithoutCrops;
        else
            chosen.Photos.push_back(photo);
    }
    return chosen;
}

} // namespace vistaTrim::cli
