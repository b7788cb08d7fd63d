"""Sending to the mailbox over loopback, one connection, against Python's smtplib with email in the same run."""
import resource
import smtplib
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import letter

PROGRAM = "build/bench/bin/quillcast"


class Mailbox:
    def __enter__(self):
        self.process = subprocess.Popen([PROGRAM, "mailbox", "--listen", "127.0.0.1:0", "--discard"],
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.port = self.process.stdout.readline().strip().rsplit(":", 1)[1]
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def quillcast(profile, *arguments):
    subprocess.run([PROGRAM, "--profile", profile, "--yes", "--quiet", *arguments], check=True,
                   stdout=subprocess.DEVNULL)


def prepare(folder, profile, count, port):
    """A profile with an account for the mailbox and a group of so many people."""
    people = Path(folder) / "people.csv"
    people.write_text("".join(f"user{n}@example.org,Ada{n % 1000},Lovelace,Köln,Analytical Engines\n"
                              for n in range(1, count + 1)))
    (Path(folder) / "letter.html").write_text(letter.HTML)
    quillcast(profile, "account", "set", "Name=Ada", "Email=ada@example.org", "Server=127.0.0.1", f"Port={port}",
              "CharSet=Unicode (UTF-8)")
    quillcast(profile, "group", "new", "All")
    quillcast(profile, "import", people, "--group", "All", "--opt-in", "--map",
              "Email Address=1,First Name=2,Last Name=3,City=4,Company=5")


def send(profile, body):
    quillcast(profile, "send", "--group", "All", "--subject", letter.SUBJECT, "--body", body)


def ours(folder, count, port):
    profile = Path(folder) / f"profile-{port}"
    prepare(folder, profile, count, port)
    start = time.perf_counter()
    send(profile, Path(folder) / "letter.html")
    return time.perf_counter() - start


def peer(count, port):
    start = time.perf_counter()
    with smtplib.SMTP("127.0.0.1", int(port)) as server:
        for number in range(1, count + 1):
            server.send_message(letter.message(number))
    return time.perf_counter() - start


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 10_000
    with tempfile.TemporaryDirectory() as folder:
        for _ in range(3):
            with Mailbox() as box:
                us = ours(folder, count, box.port)
            with Mailbox() as box:
                python = peer(count // 5, box.port) * 5
            print(f"{count:,} messages: {us:.2f} s ({count / us:,.0f} a second), smtplib with email {python:.2f} s, "
                  f"ratio {python / us:.1f}; peak of our processes "
                  f"{resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024:.0f} MiB")


if __name__ == "__main__":
    main()
