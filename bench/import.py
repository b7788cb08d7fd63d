#!/usr/bin/env python3
"""Times `quillcast import` of a delimited list against the sqlite3 shell's .import of the same file.

Both run alternately, into an empty group and an empty table with a case-insensitive index, with the same cache and the
default journal. Prints each time, the ratio of the medians and the peak memory.
"""
import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
CACHE_KIB = 32768
TOWNS = ["London", "Paris", "Oslo", "Köln", "Graz", "Porto", "Lyon"]


def write_list(path, lines):
    """Addresses in an order that is not that of the index, as lists of customers are."""
    with open(path, "w", encoding="utf-8") as out:
        for n in range(lines):
            scrambled = n * 2654435761 % (1 << 32)
            out.write(f"First{n % 997},Last{n % 7919},user{scrambled:x}.{n}@example{n % 50}.org,{TOWNS[n % 7]}\n")


def timed(words, **options):
    """Seconds and peak resident KiB of one command."""
    begun = time.monotonic()
    child = subprocess.Popen(words, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, **options)
    complaints = child.stderr.read()
    _, status, usage = os.wait4(child.pid, 0)
    seconds = time.monotonic() - begun
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{words[0]} failed: {complaints}")
    return seconds, usage.ru_maxrss


def import_with_quillcast(program, folder, file):
    profile = folder / "profile"
    subprocess.run([program, "--profile", profile, "group", "new", "Bench"], check=True, stdout=subprocess.DEVNULL)
    return timed([program, "--profile", profile, "import", file, "--group", "Bench", "--opt-in", "--map",
                  "Email Address=3,First Name=1,Last Name=2,City=4"])


def import_with_shell(folder, file):
    script = folder / "script.sql"
    script.write_text(
        f"PRAGMA cache_size=-{CACHE_KIB};\n"
        "CREATE TABLE r (first TEXT, last TEXT, email TEXT COLLATE NOCASE, city TEXT);\n"
        "CREATE INDEX by_email ON r (email);\n"
        f'.mode csv\n.import "{file}" r\n')
    with open(script, encoding="utf-8") as commands:
        return timed(["sqlite3", folder / "table.db"], stdin=commands)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/quillcast")
    parser.add_argument("--lines", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=3)
    options = parser.parse_args()
    ours, peers = [], []
    with tempfile.TemporaryDirectory() as scratch:
        file = pathlib.Path(scratch) / "list.csv"
        write_list(file, options.lines)
        for number in range(options.rounds):
            folder = pathlib.Path(scratch) / str(number)
            folder.mkdir()
            ours.append(import_with_quillcast(options.program, folder, file))
            peers.append(import_with_shell(folder, file))
            print(f"round {number + 1}: quillcast {ours[-1][0]:.2f} s, sqlite3 {peers[-1][0]:.2f} s")
    our_time = statistics.median(seconds for seconds, _ in ours)
    peer_time = statistics.median(seconds for seconds, _ in peers)
    print(f"{options.lines} lines: quillcast {our_time:.2f} s, sqlite3 {peer_time:.2f} s, "
          f"ratio {our_time / peer_time:.2f}")
    print(f"peak memory: quillcast {max(kib for _, kib in ours) / 1024:.0f} MiB, "
          f"sqlite3 {max(kib for _, kib in peers) / 1024:.0f} MiB")


if __name__ == "__main__":
    main()
