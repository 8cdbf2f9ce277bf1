// How a JPEG file was encoded, so that its crops can be encoded likewise.
#ifndef VISTATRIM_PHOTO_PICTURE_JPEG_CODING_H
#define VISTATRIM_PHOTO_PICTURE_JPEG_CODING_H

#include <array>
#include <optional>

#include <vips/vips8>

#include "vistaTrimPhoto/image_format.h"

namespace vistaTrim::photo {

using QuantisationTable = std::array<int, 64>; // in zigzag order, as files store it

struct JpegCoding {
    int Quality = 0; // 1..100, on the scale of the Independent JPEG Group's encoder
    std::optional<ChromaSampling> Chroma; // none: the picture has no chroma planes
};

// The quality at which that encoder's tables are nearest to these. Exact for its own tables.
// `chroma` is null for a picture of one plane, or of planes that share one table.
int QualityOfTables(const QuantisationTable& luma, const QuantisationTable* chroma);

// Reads up to the first scan; the source must be new or rewound. nullopt if it is not a JPEG file
// or does not record its coding. For use inside RunVips.
std::optional<JpegCoding> CodingOfJpeg(const vips::VSource& source);

} // namespace vistaTrim::photo

#endif
