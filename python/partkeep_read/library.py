"""Finds the component's library, and declares its functions to ctypes."""

import ctypes
import functools
import os
import pathlib
from typing import Iterator

FILE_NAME = "libORVICPartkeepRead.so.1"
PATH_VARIABLE = "PARTKEEP_READ_LIBRARY"

_text = ctypes.c_char_p
_text_out = ctypes.POINTER(ctypes.c_void_p)  # c_char_p would lose the address, which goes back
_number_out = ctypes.POINTER(ctypes.c_int32)
_float_out = ctypes.POINTER(ctypes.c_double)

_FUNCTIONS = {
    "create": (ctypes.c_void_p,),
    "destroy": (None, ctypes.c_void_p),
    "free": (None, ctypes.c_void_p),
    "version": (ctypes.c_int32,),
    "set_working_folder": (ctypes.c_int32, ctypes.c_void_p, _text),
    "set_language_id": (ctypes.c_int32, ctypes.c_void_p, ctypes.c_int32),
    "invoke": (ctypes.c_int32, ctypes.c_void_p),
    "invoke_multi_selection": (ctypes.c_int32, ctypes.c_void_p, ctypes.c_int32),
    "number_of_parts_selected": (ctypes.c_int32, ctypes.c_void_p, _number_out),
    "get_part_info": (ctypes.c_int32, ctypes.c_void_p, ctypes.c_int32, *[_text_out] * 9, _number_out, _float_out,
                      _text_out),
    "read_cad_data": (ctypes.c_int32, ctypes.c_void_p, *[_text] * 4, *[_text_out] * 4, _float_out, _text_out),
}


class LibraryNotFound(ImportError):
    """The component's library is in none of the places that are looked at."""


def candidates() -> Iterator[str]:
    """Where the library may be, in order: the place that PARTKEEP_READ_LIBRARY names, and no other where it is set; the
    installation or the build tree that this package lies in; the loader's own path."""
    named = os.environ.get(PATH_VARIABLE)
    if named:
        yield named
        return
    for above in pathlib.Path(__file__).resolve().parents[1:6]:
        for pattern in (FILE_NAME, f"lib*/{FILE_NAME}", f"lib/*/{FILE_NAME}", f"build/release/src/interface/{FILE_NAME}",
                        f"build/*/src/interface/{FILE_NAME}"):
            yield from (str(path) for path in sorted(above.glob(pattern)))
    yield FILE_NAME


@functools.lru_cache(maxsize=None)
def load() -> ctypes.CDLL:
    """The library with its functions declared; loaded once. Raises LibraryNotFound."""
    problems = []
    for path in candidates():
        try:
            library = ctypes.CDLL(path)
        except OSError as problem:
            problems.append(str(problem))
            continue
        for name, (result, *arguments) in _FUNCTIONS.items():
            function = getattr(library, "partkeep_read_" + name)
            function.restype = result
            function.argtypes = arguments
        return library
    raise LibraryNotFound("; ".join(problems))


def version() -> tuple[int, int, int]:
    """Major, minor and patch number of the library."""
    number = load().partkeep_read_version()
    return number // 10000, number // 100 % 100, number % 100
