"""Bodies and files that servers touch, texts, one message into a file and the preview; whole runs are in tests/readers."""
import email
import email.policy
import os
import re
import unittest
from pathlib import Path

from quillcast import Case

HTML = ("<html><head><title>T</title></head><body><p>Dear $*MergeFirstName*$,</p>\n<p>.dot\n.another\nFrom me\n"
        "Café €5 — ž 漢字 at $*MergeCompany*$.</p>"
        "<p><a href=\"https://example.org/?e=$*MergeEmail*$\">link</a></p></body></html>")


def content(part):
    return part.get_content().replace("\r\n", "\n")


def parse(raw, ascii_only=True):
    for line in raw.split(b"\n"):
        assert len(line) <= 999, "a line is too long"
    assert raw.count(b"\n") == raw.count(b"\r\n") == raw.count(b"\r"), "a line end is not CRLF"
    assert raw.isascii() or not ascii_only, "encoded bodies are ASCII"
    return email.message_from_bytes(raw, policy=email.policy.default)


class ReadBack(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", HTML)
        self.ok("group", "new", "All")
        people = self.write("people.csv", "user0@example.org,Ada\n")
        self.ok("import", people, "--group", "All", "--opt-in", "--map", "Email Address=1,First Name=2")

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

    def test_a_text_of_its_own_goes_out_as_text(self):
        box = self.mailbox()
        self.account(box.port)
        text = self.write("letter.txt", "Dear $*MergeFirstName*$,\r\n<b>not bold</b> & so\n")
        _, code, err = self.send("--group", "All", "--subject", "s", "--body", self.body, "--text", text, "--format", "Text")
        self.assertEqual(code, 0, err)
        message = parse(box.messages()[0][1])
        self.assertEqual(message.get_content_type(), "text/plain")
        self.assertEqual(content(message), "Dear Ada,\n<b>not bold</b> & so\n")

    def test_no_folder_of_this_machine_goes_out(self):
        """Whatever kept a picture behind, its alternative text stays, and of where it lay its name alone."""
        gif = b"GIF89a\x01\x00\x01\x00\x00\x00\x00;"
        for folder in ("page", "my home"):
            (self.folder / folder).mkdir()
            self.write(f"{folder}/a b.gif", gif)
        self.write("page/no picture.gif", "text")
        home = f"{self.folder}/my%20home"
        kept = {f"file://{home}/a%20b.gif": "a%20b.gif", f"{home}/a b.gif?x#y": "a%20b.gif", "../my home/a&#32;b.gif": "a%20b.gif",
                f"file://{self.folder}/page/gone.gif": "gone.gif", "..\\my%20home\\gone.gif": "gone.gif", "gone.gif?x": "gone.gif?x",
                f"file://{self.folder}/page/no%20picture.gif": "no%20picture.gif", f"{self.folder}/page/": "picture",
                "no picture.gif": "no picture.gif", f"C:{self.folder}/gone.gif": "gone.gif"}
        letter = self.write("page/letter.html", "<img src='a b.gif' alt='goes'>" + "".join(
            f"<img src='{written}' alt='stays behind'>" for written in kept)
            + f"<p style=\"background:url('file://{home}/a%20b.gif')\"><img srcset='{home}/a%20b.gif 2x, file://{home}/b.gif'>")
        self.ok("template", "save", "Monthly", letter)  # its relative addresses become absolute ones
        template = self.write("page/begun.html", self.ok("template", "show", "Monthly"))
        self.assertIn(str(self.folder), Path(template).read_text())
        box = self.mailbox()
        self.account(box.port)
        for body in (letter, template):
            _, code, err = self.send("--group", "All", "--subject", "s", "--body", body, "--leave-pictures-out")
            self.assertEqual(code, 0, err)
            self.assertIn("its name alone stays", err)
            self.assertIn("only its name goes out", err)
            message = parse(box.messages()[-1][1])
            page = content(message.get_body(("html",)))
            self.assertNotIn(str(self.folder), message.as_string() + page)
            self.assertNotIn("home", page)
            sources = re.findall("<img src='(.*?)' alt='(.*?)'>", page)
            self.assertEqual([alternative for _, alternative in sources], ["goes"] + ["stays behind"] * len(kept))
            if body == letter:
                self.assertEqual([source for source, _ in sources[1:]], list(kept.values()))
                self.assertIn("url('a%20b.gif')\"><img srcset='a%20b.gif 2x, b.gif'>", page)

    def test_one_message_to_a_file_and_the_preview(self):
        self.account(25)
        target = self.folder / "one.eml"
        command = ["send", "--group", "All", "--subject", "Hi $*MergeFirstName*$", "--body", self.body, "--as",
                   "USER0@example.org ", "--to-file", target]
        self.ok("--yes", *command)
        self.assertEqual(str(parse(target.read_bytes())["Subject"]), "Hi Ada")
        target.write_text("mine")
        target.chmod(0o400)
        code, _, err = self.run_program(*command)
        self.assertEqual((code, target.read_text(), target.stat().st_mode & 0o777), (77, "mine", 0o400), err)
        self.assertIn("The output file is locked.", err)
        self.assertIn(str(target), err)
        target.chmod(0o444)
        link = self.folder / "link.eml"
        link.symlink_to(target.name)
        self.ok("--yes", *command[:-1], link)
        self.assertEqual(str(parse(target.read_bytes())["Subject"]), "Hi Ada")
        self.assertEqual((link.is_symlink(), target.stat().st_mode & 0o777), (True, 0o644), "what was locked is unlocked")
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        self.assertEqual((self.run_program("--yes", *command[:-1], pipe)[0], pipe.is_fifo()), (73, True))
        self.ok("preview", "--subject", "Hi $*MergeFirstName*$", "--body", self.body)
        preview = parse((self.profile / "Temp" / "Preview.eml").read_bytes())
        self.assertEqual(str(preview["Subject"]), "Hi $*MergeFirstName*$")
        self.assertIn("Dear $*MergeFirstName*$,", content(preview.get_body(("html",))))
        self.assertEqual((self.profile / "Temp" / "Preview.htm").read_text(), HTML)


if __name__ == "__main__":
    unittest.main()
