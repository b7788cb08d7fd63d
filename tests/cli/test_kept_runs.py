"""What the journal keeps of runs, by command: shown, gone on with, taken out, forgotten."""
import contextlib
import email
import html.parser
import json
import os
import socket
import sqlite3
import threading
import unittest

from quillcast import Case, Server

NASTY = '<script>alert(1)</script>, "Q"'


class Words(html.parser.HTMLParser):
    """The text of a page, and the tags and attributes that it has."""

    def __init__(self, page):
        super().__init__()
        self.tags, self.attributes, self.words = set(), set(), []
        self.feed(page)

    def handle_starttag(self, tag, attributes):
        self.tags.add(tag)
        self.attributes |= {name for name, _ in attributes}

    def handle_data(self, data):
        self.words.append(data)


def serve_mutely(listener):
    """Takes messages to their ends and hangs up there, without an answer."""
    while True:
        try:
            peer, _ = listener.accept()
        except OSError:
            return
        with peer, peer.makefile("rb") as lines:
            peer.sendall(b"220 mute\r\n")
            while line := lines.readline():
                if line == b".\r\n":
                    break
                peer.sendall(b"354 go\r\n" if line.startswith(b"DATA") else b"250 ok\r\n" if len(line) < 60 and line[:4] in
                             (b"EHLO", b"MAIL", b"RCPT", b"NOOP", b"RSET") else b"")


class KeptRuns(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", "<p>Dear $*MergeFirstName*$, $*MergeEmail*$</p>")
        self.ok("group", "new", "All")
        rows = "".join(f"r{n}@{domain}.example;First {n}\n" for n, domain in
                       enumerate(("good", "bad", "slow", "good", "bad", "slow"), 1)) + f"x@good.example;{NASTY}\n"
        self.ok("import", self.write("list.csv", rows), "--group", "All", "--map", "Email Address=1,First Name=2",
                "--delimiter", "Semicolon", "--opt-in")

    def objects(self, *arguments, code=0):
        got, out, err = self.run_program("--json", "--yes", *arguments)
        self.assertEqual(got, code, f"{arguments}\n{out}\n{err}")
        return [json.loads(line) for line in out.splitlines()]

    def states(self, *arguments):
        return {row["position"]: row["state"] for row in self.objects("runs", "show", "1", *arguments) if "position" in row}

    def mail_through(self, port, number):
        self.account(port)
        self.ok("group", "new", f"Few{number}")
        self.ok("recipient", "add", "--group", f"Few{number}", "--email", "mute@slow.example")
        self.objects("send", "--group", f"Few{number}", "--subject", "Hi", "--body", self.body, code=1)

    def mail(self, box, *options, code=1):
        self.account(box.port)
        self.objects("send", "--group", "All", "--subject", f"Hi {NASTY}", "--body", self.body, *options, code=code)

    def choosy(self):
        return self.mailbox("--refuse", "*@bad.example=550", "--defer", "*@slow.example=451", name="choosy")

    def to(self, box):
        return [row["to"][0] for row in box.index()]

    def test_who_did_not_get_it_is_tried_again_and_nobody_else(self):
        choosy, good = self.choosy(), self.mailbox()
        self.mail(choosy)
        expected = {1: "sent", 2: "refused", 3: "deferred", 4: "sent", 5: "refused", 6: "deferred", 7: "sent"}
        self.assertEqual(self.states(), expected)
        self.assertEqual(self.states("--state", "refused, deferred"), {2: "refused", 3: "deferred", 5: "refused", 6: "deferred"})
        first = self.objects("runs", "show", "1", "--state", "refused")[1]
        self.assertEqual((first["address"], first["attempts"], first["reply"][:3]), ("r2@bad.example", 1, "550"))

        # What the letter was made of is changed and gone; its recipients are deleted.
        self.write("letter.html", "<p>Another letter</p>")
        self.ok("--yes", "group", "delete", "All")
        self.account(good.port)
        _, _, err = self.run_program("--yes", "runs", "retry", "1")
        self.assertIn(f"Since then the letter's file {os.path.realpath(self.body)} has changed.", err.replace("\n", " "))
        self.assertEqual(self.to(good), ["r3@slow.example", "r6@slow.example"])
        text = email.message_from_bytes(good.messages()[0][1]).get_payload(0).get_payload(decode=True)
        self.assertEqual(text.strip(), b"Dear First 3, r3@slow.example")
        self.objects("runs", "retry", "1", "--state", "refused")
        self.assertEqual(self.to(good)[2:], ["r2@bad.example", "r5@bad.example"])
        self.assertEqual(set(self.states().values()), {"sent"})
        for arguments in (("retry", "1"), ("retry", "1", "--state", "refused"), ("resume", "1"), ("resume", "1", "--include-unknown")):
            self.objects("runs", *arguments, code=66)
        for states in ("sent", "unknown", "not tried", "deferred,sent", "none"):
            self.objects("runs", "retry", "1", "--state", states, code=64)
        self.assertEqual(len(self.to(good)), 4)

        runs = self.objects("runs", "list")
        self.assertEqual([(run["run"], run["kind"], run["recipients"], run["standing"]) for run in runs],
                         [(1, "send", 7, "ended"), (2, "retry", 2, "ended"), (3, "retry", 2, "ended")])
        scopes = [report.read_text().splitlines()[1] for report in self.reports()]
        self.assertEqual(sorted(scopes), ["Sending to 2 recipients.", "Sending to 2 recipients.", "Sending to 7 recipients."])
        self.assertEqual({run["history"] for run in runs}, {report.stem for report in self.reports()})

    def test_a_reply_says_who_is_tried_again(self):
        box = self.mailbox("--refuse", "*@bad.example=550", "--refuse", "r3@slow.example=552",
                           "--defer", "r6@slow.example=452", name="choosy")
        self.mail(box)
        for replies, expected in (("550", [2, 5]), ("552,452", [3, 6]), ("55", [2, 3, 5]), ("4", [6]), ("551", [])):
            self.assertEqual(sorted(self.states("--reply", replies)), expected, replies)
        self.assertEqual(sorted(self.states("--reply", "250")), [1, 4, 7])
        for replies in ("350", "5.", "5.1.1.1", "x", "5,,4", "5555", "55.1", "-5"):
            self.objects("runs", "retry", "1", f"--reply={replies}", code=64)
        self.objects("runs", "retry", "1", "--reply", "421", code=66)
        self.objects("runs", "export", "1", "--state", "refused", "--reply", "552", "--to-group", "Full")
        self.assertEqual([row["Email Address"] for row in self.objects("recipient", "list", "--group", "Full", "--fields")],
                         ["r3@slow.example"])
        good = self.mailbox()
        self.account(good.port)
        self.objects("runs", "retry", "1", "--reply", "552, 452")
        self.assertEqual(self.to(good), ["r3@slow.example", "r6@slow.example"])
        self.assertEqual(self.states("--state", "refused"), {2: "refused", 5: "refused"})

    def test_what_became_of_the_list_is_told_and_who_was_frozen_gets_it(self):
        """The counts of the group stay the same, and then its name does not."""
        box = self.choosy()
        self.mail(box)
        corrected = [("recipient", "modify", "--group", "All", "r3@slow.example", "--email", "new3@slow.example"),
                              ("recipient", "modify", "--group", "All", "r6@slow.example", "--field", "City=Oslo")]
        renamed = [("group", "rename", "All", "Others"), ("recipient", "modify", "--group", "Others", "r6@slow.example", "--field",
                                                          "City=Rome")]
        replaced = [("group", "delete", "Others"), ("group", "new", "All")]
        for commands, told in (((), None),
                               (corrected, "Since then the group All has changed: 1 address was taken out or corrected, 1 address "
                                           "is new, 1 recipient has other fields. The run goes on to those who were in it when it "
                                           "began, with their addresses and fields of then."),
                               (renamed, "The group All has the name Others by now.\nSince then the group Others has changed: 1 address "
                                         "was taken out or corrected, 1 address is new, 1 recipient has other fields."),
                               (replaced, "The group All of then was deleted, and the one of this name is another. The run goes on to "
                                          "those who were in the one of then."),
                               ([("group", "delete", "All")], "There is no group All any more. The run goes on")):
            for command in commands:
                self.ok("--yes", *command)
            err = self.run_program("--yes", "runs", "retry", "1")[2]
            self.assertEqual(told in err if told else "group All" not in err, True, err)
            self.assertEqual(list(self.states("--state", "deferred")), [3, 6])
        self.assertEqual(self.objects("runs", "show", "1", "--state", "deferred")[-2]["address"], "r3@slow.example")

    def test_a_part_goes_on_within_itself(self):
        """A run to a part of the list, stopped by its server: those of the part that are left, under their places."""
        self.mail(self.mailbox("--refuse", "MAIL:*=550", name="closed"), "--range", "2-6")
        self.assertEqual(list(self.states()), [2, 3, 4, 5, 6])
        self.assertEqual(self.objects("runs", "list")[0]["skipped"], 2)
        self.assertIn(", 2 skipped\n", self.ok("runs", "list"))
        for options, rows in ((("--state", "skipped"), []), (("--state", "skipped, sent"), []), ((), [2, 3, 4, 5, 6])):
            self.assertEqual(list(self.states(*options)), rows)
            self.assertIn("Skipped, for they are outside the part of the list that was asked for: #1 and #7.",
                          self.run_program("runs", "show", "1", *options)[2])
        self.assertIn("not kept", self.run_program("runs", "export", "1", "--state", "skipped", "--to-group", "None")[2])
        for command in (("retry",), ("export", "--to", self.folder / "none.csv")):
            self.objects("runs", command[0], "1", "--state", "skipped", *command[1:], code=64)
        good = self.mailbox()
        self.account(good.port)
        self.objects("runs", "retry", "1", "--state", "refused,failed")
        self.assertEqual(len(self.to(good)), 5)
        self.assertEqual(set(self.states().values()), {"sent"})
        last = self.objects("send", "--group", "All", "--subject", "Hi", "--body", self.body, "--range", "3-4")[-1]
        self.assertEqual((last["sent"], last["skipped"]), (2, 5))
        with contextlib.closing(sqlite3.connect(self.profile / "data" / "runs.db")) as journal, journal:
            journal.execute("UPDATE mailings SET inputs = '{'")
        self.assertIn("Who was skipped is not known", self.run_program("runs", "show", "1")[2])
        self.assertEqual([run["skipped"] for run in self.objects("runs", "list") if "skipped" in run], [None, None])

    def test_what_is_taken_out(self):
        self.mail(self.choosy())
        target = self.folder / "left.csv"
        self.assertIn(f"5 recipients were written to {target}. quillcast import with --header --rfc4180 takes them back.",
                      self.ok("runs", "export", "1", "--state", "refused,sent", "--to", target))
        self.ok("group", "new", "Back")
        self.ok("import", target, "--group", "Back", "--header", "--rfc4180", "--opt-in")
        self.ok("runs", "export", "1", "--state", "refused,sent", "--to-group", "Made")
        lists = [[(row["Email Address"], row["First Name"]) for row in self.objects("recipient", "list", "--group", group, "--fields")]
                 for group in ("Back", "Made")]
        self.assertEqual(lists[0], lists[1])
        self.assertEqual(lists[0], [("r1@good.example", "First 1"), ("r2@bad.example", "First 2"), ("r4@good.example", "First 4"),
                                    ("r5@bad.example", "First 5"), ("x@good.example", NASTY)])
        self.assertEqual(target.stat().st_mode & 0o777, 0o600)
        for arguments, code in ((("export", "1", "--state", "unknown", "--to", "none.csv"), 66),
                                (("export", "1", "--state", "unknown", "--to-group", "None"), 66),
                                (("export", "1", "--state", "sent", "--to-group", "Made"), 64),
                                (("export", "1", "--state", "sent"), 64),
                                (("export", "9", "--state", "sent", "--to", "none.csv"), 66),
                                (("export", "1", "--state", "sent", "--to", self.profile / "data" / "runs.db"), 77),
                                (("report", "1", "--to", self.profile / "data" / "Group.mdb"), 77)):
            self.objects("runs", *arguments, code=code)
        self.assertNotIn("None", self.ok("group", "list"))

    def test_the_page_holds_the_truth_and_nothing_else(self):
        self.mail(self.choosy())
        page = self.folder / "page.html"
        self.ok("runs", "report", "1", "--to", page)
        text = page.read_text()
        words = Words(text)
        self.assertEqual(words.tags & {"script", "img", "link", "iframe", "a", "object"}, set())
        self.assertFalse({name for name in words.attributes if name.startswith("on") or name in ("src", "href")})
        told = " ".join(" ".join(words.words).split())
        for part in (f"Hi {NASTY}", "From Ada <ada@sender.example> to 7 recipients of the group All.", "good.example 3 0", "bad.example 0 2", "slow.example 0 2",
                     "r2@bad.example refused 550", "r6@slow.example deferred 451", "Over time"):
            self.assertIn(part, told)
        self.assertNotIn("r1@good.example", told)

    def test_what_is_forgotten_is_gone(self):
        self.mail(self.mailbox(), code=0)
        self.mail(self.choosy())
        journal = self.profile / "data" / "runs.db"
        self.assertIn(b"First 5", journal.read_bytes() + (journal.parent / "runs.db-wal").read_bytes() if
                      (journal.parent / "runs.db-wal").exists() else journal.read_bytes())
        self.objects("runs", "forget", code=64)
        self.objects("runs", "forget", "9", code=66)
        cleared = self.objects("history", "clear")[0]
        self.assertEqual((cleared["forgotten"], cleared["kept_runs"]), (2, []))
        self.assertEqual(self.objects("runs", "list"), [])
        left = b"".join(file.read_bytes() for file in journal.parent.glob("runs.db*"))
        for secret in (b"First 5", b"r5@bad.example", b"Dear"):
            self.assertNotIn(secret, left)

    def test_who_may_have_it_is_named_before_and_after_it_is_forgotten(self):
        """A server takes the first message's end and says nothing; the next ones it takes. The reports are gone before."""
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)
        threading.Thread(target=serve_mutely, args=(listener,), daemon=True).start()
        for run in (1, 2, 3):
            self.mail_through(listener.getsockname()[1], run)
        self.assertEqual([row["unknown"] for row in self.objects("runs", "list")], [1, 1, 1])
        code, out, err = self.run_program("runs", "forget", 1)
        self.assertEqual((code, out), (77, ""))
        self.assertIn("1 recipient is unknown: the message was out and no answer came", err)
        self.assertEqual(self.ok("--yes", "runs", "forget", 1), "Run #1 was forgotten; its report stays in the history.\n")
        for report in self.reports():
            report.unlink()
        self.assertEqual(self.ok("--yes", "runs", "forget", 2), "Run #2 was forgotten.\n")
        self.assertIn("1 run was forgotten, with 1 recipient of whom nobody knows whether the message arrived.",
                      self.run_program("--yes", "history", "clear")[2])
        self.assertEqual(self.objects("runs", "list"), [])

    def damaged(self, runs, damage):
        """So many runs, and what a fault made of their journal."""
        box = self.mailbox()
        for _ in range(runs):
            self.mail(box, code=0)
        self.change(damage)

    def change(self, sql):
        with contextlib.closing(sqlite3.connect(self.profile / "data" / "runs.db", timeout=60)) as journal, journal:
            journal.executescript(sql)

    def test_one_that_is_damaged_hides_no_other(self):
        self.damaged(3, "UPDATE mailings SET recipients = 2 WHERE id = 1; DELETE FROM runs WHERE mailing = 2")
        code, out, err = self.run_program("--json", "runs", "list")
        self.assertEqual((code, [json.loads(line)["run"] for line in out.splitlines()]), (65, [3]), err)
        self.assertIn("What the journal has of 2 runs is damaged: #1, and 1 whose number is lost.", err)
        for command in (["show"], ["resume"], ["report", "--to", self.write("r.html", "")], ["retry", "--state", "refused"]):
            code, _, err = self.run_program("--yes", "runs", command[0], 1, *command[1:])
            self.assertEqual(code, 65, err)
            self.assertIn("has of this run is damaged.\nForget it", err)
        code, _, err = self.run_program("runs", "forget", 1)
        self.assertEqual(code, 77)
        self.assertRegex(err, r'Run #1 \("Hi .*"\) is damaged, so that nobody can read what became of its recipients\.')
        self.assertEqual(self.ok("--yes", "runs", "forget", 1), "Run #1 was forgotten.\n")
        code, out, err = self.run_program("--yes", "--json", "history", "clear")
        self.assertEqual((code, json.loads(out)["damaged_runs"]), (0, 1), err)
        self.assertIn("What the journal has of 1 run is damaged: 1 whose number is lost. That was kept", err)
        self.assertEqual(self.run_program("runs", "forget", "--damaged")[0], 77)
        self.assertEqual(self.ok("--yes", "runs", "forget", "--damaged"), "1 damaged run was forgotten.\n")
        self.assertEqual(self.ok("--yes", "runs", "forget", "--damaged"), "No run is damaged.\n")
        self.assertEqual(self.objects("runs", "list"), [])

    def test_one_whose_rows_are_damaged_is_found_by_whoever_forgets_what_is_damaged(self):
        self.damaged(4, "UPDATE states SET records = x'00' WHERE id = (SELECT id FROM states ORDER BY id LIMIT 1);"
                        "UPDATE rows SET rows = x'00' WHERE id = (SELECT id FROM rows ORDER BY id LIMIT 1 OFFSET 1)")
        self.assertEqual(len(self.objects("runs", "list")), 4)
        for run in (1, 2):
            self.assertEqual(self.run_program("runs", "show", run)[0], 65)
        code, _, err = self.run_program("runs", "forget", "--damaged")
        self.assertEqual(code, 77)
        self.assertIn("What the journal has of 2 runs is damaged: ", err)
        self.assertEqual(self.ok("--yes", "runs", "forget", "--damaged"), "2 damaged runs were forgotten.\n")
        self.assertEqual([entry["run"] for entry in self.objects("runs", "list")], [4, 3])

    def test_what_a_killed_run_told_last_is_seen_where_the_disk_is_full(self):
        slow = Server(delay=0.01)
        self.addCleanup(slow.listener.close)
        self.account(slow.port)
        self.group("Many", [f"m{n}@many.example" for n in range(600)])
        run = self.popen("--json", "--yes", "send", "--group", "Many", "--subject", "Hi", "--body", self.body)
        told = [run.stdout.readline() for _ in range(20)]
        run.kill()
        told += run.communicate()[0].splitlines()
        full = (self.profile / "data" / "runs.db-wal").stat().st_size
        looks = (["list"], ["show", 1], ["export", 1, "--state", "unknown", "--to", "/dev/stdout"])
        seen = [self.run_program("--json", "runs", *command, fsize=full) for command in looks]
        entry = self.objects("runs", "list")[0]
        self.assertGreaterEqual(entry["sent"], len(told) - 1)
        self.assertLessEqual(entry["unknown"], 1)
        self.assertEqual(seen, [self.run_program("--json", "runs", *command) for command in looks])

    def test_a_journal_behind_a_link_is_written_as_any(self):
        box = self.mailbox()
        self.mail(box, code=0)
        journal = self.profile / "data" / "runs.db"
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        journal.rename(elsewhere / "runs.db")
        journal.symlink_to(elsewhere / "runs.db")
        self.mail(box, code=0)
        self.assertEqual([entry["run"] for entry in self.objects("runs", "list")], [2, 1])

    def test_one_program_at_a_time_goes_on(self):
        """While a run goes on it is shown as such, is no one else's, and is not forgotten."""
        self.mail(self.choosy())
        slow = self.mailbox()
        self.account(slow.port)
        self.ok("group", "new", "Many")
        self.ok("import", self.write("many.txt", "".join(f"m{n}@many.example\n" for n in range(3000))), "--group", "Many", "--map",
                "Email Address=1", "--delimiter", "Tab", "--opt-in")
        sending = self.popen("--json", "--yes", "send", "--group", "Many", "--subject", "Hi", "--body", self.body)
        sending.stdout.readline()
        entry = self.objects("runs", "list")[0]
        self.assertEqual((entry["standing"], entry["mailing_standing"]), ("goes on", "goes on"))
        for arguments in (("resume", "2", "--rate", "1/s"), ("forget", "2")):
            code, out, err = self.run_program("--yes", "runs", *arguments)
            self.assertEqual((code, out), (75, ""), err)
            self.assertNotIn("goes on with", err)
        # Another one is forgotten all the same.
        self.change("UPDATE mailings SET recipients = recipients + 1")
        code, out, err = self.run_program("--yes", "runs", "forget", "--damaged")
        self.assertEqual((code, out), (75, "1 damaged run was forgotten.\n"), err)
        self.change("UPDATE mailings SET recipients = recipients - 1")
        self.ok("runs", "forget", "--finished")
        sending.communicate()
        self.assertEqual(self.objects("runs", "list")[0]["sent"], 3000)
        self.assertEqual(len(set(self.to(slow))), 3000)


if __name__ == "__main__":
    unittest.main()
