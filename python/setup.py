"""Builds the package. VEKCV_LIBRARIES is the folder of the built libraries, which the package carries."""
import pathlib
import re
import shutil
import sys

import numpy
import setuptools
from setuptools.command.build_py import build_py

here = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(here / "generate"))
import package  # noqa: E402
import raw  # noqa: E402

version = re.search(r"project\(vekcv VERSION ([\d.]+)", (raw.ROOT / "CMakeLists.txt").read_text())[1]


class Build(build_py):
    """Adds what is made from the public header, and the libraries."""

    def run(self):
        super().run()
        folder = pathlib.Path(self.build_lib) / "vekcv"
        package.write(folder)
        for name in ("libvekcv.so", "libvekcore.so"):
            shutil.copy(pathlib.Path(raw.LIBRARIES) / name, folder / f"{name}.{version.split('.')[0]}")


setuptools.setup(
    version=version,
    cmdclass={"build_py": Build},
    cffi_modules=["generate/raw.py:builder"],
    ext_modules=[setuptools.Extension(
        "vekcv._call", ["src/call.cpp"], depends=["src/parameter.h", "src/arguments.h", "src/results.h"],
        include_dirs=["../include"], libraries=["ffi"],
        extra_compile_args=["-std=c++20", "-g0", "-Wall", "-Wextra", "-Wshadow", "-Wconversion",
                            "-Wno-missing-field-initializers", "-isystem", numpy.get_include()])])
