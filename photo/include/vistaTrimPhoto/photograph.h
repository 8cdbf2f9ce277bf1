// A photograph: a file, an encoded file in memory, or a block of pixels.
#ifndef VISTATRIM_PHOTO_PHOTOGRAPH_H
#define VISTATRIM_PHOTO_PHOTOGRAPH_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "vistaTrimPhoto/colour.h"
#include "vistaTrimPhoto/found_region.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/image_format.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

struct ReadOptions {
    Colour Background = {255, 255, 255}; // shows through where the photograph is transparent
};

// What the engine sees of a photograph.
struct WorkingPicture {
    PixelSize Photo;   // the photograph as displayed
    PixelImage Pixels; // upright sRGB, three channels, longer side kWorkingLongSide
    std::vector<FoundRegion> NamedRegions; // by the photograph's own metadata
    double ReadMilliseconds = 0;           // time that reading and scaling took
};

class PhotographSource; // internal

// Cheap to copy; copies share what was read. Its operations may be called from several threads.
// They throw PhotoError.
class Photograph {
public:
    // Reads the header; pixels are decoded on demand. The file must not be moved or changed while
    // photographs of it are in use.
    static Photograph FromFile(const std::string& path, const ReadOptions& options = {});
    // An encoded file in memory. The bytes are borrowed: keep them until the last copy of the
    // photograph is gone.
    static Photograph FromBytes(const void* data, size_t size, const ReadOptions& options = {});
    // Upright pixels, borrowed as well.
    static Photograph FromPixels(const PixelView& pixels, const ReadOptions& options = {});

    PixelSize Size() const; // as displayed
    // How the stored picture is turned for display, 1 to 8 as EXIF counts it.
    int StoredOrientation() const;
    // The format of the file if crops can be written in it, else PNG, which is lossless.
    ImageFormat NativeFormat() const;

    // Decoded at reduced size where the format allows it.
    WorkingPicture ReadWorkingPicture() const;
    // Upright sRGB with a longer side of `longSide` pixels, or the photograph's own size if that
    // is smaller. Three channels.
    PixelImage ReadPreview(int32_t longSide) const;

private:
    friend class PhotographSource;
    explicit Photograph(std::shared_ptr<const PhotographSource> source);

    std::shared_ptr<const PhotographSource> Shared;
};

} // namespace vistaTrim::photo

#endif
