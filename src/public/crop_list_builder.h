// How the driver makes the lists that it returns.
#ifndef VISTATRIM_PUBLIC_CROP_LIST_BUILDER_H
#define VISTATRIM_PUBLIC_CROP_LIST_BUILDER_H

#include <cstddef>

#include "vistaTrim/crop_rects.h"

namespace vistaTrim {

// Holds the only reference to the list until it is taken.
class CCropListBuilder {
public:
    CCropListBuilder();

    // Reserves room for count records, so that appending them reallocates nothing. Throws
    // std::length_error "vector<T> too long" and std::bad_alloc; the list is then unchanged.
    void Reserve(size_t count);
    // Copies the record to the end of the list. Throws as Reserve does.
    void Append(const CInt32CropRect& record);
    // Passes the list and its reference to the caller. Call it once.
    CCropRects* Take();

private:
    SmartPtr<CCropRects> List;
};

} // namespace vistaTrim

#endif
