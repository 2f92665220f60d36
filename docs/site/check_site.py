# SPDX-License-Identifier: Apache-2.0
"""Checks that every link of a built site leads somewhere on it, anchors included, and that no page loads anything from elsewhere.

Argument: the folder of the site. Asks no network: of links to other sites, only the form is checked. linkchecker does the same in six minutes
of computing, since it reads a page again for each of its anchors.
"""

import html.parser
import pathlib
import re
import sys
import urllib.parse

LOADING = {"script": "src", "link": "href", "img": "src", "iframe": "src", "source": "src", "object": "data", "form": "action"}


class Page(html.parser.HTMLParser):
    """The anchors of a page, its links, and what it loads."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.loaded = {"", "top"}, [], []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.anchors |= {values[name] for name in ("id", "name") if values.get(name)}
        if tag in ("a", "area") and values.get("href"):
            self.links.append(values["href"])
        elif values.get(LOADING.get(tag, "")):
            self.loaded.append(values[LOADING[tag]])


def script_links(path):
    """Returns the links in Doxygen's menu."""
    return re.findall(r'url:"([^"]+)"', path.read_text()) if path.name == "menudata.js" else []


def style_files(path):
    return re.findall(r"""(?:url\(\s*["']?|@import\s+["'])([^"')\s]+)""", path.read_text(encoding="utf-8"))


def check(site):
    """Yields a sentence for each fault."""
    pages = {path: Page(path) for path in sorted(site.rglob("*.html"))}
    if site / "index.html" not in pages:
        yield "There is no front page."

    def fault_of(origin, link, may_leave):
        parts = urllib.parse.urlsplit(link)
        if parts.scheme in ("data", "javascript"):
            return ""
        if parts.scheme or parts.netloc:
            if not may_leave:
                return "is loaded from elsewhere"
            is_address = parts.scheme == "mailto" or parts.scheme in ("http", "https") and re.fullmatch(r"[\w.:-]+", parts.netloc)
            return "" if is_address and not re.search(r"\s", link) else "is no address"
        path = (origin.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else origin
        if not path.is_relative_to(site) or not path.is_file():
            return "leads nowhere"
        if path in pages and urllib.parse.unquote(parts.fragment) not in pages[path].anchors:
            return "leads to no such anchor"
        return ""

    uses = [(path, link, True) for path, page in pages.items() for link in page.links]
    uses += [(path, link, False) for path, page in pages.items() for link in page.loaded]
    uses += [(path, link, True) for path in sorted(site.rglob("*.js")) for link in script_links(path)]
    uses += [(path, link, False) for path in sorted(site.rglob("*.css")) for link in style_files(path)]
    for path, link, may_leave in dict.fromkeys(uses):
        if fault := fault_of(path, link, may_leave):
            yield f"{path.relative_to(site)}: {link} {fault}."
    print(f"{len(pages)} pages, {len(uses)} links")


if __name__ == "__main__":
    faults = list(check(pathlib.Path(sys.argv[1]).resolve()))
    print(*faults, sep="\n", end="\n" if faults else "")
    sys.exit(1 if faults else 0)
