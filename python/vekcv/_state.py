"""Memory of the library that belongs to an object."""
import threading
import weakref

from vekcv._forms import function
from vekcv.raw import ffi


def address_of(pointer):
    """A cffi pointer as a number."""
    return int(ffi.cast("uintptr_t", pointer))


class State:
    """Memory that the library made. It is released at the end of a with statement, by close, or with the object. It
    serves one call at a time: others wait."""

    def __init__(self, kind, make, free, *arguments, before=()):
        """Makes a state of a type in C by an export; `before` are the arguments ahead of the pointer that receives
        it."""
        holder = ffi.new(f"{kind}**")
        function(make)(*before, address_of(holder), *arguments)
        self._pointer = holder[0]
        self._lock = threading.RLock()
        self._release = weakref.finalize(self, function(free), address_of(self._pointer))

    def _lend(self, kind, memory):
        """Takes a state that was made in an array of the caller, which is kept and not released."""
        self._pointer = ffi.cast(f"{kind}*", memory.__array_interface__["data"][0])
        self._lock = threading.RLock()
        self._release = weakref.finalize(self, memory.__len__)

    @property
    def pointer(self):
        """The state as a cffi pointer, for vekcv.raw."""
        if not self._release.alive:
            raise ValueError(f"this {type(self).__name__} is closed")
        return self._pointer

    def call(self, export, *arguments, behind=()):
        """Calls an export whose last argument, but for those behind it, is the state."""
        with self._lock:
            return export(*arguments, address_of(self.pointer), *behind)

    def held(self):
        """A context in which no other thread uses or releases the state."""
        return self._lock

    def close(self):
        """Releases the memory; the state cannot be used any more."""
        with self._lock:
            self._release()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
