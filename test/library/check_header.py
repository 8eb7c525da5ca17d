#!/usr/bin/env python3
"""Checks that the public header documents what it declares, and that the README counts its exports.

Usage: check_header.py SOURCE_FOLDER [HEADER]. Prints what is wrong and fails then."""
import re
import sys
from collections import Counter
from pathlib import Path

source_folder = Path(sys.argv[1])
header = Path(sys.argv[2]) if len(sys.argv) > 2 else source_folder / "include/vekcv.h"
# What frame/check.h checks of parameters that are declared so.
IMPLIED = {r"\*": "StatusNullPointer", r"^RoiSize \w+$": "StatusSizeError", r"Step$": "StatusStepError"}
failures = []


class Family:
    """A group of the header: its documentation and its exports, as name -> (result type, parameters)."""

    def __init__(self, name, title, text):
        self.name, self.title, self.text, self.exports = name, title, text, {}

    def fail(self, what):
        failures.append(f"{header.name}: {self.name}: {what}")

    def documented(self, command):
        """The names after each @param or @retval."""
        lists = re.findall(rf"@{command} +(\w+(?:, \w+)*)   *\S", self.text)
        if len(lists) != self.text.count(f"@{command}"):
            self.fail(f"an @{command} has no name, no text, or not two spaces between them")
        return [name for names in lists for name in names.split(", ")]


def read_families(text):
    """Splits the header into families, in order; exports outside of them are failures."""
    families, family = [], None
    token = re.compile(
        r"^/\*\*\n(?P<comment>(?: \*(?!/).*\n)*) \*/$"
        r"|^(?P<end>/\*\* @\} \*/)$"
        r"|^VEKCV_API (?P<result>.*?)VEKCV_CALL (?P<name>\w+)\((?P<parameters>[^)]*)\);$"
        r"|^(?P<other>VEKCV_API .*)$", re.MULTILINE)
    for match in token.finditer(text):
        if match["comment"]:
            group = re.search(r"@defgroup (\w+) (.*)\n((?:.*\n)*) \* @\{\n$", match["comment"])
            if not group:
                continue
            if family:
                family.fail("is not closed")
            family = Family(*group.groups())
            families.append(family)
        elif match["end"]:
            family = None
        elif match["other"]:
            failures.append(f"{header.name}: cannot be read: {match['other']}")
        elif not family:
            failures.append(f"{header.name}: {match['name']} is in no family")
        else:
            family.exports[match["name"]] = (match["result"].strip(), re.split(r",\s+", match["parameters"]))
    return families


def statuses_in_sources(exports):
    """The statuses in the files that bind the exports, and in the files of their folder that these include."""
    files = {file for file in source_folder.glob("*/*.cpp")
             if exports & set(re.findall(r"VEKCV_BIND\((\w+)", file.read_text()))}
    includes = {file.parent / name for file in files for name in re.findall('#include "(.*)"', file.read_text())}
    files |= {file for file in includes if file.exists()}
    return {name for file in files for name in re.findall(r"\bStatus[A-Z]\w+", file.read_text())}


def check_parameters(family):
    used = {re.search(r"\w+$", parameter)[0] for _, parameters in family.exports.values() for parameter in parameters}
    documented = Counter(family.documented("param"))
    for name in sorted(used - {"void"} - set(documented)):
        family.fail(f"the parameter {name} is not documented")
    for name in sorted(set(documented) - used):
        family.fail(f"no export has the parameter {name}")
    for name, times in documented.items():
        if times > 1:
            family.fail(f"the parameter {name} is documented {times} times")


def check_statuses(family, defined):
    documented = family.documented("retval")
    required = set()
    for result, parameters in family.exports.values():
        if result == "Status":
            required |= {"StatusOk"} | {status for pattern, status in IMPLIED.items()
                                        for parameter in parameters if re.search(pattern, parameter)}
    for name in sorted((required | statuses_in_sources(set(family.exports))) - set(documented)):
        family.fail(f"{name} is not in the list of statuses")
    for name in sorted(set(documented) - defined):
        family.fail(f"{name} is not a status")
    if documented and documented[0] != "StatusOk":
        family.fail("the list of statuses does not begin with StatusOk")


def check_table(families):
    readme = (source_folder / "README.md").read_text()
    table = {name.lower(): int(count) for name, count in re.findall(r"^\| (.+?) \| .* \| (\d+) \|$", readme, re.M)}
    counts = {family.title.lower(): len(family.exports) for family in families}
    for name, count in (table.items() ^ counts.items()):
        failures.append(f"README.md: {name} with {count} exports is not in both the table of families and the header")


text = header.read_text()
families = [family for family in read_families(text) if family.exports]
for family in families:
    check_parameters(family)
    check_statuses(family, set(re.findall(r"^    (Status\w+) = ", text, re.M)))
check_table(families)

count = sum(len(family.exports) for family in families)
if count != len(re.findall("^VEKCV_API ", text, re.M)):
    failures.append(f"{header.name}: an export stands twice or was not read")
print(*failures, sep="\n") if failures else print(f"{count} exports in {len(families)} families are documented")
sys.exit(bool(failures))
