"""Reads pages: those of the site, and those of vexcov's report, for comparison."""

import html
import html.parser
import os
import re
import urllib.parse

VOID = {"meta", "link", "br", "input", "img", "hr"}
# Elements whose end tag HTML lets a page leave out.
OPEN_ENDED = {"html", "head", "body", "p", "li", "dt", "dd", "td", "th", "tr", "thead", "tbody"}
SIGN = {"#ffffff": "", "#fafad2": "p", "#ffff99": "u", "#ffcccc": "f", "#dcdcdc": "x"}


class Page(html.parser.HTMLParser):
    """One page of the site: its links, its elements, and the lines of its code with the mark of each character."""

    def __init__(self, path):
        super().__init__(convert_charrefs=True)
        self.path = path
        with open(path, encoding="utf-8", newline="") as file:
            self.text = file.read()
        self.links, self.ids, self.elements, self.faults = [], [], 0, []
        self.open, self.marks, self.lines = [], [], []
        self.in_code = self.in_anchor = False
        self.feed(self.text)
        self.close()
        if self.open and [tag for tag in self.open if tag not in OPEN_ENDED]:
            self.faults.append(f"not closed: {self.open}")

    def handle_starttag(self, tag, attributes):
        self.elements += 1
        values = dict(attributes)
        if len(values) != len(attributes):
            self.faults.append(f"an attribute twice: {attributes}")
        for name, value in attributes:
            if name in ("href", "src"):
                self.links.append(value)
            elif name == "id":
                self.ids.append(value)
            if name == "style" or name.startswith("on") or (value or "").startswith(("data:", "javascript:")):
                self.faults.append(f"{name}={value}")
        if tag in ("style", "iframe", "frame", "object", "embed"):
            self.faults.append(f"<{tag}>")
        if tag in VOID or tag in ("path", "rect") and self.text.startswith("/>", self.text.find(">", self.at()) - 1):
            return
        self.open.append(tag)
        if tag == "pre":
            self.in_code = True
        elif self.in_code and tag == "a":
            self.in_anchor = True
            if "tabindex" in values:
                self.lines.append([])
        elif self.in_code and tag == "u":
            self.marks.append(values.get("class", "u"))

    def at(self):
        line, column = self.getpos()
        if not hasattr(self, "starts"):
            self.starts = [0]
            for piece in self.text.split("\n"):
                self.starts.append(self.starts[-1] + len(piece) + 1)
        return self.starts[line - 1] + column

    def handle_startendtag(self, tag, attributes):
        self.elements += 1
        for name, value in attributes:
            if name == "href":
                self.links.append(value)

    def handle_endtag(self, tag):
        while self.open and self.open[-1] != tag and self.open[-1] in OPEN_ENDED:
            self.open.pop()
        if not self.open or self.open[-1] != tag:
            self.faults.append(f"</{tag}> within {self.open[-3:]} at {self.getpos()}")
            return
        self.open.pop()
        if tag == "pre":
            self.in_code = False
        elif tag == "a":
            self.in_anchor = False
        elif tag == "u" and self.in_code:
            self.marks.pop()

    def handle_data(self, data):
        if self.in_code and not self.in_anchor and self.lines:
            self.lines[-1] += [(c, self.marks[-1] if self.marks else "") for c in data if c != "\n"]

    def targets(self):
        """The paths that the page links to, each with its fragment."""
        for link in self.links:
            target, _, fragment = urllib.parse.unquote(link).partition("#")
            path = os.path.normpath(os.path.join(os.path.dirname(self.path), target)) if target else self.path
            yield path, fragment


LINE = re.compile(r'^ *\d+\) <a name="l\d+" style="background-color: ([^"]*)">(.*)$', re.S)
CHANGE = re.compile(r'</a><a style="background-color: ([^"]*)">')


def listing_lines(path):
    """The lines of a listing of the report, as those of Page.lines."""
    with open(path, encoding="utf-8", errors="replace", newline="") as file:
        body = file.read().split("<pre>\n", 1)[1].split("</pre>\n<hr")[0]
    lines = []
    for row in body.split("\n"):
        found = LINE.match(row)
        if not found:
            continue
        color, text = found[1], re.sub("</a>$", "", found[2])
        pieces = CHANGE.split(text)
        marked = []
        for i in range(0, len(pieces), 2):
            marked += [(c, SIGN[color]) for c in pieces[i].replace("&lt;", "<").replace("&gt;", ">")]
            color = pieces[i + 1] if i + 1 < len(pieces) else color
        lines.append(marked)
    return lines


def report_totals(folder):
    """The figures of the report's summary: total, covered, uncovered and percent of files, functions and blocks."""
    with open(os.path.join(folder, "CodeCoverage", "__CODE_COVERAGE.HTML"), encoding="utf-8") as file:
        return re.findall(r'^<TD ALIGN="center"[^>]*> *([0-9.,]*)</TD>$', file.read(), re.M)


def site_totals(path):
    """The same of the site's start page."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    figures = []
    for row in ("Files", "Functions", "Blocks"):
        found = re.search(rf"<th scope=row>{row}<td>([\d,]+)<td>([\d,]+)<td>([\d.]+|–)", text)
        covered, total = (int(found[i].replace(",", "")) for i in (1, 2))
        figures += [f"{total:,}", f"{covered:,}", f"{total - covered:,}", found[3]]
    return figures
