"""Recipients out of a group, to a file, a pipe or a program."""
import csv
import io
import json
import os
import subprocess
import time
import unittest

from quillcast import PROGRAM, Case

FIELDS = "Email Address,First Name,City"


class Export(Case):
    def setUp(self):
        super().setUp()
        self.ok("group", "new", "Readers")
        list_ = self.write("list.csv", 'ada@r.example;Ada "the first";\nbob@r.example;=1+1;K\u00f6ln, am Rhein\n')
        self.ok("import", list_, "-g", "Readers", "--delimiter", "Semicolon", "--opt-in", "--map",
                "Email Address=1,First Name=2,City=3")
        self.file = self.folder / "out.txt"

    def export(self, *arguments):
        return self.ok("export", "-g", "Readers", *arguments)

    def test_formats(self):
        for arguments, expected in [
            ([], "ada@r.example\r\nbob@r.example\r\n"),
            (["--fields", "email"], "ada@r.example\r\nbob@r.example\r\n"),
            (["--fields", "City, first name"], '\tAda "the first"\r\nK\u00f6ln, am Rhein\t=1+1\r\n'),
            (["--fields", "First Name", "--inert-formulas"], "Ada \"the first\"\r\n'=1+1\r\n"),
            (["--fields", FIELDS, "--delimiter", "Colon"], 'ada@r.example:Ada "the first":\r\nbob@r.example:=1+1:K\u00f6ln, am Rhein\r\n'),
        ]:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.export(*arguments), expected)
                self.assertEqual(self.export(*arguments, f"-o={self.file}"), "2 recipients exported successfully.\n")
                self.assertEqual(self.file.read_bytes().decode(), expected)

    def test_others_read_rfc_4180(self):
        rows = list(csv.DictReader(io.StringIO(self.export("--fields", "All", "--rfc4180"), newline="")))
        self.assertEqual([row["City"] for row in rows], ["", "K\u00f6ln, am Rhein"])
        self.assertEqual(rows[0]["First Name"], 'Ada "the first"')
        self.assertEqual(len(rows[0]), 18)

    def test_json(self):
        out = self.ok("--json", "export", "-g", "Readers", "--fields", FIELDS)
        self.assertEqual([json.loads(line) for line in out.splitlines()],
                         [{"Email Address": "ada@r.example", "First Name": 'Ada "the first"', "City": ""},
                          {"Email Address": "bob@r.example", "First Name": "=1+1", "City": "K\u00f6ln, am Rhein"}])
        self.assertEqual(self.ok("--json", "export", "-g", "Readers", "--fields", "First Name", "--inert-formulas").splitlines()[1],
                         """{"First Name":"'=1+1"}""")
        for option in (["--rfc4180"], ["--delimiter", "Tab"]):
            code, out, err = self.run_program("--json", "export", "-g", "Readers", *option)
            self.assertEqual((code, out, "--rfc4180 and --delimiter" in err), (64, "", True))
        out = self.ok("--json", "export", "-g", "Readers", "-o", self.file)
        self.assertEqual(json.loads(out), {"exported": 2, "file": str(self.file), "lost": 0})

    def test_bad_input(self):
        locked = self.folder / "locked.txt"
        locked.write_text("old")
        locked.chmod(0o444)
        kept = self.profile / "data" / "Group.mdb"
        nowhere = self.folder / "nowhere"
        nowhere.symlink_to("gone")
        for arguments, code, *words in [
            (["-g", "Writers"], 64, 'no group "Writers"', "group list"),
            (["-g", ""], 64, "Please select a group."),
            (["-g", "Readers", "-o", ""], 64, "--output: names nothing"),
            (["-g", "Readers", "--fields", "Town"], 64, '"Town" names no field', '"City"'),
            (["-g", "Readers", "--delimiter", "|"], 64, "no delimiter", "Semicolon"),
            (["-g", "Readers", "-o", self.folder], 73, "Name a file in that folder"),
            (["-g", "Readers", "-o", nowhere], 73, "it is a link to gone, and nothing is there"),
            (["-g", "Readers", "-o", kept], 77, "keeps its own files there", "Name another file"),
            (["-g", "Readers", "-o", locked], 77, "locked.txt is locked", "--yes"),
        ]:
            with self.subTest(arguments=arguments):
                got, _, err = self.run_program("export", *arguments)
                self.assertEqual(got, code, err)
                for word in words:
                    self.assertIn(word, err)
        self.assertEqual(locked.read_text(), "old")
        self.ok("--yes", "export", "-g", "Readers", "-o", locked)
        self.assertEqual(locked.read_text(), "ada@r.example\nbob@r.example\n")

    def test_an_output_that_does_not_wait(self):
        many = self.write("many.txt", "".join(f"user{n}@example.org\n" for n in range(20_000)))
        self.ok("import", many, "-g", "Readers", "--map", "Email Address=1", "--opt-in")
        whole = self.export()
        take, give = os.pipe()
        os.set_blocking(give, False)
        with (os.fdopen(take, "rb") as reader,
              subprocess.Popen([PROGRAM, "--profile", self.profile, "export", "-g", "Readers"], stdout=give) as process):
            os.close(give)
            time.sleep(0.3)  # the pipe is full by now
            self.assertEqual(reader.read().decode(), whole)
            self.assertEqual(process.wait(20), 0)

    def test_a_reader_that_leaves_early(self):
        many = self.write("many.txt", "".join(f"user{n}@example.org\n" for n in range(20_000)))
        self.ok("import", many, "-g", "Readers", "--map", "Email Address=1", "--opt-in")
        for command, first in [("export -g Readers", b"ada@r.example\r\n"), ("find example.org", b"user0@example.org\t\t\tReaders\n")]:
            shell = subprocess.run(["sh", "-c", f"'{PROGRAM}' --profile '{self.profile}' {command} | head -1"],
                                   capture_output=True, timeout=60)
            self.assertEqual(shell.stdout, first)
        found = self.ok("find", "-g", "Readers", "example.org").splitlines()
        self.assertEqual([line.split("\t")[0] for line in found], [f"user{n}@example.org" for n in range(20_000)])
        with open("/dev/full", "wb") as full:
            done = subprocess.run([PROGRAM, "--profile", self.profile, "export", "-g", "Readers"], stdout=full,
                                  stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(done.returncode, 74)
        self.assertNotIn(b"exported", done.stderr)


if __name__ == "__main__":
    unittest.main()
