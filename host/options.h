// The command line, read and checked.
#ifndef VISTATRIM_HOST_OPTIONS_H
#define VISTATRIM_HOST_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "photograph.h"
#include "request.h"

namespace vistaTrim::host {

enum class Command { Suggest, Crop, Report, Maps };
enum class ListFormat { Text, Json, Csv };

struct CropFileOptions {
    bool Strip = false;
    std::optional<PixelSize> ResizeTo;
    std::string Format; // "jpg", "png", "webp", "tif", "avif", "heic"; empty: as the photograph
    int Quality = 0;    // 1..100; 0: the writer's own
};

struct Options {
    Command Chosen = Command::Suggest;
    std::vector<std::string> Photos; // files, folders, "-"
    bool Recursive = false;
    bool NullSeparated = false;
    vistaTrim::host::Request Request;
    Colour Background = {255, 255, 255};
    ListFormat Format = ListFormat::Text;
    std::string Output; // file or folder; empty: standard output
    bool Force = false;
    bool Resume = false;
    int Workers = 0; // 0: as many as there are processors
    bool Quiet = false;
    bool Timings = false;
    CropFileOptions CropFiles;
};

struct CommandLine {
    Options Values;
    std::optional<int> ExitStatus; // set if there is nothing to do: help was given, or a fault
};

constexpr int kUsageFault = 2;

// Writes help to standard output and faults to standard error.
CommandLine ParseCommandLine(int argc, const char* const* argv);

} // namespace vistaTrim::host

#endif
