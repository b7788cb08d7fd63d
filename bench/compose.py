"""Composing for many recipients, against Python's email package composing the same in the same run."""
import hashlib
import json
import subprocess
import sys
import tempfile
import time
from email.policy import SMTP
from pathlib import Path

import letter

PEER_MESSAGES = 1000


def peer():
    digest = hashlib.sha256()
    start = time.perf_counter()
    for number in range(1, PEER_MESSAGES + 1):
        digest.update(letter.message(number).as_bytes(policy=SMTP))
    return (time.perf_counter() - start) / PEER_MESSAGES


def compose(count, html, *how):
    return json.loads(subprocess.run(["build/bench/bin/bench_compose", str(count), str(html), *how], check=True,
                                     capture_output=True).stdout)


def main():
    with tempfile.TemporaryDirectory() as folder:
        html = Path(folder) / "letter.html"
        html.write_text(letter.HTML)
        for count in [int(a) for a in sys.argv[1:]] or [100_000, 1_000_000]:
            python = peer()
            ours = compose(count, html)
            each = ours["seconds"] / count
            print(f"{count:>9,} messages, {ours['octets'] / count:,.0f} octets each: {each * 1e6:.2f} us each, "
                  f"Python's email {python * 1e6:.0f} us, ratio {python / each:.0f}; "
                  f"peak {ours['peak_kib'] / 1024:.1f} MiB")
        for how in ("none", "base64", "wrapped", "boundary"):
            each = compose(10_000, html, how)["seconds"] / 10_000
            print(f"   10,000 messages, {how}: {each * 1e6:.2f} us each")


if __name__ == "__main__":
    main()
