#include "face_list.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "rival_crops.h"

namespace {

double ToNumber(const std::string& field)
{
    size_t used = 0;
    double number = NAN;
    try {
        number = std::stod(field, &used);
    } catch (const std::exception&) {
    }
    return used == field.size() ? number : NAN;
}

} // namespace

FaceList ReadFaceList(const std::string& file)
{
    std::ifstream stream(file);
    if (!stream)
        throw std::runtime_error(file + ": cannot be opened");
    FaceList faces;
    size_t number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        std::istringstream fields(line);
        std::string name;
        std::getline(fields, name, '\t');
        std::vector<double> box;
        for (std::string field; std::getline(fields, field, '\t');)
            box.push_back(ToNumber(field));
        const bool good =
            !name.empty() && box.size() == 4 &&
            std::all_of(box.begin(), box.end(), [](double v) { return std::isfinite(v); }) &&
            box[2] > 0 && box[3] > 0;
        if (!good)
            throw std::runtime_error(file + ":" + std::to_string(number) +
                                     ": is not file, x, y, w, h between tabs");
        faces[name].push_back({box[0], box[1], box[2], box[3]});
    }
    if (stream.bad())
        throw std::runtime_error(file + ": cannot be read");
    return faces;
}

std::vector<CropBox> InsidePhoto(const std::vector<CropBox>& faces, double width, double height)
{
    std::vector<CropBox> inside;
    for (const CropBox& face : faces) {
        const double x0 = std::max(0.0, face.X);
        const double y0 = std::max(0.0, face.Y);
        const double x1 = std::min(width, face.X + face.Width);
        const double y1 = std::min(height, face.Y + face.Height);
        if (x0 < x1 && y0 < y1)
            inside.push_back({x0, y0, x1 - x0, y1 - y0});
    }
    return inside;
}

bool CutsOrLosesFace(const CropBox& crop, const std::vector<CropBox>& faces)
{
    return std::any_of(faces.begin(), faces.end(), [&crop](const CropBox& face) {
        return face.X < crop.X || face.Y < crop.Y || face.X + face.Width > crop.X + crop.Width ||
               face.Y + face.Height > crop.Y + crop.Height;
    });
}

bool NoCropHoldsAll(const std::vector<CropBox>& faces, double width, double height, double ratio)
{
    double x0 = width;
    double y0 = height;
    double x1 = 0;
    double y1 = 0;
    for (const CropBox& face : faces) {
        x0 = std::min(x0, face.X);
        y0 = std::min(y0, face.Y);
        x1 = std::max(x1, face.X + face.Width);
        y1 = std::max(y1, face.Y + face.Height);
    }
    const CropBox largest = LargestCentredCrop(width, height, ratio);
    return x1 - x0 > largest.Width || y1 - y0 > largest.Height;
}
