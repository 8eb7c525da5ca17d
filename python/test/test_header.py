"""What is made from the public header: every export with arguments as it declares them, and operations with manuals;
and what the package tells of itself, also from the command line."""
import inspect
import re
import subprocess
import sys

import header
import numpy as np
import operations as generator
import pytest
import raw
from support import image, refuses

import vekcv
from vekcv import _call, _exports, _forms, _manual, _status, operations
from vekcv.raw import ffi, lib

EXPORTS = header.exports(raw.HEADERS[0])
TEXT = raw.HEADERS[0].read_text()
FUNCTIONS = [generator.Function(operation, EXPORTS) for operation in generator.regular(EXPORTS)]
NUMBERS = {"B": "uint8_t", "b": "int8_t", "H": "uint16_t", "h": "int16_t", "i": "int32_t", "I": "uint32_t",
           "f": "float", "d": "double"}
RECORDS = {"S": "RoiSize", "P": "ImagePoint", "F": "ImagePoint32f", "T": "ImageRect", "C": "ConnectedComponent"}
POINTS = {"ImagePoint": "i", "ImagePoint32f": "f", "ImageRect": "i"}


def fits(code, kinds):
    """Whether the C types of the parameters are those that a code stands for; takes these off the list."""
    kind = kinds.pop(0)
    if code[0] == "I":
        return kind == ffi.typeof(f"{NUMBERS[code[2]]} *") and kinds.pop(0) == ffi.typeof("int32_t")
    if code[0] in "Rnv":
        return kind == ffi.typeof({"R": "RoiSize", "n": NUMBERS.get(code[-1]), "v": RECORDS.get(code[-1])}[code[0]])
    if code[0] == ">":
        return kind == ffi.typeof({**NUMBERS, **RECORDS}[code[1]] + " *")
    return kind.kind == "pointer" and (
        code == "p" or POINTS.get(kind.item.cname.replace("struct ", ""), code[2]) == code[2] and (
            kind.item.kind == "struct" or kind.item == ffi.typeof(NUMBERS[code[2]])))


def test_codes_are_the_declarations():
    names = re.findall(r"^VEKCV_API [^(]*?\b(\w+)\(", TEXT, re.M)  # found without a parser
    assert [export.name for export in EXPORTS] == names == list(_manual.EXPORTS)
    assert len(set(names)) == len(names)
    assert list(_exports.EXPORTS) == names[1:]  # the first one is the version
    for export in EXPORTS[1:]:
        codes = [code for _, code in _exports.EXPORTS[export.name]]
        kinds = list(ffi.typeof(getattr(lib, export.name)).args)
        assert all(fits(code, kinds) for code in codes) and not kinds, export.name
        read_only = [parameter.constant for parameter, step in zip(export.parameters, export.parameters[1:])
                     if step.name == parameter.name + "Step"]
        assert [code[1] == "r" for code in codes if code[0] == "I"] == read_only, export.name
        given = sum(code[0] not in "R>" for code in codes)
        refuses((TypeError, f"^{export.name} takes {given} arguments by position$"), _forms.function(export.name),
                *[None] * (given + 1))


@pytest.mark.parametrize("codes", [
    ["?"], [""], ["I"], ["IrB1"], ["IrB1=="], ["IrQ1="], ["IrB0="], ["IrB:="], ["R", "nf"], ["IoB1=", "R"], ["erQ"],
    ["n"], ["vSS"], [">"], ["pp"], ["IrB1="] * 11], ids=str)
def test_codes_that_are_refused(codes):
    parameters = tuple((f"argument{place}", code) for place, code in enumerate(codes))
    refuses((ValueError, ""), _call.Function, "function", 1, parameters)
    for wrong in (((1, 2),), ((),), list(parameters), None):
        refuses((TypeError, ""), _call.Function, "function", 1, wrong)


def without_details(name):
    """What the name of an export and that of its query have in common."""
    name = re.sub(r"GetBufferSize|GetSize|Border(Replicate)?(?=_)", "", name)
    return re.sub(r"C(\d)I?R$", r"C\1R", name)


@pytest.mark.parametrize("function", FUNCTIONS, ids=lambda function: function.operation.name)
def test_operations(function):
    """Every export is reached by its table, with the query of its own; arguments are described, and hinted at."""
    name, exports = function.operation.name, function.operation.exports
    table = getattr(operations, f"_{name}")
    forms = table.values() if isinstance(table, _forms.Table) else [table]
    reached = {(each[0] if isinstance(each, tuple) else each).name for form in forms for each in form.values()}
    assert reached == {export.name for export in exports}
    for export in exports:
        query = function.query(export)
        buffered = any(parameter.name == "buffer" for parameter in export.parameters)
        assert (query is not None) == (buffered and name != "undistort_radial")
        if query:
            wanted = without_details(export.name)
            assert without_details(query.name) in (wanted, wanted.split("_")[0])
            assert _exports.EXPORTS[query.name][-1][1] == ">i"
    signature, text = inspect.signature(getattr(vekcv, name)), inspect.getdoc(getattr(vekcv, name))
    head, arguments = text.split("\nArguments:\n")
    assert len(head.split("\n")[0]) > 3 and not re.search(r"^ *[@\\]\W?", text, re.M)
    assert re.findall(r"^    (\w+): \S", arguments, re.M) == list(signature.parameters)


def test_manual_of_every_family():
    titles = re.findall(r"@defgroup \w+ (.*)", TEXT)
    assert list(_manual.FAMILIES) == titles[1:]  # the first one is of types
    assert all(family in titles and brief for _, family, brief in _manual.EXPORTS.values())
    for text, parameters, statuses in _manual.FAMILIES.values():
        assert text and "@" not in text
        for name, meaning in {**parameters, **statuses}.items():
            assert name.isidentifier() and not meaning.endswith((",", ":")) and "@" not in meaning, (name, meaning)


def test_statuses_that_stand_twice():
    both = _status.meaning("vekiFilterColumnPipeline_32f_C1R", lib.StatusSizeError)
    assert both == "width or height is below 1; kernelSize is below 1"


def test_raw_enumerations():
    values = dict(re.findall(r"^    ((?:Status|Norm|Border|MaskSize)\w+) = (-?\w+)", TEXT, re.M))
    assert len(values) == 18 + 3 + 10 + 2
    assert {name: getattr(lib, name) for name in values} == {name: int(value, 0) for name, value in values.items()}


def pointer(array):
    return ffi.cast(f"{NUMBERS[array.dtype.char]} *", array.ctypes.data), array.strides[0]


def test_raw_calls_as_in_c():
    a, b, out = image("u1"), image("u1", seed=2), np.empty((7, 150), "u1")
    size = {"width": 150, "height": 7}
    assert lib.vekiAbsDiff_8u_C1R(*pointer(a), *pointer(b), *pointer(out), size) == lib.StatusOk
    np.testing.assert_array_equal(out, vekcv.abs_diff(a, b))
    assert lib.vekiAbsDiff_8u_C1R(ffi.NULL, 150, *pointer(b), *pointer(out), size) == lib.StatusNullPointer
    least, greatest, places = ffi.new("float *"), ffi.new("float *"), ffi.new("ImagePoint[2]")
    assert lib.vekiMinMaxIndx_8u_C1R(*pointer(a), size, least, greatest, places, places + 1) == 0
    assert (least[0], greatest[0], *((place.x, place.y) for place in places)) == vekcv.min_max_indx(a)


def run(*arguments):
    done = subprocess.run([sys.executable, "-m", "vekcv", *arguments], text=True, capture_output=True, check=False)
    return done.returncode, done.stdout.splitlines(), done.stderr


def test_exports_and_version():
    exports, version, record = vekcv.exports(), vekcv.version(), lib.vekcvGetLibVersion()
    assert list(exports) == [export.name for export in EXPORTS]
    for export, python in exports.items():
        assert callable(getattr(lib, export)) and getattr(vekcv, python).__doc__, f"{export} is used by {python}"
    assert (exports["vekiAbsDiff_8u_C1R"], exports["vekiMorphologyFree"]) == ("abs_diff", "MorphologyElement")
    assert (exports["vekiHoughLineGetSize_8u_C1R"], exports["vekcvGetLibVersion"]) == ("hough_line", "version")
    assert version.number == f"{record.major}.{record.minor}.{record.majorBuild}"
    assert re.fullmatch("[a-z][0-9]", version.target) and version.target in version.name
    assert run("info") == (0, [f"version   {version.number} of {version.date}", f"variant   {version.name}",
                               f"threads   {vekcv.get_num_threads()}"], "")


def test_list():
    """Patterns are those of names in Python or in C."""
    assert [line.split()[:2] for line in run("list")[1]] == [list(each) for each in vekcv.exports().items()]
    listed = run("list", "*sobel*")[1]
    assert {line.split()[1] for line in listed} == {python for python in vekcv.exports().values() if "sobel" in python}
    assert [line.split(None, 2) for line in run("list", "vekiGenSobel*")[1]] == [
        ["vekiGenSobelKernel_16s", "gen_sobel_kernel", "kernel of a derivative in integers"],
        ["vekiGenSobelKernel_32f", "gen_sobel_kernel", "kernel of a derivative in floats"]]
    for column in (1, 2):
        assert len({len(line) - len(line.split(None, column)[column]) for line in listed}) == 1  # they are aligned
    assert run("list", "nothing of this name") == (0, [], "")


@pytest.mark.parametrize("arguments", [(), ("other",), ("list", "a", "b"), ("info", "--markdown")])
def test_wrong_commands(arguments):
    code, output, errors = run(*arguments)
    assert (code, output) == (2, []) and "usage: python3 -m vekcv" in errors
