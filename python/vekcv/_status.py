"""Statuses of the library as exceptions and warnings."""
import sys
import warnings

from vekcv import _call, _manual
from vekcv.raw import ffi, lib


class Error(ValueError):
    """A call that the library refused. `status` is its number, `name` that of the header, `export` the function."""

    def __init__(self, export, status):
        self.export, self.status, self.name = export, status, status_name(status)
        super().__init__(f"{export}: {self.name}: {meaning(export, status)}")

    def __reduce__(self):
        return type(self), (self.export, self.status)


class OutOfMemory(Error, MemoryError):
    """A call for which there was not enough memory."""


class Warning(UserWarning):  # pylint: disable=redefined-builtin
    """A call whose results are defined, but not what they mostly are."""


_NAMES = {getattr(lib, name): name for name in dir(lib) if name.startswith("Status")}


def status_name(status):
    """The name of a status in the header, as in "StatusSizeError"."""
    return _NAMES.get(status, f"status {status}")


def meaning(export, status):
    """What a status of an export means, in the words of its family, or else in those of all."""
    _, family, _ = _manual.EXPORTS.get(export, (None, None, None))
    statuses = _manual.FAMILIES[family][2] if family else {}
    if status_name(status) in statuses:
        return statuses[status_name(status)]
    return ffi.string(lib.vekGetStatusString(status)).decode().removeprefix(f"{status_name(status)}: ")


def check(export, status):
    """Reports a status unless it is StatusOk."""
    if status != lib.StatusOk:
        report(export, status)


def report(export, status):
    """Raises the exception of an error, or warns."""
    if status == lib.StatusMemoryAllocation:
        raise OutOfMemory(export, status)
    # Only queries give this warning, and a buffer of the wrapped size would be too small.
    if status < 0 or status == lib.StatusBufferSizeWarning:
        raise Error(export, status)
    warnings.warn(f"{export}: {status_name(status)}: {meaning(export, status)}", Warning, stacklevel=outside())


def outside():
    """How many calls up from the one that asks the package was called."""
    frame, level = sys._getframe(1), 1
    while frame.f_back and frame.f_globals.get("__name__", "").startswith(f"{__package__}."):
        frame, level = frame.f_back, level + 1
    return level


_call.set_reporter(report)
