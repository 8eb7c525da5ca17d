"""What a call from Python takes beside the same call in C, and beside OpenCV's (python3-opencv), on one thread: at 16 x
16 pixels, where the call is all there is, and at 640 x 480. Needs the installed package and a C compiler."""
import ctypes
import pathlib
import statistics
import subprocess
import tempfile
import time

import cv2
import numpy
import vekcv

LOOPS = """
#include <vekcv.h>
void abs_diff(long n, const uint8_t* a, const uint8_t* b, uint8_t* out, int32_t step, int32_t width, int32_t height) {
    const RoiSize size = {width, height};
    while (n-- > 0) vekiAbsDiff_8u_C1R(a, step, b, step, out, step, size);
}
void sobel(long n, const uint8_t* a, const uint8_t* buffer, int16_t* out, int32_t step, int32_t width, int32_t height) {
    const RoiSize size = {width, height};
    while (n-- > 0)
        vekiFilterSobelHorizBorder_8u16s_C1R(a, step, out, 2 * step, size, 33, 1, 0, (uint8_t*)buffer);
}
"""


def loops():
    """The calls in C, each made so many times in a loop."""
    include = pathlib.Path(__file__).resolve().parents[2] / "include"
    folder = pathlib.Path(vekcv.__file__).parent
    with tempfile.TemporaryDirectory() as scratch:
        source, library = pathlib.Path(scratch, "loops.c"), pathlib.Path(scratch, "loops.so")
        source.write_text(LOOPS)
        command = ["cc", "-O2", "-shared", "-fPIC", f"-I{include}", "-o", library, source, folder / "libvekcv.so.7"]
        subprocess.run(command, check=True)
        return ctypes.CDLL(str(library))


def microseconds(*calls, rounds=15):
    """The medians of the times of calls, which are measured in turn; each takes the number of times that it runs."""
    counts = []
    for call in calls:
        count = 1
        while time_of(call, count) < 0.01:
            count *= 2
        counts.append(count)
    times = [[time_of(call, count) / count * 1e6 for call, count in zip(calls, counts)] for _ in range(rounds)]
    return [statistics.median(column) for column in zip(*times)]


def time_of(call, count):
    begin = time.perf_counter()
    call(count)
    return time.perf_counter() - begin


def repeated(function, *arguments):
    def call(count):
        for _ in range(count):
            function(*arguments)
    return call


def main():
    vekcv.set_num_threads(1)
    cv2.setNumThreads(1)
    in_c = loops()
    print("microseconds                      C    Python  OpenCV   over C   of OpenCV")
    for width, height in ((16, 16), (640, 480)):
        generator = numpy.random.default_rng(1)
        a, b = (generator.integers(0, 256, (height, width), numpy.uint8) for _ in range(2))
        out, derivative = numpy.empty_like(a), numpy.empty(a.shape, numpy.int16)
        buffer = numpy.empty(1 << 20, numpy.uint8)
        rows = {
            "abs_diff": (in_c.abs_diff, (a, b, out), repeated(vekcv.abs_diff, a, b, out),
                         repeated(cv2.absdiff, a, b, out)),
            "filter_sobel_horiz": (in_c.sobel, (a, buffer, derivative),
                                   repeated(vekcv.filter_sobel_horiz, a, "replicate", 3, 0, None, derivative),
                                   repeated(cv2.Sobel, a, cv2.CV_16S, 0, 1, derivative, 3, 1, 0, cv2.BORDER_REPLICATE)),
        }
        for name, (loop, arrays, ours, theirs) in rows.items():
            pointers = [ctypes.c_void_p(array.ctypes.data) for array in arrays]
            plain, python, peer = microseconds(
                lambda n: loop(ctypes.c_long(n), *pointers, width, width, height), ours, theirs)
            print(f"{name:20} {width:4} x {height:<4} {plain:8.2f} {python:8.2f} {peer:8.2f} {python - plain:8.2f} "
                  f"{python / peer:8.2f}   {100 * (python / plain - 1):.0f} % more than C")


if __name__ == "__main__":
    main()
