#include "picture/crop_metadata.h"

#include <cstdint>
#include <optional>
#include <vector>

#include "picture/iptc.h"
#include "regions/metadata_regions.h"

namespace vistaTrim::photo {

namespace {

constexpr const char* kXmpField = "xmp-data";

bool StartsWith(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool IsUntrueOfCrop(const std::string& field)
{
    return field == "jpeg-thumbnail-data" || field == "orientation" || field == "n-pages" ||
           field == "page-height" || field == "delay" || field == "loop" || field == "n-subifds" ||
           field == "heif-primary" || StartsWith(field, "exif-ifd1-") ||
           field == "exif-ifd2-SubjectArea" || field == "exif-ifd2-SubjectLocation";
}

bool IsMetadata(const std::string& field)
{
    return StartsWith(field, "exif-") || StartsWith(field, "iptc-") || field == kXmpField ||
           field == "photoshop-data" || StartsWith(field, "png-comment-") ||
           StartsWith(field, "gif-") || StartsWith(field, "magick-") ||
           field == "image-description";
}

std::vector<std::string> FieldsOf(const vips::VImage& image)
{
    gchar** names = vips_image_get_fields(image.get_image());
    std::vector<std::string> fields;
    for (gchar** name = names; *name != nullptr; ++name)
        fields.emplace_back(*name);
    g_strfreev(names);
    return fields;
}

std::string BlobOf(const vips::VImage& image, const char* field)
{
    if (image.get_typeof(field) != VIPS_TYPE_BLOB)
        return "";
    size_t size = 0;
    const auto* bytes = static_cast<const char*>(image.get_blob(field, &size));
    return {bytes, size};
}

// An empty string removes the field.
void SetBlob(vips::VImage& image, const char* field, const std::string& text)
{
    if (text.empty()) {
        image.remove(field);
        return;
    }
    void* copy = g_malloc(text.size());
    text.copy(static_cast<char*>(copy), text.size());
    image.set(
        field,
        [](void* data, void*) -> int {
            g_free(data);
            return 0;
        },
        copy, text.size());
}

// JPEG and TIFF store IPTC differently, and libvips copies one into the other unchanged.
void MakeIptcTrue(vips::VImage& image, ImageFormat format)
{
    const std::string iptc = BlobOf(image, VIPS_META_IPTC_NAME);
    if (!iptc.empty() && format == ImageFormat::Jpeg)
        SetBlob(image, VIPS_META_IPTC_NAME, IptcForJpeg(iptc));
    if (!iptc.empty() && format == ImageFormat::Tiff)
        SetBlob(image, VIPS_META_IPTC_NAME, IptcForTiff(iptc));
    const std::string resources = BlobOf(image, VIPS_META_PHOTOSHOP_NAME);
    if (!resources.empty())
        SetBlob(image, VIPS_META_PHOTOSHOP_NAME, WithoutThumbnails(resources));
}

void MakeXmpTrue(vips::VImage& image, const CropPlace& place)
{
    const std::string before = XmpOf(image);
    const std::optional<std::string> moved = XmpForCrop(
        before, place.Photo, place.Orientation, place.Rect, {image.width(), image.height()});
    if (!moved || moved->empty()) {
        image.remove(kXmpField);
        return;
    }
    const std::string after = UprightXmp(*moved);
    if (after != before)
        SetBlob(image, kXmpField, after);
}

} // namespace

std::string XmpOf(const vips::VImage& image)
{
    return BlobOf(image, kXmpField);
}

std::string UprightXmp(std::string xmp)
{
    const std::string name = "tiff:Orientation";
    for (size_t at = xmp.find(name); at != std::string::npos; at = xmp.find(name, at)) {
        at += name.size();
        // Either tiff:Orientation="6" or <tiff:Orientation>6</tiff:Orientation>.
        size_t digit = at;
        while (digit < xmp.size() && (xmp[digit] == '=' || xmp[digit] == '"' ||
                                      xmp[digit] == '\'' || xmp[digit] == '>' || xmp[digit] == ' '))
            ++digit;
        if (digit > at && digit < xmp.size() && xmp[digit] >= '2' && xmp[digit] <= '8')
            xmp[digit] = '1';
    }
    return xmp;
}

vips::VImage WithMetadataForCrop(const vips::VImage& image, const CropPlace& place,
                                 ImageFormat format, bool strip)
{
    vips::VImage copy = image.copy(); // only a private copy's fields may be changed
    for (const std::string& field : FieldsOf(image))
        if (IsUntrueOfCrop(field) || (strip && IsMetadata(field)))
            copy.remove(field.c_str());
    if (!strip) {
        MakeXmpTrue(copy, place);
        MakeIptcTrue(copy, format);
    }
    return copy;
}

} // namespace vistaTrim::photo
