// The driver: a host's single point of contact for one picture.
#ifndef VISTATRIM_DRIVER_H
#define VISTATRIM_DRIVER_H

#include <cstdint>

#include "vistaTrim/base_class.h"
#include "vistaTrim/crop_rects.h"
#include "vistaTrim/export.h"
#include "vistaTrim/image.h"
#include "vistaTrim/parameters.h"
#include "vistaTrim/records.h"

namespace vistaTrim {

// Binds a picture to a set of parameters and answers requests. One thread at a time may be
// inside a driver; separate drivers share no writable state.
//
// Errors are thrown: a bare char pointer to a message that ends in a line feed, std::bad_alloc or
// std::length_error. *result is untouched when a request throws.
class VISTATRIM_API IVistaTrim : public IBaseClass {
public:
    IVistaTrim();
    IVistaTrim(const IVistaTrim& other);
    IVistaTrim& operator=(const IVistaTrim& other);

protected:
    ~IVistaTrim() override;

public:
    virtual void Destroy() = 0; // destroys the driver, whatever its count; the image remains

    // Borrows the image, copies the parameters, analyses the picture. CreateVistaTrimObj has done
    // this already. A second call leaks what the first one built; one that throws leaves the driver
    // as it was.
    virtual void Initialize(IImage* image, const VistaTrimParameters& parameters) = 0;
    // Stores the image and default parameters and builds nothing.
    virtual void InitializeWithDefaults(IImage* image) = 0;
    virtual void ReservedA() = 0; // does nothing; reserves a slot
    // A deep copy of the parameters as Initialize stored them.
    virtual VistaTrimParameters GetParameters() = 0;

    // Sets *count to the number of rows in the table. *table is dangling on return: use only the
    // count.
    virtual void GetAspectRatios(DoubleInfo** table, uint32_t* count) = 0;
    // Sets the flag of the first row within the tolerance of value (0.001 / longer image
    // side), or appends a row.
    virtual void SetAspectRatioEnabled(double value, bool enabled) = 0;
    virtual void GetCropRectScaleRatios(DoubleInfo** table, uint32_t* count) = 0;
    virtual void SetCropRectScaleRatioEnabled(double value, bool enabled) = 0;

    // *table points at the driver's own records, valid until the next AddRectOfInterest. Without
    // rectangles *count is 0 and *table points at a default record that is never freed.
    virtual void GetRectsOfInterest(CRectOfInterest** table, uint32_t* count) = 0;
    // Takes effect at the next request. GetParameters does not show it.
    virtual void AddRectOfInterest(const CRectOfInterest& rect) = 0;
    virtual void ReservedB(uint32_t unused) = 0; // does nothing; reserves a slot

    // Returns every enabled candidate of the request with its scores, in lattice order. *result
    // receives a new list that the caller owns.
    virtual void ComputeCropSuggestions(ICropRects** result,
                                        const SuggestionParameters& request) = 0;
    // At most n crops, and often fewer: the list is a choice, not a page of all candidates.
    //
    // m candidates pass the hard rectangles of interest. From 1,000 on only the best fifth, m / 5
    // rounded down, is kept. If fewer than n are kept, all of those are returned, best first,
    // near-duplicates included. Otherwise near-identical ones form clusters, and the clusters are
    // served in turn, the one of the best crop first, each by its member with the cleanest border.
    // The list ends as soon as the turn comes to an empty cluster, even if others still have
    // members. Of the 14,501 candidates of a 640 x 480 image, n = 2,901 gives the 2,900 kept, and
    // n = 1,000 can give fewer than 200. ComputeCropSuggestions returns all.
    //
    // rankingMode 1, 2 or 3 keeps only that weight; any other value keeps all five.
    virtual void GetNTopCropSuggestions(int32_t n, ICropRects** result,
                                        const SuggestionParameters& request, int32_t rankingMode,
                                        WeightDistribution weights) = 0;
    // Fills the five measures of a rectangle inside the image, unless it is already Scored.
    virtual void EvaluateScores(CInt32CropRect& rect) = 0;
};

} // namespace vistaTrim

#endif
