#include "report/report_page.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "output/result_text.h"
#include "output/shown_ratio.h"
#include "report/base64.h"
#include "report/page_assets.h"
#include "report/report_data.h"
#include "text/shown_name.h"

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

std::string Percent(int64_t part, int64_t whole)
{
    return Fixed(100.0 * static_cast<double>(part) / static_cast<double>(whole), 4) + "%";
}

std::string SizeText(int32_t width, int32_t height)
{
    return std::to_string(width) + " &times; " + std::to_string(height);
}

std::string Count(size_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string RectStyle(const PixelRect& rect, PixelSize photo)
{
    return "left:" + Percent(rect.X, photo.Width) + ";top:" + Percent(rect.Y, photo.Height) +
           ";width:" + Percent(rect.Width, photo.Width) +
           ";height:" + Percent(rect.Height, photo.Height);
}

// The corner of its frame that each crop's number goes to: the first where it hides no other,
// assuming that the photograph is about twenty-four numbers wide, as on paper.
std::vector<const char*> NumberCorners(const std::vector<photo::Crop>& crops, PixelSize photo)
{
    constexpr std::array<const char*, 4> kCorners = {"at-left at-top", "at-right at-top",
                                                     "at-left at-bottom", "at-right at-bottom"};
    const int32_t size = std::max(photo.Width, photo.Height) / 24 + 1;
    std::vector<std::pair<int32_t, int32_t>> taken;
    std::vector<const char*> corners;
    for (const photo::Crop& crop : crops) {
        const int32_t right = crop.Rect.X + crop.Rect.Width - size;
        const int32_t bottom = crop.Rect.Y + crop.Rect.Height - size;
        const std::array<std::pair<int32_t, int32_t>, 4> places = {{{crop.Rect.X, crop.Rect.Y},
                                                                    {right, crop.Rect.Y},
                                                                    {crop.Rect.X, bottom},
                                                                    {right, bottom}}};
        size_t corner = 0;
        while (corner < places.size() &&
               std::any_of(taken.begin(), taken.end(), [&](const std::pair<int32_t, int32_t>& at) {
                   return std::abs(at.first - places[corner].first) < size &&
                          std::abs(at.second - places[corner].second) < size;
               }))
            ++corner;
        corner %= places.size();
        taken.push_back(places[corner]);
        corners.push_back(kCorners[corner]);
    }
    return corners;
}

std::string Frames(const photo::Suggestions& found)
{
    const std::vector<const char*> corners = NumberCorners(found.Crops, found.Size);
    std::string html;
    for (size_t i = 0; i < found.Crops.size(); ++i)
        html += "<div class=\"frame\" style=\"" + RectStyle(found.Crops[i].Rect, found.Size) +
                "\"><span class=\"badge " + corners[i] + "\">" + std::to_string(i + 1) +
                "</span></div>";
    return html;
}

std::string CropList(const PhotoResult& result)
{
    const std::vector<photo::Crop>& crops = result.Found.Crops;
    const std::vector<double> overlaps = ExpectedOverlaps(JsonLine(result));
    std::string html = "<ol class=\"list\">";
    for (size_t i = 0; i < crops.size(); ++i) {
        const PixelRect& rect = crops[i].Rect;
        html += "<li><b>" + std::to_string(i + 1) + " &middot; " + ShownRatioOf(result, i) +
                "</b><span>" + SizeText(rect.Width, rect.Height) + " at " + std::to_string(rect.X) +
                ", " + std::to_string(rect.Y) + "</span>";
        if (!overlaps.empty())
            html += "<span>expected overlap " + Fixed(overlaps[i], 2) + "</span>";
        html += "</li>";
    }
    return html + "</ol>";
}

std::string NameOf(const PhotoResult& result)
{
    return EscapedHtml(Shown(std::filesystem::path(result.File).filename().string()));
}

std::string SectionStart(const PhotoResult& result, size_t index, const char* kind)
{
    return std::string("<article class=\"") + kind + "\" id=\"photo-" + std::to_string(index + 1) +
           "\" data-file=\"" + EscapedHtml(result.File) + "\"><h2>" + NameOf(result);
}

std::string DataBlock(const char* kind, const std::string& json)
{
    return std::string("<script type=\"application/json\" class=\"") + kind + "\">" + json +
           "</script>";
}

// The page allows its script by this hash, so nothing else in it can ever run.
std::string ScriptHash()
{
    std::vector<uint8_t> digest;
    for (const std::string hex = kReportScriptSha256; digest.size() * 2 < hex.size();)
        digest.push_back(
            static_cast<uint8_t>(std::stoi(hex.substr(digest.size() * 2, 2), nullptr, 16)));
    return "sha256-" + Base64(digest);
}

constexpr const char* kPhotographsMark = "{{photographs}}";

std::string Replaced(std::string text, const std::string& mark, const std::string& value)
{
    return text.replace(text.find(mark), mark.size(), value);
}

std::string PageBefore(const std::string& mark)
{
    const std::string page = kReportPage;
    return page.substr(0, page.find(mark));
}

std::string PageAfter(const std::string& mark)
{
    const std::string page = kReportPage;
    return page.substr(page.find(mark) + mark.size());
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
    std::string page = PageBefore(kPhotographsMark);
    page = Replaced(page, "{{scriptHash}}", ScriptHash());
    page = Replaced(page, "{{measures}}", ReportMeasures());
    page = Replaced(page, "{{style}}", kReportStyle);
    return Replaced(page, "{{script}}", kReportScript);
}

std::string ReportSection(const PhotoResult& result, const ReportPictures& pictures, size_t index)
{
    const photo::Suggestions& found = result.Found;
    std::string html = SectionStart(result, index, "photo") + " <small>" +
                       SizeText(found.Size.Width, found.Size.Height) +
                       "</small></h2><div class=\"stage\" style=\"--ratio:" +
                       Fixed(static_cast<double>(found.Size.Width) / found.Size.Height, 6) +
                       "\"><img class=\"whole\" alt=\"Photograph " + NameOf(result) + "\" src=\"" +
                       pictures.Photo + "\">" + Frames(found) + "</div>" + CropList(result);
    if (found.Explained) {
        const std::string note = photo::NoteOf(*found.Explained, kWishPrefix);
        if (!note.empty())
            html += "<p>" + EscapedHtml(note) + "</p>";
    }
    html += DataBlock("data", ReportData(result));
    if (!pictures.Maps.empty())
        html += DataBlock("maps", ReportMaps(pictures.Maps));
    return html + "</article>\n";
}

std::string ReportFailure(const PhotoResult& result, size_t index)
{
    return SectionStart(result, index, "photo failed") + "</h2><p>" + EscapedHtml(result.Error) +
           "</p></article>\n";
}

std::string ReportEnd(size_t photographs, size_t failed)
{
    std::string count = Count(photographs, "photograph", "photographs");
    if (failed > 0)
        count += ", " + std::to_string(failed) + " not readable";
    return Replaced(PageAfter(kPhotographsMark), "{{count}}", count + ".");
}

} // namespace vistaTrim::cli
