# SPDX-License-Identifier: Apache-2.0
"""Checks the blocks of code in the documents, by language; a language without a check is a fault. Runs in the folder of the tree.

Tests run the blocks of README.md and of the guides as they stand; here, every block of every document is at least well-formed.
"""

import ast
import json
import os
import pathlib
import re
import subprocess
import sys

BLOCK = re.compile(r"^( *)```(\w*)\n(.*?)^\1```$", re.DOTALL | re.MULTILINE)
BUILT = "Tests/Package/documented-code.sh"


def documents():
    folders = (".", "Data", "docs", "docs/guide")
    return sorted(path for folder in folders for path in pathlib.Path(folder).glob("*.md"))


def check_shell(text):
    """Commands are well-formed, and scripts of the tree exist."""
    subprocess.run(["bash", "-n"], input=text, text=True, check=True, capture_output=True)
    for script in re.findall(r"(?<![\w./-])scripts/[\w-]+", text):
        if not os.access(script, os.X_OK):
            raise ValueError(f"there is no {script}")


def check_console(text):
    """The same for what follows a prompt; the other lines are printed."""
    commands = re.findall(r"^\$ (.*(?:\\\n.*)*)", text, re.MULTILINE)
    if not commands:
        raise ValueError("there is no prompt")
    check_shell("\n".join(commands))


def check_nginx(text):
    """Every line is a directive, or begins or ends a block; all blocks end."""
    for line in text.splitlines():
        if not re.fullmatch(r"\s*(\w[^;{}]*[;{]|\}|#.*)?", line):
            raise ValueError(f"no directive: {line.strip()}")
    if text.count("{") != text.count("}"):
        raise ValueError("a block does not end")


def check_nothing(text):
    """What programs print, and drawings; code that is a file of the tree: see check_built()."""


CHECKS = {
    "": check_nothing,
    "c": check_nothing,
    "cmake": check_nothing,
    "console": check_console,
    "cpp": check_nothing,
    "json": json.loads,
    "nginx": check_nginx,
    "python": ast.parse,
    "sh": check_shell,
}


def faults_of(path):
    text = path.read_text(encoding="utf-8")
    found = 0
    for block in BLOCK.finditer(text):
        found += 2
        place = f"{path}:{text.count(chr(10), 0, block.start()) + 1}"
        content = re.sub(f"^{block[1]}", "", block[3], flags=re.MULTILINE)
        try:
            CHECKS[block[2]](content)
        except KeyError:
            yield f"{place}: nothing checks the language {block[2]}."
        except subprocess.CalledProcessError as failure:
            yield f"{place}: {failure.stderr.strip()}"
        except (ValueError, SyntaxError) as failure:
            yield f"{place}: {failure}."
    if found != len(re.findall(r"^ *```", text, re.MULTILINE)):
        yield f"{path}: a block does not end, or begins in an unusual way."


def check_built():
    """Code in C, C++ and CMake equals a file that the tests build."""
    process = subprocess.run(["bash", BUILT, "."], capture_output=True, text=True)
    return process.stderr.splitlines() if process.returncode else []


if __name__ == "__main__":
    faults = [fault for path in documents() for fault in faults_of(path)] + check_built()
    print(*faults, sep="\n", end="\n" if faults else "")
    sys.exit(1 if faults else 0)
