"""Runs over several connections: whom they reach, in which order that is told, and what ends or lowers their number."""
import json
import re
import signal
import socket
import threading
import time
import unittest
from collections import Counter

from quillcast import Case

RECIPIENTS = 60


class Server:
    """Serves all its connections at once, and answers each line after `delay` seconds."""

    def __init__(self, delay=0.003, most=None, refuses="421 4.7.0 too many connections", listens_for=None, chunking=False,
                 holds=None):
        self.delay, self.most, self.refuses, self.chunking = delay, most, refuses, chunking
        self.holds = holds                # the recipient whose message is not answered until `release`
        self.release = threading.Event()
        self.listens_for = listens_for    # so many connections; those behind them are refused by the system
        self.lock = threading.Lock()
        self.taken = Counter()            # messages by recipient
        self.connections = []             # messages over each that was served
        self.turned_away = self.at_once = self.most_at_once = 0
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        try:
            while self.listens_for is None or len(self.connections) < self.listens_for:
                peer, _ = self.listener.accept()
                peer.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                threading.Thread(target=self.serve, args=(peer, self.enter()), daemon=True).start()
        except OSError:
            return
        self.listener.close()

    def enter(self):
        """The number of the connection, or None where it is one too many."""
        with self.lock:
            if self.most is not None and self.at_once >= self.most:
                self.turned_away += 1
                return None
            self.at_once += 1
            self.most_at_once = max(self.most_at_once, self.at_once)
            self.connections.append(0)
            return len(self.connections) - 1

    def serve(self, peer, number):
        try:
            with peer, peer.makefile("rb") as lines:
                if number is None:
                    peer.sendall(self.refuses.encode() + b"\r\n")
                    return
                try:
                    self.talk(peer, lines, number)
                finally:
                    with self.lock:
                        self.at_once -= 1
                peer.sendall(b"221 bye\r\n")  # whoever hears it may come again at once
        except OSError:
            pass

    def talk(self, peer, lines, number):
        def say(text):
            time.sleep(self.delay)
            peer.sendall(text)
        say(b"220 several ESMTP\r\n")
        while line := lines.readline():
            verb = line[:4].upper()
            if verb == b"EHLO":
                say(b"250-several\r\n" + (b"250-PIPELINING\r\n250-CHUNKING\r\n" if self.chunking else b"") + b"250 8BITMIME\r\n")
            elif verb in (b"DATA", b"BDAT"):
                if verb == b"DATA":
                    say(b"354 go on\r\n")
                    while lines.readline() not in (b".\r\n", b""):
                        pass
                else:
                    lines.read(int(line.split()[1]))
                if recipient == self.holds:
                    self.release.wait(60)
                with self.lock:
                    self.taken[recipient] += 1
                    self.connections[number] += 1
                say(b"250 2.0.0 taken\r\n")
            elif verb == b"QUIT":
                return
            else:
                if verb == b"RCPT":
                    recipient = line.split(b"<")[1].split(b">")[0].decode()
                say(b"250 2.1.0 ok\r\n")


class Connections(Case):
    def setUp(self):
        super().setUp()
        self.body = self.write("letter.html", "<p>Dear $*MergeEmail*$</p>")
        self.addresses = [f"r{n}@list.example" for n in range(1, RECIPIENTS + 1)]

    def server(self, *settings, **options):
        server = Server(**options)
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
            ((), ("--connections", "4"), {"chunking": True}, 2, 4),
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
        self.ok("runs", "resume", run, "--connections", "2")
        states = {row["address"]: row["state"] for row in self.rows(run)}
        self.assertEqual(Counter(states.values())["unknown"], len(unknown))
        for address, state in states.items():
            self.assertLessEqual(server.taken[address], 1)
            if state != "unknown":
                self.assertEqual((state, server.taken[address]), ("sent", 1), address)

    def test_a_cancel_ends_all_of_them_at_once(self):
        for times, holds in [(1, None), (2, "r3@list.example")]:
            with self.subTest(times=times):
                server = self.server("Connections=4", delay=0.02, holds=holds)
                process = self.popen(*self.mailing())
                deadline = time.monotonic() + 60
                while sum(server.taken.values()) < 8 and time.monotonic() < deadline:
                    time.sleep(0.005)
                for _ in range(times):
                    process.send_signal(signal.SIGINT)
                    time.sleep(0.3)
                began = time.monotonic()
                out = process.communicate(timeout=60)[0].decode()
                self.assertLess(time.monotonic() - began, 5)
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
