// End-to-end results of made pictures, as text: what is recorded and what a test compares with.
#ifndef VISTATRIM_TESTS_GOLDEN_GOLDEN_RESULTS_H
#define VISTATRIM_TESTS_GOLDEN_GOLDEN_RESULTS_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "vistaTrim/records.h"

namespace goldenResults {

struct NamedCrop {
    uint32_t Index; // in its list
    vistaTrim::CInt32CropRect Crop;
};

struct Results {
    uint32_t CandidateCount = 0;
    std::vector<NamedCrop> Candidates; // some of them, spread over the list
    std::vector<NamedCrop> Best;       // the best ten of a default request
    std::vector<NamedCrop> BestWished; // the best five with rectangles of interest
};

// Names of the pictures; each names its file too.
std::vector<std::string> PictureNames();

// Makes the picture and asks for everything, through the exported functions alone.
Results ResultsOf(const std::string& name);

void Write(const Results& results, std::ostream& out);
// Throws std::runtime_error on a text that Write did not make.
Results Read(std::istream& in);

} // namespace goldenResults

#endif
