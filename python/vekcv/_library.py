"""Version, and what there is."""
from typing import NamedTuple

from vekcv import _manual
from vekcv.raw import ffi, lib


class Version(NamedTuple):
    """Version of the library, and the variant of its code that runs on this processor."""
    number: str
    target: str
    name: str
    date: str


def version() -> Version:
    """Version and variant of the library."""
    record = lib.vekcvGetLibVersion()
    text = [ffi.string(each).decode() for each in (record.targetCode, record.name, record.buildDate)]
    return Version(f"{record.major}.{record.minor}.{record.majorBuild}", *text)


def exports() -> dict[str, str]:
    """Where each function of the C interface is used in Python: by a function or a class of this package, or in
    vekcv.raw."""
    return {name: python for name, (python, _, _) in _manual.EXPORTS.items()}
