#include "output/result_text.h"

#include <charconv>
#include <vector>

namespace vistaTrim::cli {

namespace {

constexpr size_t kFieldsOfCrop = 11 + photo::kNumMeasures; // all but the error

// The shortest text that round-trips.
std::string NumberText(double value)
{
    char text[40];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    return std::string(text, end.ptr);
}

std::string Quoted(const std::string& field)
{
    if (field.find_first_of(",\"\r\n") == std::string::npos)
        return field;
    std::string quoted = "\"";
    for (const char c : field) {
        if (c == '"')
            quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

std::string Line(const std::vector<std::string>& fields)
{
    std::string line;
    for (size_t i = 0; i < fields.size(); ++i)
        line += (i == 0 ? "" : ",") + Quoted(fields[i]);
    return line + "\n";
}

std::vector<std::string> PhotoFields(const PhotoResult& result)
{
    if (!result.Error.empty())
        return {result.File, "", "", "", ""};
    return {result.File, std::to_string(result.Found.Size.Width),
            std::to_string(result.Found.Size.Height), std::to_string(result.Found.Crops.size()),
            "0"};
}

} // namespace

std::string CsvHeader()
{
    std::vector<std::string> fields = {
        "file", "photoWidth", "photoHeight", "crops",  "rank",
        "x",    "y",          "width",       "height", "coversContent"};
    for (const photo::Measure& measure : photo::kMeasures)
        fields.emplace_back(measure.Name);
    fields.emplace_back("expectedOverlap");
    fields.emplace_back("error");
    return Line(fields);
}

std::string CsvLines(const PhotoResult& result)
{
    std::vector<std::string> fields = PhotoFields(result);
    if (result.Found.Crops.empty() || !result.Error.empty()) {
        fields.resize(kFieldsOfCrop);
        fields.push_back(result.Error);
        return Line(fields);
    }
    std::string lines;
    size_t rank = 0;
    for (const photo::Crop& crop : result.Found.Crops) {
        fields.resize(4);
        fields.push_back(std::to_string(++rank));
        for (const int32_t value : {crop.Rect.X, crop.Rect.Y, crop.Rect.Width, crop.Rect.Height})
            fields.push_back(std::to_string(value));
        fields.emplace_back(crop.CoversContent ? "true" : "false");
        for (const photo::Measure& measure : photo::kMeasures)
            fields.push_back(NumberText(crop.Scores.*measure.Value));
        fields.push_back(NumberText(crop.ExpectedOverlap));
        fields.emplace_back("");
        lines += Line(fields);
    }
    return lines;
}

} // namespace vistaTrim::cli
