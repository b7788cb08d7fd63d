"""The desktop program as a process: a second start, no display, a kill and what it leaves."""
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "cli"))
from quillcast import left_out  # noqa: E402

PROGRAM = os.environ["QUILLCAST_DESKTOP"]


def start(profile, **environment):
    return subprocess.Popen([PROGRAM, "--profile", profile], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                            env={**os.environ, "QTWEBENGINE_DISABLE_SANDBOX": "1", **environment})


class Desktop(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.profile = Path(folder.name)

    def first(self):
        process = start(self.profile, QT_QPA_PLATFORM="offscreen")
        def end():
            process.kill()
            process.wait()
            process.stderr.close()
        self.addCleanup(end)
        deadline = time.monotonic() + 30
        while not (self.profile / "data" / "History").exists():
            self.assertIsNone(process.poll(), "it ended")
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.02)
        return process

    def test_a_second_start_ends_without_a_word(self):
        first = self.first()
        second = start(self.profile, QT_QPA_PLATFORM="offscreen")
        _, words = second.communicate(timeout=20)
        self.assertEqual(second.returncode, 0)
        self.assertNotIn("Quillcast", words)
        self.assertIsNone(first.poll())

    def test_of_several_that_start_at_once_one_stays(self):
        processes = [start(self.profile, QT_QPA_PLATFORM="offscreen") for _ in range(4)]
        def end():
            for process in processes:
                process.kill()
                process.communicate()
        self.addCleanup(end)
        deadline = time.monotonic() + 30
        while sum(process.poll() is None for process in processes) > 1 and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertEqual([process.returncode for process in processes if process.poll() is not None], [0, 0, 0])

    def test_a_killed_one_does_not_lock_out_the_next(self):
        first = self.first()
        first.send_signal(signal.SIGKILL)
        first.wait()
        again = start(self.profile, QT_QPA_PLATFORM="offscreen")
        try:
            with self.assertRaises(subprocess.TimeoutExpired):
                again.wait(timeout=2)
        finally:
            again.kill()
            again.communicate()

    def test_the_end_of_the_session_ends_it_and_asks_nothing(self):
        for number, seconds in ((signal.SIGTERM, 0.7), (signal.SIGHUP, 2.2)):  # behind the splash; with the tips open
            with self.subTest(number=number):
                first = self.first()
                time.sleep(seconds)
                first.send_signal(number)
                self.assertEqual(first.wait(timeout=20), 0)

    def test_where_nobody_may_make_namespaces_it_says_that_it_has_no_sandbox(self):
        inside = ["unshare", "-U", "--map-user=1001", "--map-group=1001", "--keep-caps", "sh", "-c"]
        forbid = "echo 0 > /proc/sys/user/max_user_namespaces"
        if subprocess.run([*inside, forbid], stderr=subprocess.DEVNULL).returncode != 0:
            left_out("the desktop where nobody may make namespaces", "no namespace can be made here, to forbid others in")
            self.skipTest("no namespace")
        environment = {name: value for name, value in os.environ.items() if name != "QTWEBENGINE_DISABLE_SANDBOX"}
        with subprocess.Popen([*inside, f'{forbid}; exec "$0" --profile "$1"', PROGRAM, self.profile],
                              env={**environment, "QT_QPA_PLATFORM": "offscreen"}, stderr=subprocess.PIPE,
                              text=True) as process:
            self.assertIn("runs without its sandbox", process.stderr.readline())
            process.terminate()

    def test_a_screen_that_is_just_large_enough_is_so_at_every_scale(self):
        for scale in ("1.5", "1.75"):
            with self.subTest(scale=scale):
                process = start(self.profile, QT_QPA_PLATFORM="offscreen", QT_SCALE_FACTOR=scale)
                try:
                    with self.assertRaises(subprocess.TimeoutExpired):
                        process.wait(timeout=3)
                    self.assertTrue((self.profile / "data" / "History").exists(), "it is asking")
                finally:
                    process.kill()
                    process.communicate()
                shutil.rmtree(self.profile / "data")

    def test_without_a_display_it_names_the_command(self):
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        done = subprocess.run([PROGRAM], env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=20)
        self.assertEqual(done.returncode, 69)
        self.assertIn("quillcast --help", done.stderr)

    def test_files_are_private(self):
        self.first()
        for path in [self.profile / "data", *(self.profile / "data").iterdir()]:
            self.assertEqual(path.stat().st_mode & 0o077, 0, path)


if __name__ == "__main__":
    unittest.main()
