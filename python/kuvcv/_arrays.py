"""NumPy arrays as the library's images, signals and blocks: checked, never copied."""
import operator

import numpy

_LONGEST = 2**31 - 1


def array_of(array, name):
    if not isinstance(array, numpy.ndarray):
        raise TypeError(f"{name} is no NumPy array")
    return array


class Image:
    """An array as an image: `array`, `step` in bytes, `size` as (width, height).

    An image of one channel has the shape (height, width), one of several (height, width, channels). Rows may lie anywhere, at any
    distance and in any order; within a row the samples have to follow one another. A `pixel` above the sample's size tells that samples
    lie that many bytes apart: one channel of an image of several."""

    def __init__(self, array, dtype, channels=1, name="the image", writes=False, pixel=None):
        if array_of(array, name).dtype != dtype:
            raise TypeError(f"{name} holds {array.dtype} instead of {numpy.dtype(dtype)}")
        if array.ndim != (2 if channels == 1 else 3) or channels > 1 and array.shape[2] != channels:
            wanted = "(height, width)" if channels == 1 else f"(height, width, {channels})"
            raise ValueError(f"{name} has the shape {array.shape} instead of {wanted}")
        if writes and not array.flags.writeable:
            raise ValueError(f"{name} is read-only")
        height, width = array.shape[:2]
        sample = array.itemsize
        pixel = pixel or channels * sample
        if width > 1 and array.strides[1] != pixel or channels > 1 and array.strides[2] != sample:
            apart = "do not follow one another" if pixel == channels * sample else f"are not {pixel} bytes apart"
            raise ValueError(f"{name}: the samples of a row {apart} (strides {array.strides}); a copy is up to you")
        # The step of a single row says nothing; NumPy may have any there.
        self.step = array.strides[0] if height > 1 else width * pixel
        if max(abs(self.step), height, width) > _LONGEST:
            raise ValueError(f"{name} exceeds 31 bits: shape {array.shape}, strides {array.strides}")
        self.array, self.size = array, (width, height)


def row(array, dtype, length=None, name="the array", writes=False):
    """Checks an array whose samples follow one another, of any or of this length."""
    if array_of(array, name).dtype != dtype:
        raise TypeError(f"{name} holds {array.dtype} instead of {numpy.dtype(dtype)}")
    if not array.flags.c_contiguous:
        raise ValueError(f"{name} is not contiguous; a copy is up to you")
    if length is not None and array.size != length:
        raise ValueError(f"{name} has {array.size} samples instead of {length}")
    if writes and not array.flags.writeable:
        raise ValueError(f"{name} is read-only")
    return array


def constants(values, dtype, length=None, name="the constants"):
    """A sequence of numbers as a contiguous array; such inputs are small and may be copied."""
    given = numpy.asarray(values)
    if length is not None and given.shape != (length,):
        raise ValueError(f"{name}: {length} numbers are wanted, not an array of shape {given.shape}")
    converted = numpy.ascontiguousarray(given, dtype=dtype)
    if converted.dtype.kind in "iu" and not numpy.array_equal(converted, given):
        raise ValueError(f"{name}: not all are integers of {converted.dtype}")
    return converted


def block(size):
    """A block of as many bytes for a record or a buffer; None for none."""
    if size < 0:
        raise ValueError("the work is too large: its memory exceeds 31 bits")
    return numpy.empty(size, numpy.uint8) if size else None


def whole(*numbers):
    return tuple(operator.index(number) for number in numbers)
