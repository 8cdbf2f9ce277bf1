// EXIF in TIFF files, which libvips neither reads nor writes, and IPTC, which it cuts short.
#ifndef VISTATRIM_PHOTO_PICTURE_TIFF_EXIF_H
#define VISTATRIM_PHOTO_PICTURE_TIFF_EXIF_H

#include <cstdint>
#include <string>
#include <vector>

#include <vips/vips8>

#include "picture/tiff_reader.h"

namespace vistaTrim::photo {

using ExifBlock = std::vector<uint8_t>; // begins with its TIFF header; empty: there is none

// What a TIFF file says about its photograph: camera, author, exposure, place. Leaves out what
// describes the file itself, and the largest fields if together they exceed what a JPEG file can
// hold.
ExifBlock ExifOfTiff(const TiffReader& file);

// What libvips omits from a TIFF crop (EXIF) or of which it writes only a quarter (IPTC).
struct TiffExtras {
    ExifBlock Exif;
    std::string Iptc;
};

// For use inside RunVips.
TiffExtras TiffExtrasOf(const vips::VImage& image);

// Appends them to a file that libvips has written. The pixels stay where
// they are. Throws PhotoError (NotWritable).
void AddToTiff(const TiffExtras& extras, const std::string& path);
void AddToTiff(const TiffExtras& extras, std::vector<uint8_t>& file);

// Convert to and from the fields in which libvips' images carry EXIF. For use inside RunVips.
void SetExif(vips::VImage& image, const ExifBlock& exif);
ExifBlock ExifOf(const vips::VImage& image);

} // namespace vistaTrim::photo

#endif
