"""The component's object, and the two values of the process."""

import ctypes
import enum
from types import TracebackType
from typing import Any, NamedTuple, Optional, Type

from .library import load

_OK = 0


class Language(enum.IntEnum):
    """The language of all texts that the component shows."""

    USERS = 0
    ENGLISH = 1
    JAPANESE = 2
    SIMPLIFIED_CHINESE = 3


class Part(NamedTuple):
    """One part. Paths are native; server and folder are the database's own texts, with backslashes.

    The thickness is in the database's unit with its fraction after a dialog, and in whole 1/10000 after read_cad_data.
    The quantity is decimal digits. A part that was read without a dialog has no SY or NC file and no machine.
    """

    server: str
    folder: str
    file: str
    sy_file: str
    nc_file: str
    name: str
    comment: str
    material: str
    machine: str
    machine_type: int
    thickness: float
    quantity: str


class _Texts:
    """Text outputs on their way in: copied, and given back to the library."""

    def __init__(self, count: int) -> None:
        self._pointers = [ctypes.c_void_p() for _ in range(count)]

    def outputs(self) -> list[Any]:
        return [ctypes.byref(pointer) for pointer in self._pointers]

    def take(self) -> list[str]:
        texts = []
        for pointer in self._pointers:
            texts.append(ctypes.string_at(pointer.value).decode() if pointer.value else "")
            load().partkeep_read_free(pointer)
            pointer.value = None
        return texts


class Reader:
    """Holds the parts that its confirmed dialogs brought, oldest first. Close it, or use it in a `with`, on the thread
    that ran its dialogs."""

    def __init__(self) -> None:
        """Raises LibraryNotFound, or MemoryError."""
        self._library = load()
        self._object: Optional[int] = self._library.partkeep_read_create()
        if not self._object:
            raise MemoryError("partkeep_read_create")

    def close(self) -> None:
        """Takes the object down; its files stay on disk. May be called again."""
        self._library.partkeep_read_destroy(self._object)
        self._object = None

    def __enter__(self) -> "Reader":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], problem: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def invoke(self) -> bool:
        """Runs the selection dialog for one part. False: cancelled, failed, or no install location found."""
        return self._library.partkeep_read_invoke(self._object) == _OK

    def invoke_multi_selection(self, several: bool = True) -> bool:
        """Runs the selection dialog. False: no install location found; a cancelled dialog is True."""
        return self._library.partkeep_read_invoke_multi_selection(self._object, int(several)) == _OK

    def parts(self) -> list[Part]:
        """All parts that this object received so far."""
        count = ctypes.c_int32()
        self._library.partkeep_read_number_of_parts_selected(self._object, ctypes.byref(count))
        return [self._part(index) for index in range(count.value)]

    def read_cad_data(self, server: str, folder: str, name: str) -> Optional[Part]:
        """Fetches a named part into the working folder without a dialog. None: not read. The file is empty when the
        part came without one."""
        texts = _Texts(5)
        outputs = texts.outputs()
        thickness = ctypes.c_double()
        result = self._library.partkeep_read_read_cad_data(
            self._object, server.encode(), folder.encode(), name.encode(), b"", *outputs[:4], ctypes.byref(thickness),
            outputs[4])
        file, read_name, comment, material, quantity = texts.take()
        if result != _OK:
            return None
        return Part(server, folder, file, "", "", read_name, comment, material, "", 0, thickness.value, quantity)

    def _part(self, index: int) -> Part:
        texts = _Texts(10)
        outputs = texts.outputs()
        machine_type = ctypes.c_int32()
        thickness = ctypes.c_double()
        self._library.partkeep_read_get_part_info(self._object, index, *outputs[:9], ctypes.byref(machine_type),
                                                  ctypes.byref(thickness), outputs[9])
        taken = texts.take()
        return Part(*taken[:9], machine_type.value, thickness.value, taken[9])


def _set_for_process(operation: str, value: Any) -> None:
    with Reader() as reader:
        getattr(load(), operation)(reader._object, value)


def set_working_folder(folder: str) -> None:
    """The root under which files are staged, for the whole process. End it with a separator: nothing adds one. Use one
    whose absolute path holds no dot; with one, old copies of a part are not cleared away."""
    _set_for_process("partkeep_read_set_working_folder", folder.encode())


def set_language(language: int) -> None:
    """The language of all texts, for the whole process; see Language."""
    _set_for_process("partkeep_read_set_language_id", int(language))
