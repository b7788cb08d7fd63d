"""Every message that the settings can make reads in three independent readers as what was composed."""
import collections
import os
import re
import sys
import time
import unittest
from concurrent.futures import ThreadPoolExecutor
from email.utils import getaddresses
from pathlib import Path

import charsets
import expected
import readers
import wire
from composing import CASES, DIMENSIONS, Composer, table
from covering import all_pairs, pairs_of

sys.path.insert(0, str(Path(__file__).parent.parent / "cli"))
from quillcast import Case, left_out  # noqa: E402

THIN = bool(os.environ.get("QUILLCAST_SANITIZE"))
SHOWN = 12
FIXED = {"x-mailer": "Tarnwick Quillcast Classic 1.0", "x-priority": "1",
         "disposition-notification-to": "ada@sender.example"}


class Findings:
    """Differences by kind, of which a few are shown."""

    def __init__(self):
        self.kinds = collections.defaultdict(list)

    def add(self, kind, row, detail):
        self.kinds[kind].append(f"{dict(row.values)}\n      {detail}")

    def __str__(self):
        return "\n".join(f"{len(found)} times {kind}, as in\n    " + "\n    ".join(found[:2])
                         for kind, found in sorted(self.kinds.items())[:SHOWN])


def check_wire(file, row, person):
    """What can be said of a message without a reader. Gives its Message-ID."""
    raw = Path(file).read_bytes()
    wanted = expected.Expected(row, person)
    wire.check_octets(raw)
    whole = wire.Entity(raw)
    mime = row["format"] != "Plain"
    for name in ("from", "to", "subject", "date", "message-id", *FIXED, *(["mime-version"] if mime else [])):
        assert len(whole.fields.get(name, [])) == 1, f"{name}: {whole.fields.get(name)}"
    assert {name: whole.field(name) for name in FIXED} == FIXED
    if not mime and "content-type" in whole.fields:
        assert whole.charset() != row.sample["mime"] or row["offer"] == "none", "MIME in a plain message without need"
    for entity in whole.walk():
        wire.check_headers(entity)
        if mime or "content-type" in whole.fields or row["offer"] == "none":
            wire.check_encoding(entity, row["offer"] == "all")
    tag = re.compile(rb"[A-Z][1-9]" * 5)
    for boundary in wire.check_boundaries(whole, raw):
        assert bool(tag.match(boundary)) == (row["boundary"] == "1"), f"boundary {boundary}"
    check_words(whole, row, wanted)
    if mime:
        check_parts(whole, row, wanted)
    return whole.field("message-id")


def check_words(whole, row, wanted):
    letters = {"None": b"QB", "Quoted Printable": b"Q", "Base 64": b"B"}[row["header"]]
    for name, text in (("subject", wanted.subject), ("from", wanted.sender[0]), ("to", wanted.to[0])):
        value = whole.field(name).encode()
        found = wire.ENCODED_WORD.findall(value)
        assert all(letter in letters for _, letter in found), f"{name} is not encoded as {row['header']}"
        used = {charset.decode() for charset, _ in found}
        assert used <= {wanted.header_charset_of(text)}, f"{name} is in {used} and not in {wanted.header_charset_of(text)}"
        assert all(len(word) <= 75 for word in value.split() if word.startswith(b"=?")), f"a word of {name} is too long"


def check_parts(whole, row, wanted):
    leaves = [entity for entity in whole.walk() if not entity.children]
    texts = [entity for entity in leaves if not entity.field("content-disposition")]
    assert [(text.type.split(";")[0], text.charset()) for text in texts] == [
        (body.type, body.charset) for body in wanted.bodies], f"bodies are {[text.type for text in texts]}"
    chosen = row["body"].partition("/")[0]
    for text, body in zip(texts, wanted.bodies):
        # Octets that the set makes of the text are not known here: three for a character is the most.
        octets = body.text.replace("\n", "\r\n").encode("utf-8")
        fits = wire.travels(octets, row["offer"] == "all", 900) and not (row.width and b" From " in octets)
        check_choice(text, chosen, fits)
    attached = [leaf for leaf in leaves if (leaf.field("content-disposition") or "").startswith("attachment")]
    for leaf, content in zip(attached, row.attachments.values()):
        check_choice(leaf, row["attachment"], wire.travels(content, row["offer"] == "all"))
        check_set(leaf, content)


def check_set(entity, content):
    """A text that is attached says what it is written in, and that is true."""
    if entity.type.startswith("text/"):
        content.decode({"utf-8": "utf-8"}[entity.charset()])
    else:
        assert entity.charset() is None, f"a set for {entity.type}"


def check_choice(entity, chosen, fits):
    """The encoding that was asked for; "None" gives way where the content cannot travel as it is."""
    if chosen != "None":
        assert entity.encoding == {"Quoted Printable": "quoted-printable", "Base 64": "base64"}[chosen], \
            f"{entity.encoding} instead of {chosen}"
    elif fits:
        assert entity.encoding in ("7bit", "8bit"), f"{entity.encoding} without need"


class Reading:
    """Holds what one reader found against what was composed."""

    def __init__(self, reader):
        self.reader = reader
        self.lacks = {name.lower() for name in CASES["readers"][reader]["lacks"]}
        self.bugs = CASES["readers"][reader]["bugs"]
        self.findings = Findings()
        self.counts = collections.Counter()

    def message(self, read, row, person, raw):
        self.counts["messages"] += 1
        wanted = expected.Expected(row, person)
        whole = wire.Entity(raw)
        if read.get("defects"):
            self.findings.add("a defect", row, read["defects"])
        self.headers(read, row, wanted, whole)
        parts = read.get("parts") or []
        texts = [part for part in parts if not part["disposition"] and part["type"].startswith("text/")]
        files = [part for part in parts if part not in texts]
        if row["format"] == "Plain":
            self.plain(texts, row, wanted)
            return
        pictures = [part for part in files if part["disposition"] == "inline"]
        self.equal("pictures", [(part["type"], part["file_name"], part["sha256"]) for part in pictures], wanted.pictures, row)
        attached = {part["file_name"]: part["sha256"] for part in files if part["disposition"] == "attachment"}
        self.counts["attachments"] += len(attached)
        self.equal("attachments", attached, {**dict(wanted.attachments), **self.misread(attached, row)}, row)
        self.equal("bodies", [text["type"] for text in texts], [body.type for body in wanted.bodies], row)
        for part, body in zip(texts, wanted.bodies):
            if pictures and body.type == "text/html":
                for reference in ("pic%20ture.png", "pic ture.png"):
                    body.text = body.text.replace(reference, "cid:" + pictures[0]["content_id"])
            self.body(part, body, row, wanted)

    def headers(self, read, row, wanted, whole):
        for name, value in (("subject", [wanted.subject]), ("from", wanted.sender), ("to", wanted.to)):
            raw = whole.field(name)
            unknown = {charset.decode().lower() for charset, _ in wire.ENCODED_WORD.findall(raw.encode())} & self.lacks
            unknown = unknown or self.stumbles(raw)
            found = read.get(name)
            found = [found] if name == "subject" else found
            if unknown:
                text = raw if name == "subject" else getaddresses([raw])[0][0]
                found = [charsets.decode_words(text), *found[1:]]
            self.counts["headers by other codecs" if unknown else "headers"] += 1
            self.equal(name, [wanted.normal(found[0] or ""), *found[1:]], [wanted.normal(value[0]), *value[1:]], row)

    def misread(self, attached, row):
        """The files that the reader is known to read wrongly, as it did."""
        files = {}
        for bug, spoils in self.bugs.items():
            if spoils.get("file") in attached and row["attachment"] in spoils["attachment"]:
                self.counts[f"met {bug}"] += 1
                files[spoils["file"]] = attached[spoils["file"]]
        return files

    def stumbles(self, raw):
        """Whether a header holds what the reader is known to read wrongly."""
        for bug, spoils in self.bugs.items():
            if "header" in spoils and re.search(spoils["header"], raw):
                self.counts[f"met {bug}"] += 1
                return True
        return False

    def body(self, part, body, row, wanted):
        unknown = body.charset.lower() in self.lacks
        text = expected.text_of(part) if unknown else part["text"]
        self.counts["bodies by other codecs" if unknown else "bodies"] += 1
        if text is None or not wanted.same(body, text):
            shown = difference(expected.even(text or ""), expected.even(body.text))
            self.differs(body.type, row, f"in {body.charset}: {shown}")
        elif row.width:
            self.equal("a line too wide", expected.too_wide(wanted.plain(body, text), row.width), None, row)

    def plain(self, texts, row, wanted):
        """Without MIME there is no charset to tell a reader; it hands on octets."""
        octets, files = expected.without_uuencoded(expected.octets_of(texts[0]))
        body = wanted.bodies[0]
        text = charsets.decode(octets, body.charset)
        self.counts["bodies without MIME"] += 1
        self.counts["attachments"] += len(files)
        if not wanted.same(body, text):
            self.differs("plain text", row, difference(text, body.text))
        found = sorted((name.decode("ascii"), digest) for name, digest in files)
        standing_in = sorted((expected.plain_name(name), digest) for name, digest in wanted.attachments)
        self.equal("uuencoded", found, standing_in, row)

    def equal(self, what, found, wanted, row):
        if found == wanted:
            return
        if isinstance(wanted, dict):
            found, wanted = ({key: value for key, value in one.items() if other.get(key) != value}
                             for one, other in ((found, wanted), (wanted, found)))
        self.differs(what, row, f"{str(found)[:400]}\n   not {str(wanted)[:400]}")

    def differs(self, what, row, detail):
        self.findings.add(f"{self.reader}: {what}", row, detail)


def difference(found, wanted):
    at = next((i for i, (a, b) in enumerate(zip(found, wanted)) if a != b), min(len(found), len(wanted)))
    return f"{found[max(0, at - 30):at + 50]!r}\n   not {wanted[max(0, at - 30):at + 50]!r}"


class Readers(Case):
    def test_every_message_reads_as_composed(self):
        rows = table(THIN)
        if not THIN:
            met = set().union(*(pairs_of(row.values, list(DIMENSIONS)) for row in rows))
            self.assertEqual(met, set(all_pairs(DIMENSIONS)), "two values never meet")
        by = readers.readers(left_out)
        started = time.monotonic()
        messages = self.composed(rows)
        wanted = len(rows) * len(CASES["people"])
        self.assertEqual(len(messages), wanted)
        self.assertGreaterEqual(wanted, CASES["at_least_thin" if THIN else "at_least"])
        composed = time.monotonic()
        faults = self.on_the_wire(messages)
        with ThreadPoolExecutor() as pool:
            files = [file for file, *_ in messages]
            found = {name: pool.submit(lambda read=read: list(read(files))) for name, read in by.items()}
            readings = {name: (Reading(name), read.result()) for name, read in found.items()}
        for name, (reading, read) in readings.items():
            self.assertEqual([row["file"] for row in read], files, name)
            for row, (file, *made) in zip(read, messages):
                reading.message(row, *made, Path(file).read_bytes())
            counts = ", ".join(f"{count} {what}" for what, count in reading.counts.items())
            print(f"{name} read and compared {counts}")
            self.assertEqual(reading.counts["messages"], wanted)
            for charset, reason in CASES["readers"][name]["lacks"].items():
                print(f"  {charset} by another decoder: {reason}")
            for bug, spoils in reading.bugs.items():
                print(f"  {bug}: {spoils['reason']}")
                self.assertTrue(THIN or reading.counts[f"met {bug}"], f"{bug} of {name} is not met")
        print(f"{wanted} messages of {len(rows)} settings, composed in {composed - started:.1f} s, "
              f"read in {time.monotonic() - composed:.1f} s")
        faults += "\n".join(str(reading.findings) for reading, _ in readings.values())
        self.assertEqual(faults.strip(), "")

    def composed(self, rows):
        """By two at a time, each with a profile of its own and its share of the character sets."""
        shares = [[row for row in rows if DIMENSIONS["charset"].index(row["charset"]) % 2 == share] for share in range(2)]
        with ThreadPoolExecutor() as pool:
            return [message for messages in pool.map(self.compose_share, shares) for message in messages]

    def compose_share(self, rows):
        desk = Case()
        desk.setUp()
        self.addCleanup(desk.doCleanups)
        composer = Composer(desk)
        messages = []
        for row in rows:
            made, subjects_not_encoded = composer.compose(row)
            beyond = sum(not charsets.holds(row.sample, expected.Expected(row, person).subject) for person in row.people)
            self.assertEqual(subjects_not_encoded, beyond, f"subjects told as not encoded, with {row.values}")
            messages += made
        return messages

    def on_the_wire(self, messages):
        findings = Findings()
        identifiers = set()
        for file, row, person in messages:
            try:
                identifiers.add(check_wire(file, row, person))
            except AssertionError as fault:
                findings.add(re.sub(r'[\d"].*|:.*', "", str(fault)), row, fault)
        self.assertTrue(findings.kinds or len(identifiers) == len(messages), "a Message-ID came twice")
        return f"{findings}\n"


if __name__ == "__main__":
    unittest.main()
