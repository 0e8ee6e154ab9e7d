#!/usr/bin/env python3
"""An example host in Python on the C interface: reads a named part, or lets the user pick parts.

Needs nothing but ctypes. The shared library is found beside this script's build, by the loader's own path, or by
--library.
"""

import argparse
import ctypes
import sys

S_OK = 0
TEXT_FIELDS = ("server", "folder", "file", "SY file", "NC file", "part", "comment", "material", "machine")


class Reader:
    """One object of the component. Texts handed out are copied and given back at once."""

    def __init__(self, library_path):
        self._library = ctypes.CDLL(library_path)
        self._library.partkeep_read_create.restype = ctypes.c_void_p
        self._library.partkeep_read_free.argtypes = [ctypes.c_void_p]
        self._object = ctypes.c_void_p(self._library.partkeep_read_create())
        if not self._object:
            raise MemoryError("partkeep_read_create")

    def close(self):
        self._library.partkeep_read_destroy(self._object)
        self._object = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def set_working_folder(self, folder):
        self._library.partkeep_read_set_working_folder(self._object, folder.encode())

    def set_language_id(self, language_id):
        self._library.partkeep_read_set_language_id(self._object, ctypes.c_int32(language_id))

    def invoke_multi_selection(self):
        """False when no install location was found; a cancelled dialog is True."""
        return self._library.partkeep_read_invoke_multi_selection(self._object, 1) == S_OK

    def parts(self):
        count = ctypes.c_int32()
        self._library.partkeep_read_number_of_parts_selected(self._object, ctypes.byref(count))
        return [self._part(index) for index in range(count.value)]

    def read_cad_data(self, server, folder, part):
        """A dictionary of what was read, or None."""
        texts = [ctypes.c_void_p() for _ in range(5)]
        thickness = ctypes.c_double()
        inputs = [text.encode() for text in (server, folder, part, "")]
        outputs = [ctypes.byref(text) for text in texts]
        result = self._library.partkeep_read_read_cad_data(
            self._object, *inputs, *outputs[:4], ctypes.byref(thickness), outputs[4])
        values = [self._take(text) for text in texts]
        if result != S_OK:
            return None
        record = dict(zip(("file", "part", "comment", "material", "quantity"), values))
        record["thickness"] = thickness.value
        return record

    def _part(self, index):
        texts = [ctypes.c_void_p() for _ in TEXT_FIELDS]
        quantity = ctypes.c_void_p()
        machine_type = ctypes.c_int32()
        thickness = ctypes.c_double()
        self._library.partkeep_read_get_part_info(
            self._object, index, *[ctypes.byref(text) for text in texts], ctypes.byref(machine_type),
            ctypes.byref(thickness), ctypes.byref(quantity))
        record = dict(zip(TEXT_FIELDS, [self._take(text) for text in texts]))
        record.update(quantity=self._take(quantity), thickness=thickness.value, machine_type=machine_type.value)
        return record

    def _take(self, text):
        if not text:
            return ""
        value = ctypes.string_at(text.value).decode()
        self._library.partkeep_read_free(text)
        return value


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--library", default="libORVICPartkeepRead.so.1")
    parser.add_argument("--working-folder", required=True, help="with its trailing separator")
    parser.add_argument("--language", type=int, default=1, help="1 English, 2 Japanese, 3 simplified Chinese")
    parser.add_argument("--server", default="")
    parser.add_argument("--folder", default="")
    parser.add_argument("--part", action="append", default=[], help="read this part without a dialog")
    parser.add_argument("--select", action="store_true", help="pick parts in the dialog")
    options = parser.parse_args()

    with Reader(options.library) as reader:
        reader.set_working_folder(options.working_folder)
        reader.set_language_id(options.language)
        records = [reader.read_cad_data(options.server, options.folder, part) for part in options.part]
        if options.select:
            reader.invoke_multi_selection()
            records += reader.parts()
    for record in records:
        print(record if record is not None else "not read")
    return 0 if all(record is not None for record in records) else 1


if __name__ == "__main__":
    sys.exit(main())
