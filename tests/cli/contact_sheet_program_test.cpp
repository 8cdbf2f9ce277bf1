// A contact sheet has a row for each photograph, whatever it is called and even if it is broken,
// with the photograph first and its crops after it.
#include <cmath>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"
#include "run_program.h"

namespace vistaTrim::cli {
namespace {

using namespace photo;

using vips::VImage;

VImage Plain(int width, int height, const std::vector<double>& colour)
{
    return VImage::black(width, height)
        .new_from_image(colour)
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

void ExpectColour(const VImage& sheet, int x, int y, const std::vector<double>& colour)
{
    const std::vector<double> found = sheet.getpoint(x, y);
    ASSERT_EQ(found.size(), 3U);
    for (size_t band = 0; band < 3; ++band)
        EXPECT_NEAR(found[band], colour[band], 8.0) << x << ", " << y; // JPEG is lossy
}

// How much ink there is in a line of text.
double InkOf(const VImage& sheet, int top)
{
    return 255.0 - sheet.extract_area(12, top, 372, 30).avg();
}

TEST(ContactSheet, HasARowOfPicturesForEachPhotograph)
{
    const TempFolder folder;
    Plain(900, 600, {200, 30, 30}).write_to_file(folder.Path("r [x] & <y>.png").c_str());
    Plain(900, 600, {30, 30, 200}).write_to_file(folder.Path("blue.png").c_str());
    WriteText(folder.Path("broken.jpg"), "no picture");
    const Outcome outcome =
        RunProgram({"contact-sheet", folder.Path("r [x] & <y>.png"), folder.Path("broken.jpg"),
                    folder.Path("blue.png"), "--top", "2", "-o", folder.Path("sheet.jpg")});
    EXPECT_EQ(outcome.Status, 1); // for the broken one
    const VImage sheet = VImage::new_from_file(folder.Path("sheet.jpg").c_str());
    // A gap of 12 around; a head of 30; rows of 30 + 240 + 12; the broken one's row is only its
    // message.
    EXPECT_EQ(sheet.width(), 3 * 372 + 12);
    ASSERT_EQ(sheet.height(), 12 + 30 + 282 + 30 + 282 + 12);
    for (int cell = 0; cell < 3; ++cell) {
        const int middle = 12 + 372 * cell + 180;
        ExpectColour(sheet, middle, 42 + 30 + 120, {200, 30, 30});
        ExpectColour(sheet, middle, 42 + 282 + 30 + 30 + 120, {30, 30, 200});
        ExpectColour(sheet, 12 + 372 * cell + 366, 42 + 30 + 120, {255, 255, 255}); // the gap
    }
    for (const int top : {12, 42, 42 + 282, 42 + 282 + 30})
        EXPECT_GT(InkOf(sheet, top), 1.0) << top;
}

TEST(ContactSheet, TakesShapesAndCells)
{
    const TempFolder folder;
    Scene(900, 600, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const Outcome outcome =
        RunProgram({"contact-sheet", folder.Path("a.jpg"), "--preset", "square", "--preset",
                    "story", "--cell", "100x80", "-o", folder.Path("sheet.png")});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    const VImage sheet = VImage::new_from_file(folder.Path("sheet.png").c_str());
    EXPECT_EQ(sheet.width(), 3 * 112 + 12);
    EXPECT_EQ(sheet.height(), 12 + 30 + 30 + 80 + 12 + 12);
    // The square is 80 wide in its cell of 100, the story 45.
    const auto widthOfCell = [&sheet](int cell) {
        const VImage row = sheet.extract_area(12 + 112 * cell, 12 + 30 + 30 + 40, 100, 1);
        return std::lround((row.extract_band(0) < 250).avg() / 255.0 * 100);
    };
    EXPECT_EQ(widthOfCell(0), 100);
    EXPECT_EQ(widthOfCell(1), 80);
    EXPECT_EQ(widthOfCell(2), 45);
}

// In the photograph and its crops; the sheet itself stays white.
TEST(ContactSheet, ShowsTheBackgroundThroughTransparentPixels)
{
    const TempFolder folder;
    Plain(600, 600, {200, 30, 30, 0}).write_to_file(folder.Path("a.png").c_str());
    const Outcome outcome =
        RunProgram({"contact-sheet", folder.Path("a.png"), "--background", "#2040c0", "-n", "1",
                    "--aspect", "1:1", "--cell", "100x80", "-o", folder.Path("sheet.png")});
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    const VImage sheet = VImage::new_from_file(folder.Path("sheet.png").c_str());
    for (int cell = 0; cell < 2; ++cell) {
        ExpectColour(sheet, 12 + 112 * cell + 50, 12 + 30 + 30 + 40, {0x20, 0x40, 0xc0});
        ExpectColour(sheet, 12 + 112 * cell + 4, 12 + 30 + 30 + 40, {255, 255, 255});
    }
}

TEST(ContactSheet, RejectsWhatItCannotWrite)
{
    const TempFolder folder;
    Scene(300, 200, 0.3, 0.6).write_to_file(folder.Path("a.jpg").c_str());
    const std::string a = folder.Path("a.jpg");
    EXPECT_EQ(RunProgram({"contact-sheet", a, "-o", folder.Path("sheet.gif")}).Status, 1);
    EXPECT_EQ(RunProgram({"contact-sheet", a, "-o", folder.Path("s.jpg"), "--cell", "9x9"}).Status,
              2);
    WriteText(folder.Path("s.jpg"), "precious");
    EXPECT_EQ(RunProgram({"contact-sheet", a, "-o", folder.Path("s.jpg")}).Status, 1);
    EXPECT_EQ(ReadText(folder.Path("s.jpg")), "precious");
    // More rows than a JPEG can have, detected before the first of them is made.
    std::vector<std::string> many(233, a);
    many.insert(many.begin(), {"contact-sheet", "-o", folder.Path("many.jpg")});
    const Outcome tall = RunProgram(many);
    EXPECT_EQ(tall.Status, 1);
    EXPECT_NE(tall.Err.find("holds 232 photographs, not 233"), std::string::npos) << tall.Err;
    // In 65,500 pixels: two gaps of 12, a head of 30, and rows of 30 + 23 + 12.
    many.insert(many.end(), 1007 - 233, a);
    many.insert(many.end(), {"--cell", "23x23"});
    const Outcome small = RunProgram(many);
    EXPECT_NE(small.Err.find("holds 1006 photographs, not 1007"), std::string::npos) << small.Err;
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"a.jpg", "s.jpg"}));
}

// A shape keeps its columns even if it has fewer crops, so that the crops of a shape are below each
// other, under their own heading.
TEST(ContactSheet, ColumnsOfAShapeWithoutCropsStayEmpty)
{
    const TempFolder folder;
    Plain(900, 600, {200, 30, 30}).write_to_file(folder.Path("a.png").c_str());
    const auto sheetOf = [&folder](const std::vector<std::string>& more) {
        std::vector<std::string> words = {
            "contact-sheet",      "--force",           "--faces", "off", "--cell", "100x80", "-o",
            folder.Path("s.png"), folder.Path("a.png")};
        words.insert(words.end(), more.begin(), more.end());
        const Outcome outcome = RunProgram(words);
        EXPECT_EQ(outcome.Status, 0) << outcome.Err;
        return VImage::new_from_file(folder.Path("s.png").c_str()).copy_memory();
    };
    // Only a crop of 3:1 is as wide as the photograph.
    const VImage sheet = sheetOf({"--each-ratio", "--aspect", "1:3", "--aspect", "3:1", "--aspect",
                                  "1:1", "-n", "2", "--must-keep", "0,290,900,20"});
    ASSERT_EQ(sheet.width(), 7 * 112 + 12);
    const bool filled[] = {true, false, false, true, true, false, false};
    for (int column = 0; column < 7; ++column)
        ExpectColour(sheet, 12 + 112 * column + 50, 12 + 30 + 30 + 40,
                     filled[column] ? std::vector<double>{200, 30, 30}
                                    : std::vector<double>{255, 255, 255});
    const auto heading = [](const VImage& from, int column) {
        return from.extract_area(12 + 112 * column, 12, 100, 30).copy_memory();
    };
    // Headings have ranks where a shape has several columns, and no two are alike.
    for (int column = 1; column < 7; ++column)
        for (int other = 1; other < column; ++other)
            EXPECT_GT((heading(sheet, column) - heading(sheet, other)).abs().max(), 50)
                << column << " " << other;
    const VImage one = sheetOf({"--each-ratio", "--aspect", "3:1", "-n", "1"});
    EXPECT_GT((heading(one, 1) - heading(sheet, 3)).abs().max(), 50);
}

} // namespace
} // namespace vistaTrim::cli
