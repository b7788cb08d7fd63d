"""The character sets by decoders of Python's own, which neither the program nor the other readers use."""
import codecs
import re
import unicodedata
from email.header import decode_header

from composing import CASES

CODECS = {row["mime"].lower(): row["codec"] for row in CASES["charsets"].values()}


def _user_defined(name):
    if name != "x_user_defined":
        return None
    def encode(text, errors="strict"):
        return bytes(ord(c) - 0xF700 if 0xF780 <= ord(c) <= 0xF7FF else c.encode("ascii")[0] for c in text), len(text)

    def decode(octets, errors="strict"):
        return "".join(chr(b + 0xF700) if b > 127 else chr(b) for b in bytes(octets)), len(octets)
    return codecs.CodecInfo(encode, decode, name="x-user-defined")


codecs.register(_user_defined)


def decode(octets, charset):
    return octets.decode(CODECS.get((charset or "us-ascii").lower(), "utf-8"))


def holds(sample, text):
    """Whether the set has every character, where it composes them from letter and mark too."""
    def has(character):
        if "without" in sample and re.match(sample["without"], character):
            return False
        if _encodes(sample["codec"], character):
            return True
        return "compose" in sample and any(_encodes(sample["codec"], form) for form in _composed(character))
    return all(map(has, set(text)))


def _encodes(codec, text):
    try:
        text.encode(codec)
        return True
    except UnicodeEncodeError:
        return False


def _composed(character):
    letter, *marks = unicodedata.normalize("NFD", character)
    for mark in marks:
        rest = "".join(other for other in marks if other != mark)
        yield unicodedata.normalize("NFC", letter + rest) + mark
        yield letter + rest + mark


def unreferenced(sample, text):
    """Numeric references undone where the set lacks the character. Any other stays, and is then a difference."""
    def character(found):
        character = chr(int(found.group(1)))
        return found.group() if holds(sample, character) else character
    return re.sub(r"&#(\d+);", character, text)


def decode_words(value):
    """A header value read by the codecs above."""
    return "".join(piece if isinstance(piece, str) else decode(piece, charset) for piece, charset in decode_header(value))
