"""Message files by command: what is shown of them, to people and to programs, and how it ends."""
import base64
import email
import email.policy
import hashlib
import json
import os
import shutil
import re
import signal
import struct
import subprocess
import time
import unittest
import zlib
from pathlib import Path
from unittest import mock
from urllib.parse import quote
from xml.etree import ElementTree

from quillcast import PROGRAM, Case, left_out

XMLLINT = shutil.which("xmllint")
FILES = Path(__file__).resolve().parent.parent / "mail_file" / "files"


def sample(name):
    return str(FILES / f"{name}.eml")


def picture(width, height=50):
    """A red PNG with a blue right edge, as an image of a page."""
    def chunk(name, content):
        return struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))
    lines = (b"\0" + b"\xff\0\0" * (width - 40) + b"\0\0\xff" * 40) * height
    content = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
               chunk(b"IDAT", zlib.compress(lines)) + chunk(b"IEND", b""))
    return f"<img src='data:image/png;base64,{base64.b64encode(content).decode()}'"


def count_blue_edges(pdf):
    """In the middle of the pictures at the top of the first page."""
    drawn = subprocess.run(["pdftoppm", "-r", "72", "-l", "1", pdf], capture_output=True, check=True).stdout
    width, begin = (lambda head: (int(head[1]), head.end()))(re.match(rb"P6\s+(\d+) \d+\s+255\s", drawn))
    line = drawn[begin + 65 * width * 3:][:width * 3]
    is_blue = "".join("B" if line[at] < 60 and line[at + 2] > 200 else "-" for at in range(0, len(line), 3))
    return len(re.findall("-B+(?=-)", is_blue))


class Message(Case):
    def show(self, *arguments, data=None):
        done = subprocess.run([PROGRAM, "--profile", str(self.profile), *arguments], input=data, capture_output=True,
                              timeout=60, stdin=None if data is not None else subprocess.DEVNULL)
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    def test_shows_people_what_is_in_it(self):
        code, out, err = self.show("message", "show", sample("stamps"))
        self.assertEqual((code, err), (0, ""))
        self.assertEqual(out.splitlines(), [
            "From:    Ada <ada@example.org>", "To:      Bob <bob@example.net>", "Subject: Test",
            "Date:    Sat, 14 Nov 2026 22:40:05 +0100", "", "Parts:", "    0  text/plain  3 bytes  body", "",
            "The way it came, the last hop first:",
            "  2026-11-14 22:40:09   +60  +4 s  by store.example.org  from mx.example.net (mx.example.net [192.0.2.7])"
            "  with ESMTPS  for bob@example.org",
            "  2026-11-14 16:40:05  -300  +65 s  by mx.example.net  via UUCP", "  2026-11-14 21:39:00    +0",
            "  at an unknown time", "", "x", ""])
        for file, shown in (("charset_in_page", "\nПривет\n"), ("tnef", '      text/plain  "Long näme.txt"  12 bytes  attachment'),
                            ("yenc", '"a b.bin"  attachment  cannot be decoded: yEnc'), ("nested_message", "\nsee below\n"),
                            ("recipients", 'To:      "Last, First" <lf@example.net>\n')):
            self.assertIn(shown, self.show("message", "show", sample(file))[1], file)

    def test_nothing_of_a_message_reaches_a_terminal_unescaped(self):
        bad = "\x1b[31m\u202e\x9b\x00\u2028\x07"
        message = (f"From: {bad} <{bad}@x.org>\nTo: {bad}\nSubject: {bad}\nDate: {bad}\nReceived: from {bad} by {bad} with {bad}\n"
                   f" via {bad} for {bad}; {bad}\nContent-Type: multipart/mixed; boundary=\"{bad}\"\n\n--{bad}\n\n{bad}\n--{bad}\n"
                   f"Content-Type: text/{bad}; name=\"{bad}\"\nContent-Transfer-Encoding: {bad}\n\nx\n--{bad}--\n")
        name = self.write("\x1b[32m.eml", message)
        for arguments in (["message", "show", name, sample("names")], ["--json", "message", "show", name, sample("names")]):
            _, out, err = self.show(*arguments)
            self.assertIn("etc/passwd", out)
            for c in out + err:
                self.assertFalse((c < " " and c != "\n") or "\x7f" <= c < "\xa0" or c in "\u202e\u2028", repr(c))

    def test_gives_programs_an_object_a_message(self):
        content = Path(sample("related")).read_bytes()
        code, out, err = self.show("--json", "message", "show", sample("related"), "-", sample("stamps"), data=content)
        first, piped, stamps = [json.loads(line) for line in out.splitlines()]
        self.assertEqual((code, err), (0, ""))
        self.assertEqual((first.pop("file"), piped.pop("file")), (sample("related"), "-"))
        self.assertEqual(first, piped)
        self.assertEqual(first["headers"][0], {"name": "From", "value": "Ada <ada@example.org>"})
        self.assertEqual(first["recipients"], [{"field": "To", "name": "Bob", "address": "bob@example.net"}])
        self.assertEqual(first["time"], {"local": "2026-11-14 22:40:05", "bias": "+60", "unix": 1794692405})
        png = b"\x89PNG\r\n\x1a\n"
        self.assertEqual(first["parts"][3], {
            "part": 3, "parent": 1, "type": "image/png", "charset": "", "encoding": "base64", "name": "p.png",
            "content_id": "p@x", "marker": "attachment", "size": len(png), "sha256": hashlib.sha256(png).hexdigest()})
        self.assertEqual([(part["parent"], part["marker"]) for part in first["parts"]],
                         [(None, ""), (0, ""), (1, "body"), (1, "attachment"), (0, "attachment")])
        self.assertEqual([stamp["delay"] for stamp in stamps["stamps"]], [4, 65, None, None])
        self.assertEqual(stamps["stamps"][0]["time"], {"local": "2026-11-14 22:40:09", "bias": "+60", "unix": 1794692409})

    def test_goes_on_behind_a_file_that_is_none(self):
        """Rows of (files, exit code, what is said, how many are shown)."""
        empty, absent = self.write("empty.eml", ""), str(self.folder / "absent.eml")
        for files, code, said, shown in [
            ([sample("plain")], 0, "", 1),
            ([empty], 66, "Error 258: File IO error.", 0),
            ([absent, sample("plain")], 66, "absent.eml", 1),
            ([str(self.folder)], 66, "Error 258: File IO error.", 0),
            (["-"], 66, '"standard input" is empty.', 0),
            ([self.write("list.txt", "milk\neggs\n")], 0, "list.txt: The file has no header fields, so it may be no message.", 1),
            ([sample("boundary_twice"), sample("plain")], 65, "Error 259: Could not find boundry mark.", 2),
            ([sample("binhex_cut")], 65, "Error 257: There was an error decoding a BINHEX message.", 1),
            ([sample("binhex_crc")], 65, "Error 1002: BINHEX CRC error.", 1),
            ([sample("encoding_unknown")], 65, "Error 275: Encoding method unknown.", 1),
            ([sample("tnef_cut")], 65, "Error 206: Exception.", 1),
        ]:
            told, out, err = self.show("--json", "message", "show", *files)
            self.assertEqual((told, len(out.splitlines())), (code, shown), files)
            self.assertIn(said, err)
        self.assertEqual(self.show("message", "show")[0], 64)

    def test_an_output_that_is_full_and_a_stop(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([PROGRAM, "--profile", self.profile, "message", "show", sample("plain")], stdout=full,
                                  stderr=subprocess.PIPE, text=True, timeout=60)
        self.assertEqual(done.returncode, 74, done.stderr)
        with subprocess.Popen([PROGRAM, "--profile", self.profile, "message", "show", sample("plain"), "-", sample("plain")],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdin.write(b"x" * 1_000_000)  # more than a pipe holds: by now it reads the second, which does not end
            process.stdin.flush()
            process.send_signal(signal.SIGINT)
            shown = process.stdout.read()
            self.assertEqual(process.wait(60), 75)
        self.assertEqual(shown.count(b"From:"), 1, "another was shown behind the stop")

    def test_reads_leniently_as_the_account_says(self):
        def parts(*options):
            return len(json.loads(self.show("--json", "message", "show", *options, sample("boundary_not_named"))[1])["parts"])
        self.assertEqual((parts(), parts("--extended")), (1, 3))
        self.account(25, "Extended=1")
        self.assertEqual(parts(), 3)

    def test_exports_what_other_readers_read(self):
        self.account(25)
        picture = b"GIF89a\1picture"
        self.write("dot.gif", picture)
        body = self.write("letter.html", '<meta charset="utf-8"><p>Grüße, $*MergeFirstName*$</p><img src="dot.gif">')
        price = self.write("price.bin", bytes(range(256)) * 300)
        target = self.folder / "out" / "letter.eml"
        command = ("message", "export", body, "--subject", "Für $*MergeTitle*$", "--attach", price, "-o", target)
        code, _, err = self.run_program(*command)
        self.assertEqual(code, 73, err)
        self.assertIn(str(target.parent), err)
        target.parent.mkdir()
        for size in (0, 4096, 60000):
            code, _, err = self.run_program(*command, fsize=size)
            self.assertEqual((code, list(target.parent.iterdir())), (74 if size else code, []), err)
            self.assertNotEqual(code, 0)
        self.assertEqual(json.loads(self.ok("--json", *command, "--draft"))["octets"], target.stat().st_size)
        message = email.message_from_bytes(target.read_bytes(), policy=email.policy.default)
        self.assertEqual((str(message["Subject"]), message["To"], message["X-Unsent"]), ("Für $*MergeTitle*$", None, "1"))
        self.assertIn("Grüße, $*MergeFirstName*$", message.get_body(("html",)).get_content())
        parts = {part.get_filename(): part.get_content() for part in message.walk() if part.get_filename()}
        self.assertEqual(parts, {"dot.gif": picture, "price.bin": bytes(range(256)) * 300})

    def test_makes_a_document_of_a_body(self):
        dot = b"GIF89a\1dot"
        file = self.write("in.eml", b"Subject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\r\nContent-Type: multipart/related; boundary=b\r\n\r\n"
                          b"--b\r\nContent-Type: text/html\r\n\r\n<script>x</script><p>Hi<img src=cid:a>\r\n--b\r\n"
                          b"Content-Type: image/gif; name=../dot.gif\r\nContent-ID: <a>\r\n\r\n" + dot + b"\r\n--b--\r\n")
        document = self.folder / "out" / "letter.htm"
        document.parent.mkdir()
        line = json.loads(self.ok("--json", "message", "import", file, "-o", document))
        self.assertEqual((line["subject"], line["document"]), ("Grüße", str(document)))
        self.assertIn('<p>Hi<img src="letter_files/dot.gif">', document.read_text())
        self.assertEqual({path.name: path.read_bytes() for path in document.parent.rglob("*.gif")}, {"dot.gif": dot})
        self.assertFalse((self.profile / "data" / "ImportBody").exists())
        before = document.read_bytes()
        sealed = self.write("sealed.eml", b"Content-Type: application/pkcs7-mime\r\n\r\nx")
        for options, code in (([file, "-o", document.with_suffix(".txt")], 64), ([file, file, "-o", document], 64),
                              ([sealed, "-o", document], 65), (["/nowhere.eml", "-o", document], 66), ([file, "-o", "/nowhere/a.htm"], 73)):
            self.assertEqual(self.run_program("message", "import", *options)[0], code, options)
        self.assertEqual(document.read_bytes(), before)

    def test_a_message_without_a_text_makes_no_empty_file(self):
        self.needs_desktop()
        out = self.folder / "out"
        for message, why in ((b"Content-Type: application/pkcs7-mime\r\n\r\nx", "it is encrypted"),
                             (b"Content-Type: image/png\r\n\r\nx", "The message has no text.")):
            letter = self.write("a.eml", message)
            for options in (["print", letter, "--pdf", out], ["print", letter, "--pdf", out, "-f", "text"],
                            ["extract", letter, "--body", out], ["extract", letter, "--body", out, "-f", "RTF"]):
                code, _, err = self.run_program("message", *options)
                self.assertEqual(code, 65, options)
                self.assertIn(why, err)
                self.assertNotIn("Error 2", err)
                self.assertFalse(out.exists(), options)
            code, _, err = self.run_program("message", "extract", letter, "--page", self.folder / "page")
            self.assertEqual((code, why in err, list((self.folder / "page").glob("*"))), (65, True, []))
            self.ok("message", "extract", letter, "--body", self.folder / "a.xml", "-f", "xml")
        picture = self.write("b.eml", b"Content-Type: image/gif; name=a.gif\r\n\r\nGIF89a")
        code, out, err = self.run_program("message", "print", picture, "--pdf", self.folder / "b.pdf", "-f", "text")
        self.assertEqual((code, out, "has no text" in err, "Error 2" in err), (65, "", True, False), err)

    def test_nothing_made_of_a_letter_takes_its_place(self):
        text = b"Subject: x\r\n\r\nHello\r\n"
        letter = self.write("self.eml", text)
        link = self.folder / "link.eml"
        link.symlink_to(letter)
        for command in (["import", letter, "-o"], ["print", letter, "--pdf"], ["import", link, "-o"]):
            if command[0] == "print":
                self.needs_desktop()
            for name in (letter, f"{self.folder}/./self.eml", link):
                code, out, err = self.run_program("message", *command, name)
                self.assertEqual((code, out), (77, ""), err)
                self.assertIn(" is the message file itself, and was left as it is.", err)
                self.assertEqual(Path(letter).read_bytes(), text)

    def test_a_long_text_is_told_and_not_shown(self):
        long = self.write("long.eml", "Subject: x\n\n" + "words and words\n" * 100_000)
        code, out, err = self.show("message", "show", long)
        self.assertEqual(code, 0)
        self.assertIn("1.5 MiB and is not shown", err)
        self.assertLess(len(out), 1000)

    def extract(self, *arguments, data=None):
        return self.show("message", "extract", *arguments, data=data)

    def test_extracts_what_is_asked_for(self):
        folder = self.folder / "out"
        folder.mkdir()
        code, out, err = self.show("--json", "message", "extract", sample("related"), "--parts", str(folder), "--page",
                                   str(folder), "--body-parts", "--stamps", str(folder / "stamps"))
        told = json.loads(out)
        self.assertEqual((code, told["no_stamps"], told["older_stamps_stay"], told["renamed"]), (0, True, False, 0))
        self.assertRegex(err, "^(quillcast: )?The message has no stamps, so there is no file of them.\n$")
        self.assertEqual(sorted([*told["parts"], told["page"], *told["pictures"]]), sorted(p.name for p in folder.iterdir()))
        page = (folder / told["page"]).read_text()
        self.assertIn(f'<img src="{quote(told["pictures"][0])}">', page)
        code, out, err = self.extract(sample("plain"), "-", "--parts", str(folder), data=Path(sample("related")).read_bytes())
        self.assertEqual(code, 0)
        self.assertRegex(err, "^(quillcast: )?2 files have other names than in the message.\n$")
        self.assertEqual(out.splitlines()[0], f"{sample('plain')}: 0 parts")

    def test_each_form_of_the_body_is_one(self):
        """Of every file that other tests read."""
        body = self.folder / "body"
        schema = Path(__file__).resolve().parents[2] / "docs" / "message.xsd"
        for file in sorted(FILES.glob("*.eml")):
            for form, begin, end in (("rtf", b"{\\rtf1", b"}\r\n"), ("html", b"", b"\r\n"), ("xml", b"<?xml", b"</message>\r\n")):
                code, _, err = self.extract(str(file), "--body", str(body), "-f", form, "--utf8")
                if not body.exists():
                    has_none = form != "xml" and code == 65 and "The message has no text" in err
                    self.assertTrue(has_none or file.stem == "empty", (file, err))
                    continue
                content = body.read_bytes()
                self.assertTrue(content.startswith(begin) and content.endswith(end), file)
                self.assertNotIn(b"<script", content.lower() if form == "html" else b"")
                if form == "xml":
                    ElementTree.fromstring(content)
                    if XMLLINT:
                        done = subprocess.run([XMLLINT, "--noout", "--schema", schema, body], capture_output=True, text=True)
                        self.assertEqual(done.returncode, 0, done.stderr)
                body.unlink()
        if not XMLLINT:
            left_out("XML against its schema", "there is no xmllint")

    def needs_desktop(self):
        if not Path(PROGRAM).with_name("quillcast-desktop").exists():
            left_out("message print", "quillcast-desktop is not built")
            self.skipTest("no quillcast-desktop")

    def print_pdf(self, *arguments, data=None, code=0):
        """(what it tells programs, what it says, the words of the PDF by page)"""
        pdf = self.folder / "out.pdf"
        told, out, err = self.show("--json", "message", "print", *arguments, "--pdf", str(pdf), data=data)
        self.assertEqual(told, code, err)
        text = subprocess.run(["pdftotext", "-layout", pdf, "-"], capture_output=True, text=True, check=True).stdout
        facts = subprocess.run(["pdfinfo", pdf], capture_output=True, text=True, check=True).stdout
        pages = [" ".join(page.split()) for page in text.split("\f")[:-1]]
        self.assertIn(f"Pages: {len(pages)}", " ".join(facts.split()))
        return json.loads(out), err, pages

    def test_prints_the_pages_of_a_message(self):
        self.needs_desktop()
        lines = [f"line {i}" for i in range(1, 201)]
        letter = "Subject: x\n\n" + "\n".join(lines) + "\n"
        with mock.patch.dict(os.environ, DISPLAY=":nowhere"):
            told, err, pages = self.print_pdf(self.write("a.eml", letter), "-f", "text", "--heading", "Für -x", "--bold")
        self.assertEqual((told["code"], told["pages"], told["left_out"], err), (0, len(pages), [], ""))
        self.assertGreater(len(pages), 2)
        for number, page in enumerate(pages, 1):
            self.assertTrue(page.startswith("Für -x line ") and page.endswith(f" {number}/{len(pages)}"), page)
        words = " ".join(page.removeprefix("Für -x ").rsplit(" ", 1)[0] for page in pages)
        self.assertEqual(words, " ".join(lines))
        piped = self.print_pdf("-", "-f", "text", "--margins", "60,99,10", "--pages", "2-3", data=letter.encode())
        self.assertEqual(len(piped[2]), 2)
        self.assertRegex(piped[2][1], r" 3/\d+$")
        self.assertGreater(int(piped[2][1].rsplit("/", 1)[1]), len(pages), "wider margins take more pages")
        for table in ("<table width=1500><tr><td>left<td align=right>right</table>",
                      "<table><tr><td width=1000>left<td width=1000>right</table>",
                      "<table width=900><tr><td>left<td><table width=1900><tr><td>x<td align=right>right</table></table>"):
            wide = self.print_pdf(self.write("wide.eml", b"Content-Type: text/html\n\n" + table.encode()))[2]
            self.assertRegex(wide[0], "left (x )?right", table)
        found = self.print_pdf(self.write("found.eml", "Content-Type: text/html\n\n<p>office <b style='font:9pt serif'>file flow"))
        self.assertIn("office file flow", found[2][0])  # no letters drawn as one, which no search finds
        self.assertIn("<?xml", self.print_pdf(sample("stamps"), "-f", "xml")[2][0])
        self.assertFalse((self.profile / "data" / "History").exists(), "no start of the window's program")

    def test_prints_letters_and_distances_as_large_as_a_screen_shows_them(self):
        """Rows of (page, one whose word is as high), and of (page, points left of its word)."""
        self.needs_desktop()

        def word(page):
            self.print_pdf(self.write("size.eml", f"Content-Type: text/html\n\n{page}"))
            boxes = subprocess.run(["pdftotext", "-bbox", self.folder / "out.pdf", "-"], capture_output=True, text=True,
                                   check=True).stdout
            box = re.search('xMin="([0-9.]+)" yMin="([0-9.]+)" xMax="[0-9.]+" yMax="([0-9.]+)">word<', boxes)
            left, top, bottom = map(float, box.groups())
            return left, bottom - top

        for page, other in (("<p>a <b style='font-size:12px'>word</b>", "<p>a <b style='font-size:9pt'>word</b>"),
                            ("<p>a <i style='font-size:16px'>word</i>", "<p>a <i style='font-size:12pt'>word</i>"),
                            ("<h1 style='font-size:16px'>word</h1>", "<p><b style='font-size:12pt'>word</b>"),
                            ("<div style='font-size:16px'><small style='font-size:75%'>word</small></div>",
                             "<p style='font-size:9pt'>word"),
                            ("<p style='font-size:1rem'>word", "<p>word"),
                            ("<td style='font:24px/1.5 serif'><font size=3>word", "<p style='font:10pt serif'>word")):
            self.assertAlmostEqual(word(page)[1], word(other)[1], delta=0.3, msg=page)
        left = word("<p>word")[0]
        for page, distance in (("<p style='margin-left:96px'>word", 72), ("<p style='text-indent:36pt'>word", 36),
                               ("<blockquote>word</blockquote>", 30), ("<ul><li>word</ul>", 30),
                               ("<table cellspacing=0 cellpadding=0><tr><td style='width:96px'>a<td>word</table>", 72),
                               (f"{picture(192)} style='width:48px'>word", 36)):
            self.assertAlmostEqual(word(page)[0] - left, distance, delta=1, msg=page)

    def test_keeps_what_is_wider_than_the_page_on_it(self):
        """Rows of (page, words, right edges of pictures)."""
        self.needs_desktop()
        for page, words, edges in (
                (f"{picture(1200)}><p>left right", "left right", 1),
                (f"{picture(100)} width=1900 height=90>", "", 1),
                (f"<table><tr><td>{picture(500)}><td>{picture(500)}></table>", "", 2),
                ("<table width='300%'><tr><td>left<td align=right>right</table>", "left right", 0)):
            with self.subTest(page=page[:40]):
                told, _, pages = self.print_pdf(self.write("wide.eml", f"Content-Type: text/html\n\n{page}"))
                self.assertEqual(told["left_out"], [])
                self.assertIn(words.replace(" ", ""), pages[0].replace(" ", ""))
                self.assertEqual(count_blue_edges(self.folder / "out.pdf"), edges)
        for page, words in (  # pictures of one page and a half
                (f"<p>before</p>{picture(600, 1500)}><p>after", ["before", "after"]),
                (f"<p>before {picture(600, 1500)}> after", ["before", "after"]),
                (f"<div>before</div>{picture(640, 900)}>", ["before"])):
            with self.subTest(page=page[:20]):
                pages = self.print_pdf(self.write("tall.eml", f"Content-Type: text/html\n\n{page}"))[2]
                self.assertEqual([re.sub(r" ?\d/\d$", "", page) for page in pages], words)
        told = self.print_pdf(self.write("wide.eml", "Content-Type: text/html\n\n<table><tr>" + "<td>a" * 5000))[0]
        self.assertEqual(told["left_out"], ["The message goes on: this is its beginning."])

    def test_tells_what_is_not_on_the_pages(self):
        """Rows of (type, body, what is said and printed)."""
        self.needs_desktop()
        on = "The message goes on: this is its beginning."
        picture = "1 picture was left out: too large, damaged, or of an unknown kind."
        damaged = Path(sample("related")).read_bytes()
        for name, message, left_out in (
                ("damaged.eml", damaged, [picture]),
                ("long.eml", b"Content-Type: text/html\n\n" + b"<p>a</p>\n" * 200_000, [on]),
                ("empty.eml", b"Subject: x\n\n" + b"\n" * 500_000, [on])):
            with self.subTest(name=name):
                told, err, pages = self.print_pdf(self.write(name, message))
                self.assertEqual(told["left_out"], left_out)
                self.assertLessEqual(told["pages"], 2000)
                for words in left_out:
                    self.assertIn(words, err)
                    self.assertIn(words, pages[-1])

    def test_a_print_that_fails_leaves_no_file(self):
        """Rows of (options, largest file, exit code, code, what is said)."""
        self.needs_desktop()
        pdf, folder = self.folder / "out.pdf", self.folder / "pages"
        folder.mkdir()
        plain = sample("plain")
        for options, fsize, code, number, said in (
                (["--printer", "nowhere"], None, 66, 202, 'Error 202: Invalid printer.\nquillcast: There is no printer of the name "nowhere".'),
                (["--pdf", "/nowhere/a.pdf"], None, 73, 203, "Error 203: Could not initialize printer."),
                (["--pdf", pdf], 4096, 74, 204, "Error 204: Could not write to printer."),
                (["--pdf", folder], 4096, 74, 204, "Error 204: Could not write to printer."),
                (["--pdf", pdf, "--pages", "9"], None, 64, 203, "There is no such page: the message has 1."),
                (["--pdf", pdf, "--pages", "x"], None, 64, 203, '"x" names no pages.'),
                (["--pdf", "-"], None, 64, None, "Nothing of a message is written to standard output."),
                (["--pdf", pdf, "--margins", "100"], None, 64, None, "Please enter a valid margin."),
                (["--pdf", pdf, "--margins", "9,,9"], None, 64, None, "Please enter your margin."),
                ([], None, 64, None, "--pdf FILE, or --printer NAME"),
                ([plain, "--pdf", pdf], None, 64, None, "would be replaced by each of the messages"),
                (["--pdf", self.profile / "data" / "x"], None, 77, None, "the program keeps its own files there")):
            told, out, err = self.run_program("--json", "message", "print", plain, *options, fsize=fsize)
            self.assertEqual((told, [json.loads(line)["code"] for line in out.splitlines()]), (code, [number] if number else []), err)
            self.assertIn(said, err)
            self.assertEqual((pdf.exists(), list(folder.iterdir())), (False, []), options)
        folder.rmdir()
        self.ok("message", "print", plain, plain, sample("stamps"), "--pdf", folder)
        self.assertEqual(sorted(p.name for p in folder.iterdir()), ["plain (2).pdf", "plain.pdf", "stamps.pdf"])
        alone = self.folder / "bin"
        alone.mkdir()
        shutil.copy(PROGRAM, alone / "quillcast")
        done = subprocess.run([alone / "quillcast", "--profile", self.profile, "message", "print", plain, "--pdf", pdf],
                              capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 69)
        self.assertIn("Pages are drawn by quillcast-desktop, which is not installed here.", done.stderr)

    def test_ctrl_c_ends_a_print(self):
        self.needs_desktop()
        long = self.write("long.eml", "Subject: x\n\n" + "words and words of a line\n" * 300_000)
        pdf = self.folder / "out.pdf"
        pdf.write_text("old")
        with self.popen("message", "print", long, "-f", "text", "--pdf", pdf) as process:
            children = Path(f"/proc/{process.pid}/task/{process.pid}/children")
            deadline = time.monotonic() + 30
            while not (child := children.read_text().split()):
                self.assertLess(time.monotonic(), deadline)
                time.sleep(0.01)
            process.send_signal(signal.SIGTERM)
            _, err = process.communicate(timeout=20)
        self.assertEqual(process.returncode, 75, err)
        self.assertIn("Printing was cancelled.", err.decode())
        self.assertFalse(Path("/proc", child[0]).exists(), "it is over, and waited for")
        self.assertEqual((pdf.read_text(), sorted(p.name for p in self.folder.iterdir() if p.suffix != ".eml")), ("old", ["out.pdf"]))

    def test_refuses_to_extract_what_would_be_lost(self):
        locked = Path(self.write("locked", "kept"))
        locked.chmod(0o400)
        absent = str(self.folder / "absent")
        for arguments, code, said in [
            ([], 64, "There is nothing to export."),
            (["--body", "a", "--stamps", "a"], 64, "You cannot assign a single file for both Message Body and Timestamps."),
            ([sample("stamps"), "--body", absent], 64, "would be replaced by each of the messages"),
            (["--body", absent, "-f", "pdf"], 64, "pdf"),
            (["--recipients", "-"], 64, "Nothing of a message is written to standard output."),
            (["--recipients", str(locked)], 77, "is locked and was left as it is"),
            (["--body", str(self.profile / "data" / "x")], 77, "the program keeps its own files there"),
            (["--parts", f"{locked}/parts"], 73, "locked"),
            (["--body", f"{absent}/body"], 73, "absent/body"),
        ]:
            told, _, err = self.extract(sample("plain"), *arguments)
            self.assertEqual(told, code, (arguments, err))
            self.assertIn(said, err)
        self.assertEqual(locked.read_text(), "kept")
        self.assertEqual(self.show("--yes", "message", "extract", sample("plain"), "--recipients", str(locked))[0], 0)
        self.assertIn("Type: Normal recipient", locked.read_text())


if __name__ == "__main__":
    unittest.main()
