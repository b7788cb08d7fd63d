"""The command without a command: its window where it can be had, else the reason in one line and the help."""
import os
import shutil
import subprocess
import unittest
from pathlib import Path

from quillcast import PROGRAM, Case

WINDOW = '#!/bin/sh\necho "window $*"\n'


class Start(Case):
    def test_without_a_command(self):
        for name, window, display, line, out in (
                ("the command alone", False, ":7", "The window is not installed here", "Usage: quillcast"),
                ("no display", True, "", "There is no display", "Usage: quillcast"),
                ("a window", True, ":7", "", f"window --profile {self.profile}")):
            with self.subTest(name=name):
                folder = self.folder / name
                folder.mkdir()
                program = shutil.copy(PROGRAM, folder / "quillcast")
                if window:
                    Path(folder, "quillcast-desktop").write_text(WINDOW)
                    Path(folder, "quillcast-desktop").chmod(0o755)
                environment = {key: value for key, value in os.environ.items() if "DISPLAY" not in key}
                environment |= {"DISPLAY": display} if display else {}
                done = subprocess.run([program, "--profile", self.profile], env=environment, capture_output=True, text=True,
                                      timeout=20)
                self.assertEqual((done.returncode, done.stderr.count("\n")), (0, 1 if line else 0), done.stderr)
                self.assertIn(line, done.stderr)
                self.assertIn(out, done.stdout)


if __name__ == "__main__":
    unittest.main()
