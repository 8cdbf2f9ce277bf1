// The plain records that cross the library's boundary. They hold no pointers and own nothing. Their
// layout is published: a host may declare the same fields itself.
//
// Coordinates are pixels of the image given to the driver, origin at its top left pixel. A
// rectangle's four sides are inclusive, columns before rows: (left, right, top, bottom).
#ifndef VISTATRIM_RECORDS_H
#define VISTATRIM_RECORDS_H

#include <cstddef>
#include <cstdint>

#include "vistaTrim/export.h"

namespace vistaTrim {

// As an index into a ratio table: the whole table.
constexpr uint32_t NoIndex = 0xEFFFFFFFU;

// A rectangle. By default the single pixel at the origin, not an empty one.
struct VISTATRIM_API CInt32Rect {
    int32_t Left, Right, Top, Bottom;

    CInt32Rect();
    CInt32Rect(int left, int right, int top, int bottom);
    CInt32Rect(const CInt32Rect& other) = default;
    CInt32Rect& operator=(const CInt32Rect& other);

    // Width times height. Width and height are computed in 32 bits without checks: an empty
    // rectangle can give 0 or less.
    int64_t Area() const;
    // True if the rectangle contains no pixel.
    bool Empty() const;
};
static_assert(sizeof(CInt32Rect) == 16 && offsetof(CInt32Rect, Right) == 4 &&
                  offsetof(CInt32Rect, Top) == 8 && offsetof(CInt32Rect, Bottom) == 12,
              "published layout");

// The measures of one candidate. Each holds a float widened to double, except MergedScore, which is
// a true double.
struct VISTATRIM_API Score {
    bool Scored = false; // the five measures below are filled; such a record is not scored again
    double CompositionScore = 0; // 0..1, the fitted composition model
    double CoverageScore = 0;    // 0..1, share of the picture's content inside
    double BorderScore = 0;      // 0..1, near 1 when the crop's edges pass through background
    double PeakScore = 0;        // 0..1, share of the strongest content inside
    double CentrePeakScore = 0;  // 0..1, the same for the central third of the crop
    double RoiScore = 1;         // 1 when all soft rectangles of interest are met, or none is given
    double MergedScore = 0;      // weighted merge of the rank positions, written by a selection

    // RoiScore 1, everything else 0 or false.
    Score();
    Score(const Score& other) = default;
    Score& operator=(const Score& other);
};
static_assert(sizeof(Score) == 64 && offsetof(Score, CompositionScore) == 8 &&
                  offsetof(Score, CoverageScore) == 16 && offsetof(Score, BorderScore) == 24 &&
                  offsetof(Score, PeakScore) == 32 && offsetof(Score, CentrePeakScore) == 40 &&
                  offsetof(Score, RoiScore) == 48 && offsetof(Score, MergedScore) == 56,
              "published layout");

// A candidate with its scores.
struct VISTATRIM_API CInt32CropRect {
    int32_t Left, Right, Top, Bottom;
    bool CoversContent; // holds at least 0.4 of both the contrast mask and the colour contrast
    vistaTrim::Score Score;

    CInt32CropRect();
    CInt32CropRect(int left, int right, int top, int bottom);
    CInt32CropRect(const CInt32CropRect& other) = default;
    CInt32CropRect& operator=(const CInt32CropRect& other);
};
static_assert(sizeof(CInt32CropRect) == 88 && offsetof(CInt32CropRect, Right) == 4 &&
                  offsetof(CInt32CropRect, Top) == 8 && offsetof(CInt32CropRect, Bottom) == 12 &&
                  offsetof(CInt32CropRect, CoversContent) == 16 &&
                  offsetof(CInt32CropRect, Score) == 24,
              "published layout");

// Values of CRectOfInterest::Kind. Any other value disables the rectangle.
enum RoiKind : int32_t {
    RoiSoftInclude = 0, // prefer crops that contain the rectangle
    RoiHardInclude = 1, // a crop must contain all of it
    RoiSoftExclude = 2, // prefer crops that do not touch it
    RoiHardExclude = 3  // a crop must not touch it
};

// A region that the host wants inside or outside the crops. Give it at least one pixel: without
// area, a hard rectangle rejects every crop and a soft one makes RoiScore NaN.
struct VISTATRIM_API CRectOfInterest {
    int32_t Left, Right, Top, Bottom;
    bool Marked;  // for the host's own use; copied but never read
    bool Enabled; // true by default; false: no effect anywhere
    int32_t Kind; // a RoiKind, RoiSoftInclude unless the host writes another

    CRectOfInterest();
    CRectOfInterest(bool marked);
    CRectOfInterest(int left, int right, int top, int bottom, bool marked);
    CRectOfInterest(const CInt32Rect& rect, bool marked);
    CRectOfInterest(const CRectOfInterest& other) = default;
    CRectOfInterest& operator=(const CRectOfInterest& other);
};
static_assert(sizeof(CRectOfInterest) == 24 && offsetof(CRectOfInterest, Right) == 4 &&
                  offsetof(CRectOfInterest, Top) == 8 && offsetof(CRectOfInterest, Bottom) == 12 &&
                  offsetof(CRectOfInterest, Marked) == 16 &&
                  offsetof(CRectOfInterest, Enabled) == 17 && offsetof(CRectOfInterest, Kind) == 20,
              "published layout");

// One row of a ratio table.
struct VISTATRIM_API DoubleInfo {
    double Value;
    bool Enabled; // candidates of a disabled row are scored but not returned

    DoubleInfo();
    DoubleInfo(double value);
    DoubleInfo(double value, bool enabled);
    DoubleInfo(const DoubleInfo& other) = default;
    DoubleInfo& operator=(const DoubleInfo& other);
};
static_assert(sizeof(DoubleInfo) == 16 && offsetof(DoubleInfo, Enabled) == 8, "published layout");

// Weights of the rank positions of Score's first five measures, in their order. The first
// three always count, whatever their sign; the last two only when above 0.
struct VISTATRIM_API WeightDistribution {
    double Weight1, Weight2, Weight3, Weight4, Weight5;

    WeightDistribution(double weight1, double weight2, double weight3);
    WeightDistribution(double weight1, double weight2, double weight3, double weight4,
                       double weight5);
    WeightDistribution(const WeightDistribution& other) = default;
    // Trivial, so that the record stays trivially copyable. The library also exports a function
    // under the operator's symbol, for hosts whose own declarations call one.
    WeightDistribution& operator=(const WeightDistribution& other) = default;
};
static_assert(sizeof(WeightDistribution) == 40 && offsetof(WeightDistribution, Weight2) == 8 &&
                  offsetof(WeightDistribution, Weight3) == 16 &&
                  offsetof(WeightDistribution, Weight4) == 24 &&
                  offsetof(WeightDistribution, Weight5) == 32,
              "published layout");

// One request. A ratio takes precedence over a size. A size counts only if both sides are given and
// the crop fits the image. With neither, every ratio and scale in the tables is tried.
struct VISTATRIM_API SuggestionParameters {
    double CropWidth;   // pixels, 0 if not given
    double CropHeight;  // pixels, 0 if not given
    double AspectRatio; // width over height, 0 if not given
    bool DetectFaces;   // leave it false: there is no detector, and requesting one from a driver
                        // whose parameters allow it terminates the process

    SuggestionParameters();
    SuggestionParameters(bool detectFaces);
    SuggestionParameters(double aspectRatio, bool detectFaces);
    SuggestionParameters(double cropWidth, double cropHeight, bool detectFaces);
    SuggestionParameters(const SuggestionParameters& other) = default;
    SuggestionParameters& operator=(const SuggestionParameters& other);
};
static_assert(sizeof(SuggestionParameters) == 32 &&
                  offsetof(SuggestionParameters, CropHeight) == 8 &&
                  offsetof(SuggestionParameters, AspectRatio) == 16 &&
                  offsetof(SuggestionParameters, DetectFaces) == 24,
              "published layout");

} // namespace vistaTrim

#endif
