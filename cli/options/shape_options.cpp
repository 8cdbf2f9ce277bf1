#include "options/shape_options.h"

#include <algorithm>
#include <memory>

#include "options/option_files.h"
#include "options/program_error.h"
#include "options/read_option.h"
#include "options/text_values.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/photo_error.h"
#include "vistaTrimPhoto/presets.h"
#include "vistaTrimPhoto/shape.h"

namespace vistaTrim::cli {

namespace {

using photo::Presets;
using photo::Shape;

constexpr const char* kGroup = "Shape of the crops";

// A shape given twice would only be cut twice.
void AddOnce(std::vector<Shape>& shapes, const Shape& shape)
{
    const auto same = [&shape](const Shape& other) { return other.Name == shape.Name; };
    if (std::none_of(shapes.begin(), shapes.end(), same))
        shapes.push_back(shape);
}

bool ReadScales(const std::string& text, photo::Request& request)
{
    const auto numbers = ParseNumbers(text);
    if (!numbers)
        return false;
    for (const double number : *numbers) {
        if (number <= 0.0 || number > 1.0)
            return false;
        request.Scales.push_back(number);
    }
    return true;
}

void AddPresetsFile(CLI::App& command, const std::shared_ptr<Presets>& presets)
{
    const auto read = [presets](const std::vector<std::string>& files) {
        for (const std::string& file : files) {
            try {
                presets->AddTable(ReadOptionFile("--presets", file), Shown(file));
            } catch (const photo::PhotoError& error) {
                throw OptionFileError(std::string("--presets: ") + error.what());
            }
        }
    };
    // Added before the options that name presets, because options are read in the order in which
    // they were added.
    command
        .add_option_function<std::vector<std::string>>(
            "--presets", read, "More presets, from a table like presets.tsv")
        ->type_name("FILE")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->group(kGroup);
}

} // namespace

void AddShapes(CLI::App& command, Options& values)
{
    photo::Request& request = values.Request;
    const auto presets = std::make_shared<Presets>();
    AddPresetsFile(command, presets);
    CLI::Option* aspect = AddRead(
                              command, "--aspect", "W:H or the name of a preset",
                              "A ratio to try, such as 16:9, 16x9 or square; may be repeated",
                              [&values, presets](const std::string& text) {
                                  std::optional<Shape> shape = presets->Find(text);
                                  if (shape)
                                      shape->Fill.reset();
                                  else
                                      shape = photo::ShapeOfRatio(text);
                                  if (shape)
                                      AddOnce(values.Shapes, *shape);
                                  return shape.has_value();
                              },
                              true)
                              ->type_name("W:H")
                              ->group(kGroup);
    CLI::Option* preset =
        AddRead(
            command, "--preset", "the name of a preset; there are " + presets->Names(),
            "The best crop of a named shape, scaled to its size; may be repeated",
            [&values, presets](const std::string& text) {
                const std::optional<Shape> shape = presets->Find(text);
                if (shape)
                    AddOnce(values.Shapes, *shape);
                values.EachShape = true;
                return shape.has_value();
            },
            true)
            ->type_name("NAME")
            ->group(kGroup);
    command
        .add_flag("--each-ratio", values.EachShape,
                  "The best crop of each --aspect, instead of the best of all of them")
        ->needs(aspect)
        ->group(kGroup);
    CLI::Option* scale =
        AddRead(
            command, "--scale", "a number above 0, at most 1",
            "Crop side over photograph side; may be repeated",
            [&request](const std::string& text) { return ReadScales(text, request); }, true)
            ->type_name("S")
            ->group(kGroup);
    CLI::Option* largest =
        command
            .add_flag_callback(
                "--largest", [&request] { request.Scales = {1.0}; },
                "Only the largest crops of each ratio, which span its full width or height")
            ->excludes(scale)
            ->group(kGroup);
    AddRead(
        command, "--size", "WxH, both at least 1",
        "Crops of exactly this size, in pixels of the photograph",
        [&request](const std::string& text) {
            request.Size = photo::ParseSize(text);
            return request.Size.has_value();
        },
        false)
        ->type_name("WxH")
        ->excludes(aspect)
        ->excludes(preset)
        ->excludes(scale)
        ->excludes(largest)
        ->group(kGroup);
    AddInteger(command, "--density", 1, static_cast<int>(photo::kHighestDensity),
               "Positions tried along the side with more free room",
               [&request](int density) { request.Density = static_cast<uint32_t>(density); })
        ->type_name("N")
        ->group(kGroup);
}

void FinishShapes(const CLI::App& command, Options& values)
{
    const CLI::Option* top = command.get_option_no_throw("--top");
    // Standard output takes one crop.
    const bool one = values.EachShape || (values.Chosen == Command::Crop && values.Output == "-");
    if (one && top != nullptr && top->count() == 0)
        values.Request.Top = 1;
    for (const Shape& shape : values.Shapes)
        values.Request.Aspects.push_back(shape.Aspect);
}

} // namespace vistaTrim::cli
