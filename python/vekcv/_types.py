"""What type hints are made of."""
from typing import Any, Sequence

import numpy
import numpy.typing

Array = numpy.ndarray
DType = numpy.typing.DTypeLike
Size = Sequence[int]  # width, height
Point = Sequence[int]  # x, y
Rect = Sequence[int]  # x, y, width, height
Kernel = Any  # what numpy makes an array of
