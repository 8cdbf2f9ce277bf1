// End-to-end results for synthetic images, as text that is recorded once and compared by a test.
#ifndef VISTATRIM_TESTS_GOLDEN_GOLDEN_RESULTS_H
#define VISTATRIM_TESTS_GOLDEN_GOLDEN_RESULTS_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "vistaTrim/records.h"

namespace goldenResults {

struct NamedCrop {
    uint32_t Index; // in the full list
    vistaTrim::CInt32CropRect Crop;
};

struct Results {
    uint32_t CandidateCount = 0;
    std::vector<NamedCrop> Candidates; // a sample spread over the list
    std::vector<NamedCrop> Best;       // the best ten of a default request
    std::vector<NamedCrop> BestWished; // the best five with rectangles of interest
};

// The names of the images, which are also the names of their files.
std::vector<std::string> PictureNames();

// Creates the image and makes every request, through the exported functions only.
Results ResultsOf(const std::string& name);

void Write(const Results& results, std::ostream& out);
// Throws std::runtime_error for text that Write did not produce.
Results Read(std::istream& in);

} // namespace goldenResults

#endif
