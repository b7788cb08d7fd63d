"""What a reader has to find in the message that a row makes for a person."""
import base64
import binascii
import hashlib
import re
import unicodedata
from dataclasses import dataclass

from charsets import decode, holds, unreferenced
from composing import PNG, merged

BARE_WIDTH = 110  # where lines are cut that cannot be encoded, as without MIME
MADE_WIDTH = 76  # where the lines of a text are broken that is made from HTML


def sha256(octets):
    return hashlib.sha256(octets).hexdigest()


def header_text(text):
    return re.sub(r"[\x00-\x1f\x7f]", " ", text).strip()


def columns(text):
    return sum(0 if unicodedata.category(c) in ("Mn", "Me", "Cf") else 2 if is_wide(c) else 1 for c in text)


def is_wide(character):
    return unicodedata.east_asian_width(character) in "WF"


def even(text):
    return " ".join(text.split())


def follows(found, wanted, width):
    """Whether a text is another one with its lines broken elsewhere: at blanks, and, in lines of a width, between wide
    characters and inside words that are wider."""
    at = 0
    for word in wanted.split():
        breaks = width is not None and (any(map(is_wide, word)) or columns(word) > width)
        blanks = len(found[at:]) - len(found[at:].lstrip()) if found[at:at + 1].isspace() else 0
        if at > 0 and blanks == 0:
            return False
        at += blanks
        for character in word:
            if breaks and found[at:at + 1] == "\n":
                at += 1
            if found[at:at + 1] != character:
                return False
            at += 1
    return not found[at:].strip()


def plain_name(name):
    """A file name where only ASCII can be written, and not much of it."""
    name = re.sub("[^\\x00-\\x7f]", "_", name)
    stem, extension = name[:-4], name[-4:]
    return name if len(name) <= 50 else stem[:50 - len(extension)] + extension


@dataclass
class Body:
    type: str
    text: str
    charset: str
    loose: bool  # its lines may be broken elsewhere
    width: int = None  # words wider than this may be broken too


class Expected:
    def __init__(self, row, person):
        self.row = row
        self.subject = header_text(merged(row.subject, person))
        self.sender = (header_text(row.sender), "ada@sender.example", 1)
        name = person["FirstName"] if row["to_field"] == "First Name" else ""
        self.to = (header_text(name), person["Email"], 1)
        self.pictures = [("image/png", "pic ture.png", sha256(PNG))] if row.is_html and row["pictures"] == "1" else []
        self.attachments = sorted((name, sha256(content)) for name, content in row.attachments.items())
        self.bodies = list(self._bodies(person))

    def charset_of(self, text):
        return self.row.sample["mime"] if holds(self.row.sample, text) else "utf-8"

    def header_charset_of(self, text):
        return self.row.sample.get("header", self.row.sample["mime"]) if holds(self.row.sample, text) else "utf-8"

    def _bodies(self, person):
        row = self.row
        wrapped = row.width is not None
        if not row.is_html or row["text_part"] != "0":
            text = merged(row.text(), person)
            made = row.is_html and row["text_part"] == "1"  # from the HTML, which has its own white space
            cut = row["format"] == "Plain" and max(map(len, text.encode("utf-8").split(b"\n"))) > 900
            width = row.width or (MADE_WIDTH if made else BARE_WIDTH if cut else None)
            yield Body("text/plain", text, self.charset_of(text), wrapped or made or cut, width)
        if row.is_html:
            yield Body("text/html", merged(row.html(), person), row.sample["mime"], wrapped)

    def plain(self, wanted, text):
        """A reader's text of a body as far as it may differ from what was composed."""
        text = text.replace("\r\n", "\n")
        return self.normal(unreferenced(self.row.sample, text) if wanted.type == "text/html" else text)

    def same(self, wanted, text):
        found, text = self.plain(wanted, text), self.normal(wanted.text)
        return follows(found, text, wanted.width) if wanted.loose else found.rstrip("\n") == text.rstrip("\n")

    def normal(self, text):
        """Letters with marks in one form, for the sets that have them in another."""
        return unicodedata.normalize("NFC", text) if "compose" in self.row.sample else text


def too_wide(text, width):
    """The first line that is wider than it should be and has a blank to break it at; HTML apart that is inside a tag."""
    for line in text.split("\n"):
        line = line.rstrip()
        if columns(line) > width and re.search(r"\S\s+\S", line) and not re.search("[<\u200d]", line):
            return line
    return None


def without_uuencoded(octets):
    """The text of a message without MIME, and its attachments."""
    found = []
    lines = octets.replace(b"\r\n", b"\n").split(b"\n")
    text = []
    at = 0
    while at < len(lines):
        begin = re.match(rb"begin [0-7]{3} (.+)$", lines[at])
        if not begin:
            text.append(lines[at])
            at += 1
            continue
        end = lines.index(b"end", at)
        content = b"".join(map(binascii.a2b_uu, lines[at + 1:end]))
        found.append((begin.group(1), sha256(content)))
        at = end + 1
    return b"\n".join(text), found


def octets_of(part):
    return base64.b64decode(part["octets"])


def text_of(part):
    return decode(octets_of(part), part["charset"])
