// The commands. Each returns the exit status of the program.
#ifndef VISTATRIM_CLI_COMMANDS_COMMANDS_H
#define VISTATRIM_CLI_COMMANDS_COMMANDS_H

#include <string>
#include <vector>

#include "batch/photo_list.h"
#include "batch/photo_result.h"
#include "options/options.h"
#include "vistaTrimPhoto/analysis.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::cli {

int RunSuggest(const Options& options, const std::vector<ListedPhoto>& photos);
int RunCrop(const Options& options, const std::vector<ListedPhoto>& named);
int RunReport(const Options& options, const std::vector<ListedPhoto>& photos);
int RunMaps(const Options& options, const std::vector<ListedPhoto>& photos);
int RunContactSheet(const Options& options, const std::vector<ListedPhoto>& photos);

// Reads the photograph of the list.
photo::Photograph OpenPhoto(const Options& options, const ListedPhoto& photo);

// Frees the memory that decoding took before the analysis starts.
photo::Analysis Analyse(const photo::Photograph& photograph, const photo::RegionOptions& regions);
// Rejects a request that the photograph cannot meet before decoding it.
photo::Analysis AnalyseFor(const photo::Request& request, const photo::Photograph& photograph,
                           const photo::RegionOptions& regions);

// Where the regions of this photograph come from, for a run over `photos` photographs.
photo::RegionOptions RegionsFor(const Options& options, const ListedPhoto& photo, size_t photos);

// The photograph's name without folders and ending; "stdin" for standard input.
std::string StemOf(const ListedPhoto& photo);

// The ending of the photograph's name, without the dot; empty if it has none.
std::string ExtensionOf(const ListedPhoto& photo);

// OUTPUT/INSIDE/STEM, the prefix of a photograph's files; creates the folder.
std::string OutputPrefix(const Options& options, const ListedPhoto& photo);

// Marks with an error each photograph whose files would have the names of another's: of a/x.jpg and
// b/x.jpg only the first is processed.
std::vector<ListedPhoto> WithoutNameClashes(const std::vector<ListedPhoto>& photos);

} // namespace vistaTrim::cli

#endif
