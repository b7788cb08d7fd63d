#!/usr/bin/env python3
"""Times `quillcast message extract --parts` of a message of 100 MB with forty attachments against `base64 -d` of the same
bytes, one file after the other in one shell.

Both run alternately into a folder that is emptied between, after the files that both wrote were compared. Prints each
time and the ratio of the medians.
"""
import argparse
import base64
import filecmp
import pathlib
import random
import shutil
import statistics
import sys
import tempfile
from importlib import import_module

ROOT = pathlib.Path(__file__).resolve().parent.parent
timed = import_module("import").timed


def write_message(folder, attachments, size):
    """The message, and the encoded bytes of each attachment in a file of its own."""
    chance = random.Random(19)
    with (folder / "message.eml").open("wb") as message:
        message.write(b"Subject: files\r\nContent-Type: multipart/mixed; boundary=\"=_b\"\r\n\r\n")
        for number in range(attachments):
            encoded = base64.encodebytes(chance.randbytes(size * 57 // 78 // attachments)).replace(b"\n", b"\r\n")
            (folder / f"{number}.b64").write_bytes(encoded)
            message.write(b"--=_b\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
                          b"Content-Disposition: attachment; filename=\"%d.bin\"\r\n\r\n%b\r\n" % (number, encoded))
        message.write(b"--=_b--\r\n")


def emptied(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/quillcast")
    parser.add_argument("--megabytes", type=int, default=100)
    parser.add_argument("--attachments", type=int, default=40)
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        write_message(folder, options.attachments, options.megabytes * 1_000_000)
        ours, theirs = folder / "ours", folder / "theirs"
        commands = {
            "quillcast": (ours, [options.program, "--profile", folder / "profile", "--quiet", "message", "extract",
                                 folder / "message.eml", "--parts", ours]),
            "base64 -d": (theirs, ["sh", "-c", f'for i in $(seq 0 {options.attachments - 1}); do '
                                   f'base64 -di "{folder}/$i.b64" >"{theirs}/$i.bin"; done']),
        }
        runs = {name: [] for name in commands}
        for number in range(options.rounds):
            for name, (output, command) in commands.items():
                emptied(output)
                runs[name].append(timed(command)[0])
            _, differ, unread = filecmp.cmpfiles(ours, theirs, [f"{i}.bin" for i in range(options.attachments)], shallow=False)
            if differ or unread:
                sys.exit(f"these differ: {differ + unread}")
            print(f"round {number + 1}: " + ", ".join(f"{name} {all_[-1]:.3f} s" for name, all_ in runs.items()))
    medians = {name: statistics.median(all_) for name, all_ in runs.items()}
    print(f"{options.megabytes} MB in {options.attachments} attachments: quillcast {medians['quillcast']:.3f} s, base64 -d "
          f"{medians['base64 -d']:.3f} s, {medians['base64 -d'] / medians['quillcast']:.2f} times as fast (at least 0.5)")


if __name__ == "__main__":
    main()
