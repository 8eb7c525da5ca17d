"""The module vekcv.raw: every function, type and enumeration of the public headers, as cffi makes them callable."""
import os
import pathlib

import cffi
import header

ROOT = pathlib.Path(__file__).resolve().parents[2]
HEADERS = ROOT / "include" / "vekcv.h", ROOT / "core" / "vekcore.h"
LIBRARIES = os.environ.get("VEKCV_LIBRARIES", str(ROOT / "build" / "x86_64"))

builder = cffi.FFI()
builder.cdef(header.declarations(*HEADERS))
builder.set_source(
    "vekcv.raw", '#include "vekcv.h"\n#include "vekcore.h"\n',
    include_dirs=[str(path.parent) for path in HEADERS], library_dirs=[LIBRARIES],
    # Both, so that the one is found where it lies for the other too.
    libraries=["vekcore", "vekcv"], extra_compile_args=["-O1", "-g0"],
    extra_link_args=["-Wl,--no-as-needed", "-Wl,-rpath,$ORIGIN"])
