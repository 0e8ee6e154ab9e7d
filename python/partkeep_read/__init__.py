"""Partkeep Read for Python hosts: picks parts of a part database in a dialog, or fetches a named part without one.

    import partkeep_read

    partkeep_read.set_working_folder("/var/spool/parts/")
    with partkeep_read.Reader() as reader:
        part = reader.read_cad_data("PLATES", "Brackets\\\\L", "BRK-1")

Needs nothing but the C interface's library, which library.py finds. One operation at a time: nothing is guarded.
"""

from .library import LibraryNotFound, version
from .reader import Language, Part, Reader, set_language, set_working_folder

__all__ = ["Language", "LibraryNotFound", "Part", "Reader", "set_language", "set_working_folder", "version"]
