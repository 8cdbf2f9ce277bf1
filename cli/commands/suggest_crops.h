// The crops of a photograph, shape by shape if requested.
#ifndef VISTATRIM_CLI_COMMANDS_SUGGEST_CROPS_H
#define VISTATRIM_CLI_COMMANDS_SUGGEST_CROPS_H

#include <string>
#include <vector>

#include "batch/photo_result.h"
#include "options/options.h"
#include "vistaTrimPhoto/analysis.h"

namespace vistaTrim::cli {

// Fills Found and Labels. With options.EachShape every shape is a separate request: its crops come
// together, in the order in which the shapes were requested. Returns the names of shapes that got
// no crop.
std::vector<std::string> SuggestCrops(const photo::Analysis& analysis, const Options& options,
                                      PhotoResult& result);

// In words, of a photograph that got no crop at all.
std::string WhyNoCrop(const photo::Analysis& analysis, const Options& options);

} // namespace vistaTrim::cli

#endif
