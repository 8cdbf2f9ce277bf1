// Five filters on histograms of gradients over a pyramid of the picture (N. Dalal, B. Triggs,
// Histograms of oriented gradients for human detection, 2005), trained and run by dlib (D. King,
// Max-margin object detection, 2015). Only this file and the one that writes the model include
// dlib's headers, which take seconds to compile.
//
// Debian's dlib computes singular values with LAPACK, whose last bits differ between processors;
// dlib's own routine gives the same faces everywhere. The two headers below read the configuration;
// the others then see it as changed here.
#include <dlib/assert.h>
#include <dlib/test_for_odr_violations.h>
#undef DLIB_USE_BLAS
#undef DLIB_USE_LAPACK
#include <dlib/image_processing/frontal_face_detector.h>

#include "regions/face_finder.h"

#include <algorithm>
#include <sstream>

#include "regions/doubtful_face.h"
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

// Detections that score lower are ignored. dlib itself stops at 0.
constexpr double kLowestScore = -0.5;

struct Detections {
    std::vector<FoundRegion> Sure;     // scored 0 or more
    std::vector<FoundRegion> Doubtful; // scored below 0, but may be faces
};

// Adds faces of at least 80 pixels in `grey`, which is `scale` times as large as the picture.
void FindIn(dlib::frontal_face_detector& detector, const GreyPicture& grey, int scale,
            const PixelImage& picture, bool isGrey, Detections& detections)
{
    std::vector<dlib::rect_detection> found;
    detector(grey, found, kLowestScore);
    for (const dlib::rect_detection& face : found) {
        const dlib::pyramid_down<2> half;
        const dlib::rectangle box =
            scale == 2 ? dlib::rectangle(half.rect_down(face.rect)) : face.rect;
        const PixelRect whole{static_cast<int32_t>(box.left()), static_cast<int32_t>(box.top()),
                              static_cast<int32_t>(box.width()),
                              static_cast<int32_t>(box.height())};
        const PixelRect rect = ClippedTo(whole, picture.Size);
        if (rect.Width < 1 || rect.Height < 1)
            continue;
        const double score = face.detection_confidence;
        if (score < 0 && !MayBeAFace(picture, isGrey, whole, score))
            continue;
        const double confidence = ConfidenceOf(score, HasHueOfSkin(picture, whole));
        (score < 0 ? detections.Doubtful : detections.Sure)
            .push_back(
                {rect, RegionKind::Face, RegionSource::FaceFinder, confidence, "", WishKind::Keep});
    }
}

void SortBySureness(std::vector<FoundRegion>& faces)
{
    std::stable_sort(faces.begin(), faces.end(), [](const FoundRegion& a, const FoundRegion& b) {
        return a.Confidence > b.Confidence;
    });
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
    // A detector keeps scratch data, so each call has its own copy, which takes 0.1 ms.
    static const dlib::frontal_face_detector kDetector = LoadDetector();
    dlib::frontal_face_detector detector = kDetector;

    GreyPicture grey = GreyOf(picture);
    const bool isGrey = IsGrey(picture);
    Detections detections;
    FindIn(detector, grey, 1, picture, isGrey, detections);
    if (search == FaceSearch::All) {
        // At twice the size most of the large faces are found again, but not all.
        dlib::pyramid_up(grey, dlib::pyramid_down<2>());
        FindIn(detector, grey, 2, picture, isGrey, detections);
    }
    SortBySureness(detections.Sure);
    SortBySureness(detections.Doubtful);
    std::vector<FoundRegion> faces;
    for (const FoundRegion& face : detections.Sure)
        AddUnlessKnown(face, faces);
    for (const FoundRegion& face : detections.Doubtful)
        if (!IsCovered(face, faces)) // by another detection of the same face
            faces.push_back(face);
    SortBySureness(faces);
    return faces;
}

} // namespace vistaTrim::photo
