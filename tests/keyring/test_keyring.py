#!/usr/bin/env python3
"""The account's password in a keyring, on a bus of the test's own. This machine's keyring is never reached: without that
bus nothing is asked at all."""
import json
import os
import pty
import signal
import socket
import subprocess
import sys
import time
import unittest
from pathlib import Path

import dbus

sys.path[:0] = [str(Path(__file__).parents[1]), str(Path(__file__).parents[1] / "cli")]
import private_bus
from quillcast import PROGRAM, Case

ENTRY = "Quillcast Classic: ada at 127.0.0.1"
ON = " from the settings or from a command."
WAY_ON = "Unlock it and try once more, or let the account have its password" + ON


class Keyring(Case):
    def setUp(self):
        super().setUp()
        self.bus_folder, self.bus = private_bus.begin(self)
        self.log = self.bus_folder / "log"

    def keyring(self, behaviour):
        """Its control; what it is asked is in the log."""
        service = subprocess.Popen([sys.executable, Path(__file__).parent / "keyring_service.py", behaviour, self.log],
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(service.stdout.close)
        self.addCleanup(service.wait, 10)
        self.addCleanup(service.kill)
        self.assertEqual(service.stdout.readline(), "ready\n")
        bus = dbus.bus.BusConnection(self.bus)
        self.addCleanup(bus.close)
        return dbus.Interface(bus.get_object("org.freedesktop.secrets", "/control"), "test.Control")

    def contents(self, control):
        return [(str(label), str(secret)) for label, secret in control.Contents()]

    def logged(self):
        lines = self.log.read_text().splitlines() if self.log.exists() else []
        self.log.unlink(missing_ok=True)
        return lines

    def assert_nothing_is_stored(self):
        for file in self.profile.rglob("*"):
            if file.is_file():
                self.assertNotIn(b"geheim-7", file.read_bytes(), file)

    def sign_in(self, *settings):
        """An account that a mailbox asks for its password."""
        secret = self.write("secret", "geheim-7\n")
        box = self.mailbox("--auth", "ada", "--password-file", secret)
        self.account(box.port, "Auth=1", "Username=ada", "--password-file", secret, *settings)
        return box

    def at_a_terminal(self, *arguments):
        """A program whose standard input is a terminal, at which somebody may be."""
        ours, theirs = pty.openpty()
        self.addCleanup(os.close, ours)
        process = subprocess.Popen([PROGRAM, "--profile", str(self.profile), *arguments], stdin=theirs,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        os.close(theirs)
        return process

    def test_it_goes_there_and_is_used_and_goes_with_the_account(self):
        control = self.keyring("open")
        box = self.sign_in()
        self.ok("account", "set", "--password-from", "Keyring")
        self.assertEqual(self.contents(control), [(ENTRY, "geheim-7")])
        self.assert_nothing_is_stored()
        shown = self.ok("account", "show")
        self.assertIn("\nPassword=(in the keyring)\n", shown)
        self.assertIn("\nPasswordFrom=Keyring\n", shown)
        self.assertEqual(json.loads(self.ok("--json", "account", "show"))["Password"], "")
        self.ok("account", "test")
        self.group("Readers", ["a@example.org", "b@example.org", "c@example.org"])
        lines, code, err = self.send("--group", "Readers", "--subject", "x", "--body", self.write("t.html", "<p>y"))
        self.assertEqual((code, len(box.messages())), (0, 3), err)
        self.assertNotIn("geheim-7", json.dumps(lines) + err)
        self.assert_nothing_is_stored()
        for changed, whom in (("Server=localhost", "ada at localhost"), ("Username=bob", "bob at 127.0.0.1")):
            none = f"The keyring has no password for {whom}. Give "
            self.assertIn(none, self.run_program("account", "test", changed)[2])
            self.assertIn(none, self.run_program("account", "set", changed)[2])
            self.assertEqual(self.contents(control), [(ENTRY, "geheim-7")])
            self.ok("account", "set", changed, "--password-file", self.write("new", "neu-8"))
            self.assertEqual(self.contents(control), [(f"Quillcast Classic: {whom}", "neu-8")], "in place of the old one")
            self.ok("account", "set", "Server=127.0.0.1", "Username=ada", "--password-file", self.write("p", "geheim-7"))
        for arguments in (("set", "--password-from", "Settings", "--password-file", self.write("p", "geheim-7")),
                          ("set", "--password-command", "echo geheim-7"), ("set", "Auth=0"), ("reset", "--yes")):
            self.ok("account", "set", "Server=x", "Name=Ada", "Email=a@b.example", "Auth=1", "Username=ada",
                    "--password-from", "Keyring", "--password-file", self.write("p", "geheim-7"))
            self.assertEqual(len(self.contents(control)), 1)
            self.ok("account", *arguments)
            self.assertEqual(self.contents(control), [], arguments)

    def wait_until(self, process, happens):
        """Until that, or its end."""
        while process.poll() is None and not happens():
            time.sleep(0.01)

    def is_at_the_lock(self, process):
        fds = Path(f"/proc/{process.pid}/fd")
        try:
            return any(os.path.realpath(fd) == os.path.realpath(self.profile) for fd in fds.iterdir())
        except OSError:
            return False  # it has ended

    def test_two_who_change_the_account_at_once_lose_nothing(self):
        control = self.keyring("open")
        ini = "[Profile0]\nIsRelative=1\nPath=x\nDefault=1\n"
        prefs = {"accountmanager.accounts": "a", "account.a.identities": "i", "account.a.server": "s",
                 "identity.i.fullName": "Imp", "identity.i.useremail": "imp@other.example", "identity.i.smtpServer": "m",
                 "smtpservers": "m", "smtpserver.m.hostname": "smtp.other.example", "smtpserver.m.username": "imp"}
        home = self.folder / "home"
        (home / ".thunderbird/x").mkdir(parents=True)
        (home / ".thunderbird/profiles.ini").write_text(ini)
        (home / ".thunderbird/x/prefs.js").write_text("".join(f'user_pref("mail.{key}", "{value}");\n' for key, value in prefs.items()))
        new, third = self.write("new", "neu-8\n"), self.write("third", "drei-9\n")
        change_user = ("Username=bob", "Name=Bob", "--password-file", new)
        bobs = [("Quillcast Classic: bob at 127.0.0.1", "neu-8")]
        changed = "Nothing was saved. Another window or program has changed the account's server, security or sign-in meanwhile."
        rows = (("another key", True, change_user, ("set", "Timeout=2"), 0, "", bobs,
                 {"Username": "bob", "Name": "Bob", "Timeout": "2", "PasswordFrom": "Keyring"}),
                ("another key while it moves", False, ("--password-from", "Keyring", "Name=Bob"), ("set", "Timeout=2"), 0, "",
                 [(ENTRY, "geheim-7")], {"Username": "ada", "Name": "Bob", "Timeout": "2", "PasswordFrom": "Keyring", "Password": ""}),
                ("a password for the user of before", True, change_user, ("set", "Timeout=2", "--password-file", third), 75,
                 changed, bobs, {"Username": "bob", "Timeout": "1"}),
                ("another user", True, change_user, ("set", "Username=eve", "--password-file", third), 0, "",
                 [("Quillcast Classic: eve at 127.0.0.1", "drei-9")], {"Username": "eve", "Name": "Bob"}),
                ("a reset", True, change_user, ("reset", "--yes"), 0, "", [], {"Username": "", "Name": ""}),
                ("an import", True, change_user, ("import", "1", "--user-name", "--home", home), 0, "", bobs,
                 {"Username": "imp", "Name": "Imp", "Server": "smtp.other.example", "PasswordFrom": "Keyring"}))
        for name, in_keyring, first, second, code, told, kept, shown in rows:
            with self.subTest(name):
                control.Behave("open")
                self.ok("account", "reset", "--yes")
                self.account(2525, "Auth=1", "Username=ada", "--password-from", "Keyring" if in_keyring else "Settings",
                             "--password-file", self.write("secret", "geheim-7\n"))
                self.logged()
                control.Behave("held")
                with self.popen("account", "set", *first) as one:
                    self.wait_until(one, self.log.exists)
                    with self.popen("account", *second) as other:
                        self.wait_until(other, lambda other=other: self.is_at_the_lock(other))
                        control.Behave("open")
                        control.LetGo()
                        self.assertEqual(one.wait(30), 0, one.stderr.read())
                        self.assertEqual(other.wait(30), code)
                        self.assertIn(told, other.stderr.read().decode())
                self.assertEqual(self.contents(control), kept)
                now = json.loads(self.ok("--json", "account", "show"))
                self.assertEqual({key: now[key] for key in shown}, shown)
                if now["Server"] == "127.0.0.1":
                    self.assertIn("\nPassword=(in the keyring)\n", self.ok("account", "show"), "for this user")

    def test_the_newest_of_two_is_used_and_both_go(self):
        control = self.keyring("open")
        self.sign_in("Username=ada")
        self.ok("account", "set", "--password-from", "Keyring", "--password-file", self.write("old", "alt-6"))
        control.Behave("elsewhere")
        self.ok("account", "set", "--password-file", self.write("p", "geheim-7"))
        self.assertEqual([secret for _, secret in self.contents(control)], ["alt-6", "geheim-7"])
        self.ok("account", "test")
        self.ok("account", "reset", "--yes")
        self.assertEqual(self.contents(control), [])

    def test_what_keyrings_do_where_nobody_is_there(self):
        self.sign_in()
        control = self.keyring("open")
        before = self.ok("account", "show")
        tells = {
            "locked": (77, "The keyring is locked, and nobody is there to unlock it.\n" + WAY_ON, 77),
            "broken": (69, "The keyring could not be used: The file of?the keyring is damaged.\n" + WAY_ON, 0),
            "silent": (69, "The keyring gave no answer within 8 seconds, or was not unlocked in that time.\n" + WAY_ON, 0),
            "full": (0, "The keyring could not be used: No space left on device.\n" + WAY_ON, 69),
            "late": (0, "The keyring gave no answer within 8 seconds; it may have the password.\n" + WAY_ON, 69),
            "none": (0, "No keyring is set up yet, and nobody is there to choose its password.\n" + WAY_ON, 77)}
        for behaviour, (_, told, moving) in tells.items():
            with self.subTest(moves=behaviour):
                if not moving:
                    continue
                control.Behave(behaviour)
                code, out, err = self.run_program("account", "set", "--password-from", "Keyring")
                became = "The settings are as they were." if behaviour == "late" else "Nothing was saved."
                self.assertEqual((code, out, err), (moving, "", f"quillcast: {became} {told}\n"))
                self.assertEqual(self.ok("account", "show"), before)
        self.assertEqual(self.contents(control), [(ENTRY, "geheim-7")])
        control.Behave("open")
        self.ok("account", "set", "--password-from", "Keyring")
        self.group("Readers", ["a@example.org", "b@example.org"])
        letter = ("send", "--group", "Readers", "--subject", "x", "--body", self.write("t.html", "<p>y"))
        self.logged()
        for behaviour, (sending, told, _) in tells.items():
            with self.subTest(sends=behaviour):
                control.Behave(behaviour)
                code, out, err = self.run_program(*letter)
                self.assertEqual(code, sending, err)
                if sending:
                    self.assertEqual(err.count("keyring"), told.count("keyring"), err)
                    self.assertIn(f"quillcast: {told}\n", err)
        self.assertEqual(self.logged(), [], "nobody was asked for a password")

    def test_a_name_that_is_no_text_is_kept_as_another_is(self):
        self.sign_in()
        control = self.keyring("open")
        self.ok("account", "set", "--password-from", "Keyring", os.fsdecode(b"Username=ad\xff"), "--password-file", self.write("other", "other-1\n"))
        self.assertEqual([secret for _, secret in self.contents(control)], ["other-1"])
        for other in ("ad%FF", "%octets:ad%FF"):
            self.assertIn(f"The keyring has no password for {other} at", self.run_program("account", "test", f"Username={other}")[2])
        self.ok("account", "set", "Username=ada", "--password-file", self.folder / "secret")
        self.assertEqual(self.contents(control), [(ENTRY, "geheim-7")])

    def test_where_there_is_none(self):
        self.sign_in()
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(f"{self.bus_folder}/silent")
        listener.listen()
        for bus, told in ((self.bus, "No keyring runs in this session.\nStart one, or let the account have its password" + ON),
                          (f"unix:path={self.bus_folder}/nowhere", "The session bus, over which a keyring is asked, cannot "
                           "be reached: Could not connect: No such file or directory.\n" + WAY_ON),
                          ("", "There is no session bus here, over which a keyring is asked.\nStart this in the session of "
                           "a desktop, or let the account have its password" + ON),
                          (f"unix:path={self.bus_folder}/silent", "The keyring gave no answer within 8 seconds, or was not "
                           "unlocked in that time.\n" + WAY_ON)):
            with self.subTest(bus=bus):
                os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus
                os.environ["XDG_RUNTIME_DIR"] = str(self.bus_folder / "runtime")
                self.addCleanup(os.environ.pop, "XDG_RUNTIME_DIR", None)
                code, out, err = self.run_program("account", "set", "--password-from", "Keyring")
                self.assertEqual((code, out, err), (69, "", f"quillcast: Nothing was saved. {told}\n"))
                self.assertEqual(json.loads(self.ok("--json", "account", "show"))["Password"], "********")
        self.assertNotIn("keyring", self.run_program("account", "reset", "--yes")[2], "none ever had the password")

    def test_what_keyrings_do_where_somebody_may_be(self):
        control = self.keyring("open")
        self.sign_in()
        self.ok("account", "set", "--password-from", "Keyring")
        self.logged()
        for behaviour, code, told in (("locked", 0, "appear to be functioning correctly."),
                                      ("refuses", 69, "The keyring was not unlocked. " + WAY_ON)):
            with self.subTest(behaviour):
                control.Behave(behaviour)
                with self.at_a_terminal("account", "test") as process:
                    out = process.communicate(timeout=30)[0]
                self.assertEqual(process.returncode, code, out)
                self.assertIn(told, out)
                self.assertEqual(self.logged(), ["asked for a password"])
        control.Behave("endless")
        with self.at_a_terminal("account", "test") as process:
            while not self.log.exists():
                self.assertIsNone(process.poll())
                time.sleep(0.02)
            began = time.monotonic()
            process.send_signal(signal.SIGINT)
            out = process.communicate(timeout=30)[0]
        self.assertEqual(process.returncode, 75, out)
        self.assertIn("Asking the keyring was cancelled.", out)
        self.assertLess(time.monotonic() - began, 5)


if __name__ == "__main__":
    unittest.main()
