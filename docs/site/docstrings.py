# SPDX-License-Identifier: Apache-2.0
"""Makes reStructuredText of the Python package's docstrings, which are plain text.

A paragraph is one line or more. A line "name  text", with two blanks or more in between, describes a parameter; lines that begin with blanks
continue it. A paragraph that is indented as a whole is code.
"""

import re

PARAMETER = re.compile(r"(\w+(?:, \w+)*) {2,}(\S.*)")
# Code between backticks; what is called; exceptions; characters that reStructuredText takes for its own.
INLINE = re.compile(r"`(?P<code>[^`]+)`|\b(?P<call>[A-Za-z_][\w.]*)\(\)|\b(?P<error>(?:\w+\.)?\w*Error)\b|(?P<special>[\\*|]|_\b)")


def inline(text):
    def replace(match):
        if match["code"]:
            return f"``{match['code']}``"
        if match["call"] or match["error"]:
            # A name that nothing documents stays a word in code.
            return f":py:obj:`{match['call']}() <{match['call']}>`" if match["call"] else f":py:exc:`{match['error']}`"
        return "\\" + match["special"]

    return INLINE.sub(replace, text)


def paragraph(lines):
    text, parameters = [], []
    for line in lines:
        if parameter := PARAMETER.fullmatch(line):
            parameters.append([parameter[1], parameter[2]])
        elif parameters and line.startswith(" "):
            parameters[-1][1] += " " + line.strip()
        else:
            if parameters:
                yield from descriptions(text, parameters)
                text, parameters = [], []
            text.append(line)
    yield from descriptions(text, parameters)


def descriptions(text, parameters):
    if text:
        yield inline(" ".join(text))
        yield ""
    for name, description in parameters:
        yield from (f"``{name}``", f"    {inline(description)}")
    if parameters:
        yield ""


def restructured(lines):
    is_code = False
    for block in re.split(r"\n{2,}", "\n".join(lines).strip("\n")):
        part = block.split("\n")
        was_code, is_code = is_code, all(line.startswith("    ") for line in part)
        if is_code:
            yield from ([] if was_code else ["::", ""])
            yield from [*part, ""]
        else:
            yield from paragraph(part)


def process_docstring(app, what, name, subject, options, lines):
    # Python itself writes this for the members of a tuple with names.
    if lines and lines[0].startswith("Alias for field number"):
        lines[:] = []
    lines[:] = restructured(lines) if any(lines) else []


def process_signature(app, what, name, subject, options, signature, result):
    """Takes the module's own names out of the signatures of what is written in C++."""

    def plain(text):
        text = text and text.replace("quillcamera._quillcamera.", "")
        return text and re.sub(r"\(self: \w+(, )?", "(", text)

    return plain(signature), plain(result)


def check_completeness(app, env):
    """Warns of what the package offers and the reference leaves out."""
    import inspect

    import quillcamera
    from sphinx.util import logging

    documented = env.get_domain("py").objects
    for module in (quillcamera, quillcamera.network):
        for name, value in vars(module).items():
            is_own = getattr(value, "__module__", "").split(".")[0] == "quillcamera" and not inspect.ismodule(value)
            if is_own and not name.startswith("_") and f"{module.__name__}.{name}" not in documented:
                logging.getLogger(__name__).warning("The reference leaves out %s.%s.", module.__name__, name)


def setup(app):
    app.connect("autodoc-process-docstring", process_docstring)
    app.connect("autodoc-process-signature", process_signature)
    app.connect("env-check-consistency", check_completeness)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
