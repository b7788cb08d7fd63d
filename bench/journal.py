#!/usr/bin/env python3
"""Times what the journal of a run costs a recipient, and what it tells of a run of a million, against a table with a row
for each recipient, which nobody makes durable before the end. Prints octets a recipient and the peak memory, too.
"""
import argparse
import pathlib
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/bench_journal")
    parser.add_argument("--recipients", type=int, default=1_000_000)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        subprocess.run([options.program, scratch, str(options.recipients)], check=True)


if __name__ == "__main__":
    main()
