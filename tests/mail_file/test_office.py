#!/usr/bin/env python3
"""A program for texts that is not ours opens what `message extract -f rtf` writes: it finds the words, the cells of tables
and the pictures of the page. Skipped where there is no such program.
"""
import html.parser
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zlib
from email.message import EmailMessage
from pathlib import Path
from xml.etree import ElementTree

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "cli"))
from quillcast import PROGRAM, left_out  # noqa: E402

OFFICE = shutil.which("soffice")
PAGES = Path(__file__).resolve().parents[1] / "html" / "pages"


def chunk(kind, data):
    return len(data).to_bytes(4, "big") + kind + data + zlib.crc32(kind + data).to_bytes(4, "big")


def png(width, height):
    head = width.to_bytes(4, "big") + height.to_bytes(4, "big") + b"\x08\x02\x00\x00\x00"
    rows = (b"\x00" + b"\x20\x80\xC0" * width) * height
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


class Seen(html.parser.HTMLParser):
    """The words, the cells and the pictures of a page that hides nothing."""

    def __init__(self, page):
        super().__init__()
        self.text, self.cells, self.pictures, self.skipping = [], 0, 0, 0
        self.feed(page)

    def handle_starttag(self, tag, attributes):
        self.skipping += tag in ("title", "style")
        self.cells += tag in ("td", "th")
        self.pictures += tag == "img" and dict(attributes).get("src", "").startswith("cid:")
        self.text.append("" if tag in ("b", "i", "u", "a", "span", "font", "em", "strong", "sub", "sup", "s") else " ")

    def handle_endtag(self, tag):
        self.skipping -= tag in ("title", "style")

    def handle_data(self, data):
        if not self.skipping:
            self.text.append(data)

    def words(self):
        return "".join(self.text).split()


LETTER = """<html><head><title>no word</title></head><body bgcolor=#ffffff>
<h1 align=center>Grüße aus Zürich – 你好 😀</h1>
<p style="font-family: Verdana, sans-serif; font-size: 14px; color: #336699">Dear <b>Ada</b> &amp; <i>Bob</i>,
{braces} and \\backslashes\\ stay.</p>
<p dir=rtl>مرحبا بالعالم</p>
<ul><li>one<li>two<ol type=a><li>deep</ol></ul>
<ol start=4><li>four<li>five</ol>
<table border=1><tr><th>Name<th>City<tr><td>Ada<td rowspan=2>London<tr><td>Bob<tr><td colspan=2>both</table>
<table width=600><tr><td><table><tr><td>inner one<td>inner <b>two</b><tr><td colspan=2>
<table border=1><tr><td>third<td><img src="cid:logo" width=40></table></table><td>beside</table>
<blockquote>quoted <a href="https://example.org/?a=1&amp;b=2">a link</a></blockquote>
<pre>  as   it
stands</pre><hr>
<p>H<sub>2</sub>O <s>struck</s> <img src="cid:photo"> <img src="cid:logo"></p></body></html>
"""


class Office(unittest.TestCase):
    def setUp(self):
        if not OFFICE:
            left_out("rich text in a program for texts", "none is installed (libreoffice-writer-nogui)")
            self.skipTest("no program for texts")
        self.folder = Path(tempfile.mkdtemp(prefix="quillcast-office-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def convert(self, files, kind, ending):
        subprocess.run([OFFICE, f"-env:UserInstallation=file://{self.folder}/office", "--headless", "--convert-to", kind,
                        "--outdir", self.folder, *files], check=True, capture_output=True, timeout=300)
        return [file.with_suffix(ending) for file in files]

    def extract(self, name, page):
        message = EmailMessage()
        message["Subject"] = "x"
        message.set_content(page, subtype="html", cte="base64")
        for picture, size in (("logo", (40, 20)), ("photo", (1200, 600))):
            message.add_related(png(*size), "image", "png", cid=f"<{picture}>")
        file = self.folder / f"{name}.eml"
        file.write_bytes(bytes(message))
        rtf = file.with_suffix(".rtf")
        subprocess.run([PROGRAM, "--profile", self.folder / "profile", "message", "extract", file, "--body", rtf, "-f",
                        "rtf"], check=True, capture_output=True)
        return rtf

    def test_a_letter_with_everything(self):
        [flat] = self.convert([self.extract("letter", LETTER)], "fodt", ".fodt")
        body = ElementTree.parse(flat).getroot().find(".//{*}body")
        seen = Seen(LETTER)
        text = []
        cells = pictures = 0
        for element in body.iter():
            tag = element.tag.split("}")[-1]
            cells += tag == "table-cell"
            pictures += tag == "image"
            if tag in ("p", "h"):
                text.append(words_of(element))
        self.assertEqual(" ".join(text).split(), seen.words())
        self.assertEqual((cells, pictures), (seen.cells, seen.pictures))

    def test_the_pages_of_others(self):
        """Their words; blanks between them are their pages' affair."""
        names = {page.stem: page for page in PAGES.glob("*.html")}
        files = [self.extract(name, page.read_text(encoding="utf-8")) for name, page in sorted(names.items())]
        for text in self.convert(files, "txt:Text (encoded):UTF8", ".txt"):
            with self.subTest(text.stem):
                ours = "".join(text.read_text(encoding="utf-8").replace("\u00ad", "").split())
                wanted = re.sub(r"<\S+>", "", names[text.stem].with_suffix(".txt").read_text())
                self.assertEqual([word for word in re.findall(r"\w{4,}", wanted) if word not in ours], [])


def words_of(paragraph):
    """The text of a paragraph without that of the boxes in it; blanks and tabs are elements."""
    out = [paragraph.text or ""]
    for child in paragraph:
        tag = child.tag.split("}")[-1]
        if tag in ("s", "tab", "line-break"):
            out.append(" ")
        elif tag not in ("frame",):
            out.append(words_of(child))
        out.append(child.tail or "")
    return "".join(out)


if __name__ == "__main__":
    unittest.main()
