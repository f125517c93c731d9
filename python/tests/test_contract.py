"""The generated module, and the reader of the header that writes it."""
import importlib.util
import pathlib
import re
import subprocess
import sys
import unittest

from kuvcv import _contract, _forms, raw

ROOT = pathlib.Path(__file__).resolve().parents[2]
module_spec = importlib.util.spec_from_file_location("generate", ROOT / "python" / "generate.py")
generate = importlib.util.module_from_spec(module_spec)
module_spec.loader.exec_module(generate)


class Contract(unittest.TestCase):
    def test_is_up_to_date(self):
        checked = subprocess.run([sys.executable, "-B", ROOT / "python" / "generate.py", "--check"], capture_output=True, text=True)
        self.assertEqual(checked.returncode, 0, checked.stderr)

    def test_generator_writes_nothing_when_told_what_it_does_not_know(self):
        before = generate.MODULE.stat()
        ran = subprocess.run([sys.executable, "-B", ROOT / "python" / "generate.py", "--chekc"], capture_output=True, text=True)
        self.assertEqual((ran.returncode, "[--check]" in ran.stderr), (1, True))
        self.assertEqual(generate.MODULE.stat().st_mtime_ns, before.st_mtime_ns)

    def test_has_all_exports(self):
        exports = re.findall(r"^KUV_(?:DIRECT|DISPATCHED)\((\w+)", (ROOT / "src/core/exports.def").read_text(), re.MULTILINE)
        self.assertEqual(len(exports), 160)
        self.assertEqual(sorted(exports), sorted(_contract.FUNCTIONS))

    def test_has_every_name_of_the_header(self):
        header = re.sub(r"/\*.*?\*/", "", generate.HEADER.read_text(), flags=re.DOTALL)
        names = set(re.findall(r"\b(?:kuv|KUV_CPU_)\w+", header))
        self.assertEqual(names, {*_contract.FUNCTIONS, *_contract.CONSTANTS})

    def test_knows_statuses(self):
        self.assertEqual(_contract.STATUSES[raw.kuvStatusBadStep], ("kuvStatusBadStep", "a row step is not one that the function accepts"))
        self.assertEqual(raw.KUV_CPU_FORCE, 1 << 63)

    def test_refuses_what_it_does_not_know(self):
        header = generate.HEADER.read_text()
        for known, unknown in (("KuviSize roiSize);", "KuviSize roiSize, ...);"), ("Kuv32s width;  /**<", "int width : 3;  /**<"),
                               ("kuvCfaRGGB = 1,", "kuvCfaRGGB = 1 << 0,"), ("typedef uint8_t Kuv8u;", "typedef unsigned char Kuv8u;"),
                               ("KUV_API void kuvFree(void* ptr);", "KUV_API void kuvFree(void (*ptr)(int));"),
                               ("KUV_API KuvStatus kuvInit(void);", "KuvStatus kuvInit(void);")):
            with self.subTest(unknown):
                self.assertIn(known, header)
                with self.assertRaises(generate.Unknown):
                    generate.read(header.replace(known, unknown, 1))

    def test_sample_types_are_those_of_the_names(self):
        samples = {"8u": "u1", "16u": "u2", "16s": "i2", "32s": "i4", "32f": "f4", "24u": "u1", "32u": "u4"}
        for form in _forms.FORMS.values():
            types = re.findall(r"\d+[usf]+", re.fullmatch(r".*?_((?:\d+[usf]+)+)(?:_.*)?", form.name)[1])
            for parameter in form.images:
                if parameter == "mask":
                    continue
                name = types[-1] if parameter.startswith("dst") else types[0]
                self.assertEqual(form.dtype(parameter), samples[name], f"{form.name}, {parameter}")


if __name__ == "__main__":
    unittest.main()
