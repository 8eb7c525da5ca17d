"""The arguments of every export, as codes that vekcv._call reads: made from types and names of the parameters."""
ELEMENTS = {"uint8_t": "B", "int8_t": "b", "uint16_t": "H", "int16_t": "h", "int32_t": "i", "uint32_t": "I",
            "float": "f", "double": "d", "ImagePoint": "i", "ImagePoint32f": "f", "ImageRect": "i"}
RECORDS = {"RoiSize": "S", "ImagePoint": "P", "ImagePoint32f": "F", "ImageRect": "T"}
RESULTS = {"double": "d", "float": "f", "int32_t": "i", "ImagePoint": "P", "RoiSize": "S", "ConnectedComponent": "C"}

# Pointers that receive one value, which the call returns.
RETURNED = {"result", "mean", "standardDeviation", "minimum", "maximum", "minimumIndex", "maximumIndex", "bufferSize",
            "stateSize", "labelCount", "lineCount", "peakCount", "component", "minPoint", "maxPoint",
            "destinationMin", "destinationMax", "windowSize"}
# Images that are written but not made: they are read as well, or have a size of their own.
WRITTEN = {"accumulator", "marker", "markers", "image", "motionHistory", "sourceDestination", "gradient", "integral",
           "squareIntegral", "xMap", "yMap"}
# Operations with images of other sizes than that of the region: which these are, or None for all.
OTHER_SIZES = {
    "Integral": {"integral"}, "SqrIntegral": {"integral", "squareIntegral"},
    "TiltedIntegral": {"integral"}, "TiltedSqrIntegral": {"integral", "squareIntegral"},
    "RectStdDev": {"integral", "squareIntegral"}, "TiltedRectStdDev": {"integral", "squareIntegral"},
    "ApplyHaarClassifier": {"integral"}, "ApplyMixedHaarClassifier": {"integral", "tiltedIntegral"},
    "PyrDown_Gauss5x5": {"destination"}, "PyrUp_Gauss5x5": {"destination"}, "CopySubpix": {"source"},
    "PyramidLayerDown": None, "PyramidLayerUp": None, "CopySubpixIntersect": None,
    "SRHNCalcResidual_PSF2x2": None, "SRHNCalcResidual_PSF3x3": None,
    "SRHNUpdateGradient_PSF2x2": None, "SRHNUpdateGradient_PSF3x3": None,
}
# Results that do not have the size of a source, which the caller makes.
MADE_BY_CALLER = {"PyrDown_Gauss5x5", "PyrUp_Gauss5x5", "PyramidLayerDown", "PyramidLayerUp", "CopySubpix",
                  "CopySubpixIntersect", "RectStdDev", "TiltedRectStdDev", "FilterColumnPipeline",
                  "FilterColumnPipeline_Low", "ApplyHaarClassifier", "ApplyMixedHaarClassifier",
                  "ForegroundHistogramUpdate"}
# Images whose number of channels is not that of the layout.
CHANNELS = {("GradientColorToGray", "destination"): 1, ("EigenValsVecs", "eigen"): 6}
SINGLE_CHANNEL = {"mask", "markers", "foreground", "distance"}


def is_image(export, index):
    """Whether the parameter is an image, which its step follows."""
    names = [parameter.name for parameter in export.parameters]
    return index + 1 < len(names) and names[index + 1] == names[index] + "Step"


def image_code(export, parameter):
    other = OTHER_SIZES.get(export.operation, set())
    extent = "*" if other is None or parameter.name in other else "="
    if parameter.constant:
        access = "r"
    elif parameter.name in WRITTEN or export.operation in MADE_BY_CALLER:
        access = "w"
    else:
        access = "o"
    channels = CHANNELS.get((export.operation, parameter.name), export.channels)
    if parameter.name in SINGLE_CHANNEL and export.operation != "SegmentWatershed":
        channels = 1
    return f"I{access}{ELEMENTS[parameter.type]}{channels}{extent}"


def code(export, index, has_image):
    """The code of one parameter; None for a step, which belongs to the image before it."""
    parameter = export.parameters[index]
    if index > 0 and is_image(export, index - 1):
        return None
    if is_image(export, index):
        return image_code(export, parameter)
    if parameter.pointers == 0:
        if parameter.name == "roiSize" and has_image:
            return "R"
        return f"v{RECORDS[parameter.type]}" if parameter.type in RECORDS else f"n{ELEMENTS[parameter.type]}"
    if parameter.name in RETURNED or (parameter.name == "destinationRoi" and not parameter.constant):
        return f">{RESULTS[parameter.type]}"
    if parameter.pointers == 1 and parameter.type in ELEMENTS and parameter.name not in ("buffer", "state"):
        return f"e{'r' if parameter.constant else 'w'}{ELEMENTS[parameter.type]}"
    return "p"


def codes(export):
    """Name in C and code of every argument and result of an export, in the order of its parameters."""
    images = [image_code(export, parameter) for index, parameter in enumerate(export.parameters)
              if is_image(export, index)]
    has_image = any(image[4] == "=" and image[1] != "o" for image in images)
    result = [(parameter.name, code(export, index, has_image)) for index, parameter in enumerate(export.parameters)]
    return [(name, made) for name, made in result if made]
