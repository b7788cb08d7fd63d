#!/usr/bin/env python3
"""Times what the group manager does with a large group against plain SQLite with the same rows, in one process.

Ours goes through the store as the window does, a connection for each operation; the peer is the library itself with one
open connection, its own NOCASE collation and LIKE. Prints medians and ratios, and the peak memory.
"""
import argparse
import pathlib
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/bench_people")
    parser.add_argument("--rows", type=int, default=1_000_000)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        subprocess.run([options.program, ROOT / "data/group_schema.sql", scratch, str(options.rows)], check=True)


if __name__ == "__main__":
    main()
