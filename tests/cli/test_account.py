"""The account from the command line: values are tried without being saved, notes tell what the dialog would do."""
import contextlib
import json
import os
import signal
import socket
import sqlite3
import subprocess
import threading
import time
import unittest
import unittest.mock
from pathlib import Path

from quillcast import PROGRAM, Case, in_background


def serve(replies):
    """A server for one client that gives these replies, one to each line after the greeting, then hangs up."""
    listener = socket.create_server(("127.0.0.1", 0))

    def run():
        with listener, listener.accept()[0] as client, client.makefile("rb") as lines:
            for reply in replies:
                client.sendall(reply.encode() + b"\r\n")
                lines.readline()
    thread = threading.Thread(target=run, daemon=True)
    thread.start()
    return listener.getsockname()[1]


class Account(Case):
    def pipe(self, name, content):
        """A pipe out of which a command's output comes, as a shell's <(...) makes one."""
        path = self.folder / name
        os.mkfifo(path)
        self.addCleanup(in_background(lambda: path.write_text(content)).join)
        return str(path)

    def test_values_are_tried_without_being_saved(self):
        box = self.mailbox("--auth", "ada", "--password-file", self.pipe("server", "right-7"))
        self.account(1)
        before = self.ok("account", "show")
        right, wrong = self.pipe("right", "right-7\n"), self.write("wrong", "wrong-7")
        signed = (f"Port={box.port}", "Auth=1", "Username=ada", "NoAuth=1", "Extended=1", "Timeout=2", "--password-file")
        for arguments, exit_code, code, words in (
                ((), 69, 9, "Error 9: There was an error connecting"),
                (("Server=localhost", "Port=1"), 69, 9, "No connection to localhost:1: Connection refused."),
                ((*signed, right), 0, 0, ""),
                ((*signed, wrong), 69, 24, "Error 24: ESMTP Authentication failed."),
                (("Server=",), 78, 15, "Error 15: No mail server specified."),
                ((f"Port={serve(['220 x ESMTP', '250 x'])}",), 69, 6, "Error 6: Unknown Error."),
                ((f"Port={serve(['554 go away'])}",), 69, 5, "The server said: 554 go away")):
            with self.subTest(arguments=arguments):
                got, out, err = self.run_program("--json", "account", "test", *arguments)
                self.assertEqual(got, exit_code, out + err)
                told = json.loads(out)
                self.assertEqual(told["code"], code)
                self.assertIn(words, err)
                self.assertNotIn("-7", (out + err).replace(str(self.folder), ""))
                if code == 0:
                    self.assertEqual(told["text"], "Your SMTP settings appear to be functioning correctly.")
                    self.assertEqual((told["given"]["options"], told["given"]["timeout"]), (272, 120))
        self.assertEqual(self.ok("account", "show"), before)
        for wrong in ("Port=0", "AuthMode=PLAIN", "Password=x"):
            self.assertEqual(self.run_program("account", "test", wrong)[0], 64)

    def test_practice_that_a_command_ends_is_told_of(self):
        """As the window does, which notes the port of its mailbox."""
        for set_, left, told in (
                (("Timeout=5",), "practice@quillcast.example", None),
                (("Server=mail.example.org",), "", "It still lacks a name and an address of your own."),
                (("Server=mail.example.org", "Name=Ada", "Email=ada@sender.example"), "ada@sender.example",
                 "the account names a server of its own now.")):
            with self.subTest(set_):
                self.ok("account", "set", "Name=Practice", "Email=practice@quillcast.example", "Server=127.0.0.1", "Port=7")
                with contextlib.closing(sqlite3.connect(self.profile / "settings.db")) as settings, settings:
                    settings.execute("INSERT OR REPLACE INTO Settings SELECT Application, 'Options', 'Practice', '7' "
                                     "FROM Settings LIMIT 1")
                code, out, err = self.run_program("--json", "account", "set", *set_)
                self.assertEqual(code, 0, err)
                self.assertEqual(json.loads(out)["email"], left)
                self.assertEqual("Practice has ended" in err, told is not None, err)
                self.assertIn(told or "", err)

    def test_what_is_stored_is_shown_and_told(self):
        long, odd = "n" * 10_000, "A\tda \"é\" \x1b[31m\u2028\u202e\x9b"
        self.account(25, f"BCCField={odd}", f"Username={long}", "Auth=1", "--password-file", self.write("p", "geheim-7\n"))
        out = self.ok("--json", "account", "show") + self.ok("account", "show")
        for obeyed in "\x1b\u2028\u202e\x9b":
            self.assertNotIn(obeyed, out)
        shown = json.loads(self.ok("--json", "account", "show"))
        self.assertEqual((shown["BCCField"], shown["Username"], shown["Password"]), (odd, long, "********"))
        out = self.run_program("account", "set", "Auth=0", "Pipeline=1", "BCCField=x")
        self.assertEqual(out[0], 0)
        self.assertIn("Without Auth=1 these are not kept: Username, Password.", out[2])
        self.assertIn("Without Auth=1 the account dialog will set back: Pipeline.", out[2])
        shown = json.loads(self.ok("--json", "account", "show"))
        self.assertEqual((shown["Auth"], shown["Username"], shown["Password"], shown["Pipeline"]), ("0", "", "", "1"))
        for file in self.profile.glob("settings.db*"):
            self.assertNotIn(b"geheim-7", file.read_bytes(), file)
        self.assertIn("Without Method=Bulk the account dialog will keep but not offer: BCCField.", out[2])
        for method, text in (("Bulk", "Bulk Sending"), ("Third", "3rd Party Sending")):
            told = json.loads(self.ok("--json", "account", "set", f"Method={method}", "ThirdPath=/q/", "Name=Ada"))
            self.assertEqual((told["from"], told["method"]), ("Ada <ada@sender.example>", text))
        self.assertEqual(self.run_program("account", "reset")[0], 77)
        told = json.loads(self.ok("--json", "--yes", "account", "reset"))
        self.assertEqual((told["from"], told["method"]), ("", "Personal"))

    def test_accounts_of_other_programs(self):
        home = self.folder / "home"
        (home / ".claws-mail").mkdir(parents=True)
        (home / ".thunderbird").mkdir()
        os.mkfifo(home / ".thunderbird" / "profiles.ini")
        twin = ("account_name=Twin\nname=Ada\naddress={0}@example.org\nsmtp_server={0}.example\nset_smtpport=1\nsmtp_port=587\n"
                "ssl_smtp=2\nuse_smtp_auth=1\nsmtp_user_id={0}\nsmtp_password=geheim-7\npassword=geheim-7\n")
        (home / ".claws-mail" / "accountrc").write_text(
            "[Account: 1]\n" + twin.format("one") + "[Account: 2]\n" + twin.format("two") +
            "[Account: 3]\naccount_name=Bare\nname=Eve\naddress=eve@example.org\nsmtp_server=bare.example\n[Account: 4]\n"
            "name=x\n")
        with unittest.mock.patch.dict(os.environ, HOME=str(home)):
            code, out, err = self.run_program("account", "import")
            self.assertEqual((code, out.splitlines()[1]), (
                0, "2\tTwin\tAda <two@example.org>\ttwo.example, port 587, security STARTTLS, user two\tClaws Mail"))
            self.assertIn("profiles.ini", err)
            self.assertIn("1 account was left out", err)
            rows = [json.loads(line) for line in self.ok("--json", "account", "import").splitlines()]
            self.assertEqual(rows[2], {
                "number": 3, "account": "Bare", "name": "Eve", "email": "eve@example.org", "server": "bare.example", "port": "",
                "security": "", "user_name": "", "program": "Claws Mail", "file": str(home / ".claws-mail" / "accountrc")})
            self.account(2525, "Security=TLS")
            for wrong in ("Twin", "4", "0", "Work"):
                self.assertEqual(self.run_program("account", "import", wrong)[0], 64, wrong)
            self.assertIn("Port=2525\n", self.ok("account", "show"))
            told = json.loads(self.ok("--json", "account", "import", "2"))
            self.assertEqual(told, {"imported": True, "from": "Ada <two@example.org>", "written": {
                "Name": "Ada", "Email": "two@example.org", "Server": "two.example", "Port": "25"}})
            self.assertIn("Security=TLS\n", self.ok("account", "show"))
            code, out, err = self.run_program("account", "import", "1", "--port", "--security", "--user-name")
            self.assertEqual((code, out), (0, "The account of one@example.org is taken over, port 587.\n"))
            self.assertIn("that of the server or user before is not kept. quillcast account set --password-file FILE", err)
            shown = json.loads(self.ok("--json", "account", "show"))
            self.assertEqual([shown[key] for key in ("Port", "Security", "Auth", "Username", "Password")],
                             ["587", "STARTTLS", "1", "one", ""])
            for password in ("", "secret"):  # the same sign-in keeps what it has
                if password:
                    self.account(587, "Server=ONE.example", "Auth=1", "Username=one", "--password-file", self.write("p", password))
                err = self.run_program("account", "import", "1", "--user-name")[2]
                self.assertEqual(("--password-file" in err, "not kept" in err), (not password, False), err)
            err = self.run_program("account", "import", "Bare", "--port", "--security", "--user-name")[2]
            for missing in ("no port; 25 was set", "no security", "no user name"):
                self.assertIn(missing, err)
        with unittest.mock.patch.dict(os.environ, HOME=str(self.folder / "nobody")):
            self.assertIn("No account", self.run_program("account", "import")[2])
            for arguments, code, words in ((("--home", home / "no"), 66, "There is no folder"), (("--home", ""), 64, "--home"),
                                           (("",), 64, "ACCOUNT")):
                got, out, err = self.run_program("account", "import", *arguments)
                self.assertEqual((got, words in err), (code, True), out + err)
            self.assertEqual(len(self.ok("account", "import", "--home", home).splitlines()), 3)
        for file in [*self.profile.rglob("*")]:
            if file.is_file():
                self.assertNotIn(b"geheim-7", file.read_bytes(), file)

    def test_a_command_gives_the_password(self):
        """The first line that it prints, once a run; everything else is told, and no secret with it."""
        box = self.mailbox("--auth", "ada", "--password-file", self.write("secret", "right-7"))
        self.account(box.port, "Auth=1", "Username=ada", "--password-file", self.write("old", "old-7"))
        self.ok("account", "set", "--password-command", f"echo x >>{self.folder}/calls; echo right-7")
        shown = json.loads(self.ok("--json", "account", "show"))
        self.assertEqual((shown["Password"], shown["PasswordFrom"]), ("", "Command"))
        self.assertIn("\nPassword=(what the command prints)\n", self.ok("account", "show"))
        for file in self.profile.glob("settings.db*"):
            self.assertNotIn(b"old-7", file.read_bytes())
        self.group("Readers", [f"r{n}@example.org" for n in range(5)])
        letter = ("--group", "Readers", "--subject", "x", "--body", self.write("t.html", "<p>y"))
        lines, code, err = self.send(*letter)
        self.assertEqual((code, len(box.messages()), (self.folder / "calls").read_text()), (0, 5, "x\n"), err)
        # Whoever ignores the ends of children hands that on to what it starts.
        ignoring = ["/bin/sh", "-c", "trap '' CHLD; exec \"$@\"", "sh", PROGRAM, "--profile", str(self.profile), "account", "test"]
        self.assertEqual(subprocess.run(ignoring, stdin=subprocess.DEVNULL, capture_output=True, timeout=30).returncode, 0)
        by_hand = "\nTry it in a terminal; it has to print the password on its first line."
        program = self.write("vault", "#!/bin/sh\necho right-7\n")
        for command, exit_code, told in (
                (f"sh {program}", 0, ""),
                (r"printf 'right-7\r\nmore\n'", 0, ""),
                ("printf right-7; sleep 60 &", 0, ""),
                ("cat; test ! -t 0 && echo right-7", 0, ""),
                ("echo wrong-7", 75, "Error 24"),
                (r"printf 'vault\n\033[31mlocked\n' >&2; exit 3", 69,
                 'The password command failed with exit code 3, and said: "vault ?[31mlocked".' + by_hand),
                ("echo right-7; echo is right-7 >&2; exit 1", 69,
                 'The password command failed with exit code 1, and said: "is ****".' + by_hand),
                ("kill -9 $$", 69, "The password command was ended by a signal." + by_hand),
                (program, 69, "The password command failed with exit code 126, and said:"),
                *((word, 78, "The password command was not found.\nName a command that prints the password. Where "
                   "it is the password itself, choose Settings or Keyring.") for word in ("hunter2pass", "correct/horse", "my pass phrase")),
                ("printf '\\377\\376bin\\n'", 65, "What the password command printed first is no text, so it was not sent."),
                ("printf 'a\\000b'", 65, "What the password command printed first is no text, so it was not sent."),
                ("true", 69, "The password command printed no password." + by_hand),
                ("echo; echo right-7", 69, "The password command printed no password." + by_hand),
                ("yes right-7", 65, "The password command printed more than 64 KiB." + by_hand),
                ("printf right-7; head -c 1000000 /dev/zero", 65, "The password command printed more than 64 KiB."),
                ("yes locked | head -n 100000 >&2; exit 1", 69, "The password command failed with exit code 1, and said:")):
            with self.subTest(command=command):
                self.ok("account", "set", f"PasswordCommand={command}")
                code, out, err = self.run_program("send", *letter)
                self.assertEqual(code, exit_code, out + err)
                self.assertIn(told, err)
                self.assertLess(len(err), 2000)
                self.assertNotIn("-7", (out + err).replace(str(self.folder), ""))
                self.assertEqual(err.count("password command"), told.count("password command"), err)
        pid = self.folder / "pid"
        self.ok("account", "set", f"PasswordCommand=sleep 60 & echo $! >{pid}.new; mv {pid}.new {pid}; wait")
        for number in (signal.SIGKILL, signal.SIGHUP, signal.SIGINT):
            with self.subTest("it is ended with the program", number=number):
                process = self.popen("send", *letter)
                while not pid.exists():
                    self.assertIsNone(process.poll())
                    time.sleep(0.02)
                started = Path("/proc") / pid.read_text().strip()
                self.assertTrue(started.exists())
                pid.unlink()
                process.send_signal(number)
                process.communicate(timeout=60)
                for _ in range(250):
                    if not started.exists() or ") Z " in (started / "stat").read_text():
                        break
                    time.sleep(0.02)
                else:
                    self.fail("what the command started lives on")
        self.ok("account", "set", "PasswordCommand=sleep 60")
        process = self.popen("send", *letter)
        children = Path(f"/proc/{process.pid}/task/{process.pid}/children")
        while not children.read_text():
            self.assertIsNone(process.poll())
        child = Path("/proc") / children.read_text().split()[0]
        process.send_signal(signal.SIGINT)
        out, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 75, err)
        self.assertIn(b"The password command was cancelled.", err)
        self.assertFalse(child.exists())
        for wrong, told in ((("--password-from", "Vault"), "PasswordFrom cannot be"),
                            (("--password-command", "true", "--password-file", program), "none out of a file is kept"),
                            (("--password-command", " "), "Give the command that prints the password. Nothing was saved."),
                            (("--password-from", "Settings"), "You must enter the password. Nothing was saved.")):
            code, out, err = self.run_program("account", "set", *wrong)
            self.assertEqual((code, out), (64, ""), err)
            self.assertIn(told, err)

    def test_threads(self):
        note = "The modes are kept, and have no effect yet: messages are made and sent on one thread."
        modes = {"SMTP-Thread": "Second", "POP3-Thread": "Second", "IMAP4-Thread": "Second"}
        self.assertEqual(self.ok("account", "threads"), "".join(f"{key}={mode}\n" for key, mode in modes.items()) + note + "\n")
        self.assertEqual(json.loads(self.ok("--json", "account", "threads")), {**modes, "effect": False, "note": note})
        self.assertIn(note, self.ok("account", "threads", "--help").replace("\n", " "))
        self.ok("account", "threads", "--smtp", "No", "--imap4", "Single")
        self.assertIn("SMTP-Thread=No\nPOP3-Thread=Second\nIMAP4-Thread=Single\n", self.ok("account", "show"))
        self.assertEqual(self.run_program("account", "threads", "--smtp", "no")[0], 64)
        self.ok("--yes", "account", "reset")
        self.assertIn("SMTP-Thread=No\n", self.ok("account", "show"), "they are no part of the account")


class Properties(Case):
    def test_a_file_is_told_of(self):
        page = self.write("page.html", b'\xff\xfe' + '<title>Spring\n &amp; sun</title><p lang="EN-US" dir="rtl">utf-8'.encode("utf-16-le"))
        self.assertEqual(self.ok("properties", page), f"Location: {page}\nTitle: Spring & sun\nDirection: Right to Left\n"
                         "Language: English (United States)\nCharacter set: Unicode (UTF-8)\n")
        self.assertEqual(json.loads(self.ok("--json", "properties", self.write("empty.txt", ""))), {
            "location": str(self.folder / "empty.txt"), "title": "Not Available", "direction": "None", "language": "None",
            "charset": "None"})
        self.write("a.png", b"\x89PNG\r\n\x1a\n" + b"x" * 3000)
        page = self.write("check.html", "<title>T</title><p>One two three<img src=a.png width=20 alt=x><img src=no.png width=20 alt=y>"
                          "<a href='https://evil.example/'>bank.example</a> <a href='https://a.example/unsubscribe'>off</a>")
        told = self.ok("properties", page, "--check")
        for line in ("5 words; a message is about 1", " with its 2 pictures.", "Pictures:\n  a.png, 2.9 KiB\n  no.png, missing\n",
                     "Links:\n  bank.example: https://evil.example/\n  off: https://a.example/unsubscribe\n",
                     "To be mended:\n  The link “bank.example” shows another address than it leads to, “https://evil.example/”"):
            self.assertIn(line, told)
        checked = json.loads(self.ok("--json", "properties", page, "--check"))
        self.assertEqual((checked["title"], checked["words"], checked["pictureCount"], checked["linkCount"]), ("T", 5, 2, 2))
        self.assertEqual(checked["pictures"], [{"file": "a.png", "size": 3008}, {"file": "no.png", "size": None}])
        self.assertEqual(checked["links"][1], {"text": "off", "target": "https://a.example/unsubscribe", "trouble": None})
        self.assertIn("shows another address", checked["links"][0]["trouble"])
        self.assertEqual(len(checked["findings"]), 2)
        self.ok("account", "set", "Name=Ada", "Email=ada@example.org", "Server=127.0.0.1", "Port=25", "TextPart=0")
        self.assertIn("The account sends no text part", self.ok("properties", page, "--check"))
        for name in ("nosuch.html", self.folder):
            code, out, err = self.run_program("properties", name)
            self.assertEqual((code, out), (66, ""))
            self.assertIn(str(name), err)


if __name__ == "__main__":
    unittest.main()
