#!/usr/bin/env python3
"""Times `quillcast import` of a delimited list against the sqlite3 shell's .import of the same file.

And `quillcast import` of an .xlsx file against `orcus-xlsx -f none` (package liborcus-bin) reading the same one, where
that is there. Both run alternately; the lists go into an empty group and an empty table with a case-insensitive index,
with the same cache and the default journal. Prints each time, the ratio of the medians and the peak memory.
"""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
CACHE_KIB = 32768
TOWNS = ["London", "Paris", "Oslo", "Köln", "Graz", "Porto", "Lyon"]


def write_list(path, lines):
    """Addresses in an order that is not that of the index, as lists of customers are."""
    with open(path, "w", encoding="utf-8") as out:
        for n in range(lines):
            scrambled = n * 2654435761 % (1 << 32)
            out.write(f"First{n % 997},Last{n % 7919},user{scrambled:x}.{n}@example{n % 50}.org,{TOWNS[n % 7]}\n")


def write_sheet(path, rows):
    """The same list as a spreadsheet program writes it, its texts shared."""
    names = [f"First{n}" for n in range(997)] + [f"Last{n}" for n in range(7919)] + TOWNS
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as book:
        head = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
        main = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
        relation = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
        package = "http://schemas.openxmlformats.org/package/2006"
        kind = "application/vnd.openxmlformats-officedocument.spreadsheetml"
        book.writestr("[Content_Types].xml", f'{head}<Types xmlns="{package}/content-types"><Default Extension="rels" '
                      'ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
                      f'<Override PartName="/xl/workbook.xml" ContentType="{kind}.sheet.main+xml"/>'
                      f'<Override PartName="/xl/worksheets/sheet1.xml" ContentType="{kind}.worksheet+xml"/>'
                      f'<Override PartName="/xl/sharedStrings.xml" ContentType="{kind}.sharedStrings+xml"/></Types>')
        book.writestr("_rels/.rels", f'{head}<Relationships xmlns="{package}/relationships"><Relationship Id="rId1" '
                      f'Type="{relation}/officeDocument" Target="xl/workbook.xml"/></Relationships>')
        book.writestr("xl/workbook.xml", f'{head}<workbook xmlns="{main}" xmlns:r="{relation}"><sheets>'
                      '<sheet name="List" sheetId="1" r:id="rId1"/></sheets></workbook>')
        book.writestr("xl/_rels/workbook.xml.rels", f'{head}<Relationships xmlns="{package}/relationships">'
                      f'<Relationship Id="rId1" Type="{relation}/worksheet" Target="worksheets/sheet1.xml"/>'
                      f'<Relationship Id="rId2" Type="{relation}/sharedStrings" Target="sharedStrings.xml"/>'
                      "</Relationships>")
        addresses = [f"user{n * 2654435761 % (1 << 32):x}.{n}@example{n % 50}.org" for n in range(rows)]
        book.writestr("xl/sharedStrings.xml", f'{head}<sst xmlns="{main}" count="{4 * rows}" uniqueCount='
                      f'"{len(names) + rows}">' + "".join(f"<si><t>{text}</t></si>" for text in names + addresses) + "</sst>")
        with book.open("xl/worksheets/sheet1.xml", "w") as sheet:
            sheet.write(f'{head}<worksheet xmlns="{main}"><sheetData>'.encode())
            for n in range(rows):
                texts = (n % 997, 997 + n % 7919, len(names) + n, 997 + 7919 + n % 7)
                cells = "".join(f'<c r="{column}{n + 1}" t="s"><v>{text}</v></c>' for column, text in zip("ABCD", texts))
                sheet.write(f'<row r="{n + 1}">{cells}</row>'.encode())
            sheet.write(b"</sheetData></worksheet>")


def timed(words, well=(0,), **options):
    """Seconds and peak resident KiB of one command, which ends with one of the codes `well`."""
    begun = time.monotonic()
    child = subprocess.Popen(words, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, **options)
    complaints = child.stderr.read()
    _, status, usage = os.wait4(child.pid, 0)
    seconds = time.monotonic() - begun
    if os.waitstatus_to_exitcode(status) not in well:
        sys.exit(f"{words[0]} failed: {complaints}")
    return seconds, usage.ru_maxrss


def import_with_quillcast(program, folder, file):
    profile = folder / "profile"
    subprocess.run([program, "--profile", profile, "group", "new", "Bench"], check=True, stdout=subprocess.DEVNULL)
    return timed([program, "--profile", profile, "import", file, "--group", "Bench", "--opt-in", "--map",
                  "Email Address=3,First Name=1,Last Name=2,City=4"])


def read_with_orcus(_, file):
    # Without an output it ends with 1 when all went well, too.
    return timed(["orcus-xlsx", "-f", "none", file], well=(0, 1))


def import_with_shell(folder, file):
    script = folder / "script.sql"
    script.write_text(
        f"PRAGMA cache_size=-{CACHE_KIB};\n"
        "CREATE TABLE r (first TEXT, last TEXT, email TEXT COLLATE NOCASE, city TEXT);\n"
        "CREATE INDEX by_email ON r (email);\n"
        f'.mode csv\n.import "{file}" r\n')
    with open(script, encoding="utf-8") as commands:
        return timed(["sqlite3", folder / "table.db"], stdin=commands)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", nargs="?", default=ROOT / "build/bench/bin/quillcast")
    parser.add_argument("--lines", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--rows", type=int, default=200_000, help="of the spreadsheet; 0 leaves it out")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        file = pathlib.Path(scratch) / "list.csv"
        write_list(file, options.lines)
        compare(options, f"{options.lines} lines", file, "sqlite3", import_with_shell)
    if options.rows == 0:
        return
    if not shutil.which("orcus-xlsx"):
        print("orcus-xlsx is not there (package liborcus-bin): the spreadsheet is left out")
        return
    with tempfile.TemporaryDirectory() as scratch:
        file = pathlib.Path(scratch) / "list.xlsx"
        write_sheet(file, options.rows)
        compare(options, f"{options.rows} rows of .xlsx", file, "orcus-xlsx", read_with_orcus)


def compare(options, what, file, peer, run_peer):
    ours, peers = [], []
    for number in range(options.rounds):
        folder = file.parent / str(number)
        folder.mkdir()
        ours.append(import_with_quillcast(options.program, folder, file))
        peers.append(run_peer(folder, file))
        print(f"round {number + 1}: quillcast {ours[-1][0]:.2f} s, {peer} {peers[-1][0]:.2f} s")
    our_time = statistics.median(seconds for seconds, _ in ours)
    peer_time = statistics.median(seconds for seconds, _ in peers)
    print(f"{what}: quillcast {our_time:.2f} s, {peer} {peer_time:.2f} s, ratio {our_time / peer_time:.2f}")
    print(f"peak memory: quillcast {max(kib for _, kib in ours) / 1024:.0f} MiB, "
          f"{peer} {max(kib for _, kib in peers) / 1024:.0f} MiB")


if __name__ == "__main__":
    main()
