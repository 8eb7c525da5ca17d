"""What the public headers declare and document: functions with their parameters, and the text of the manual."""
import dataclasses
import pathlib
import re
import subprocess

from pycparser import c_ast, c_parser

INTEGERS = "".join(f"typedef int {sign}int{bits}_t;\n" for bits in (8, 16, 32, 64) for sign in ("u", ""))
TYPE_CODES = {"8u": "B", "8s": "b", "16u": "H", "16s": "h", "32s": "i", "32f": "f", "64f": "d"}
NAME = re.compile(r"veki(?P<operation>b?[A-Z]\w*?)(?:_(?P<types>(?:8u|8s|16u|16s|32s|32f|64f)+)(?:_(?P<layout>\w+))?)?")


@dataclasses.dataclass(frozen=True)
class Parameter:
    name: str
    type: str  # without const and pointers, as in uint8_t
    pointers: int
    constant: bool


@dataclasses.dataclass(frozen=True)
class Export:
    name: str
    operation: str  # between the prefix and the types, as in FilterSobelHorizBorder
    types: tuple  # codes of dtypes, as in ("B", "h")
    layout: str  # as in C3CMR
    parameters: tuple
    group: "Group"
    brief: str

    @property
    def channels(self):
        return int(self.layout[1]) if self.layout.startswith("C") else 1


@dataclasses.dataclass(frozen=True)
class Group:
    title: str
    text: str  # the manual without what documents parameters and statuses
    parameters: dict  # name -> what it is
    statuses: dict  # name -> what it means


def declarations(*paths):
    """The declarations of the headers as plain C, without comments and macros, for cffi and for parsing."""
    text = "".join(pathlib.Path(path).read_text() for path in paths)
    text = re.sub(r"^#include .*$", "", text, flags=re.M)
    command = ["cc", "-E", "-P", "-D__attribute__(x)=", "-x", "c", "-"]
    return subprocess.run(command, input=text, text=True, check=True, capture_output=True).stdout


def exports(path):
    """All functions of the header, in its order."""
    parsed = c_parser.CParser().parse(INTEGERS + declarations(path))
    functions = {node.name: node.type for node in parsed.ext
                 if isinstance(node, c_ast.Decl) and isinstance(node.type, c_ast.FuncDecl)}
    result = []
    for group, brief, name in documented(pathlib.Path(path).read_text()):
        match = NAME.fullmatch(name)
        parts = match.groupdict() if match else {"operation": name, "types": None, "layout": None}
        types = tuple(TYPE_CODES[code] for code in re.findall(r"\d+[usf]", parts["types"] or ""))
        result.append(Export(name, parts["operation"], types, parts["layout"] or "",
                             tuple(parameters(functions[name])), group, brief))
    return result


def parameters(function):
    """The parameters of a parsed function."""
    for declared in function.args.params:
        if declared.name is None:  # void
            return
        node, pointers = declared.type, 0
        while isinstance(node, c_ast.PtrDecl):
            node, pointers = node.type, pointers + 1
        yield Parameter(declared.name, " ".join(node.type.names), pointers, "const" in node.quals)


def documented(text):
    """Group, one-line description and name of every declared function, in the order of the header."""
    group, brief = None, ""
    tokens = re.compile(r"^/\*\*\n \* @defgroup(.*?)^ \*/|^/\*\* ([^@\n]*) \*/$|^VEKCV_API [^(]*?(\w+)\(", re.S | re.M)
    for match in tokens.finditer(text):
        if match[1]:
            group = read_group(match[1])
        elif match[2]:
            brief = match[2]
        else:
            yield group, brief, match[3]


def read_group(comment):
    """A group from its comment, which begins with its name and its title."""
    first, *lines = [re.sub(r"^ \* ?", "", line) for line in comment.split("\n")]
    text, described, statuses, current = [], {}, {}, None
    for line in lines:
        tag = re.match(r"@(param|retval) +([\w, ]+?) {2,}(.*)|@(param|retval) (\w+) (.*)|@(.)", line)
        if tag and (tag[1] or tag[4]):
            target = described if (tag[1] or tag[4]) == "param" else statuses
            names = (tag[2] or tag[5]).split(", ")
            description = (tag[3] or tag[6]).strip()
            for name in names:  # a status stands twice where it is checked for in two places of the order
                target[name] = f"{target[name]}; {description}" if name in target else description
            current = target, names
        elif current and line.strip() and not tag:
            for name in current[1]:
                current[0][name] += " " + line.strip()
        elif not tag and not line.startswith("@"):
            current = None
            text.append(line)
    title = first.split(None, 1)[1].strip()
    return Group(title, re.sub(r"\n{3,}", "\n\n", "\n".join(text)).strip(), described, statuses)
