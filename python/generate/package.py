"""Writes the modules of the package that are made from the public header."""
import pathlib
import pprint

import codes
import header
import names
import operations
from raw import HEADERS

NOTE = '"""{}\n\nMade from the public header; changes are lost."""\n'


def write(folder):
    folder = pathlib.Path(folder)
    exports = header.exports(HEADERS[0])
    (folder / "_exports.py").write_text(codes_module(exports))
    (folder / "_manual.py").write_text(manual_module(exports))
    functions = [operations.Function(operation, exports) for operation in operations.regular(exports)]
    (folder / "operations.py").write_text(operations_module(functions))
    (folder / "operations.pyi").write_text(hints_module(functions))


def codes_module(exports):
    made = {export.name: tuple((names.argument(name), code) for name, code in codes.codes(export))
            for export in exports if export.name.startswith("veki")}
    return NOTE.format("The arguments of every export: their names, and their codes of vekcv._call.") + (
        f"\nEXPORTS = {pprint.pformat(made, width=120, sort_dicts=False)}\n")


def manual_module(exports):
    groups = {export.group.title: export.group for export in exports}
    made = {export.name: (operations.public_name(export), export.group.title, export.brief) for export in exports}
    texts = {title: (group.text, group.parameters, group.statuses) for title, group in groups.items()}
    return NOTE.format("What the manual says of every export.") + (
        "\n# Name in Python, family, and what it does.\n"
        f"EXPORTS = {pprint.pformat(made, width=120, sort_dicts=False)}\n\n"
        "# Of each family the text, its parameters and its statuses.\n"
        f"FAMILIES = {pprint.pformat(texts, width=120, sort_dicts=False)}\n")


def operations_module(functions):
    head = NOTE.format("The operations whose arguments are images and numbers.") + (
        "from vekcv._arguments import (border_type, boundary_flag, channel_of_interest, connectivity_type, given,\n"
        "                              greatest_label, kernel_type, mask_size, middle, norm_type, result_code,\n"
        "                              size_of, work_buffer, zeros_like)\n"
        "from vekcv._call import form\n"
        "from vekcv._forms import Forms, table\n"
        "from vekcv._types import Array, DType, Point, Size\n\n"
        f"__all__ = {sorted(function.operation.name for function in functions)!r}\n")
    return "\n\n".join([head, *(f"{function.table()}\n\n\n{function.text(False)}" for function in functions)]) + "\n"


def hints_module(functions):
    return "\n".join(["from vekcv._types import Array, DType, Point, Size\n",
                      *(function.text(True) for function in functions)]) + "\n"
