#!/usr/bin/env python3
"""Holds the folders of src/ to their order: what each may include, what its CMake target names, and where Qt may stand.

    tests/house/test_house.py            the test
    tests/house/test_house.py --picture  prints the picture that ARCHITECTURE.md shows
    tests/house/test_house.py --write    puts it there
"""
import os
import re
import sys
import unittest
from pathlib import Path

TOP = Path(os.environ.get("QUILLCAST_HOUSE", Path(__file__).resolve().parents[2]))

# The order: a folder may include those above it that its row names. "platform" is everybody's; "*" is all but a face.
ORDER = {
    "platform": "",
    "net": "",
    "net/dns": "net",
    "charset": "",
    "html": "",
    "mime": "charset",
    "profile": "",
    "smtp": "",
    "smtp/sasl": "smtp",
    "smtp/client": "smtp smtp/sasl net",
    "smtp/mailbox": "smtp smtp/sasl net",
    "recipients": "",
    "recipients/import": "recipients profile mime charset",
    "recipients/export": "recipients charset",
    "recipients/edit": "recipients smtp",
    "document": "recipients profile mime html charset",
    "message": "document profile mime html charset recipients smtp net",
    "run/pace": "",
    "account": "run/pace message document profile recipients net smtp smtp/client smtp/mailbox",
    "account/import": "account profile",
    "domain": "profile charset net net/dns",
    "domain/connection": "account smtp smtp/sasl smtp/client net",
    "domain/sender": "domain account profile net net/dns",
    "mail_file": "document profile mime html charset",
    "run/journal": "recipients smtp",
    "run/frozen": "run/journal run/pace account message document recipients",
    "run": "run/frozen run/journal run/pace account message document domain/sender mail_file profile recipients recipients/edit"
    " recipients/export html smtp smtp/client",
    "support": "run account message document mail_file profile net smtp",
    "help": "html profile recipients",
    "update": "profile net",
    "cli": "*",
    "desktop/widgets": "",
    "desktop/document": "desktop/widgets document profile",
    "desktop/account": "desktop/widgets account account/import run/pace profile smtp",
    "desktop/recipients": "desktop/widgets recipients recipients/import recipients/export recipients/edit profile",
    "desktop/run": "desktop/widgets desktop/document desktop/account run run/frozen run/journal run/pace account message document profile",
    "desktop/mail_file": "desktop/widgets mail_file profile",
    "desktop/domain": "desktop/widgets domain domain/connection domain/sender net profile",
    "desktop/support": "desktop/widgets support run account profile smtp",
    "desktop/shell": "* desktop/widgets desktop/document desktop/account desktop/recipients desktop/run desktop/mail_file"
    " desktop/domain desktop/support",
    "desktop": "profile desktop/widgets desktop/mail_file desktop/shell",
}
FACES = ("cli", "desktop")


def allowed(folder):
    """Every folder that the order lets this one include."""
    named = set(ORDER[folder].split()) | {"platform"}
    if "*" in named:
        named |= {f for f in ORDER if f.split("/")[0] not in FACES}
    return named - {"*", folder}


def folder_of(path):
    return path.parent.relative_to(TOP / "src").as_posix()


def sources():
    return sorted(p for p in (TOP / "src").rglob("*") if p.suffix in (".cpp", ".h", ".inc"))


def includes():
    """(folder, included folder) -> the includes that make this arrow."""
    arrows = {}
    for file in sources():
        for name in re.findall(r'^\s*#\s*include ["<]((?:[\w.]+/)*[\w.]+\.(?:h|inc))[">]', file.read_text(), re.MULTILINE):
            arrow = (folder_of(file), Path(name).parent.as_posix())
            ours = arrow[1].split("/")[0] in {folder.split("/")[0] for folder in ORDER} or ".." in name
            if ours and arrow[0] != arrow[1]:
                arrows.setdefault(arrow, []).append(f'{file.relative_to(TOP)}: #include "{name}"')
    return arrows


def targets():
    """Folder -> the folders that its CMake target names."""
    named = {}
    for file in (TOP / "src").rglob("CMakeLists.txt"):
        words = re.findall(r"\bquillcast_\w+", re.sub(r"#.*", "", file.read_text()))
        folders = {target.removeprefix("quillcast_") for target in words}
        by_target = {folder.replace("/", "_"): folder for folder in ORDER}
        folder = folder_of(file)
        if folder != ".":
            named[folder] = {by_target[name] for name in folders if name in by_target} - {folder}
    return named


def picture():
    """Each folder that stands, with those that it includes; arrows point up the page."""
    arrows = includes()
    lines = []
    for folder in ORDER:
        used = [to for to in ORDER if (folder, to) in arrows and to != "platform"]
        if (TOP / "src" / folder).is_dir():
            lines.append(f"{folder:<20} -> {', '.join(used)}" if used else folder)
    return "\n".join(lines)


def write_picture():
    page = TOP / "ARCHITECTURE.md"
    text = re.sub(r"```\nplatform\nnet\b.*?\n```", lambda _: f"```\n{picture()}\n```", page.read_text(), flags=re.DOTALL)
    page.write_text(text)


class House(unittest.TestCase):
    maxDiff = None

    def none(self, found, what):
        if found:
            self.fail(f"{what}:\n  " + "\n  ".join(map(str, found[:20])) + f"\n{len(found)} in all")

    def test_every_folder_has_its_place(self):
        self.assertEqual(sorted({folder_of(p) for p in sources()} - set(ORDER)), [])
        places = list(ORDER)
        for folder in ORDER:  # the order itself has no cycle: whom a row names stands above it
            below = [to for to in allowed(folder) if places.index(to) > places.index(folder)]
            self.assertEqual(below, [], folder)

    def test_no_include_points_up(self):
        wrong = [line for (folder, to), lines in includes().items() for line in lines
                 if to not in allowed(folder)]
        self.none(wrong, "includes against the order")

    def test_no_permission_is_for_nobody(self):
        arrows = includes()
        self.none([f"{folder}: {to}" for folder, row in ORDER.items() for to in row.split()
                   if "*" not in row and (folder, to) not in arrows], "allowed, and not included")

    def test_each_target_names_what_its_files_include(self):
        named, arrows = targets(), includes()
        unnamed = [line for (folder, to), lines in arrows.items() for line in lines if to not in named.get(folder, ())]
        self.none(unnamed, "folders that the target does not name")
        unused = [(folder, to) for folder, tos in sorted(named.items()) for to in sorted(tos)
                  if (folder, to) not in arrows]
        self.none(unused, "named, and not included")

    def test_qt_stands_in_the_desktop_alone(self):
        outside = [p for p in [*sources(), *(TOP / "src").rglob("CMakeLists.txt")]
                   if not folder_of(p).startswith("desktop")]
        with_qt = [p.relative_to(TOP).as_posix() for p in outside
                   if re.search(r"#\s*include [<\"]Qt?[A-Z]|\bQt6::|\bQ_OBJECT\b", p.read_text())]
        self.none(with_qt, "Qt")

    def test_each_folder_is_its_namespace(self):
        wrong = []
        for file in sources():
            expected = folder_of(file).split("/")[0]
            for name in re.findall(r"\bnamespace quillcast(?:::| *\{\s*namespace )(\w+)", file.read_text()):
                if name != expected:
                    wrong.append(f"{file.relative_to(TOP)}: {name}")
        self.assertEqual(wrong, [])

    def test_what_the_pages_name_is_there(self):
        """Every path, and every bare file name, that stands in backticks."""
        files = [p.relative_to(TOP).as_posix() for p in TOP.rglob("*.*") if "build" not in p.parts and ".git" not in p.parts]
        known = {part for f in files for part in (f, f.removeprefix("src/"), f.rsplit("/", 1)[-1])}
        known |= {name.rsplit(".", 1)[0] for name in known if "/" in name}
        known |= {folder for f in files for folder in map(str, Path(f).parents)}
        known |= {folder.removeprefix("src/") for folder in known}
        gone = []
        for page in ("ARCHITECTURE.md", "CONTRIBUTING.md"):
            for name in re.findall(r"`((?:[\w.]+/)*[\w.]+(?:\.(?:cpp|h|py|json|tsv)|(?<=/)[\w.]+))`", (TOP / page).read_text()):
                if name not in known and not name.isupper():
                    gone.append(f"{page}: {name}")
        self.none(gone, "no such file")

    def test_what_is_passed_over_says_so(self):
        calls = "chmod|fchmod|fcntl|flock|fsync|ftruncate|fwrite|rename|send|setsockopt|unlink|write"
        silent = re.compile(rf"^ *(if \(.*\) )?(::|std::)({calls})\(.*\);|maybe_unused\]\] const|\(void\)|"
                            r"error_code (ignored|unused)|\.ValueOr\(|\bcatch \(\.\.\.\)", re.MULTILINE)
        wrong = [f"{file.relative_to(TOP)}: {found.group().strip()}" for file in sources()
                 for found in silent.finditer(file.read_text())]
        self.none(wrong, "failures passed over without IgnoreErrors")

    def test_the_picture_is_shown(self):
        self.assertIn(f"```\n{picture()}\n```", (TOP / "ARCHITECTURE.md").read_text(),
                      "tests/house/test_house.py --write puts it there")


if __name__ == "__main__":
    if "--picture" in sys.argv:
        print(picture())
    elif "--write" in sys.argv:
        write_picture()
    else:
        unittest.main()
