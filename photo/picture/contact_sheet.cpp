#include "vistaTrimPhoto/contact_sheet.h"

#include <algorithm>
#include <functional>
#include <memory>

#include "picture/vips_pixels.h"
#include "picture/vips_runtime.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

using vips::VImage;

// Plain text as one line of the markup that libvips expects.
std::string Markup(const std::string& text)
{
    std::string line = text;
    for (char& c : line)
        if (static_cast<unsigned char>(c) < ' ')
            c = ' ';
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(line.c_str(), static_cast<gssize>(line.size())), &g_free);
    const std::unique_ptr<char, decltype(&g_free)> escaped(g_markup_escape_text(valid.get(), -1),
                                                           &g_free);
    return escaped.get();
}

VImage White(int width, int height)
{
    return VImage::black(width, height, VImage::option()->set("bands", 3))
        .linear({1, 1, 1}, {255, 255, 255}, VImage::option()->set("uchar", true))
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

VImage OnWhite(const VImage& image, VipsCompassDirection where, int width, int height)
{
    return image.gravity(where, width, height, VImage::option()->set("extend", VIPS_EXTEND_WHITE));
}

// Black on white, left-aligned, vertically centred.
VImage TextLine(const std::string& text, int width, int height)
{
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
        return White(width, height);
    VImage ink = VImage::text(Markup(text).c_str(),
                              VImage::option()->set("font", "sans 12")->set("dpi", 96));
    if (ink.width() > width) // the end of a long name is cut off
        ink = ink.extract_area(0, 0, width, ink.height());
    const VImage paper = ink.invert();
    return OnWhite(VImage::bandjoin(std::vector<VImage>{paper, paper, paper}),
                   VIPS_COMPASS_DIRECTION_WEST, width, height)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

PixelImage Drawn(const std::function<VImage()>& draw)
{
    PixelImage pixels;
    RunVips([&] { pixels = PixelsOf(draw().cast(VIPS_FORMAT_UCHAR)); }, PhotoError::Kind::Internal);
    return pixels;
}

VImage SideBySide(const std::vector<VImage>& images)
{
    return VImage::arrayjoin(images);
}

} // namespace

PixelSize RowSize(const SheetLayout& layout)
{
    return {(layout.Cell.Width + layout.Gap) * layout.Columns,
            layout.Caption + layout.Cell.Height + layout.Gap};
}

PixelImage SheetHead(const SheetLayout& layout, const std::vector<std::string>& captions)
{
    return Drawn([&] {
        std::vector<VImage> cells;
        for (size_t i = 0; i < static_cast<size_t>(layout.Columns); ++i)
            cells.push_back(TextLine(i < captions.size() ? captions[i] : "",
                                     layout.Cell.Width + layout.Gap, layout.Caption));
        return SideBySide(cells);
    });
}

PixelImage SheetRow(const SheetLayout& layout, const std::string& caption,
                    const std::vector<PixelImage>& pictures)
{
    return Drawn([&] {
        VImage line = TextLine(caption, RowSize(layout).Width, layout.Caption);
        if (pictures.empty())
            return line;
        const int width = layout.Cell.Width + layout.Gap;
        const int height = layout.Cell.Height + layout.Gap;
        std::vector<VImage> cells;
        for (size_t i = 0; i < static_cast<size_t>(layout.Columns); ++i) {
            if (i >= pictures.size()) {
                cells.push_back(White(width, height));
                continue;
            }
            const VImage cell =
                OnWhite(BorrowedImage(ViewOf(pictures[i])), VIPS_COMPASS_DIRECTION_CENTRE,
                        layout.Cell.Width, layout.Cell.Height);
            cells.push_back(OnWhite(cell, VIPS_COMPASS_DIRECTION_NORTH_WEST, width, height));
        }
        return line.join(SideBySide(cells), VIPS_DIRECTION_VERTICAL);
    });
}

void WriteSheet(const SheetLayout& layout, const std::vector<PixelImage>& rows,
                const std::string& path, const Encoding& encoding)
{
    const int32_t width = RowSize(layout).Width;
    PixelImage sheet{{width + layout.Gap, 2 * layout.Gap}, 3, {}};
    for (const PixelImage& row : rows) {
        if (row.Size.Width != width || row.Channels != 3)
            throw PhotoError(PhotoError::Kind::InvalidRequest,
                             "the row's layout differs from the sheet's");
        sheet.Size.Height += row.Size.Height;
    }
    const size_t stride = static_cast<size_t>(sheet.Size.Width) * 3;
    sheet.Bytes.assign(stride * static_cast<size_t>(sheet.Size.Height), 255);
    size_t y = static_cast<size_t>(layout.Gap);
    for (const PixelImage& row : rows) {
        const size_t bytes = static_cast<size_t>(width) * 3;
        for (size_t line = 0; line < static_cast<size_t>(row.Size.Height); ++line, ++y)
            std::copy_n(
                row.Bytes.begin() + static_cast<ptrdiff_t>(line * bytes), bytes,
                sheet.Bytes.begin() +
                    static_cast<ptrdiff_t>(y * stride + static_cast<size_t>(layout.Gap) * 3));
    }
    WriteImage(sheet, path, encoding);
}

} // namespace vistaTrim::photo
