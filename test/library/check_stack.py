#!/usr/bin/env python3
"""Checks that no export needs more stack than vekcv.h says, from what the compiler wrote beside the objects.

Usage: check_stack.py OBJECT_FOLDER, which holds the objects of the variants. Prints what is wrong and fails then."""
import sys
from pathlib import Path

# The header promises 16 KiB. The calls of an export are no more than eight deep.
LIMIT = 2048
# But for the strips of integral images and the short rows that reductions gather, in functions that are called by a few
# small ones and call none that needs as much.
LIMITS = {"integral_stream.h": 15 * 1024, "reduction.h": 3 * 1024}

failures = []
folder = Path(sys.argv[1])
objects = sorted(folder.glob("vekcv_v?.dir/**/*.o"))
if not objects:
    failures.append(f"no objects in {folder}")
for file in objects:
    usage, variant = file.with_suffix(".su"), file.relative_to(folder).parts[0]
    if not usage.exists():
        failures.append(f"{usage} is missing")
        continue
    for line in usage.read_text().splitlines():
        function, size, kind = line.rsplit("\t", 2)
        source = Path(function.split(":", 1)[0]).name
        if int(size) > LIMITS.get(source, LIMIT):
            failures.append(f"{variant}: {size} bytes: {function}")
        if kind not in ("static", "dynamic,bounded"):
            failures.append(f"{variant}: unknown size: {function}")

print("\n".join(failures))
sys.exit(bool(failures))
