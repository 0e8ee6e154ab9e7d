#!/usr/bin/env python3
"""An example host in Python: reads a named part, or lets the user pick parts.

Needs the package partkeep_read, installed or from this source tree.
"""

import argparse
import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "python"))

import partkeep_read  # noqa: E402


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--working-folder", required=True, help="with its trailing separator")
    parser.add_argument("--language", type=int, default=1, help="1 English, 2 Japanese, 3 simplified Chinese, 0 the user's own")
    parser.add_argument("--server", default="", help="server of the parts to read")
    parser.add_argument("--folder", default="", help="folder on that server, levels divided by backslashes")
    parser.add_argument("--part", action="append", default=[], help="read this part without a dialog")
    parser.add_argument("--select", action="store_true", help="pick parts in the dialog")
    options = parser.parse_args()

    partkeep_read.set_working_folder(options.working_folder)
    partkeep_read.set_language(options.language)
    with partkeep_read.Reader() as reader:
        records = [reader.read_cad_data(options.server, options.folder, part) for part in options.part]
        if options.select:
            reader.invoke_multi_selection()
            records += reader.parts()
    for record in records:
        print(record if record is not None else "not read")
    return 0 if all(record is not None for record in records) else 1


if __name__ == "__main__":
    sys.exit(main())
