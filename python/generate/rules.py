"""What parameters in C become in Python, where that is not simply their name."""
import dataclasses


@dataclasses.dataclass(frozen=True)
class Argument:
    name: str
    hint: str
    description: str
    default: str = ""  # none for a required one
    order: int = 0  # place among those with a default


@dataclasses.dataclass(frozen=True)
class Rule:
    """How one parameter in C follows from arguments in Python."""
    arguments: tuple
    conversion: str = ""  # what the first argument becomes before it is used


def rule(name, default, hint, order, description, conversion=""):
    return Rule((Argument(name, hint, description, default, order),), conversion)


BORDERS = ('what lies outside of the image: "constant", "replicate", "periodic", "reflect" (without the edge pixel) or '
           '"reflect_edge"')
IN_MEMORY = ('; or "in_memory" for the pixels of the array that the image is a view of, and "+top", "+bottom", "+left" '
             'and "+right" behind a rule for these on single sides')
RULES = {
    "mask": rule("mask", "None", "Array | None", 10,
                 "bytes; pixels where they are not 0 take part, and all without it"),
    "channelOfInterest": rule("channel", "None", "int | None", 11, "index of the channel that is looked at: 0, 1 or 2"),
    "norm": rule("norm", '"l2"', "str", 5, '"inf", "l1" or "l2"', "norm_type(norm)"),
    "connectivity": rule("connectivity", "8", "int", 12, "4 or 8 neighbours", "connectivity_type(connectivity)"),
    "minLabel": rule("min_label", "1", "int", 13, "first label"),
    "maxLabel": rule("max_label", "None", "int | None", 14, "last label; the greatest there is by default",
                     "greatest_label(markers) if max_label is None else max_label"),
    "borderType": rule("border", '"replicate"', "str", 20, BORDERS + IN_MEMORY, "border_type(border, a, {reach})"),
    # Of filters of any size, which do not read beside the image.
    "plainBorderType": rule("border", '"replicate"', "str", 20, BORDERS, "border_type(border, a, 0)"),
    "maskSize": rule("aperture", "3", "int", 21, "side of the kernel: 3 or 5", "mask_size(aperture)"),
    "apertureSize": rule("aperture", "3", "int", 21, "side of the kernels of the derivatives: 3 or 5"),
    "averageWindow": rule("window", "3", "int", 22, "side of the window of the averages: 3 or 5"),
    "kernelType": rule("kernel", '"sobel"', "str", 23, 'derivatives: "sobel" or "scharr"', "kernel_type(kernel)"),
    "anchor": rule("anchor", "None", "Point | None", 24, "pixel of the window that is placed on each pixel; its middle "
                   "by default", "middle(size) if anchor is None else anchor"),
    "watershedFlag": Rule((
        Argument("boundaries", "bool", "draw boundaries of the greatest value in the end", "False", 30),
        Argument("light_is_low", "bool", "flood from light to dark", "False", 31)),
        "bool(boundaries) + 2 * bool(light_is_low)"),
    "gradientFlag": rule("boundaries", "0", "int", 30, "4 or 8: in the end, draw boundaries between what is connected "
                         "that way", "boundary_flag(boundaries)"),
    "k1": rule("k1", "0.0", "float", 30, "radial coefficient"),
    "k2": rule("k2", "0.0", "float", 31, "radial coefficient"),
    "borderValue": rule("border_value", "0", "float", 40, "what the constant border holds"),
}
DTYPE = Argument("dtype", "DType | None", "of the result; that of out, or else the first of those there are", "None",
                 90)
OUT_ORDER = 100

CONNECTED = {"Morphological reconstruction", "Labels of markers", "Boundaries of segments", "Watershed segmentation",
             "Gradient segmentation"}


def rule_of(export, parameter, code):
    """The rule of a parameter of an export; None where it is an argument of the same name."""
    if parameter == "norm" and export.group.title in CONNECTED:
        return RULES["connectivity"]
    if parameter == "flag":
        return RULES["watershedFlag" if export.group.title.startswith("Watershed") else "gradientFlag"]
    if parameter == "borderType" and any(other.name == "kernelSize" for other in export.parameters):
        return RULES["plainBorderType"]
    bordered = any(other.name == "borderType" for other in export.parameters)
    if (parameter == "borderValue" and not bordered) or (parameter == "maskSize" and code == "vS"):
        return None
    return RULES.get(parameter)
