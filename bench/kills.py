"""Three hundred mailings of 2,000 that are killed again and again: nobody lost, nobody twice, who is unknown was under way.

    bench/run kills [FIRST LAST]
"""
import os
import subprocess
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
seeds = sys.argv[1:3] or ["1", "300"]
environment = dict(os.environ, QUILLCAST=str(TOP / "build/bench/bin/quillcast"))
sys.exit(subprocess.run([sys.executable, TOP / "tests/cli/kills.py", *seeds], env=environment).returncode)
