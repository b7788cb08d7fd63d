#!/usr/bin/env python3
"""Times `quillcast message show --json` of a thousand ordinary messages against Python's email package doing the same.

Both run alternately, one process each for all files, and write one object a message: headers, parts with sizes and
SHA-256, recipients, relay stamps with their times. Before that their facts are compared: another answer is no answer.
Prints each time and the ratio of the medians.
"""
import argparse
import base64
import email
import email.policy
import email.utils
import hashlib
import json
import pathlib
import random
import statistics
import subprocess
import sys
import tempfile
from importlib import import_module

ROOT = pathlib.Path(__file__).resolve().parent.parent
timed = import_module("import").timed


def stamps(chance, number):
    return "".join(f"Received: from mx{hop}.example.net (mx{hop}.example.net [192.0.2.{hop + 1}])\r\n"
                   f"\tby mx{hop + 1}.example.org (Postfix) with ESMTPS id {chance.getrandbits(40):X}\r\n"
                   f"\tfor <user{number}@example.org>; Sat, 14 Nov 2026 22:40:{9 - hop:02} +0100 (CET)\r\n"
                   for hop in range(4))


def part(kind, encoding, content, name=None):
    disposition = f'Content-Disposition: attachment; filename="{name}"\r\n' if name else ""
    return f"Content-Type: {kind}\r\nContent-Transfer-Encoding: {encoding}\r\n{disposition}\r\n{content}"


def message(chance, number):
    """Four of ten are a text, four a text and a page, two have a file as well."""
    words = [f"word{chance.randrange(500)}" for _ in range(chance.randrange(100, 700))]
    text = "\r\n".join(" ".join(words[i:i + 10]) for i in range(0, len(words), 10)) + "\r\nGr=C3=BC=C3=9Fe\r\n"
    plain = part("text/plain; charset=utf-8", "quoted-printable", text)
    page = part("text/html; charset=utf-8", "quoted-printable", f"<html><body><p>{text}</p></body></html>\r\n")
    both = ("Content-Type: multipart/alternative; boundary=\"=_alt\"\r\n\r\n--=_alt\r\n" + plain + "--=_alt\r\n" + page +
            "--=_alt--\r\n")
    body = plain if number % 10 < 4 else both
    if number % 10 >= 8:
        file = base64.encodebytes(chance.randbytes(chance.randrange(20_000, 150_000))).decode().replace("\n", "\r\n")
        body = ("Content-Type: multipart/mixed; boundary=\"=_mix\"\r\n\r\n--=_mix\r\n" + both + "\r\n--=_mix\r\n" +
                part("application/pdf", "base64", file, f"report {number}.pdf") + "--=_mix--\r\n")
    return (stamps(chance, number) + f"Date: Sat, 14 Nov 2026 22:40:05 +0100\r\nFrom: =?utf-8?Q?J=C3=B6rg?= <joerg{number}@example.org>\r\n"
            f"To: Bob Example <bob{number}@example.net>, \"Last, First\" <lf@example.net>\r\nCc: carol@example.net\r\n"
            f"Subject: =?utf-8?Q?Gr=C3=BC=C3=9Fe?= number {number}\r\nMessage-ID: <{number}.{chance.getrandbits(64):x}@example.org>\r\n"
            "MIME-Version: 1.0\r\n" + body).encode()


def as_python_reads(file):
    read = email.message_from_bytes(pathlib.Path(file).read_bytes(), policy=email.policy.default)
    parts = []
    for one in read.walk():
        row = {"type": one.get_content_type(), "name": one.get_filename() or ""}
        if not one.is_multipart():
            content = one.get_payload(decode=True)
            row |= {"size": len(content), "sha256": hashlib.sha256(content).hexdigest()}
        parts.append(row)
    recipients = [{"field": field, "name": address.display_name, "address": address.addr_spec}
                  for field in ("To", "Cc", "Bcc") if read[field] for address in read[field].addresses]
    times = [email.utils.parsedate_to_datetime(stamp.rsplit(";", 1)[1].strip()).timestamp()
             for stamp in read.get_all("Received", [])]
    return {"subject": str(read["Subject"]), "from": read["From"].addresses[0].addr_spec, "recipients": recipients,
            "headers": [{"name": name, "value": str(value)} for name, value in read.items()], "parts": parts,
            "stamps": [{"unix": time, "delay": time - next_one if next_one else None}
                       for time, next_one in zip(times, times[1:] + [None])]}


def check(ours, theirs):
    """The facts that both tell, of each message."""
    for one, other in zip(ours, theirs, strict=True):
        facts = [{"subject": row["subject"], "recipients": row["recipients"],
                  "parts": [(part["type"], part["name"], part.get("size"), part.get("sha256")) for part in row["parts"]]}
                 for row in (one, other)]
        facts[0]["times"] = [(stamp["time"]["unix"], stamp["delay"]) for stamp in one["stamps"]]
        facts[1]["times"] = [(stamp["unix"], stamp["delay"]) for stamp in other["stamps"]]
        if facts[0] != facts[1]:
            sys.exit(f"the two read a message differently:\n{facts[0]}\n{facts[1]}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/quillcast")
    parser.add_argument("--messages", type=int, default=1000)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--as-python", action="store_true", help=argparse.SUPPRESS)
    options, files = parser.parse_known_args()
    if options.as_python:
        for file in [options.program, *files]:
            print(json.dumps(as_python_reads(file)))
        return
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        chance = random.Random(19)
        files = [folder / f"{number}.eml" for number in range(options.messages)]
        for number, file in enumerate(files):
            file.write_bytes(message(chance, number))
        commands = {
            "quillcast": [options.program, "--profile", folder / "profile", "--json", "message", "show", *files],
            "python": [sys.executable, __file__, "--as-python", *files],
        }
        outputs = {name: [json.loads(line) for line in subprocess.run(command, check=True, capture_output=True).stdout.splitlines()]
                   for name, command in commands.items()}
        check(outputs["quillcast"], outputs["python"])
        runs = {name: [] for name in commands}
        for number in range(options.rounds):
            for name, command in commands.items():
                runs[name].append(timed(command)[0])
            print(f"round {number + 1}: " + ", ".join(f"{name} {all_[-1]:.3f} s" for name, all_ in runs.items()))
    medians = {name: statistics.median(all_) for name, all_ in runs.items()}
    print(f"{options.messages} messages: quillcast {medians['quillcast']:.3f} s, python {medians['python']:.3f} s, "
          f"{medians['python'] / medians['quillcast']:.1f} times as fast (at least 10)")


if __name__ == "__main__":
    main()
