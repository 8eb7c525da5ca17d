"""How operations and parameters are called in Python."""
import re

# Parameters; all others in snake case.
PARAMETERS = {
    "source": "a", "source1": "a", "source2": "b", "destination": "out", "minEigen": "out", "eigen": "out",
    "distance": "out", "sourceDestination": "a", "derivativeX": "dx", "derivativeY": "dy", "lowThreshold": "low",
    "highThreshold": "high", "motionHistory": "history", "apertureSize": "aperture", "averageWindow": "window",
    "channelOfInterest": "channel", "borderType": "border", "kernelType": "kernel", "roiSize": "size",
    "maskSize": "size",
}
# What ends the name of an operation and tells it from its siblings becomes values of arguments.
SIBLINGS = {
    "_Inf": {"norm": "inf"}, "_L1": {"norm": "l1"}, "_L2": {"norm": "l2"},
    "_3x3": {"aperture": 3}, "_5x5": {"aperture": 5},
    "_4Con": {"rule": "plain", "connectivity": 4}, "_8Con": {"rule": "plain", "connectivity": 8},
    "_Grad4Con": {"rule": "gradient", "connectivity": 4}, "_Grad8Con": {"rule": "gradient", "connectivity": 8},
    "_Range4Con": {"rule": "range", "connectivity": 4}, "_Range8Con": {"rule": "range", "connectivity": 8},
}
QUERY = re.compile(r"(?P<operation>\w+?)Get(?:BufferSize|BufSize|Size)(?P<rest>_\w+)?")


def snake(name):
    """AbsDiffC as abs_diff_c, GetPyramidDownROI as get_pyramid_down_roi."""
    name = re.sub(r"(?<=[a-z0-9])(?=[A-Z][a-z])|(?<=[a-z])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name)
    return name.lower().replace("__", "_")


def argument(parameter):
    return PARAMETERS.get(parameter, snake(parameter))


def operation(name):
    """The name of an operation in Python, and the values that its siblings are told from each other by."""
    values = {}
    match = re.fullmatch(r"(\w+?)(_[A-Za-z0-9]+)", name)
    if match and match[2] in SIBLINGS:
        name, values = match[1], SIBLINGS[match[2]]
    name = re.sub(r"Border(Replicate)?$|_Gauss5x5$", "", name)
    return snake(re.sub(r"^b(?=[A-Z])", "", name)), values
