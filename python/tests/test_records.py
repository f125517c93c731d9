"""What takes records and buffers, against NumPy; and the choice of the variant."""
import concurrent.futures
import unittest

import numpy

import kuvcv

RANDOM = numpy.random.default_rng(9)


def tiles(array):
    """The array amid a larger one, in rows that are not packed."""
    outer = numpy.zeros((array.shape[0] + 2, array.shape[1] + 5, *array.shape[2:]), array.dtype)
    inner = outer[1:-1, 2:-3]
    inner[...] = array
    return inner


class ToneMaps(unittest.TestCase):
    def test_linear(self):
        levels, values = [0, 100, 256], [10, 200, 240]
        image = tiles(numpy.tile(numpy.arange(256, dtype=numpy.uint8), (3, 1)))
        result = kuvcv.ToneMap(levels, values).apply(image)
        self.assertIs(result, image)
        expected = numpy.floor(numpy.interp(numpy.arange(256), levels, values) + 0.5)
        self.assertLessEqual(abs(image - expected).max(), 1)

    def test_step_of_16_bits(self):
        levels, values = numpy.array([0, 30000, 65536]), numpy.array([7, 65000, 0])
        for height in (2, 70):
            image = RANDOM.integers(0, 65536, (height, 90, 3), numpy.uint16)
            expected = values[numpy.searchsorted(levels, image, "right") - 1]
            numpy.testing.assert_array_equal(kuvcv.ToneMap(levels, values, "step", numpy.uint16, "C3").apply(tiles(image)), expected)

    def test_channels_of_their_own(self):
        curves = kuvcv.ToneMap([[0, 256]] * 3, [[1, 0], [2, 0], [3, 0]], "step", layout="AC4")
        image = numpy.full((2, 2, 4), 9, numpy.uint8)
        self.assertEqual(curves.apply(image)[1, 1].tolist(), [1, 2, 3, 9])

    def test_refusals(self):
        curve = kuvcv.ToneMap([0, 256], [0, 255])
        for wrong in (lambda: curve.apply(numpy.zeros((2, 2), numpy.uint16)), lambda: curve.apply(numpy.zeros((2, 4), numpy.uint8)[:, ::2]),
                      lambda: kuvcv.ToneMap([0, 256], [0, 255, 3]), lambda: kuvcv.ToneMap([0, 256], [0, 255], "cubist"),
                      lambda: kuvcv.ToneMap([0, 256], [0, 255], dtype=numpy.float32), lambda: kuvcv.ToneMap([0.5, 256], [0, 255])):
            with self.assertRaises((TypeError, ValueError)):
                wrong()
        with self.assertRaises(kuvcv.Error):
            kuvcv.ToneMap([0], [0])


class Histograms(unittest.TestCase):
    def test_integers(self):
        for dtype in (numpy.uint8, numpy.uint16, numpy.int16):
            limits = numpy.iinfo(dtype)
            image = tiles(RANDOM.integers(limits.min, limits.max, (41, 67), dtype, endpoint=True))
            counts, levels = kuvcv.histogram(image, 16)
            expected, edges = numpy.histogram(image, 16, (limits.min, limits.max + 1))
            numpy.testing.assert_array_equal(counts, expected)
            numpy.testing.assert_array_equal(levels, edges)

    def test_channels(self):
        image = tiles(RANDOM.integers(0, 256, (30, 40, 3), numpy.uint8))
        counts, _ = kuvcv.histogram(image)
        for channel in range(3):
            numpy.testing.assert_array_equal(counts[channel], numpy.bincount(image[..., channel].ravel(), minlength=256))

    def test_given_levels(self):
        image = tiles(RANDOM.normal(size=(30, 40)).astype(numpy.float32))
        edges = numpy.array([-2, -0.5, 0, 0.25, 3], numpy.float32)
        counts, levels = kuvcv.histogram(image, levels=edges)
        numpy.testing.assert_array_equal(levels, edges)
        numpy.testing.assert_array_equal(counts, numpy.histogram(image, edges)[0])

    def test_columns_of_a_wider_image(self):
        """A quarter of each row: a step of 16 bytes a sample."""
        image = RANDOM.uniform(size=(30, 160)).astype(numpy.float32)[:, :40]
        image[0] = 0.01
        numpy.testing.assert_array_equal(kuvcv.histogram(image, 8, (0, 1))[0], numpy.histogram(image, 8, (0, 1))[0])

    def test_refusals(self):
        for wrong in (lambda: kuvcv.histogram(numpy.zeros((2, 2), numpy.float32)), lambda: kuvcv.Bins(numpy.int16, 3),
                      lambda: kuvcv.Bins(numpy.uint8).count(numpy.zeros((2, 2), numpy.uint16)), lambda: kuvcv.Bins(numpy.uint8, bins=0),
                      lambda: kuvcv.Bins(numpy.float64), lambda: kuvcv.Bins(numpy.uint8, levels=[[0, 5], [7, 9]]),
                      lambda: kuvcv.Bins(numpy.uint8, levels=[0, 5], range=(0, 9)), lambda: kuvcv.histogram([[1, 2], [3, 4]])):
            with self.assertRaises((TypeError, ValueError)):
                wrong()
        with self.assertRaises(kuvcv.Error):
            kuvcv.Bins(numpy.uint8, levels=[3, 2])


class Filters(unittest.TestCase):
    def test_borders(self):
        kernel = RANDOM.normal(size=(4, 5))
        image = tiles(RANDOM.normal(size=(23, 31)).astype(numpy.float32))
        weights = kuvcv.Filter(kernel)
        for border, mode, more in (("clamp", "edge", {}), ("reflect", "reflect", {}), ("fill", "constant", {"constant_values": 2.5})):
            wide = numpy.pad(image.astype(float), ((1, 2), (2, 2)), mode, **more)
            expected = sum(kernel[j, i] * wide[j:j + 23, i:i + 31] for j in range(4) for i in range(5))
            target = tiles(numpy.zeros((23, 31), numpy.float32))
            self.assertIs(weights.apply(image, target, border, 2.5), target)
            numpy.testing.assert_allclose(target, expected, atol=1e-4)

    def test_refusals(self):
        image = numpy.zeros((4, 5), numpy.float32)
        for wrong in (lambda: kuvcv.Filter([1, 2]), lambda: kuvcv.Filter([[1]]).apply(image, border="wrap"),
                      lambda: kuvcv.Filter([[1]]).apply(image, image.T.copy()), lambda: kuvcv.Filter([[1]]).apply(image.astype(float))):
            with self.assertRaises((TypeError, ValueError)):
                wrong()


class Resizing(unittest.TestCase):
    def setUp(self):
        self.image = tiles(RANDOM.integers(-32768, 32768, (37, 53, 3), numpy.int16))

    def test_all(self):
        result = kuvcv.resize(self.image, (71, 20))
        x = numpy.clip((numpy.arange(71) + 0.5) * 53 / 71 - 0.5, 0, 52)
        y = numpy.clip((numpy.arange(20) + 0.5) * 37 / 20 - 0.5, 0, 36)
        left, top = numpy.minimum(x.astype(int), 51), numpy.minimum(y.astype(int), 35)
        fx, fy = (x - left)[None, :, None], (y - top)[:, None, None]
        source = self.image.astype(float)
        rows = source[:, left] * (1 - fx) + source[:, left + 1] * fx
        numpy.testing.assert_allclose(result, rows[top] * (1 - fy) + rows[top + 1] * fy, atol=1)

    def test_destination(self):
        target = tiles(numpy.zeros((80, 90, 3), numpy.int16))
        self.assertIs(kuvcv.resize(self.image, (90, 80), target), target)
        numpy.testing.assert_array_equal(target, kuvcv.resize(self.image, (90, 80)))

    def test_tiles_by_threads(self):
        plan = kuvcv.ResizePlan((53, 37), (90, 80))
        whole = plan.render(self.image)
        target = numpy.zeros_like(whole)
        tiles = [(x, y) for x in range(0, 90, 30) for y in range(0, 80, 20)]
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            list(pool.map(lambda at: plan.render(self.image, target[at[1]:at[1] + 20, at[0]:at[0] + 30], at), tiles))
        numpy.testing.assert_array_equal(target, whole)

    def test_refusals(self):
        plan = kuvcv.ResizePlan((53, 37), (90, 80))
        tile = numpy.zeros((20, 30, 3), numpy.int16)
        for wrong in (lambda: plan.render(self.image[:-1]), lambda: plan.render(self.image, tile, (61, 0)),
                      lambda: plan.render(self.image, tile, (-1, 0)), lambda: kuvcv.resize(self.image, (0, 3)),
                      lambda: kuvcv.resize(self.image.view(numpy.uint16), (3, 3)), lambda: kuvcv.resize(self.image, (90, 80), tile)):
            with self.assertRaises((TypeError, ValueError)):
                wrong()


class Transforms(unittest.TestCase):
    def test_lengths(self):
        for length in (1, 12, 64, 101, 257):
            re, im = (RANDOM.normal(size=length).astype(numpy.float32) for _ in range(2))
            plan, expected = kuvcv.Fourier(length), numpy.fft.fft(re + 1j * im)
            found = plan.forward(re, im)
            numpy.testing.assert_allclose(found[0] + 1j * found[1], expected, atol=1e-4)
            again = plan.inverse(*found)
            numpy.testing.assert_allclose(again, (re, im), atol=1e-5)

    def test_scales(self):
        re, im = (RANDOM.normal(size=20).astype(numpy.float32) for _ in range(2))
        for scale, forward, inverse in (("none", 1, 20), ("forward", 1 / 20, 20), ("both", 20**-0.5, 20**0.5), ("inverse", 1, 1)):
            plan = kuvcv.Fourier(20, scale)
            found = plan.forward(re, im)
            numpy.testing.assert_allclose(found[0] + 1j * found[1], forward * numpy.fft.fft(re + 1j * im), atol=1e-4)
            restored = plan.inverse(*(plane / numpy.float32(forward) for plane in found))
            numpy.testing.assert_allclose(restored, numpy.array([re, im]) * inverse, atol=1e-3)

    def test_in_place(self):
        planes = [numpy.ones(16, numpy.float32), numpy.zeros(16, numpy.float32)]
        result = kuvcv.Fourier(16).forward(*planes, *planes)
        self.assertIs(result[0], planes[0])
        self.assertEqual(planes[0].tolist(), [16] + 15 * [0])

    def test_refusals(self):
        plan, plane = kuvcv.Fourier(16), numpy.zeros(16, numpy.float32)
        for wrong in (lambda: plan.forward(plane[:15], plane), lambda: plan.forward(plane.astype(float), plane),
                      lambda: plan.forward(numpy.zeros(32, numpy.float32)[::2], plane), lambda: kuvcv.Fourier(16, "twice")):
            with self.assertRaises((TypeError, ValueError)):
                wrong()
        with self.assertRaises(kuvcv.Error):
            kuvcv.Fourier(0)
        with kuvcv.use_variant("px"), self.assertRaises(RuntimeError):
            plan.forward(plane, plane)


class Labels(unittest.TestCase):
    def expected(self, markers, reach):
        labels, count = numpy.zeros(markers.shape, int), 0
        for start in zip(*numpy.nonzero(markers)):
            if labels[start]:
                continue
            count += 1
            left = [start]
            while left:
                y, x = left.pop()
                if 0 <= y < markers.shape[0] and 0 <= x < markers.shape[1] and markers[y, x] and not labels[y, x]:
                    labels[y, x] = count
                    left += [(y + j, x + i) for j in (-1, 0, 1) for i in (-1, 0, 1) if abs(i) + abs(j) <= reach]
        return labels, count

    def test_neighbours(self):
        markers = tiles((RANDOM.uniform(size=(30, 75)) < 0.4).astype(numpy.uint16) * 500)
        for neighbours, reach in ((8, 2), (4, 1)):
            labels, image = self.expected(markers, reach), tiles(markers)
            self.assertEqual(kuvcv.label_markers(image, neighbours=neighbours), labels[1])
            numpy.testing.assert_array_equal(image, labels[0])


class Pictures(unittest.TestCase):
    COLOURS = {"R": 0, "G": 1, "B": 2}

    def mosaic(self, picture, layout):
        """What a sensor sees of a picture."""
        mosaic = numpy.zeros(picture.shape[:2], picture.dtype)
        for index, colour in enumerate(layout):
            mosaic[index // 2::2, index % 2::2] = picture[index // 2::2, index % 2::2, self.COLOURS[colour]]
        return tiles(mosaic)

    def test_layouts(self):
        for dtype in (numpy.uint8, numpy.uint16):
            ramp = numpy.add.outer(numpy.arange(40), numpy.arange(50))
            picture = numpy.stack([ramp, ramp // 2 + 60, 130 - ramp], 2).astype(dtype)
            for layout in ("BGGR", "RGGB", "GBRG", "GRBG"):
                for function in (kuvcv.demosaic, kuvcv.cfa_to_rgb):
                    result = function(self.mosaic(picture, layout), layout)
                    self.assertEqual(result.dtype, dtype)
                    self.assertLessEqual(abs(result[4:-4, 4:-4].astype(int) - picture[4:-4, 4:-4]).max(), 2)

    def test_regions(self):
        mosaic = tiles(RANDOM.integers(0, 65536, (40, 50), numpy.uint16))
        whole = kuvcv.cfa_to_rgb(mosaic)
        target = tiles(numpy.zeros((20, 30, 3), numpy.uint16))
        self.assertIs(kuvcv.cfa_to_rgb(mosaic, region=(20, 19, 30, 20), dst=target), target)
        numpy.testing.assert_array_equal(target, whole[19:39, 20:])
        numpy.testing.assert_array_equal(kuvcv.demosaic(mosaic, region=(0, 20, 50, 20)), kuvcv.demosaic(mosaic)[20:])

    def test_refusals(self):
        mosaic = numpy.zeros((8, 8), numpy.uint8)
        for wrong in (lambda: kuvcv.demosaic(mosaic[:5]), lambda: kuvcv.cfa_to_rgb(mosaic[:1]), lambda: kuvcv.demosaic(mosaic, "RGBG"),
                      lambda: kuvcv.demosaic(mosaic, region=(0, 0, 9, 8)), lambda: kuvcv.cfa_to_rgb(mosaic, region=(0, 0, 0, 0)),
                      lambda: kuvcv.demosaic(mosaic, dst=numpy.zeros((8, 8), numpy.uint8)), lambda: kuvcv.demosaic(mosaic.astype("i2")),
                      lambda: kuvcv.demosaic(mosaic.tolist()), lambda: kuvcv.cfa_to_rgb(mosaic.tolist()),
                      lambda: kuvcv.reduce_bits(numpy.zeros((2, 2, 3), numpy.uint16).tolist())):
            with self.assertRaises((TypeError, ValueError)):
                wrong()

    def test_fewer_bits(self):
        image = tiles(RANDOM.integers(0, 65536, (20, 30, 3), numpy.uint16))
        for levels in (2, 16, 256):
            nearest = numpy.rint(image / 65535 * (levels - 1)) * 255 / (levels - 1)
            self.assertLessEqual(abs(kuvcv.reduce_bits(image, levels=levels, dither="off") - nearest).max(), 1)

    def test_dithers_keep_the_mean(self):
        grey = tiles(numpy.full((64, 64), 20000, numpy.uint16))
        for dither in ("ordered", "floyd-steinberg", "jarvis-judice-ninke", "stucki"):
            for noise in (0, 20):
                result = kuvcv.reduce_bits(grey, levels=2, dither=dither, noise=noise)
                self.assertEqual(set(numpy.unique(result)), {0, 255})
                self.assertAlmostEqual(result.mean() / 255, 20000 / 65535, delta=0.04)

    def test_alpha(self):
        image = numpy.full((2, 2, 4), 65535, numpy.uint16)
        with self.assertRaises(ValueError):
            kuvcv.reduce_bits(image)
        self.assertEqual(kuvcv.reduce_bits(image, numpy.zeros((2, 2, 4), numpy.uint8))[0, 0].tolist(), [255, 255, 255, 0])


class Processor(unittest.TestCase):
    def test_version(self):
        self.assertEqual(kuvcv.__version__, "2017.0.3")
        self.assertEqual(kuvcv.version().variant, kuvcv.variant())

    def test_variants(self):
        before = kuvcv.variant()
        with self.assertRaises(ZeroDivisionError), kuvcv.use_variant("px"):
            self.assertEqual(kuvcv.variant(), "px")
            with kuvcv.use_variant("w7"):
                self.assertEqual(kuvcv.variant(), "w7")
            self.assertEqual(kuvcv.variant(), "px")
            raise ZeroDivisionError
        self.assertEqual(kuvcv.variant(), before)
        with self.assertRaises(ValueError), kuvcv.use_variant("z1"):
            pass

    def test_features(self):
        self.assertTrue(kuvcv.cpu_features() & kuvcv.KUV_CPU_SSE2)
        with self.assertWarns(kuvcv.StatusWarning):
            kuvcv.set_cpu_features(0)
        self.assertEqual(kuvcv.variant(), "px")
        kuvcv.raw.kuvInit()


if __name__ == "__main__":
    unittest.main()
