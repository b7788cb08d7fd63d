"""Drives the program as a person or a script would: a profile of its own, a mailbox to send to."""
import json
import os
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import unittest
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
