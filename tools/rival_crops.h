// Crops made without our engine, for comparison.
#ifndef VISTATRIM_TOOLS_RIVAL_CROPS_H
#define VISTATRIM_TOOLS_RIVAL_CROPS_H

#include "crop_tables.h"
#include "photo_reader.h"

// The middle of the frame, `share` of each side.
CropBox CentredFrame(double width, double height, double share);

// The largest crop of a ratio (width / height), in the middle of the frame.
CropBox LargestCentredCrop(double width, double height, double ratio);

// The largest crop of a ratio where libvips' attention strategy puts it.
// Throws std::runtime_error with libvips' message.
CropBox AttentionCrop(const WorkingPhoto& photo, double ratio);

#endif
