"""The help: every page that anything names is there and whole, and every command has its texts, here and in its manual
page."""
import json
import re
import shutil
import subprocess
import unittest
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote

from quillcast import Case, left_out

TOP = Path(__file__).parents[2]
PAGES = TOP / "data" / "help"


class Page(HTMLParser):
    """What a page consists of; elements that are not closed in their order are told by `fault`."""
    ALONE = {"meta", "br", "img", "hr"}

    def __init__(self, file):
        super().__init__()
        self.open, self.links, self.places, self.pictures, self.text, self.fault = [], [], set(), [], {}, ""
        self.feed(file.read_text(encoding="utf-8"))
        self.close()
        self.fault = self.fault or " ".join(self.open)

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        if tag not in self.ALONE:
            self.open.append(tag)
        if tag == "a" and "href" in attrs:
            self.links.append(attrs["href"])
        self.places |= {attrs[name] for name in ("id", "name") if name in attrs}
        if tag == "img":
            self.pictures.append(attrs)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.fault = self.fault or f"</{tag}> at {self.getpos()}"

    def handle_data(self, data):
        for tag in self.open:
            self.text[tag] = self.text.get(tag, "") + data


class Help(Case):
    @classmethod
    def setUpClass(cls):
        cls.pages = {file.name: Page(file) for file in sorted(PAGES.glob("*.htm"))}

    def test_each_page_is_whole_and_can_be_reached(self):
        reached, waiting = set(), ["Welcome.htm"]
        while waiting:
            topic = waiting.pop()
            if topic not in reached:
                reached.add(topic)
                waiting += [unquote(link.split("#")[0]) for link in self.pages[topic].links if not link.startswith("#")]
        self.assertEqual(reached, set(self.pages))
        for topic, page in self.pages.items():
            with self.subTest(page=topic):
                self.assertEqual(page.fault, "")
                self.assertTrue(page.text["title"].strip() and page.text["h2"].strip())
                self.assertTrue(topic == "Welcome.htm" or "Welcome.htm" in page.links)
                for link in page.links:
                    name, _, place = unquote(link).partition("#")
                    self.assertTrue(not place or place in self.pages[name or topic].places, link)
                for picture in page.pictures:
                    self.assertEqual((PAGES / picture["src"]).read_bytes()[1:4], b"PNG", picture)
                    self.assertTrue(picture["alt"].strip(), picture)

    def test_whatever_names_a_page_names_one_that_is_there(self):
        named = {}
        for file in [*(TOP / "src").rglob("*.cpp"), *(TOP / "src").rglob("*.h")]:
            for topic in re.findall(r'"([A-Z][A-Za-z]+(?: [A-Z][A-Za-z]+)*(?: \d)?\.htm)"', file.read_text()):
                named.setdefault(topic, file)
        not_ours = {"Preview.htm", "Autosave.htm", "Recovered.htm"}  # the message itself, by its name
        self.assertEqual({topic: file for topic, file in named.items() if topic not in {*self.pages, *not_ours}}, {})
        self.assertGreater(len(named), 18)

    def test_the_command_shows_lists_and_searches_them(self):
        listed = [json.loads(line) for line in self.ok("--json", "help").splitlines()]
        self.assertEqual((listed[0]["topic"], {row["topic"] for row in listed}), ("Welcome.htm", set(self.pages)))
        for row in listed:
            shown = json.loads(self.ok("--json", "help", *row["topic"].removesuffix(".htm").split()))
            words = re.findall(r"\w+", self.pages[row["topic"]].text["body"])
            self.assertGreater(len(re.findall(r"\w+", shown["text"])), 0.9 * len(words), row["topic"])
        for words, code, piece in (("group sort", 0, "Usage: quillcast group sort"), ("extra", 0, "Extra Tools 6"),
                                   ("send", 0, "Usage: quillcast send"), ("sending", 0, "Preview and sending"),
                                   ("no such page", 66, "quillcast help lists the pages"), ("../secret", 66, "no page")):
            got, out, err = self.run_program("help", *words.split())
            self.assertEqual(got, code, words)
            self.assertIn(piece, out + err)
        for wrong, piece in ((("",), "TOPIC: names nothing"), (("extra", "--search", "tag"), "TOPIC excludes --search"),
                             (("--search", ""), "--search: names nothing"),
                             (("--tip", "--search", "tag"), "--search excludes --tip")):
            code, out, err = self.run_program("help", *wrong)
            self.assertEqual((code, out), (64, ""), wrong)
            self.assertIn(piece, err)
        tips = [json.loads(self.ok("--json", "help", "--tip")) for _ in range(31)]
        self.assertEqual(len({tip["tip"] for tip in tips}), 30)
        self.assertEqual(tips[30], tips[0], "behind the last comes the first")
        code, _, err = self.run_program("help", "--search", "zzz")
        self.assertEqual(code, 66, err)
        self.assertIn("Merge Tags", self.ok("help", "--search", "ZIP Eighteen"))

    def test_every_command_and_option_has_its_text_in_its_manual_page(self):
        """The texts are those of --help: a command or an option without one has an empty entry here."""
        folder = self.folder / "man"
        self.ok("help", "--man-pages", folder)
        commands = re.findall(r"^  (\w+) ", self.ok("--help").partition("\nSubcommands:\n")[2], re.M)
        self.assertEqual({page.name for page in folder.iterdir()}, {f"quillcast-{name}.1" for name in commands})

        def look(page, *command):
            text = self.ok(*command, "--help")
            about, _, below = text.partition("\nSubcommands:\n")
            lines = page.replace("\\-", "-").splitlines()
            name = " ".join(("quillcast", *command))
            self.assertTrue(lines[lines.index(f".SS {name}") + 3 if len(command) > 1 else 2].strip(" -"), name)
            own = page.replace("\\-", "-")
            own = own[own.index(f".SS {name}\n"):] if len(command) > 1 else own
            for option in re.findall(r"^  (?:-\w,)?(--[\w-]+)", about, re.M):
                if option != "--help":
                    entry = re.search(r"^\.TP\n.*\\fB" + option + r"\\fR.*\n(.+)", own, re.M)
                    self.assertTrue(entry and re.match(r"[A-Z0-9\"<]", entry[1]), f"{name} {option}: {entry and entry[0]}")
            for below_name in re.findall(r"^  (\w+)", below, re.M):
                look(page, *command, below_name)
        for name in commands:
            page = (folder / f"quillcast-{name}.1").read_text()
            look(page, name)
            names_of_code = set(re.findall(r"\b[A-Z][a-z]{2,}[A-Z]\w*", page)) - {"MergeFirstName"}
            self.assertFalse(names_of_code, "in what a person reads")

    def test_about_names_each_library_that_the_program_stands_on(self):
        told = json.loads(self.ok("--json", "about"))
        needed = re.findall(r"^\s*quillcast_require\(\w+ (\S+)", (TOP / "cmake" / "dependencies.cmake").read_text(), re.M)
        self.assertEqual(set(needed) - {library["package"] for library in told["libraries"]}, set())
        for library in told["libraries"]:
            self.assertTrue(re.match(r"\d", library["version"]) and library["licence"], library)
        self.assertIn("Tarnwick Quillcast Classic Edition 1.0", self.ok("about"))

    def test_manual_pages_are_what_man_reads(self):
        folder = self.folder / "man"
        self.ok("help", "--man-pages", folder)
        if not shutil.which("groff"):
            left_out("the manual pages in groff", "it is not installed")
            return
        for page in folder.iterdir():
            done = subprocess.run(["groff", "-man", "-ww", "-Tutf8", "-K", "utf8", page], capture_output=True, text=True,
                                  timeout=60)
            self.assertEqual((done.returncode, done.stderr), (0, ""), page.name)
            self.assertIn("quillcast", done.stdout)
        code, _, err = self.run_program("help", "--man-pages", "/proc/nowhere")
        self.assertNotEqual(code, 0, err)


if __name__ == "__main__":
    unittest.main()
