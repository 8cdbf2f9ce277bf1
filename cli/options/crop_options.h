// The options of `crop` that decide which files a crop becomes.
#ifndef VISTATRIM_CLI_OPTIONS_CROP_OPTIONS_H
#define VISTATRIM_CLI_OPTIONS_CROP_OPTIONS_H

#include <string>

#include <CLI/CLI.hpp>

#include "options/options.h"

namespace vistaTrim::cli {

// Call after the options of shapes, and --resize, --force and --resume were added.
void AddCropFiles(CLI::App& command, Options& values);

// What is wrong with this combination of options of `crop`; empty if nothing is.
std::string FaultOfCropFiles(const CLI::App& command, const Options& values);

} // namespace vistaTrim::cli

#endif
