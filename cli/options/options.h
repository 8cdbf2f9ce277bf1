// The command line, read and checked.
#ifndef VISTATRIM_CLI_OPTIONS_OPTIONS_H
#define VISTATRIM_CLI_OPTIONS_OPTIONS_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/crop_writer.h"
#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/image_format.h"
#include "vistaTrimPhoto/photograph.h"
#include "vistaTrimPhoto/regions_file.h"
#include "vistaTrimPhoto/request.h"
#include "vistaTrimPhoto/shape.h"

namespace vistaTrim::cli {

enum class Command { Suggest, Crop, Report, Maps, ContactSheet };
enum class ListFormat { Text, Json, Csv };

struct CropFileOptions {
    bool Strip = false;
    std::optional<photo::PixelSize> ResizeTo;
    std::optional<photo::ImageFormat> Format;    // none: that of the photograph
    std::optional<int> Quality;                  // none: that of a JPEG photograph, else 90
    std::optional<photo::ChromaSampling> Chroma; // none: that of a JPEG photograph
    std::vector<int32_t> Widths; // each crop is written at each of them; none: one size
    bool Upscale = false;        // allow widths beyond that of the crop
    std::string Name;            // template; empty: default names
    std::string From;            // file that names the crops; empty: none
    std::string Manifest;        // file; empty: none
    bool Xmp = false;            // also write sidecars
    bool XmpOnly = false;        // write sidecars instead of crops
    std::string Picture;         // HTML file for <picture> elements; empty: none
    std::string Sizes = "100vw"; // their sizes attribute
};

// There is only one object, so its members are ordered for reading.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct Options {
    Command Chosen = Command::Suggest;
    std::vector<std::string> Photos;    // files, folders, "-" for the one on standard input
    std::vector<std::string> FilesFrom; // lists of them; "-" for the one on standard input
    bool Recursive = false;
    bool NullSeparated = false;
    photo::Request Request;
    std::vector<photo::Shape> Shapes; // requested by name or ratio
    bool EachShape = false;           // crops for each of them, not ranked together
    photo::RegionOptions RegionUse;   // except the regions from the file below
    std::string RegionsPath;          // empty: none
    photo::RegionsFile Regions;       // from the file at RegionsPath
    std::string RankingFile;          // read into Request.Model
    bool WeightsGiven = false;        // then the engine ranks
    photo::ReadOptions Reading;
    ListFormat Format = ListFormat::Text;
    std::string Output; // file or folder; empty: standard output
    bool Force = false;
    bool Resume = false;
    int Workers = 0; // 0: one per processor
    bool Quiet = false;
    bool Timings = false;
    CropFileOptions CropFiles;
    photo::PixelSize SheetCell{360, 240}; // of contact sheets
    bool ReportMaps = true;
    std::map<std::string, std::string> ResultOptions; // the options that results depend on, as text
};

struct CommandLine {
    Options Values;
    std::optional<int> ExitStatus; // set if there is nothing to do: help shown, or bad options
};

constexpr int kUsageFault = 2;
constexpr const char* kCommandNames = "suggest, crop, report, maps and contact-sheet";

// Writes help to standard output and errors to standard error.
CommandLine ParseCommandLine(int argc, const char* const* argv);

} // namespace vistaTrim::cli

#endif
