// The answer to a request: everything that a caller shows.
#ifndef VISTATRIM_PHOTO_RESULT_H
#define VISTATRIM_PHOTO_RESULT_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/measures.h"
#include "vistaTrimPhoto/ratio.h"
#include "vistaTrimPhoto/region.h"

namespace vistaTrim::photo {

struct CropExplanation {
    // For each weighted measure: the share of the candidates that are not better.
    std::array<double, kNumWeighed> Ranks{};
    std::vector<bool> WishesMet; // same order as Explanation::Wishes
};

struct Crop {
    PixelRect Rect;
    Ratio Aspect; // the requested ratio that it was made for
    bool CoversContent = false;
    // The overlap (intersection over union) that a person's choice at this request is expected to
    // have with the crop, 0 to 1. Low for all crops where nothing in the picture stands out.
    double ExpectedOverlap = 0;
    photo::Scores Scores;
    std::optional<CropExplanation> Explained;
};

// Why there is no crop, or fewer than requested.
enum class Shortfall {
    None,
    PhotographTooSmall, // for any crop at all
    ScaleTooSmall,      // at every requested scale a crop would be less than a pixel
    RatioTooExtreme,    // the same at every requested ratio
    WishMetByNone,      // Explanation::UnmetWish
    HardWishesTogether, // each is met by some candidate, but none meets all
    SizeMissesWishes,   // no crop of that size meets them at full resolution
    FewCandidates,      // all that pass the hard wishes were returned
    OthersRankTooLow    // or are too similar to the crops returned
};

struct Explanation {
    int64_t Candidates = 0;   // tried
    int64_t Passing = 0;      // of these, those that meet every hard wish
    std::vector<Wish> Wishes; // clipped to the photograph
    // The found region that each wish comes from, as an index into Suggestions::Regions; none: the
    // wish is part of the request.
    std::vector<std::optional<size_t>> WishRegions;
    std::vector<int64_t> MetBy; // how many candidates meet each wish
    Shortfall Why = Shortfall::None;
    std::optional<WishKind> UnmetWish;
};

// Why there are fewer crops than requested, in words; empty for Shortfall::None. The prefix goes
// before the names of wishes, as in PhotoError::Text.
std::string NoteOf(const Explanation& explanation, const std::string& wishPrefix = "");

// All in milliseconds.
struct Timings {
    double Read = 0;    // of the working picture
    double Analyse = 0; // its maps
    double Faces = 0;   // waiting for the face finder after the maps are done
    double Score = 0;   // the request itself
};

struct Suggestions {
    PixelSize Size;          // of the photograph
    std::vector<Crop> Crops; // best first
    std::vector<FoundRegion> Regions;
    std::optional<Explanation> Explained;
    Timings Times;
};

} // namespace vistaTrim::photo

#endif
