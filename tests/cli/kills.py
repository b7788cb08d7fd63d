"""A run that is killed again and again while its server misbehaves, and goes on until it is finished: nobody is lost,
nobody is written to twice, and who is unknown was under way: how many those may be is counted from the server's side.

    tests/cli/kills.py FIRST LAST     plays the seeds FIRST to LAST and prints what came of each; every second one over
                                      eight connections, and every second six with silence before each kill; one
                                      of four with a server that answers twice, which is waited for from then on
"""
import contextlib
import io
import json
import os
import random
import signal
import socket
import subprocess
import sys
import threading
import time
from collections import Counter

RECIPIENTS = 2000
MOST_IN_FLIGHT = {"lock-step": 1, "pipelining": 2, "chunking": 128}  # over each connection
SILENCE = 0.2  # seconds: so long nothing is recorded any more once all is read that was answered
STAGES = ("connect", "MAIL", "RCPT", "DATA", "in the message", "taken, not answered", "answered")


class HangUp(Exception):
    """A connection ends by the server's fault."""


class Connection:
    """One, of which it is counted how many messages were begun over it, also what a program that was killed had sent."""

    def __init__(self, server, peer, lines):
        self.server, self.peer, self.lines = server, peer, lines
        self.begun = 0
        self.begun_at_kill = None  # where it was there at the last kill
        self.is_careful = server.has_hung_up  # its program goes no further ahead than in lock-step, or little

    def sendall(self, text):
        with self.server.speaking:
            if self.begun_at_kill is None:
                self.peer.sendall(text)
            elif not isinstance(self.lines, io.BytesIO):  # an answer to nobody would have the rest thrown away
                self.lines = io.BytesIO(self.lines.read())

    def readline(self):
        line = self.lines.readline()
        if line.startswith(b"MAIL"):
            self.begun += 1
            self.server.begun += 1
        return line

    def read(self, most):
        return self.lines.read(most)

    def rest(self):
        """What is here and not read."""
        if isinstance(self.lines, io.BytesIO):
            return self.lines.read()
        self.peer.setblocking(False)
        rest = b""
        while part := self.lines.read1(1 << 16):
            rest += part
        return rest

    def in_doubt(self):
        """Of a program that was killed: the messages that it may have begun and had no answer to."""
        return 0 if self.begun_at_kill is None else 1 + self.begun - self.begun_at_kill


class FaultyServer:
    """Takes messages and, as `chance` says, hangs up before, in and after each step, answers late, or `twice` so often;
    and at a step that is drawn before, kills the program that it talks to."""

    def __init__(self, chance, way, twice):
        self.chance, self.way, self.twice = chance, way, twice
        self.faults = []          # of its own
        self.taken = Counter()    # by recipient: whole messages that it answered for
        self.in_doubt = 0         # messages at most that its faults left without a certain answer
        self.victim = None        # the process to be killed
        self.kill_at = None       # after so many more messages, at which stage
        self.is_silent = False    # before it kills
        self.has_hung_up = False  # on the program of now
        self.speaking = threading.RLock()
        self.open = set()         # connections
        self.messages = 0
        self.begun = 0            # by the program of now, which has at most two more in flight than it began before
        self.killed = threading.Event()
        self.lock = threading.Lock()
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=16)
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def close(self):
        self.listener.close()

    def arm(self, victim, kill_at):
        self.killed.clear()
        self.messages = self.begun = 0
        self.victim, self.kill_at = victim, kill_at
        self.has_hung_up = False

    def accept(self):
        while True:
            try:
                peer, _ = self.listener.accept()
            except OSError:
                return
            peer.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            threading.Thread(target=self.serve, args=(peer,), daemon=True).start()

    def serve(self, peer):
        with peer, peer.makefile("rb") as lines:
            connection = Connection(self, peer, lines)
            with self.speaking:
                self.open.add(connection)
            try:
                self.talk(connection, connection)
            except HangUp:
                rest = connection.rest()
                connection.begun += rest.count(b"MAIL FROM:")
                self.has_hung_up = True
                # What it is still sending is seen by nobody, and answers that it has not come to go under with the rest.
                self.doubt(max(1 + rest.count(b"\r\n.\r\n") + rest.count(b"BDAT "), self.most_in_flight(connection)))
            except OSError:
                pass
            except Exception as fault:  # of this server
                self.faults.append(repr(fault))
            with self.speaking:
                self.open.discard(connection)
            self.doubt(connection.in_doubt())

    def most_in_flight(self, connection):
        return min(MOST_IN_FLIGHT[self.way], 2 if connection.is_careful else 2 + self.begun)

    def doubt(self, messages):
        with self.lock:
            self.in_doubt += messages

    def at(self, stage):
        """The connection may end here; and the program, where it is to be killed."""
        if self.kill_at is not None and self.victim and (self.messages, stage) >= self.kill_at and stage == self.kill_at[1]:
            victim, self.victim = self.victim, None
            self.kill(victim)
        if self.chance.random() < 0.0008:
            raise HangUp

    def kill(self, victim):
        if not self.is_silent:
            victim.send_signal(signal.SIGKILL)
        with self.speaking:
            if self.is_silent:
                self.wait_until_all_is_recorded()
                victim.send_signal(signal.SIGKILL)
            for connection in self.open:
                if connection.begun_at_kill is None:
                    connection.begun_at_kill = connection.begun
                    if not self.is_silent:  # nobody knows how many answers the program had not come to
                        self.doubt(min(self.most_in_flight(connection), connection.begun))
        self.killed.set()

    def wait_until_all_is_recorded(self):
        before, now, deadline = None, (), time.monotonic() + 20
        while now != before and time.monotonic() < deadline:
            before = now
            time.sleep(SILENCE)
            now = self.files_of_the_journal()

    def files_of_the_journal(self):
        seen = []
        for file in sorted(self.data.glob("runs.db*")):
            with contextlib.suppress(FileNotFoundError):  # a file of the last results goes with its run
                seen.append((file.name, file.stat().st_mtime_ns, file.stat().st_size))
        return seen

    def say(self, peer, text):
        roll = self.chance.random()
        if roll < 0.0004:
            time.sleep(0.05)
        twice = 0.0004 <= roll < 0.0004 + self.twice
        if twice:
            self.doubt(self.most_in_flight(peer))
        peer.sendall(text + text if twice else text)

    def talk(self, peer, lines):
        self.at("connect")
        self.say(peer, b"220 faulty ESMTP\r\n")
        recipient = None
        while line := lines.readline():
            verb = line[:4].upper().decode("latin-1")
            if verb == "EHLO":
                extra = {"lock-step": b"", "pipelining": b"250-PIPELINING\r\n", "chunking": b"250-PIPELINING\r\n250-CHUNKING\r\n"}
                peer.sendall(b"250-faulty\r\n" + extra[self.way] + b"250 8BITMIME\r\n")
            elif verb in ("MAIL", "RCPT"):
                self.at(verb)
                if verb == "RCPT":
                    recipient = line.split(b"<")[1].split(b">")[0].decode()
                    if self.chance.random() < 0.01:
                        recipient = None
                        self.say(peer, b"550 5.1.1 nobody here\r\n" if self.chance.random() < 0.5 else b"451 4.2.0 later\r\n")
                        continue
                self.say(peer, b"250 2.1.0 ok\r\n")
            elif verb in ("DATA", "BDAT"):
                self.at("DATA")
                if verb == "DATA" and recipient is None:
                    self.say(peer, b"503 5.5.1 no recipient\r\n")
                    continue
                if verb == "DATA":
                    self.say(peer, b"354 go on\r\n")
                if not self.take(line, lines):
                    return
                if verb == "BDAT" and recipient is None:
                    self.say(peer, b"503 5.5.1 no recipient\r\n")
                    continue
                with self.lock:
                    self.taken[recipient] += 1
                self.messages += 1
                recipient = None
                self.at("taken, not answered")
                self.say(peer, b"250 2.0.0 taken\r\n")
                self.at("answered")
            elif verb == "QUIT":
                peer.sendall(b"221 bye\r\n")
                return
            else:
                recipient = None
                peer.sendall(b"250 ok\r\n")

    def take(self, command, lines):
        """The bytes of a message; False where it does not come to its end."""
        if command[:4].upper() == b"BDAT":
            left = int(command.split()[1])
            while left > 0:
                part = lines.read(min(left, 512))
                left -= len(part)
                if not part:
                    return False
                self.at("in the message")
            return True
        while line := lines.readline():
            if line == b".\r\n":
                return True
            self.at("in the message")
        return False


def objects(text):
    return [json.loads(line) for line in text.splitlines() if line.startswith("{")]


class Mailing:
    """One mailing with a seed of its own; `play` gives what is wrong with it, as sentences."""

    def __init__(self, program, folder, seed, recipients=RECIPIENTS):
        answers_twice = seed % 4 == 1
        self.program, self.folder = program, folder
        self.recipients = min(recipients, 500) if answers_twice else recipients
        self.chance = random.Random(seed)
        self.way = ("lock-step", "pipelining", "chunking")[seed % 3]
        self.connections = (1, 8)[seed % 2]
        self.server = FaultyServer(random.Random(seed + 1), self.way, 0.001 if answers_twice else 0)
        self.server.is_silent = seed // 6 % 2 == 0
        self.server.data = folder / "profile" / "data"
        self.profile = ["--profile", str(folder / "profile"), "--json", "--yes", "--no-input"]
        self.kills = 0

    def run(self, *arguments):
        done = subprocess.run([self.program, *self.profile, *map(str, arguments)], stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=300)
        if done.returncode not in (0, 1, 75):
            raise RuntimeError(f"{arguments}: {done.returncode} {done.stdout[-500:]} {done.stderr[-500:]}")
        return objects(done.stdout)

    def prepare(self):
        addresses = self.folder / "list.txt"
        addresses.write_text("".join(f"r{n}@list.example\n" for n in range(1, self.recipients + 1)))
        (self.folder / "letter.html").write_text("<p>Dear $*MergeEmail*$</p>")
        self.run("account", "set", "Name=Ada", "Email=ada@sender.example", "Server=127.0.0.1", f"Port={self.server.port}",
                 f"Pipeline={0 if self.way == 'lock-step' else 1}", "Timeout=5", f"Connections={self.connections}")
        self.run("group", "new", "All")
        self.run("import", addresses, "--group", "All", "--map", "Email Address=1", "--delimiter", "Tab", "--opt-in")

    def go(self, *arguments):
        """Runs the command, perhaps killed on the way. Whether it came to its end."""
        process = subprocess.Popen([self.program, *self.profile, *map(str, arguments)], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        kill_at = None
        if self.kills < 6:
            kill_at = (self.chance.randrange(self.recipients // 3), self.chance.choice(STAGES))
        self.server.arm(process, kill_at)
        error = process.communicate(timeout=300)[1]
        self.server.victim = None
        if process.returncode == -signal.SIGKILL:
            self.kills += 1
            return False
        if process.returncode not in (0, 1, 75):
            raise RuntimeError(f"{arguments}: {process.returncode} {error[-1000:]}")
        return True

    def rows(self):
        return {row["address"]: row for row in self.run("runs", "show", self.first) if "address" in row}

    def mailing(self):
        return next(entry for entry in self.run("runs", "list") if entry["kind"] == "send")

    def play(self):
        self.prepare()
        self.go("send", "--group", "All", "--subject", "Hi", "--body", self.folder / "letter.html", "--keep-going")
        entry = self.mailing()
        self.first = entry["run"]
        goes = 1
        while entry["mailing_standing"] != "finished":
            if goes == 40:
                return ["it does not come to an end"]
            self.go("runs", "resume", self.first, "--keep-going")
            entry = self.mailing()
            goes += 1
        self.server.close()
        return self.judge()

    def judge(self):
        wrong = list(self.server.faults)
        taken, rows = self.server.taken, self.rows()
        if len(rows) != self.recipients:
            wrong.append(f"{len(rows)} rows for {self.recipients} recipients")
        for address, row in rows.items():
            times, state = taken[address], row["state"]
            if times > 1 or times != {"sent": 1, "unknown": times}.get(state, 0):
                wrong.append(f"{address} is {state} and got it {times} times")
            if state in ("not tried", "in flight"):
                wrong.append(f"{address} was left out")
        unknown = sum(row["state"] == "unknown" for row in rows.values())
        if unknown > self.server.in_doubt:
            wrong.append(f"{unknown} are unknown, and {self.server.in_doubt} at most were in doubt")
        return wrong


def main():
    import tempfile
    from pathlib import Path
    program = os.environ.get("QUILLCAST", "build/release/bin/quillcast")
    first, last = map(int, sys.argv[1:3])
    bad = 0
    for seed in range(first, last + 1):
        with tempfile.TemporaryDirectory(prefix="quillcast-kills-") as folder:
            mailing = Mailing(program, Path(folder), seed)
            wrong = mailing.play()
            entry = mailing.mailing()
            print(f"seed {seed}: {mailing.way}, {mailing.connections} at a time, {mailing.kills} kills, "
                  f"{entry['sent']} sent, {entry['unknown']} unknown of {mailing.server.in_doubt} at most"
                  + "".join(f"\n  WRONG: {what}" for what in wrong), flush=True)
            bad += bool(wrong)
    print(f"{last - first + 1} mailings, {bad} wrong")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
