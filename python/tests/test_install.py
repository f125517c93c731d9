"""The package as it is installed, and where it finds the library."""
import importlib.util
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import kuvcv
from kuvcv import _library

PACKAGE = pathlib.Path(__file__).resolve().parents[1]


def run(*arguments, **environment):
    """Python without this process's KUVCV_LIBRARY and PYTHONPATH."""
    kept = {name: value for name, value in os.environ.items() if name not in ("KUVCV_LIBRARY", "PYTHONPATH")}
    return subprocess.run([sys.executable, "-B", *arguments], env={**kept, **environment}, capture_output=True, text=True)


class Install(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)

    def test_all_modules_are_packed(self):
        if not importlib.util.find_spec("setuptools"):
            self.skipTest("setuptools is missing")
        shutil.copytree(PACKAGE, self.directory / "source", ignore=shutil.ignore_patterns("__pycache__"))
        build = ["-c", "import setuptools; setuptools.setup()", "-q", "build", "--build-lib", "../lib"]
        built = subprocess.run([sys.executable, "-B", *build],
                               cwd=self.directory / "source", capture_output=True, text=True)
        self.assertEqual(built.returncode, 0, built.stderr)
        self.assertEqual(sorted(path.name for path in (self.directory / "lib" / "kuvcv").iterdir()),
                         sorted(path.name for path in (PACKAGE / "kuvcv").glob("*.py")))

    def test_licence_is_packed(self):
        self.assertEqual((PACKAGE / "LICENSE").read_bytes(), (PACKAGE.parent / "LICENSE").read_bytes())
        if not importlib.util.find_spec("setuptools"):
            self.skipTest("setuptools is missing")
        shutil.copytree(PACKAGE, self.directory / "source", ignore=shutil.ignore_patterns("__pycache__"))
        build = ["-c", "import setuptools; setuptools.setup()", "-q", "egg_info", "--egg-base", ".."]
        built = subprocess.run([sys.executable, "-B", *build],
                               cwd=self.directory / "source", capture_output=True, text=True)
        self.assertEqual(built.returncode, 0, built.stderr)
        self.assertIn("\nLicense-File: LICENSE\n", (self.directory / "kuvcv.egg-info" / "PKG-INFO").read_text())

    def test_version_is_that_of_the_library(self):
        self.assertIn(f'version = "{kuvcv.__version__}"\n', (PACKAGE / "pyproject.toml").read_text())

    def test_library_beside_the_package(self):
        shutil.copytree(PACKAGE / "kuvcv", self.directory / "kuvcv")
        shutil.copy(_library.load()._name, self.directory / "kuvcv" / _library.NAME)
        ran = run("-c", "import kuvcv; print(kuvcv.__version__, kuvcv.raw._shared._name)", PYTHONPATH=str(self.directory))
        self.assertEqual(ran.stdout.split(), ["2017.0.3", str((self.directory / "kuvcv" / _library.NAME).resolve())], ran.stderr)

    def test_library_that_is_named(self):
        ran = run("-c", "import kuvcv", PYTHONPATH=str(PACKAGE), KUVCV_LIBRARY=str(self.directory / "none.so"))
        self.assertNotEqual(ran.returncode, 0)
        self.assertIn("ImportError: the kuvCV library cannot be loaded; KUVCV_LIBRARY may name it: " + str(self.directory), ran.stderr)


if __name__ == "__main__":
    unittest.main()
