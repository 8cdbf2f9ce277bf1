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
    std::optional<photo::ImageFormat> Format;    // none: as the photograph
    std::optional<int> Quality;                  // none: that of a JPEG photograph, else 90
    std::optional<photo::ChromaSampling> Chroma; // none: alike
    std::vector<int32_t> Widths;                 // each crop at each of them; none: one size
    bool Upscale = false;                        // to widths beyond that of the crop
    std::string Name;                            // template; empty: the usual names
    std::string From;                            // file that names the crops; empty: none
    std::string Manifest;                        // file; empty: none
    bool Xmp = false;                            // sidecars too
    bool XmpOnly = false;                        // sidecars instead
    std::string Picture;                         // file for <picture> elements; empty: none
    std::string Sizes = "100vw";                 // their sizes attribute
};

// There is one object a run, so its members are in the order in which people read them.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct Options {
    Command Chosen = Command::Suggest;
    std::vector<std::string> Photos;    // files, folders, "-" for the one on standard input
    std::vector<std::string> FilesFrom; // lists of them; "-" for the one on standard input
    bool Recursive = false;
    bool NullSeparated = false;
    photo::Request Request;
    std::vector<photo::Shape> Shapes; // requested by name or ratio
    bool EachShape = false;           // the best crops of each of them, not of all together
    photo::RegionOptions RegionUse;   // but for what the file below names
    std::string RegionsPath;          // empty: none
    photo::RegionsFile Regions;       // what the file at RegionsPath names
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
    std::map<std::string, std::string> Asked; // the options that results depend on, as text
};

struct CommandLine {
    Options Values;
    std::optional<int> ExitStatus; // set if there is nothing to do: help shown, or bad options
};

constexpr int kUsageFault = 2;

// Writes help to standard output and errors to standard error.
CommandLine ParseCommandLine(int argc, const char* const* argv);

} // namespace vistaTrim::cli

#endif
