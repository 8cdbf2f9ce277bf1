"""Arrays of every layout are read correctly or refused. Those with packed rows are not copied."""
import tracemalloc

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import vistatrim
from conftest import scene

BASE = np.asarray(scene(96, 64))


def crops_of(pixels):
    return vistatrim.suggest(pixels, top=3, faces="off")


def same_pixels(photo, pixels):
    """Whether the photograph holds exactly these pixels, in colours."""
    colours = np.broadcast_to(pixels.reshape(pixels.shape[:2] + (-1,)), pixels.shape[:2] + (3,))
    return (photo.crop((0, 0, pixels.shape[1], pixels.shape[0])) == colours).all()


class Wrapped:
    """Not an array, but one can be made from it."""

    def __init__(self, pixels):
        self.__array_interface__ = pixels.__array_interface__
        self.kept = pixels


class Sub(np.ndarray):
    pass


def test_every_layout_gives_the_same_pixels():
    padded = np.zeros((64, 120, 3), np.uint8)
    padded[:, 10:106] = BASE
    reversed_rows = BASE[::-1].copy()
    read_only = BASE.copy()
    read_only.flags.writeable = False
    layouts = {
        "rows with a gap": padded[:, 10:106],
        "rows stored bottom up": reversed_rows[::-1],
        "columns from right to left": BASE[:, ::-1].copy()[:, ::-1],
        "channels in reverse": BASE[..., ::-1].copy()[..., ::-1],
        "every second row": np.repeat(BASE, 2, axis=0)[::2],
        "every second column": np.repeat(BASE, 2, axis=1)[:, ::2],
        "column-major": np.asfortranarray(BASE),
        "planes": np.ascontiguousarray(BASE.transpose(2, 0, 1)).transpose(1, 2, 0),
        "read-only": read_only,
        "a subclass": BASE.view(Sub),
        "__array_interface__": Wrapped(BASE),
        "not aligned": np.frombuffer(b"x" + BASE.tobytes(), np.uint8, offset=1).reshape(BASE.shape),
        "a memory map's view": BASE.view(np.memmap),
    }
    expected = crops_of(BASE)
    for name, pixels in layouts.items():
        photo = vistatrim.Photo(pixels)
        assert same_pixels(photo, BASE), name
        assert photo.suggest(top=3, faces="off") == expected, name


@pytest.mark.filterwarnings("ignore:the matrix subclass")
def test_grey_in_either_shape():
    grey = np.asarray(scene(96, 64).convert("L"))
    assert same_pixels(vistatrim.Photo(grey), grey)
    assert crops_of(grey) == crops_of(grey[..., None]) == crops_of(np.asmatrix(grey))
    assert crops_of(grey) == crops_of(np.repeat(grey[..., None], 3, axis=2))


def test_rows_that_share_memory_are_read_correctly():
    row = np.linspace(0, 255, 80).astype(np.uint8)
    repeated = np.broadcast_to(row, (40, 80))  # the stride of the rows is 0
    windows = np.lib.stride_tricks.sliding_window_view(np.arange(100, dtype=np.uint8), 60)
    for pixels in (repeated, windows):
        assert same_pixels(vistatrim.Photo(pixels), np.ascontiguousarray(pixels))


@pytest.mark.parametrize("shape", [(1, 1), (1, 50), (50, 1), (1, 1, 3), (1, 9, 4), (9, 1, 1)])
def test_thin_arrays_are_photographs(shape):
    pixels = np.full(shape, 90, np.uint8)
    assert vistatrim.Photo(pixels).size == (shape[1], shape[0])
    assert isinstance(crops_of(pixels), list)


@pytest.mark.parametrize("shape", [(0, 5), (5, 0), (0, 0, 3), (5, 5, 0), (5,), (5, 5, 2),
                                   (5, 5, 5), (1, 5, 5, 3), ()])
def test_wrong_shapes_are_refused(shape):
    with pytest.raises(ValueError):
        vistatrim.Photo(np.zeros(shape, np.uint8))


@pytest.mark.parametrize("dtype", ["int8", "uint16", "int64", "float32", "float64", "bool", "U1",
                                   "object", "complex64"])
def test_wrong_element_types_are_refused(dtype):
    with pytest.raises(TypeError, match="uint8"):
        vistatrim.Photo(np.zeros((5, 5, 3), dtype))


def test_masked_pixels_are_refused():
    with pytest.raises(TypeError, match="masked"):
        vistatrim.Photo(np.ma.masked_array(BASE, BASE > 100))


@pytest.mark.parametrize("mode", ["P", "1", "CMYK", "YCbCr", "HSV", "I", "F", "LA", "PA"])
def test_images_whose_bytes_are_not_colours_are_refused(mode):
    image = scene(40, 30).convert("L").convert(mode) if mode in ("LA", "PA") else \
        scene(40, 30).convert(mode)
    with pytest.raises(ValueError, match="convert"):
        vistatrim.Photo(image)


def test_packed_rows_are_not_copied():
    """Until it is analysed, a photograph changes with its array; a copy would not."""
    for make in (lambda array: array, lambda array: array[::-1], lambda array: array[:, :50],
                 lambda array: array[::2]):
        array = np.zeros((64, 96, 3), np.uint8)
        pixels = make(array)
        photo = vistatrim.Photo(pixels)
        array[:] = BASE
        assert same_pixels(photo, pixels)


def test_contiguous_arrays_take_no_extra_memory():
    pixels = np.zeros((4000, 4000, 3), np.uint8)  # 48 MB, which NumPy reports to tracemalloc
    tracemalloc.start()
    try:
        photo = vistatrim.Photo(pixels)
        _, peak = tracemalloc.get_traced_memory()
    finally:
        tracemalloc.stop()
    assert photo.size == (4000, 4000)
    assert peak < 100_000


def test_the_array_is_kept_as_long_as_the_photograph():
    photo = vistatrim.Photo(BASE.copy())  # nobody else holds it
    rubbish = [np.full(BASE.shape, 7, np.uint8) for _ in range(20)]
    assert same_pixels(photo, BASE) and len(rubbish) == 20
    growing = bytearray(vistatrim.Photo(BASE).encode((0, 0, 96, 64), format="png"))
    photo = vistatrim.Photo(growing)
    with pytest.raises(BufferError):
        growing.extend(b"more")
    del photo
    growing.extend(b"more")


@given(st.integers(1, 20), st.integers(1, 20), st.sampled_from([None, 1, 3, 4]), st.data())
def test_any_slice_of_any_array_is_read_correctly(height, width, channels, data):
    shape = (height, width) if channels is None else (height, width, channels)
    seed = data.draw(st.integers(0, 9))
    array = np.random.default_rng(seed).integers(0, 256, shape, dtype=np.uint8)
    steps = st.sampled_from([None, 1, 2, -1, -2, 3])
    view = array[:: data.draw(steps), :: data.draw(steps)]
    if data.draw(st.booleans()):
        view = np.asfortranarray(view)
    photo = vistatrim.Photo(view)
    assert photo.size == (view.shape[1], view.shape[0])
    if channels != 4:  # with alpha, the background shows through
        assert same_pixels(photo, np.ascontiguousarray(view))
