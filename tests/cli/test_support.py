"""A request for help is sent, shown and saved from the command line: what goes along, what never does, and what can fail."""
import email
import email.policy
import json
import os
import signal
import socket
import unittest
from unittest import mock

from quillcast import Case
from test_account import serve

HOSTILE = "Subject: mine\r\nBcc: eve@example.net\n\n.\r\n$*MergeEmail*$ \0 \u0141\u00f3d\u017a\n"
REPORT = "System Report.txt"


class Support(Case):
    def setUp(self):
        super().setUp()
        clean = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
        for patch in (mock.patch.dict(os.environ, clean, clear=True),
                      mock.patch.dict(os.environ, {"QUILLCAST_SUPPORT_ADDRESS": "desk@support.example"})):
            patch.start()
            self.addCleanup(patch.stop)

    def ask(self, *arguments, fails=None):
        """Its exit code, its JSON lines, and its standard error."""
        code, out, err = self.run_program("--json", "support", "--description", "Help", *arguments)
        self.assertEqual(code, fails or 0, out + err)
        return [json.loads(line) for line in out.splitlines()], err

    def arrived(self, box):
        (to, content), = box.messages()
        return to, email.message_from_bytes(content, policy=email.policy.default)

    def test_arrives_whole(self):
        box = self.mailbox()
        self.account(box.port, "HeaderEncoding=Quoted Printable", "Encoding=None", "Boundary=1")
        picture = self.write("what I see.png", b"\x89PNG\r\n\x1a\nxyz")
        shown = self.ask("--show")[0][0]
        code, out, err = self.run_program("support", "--description-file", self.write("d", HOSTILE), "--topic", "Bug Report",
                                          "--attach", picture, "--priority", "High", "--name", "J\u00f6rg", "--product", "Mine\r\nBcc: x@y.example")
        self.assertEqual((code, out), (0, "Your message has been successfully sent to Tarnwick.\n"), err)
        to, message = self.arrived(box)
        self.assertEqual((to, message["To"], message["From"]), ("desk@support.example",) * 2 + ("J\u00f6rg <ada@sender.example>",))
        self.assertEqual(message["X-Mailer"], "Tarnwick Quillcast Classic 1.0")
        self.assertTrue(message["Subject"].endswith(" - Bug Report"), message["Subject"])
        self.assertIsNone(message["Bcc"])
        self.assertEqual(message["X-Priority"], "1")
        body, *files = message.iter_parts()
        text = body.get_content().replace("\r\n", "\n")
        self.assertRegex(text, r"\ASender's IP Address: [0-9a-f.:]+\n\n---Problem Description---\n")
        self.assertEqual(text.split("---Problem Description---\n")[1].rstrip("\n"), HOSTILE.replace("\r\n", "\n").replace("\0", "").rstrip("\n"))
        self.assertEqual([part.get_filename() for part in files], [REPORT, "what I see.png"])
        self.assertEqual(files[0].get_content().replace("\r\n", "\n"), shown["report"].replace("\r\n", "\n"))
        self.assertEqual(files[1].get_content(), b"\x89PNG\r\n\x1a\nxyz")
        self.assertEqual(list((self.profile / "Temp").glob("*")) if (self.profile / "Temp").exists() else [], [])

    def test_plain_words_go_in_windows_1252(self):
        box = self.mailbox()
        self.account(box.port, "CharSet=Unicode (UTF-8)")
        self.ok("support", "--description", "Gr\u00fc\u00dfe \u20ac")
        _, message = self.arrived(box)
        body = next(message.iter_parts())
        self.assertEqual((body.get_content_charset(), message["X-Priority"]), ("windows-1252", None))
        self.assertIn("Gr\u00fc\u00dfe \u20ac", body.get_content())
        self.assertEqual(message["Subject"], "Tarnwick Quillcast Classic Edition 1.0 - Support Request")

    def test_holds_no_secret_and_nobody_else(self):
        box = self.mailbox("--auth", "ada", "--password-file", self.write("server", "right-7"))
        self.account(box.port, "Auth=1", "Username=ada", "--password-file", self.write("p", "right-7"))
        self.group("All", ["bob@guest.example"])
        letter = self.write("letter.html", "<p>Dear $*MergeEmail*$</p>")
        _, code, err = self.send("--group", "All", "--subject", "Hi", "--body", letter)
        self.assertEqual(code, 0, err)
        for boxes, names, who in (((), [REPORT], False), (("--session-log",), [REPORT, "Session.log"], False),
                                  (("--last-report",), [REPORT, self.reports()[0].name], True),
                                  (("--first-message",), [REPORT, self.reports()[0].stem + ".eml"], True)):
            if boxes == ("--session-log",):
                (self.profile / "data" / "Session.log").write_text("2026-01-01 10:00:00 It was full.\n")
            with self.subTest(boxes=boxes):
                self.ask(*boxes)
                content = box.messages()[-1][1]
                message = email.message_from_bytes(content, policy=email.policy.default)
                parts = [part for part in message.walk() if not part.is_multipart()]
                text = content + b"".join(part.get_payload(decode=True) for part in parts)
                found = [part.get_filename() for part in message.iter_attachments()]
                self.assertEqual(found, names)
                self.assertEqual(b"bob@guest.example" in text, who)
                self.assertNotIn(b"right-7", text)
        self.assertEqual(len(box.messages()), 1 + 4)

    def test_can_be_read_before(self):
        self.run_program("group", "list")
        shown, = self.ask("--show")[0]
        self.assertEqual(set(shown), {"to", "from", "subject", "body", "report", "files"})
        code, text, err = self.run_program("support", "--show")  # without an account and a description, too
        self.assertEqual((code, err.count("It would not be sent so: ")), (0, 2), err)
        for words in ("Please fill out the Mail Account section", "Please enter your description."):
            self.assertIn(words, err)
        self.assertEqual(self.run_program("support", "--show", "--attach", "/nowhere/x")[0], 66)
        self.assertIn(shown["report"].replace("\r\n", "\n"), text.replace("\r\n", "\n"))
        self.account(1)
        target = self.write("what.txt", "mine")
        self.ask("--save", target)
        saved = (self.folder / "what.txt").read_bytes().decode()
        self.assertIn("Subject: Tarnwick Quillcast Classic Edition 1.0 - Support Request\r\n", saved)
        self.assertIn("---Problem Description---\r\nHelp\r\n", saved)
        self.assertIn("Account-Name: Ada\r\n", saved)
        self.ask("--save", str(self.folder / "what.EML"))
        message = email.message_from_bytes((self.folder / "what.EML").read_bytes(), policy=email.policy.default)
        self.assertEqual([part.get_filename() for part in message.iter_attachments()], [REPORT])
        (self.folder / "what.txt").chmod(0o400)
        code, out, err = self.run_program("support", "--save", str(self.folder / "z.txt"))
        self.assertEqual((code, "It would not be sent so: Please enter your description." in err), (0, True), out + err)
        for arguments, code, word in (((target,), 77, "locked"), (("-",), 64, "standard output"), ((str(self.folder),), 73, "folder"),
                                      ((str(self.folder / "no" / "x.eml"),), 73, "x.eml"),
                                      ((str(self.profile / "data" / "Group.mdb"),), 77, "Group.mdb"),
                                      ((str(self.folder / "y.eml"), "--attach", "/nowhere/x"), 66, "/nowhere/x"),
                                      ((str(self.folder / "y.eml"), "--email", "nobody"), 64, '"nobody" is no address that an answer could go to.'),
                                      ((str(self.folder / "y.eml"), "--show"), 64, "excludes")):
            with self.subTest(arguments=arguments):
                got, out, err = self.run_program("--no-input", "support", "--save", *arguments)
                self.assertEqual(got, code, out + err)
                self.assertIn(word, err + out)
        self.assertEqual((self.folder / "what.txt").read_bytes().decode(), saved)
        for name in ("full.txt", "full.eml", "what.EML"):
            before = (self.folder / name).read_bytes() if (self.folder / name).exists() else None
            for size in (0, 1000):
                got, out, err = self.run_program("support", "--save", str(self.folder / name), fsize=size)
                self.assertIn(got, (73, 74, 66), out + err)
            after = (self.folder / name).read_bytes() if (self.folder / name).exists() else None
            self.assertEqual(after, before, name)

    def test_the_password_stays_here_wherever_it_is(self):
        box = self.mailbox()
        self.account(box.port, "Auth=1", "Username=ada", "NoAuth=1", "--password-file", self.write("p", "right-7"))
        _, err = self.ask("--attach", str(next(self.profile.rglob("settings.db"))), fails=77)
        self.assertIn("Your settings file does not go along: your password may be in it.", err)
        self.ok("account", "set", "Username=right-7", "--password-command", "echo right-7")
        self.ok("account", "set", "BCCField=right-7")
        self.assertNotIn("right-7", self.ask("--show")[0][0]["report"])
        self.ask("--save", str(self.folder / "saved.txt"))
        self.assertNotIn("right-7", (self.folder / "saved.txt").read_text().partition("Account-")[2])
        self.ask()
        _, message = self.arrived(box)
        self.assertNotIn("right-7", [part.get_content() for part in message.iter_attachments()][0])
        self.ok("account", "set", "PasswordCommand=sleep 50")
        process = self.popen("--yes", "support", "--description", "Help")
        children = f"/proc/{process.pid}/task/{process.pid}/children"
        while not open(children).read():
            self.assertIsNone(process.poll())
        process.send_signal(signal.SIGINT)
        _, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 75)
        self.assertIn(b"The request was not sent: it was cancelled.", err)
        self.assertNotIn(b"online support form", err)

    def test_what_keeps_it_from_being_sent(self):
        code, out, err = self.run_program("support", "--description", "Help")
        self.assertEqual(code, 78, out + err)
        self.assertIn("Please fill out the Mail Account section in Email Manager.", err)
        box = self.mailbox()
        self.account(box.port)
        fifo = str(self.folder / "fifo")
        os.mkfifo(fifo)
        huge = self.folder / "huge.bin"
        huge.touch()
        os.truncate(huge, 5 << 40)
        for arguments, code, words in (
                (("--description", ""), 64, "Please enter your description."), ((), 64, "Please enter your description."),
                (("--description", "x", "--email", "nobody"), 64, '"nobody" is no address'),
                (("--description", "x", "--email", "a@b.example, c@d.example"), 64, "c@d.example\" is no address"),
                (("--description", "x", "--topic", "Praise"), 64, "--topic"),
                (("--description", "x", "--attach", "/nowhere/x"), 66, "/nowhere/x"),
                (("--description", "x", "--attach", fifo), 66, "fifo"),
                (("--description", "x", "--attach", str(self.folder)), 66, "folder"),
                (("--description", "x", "--attach", str(huge)), 1, "a support request takes 25.0 MiB"),
                (("--description", "x", "--last-report"), 66, "There is no report of a run."),
                (("--description-file", self.write("long", "x" * 1_048_577)), 64, "has 1,048,577 bytes; at most 1,048,576"),
                (("--description-file", "/nowhere/d"), 66, "/nowhere/d")):
            with self.subTest(arguments=arguments):
                got, out, err = self.run_program("--no-input", "support", *arguments)
                self.assertEqual(got, code, out + err)
                self.assertIn(words, out + err)
                if "--topic" in arguments or arguments[:1] == ("--description-file",):
                    continue
                for look in (("--show",), ("--save", str(self.folder / "looked.txt"))):
                    got, out, err = self.run_program("--no-input", "support", *look, *arguments)
                    self.assertEqual(got, 0 if "Please enter" in words else code, out + err)
                    self.assertIn(words, err)
                    self.assertEqual("It would not be sent so: " in err, "--last-report" not in arguments, err)
        with mock.patch.dict(os.environ, {"QUILLCAST_SUPPORT_ADDRESS": "desk"}):
            got, out, err = self.run_program("support", "--description", "x")
            self.assertEqual((got, "QUILLCAST_SUPPORT_ADDRESS" in err), (64, True), out + err)
        self.assertEqual(box.messages(), [])

    def test_a_failure_is_told_and_nothing_goes_twice(self):
        ends = ["220 mx", "250 mx", "250 ok", "250 ok", "354 go on"]
        for replies, code, number in ((None, 69, 9), (["554 go away"], 1, 5), (ends[:3] + ["550 5.1.1 nobody"], 1, 8),
                                      (ends[:3] + ["450 later"], 75, 8)):
            with self.subTest(replies=replies):
                self.account(1 if replies is None else serve(replies))
                lines, err = self.ask(fails=code)
                self.assertEqual(lines[0]["code"], number)
                self.assertIn(f"There was an error sending your message.\nError {number}: ", err)
                self.assertIn("Sending your support request to Tarnwick failed.\nWould you like to visit", err)
                self.assertIn("https://www.quillcast.example/support", err)
        self.assertIn("There is no display", self.run_program("--yes", "support", "--description", "x")[2])

    def test_a_lost_reply_is_not_tried_again(self):
        listener = socket.create_server(("127.0.0.1", 0))
        self.account(listener.getsockname()[1])
        ends = []
        with listener, self.popen("--json", "support", "--description", "Help") as process:
            listener.settimeout(10)
            client = listener.accept()[0]
            with client, client.makefile("rb") as lines:
                for reply in ("220 mx", "250 mx", "250 ok", "250 ok", "354 go on"):
                    client.sendall(reply.encode() + b"\r\n")
                    lines.readline()
                while (line := lines.readline()) not in (b".\r\n", b""):
                    pass
                ends.append(line)
            out, err = process.communicate(timeout=20)
            listener.settimeout(0.3)
            with self.assertRaises(TimeoutError):
                listener.accept()
        self.assertEqual((ends, json.loads(out)["state"], process.returncode), ([b".\r\n"], "unknown", 1), err)

    def test_an_interrupt_ends_it(self):
        listener = socket.create_server(("127.0.0.1", 0))
        self.account(listener.getsockname()[1])
        with listener, self.popen("--yes", "support", "--description", "Help") as process:
            with listener.accept()[0]:
                process.send_signal(signal.SIGINT)
                out, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 75, err.decode())
        self.assertEqual(err.decode().splitlines()[-1], "The request was not sent: it was cancelled.")
        self.assertNotIn("online support form", err.decode())


if __name__ == "__main__":
    unittest.main()
