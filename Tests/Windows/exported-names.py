#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that a library for Windows exports what the same library for Linux exports.

Arguments: objdump for Windows, c++filt, the library, and the record of the Linux library's interface (abi/*.abi).
"""

import re
import subprocess
import sys


def names_of_windows(objdump: str, library: str) -> list[str]:
    """Names of the export table."""
    text = subprocess.run([objdump, "-p", library], check=True, capture_output=True, text=True).stdout
    table = text[text.index("[Ordinal/Name Pointer] Table") :]
    return re.findall(r"^\t\[ *\d+\](?: \+base\[ *\d+\])? *(?:[0-9a-f]+ )?(\S+)$", table, re.MULTILINE)


def names_of_linux(record: str) -> list[str]:
    """Names of the exported symbols in a record."""
    with open(record, encoding="utf-8") as file:
        return re.findall(r"elf-symbol name='([^']+)'", file.read())


def comparable(filter_program: str, names: list[str]) -> set[str]:
    """Demangled names in which all widths of integers are one: sizes have other types on each system.

    Names of types are left out: they are exported only where types are compared by the address of their name.
    """
    text = subprocess.run([filter_program, "--no-strip-underscore"], input="\n".join(names), check=True, capture_output=True, text=True).stdout
    text = re.sub(r"\b(unsigned )?(long long|long|int)\b", r"\1int", text)
    text = re.sub(r"\b(\d+)l+\b", r"\1", text)
    return {line for line in text.splitlines() if not line.startswith("typeinfo name for ")}


def main() -> int:
    """Prints what only one of the two exports."""
    objdump, filter_program, library, record = sys.argv[1:]
    windows = comparable(filter_program, names_of_windows(objdump, library))
    linux = comparable(filter_program, names_of_linux(record))
    for name in sorted(linux - windows):
        print("not exported for Windows:", name)
    for name in sorted(windows - linux):
        print("exported for Windows only:", name)
    return 0 if windows == linux and len(linux) > 100 else 1


if __name__ == "__main__":
    sys.exit(main())
