// From the names on the command line to the photographs to work on.
#ifndef VISTATRIM_CLI_BATCH_PHOTO_LIST_H
#define VISTATRIM_CLI_BATCH_PHOTO_LIST_H

#include <istream>
#include <memory>
#include <string>
#include <vector>

namespace vistaTrim::cli {

struct ListedPhoto {
    std::string Path;
    std::string Inside; // its folder relative to the named folder; empty for a named file
    std::string Error;  // why there is nothing to process, for example an empty folder
    std::shared_ptr<const std::string> Bytes; // of the photograph on standard input, "-"
};

struct ListOptions {
    bool Recursive = false;
    bool NullSeparated = false;         // names in lists end in a null byte, not in a line feed
    std::vector<std::string> FilesFrom; // lists of names; "-" is the one on standard input
    std::string Output;                 // file or folder that the run writes; empty: none
};

struct PhotoList {
    std::vector<ListedPhoto> Photos;
    size_t Skipped = 0;    // files in folders that are not photographs, without hidden ones
    size_t SkippedRaw = 0; // how many of them are raw photographs
};

// A folder yields its photographs of every readable format, sorted by name; with Recursive also
// those in its subfolders. "-" is a photograph read from `input`. A named file is taken whatever
// its ending, even if it does not exist: opening it reports the error. Names in lists are treated
// the same way, except that "-" has no special meaning there. The output is skipped inside folders,
// however it is spelled, because its crops would be cropped again, but not if it is named.
PhotoList ListPhotos(const std::vector<std::string>& names, const ListOptions& options,
                     std::istream& input);

// "skipped 3 files that are not photographs"; empty if none was skipped.
std::string SkippedSentence(const PhotoList& list);

// For people: "standard input" for "-", and strange names in quotes.
std::string ShownName(const std::string& path);

} // namespace vistaTrim::cli

#endif
