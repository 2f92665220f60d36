# SPDX-License-Identifier: Apache-2.0
"""The site of the documents, by Sphinx: its search needs no server and no network, and one index holds guides and references."""

import pathlib
import re
import sys

SITE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(SITE))

project = "Quill"
copyright = "the authors of Quill, Apache-2.0"
extensions = ["myst_parser", "sphinx.ext.autodoc", "docstrings", "files"]

root_doc = "README"
source_suffix = {".md": "markdown", ".rst": "restructuredtext"}
include_patterns = ["*.md", "Data/*.md", "docs/*.md", "docs/guide/**.md", "docs/site/*.rst"]
exclude_patterns = ["build"]
templates_path = ["templates"]
myst_heading_anchors = 4
reference_tags = str(SITE.parents[1] / "build/docs/reference.tag")

autodoc_default_options = {"members": True, "undoc-members": True}
autodoc_member_order = "bysource"
autodoc_typehints_format = "short"
python_use_unqualified_type_names = True

smartquotes = False  # quoted words are those of programs, and two dashes begin an option

html_theme = "furo"
html_title = "Quill"
html_static_path = ["/usr/share/javascript/normalize.css"]
html_copy_source = False
html_show_sphinx = False


def guides():
    """Returns the pages of the guide in the order in which its first page links to them."""
    folder = SITE.parent / "guide"
    first = folder / "index.md"
    linked = ["index", *re.findall(r"\]\(([\w-]+)\.md\)", first.read_text())] if first.exists() else []
    names = sorted(path.stem for path in folder.glob("*.md"))
    return [f"docs/guide/{name}" for name in sorted(names, key=lambda name: linked.index(name) if name in linked else len(linked))]


# The front page is a document that is read elsewhere, too: what leads through the site is added to it here.
NAVIGATION = f"""
```{{toctree}}
:hidden:
:caption: Guide

{chr(10).join(guides())}
```

```{{toctree}}
:hidden:
:glob:
:caption: Documents

docs/*
```

```{{toctree}}
:hidden:
:caption: Project

CHANGELOG
CONTRIBUTING
SECURITY
Data/README
```

```{{toctree}}
:hidden:
:caption: Reference

Python <docs/site/python-reference>
```
"""


def add_navigation(app, document, source):
    if document == root_doc:
        source[0] += NAVIGATION


def localise_styles(app, failure):
    """Debian's theme takes one of its style sheets from where a web server has it: the site has it itself."""
    styles = pathlib.Path(app.outdir, "_static/styles/furo.css")
    styles.write_text(styles.read_text().replace("/javascript/normalize.css/", "../"))


def setup(app):
    app.connect("source-read", add_navigation)
    app.connect("build-finished", localise_styles)
