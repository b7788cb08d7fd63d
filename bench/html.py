"""How fast pages of many shapes are read, hostile ones among them: at 1 MB and at 20 MB, whose ratio says whether the
time is linear, and how much memory that takes beside the page. html.py [SHAPE...]"""
import json
import subprocess
import sys

PROGRAM = "build/bench/bin/bench_html"
MEGABYTE = 1_000_000
READERS = ("tokens", "text", "pictures")


def best(shape, megabytes, reader, times):
    runs = [json.loads(subprocess.run([PROGRAM, shape, str(megabytes * MEGABYTE), reader], check=True,
                                      capture_output=True, timeout=600).stdout) for _ in range(times)]
    return min(runs, key=lambda run: run["seconds"])


shapes = sys.argv[1:] or subprocess.run([PROGRAM], check=True, capture_output=True, text=True).stdout.splitlines()
print(f"{'':24}" + "".join(f"{reader:>10} MB/s  20/1  memory" for reader in READERS))
for shape in shapes:
    line = f"{shape:24}"
    for reader in READERS:
        small, large = best(shape, 1, reader, 5), best(shape, 20, reader, 2)
        line += (f"{20 / large['seconds']:15.0f} {large['seconds'] / small['seconds']:5.1f} "
                 f"{large['kib'] * 1024 / (20 * MEGABYTE):6.1f}x")
    print(line, flush=True)
