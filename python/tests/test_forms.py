"""The functions on arrays, against NumPy."""
import ctypes
import itertools
import unittest
import warnings

import numpy

import kuvcv
from kuvcv import _forms

HEIGHT, WIDTH = 5, 67


def drawn(random, shape, dtype):
    """Numbers of a type; of floating-point ones, such that no result overflows."""
    dtype = numpy.dtype(dtype)
    if dtype.kind == "f":
        return random.uniform(0.5, 300, shape).astype(dtype)
    limits = numpy.iinfo(dtype)
    return random.integers(limits.min, limits.max, shape, dtype, endpoint=True)


def scaled(exact, factor):
    """Rounded to the nearest, halves to even, and limited to 16 bits."""
    return numpy.clip(numpy.rint(exact / 2.0**factor), -32768, 32767)


def signed(array):
    return array.astype(numpy.int64)


def video(src):
    """Packed 4:2:2 to RGB, by the exact formulae."""
    cb = numpy.repeat(signed(src[:, 0::2, 0]), 2, axis=1)[:, :src.shape[1]] - 128
    cr = signed(src[:, 1::2, 0])
    cr = numpy.repeat(numpy.concatenate([cr, cr[:, -1:]], 1), 2, axis=1)[:, :src.shape[1]] - 128
    y = 76282 * signed(src[:, :, 1]) - 1187744
    return numpy.clip(numpy.stack([y + 104593 * cr, y - 25689 * cb - 53279 * cr, y + 132184 * cb], 2) >> 16, 0, 255)


def mirrored(src, axis):
    return [src[::-1], src[:, ::-1], src[::-1, ::-1], numpy.swapaxes(src, 0, 1), numpy.swapaxes(src[::-1, ::-1], 0, 1)][axis]


def cosine(block, inverse):
    k, n = numpy.meshgrid(range(8), range(8), indexing="ij")
    basis = numpy.cos((2 * n + 1) * k * numpy.pi / 16) * numpy.where(k == 0, 1 / numpy.sqrt(8), 0.5)
    return basis.T @ block @ basis if inverse else basis @ block @ basis.T


def zigzag(src):
    order = sorted(itertools.product(range(8), range(8)), key=lambda at: (sum(at), at[0] if sum(at) % 2 else at[1]))
    dst = numpy.empty((8, 8), src.dtype)
    for value, at in zip(src.ravel(), order):
        dst[at] = value
    return dst


def reversed_colours(old, src, dstOrder):
    result = (src if old is None else old).copy()
    result[..., :len(dstOrder)] = src[..., dstOrder]
    return result


# What comes out, by operation; `old` is what stood in dst or srcDst.
EXPECTED = {
    "Add": lambda old, scaleFactor=None, src=None, src1=None, src2=None:
        old + src if scaleFactor is None else scaled(signed(old) + src if src1 is None else signed(src1) + src2, scaleFactor),
    "Sub": lambda old, scaleFactor=None, src=None, src1=None, src2=None:
        (old - src if src1 is None else src2 - src1) if scaleFactor is None else
        scaled(signed(old) - src if src1 is None else signed(src2) - src1, scaleFactor),
    "AddC": lambda old, value, scaleFactor=None: old + value if scaleFactor is None else scaled(signed(old) + value, scaleFactor),
    "SubC": lambda old, value, scaleFactor=None:
        old - numpy.float32(value) if scaleFactor is None else scaled(signed(old) - value, scaleFactor),
    "MulC": lambda old, value: old * value,
    "DivC": lambda old, value: old * numpy.float32(1 / numpy.float64(numpy.float32(value))),
    "Div": lambda old, src: old / src,
    "Abs": lambda old: abs(old),
    "Sqr": lambda old, scaleFactor=None: old * old if scaleFactor is None else scaled(signed(old)**2, scaleFactor),
    "Sqrt": lambda old: numpy.sqrt(old),
    "AbsDiff": lambda old, src1, src2: abs(src1 - src2),
    "LShiftC": lambda old, value: shifted(old, value, numpy.left_shift),
    "RShiftC": lambda old, value: shifted(old, value, numpy.right_shift),
    "Zero": lambda old: old * 0,
    "Set": lambda old, value: numpy.full_like(old, value),
    "Mirror": lambda old, axis, src=None: mirrored(old if src is None else src, axis),
    "SwapChannels": lambda old, dstOrder, src=None: reversed_colours(old, old if src is None else src, dstOrder),
    "LUTPalette": lambda old, src, table, nBitSize: table[src & ((1 << nBitSize) - 1)],
    "CbYCr422ToRGB": lambda old, src: video(src),
    "GrayToRGB": lambda old, src: numpy.repeat(src[:, :, None], 3, 2),
    "Sum": lambda old, src, hint: src.sum(dtype=numpy.float64),
    "Mean": lambda old, src, hint=2: src.mean(axis=(0, 1), dtype=numpy.float64),
    "Mean_StdDev": lambda old, src, coi=0: moments(src[..., coi - 1] if coi else src),
    "MinMax": lambda old, src: (src.min(), src.max()),
    "Max": lambda old, src: src.max(axis=(0, 1)),
    "Integral": lambda old, src, val: numpy.pad(src.astype(numpy.int32).cumsum(0).cumsum(1), ((1, 0), (1, 0))) + val,
    "DCT8x8Fwd": lambda old: cosine(old, False),
    "DCT8x8Inv": lambda old: cosine(old, True),
    "ZigzagInv8x8": lambda old, src: zigzag(src),
    "Convert": lambda old, src, roundMode=1: src if old.dtype == "f4" else numpy.clip(numpy.rint(src), 0, 255),
    "Scale": lambda old, src, vMin, vMax: (vMax - vMin) / 255 * src + vMin if src.dtype == "u1" else
        numpy.clip(numpy.rint((src - vMin) * (255 / (vMax - vMin))), 0, 255),
}
# Results that may differ from these by as much.
TOLERANCE = {"CbYCr422ToRGB": 1, "DCT8x8Fwd": 1.01, "DCT8x8Inv": 1.01, "Scale": 1e-3, "Sum": 1e-6, "Mean": 1e-9, "Mean_StdDev": 1e-6}


def shifted(old, value, operation):
    value = numpy.asarray(value)
    result = old.copy()
    result[..., :value.size if value.size > 1 else None] = operation(old[..., :value.size if value.size > 1 else None], value)
    return result


def moments(src):
    return src.mean(dtype=numpy.float64), src.std(dtype=numpy.float64)


def copied(old, src, form, mask=None):
    """kuviCopy_* and kuvsCopy_*: what is not copied stays."""
    if isinstance(src, list):
        return numpy.stack(src, 2)
    result = src.copy() if old is None else old.copy()
    if mask is not None:
        result[mask != 0] = src[mask != 0]
    elif "AC4" in form.layouts or (form.name == "kuviCopy_16u_AC4C3R"):
        result[..., :3] = src[..., :3]
    else:
        result[...] = src
    return result


NUMBERS = {"scaleFactor": 1, "hint": 2, "roundMode": 1, "val": 9, "vMin": -2.5, "vMax": 301.0, "coi": 2, "nBitSize": 6}


def arguments(form, random, lay):
    """An argument for each parameter; lay(array, pixel) makes an image of an array."""
    given = {}
    for kind, parameter in form.parameters:
        role = form.roles[parameter]
        if role in ("image", "planes"):
            channels = form.channels(parameter)
            apart = _forms._CHANNEL_OF.get((form.name, parameter))
            height, width = (HEIGHT + 1, WIDTH + 1) if form.operation == "Integral" and parameter == "dst" else (HEIGHT, WIDTH)
            shape = (height, width) if channels == 1 or role == "planes" else (height, width, channels)
            images = [lay(drawn(random, shape, form.dtype(parameter)), apart) for _ in range(channels if role == "planes" else 1)]
            given[parameter] = images if role == "planes" else images[0]
        elif role in ("signal", "block"):
            given[parameter] = drawn(random, 99 if role == "signal" else (8, 8), form.dtype(parameter))
            if form.operation.startswith("DCT"):
                given[parameter] //= 256
        elif role == "constants":
            given[parameter] = numpy.array([3, 1, 5], form.dtype(parameter))
        elif role == "number":
            given[parameter] = NUMBERS.get(parameter, 3) if parameter != "axis" else int(random.integers(3))
        elif role == "dstOrder":
            given[parameter] = [2, 0, 3, 1] if form.layouts == ["C4"] else [2, 0, 1]
        elif role == "table":
            given[parameter] = drawn(random, (64, 3) if "24u" in form.name else 64, form.dtype(parameter))
    return given


def packed(array, apart):
    """The array itself, or one channel of an image of several."""
    if not apart:
        return array
    image = numpy.zeros((*array.shape, apart), array.dtype)
    image[..., 1] = array
    return image[..., 1]


def padded(array, apart):
    """The array amid a larger one."""
    outer = numpy.full((array.shape[0] + 2, array.shape[1] + 7, *array.shape[2:]), 77, array.dtype)
    inner = outer[1:-1, 3:-4]
    inner[...] = array
    return packed(inner, apart) if apart else inner


def unaligned(array, apart):
    """Rows at odd addresses and at odd distances."""
    array = packed(array, apart)
    step = array.strides[0] + 1
    memory = numpy.zeros(step * array.shape[0] + 1, numpy.uint8)
    image = numpy.ndarray(array.shape, array.dtype, memory, 1, (step, *array.strides[1:]))
    image[...] = array
    return image


def upward(array, apart):
    """The last row first in memory."""
    return packed(array[::-1].copy()[::-1], False) if not apart else packed(array[::-1].copy(), apart)[::-1]


class Forms(unittest.TestCase):
    def check(self, form, lay):
        random = numpy.random.default_rng(len(form.name))
        given = arguments(form, random, lay)
        before = {name: value.copy() if isinstance(value, numpy.ndarray) else value for name, value in given.items()}
        result = getattr(kuvcv, form.name)(**given)

        target = "dst" if "dst" in given else "srcDst" if "srcDst" in given else None
        rest = {name: value for name, value in before.items() if name != target}
        old = before.get(target)
        if form.operation == "Copy":
            expected = copied(old, form=form, **rest)
        else:
            expected = EXPECTED[form.operation](old, **rest)
        if target:
            self.assertIs(result, given[target])
            self.assertEqual(result.shape, numpy.shape(expected))
            expected = numpy.asarray(expected)
        tolerance = TOLERANCE.get(form.operation, 0)
        numpy.testing.assert_allclose(numpy.asarray(result, numpy.float64), numpy.asarray(expected, numpy.float64),
                                      rtol=1e-6 if tolerance else 0, atol=tolerance, err_msg=form.name)
        for name, value in before.items():
            if name != target and isinstance(value, numpy.ndarray):
                numpy.testing.assert_array_equal(given[name], value, f"{form.name} changed {name}")

    def test_every_form_has_an_expectation(self):
        self.assertEqual({form.operation for form in _forms.FORMS.values()}, {*EXPECTED, "Copy"})
        self.assertGreater(len(_forms.FORMS), 95)

    def test_results(self):
        for code in kuvcv.VARIANTS:
            try:
                with kuvcv.use_variant(code):
                    for form in _forms.FORMS.values():
                        with self.subTest(form.name, variant=code):
                            self.check(form, packed)
            except kuvcv.Error as error:
                self.assertEqual(error.name, "kuvStatusFeatureMissing")

    def test_images_amid_others(self):
        for form in _forms.FORMS.values():
            with self.subTest(form.name):
                self.check(form, padded)

    def test_rows_in_any_order(self):
        """Negative steps, or a refusal by the library where it wants positive ones."""
        refused = 0
        for form in _forms.FORMS.values():
            with self.subTest(form.name):
                try:
                    self.check(form, upward)
                except kuvcv.Error as error:
                    self.assertEqual(error.name, "kuvStatusBadStep")
                    refused += 1
        self.assertLess(refused, 45)

    def test_unaligned_rows(self):
        for form in _forms.FORMS.values():
            with self.subTest(form.name):
                if form.name in _forms._STEP_UNITS:
                    with self.assertRaisesRegex(ValueError, "no multiple of"):
                        self.check(form, unaligned)
                    continue
                try:
                    self.check(form, unaligned)
                except kuvcv.Error as error:
                    self.assertEqual(error.name, "kuvStatusStepNotMultiple")

    def test_new_destinations(self):
        for form in _forms.FORMS.values():
            if not form.makes:
                continue
            with self.subTest(form.name):
                given = arguments(form, numpy.random.default_rng(1), packed)
                expected = getattr(kuvcv, form.name)(**given)
                del given["dst"]
                made = getattr(kuvcv, form.name)(**given)
                self.assertEqual((made.shape, made.dtype), (expected.shape, expected.dtype))
                numpy.testing.assert_array_equal(made, expected)

    def test_arrays_that_do_not_fit(self):
        for form in _forms.FORMS.values():
            for name in form.images:
                given = arguments(form, numpy.random.default_rng(1), packed)
                good = given[name][0] if isinstance(given[name], list) else given[name]
                wide = numpy.zeros((good.shape[0], 2 * good.shape[1], *good.shape[2:]), good.dtype)
                bad = {"inner gaps": wide[:, ::2], "backward": good[:, ::-1], "columns first": numpy.asfortranarray(good),
                       "type": good.astype("c8"), "byte order": good.astype(good.dtype.newbyteorder()) if good.itemsize > 1 else None,
                       "rows": good[:-1] if len(form.images) > 1 else None, "dimensions": good.reshape(-1), "list": good.tolist()}
                if good.ndim == 3:
                    bad["channels"] = good[:, :, :2] if good.shape[2] > 2 else good[:, :, :1]
                    bad["channels backward"] = good[:, :, ::-1]
                if name in ("dst", "srcDst"):
                    frozen = good.copy()
                    frozen.flags.writeable = False
                    bad["read-only"] = frozen
                for what, array in bad.items():
                    if array is None or what == "inner gaps" and (form.name, name) in _forms._CHANNEL_OF:
                        continue
                    with self.subTest(form.name, parameter=name, what=what), self.assertRaises((TypeError, ValueError)):
                        getattr(kuvcv, form.name)(**{**given, name: [array] * len(given[name]) if isinstance(given[name], list) else array})

    def test_diagonals(self):
        image = numpy.arange(6, dtype=numpy.uint16).reshape(2, 3)
        for axis in (kuvcv.kuvAxisDiagonal, kuvcv.kuvAxisSecondDiagonal):
            numpy.testing.assert_array_equal(kuvcv.mirror(image, axis), mirrored(image, axis))
            numpy.testing.assert_array_equal(kuvcv.mirror(image, ctypes.c_int32(axis)), mirrored(image, axis))
        with self.assertRaises(ValueError):
            kuvcv.mirror(image, kuvcv.kuvAxisDiagonal, dst=numpy.zeros_like(image))
        with self.assertRaises(ValueError):
            kuvcv.mirror(image, ctypes.c_int32(kuvcv.kuvAxisDiagonal), dst=numpy.zeros_like(image))

    def test_constants_that_do_not_fit(self):
        image = numpy.zeros((2, 2, 4), numpy.uint8)
        colours = numpy.zeros((2, 2, 3), numpy.int16)
        for wrong in (lambda: kuvcv.kuviSwapChannels_8u_C4IR(image, [0, 1, 2]), lambda: kuvcv.kuviAddC_16s_C3IRSfs([1, 2], colours),
                      lambda: kuvcv.kuviAddC_16s_C3IRSfs([1, 2, 40000], colours), lambda: kuvcv.kuviAddC_16s_C3IRSfs([1, 2, 0.5], colours),
                      lambda: kuvcv.lut_palette(image[:, :, 0].copy(), numpy.zeros((15, 3), numpy.uint8), 4),
                      lambda: kuvcv.lut_palette(image[:, :, 0].copy(), numpy.zeros((15, 3), numpy.uint8), numpy.uint8(8)),
                      lambda: kuvcv.lut_palette(image[:, :, 0].copy(), numpy.zeros((15, 3), numpy.uint8), ctypes.c_int32(8)),
                      lambda: kuvcv.lut_palette(image[:, :, 0].copy(), numpy.zeros((16, 4), numpy.uint8), 4)):
            with self.assertRaises((ValueError, TypeError)):
                wrong()
        with self.assertRaisesRegex(OverflowError, "value: 256 is not within 0 to 255"):
            kuvcv.set(256, image[:, :, 0].copy())
        with self.assertRaisesRegex(TypeError, "scaleFactor: 'float'"):
            kuvcv.kuviSqr_16s_C1IRSfs(colours[:, :, 0].copy(), 0.5)
        reals = numpy.zeros((2, 2), numpy.float32)
        self.assertEqual(kuvcv.set(numpy.float32(0.1), reals)[1, 1], numpy.float32(0.1))
        self.assertEqual(kuvcv.set(numpy.uint16(7), image[:, :, 0].copy())[1, 1], 7)

    def test_families(self):
        one, three, four = (numpy.zeros(shape, numpy.uint8) for shape in ((2, 3), (2, 3, 3), (2, 3, 4)))
        self.assertIsNot(kuvcv.mirror(one, 0), one)
        self.assertIs(kuvcv.mirror(srcDst=one, axis=0), one)
        self.assertEqual(kuvcv.copy(four).shape, (2, 3, 4))
        self.assertEqual(kuvcv.copy([one, one, one]).shape, (2, 3, 3))
        kuvcv.set(9, four[..., 1])
        self.assertEqual(four.sum(axis=(0, 1)).tolist(), [0, 54, 0, 0])
        kuvcv.copy(numpy.full((2, 3), 8, numpy.uint8), three[..., 2])
        self.assertEqual(three[1, 2].tolist(), [0, 0, 8])
        kuvcv.set(5, one[:, :1])
        self.assertEqual(one.tolist(), [[5, 0, 0], [5, 0, 0]])
        signal = numpy.arange(4, dtype=numpy.uint16)
        self.assertEqual(kuvcv.lshift_c(2, signal).tolist(), [0, 4, 8, 12])
        with self.assertRaisesRegex(TypeError, "more than one function.*\n.*kuviCopy_8u_C4R\n.*kuviCopy_8u_AC4R"):
            kuvcv.copy(four, four.copy())
        with self.assertRaisesRegex(TypeError, "no function takes these arguments.*\n.*kuviAdd_32f_C1IR\\(src, srcDst\\)"):
            kuvcv.add(one, one)

    def test_statuses(self):
        image = numpy.ones((2, 2), numpy.float32)
        with self.assertRaisesRegex(kuvcv.Error, r"kuviDivC_32f_C1IR: a divisor constant is 0 \(kuvStatusDivByZero, -10\)") as raised:
            kuvcv.div_c(0, image)
        self.assertEqual((raised.exception.status, raised.exception.function), (kuvcv.kuvStatusDivByZero, "kuviDivC_32f_C1IR"))
        with self.assertRaises(kuvcv.Error) as raised:
            kuvcv.sum(image[:0])
        self.assertEqual(raised.exception.name, "kuvStatusBadSize")
        with self.assertWarnsRegex(kuvcv.StatusWarning, "kuvStatusDivByZeroWarning") as warned:
            self.assertTrue(numpy.isinf(kuvcv.div(image * 0, image)).all())
        self.assertEqual(warned.filename, __file__)
        with warnings.catch_warnings():
            warnings.simplefilter("error", kuvcv.StatusWarning)
            with self.assertRaises(kuvcv.StatusWarning):
                kuvcv.sqrt(-image)

    def test_single_rows(self):
        """Of a single row NumPy may tell any stride."""
        image = numpy.ones((4, 6), numpy.float32)[::-2][:1]
        self.assertEqual(kuvcv.mean_std_dev(image), (1.0, 0.0))

    def test_records_are_elsewhere(self):
        with self.assertRaisesRegex(AttributeError, "kuvcv.raw"):
            kuvcv.kuviLUT_8u_C1IR
        with self.assertRaises(AttributeError):
            kuvcv.kuviNothing


if __name__ == "__main__":
    unittest.main()
