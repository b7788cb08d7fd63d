"""Whole runs against the mailbox: what the report says, what the server holds, and that nobody is served twice."""
import contextlib
import email
import email.policy
import json
import mailbox
import os
import re
import signal
import sqlite3
import subprocess
import unittest
from collections import Counter
from pathlib import Path

from quillcast import PROGRAM, Case, Mailbox, in_background

STARTED, COMPLETED = "Personal Sending process has been started.", "Personal Sending process has been completed."
FAILED = "There was an error sending your message."
REFUSED = ("Error 8: An error was reported in response to a recipient address. The SMTP server may refuse to handle mail "
           "for unknown recipients.")
PASSWORD = "kJ7-never-shown"


def logged(mail_size, recipient, *answer):
    """A message's part of the report, up to the verdict."""
    return [f"C: MAIL FROM:<ada@sender.example> SIZE={mail_size}", "S: 250 2.1.0 Ok", f"C: RCPT TO:<{recipient}>", *answer]


def follow(process, count, act):
    """Reads `count` lines of a program's results, acts, and reads the rest."""
    err = []
    reading = in_background(lambda: err.append(process.stderr.read()))
    out = b"".join(process.stdout.readline() for _ in range(count))
    act()
    out += process.stdout.read()
    reading.join()
    process.wait(60)
    return out, err[0]


class Runs(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", "<p>Dear $*MergeEmail*$</p>")

    def mailing(self, *options, group="All"):
        return self.send("--group", group, "--subject", "Hi $*MergeEmail*$", "--body", self.body, *options)

    def served(self, box):
        """How often each address was served, by the server's own index."""
        return Counter(row["to"][0] for row in box.index())

    def report(self):
        return self.reports()[-1].read_bytes().decode()

    def test_what_is_known_is_told_first(self):
        """By every way to look first, each finding once; and a run tells it too, before its first message."""
        self.ok("group", "new", "All")
        for address, first, company in (("a@r.example", "Ada", "A & B"), ("b@r.example", "", "C"), ("c@r.example", "Łukasz", "D <E>"),
                                        ("d@r.example\x07", "Łucja", "F"), ("x" * 65 + "@r.example", "", "")):
            self.ok("recipient", "add", "-g", "All", "-e", address, f"-fFirst Name={first}", f"-fCompany={company}")
        box = self.mailbox("--offer", "8BITMIME")
        self.account(box.port, "CharSet=Western European (Windows)", "DSNNotify=Notify me if message fails", "TextPart=0")
        self.body = self.write("letter.html", "<img src='gone.png'><img src='gone.png'><img src='$*MergeCity*$.png'>"
                               "<img src='https://r.example/$*MergeCity*$'>$*MergeFirstName*$ $*MergeCompany*$ $*MergeNick*$")
        no_notices = ("The account asks for delivery notifications, which the server does not offer (DSN), so none will come.")
        known = [f"The picture {self.folder}/gone.png is missing or may not be read. The message goes out without it; its name "
                 "alone stays.",
                 "The picture $*MergeCity*$.png is named by a merge tag, so it is not taken along: readers show it only where "
                 "its address is one of the net.",
                 "The message goes out without a plain-text part, which some readers and filters expect.",
                 "Unknown tag $*MergeNick*$: it goes out as it stands.",
                 "2 recipients have no value for $*MergeFirstName*$ (the first is b@r.example).",
                 "5 recipients have no value for $*MergeCity*$ (the first is a@r.example).",
                 "1 recipient has no value for $*MergeCompany*$ (the first is " + "x" * 65 + "@r.example).",
                 "2 recipients have a subject that Windows-1252 cannot hold, so it goes out in UTF-8 (the first is c@r.example).",
                 '2 recipients have "<" or "&" in a value, which goes into the HTML as it stands (the first is a@r.example).',
                 "2 entries have no address that a message can be sent to."]
        arguments = ("--group", "All", "--subject", "Hi $*MergeFirstName*$", "--body", self.body)
        for way in (["--dry-run"], ["--to-file", self.folder / "one.eml", "--as", "a@r.example"], []):
            lines, _, err = self.send(*arguments, *way)
            told = [line for line in err.splitlines() if not line.startswith(("A message is about", "#", "Correct"))]
            asked = [f"Note: {no_notices}"] if way else [no_notices]
            self.assertEqual(told, [f"Note: {line}" for line in known] + asked)
            self.assertEqual(len(box.index()), 0 if way else 3)
        self.assertEqual([(line["state"], line["code"]) for line in lines[3:-1]], [("failed", 8)] * 2)
        box.close()
        for offers, word in (("8BITMIME,DSN", None), (None, "could not be asked")):
            if offers:
                self.account(self.mailbox("--offer", offers, name="other").port)
            else:
                self.account(1)
            _, _, err = self.send(*arguments, "--dry-run")
            self.assertNotIn(no_notices, err)
            self.assertEqual("could not be asked" in err, word is not None, err)

    def test_a_group_that_had_the_message_before_is_told(self):
        self.group("All", ["a@r.example", "b@r.example"])
        self.group("Few", ["a@r.example"])
        self.account(self.mailbox().port)
        other = self.write("other.html", "<p>Dear reader</p>")
        once, twice = r"before, on (\S+ \S+): 2 sent\.", r"2 times before, the last time on (\S+ \S+): 2 sent\."
        arguments = ("--subject", "Hi", "--body")
        for name, told, words in (("never", None, ("--group", "All", *arguments, self.body, "--dry-run")),
                                  ("the first time", None, ("--group", "All", *arguments, self.body)),
                                  ("the second", once, ("--group", "all", *arguments, self.body)),
                                  ("looked at alone", twice, ("--group", "All", *arguments, self.body, "--dry-run")),
                                  ("another subject", None, ("--group", "All", "--subject", "Ho", "--body", self.body)),
                                  ("another body", None, ("--group", "All", *arguments, other)),
                                  ("another group", None, ("--group", "Few", *arguments, self.body))):
            with self.subTest(name):
                _, _, err = self.send(*words)
                found = [line for line in err.splitlines() if "this message" in line]
                self.assertEqual(len(found), 1 if told else 0, err)
                if told:
                    self.assertRegex(found[0], "^Note: This group had this message " + told + "$")
        with contextlib.closing(sqlite3.connect(self.profile / "data" / "runs.db")) as journal, journal:
            journal.execute("UPDATE mailings SET inputs = '{' WHERE id = (SELECT max(id) FROM mailings)")  # it hides no other
        self.ok("group", "rename", "All", "Everybody")
        self.group("All", ["new@r.example"])
        for group, is_told in (("Everybody", True), ("All", False)):
            _, _, err = self.send("--group", group, *arguments, self.body, "--dry-run")
            self.assertEqual("this message" in err, is_told, err)
        self.ok("--yes", "history", "clear")
        _, _, err = self.send("--group", "Everybody", *arguments, self.body, "--dry-run")
        self.assertNotIn("this message", err)

    def test_a_vanished_attachment_is_told_once(self):
        self.group("All", ["a@r.example", "b@r.example"])
        self.account(1)
        for way, exit_code in ((["--dry-run"], 66), (["--to-file", self.folder / "x", "--as", "a@r.example"], 66)):
            _, code, err = self.mailing("--attach", self.folder / "gone.pdf", *way)
            self.assertEqual((code, err.count("gone.pdf")), (exit_code, 1), err)

    def test_a_preview_without_an_account_says_so(self):
        code, _, err = self.run_program("preview", "--subject", "Hi", "--body", self.body)
        self.assertEqual(code, 78)
        self.assertIn("The account has no e-mail address yet. Fill in the account", err.replace("\n", " "))

    def check_report(self, report, sent, failed):
        """The whole report: its frame, one verdict for each message that was told, and the counts."""
        lines = report.split("\r\n")
        self.assertNotIn("\n", report.replace("\r\n", ""))
        self.assertEqual((lines[0], lines[-1]), (STARTED, ""))
        tail = [COMPLETED]
        tail += [f"{sent} messages sent during process."] if sent else []
        tail += [f"{failed} messages failed during process."] if failed else []
        self.assertEqual(lines[-1 - len(tail):-1], tail)
        self.assertEqual(lines.count("Message sent successfully."), sent)
        self.assertEqual(lines.count(FAILED), failed)

    def test_report_and_results(self):
        addresses = ["ada@r.example", "bob@r.example", "cy@r.example", "di@r.example"]
        box = self.mailbox("--refuse", "bob@*=550", "--defer", "cy@*=451")
        self.account(box.port)
        self.group("All", addresses)
        lines, code, err = self.mailing()
        self.assertEqual(code, 1, err)
        self.assertIn("#2 bob@r.example: refused", err)
        refused, deferred = ("<bob@r.example> refused by a rule of this mailbox",
                             "<cy@r.example> deferred by a rule of this mailbox")
        history = self.reports()[0].stem
        expected = [(1, "sent", 0, "250 2.0.0 Kept as 000001.eml"), (2, "refused", 8, "550 5.1.1 " + refused),
                    (3, "deferred", 8, "451 4.3.0 " + deferred), (4, "sent", 0, "250 2.0.0 Kept as 000002.eml")]
        self.assertEqual(lines, [{"position": n, "address": addresses[n - 1], "state": state, "code": result,
                                  "reply": reply, "reason": ""} for n, state, result, reply in expected] +
                         [{"sent": 2, "failed": 2, "not_tried": 0, "history": history}])
        sizes = [len(message) for _, message in box.messages()]
        size_of_bob = sizes[0]  # addresses of one length
        ok = ["S: 250 2.1.5 Ok"]

        def accepted(size, name):
            return [f"C: BDAT {size} LAST", f"C: (message, {size} bytes)", f"S: 250 2.0.0 Kept as {name}",
                    "Message sent successfully.", ""]
        failed, reset = [FAILED, REFUSED, ""], ["C: RSET", "S: 250 2.0.0 Ok"]
        frame = self.report().split("\r\n")
        greeting_ends = frame.index("S: 250 ENHANCEDSTATUSCODES") + 1
        self.assertEqual(frame[:2], [STARTED, "Sending to 4 recipients."])
        self.assertTrue(frame[2].startswith("S: 220 ") and frame[3] == "C: EHLO [127.0.0.1]")
        self.assertEqual(frame[greeting_ends:], [
            *logged(sizes[0], addresses[0], *ok), *accepted(sizes[0], "000001.eml"),
            *logged(size_of_bob, addresses[1], "S: 550 5.1.1 " + refused), *failed,
            *reset, *logged(sizes[1], addresses[2], "S: 451 4.3.0 " + deferred), *failed,
            *reset, *logged(sizes[1], addresses[3], *ok), *accepted(sizes[1], "000002.eml"),
            "C: QUIT", "S: 221 2.0.0 mailbox.localhost closing",
            COMPLETED, "2 messages sent during process.", "2 messages failed during process.", ""])
        self.assertEqual(self.reports()[0].with_suffix(".eml").read_bytes(), box.messages()[0][1])
        self.assertRegex(self.ok("history", "list"), r"^ +1  Date = \d\d-\d\d-\d{4}  -  Time = [\d-]{8} - Subject = "
                                                     r"Hi MergeEmail\n$")

    def test_parts_of_a_group(self):
        box = self.mailbox()
        self.account(box.port)
        self.group("All", [f"user{n}@r.example" for n in range(1, 7)])
        for options in (["--dry-run"], ["--dry-run", "--range", "2-3"]):
            self.assertEqual(self.mailing(*options)[1], 0)
            self.assertEqual((box.index(), self.reports()), ([], []), "a dry run leaves nothing")
        for wrong in ("0-2", "3-2", "5-7", "x", "1-2-3", "-1", "99999999999999999999-1"):
            self.assertEqual(self.mailing(f"--range={wrong}")[1], 64, wrong)
        self.assertEqual(box.index(), [])
        lines, code, err = self.mailing("--range", "2-4")
        self.assertEqual((code, [line.get("position") for line in lines]), (0, [2, 3, 4, None]), err)
        self.assertIn("\r\nPartial Sending to 3 recipients (from #2 to #4).\r\n", self.report())
        self.check_report(self.report(), 3, 0)
        self.assertEqual(self.served(box), Counter(f"user{n}@r.example" for n in (2, 3, 4)))
        self.assertEqual(self.mailing("--proof", "me@own.example", "--as", "user6@r.example")[1], 0)
        to, message = box.messages()[-1]
        self.assertEqual(to, "me@own.example")
        self.assertIn(b"user6@r.example", message, "the proof has the data of the recipient")
        self.assertEqual(len(self.reports()), 1, "a proof is no run")

    def answer_after(self, change, *arguments):
        """Sends without a subject, calls `change` while that is asked about, and goes on: exit code and standard error."""
        ours, theirs = os.openpty()
        with subprocess.Popen([PROGRAM, "--profile", str(self.profile), "send", "--group", "All", "--body", self.body,
                               *arguments], stdin=theirs, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            err = b""
            while not err.endswith(b"[y/n] "):
                err += os.read(process.stderr.fileno(), 4096)
            change()
            os.write(ours, b"y\n")
            err += process.stderr.read()
            process.wait(60)
        os.close(ours)
        os.close(theirs)
        return process.returncode, err.decode()

    def test_a_group_that_changes_while_it_is_asked_about(self):
        self.group("All", [f"user{n}@r.example" for n in range(1, 4)])
        user = {n: f"user{n}@r.example" for n in range(1, 6)}
        add = lambda n: self.ok("recipient", "add", "--group", "All", "--email", user[n])
        delete = lambda n: self.ok("--yes", "recipient", "delete", "--group", "All", user[n])
        for number, (change, arguments, served, line) in enumerate((
                (lambda: add(4), [], (1, 2, 3, 4), "Sending to 4 recipients."),
                (lambda: delete(4), [], (1, 2, 3), "Sending to 3 recipients."),
                (lambda: delete(3), ["--range", "2-3"], (2,), "Partial Sending to 1 recipients (from #2 to #2)."),
                (lambda: add(5), ["--range", "2-2"], (2,), "Partial Sending to 1 recipients (from #2 to #2)."))):
            with self.subTest(line=line, arguments=arguments):
                box = self.mailbox(name=f"box{number}")
                self.account(box.port)
                code, err = self.answer_after(change, *arguments)
                self.assertEqual(code, 0, err)
                self.assertEqual(self.served(box), Counter(user[n] for n in served))
                self.assertIn(f"\r\n{line}\r\n", self.report())
                self.assertIn("The group has changed meanwhile", err)
                self.assertNotIn("not tried", err)

    def test_into_files(self):
        """What would have gone out, and nobody is told that it did."""
        self.account(1)
        with contextlib.closing(sqlite3.connect(self.profile / "settings.db")) as settings, settings:
            settings.execute("DELETE FROM Settings WHERE Key IN ('Name', 'Server', 'Port')")  # no server is asked
        addresses = ["ada@r.example", "x" * 65 + "@r.example", "bob@r.example"]
        self.ok("group", "new", "All")
        for address in addresses:
            self.ok("recipient", "add", "-g", "All", "-e", address)
        folder, box = self.folder / "out", self.folder / "box.mbox"
        for option, target in (("--to-folder", folder), ("--to-mbox", box)):
            lines, code, err = self.mailing(option, target)
            self.assertEqual((code, [line.get("state") for line in lines]), (1, ["written", "failed", "written", None]), err)
            self.assertEqual((lines[-1]["written"], lines[-1]["failed"], "sent" in lines[-1]), (2, 1, False))
            self.assertIn("@r.example: not written. ", err)
            self.assertNotIn("Error 8", err + self.report())
            report = self.report().split("\r\n")
            self.assertEqual((report[0], report[2]), ("The messages are written into files. Nothing is sent.", "Message written."))
            self.assertNotIn(" sent ", self.report().replace("Nothing was sent.", ""))
        names = ["000001 ada@r.example.eml", "000003 bob@r.example.eml"]
        self.assertEqual(sorted(file.name for file in folder.iterdir()), names)
        kept = [email.message_from_bytes((folder / name).read_bytes(), policy=email.policy.default) for name in names]
        with contextlib.closing(mailbox.mbox(box)) as reader:
            read = list(reader)
        for messages in (kept, read):
            self.assertEqual([(message["To"], message["Subject"]) for message in messages],
                             [(address, f"Hi {address}") for address in addresses[::2]])
        before = {file: file.read_bytes() for file in [*folder.iterdir(), box]}
        for option, target, named in (("--to-folder", folder, names[0]), ("--to-mbox", box, box.name)):
            _, code, err = self.mailing(option, target)
            self.assertEqual(code, 73, err)
            self.assertIn(named, err)
            self.assertRegex(err, r"Name another (folder, or .*\(--range\)|file)\.")
        self.assertEqual({json.loads(line)["state"] for line in self.ok("--json", "history", "list").splitlines()}, {"written"})
        self.assertEqual(self.ok("history", "list").count(" (written into files, not sent)\n"), 3, "a mailbox that is there begins no run")
        self.assertEqual(before, {file: file.read_bytes() for file in [*folder.iterdir(), box]})
        self.assertEqual(self.mailing("--to-folder", folder, "--to-mbox", box)[1], 64)

    def test_two_runs_at_once(self):
        box = self.mailbox()
        self.account(box.port)
        addresses = [f"user{n}@r.example" for n in range(300)]
        self.group("All", addresses)
        results = []
        threads = [in_background(lambda: results.append(self.mailing())) for _ in range(2)]
        for thread in threads:
            thread.join()
        self.assertEqual([code for _, code, _ in results], [0, 0], results[0][2] + results[1][2])
        self.assertEqual(len({lines[-1]["history"] for lines, _, _ in results}), 2)
        self.assertEqual(self.served(box), {address: 2 for address in addresses})
        for report in self.reports():
            self.check_report(report.read_bytes().decode(), 300, 0)

    def interrupted_run(self, box, after, signals):
        """Starts a run and interrupts it once `after` results were told."""
        with self.popen("--json", "--yes", "send", "--group", "Many", "--subject", "s", "--body", self.body) as process:
            out, err = follow(process, after, lambda: [process.send_signal(signal.SIGINT) for _ in range(signals)])
            return process.returncode, [json.loads(line) for line in out.splitlines()], err.decode()

    def test_interrupted(self):
        addresses = [f"user{n:04}@r.example" for n in range(2000)]
        self.group("Many", addresses)
        for number, (after, signals) in enumerate(((0, 1), (1, 1), (37, 1), (300, 1), (150, 2))):
            box = self.mailbox(name=f"box{number}")
            self.account(box.port)
            before = len(self.reports())
            code, lines, err = self.interrupted_run(box, after, signals)
            if code == -signal.SIGINT:
                continue  # it was too early: the program had not begun, and nothing may have gone out
            with self.subTest(after=after, signals=signals):
                self.assertEqual(code, 75, err)
                served = self.served(box)
                self.assertEqual(set(served.values()) - {1}, set(), "somebody was served twice")
                if len(self.reports()) == before:
                    self.assertEqual(served, {})
                    continue
                sent = {line["address"] for line in lines if line.get("state") == "sent"}
                unknown = {line["address"] for line in lines if line.get("state") == "unknown"}
                self.assertLessEqual(len(unknown), 1)
                self.assertLessEqual(sent, set(served))
                self.assertLessEqual(set(served) - sent, unknown, "served and not told")
                total = lines[-1]
                self.assertEqual(total["sent"], len(sent))
                self.assertLess(len(served), len(addresses))
                self.check_report(self.report(), total["sent"], total["failed"])
                not_tried = len(addresses) - total["sent"] - total["failed"]
                self.assertIn(f"{not_tried:,} recipients were not tried", err)
                self.assertEqual([line.get("position") for line in lines], [*range(1, len(addresses) + 1), None])
                self.assertEqual(sum(line.get("state") == "not tried" for line in lines), not_tried)
                named = re.findall(r"^#\d+ \S+: not tried$", err, re.M)
                self.assertEqual(len(named), min(not_tried, 20))  # or what failed is out of sight
                if not_tried > 20:
                    first = len(addresses) - not_tried + 1
                    self.assertIn(f"\n#{first} {addresses[first - 1]}: not tried", "\n" + err)
                    self.assertIn(f"and {not_tried - 20:,} more: not tried (from #{first + 20} to #2000)", err)

    def test_pipelined(self):
        """Everybody has a result, in order, and it is true, whatever goes wrong for some of several messages in flight."""
        addresses = [f"user{n:03}@r.example" for n in range(200)]
        addresses[50] = "@nobody user050@r.example"  # fails before any server is asked
        self.group("All", addresses)
        for number, offer in enumerate(("PIPELINING,CHUNKING", "PIPELINING", "CHUNKING")):
            for wrong in ([], ["--refuse", "user?7?@*=550", "--refuse", "DATA:user?9?@*=554"],
                          ["--refuse", "user?7?@*=550", "--defer", "user12?@*=451"]):
                box = self.mailbox("--offer", offer, *wrong, name=f"box{number}-{len(str(wrong))}")
                self.account(box.port, "Pipeline=1")
                lines, code, err = self.mailing()
                with self.subTest(offer=offer, wrong=wrong):
                    self.assertEqual(code, 1, err)
                    self.assertEqual([line["position"] for line in lines[:-1]], list(range(1, 201)))
                    served = self.served(box)
                    self.assertEqual(set(served.values()), {1})
                    self.assertEqual({line["address"] for line in lines[:-1] if line["state"] == "sent"}, set(served))
                    refused = sum(map(lambda line: line["state"] in ("refused", "deferred"), lines[:-1]))
                    self.assertEqual(refused, {0: 0, 4: 40 if "DATA" in str(wrong) else 30}[len(wrong)])
                    for to, message in box.messages():
                        self.assertIn(to.encode(), message)
                    self.check_report(self.report(), lines[-1]["sent"], lines[-1]["failed"])

    def test_no_room_for_a_copy(self):
        """A message too large for the history reaches its reader whole; the next one is kept in its place."""
        rows = [("huge@r.example", "H" * 20_000), ("small@r.example", "S"), ("last@r.example", "L")]
        file = self.write("rows.txt", "".join(f"{address}\t{name}\n" for address, name in rows))
        self.ok("group", "new", "All")
        self.ok("import", file, "--group", "All", "--map", "Email Address=1,First Name=2", "--delimiter", "Tab", "--opt-in")
        body = self.write("names.html", "<p>begin" + " $*MergeFirstName*$" * 20 + " end</p>")
        for number, offer in enumerate(("SIZE", "SIZE,CHUNKING", "SIZE,PIPELINING")):
            with self.subTest(offer=offer):
                box = self.mailbox("--offer", offer, name=f"box{number}")
                self.account(box.port)
                code, _, err = self.run_program("--yes", "send", "--group", "All", "--subject", "s", "--body", body,
                                                fsize=200_000)
                self.assertEqual(code, 0, err)
                self.assertEqual(err.count("The history has no copy of the first message."), 1, err)
                messages = box.messages()
                self.assertEqual([to for to, _ in messages], [address for address, _ in rows])
                for (_, message), (_, name) in zip(messages, rows):
                    html = email.message_from_bytes(message, policy=email.policy.default).get_body(("html",)).get_content()
                    self.assertIn("<p>begin" + f" {name}" * 20 + " end</p>", " ".join(html.split()))
                self.assertEqual(self.reports()[-1].with_suffix(".eml").read_bytes(), messages[1][1])

    def test_stops_where_nothing_is_gained(self):
        self.group("All", [f"user{n:02}@r.example" for n in range(1, 31)])
        box = self.mailbox("--refuse", "MAIL:*=550")
        for pipeline in (0, 1):
            self.account(box.port, f"Pipeline={pipeline}")
            lines, code, err = self.mailing()
            self.assertEqual(code, 75, err)
            self.assertEqual([(line["position"], line["state"]) for line in lines[:-1]],
                             [(n, "refused" if n <= 20 else "not tried") for n in range(1, 31)])
            self.assertEqual(lines[-1]["not_tried"], 10)
            self.assertIn("10 recipients were not tried (from #21 to #30)", err)
            lines, code, err = self.mailing("--keep-going")
            self.assertEqual((code, {line["state"] for line in lines[:-1]}), (1, {"refused"}))
            self.check_report(self.report(), 0, 30)
        self.group("Few", ["few1@r.example", "few2@r.example"])
        _, code, err = self.mailing(group="Few")
        self.assertEqual(code, 1)
        self.assertIn("2 recipients got nothing by the fault of the account or of its server, and are sent to when the run is resumed.", err)
        self.assertIn("quillcast runs resume 5 goes on with those who are left.", err)
        _, cleared, told = self.run_program("--json", "--yes", "history", "clear")
        self.assertIn("kept", told)
        kept = json.loads(cleared)["kept_runs"]
        self.assertIn({"run": 5, "subject": "Hi $*MergeEmail*$", "group": "Few", "why": "can be resumed"}, kept)
        # Those too whom the account's fault refused, however the run ended.
        for number, everybody in ((1, 30), (2, 30), (5, 2)):
            with self.subTest(run=number):
                put_right = self.mailbox(name=f"right{number}")
                self.account(put_right.port)
                self.ok("--yes", "runs", "resume", number)
                self.assertEqual(len(self.served(put_right)), everybody)
                self.assertEqual(self.run_program("--yes", "runs", "resume", number)[0], 66)

    def test_killed_server(self):
        addresses = [f"user{n:04}@r.example" for n in range(2000)]  # more than fit into the pipe, which holds the run back
        self.group("Many", addresses)
        box = Mailbox(self.folder / "box")
        self.addCleanup(box.process.stdout.close)
        self.account(box.port)
        with self.popen("--json", "--yes", "send", "--group", "Many", "--subject", "s", "--body", self.body) as process:
            out, err = follow(process, 50, box.process.kill)
        box.process.wait()
        *lines, total = [json.loads(line) for line in out.splitlines()]
        self.assertEqual(process.returncode, 75, err.decode())
        self.assertIn(b"Nothing could be sent 20 times in a row, so the run stops: ", err)
        self.assertEqual([line["position"] for line in lines], list(range(1, 2001)))
        self.assertEqual(sum(line["state"] == "failed" for line in lines), 20)
        served = self.served(box)
        self.assertEqual(set(served.values()), {1})
        sent = {line["address"] for line in lines if line["state"] == "sent"}
        unknown = {line["address"] for line in lines if line["state"] == "unknown"}
        self.assertLessEqual(sent, set(served))
        self.assertLessEqual(set(served) - sent, unknown)
        self.assertLessEqual({line["code"] for line in lines if line["state"] not in ("sent", "not tried")}, {9, 16})
        self.assertEqual(total["not_tried"], sum(line["state"] == "not tried" for line in lines))
        self.check_report(self.report(), total["sent"], total["failed"])
        self.assertEqual(total["not_their_doing"], 20)
        put_right = self.mailbox(name="right")
        self.account(put_right.port)
        self.ok("--yes", "runs", "resume", 1)
        self.assertEqual(set(self.served(put_right)), set(addresses) - sent - unknown)


def openssl(folder, *arguments):
    subprocess.run(["openssl", *map(str, arguments)], cwd=folder, check=True, capture_output=True)


def make_certificate(folder, name, subject_name, authority=None):
    """`name`.pem and `name`.key for a server; signed by the authority, or by itself."""
    extension = Path(folder) / f"{name}.ext"
    extension.write_text(f"subjectAltName={subject_name}\n")
    openssl(folder, "req", "-newkey", "rsa:2048", "-nodes", "-keyout", f"{name}.key", "-out", f"{name}.csr", "-subj", "/CN=x")
    signed = ["-CA", f"{authority}.pem", "-CAkey", f"{authority}.key", "-CAcreateserial"] if authority else \
        ["-signkey", f"{name}.key"]
    openssl(folder, "x509", "-req", "-in", f"{name}.csr", *signed, "-days", "2", "-extfile", extension, "-out", f"{name}.pem")


class Secured(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", "<p>secret words</p>")
        self.group("All", ["bob@r.example"])
        self.password = self.write("password", PASSWORD + "\n")

    def run_to(self, *settings):
        """A run with these settings, and everything that it wrote anywhere as one text."""
        _, out, err = self.run_program("account", "set", "Name=Ada", "Email=ada@sender.example", "Server=127.0.0.1", *settings)
        lines, code, told = self.send("--group", "All", "--subject", "s", "--body", self.body)
        reports = "".join(file.read_text() for file in self.reports())
        return code, lines, json.dumps(lines) + out + err + told + reports

    def test_tls(self):
        openssl(self.folder, "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", "ca.key", "-out", "ca.pem", "-days",
                "2", "-subj", "/CN=Test authority")
        make_certificate(self.folder, "good", "IP:127.0.0.1", "ca")
        make_certificate(self.folder, "stranger", "DNS:other.example", "ca")
        make_certificate(self.folder, "selfmade", "IP:127.0.0.1")
        known = str(self.folder / "ca.pem")
        cases = [("good", known, 0, ""), ("stranger", known, 1, "it is for another name"),
                 ("selfmade", known, 1, "self-signed"), ("good", os.devnull, 1, "authority that this computer does not know")]
        self.addCleanup(os.environ.pop, "SSL_CERT_FILE", None)
        for number, (certificate, trusted, exit_code, words) in enumerate(cases):
            os.environ["SSL_CERT_FILE"] = trusted
            box = self.mailbox("--tls-cert", self.folder / f"{certificate}.pem", "--tls-key", self.folder / f"{certificate}.key",
                               name=f"box{number}")
            for security in ("STARTTLS", "Automatic"):
                with self.subTest(certificate=certificate, trusted=trusted, security=security):
                    code, lines, told = self.run_to(f"Port={box.port}", f"Security={security}")
                    self.assertEqual(code, exit_code, told)
                    self.assertIn(words, told)
                    if exit_code:
                        self.assertEqual((lines[0]["code"], box.index()), (5, []), "nothing goes out in clear")
                    else:
                        self.assertTrue(box.index()[-1]["tls"])

    def test_no_tls_where_it_was_asked_for(self):
        box = self.mailbox()
        code, lines, told = self.run_to(f"Port={box.port}", "Security=STARTTLS")
        self.assertEqual((code, lines[0]["code"], box.index()), (1, 5, []), told)

    def test_signing_in(self):
        for number, (server_password, exit_code, result) in enumerate(((PASSWORD, 0, 0), ("another", 1, 24))):
            box = self.mailbox("--auth", "ada", "--password-file", self.write("server-password", server_password),
                               name=f"box{number}")
            code, lines, told = self.run_to(f"Port={box.port}", "Auth=1", "Username=ada", "--password-file", self.password)
            self.assertEqual((code, lines[0]["code"]), (exit_code, result), told)
            self.assertEqual([row["auth"] for row in box.index()], ["ada"] if exit_code == 0 else [])
            shown = told + self.ok("account", "show") + self.run_program("account", "test")[1]
            for secret in (PASSWORD, "a0o3LW5ldmVyLXNob3du"):  # in base 64 too
                self.assertNotIn(secret, shown)
        self.assertIsNone(re.search(PASSWORD, "".join(f.read_text(errors="replace") for f in self.profile.rglob("*")
                                                      if f.is_file() and f.suffix in (".txt", ".eml", ".htm"))))


if __name__ == "__main__":
    unittest.main()
