"""How long `quillcast --version` takes, as a whole process, against an empty program."""
import statistics
import subprocess
import time


def median(*command):
    times = []
    for _ in range(41):
        start = time.perf_counter()
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        times.append(time.perf_counter() - start)
    return statistics.median(times) * 1000


print(f"quillcast --version: {median('build/bench/bin/quillcast', '--version'):.1f} ms (median of 41); "
      f"/bin/true: {median('/bin/true'):.1f} ms")
