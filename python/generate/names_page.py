"""Prints the page of the documentation that tells where each function is in Python. Usage: names_page.py HEADER"""
import sys

import header
import operations

print("""# Names in Python {#python_names}

Functions and classes of the package `vekcv` by the functions that they call. `vekcv.raw.lib` has each of these by
its own name, too, and `help(vekcv.canny)` tells of arguments.

| in C | in Python |
|---|---|""")
for export in header.exports(sys.argv[1]):
    print(f"| `{export.name}` | `vekcv.{operations.public_name(export)}` |")
