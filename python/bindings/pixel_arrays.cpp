#include "pixel_arrays.h"

#include <limits>
#include <memory>
#include <utility>

namespace vistaTrim::python {

namespace py = pybind11;

photo::PixelView ViewOfArray(const py::array& pixels)
{
    if (!py::isinstance<py::array_t<uint8_t>>(pixels) || pixels.ndim() < 2 || pixels.ndim() > 3)
        throw py::value_error("pixels must be uint8 of the shape (h, w) or (h, w, channels)");
    const py::ssize_t height = pixels.shape(0);
    const py::ssize_t width = pixels.shape(1);
    const py::ssize_t channels = pixels.ndim() == 3 ? pixels.shape(2) : 1;
    constexpr py::ssize_t kMost = std::numeric_limits<int32_t>::max();
    if (height < 1 || width < 1 || height > kMost || width > kMost)
        throw py::value_error("pixels must have at least one row and one column");
    if (channels != 1 && channels != 3 && channels != 4)
        throw py::value_error("pixels must have 1, 3 or 4 channels");

    // The stride of an axis with one element is meaningless.
    const py::ssize_t packedRow = width * channels;
    const bool packedPixels = pixels.ndim() == 2 || channels == 1 || pixels.strides(2) == 1;
    const bool packedRows = width == 1 || pixels.strides(1) == channels;
    const py::ssize_t rowStride = height == 1 ? packedRow : pixels.strides(0);
    if (!packedPixels || !packedRows || (rowStride < packedRow && rowStride > -packedRow))
        throw py::value_error("the rows of pixels must be packed");
    return {static_cast<const uint8_t*>(pixels.data()), static_cast<int32_t>(width),
            static_cast<int32_t>(height), static_cast<int32_t>(channels), rowStride};
}

py::array ArrayOf(photo::PixelImage image)
{
    const std::vector<py::ssize_t> shape = {image.Size.Height, image.Size.Width, image.Channels};
    auto bytes = std::make_unique<std::vector<uint8_t>>(std::move(image.Bytes));
    const uint8_t* data = bytes->data();
    const py::capsule owner(bytes.get(),
                            [](void* held) { delete static_cast<std::vector<uint8_t>*>(held); });
    static_cast<void>(bytes.release()); // the capsule owns it now
    return py::array_t<uint8_t>(shape, data, owner);
}

py::array ArrayOf(std::vector<float> values, photo::PixelSize size)
{
    const std::vector<py::ssize_t> shape = {size.Height, size.Width};
    auto floats = std::make_unique<std::vector<float>>(std::move(values));
    const float* data = floats->data();
    const py::capsule owner(floats.get(),
                            [](void* held) { delete static_cast<std::vector<float>*>(held); });
    static_cast<void>(floats.release());
    return py::array_t<float>(shape, data, owner);
}

} // namespace vistaTrim::python
