# SPDX-License-Identifier: Apache-2.0
"""Lets links of the documents to files of the tree lead somewhere on the site, as they do where the tree is browsed.

A public header is a page of the reference; other text files and folders become pages of their own; what is not text is copied. The search
finds all of these pages.
"""

import html
import pathlib
import posixpath
import re
import xml.etree.ElementTree

from docutils import nodes
from docutils.utils import new_document
from sphinx import addnodes
from sphinx.transforms import SphinxTransform

LEXERS = {".cpp": "cpp", ".h": "cpp", ".c": "c", ".py": "python", ".json": "json"}


def reference_pages(app):
    """Returns (kind, name, page) of each header, class, structure and namespace in Doxygen's list, its page relative to the site."""
    tags = xml.etree.ElementTree.parse(app.config.reference_tags).getroot()
    for compound in tags.iter("compound"):
        kind = compound.get("kind")
        if kind in ("file", "class", "struct", "namespace"):
            page = compound.findtext("filename").removesuffix(".html") + ".html"
            name = compound.findtext("path", "") + compound.findtext("name")
            yield kind, name.removeprefix(f"{app.srcdir}/"), f"reference/{page}"


def is_text(path):
    try:
        path.read_text(encoding="utf-8")
    except UnicodeDecodeError:
        return False
    return path.suffix != ".svg"


class LinksToFiles(SphinxTransform):
    """Points links to files that are no documents to their pages."""

    default_priority = 100

    def apply(self):
        env = self.document.settings.env
        headers = {name: page for kind, name, page in reference_pages(self.app) if kind == "file"}
        folder = posixpath.dirname(env.docname)
        for link in [*self.document.findall(addnodes.download_reference), *self.document.findall(addnodes.pending_xref)]:
            if link.get("reftype") != "myst" or link["reftarget"].startswith("#"):
                continue
            name = posixpath.normpath(posixpath.join(folder, link["reftarget"]))
            path = pathlib.Path(env.srcdir, name)
            if name in headers:
                page = headers[name]
            elif path.is_dir() or path.is_file() and path.suffix != ".md" and is_text(path):
                page = page_of(path, name) + ".html"
                env.files_with_pages.add(name)
            else:
                continue
            target = posixpath.relpath(page, folder or ".")
            link.replace_self(nodes.reference("", "", *link.children, refuri=target, internal=True))


def page_of(path, name):
    return f"{name}/index" if path.is_dir() else name


def begin(app, env, docnames):
    env.files_with_pages = getattr(env, "files_with_pages", set())


def body_of(app, path):
    if path.is_dir():
        entries = sorted(entry for entry in path.iterdir() if entry.is_file() and is_text(entry))
        items = (f'<li><a href="{entry.name}.html"><code>{html.escape(entry.name)}</code></a></li>' for entry in entries)
        return f"<ul>{''.join(items)}</ul>"
    return app.builder.highlighter.highlight_block(path.read_text(), LEXERS.get(path.suffix, "text"))


def collect_pages(app):
    names = set(app.env.files_with_pages)
    for name in tuple(names):
        folder = pathlib.Path(app.srcdir, name)
        if folder.is_dir():
            names |= {f"{name}/{entry.name}" for entry in folder.iterdir() if entry.is_file() and is_text(entry)}
    for name in sorted(names):
        path = pathlib.Path(app.srcdir, name)
        page, body = page_of(path, name), body_of(app, path)
        feed_search(app, page, name, body)
        yield page, {"title": name, "body": f"<h1>{html.escape(name)}</h1>{body}"}, "page.html"
    for kind, name, page in reference_pages(app):
        text = pathlib.Path(app.outdir, page).read_text()
        feed_search(app, page.removesuffix(".html"), f"{name} ({kind})", text[text.index('<div class="header">') :])


def feed_search(app, page, title, body):
    """Adds a page that Sphinx did not make of a document to what the search finds."""
    text = html.unescape(re.sub(r"<(script|style).*?</\1>|<[^>]*>", " ", body, flags=re.DOTALL))
    document = new_document(page)
    document += nodes.section("", nodes.title("", title), nodes.paragraph("", text))
    app.builder.indexer.feed(page, f"{page}.html", title, document)
    app.env.all_docs[page] = 0  # the index keeps what it knows of documents
    app.env.titles[page] = nodes.title("", title)


def setup(app):
    app.add_config_value("reference_tags", "", "env")
    app.add_transform(LinksToFiles)
    app.connect("env-before-read-docs", begin)
    app.connect("html-collect-pages", collect_pages)
    return {"parallel_read_safe": False}
