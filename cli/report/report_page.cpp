#include "report/report_page.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "report/page_assets.h"

namespace vistaTrim::cli {

namespace {

using photo::PixelRect;
using photo::PixelSize;

std::string Fixed(double value, int decimals)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string Percent(double share)
{
    return Fixed(100.0 * std::clamp(share, 0.0, 1.0), 3) + "%";
}

// "ColorContrastMap" becomes "Color contrast", "SideMapTop" becomes "Side top".
std::string MapLabel(const std::string& name)
{
    std::string spaced;
    for (size_t i = 0; i < name.size(); ++i) {
        const bool isCapital = name[i] >= 'A' && name[i] <= 'Z';
        if (isCapital && i > 0)
            spaced += ' ';
        spaced += isCapital && i > 0 ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
    }
    const size_t map = spaced.find(" map");
    if (map != std::string::npos)
        spaced.erase(map, 4);
    return spaced;
}

std::string Bar(const photo::Measure& measure, double value)
{
    return std::string("<div class=\"bar\" title=\"") + measure.Hint + "\"><span>" + measure.Label +
           "</span><i><b style=\"width:" + Percent(value) + "\"></b></i><em>" + Fixed(value, 3) +
           "</em></div>";
}

std::string RectStyle(const PixelRect& rect, PixelSize photo)
{
    return "left:" + Percent(static_cast<double>(rect.X) / photo.Width) +
           ";top:" + Percent(static_cast<double>(rect.Y) / photo.Height) +
           ";width:" + Percent(static_cast<double>(rect.Width) / photo.Width) +
           ";height:" + Percent(static_cast<double>(rect.Height) / photo.Height);
}

// How well the wishes are met only if there is something to say; the merged rank has a line of its
// own.
bool IsShownAsBar(const photo::Measure& measure, const photo::Scores& scores)
{
    return measure.Weight != nullptr || (measure.Value == &photo::Scores::Roi && scores.Roi != 1.0);
}

std::string CropCard(const photo::Crop& crop, const std::string& picture, size_t rank)
{
    const std::string number = std::to_string(rank + 1);
    std::string card = "<article class=\"card\" data-crop=\"" + std::to_string(rank) +
                       "\" tabindex=\"0\"><div class=\"shot\"><img alt=\"Crop " + number +
                       "\" src=\"" + picture + "\"></div><div class=\"facts\"><h3><span>" + number +
                       "</span>" + crop.Aspect.Text() + "</h3><p>" +
                       std::to_string(crop.Rect.Width) + " &times; " +
                       std::to_string(crop.Rect.Height) + " at " + std::to_string(crop.Rect.X) +
                       ", " + std::to_string(crop.Rect.Y) +
                       (crop.CoversContent ? " &middot; covers the content" : "") + "</p>";
    for (const photo::Measure& measure : photo::kMeasures)
        if (IsShownAsBar(measure, crop.Scores))
            card += Bar(measure, crop.Scores.*measure.Value);
    return card + "<p class=\"merged\">merged rank " + Fixed(crop.Scores.Merged, 4) +
           "</p></div></article>";
}

std::string Overlays(const ReportPictures& pictures)
{
    std::string html;
    for (const MapOverlay& map : pictures.Maps)
        html += "<img class=\"map\" hidden alt=\"\" data-map=\"" + map.Name + "\" src=\"" +
                map.DataUri + "\">";
    return html;
}

std::string MapButtons(const ReportPictures& pictures)
{
    std::string html = "<div class=\"maps\" role=\"group\" aria-label=\"Maps\">";
    for (const MapOverlay& map : pictures.Maps)
        html += "<button type=\"button\" aria-pressed=\"false\" data-map=\"" + map.Name + "\">" +
                MapLabel(map.Name) + "</button>";
    return html + "<label>strength <input type=\"range\" min=\"10\" max=\"100\" value=\"85\">"
                  "</label></div>";
}

std::string Heading(const PhotoResult& result)
{
    namespace fs = std::filesystem;
    return "<h2 title=\"" + EscapedHtml(result.File) + "\">" +
           EscapedHtml(fs::path(result.File).filename().string());
}

} // namespace

std::string EscapedHtml(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        case '\'': escaped += "&#39;"; break;
        default: escaped += c;
        }
    }
    return escaped;
}

std::string ReportBeginning()
{
    // Nothing may be loaded from anywhere, so that a page that is passed on stays what it was.
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
           "img-src data:; style-src 'unsafe-inline'; script-src 'unsafe-inline'\">"
           "<title>Crop report</title>\n<style>\n" +
           std::string(kReportStyle) +
           "</style></head>\n<body><header><h1>Crop report</h1><p>Pick a crop on the photograph "
           "(again for the next one there) or in the list; arrow keys go from one to the next. "
           "Maps lie over the photograph."
           "</p></header><main>\n";
}

std::string ReportSection(const PhotoResult& result, const ReportPictures& pictures, size_t index)
{
    const photo::Suggestions& found = result.Found;
    std::string html = "<section class=\"photo\" id=\"photo-" + std::to_string(index + 1) + "\">" +
                       Heading(result) + " <small>" + std::to_string(found.Size.Width) +
                       " &times; " + std::to_string(found.Size.Height) + "</small></h2>";
    html += "<div class=\"columns\"><div class=\"left\"><div class=\"stage\"><img class=\"whole\" "
            "alt=\"" +
            EscapedHtml(result.File) + "\" src=\"" + pictures.Photo + "\">" + Overlays(pictures);
    for (size_t i = 0; i < found.Crops.size(); ++i)
        // Badges stand side by side, so that crops of one corner do not hide each other's.
        html += "<div class=\"frame\" data-crop=\"" + std::to_string(i) + "\" style=\"" +
                RectStyle(found.Crops[i].Rect, found.Size) +
                "\"><span style=\"margin-left:" + std::to_string(24 * i) + "px\">" +
                std::to_string(i + 1) + "</span></div>";
    html += "</div>" + MapButtons(pictures) + "</div><div class=\"cards\">";
    for (size_t i = 0; i < found.Crops.size(); ++i)
        html += CropCard(found.Crops[i], pictures.Crops[i], i);
    if (found.Crops.empty())
        html += "<p class=\"none\">No crop" +
                (found.Explained ? ": " + EscapedHtml(photo::NoteOf(*found.Explained, kWishPrefix))
                                 : std::string()) +
                ".</p>";
    return html + "</div></div></section>\n";
}

std::string ReportFailure(const PhotoResult& result)
{
    return "<section class=\"photo failed\">" + Heading(result) + "</h2><p>" +
           EscapedHtml(result.Error) + "</p></section>\n";
}

std::string ReportEnd(size_t photographs, size_t failed)
{
    std::string html = "</main><footer>" + std::to_string(photographs) +
                       (photographs == 1 ? " photograph" : " photographs");
    if (failed > 0)
        html += ", " + std::to_string(failed) + " not readable";
    return html + ". Made by vistatrim.</footer>\n<script>\n" + kReportScript +
           "</script></body></html>\n";
}

} // namespace vistaTrim::cli
