"""The command without a command: its window where it can be had, else the reason in one line and the help."""
import collections
import os
import re
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

    def test_the_manual_page(self):
        """Every option stands where its command is told of; those of a message, once for all who make one."""
        page = Path(__file__).parents[2] / "docs" / "quillcast.1"
        text = re.sub(r"\\f[RBI]", "", page.read_text()).replace("\\-", "-")
        for line in page.read_text().splitlines():
            self.assertRegex(line, r"^(?![.']).|^$|^\.(\\\"|(TH|SH|SS|TP|PP|B|I|BR|RB|BI|IR|RI|IB|EX|EE|nf|fi|RS|RE|br|IP)\b)")
        told = collections.defaultdict(str)
        for command, topic in re.findall(r"^\.B (\w+)(.*?)(?=^\.TP|^\.SH)", text, re.M | re.S):
            told[command] += topic
        for other in ("preview", "message"):
            told[other] += told["send"]
        told[""] = text[text.index(".SH OPTIONS"):]

        def look(*command):
            lines = self.ok(*command, "--help")
            self.assertNotRegex(lines, r"[\x00-\x09\x0b-\x1f\x7f]", command)
            topic = told[command[0] if command else ""]
            for option in re.findall(r"^  (?:-\w,)?(--[\w-]+)", lines, re.M):
                if option not in ("--help", "--yes" if command else ""):
                    self.assertRegex(topic, re.escape(option) + r"(?![\w-])", command)
            _, _, subcommands = lines.partition("\nSubcommands:\n")
            for name in re.findall(r"^  (\w+)", subcommands, re.M):
                look(*command, name)
        look()


if __name__ == "__main__":
    unittest.main()
