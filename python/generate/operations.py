"""Writes the module of the operations that follow from the names and parameters of the exports: for each of them a
table of its forms by dtype, channels and arguments, and a function with documentation and type hints."""
import collections
import dataclasses
import re
import textwrap

import codes
import names
from rules import DTYPE, OUT_ORDER, RULES, Argument, rule_of

# Operations that other modules of the package have: lists of points, states, sizes that differ.
BY_HAND = set("""
    mean integral sqr_integral tilted_integral tilted_sqr_integral rect_std_dev tilted_rect_std_dev
    filter_row_border_pipeline filter_row_border_pipeline_low filter_column_pipeline filter_column_pipeline_low
    gen_sobel_kernel pyr_down pyr_up get_pyramid_down_roi get_pyramid_up_roi pyramid_layer_down pyramid_layer_up
    dilate erode gray_dilate gray_erode morph_open morph_close morph_top_hat morph_black_hat morph_gradient
    find_peaks3x3 tilt_haar_features get_haar_classifier_size apply_haar_classifier apply_mixed_haar_classifier
    hough_line hough_line_region sample_line fast_arctan get_distance_transform_mask distance_transform inpaint
    flood_fill foreground_gaussian foreground_histogram foreground_histogram_update optical_flow_pyr_lk
    create_map_camera_undistort copy_subpix copy_subpix_intersect vekcv_get_lib_version
    """.split())
BY_HAND_PARTS = ("_init_alloc", "_init", "_free", "_psf2x2", "_psf3x3")
# Operations that do not write all pixels: a result that is made must not show what was in memory before.
LEAVES_PIXELS_OUT = {"undistort_radial"}
INDENT = "    "


@dataclasses.dataclass
class Operation:
    """Exports that are one function in Python."""
    name: str
    exports: list = dataclasses.field(default_factory=list)

    @property
    def fullest(self):
        return max(self.exports, key=lambda export: len(export.parameters))


def python_name(export):
    # The only form of its operation that is not in place has other arguments.
    return "blend" if export.name == "vekiAddWeighted_32f_C1R" else names.operation(export.operation)[0]


# Exports that are parts of what is written by hand, by their operations.
PARTS = [
    (r"vekcvGetLibVersion", "version"), (r"FilterRow\w*", "filter_row_border_pipeline"),
    (r"FilterColumn\w*", "filter_column_pipeline"), (r"HoughLine\w*", "hough_line"), (r"FloodFill\w*", "flood_fill"),
    (r"MorphologyCompound\w*", "CompoundElement"), (r"GrayMorphology\w*", "GrayElement"),
    (r"Morphology\w*", "MorphologyElement"), (r"Pyramid(InitAlloc|Free)", "Pyramid"),
    (r"PyramidLayerDown\w*", "PyramidLayerDown"), (r"PyramidLayerUp\w*", "PyramidLayerUp"),
    (r"\w*Haar\w+", "HaarClassifier"), (r"Inpaint\w+", "Inpainter"), (r"ForegroundGaussian\w*", "ForegroundGaussian"),
    (r"ForegroundHistogram\w*", "ForegroundHistogram"), (r"OpticalFlowPyrLK\w+", "OpticalFlow"),
    (r"SRHN\w+", "SuperResolution"), (r"Undistort\w+", "undistort_radial"),
]


def public_name(export):
    """The function or the class that an export is part of in Python."""
    for pattern, name in PARTS:
        if re.fullmatch(pattern, export.operation):
            return name
    query = names.QUERY.fullmatch(export.operation)
    return names.snake(query["operation"]) if query else python_name(export)


def regular(exports):
    """The operations that are generated, in the order of the header."""
    result = {}
    for export in exports:
        name = python_name(export)
        if not names.QUERY.fullmatch(export.operation) and name not in BY_HAND and not name.endswith(BY_HAND_PARTS):
            result.setdefault(name, Operation(name)).exports.append(export)
    return list(result.values())


def query_of(export, exports):
    """The export that gives the size of the work buffer of another one; None where there is none."""
    for candidate in exports:
        match = names.QUERY.fullmatch(candidate.operation)
        if match and names.snake(match["operation"]) == python_name(export) and (
                not candidate.types or (candidate.types, candidate.channels) == (export.types, export.channels)):
            return candidate
    return None


class Forms:
    """How the exports of an operation differ beside the dtype and the channels of their first image."""

    def __init__(self, operation):
        self.siblings = {export.name: names.operation(export.operation)[1] for export in operation.exports}
        self.masked = any("M" in export.layout for export in operation.exports)
        self.of_channel = any(is_of_channel(export) for export in operation.exports)
        alike = collections.Counter((export.types[0], self.key(export)[:-1], export.channels)
                                    for export in operation.exports)
        self.typed = max(alike.values()) > 1
        first = self.siblings[operation.exports[0].name]
        self.in_place = any(code.startswith("Iw") for _, code in codes.codes(operation.fullest))
        self.axes = [*first] + ["masked"] * self.masked + ["of_channel"] * self.of_channel + ["dtype"] * self.typed

    def key(self, export):
        key = [*self.siblings[export.name].values()]
        if self.masked:
            key.append("M" in export.layout)
        if self.of_channel:
            key.append(is_of_channel(export))
        return (*key, export.types[-1])

    def table(self, operation, query):
        """The exports by their keys. What exists with a mask only has a twin that is given a mask of ones."""
        result = {}
        for export in operation.exports:
            key = self.key(export) if self.typed else self.key(export)[:-1]
            result.setdefault(key, {})[export.types[0], export.channels] = entry(export, query)
        if self.masked:
            place = self.axes.index("masked")
            for key in [key for key in result if key[place]]:
                twins = result.setdefault(key[:place] + (False,) + key[place + 1:], {})
                for form, masked in result[key].items():
                    twins.setdefault(form, "ones " + masked)
        return {key: list(entries.values()) for key, entries in result.items()}


def is_of_channel(export):
    return any(parameter.name == "channelOfInterest" for parameter in export.parameters)


def entry(export, query):
    found = query(export)
    return f"{export.name} {found.name}" if found else export.name


class Function:
    """The text of the function of an operation."""

    def __init__(self, operation, exports):
        self.operation, self.export = operation, operation.fullest
        self.forms = Forms(operation)
        buffered = any(parameter.name == "buffer" for parameter in self.export.parameters)
        self.query = (lambda export: query_of(export, exports)) if buffered else lambda export: None
        self.codes = [pair for pair in codes.codes(self.export) if pair[1] != "R" and pair[1][0] != ">"]
        self.image = names.argument(self.codes[0][0])

    def rule(self, parameter, code):
        if parameter == "mask" and not self.forms.masked:
            return None
        return rule_of(self.export, parameter, code)

    def arguments(self):
        """The arguments, required ones first."""
        found = [RULES[axis].arguments[0] for axis in self.forms.axes if axis in RULES]
        for parameter, code in self.codes:
            rule = self.rule(parameter, code)
            if rule:
                found += rule.arguments
            elif parameter != "buffer":
                found.append(self.plain(parameter, code))
        if self.forms.typed and not self.forms.in_place:
            found.append(DTYPE)
        return sorted(found, key=lambda argument: argument.order)

    def plain(self, parameter, code):
        """The argument of a parameter without a rule."""
        description = self.export.group.parameters[parameter].replace("first pixel of ", "")
        name = names.argument(parameter)
        if code.startswith("Io"):
            return Argument(name, "Array | None", description + "; made by default", "None", OUT_ORDER)
        if code[0] == "n":
            types = {dict(codes.codes(export)).get(parameter) for export in self.operation.exports}
            return Argument(name, "float" if types & {"nf", "nd"} else "int", description)
        return Argument(name, "Size" if name == "size" else {"I": "Array", "v": "Point"}[code[0]], description)

    def expression(self, parameter, code):
        """What is passed for a parameter of the export."""
        rule = self.rule(parameter, code)
        if parameter == "mask" and rule:
            return "*given(mask)"
        if parameter == "channelOfInterest":
            return "*channel_of_interest(channel)"
        if rule:
            return rule.arguments[0].name
        return names.argument(parameter)

    def body(self):
        """The lines of the function behind its documentation."""
        lines = []
        rules = [rule for rule in (self.rule(*pair) for pair in self.codes) if rule and rule.conversion]
        # The border looks at the aperture as it was given.
        for rule in sorted(rules, key=lambda rule: rule.arguments[0].name != "border"):
            reach = "aperture // 2" if any(name == "maskSize" for name, _ in self.codes) else "1"
            lines.append(f"{rule.arguments[0].name} = {rule.conversion.format(reach=reach)}")
        result = "None, markers" if self.forms.in_place else "dtype, out"
        keys = {"masked": "mask is not None", "of_channel": "channel is not None", "dtype": f"result_code({result})"}
        axes = ", ".join(keys.get(axis, axis) for axis in self.forms.axes)
        chosen = f"_{self.operation.name}" + (f"[{axes}]" if axes else "") + f"[form({self.image})]"
        query = self.query(self.export)
        passed = ", ".join("None" if name == "buffer" and not query else self.expression(name, code)
                           for name, code in self.codes)
        if self.operation.name in LEAVES_PIXELS_OUT:
            lines.append(f"out = zeros_like({self.image}) if out is None else out")
        if not query:
            return lines + [f"return {chosen}({passed})"]
        sizes = {"roiSize": f"size_of({self.image})", "roiWidth": f"{self.image}.shape[1]"}
        asked = ", ".join(sizes.get(name) or self.expression(name, code)
                          for name, code in codes.codes(query) if code[0] != ">")
        # The form comes first, since it refuses what is no image.
        return [f"function, query = {chosen}", *lines, f"buffer = work_buffer(query({asked}))",
                f"return function({passed})"]

    def documentation(self):
        briefs = dict.fromkeys(export.brief for export in self.operation.exports)
        lines = [*briefs, "", *textwrap.dedent(self.export.group.text).split("\n"), "", "Arguments:"]
        for argument in self.arguments():
            lines += textwrap.wrap(f"{argument.name}: {argument.description}", 112, initial_indent=INDENT,
                                   subsequent_indent=2 * INDENT)
        lines += ["", "Exports: " + ", ".join(export.name for export in self.operation.exports)]
        return lines

    def text(self, hints_only):
        signature = ", ".join(
            f"{argument.name}: {argument.hint}" + (f" = {argument.default}" if argument.default else "")
            for argument in self.arguments())
        head = f"def {self.operation.name}({signature}) -> {self.result()}:"
        if hints_only:
            return head + " ..."
        text = "\n".join(self.documentation()).replace("\\", "\\\\").replace('"""', "'''")
        return "\n".join([head, textwrap.indent(f'r"""{text}\n"""', INDENT), *(INDENT + line for line in self.body())])

    def result(self):
        hints = {"d": "float", "f": "float", "i": "int", "P": "Point", "S": "Size", "C": "Component"}
        made = [hints[code[1]] if code[0] == ">" else "Array" for _, code in codes.codes(self.export)
                if code[0] == ">" and _ != "bufferSize" or code.startswith("Io")]
        return "None" if not made else made[0] if len(made) == 1 else f"tuple[{', '.join(made)}]"

    def table(self):
        """The assignment of the operation's table."""
        forms = self.forms.table(self.operation, self.query)
        if not self.forms.axes:
            return f"_{self.operation.name} = Forms({self.operation.name!r}, {forms[()]!r})"
        lines = [f"    {key!r}: {members!r}," for key, members in forms.items()]
        head = f"_{self.operation.name} = table({self.operation.name!r}, {self.forms.axes!r}, {{"
        return "\n".join([head, *lines, "})"])
