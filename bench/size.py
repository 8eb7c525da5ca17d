#!/usr/bin/env python3
"""The size of the library: size.py BUILD [BUILD] prints the totals of builds; report.py puts all into its page."""
import glob
import itertools
import os
import re
import subprocess
import sys
import tempfile

VARIANTS = {"v0": "v8", "v1": "s8", "v2": "a2", "v3": "a5"}
SOURCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")


def source_of(path, folder):
    """The source of an object of frame/, without its ending: arith/abs_diff for __/arith/abs_diff.cpp.o."""
    source = os.path.relpath(path, folder).removesuffix(".cpp.o").replace("__", "..")
    return os.path.normpath(os.path.join("frame", source))


def bytes_of_code(objects):
    """Of each object file or library: machine code, without constants and what unwinding needs."""
    listing = subprocess.run(["size", "-A", "-d", *objects], check=True, capture_output=True, text=True).stdout
    tables = re.split(r"^.* :$", listing, flags=re.MULTILINE)[1:]
    return [sum(map(int, re.findall(r"^\.text\S* +(\d+)", table, re.MULTILINE))) for table in tables]


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
        self.code = bytes_of_code([path])[0]
        self.variants = {}  # bytes of code of each source file, by the variant's code
        for folder in sorted(glob.glob(os.path.join(build, "frame/CMakeFiles/vekcv_v?.dir"))):
            objects = {source_of(path, folder): path for path in glob.glob(folder + "/**/*.o", recursive=True)}
            # A build folder keeps the objects of sources that were renamed.
            sources = sorted(source for source in objects if os.path.exists(os.path.join(SOURCES, source + ".cpp")))
            variant = VARIANTS[os.path.basename(folder)[len("vekcv_"):-len(".dir")]]
            self.variants[variant] = dict(zip(sources, bytes_of_code([objects[source] for source in sources])))

    def totals(self):
        variants = ", ".join(f"{code} {kibibytes(sum(sizes.values()))}" for code, sizes in self.variants.items())
        return (f"libvekcv.so of {self.name}: {kibibytes(self.built)} KiB, {kibibytes(self.stripped)} KiB stripped; "
                f"{kibibytes(self.code)} KiB of code; variants: {variants}")


def size_section(builds, table):
    """The part of the page; table(header, rows) formats a table."""
    libraries = sorted(map(Library, builds), key=lambda library: library.name, reverse=True)
    columns = [(f"{library.name}, {code}", sizes) for library in libraries for code, sizes in library.variants.items()]

    def total(prefix):
        return [kibibytes(sum(size for source, size in sizes.items() if source.startswith(prefix)))
                for _, sizes in columns]

    rows = []
    # Without frame/version, a few bytes.
    every_source = sorted({source for _, sizes in columns for source, size in sizes.items() if size > 100})
    for folder, sources in itertools.groupby(every_source, key=os.path.dirname):
        rows.append([f"**{folder}/**"] + [f"**{cell}**" for cell in total(folder + "/")])
        rows += [[f"`{source}`"] + [kibibytes(sizes.get(source)) for _, sizes in columns] for source in sources]
    rows.append(["**all**"] + [f"**{cell}**" for cell in total("")])
    return ("## Size\n\n"
            "KiB of machine code of each folder and each source file, by variant. What the compiler makes of shared\n"
            "headers counts in each of the files that need it, but is in the library once for each variant.\n\n" +
            table(["Source file"] + [name for name, _ in columns], rows) +
            "\n" + "\n".join(f"- {library.totals()}." for library in libraries) + "\n")


if __name__ == "__main__":
    for argument in sys.argv[1:]:
        print(Library(argument).totals())
