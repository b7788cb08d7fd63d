"""The desktop program as a process: a second start, no display, a kill and what it leaves."""
import os
import shutil
import signal
import socket
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "cli"))
from quillcast import left_out  # noqa: E402

PROGRAM = os.environ["QUILLCAST_DESKTOP"]


def start(profile, *arguments, cwd=None, **environment):
    return subprocess.Popen([PROGRAM, "--profile", profile, *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                            text=True, cwd=cwd, env={**os.environ, "QTWEBENGINE_DISABLE_SANDBOX": "1", **environment})


class Desktop(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.profile = Path(folder.name)

    def first(self, *arguments, **environment):
        process = start(self.profile, *arguments, QT_QPA_PLATFORM="offscreen", **environment)
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

    def without_splash_and_tips(self):
        with sqlite3.connect(self.profile / "settings.db") as settings:
            settings.execute("CREATE TABLE Settings (Application TEXT NOT NULL COLLATE NOCASE, Section TEXT NOT NULL COLLATE "
                             "NOCASE, Key TEXT NOT NULL COLLATE NOCASE, Value TEXT NOT NULL, "
                             "PRIMARY KEY (Application, Section, Key)) WITHOUT ROWID")
            settings.executemany("INSERT INTO Settings VALUES ('Quillcast Classic', 'Options', ?, '0')", [("Splash",), ("Tips",)])
        settings.close()

    def kept(self, name, words):
        """Waits until what is kept of the message holds these words."""
        deadline = time.monotonic() + 30
        file = self.profile / "data" / name
        while not file.exists() or words not in file.read_text():
            self.assertLess(time.monotonic(), deadline, f"{words} did not come into {name}")
            time.sleep(0.02)

    def test_what_a_start_is_given_is_opened_by_the_one_window(self):
        self.without_splash_and_tips()
        (self.profile / "letter.html").write_text("<p>Dear reader</p>")
        (self.profile / "next.html").write_text("<p>Dear all</p>")
        first = self.first("mailto:?subject=Spring")
        self.kept("Autosave.fields", "Subject: Spring\n")
        for argument, name, words in (("letter.html", "Autosave.htm", "Dear reader"),
                                      ((self.profile / "next.html").as_uri(), "Autosave.htm", "Dear all"),
                                      ("mailto:bob@example.net?subject=Summer", "Autosave.fields", "Subject: Summer\n")):
            with self.subTest(argument=argument):
                second = start(self.profile, argument, cwd=self.profile, QT_QPA_PLATFORM="offscreen")
                _, words_of_second = second.communicate(timeout=20)
                self.assertEqual((second.returncode, words_of_second.count("quillcast-desktop:")), (0, 0), words_of_second)
                self.kept(name, words)
        self.assertIsNone(first.poll())

    def test_what_is_no_start_of_the_program_is_not_listened_to(self):
        with tempfile.TemporaryDirectory() as runtime:
            self.without_splash_and_tips()
            first = self.first(XDG_RUNTIME_DIR=runtime)
            address = self.socket_in(runtime)
            self.assertEqual(address.stat().st_mode & 0o077, 0)
            begin = b"quillcast start 1\n"
            for name, said, answer in (("another program", b"GET / HTTP/1.1\r\n\r\n", b""),
                                       ("a relative path", begin + b"letter.html\0\0", b""),
                                       ("no end", begin + b"/" * 300_000, b""),
                                       ("half of it", begin, b""),
                                       ("ours", begin + b"mailto:?subject=Heard\0\0", b"taken\n")):
                with self.subTest(name=name), socket.socket(socket.AF_UNIX) as speaker:
                    speaker.settimeout(20)
                    speaker.connect(str(address))
                    try:
                        speaker.sendall(said)
                        heard = speaker.recv(100)
                    except (BrokenPipeError, ConnectionResetError):
                        heard = b""
                    self.assertEqual(heard, answer)
            self.kept("Autosave.fields", "Subject: Heard\n")
            self.assertIsNone(first.poll())

    def socket_in(self, runtime):
        deadline = time.monotonic() + 30
        while not (found := [path for path in Path(runtime).glob("quillcast-*") if path.is_socket()]):
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.02)
        return found[0]

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
