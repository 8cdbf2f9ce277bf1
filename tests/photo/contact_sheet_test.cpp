#include "vistaTrimPhoto/contact_sheet.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {
namespace {

using vips::VImage;

PixelImage Plain(PixelSize size, const std::array<uint8_t, 3>& colour)
{
    PixelImage image{size, 3, {}};
    for (int64_t i = 0; i < int64_t{size.Width} * size.Height; ++i)
        image.Bytes.insert(image.Bytes.end(), colour.begin(), colour.end());
    return image;
}

std::array<int, 3> At(const PixelImage& image, int x, int y)
{
    const size_t at =
        (static_cast<size_t>(y) * static_cast<size_t>(image.Size.Width) + static_cast<size_t>(x)) *
        3;
    return {image.Bytes[at], image.Bytes[at + 1], image.Bytes[at + 2]};
}

// Pixels that are not white, in a part of the image.
int Inked(const PixelImage& image, const PixelRect& part)
{
    int inked = 0;
    for (int y = part.Y; y < part.Y + part.Height; ++y)
        for (int x = part.X; x < part.X + part.Width; ++x)
            inked += At(image, x, y) != std::array<int, 3>{255, 255, 255} ? 1 : 0;
    return inked;
}

SheetLayout Layout(int32_t columns)
{
    SheetLayout layout;
    layout.Cell = {60, 40};
    layout.Gap = 5;
    layout.Caption = 24;
    layout.Columns = columns;
    return layout;
}

TEST(ContactSheet, RowsHaveRoomForCaptionAndCells)
{
    EXPECT_EQ(RowSize(Layout(3)), (PixelSize{195, 69}));
    EXPECT_EQ(SheetHead(Layout(3), {"a", "b", "c"}).Size, (PixelSize{195, 24}));
    EXPECT_EQ(SheetRow(Layout(3), "a", {}).Size, (PixelSize{195, 24}));
}

TEST(ContactSheet, PicturesAreCentredInTheirCells)
{
    const PixelImage row =
        SheetRow(Layout(3), "", {Plain({60, 40}, {200, 0, 0}), Plain({20, 40}, {0, 150, 0})});
    ASSERT_EQ(row.Size, (PixelSize{195, 69}));
    EXPECT_EQ(row.Channels, 3);
    const std::array<int, 3> white = {255, 255, 255};
    const std::array<int, 3> red = {200, 0, 0};
    const std::array<int, 3> green = {0, 150, 0};
    EXPECT_EQ(Inked(row, {0, 0, 195, 24}), 0); // a caption without text
    for (const auto& [x, y] : {std::pair{0, 24}, {59, 24}, {0, 63}, {59, 63}})
        EXPECT_EQ(At(row, x, y), red) << x << ", " << y;
    for (const auto& [x, y] :
         {std::pair{60, 24}, {64, 63}, {0, 64}, {84, 24}, {105, 63}, {190, 30}})
        EXPECT_EQ(At(row, x, y), white) << x << ", " << y;
    for (const auto& [x, y] : {std::pair{85, 24}, {104, 24}, {85, 63}, {104, 63}})
        EXPECT_EQ(At(row, x, y), green) << x << ", " << y;
    EXPECT_EQ(Inked(row, {0, 0, 195, 69}), 60 * 40 + 20 * 40);
}

TEST(ContactSheet, CaptionsAreAboveTheirColumnsAndLongOnesAreCut)
{
    const PixelImage head = SheetHead(Layout(3), {"one", "", "three"});
    EXPECT_GT(Inked(head, {0, 0, 65, 24}), 10);
    EXPECT_EQ(Inked(head, {65, 0, 65, 24}), 0);
    EXPECT_GT(Inked(head, {130, 0, 65, 24}), 10);
    EXPECT_EQ(SheetHead(Layout(2), {"a", "b", "more than there are columns"}).Size,
              (PixelSize{130, 24}));
    // A long one does not reach into the next column.
    const PixelImage two = SheetHead(Layout(2), {std::string(200, 'w'), ""});
    EXPECT_EQ(two.Size, (PixelSize{130, 24}));
    EXPECT_GT(Inked(two, {55, 0, 10, 24}), 0);
    EXPECT_EQ(Inked(two, {65, 0, 65, 24}), 0);
    // Above pictures, a caption may take the whole row.
    EXPECT_GT(Inked(SheetRow(Layout(3), std::string(200, 'w'), {}), {185, 0, 10, 24}), 0);
}

TEST(ContactSheet, CaptionsArePlainTextNotMarkup)
{
    const auto inkedWidth = [](const std::string& text) {
        const PixelImage row = SheetRow(Layout(6), text, {});
        int last = 0;
        for (int x = 0; x < row.Size.Width; ++x)
            if (Inked(row, {x, 0, 1, row.Size.Height}) > 0)
                last = x;
        return last;
    };
    EXPECT_GT(inkedWidth("<b>a</b>"), inkedWidth("a") + 20);
    EXPECT_GT(inkedWidth("&amp;"), inkedWidth("&") + 10);
    EXPECT_GT(inkedWidth("a\nbbbb"), inkedWidth("a") + 10); // on one line
    EXPECT_GT(inkedWidth("a\xff\xfe"), 0);                  // not UTF-8
    EXPECT_EQ(SheetRow(Layout(1), " \t\n", {}).Size, (PixelSize{65, 24}));
}

TEST(ContactSheet, HasAGapAroundItsRows)
{
    const TempFolder folder;
    const SheetLayout layout = Layout(2);
    const PixelImage full = Plain({60, 40}, {10, 20, 200});
    Encoding png;
    png.Format = ImageFormat::Png;
    WriteSheet(layout, {SheetHead(layout, {}), SheetRow(layout, "", {full, full})},
               folder.Path("s.png"), png);
    const VImage sheet = VImage::new_from_file(folder.Path("s.png").c_str());
    EXPECT_EQ(sheet.width(), 135);
    EXPECT_EQ(sheet.height(), 5 + 24 + 69 + 5);
    const std::vector<double> white = {255, 255, 255};
    const std::vector<double> blue = {10, 20, 200};
    EXPECT_EQ(sheet.getpoint(4, 60), white);
    EXPECT_EQ(sheet.getpoint(5, 53), blue);
    EXPECT_EQ(sheet.getpoint(5, 52), white);
    EXPECT_EQ(sheet.getpoint(64, 92), blue);
    EXPECT_EQ(sheet.getpoint(65, 92), white);
    EXPECT_EQ(sheet.getpoint(70, 92), blue);
    EXPECT_EQ(sheet.getpoint(129, 92), blue);
    EXPECT_EQ(sheet.getpoint(130, 92), white);
    EXPECT_EQ(sheet.getpoint(70, 93), white);
    EXPECT_EQ(sheet.getpoint(134, 102), white);
}

TEST(ContactSheet, IsWrittenAtTheRequestedQuality)
{
    const TempFolder folder;
    SheetLayout layout = Layout(1);
    PixelImage noise = Plain(layout.Cell, {0, 0, 0});
    unsigned state = 1;
    for (uint8_t& byte : noise.Bytes)
        byte = static_cast<uint8_t>((state = state * 1664525U + 1013904223U) >> 24);
    size_t previous = 0;
    for (const int quality : {20, 60, 95}) {
        Encoding jpeg;
        jpeg.Quality = quality;
        WriteSheet(layout, {SheetRow(layout, "", {noise})}, folder.Path("s.jpg"), jpeg);
        const size_t size = ReadText(folder.Path("s.jpg")).size();
        EXPECT_GT(size, previous + previous / 4) << quality;
        previous = size;
    }
}

TEST(ContactSheet, RefusesRowsOfAnotherLayout)
{
    const TempFolder folder;
    try {
        WriteSheet(Layout(2), {SheetHead(Layout(3), {})}, folder.Path("s.png"), {});
        FAIL() << "no error";
    } catch (const PhotoError& error) {
        EXPECT_EQ(error.GetKind(), PhotoError::Kind::InvalidRequest);
    }
    PixelImage grey{{130, 24}, 1, std::vector<uint8_t>(130 * 24)};
    EXPECT_THROW(WriteSheet(Layout(2), {grey}, folder.Path("s.png"), {}), PhotoError);
    EXPECT_TRUE(folder.Files().empty());
}

} // namespace
} // namespace vistaTrim::photo
