// Finds files of a run that would get the same name, before anything is written.
#ifndef VISTATRIM_CLI_COMMANDS_NAME_CLASHES_H
#define VISTATRIM_CLI_COMMANDS_NAME_CLASHES_H

#include <functional>
#include <string>
#include <vector>

#include "batch/photo_list.h"
#include "batch/photo_result.h"
#include "options/options.h"

namespace vistaTrim::cli {

// The canonical path of the file, however it is spelled.
std::string CanonicalPath(const std::string& file);

// Of the files of this photograph's crops, as far as the names tell.
std::string ExpectedEnding(const Options& options, const std::string& photo);

// One line for each photograph whose crops would get the name of another crop, or, where files
// may be replaced, of a photograph of the run. `labelsOf` gives the labels of a photograph.
std::vector<std::string>
NameClashes(const Options& options, const std::vector<ListedPhoto>& photos,
            const std::function<std::vector<CropLabel>(size_t photo)>& labelsOf);

} // namespace vistaTrim::cli

#endif
