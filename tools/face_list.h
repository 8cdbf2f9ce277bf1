// Faces checked by people, and whether a crop keeps them.
#ifndef VISTATRIM_TOOLS_FACE_LIST_H
#define VISTATRIM_TOOLS_FACE_LIST_H

#include <map>
#include <string>
#include <vector>

#include "crop_tables.h"

// The faces of each photograph, by its file name.
using FaceList = std::map<std::string, std::vector<CropBox>>;

// Tab-separated lines: file, x, y, w, h, in pixels of the 640-pixel photograph. Throws
// std::runtime_error naming the file and the line.
FaceList ReadFaceList(const std::string& file);

// The faces clipped to the photograph: no crop can contain the rest.
std::vector<CropBox> InsidePhoto(const std::vector<CropBox>& faces, double width, double height);

// Whether the crop misses a part of any face.
bool CutsOrLosesFace(const CropBox& crop, const std::vector<CropBox>& faces);

// Whether every crop of the ratio misses a part of some face.
bool NoCropHoldsAll(const std::vector<CropBox>& faces, double width, double height, double ratio);

#endif
