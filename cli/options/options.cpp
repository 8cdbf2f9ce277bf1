#include "options/options.h"

#include <algorithm>
#include <iostream>
#include <map>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "options/crop_options.h"
#include "options/option_defaults.h"
#include "options/option_files.h"
#include "options/plain_faults.h"
#include "options/program_error.h"
#include "options/read_option.h"
#include "options/result_options.h"
#include "options/shape_options.h"
#include "options/text_values.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/colour.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/presets.h"
#include "vistaTrimPhoto/readable_formats.h"

namespace vistaTrim::cli {

using photo::FaceSearch;
using photo::RankBy;
using photo::Request;
using photo::WishKind;

namespace {

void AddInput(CLI::App& app, Options& values)
{
    app.add_option("PHOTO", values.Photos,
                   "Photographs, folders of photographs, or - for the one on standard input");
    app.add_option("--files-from", values.FilesFrom,
                   "Also the names that this file lists; - reads the list from standard input")
        ->check(NotEmpty())
        ->type_name("FILE")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_flag("-r,--recursive", values.Recursive, "Include subfolders");
    app.add_flag("-0,--null", values.NullSeparated,
                 "Names in lists end in a null byte, not in a line feed");
    AddRead(
        app, "--background", "#rrggbb, #rgb or the name of a colour",
        "The colour behind transparent areas",
        [&values](const std::string& text) {
            const auto colour = photo::ParseColour(text);
            values.Reading.Background = colour.value_or(values.Reading.Background);
            return colour.has_value();
        },
        false)
        ->type_name("COLOUR")
        ->group("Reading");
}

void AddRun(CLI::App& app, Options& values)
{
    AddInteger(app, "-j,--jobs", 1, 1024, "Photographs processed at a time",
               [&values](int workers) { values.Workers = workers; })
        ->type_name("N")
        ->group("Running");
    app.add_flag("-q,--quiet", values.Quiet, "No progress bar, even on a terminal")
        ->group("Running");
    app.add_flag("--timings", values.Timings,
                 "Show on standard error how long each step of each photograph took")
        ->group("Running");
}

void AddWish(CLI::App& app, Request& request, WishKind kind, const std::string& description)
{
    AddRead(
        app, std::string("--") + NameOf(kind), "X,Y,W,H with W and H of at least 1", description,
        [&request, kind](const std::string& text) {
            const auto rect = photo::ParseRect(text);
            if (rect)
                request.Wishes.push_back({kind, *rect});
            return rect.has_value();
        },
        true)
        ->type_name("X,Y,W,H")
        ->group("Wishes (pixels of the photograph as displayed; may be repeated)");
}

void AddRequest(CLI::App& app, Options& values)
{
    Request& request = values.Request;
    constexpr const char* kGroup = "Ranking";
    AddInteger(app, "-n,--top", 1, 10000, "Number of crops for each photograph",
               [&request](int top) { request.Top = top; })
        ->type_name("N")
        ->group(kGroup);
    AddRead(
        app, "--rank-by", "people, composition, coverage, border, peak, centre-peak or engine",
        "What crops are ranked by: what people choose, one measure, or the engine, which weighs "
        "all",
        [&request](const std::string& text) {
            // The program's first release called the engine's ranking by all measures "all".
            static const std::map<std::string, RankBy> rankings = {
                {"people", RankBy::People},     {"composition", RankBy::Composition},
                {"coverage", RankBy::Coverage}, {"border", RankBy::Border},
                {"peak", RankBy::Peak},         {"centre-peak", RankBy::CentrePeak},
                {"engine", RankBy::Engine},     {"all", RankBy::Engine}};
            const auto found = rankings.find(text);
            if (found != rankings.end())
                request.Ranking = found->second;
            return found != rankings.end();
        },
        false)
        ->type_name("people|composition|coverage|border|peak|centre-peak|engine")
        ->group(kGroup);
    app.add_option("--ranking", values.RankingFile,
                   "Rank by this file, fitted to your own choices, instead of the built-in model")
        ->check(NotEmpty())
        ->type_name("FILE")
        ->group(kGroup);
    AddRead(
        app, "--weights", "three or five numbers separated by commas",
        "Rank by the engine, with these weights of composition, coverage, border, peak and centre "
        "peak",
        [&request, &values](const std::string& text) {
            const auto numbers = ParseNumbers(text);
            if (!numbers || (numbers->size() != 3 && numbers->size() != photo::kNumWeighed))
                return false;
            // Below 0, the first three prefer low values, but the engine ignores the peaks.
            const auto isZero = [](double number) { return number == 0; };
            const auto isBelow = [](double number) { return number < 0; };
            if (std::all_of(numbers->begin(), numbers->end(), isZero))
                throw CLI::ValidationError("--weights", "'" + text +
                                                            "' ranks by nothing; one "
                                                            "weight must not be 0");
            if (std::any_of(numbers->begin() + 3, numbers->end(), isBelow))
                throw CLI::ValidationError("--weights", "'" + text +
                                                            "': the weights of peak and "
                                                            "centre peak must be 0 or more");
            values.WeightsGiven = true;
            request.Weights = {};
            for (size_t i = 0; i < numbers->size(); ++i)
                request.Weights.*photo::kMeasures[i].Weight = (*numbers)[i];
            return true;
        },
        false)
        ->type_name("a,b,c,d,e")
        ->group(kGroup);
    AddWish(app, request, WishKind::Keep, "Prefer crops that contain this region");
    AddWish(app, request, WishKind::Avoid, "Prefer crops that avoid this region");
    AddWish(app, request, WishKind::MustKeep, "Only crops that contain this whole region");
    AddWish(app, request, WishKind::MustAvoid, "Only crops that do not touch this region");
}

void AddRegions(CLI::App& app, Options& values)
{
    constexpr const char* kGroup = "People and other regions";
    AddRead(
        app, "--faces", "off, large or all",
        "Look for faces: large ones (from 1/8 of the longer side) or all (from 1/16)",
        [&use = values.RegionUse](const std::string& text) {
            static const std::map<std::string, FaceSearch> searches = {
                {"off", FaceSearch::Off}, {"large", FaceSearch::Large}, {"all", FaceSearch::All}};
            const auto found = searches.find(text);
            if (found == searches.end())
                return false;
            if (found->second != FaceSearch::Off && !photo::HasFaceFinder())
                throw CLI::ValidationError("--faces", "this program was built without dlib and "
                                                      "finds no faces; --regions takes them from "
                                                      "another detector");
            use.Faces = found->second;
            return true;
        },
        false)
        ->type_name("off|large|all")
        ->group(kGroup);
    app.add_option("--regions", values.RegionsPath,
                   "JSON lines of regions that another detector found")
        ->check(NotEmpty())
        ->type_name("FILE")
        ->group(kGroup);
    app.add_flag_callback(
           "--ignore-metadata-regions", [&values] { values.RegionUse.UseNamed = false; },
           "Ignore faces and subjects that a photograph's own metadata names")
        ->group(kGroup);
}

void AddSuggest(CLI::App& app, Options& values)
{
    AddInput(app, values);
    AddRequest(app, values);
    AddRegions(app, values);
    AddShapes(app, values);
    constexpr const char* kGroup = "Output";
    CLI::Option* json = app.add_flag_callback(
                               "--json", [&values] { values.Format = ListFormat::Json; },
                               "One line of JSON per photograph")
                            ->group(kGroup);
    CLI::Option* csv = app.add_flag_callback(
                              "--csv", [&values] { values.Format = ListFormat::Csv; },
                              "One line per crop, with a header")
                           ->excludes(json)
                           ->group(kGroup);
    app.add_flag("--explain", values.Request.Explain,
                 "Also show how each crop ranks by each measure, and which wishes it meets")
        ->excludes(csv)
        ->group(kGroup);
    CLI::Option* output = app.add_option("-o,--output", values.Output, "Write to this file")
                              ->check(NotEmpty())
                              ->type_name("FILE")
                              ->group(kGroup);
    CLI::Option* force = app.add_flag("--force", values.Force, "Replace the output file")
                             ->needs(output)
                             ->group(kGroup);
    app.add_flag("--resume", values.Resume,
                 "Skip photographs that the output file holds, and append the others")
        ->needs(output)
        ->excludes(force)
        ->group(kGroup);
    AddRun(app, values);
}

void AddCrop(CLI::App& app, Options& values)
{
    AddInput(app, values);
    AddRequest(app, values);
    AddRegions(app, values);
    AddShapes(app, values);
    constexpr const char* kGroup = "Output";
    app.add_option("-o,--output", values.Output,
                   "Folder for the crops, created if missing, or - for standard output")
        ->check(NotEmpty())
        ->type_name("DIR")
        ->required()
        ->group(kGroup);
    AddRead(
        app, "--resize", "WxH, both at least 1", "Scale each crop to fit this size, up or down",
        [&values](const std::string& text) {
            values.CropFiles.ResizeTo = photo::ParseSize(text);
            return values.CropFiles.ResizeTo.has_value();
        },
        false)
        ->type_name("WxH")
        ->group(kGroup);
    AddRead(
        app, "--format", "jpg, png, webp, tif, avif or heic", "The format of the crops",
        [&values](const std::string& text) {
            const auto format = photo::FormatOfEnding(text);
            if (format)
                values.CropFiles.Format = format;
            return format.has_value();
        },
        false)
        ->type_name("jpg|png|webp|tif|avif|heic")
        ->group(kGroup);
    AddInteger(app, "--quality", 1, 100, "1 to 100, for lossy formats",
               [&values](int quality) { values.CropFiles.Quality = quality; })
        ->type_name("Q")
        ->group(kGroup);
    AddRead(
        app, "--chroma", "4:4:4 or 4:2:0", "Colour values of JPEG: all, or one for four pixels",
        [&values](const std::string& text) {
            if (text == "4:4:4")
                values.CropFiles.Chroma = photo::ChromaSampling::Full;
            else if (text == "4:2:0")
                values.CropFiles.Chroma = photo::ChromaSampling::Half;
            return text == "4:4:4" || text == "4:2:0";
        },
        false)
        ->type_name("4:4:4|4:2:0")
        ->group(kGroup);
    app.add_flag("--strip", values.CropFiles.Strip,
                 "Leave out all metadata; the colour profile stays")
        ->group(kGroup);
    CLI::Option* force =
        app.add_flag("--force", values.Force, "Replace files that exist")->group(kGroup);
    app.add_flag("--resume", values.Resume, "Write only the crops that are not in the folder yet")
        ->excludes(force)
        ->group(kGroup);
    AddCropFiles(app, values);
    AddRun(app, values);
}

void AddReport(CLI::App& app, Options& values)
{
    AddInput(app, values);
    AddRequest(app, values);
    AddRegions(app, values);
    AddShapes(app, values);
    app.add_option("-o,--output", values.Output, "The page to write")
        ->check(NotEmpty())
        ->type_name("FILE.html")
        ->required()
        ->group("Output");
    AddRead(
        app, "--maps", "yes or no", "Whether the page includes the maps, which are half of it",
        [&values](const std::string& text) {
            values.ReportMaps = text != "no";
            return text == "yes" || text == "no";
        },
        false)
        ->type_name("yes|no")
        ->group("Output");
    app.add_flag("--force", values.Force, "Replace the page if it exists")->group("Output");
    AddRun(app, values);
}

void AddMaps(CLI::App& app, Options& values)
{
    AddInput(app, values);
    app.add_option("-o,--output", values.Output, "Folder for the maps; created if missing")
        ->check(NotEmpty())
        ->type_name("DIR")
        ->required()
        ->group("Output");
    app.add_flag("--force", values.Force, "Replace files that exist")->group("Output");
    AddRun(app, values);
}

void AddContactSheet(CLI::App& app, Options& values)
{
    AddInput(app, values);
    AddRequest(app, values);
    AddRegions(app, values);
    AddShapes(app, values);
    app.add_option("-o,--output", values.Output,
                   "The picture to write; its extension sets the format")
        ->check(NotEmpty())
        ->type_name("FILE.jpg")
        ->required()
        ->group("Output");
    AddRead(
        app, "--cell", "WxH, 16x16 to 2000x2000", "Space for each picture on the sheet",
        [&values](const std::string& text) {
            const auto size = photo::ParseSize(text);
            values.SheetCell = size.value_or(values.SheetCell);
            const auto fits = [](int32_t side) { return side >= 16 && side <= 2000; };
            return size && fits(size->Width) && fits(size->Height);
        },
        false)
        ->type_name("WxH")
        ->group("Output");
    app.add_flag("--force", values.Force, "Replace the picture if it exists")->group("Output");
    AddRun(app, values);
}

// Wraps a list such as "Reads a, b, c." to lines.
std::string Listed(std::string text, const std::vector<std::string>& items)
{
    constexpr size_t kWidth = 80;
    size_t line = text.size();
    for (const std::string& item : items) {
        const bool isFull = line + 2 + item.size() > kWidth;
        line = isFull ? item.size() + 1 : line + 2 + item.size();
        text += (isFull ? "\n" : " ") + item + ",";
    }
    text.back() = '.';
    return text;
}

// The last lines of every help text.
std::string ReadableText()
{
    std::vector<std::string> items;
    for (const photo::ReadableFormat& format : photo::ReadableFormats()) {
        std::string item = format.Name;
        for (size_t i = 0; i < format.Endings.size(); ++i)
            item += (i == 0 ? " (" : " ") + format.Endings[i];
        items.push_back(item + (format.Endings.empty() ? "" : ")"));
    }
    return Listed("Reads", items);
}

std::string PresetsText()
{
    const photo::Presets presets;
    std::vector<std::string> items;
    for (const photo::Shape& shape : presets.All())
        items.push_back(shape.Name + " (" +
                        (shape.Fill ? std::to_string(shape.Fill->Width) + "x" +
                                          std::to_string(shape.Fill->Height)
                                    : photo::ShownRatio(shape.RatioText)) +
                        ")");
    return Listed("Presets:", items);
}

std::string FaultOfInput(const Options& values)
{
    const auto count = [](const std::vector<std::string>& names) {
        return std::count(names.begin(), names.end(), "-");
    };
    if (values.Photos.empty() && values.FilesFrom.empty() && values.CropFiles.From.empty())
        return "PHOTO is missing: name photographs, folders or --files-from";
    if (count(values.Photos) + count(values.FilesFrom) + (values.CropFiles.From == "-" ? 1 : 0) > 1)
        return "standard input can be read only once: - is given twice";
    return "";
}

std::string FaultOfStandardOutput(const Options& values)
{
    if (values.Output != "-" || values.Chosen == Command::Crop)
        return "";
    if (values.Chosen != Command::Suggest)
        return "-o - is standard output, to which only suggest and crop write; name a file or "
               "folder";
    return values.Force || values.Resume
               ? "-o - is standard output, which cannot be replaced or resumed"
               : "";
}

// Checks combinations of options. Empty if they are valid.
std::string FaultOfAll(const CLI::App& command, const Options& values)
{
    std::string fault = FaultOfInput(values);
    if (fault.empty())
        fault = FaultOfStandardOutput(values);
    if (fault.empty() && values.Chosen == Command::Crop)
        fault = FaultOfCropFiles(command, values);
    if (!fault.empty())
        return fault;
    const RankBy ranking = values.Request.Ranking;
    if (!values.RankingFile.empty() && (values.WeightsGiven || ranking == RankBy::Engine))
        return "--ranking replaces the model of what people choose; it has no effect on the "
               "engine's own ranking by weights";
    if (values.WeightsGiven && ranking != RankBy::People && ranking != RankBy::Engine)
        return "--weights weigh all measures; --rank-by names one of them";
    if (values.Resume && values.Chosen == Command::Suggest && values.Format == ListFormat::Text)
        return "--resume needs --json or --csv: text for people is not read back";
    return "";
}

// A name that begins with a dash counts as an option.
std::string HintOfDash(int argc, const char* const* argv)
{
    for (int i = 1; i < argc && std::string(argv[i]) != "--"; ++i) {
        const std::string word = argv[i];
        if (word.size() > 1 && word[0] == '-' && access(word.c_str(), F_OK) == 0)
            return "vistatrim: there is a file " + Shown(word) +
                   "; put -- before the photographs, as in: vistatrim suggest -- " + Shown(word) +
                   "\n";
    }
    return "";
}

} // namespace

CommandLine ParseCommandLine(int argc, const char* const* argv)
{
    CommandLine line;
    Options& values = line.Values;
    CLI::App app("Finds good crops of photographs.", "vistatrim");
    app.set_version_flag("-V,--version",
                         std::string("vistatrim " VISTATRIM_VERSION_STRING) +
                             (photo::HasFaceFinder() ? "" : " (without dlib: finds no faces)"));
    app.formatter(std::make_shared<HelpWithDefaults>()); // commands take it from here
    app.require_subcommand(1);
    app.footer([] {
        return "vistatrim COMMAND --help lists the options of a command.\n\n" + ReadableText();
    });
    // In the order of Command.
    const std::vector<CLI::App*> commands = {
        app.add_subcommand("suggest", "List the best crops of each photograph"),
        app.add_subcommand("crop", "Write the best crops as files, at full resolution"),
        app.add_subcommand("report",
                           "Write one page to look at: photographs, crops, measures, maps"),
        app.add_subcommand("maps", "Write the maps of each photograph as pictures"),
        app.add_subcommand("contact-sheet",
                           "Write one picture with a row for each photograph and its crops")};
    AddSuggest(*commands[0], values);
    AddCrop(*commands[1], values);
    AddReport(*commands[2], values);
    AddMaps(*commands[3], values);
    AddContactSheet(*commands[4], values);
    for (CLI::App* command : commands)
        command->footer([command] {
            const bool hasPresets = command->get_option_no_throw("--preset") != nullptr;
            return "Options without a value are off unless given.\n\n" +
                   (hasPresets ? PresetsText() + "\n\n" : "") + ReadableText();
        });

    // The parser itself would only report a missing command.
    const std::string first = argc > 1 ? argv[1] : "";
    if (!first.empty() && first[0] != '-' &&
        std::none_of(commands.begin(), commands.end(),
                     [&first](const CLI::App* command) { return command->get_name() == first; })) {
        std::cerr << "vistatrim: no command '" << OneLine(first) << "'; there are " << kCommandNames
                  << "\n";
        line.ExitStatus = kUsageFault;
        return line;
    }

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        app.exit(help, std::cout, std::cerr);
        line.ExitStatus = 0;
        return line;
    } catch (const CLI::ParseError& fault) {
        std::cerr << "vistatrim: " << OneLine(InPlainWords(app, fault)) << "\n"
                  << HintOfDash(argc, argv) << "vistatrim: try --help\n";
        line.ExitStatus = kUsageFault;
        return line;
    } catch (const OptionFileError& fault) {
        std::cerr << "vistatrim: " << OneLine(fault.what()) << "\n";
        line.ExitStatus = kUsageFault;
        return line;
    }
    const auto parsed = std::find_if(commands.begin(), commands.end(),
                                     [](const CLI::App* command) { return command->parsed(); });
    values.Chosen = static_cast<Command>(parsed - commands.begin());
    FinishShapes(**parsed, values);
    values.ResultOptions = ResultOptionsOf(**parsed, values);
    std::string fault = FaultOfAll(**parsed, values);
    if (values.Chosen == Command::Suggest && values.Output == "-")
        values.Output.clear();
    if (values.WeightsGiven)
        values.Request.Ranking = RankBy::Engine;
    if (fault.empty() && !values.RankingFile.empty()) {
        try {
            values.Request.Model = photo::ReadRankingModel(
                ReadOptionFile("--ranking", values.RankingFile), Shown(values.RankingFile));
        } catch (const OptionFileError& error) {
            fault = error.what();
        } catch (const photo::PhotoError& error) {
            fault = std::string("--ranking: ") + error.what();
        }
    }
    if (!fault.empty()) {
        std::cerr << "vistatrim: " << OneLine(fault) << "\n";
        line.ExitStatus = kUsageFault;
    }
    return line;
}

} // namespace vistaTrim::cli
