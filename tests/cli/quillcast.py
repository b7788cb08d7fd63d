"""Drives the program as a person or a script would: a profile of its own, a mailbox to send to."""
import json
import os
import resource
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from collections import Counter
from pathlib import Path

PROGRAM = os.environ.get("QUILLCAST", "build/release/bin/quillcast")
os.environ["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/dev/null/no-bus"  # no test reaches a keyring of this machine


def left_out(what, why):
    """Tells of something that cannot be tested here, also to whoever collects that for the end of a whole run."""
    line = f"{what}: NOT TESTED, {why}"
    print("\n" + line, file=sys.stderr)
    if collected := os.environ.get("QUILLCAST_LEFT_OUT"):
        with open(collected, "a", encoding="utf-8") as file:
            file.write(" ".join(line.split()) + "\n")


class Mailbox:
    """A running `quillcast mailbox` on a free port."""

    def __init__(self, store, *options):
        target = ["--store", str(store)] if store else ["--discard"]
        self.store = store
        self.process = subprocess.Popen([PROGRAM, "mailbox", "--listen", "127.0.0.1:0", *target, *options],
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.port = int(self.process.stdout.readline().rsplit(":", 1)[1])

    def index(self):
        file = Path(self.store) / "index.jsonl"
        return [json.loads(line) for line in file.read_text().splitlines()] if file.exists() else []

    def messages(self):
        """(envelope recipient, bytes) in the order in which they came."""
        return [(row["to"][0], (Path(self.store) / row["file"]).read_bytes()) for row in self.index()]

    def close(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(20)
        self.process.stdout.close()


class Server:
    """Serves all its connections at once. RCPT it answers by `answer(address, how often it was asked)`, where None takes
    it, and each line after `delay` seconds. Keeps who was asked, and when, and who was taken."""

    def __init__(self, answer=lambda address, times: None, port=0, delay=0, most=None,
                 refuses="421 4.7.0 too many connections", listens_for=None, offers=(), holds=None):
        self.answer, self.delay, self.most, self.refuses, self.offers = answer, delay, most, refuses, offers
        self.holds = holds                # the recipient whose message is not answered until `release`
        self.release = threading.Event()
        self.listens_for = listens_for    # so many connections; those behind them are refused by the system
        self.lock = threading.Lock()
        self.asked, self.taken, self.times = Counter(), Counter(), []
        self.connections = []             # messages over each that was served
        self.turned_away = self.at_once = self.most_at_once = 0
        self.listener = socket.create_server(("127.0.0.1", port), backlog=64)
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
                    has_quit = self.talk(peer, lines, number)
                finally:
                    with self.lock:
                        self.at_once -= 1
                if has_quit:
                    peer.sendall(b"221 bye\r\n")  # whoever hears it may come again at once
        except OSError:
            pass

    def talk(self, peer, lines, number):
        """Whether it ended with QUIT."""
        def say(text):
            time.sleep(self.delay)
            peer.sendall(text.encode() + b"\r\n")
        say("220 busy ESMTP")
        recipient = None
        while line := lines.readline():
            verb = line[:4].upper()
            if verb == b"EHLO":
                say("\r\n".join(f"250-{offer}" for offer in ("busy", *self.offers)) + "\r\n250 8BITMIME")
            elif verb == b"RCPT":
                address = line.split(b"<")[1].split(b">")[0].decode()
                self.asked[address] += 1
                self.times.append((address, time.monotonic()))
                refusal = self.answer(address, self.asked[address])
                recipient = None if refusal else address
                say(refusal or "250 2.1.5 ok")
                if refusal and refusal.startswith("421"):
                    return False
            elif verb in (b"DATA", b"BDAT") and not recipient:
                say("503 5.5.1 no recipient")
            elif verb in (b"DATA", b"BDAT"):
                if verb == b"DATA":
                    say("354 go on")
                if not self.has_all_of_it(lines, line):
                    return False  # cut in the middle: nobody has it
                if recipient == self.holds:
                    self.release.wait(60)
                with self.lock:
                    self.taken[recipient] += 1
                    self.connections[number] += 1
                say("250 2.0.0 taken")
            elif verb == b"QUIT":
                return True
            else:
                say("250 2.1.0 ok")
        return False

    @staticmethod
    def has_all_of_it(lines, command):
        """Reads a message behind its DATA or BDAT, and tells whether it came to its end."""
        if command[:4].upper() == b"BDAT":
            octets = int(command.split()[1])
            return len(lines.read(octets)) == octets
        while (line := lines.readline()) not in (b".\r\n", b""):
            pass
        return line != b""


class Case(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="quillcast-test-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.profile = self.folder / "profile"

    def write(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return str(path)

    def mailbox(self, *options, name="box"):
        box = Mailbox(self.folder / name, *options)
        self.addCleanup(box.close)
        return box

    def popen(self, *arguments, fsize=None):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (fsize, fsize))
        return subprocess.Popen([PROGRAM, "--profile", str(self.profile), *map(str, arguments)], stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                preexec_fn=limit if fsize is not None else None)

    def run_program(self, *arguments, fsize=None):
        """(exit code, standard output, standard error)"""
        with self.popen(*arguments, fsize=fsize) as process:
            out, err = process.communicate(timeout=120)
        return process.returncode, out.decode(), err.decode()

    def ok(self, *arguments):
        code, out, err = self.run_program(*arguments)
        self.assertEqual(code, 0, f"{arguments}\n{out}\n{err}")
        return out

    def account(self, port, *settings):
        self.ok("account", "set", "Name=Ada", "Email=ada@sender.example", "Server=127.0.0.1", f"Port={port}", *settings)

    def group(self, name, addresses):
        self.ok("group", "new", name)
        file = self.write(f"{name}.txt", "\n".join(addresses) + "\n")
        self.ok("import", file, "--group", name, "--map", "Email Address=1", "--delimiter", "Tab", "--opt-in")

    def reports(self):
        return sorted((self.profile / "data" / "History").glob("*.txt"))

    def send(self, *arguments):
        """The JSON lines of a run, and its exit code and standard error."""
        code, out, err = self.run_program("--json", "--yes", "send", *arguments)
        return [json.loads(line) for line in out.splitlines()], code, err


def in_background(call):
    thread = threading.Thread(target=call)
    thread.start()
    return thread
