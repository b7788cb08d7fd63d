"""Bad input of every kind: a clear answer with the right exit code, no crash, nothing lost, nothing injected."""
import email
import email.policy
import itertools
import json
import os
import re
import resource
import shutil
import sqlite3
import subprocess
import sys
import unittest

from quillcast import PROGRAM, Case

MAP = ("--map", "Email Address=1")
EVIL = "evil@example.org"


class BadInput(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", "<p>Dear $*MergeFirstName*$ of $*MergeCompany*$</p>")
        self.list = self.write("list.txt", "ada@r.example\n")

    def check(self, table, *before):
        """Rows of (arguments, exit code, words that standard error holds)."""
        for arguments, exit_code, *words in table:
            with self.subTest(arguments=arguments):
                code, out, err = self.run_program(*before, *arguments)
                self.assertEqual(code, exit_code, out + err)
                for word in words:
                    self.assertIn(word, err)

    def shell(self, line, **streams):
        """Runs a command line of the shell's, in which "$Q" is the program with its profile."""
        return subprocess.run(["sh", "-c", line.replace("$Q", f"'{PROGRAM}' --profile '{self.profile}'")], timeout=60,
                              stdin=subprocess.DEVNULL, capture_output=True, **streams)

    def addresses(self, group):
        return [json.loads(line)["Email Address"] for line in self.ok("--json", "recipient", "list", "-g", group).splitlines()]

    # --- what is given ---

    def test_import(self):
        self.check([([self.list, "--group", "All", "--opt-in", *MAP], 64, 'no group "All"', "group new")], "import")
        self.group("All", ["old@r.example"])
        folder = self.folder / "folder"
        folder.mkdir()
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        rubbish = bytes(byte for byte in os.urandom(200_000) if byte != ord("@"))
        preview = ("--preview", "--delimiter")
        to_all = ("--group", "All", "--opt-in")
        self.check([
            (["nosuch.txt", *to_all, *MAP], 66, "nosuch.txt", "Check the name"),
            ([folder, *to_all, *MAP], 66, str(folder), "Name a file in that folder"),
            ([pipe, *to_all, *MAP], 66, str(pipe), "ordinary file"),
            ([self.write("none.txt", "nobody here\n"), *to_all, *MAP], 65, "none.txt holds no address", *preview),
            ([self.write("empty.txt", ""), *to_all, "--harvest"], 65, "empty.txt holds no address"),
            ([self.write("rubbish", rubbish), *to_all, *MAP], 65, "rubbish holds no address"),
            ([self.write("rubbish", rubbish), *to_all, "--harvest"], 65, "rubbish holds no address"),
            ([self.list, *to_all, "--map", "Email Address=5"], 65, "list.txt holds no address", *preview),
            ([self.list, *to_all, "--map", "Email Address=19"], 64, "first eighteen fields"),
            ([self.list, *to_all, "--map", "Shoe=1"], 64, '"Shoe" names no field', '"Email Address"'),
            ([self.list, "--group", "All", "--map", "Email=1"], 77, "not confirmed"),
            ([self.list, *to_all, *MAP, "--skip", "-1"], 64, '--skip: "-1" is no number of lines'),
            (["--list-mappings", "--delete-mapping", "x"], 64, "excludes"),
            ([self.list, *to_all, "--harvest", "--save-mapping", "x"], 64, "--harvest maps no fields"),
            ([self.list, "--preview", "--save-mapping", "x"], 64, "no mapping to keep"),
            ([self.list, *to_all, "--map", "First Name=1"], 64, "Email Address field is required"),
            ([self.list, *to_all, *MAP, "--harvest"], 64, "either --harvest or --map"),
            ([self.list, *to_all, *MAP, "--delimiter", "Pipe"], 64, "no delimiter", "Comma"),
            ([self.list, *to_all, *MAP, "--encoding", "nosuch"], 64, "nosuch", "UTF-8"),
            ([self.list, "--group", "Nobody", "--opt-in", *MAP], 64, 'no group "Nobody"', "group list"),
            ([self.list, "--group", "All", *MAP], 77, "not confirmed", "--opt-in"),
        ], "import")
        self.assertEqual(self.addresses("All"), ["old@r.example"])

    def import_list(self, *options):
        return self.run_program("import", self.list, "-g", "All", *options, *MAP)

    def test_import_report(self):
        self.ok("group", "new", "All")
        report = self.profile / "Temp" / "ReportButton.txt"
        self.assertEqual(self.import_list()[0], 77)
        self.assertFalse(report.exists(), "no report without consent")
        many = self.write("many.txt", "".join(f"First{n} last{n}@r.example\n" for n in range(100)))
        self.ok("import", many, "-g", "All", "--opt-in", "--delimiter", "Space", "--map", "Email Address=2,First Name=1")
        size = os.path.getsize(many)
        self.assertGreater(size, 1000)
        self.assertIn(f"\r\nProcessed : {size:,} Bytes\r\n\r\nAdded : 100\r\n", report.read_bytes().decode())
        self.assertIn("last7@r.example\tFirst7\t\n", self.ok("recipient", "list", "-g", "All"))
        self.assertIn("last7@r.example\tFirst Name=First7\n", self.ok("recipient", "list", "-g", "All", "--fields"))
        before = report.read_bytes()
        self.assertEqual(self.import_list()[0], 77)
        self.assertEqual(report.read_bytes(), before)
        victim = self.folder / "victim"
        victim.write_text("not a report")
        for put in (lambda: report.symlink_to(victim), lambda: os.link(victim, report), lambda: os.mkfifo(report)):
            report.unlink()
            put()
            self.import_list("--opt-in")
            self.assertEqual(victim.read_text(), "not a report")
            self.assertTrue(report.is_file() and not report.is_symlink())
            self.assertIn("Import Completed", report.read_text())

    def test_no_temporary_folder(self):
        self.profile.mkdir()
        (self.profile / "Temp").write_text("in the way")
        self.ok("group", "new", "All")
        self.assertEqual(self.ok("history", "list"), "")
        code, out, err = self.import_list("--opt-in")
        self.assertEqual((code, out.splitlines()[0]), (0, "1 recipients imported successfully."), err)
        self.assertIn("There is no report. ", err)
        self.assertIn(str(self.profile / "Temp"), err)

    def test_a_list_in_a_pager(self):
        """Whoever reads a list slowly holds up nobody who writes."""
        self.group("All", [f"user{n:05}@a-long-name-of-a-domain.example" for n in range(4000)])
        with self.popen("recipient", "list", "-g", "All") as pager:
            pager.stdout.readline()
            self.ok("recipient", "add", "-g", "All", "-e", "new@r.example")
            self.assertEqual(pager.stdout.read().count(b"\n"), 3999)

    def test_a_mailbox_in_a_foreign_folder(self):
        store = self.folder / "store"
        store.mkdir()
        index = store / "index.jsonl"
        target = self.write("target", "")
        (store / ".incoming-7").write_text("a stranger's")
        for content in ("notes without an end", '{"name": 1}\n{"name": 2', '{"file":"000001.eml"}\nnotes', None):
            if content is None:
                index.unlink()
                index.symlink_to(target)
            else:
                index.write_text(content)
            done = subprocess.run([PROGRAM, "mailbox", "--listen", "127.0.0.1:0", "--store", store], timeout=20,
                                  capture_output=True, text=True)
            self.assertEqual(done.returncode, 73, done.stderr)
            self.assertIn(str(index), done.stderr)
            self.assertEqual(index.read_text(), content or "")
            self.assertTrue((store / ".incoming-7").exists())

    def test_import_in_bounded_memory(self):
        self.group("All", ["old@r.example"])
        large = self.folder / "large.txt"
        with large.open("wb") as file:  # one line of 200 MB, and one more
            for _ in range(100):
                file.write(b"x" * 2_000_000)
            file.write(b"\nada@r.info\n")

        def limit():
            if not os.environ.get("QUILLCAST_SANITIZE"):  # a sanitizer reserves terabytes of addresses
                resource.setrlimit(resource.RLIMIT_AS, (300_000_000, 300_000_000))
        for options in (MAP, ["--harvest"], [*MAP, "--preview"]):
            done = subprocess.run([PROGRAM, "--profile", self.profile, "import", large, "-g", "All", "--opt-in", *options],
                                  preexec_fn=limit, capture_output=True, timeout=240)
            self.assertEqual(done.returncode, 0, (options, done.stderr))
        self.assertEqual(self.addresses("All"), ["old@r.example", "ada@r.info"])

    def test_account(self):
        self.account(25)
        before = self.ok("account", "show")
        self.check([
            (["Port=65536"], 64, "valid port"), (["Server="], 64, "enter your mail server"), (["Server=host:0"], 64, "no port", "1 to 65535"),
            (["Server= ; "], 64, "mail server"),
            (["Server=mx.example\\"], 64, 'Server: "mx.example\\" is no name of a mail server. Type it anew'), (["Name=Ada\u202e"], 64, 'Name: "Ada?" holds'),
            (["Email=ada"], 64, '"ada" is no complete e-mail address', "Set one: Email=you@"), (["Colour=red"], 64, "Colour=red", "KEY=VALUE"),
            (["Port"], 64, "no setting", "KEY=VALUE"), (["=x"], 64, "no setting"), (["Auth=perhaps"], 64, "one of: 0, 1"),
            (["CharSet=Klingon"], 64, "CharSet cannot be", "Unicode (UTF-8)"),
            (["Password=geheim7"], 64, "must not stand on the command line", "--password-file"),
            (["Auth=1", "Username=ada"], 64, "enter the password"),
            (["--password-file", "nosuch.txt"], 66, "nosuch.txt"),
            (["--password-file", self.write("blank", "\nx\n")], 65, "holds no password", "first line"),
            (["Port=26", "Name=Eve", "Wrap=1000"], 64, "wrap characters"),
        ], "account", "set")
        self.assertEqual(self.ok("account", "show"), before, "a refused change changes nothing")
        self.assertNotIn("geheim7", "".join(self.run_program("account", "set", "Password=geheim7")[1:]))

    def test_what_must_hold_before_a_run(self):
        """Nobody is there to answer, which is a No."""
        empty = self.write("empty.html", "<p> </p>")
        send = lambda group="All", subject="s", body=self.body: ["send", "--group", group, "--subject", subject, "--body", body]
        self.check([(send(), 78, "Mail Account", "account set")])
        box = self.mailbox()
        self.account(box.port)
        self.check([(send(), 64, "create at least one group", "group new")])
        self.ok("group", "new", "Empty")
        self.group("All", ["ada@r.example"])
        self.check([(send(group=""), 64, "specify a group", "group list"),
                    (send(group="Nobody"), 64, "There is no group Nobody.", "group list"),
                    (send(subject=""), 77, "has no subject"),
                    (send(subject="Re: x"), 77, "spam tactics"),
                    (send(body=empty), 77, "empty message"),
                    (send(group="Empty"), 64, "does not contain any recipients")])
        self.assertEqual((box.index(), self.reports()), ([], []))

    def test_send(self):
        everything = ["--yes", "send", "--group", "All", "--subject", "s", "--body", self.body]
        photo = self.write("photo.jpg", b"\xff\xd8\xff\xe0\0\x10JFIF\0")
        self.group("All", ["ada@r.example"])
        box = self.mailbox()
        self.account(box.port)
        self.check([
            (["--yes", "send", "--group", "All", "--subject", "s", "--body", "nosuch.html"], 66, "nosuch.html"),
            (["--yes", "send", "--group", "All", "--subject", "s", "--body", self.folder], 66, str(self.folder)),
            ([*everything, "--text", "nosuch.txt"], 66, "nosuch.txt"),
            ([*everything[:-1], photo], 65, "photo.jpg is neither HTML nor text", "Name an HTML file"),
            ([*everything, "--text", photo], 65, "photo.jpg is neither HTML nor text"),
            (["properties", photo], 65, "photo.jpg is neither HTML nor text"),
            (["message", "export", photo, "--output", self.folder / "x.eml"], 65, "photo.jpg is neither HTML nor text"),
            (["message", "export", self.body, "-o", "-"], 64, "Nothing of a message is written to standard output."),
            (["message", "import", photo, "-o", "-"], 64, "Nothing of a message is written to standard output."),
            ([*everything, "--to-mbox", "-"], 64, "Nothing of a message is written to standard output."),
            ([*everything, "--as", "ada@r.example", "--to-file", "-"], 64, "Nothing of a message is written to standard output."),
            ([*everything, "--to-file", "x.eml"], 64, "--as"),
            ([*everything, "--dry-run", "--proof", "a@b.example"], 64, "Only one of"),
            ([*everything, "--as", "eve@r.example", "--to-file", "x.eml"], 64, "eve@r.example is not in the group"),
            ([*everything, "--as", "ada@r.example", "--to-file", self.folder / "no" / "x.eml"], 73, "x.eml", "folder"),
            (["frobnicate"], 64), (["group"], 64), (["history", "open", "7"], 64, "no run number 7", "history list"),
        ])
        self.assertEqual(box.index(), [])
        self.assertEqual((box.index(), self.reports()), ([], []))
        self.write("letter.html", "<p>$*MergeFristName*$</p>")
        self.check([(everything, 0, "Unknown tag $*MergeFristName*$")])
        self.assertEqual(len(box.index()), 1)

    def test_attachments(self):
        self.group("All", ["ada@r.example", "bob@r.example"])
        box = self.mailbox()
        self.account(box.port)
        file = self.folder / "price.pdf"
        for exists in (False, True, False):
            file.write_text("x") if exists else file.unlink(missing_ok=True)
            before = len(box.index())
            lines, code, err = self.send("--group", "All", "--subject", "s", "--body", self.body, "--attach", file)
            self.assertEqual(code, 0 if exists else 1, err)
            self.assertEqual([line["code"] for line in lines[:-1]], [0, 0] if exists else [10, 10])
            self.assertEqual(len(box.index()) - before, 2 if exists else 0)
            if not exists:
                self.assertIn(str(file), err)

        folder = self.folder / "folder"
        folder.mkdir()
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        before = len(box.index())
        for path, encoding in itertools.product((folder, pipe, "/dev/zero"), ("None", "Quoted Printable", "Base 64")):
            self.account(box.port, f"AttachmentEncoding={encoding}")
            lines, code, err = self.send("--group", "All", "--subject", "s", "--body", self.body, "--attach", path)
            self.assertEqual((code, [line["code"] for line in lines[:-1]]), (1, [10, 10]), err)
        self.assertEqual(len(box.index()), before)

    def test_a_huge_attachment_in_bounded_memory(self):
        self.group("All", ["ada@r.example"])
        huge = self.folder / "huge.txt"
        with huge.open("wb") as file:
            for _ in range(10):
                file.write(b"a line of text\r\n" * 500_000)
            file.write(b"\n")  # at its end it turns out not to be such a text
        for encoding in ("None", "Quoted Printable", "Base 64"):
            self.account(25, f"AttachmentEncoding={encoding}")
            with self.popen("--yes", "send", "--group", "All", "--subject", "s", "--body", self.body, "--attach", huge,
                            "--dry-run") as process:
                told = process.stderr.read().decode()
                _, status, usage = os.wait4(process.pid, 0)
                process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, 0, told)
            if not os.environ.get("QUILLCAST_SANITIZE"):
                self.assertLess(usage.ru_maxrss, 64 * 1024, encoding)

    def test_pictures_that_cannot_be_taken(self):
        self.group("All", ["ada@r.example", "bob@r.example"])
        box = self.mailbox()
        self.account(box.port)
        self.write("text.png", "no picture")
        for reference, line in (("missing.png", "Error 1: Failure opening file."), (".", "Error 2: Failure reading file."),
                                ("/dev/null", "Error 3: Invalid parameter."),
                                ("text.png", "Error 101: Exception was thrown during parsing.")):
            body = self.write("pictures.html", f"<img src='{reference}'><img src='also-missing.png'>")
            _, code, err = self.send("--group", "All", "--subject", "s", "--body", body)
            self.assertEqual(code, 0, err)
            report = self.reports()[-1].read_text().splitlines()
            self.assertEqual(report[2:4], [line, ""])
            self.assertEqual(sum(text.startswith("Error ") for text in report), 1)
            self.assertIn("also-missing.png", err)

    def test_pictures_of_the_persons_own(self):
        """A page from elsewhere names them; they go along when the person says so, and then alone."""
        gif = b"GIF89a\x01\x00\x01\x00\x00\x00\x00;"
        for name in ("page", "home", "other"):
            (self.folder / name).mkdir()
            self.write(f"{name}/{name}.gif", gif)
        (self.folder / "page" / "link.gif").symlink_to(self.folder / "other" / "other.gif")
        body = self.write("page/letter.html", f"<img src=page.gif><img src='{self.folder}/home/home.gif'><img src=link.gif>")
        self.group("All", ["ada@r.example"])
        box = self.mailbox()
        self.account(box.port)
        message = ("--group", "All", "--subject", "s", "--body", body)
        home, other = self.folder / "home", self.folder / "other"
        for options, code, names in (((), 77, None), (("--proof", "me@r.example", "--as", "ada@r.example"), 77, None),
                                     (("--leave-pictures-out",), 0, ["page.gif"]),
                                     (("--pictures-from", home), 77, None),
                                     (("--pictures-from", home, "--leave-pictures-out"), 0, ["page.gif", "home.gif"]),
                                     (("--pictures-from", home, "--pictures-from", other), 0,
                                      ["page.gif", "home.gif", "link.gif"]),
                                     (("--pictures-from", self.folder / "nowhere"), 64, None)):
            with self.subTest(options=options):
                before = len(box.messages())
                status, _, err = self.run_program("--yes", "send", *message, *options)
                self.assertEqual(status, code, err)
                if status == 77:
                    self.assertIn("--pictures-from DIR", err)
                    self.assertIn(str(other / "other.gif"), err)
                new = box.messages()[before:]
                self.assertEqual(len(new), 0 if names is None else 1)
                for _, content in new:
                    parts = email.message_from_bytes(content, policy=email.policy.SMTP).walk()
                    self.assertEqual([part.get_filename() for part in parts if part.get_filename()], names)
                    self.assertEqual(err.count("goes along"), len(names))
        for mode in (("--dry-run",), ("--to-file", self.folder / "one.eml", "--as", "ada@r.example")):
            for options, asked in (((), 2), (("--leave-pictures-out",), 0)):
                status, _, err = self.run_program("--yes", "send", *message, *mode, *options)
                self.assertEqual((status, err.count("does not go along")), (0, asked), err)
        shown = json.loads(self.ok("--json", "preview", "--subject", "s", "--body", body, "--pictures-from", home))
        self.assertEqual(shown["pictures"], [str(self.folder / "page" / "page.gif"), str(home / "home.gif")])

    def test_more_pictures_than_descriptors(self):
        """1,100 files under two names each, in a process that may have 256 files open."""
        gif = b"GIF89a\x01\x00\x01\x00\x00\x00\x00;"
        for number in range(1100):
            (self.folder / f"{number}.gif").write_bytes(gif + bytes(str(number), "ascii"))
        body = self.write("many.html", "".join(f"<img src={n}.gif><img src='./%s.gif'>" % n for n in range(1100)))
        self.group("All", ["ada@r.example"])
        box = self.mailbox()
        self.account(box.port)
        code = subprocess.run(["prlimit", "--nofile=256", PROGRAM, "--profile", self.profile, "--yes", "send", "--group", "All",
                               "--subject", "s", "--body", body], capture_output=True).returncode
        self.assertEqual(code, 0)
        [(_, content)] = box.messages()
        self.assertEqual(content.count(b"Content-Type: image/gif"), 1100)
        html = email.message_from_bytes(content, policy=email.policy.SMTP).get_body(("html",)).get_content()
        self.assertEqual(html.count("cid:"), 2200)

    # --- what must not become a header or a command ---

    def test_nothing_is_injected(self):
        values = [f"x\r\nBcc: {EVIL}", f"x\nBcc: {EVIL}\n\nbody", f"x\rBcc: {EVIL}", "<b>", '"quoted" \\', "\"", "y" * 10_000,
                  "Ελένη Привет 漢字 😀 שלום", "\x01\x02\x7f", f"=?utf-8?Q?x=0D=0ABcc:_{EVIL}?=", f"a,{EVIL}", ".\r\n.", ""]
        self.ok("group", "new", "All")
        for number, value in enumerate(values):
            self.ok("recipient", "add", "-g", "All", "-e", f"user{number}@r.example", f"-fFirst Name={value}", f"-fCompany={value}")
        with_nul = self.write("nul.txt", b"nul@r.example;x\0Bcc: " + EVIL.encode() + b";\0\n")
        self.ok("import", with_nul, "-g", "All", "--opt-in", "--delimiter", "Semicolon", "--map",
                "Email Address=1,First Name=2,Company=3")
        attachment = self.write(f"x\r\nBcc: {EVIL}\r\n\r\n\".txt", "x")
        box = self.mailbox()
        self.assertEqual(self.run_program("account", "set", f"Name=Ada\r\nBcc: {EVIL}")[0], 64)
        for header, sender in (("None", "Ada"), ("Base 64", f"Ada\" <{EVIL}>, \"x")):
            self.account(box.port, f"Name={sender}", "ToField=First Name", f"HeaderEncoding={header}")
            before = len(box.index())
            lines, code, err = self.send("--group", "All", "--subject", f"$*MergeCompany*$\r\nBcc: {EVIL}\r\n\r\nx",
                                         "--body", self.body, "--attach", attachment)
            self.assertEqual(code, 0, err)
            self.assertEqual(lines[-1]["sent"], len(values) + 1)
            for row, (to, raw) in zip(box.index()[before:], box.messages()[before:]):
                self.assertEqual((len(row["to"]), row["from"]), (1, "ada@sender.example"))
                message = email.message_from_bytes(raw, policy=email.policy.default)
                self.assertEqual(sorted(name.lower() for name in message.keys()), sorted(
                    ["from", "to", "subject", "date", "message-id", "x-mailer", "mime-version", "content-type"]))
                for part in message.walk():
                    self.assertNotIn("Bcc", part)
                self.assertEqual([a.addr_spec for a in message["From"].addresses], ["ada@sender.example"])
                self.assertEqual([a.addr_spec for a in message["To"].addresses], [to])
                self.assertLess(max(map(len, raw.split(b"\r\n"))), 999)
                self.assertNotIn(b"\0", raw)

    def test_addresses_that_hold_commands(self):
        """Whatever is stored as an address, the server hears one recipient for it or none."""
        stored = [f"a@b.example>\r\nRCPT TO:<{EVIL}", f"a@b.example\r\nDATA\r\nx\r\n.\r\n", f"<a@b.example>\nRSET <{EVIL}",
                  f"a@b.example> SIZE=1 NOTIFY=NEVER", "a@b.example\t", "\x01a@b.example", "<a\x7f@b.example>", "a@b.example\\",
                  f"a@b.example,{EVIL}", "ü@r.example a@b.example", "x" * 3000 + "@b.example", "@b.example a@b.example"]
        self.ok("group", "new", "All")
        for address in stored:
            self.run_program("recipient", "add", "-g", "All", "-e", address)
        kept = self.addresses("All")
        self.assertGreater(len(kept), 8)
        box = self.mailbox()
        self.account(box.port)
        lines, code, err = self.send("--group", "All", "--subject", "s", "--body", self.body)
        self.assertEqual(code, 1, err)
        self.assertEqual([line["address"] for line in lines[:-1]], kept)
        self.assertEqual(len(box.index()), lines[-1]["sent"])
        for row in box.index():
            self.assertEqual(len(row["to"]), 1)
            self.assertRegex(row["to"][0], r"[br]\.example$")
        refused = {line["address"]: line["code"] for line in lines[:-1] if line["state"] != "sent"}
        self.assertEqual({refused.get(address) for address in stored[:2]}, {8}, "it holds a line end, so it is no address")

    # --- stores ---

    def test_damaged_recipient_store(self):
        self.group("All", ["ada@r.example"])
        self.account(25)
        file = self.profile / "data" / "Group.mdb"
        good = file.read_bytes()
        other = self.folder / "other.db"
        with sqlite3.connect(other) as database:
            database.execute("CREATE TABLE Albums (Title TEXT)")
        commands = (["group", "list"], ["group", "new", "New"], ["import", self.list, "-g", "All", "--opt-in", *MAP],
                    ["recipient", "list", "-g", "All"], ["--yes", "send", "--group", "All", "--subject", "s", "--body", self.body])
        for name, content in (("rubbish", b"rubbish" * 5000), ("of another program", other.read_bytes()), ("empty", b""),
                              ("torn", good[:len(good) // 2]), ("overwritten", good[:100] + b"\xff" * (len(good) - 100))):
            for command in commands:
                file.write_bytes(content)
                with self.subTest(store=name, command=command):
                    code, out, err = self.run_program(*command)
                    self.assertEqual(code, 65, out + err)
                    self.assertIn("Group.mdb", err)
                    self.assertIn("backup", err)
                    self.assertEqual(file.read_bytes(), content, "a store that cannot be read is left alone")
        file.write_bytes(good)
        self.assertEqual(self.addresses("All"), ["ada@r.example"])

    def test_damaged_settings(self):
        self.account(2525)
        file = self.profile / "settings.db"
        other = self.folder / "other.db"
        with sqlite3.connect(other) as database:
            database.execute("CREATE TABLE Albums (Title TEXT)")
        for number, content in enumerate((b"rubbish" * 5000, other.read_bytes(), file.read_bytes()[:100] + b"\xff" * 9000), 1):
            file.write_bytes(content)
            code, out, err = self.run_program("group", "list")
            self.assertEqual(code, 65, out + err)
            self.assertIn(f"settings.db.damaged-{number}", err)
            self.assertIn("Fill in the account again", err)
            self.assertEqual((self.profile / f"settings.db.damaged-{number}").read_bytes(), content)
            self.ok("group", "list")
            self.assertIn("Port=25\n", self.ok("account", "show"))
            self.account(2525)

    def test_a_writer_was_killed(self):
        """A journal of a half-written change is taken back by whichever command comes next, also one that only reads."""
        self.account(2525)
        self.group("All", ["ada@r.example"])
        file = self.profile / "settings.db"
        subprocess.run([sys.executable, "-c", "import os, sqlite3, sys\nd = sqlite3.connect(sys.argv[1])\n"
                        "d.execute('PRAGMA cache_size = 1')\nd.execute('BEGIN')\n"
                        "d.execute(\"UPDATE Settings SET Value = 'half'\")\n"
                        "for i in range(500): d.execute(\"INSERT INTO Settings VALUES ('a', 'b', ?, ?)\", (str(i), 'x' * 500))\n"
                        "os._exit(0)", file], check=True)
        journal = (file.read_bytes(), (self.profile / "settings.db-journal").read_bytes())
        for command in (["account", "show"], ["group", "list"], ["account", "set", "Wrap=70"]):
            file.write_bytes(journal[0])
            (self.profile / "settings.db-journal").write_bytes(journal[1])
            self.ok(*command)
            self.assertIn("Port=2525\n", self.ok("account", "show"))

    def test_folders_that_cannot_be_written(self):
        in_the_way = self.write("file", "")
        for profile in (in_the_way, f"{in_the_way}/below", "/proc/nosuch", "/dev/null"):
            done = subprocess.run([PROGRAM, "--profile", profile, "group", "list"], capture_output=True, text=True)
            code, out, err = done.returncode, done.stdout, done.stderr
            self.assertEqual(code, 73, out + err)
            self.assertIn(in_the_way if profile.startswith(in_the_way) else profile, err)
        self.ok("group", "list")
        history = self.profile / "data" / "History"
        shutil.rmtree(history)
        history.write_text("")
        code, _, err = self.run_program("group", "list")
        self.assertEqual(code, 73, err)
        self.assertIn(str(history), err)
        # What is only read is told all the same.
        history.unlink()
        self.group("All", ["ada@r.example"])
        shutil.rmtree(self.profile / "Temp", ignore_errors=True)
        (self.profile / "Temp").write_text("")
        self.assertEqual(self.ok("export", "-g", "All"), "ada@r.example\r\n")
        gone = self.folder / "gone"
        done = self.shell(f"mkdir '{gone}' && cd '{gone}' && rmdir '{gone}' && '{os.path.abspath(PROGRAM)}' --profile p group list")
        self.assertEqual(done.returncode, 73, done.stderr)

    def options(self, *command):
        """Each command with each option that takes a value."""
        shown = self.ok(*command, "--help")
        parts = dict(re.findall(r"^(Options|Subcommands):\n((?:  .*\n)*)", shown, re.M))
        for option in re.findall(r"^  (?:-\w,)?(--[\w-]+)\s(?=[A-Z]+\b)", parts.get("Options", ""), re.M):
            yield [*command, option]
        for name in re.findall(r"^  (\w+)", parts.get("Subcommands", ""), re.M):
            yield from self.options(*command, name)

    def test_an_empty_value_of_an_option(self):
        """A script with an empty variable does not mean to leave out what it names."""
        texts = {"--subject", "--sheet", "--heading", "--company", "--web", "--unsubscribe", "--unsubscribe-subject",
                 "--description"}
        commands = list(self.options())
        self.assertGreater(len(commands), 80)
        for command in commands:
            if command[-1] in (*texts, "--group"):  # where a group is needed, the command says so itself
                continue
            code, _, err = self.run_program(*command[:-1], f"{command[-1]}=")
            self.assertEqual(code, 64, f"{command}: {err}")
            if command[0] == "compose" and "Please enter your " in err:  # in the words of the window
                continue
            self.assertRegex(err.splitlines()[0], rf"^(Could not convert: )?{command[-1]}\b(?! is required)", command)
        self.check([(["export", "-g", "All", "-o="], 64, "--output"),
                    (["find", "a", "-g="], 64, "--group"),
                    (["import", self.list, "--harvest", "--opt-in", "-g="], 64, "--group")])
        heading = self.run_program("message", "print", "none.eml", "--pdf", "none.pdf", "--heading", "")
        self.assertNotIn("--heading", heading[2], "a text")

    def test_a_store_that_is_away(self):
        """A link at the store's place is the person's, also while what it leads to is not there."""
        self.group("All", ["ada@r.example"])
        store, disk = self.profile / "data" / "Group.mdb", self.folder / "disk" / "Group.mdb"
        disk.parent.mkdir()
        shutil.move(store, disk)
        store.symlink_to(disk)
        self.assertEqual(self.addresses("All"), ["ada@r.example"])
        disk.rename(disk.with_suffix(".away"))
        self.check([(["group", "list"], 66, f"is a link to {disk}", "Make available"),
                    (["group", "new", "Other"], 66, str(disk))])
        self.assertTrue(store.is_symlink())
        disk.with_suffix(".away").rename(disk)
        self.assertEqual(self.addresses("All"), ["ada@r.example"])

    def at_once(self, *commands):
        """The exit codes of commands that run beside each other."""
        processes = [self.popen(*command) for command in commands]
        told = [process.communicate(timeout=60) for process in processes]
        self.assertEqual([err for _, err in told if b"locked" in err], [])
        return [process.returncode for process in processes]

    def test_several_at_once(self):
        for _ in range(4):
            shutil.rmtree(self.profile, ignore_errors=True)
            names = [f"Group {n}" for n in range(12)]
            self.assertEqual(self.at_once(*(["group", "new", name] for name in names)), [0] * 12, "a first start")
            self.assertEqual(sorted(self.ok("group", "list").splitlines()), sorted(names))
            self.assertEqual(sorted(self.at_once(*[["group", "new", "Same"]] * 8)), [0] + [64] * 7)
            add = ["recipient", "add", "-g", "Same", "-e", "ada@r.example"]
            self.assertEqual(sorted(self.at_once(*[add] * 8)), [0] + [64] * 7)
            self.assertEqual(self.addresses("Same"), ["ada@r.example"])

    # --- no room ---

    def test_full_disk(self):
        """Every write meets the limit once; what was stored before stays, and what is told as sent was sent."""
        people = [f"user{n:04}@r.example" for n in range(1500)]
        many = self.write("many.txt", "\n".join(people) + "\n")
        large = self.write("large.bin", os.urandom(1_500_000))
        self.group("All", ["ada@r.example", "bob@r.example", "cy@r.example"])
        box = self.mailbox()
        self.account(box.port)
        store = {file: file.read_bytes() for file in (self.profile / "data" / "Group.mdb", self.profile / "settings.db")}
        commands = {
            "import": ["import", many, "-g", "All", "--opt-in", *MAP],
            "account": ["account", "set", "Port=26", "Name=" + "N" * 20_000],
            "send": ["--yes", "--json", "send", "--group", "All", "--subject", "s", "--body", self.body],
            "attach": ["--yes", "--json", "send", "--group", "All", "--subject", "s", "--body", self.body, "--attach", large],
        }
        for name, command in commands.items():
            for size in (0, 1, 512, 2048, 4096, 20_480, 40_960, 131_072, 1_048_576, None):
                for file, content in store.items():
                    for left in file.parent.glob(file.name + "-*"):
                        left.unlink()
                    file.write_bytes(content)
                before = len(box.index())
                with self.subTest(command=name, size=size):
                    code, out, err = self.run_program(*command, fsize=size)
                    self.assertIn(code, (0, 1, 73, 74) if size is not None else (0,), out + err)
                    if code not in (0,):
                        self.assertIn(str(self.profile), err, "which file it was")
                        self.assertRegex(err, "space|room|disk")
                    self.check_after(name, code, out, len(box.index()) - before, people)

    def check_after(self, name, code, out, arrived, people):
        account = json.loads(self.ok("--json", "account", "show"))
        changed = (account["Port"] == "26", account["Name"] != "Ada")
        self.assertEqual(changed, (code == 0,) * 2 if name == "account" else (False, False), "all of it or nothing")
        there = self.addresses("All")
        self.assertEqual(there[:3], ["ada@r.example", "bob@r.example", "cy@r.example"])
        if name == "import":
            added = int(out.split(" recipients imported")[0]) if "recipients imported" in out else 0
            self.assertEqual(len(there) - 3, added, "told as added")
            self.assertTrue(code != 0 or added == len(people))
        lines = [json.loads(line) for line in out.splitlines()] if out.startswith("{") else []
        if lines:
            self.assertEqual([line.get("position") for line in lines], [1, 2, 3, None], "each is named")
        for report in self.reports():
            self.assertRegex(report.read_bytes(), rb"(\r\n|\A)\Z", "it ends at a whole line")
        self.assertEqual(sum(line.get("state") == "sent" for line in lines), arrived)

    def test_streams_that_are_gone(self):
        addresses = [f"user{n:04}@r.example" for n in range(400)]
        self.group("All", addresses)
        box = self.mailbox()
        self.account(box.port)
        send = f"$Q --yes --json send --group All --subject s --body '{self.body}'"
        for line in ("$Q group list >/dev/full", "$Q group list >&-", "$Q --json recipient list -g All >/dev/full", "$Q --help >&-",
                     "$Q account show >&-", "$Q --json recipient list -g All >&- 2>&- <&-", "$Q --version >/dev/full"):
            with self.subTest(line=line):
                done = self.shell(line)
                self.assertEqual(done.returncode, 74, done.stderr)
        for line in ("$Q group list 2>/dev/full", "$Q group list 2>&-", "$Q group list <&- 2>&-"):
            self.assertEqual((self.shell(line).returncode, self.shell(line).stdout), (0, b"All\n"), line)
        for line, exit_code in ((send + " >/dev/full", 74), (send + " 2>/dev/full", 0), (send + " >&- 2>&- <&-", 74),
                                (f"({send}; echo $? >&2) | head -1", 74)):
            before = len(box.index())
            done = self.shell(line)
            code = int(done.stderr.split()[-1]) if "head" in line else done.returncode
            self.assertEqual(code, exit_code, (line, done.stderr))
            self.assertEqual([row["to"] for row in box.index()[before:]], [[address] for address in addresses],
                             "nobody listens, and the run goes on")
            self.assertTrue(self.reports()[-1].read_bytes().endswith(b"400 messages sent during process.\r\n"))


if __name__ == "__main__":
    unittest.main()
