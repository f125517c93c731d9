"""All functions by way of ctypes alone."""
import ctypes
import unittest

import numpy

from kuvcv import _contract, raw


class Raw(unittest.TestCase):
    def tearDown(self):
        raw.kuvInit()

    def test_every_function_can_be_called(self):
        """With null for every pointer and 0 for every number: refused, but for the few that have nothing to refuse."""
        nothing = {"kuvInit", "kuvSetCpuFeatures"}
        for name, (result, parameters) in _contract.FUNCTIONS.items():
            with self.subTest(name):
                arguments = [(0,) * len(_contract.STRUCTS[kind]) if kind in _contract.STRUCTS else None if "*" in kind or "[" in kind else 0
                             for kind, _ in parameters]
                returned = getattr(raw, name)(*arguments)
                if result != "KuvStatus":
                    self.assertIs(bool(returned), name == "kuvcvGetLibVersion")
                elif name not in nothing:
                    self.assertLess(returned, 0)
                    self.assertIn(returned, _contract.STATUSES)

    def test_memory(self):
        step = ctypes.c_int32()
        image = raw.kuviMalloc_8u_C1(65, 4, ctypes.byref(step))
        self.assertEqual((image % 64, step.value), (0, 128))
        self.assertEqual(raw.kuviSet_8u_C1R(7, image, step, (65, 4)), raw.kuvStatusOk)
        self.assertEqual(bytes((ctypes.c_uint8 * 65).from_address(image + 3 * 128)), b"\7" * 65)
        raw.kuviFree(image)
        self.assertIsNone(raw.kuvMalloc(0))

    def test_what_a_pointer_may_be(self):
        values = [1.0, 2.0, 3.0]
        array = (ctypes.c_float * 3)(*values)
        means = [ctypes.c_double() for _ in range(5)]
        sources = [array, ctypes.cast(array, ctypes.POINTER(ctypes.c_float)), ctypes.addressof(array),
                   ctypes.c_void_p(ctypes.addressof(array)), numpy.array(values, numpy.float32)]
        for source, mean in zip(sources, means):
            self.assertEqual(raw.kuviMean_32f_C1R(source, 12, raw.KuviSize(3, 1), ctypes.byref(mean), 2), raw.kuvStatusOk)
            self.assertEqual(mean.value, 2.0)

    def test_pointers_to_pointers(self):
        planes = [numpy.full((2, 2), plane, numpy.uint8) for plane in (1, 2, 3)]
        for source in (planes, (ctypes.c_void_p * 3)(*(plane.ctypes.data for plane in planes))):
            target = numpy.zeros((2, 2, 3), numpy.uint8)
            self.assertEqual(raw.kuviCopy_8u_P3C3R(source, 2, target, 6, (2, 2)), raw.kuvStatusOk)
            self.assertEqual(target[1, 1].tolist(), [1, 2, 3])

    def test_refusals(self):
        image = numpy.zeros((2, 2), numpy.uint8)
        frozen = image.copy()
        frozen.flags.writeable = False
        for arguments in ((256, image, 2, (2, 2)), (-1, image, 2, (2, 2)), (0, image, 1 << 31, (2, 2)), (0, image.astype("i1"), 2, (2, 2)),
                          (0, frozen, 2, (2, 2)), (0.5, image, 2, (2, 2)), (0, image, 2, (2, 2, 2)), (0, "text", 2, (2, 2)),
                          (0, image, 2, ((1 << 32) + 2, 2)), (0, image, 2, (2, -1 << 32)), (0, image, 2, (2,)),
                          (0, image, 2, (2, 1.5))):
            with self.assertRaises((ctypes.ArgumentError, TypeError)):
                raw.kuviSet_8u_C1R(*arguments)

    def test_documentation(self):
        self.assertEqual(raw.kuviCopy_8u_P3C3R.__doc__,
                         "KuvStatus kuviCopy_8u_P3C3R(const Kuv8u* const src[3], Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, "
                         "KuviSize roiSize)")


if __name__ == "__main__":
    unittest.main()
