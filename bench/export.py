#!/usr/bin/env python3
"""Times `quillcast export` of a large group with all its fields against the sqlite3 shell's -csv of the same rows.

Both run alternately and write a file; ours makes sure that it is on the disk, the shell does not. Prints each time, the
ratio of the medians and the peak memory. "plain" writes values as they are, "rfc4180" with quotes where they are
needed, as the shell does.
"""
import argparse
import pathlib
import sqlite3
import statistics
import subprocess
import sys
import tempfile

from importlib import import_module

ROOT = pathlib.Path(__file__).resolve().parent.parent
timed = import_module("import").timed
FIELDS = ("Email Title FirstName LastName Country State City Address1 Address2 ZIPCode Phone Fax Company JobTitle WebSite "
          "Add1 Add2 Add3").split()
COLUMNS = ", ".join(f"[G-{field}]" for field in FIELDS)


def fill(program, profile, rows):
    """A group as the program makes it, and its rows as a list of customers has them."""
    subprocess.run([program, "--profile", profile, "group", "new", "Bench"], check=True, stdout=subprocess.DEVNULL)
    store = profile / "data" / "Group.mdb"
    with sqlite3.connect(store) as database:
        database.create_collation("QUILLCAST", lambda a, b: (a.rstrip(" ").lower() > b.rstrip(" ").lower()) -
                                  (a.rstrip(" ").lower() < b.rstrip(" ").lower()))
        database.execute("DROP INDEX [EmailsByAddress]")  # nobody asks for an address here
        database.executemany(f"INSERT INTO [Emails] ([G-ID], {COLUMNS}) VALUES (1{', ?' * len(FIELDS)})", (
            (f"user{n * 2654435761 % (1 << 32):x}.{n}@example{n % 50}.org", "Ms.", f"First{n % 997}", f"Last{n % 7919}",
             "Norway", "", "Köln" if n % 7 == 0 else "Oslo", f"{n % 300} Long Street, Flat {n % 9}", "",
             f"{n % 100000:05}", f"+47 22 {n % 1000000:06}", "", 'The "Old" Mill' if n % 100 == 0 else "Mill & Sons",
             "Director", f"https://www.example{n % 50}.org", "", "", "")
            for n in range(rows)))
    return store


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/quillcast")
    parser.add_argument("--rows", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        store = fill(options.program, folder / "profile", options.rows)
        ours = [options.program, "--profile", folder / "profile", "export", "-g", "Bench", "--fields", "All", "--utf8",
                "--delimiter", "Comma", "-o"]
        commands = {
            "plain": [*ours, folder / "plain.csv"],
            "rfc4180": [*ours, folder / "quoted.csv", "--rfc4180"],
            "sqlite3": ["sh", "-c", 'exec sqlite3 -csv "$0" "$1" >"$2"', store,
                        f"SELECT {COLUMNS} FROM [Emails] WHERE [G-ID] = 1 ORDER BY [ID]", folder / "shell.csv"],
        }
        runs = {name: [] for name in commands}
        for number in range(options.rounds):
            for name, command in commands.items():
                runs[name].append(timed(command))
            print(f"round {number + 1}: " + ", ".join(f"{name} {all_[-1][0]:.2f} s" for name, all_ in runs.items()))
        lines = (folder / "quoted.csv").read_bytes().split(b"\r\n", 1)[1]
        if lines.count(b"\r\n") != options.rows or len(lines) > (folder / "shell.csv").stat().st_size:
            sys.exit("the files do not hold the same rows")
    medians = {name: statistics.median(seconds for seconds, _ in all_) for name, all_ in runs.items()}
    for name in ("plain", "rfc4180"):
        print(f"{options.rows} rows: {name} {medians[name]:.2f} s, sqlite3 {medians['sqlite3']:.2f} s, "
              f"ratio {medians[name] / medians['sqlite3']:.2f} (at most {1 / 1.5:.2f})")
    print("peak memory: " + ", ".join(f"{name} {max(kib for _, kib in all_) / 1024:.0f} MiB"
                                      for name, all_ in runs.items()))


if __name__ == "__main__":
    main()
