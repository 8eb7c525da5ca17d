"""The threads that a call is shared among. The number counts for the whole process, and for calls of all of its
threads.

A child that is made by fork has one thread once a call of its parent was shared among several; programs that start
processes with "spawn" or "forkserver", and those that make no call before the fork, have all of them."""
import contextlib

from vekcv._status import check
from vekcv.raw import ffi, lib

__all__ = ["get_num_threads", "set_num_threads", "threads"]


def get_num_threads() -> int:
    """How many threads large images are shared among."""
    count = ffi.new("int*")
    check("vekGetNumThreads", lib.vekGetNumThreads(count))
    return count[0]


def set_num_threads(count: int):
    """Sets how many threads large images are shared among. States that were made before keep their number."""
    check("vekSetNumThreads", lib.vekSetNumThreads(count))


@contextlib.contextmanager
def threads(count: int):
    """Another number of threads in a with statement."""
    before = get_num_threads()
    set_num_threads(count)
    try:
        yield
    finally:
        set_num_threads(before)
