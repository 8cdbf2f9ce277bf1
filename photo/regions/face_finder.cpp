// Five filters on histograms of gradients over a pyramid of the picture (N. Dalal, B. Triggs,
// Histograms of oriented gradients for human detection, 2005), trained and run by dlib (D. King,
// Max-margin object detection, 2015). The only file that includes dlib's headers, besides the one
// that writes the model: they take seconds to compile.
//
// Debian's dlib takes singular values by LAPACK, whose last bits differ between processors; its
// own routine gives the same faces everywhere. These two headers read the configuration, the
// others only see what it left.
#include <dlib/assert.h>
#include <dlib/test_for_odr_violations.h>
#undef DLIB_USE_BLAS
#undef DLIB_USE_LAPACK
#include <dlib/image_processing/frontal_face_detector.h>

#include "regions/face_finder.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "regions/face_model.h"
#include "regions/same_region.h"

namespace vistaTrim::photo {

namespace {

using GreyPicture = dlib::array2d<unsigned char>;

dlib::frontal_face_detector LoadDetector()
{
    std::istringstream model(
        std::string(reinterpret_cast<const char*>(kFaceModel), kFaceModelBytes));
    dlib::frontal_face_detector detector;
    deserialize(detector, model);
    return detector;
}

GreyPicture GreyOf(const PixelImage& picture)
{
    GreyPicture grey(picture.Size.Height, picture.Size.Width);
    const uint8_t* pixel = picture.Bytes.data();
    for (long row = 0; row < grey.nr(); ++row)
        for (long col = 0; col < grey.nc(); ++col, pixel += 3)
            grey[row][col] = static_cast<unsigned char>((pixel[0] + pixel[1] + pixel[2]) / 3);
    return grey;
}

// The share of true faces among detections of a score near this one. Fitted by eye to some 300
// looked at one by one: half of those at -0.2 were faces, nine in ten at 0.2, all but a few above.
double ConfidenceOf(double score)
{
    return 1.0 / (1.0 + std::exp(-6.0 * (score + 0.17)));
}

// Faces from 80 pixels of the picture, which is `scale` times as large as the one that they are
// given in.
std::vector<FoundRegion> FindIn(dlib::frontal_face_detector& detector, const GreyPicture& grey,
                                int scale, PixelSize size)
{
    std::vector<dlib::rect_detection> found;
    detector(grey, found);
    std::vector<FoundRegion> faces;
    for (const dlib::rect_detection& face : found) {
        const dlib::pyramid_down<2> half;
        const dlib::rectangle box =
            scale == 2 ? dlib::rectangle(half.rect_down(face.rect)) : face.rect;
        const PixelRect rect =
            ClippedTo({static_cast<int32_t>(box.left()), static_cast<int32_t>(box.top()),
                       static_cast<int32_t>(box.width()), static_cast<int32_t>(box.height())},
                      size);
        if (rect.Width > 0 && rect.Height > 0)
            faces.push_back({rect, RegionKind::Face, RegionSource::FaceFinder,
                             ConfidenceOf(face.detection_confidence), "", WishKind::Keep});
    }
    return faces;
}

} // namespace

bool HasFaceFinder()
{
    return true;
}

std::vector<FoundRegion> FindFaces(const PixelImage& picture, FaceSearch search)
{
    if (search == FaceSearch::Off)
        return {};
    // A detector keeps scratch data, so each call has a copy of its own, which takes 0.1 ms.
    static const dlib::frontal_face_detector kDetector = LoadDetector();
    dlib::frontal_face_detector detector = kDetector;

    GreyPicture grey = GreyOf(picture);
    std::vector<FoundRegion> found = FindIn(detector, grey, 1, picture.Size);
    if (search == FaceSearch::All) {
        // Twice as large, most of the large faces are found again, but not all of them.
        dlib::pyramid_up(grey, dlib::pyramid_down<2>());
        const std::vector<FoundRegion> finer = FindIn(detector, grey, 2, picture.Size);
        found.insert(found.end(), finer.begin(), finer.end());
    }
    std::stable_sort(found.begin(), found.end(), [](const FoundRegion& a, const FoundRegion& b) {
        return a.Confidence > b.Confidence;
    });
    std::vector<FoundRegion> faces;
    for (const FoundRegion& face : found)
        AddUnlessKnown(face, faces);
    return faces;
}

} // namespace vistaTrim::photo
