"""The exports of an operation, by the dtype and the channels of their first image and by other choices."""
import re

import numpy

from vekcv import _call
from vekcv._exports import EXPORTS
from vekcv.raw import ffi, lib

_functions = {}


def function(name):
    """The export of a name, as a callable on arrays. It takes its arguments in the order of the header, without steps,
    regions and results, and returns the results."""
    found = _functions.get(name)
    if found is None:
        address = int(ffi.cast("uintptr_t", ffi.addressof(lib, name)))
        found = _functions[name] = _call.Function(name, address, EXPORTS[name])
    return found


def exports(stem, query=None):
    """The exports whose names are a stem and types, as entries of Forms; with those of another stem that give the sizes
    of their work buffers."""
    names = [name for name in EXPORTS if re.fullmatch(rf"{stem}_\d+[usf]\w*", name)]
    if query is None:
        return names
    return [f"{name} {query}{name.removeprefix(stem)}" for name in names]


_TYPES = {"B": "8u", "b": "8s", "H": "16u", "h": "16s", "i": "32s", "f": "32f", "d": "64f"}


def suffix(stem, dtype, channels):
    """What the name of an export for images of a dtype and a number of channels has behind the stem."""
    found = f"_{_TYPES.get(numpy.dtype(dtype).char)}_C{channels}R"
    if stem + found not in EXPORTS:
        there = ", ".join(name.removeprefix(stem + "_").removesuffix("R") for name in exports(stem))
        raise TypeError(f"there is no {stem} for {numpy.dtype(dtype).name} with {channels} channels, only for {there}")
    return found


class WithOnes:
    """A masked export without its mask: it is given one of ones."""

    def __init__(self, name):
        self.name, self.masked = name, function(name)
        arguments = [argument for argument, code in EXPORTS[name] if code != "R" and code[0] != ">"]
        self.place = arguments.index("mask")

    def __call__(self, *arguments):
        image = arguments[0]
        mask = numpy.ones(image.shape[:2], numpy.uint8)
        return self.masked(*arguments[:self.place], mask, *arguments[self.place:])


class Forms(dict):
    """Exports by the form of their first image, a key of vekcv._call. Entries are names: of an export; of one and of
    that which gives the size of its work buffer, which become a pair; of a masked one behind "ones"."""

    def __init__(self, operation, entries):
        super().__init__()
        self.operation = operation
        for entry in entries:
            first, *second = entry.split()
            name = second[0] if first == "ones" else first
            key = key_of(name)
            if first == "ones":
                self[key] = WithOnes(name)
            elif second:
                self[key] = function(first), function(second[0])
            else:
                self[key] = function(first)

    def __missing__(self, key):
        raise TypeError(f"{self.operation} takes {described(self)}; {not_taken(key)}")


def key_of(name):
    """The key of an export: dtype and channels of its first image."""
    code = next(code for _, code in EXPORTS[name] if code[0] == "I")
    return numpy.dtype(code[2]).num * 16 + int(code[3])


def described(keys):
    """The images that keys stand for, in words, as in "uint8 with 1 or 3 channels, float32 with 1 channel"."""
    channels = {}
    for key in keys:
        channels.setdefault(dtype_of(key).name, []).append(key % 16)
    return ", ".join(f"{name} with {' or '.join(map(str, counts))} channel{'s' * (counts != [1])}"
                     for name, counts in channels.items())


def dtype_of(key):
    return numpy.dtype(numpy.sctypeDict[key // 16])


def not_taken(key):
    if key is None:
        return "what was given is no array of two axes, or of three with the channels last"
    return f"not {described([key])}"


class Table(dict):
    """The forms of an operation by its other choices, in the order of its axes."""

    def __init__(self, operation, axes, forms):
        super().__init__(forms)
        self.operation, self.axes = operation, axes

    def __missing__(self, key):
        keys = list(self)
        if len(self.axes) == 1:
            key, keys = (key,), [(each,) for each in keys]
        for place, (axis, value) in enumerate(zip(self.axes, key)):
            choices = list(dict.fromkeys(each[place] for each in keys if each[:place] == key[:place]))
            if value not in choices:
                if axis == "dtype":
                    names = ", ".join(numpy.dtype(code).name for code in choices if code)
                    raise TypeError(f"{self.operation}: results are {names}; not {numpy.dtype(value).name}")
                raise ValueError(f"{axis} must be {' or '.join(map(repr, choices))}, not {value!r}")
        raise TypeError(f"{self.operation}: there is no such combination of arguments")


def table(operation, axes, entries):
    """A table of entries by keys. Where dtypes of results are told apart, None stands for the first one of each
    form."""
    forms = {key: Forms(operation, names) for key, names in entries.items()}
    if axes[-1] == "dtype":
        for key in list(forms):
            first = forms.setdefault((*key[:-1], None), Forms(operation, ()))
            for form, found in forms[key].items():
                first.setdefault(form, found)
    if len(axes) == 1:
        return Table(operation, axes, {key[0]: form for key, form in forms.items()})
    return Table(operation, axes, forms)
