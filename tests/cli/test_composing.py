"""What letters begin with: pieces, the five designs, one's own templates, the signature."""
import email
import email.policy
import json
import re
import sys
import unittest
from pathlib import Path

from quillcast import PROGRAM, Case

try:
    import html5lib
except ImportError:  # the system's package, where another Python runs the tests
    sys.path.append("/usr/lib/python3/dist-packages")
    try:
        import html5lib
    except ImportError:
        html5lib = None

DESIGNS = ("Government", "Health", "Legal", "Sports", "Travel")
FILLED = ("--company", "Smith & Sons", "--web", "www.bay.example", "--unsubscribe", "leave@bay.example",
          "--unsubscribe-subject", "Leave")
LINKS = {"https://www.bay.example", "mailto:leave@bay.example?subject=Leave"}
TAGS = {"Email", "Title", "FirstName", "LastName"}
PROGRAM_FOLDER = Path(PROGRAM).resolve().parents[1] / "share" / "quillcast"
ENOUGH = 4.5  # WCAG 2.2, 1.4.3


def luminance(colour):
    parts = [int(colour[i:i + 2], 16) / 255 for i in (1, 3, 5)]
    red, green, blue = (c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4 for c in parts)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(one, other):
    light, dark = sorted((luminance(one), luminance(other)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


def declared(style):
    return {name.strip(): value.replace("!important", "").strip()
            for name, _, value in (part.partition(":") for part in style.split(";")) if value}


def dark_rules(style_sheet):
    block = style_sheet[style_sheet.index("prefers-color-scheme: dark"):]
    return {name: declared(body) for name, body in re.findall(r"\.(\w+) \{([^}]*)\}", block)}


def texts(element, rules, colours):
    """(text, foreground, background) of all that is shown; `rules` are those of classes, which win."""
    own = declared(element.get("style", ""))
    for name in element.get("class", "").split():
        own |= rules.get(name, {})
    if own.get("display") == "none":
        return
    colours = (own.get("color", colours[0]), own.get("background-color", colours[1]))
    if element.text and element.text.strip():
        yield element.text.strip(), *colours
    for child in element:
        if isinstance(child.tag, str):
            yield from texts(child, rules, colours)
        if child.tail and child.tail.strip():
            yield child.tail.strip(), *colours


class Composing(Case):
    def compose(self, design, *options):
        code, out, err = self.run_program("compose", "template", design, *(options or FILLED))
        self.assertEqual((code, err), (0, ""), design)
        return out

    @unittest.skipUnless(html5lib, "no parser")
    def test_the_designs_are_well_made(self):
        """By a parser that is not ours and stops at the first error."""
        for number, design in enumerate(DESIGNS, 1):
            with self.subTest(design=design):
                html = self.compose(design)
                page = html5lib.HTMLParser(strict=True, namespaceHTMLElements=False).parse(html)
                self.assertEqual(page.get("lang"), "en-gb", "which the list of languages has")
                self.assertTrue(page.find("head/title").text.strip())
                named = {meta.get("name"): meta.get("content") for meta in page.iter("meta")}
                self.assertEqual(named["color-scheme"], "light dark")
                self.assertIn("width=device-width", named["viewport"])
                picture, = page.iter("img")
                file = Path(picture.get("src"))
                self.assertEqual(file, PROGRAM_FOLDER / f"Template{number}.jpg")
                self.assertTrue(file.read_bytes().startswith(b"\xff\xd8") and file.stat().st_size < 60_000)
                self.assertGreater(len(picture.get("alt").split()), 5)
                links = list(page.iter("a"))
                self.assertEqual({link.get("href") for link in links}, LINKS)
                self.assertEqual(sum(link.get("href").startswith("mailto:") for link in links), 1)
                self.assertTrue(all("".join(link.itertext()).strip() for link in links))
                self.assertIn("Smith & Sons", "".join(page.find("body").itertext()))
                self.assertNotRegex(html, r"(?i)tarnwickco|UnsubscribeNow|lorem")
                merged = set(re.findall(r"\$\*Merge(\w+)\*\$", html))
                self.assertTrue(merged <= TAGS and merged - {"Email"}, merged)
                for table in page.iter("table"):
                    heads = [head.get("scope") for head in table.iter("th")]
                    self.assertTrue(all(heads) if table.get("role") is None and heads else table.get("role") == "presentation"
                                    or table.find(".//table") is None, "a table for looks alone says so")
                for name, rules in (("light", {}), ("dark", dark_rules(page.find("head/style").text))):
                    shown = list(texts(page.find("body"), rules, ("#000000", "#ffffff")))
                    self.assertGreater(len(shown), 20)
                    for text, front, back in shown:
                        self.assertGreaterEqual(contrast(front, back), ENOUGH, f"{name}: {text!r} in {front} on {back}")
                raw = self.ok("template", "show", design)
                for line in raw.splitlines():
                    if re.search(r"TARNWICKCo|>www\.tarnwickco|\$\*MergeEmail", line):
                        self.assertIn("word-break:break-word", line, "a long word would make the page wider than a phone")
                self.assertNotRegex(raw, '="[^"]*TARNWICKCo', "a company's quotation mark would end an attribute")

    def test_the_designs_arrive(self):
        self.ok("group", "new", "All")
        people = self.write("people.csv", "bob@example.org,Bob,Stone,Dr\n")
        self.ok("import", people, "--group", "All", "--opt-in", "--map", "Email Address=1,First Name=2,Last Name=3,Title=4")
        box = self.mailbox()
        self.account(box.port)
        for number, design in enumerate(DESIGNS, 1):
            with self.subTest(design=design):
                letter = self.compose(design)
                _, code, err = self.send("--group", "All", "--subject", design, "--body", self.write("letter.html", letter))
                self.assertEqual(code, 0, err)
                message = email.message_from_bytes(box.messages()[-1][1], policy=email.policy.default)
                picture, = (part for part in message.walk() if part.get_content_type() == "image/jpeg")
                file = PROGRAM_FOLDER / f"Template{number}.jpg"
                self.assertEqual(picture.get_payload(decode=True), file.read_bytes())
                merged = letter
                for tag, value in (("Email", "bob@example.org"), ("Title", "Dr"), ("FirstName", "Bob"), ("LastName", "Stone")):
                    merged = merged.replace(f"$*Merge{tag}*$", value)
                html = message.get_body(("html",)).get_content().replace("\r\n", "\n")
                self.assertEqual(html, merged.replace(str(file), "cid:" + picture["Content-ID"].strip("<>")))
                self.assertIn("Unsubscribe <mailto:leave@bay.example?subject=",
                              " ".join(message.get_body(("plain",)).get_content().split()))

    def test_a_design_as_it_is_filled(self):
        """Values go in as they stand, one after the other; what reads otherwise is told."""
        code, out, err = self.run_program("--json", "compose", "template", "Legal", "--company", "<i>www.tarnwickco.example</i>",
                                          "--web", "https://w.example", "--unsubscribe", "a@w.example",
                                          "--unsubscribe-subject", "No more")
        told = json.loads(out)
        self.assertEqual((code, told["template"], len(told["notes"])), (0, "Legal", 3))
        self.assertEqual(err.splitlines(), told["notes"])
        self.assertIn("<i>https://w.example</i>", told["html"])
        self.assertIn('href="mailto:a@w.example?subject=No more"', told["html"])

    def test_commands(self):
        letter = self.write("letter.html", '<p>Hello<img src="p.png">')
        self.write("p.png", b"\x89PNG\r\n\x1a\n")
        long = self.write("long.html", "<p>" + "x" * 5_000_000)
        signature = ("signature", "set")
        own = ("template",)
        for arguments, code, out, err in (
                (("compose", "line", "--width", "60", "--align", "Left", "--solid"), 0, '<hr align="left" noshade width="60%">\n', ""),
                # As from a script whose variable is empty: what follows is no value.
                (("compose", "line", "--width=", "--solid"), 64, "", "Please enter your width."),
                (("compose", "template", "Travel", "--web", "w.example", "--unsubscribe", "a@w.example",
                  "--unsubscribe-subject", "x", "--company=", "--json"), 64, "", "Please enter your company name."),
                (("compose", "line", "--align", "Up"), 64, "", "Up"),
                (("compose", "table", "--rows", "1", "--columns", "1", "--width", "9", "--unit", "Pixels"), 0,
                 '<Table cellspacing="0" cellpadding="4" border="1" width=9>\n   <TR>\n      <TD>&nbsp;</TD>\n   </TR>\n</Table>\n', ""),
                (("compose", "date", "--date", "m/d/yy"), 64, "", "Please select time format."),
                (("compose", "template", "Travel", "--company", "C"), 64, "", "Please enter your web site."),
                (("compose", "template", "Holiday"), 66, "", 'There is no template "Holiday".'),
                ((*own, "save", "../x", letter), 64, "", "slashes"),
                ((*own, "save", "Health", letter), 64, "", "name of a design"),
                ((*own, "save", "", letter), 64, "", "Please enter a name for the template."),
                ((*own, "save", "Monthly", "nosuch.html"), 66, "", "nosuch.html"),
                ((*own, "save", "Monthly", self.write("x.html", b"\0\1")), 65, "", "x.html is neither HTML nor text"),
                ((*own, "save", "Monthly", letter), 0, 'Template "Monthly" is kept.\n', ""),
                ((*own, "import", letter, "--name", "Monthly"), 77, "", "Replace it?"),
                ((*own, "import", letter), 0, 'Template "letter" is kept.\n', ""),
                ((*own, "save", "Monthly", long, "--yes"), 74, "", "Free some space"),
                ((*own, "rename", "letter", "Monthly", "--yes"), 0, 'Template "letter" is now "Monthly".\n', ""),
                ((*own, "rename", "letter", "Yearly"), 66, "", 'no template "letter"'),
                ((*own, "list"), 0, "".join(f"{name}\tdesign\n" for name in DESIGNS) + "Monthly\tyours\n", ""),
                (("compose", "template", "Monthly"), 0,
                 f'<meta charset="utf-8"><p>Hello<img src="file://{self.profile}/data/Templates/Pictures/p.png">', ""),
                ((*own, "save", "Russian", self.write("ru.html", "<meta charset=windows-1251><p>Привет".encode("cp1251"))), 0,
                 'Template "Russian" is kept.\n', ""),
                (("compose", "template", "Russian"), 0, "<meta charset=utf-8><p>Привет", ""),
                ((*own, "remove", "Russian", "--yes"), 0, 'Template "Russian" was removed. Letters begun from it keep their pictures.\n', ""),
                ((*own, "export", "Monthly", letter), 77, "", "letter.html is there already"),
                ((*own, "remove", "Monthly"), 77, "", "Are you sure"),
                ((*own, "remove", "Monthly", "--yes"), 0, 'Template "Monthly" was removed. Letters begun from it keep their pictures.\n', ""),
                ((*own, "export", "Monthly", self.folder / "o.html"), 66, "", 'no template "Monthly"'),
                (signature, 64, "", "nothing to set"),
                ((*signature, "--on", "--off"), 64, "", "--o"),
                ((*signature, self.write("s.txt", "Ada & Co\n"), "--on"), 0, "The signature is on: new messages in the window start with it.\n", ""),
                (("signature", "get"), 0, "Ada &amp; Co<br>\n", "is on"),
                ((*signature, long, "--off"), 0, "The signature is off: new messages start empty.\n", "4.8 MiB of each message"),
                (("signature", "reset"), 77, "", "You are just about to wipe out your signature settings."),
                (("signature", "reset", "--yes"), 0, "The signature is back to the built-in one, and off.\n", ""),
                ((*signature, letter, "--on"), 0, "The signature is on: new messages in the window start with it.\n", ""),
                (("signature", "get"), 0, f'<p>Hello<img src="file://{self.profile}/data/Pictures/p.png">', "is on")):
            with self.subTest(arguments=arguments):
                found = self.run_program(*arguments, fsize=1_000_000 if code == 74 else None)
                self.assertEqual((found[0], found[1].replace("\r\n", "\n") if not code else ""), (code, out), found[2])
                self.assertIn(err, found[2])

    def test_a_design_in_another_spelling(self):
        code, _, err = self.run_program("compose", "template", "travel", "--company", "C")
        self.assertEqual(code, 64, err)
        self.assertIn("in this spelling", err)
        self.assertNotIn("as it was kept", err)

    def test_several_keep_one_name_at_once(self):
        saves = [self.popen("--yes", "template", "save", "Same", self.write(f"{n}.html", f"<p>{n}")) for n in range(12)]
        told = [(save.communicate(timeout=60)[1], save.returncode) for save in saves]
        self.assertEqual([code for _, code in told], [0] * 12, told)

    def test_the_formats_of_the_date(self):
        rows = [json.loads(line) for line in self.ok("--json", "compose", "date", "--list").splitlines()]
        self.assertEqual([row["format"] for row in rows][:6], ["m/d/yy", "mm/dd/yyyy", "yyyy/mm/dd", "dddd, mmmm dd, yyyy",
                                                               "hh:mm:ss AM/PM", "hh:mm:ss"])
        self.assertRegex(self.ok("compose", "date", "--date", "yyyy/mm/dd", "--time", "hh:mm:ss"),
                         r"^\d{4}/\d\d/\d\d - \d\d:\d\d:\d\d\n$")


if __name__ == "__main__":
    unittest.main()
