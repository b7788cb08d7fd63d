#!/usr/bin/env python3
"""Message files, each with one fault or oddity, as the program reads them and as two readers do that are not ours.

What Python's e-mail package and mailparser both say has to be what we say. Where they differ, or both make less of a
file than is in it, expected.json has what is in it, written by hand: {file: {fact: value}}; "code" is the load's code
and 0 where it is not there, "extended" the facts of a lenient load that differ. A part is [type, name, Content-ID,
the beginning of its SHA-256].
"""
import base64
import hashlib
import json
import os
import subprocess
import sys
import unittest
from pathlib import Path

HERE = Path(__file__).parent
sys.path[:0] = [str(HERE.parent / "readers"), str(HERE.parent / "cli")]
import readers  # noqa: E402
from quillcast import PROGRAM, left_out  # noqa: E402

FILES = sorted((HERE / "files").glob("*.eml"))
EXPECTED = json.loads((HERE / "expected.json").read_text())


def mailbox(found):
    """Name and address of the first, and how many there are."""
    return found and [found[0] or "", found[1] or "", found[2]]


def parts_of(parts):
    rows = []
    for part in parts:
        sha256 = part.get("sha256") or hashlib.sha256(base64.b64decode(part["octets"])).hexdigest()
        name = part.get("file_name")  # mailparser has true for what stands without a value
        rows.append([part["type"] if isinstance(part["type"], str) else "text/plain", name if isinstance(name, str) else "", part.get("content_id") or "", sha256[:12]])
    return sorted(rows)


def foreign(read):
    subject = None if read.get("subject") in (None, "None") else read["subject"]
    return {"subject": subject or "", "from": mailbox(read.get("from")), "to": mailbox(read.get("to")),
            "parts": parts_of(read["parts"])}


def ours(row):
    def first(found):
        return [found[0]["name"], found[0]["address"], len(found)] if found else None
    senders = [row["from"]] if any(row["from"].values()) else []
    return {"subject": row["subject"], "from": first(senders), "to": first([r for r in row["recipients"] if r["field"] == "To"]),
            "parts": sorted([p["type"], p["name"], p["content_id"], p["sha256"][:12]] for p in row["parts"]
                            if p["sha256"] and p["type"] != "message/rfc822"),
            "code": row["code"]}


def show(*arguments):
    done = subprocess.run([PROGRAM, "--profile", os.devnull + "/none", "--json", "message", "show", *arguments],
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)
    return [json.loads(line) for line in done.stdout.splitlines()]


class Files(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.ours = {Path(row["file"]).stem: row for row in show(*map(str, FILES))}
        cls.extended = {Path(row["file"]).stem: row for row in show("--extended", *map(str, FILES))}
        found = readers.readers(left_out)
        cls.readers = {name: [foreign(row) for row in found[name](list(map(str, FILES)))]
                       for name in ("python", "mailparser") if name in found}

    def test_facts(self):
        """Each file, each fact; with one reader alone only what is written down is looked at."""
        self.assertEqual(set(EXPECTED) - set(self.ours), set(), "no such file")
        for place, file in enumerate(FILES):
            expected = EXPECTED.get(file.stem, {})
            told = ours(self.ours[file.stem])
            with self.subTest(file.stem, fact="code"):
                self.assertEqual(told["code"], expected.get("code", 0))
            for fact in ("subject", "from", "to", "parts"):
                said = [read[place][fact] for read in self.readers.values()]
                with self.subTest(file.stem, fact=fact):
                    if fact in expected:
                        self.assertEqual(told[fact], expected[fact])
                    elif len(said) == 2:
                        self.assertEqual(said[0], said[1], "the readers differ: expected.json has to say what is right")
                        self.assertEqual(told[fact], said[0])

    def test_lenient_facts(self):
        """What a lenient load reads beyond the plain one, and nothing else."""
        for file in FILES:
            with self.subTest(file.stem):
                told = ours(self.ours[file.stem]) | EXPECTED.get(file.stem, {}).get("extended", {})
                self.assertEqual(ours(self.extended[file.stem]), told)


if __name__ == "__main__":
    unittest.main()
