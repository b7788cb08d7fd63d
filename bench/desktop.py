"""The window against the command in the same run: time until it can be used, memory at rest, and a mailing of each."""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import letter
import send

WINDOW = "build/bench/bin/bench_desktop"


class Screen:
    """A screen in memory with a window manager, where both are installed; else none at all."""
    def __enter__(self):
        self.processes = []
        self.environment = dict(os.environ, LC_ALL="C.UTF-8", QT_LOGGING_RULES="qt.webenginecontext=false;js=false")
        if shutil.which("Xvfb") and shutil.which("openbox"):
            self.environment["DISPLAY"] = ":98"
            for command in (["Xvfb", ":98", "-screen", "0", "1280x900x24"], ["openbox"]):
                self.processes.append(subprocess.Popen(command, env=self.environment, stdout=subprocess.DEVNULL,
                                                       stderr=subprocess.DEVNULL))
                time.sleep(1)
            self.name = "Xvfb"
        else:
            self.environment["QT_QPA_PLATFORM"] = "offscreen"
            self.name = "no screen"
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()


class Awake:
    """Keeps the mailbox on one processor, and two of them from idling: what an idle one of a virtual machine takes to wake
    up is several times the work on a message, and a window that draws keeps it awake where a command does not."""
    def __init__(self, mailbox):
        self.mailbox = mailbox

    def __enter__(self):
        numbers = sorted(os.sched_getaffinity(0))[:2]
        os.sched_setaffinity(self.mailbox.process.pid, numbers[:1])
        self.processes = [subprocess.Popen(["chrt", "--idle", "0", "taskset", "-c", str(number), "sh", "-c",
                                            "while :; do :; done"]) for number in numbers]

    def __exit__(self, *_):
        for process in self.processes:
            process.kill()
            process.wait()


def window(screen, profile, body, *splash):
    environment = dict(screen.environment, QUILLCAST_BENCH_START=str(time.monotonic_ns()))
    out = subprocess.run([WINDOW, profile, body, letter.SUBJECT, *splash], check=True, env=environment, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return {name: float(value) for name, value in (line.split() for line in out.splitlines())}


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 20_000
    with tempfile.TemporaryDirectory() as folder, Screen() as screen:
        body = Path(folder) / "letter.html"
        profile = Path(folder) / "profile"
        by_window, by_command, behind_splash = [], [], []
        with send.Mailbox() as box:
            send.prepare(folder, profile, count, box.port)
            for _ in range(5):
                with Awake(box):
                    start = time.perf_counter()
                    send.send(profile, body)
                    by_command.append(time.perf_counter() - start)
                    by_window.append(window(screen, profile, body))
                behind_splash.append(window(screen, profile, body, "splash")["usable"])
        usable = statistics.median(run["usable"] for run in by_window)
        sent = statistics.median(run["sent"] for run in by_window)
        command = statistics.median(by_command)
        print(f"{screen.name}: first key typed appears after {usable:.2f} s without the splash, "
              f"{statistics.median(behind_splash) - 1:.2f} s beside the splash's own second; "
              f"{statistics.median(run['memory'] for run in by_window) / 1024:.0f} MiB at rest, its page included")
        print(f"1,000 of {count:,} messages: window {sent / count * 1000 * 1000:.1f} ms, "
              f"command {command / count * 1000 * 1000:.1f} ms, ratio {sent / command:.2f}")
        print(f"the window was kept from its next turn for {max(run['pause'] for run in by_window) * 1000:.0f} ms at most; "
              f"1,000 lines more in a report of a million: "
              f"{max(run['report_lines'] for run in by_window) * 1000:.1f} ms, "
              f"{max(run['report_memory'] for run in by_window) / 1024:.0f} MiB for all of it")
        print(f"a design is shown {max(run['design'] for run in by_window) * 1000:.0f} ms after it was chosen, the signature can be "
              f"edited after {max(run['signature'] for run in by_window) * 1000:.0f} ms, and the properties of 1 MB are known "
              f"after {max(run['properties'] for run in by_window) * 1000:.0f} ms")
        print(f"a document of 20 MB can be edited after {max(run['large_shown'] for run in by_window):.1f} s and is read back "
              f"within {max(run['large_read'] for run in by_window):.1f} s")


if __name__ == "__main__":
    main()
