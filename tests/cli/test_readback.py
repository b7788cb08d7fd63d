"""What is sent reads back in an independent reader as what was written."""
import binascii
import email
import email.policy
import itertools
import re
import sqlite3
import unittest
from email.header import decode_header, make_header
from email.utils import parseaddr

from quillcast import Case

AWKWARD = [
    ("Ada", "Lovelace & Söhne"),
    ("Łukasz Żółć", "Ελένη <tag> & \"quoted\""),
    ("太郎" * 40, "😀 emoji, and a very long value " + "x" * 3000),
    (".leading dot", "From here = there"),
    ("trailing blank ", "tab\there"),
    ("=?utf-8?Q?not_encoded?=", "$*MergeCity*$ $5 *stars*"),
    ("", "Привет"),
]
HTML = ("<html><head><title>T</title></head><body><p>Dear $*MergeFirstName*$,</p>\n<p>.dot\n.another\nFrom me\n"
        "Café €5 — ž 漢字 at $*MergeCompany*$.</p><p><a href=\"https://example.org/?e=$*MergeEmail*$\">link</a> "
        "<img src=\"pic%20ture.png\"><img src='pic ture.png'><img src=\"https://example.org/remote.png\"></p></body></html>")
PNG = bytes.fromhex("89504e470d0a1a0a0000000d49484452000000010000000108060000001f15c4890000000d49444154789c6360000002"
                    "00000005000180c5a32d0000000049454e44ae426082")


def merged(text, fields):
    """Eighteen replacements in the order of the table, here for the fields that the tests use."""
    for tag in ("Email", "FirstName", "City", "Company"):
        text = text.replace(f"$*Merge{tag}*$", fields.get(tag, ""))
    return text


def content(part):
    return part.get_content().replace("\r\n", "\n")


def mailbox(raw, field):
    """(display name, address). By the older reader: the newer one leaves blanks between encoded words of a name in."""
    name, address = parseaddr(email.message_from_bytes(raw)[field])
    return str(make_header(decode_header(name))), address


def parse(raw, ascii_only=True):
    for line in raw.split(b"\n"):
        assert len(line) <= 999, "a line is too long"
    assert raw.count(b"\n") == raw.count(b"\r\n") == raw.count(b"\r"), "a line end is not CRLF"
    assert raw.isascii() or not ascii_only, "encoded bodies are ASCII"
    return email.message_from_bytes(raw, policy=email.policy.default)


class ReadBack(Case):
    def setUp(self):
        super().setUp()
        self.write("pic ture.png", PNG)
        self.body = self.write("letter.html", HTML)
        self.attachments = {"plan.pdf": b"%PDF-1.4\n" + bytes(range(256)) * 300, "Übersicht – 漢字.txt": b"x",
                            "empty.bin": b"", 'quo"te\\.txt': b"\r\n.\r\n"}
        self.attached = []
        for name, content in self.attachments.items():
            self.attached += ["--attach", self.write(name, content)]
        rows = [(f"user{i}@example.org", *values) for i, values in enumerate(AWKWARD)]
        people = self.write("people.txt", "\n".join(":".join(row) for row in rows) + "\n")
        self.people = [{"Email": row[0], "FirstName": row[1], "Company": row[2]} for row in rows]
        self.ok("group", "new", "All")
        self.ok("import", people, "--group", "All", "--delimiter", "Colon", "--opt-in",
                "--map", "Email Address=1,First Name=2,Company=3")

    def check_body(self, message, person, charset, text_part):
        html = message.get_body(("html",))
        read = content(html).rstrip("\n")
        wanted = merged(HTML, person)
        for _, reference in (("a", "pic%20ture.png"), ("b", "pic ture.png")):
            wanted = wanted.replace(reference, "cid:" + self.picture_id(message))
        if charset != "utf-8":
            wanted = "".join(c if self.in_windows(c) else f"&#{ord(c)};" for c in wanted)
        self.assertEqual(read, wanted.rstrip("\n"))
        text = message.get_body(("plain",))
        self.assertEqual(text is not None, text_part)
        if text_part:
            words = content(text)
            self.assertIn(merged("Dear $*MergeFirstName*$,", person).strip(), words)
            self.assertIn("漢字", words, "a text part that the set cannot hold goes out as UTF-8")

    @staticmethod
    def in_windows(character):
        try:
            character.encode("cp1252")
            return True
        except UnicodeEncodeError:
            return False

    @staticmethod
    def picture_id(message):
        pictures = [part for part in message.walk() if part.get_content_maintype() == "image"]
        assert len(pictures) == 1, "the same picture travels once"
        assert pictures[0].get_content() == PNG
        return pictures[0]["Content-ID"].strip("<>")

    def test_every_part_comes_back(self):
        subject = "Für $*MergeFirstName*$: 25% off — $*MergeCompany*$"
        count = 0
        for charset, header, text_part, to_field in itertools.product(
                ("Unicode (UTF-8)", "Western European (Windows)"), ("None", "Quoted Printable", "Base 64"), "10",
                ("Email Address", "First Name")):
            box = self.mailbox(name=f"box{count}")
            self.account(box.port, f"CharSet={charset}", f"HeaderEncoding={header}", f"TextPart={text_part}",
                         f"ToField={to_field}", "Name=Ada \"Łöve\" Ω, Inc.")
            lines, code, err = self.send("--group", "All", "--subject", subject, "--body", self.body, *self.attached,
                                         "--priority", "High", "--read-receipt")
            self.assertEqual(code, 0, err)
            messages = box.messages()
            self.assertEqual(len(messages), len(self.people))
            attachments = {name.replace("\\", ""): content for name, content in self.attachments.items()}
            identifiers = set()
            for (recipient, raw), person in zip(messages, self.people):
                message = parse(raw)
                self.assertEqual(recipient, person["Email"])
                self.assertEqual(str(message["Subject"]), merged(subject, person).replace("\t", " ").strip())
                self.assertEqual(mailbox(raw, "From"), ('Ada "Łöve" Ω, Inc.', "ada@sender.example"))
                name = person["FirstName"] if to_field == "First Name" else ""
                self.assertEqual(mailbox(raw, "To"), (name.strip(), person["Email"]))
                self.assertEqual(message["X-Mailer"], "Tarnwick Quillcast Classic 1.0")
                self.assertEqual(message["X-Priority"], "1")
                self.assertEqual(message["Disposition-Notification-To"], "ada@sender.example")
                self.assertIsNotNone(message["Date"].datetime.tzinfo)
                identifiers.add(message["Message-ID"])
                self.check_body(message, person, "utf-8" if "UTF" in charset else "windows-1252", text_part == "1")
                read = {part.get_filename(): part.get_payload(decode=True) for part in message.iter_attachments()}
                self.assertEqual(read, attachments)
                self.assertEqual(message.defects, [])
                count += 1
            self.assertEqual(len(identifiers), len(messages), "a Message-ID came twice")
            failures = sum(1 for line in self.reports()[-1].read_text().splitlines() if line == "Error encoding subject.")
            self.assertEqual(failures, 0 if "UTF" in charset else 3)
        print(f"read back and compared {count} messages")

    def test_every_encoding(self):
        """Bodies and attachments in every encoding, to servers that take octets above 127 and to one that does not."""
        settings = itertools.product(("None", "Quoted Printable", "Base 64"), ("None", "Quoted Printable", "Base 64"),
                                     ((), ("--offer", "none")), "01")
        attachments = {name.replace("\\", ""): content for name, content in self.attachments.items()}
        for number, (body, attached, offered, boundary) in enumerate(settings):
            box = self.mailbox(*offered, name=f"coded{number}")
            self.account(box.port, "CharSet=Western European (Windows)", f"Encoding={body}", f"AttachmentEncoding={attached}",
                         f"Boundary={boundary}")
            with self.subTest(body=body, attached=attached, offered=offered, boundary=boundary):
                _, code, err = self.send("--group", "All", "--subject", "s", "--body", self.body, *self.attached)
                self.assertEqual(code, 0, err)
                eight_bit = 0
                for (_, raw), person in zip(box.messages(), self.people, strict=True):
                    message = parse(raw, ascii_only=bool(offered) or body != "None")
                    self.assertEqual(bool(re.fullmatch(r"(?:[A-Z][1-9]){5}=_.*", message.get_boundary())), boundary == "1")
                    self.check_body(message, person, "windows-1252", True)
                    read = {part.get_filename(): part.get_payload(decode=True) for part in message.iter_attachments()}
                    self.assertEqual(read, attachments)
                    self.assertEqual(message.defects, [])
                    eight_bit += not raw.isascii()
                self.assertEqual(eight_bit > 0, body == "None" and not offered)

    def test_what_servers_and_mailboxes_touch(self):
        """A leading dot, "From " and blanks at line ends come back, also in bodies and files that stand as they are."""
        words = ".\n..\nFrom me\ntrailing  \n\t\n.end"
        text = self.write("dots.txt", words)
        files = {"plain.txt": words.replace("From", "from").replace("\n", "\r\n").encode(), "from.txt": b"From me\r\n",
                 "latin.txt": b"caf\xe9 \r\n."}
        attach = [argument for name, content in files.items() for argument in ("--attach", self.write(name, content))]
        for number, offered in enumerate(((), ("--offer", "8BITMIME"), ("--offer", "none"))):
            box = self.mailbox(*offered, name=f"dots{number}")
            self.account(box.port, "Encoding=None", "AttachmentEncoding=None")
            _, code, err = self.send("--group", "All", "--subject", "s", "--body", text, *attach)
            self.assertEqual(code, 0, err)
            message = parse(box.messages()[0][1], ascii_only="none" in offered)
            self.assertEqual(content(message.get_body()), words + "\n")
            self.assertEqual({part.get_filename(): part.get_payload(decode=True) for part in message.iter_attachments()}, files)
            coded = {part.get_filename(): part["Content-Transfer-Encoding"] for part in message.walk() if part.get_filename()}
            self.assertEqual(coded, {"plain.txt": "7bit", "from.txt": "base64",
                                     "latin.txt": "base64" if "none" in offered else "8bit"})

    def test_wrapped_bodies(self):
        long = " ".join(["word"] * 300)
        body = self.write("long.html", f"<p>{long}</p><p>{long} $*MergeFirstName*$</p>")
        box = self.mailbox()
        self.account(box.port, "Encoding=None", "AutoWrap=1", "Wrap=60")
        _, code, err = self.send("--group", "All", "--subject", "s", "--body", body)
        self.assertEqual(code, 0, err)
        message = parse(box.messages()[0][1])
        for kind in ("plain", "html"):
            part = message.get_body((kind,))
            self.assertEqual(part["Content-Transfer-Encoding"], "7bit")
            self.assertLessEqual(max(map(len, content(part).split("\n"))), 60)
            self.assertEqual(content(part).count("word"), 600)

    def test_without_mime(self):
        self.account(25)
        self.advanced("Encoding", "Plain")
        data = bytes(range(256)) * 10
        file = self.write("Übung.bin", data)
        for number, offered in enumerate(((), ("--offer", "none"))):
            box = self.mailbox(*offered, name=f"plain{number}")
            self.account(box.port, "CharSet=Western European (Windows)")
            _, code, err = self.send("--group", "All", "--subject", "s", "--body", self.body, "--attach", file)
            self.assertEqual(code, 0, err)
            for (_, raw), person in zip(box.messages(), self.people, strict=True):
                message = parse(raw, ascii_only=bool(offered))
                self.assertIsNone(re.search(r"<p>", raw.decode("latin-1")), "text only")
                if "MIME-Version" in message:
                    text = content(message)
                else:
                    text = raw.partition(b"\r\n\r\n")[2].decode("cp1252").replace("\r\n", "\n")
                needed = not all(map(self.in_windows, merged(HTML, person)))
                self.assertEqual("MIME-Version" in message, needed or (bool(offered) and not text.isascii()))
                self.assertIn(merged("Dear $*MergeFirstName*$,", person).strip()[:90], text.replace("\n", " "))
                begin = re.search(r"^begin 644 .*\n", text, re.M)
                lines = text[begin.end():].split("\n")
                self.assertEqual(b"".join(binascii.a2b_uu(line) for line in lines[:lines.index("end")]), data)

    def advanced(self, key, value):
        with sqlite3.connect(self.profile / "settings.db") as store:
            store.execute("INSERT INTO Settings VALUES ('Quillcast Classic', 'Advanced', ?, ?)", (key, value))

    def test_text_messages(self):
        box = self.mailbox()
        self.account(box.port)
        text = self.write("letter.txt", "Dear $*MergeFirstName*$,\r\n\r\n.dot\nFrom me\n  indented   \n<b>not bold</b> & so\n")
        _, code, err = self.send("--group", "All", "--subject", "s", "--body", text)
        self.assertEqual(code, 0, err)
        for (_, raw), person in zip(box.messages(), self.people):
            message = parse(raw)
            self.assertEqual(message.get_content_type(), "text/plain")
            self.assertEqual(content(message), merged(
                "Dear $*MergeFirstName*$,\n\n.dot\nFrom me\n  indented   \n<b>not bold</b> & so\n", person))
        _, code, err = self.send("--group", "All", "--subject", "s", "--body", self.body, "--text", text, "--format", "Text")
        self.assertEqual(code, 0, err)
        self.assertIn("<b>not bold</b>", content(parse(box.messages()[-1][1])))

    def test_one_message_to_a_file_and_the_preview(self):
        self.account(25)
        target = self.folder / "one.eml"
        self.ok("--yes", "send", "--group", "All", "--subject", "Hi $*MergeFirstName*$", "--body", self.body, "--as",
                "USER0@example.org ", "--to-file", target)
        self.assertEqual(str(parse(target.read_bytes())["Subject"]), "Hi Ada")
        self.ok("preview", "--subject", "Hi $*MergeFirstName*$", "--body", self.body)
        preview = parse((self.profile / "Temp" / "Preview.eml").read_bytes())
        self.assertEqual(str(preview["Subject"]), "Hi $*MergeFirstName*$")
        self.assertIn("Dear $*MergeFirstName*$,", content(preview.get_body(("html",))))
        self.assertEqual((self.profile / "Temp" / "Preview.htm").read_text(), HTML)


if __name__ == "__main__":
    unittest.main()
