// The four commands. Each returns the exit status of the program.
#ifndef VISTATRIM_HOST_COMMANDS_H
#define VISTATRIM_HOST_COMMANDS_H

#include <string>
#include <vector>

#include "options.h"
#include "photo_list.h"
#include "result.h"

namespace vistaTrim::host {

int RunSuggest(const Options& options, const std::vector<ListedPhoto>& photos);
int RunCrop(const Options& options, const std::vector<ListedPhoto>& photos);
int RunReport(const Options& options, const std::vector<ListedPhoto>& photos);
int RunMaps(const Options& options, const std::vector<ListedPhoto>& photos);

// What suggest, crop and report begin with: the working picture is read and its crops found.
void ReadAndSuggest(const Photograph& photograph, const Options& options, PhotoResult& result);

// OUTPUT/INSIDE/STEM, for the files that come of a photograph; makes the folder.
std::string OutputPrefix(const Options& options, const ListedPhoto& photo);

// Marks photographs whose files would get the names of another one's: of a/x.jpg and b/x.jpg
// only the first is worked on.
std::vector<ListedPhoto> WithoutNameClashes(const std::vector<ListedPhoto>& photos);

} // namespace vistaTrim::host

#endif
