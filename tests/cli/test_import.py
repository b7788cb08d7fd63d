"""Lists as people have them, imported by command: headings, delimiters, quotes, standard input, and what is told."""
import contextlib
import json
import sqlite3
import os
import subprocess
import unittest
import zipfile

from quillcast import Case, PROGRAM

SHOP = ('"Order";"Billing First Name";"Billing Last Name";"Billing Email";"Note"\r\n'
        '"1";"Ada";"Lovelace";"ada@r.example";"rings; twice\r\nplease"\r\n'
        '"2";"Jörg";"O\'Neill";"joerg@r.example";"says ""hi"""\r\n')


class Import(Case):

    def setUp(self):
        super().setUp()
        self.ok("group", "new", "All")

    def run_import(self, *arguments, given=None):
        done = subprocess.run([PROGRAM, "--profile", self.profile, "--json", "import", *map(str, arguments)], timeout=60,
                              input=given if given is not None else b"", capture_output=True)
        return done.returncode, [json.loads(line) for line in done.stdout.decode().splitlines()], done.stderr.decode()

    def recipients(self, *fields):
        rows = map(json.loads, self.ok("--json", "recipient", "list", "-g", "All", "--fields").splitlines())
        return [tuple(row[field] for field in fields) for row in rows]

    def test_a_list_of_a_web_shop(self):
        shop = self.write("shop.csv", SHOP)
        reading = ["--header", "--delimiter", "Auto", "--rfc4180"]
        code, said, err = self.run_import(shop, "-g", "All", *reading, "--dry-run")
        self.assertEqual((code, said[0]["added"], said[0]["dry_run"]), (0, 2, True), err)
        self.assertEqual(self.recipients("Email Address"), [])
        self.assertTrue(self.ok("import", self.write("one", "ada@r.example"), "-g", "All", "--harvest", "--dry-run").startswith(
            "1 recipient would be imported.\n0 duplicate recipients would be ignored.\n"))
        code, said, err = self.run_import(shop, "-g", "All", *reading, "--opt-in", "--save-mapping", "Shop")
        self.assertEqual((code, said[0]["added"], said[0]["ignored"], said[0]["warnings"]), (0, 2, 0, []), err)
        self.assertEqual(said[0]["mapping"], "Email Address=4,First Name=2,Last Name=3")
        self.assertIn("Delimiter: Semicolon (found out).", err)
        self.assertIn('Email Address = "Billing Email"', err)
        self.assertEqual(self.recipients("Email Address", "First Name", "Last Name"),
                         [("ada@r.example", "Ada", "Lovelace"), ("joerg@r.example", "Jörg", "O'Neill")])
        # The next one comes in the same way, with what is new.
        new = SHOP + '"3";"Eve";"";"eve@r.example";""\r\n'
        code, said, err = self.run_import("-", "-g", "All", "--mapping", "shop", "--opt-in", given=new.encode())
        self.assertEqual((code, said[0]["added"], said[0]["duplicates"], said[0]["ignored"]), (0, 1, 2, 0), err)
        self.assertEqual(self.recipients("First Name")[-1], ("Eve",))

    def test_a_number_of_lines_is_decimal(self):
        list_ = self.write("list.csv", "".join(f"a{n}@r.example\n" for n in range(12)))
        for skip, added in (("010", 2), (" 8 ", 4), ("0", 12)):
            _, said, err = self.run_import(list_, "-g", "All", "--map", "Email Address=1", "--skip", skip, "--dry-run")
            self.assertEqual(said[-1]["added"], added, err)

    def test_a_preview_shows_fields_by_number_or_by_name(self):
        shop = self.write("shop.csv", SHOP)
        code, said, err = self.run_import(shop, "--preview", "--delimiter", "Auto", "--rfc4180", "--skip", "1")
        self.assertEqual(code, 0, err)
        self.assertEqual(said[0], {"encoding": "UTF-8", "known_by": "all of it is valid", "format": "delimited text",
                                   "delimiter": "Semicolon"})
        self.assertEqual(said[1], {"line": 2, "Field 1": "1", "Field 2": "Ada", "Field 3": "Lovelace",
                                   "Field 4": "ada@r.example", "Field 5": "rings; twice\r\nplease"})
        self.assertEqual(said[2]["line"], 4)
        text = self.ok("import", shop, "--preview", "--delimiter", "Semicolon", "--rfc4180", "--header")
        self.assertIn("Line 2:\n  Email Address = ada@r.example\n  First Name = Ada\n", text)
        self.assertIn("Delimiter: Semicolon\n", text)
        self.assertIn("  Field 5 = ada@r.example\n", self.ok("import", self.write("wide", "1,2,3,4,ada@r.example"), "--preview"))

    def test_headings_beyond_the_eighteenth_field(self):
        wide = self.write("wide.csv", ",".join(f"x{n}" for n in range(24)) + ",Email\n" + "," * 24 + "ada@r.example\n")
        code, _, err = self.run_import(wide, "-g", "All", "--header", "--opt-in")
        self.assertEqual(code, 65)
        self.assertIn('"Email" (column 25). Reorder the columns, or take these: --take 25.', err)
        half = self.write("half.csv", "Email\n\nEmail,City," + "," * 16 + "Phone\nada@r.example,Oslo" + "," * 17 + "22\nbob@r.example\n")
        code, said, err = self.run_import(half, "-g", "All", "--header", "--dry-run")
        self.assertEqual((code, said[0]["added"], said[0]["mapping"]), (0, 2, "Email Address=1,City=2"), err)
        self.assertIn('"Phone" (column 19). Reorder the columns, or take these: --take 1,2,19.', said[0]["warnings"][0])
        self.assertIn("--take 1,2,19", err)
        code, said, err = self.run_import(half, "-g", "All", "--header", "--take", "1,2,19", "--opt-in")
        self.assertEqual((code, said[0]["mapping"], said[0]["warnings"]), (0, "Email Address=1,City=2,Phone=3", []), err)
        self.assertEqual(self.recipients("Email Address", "City", "Phone"),
                         [("ada@r.example", "Oslo", "22"), ("bob@r.example", "", "")])
        code, said, err = self.run_import(wide, "--preview")
        self.assertEqual((said[2]["Field 18"], said[2]["Field 25"]), ("", "ada@r.example"))
        self.assertIn("with --take 25,1,2, Field 25 is number 1", err)
        code, said, err = self.run_import(wide, "-g", "All", "--map", "Email Address=2", "--take", "1,25", "--opt-in", "--save-mapping", "Wide")
        self.assertEqual((code, said[0]["added"], said[0]["ignored"]), (0, 0, 1), err)  # ada is there
        self.assertEqual(self.run_import(wide, "--mapping", "Wide", "--preview")[1][2], {"line": 2, "Email Address": "ada@r.example"})
        self.assertEqual(self.run_import("--list-mappings")[1][0]["columns"], "1,25")
        self.assertEqual(self.run_import(wide, "--mapping", "Wide", "--take", "all", "--preview")[1][2], {"line": 2, "Email Address": ""})
        # What the mapping takes and no line has is told of each column, and not only of the address.
        narrow = self.write("narrow.csv", "bob@r.example,Oslo\n")
        for words, told in [(["--mapping", "Wide"], "1 column that is taken stands in no line that was read: 25."),
                            (["--map", "Email Address=1,City=2,Phone=7"],
                             "1 field that the mapping takes stands in no line that was read: Phone=7."),
                            (["--map", "Email Address=1,City=2"], None)]:
            for way in ("--dry-run", "--preview"):
                with self.subTest(words=words, way=way):
                    _, said, err = self.run_import(narrow, "-g", "All", *words, way)
                    self.assertEqual("in no line" in err, told is not None, err)
                    self.assertIn(told or "", err)
                    if way == "--dry-run":
                        self.assertEqual(told in said[0]["warnings"], told is not None)
        for take, more, told in (("0", ["--header"], '"0" is no column'), ("a", ["--header"], '"a" is no column'),
                                 (",".join(["1"] * 19), ["--header"], "19 columns are too many"),
                                 (" ", ["--header"], "or All"),
                                 ("1", ["--harvest"], "does not go with --harvest")):
            code, _, err = self.run_import(half, "-g", "All", "--take", take, *more, "--opt-in")
            self.assertEqual(code, 64, err)
            self.assertIn(told, err)

    def test_mappings_that_are_kept(self):
        list_ = self.write("list", "ada@r.example\tAda\n")
        self.run_import(list_, "-g", "All", "--map", "Email Address=1,First Name=2", "--delimiter", "Tab", "--quotes",
                        "--skip", "2", "--sheet", "March", "--encoding", "KOI8-R", "--save-mapping", "Mine", "--preview")
        self.assertEqual(self.run_import("--list-mappings")[1],
                         [{"name": "Mine", "mapping": "Email Address=1,First Name=2", "delimiter": "Tab", "quotes": True,
                           "rfc4180": False, "skip": 2, "sheet": "March", "encoding": "KOI8-R", "columns": ""}])
        self.assertIn("Encoding: KOI8-R", self.ok("import", list_, "--mapping", "Mine", "--preview"))
        self.assertIn("Encoding: UTF-8", self.ok("import", list_, "--mapping", "Mine", "--encoding", "auto", "--preview"))
        self.run_import(list_, "--mapping", "Mine", "--sheet", "", "--encoding", "Auto", "--save-mapping", "Bare", "--preview")
        self.assertEqual([kept["sheet"] + kept["encoding"] for kept in self.run_import("--list-mappings")[1]], ["", "MarchKOI8-R"])
        self.run_import("--delete-mapping", "Bare")
        code, said, err = self.run_import(list_, "-g", "All", "--mapping", "Mine", "--opt-in")
        self.assertEqual((code, said[0]["added"]), (65, 0), "both lines are skipped")
        code, said, err = self.run_import(list_, "-g", "All", "--mapping", "Mine", "--skip", "0", "--dry-run")
        self.assertEqual((code, said[0]["added"]), (0, 1), err)
        for refused in (["-g", "Nobody", "--opt-in"], ["-g", "All"], ["-g", "All", "--encoding", "nosuch", "--opt-in"]):
            self.assertNotEqual(self.run_import(list_, *refused, "--map", "Email=1", "--save-mapping", "Refused")[0], 0)
        self.assertEqual([kept["name"] for kept in self.run_import("--list-mappings")[1]], ["Mine"])
        self.assertEqual(self.run_import("--delete-mapping", "mine")[:2], (0, [{"name": "mine", "done": "deleted"}]))
        code, _, err = self.run_import(list_, "-g", "All", "--mapping", "Mine")
        self.assertEqual(code, 64)
        self.assertIn('no mapping "Mine"', err)
        # Somebody has changed one by hand: it is refused, and the others are listed.
        for name, column in (("A", "1"), ("B", "2")):
            self.run_import(list_, "--map", "Email Address=1", "--take", column, "--save-mapping", name, "--preview")
        with contextlib.closing(sqlite3.connect(self.profile / "settings.db")) as settings, settings:
            settings.execute("""UPDATE Settings SET Value = replace(Value, '"columns":"1"', '"columns":"one"')""")
        code, said, err = self.run_import("--list-mappings")
        self.assertEqual((code, [kept["name"] for kept in said]), (65, ["B"]), err)
        for words in (["--preview"], ["-g", "All", "--opt-in"]):
            code, said, err = self.run_import(list_, "--mapping", "A", *words)
            self.assertEqual((code, said), (65, []), err)
            self.assertIn('The mapping "A" is damaged: its "columns" cannot be read.\nRemove it', err)
        self.assertEqual(self.run_import("--delete-mapping", "A")[0], 0)
        # All of them: no single one can be named any more.
        with contextlib.closing(sqlite3.connect(self.profile / "settings.db")) as settings, settings:
            settings.execute("UPDATE Settings SET Value = '[1]' WHERE Key = 'Mappings'")
        code, _, err = self.run_import("--delete-mapping", "B")
        self.assertEqual(code, 65, err)
        self.assertIn("`quillcast import --forget-mappings` forgets all of them", err)
        self.assertEqual(self.run_program("import", "--forget-mappings")[0], 77)
        self.assertEqual(self.run_program("--yes", "import", "--forget-mappings")[0], 0)
        self.assertEqual(self.run_import("--list-mappings")[:2], (0, []))

    def test_what_does_not_go(self):
        list_ = self.write("list.csv", "Name,Town\nAda,Paris\n")
        for words, exit_code, part in [
            ([list_, "-g", "All"], 64, "--header"),
            ([list_, "-g", "All", "--header", "--map", "Email Address=1"], 64, "either --harvest or --map"),
            ([list_, "-g", "All", "--header", "--opt-in"], 65, "names no field for the address: Name, Town"),
            ([self.write("late", "ada@r.example,Ada\nEmail,Name\n"), "-g", "All", "--header"], 65, "address: ada@r.example, Ada"),
            ([self.write("far", "Town" + "," * 18 + "Phone\n"), "-g", "All", "--header"], 65, "names no field for the address: Town"),
            ([self.write("wide", "x," * 600_000), "-g", "All", "--header"], 65, "The heading line, line 1, cannot be read"),
            (["-", "-g", "All", "--harvest", "--opt-in"], 65, "Standard input holds no address"),
            ([list_, "-g", "All", "--map", "Email Address=1", "--quotes", "--rfc4180"], 64, "exclude each other"),
            (["-g", "All", "--harvest"], 64, "No file is named"),
            ([list_, "-g", "All", "--harvest", "--skip", "1", "--opt-in"], 64, "--skip does not go with --harvest"),
            ([list_, "-g", "All", "--harvest", "--skip=1000000001"], 64, "no number of lines from 0 to 1,000,000,000"),
            (["--delete-mapping", "none"], 64, 'no mapping "none"'),
            ([list_, "-g", "All", "--harvest", "--format", "Word"], 64, '"Word" is no format'),
            ([list_, "-g", "All", "--harvest", "--opt-in", "--format", "spreadsheet"], 65, "no whole archive"),
            ([list_, "-g", "All", "--map", "Email Address=1", "--format", "vCard", "--opt-in"], 65, "holds no address"),
            ([self.write("old.xls", b"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"), "-g", "All", "--header"], 65, "old kind"),
            ([self.write("a.zip", b"PK\3\4"), "-g", "All", "--harvest", "--opt-in"], 65, "is damaged"),
        ]:
            code, said, err = self.run_import(*words)
            self.assertEqual(code, exit_code, (words, said, err))
            self.assertIn(part, err)

    def test_mappings_are_not_deleted_beside_something_else(self):
        list_ = self.write("list.csv", "ada@r.example\n")
        for name in ("One", "Two"):
            self.run_import(list_, "--map", "Email Address=1", "--save-mapping", name, "--preview")
        for words in (["--delete-mapping", "One", "--forget-mappings"], [list_, "--forget-mappings"],
                      [list_, "-g", "All", "--harvest", "--opt-in", "--delete-mapping", "One"], ["-", "--list-mappings"],
                      ["--delete-mapping", "One", "--harvest"], ["--delete-mapping", "One", "-g", "All"],
                      ["--list-mappings", "--sheet", ""], ["--forget-mappings", "--dry-run"]):
            code, _, err = self.run_program("--yes", "import", *words)
            self.assertEqual(code, 64, (words, err))
            self.assertIn(" excludes ", err)
        self.assertEqual([kept["name"] for kept in self.run_import("--list-mappings")[1]], ["One", "Two"])

    def test_standard_input_is_read_once_and_leaves_nothing(self):
        given = b"First,Mail\n" + b"".join(b"F%d,u%d@r.example\n" % (n, n) for n in range(5000))
        code, said, err = self.run_import("-", "-g", "All", "--header", "--opt-in", given=given)
        self.assertEqual((code, said[0]["added"]), (0, 5000), err)
        self.assertEqual(sorted(path.name for path in (self.profile / "Temp").iterdir()), ["ReportButton.txt"])

    def test_a_spreadsheet(self):
        sheet = self.folder / "list.data"  # whatever it is called
        rows = "".join(f"<row><c t='s'><v>{n % 2}</v></c><c t='inlineStr'><is><t>u{n}@r.info</t></is></c></row>"
                       for n in range(20_000))
        head = "<row><c t='inlineStr'><is><t>Vorname</t></is></c><c t='inlineStr'><is><t>E-Mail</t></is></c></row>"
        with zipfile.ZipFile(sheet, "w", zipfile.ZIP_DEFLATED) as book:
            book.writestr("[Content_Types].xml", "<Types/>")
            book.writestr("xl/workbook.xml", "<workbook><sheets><sheet r:id='a'/><sheet r:id='b'/></sheets></workbook>")
            book.writestr("xl/_rels/workbook.xml.rels",
                          "<R><Relationship Id='a' Target='/xl/one.xml'/><Relationship Id='b' Target='two.xml'/>"
                          "<Relationship Id='c' Type='/sharedStrings' Target='texts.xml'/></R>")
            book.writestr("xl/texts.xml", "<sst><si><t>Ada</t></si><si><t>Jörg</t></si></sst>")
            book.writestr("xl/one.xml", f"<worksheet>{head}{rows}</worksheet>")
            book.writestr("xl/two.xml", "<worksheet><row><c><v>1</v></c></row></worksheet>")
        code, said, err = self.run_import(sheet, "-g", "All", "--header", "--opt-in")
        self.assertEqual((code, said[0]["added"], said[0]["ignored"], said[0]["format"]), (0, 20_000, 0, "spreadsheet"), err)
        self.assertEqual(said[0]["warnings"], ["1 more sheet of the file was not read."])
        self.assertEqual(self.recipients("Email Address", "First Name")[:2], [("u0@r.info", "Ada"), ("u1@r.info", "Jörg")])
        code, said, _ = self.run_import("-", "-g", "All", "--harvest", "--opt-in", given=sheet.read_bytes())
        self.assertEqual((code, said[0]["duplicates"]), (0, 20_000))
        with zipfile.ZipFile(sheet, "w", zipfile.ZIP_DEFLATED) as book:
            book.writestr("[Content_Types].xml", "<Types/>")
            book.writestr("xl/workbook.xml", "<workbook><sheets><sheet r:id='a'/></sheets></workbook>")
            book.writestr("xl/_rels/workbook.xml.rels", "<R><Relationship Id='a' Target='/xl/one.xml'/></R>")
            long = "".join(f"<row><c t='inlineStr'><is><t>{text}</t></is></c></row>"
                           for text in ("eve@r.info", "max@r.info " + os.urandom(600_000).hex()))
            book.writestr("xl/one.xml", f"<worksheet>{long}</worksheet>")
        code, said, err = self.run_import(sheet, "-g", "All", "--harvest", "--opt-in")
        self.assertEqual((code, said[0]["added"]), (0, 1), err)
        self.assertIn("1 line is longer than 1 MiB", said[0]["warnings"][0])

    def test_address_books(self):
        for name, content in [
            ("vCard", "BEGIN:VCARD\nN:Lovelace;Ada\nEMAIL:ada@r.example\nNOTE:hers\nEND:VCARD\n"),
            ("LDIF", "dn: cn=Bob\nmail: bob@r.example\ngivenName: Bob\n"),
        ]:
            book = self.write("book", content)
            code, said, err = self.run_import(book, "-g", "All", "--header", "--quotes", "--opt-in")
            self.assertEqual((code, said[0]["added"], said[0]["format"]), (0, 1, name), err)
            self.assertIn("Quotes are taken off delimited text alone", said[0]["warnings"][0])
            code, _, err = self.run_import(book, "-g", "All", "--take", "1,3", "--header", "--opt-in")
            self.assertEqual(code, 64, err)
            self.assertIn("has no columns to take", err)
        self.assertEqual(self.recipients("Email Address", "First Name", "Last Name", "Additional Field 3"),
                         [("ada@r.example", "Ada", "Lovelace", ""), ("bob@r.example", "Bob", "", "")])

    def test_a_wrong_delimiter_is_told_with_the_right_one(self):
        list_ = self.write("list.csv", "Ada;ada@r.example\nBob;bob@r.example\n")
        code, said, err = self.run_import(list_, "-g", "All", "--map", "Email Address=2", "--opt-in")
        self.assertEqual(code, 65)
        self.assertIn("“Semicolon” would fit", said[0]["warnings"][0])
        self.assertIn("“Semicolon” would fit", err)


if __name__ == "__main__":
    unittest.main()
