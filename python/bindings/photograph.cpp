// photo::Photograph: the three ways to make one, and its crops. Every call into the
// library runs without the interpreter lock.
#include "bindings.h"

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include "photograph.h"
#include "pixel_arrays.h"
#include "vistaTrimPhoto/crop_writer.h"
#include "vistaTrimPhoto/image_encoder.h"
#include "vistaTrimPhoto/picture_runtime.h"
#include "vistaTrimPhoto/request.h"

namespace vistaTrim::python {

namespace {

namespace py = pybind11;
using photo::Photograph;

using Box = std::tuple<int32_t, int32_t, int32_t, int32_t>; // x, y, width, height
using Size = std::optional<std::pair<int32_t, int32_t>>;

// When a thread ends, frees what the picture library holds for it.
void LeaveWithThread()
{
    struct Leaver {
        ~Leaver()
        {
            photo::LeavePictureThread();
        }
    };
    static thread_local const Leaver leaver;
    static_cast<void>(leaver);
}

std::unique_ptr<BoundPhotograph> FromFile(const std::string& path, const photo::Colour& background)
{
    const py::gil_scoped_release unlocked;
    LeaveWithThread();
    return std::make_unique<BoundPhotograph>(
        BoundPhotograph{Photograph::FromFile(path, {background}), {}, {}});
}

std::unique_ptr<BoundPhotograph> FromBytes(const py::buffer& encoded,
                                           const photo::Colour& background)
{
    py::buffer_info buffer = encoded.request();
    if (buffer.ndim != 1 || buffer.itemsize != 1 || (buffer.size > 1 && buffer.strides[0] != 1))
        throw py::value_error("an encoded file must be contiguous bytes");
    const auto size = static_cast<size_t>(buffer.size);
    std::optional<Photograph> made;
    {
        const py::gil_scoped_release unlocked;
        LeaveWithThread();
        made = Photograph::FromBytes(buffer.ptr, size, {background});
    }
    return std::make_unique<BoundPhotograph>(
        BoundPhotograph{std::move(*made), {}, std::move(buffer)});
}

std::unique_ptr<BoundPhotograph> FromPixels(const py::array& pixels,
                                            const photo::Colour& background)
{
    const photo::PixelView view = ViewOfArray(pixels);
    std::optional<Photograph> made;
    {
        const py::gil_scoped_release unlocked;
        LeaveWithThread();
        made = Photograph::FromPixels(view, {background});
    }
    return std::make_unique<BoundPhotograph>(BoundPhotograph{std::move(*made), pixels, {}});
}

photo::CropOutput OutputOf(const Box& box, const Size& size)
{
    photo::CropOutput output;
    output.Rect = {std::get<0>(box), std::get<1>(box), std::get<2>(box), std::get<3>(box)};
    if (size)
        output.Size = photo::PixelSize{size->first, size->second};
    return output;
}

photo::CropOutput OutputOf(const Box& box, const Size& size, const std::string& ending,
                           std::optional<int> quality, bool strip)
{
    photo::CropOutput output = OutputOf(box, size);
    const auto format = photo::FormatOfEnding(ending);
    if (!format)
        throw py::value_error("no format is called '" + ending + "'");
    output.Format = *format;
    output.Quality = quality;
    output.Strip = strip;
    return output;
}

py::array Crop(const BoundPhotograph& self, const Box& box, const Size& size)
{
    const photo::CropOutput output = OutputOf(box, size);
    photo::PixelImage image;
    {
        const py::gil_scoped_release unlocked;
        LeaveWithThread();
        image = std::move(photo::ReadCrops(self.Photo, {output}).front());
    }
    return ArrayOf(std::move(image));
}

py::bytes Encode(const BoundPhotograph& self, const Box& box, const Size& size,
                 const std::string& ending, std::optional<int> quality, bool strip)
{
    const photo::CropOutput output = OutputOf(box, size, ending, quality, strip);
    std::vector<uint8_t> file;
    {
        const py::gil_scoped_release unlocked;
        LeaveWithThread();
        file = std::move(photo::EncodeCrops(self.Photo, {output}).front());
    }
    return py::bytes(reinterpret_cast<const char*>(file.data()), file.size());
}

void Save(const BoundPhotograph& self, const std::string& path, const Box& box, const Size& size,
          const std::string& ending, std::optional<int> quality, bool strip)
{
    const photo::CropOutput output = OutputOf(box, size, ending, quality, strip);
    const py::gil_scoped_release unlocked;
    LeaveWithThread();
    photo::WriteCrops(self.Photo, {output}, {path});
}

py::array Preview(const BoundPhotograph& self, int32_t longSide)
{
    photo::PixelImage image;
    {
        const py::gil_scoped_release unlocked;
        LeaveWithThread();
        image = self.Photo.ReadPreview(longSide);
    }
    return ArrayOf(std::move(image));
}

// Without metadata, for pages and notebooks.
py::bytes EncodePixels(const py::array& pixels, const std::string& ending, int quality)
{
    const photo::PixelView view = ViewOfArray(pixels);
    const auto format = photo::FormatOfEnding(ending);
    if (!format)
        throw py::value_error("no format is called '" + ending + "'");
    photo::PixelImage image;
    image.Size = {view.Width, view.Height};
    image.Channels = view.Channels;
    std::vector<uint8_t> file;
    {
        const py::gil_scoped_release unlocked;
        LeaveWithThread();
        const ptrdiff_t packed = static_cast<ptrdiff_t>(view.Width) * view.Channels;
        image.Bytes.reserve(static_cast<size_t>(packed) * static_cast<size_t>(view.Height));
        for (int32_t row = 0; row < view.Height; ++row) {
            const uint8_t* first = view.Data + row * view.RowStride;
            image.Bytes.insert(image.Bytes.end(), first, first + packed);
        }
        photo::Encoding encoding;
        encoding.Format = *format;
        encoding.Quality = quality;
        file = photo::EncodeImage(image, encoding);
    }
    return py::bytes(reinterpret_cast<const char*>(file.data()), file.size());
}

} // namespace

void BindPhotograph(py::module_& module)
{
    py::class_<BoundPhotograph>(module, "Photograph")
        .def_static("from_file", &FromFile)
        .def_static("from_bytes", &FromBytes)
        .def_static("from_pixels", &FromPixels)
        .def_property_readonly("size",
                               [](const BoundPhotograph& self) {
                                   const photo::PixelSize size = self.Photo.Size();
                                   return std::pair(size.Width, size.Height);
                               })
        .def_property_readonly(
            "native_ending",
            [](const BoundPhotograph& self) { return photo::EndingOf(self.Photo.NativeFormat()); })
        .def("check",
             [](const BoundPhotograph& self, const photo::Request& request) {
                 photo::CheckRequest(request, self.Photo.Size());
             })
        .def("crop", &Crop)
        .def("encode", &Encode)
        .def("save", &Save)
        .def("preview", &Preview);
    module.def("encode_pixels", &EncodePixels);
    module.def("is_format",
               [](const std::string& ending) { return photo::FormatOfEnding(ending).has_value(); });
    module.def("fitted_size",
               [](std::pair<int32_t, int32_t> crop, std::pair<int32_t, int32_t> box) {
                   const photo::PixelSize size =
                       photo::FittedSize({crop.first, crop.second}, {box.first, box.second});
                   return std::pair(size.Width, size.Height);
               });
}

} // namespace vistaTrim::python
