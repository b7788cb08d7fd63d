#!/usr/bin/env python3
"""Pages as newsletter builders and word processors write them, and the plain texts made from them.

    test_pages.py          the test: each page's text is the one beside it, which people have read; and whatever it is,
                           each visible word and each link's target stands in it, in the order of the page
    test_pages.py --write  writes the texts anew, to be read by somebody before they are kept

The program's text comes from $QUILLCAST_HTML_TEXT. What is visible is worked out by Python's reader of HTML.
"""
import html.parser
import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
PROGRAM = os.environ.get("QUILLCAST_HTML_TEXT", TOP / "build/release/bin/html_text")
DESIGNS = sorted((TOP / "data/templates").glob("*.html"))
PAGES = sorted(Path(__file__).with_name("pages").glob("*.html")) + DESIGNS
OTHERS = sorted(set((TOP / "data").rglob("*.htm*")) - set(DESIGNS))  # what is installed has to read as well

VOID = set("area base br col embed hr img input link meta param source wbr".split())
SILENT = set("head title style script noscript template textarea iframe".split())
PARTS = VOID - {"wbr"} | set(  # what parts words; "img" is void
    "address article aside blockquote body caption center dd details dir div dl dt fieldset figcaption figure footer form h1 "
    "h2 h3 h4 h5 h6 header legend li main menu nav ol p pre section summary table tbody td tfoot th thead title tr ul".split())
HIDDEN = re.compile(r"display:none|visibility:hidden|opacity:0(?![.\d])|max-height:0(px)?(?![.\d%a-z])")
FILLER = re.compile("[\u00AD\u034F\u200B\u2060\uFEFF]")
WIDE = re.compile("[\u1100-\u11FF\u3000-\u9FFF\uAC00-\uD7A3\uF900-\uFAFF\uFF00-\uFF60]")  # may be parted by a line end
NO_TARGET = re.compile(r"#|javascript:|data:|cid:|file:", re.IGNORECASE)


class Page(html.parser.HTMLParser):
    """The words that a person sees, and for each link its words and its target."""

    def __init__(self, text):
        super().__init__(convert_charrefs=True)
        self.words, self.links, self.open, self.link, self.link_end = "", [], [], None, None
        self.feed(text)
        self.close()

    def is_hidden(self):
        return any(hidden for _, hidden in self.open)

    def handle_starttag(self, tag, attributes):
        given = {name: value or "" for name, value in attributes}
        style = re.sub(r"\s", "", given.get("style", "").lower())
        hidden = tag in SILENT or "hidden" in given or bool(HIDDEN.search(style)) or "mso-list:ignore" in style
        if tag in PARTS:
            self.words += "\n"
        if tag not in VOID:
            self.open.append((tag, hidden))
        if self.is_hidden() or hidden:
            return
        if tag in ("a", "area"):
            self.end_link()
            self.words += " " if self.link_end == len(self.words) else ""  # two links are two words
            self.link = (given.get("href", "").strip(), len(self.words))
        if tag in ("img", "area") and not re.fullmatch(r"\S+\.(png|jpe?g|gif)", given.get("alt", "").lower()):
            self.words += given.get("alt", "") + " "
        if tag == "area":
            self.end_link()
        if tag == "q":
            self.words += '"'

    def handle_endtag(self, tag):
        if tag == "q":
            self.words += '"'
        if tag == "a":
            self.end_link()
        if tag in PARTS:
            self.words += "\n"
        if any(name == tag for name, _ in self.open):
            while self.open.pop()[0] != tag:
                pass

    def end_link(self):
        if self.link and self.link[0] and not NO_TARGET.match(self.link[0]):
            self.links.append((self.link[0], self.words[self.link[1]:]))
            self.link_end = len(self.words)
        self.link = None

    def handle_data(self, data):
        if not self.is_hidden():
            self.words += data


def shown(target):
    """A target as a reader types it."""
    if target.lower().startswith("mailto:"):
        address, _, asked = target[7:].partition("?")
        return target if address and asked else address
    return target[4:] if target.lower().startswith("tel:") else target


def bare(text):
    return re.sub(r"^https?://|^www\.|/$|[\s()./-]", "", re.sub(r"^https?://(www\.)?", "", text.strip().lower()))


def says(words, target):
    """Whether the words of a link are its target, or the same number as it is dialled at home."""
    said, wanted = bare(words), bare(target)
    return said == wanted or (said.isdigit() and said[0] == "0" and wanted[0] == "+" and wanted.endswith(said[1:]))


def words_of(text):
    return WIDE.sub(r" \g<0> ", text).split()


def once(items):
    return [item for n, item in enumerate(items) if n == 0 or items[n - 1] != item]


def kept(page):
    """Where a page's text stands. The designs are installed without theirs."""
    return (Path(__file__).with_name("pages") / page.name).with_suffix(".txt")


def text_of(page):
    return subprocess.run([PROGRAM], input=page, capture_output=True, check=True).stdout.decode()


class Pages(unittest.TestCase):
    maxDiff = None

    def check_words_and_links(self, name, source, text):
        page = Page(source)
        text = re.sub(r"(?m)^(> ?)+", "", text)
        expected = [shown(target) for target, words in page.links if shown(target) and not says(words, shown(target))]
        marks = re.compile(r"\s*<(" + "|".join(map(re.escape, sorted(expected, reverse=True))) + ")>")
        if expected:
            self.assertEqual(once(marks.findall(text)), once(expected), f"{name}: targets")
            text = marks.sub("", text)
        left = words_of(FILLER.sub("", page.words))
        for word in words_of(text):
            if left and (left[0] == word or left[0].strip("\u200C\u200D") == word):
                left.pop(0)
            else:  # the sign of an item or a rule
                self.assertRegex(word, r"\A(-|----|\d+\.|[ivxlcdm]+\.|[a-z]+\.|[A-Z]+\.|\d+\)|--)\Z",
                                 f"{name}: not in the page, before {left[:5]}")
            while left and not left[0].strip("\u200C\u200D"):
                left.pop(0)
        self.assertEqual(left, [], f"{name}: words that are missing")

    def test_each_page_reads_as_it_was_read(self):
        self.assertGreaterEqual(len(PAGES), 30 + 5)
        self.assertEqual(len(DESIGNS), 5)
        for page in PAGES:
            with self.subTest(page.stem):
                self.assertEqual(text_of(page.read_bytes()), kept(page).read_text())

    def test_each_word_and_each_target_is_there_in_order(self):
        for page in PAGES + OTHERS:
            with self.subTest(page.stem):
                self.check_words_and_links(page.stem, page.read_text(), text_of(page.read_bytes()))

    def test_no_line_is_too_long_that_can_be_broken(self):
        for page in PAGES:
            if "<pre" in page.read_text():
                continue
            for line in kept(page).read_text().splitlines():
                content = line.lstrip("> -").lstrip("0123456789. ")
                if len(line) > 76:
                    self.assertNotIn(" ", content, page.stem)


if __name__ == "__main__":
    if "--write" in sys.argv:
        for file in PAGES:
            kept(file).write_text(text_of(file.read_bytes()))
    else:
        unittest.main()
