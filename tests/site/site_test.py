#!/usr/bin/env python3
"""Checks what a site must hold, on sites that it makes, and with headless Chromium how they look and behave.

usage: site_test.py BUILD_FOLDER AXE_SCRIPT [TEST...]

The last line is "N passed, N failed"; the status is 1 when one failed.
"""

import functools
import glob
import http.server
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time
import traceback

sys.dont_write_bytecode = True
from devtools import Browser
from pages import Page, listing_lines, report_totals, site_totals
from program import Program

BUILD, AXE = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
LONG = "src/long.c"  # of 10,201 lines
TWINS = ("a/b_c.c", "a_b/c.c", "a/b/c.c", "a_b_c.c", "A/b/c.c", "a/B/c.c", "a/b=c.c", "a~b~c.c")
COPIED = {  # sources whose copy must be themselves
    "copy/crlf.c": b"int f(void)\r\n{\r\n\treturn '<' && 1 > 0;\r\n}\r\n",
    "copy/cut.c": b"\n\nint f(void) { return 0; } /* &lt; &amp;\n over lines */ int g;",
    "copy/words.c": "int grün = 'ß'; // \u202eturned\u202c 日本 🙂\nchar s[] = R\"(\n\"</pre>\n)\";\n\n\n".encode(),
}
HOSTILE = "src/<b>&\"'<script>alert(1)<~script>.c"
CONTRAST = """((...names) => {
    const probe = document.body.appendChild(document.createElement("i"));
    const [a, b] = names.map((name) => {
        probe.style.color = `var(--${name})`;
        const parts = getComputedStyle(probe).color.match(/\\d+/g).map((part) => part / 255);
        const [red, green, blue] = parts.map((part) => part <= .04045 ? part / 12.92 : ((part + .055) / 1.055) ** 2.4);
        return .2126 * red + .7152 * green + .0722 * blue + .05;
    });
    return Math.max(a, b) / Math.min(a, b);
})("%s", "%s")"""
POLICIES = ("sandbox; default-src 'none'; style-src 'self'; img-src 'self'", "default-src 'self'")
CHANGE = "--- a/src/marked.c\n+++ b/src/marked.c\n@@ -3,1 +3,2 @@\n-x\n+    if (n)\n+        return 1;\n"
SELECT = """(() => { const range = document.createRange(), selection = getSelection();
range.selectNodeContents(document.querySelector("pre")); selection.removeAllRanges(); selection.addRange(range);
return selection.toString(); })()"""


def must(*command, **how):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, **how).stdout


class Sites:
    """The programs that the tests are about, and their sites; made once."""

    def __init__(self, root):
        self.root = root
        self.large = os.path.join(root, "large")
        os.mkdir(self.large)
        program = Program(self.large)
        for i in range(484):  # 500 in all
            program.add_random(f"src/part{i % 23}/file{i}.c", 80, i)
        program.add_random(LONG, 10201, "long")
        for name in TWINS:
            program.add_random(name, 60, name)
        for i, (name, text) in enumerate(COPIED.items()):
            program.add(name, text, [(f"copied_{i}", 1, None if i == 2 else [(1, 1, i), (3, 5, 0)])])
        bad = b"int h;\x00\x01\x1b[0m\x7f\xff\xfe</pre><script>alert(2)</script>\n\xe2\x80\xae // \xc2\x85\n" + b"x" * 300000
        program.add(HOSTILE, bad, [("<script>alert(3)</script>", 1, [(1, 1, 0), (2, 2, 5)] + [(3, i, i % 2) for i in range(1, 3000)])])
        program.add("src/marked.c", b"int f(int n)\n{\n    if (n)\n        return 1; /* never */\n    return 0;\n}\n",
                    [("f", 1, [(2, 1, 4), (3, 9, 4), (4, 9, 0), (5, 5, 4)])])
        program.add("src/empty.c", b"", [("none", 1, None)])
        program.add("src/script.py", b"def f():\n    return 'it''s'  # don't\n", [("f", 1, [(1, 1, 3), (2, 5, 3)])])
        program.write(os.path.join(BUILD, "tests", "tools", "vexcov-profile-text"))
        self.options = ["-onelinedsbl", "never", "-prj", "large"]
        self.make(self.large, "site")
        must(os.path.join(BUILD, "vexcov-export"), "json", "-o", "old.json", *self.options, cwd=self.large)
        for name, text in (("change.diff", CHANGE), ("own.css", ":root { --block: #010203; }\n")):
            with open(os.path.join(self.large, name), "w", encoding="utf-8") as file:
                file.write(text)
        self.make(self.large, "changed", "-diff", "change.diff", "-baseline", "old.json", "-css", "own.css")
        must(os.path.join(BUILD, "vexcov"), "-nopmeter", "-counts", "-xcolor", "#dcdcdc", *self.options,
             cwd=self.large, stderr=subprocess.DEVNULL)
        self.site = os.path.join(self.large, "site")
        self.pages = {path: Page(path) for path in glob.glob(self.site + "/**/*.html", recursive=True)}

    def make(self, folder, name, *more, **how):
        must(os.path.join(BUILD, "vexcov-site"), "-o", name, *self.options, *more, cwd=folder, **how)

    def url(self, name, fragment=""):
        return "file://" + os.path.join(self.site, name) + fragment

    def page_of(self, source):
        """The page of a source, relative to the site."""
        for path, page in self.pages.items():
            if "/s/" in path and f"<title>{source.split('/')[-1]} " in page.text and \
                    page.text.count(source.rsplit("/", 1)[0] + "</a> /") == 1 and same_source(page, self.large, source):
                return os.path.relpath(path, self.site)
        raise AssertionError(f"no page of {source}")


def same_source(page, folder, source):
    with open(os.path.join(folder, source), encoding="utf-8", errors="replace", newline="") as file:
        return "".join(c for line in page.lines for c, _ in line) == file.read().replace("\n", "")


def test_pages_are_well_formed(sites, _):
    for path, page in sites.pages.items():
        assert not page.faults, (path, page.faults[:3])
        assert len(set(page.ids)) == len(page.ids), f"{path}: an id twice"
        assert page.text.startswith("<!DOCTYPE html>\n<html lang=en>"), path


def test_links_lead_somewhere(sites, _):
    ids = {path: set(page.ids) for path, page in sites.pages.items()}
    reached, left = set(), [os.path.join(sites.site, "index.html")]
    while left:
        path = left.pop()
        if path in reached:
            continue
        reached.add(path)
        for target, fragment in sites.pages[path].targets() if path in sites.pages else ():
            assert os.path.isfile(target), f"{path} leads to {target}"
            assert not fragment or fragment in ids[target], f"{path} leads to {target}#{fragment}"
            left.append(target)
    assert set(sites.pages) <= reached, sorted(set(sites.pages) - reached)[:3]
    names = [os.path.relpath(path, sites.site).lower() for path in sites.pages]
    assert len(set(names)) == len(names), "names that differ in case only"
    assert len([name for name in names if name.startswith("s/")]) == len(set(s.split()[0] for s in open(
        sites.large + "/pgopti.spi", encoding="utf-8"))), "a page for each source"


def test_figures_and_colours_are_those_of_the_report(sites, _):
    assert site_totals(sites.site + "/index.html") == report_totals(sites.large)
    compared = 0
    for source in [LONG, "src/marked.c"] + [f"src/part{i}/file{i}.c" for i in range(23)]:
        listing = source.upper().replace("/", "_").replace(".", "_") + "_SRC.HTML"
        expected = listing_lines(os.path.join(sites.large, "CodeCoverage", listing))
        shown = sites.pages[os.path.join(sites.site, sites.page_of(source))].lines
        assert len(shown) == len(expected), (source, len(shown), len(expected))
        for number, (ours, theirs) in enumerate(zip(shown, expected), 1):
            assert ours == theirs, f"{source}:{number}\n{ours}\n{theirs}"
            compared += 1
    assert compared > 10000


def test_nothing_to_cover_is_a_dash(sites, _):
    page = sites.pages[os.path.join(sites.site, "s/src~empty.c.html")]
    assert "<th scope=row>Lines<td>0<td>0<td>–" in page.text


def test_a_page_is_light(sites, _):
    page = sites.pages[os.path.join(sites.site, "s/src~long.c.html")]
    with open(os.path.join(sites.large, LONG), "rb") as file:
        source = file.read()
    lines = source.count(b"\n")
    escaped = len(source) + 4 * source.count(b"&") + 3 * source.count(b"<") + 3 * source.count(b">")
    bare = re.sub(r" data-c=[^ ]* title=\"[^\"]*\"", "", page.text)
    no_colours = re.sub(r"</?[biq]>", "", bare)
    size, elements = len(no_colours.encode()) - escaped, len(re.findall(r"<[a-z]", no_colours))
    print(f"    {size / lines:.1f} bytes and {elements / lines:.2f} elements a line; "
          f"colours {100 * (len(bare) - len(no_colours)) / len(page.text):.1f} % of the page")
    assert size <= 52 * lines and elements <= 1.5 * lines
    assert len(bare) - len(no_colours) <= 0.25 * len(page.text)
    assert os.path.getsize(sites.site + "/site.js") <= 4096


def test_lists_are_light_whatever_the_names_are(sites, _):
    program = Program(os.path.join(sites.root, "wide"))
    for i in range(1001):
        program.add(f"{'Dir' * 30}/{'<&>' * 60}{i:05}.c", b"\n" * 5, [("<&>" * 60 + str(i), 1, [(2, 1, 2 ** 63), (3, 1, 0)])])
    program.write(os.path.join(BUILD, "tests", "tools", "vexcov-profile-text"))
    sites.make(program.folder, "site")
    lists = [path for folder in (sites.site, os.path.join(program.folder, "site"))
             for path in glob.glob(folder + "/**/*.html", recursive=True) if "/s/" not in path]
    assert len(lists) > 30 and all(os.path.getsize(path) <= 300 * 1024 for path in lists)


def test_the_same_bytes_always(sites, _):
    place = os.path.join(sites.root, "another place")  # where all files are younger, too
    shutil.copytree(sites.large, place, copy_function=shutil.copyfile, ignore=shutil.ignore_patterns("site", "CodeCoverage"))
    sites.make(place, "again", env=dict(os.environ, LC_ALL="C.UTF-8", TZ="Asia/Tokyo", LANG="de_DE.UTF-8"))
    must("diff", "-r", sites.site, os.path.join(place, "again"))
    shutil.rmtree(place)


def test_changes(sites, browser):
    folder = os.path.join(sites.large, "changed")
    page = Page(folder + "/changes.html")
    assert not page.faults and len(page.lines) == 6, page.faults
    assert "class=new data-c=4" in page.text and ">+3</a>" in page.text and 'class="x new">+4</a>' in page.text
    assert ">+3</a>" in Page(folder + "/s/src~marked.c.html").text
    for target, fragment in page.targets():
        assert os.path.isfile(target) and (not fragment or fragment in Page(target).ids)
    start = Page(folder + "/index.html").text
    assert start.count("<td>0<td>0.00") == 4, "nothing has changed since the same figures"


def test_a_copy_is_the_source(sites, browser):
    tab = browser.new_page()
    for source in [*COPIED, LONG, "src/marked.c", "src/script.py"]:
        tab.open(sites.url(sites.page_of(source)))
        with open(os.path.join(sites.large, source), encoding="utf-8", newline="") as file:
            assert tab.run(SELECT) == file.read(), source


def test_without_script_all_is_there(sites, browser):
    tab = browser.new_page(scripts=False)
    tab.open(sites.url("s/src~long.c.html", "#9000"))
    time.sleep(0.3)
    tab.call("DOM.enable")
    text = tab.call("DOM.getOuterHTML", nodeId=tab.call("DOM.getDocument")["root"]["nodeId"])["outerHTML"]
    assert text.count("tabindex=\"-1\">") > 0 and "<button" not in text
    tab.call("Emulation.setScriptExecutionDisabled", value=False)
    top = tab.run("document.getElementById('9000').getBoundingClientRect().top")
    assert abs(top) < 30, f"line 9000 is at {top}"


class Server(http.server.SimpleHTTPRequestHandler):
    policy = ""

    def end_headers(self):
        self.send_header("Content-Security-Policy", Server.policy)
        self.send_header("Cache-Control", "no-store")
        super().end_headers()

    def log_message(self, *_):
        pass


def test_policies_have_no_complaint(sites, browser):
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Server, directory=sites.large))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    base = f"http://127.0.0.1:{server.server_port}/"
    tab = browser.new_page()
    for Server.policy in POLICIES:
        for name in ("site/index.html", "site/s/src~long.c.html", "site/d/src.html", "site/files.html",
                     "site/functions.html", "site/help.html", "changed/changes.html"):
            tab.open(base + name)
            time.sleep(0.2)
            assert not tab.complaints(), (Server.policy, name, tab.complaints())
            assert all(url.startswith(base) for url in tab.requests()), tab.requests()
            assert any(url.endswith("site.js") for url in tab.requests()) == (Server.policy == POLICIES[1])
    server.shutdown()
    for name in ("index.html", "s/src~marked.c.html"):
        tab.open(sites.url(name))
        assert not tab.complaints() and all(url.startswith("file://" + sites.site) for url in tab.requests())


def test_nothing_hostile_runs(sites, browser):
    tab = browser.new_page()
    name = next(os.path.relpath(p, sites.site) for p in sites.pages if "script==3ealert" in p)
    for page in (name, "index.html", "functions.html", "files-by-name.html"):
        tab.open(sites.url(page))
        assert not tab.complaints(), tab.complaints()
        assert tab.run("document.scripts.length") == 1 and not tab.run("document.querySelector('main b script')")
    assert os.path.getsize(os.path.join(sites.site, name)) < 1 << 20


def test_accessible(sites, browser):
    with open(AXE, encoding="utf-8") as file:
        axe = file.read()
    names = ["index.html", "s/src~part3~file3.c.html", "s/src~marked.c.html", "d/src~part3.html", "functions.html",
             "files.html", "help.html", sites.page_of("copy/words.c"), "../changed/changes.html", "../changed/index.html"]
    rules = "['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'best-practice']"
    for dark in (False, True):
        tab = browser.new_page(dark=dark)
        for name in names:
            tab.open(sites.url(name))
            # Rows are alike, and the rules take their time for each.
            tab.run("document.querySelectorAll('tr:nth-child(n+20)').forEach((row) => row.remove())")
            tab.run("document.querySelectorAll('details').forEach((each) => { each.open = true; })")
            tab.run(axe)
            found = tab.run(f"axe.run(document, {{ runOnly: {rules} }}).then((result) => result.violations.map("
                            "(each) => [each.id, each.nodes.length, each.nodes[0].html, each.nodes[0].failureSummary]))")
            assert not found, (dark, name, found)
        tab.close()


def test_keyboard(sites, browser):
    tab = browser.new_page()
    name = next(os.path.relpath(path, sites.site) for path, page in sorted(sites.pages.items())
                if "u3" in page.ids and "~part" in path)
    tab.open(sites.url(name))
    places = tab.run("document.querySelectorAll('.code [id^=u]').length")
    controls = tab.run("document.querySelectorAll('a[href]:not([tabindex]), button, input, summary').length")
    hidden = tab.run("document.querySelectorAll('details:not([open]) a').length")
    stops = set()
    for _ in range(controls + 5):
        tab.press("Tab", key_code=9)
        stops.add(tab.run("(() => { const e = document.activeElement; return [...document.querySelectorAll('*')].indexOf(e)"
                          " + (e.closest('.code') ? ' code' : ''); })()"))
    assert len([stop for stop in stops if "code" in stop]) == 2 * places, "Tab stops in the code at uncovered places"
    assert len(stops) >= controls - hidden, (len(stops), controls, hidden)
    tab.open(sites.url(name))
    seen = []
    for key in "nnp":
        tab.press(key, "Key" + key.upper(), ord(key.upper()), key)
        seen.append(tab.run("document.activeElement.id"))
    assert seen == ["u1", "u2", "u1"], seen
    tab.open(sites.url("files.html"))
    tab.press("/", "Slash", 191, "/")
    assert tab.run("document.activeElement.type") == "search"
    tab.run("(() => { const e = document.activeElement; e.value = 'part7/'; e.oninput(); })()")
    assert tab.run("[...document.querySelectorAll('tbody tr:not([hidden])')].every((row) => /part7/.test(row.textContent))")
    tab.run("document.querySelector('th:nth-child(3) button').click()")
    values = tab.run("[...document.querySelectorAll('tbody tr')].map((row) => +row.cells[2].textContent.replace(/,/g, ''))")
    assert values == sorted(values, reverse=True) and len(values) > 400
    tab.open(sites.url("functions.html"))
    tab.run("document.querySelectorAll('tbody tr:nth-child(7n) td:nth-child(6)').forEach((cell) => cell.textContent = '–')")
    tab.run("document.querySelector('th:nth-child(6) button').click()")
    values = tab.run("[...document.querySelectorAll('tbody tr')].map((row) => row.cells[5].textContent)")
    values = [-1 if value == "–" else float(value) for value in values]
    assert values == sorted(values, reverse=True) and values[-1] == -1, values
    before = tab.run("getComputedStyle(document.documentElement).backgroundColor")
    tab.run("[...document.querySelectorAll('header button')].pop().click()")
    assert tab.run("getComputedStyle(document.documentElement).backgroundColor") != before


def test_own_style_holds_in_both_themes(sites, browser):
    for dark in (False, True):
        tab = browser.new_page(dark=dark)
        tab.open(sites.url("../changed/s/src~long.c.html"))
        assert tab.run("getComputedStyle(document.querySelector('pre u:not([class])')).backgroundColor") == "rgb(1, 2, 3)"
        tab.close()


def test_signs_can_be_read(sites, browser):
    """What axe-core does not look at: signs and counts, which style sheets draw, and text in pictures."""
    pairs = [(sign, back) for sign in ("block-sign", "function-sign", "partial-sign", "infeasible-sign", "ran", "link", "soft")
             for back in ("back", "panel", "target") if (sign, back) != ("link", "target")]
    pairs += [("text", "panel"), ("text", "function")]
    pairs += [(f"on-{'dark' if step < 3 else 'light'}", f"s{step}") for step in range(7)]
    for dark in (False, True):
        tab = browser.new_page(dark=dark)
        tab.open(sites.url("help.html"))
        for pair in pairs:
            ratio = tab.run(CONTRAST % pair)
            assert ratio >= 4.5, (dark, pair, ratio)
        tab.close()


def test_narrow_and_large(sites, browser):
    tab = browser.new_page(width=400, height=800)
    for name in ("index.html", "s/src~part3~file3.c.html", "s/src~long.c.html", "files.html", "functions.html",
                 "help.html", "d/src.html"):
        for width in (400, 320):  # 320 is a window of 1280 at 400 %
            tab.resize(width, 640)
            tab.open(sites.url(name))
            assert tab.run("document.documentElement.scrollWidth") <= width, (name, width)
            labels = tab.run("[...document.querySelectorAll('.map text')].map((text) => text.getBoundingClientRect().height)")
            assert not labels or min(labels) > 8, (name, min(labels))


def paint_time(tab, url):
    """Milliseconds until the page is there and painted."""
    tab.open("about:blank")
    tab.open(url)
    return tab.run("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() => "
                   "done(performance.now()))))")


def test_painted_in_half_the_time_of_genhtml(sites, browser):
    folder = os.path.join(sites.large, "traced")
    must(os.path.join(BUILD, "vexcov-export"), "lcov", "-o", "all.info", *sites.options, cwd=sites.large)
    with open(os.path.join(sites.large, "all.info"), encoding="utf-8", errors="surrogateescape") as file:
        records = file.read().split("end_of_record\n")
    with open(os.path.join(sites.large, "long.info"), "w", encoding="utf-8") as file:
        file.writelines(record + "end_of_record\n" for record in records if LONG in record)
    must("genhtml", "-q", "-o", folder, "long.info", cwd=sites.large, stderr=subprocess.DEVNULL)
    addresses = (sites.url("s/src~long.c.html"),
                 "file://" + glob.glob(folder + "/**/long.c.gcov.html", recursive=True)[0])
    tab = browser.new_page()
    # One behind the other, so that a slow moment of the machine meets both.
    times = [[paint_time(tab, url) for url in addresses] for _ in range(9)]
    ours, theirs = (statistics.median(column) for column in zip(*times))
    print(f"    {ours:.0f} ms, genhtml {theirs:.0f} ms")
    assert statistics.median(row[0] / row[1] for row in times) <= 0.5


def test_print(sites, browser):
    tab = browser.new_page()
    tab.open(sites.url("s/src~part3~file3.c.html"))
    tab.call("Emulation.setEmulatedMedia", media="print")
    assert tab.run("getComputedStyle(document.querySelector('header')).display") == "none"
    assert len(tab.call("Page.printToPDF")["data"]) > 10000
    tab.run("document.documentElement.dataset.theme = 'dark'")
    assert tab.run("getComputedStyle(document.body).color") == "rgb(29, 35, 48)", "paper is white"


def main():
    root = tempfile.mkdtemp(prefix="vexcov-site-")
    passed, failed = 0, 0
    try:
        sites = Sites(root)
        with Browser() as browser:
            for name, test in list(globals().items()):
                if not name.startswith("test_") or (sys.argv[3:] and name not in sys.argv[3:]):
                    continue
                if test is test_accessible and not os.path.exists(AXE):
                    print(f"{name}: left out, as there is no axe-core")
                    continue
                started = time.time()
                try:
                    test(sites, browser)
                    passed += 1
                    print(f"{name}: ok ({time.time() - started:.1f} s)")
                except (AssertionError, RuntimeError, subprocess.CalledProcessError, StopIteration, KeyError):
                    failed += 1
                    print(f"{name}: FAILED")
                    traceback.print_exc(file=sys.stdout)
    finally:
        shutil.rmtree(root, ignore_errors=True)
    print(f"{passed} passed, {failed} failed")
    return failed != 0


if __name__ == "__main__":
    sys.exit(main())
