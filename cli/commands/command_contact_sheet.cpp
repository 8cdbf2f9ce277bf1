#include "commands/commands.h"

#include <algorithm>
#include <filesystem>

#include "batch/output_place.h"
#include "batch/run_photos.h"
#include "batch/whole_file.h"
#include "commands/suggest_crops.h"
#include "options/program_error.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/contact_sheet.h"
#include "vistaTrimPhoto/crop_writer.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;
using photo::PixelImage;
using photo::PixelSize;
using photo::SheetLayout;

photo::ImageFormat FormatOfSheet(const std::string& file)
{
    const std::string ending = fs::path(file).extension().string();
    const auto format = photo::FormatOfEnding(ending.empty() ? ending : ending.substr(1));
    if (!format)
        throw ProgramError(Shown(file) +
                           ": the ending of a contact sheet is jpg, png, webp, tif, avif or "
                           "heic");
    return *format;
}

void CheckThatItFits(const SheetLayout& layout, size_t photos, const std::string& file)
{
    const int64_t longest = photo::LongestSide(FormatOfSheet(file));
    const PixelSize row = photo::RowSize(layout);
    const int64_t most =
        (longest - 2 * static_cast<int64_t>(layout.Gap) - layout.Caption) / row.Height;
    if (static_cast<int64_t>(photos) > most)
        throw ProgramError(Shown(file) + ": a sheet of this format and size of pictures holds " +
                           std::to_string(most) + " photographs, not " + std::to_string(photos));
    if (row.Width + layout.Gap > longest)
        throw ProgramError(Shown(file) +
                           ": a row of so many pictures is wider than the format allows");
}

std::vector<std::string> Heads(const Options& options)
{
    std::vector<std::string> heads = {"Photograph"};
    const std::vector<photo::Shape> shapes =
        options.EachShape ? options.Shapes : std::vector<photo::Shape>(1);
    for (const photo::Shape& shape : shapes)
        for (int32_t rank = 1; rank <= options.Request.Top; ++rank) {
            const std::string number = std::to_string(rank);
            if (!options.EachShape)
                heads.push_back("Crop " + number);
            else
                heads.push_back(photo::ShownName(shape) +
                                (options.Request.Top == 1 ? "" : " " + number));
        }
    return heads;
}

// The column of a crop: a shape with fewer crops than requested leaves its other columns empty.
size_t ColumnOf(const CropLabel& label, const Options& options)
{
    const auto rank = static_cast<size_t>(label.Rank);
    if (!options.EachShape)
        return rank;
    size_t shape = 0;
    while (shape < options.Shapes.size() && options.Shapes[shape].Name != label.Shape)
        ++shape;
    return shape * static_cast<size_t>(options.Request.Top) + rank;
}

std::vector<PixelImage> PicturesOf(const photo::Photograph& photograph, const PhotoResult& result,
                                   const Options& options, const SheetLayout& layout)
{
    const PixelImage empty{{1, 1}, 3, {255, 255, 255}};
    std::vector<PixelImage> pictures(static_cast<size_t>(layout.Columns), empty);
    const PixelSize whole = photo::FittedSize(photograph.Size(), layout.Cell);
    pictures[0] = photograph.ReadPreview(std::max(whole.Width, whole.Height));

    std::vector<photo::CropOutput> cuts;
    for (const photo::Crop& crop : result.Found.Crops) {
        photo::CropOutput cut;
        cut.Rect = crop.Rect;
        cut.Size = photo::FittedSize({crop.Rect.Width, crop.Rect.Height}, layout.Cell);
        cuts.push_back(cut);
    }
    std::vector<PixelImage> crops = photo::ReadCrops(photograph, cuts);
    for (size_t i = 0; i < crops.size(); ++i)
        pictures.at(ColumnOf(result.Labels[i], options)) = std::move(crops[i]);
    return pictures;
}

} // namespace

int RunContactSheet(const Options& options, const std::vector<ListedPhoto>& photos)
{
    try {
        const std::vector<std::string> heads = Heads(options);
        SheetLayout layout;
        layout.Cell = options.SheetCell;
        layout.Columns = static_cast<int32_t>(heads.size());
        CheckOutputFile(options.Output);
        CheckThatItFits(layout, photos.size(), options.Output);
        WholeFile file(options.Output, options.Force);

        std::vector<PixelImage> made(photos.size()); // each written by one worker
        std::vector<PixelImage> rows = {photo::SheetHead(layout, heads)};
        PhotoSteps steps;
        steps.Work = [&](const ListedPhoto& photo, PhotoResult& result) {
            const photo::Photograph photograph = OpenPhoto(options, photo);
            SuggestCrops(
                AnalyseFor(options.Request, photograph, RegionsFor(options, photo, photos.size())),
                options, result);
            const auto index = static_cast<size_t>(&photo - photos.data());
            made[index] = photo::SheetRow(layout, Shown(fs::path(photo.Path).filename().string()),
                                          PicturesOf(photograph, result, options, layout));
        };
        steps.Emit = [&](const PhotoResult& result) {
            const size_t index = rows.size() - 1; // results come in order
            if (result.Error.empty())
                rows.push_back(std::move(made[index]));
            else
                rows.push_back(photo::SheetRow(
                    layout, Shown(fs::path(result.File).filename().string()) + ": " + result.Error,
                    {}));
        };
        const int status = RunPhotos(options, photos, steps);

        photo::Encoding encoding;
        encoding.Format = FormatOfSheet(options.Output);
        encoding.Quality = 90;
        photo::WriteSheet(layout, rows, file.TemporaryPath(), encoding);
        file.Appear();
        return status;
    } catch (const photo::PhotoError& error) {
        Complain(Shown(options.Output) + ": " + error.what());
    } catch (const ProgramError& error) {
        Complain(error.what());
    }
    return 1;
}

} // namespace vistaTrim::cli
