"""What a message must be as octets, whoever reads it: RFC 5322 2.1.1, RFC 2045 2.7-2.9 and 6.2, RFC 2046 5.1.1."""
import re

ENCODED_WORD = re.compile(rb"=\?([^?\s]+)\?([QB])\?[^?\s]*\?=")


class Entity:
    """A message or a part of one, cut at its boundaries and not decoded."""

    def __init__(self, raw):
        head, _, self.body = raw.partition(b"\r\n\r\n")
        head = head.removesuffix(b"\r\n")  # the empty line of a part without content belongs to the boundary
        self.head_lines = head.split(b"\r\n")
        self.fields = {}
        for line in re.sub(rb"\r\n(?=[ \t])", b"", head).split(b"\r\n"):
            name, _, value = line.partition(b":")
            self.fields.setdefault(name.decode().lower(), []).append(value.strip().decode())
        self.type = self.field("content-type") or "text/plain"
        self.encoding = (self.field("content-transfer-encoding") or "7bit").lower()
        boundary = re.search(r'boundary="([^"]+)"', self.type)
        self.boundary = boundary.group(1).encode() if boundary else None
        self.children = self.cut() if self.boundary else []

    def field(self, name):
        return self.fields.get(name, [None])[0]

    def cut(self):
        pieces = re.split(rb"(?:^|\r\n)--" + re.escape(self.boundary) + rb"(--)?[ \t]*(?:\r\n|\Z)", self.body)
        assert pieces[-2] == b"--" and pieces[-3::-2].count(b"--") == 0, "a multipart without its one end"
        assert not pieces[-1].strip(), "text behind the last boundary"
        return [Entity(piece) for piece in pieces[2:-1:2]]

    def walk(self):
        yield self
        for child in self.children:
            yield from child.walk()

    def charset(self):
        found = re.search(r'charset="?([^";\s]+)', self.type)
        return found.group(1) if found else None


def check_octets(raw):
    assert raw.count(b"\r\n") == raw.count(b"\n") == raw.count(b"\r"), "a line end is not CRLF"
    assert raw.endswith(b"\r\n"), "the last line has no end"
    longest = max(map(len, raw.split(b"\r\n")))
    assert longest <= 998, f"a line of {longest} octets"
    assert b"\0" not in raw, "a NUL"


def check_headers(entity):
    for line in entity.head_lines:
        assert line.isascii(), f"a header line is not ASCII: {line}"
        is_name = re.match(rb' (file)?name="', line)  # which cannot be folded
        assert len(line) <= 78 or is_name, f"a header line of {len(line)} octets: {line}"
        assert line.strip(), "a header line of blanks alone"
    for name in ("content-type", "content-transfer-encoding", "content-disposition", "content-id"):
        assert len(entity.fields.get(name, [])) <= 1, f"{name} twice"


def travels(content, eight_bit_taken, longest=998):
    """Whether octets can go as they are: whole lines, none of which a mailbox would quote."""
    lines = content.split(b"\r\n")
    odd = re.search(rb"[\r\n\0]", b"".join(lines))
    quoted = any(line.startswith(b"From ") for line in lines)
    return not odd and not quoted and max(map(len, lines)) <= longest and (eight_bit_taken or content.isascii())


def check_encoding(entity, eight_bit_taken):
    # A multipart says what is in it, so its own label has to be as wide as the widest of its parts.
    allowed = ("7bit", "8bit") if entity.children else ("7bit", "8bit", "quoted-printable", "base64")
    assert entity.encoding in allowed, f"{entity.encoding} of {entity.type}"
    assert entity.encoding != "8bit" or eight_bit_taken, "8bit to a server that does not take it"
    if entity.encoding != "8bit":
        assert entity.body.isascii(), f"octets above 127 in {entity.encoding} of {entity.type}"


def check_boundaries(entity, raw):
    boundaries = [part.boundary for part in entity.walk() if part.boundary]
    for boundary in boundaries:
        assert not any(other != boundary and other.startswith(boundary) for other in boundaries), "one begins another"
        own = next(part for part in entity.walk() if part.boundary == boundary)
        marks = re.findall(rb"(?:^|\r\n)--" + re.escape(boundary), raw)
        assert len(marks) == len(own.children) + 1, f"the boundary {boundary} stands {len(marks)} times"
    assert len(set(boundaries)) == len(boundaries), "a boundary is used twice"
    return boundaries
