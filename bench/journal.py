#!/usr/bin/env python3
"""Times what the journal of a run costs a recipient, and what it tells of a run of a million, against a table with a row
for each recipient, which nobody makes durable before the end. Prints octets a recipient and the peak memory, too, and
beside what a person waits for its aim; ends with 1 where one is missed.
"""
import argparse
import pathlib
import re
import subprocess
import tempfile

import aims

ROOT = pathlib.Path(__file__).resolve().parent.parent
MOST = {"open and list": 100, "the first 50 deferred": 100, "the last 50 refused": 100,  # milliseconds
        "go on with the deferred, to the first of them": 1000, "states and words": 64}   # octets a recipient


def tell(line):
    told = re.match(r"(\D*?|the (?:first|last) 50 \w+) +([0-9.]+) (ms|octets)", line)
    most = MOST.get(told[1]) if told else None
    print(line.rstrip() + (aims.at_most(told[1], float(told[2]), most, f"at most {most} {told[3]}") if most else ""), flush=True)
    return told[1] if most else None


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/bench_journal")
    parser.add_argument("--recipients", type=int, default=1_000_000)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        measured = subprocess.run([options.program, scratch, str(options.recipients)], check=True, text=True,
                                  stdout=subprocess.PIPE).stdout
    missing = set(MOST) - {tell(line) for line in measured.splitlines()}
    if missing:
        raise SystemExit(f"not measured: {', '.join(sorted(missing))}")
    aims.end()


if __name__ == "__main__":
    main()
