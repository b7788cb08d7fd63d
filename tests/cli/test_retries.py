"""Those who are deferred, tried again in the same run: over a cancel and a kill, with a pace, and what is told of it."""
import contextlib
import json
import os
import pty
import re
import select
import signal
import socket
import sqlite3
import subprocess
import threading
import time
import unittest
from collections import Counter

from quillcast import PROGRAM, Case, Server


class Retries(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", "<p>Dear $*MergeEmail*$</p>")

    def server(self, answer, addresses, *settings):
        server = Server(answer)
        self.addCleanup(server.listener.close)
        self.account(server.port, *settings)
        self.group("All", addresses)
        return server

    def mailing(self, *options):
        return ["--json", "--yes", "send", "--group", "All", "--subject", "Hi", "--body", self.body, *options]

    def run_lines(self, *arguments):
        code, out, err = self.run_program(*arguments)
        return [json.loads(line) for line in out.splitlines()], code, err

    def states(self, run=1):
        rows, _, _ = self.run_lines("--json", "runs", "show", run)
        return {row["address"]: (row["state"], row["attempts"]) for row in rows if "address" in row}

    def last_run(self):
        return max(row["run"] for row in self.run_lines("--json", "runs", "list")[0])

    def test_nobody_is_asked_about_a_server_that_is_away_for_a_while(self):
        """A run stops where twenty in a row find none; not where all of them are tried again."""
        addresses = [f"r{n}@a.example" for n in range(25)]
        server = self.server(lambda address, times: None, addresses, "Retries=2", "RetryAfter=1s")
        port = server.listener.getsockname()[1]
        self.account(1)
        with self.popen(*self.mailing()) as process:
            for _ in range(25):
                self.assertEqual(json.loads(process.stdout.readline())["state"], "failed")
            process.kill()
            process.communicate()
        self.account(port)
        lines, code, err = self.run_lines("--json", "--yes", "runs", "resume", 1)
        self.assertEqual((code, lines[-1]["sent"]), (0, 25), err)

    def test_nobody_is_kept_waiting_by_a_few_at_whom_the_server_hangs_up(self):
        """Those behind them are come to, in the run or by going on with it, and that comes to an end."""
        few = [f"bad{n}@bad.example" for n in range(25)]
        good = [f"r{n}@a.example" for n in range(30)]
        for first, (addresses, resumes) in ((1, ([*few[:3], *good], 0)), (2, ([*few, *good], 1))):
            with self.subTest(addresses=len(addresses)):
                if first > 1:
                    self.ok("--yes", "group", "delete", "All")
                server = self.server(lambda address, times: "421 4.3.2 no" if "bad" in address else None, addresses)
                self.run_program(*self.mailing())
                for _ in range(resumes):
                    self.run_program("--yes", "runs", "resume", first)
                self.assertEqual(sum(server.taken.values()), 30)
                self.assertEqual(self.run_program("--yes", "runs", "resume", first)[0], 66)

    def test_results_counts_reports_and_the_journal_go_by_the_last_try(self):
        def answer(address, times):
            if address.startswith("never"):
                return "451 4.2.1 not now"
            return "450 4.2.0 later" if address.startswith("late") and times < 3 else None
        server = self.server(answer, ["late@a.example", "1@a.example", "never@b.example", "2@b.example"],
                             "Retries=2", "RetryAfter=1s")
        lines, code, err = self.run_lines(*self.mailing())
        self.assertEqual(code, 1, err)
        self.assertEqual([(row["position"], row["state"], row.get("try"), row.get("again")) for row in lines[:-1]],
                         [(1, "deferred", 1, True), (2, "sent", None, None), (3, "deferred", 1, True),
                          (4, "sent", None, None), (1, "deferred", 2, True), (3, "deferred", 2, True),
                          (1, "sent", 3, False), (3, "deferred", 3, False)])
        self.assertEqual({key: lines[-1][key] for key in ("sent", "failed", "not_tried")},
                         {"sent": 3, "failed": 1, "not_tried": 0})
        self.assertIn("#1 late@a.example: sent, at try 3", err)
        self.assertEqual(server.taken, {"late@a.example": 1, "1@a.example": 1, "2@b.example": 1})
        of_late = [at for address, at in server.times if address == "late@a.example"]
        self.assertGreaterEqual(of_late[1] - of_late[0], 1)
        self.assertGreaterEqual(of_late[2] - of_late[1], 2)
        report = self.reports()[-1].read_text()
        self.assertEqual(len(re.findall("Message sent successfully", report)), 3)
        self.assertEqual(len(re.findall("There was an error sending", report)), 5)
        self.assertRegex(report, r"process has been completed\.\s+3 messages sent during process\.\s+1 messages failed")
        self.assertEqual(self.states(), {"late@a.example": ("sent", 3), "1@a.example": ("sent", 1),
                                         "never@b.example": ("deferred", 3), "2@b.example": ("sent", 1)})
        shown = self.ok("runs", "show", 1)
        self.assertIn("#1 late@a.example: sent, after 3 tries\n", re.sub(r"\. .*", "", shown))
        page = self.folder / "page.html"
        self.ok("runs", "report", 1, "--to", page)
        self.assertIn("<td>deferred, after 3 tries</td>", page.read_text())

    def test_a_network_that_is_lost_is_waited_for(self):
        self.group("All", [f"{n}@a.example" for n in range(4)])
        for wait, states in [("1min", ["sent"] * 4), ("none", ["sent", "failed", "failed", "failed"])]:
            with self.subTest(wait):
                server = Server(lambda address, times: None)
                self.account(server.port, "PerConnection=1", "NetworkWait=1min")
                returned = threading.Event()

                def leave(address, times):
                    server.listener.shutdown(socket.SHUT_RDWR)
                    server.listener.close()
                    if wait != "none":
                        threading.Timer(1.5, lambda: (Server(lambda *_: None, server.port), returned.set())).start()

                server.answer = lambda address, times: leave(address, times) if address[0] == "0" else None
                lines, code, err = self.run_lines(*self.mailing(f"--network-wait={wait}"))
                self.assertEqual([row["state"] for row in lines[:-1]], states, err)
                self.assertEqual((code, returned.is_set()), (1, False) if wait == "none" else (0, True))
                told = [err.count(text) for text in ("The way to the server is lost, and is tried again then.",
                                                     "The server answers again, and the run goes on.")]
                self.assertEqual(told, [0, 0] if wait == "none" else [1, 1], err)

    def test_who_is_left_where_the_network_stays_away_is_gone_on_with_and_a_resume_waits_for_it(self):
        server = Server(lambda address, times: None)
        self.account(server.port, "PerConnection=1", "NetworkWait=1s")
        self.group("All", [f"{n}@a.example" for n in range(4)])
        server.answer = lambda address, times: (server.listener.shutdown(socket.SHUT_RDWR), server.listener.close()) and None
        lines, code, err = self.run_lines(*self.mailing())
        self.assertEqual((code, [row["state"] for row in lines[:-1]]), (69, ["sent"] + ["not tried"] * 3), err)
        self.assertIn("3 recipients were not tried (from #2 to #4); nothing was sent to them.\n"
                      "quillcast runs resume 1 goes on with those who are left.\n"
                      "quillcast: The way to the server was lost, and did not come back in the time that the run waits for it.", err)
        again = []
        threading.Timer(1.5, lambda: again.append(Server(lambda *_: None, server.port))).start()
        lines, code, err = self.run_lines("--json", "--yes", "runs", "resume", 1, "--network-wait", "1min")
        self.assertEqual((code, [row["state"] for row in lines[:-1]]), (0, ["sent"] * 3), err)
        again[0].listener.close()

    def test_the_waiting_is_told_and_ends_at_once_and_a_later_run_goes_on(self):
        is_open = threading.Event()
        server = self.server(lambda address, times: None if is_open.is_set() or address[0] == "2" else "450 4.2.0 later",
                             ["1@a.example", "2@a.example", "3@a.example"])
        terminal, end = pty.openpty()
        command = [PROGRAM, "--profile", str(self.profile), *self.mailing("--retries", "3")[1:]]
        run = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=end)
        os.close(end)
        shown = b""
        while b"Waits until" not in shown and select.select([terminal], [], [], 60)[0]:
            shown += os.read(terminal, 4096)
        while b"from then on." not in shown and select.select([terminal], [], [], 60)[0]:
            shown += os.read(terminal, 4096)
        self.assertRegex(shown.decode(), r"3 of 3 messages\. Waits until [-0-9: ]+\. 2 recipients were deferred and are "
                                         r"tried again from then on\.")
        began = time.monotonic()
        run.send_signal(signal.SIGINT)
        out, _ = run.communicate(timeout=60)
        os.close(terminal)
        self.assertLess(time.monotonic() - began, 60)
        self.assertEqual(run.returncode, 75)
        self.assertIn(b"1 message was sent, 2 failed.", out)
        self.assertEqual(self.states()["1@a.example"], ("deferred", 1))
        is_open.set()
        self.ok("runs", "resume", 1)
        self.assertEqual(server.taken, {"1@a.example": 1, "2@a.example": 1, "3@a.example": 1})

    def test_a_kill_between_a_try_and_the_next_loses_and_doubles_nobody(self):
        addresses = [f"{n}@a.example" for n in range(30)]
        server = self.server(lambda address, times: "451 4.3.2 busy" if int(address.split("@")[0]) % 3 == 0 and times < 3
                             else None, addresses, "Retries=4", "RetryAfter=1s")
        for after in (12, 35, 42):  # RCPTs: within the list, in the first retries, and in the second
            command = self.mailing() if after == 12 else ["runs", "resume", self.last_run()]
            run = self.popen(*command)
            deadline = time.monotonic() + 60
            while sum(server.asked.values()) < after and run.poll() is None and time.monotonic() < deadline:
                time.sleep(0.005)
            run.send_signal(signal.SIGKILL)
            run.communicate()
            time.sleep(0.1)
        code, out, err = self.run_program("runs", "resume", self.last_run())
        states = self.states()
        unknown = {address for address, (state, _) in states.items() if state == "unknown"}
        self.assertLessEqual(len(unknown), 3)
        self.assertEqual(set(server.taken.values()), {1}, server.taken)
        for address in addresses:
            if address not in unknown:
                self.assertEqual((states[address][0], server.taken[address]), ("sent", 1), (address, out, err))

    def leave_waiting(self, signal_number, *options):
        """A run to three, of whom one is taken and two are deferred, ended in the waiting for their retry."""
        run = self.popen(*self.mailing(*options))
        told = [run.stdout.readline() for _ in range(3)]
        while self.run_lines("--json", "runs", "list")[0][0]["not_tried_again"] < 2:
            self.assertIsNone(run.poll())
        run.send_signal(signal_number)
        run.communicate()
        self.assertEqual([b'"again":true' in line.replace(b" ", b"") for line in told], [True, False, True], told)

    def cancelled_before_it_begins(self, *command):
        """What a run that was to begin later told, and said."""
        run = self.popen("--json", "runs", *command, "--at", "2099-01-01 00:00")
        err = b""
        for line in run.stderr:
            err += line
            if b"Waits until 2099-01-01 00:00:00. It is to begin then." in line:
                break
        run.send_signal(signal.SIGINT)
        out, rest = run.communicate(timeout=60)
        return out, err + rest

    def test_a_run_that_ended_while_retries_waited_can_be_resumed_as_it_was_told(self):
        """By a kill or a cancel: it is not taken for finished, and a resume knows the pace, the retries and the tries."""
        late = ["late1@a.example", "2@a.example", "late3@a.example"]
        for number, (ending, more) in enumerate(((signal.SIGKILL, ("retry", 1, "--state", "deferred")),
                                                 (signal.SIGINT, ("resume", 1, "--retries", "1")))):
            with self.subTest(ending=ending):
                self.profile = self.folder / f"profile{number}"
                server = self.server(lambda address, times: "450 4.2.0 later" if address in late and "2" not in address and
                                     times < 4 else None, late)
                self.leave_waiting(ending, "--retries", "2", "--retry-after", "1h", "--rate", "1/s", "--connections", "2")
                listed = self.run_lines("--json", "runs", "list")[0][0]
                self.assertEqual((listed["mailing_standing"], listed.get("not_tried_again")), ("can be resumed", 2))
                self.assertEqual(self.run_lines("--json", "runs", "forget", "--finished")[0],
                                 [{"forgotten": 0, "forgotten_unknown": 0, "kept": 1, "damaged": 0}])
                code, _, err = self.run_program("--yes", "history", "clear")
                self.assertIn('The run "Hi" to All was kept, for it can be resumed.', err)
                self.assertIn("2 recipients were deferred, not reached, or refused because of the account, and are to be tried again.", self.run_program("runs", "show", 1)[2])
                again = [row.get("again") for row in self.run_lines("--json", "runs", "show", 1)[0] if "address" in row]
                self.assertEqual(again, [True, False, True])

                # A resume that comes to nobody leaves them as they are, and says how that is.
                out, err = self.cancelled_before_it_begins("resume", 1)
                self.assertEqual([(row["state"], row.get("stays")) for row in map(json.loads, out.splitlines()[:-1])],
                                 [("not tried", "deferred")] * 2, err)
                self.assertIn(b"#1 late1@a.example: not tried, and stays deferred", err)
                self.assertEqual(err.count(b"Waits until"), 1, err)
                self.assertEqual(self.run_lines("--json", "runs", "list")[0][0]["not_tried_again"], 2)

                # The account changed since: what it was told by option stays, and an option of now comes before it.
                self.ok("account", "set", "QuotaHour=400")
                server.times.clear()
                code, _, err = self.run_program("runs", "resume", 1, "--retry-after", "1s", "--at", "none")
                self.assertEqual(code, 1, err)
                self.assertIn("It goes on with this pace and these retries: Rate=1/s, QuotaHour=400, Connections=2, Retries=2, "
                              "RetryAfter=1s.", err)
                self.assertIn("Since then the account's pace has changed, and the run goes by what it is now: QuotaHour.", err)
                self.assertEqual([server.asked[address] for address in late], [3, 1, 3])  # two tries behind the first
                for (_, first), (_, second) in zip(server.times, server.times[1:]):
                    self.assertGreaterEqual(second - first, 0.9)
                self.assertEqual(self.states()["late1@a.example"], ("deferred", 3))
                self.assertEqual(self.run_lines("--json", "runs", "list")[0][0]["mailing_standing"], "finished")

                # Nobody is left by what it was told; more is to be asked for, by a command that is named.
                for command in (("resume", 1), ("resume", 1, "--retries", "none")):
                    code, _, err = self.run_program("runs", *command)
                    self.assertEqual(code, 66)
                    self.assertIn("There are: 1 sent, 2 deferred. quillcast runs retry 1 --state deferred sends to those again.",
                                  err.replace("\n", " "))
                # So does a retry, and who goes on with that does so by another.
                _, err = self.cancelled_before_it_begins("retry", 1, "--state", "deferred")
                self.assertNotIn(b"runs resume", err)
                self.assertRegex(err.replace(b"\n", b" "), rb"quillcast runs retry \d+, with the same --state and --reply, goes on\.")
                code, _, err = self.run_program("runs", *more, "--rate", "none", "--at", "none")
                self.assertEqual(code, 0, err)
                self.assertIn("goes by what it is now: QuotaHour.", err)  # since the mailing began, not since it went on
                self.assertEqual(server.taken, dict.fromkeys(late, 1))

    def test_over_several_connections_each_is_told_and_taken_once_at_last(self):
        addresses = [f"{n}@a.example" for n in range(60)]
        server = self.server(lambda address, times: "451 4.3.2 busy" if int(address.split("@")[0]) % 3 == 0 and times < 3
                             else None, addresses, "Connections=4", "Pipeline=1")
        lines, code, err = self.run_lines(*self.mailing("--retries", "3", "--retry-after", "1s"))
        self.assertEqual(code, 0, err)
        self.assertEqual(server.taken, Counter(addresses))
        self.assertEqual([row["position"] for row in lines[:60]], list(range(1, 61)))
        self.assertEqual(sorted(row["position"] for row in lines[60:-1]), sorted(2 * list(range(1, 61, 3))))
        self.assertEqual({row["address"]: row["state"] for row in lines[:-1]}, dict.fromkeys(addresses, "sent"))
        report = self.reports()[-1].read_text()
        self.assertEqual(re.findall(r"C: RCPT TO:<(\d+)@", report)[:60], [str(n) for n in range(60)])

    def test_a_server_that_is_away_for_a_while_is_waited_for(self):
        with socket.create_server(("127.0.0.1", 0)) as closed:
            port = closed.getsockname()[1]
        self.account(port)
        self.group("All", ["1@a.example"])
        run = self.popen(*self.mailing("--retries", "3", "--retry-after", "1s"))
        self.assertIn(b'"again":true', run.stdout.readline().replace(b" ", b""))
        server = Server(lambda address, times: None, port)
        self.addCleanup(server.listener.close)
        _, err = run.communicate(timeout=60)
        self.assertEqual(run.returncode, 0, err)
        self.assertEqual(server.taken, {"1@a.example": 1})

    def test_a_run_goes_slower_where_the_server_asks_for_it_and_says_so(self):
        def answer(address, times):
            return "450 4.7.1 too many messages" if address[0] == "4" and times == 1 else None
        server = self.server(answer, [f"{n}@a.example" for n in range(9)])
        self.ok(*self.mailing("--retries", "1", "--retry-after", "1s"))
        server.times.clear(), server.asked.clear(), server.taken.clear()
        self.ok("account", "set", "SlowDown=1")
        code, out, err = self.run_program(*self.mailing("--retries", "1", "--retry-after", "1s"))
        self.assertEqual(code, 0, err)
        self.assertRegex(err, r"The server asks for fewer messages: 450 4\.7\.1 too many messages\. The run goes slower "
                              r"from now on, up to [0-9.,]+ messages a minute\.")
        limit = float(re.search(r"up to ([0-9.,]+) messages a minute", err).group(1).replace(",", ""))
        self.assertLessEqual(limit, 5 * 60 / 2)
        times = [at for _, at in server.times[4:]]
        self.assertEqual(len(times), 6)
        self.assertGreaterEqual(times[-1] - times[0], 4 * 60 / limit)
        self.assertEqual(set(server.taken.values()), {1})
        self.ok(*self.mailing("--slow-down=no"))

    def test_what_is_no_number_of_retries_is_refused_before_anything_goes(self):
        server = self.server(lambda address, times: None, ["1@a.example"])
        for options, why in [(("--retries", "many"), '"many" is no number of retries.'),
                             (("--retry-after", "2d"), '"2d" is no time to wait.'),
                             (("--retry-after", "1s"), "--retry-after says when, and nothing says how often."),
                             (("--retry-after", "1s", "--retries", "0"), "--retry-after says when")]:
            with self.subTest(options):
                code, _, err = self.run_program(*self.mailing(*options))
                self.assertEqual(code, 64)
                self.assertIn(why, err)
        code, _, err = self.run_program("account", "set", "RetryAfter=soon")
        self.assertEqual(code, 64)
        self.assertIn('"soon" is no time to wait.', err)
        self.assertEqual(server.asked, {})
        # As soon of a run that goes on with nobody.
        self.ok(*self.mailing())
        for command in ("resume", "retry"):
            code, _, err = self.run_program("runs", command, 1, "--slow-down=q")
            self.assertEqual((code, '"q" is neither yes nor no.' in err), (64, True), err)

    def test_what_the_account_says_is_told_by_the_name_of_its_setting(self):
        server = self.server(lambda address, times: None, ["1@a.example"])
        for value, kept in [("yes", "1"), ("NO", "0"), ("true", "1"), ("", "0"), ("1", "1"), ("none", "0")]:
            self.ok("account", "set", f"SlowDown={value}")
            self.assertEqual(json.loads(self.ok("--json", "account", "show"))["SlowDown"], kept, value)
        code, _, err = self.run_program("account", "set", "SlowDown=q")
        self.assertEqual((code, "It is one of: 0, 1, no, yes." in err), (64, True), err)
        for key, value, option in [("SlowDown", "7", "--slow-down=no"), ("Retries", "abc", "--retries=1"),
                                   ("Connections", "5000", "--connections=2"), ("RetryAfter", "xx", "--retry-after=none")]:
            with self.subTest(key), contextlib.closing(sqlite3.connect(self.profile / "settings.db")) as settings:
                with settings:
                    settings.execute("UPDATE Settings SET Value = ? WHERE Key = ?", (value, key))
                code, _, err = self.run_program(*self.mailing())
                self.assertEqual(code, 78)
                self.assertIn(f'The account\'s {key} cannot be used: "{value}" is ', err)
                self.assertEqual(server.asked, {})
                self.ok(*self.mailing(option))  # which comes before it
                server.asked.clear()
                with settings:
                    settings.execute("UPDATE Settings SET Value = '' WHERE Key = ?", (key,))


if __name__ == "__main__":
    unittest.main()
