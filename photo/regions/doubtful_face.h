// Which of the face finder's doubtful detections are likely to be faces.
#ifndef VISTATRIM_PHOTO_REGIONS_DOUBTFUL_FACE_H
#define VISTATRIM_PHOTO_REGIONS_DOUBTFUL_FACE_H

#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

// True if nearly all pixels are grey, as in a black-and-white photograph.
bool IsGrey(const PixelImage& picture);

// Skin of any tone is redder than green and greener than blue under most light (J. Kovac, P. Peer,
// F. Solina, Human skin colour clustering for face detection, 2003, use a stricter rule). True if
// that holds for half of the pixels in the middle of `box`, which may extend beyond the picture.
bool HasHueOfSkin(const PixelImage& picture, const PixelRect& box);

// A detection that scored below 0 counts only if this is true. It must lie inside the picture, be
// at most half as long as it, and have the hue of skin or, in a grey picture, score -0.2 or more.
bool MayBeAFace(const PixelImage& picture, bool grey, const PixelRect& box, double score);

// The share of true faces among detections of a score near this one; see face_finder.cpp.
double ConfidenceOf(double score, bool hueOfSkin);

} // namespace vistaTrim::photo

#endif
