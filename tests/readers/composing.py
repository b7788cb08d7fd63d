"""Has the program make every message of the table, and keeps beside each what it was composed of."""
import html
import json
import sqlite3
from dataclasses import dataclass, field
from pathlib import Path

from covering import covering_rows, single_rows

CASES = json.loads((Path(__file__).parent / "cases.json").read_text(encoding="utf-8"))
DIMENSIONS = {"charset": list(CASES["charsets"]), **CASES["dimensions"]}
TAGS = ["Email", "FirstName", "City", "Company"]  # in the order in which they are replaced
PNG = bytes.fromhex("89504e470d0a1a0a0000000d49484452000000010000000108060000001f15c4890000000d49444154789c6360000002"
                    "00000005000180c5a32d0000000049454e44ae426082")
REMOTE = "https://example.org/remote.png"
CONTENTS = {
    "crlf": b"one\r\ntwo  \r\n\r\n.three\r\n", "lf": b"one\ntwo\r three\n", "binary": bytes(range(256)) * 9, "empty": b"",
    "dots": b"\r\n.\r\n..\r\nFrom me\r\n", "long": b"x;" * 700 + b"\r\ny\r\n", "no_end": b"no line end at the end",
    "latin": b"caf\xe9\r\n",
}


def filled(text, sample):
    """The pattern of a text with a character set's own words in it."""
    for key in ("sample", "word", "name"):
        text = text.replace("{" + key + "}", sample[key])
    return text.replace("{long}", "x" * 1100)


def merged(text, person):
    for tag in TAGS:
        text = text.replace(f"$*Merge{tag}*$", person.get(tag, ""))
    return text


@dataclass
class Row:
    values: dict
    subject: str = ""
    sender: str = ""
    lines: list = field(default_factory=list)
    attachments: dict = field(default_factory=dict)
    people: list = field(default_factory=list)

    def __getitem__(self, name):
        return self.values[name]

    @property
    def sample(self):
        return CASES["charsets"][self["charset"]]

    @property
    def is_html(self):
        return self["format"] == "HTML"

    @property
    def width(self):
        """Of the body's lines; none when they are not wrapped, as only bodies without an encoding are."""
        encoding, _, width = self["body"].partition("/")
        return int(width) if width and encoding == "None" else None

    def html(self):
        paragraphs = "".join(f"<p>\n{html.escape(line, quote=False)}</p>\n" for line in self.lines)
        pictures = f"<img src=\"pic%20ture.png\" alt=\"\"><img src='pic ture.png' alt=''><img src=\"{REMOTE}\" alt=\"\">"
        return f"<html><body>\n{paragraphs}{pictures if self['pictures'] == '1' else ''}\n</body></html>\n"

    def text(self):
        return "\n".join(self.lines) + "\n"


def table(thin):
    """Each row once. A thin table keeps the single values and every eighth of the rows that cover the pairs."""
    rows = list(single_rows(DIMENSIONS, CASES["defaults"]))
    rows += list(covering_rows(DIMENSIONS))[::8 if thin else 1]
    return [Row(dict(row)) for row in dict.fromkeys(tuple(row.items()) for row in rows)]


class Composer:
    def __init__(self, case):
        self.case = case
        self.folder = case.folder
        self.write("pic ture.png", PNG)
        self.boxes = {"all": case.mailbox(name="all"), "none": case.mailbox("--offer", "none", name="none")}
        self.taken = dict.fromkeys(self.boxes, 0)
        self.groups = {}

    def write(self, name, content):
        return self.case.write(name, content)

    def group(self, row):
        """The people, with values in the letters of the row's character set."""
        name = row.sample["mime"]
        if name not in self.groups:
            people = [{"Email": f"user{i}@example.org", **{key: filled(value, row.sample) for key, value in person.items()}}
                      for i, person in enumerate(CASES["people"])]
            lines = [":".join(person[tag] for tag in TAGS) for person in people]
            self.case.ok("group", "new", name)
            self.case.ok("import", self.write("people.txt", "\n".join(lines) + "\n"), "--group", name, "--delimiter", "Colon",
                         "--opt-in", "--encoding", "UTF-8", "--map", "Email Address=1,First Name=2,City=3,Company=4")
            self.groups[name] = people
        return self.groups[name]

    def settings(self, row):
        encoding, _, width = row["body"].partition("/")
        self.case.account(self.boxes[row["offer"]].port, f"Name={row.sender}", f"CharSet={row['charset']}",
                          f"HeaderEncoding={row['header']}", f"Encoding={encoding}", f"AutoWrap={1 if width else 0}",
                          f"Wrap={width or 76}", f"AttachmentEncoding={row['attachment']}", f"Boundary={row['boundary']}",
                          f"TextPart={0 if row['text_part'] == '0' else 1}", f"ToField={row['to_field']}")
        with sqlite3.connect(self.case.profile / "settings.db") as settings:
            settings.execute("INSERT OR REPLACE INTO Settings VALUES ('Quillcast Classic', 'Advanced', 'Encoding', ?)",
                             ["Plain" if row["format"] == "Plain" else "MIME"])

    def compose(self, row):
        """(file, row, person) of each message that the row makes."""
        row.subject, row.sender = filled(CASES["subject"], row.sample), filled(CASES["sender"], row.sample)
        row.lines = [filled(line, row.sample) for line in CASES["lines"]]
        row.lines[-1:-1] = [filled(line, row.sample) for line in CASES["extra"][row["extra"]]]
        if row["attachments"] == "1":
            row.attachments = {filled(name, row.sample): CONTENTS[kind] for name, kind in CASES["file_names"].items()}
        row.people = self.group(row)
        self.settings(row)
        arguments = ["--group", row.sample["mime"], "--subject", row.subject, "--format", "HTML" if row.is_html else "Text",
                     "--priority", "High", "--read-receipt"]
        if row.is_html:
            arguments += ["--body", self.write("composed.html", row.html())]
            if row["text_part"] == "own":
                arguments += ["--text", self.write("composed.own.txt", row.text())]
        else:
            arguments += ["--body", self.write("composed.txt", row.text())]
        for name, content in row.attachments.items():
            arguments += ["--attach", self.write(name, content)]
        lines, code, err = self.case.send(*arguments)
        self.case.assertEqual(code, 0, f"{row.values}\n{lines}\n{err}")
        report = (self.case.profile / "data" / "History" / (lines[-1]["history"] + ".txt")).read_text(encoding="utf-8")
        return self.arrived(row), report.count("Error encoding subject.")

    def arrived(self, row):
        box = self.boxes[row["offer"]]
        rows = box.index()[self.taken[row["offer"]]:]
        self.taken[row["offer"]] += len(rows)
        self.case.assertEqual([entry["to"][0] for entry in rows], [person["Email"] for person in row.people])
        return [(str(Path(box.store) / entry["file"]), row, person) for entry, person in zip(rows, row.people)]
