// Where the pixels of a photograph come from, as libvips images.
#ifndef VISTATRIM_PHOTO_PICTURE_PHOTOGRAPH_SOURCE_H
#define VISTATRIM_PHOTO_PICTURE_PHOTOGRAPH_SOURCE_H

#include <memory>
#include <optional>
#include <vector>

#include <vips/vips8>

#include "picture/jpeg_coding.h"
#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::photo {

// Immutable. Call the functions that read pixels inside RunVips.
class PhotographSource {
public:
    static const PhotographSource& Of(const Photograph& photograph);

    explicit PhotographSource(const ReadOptions& options);
    virtual ~PhotographSource() = default;
    PhotographSource(const PhotographSource&) = delete;
    PhotographSource& operator=(const PhotographSource&) = delete;

    PixelSize Size() const;
    ImageFormat NativeFormat() const;
    const std::optional<JpegCoding>& Coding() const; // of a JPEG file
    const Colour& Background() const;
    int StoredOrientation() const; // 1 to 8 as in EXIF; all pixels read are upright
    const std::vector<FoundRegion>& NamedRegions() const; // by the photograph's own metadata

    // Upright sRGB of three 8-bit channels, exactly this size.
    vips::VImage ReadThumbnail(PixelSize size) const;

    // Upright, otherwise as stored: bands, depth, colour profile and metadata. With
    // `oncePerPixel` the pixels can be read only once, from top to bottom; then a picture
    // that is stored upright is never wholly in memory.
    virtual vips::VImage ReadFull(bool oncePerPixel) const = 0;

protected:
    virtual vips::VImage ReadThumbnailInColours(PixelSize size) const = 0;

    PixelSize Displayed;
    ImageFormat Native = ImageFormat::Png;
    int Orientation = 1;
    std::optional<JpegCoding> StoredCoding;
    std::vector<FoundRegion> Named;

private:
    Colour Under;
};

} // namespace vistaTrim::photo

#endif
