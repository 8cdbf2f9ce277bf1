// The options that say which shapes crops have.
#ifndef VISTATRIM_CLI_OPTIONS_SHAPE_OPTIONS_H
#define VISTATRIM_CLI_OPTIONS_SHAPE_OPTIONS_H

#include <CLI/CLI.hpp>

#include "options/options.h"

namespace vistaTrim::cli {

void AddShapes(CLI::App& command, Options& values);

// Call after parsing: applies rules that span several options.
void FinishShapes(const CLI::App& command, Options& values);

} // namespace vistaTrim::cli

#endif
