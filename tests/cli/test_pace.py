"""How fast runs go: by options and by the account, of several programs together, over a kill, and what is told of it."""
import json
import os
import pty
import re
import select
import signal
import struct
import subprocess
import time
import unittest
from collections import Counter

from quillcast import PROGRAM, Case


class Pace(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", "<p>Dear $*MergeEmail*$</p>")

    def mailing(self, group, *options):
        return ["--json", "--yes", "send", "--group", group, "--subject", "Hi", "--body", self.body, *options]

    def departures(self):
        """When messages went out, by the file that all programs share."""
        data = (self.profile / "data" / "runs.pace").read_bytes()
        self.assertEqual(data[:16], b"Quillcast out 1\n")
        times = []
        for state_and_time, _domain, _check in struct.iter_unpack("<QII", data[16:]):
            if state_and_time >> 62 == 2:
                times.append((state_and_time & (1 << 62) - 1) / 1e9)
        return sorted(times)

    def keeps_to(self, messages, seconds):
        times = self.departures()
        for first, beyond in zip(times, times[messages:]):
            self.assertGreaterEqual(beyond - first, seconds - 1e-6, times)
        return times

    def test_programs_keep_to_it_together_and_over_a_kill(self):
        box = self.mailbox()
        self.account(box.port, "Rate=5/s")
        for group in "AB":
            self.group(group, [f"{group.lower()}{n}@r.example" for n in range(12)])
        self.group("C", ["c@r.example"])
        killed = self.popen(*self.mailing("A"))
        beside = self.popen(*self.mailing("B"))
        for _ in range(4):
            killed.stdout.readline()
        killed.send_signal(signal.SIGKILL)
        killed.communicate()
        code, out, _ = self.run_program("--json", "runs", "list")
        number = next(json.loads(line)["run"] for line in out.splitlines() if '"A"' in line)
        self.ok("runs", "resume", number)
        beside.communicate(timeout=60)
        self.assertEqual(beside.returncode, 0)
        times = self.keeps_to(5, 1)
        served = Counter(row["to"][0] for row in box.index())
        self.assertEqual(set(served.values()), {1})
        self.assertGreaterEqual(len(served), 23)  # who was on the way at the kill is unknown, or was served
        self.assertGreaterEqual(len(times), len(served))
        # One without a pace counts, and is not held up.
        began = time.monotonic()
        self.ok(*self.mailing("C", "--rate", "none"))
        self.assertEqual(len(self.departures()), len(times) + 1)
        self.assertLess(time.monotonic() - began, 60)

    def test_letters_to_other_domains_go_first_and_are_told_in_order(self):
        box = self.mailbox()
        self.account(box.port)
        self.group("All", ["1@a.example", "2@a.example", "3@b.example", "4@A.Example", "5@b.example"])
        code, out, err = self.run_program(*self.mailing("All", "--domain-rate", "1/s"))
        self.assertEqual(code, 0, err)
        self.assertEqual([json.loads(line).get("position") for line in out.splitlines()], [1, 2, 3, 4, 5, None])
        self.assertEqual([row["to"][0][0] for row in box.index()], ["1", "3", "2", "5", "4"])
        report = self.reports()[-1].read_text()
        self.assertEqual(re.findall(r"C: RCPT TO:<(\d)@", report), ["1", "2", "3", "4", "5"])

    def test_a_terminal_is_told_what_is_waited_for_and_a_cancel_is_heard(self):
        box = self.mailbox()
        self.account(box.port)
        self.group("All", ["1@a.example", "2@a.example"])
        terminal, end = pty.openpty()
        pace = "--rate", "1/day", "--quota-hour", "50", "--quota-day", "70", "--hours", "8-20"
        command = [PROGRAM, "--profile", str(self.profile), *self.mailing("All", "--at", "2099-12-24 18:00", *pace)[1:]]
        run = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=end)
        os.close(end)
        shown = b""
        while b"2099" not in shown and select.select([terminal], [], [], 60)[0]:
            shown += os.read(terminal, 4096)
        self.assertIn("0 of 2 messages. Waits until 2099-12-24 18:00:00. It is to begin then.", shown.decode())
        run.send_signal(signal.SIGINT)
        out, _ = run.communicate(timeout=60)
        os.close(terminal)
        self.assertEqual(run.returncode, 75)
        self.assertIn(b"0 messages were sent, 0 failed.", out)
        self.assertEqual(self.departures(), [])
        for _ in "it goes on", "again":  # who goes on waits for the same time, until another is given
            with self.popen("--json", "runs", "resume", 1) as waits:
                told = waits.stderr.readline().decode() + waits.stderr.readline().decode()
                waits.kill()
            self.assertIn("It goes on with this pace and these retries: Rate=1/day, QuotaHour=50, QuotaDay=70, Hours=8-20. It begins at 2099-12-24 18:00:00, as it was told before; with \"none\" as its beginning it sends at once.", told)
            self.assertIn("Waits until 2099-12-24 18:00:00.", told)
        with self.popen("--json", "runs", "resume", 1, "--at", "2001-01-01 00:00", "--hours", "none") as waits:
            told = ""
            while line := waits.stderr.readline().decode():
                told += line
                if "Waits until" in line:
                    waits.kill()
        self.assertIn("That time is over; it begins now.", told)
        code, _, told = self.run_program("runs", "resume", 1, "--rate", "none")
        self.assertEqual((code, "It begins at" in told), (0, False), told)
        self.assertEqual([row["to"][0] for row in box.index()], ["1@a.example", "2@a.example"])

    def test_what_says_no_pace_is_refused_before_anything_goes(self):
        box = self.mailbox()
        self.account(box.port)
        self.group("All", ["1@a.example"])
        for options, why in [
            (("--rate", "30/week"), '"30/week" is no rate.'),
            (("--at", "noon"), 'There is no time "noon".'),
            (("--rate", "1/s", "--dry-run"),
             "A pace, --at, --per-connection, --connections, --retries, --slow-down and --network-wait go with sending to a group."),
            (("--at", "12:00", "--to-folder", str(self.folder / "out")),
             "A pace, --at, --per-connection, --connections, --retries, --slow-down and --network-wait go with sending to a group."),
        ]:
            with self.subTest(options):
                code, _, err = self.run_program(*self.mailing("All", *options))
                self.assertEqual(code, 64)
                self.assertIn(why, err)
        code, _, err = self.run_program("account", "set", "QuotaDay=-1")
        self.assertEqual((code, '"-1" is no number' in err, "Nothing was saved." in err), (64, True, True), err)
        self.assertEqual(box.index(), [])

    def test_connections_end_after_so_many_messages(self):
        box = self.mailbox()
        self.account(box.port, "PerConnection=2")
        self.group("All", [f"{n}@a.example" for n in range(5)])
        self.ok(*self.mailing("All"))
        self.assertEqual(self.reports()[-1].read_text().count("C: EHLO"), 3)
        self.ok(*self.mailing("All", "--per-connection", "none"))
        self.assertEqual(self.reports()[-1].read_text().count("C: EHLO"), 1)


if __name__ == "__main__":
    unittest.main()
