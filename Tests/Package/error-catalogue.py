#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares the catalogue of errors, docs/errors.md, with the texts of the code, in both directions.

The columns "Word", "Text" and "Advice" of its tables have texts in backticks, with an ellipsis for each inserted value."""

import pathlib
import re
import sys

FOLDERS = ("Shared", "Adapters", "Bindings", "Tools/quill")
TOKEN = re.compile(r"(?P<skipped>//[^\n]*|/\*.*?\*/|#\s*include[^\n]*|'(?:\\.|[^'\\\n])')"
                   r'|R"\((?P<raw>.*?)\)"|"(?P<text>(?:\\.|[^"\\\n])*)"|(?P<end>;|[{}](?=\n))|(?P<space>\s+)|(?P<other>\w+|.)', re.S)
# An opening brace after these ends a statement; after others it begins a list of values.
BLOCK = re.compile(r"(\)|\]|\b(const|noexcept|override|else|try|do)|\b(class|struct|namespace|enum)\b[^=]*|->[^=]*)\s*$")
# A statement with one of these words fails with its texts, or explains a failure with them.
FAILING = re.compile(r"\b(throw|raise\w*|fail\w*|refus\w*|bad\w+|Refusal|MethodRefusal|ToolError|Failure|KnownFailure|ErrorKind|Translation|"
                     r"ErrorWords|StatusName|WordClass|attempt\w*|explain|troubles?|parts|obstacle|wrongUsage|warn|conversionFailure)\b"
                     r"|return \{\s*(\d{3}|k(NotFound|Conflict|Gone|Unprocessable|BadGateway|Unavailable|GatewayTimeout)),")
# Files all of whose sentences are answers.
ANSWERING = tuple(map(pathlib.Path, (
    "Adapters/GenICam/src/ControlChannel.cpp", "Adapters/GenICam/src/ControlChannel.h", "Adapters/GenICam/src/NetworkChanges.cpp",
    "Bindings/C/src/Calls.cpp", "Shared/src/Cameras/GenICam/GenICamLibrary.cpp", "Shared/src/Settings/CameraSettings.cpp",
    "Shared/src/Streams/FrameCounts.cpp", "Shared/src/Streams/FrameQueue.cpp", "Shared/src/Streams/FrameQueueState.cpp")))
PLACEHOLDER = re.compile(r"(?:\{[^{} ]*\}|%s|%$|…)+")
# Parts of programs and protocols, not texts for people.
IGNORED = {"AcquisitionStart", "AcquisitionStop", "PixelFormat", "Write Ram", "packet size", "packet delay in ns", "heartbeat in ms",
           "'…' does not fit into a tar archive"}


def statements(text):
    """The code of each statement, and its literals; adjacent ones are one."""
    code, literals, adjacent = "", [], False
    for token in TOKEN.finditer(text):
        kind = token.lastgroup
        if kind in ("text", "raw"):
            value = token[kind] if kind == "raw" else re.sub(r"\\(.)", lambda sign: {"n": "\n"}.get(sign[1], sign[1]), token[kind])
            literals[-1:] = [literals[-1] + value] if adjacent else literals[-1:] + [value]
            adjacent = True
        elif kind in ("space", "skipped"):
            code += " "
        elif kind == "end" and (token[0] != "{" or BLOCK.search(code)):
            yield code, literals
            code, literals, adjacent = "", [], False
        else:
            code, adjacent = code + token[0], False


def is_answer(literal):
    """Whether a literal is a phrase, or one word for a kind of failure."""
    return literal not in IGNORED and re.search(r"[A-Za-z]{2}.* .*[A-Za-z]{2}|^[A-Z][a-z]+[A-Z]\w+ ?$", literal.strip(), re.S)


def quoted(lines):
    """The texts of the catalogue."""
    columns, texts = None, []
    for line in lines:
        cells = [cell.strip() for cell in line.strip("|").split(" |")]
        if not line.startswith("|"):
            columns = None
        elif columns is None:
            columns = [index for index, title in enumerate(cells) if re.match("Word|Text|Advice", title)]
        elif not line.startswith("|--"):
            texts += [text for index in columns for text in re.findall(r"`([^`]+)`", cells[index])]
    return texts


def exit_codes(root, page):
    """Those of the tool's enumeration, and those of the catalogue."""
    enumeration = (root / "Tools/quill/Terminal/ToolError.h").read_text().split("enum class ExitCode {")[1].split("};")[0]
    section = page.split("## Exit codes")[1].split("\n## ")[0]
    return set(re.findall(r" = (\d+)", enumeration)), set(re.findall(r"^\| (\d+) \|", section, re.M))


def main(root):
    every, answers = [], {}
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".cpp", ".h"):
                name = path.relative_to(root)
                for code, literals in statements(path.read_text()):
                    literals = [PLACEHOLDER.sub("…", literal) for literal in literals]
                    every += literals
                    if name in ANSWERING or FAILING.search(code):
                        answers |= {literal.strip(): name for literal in literals if is_answer(literal)}
    page = (root / "docs/errors.md").read_text()
    catalogue = quoted(page.splitlines())
    of_tool, of_page = exit_codes(root, page)
    lacking = sorted(f"{name}: {text}" for text, name in answers.items() if not any(text in entry for entry in catalogue))
    unknown = sorted(entry for entry in catalogue
                     if not all(any(part in literal for literal in every) for part in PLACEHOLDER.split(entry) if part.strip()))
    lacking += [f"exit code {code}" for code in of_tool - of_page]
    unknown += [f"exit code {code}" for code in of_page - of_tool]
    for title, texts in (("The catalogue lacks", lacking), ("The code lacks", unknown)):
        for text in texts:
            print(f"{title}: {text}", file=sys.stderr)
    sys.exit(bool(lacking or unknown))


main(pathlib.Path(sys.argv[1]))
