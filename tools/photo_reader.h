// Reads photographs for the developer tools: upright, sRGB, longer side 640.
#ifndef VISTATRIM_TOOLS_PHOTO_READER_H
#define VISTATRIM_TOOLS_PHOTO_READER_H

#include <cstdint>
#include <string>
#include <vector>

// Packed three-byte pixels, rows without padding.
struct WorkingPhoto {
    int32_t Width = 0;
    int32_t Height = 0;
    std::vector<uint8_t> Pixels;
};

// Starts libvips. Call once, before any thread reads.
void StartPhotoReader(const char* programName);

// Throws std::runtime_error naming the file and the reason.
WorkingPhoto ReadWorkingPhoto(const std::string& file);

#endif
