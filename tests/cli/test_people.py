"""Groups and recipients by command: what is shown, what is in the store afterwards, and what takes it back."""
import contextlib
import fcntl
import json
import os
import signal
import sqlite3
import struct
import subprocess
import termios
import time
import unittest

from quillcast import PROGRAM, Case


class People(Case):
    def setUp(self):
        super().setUp()
        for group, rows in {
            "A": [("ada@x.org", "ada", "VAN DER BERG"), ("bob@x.org", "Bob", "o'neill"), ("cy@x.org", "Cy", "McDonald")],
            "B": [("Bob <bob@x.org>", "Bob", ""), ("CY@x.org", "", "")],
        }.items():
            self.ok("group", "new", group)
            for address, first, last in rows:
                self.ok("recipient", "add", "-g", group, "-e", address, "-f", f"First Name={first}", "-f", f"Last Name={last}")

    def json(self, *arguments):
        return [json.loads(line) for line in self.ok("--json", *arguments).splitlines()]

    def addresses(self, group):
        return [row["Email Address"] for row in self.json("recipient", "list", "-g", group)]

    def rows(self):
        """Everything that people put in, as a program that is not ours reads it."""
        with sqlite3.connect(self.profile / "data" / "Group.mdb") as store:
            # Text is ordered and compared by our own collation, which only our program knows.
            return [store.execute(f"SELECT * FROM {table} ORDER BY ID").fetchall() for table in ("Groups", "Emails")]

    def pipe(self, line):
        done = subprocess.run(["sh", "-c", line.replace("$Q", f"'{PROGRAM}' --profile '{self.profile}'")], timeout=60,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)
        return done.returncode, done.stdout, done.stderr

    def test_changes_and_undo(self):
        """Rows of (command, its last object, what A and B hold then)."""
        a, b = self.addresses("A"), self.addresses("B")
        for command, told, left in [
            (["recipient", "move", "-g", "A", "--to", "B", "ADA@x.org", "cy@x.org"],
             {"group": "A", "to": "B", "done": "moved", "recipients": 1, "duplicates": 1},
             [["bob@x.org", "cy@x.org"], [*b, "ada@x.org"]]),
            (["recipient", "copy", "-g", "A", "--to", "B", "ada@x.org"],
             {"group": "A", "to": "B", "done": "copied", "recipients": 1, "duplicates": 0}, [a, [*b, "ada@x.org"]]),
            (["recipient", "delete", "-g", "A", "ada@x.org", "bob@x.org"],
             {"group": "A", "address": "bob@x.org", "done": "deleted"}, [["cy@x.org"], b]),
            (["group", "capitalise", "A"], {"group": "A", "done": "capitalise", "changed": 2}, [a, b]),
            (["recipient", "delete", "-g", "A", "ADA@x.org", "ada@x.org", " ada@x.org\t"],
             {"group": "A", "address": "ADA@x.org", "done": "deleted"}, [["bob@x.org", "cy@x.org"], b]),
            (["recipient", "copy", "-g", "A", "--to", "B", "ada@x.org", "Ada@x.org"],
             {"group": "A", "to": "B", "done": "copied", "recipients": 1, "duplicates": 0}, [a, [*b, "ada@x.org"]]),
            (["group", "merge", "A", "a", "--into", "b"],
             {"group": "B", "done": "merge", "merged": ["A"], "moved": 2, "duplicates": 1},
             [None, [*b, "ada@x.org", "bob@x.org"]]),
            (["group", "sort", "A", "--by", "last name desc, City"],
             {"group": "A", "sort": [{"field": "Last Name", "descending": True}, {"field": "City", "descending": False}]},
             [["ada@x.org", "bob@x.org", "cy@x.org"], b]),
            (["group", "delete", "A"], {"group": "A", "done": "delete", "recipients": 3}, [None, b]),
        ]:
            with self.subTest(command=command):
                before = self.rows()
                self.assertEqual(self.json("--yes", *command)[-1], told)
                groups = self.ok("group", "list").split()
                self.assertEqual([self.addresses(g) if g in groups else None for g in "AB"], left)
                self.assertNotEqual(self.rows(), before)
                self.assertEqual(self.json("group", "undo")[-1]["left"], 0)
                self.assertEqual(self.rows()[1], before[1], "the keys too")
                self.assertEqual([g[:2] for g in self.rows()[0]], [g[:2] for g in before[0]])
                self.assertEqual(self.run_program("group", "undo")[0], 64)

    def test_what_is_shown(self):
        self.assertEqual(self.ok("group", "capitalise", "A", "--dry-run"),
                         "ada@x.org\tFirst Name\tada\tAda\nada@x.org\tLast Name\tVAN DER BERG\tvan der Berg\n"
                         "bob@x.org\tLast Name\to'neill\tO'Neill\n")
        self.assertEqual(self.ok("group", "duplicates"),
                         "bob@x.org\tA\tbob@x.org\nbob@x.org\tB\tBob <bob@x.org>\ncy@x.org\tA\tcy@x.org\ncy@x.org\tB\tCY@x.org\n")
        self.assertEqual(self.ok("group", "duplicates", "A"), "")
        self.assertEqual(self.json("recipient", "groups", "BOB@x.org"),
                         [{"group": "A", "entry": "bob@x.org"}, {"group": "B", "entry": "Bob <bob@x.org>"}])
        with contextlib.closing(sqlite3.connect(self.profile / "data" / "Group.mdb")) as store, store:
            store.execute("UPDATE Groups SET GroupName = 'O''Neill' WHERE GroupName = 'B' COLLATE BINARY")
        self.assertIn("Bob <bob@x.org>", self.ok("find", "-g", "O'Neill", "bob"))
        self.ok("group", "rename", "O'Neill", "B")
        self.assertEqual(self.ok("find", "neill", "--fields"), "bob@x.org\tFirst Name=Bob\tLast Name=o'neill\tGroup=A\n")
        self.assertEqual(self.ok("find", "neill", "-g", "A"), "bob@x.org\tBob\to'neill\n")
        self.assertEqual(self.json("find", "-g", "A", "--field", "Email", "--compare", "starts with", "C"),
                         [{"group": "A", "Email Address": "cy@x.org", "First Name": "Cy", "Last Name": "McDonald"}])
        self.assertEqual(len(self.json("find", "--field", "First Name", "--compare", "Equals", "BOB", "--fields")[0]), 19)
        self.assertEqual(self.ok("group", "sort", "B"), "In the order in which they were added\n")
        for order in ("random()", None):  # as another program left it
            with sqlite3.connect(self.profile / "data" / "Group.mdb") as store:
                store.execute("UPDATE Groups SET SortSQL = ? WHERE ID = 2", (order,))
            code, out, err = self.run_program("group", "sort", "B")
            self.assertEqual((code, out), (0, "random()\n" if order else "In the order in which they were added\n"))
            self.assertEqual("is not understood" in err, bool(order), err)
        self.ok("recipient", "add", "-g", "B", "-e", "cy@x.org, home")
        self.assertEqual(self.json("--yes", "group", "duplicates", "B", "--delete")[-1],
                         {"group": "B", "done": "duplicates", "deleted": 1})
        self.assertEqual(self.json("group", "undo", "--show"),
                         [{"done": "show", "change": "duplicates", "group": "B", "recipients": 1}])
        self.ok("group", "undo", "--forget")
        self.assertEqual(self.json("group", "undo", "--show"), [{"done": "show", "change": None}])
        self.ok("group", "rename", "A", "Readers 2026")
        for command, told in [(["sort", "readers 2026", "--by", "Email"], 'sort "Readers 2026"\n'),
                              (["capitalise", "readers 2026"], 'capitalise "Readers 2026", 2 recipients\n')]:
            self.ok("--yes", "group", *command)
            self.assertEqual(self.ok("group", "undo", "--show"), told)

    def test_a_name_from_elsewhere_can_be_changed(self):
        with contextlib.closing(sqlite3.connect(self.profile / "data" / "Group.mdb")) as store, store:
            store.execute("UPDATE Groups SET GroupName = 'O''Neill' WHERE ID = (SELECT min(ID) FROM Groups)")
        for command in (["export", "-g"], ["--json", "export", "-g"], ["group", "duplicates"], ["recipient", "list", "-g"],
                        ["group", "count"]):
            self.ok(*command, "O'Neill")  # whatever is called so can be read
        code, _, err = self.run_program("--yes", "group", "delete", "O'Neill")
        self.assertEqual((code, "Give the group another name first" in err), (64, True), err)
        self.account(25)
        for command in (["group", "delete"], ["group", "sort", "--by", "City"],
                        ["send", "--subject", "s", "--body", self.write("page.html", "x"), "--dry-run", "--group"]):
            code, _, err = self.run_program("--yes", *command, "x'y")
            self.assertEqual((code, "no group" in err, "another name" in err), (64, True, False), err)
        self.ok("group", "rename", "O'Neill", "A")
        self.assertEqual(self.rows()[0][0][1], "A")

    def test_pipes(self):
        self.assertEqual(self.pipe("$Q find -g A x.org | $Q --yes recipient move -g A --to B -")[0], 0)
        self.assertEqual(self.addresses("A"), ["cy@x.org"])
        code, _, err = self.pipe("printf 'cy@x.org\\r\\n\\nnobody@x.org\\n' | $Q --yes recipient delete -g A -")
        self.assertEqual((code, self.addresses("A")), (64, ["cy@x.org"]), "all of them or none")
        self.assertIn("nobody@x.org", err)
        self.assertEqual(self.pipe("$Q --yes recipient delete -g A - </dev/null")[0], 66)
        self.assertEqual(self.pipe("echo cy@x.org | $Q recipient delete -g A -")[0], 77, "nobody answers the question")
        self.assertEqual(self.pipe("$Q find x.org >/dev/full")[0], 74)
        code, _, err = self.pipe("$Q import - -g A --harvest --opt-in <&-")
        self.assertEqual(code, 66)
        self.assertIn("Standard input is closed.\nDirect a file", err)
        self.assertEqual(self.addresses("A"), ["cy@x.org"])

    def test_names_with_blanks_around_them(self):
        """They come in by an import, which tells of them, and are named by what is shown, or without their blanks."""
        list_ = self.write("list", "Ada, a1@x.org\nBob,b1@x.org\nCy,\tc1@x.org \nDo, d1@x.org\n")
        _, _, err = self.run_program("import", list_, "-g", "A", "--map", "Email Address=2", "--opt-in")
        self.assertIn("3 addresses have blanks around them, which are stored with them; the first is “ a1@x.org”.", err)
        self.ok("recipient", "modify", "-g", "A", "a1@x.org", "-f", "Email=a2@x.org")
        self.assertEqual(self.pipe("$Q find -g A 1@x.org | $Q --yes recipient move -g A --to B -")[0], 0)
        self.assertEqual(self.addresses("B")[2:], ["b1@x.org", "\tc1@x.org ", " d1@x.org"])
        before = self.rows()
        self.assertEqual(self.run_program("--yes", "recipient", "delete", "-g", "B", "d1@x.org", "d2@x.org")[0], 64)
        self.assertEqual(self.rows(), before)
        self.ok("--yes", "recipient", "delete", "-g", "B", "D1@x.org", "c1@x.org")
        self.assertEqual(self.addresses("B")[2:], ["b1@x.org"])

    def test_interrupted_lists_end_at_a_line(self):
        """The reader takes nothing for a while, as a pager does; meanwhile the store can be written."""
        rows = "".join(f"user{n}@example.org,ada{n}\n" for n in range(30_000))
        self.ok("import", self.write("many", rows), "-g", "A", "--map", "Email Address=1,First Name=2", "--opt-in")
        lists = ["recipient list -g A", "find example.org", "group capitalise A --dry-run", "export -g A",
                 "--json export -g A --fields All", "--json recipient list -g A"]
        for command in lists:
            whole = self.ok(*command.split()).encode()
            for signals in (1, 2):
                with self.subTest(command=command, signals=signals), self.popen(*command.split()) as process:
                    begun = os.read(process.stdout.fileno(), 1)  # past the buffer of the object
                    time.sleep(0.2)
                    self.ok("recipient", "modify", "-g", "B", "CY@x.org", "-f", "City=Oslo")
                    for _ in range(signals):
                        process.send_signal(signal.SIGINT)
                        time.sleep(0.5)
                    if signals == 2:
                        process.wait(60)
                    rest, err = process.communicate(timeout=60)
                    shown = begun + rest
                    self.assertEqual(process.returncode, 75)
                    self.assertIn(b"nothing was changed" if "capitalise" in command else b"cancelled", err)
                    self.assertTrue(whole.startswith(shown) and shown.endswith(b"\n"), shown[-200:])
                    self.assertLess(len(shown), len(whole))

    def test_an_interrupted_export_ends_at_a_record(self):
        """Of several lines, whoever reads; and of more octets than a pipe takes at once, with a reader that goes on."""
        for group, city, goes_on in (("Lines", "a\nb", False), ("Long", "a" * 9000, True)):
            self.ok("group", "new", group)
            rows = "".join(f'user{n}@example.org,"{city}"\n' for n in range(30_000 if group == "Lines" else 3000))
            self.ok("import", self.write("many", rows), "-g", group, "--map", "Email Address=1,City=2", "--rfc4180", "--opt-in")
            whole = self.ok("export", "-g", group, "--fields", "City,Email Address", "--rfc4180").encode()
            for signals in (1, 2):
                with (self.subTest(group=group, signals=signals),
                      self.popen("export", "-g", group, "--fields", "City,Email Address", "--rfc4180") as process):
                    begun = os.read(process.stdout.fileno(), 1)
                    time.sleep(0.2)
                    for _ in range(signals):
                        process.send_signal(signal.SIGINT)
                        time.sleep(0.5)
                    if signals == 2 and not goes_on:
                        process.wait(60)
                    shown = begun + process.communicate(timeout=60)[0]
                    self.assertEqual(process.returncode, 75)
                    self.assertTrue(whole.startswith(shown) and shown.endswith(b"@example.org\r\n"), shown[-60:])
                    self.assertEqual(shown.count(b'"') % 2, 0)

    def test_interrupted_input(self):
        before = self.rows()
        for command in (["--yes", "recipient", "delete", "-g", "A", "-"],
                        ["import", "-", "-g", "A", "--harvest", "--opt-in"]):
            with subprocess.Popen([PROGRAM, "--profile", self.profile, *command], stdin=subprocess.PIPE,
                                  stderr=subprocess.PIPE) as process:
                process.stdin.write(b"ada@x.org\nbob@x.org")
                process.stdin.flush()
                while struct.unpack("i", fcntl.ioctl(process.stdin, termios.FIONREAD, b"\0" * 4))[0] > 0:  # not read yet
                    self.assertIsNone(process.poll())
                    time.sleep(0.02)
                time.sleep(0.1)
                process.send_signal(signal.SIGINT)
                self.assertEqual(process.wait(60), 75)
                self.assertIn(b"nothing was changed", process.stderr.read())
        self.assertEqual(self.rows(), before)

    def test_refused(self):
        before = self.rows()
        for arguments, code, word in [
            (["group", "sort", "A", "--by", "Shoe"], 64, '"Last Name"'),
            (["group", "sort", "A", "--by", "Shoe"], 64, '"Shoe" names no field'),
            (["recipient", "modify", "-g", "A", "ada@x.org", "-f", "Shoe=1"], 64, '"Shoe=1" names no field'),
            (["group", "sort", "A", "--by", "City", "--as-added"], 64, "--as-added"),
            (["--yes", "group", "merge", "A", "Nobody", "--into", "B"], 64, 'no group "Nobody"'),
            (["--yes", "group", "merge", "A", "B", "--into", "B"], 64, "already"),
            (["--yes", "group", "duplicates", "--delete"], 64, "one group at a time"),
            (["group", "undo"], 64, "nothing to take back"),
            (["group", "merge", "A", "--into", "B"], 77, "Nothing was changed"),
            (["group", "capitalise", "A"], 77, "Nothing was changed"),
            (["--yes", "recipient", "move", "-g", "A", "--to", "a", "ada@x.org"], 64, "Choose another group"),
            (["--yes", "recipient", "copy", "-g", "A", "--to", "B", "eve@x.org"], 64, "eve@x.org"),
            (["find", ""], 64, "Please enter your search term."),
            (["find", "x", "--field", "Shoe"], 64, "All fields"),
            (["find", "x", "--compare", "like"], 64, "Starts with"),
            (["find", "x", "-g", "A", "--field", "Address 1"], 64, "Search all fields"),
            (["find", "x", "-g", "Nobody"], 64, 'no group "Nobody"'),
            (["group", "list", "--bogus="], 64, "not expected: --bogus="),
            (["find", "--fields=", "x", "-g", "A"], 64, "--fields takes no value."),
            (["group", "undo", "--yes="], 64, "--yes takes no value."),
        ]:
            with self.subTest(arguments=arguments):
                got, out, err = self.run_program(*arguments)
                self.assertEqual(got, code, out + err)
                self.assertIn(word, err)
        self.assertEqual(self.rows(), before)

    def test_help(self):
        """Each command has an example that the program itself understands."""
        for group, names in {"group": "list new rename delete count sort merge capitalise duplicates undo",
                             "recipient": "list add modify delete move copy groups", "find": ""}.items():
            for name in names.split() or [None]:
                self.assertIn("Example: quillcast ", self.ok(group, *([name] if name else []), "--help"))


if __name__ == "__main__":
    unittest.main()
