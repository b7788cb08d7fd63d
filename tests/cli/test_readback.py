"""What is sent reads back in an independent reader as what was written."""
import email
import email.policy
import itertools
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


def parse(raw):
    for line in raw.split(b"\n"):
        assert len(line) <= 999, "a line is too long"
    assert raw.count(b"\n") == raw.count(b"\r\n") == raw.count(b"\r"), "a line end is not CRLF"
    assert raw.isascii(), "encoded bodies are ASCII"
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
