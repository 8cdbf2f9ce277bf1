#include "result_text.h"

#include <charconv>
#include <vector>

namespace vistaTrim::host {

namespace {

// The shortest text that reads back as the same number.
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
    return {result.File, std::to_string(result.Size.Width), std::to_string(result.Size.Height),
            std::to_string(result.Crops.size()), "0"};
}

} // namespace

std::string CsvHeader()
{
    return "file,photoWidth,photoHeight,crops,rank,x,y,width,height,coversContent,composition,"
           "coverage,border,peak,centrePeak,roi,merged,error\n";
}

std::string CsvLines(const PhotoResult& result)
{
    std::vector<std::string> fields = PhotoFields(result);
    if (result.Crops.empty() || !result.Error.empty()) {
        fields.resize(17);
        fields.push_back(result.Error);
        return Line(fields);
    }
    std::string lines;
    size_t rank = 0;
    for (const SuggestedCrop& crop : result.Crops) {
        fields.resize(4);
        fields.push_back(std::to_string(++rank));
        for (const int32_t value : {crop.Rect.X, crop.Rect.Y, crop.Rect.Width, crop.Rect.Height})
            fields.push_back(std::to_string(value));
        fields.emplace_back(crop.CoversContent ? "true" : "false");
        for (int measure = 0; measure < kNumMeasures; ++measure)
            fields.push_back(NumberText(MeasureOf(crop.Scores, measure)));
        fields.push_back(NumberText(crop.Scores.RoiScore));
        fields.push_back(NumberText(crop.Scores.MergedScore));
        fields.emplace_back("");
        lines += Line(fields);
    }
    return lines;
}

} // namespace vistaTrim::host
