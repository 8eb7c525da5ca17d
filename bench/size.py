#!/usr/bin/env python3
"""The size of the library: size.py BUILD [BUILD] prints the totals of builds; report.py puts all into its page."""
import glob
import os
import subprocess
import sys
import tempfile

VARIANTS = {"v0": "v8", "v1": "s8", "v2": "a2", "v3": "a5"}
SOURCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")


def family_of(path, folder):
    """The source of an object of frame/, without its ending: arith/abs_diff for __/arith/abs_diff.cpp.o."""
    source = os.path.relpath(path, folder).removesuffix(".cpp.o").replace("__", "..")
    return os.path.normpath(os.path.join("frame", source))


def bytes_in_memory(objects):
    """Code, constants and variables of object files, and what unwinding needs."""
    lines = subprocess.run(["size", *objects], check=True, capture_output=True, text=True).stdout.splitlines()
    return [sum(map(int, line.split()[:3])) for line in lines[1:]]


def kibibytes(count):
    return "" if count is None else f"{count / 1024:.1f}"


class Library:
    def __init__(self, build):
        path = os.path.join(build, "libvekcv.so")
        with open(path, "rb") as file:
            self.name = "32 bits" if file.read(5)[4] == 1 else "64 bits"
        self.built = os.stat(path).st_size
        with tempfile.NamedTemporaryFile() as stripped:
            subprocess.run(["strip", "-o", stripped.name, path], check=True)
            self.stripped = os.stat(stripped.name).st_size
        self.variants = {}  # bytes of each family, by the variant's code
        for folder in sorted(glob.glob(os.path.join(build, "frame/CMakeFiles/vekcv_v?.dir"))):
            objects = {family_of(path, folder): path for path in glob.glob(folder + "/**/*.o", recursive=True)}
            # A build folder keeps the objects of sources that were renamed.
            families = sorted(family for family in objects if os.path.exists(os.path.join(SOURCES, family + ".cpp")))
            variant = VARIANTS[os.path.basename(folder)[len("vekcv_"):-len(".dir")]]
            self.variants[variant] = dict(zip(families, bytes_in_memory([objects[family] for family in families])))

    def totals(self):
        variants = ", ".join(f"{code} {kibibytes(sum(sizes.values()))}" for code, sizes in self.variants.items())
        return (f"libvekcv.so of {self.name}: {kibibytes(self.built)} KiB, {kibibytes(self.stripped)} KiB stripped; "
                f"variants: {variants}")


def size_section(builds, table):
    """The part of the page; table(header, rows) formats a table."""
    libraries = sorted(map(Library, builds), key=lambda library: library.name, reverse=True)
    columns = [(f"{library.name}, {code}", sizes) for library in libraries for code, sizes in library.variants.items()]
    families = list(dict.fromkeys(family for _, sizes in columns for family in sizes))
    rows = [[f"`{family}`"] + [kibibytes(sizes.get(family)) for _, sizes in columns] for family in families]
    rows.append(["all"] + [kibibytes(sum(sizes.values())) for _, sizes in columns])
    return ("## Size\n\nKiB in memory of each source file in each variant: code, constants and variables.\n\n" +
            table(["Source file"] + [name for name, _ in columns], rows) +
            "\n" + "\n".join(f"- {library.totals()}." for library in libraries) + "\n")


if __name__ == "__main__":
    for argument in sys.argv[1:]:
        print(Library(argument).totals())
