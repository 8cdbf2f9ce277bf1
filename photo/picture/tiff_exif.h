// EXIF in TIFF files, which libvips neither reads nor writes, and IPTC, which it writes in part.
#ifndef VISTATRIM_PHOTO_PICTURE_TIFF_EXIF_H
#define VISTATRIM_PHOTO_PICTURE_TIFF_EXIF_H

#include <cstdint>
#include <string>
#include <vector>

#include <vips/vips8>

#include "picture/tiff_reader.h"

namespace vistaTrim::photo {

using ExifBlock = std::vector<uint8_t>; // begins with its TIFF header; empty: there is none

// What a TIFF file says about its photograph: camera, author, exposure, place. What describes the
// file itself is left out, and so are the largest fields if all of them take more than a JPEG
// file could hold.
ExifBlock ExifOfTiff(const TiffReader& file);

// What a TIFF crop holds that libvips leaves out, or of which it writes a quarter.
struct TiffExtras {
    ExifBlock Exif;
    std::string Iptc;
};

// For use inside RunVips.
TiffExtras TiffExtrasOf(const vips::VImage& image);

// Adds them to a file that libvips has written, behind all that is there. The pixels stay where
// they are. Throws PhotoError (NotWritable).
void AddToTiff(const TiffExtras& extras, const std::string& path);
void AddToTiff(const TiffExtras& extras, std::vector<uint8_t>& file);

// To and from the fields by which libvips' images carry EXIF. For use inside RunVips.
void SetExif(vips::VImage& image, const ExifBlock& exif);
ExifBlock ExifOf(const vips::VImage& image);

} // namespace vistaTrim::photo

#endif
