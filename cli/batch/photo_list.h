// From the names on the command line to the photographs to work on.
#ifndef VISTATRIM_CLI_BATCH_PHOTO_LIST_H
#define VISTATRIM_CLI_BATCH_PHOTO_LIST_H

#include <istream>
#include <string>
#include <vector>

namespace vistaTrim::cli {

struct ListedPhoto {
    std::string Path;
    std::string Inside; // its folder below the folder that was named; empty for a named file
    std::string Error;  // why there is nothing to work on, as with an empty folder
};

struct ListOptions {
    bool Recursive = false;
    bool NullSeparated = false; // names in the list end in a null byte, not in a line feed
};

// Folders give the files in them whose ending is that of a photograph, by name; with
// Recursive also those further down. "-" stands for the names in `list`. A named file is taken
// as it is, whatever its ending, even if it is not there: whoever opens it says so.
std::vector<ListedPhoto> ListPhotos(const std::vector<std::string>& names,
                                    const ListOptions& options, std::istream& list);

} // namespace vistaTrim::cli

#endif
