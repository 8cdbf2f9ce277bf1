#include "options/option_defaults.h"

#include <utility>

namespace vistaTrim::cli {

namespace {

struct Default {
    const char* Option;
    const char* Text;
};

// Options not listed here have no default.
constexpr Default kDefaults[] = {
    {"--background", "white"},
    {"--jobs", "one for each processor"},
    {"--top", "5, or 1 where shapes are requested one by one"},
    {"--rank-by", "people"},
    {"--ranking", "the built-in model"},
    {"--weights", "0.1,0.7,0,0.2,0"},
    {"--faces", "all"},
    {"--aspect", "64:27, 16:9, 3:2, 4:3, 3:4 and 2:3"},
    {"--scale", "0.5 to 1 in steps of 0.05"},
    {"--density", "8"},
    {"--format", "that of the photograph, or png where that cannot be written"},
    {"--quality", "as a JPEG photograph for JPEG, else 90"},
    {"--chroma", "as a JPEG photograph, else 4:4:4 from quality 90 and 4:2:0 below"},
    {"--name", "{stem}-{rank}, or {stem}-{shape} where shapes are requested one by one"},
    {"--sizes", "100vw"},
    {"--maps", "yes"},
    {"--cell", "360x240"},
};

} // namespace

std::string DefaultOf(const CLI::App& command, const CLI::Option& option)
{
    const std::string name = option.get_name();
    if (name == "--output" && command.get_name() == "suggest")
        return "standard output";
    for (const Default& row : kDefaults)
        if (name == row.Option)
            return row.Text;
    return "none";
}

std::string HelpWithDefaults::make_help(const CLI::App* app, std::string name,
                                        CLI::AppFormatMode mode) const
{
    Shown = app;
    return CLI::Formatter::make_help(app, std::move(name), mode);
}

std::string HelpWithDefaults::make_option_desc(const CLI::Option* option) const
{
    std::string description = CLI::Formatter::make_option_desc(option);
    const bool takesValue = option->get_expected_max() != 0 && !option->get_positional();
    if (!takesValue || option->get_required() || Shown == nullptr)
        return description;
    return description + " (default: " + DefaultOf(*Shown, *option) + ")";
}

} // namespace vistaTrim::cli
