#include "output/picture_snippet.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <vector>

namespace vistaTrim::cli {

namespace {

struct Choice {
    double Ratio = 1;
    std::vector<WrittenCrop> Files; // by width
};

std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        default: escaped += c;
        }
    }
    return escaped;
}

// Escapes commas too, because they separate the entries of a srcset.
std::string Address(const std::string& file, const std::string& page)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder = fs::absolute(page).parent_path();
    const fs::path relative = fs::proximate(fs::absolute(file), folder, error);
    const std::string path = error ? file : relative.generic_string();
    std::string address;
    for (const char c : path) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.' || c == '~' ||
                           c == '/';
        if (plain) {
            address += c;
        } else {
            constexpr const char* kDigits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(c);
            address += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return address;
}

std::vector<Choice> ChoicesOf(const PhotoResult& result)
{
    std::vector<Choice> choices;
    std::vector<photo::Ratio> seen;
    for (size_t i = 0; i < result.Found.Crops.size(); ++i) {
        const photo::Crop& crop = result.Found.Crops[i];
        if (std::find(seen.begin(), seen.end(), crop.Aspect) != seen.end())
            continue; // only the best one of a ratio
        Choice choice;
        for (const WrittenCrop& file : result.Crops)
            if (file.Crop == i)
                choice.Files.push_back(file);
        if (choice.Files.empty())
            continue;
        seen.push_back(crop.Aspect);
        std::sort(
            choice.Files.begin(), choice.Files.end(),
            [](const WrittenCrop& a, const WrittenCrop& b) { return a.Size.Width < b.Size.Width; });
        const photo::PixelSize largest = choice.Files.back().Size;
        choice.Ratio = static_cast<double>(largest.Width) / largest.Height;
        choices.push_back(choice);
    }
    std::stable_sort(choices.begin(), choices.end(),
                     [](const Choice& a, const Choice& b) { return a.Ratio > b.Ratio; });
    return choices;
}

std::string SrcSet(const Choice& choice, const std::string& page)
{
    std::string set;
    for (const WrittenCrop& file : choice.Files)
        set += (set.empty() ? "" : ", ") + Address(file.File, page) + " " +
               std::to_string(file.Size.Width) + "w";
    return "srcset=\"" + set + "\"";
}

std::string Sides(const Choice& choice)
{
    const photo::PixelSize size = choice.Files.back().Size;
    return "width=\"" + std::to_string(size.Width) + "\" height=\"" + std::to_string(size.Height) +
           "\"";
}

// The geometric mean of two ratios: from there on the window is nearer to the wider one.
std::string From(double wider, double narrower)
{
    const long thousandths = std::lround(1000.0 * std::sqrt(wider * narrower));
    return "media=\"(min-aspect-ratio: " + std::to_string(thousandths) + "/1000)\"";
}

} // namespace

std::string PictureSnippet(const PhotoResult& result, const std::string& page,
                           const std::string& sizes)
{
    const std::vector<Choice> choices = ChoicesOf(result);
    if (choices.empty())
        return "";
    const std::string shown = "sizes=\"" + Escaped(sizes) + "\"";
    std::string html = "<picture>\n";
    for (size_t i = 0; i + 1 < choices.size(); ++i)
        html += "  <source " + From(choices[i].Ratio, choices[i + 1].Ratio) + " " +
                SrcSet(choices[i], page) + " " + shown + " " + Sides(choices[i]) + ">\n";
    const Choice& last = choices.back();
    return html + "  <img src=\"" + Address(last.Files.back().File, page) + "\" " +
           SrcSet(last, page) + " " + shown + " " + Sides(last) + " alt=\"\">\n</picture>\n";
}

} // namespace vistaTrim::cli
