"""Computer-vision primitives on numpy arrays.

Images are arrays of two axes, rows and columns, or of three, the last of which are 1, 3 or 4 channels. They are passed
as views, without a copy: rows may be apart, pixels lie side by side. Results are made, or written to `out`. Sizes are
(width, height), points (x, y), channels are counted from 0. What the library refuses raises vekcv.Error, with the
status and its meaning; other dtypes than those there are raise TypeError, other arrays ValueError. Calls release the
interpreter's lock.

vekcv.raw has every function as it is in C; vekcv.dask works on images larger than memory."""
from vekcv import _status
from vekcv._library import Version, exports, version
from vekcv._status import Error, OutOfMemory, Warning
from vekcv.cascade import *
from vekcv.features import *
from vekcv.geometry import *
from vekcv.haar import *
from vekcv.morphology import *
from vekcv.motion import *
from vekcv.operations import *
from vekcv.pipelines import *
from vekcv.pyramids import *
from vekcv.regions import *
from vekcv.statistics import *
from vekcv.threads import *
