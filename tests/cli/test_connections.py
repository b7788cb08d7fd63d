"""Runs over several connections: whom they reach, in which order that is told, and what ends or lowers their number."""
import json
import re
import signal
import time
import unittest
from collections import Counter

from quillcast import Case, Server

RECIPIENTS = 60


class Connections(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", "<p>Dear $*MergeEmail*$</p>")
        self.addresses = [f"r{n}@list.example" for n in range(1, RECIPIENTS + 1)]

    def server(self, *settings, **options):
        server = Server(**{"delay": 0.003} | options)
        self.addCleanup(server.listener.close)
        self.addCleanup(server.release.set)
        self.account(server.port, "Timeout=1", *settings)
        if not (self.profile / "data" / "runs.db").exists():
            self.group("All", self.addresses)
        return server

    def mailing(self, *options):
        return ["--json", "--yes", "send", "--group", "All", "--subject", "Hi", "--body", self.body, *options]

    def rows(self, run):
        return [row for row in map(json.loads, self.ok("--json", "runs", "show", run).splitlines()) if "address" in row]

    def first_run(self):
        runs = map(json.loads, self.ok("--json", "runs", "list").splitlines())
        return next(entry["run"] for entry in runs if entry.get("kind") == "send")

    def test_everybody_gets_it_once_and_is_told_in_the_order_of_the_list(self):
        for settings, options, server, least, most in [
            ((), (), {}, 1, 1),
            ((), ("--connections", "1"), {}, 1, 1),
            ((), ("--connections", "4"), {}, 3, 4),
            ((), ("--connections", "4"), {"offers": ("PIPELINING", "CHUNKING")}, 2, 4),
            (("Connections=3",), (), {}, 2, 3),
            (("Connections=3",), ("--connections", "none"), {}, 1, 1),
            (("Connections=none",), ("--connections", "50"), {}, 4, 50),
            (("PerConnection=4",), ("--connections", "3"), {}, 2, 3),
            ((), ("--connections", "8"), {"most": 2}, 2, 2),
            ((), ("--connections", "8"), {"most": 2, "refuses": "554 5.7.1 no more of you"}, 2, 2),
            ((), ("--connections", "8"), {"listens_for": 2}, 2, 2),
        ]:
            with self.subTest(settings=settings, options=options, server=server):
                served = self.server("Pipeline=1", *(settings or ("Connections=",)), **server)
                if "PerConnection=4" not in settings:
                    self.ok("account", "set", "PerConnection=")
                code, out, err = self.run_program(*self.mailing(*options))
                self.assertEqual(code, 0, err)
                told = [json.loads(line) for line in out.splitlines()]
                self.assertEqual([row.get("position") for row in told], [*range(1, RECIPIENTS + 1), None])
                self.assertEqual({row["state"] for row in told[:-1]}, {"sent"})
                self.assertEqual(served.taken, Counter(self.addresses))
                self.assertGreaterEqual(served.most_at_once, least)
                self.assertLessEqual(served.most_at_once, most)
                self.assertLessEqual(served.turned_away, 3)
                if "PerConnection=4" in settings:
                    self.assertLessEqual(max(served.connections), 4)
                report = self.reports()[-1].read_text()
                self.assertEqual(re.findall(r"C: RCPT TO:<(\S+)>", report), self.addresses)

    def test_results_are_kept_as_they_come_and_a_kill_leaves_those_in_flight_unknown(self):
        server = self.server("Connections=4", holds="r1@list.example", delay=0.0005)
        process = self.popen(*self.mailing())
        deadline = time.monotonic() + 60
        while sum(server.taken.values()) < RECIPIENTS // 2 and time.monotonic() < deadline:
            time.sleep(0.002)
        process.send_signal(signal.SIGKILL)
        out = process.communicate()[0].decode()
        self.assertNotIn('"position": 2', out, "told ahead of the first")
        server.release.set()
        time.sleep(0.2)
        run = self.first_run()
        states = {row["address"]: row["state"] for row in self.rows(run)}
        sent = [address for address, state in states.items() if state == "sent"]
        unknown = [address for address, state in states.items() if state == "unknown"]
        self.assertGreaterEqual(len(sent), RECIPIENTS // 2 - 4)
        self.assertIn("r1@list.example", unknown)
        self.assertLessEqual(len(unknown), 4)
        told = self.run_program("--yes", "runs", "resume", run, "--connections", "2")
        self.assertEqual(told[0], 0, told)
        self.assertRegex(told[2], f"{len(unknown)} recipients? (was|were) unknown before this run and still")
        states = {row["address"]: row["state"] for row in self.rows(run)}
        self.assertEqual(Counter(states.values())["unknown"], len(unknown))
        for address, state in states.items():
            self.assertLessEqual(server.taken[address], 1)
            if state != "unknown":
                self.assertEqual((state, server.taken[address]), ("sent", 1), address)

    def test_a_cancel_ends_all_of_them_at_once(self):
        for times, holds in [(1, None), (2, "r3@list.example")]:
            with self.subTest(times=times):
                server = self.server("Connections=4", delay=0.1, holds=holds)
                process = self.popen(*self.mailing())
                deadline = time.monotonic() + 60
                while sum(server.taken.values()) < 8 and time.monotonic() < deadline:
                    time.sleep(0.005)
                for _ in range(times):
                    process.send_signal(signal.SIGINT)
                    time.sleep(1)  # two that come together are one
                began = time.monotonic()
                out = process.communicate(timeout=60)[0].decode()
                self.assertLess(time.monotonic() - began, 30)
                self.assertEqual(process.returncode, 75)
                told = [json.loads(line) for line in out.splitlines()][:-1]
                self.assertEqual(len({row["position"] for row in told}), RECIPIENTS)
                states = {row["address"]: row["state"] for row in told}
                for address, state in states.items():
                    if state != "unknown":
                        self.assertEqual(server.taken[address], state == "sent", address)
                self.assertEqual("unknown" in states.values(), holds is not None)
                self.assertIn("not tried", states.values())

    def test_a_pace_holds_over_all_of_them_together(self):
        for pace in (("--rate", "5/s"), ("--domain-rate", "5/s"), ("--pause-after", "4:1")):
            with self.subTest(pace):
                server = self.server("Connections=8", delay=0.005)
                time.sleep(1)  # those before count for a second
                began = time.monotonic()
                self.ok(*self.mailing("--range", "1-11", *pace))
                self.assertGreaterEqual(time.monotonic() - began, 2)
                self.assertEqual(server.taken, Counter(self.addresses[:11]))

    def test_what_is_no_number_of_them_is_refused(self):
        server = self.server()
        for text in ("0", "51", "-1", "two", "1.5"):
            for arguments in (self.mailing("--connections", text), ["account", "set", f"Connections={text}"]):
                with self.subTest(arguments=arguments):
                    code, _, err = self.run_program(*arguments)
                    self.assertEqual(code, 64)
                    self.assertIn(f'"{text}" is no number of connections. Write a whole number from 1 to 50.',
                                  " ".join(err.split()))
        code, _, err = self.run_program(*self.mailing("--connections", "2", "--dry-run"))
        self.assertEqual(code, 64)
        self.assertEqual(server.connections, [])


if __name__ == "__main__":
    unittest.main()
