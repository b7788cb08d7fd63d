#!/usr/bin/env python3
"""The windows of the recipients: a list imported through the dialog against `quillcast import` of the same one, run
alternately, and the group manager that shows the group, in a process of its own without an editor.

Prints each time, the ratio of the medians, and for the group manager the time until it is shown, the jump to its last
row and the peak memory.
"""
import argparse
import importlib
import pathlib
import statistics
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
WINDOW = ROOT / "build/bench/bin/bench_lists"
lists = importlib.import_module("import")
desktop = importlib.import_module("desktop")


def window(screen, *words):
    out = subprocess.run([WINDOW, *words], check=True, env=screen.environment, text=True, stdout=subprocess.PIPE,
                         stderr=subprocess.DEVNULL).stdout
    return {name: float(value) for name, value in (line.split() for line in out.splitlines())}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/quillcast")
    parser.add_argument("--lines", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=3)
    options = parser.parse_args()
    by_window, by_command, shown = [], [], []
    with tempfile.TemporaryDirectory() as scratch, desktop.Screen() as screen:
        scratch = pathlib.Path(scratch)
        file = scratch / "list.csv"
        lists.write_list(file, options.lines)
        for number in range(options.rounds):
            folder = scratch / f"command{number}"
            folder.mkdir()
            by_command.append(lists.import_with_quillcast(options.program, folder, file)[0])
            profile = scratch / f"window{number}"
            subprocess.run([options.program, "--profile", profile, "group", "new", "Bench"], check=True,
                           stdout=subprocess.DEVNULL)
            by_window.append(window(screen, "import", profile, "Bench", file)["imported"])
            shown.append(window(screen, "show", profile, "Bench"))
            print(f"round {number + 1}: dialog {by_window[-1]:.2f} s, command {by_command[-1]:.2f} s")
        assert all(run["rows"] == options.lines for run in shown), "not all of the list is there"
        ours, peers = statistics.median(by_window), statistics.median(by_command)
        print(f"{options.lines:,} lines: dialog {ours:.2f} s, command {peers:.2f} s, ratio {ours / peers:.2f}")
        print(f"{screen.name}: the group manager shows the group after "
              f"{statistics.median(run['shown'] for run in shown):.2f} s, its last row "
              f"{statistics.median(run['jump'] for run in shown) * 1000:.0f} ms later, with a peak of "
              f"{max(run['peak'] for run in shown) / 1024:.0f} MiB")


if __name__ == "__main__":
    main()
