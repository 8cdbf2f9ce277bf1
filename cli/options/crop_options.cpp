#include "options/crop_options.h"

#include <stdexcept>

#include "options/name_template.h"
#include "options/read_option.h"
#include "options/text_values.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/shape.h"

namespace vistaTrim::cli {

namespace {

constexpr const char* kNames = "Names and sizes of the files";
constexpr const char* kBeside = "Files besides the crops";

bool ReadWidths(const std::string& text, std::vector<int32_t>& widths)
{
    const auto numbers = ParseNumbers(text);
    if (!numbers)
        return false;
    for (const double number : *numbers) {
        constexpr double kWidest = 100000;
        if (number < 1 || number > kWidest || number != static_cast<int32_t>(number))
            return false;
        widths.push_back(static_cast<int32_t>(number));
    }
    return true;
}

void AddSizes(CLI::App& command, Options& values)
{
    CLI::Option* resize = command.get_option("--resize");
    CLI::Option* size = command.get_option("--size");
    CLI::Option* fill =
        AddRead(
            command, "--fill", "WxH, both at least 1",
            "The best crop of this ratio, scaled to exactly this size; may be repeated",
            [&values](const std::string& text) {
                const auto read = photo::ParseSize(text);
                if (read)
                    values.Shapes.push_back(photo::ShapeOfSize(*read));
                values.EachShape = true;
                return read.has_value();
            },
            true)
            ->type_name("WxH")
            ->excludes(resize)
            ->excludes(size)
            ->group(kNames);
    CLI::Option* widths = AddRead(
                              command, "--widths", "integers from 1 to 100000 separated by commas",
                              "Each crop at several widths, such as 400,800,1600",
                              [&values](const std::string& text) {
                                  return ReadWidths(text, values.CropFiles.Widths);
                              },
                              false)
                              ->type_name("A,B,C")
                              ->excludes(resize)
                              ->excludes(fill)
                              ->group(kNames);
    command
        .add_flag("--upscale", values.CropFiles.Upscale,
                  "Scale crops up to widths beyond their own; else their own is the widest")
        ->needs(widths)
        ->group(kNames);
    command
        .add_option_function<std::string>(
            "--name",
            [&values](const std::string& text) {
                try {
                    const NameTemplate checked(text);
                } catch (const std::runtime_error& error) {
                    throw CLI::ValidationError("--name", error.what());
                }
                values.CropFiles.Name = text;
            },
            "Names of the files, built from {stem}, {extension}, {shape}, {ratio}, {rank}, {width} "
            "and "
            "{height}")
        ->type_name("TEMPLATE")
        ->group(kNames);
}

void AddFilesBeside(CLI::App& command, Options& values)
{
    CLI::Option* resume = command.get_option("--resume");
    CLI::Option* xmp = command
                           .add_flag("--xmp", values.CropFiles.Xmp,
                                     "Also write NAME.xmp with the best crop, for raw developers")
                           ->group(kBeside);
    command.add_flag("--xmp-only", values.CropFiles.XmpOnly, "Write only NAME.xmp, no pictures")
        ->excludes(xmp)
        ->group(kBeside);
    command
        .add_option("--manifest", values.CropFiles.Manifest,
                    "Write a JSON list of photographs, crops, files, sizes and scores")
        ->check(NotEmpty())
        ->type_name("FILE")
        ->excludes(resume)
        ->group(kBeside);
    CLI::Option* picture =
        command
            .add_option("--picture", values.CropFiles.Picture,
                        "Write a <picture> element for each photograph, with srcset and sizes")
            ->check(NotEmpty())
            ->type_name("FILE.html")
            ->excludes(resume)
            ->group(kBeside);
    command
        .add_option("--sizes", values.CropFiles.Sizes,
                    "How wide the page shows the picture, for its sizes attribute")
        ->needs(picture)
        ->type_name("TEXT")
        ->group(kBeside);
}

void AddFrom(CLI::App& command, Options& values)
{
    command
        .add_option("--from", values.CropFiles.From,
                    "Cut the crops that a file names: lines of suggest --json, a choice saved in "
                    "the report, or a manifest, fill and ratio included")
        ->check(NotEmpty())
        ->type_name("FILE");
}

// --from names the crops, so options of the search are rejected.
std::string FaultOfFrom(const CLI::App& command)
{
    for (const CLI::Option* option : command.get_options()) {
        const std::string& group = option->get_group();
        const bool searches = group == "Ranking" || group == "Shape of the crops" ||
                              group.compare(0, 6, "Wishes") == 0 ||
                              group.compare(0, 6, "People") == 0;
        const std::string name = option->get_name();
        if (option->count() != 0 &&
            (searches || name == "PHOTO" || name == "--files-from" || name == "--fill"))
            return "--from says which crops of which photographs are cut; " + name +
                   " has no place beside it";
    }
    return "";
}

} // namespace

void AddCropFiles(CLI::App& command, Options& values)
{
    AddSizes(command, values);
    AddFilesBeside(command, values);
    AddFrom(command, values);
}

std::string FaultOfCropFiles(const CLI::App& command, const Options& values)
{
    const CropFileOptions& how = values.CropFiles;
    if (!how.From.empty()) {
        std::string fault = FaultOfFrom(command);
        if (!fault.empty())
            return fault;
    }
    if (how.Format) {
        const photo::ImageFormat format = *how.Format;
        const bool losesNothing =
            format == photo::ImageFormat::Png || format == photo::ImageFormat::Tiff;
        if (how.Quality && losesNothing)
            return "--quality has no effect on " + photo::EndingOf(format) +
                   ", which loses nothing; it is for jpg, webp, avif and heic";
        if (how.Chroma && format != photo::ImageFormat::Jpeg)
            return "--chroma has no effect on " + photo::EndingOf(format) + "; it is for jpg";
    }
    if (how.XmpOnly && !how.Picture.empty())
        return "--picture needs pictures; --xmp-only writes none";
    if (values.Output != "-")
        return "";
    for (const char* name : {"--resume", "--manifest", "--picture", "--xmp", "--xmp-only"})
        if (command.get_option(name)->count() != 0)
            return std::string("-o - writes one picture and nothing else; ") + name +
                   " needs a folder";
    const bool several = values.Request.Top > 1 || how.Widths.size() > 1 ||
                         (values.EachShape && values.Shapes.size() > 1);
    return several ? "-o - takes one picture; the options ask for several" : "";
}

} // namespace vistaTrim::cli
