// Spreadsheets and address books, read as lines of fields.
#include <gtest/gtest.h>

#include "recipients/import/archive_directory.h"
#include "recipients/import/import_sample.h"
#include "recipients/import/office_book.h"
#include "support/stored_archive.h"
#include "support/temporary_folder.h"

namespace quillcast::recipients {
namespace {

using test::OpenDocument;
using test::StoredArchive;
using test::StoredPart;
using test::Workbook;

// "1:a|b 2:c" for the fields of the lines; what went wrong for a file that cannot be read.
std::string LinesOf(std::string_view content, FileFormat format) {
  const test::TemporaryFolder folder;
  const auto file = folder.Write("list", content);
  const auto found = FindOutFormat(file);
  if (!found) return found.error().what.InEnglish().substr(file.string().size());
  EXPECT_EQ(*found, format) << content.substr(0, 60);
  const auto lines = OpenLines(file, {}, "UTF-8");
  std::string all;
  const auto read = (*lines)->Read([&all](const FieldLine& line) {
    all += (all.empty() ? "" : " ") + std::to_string(line.number) + ":";
    if (line.fault == LineFault::kTooLong) all += "(too long)";
    auto fields = line.fields;
    while (!fields.empty() && fields.back().empty()) fields = fields.first(fields.size() - 1);
    for (std::size_t at = 0; at < fields.size(); ++at) all += (at == 0 ? "" : "|") + std::string(fields[at]);
    return true;
  });
  return read ? all : read.error().what.InEnglish().substr(file.string().size());
}

struct Case {
  const char* name;
  std::string content;
  const char* lines;
};

TEST(VCard, ReadsEachVersion) {
  for (const Case& c : std::initializer_list<Case>{
           {"3.0",
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lovelace;Ada;;Dr.;\r\nFN:Ada Lovelace\r\nEMAIL;TYPE=home:old@x.org\r\n"
            "item1.EMAIL;TYPE=work,pref:ada@x.org\r\nTEL;TYPE=fax:2\r\nTEL:1\r\nORG:Engines\\, Ltd.;Research\r\n"
            "ADR:;Flat 2;Main St. 1;London;;E1;UK\r\nTITLE:Count\r\n ess\r\nURL:http://x.org/a:b\r\n"
            "CATEGORIES:a,b\r\nNOTE:one\\ntwo\\;\r\nEND:VCARD\r\n",
            "1:ada@x.org|Dr.|Ada|Lovelace|UK||London|Main St. 1|Flat 2|E1|1|2|Engines, Ltd.|Countess|http://x.org/a:b|"
            "old@x.org|a,b|one\ntwo;"},
           {"4.0",
            "begin:vcard\nversion:4.0\nfn:Ada\nemail;pref=1:a@x.org\ntel;value=uri;type=\"voice,home\":tel:+49-1\n"
            "adr;label=\"a:b;c\";pref=1:;;St.;;;;\nend:vcard\nBEGIN:VCARD\nFN:Bob\nEMAIL:b@x.org\nEND:VCARD",
            "1:a@x.org||Ada|||||St.|||+49-1 2:b@x.org||Bob"},
           {"2.1",
            "BEGIN:VCARD\r\nN;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCller;J=\r\n=F6rg\r\nEMAIL;INTERNET;PREF:"
            "j@x.org\r\n"
            "TEL;WORK;FAX:3\r\nORG;ENCODING=BASE64:w5ZsCg==\r\nNOTE;QUOTED-PRINTABLE:a=\r\n=\r\nb=0Ac\r\nEND:VCARD\r\n",
            "1:j@x.org||J\xC3\xB6rg|M\xC3\xBCller||||||||3|\xC3\x96l|||||ab\nc"},
           {"an agent's card is another one",
            "BEGIN:VCARD\nEMAIL:a@x.org\nAGENT:\nBEGIN:VCARD\nEMAIL:agent@x.org\nEND:VCARD\nFN:A\nEND:VCARD\n",
            "1:a@x.org||A"},
           {"ends that are missing", "BEGIN:VCARD\nEMAIL:a@x.org\nBEGIN:VCARD\nEMAIL:b@x.org\n", "1:a@x.org 2:b@x.org"},
           {"the preferred address of two, whole",
            "BEGIN:VCARD\nADR:;;Old St.;Paris;;1;F\nADR;TYPE=pref:;;New St.;;;2;\nEND:VCARD\n", "1:|||||||New St.||2"},
           {"nothing", "\n\nBEGIN:VCARD\nEND:VCARD\n", "1:"}}) {
    EXPECT_EQ(LinesOf(c.content, FileFormat::kVCard), c.lines) << c.name;
  }
}

TEST(VCard, PassesPicturesOver) {
  std::string folded = "BEGIN:VCARD\r\nEMAIL:a@x.org\r\nPHOTO;ENCODING=b:";
  std::string whole = folded + std::string(std::size_t{20} * 1024 * 1024, 'A') + "\r\nFN:Ada\r\nEND:VCARD\r\n";
  while (folded.size() < std::size_t{20} * 1024 * 1024) folded += std::string(74, 'A') + "\r\n ";
  folded += "\r\nFN:Ada\r\nEND:VCARD\r\n";
  for (const std::string& card : {folded, whole}) EXPECT_EQ(LinesOf(card, FileFormat::kVCard), "1:a@x.org||Ada");
  const std::string note = "BEGIN:VCARD\nEMAIL:a@x.org\nNOTE:" + std::string(70'000, 'n') + "\nFN:Ada\nEND:VCARD\n";
  EXPECT_EQ(LinesOf(note, FileFormat::kVCard), "1:a@x.org||Ada") << "a value that is too long is left out";
}

TEST(Ldif, ReadsEntries) {
  for (const Case& c : std::initializer_list<Case>{
           {"a directory",
            "version: 1\n# a remark\n#  that\n  is folded\ndn: cn=Ada,o=x\nobjectClass: person\ncn: Ada Lovelace\n"
            "mail: ada@x.org\nmail: second@x.org\nsn;lang-en: Love\n lace\ngivenName:: QcOkZGE=\n"
            "postalAddress: Main St. 1 $ London\nlabeledURI: http://x.org/ Home page\njpegPhoto:: /9j/4AAQ\n"
            "description:< file:///etc/passwd\n\n\ndn: o=x\no: Engines\n\ndn: cn=Bob\ncn: Bob\nmail: bob@x.org",
            "1:ada@x.org||A\xC3\xA4"
            "da|Lovelace||||Main St. 1 ,  London|||||||http://x.org/|second@x.org 2:||||||||||||Engines "
            "3:bob@x.org||Bob"},
           {"changes",
            "dn: cn=a\nchangetype: delete\n\ndn: cn=b\nchangetype: add\nmail: b@x.org\n\ndn: cn=c\nchangetype: modify\n"
            "replace: mail\nmail: c@x.org\n-\n\n",
            "2:b@x.org"},
           {"no base64", "dn: a\nmail:: ?\ncn: A\n", "1:||A"}}) {
    EXPECT_EQ(LinesOf(c.content, FileFormat::kLdif), c.lines) << c.name;
  }
}

TEST(Spreadsheet, ReadsOfficeOpenXml) {
  const std::string half(std::size_t{512} * 1024, 'x');
  const std::string almost(std::size_t{64} * 1024 - 3, 'x');
  const std::string almost_lines = "1:" + almost + "&y";
  const std::string long_lines = "1:(too long) 2:" + half + "|" + half.substr(1) + " 3:7";
  const std::string inline_text = "<c t='inlineStr'><is><t>in</t><rPh><t>x</t></rPh></is></c>";
  for (const Case& c : std::initializer_list<Case>{
           {"texts", "<row r='2'><c r='A2' t='s'><v>0</v></c><c r='C2' t='s'><v>1</v></c>" + inline_text + "</row>",
            "2:Ada & Co||two parts|in"},
           {"numbers",
            "<row><c s='1'><v>1234</v></c><c><v>4.915112345678E12</v></c><c><v>0.1</v></c><c "
            "s='4'><v>2.5</v></c></row>",
            "1:01234|4915112345678|0.1|2.5"},
           {"dates", "<row><c s='2'><v>45352</v></c><c s='3'><v>45352.520833333336</v></c><c s='2'><v>-1</v></c></row>",
            "1:2024-03-01|2024-03-01 12:30:00|-1"},
           {"others",
            "<row><c t='b'><v>1</v></c><c t='e'><v>#REF!</v></c><c t='str'><f>LOWER(A1)</f><v>low</v></c>"
            "<c t='s'><v>99</v></c><c t='n'><v>?</v></c></row>",
            "1:TRUE||low||?"},
           {"empty rows",
            "<row r='1'/><row r='7'><c r='A7'/><c r='B7'><v>1</v></c></row><row/><row><c><v>2</v></c></row>",
            "7:|1 9:2"},
           {"a column that is none", "<row><c r='ZZZZ1'><v>1</v></c><c r='B1'><v>2</v></c></row>", "1:|2"},
           {"a row that is too long",
            "<row><c t='str'><v>" + half + "</v></c><c t='str'><v>" + half + "y</v></c></row><row><c t='str'><v>" +
                half + "</v></c><c t='str'><v>" + half.substr(1) + "</v></c></row><row><c><v>7</v></c></row>",
            long_lines.c_str()},
           {"a reference where a piece ends", "<row><c t='str'><v>" + almost + "&amp;y</v></c></row>",
            almost_lines.c_str()},
           {"a cell that is too long",
            "<row><c t='str'><v>" + half + half + "y</v></c></row><row><c><v>7</v></c></row>", "1:(too long) 2:7"},
           {"no XML", "<row><c", " cannot be read as a spreadsheet"}}) {
    const std::string lines = LinesOf(StoredArchive(Workbook(c.content)), FileFormat::kSpreadsheet);
    EXPECT_EQ(lines.substr(0, std::string_view(c.lines).size()), c.lines) << c.name << lines;
    if (c.lines[0] != ' ') {
      EXPECT_EQ(lines, c.lines) << c.name;
    }
  }
}

TEST(Spreadsheet, ReadsOpenDocument) {
  const auto cell = [](const std::string& attributes, const std::string& text) {
    return "<table:table-cell " + attributes + "><text:p>" + text + "</text:p></table:table-cell>";
  };
  const auto row = [](const std::string& cells, const char* attributes = "") {
    return "<table:table-row " + std::string(attributes) + ">" + cells + "</table:table-row>";
  };
  const std::string note =
      "<table:table-cell><office:annotation><text:p>not this</text:p></office:annotation><text:p>a<text:s "
      "text:c='2'/>b</text:p><text:p>c</text:p></table:table-cell>";
  std::string blanks;
  for (int i = 0; i < 1100; ++i) blanks += "<text:s text:c='1000'/>";
  const std::string empty = "<table:table-cell table:number-columns-repeated='16384'/>";
  for (const Case& c : std::initializer_list<Case>{
           {"cells",
            "<table:table>" +
                row(cell("", "x") + note + cell("office:value-type='float' office:value='1234'", "01234")) +
                row(empty, "table:number-rows-repeated='5'") +
                row(cell("office:value-type='currency' office:value='1234.5'", "1.234,50 EUR") +
                    cell("office:value-type='date' office:date-value='2024-03-01T00:00:00'", "1.3.24") +
                    cell("table:number-columns-repeated='2'", "y")) +
                row(empty, "table:number-rows-repeated='1048000'") + "</table:table>",
            "1:x|a  b\nc|01234 7:1234.5|2024-03-01|y|y"},
           {"rows that are too long",
            "<table:table>" + row(cell("table:number-columns-repeated='16384'", std::string(100, 'x'))) +
                row(cell("", blanks)) + row(cell("", "a")) + "</table:table>",
            "1:(too long) 2:(too long) 3:a"},
           {"the first sheet that has something",
            "<table:table>" + row(empty) + "</table:table><table:table>" + row(cell("", "a")) +
                "</table:table><table:table>" + row(cell("", "b")) + "</table:table>",
            "1:a"}}) {
    EXPECT_EQ(LinesOf(StoredArchive(OpenDocument(c.content)), FileFormat::kSpreadsheet), c.lines) << c.name;
  }
  std::string bomb = "<table:table>";
  for (int i = 0; i < 6200; ++i) bomb += row(cell("table:number-columns-repeated='16384'", "x"));
  EXPECT_EQ(LinesOf(StoredArchive(OpenDocument(bomb + "</table:table>")), FileFormat::kSpreadsheet),
            " cannot be read as a spreadsheet (it repeats its cells without end).");
}

// What makes much out of little, or has no end.
TEST(Spreadsheet, BoundsWhatItKeeps) {
  const auto many = [](int count, const std::string& what) {
    std::string all;
    for (int n = 0; n < count; ++n) all += what;
    return all;
  };
  const auto book = [](std::size_t part, const std::string& content) {
    auto parts = Workbook("<row><c><v>1</v></c></row>");
    parts[part].content = content;
    return parts;
  };
  constexpr std::size_t kBook = 1;
  constexpr std::size_t kRelations = 2;
  constexpr std::size_t kFormats = 4;
  const std::string sheets =
      "<workbook><sheets>" + many(10'001, "<sheet name='S' r:id='rId1'/>") + "</sheets></workbook>";
  const std::string attributes = "<row" + many(1001, " a='1'") + "><c><v>1</v></c></row>";
  std::string relations = "<Relationships>";
  for (int n = 0; n < 20'001; ++n) relations += "<Relationship Id='" + std::to_string(n) + "' Target='x'/>";
  for (const auto& [why, parts] :
       {std::pair("an element has attributes without end", Workbook(attributes)),
        std::pair("an element has attributes without end",
                  Workbook("<row a='" + std::string(std::size_t{2} * 1024 * 1024, 'x') + "'/>")),
        std::pair("it has more sheets than any list", book(kBook, sheets)),
        std::pair("it has more parts than any list", book(kRelations, relations + "</Relationships>")),
        std::pair("it has more formats than any list",
                  book(kFormats, "<styleSheet><cellXfs>" + many(100'001, "<xf/>") + "</cellXfs></styleSheet>"))}) {
    EXPECT_EQ(LinesOf(StoredArchive(parts), FileFormat::kSpreadsheet),
              std::string(" cannot be read as a spreadsheet (") + why + ").");
  }
  SharedTexts texts;
  EXPECT_EQ(ReadTexts("<sst>" + many(10'000'001, "<si/>") + "</sst>", texts), "it has more texts than any list");
  const std::string tables = many(10'001, "<table:table/>");
  const test::TemporaryFolder folder;
  EXPECT_FALSE(ListSheets(folder.Write("list", StoredArchive(OpenDocument(tables))), nullptr));
}

TEST(Spreadsheet, ReadsTheSheetThatIsAskedFor) {
  const test::TemporaryFolder folder;
  const auto table = [](const char* name, const char* text) {
    return std::string("<table:table table:name='") + name + "'><table:table-row><table:table-cell><text:p>" + text +
           "</text:p></table:table-cell></table:table-row></table:table>";
  };
  for (const auto& parts :
       {test::TwoSheets(), OpenDocument(table("One", "As of March") + table("T&amp;wo", "b@x.org"))}) {
    const auto file = folder.Write("book", StoredArchive(parts));
    EXPECT_EQ(*ListSheets(file, nullptr), (std::vector<std::string>{"One", "T&wo"}));
    for (const auto& [sheet, text, taken, left] :
         {std::tuple("", "As of March", "One", 1), std::tuple("One", "As of March", "One", 0),
          std::tuple("T&wo", "b@x.org", "T&wo", 0)}) {
      const auto lines = OpenLines(file, {.sheet = sheet}, "UTF-8");
      std::string read;
      ASSERT_TRUE((*lines)->Read([&read](const FieldLine& line) {
        if (read.empty()) read = line.fields[0];
        return true;
      }));
      EXPECT_EQ(read, text);
      EXPECT_EQ((*lines)->Facts().sheet, taken);
      EXPECT_EQ((*lines)->Facts().sheets_left_unread, left) << sheet;
    }
    const auto none = ReadSample(file, {.sheet = "D"}, "UTF-8", 1);
    EXPECT_EQ(none.error().failure, Failure::kUsage);
    EXPECT_EQ(none.error().remedy.InEnglish(), "Choose one of its sheets: \"One\", \"T&wo\".");
    platform::CancelToken cancel;
    cancel.Request();
    EXPECT_EQ(ReadSample(file, {}, "UTF-8", 1, 0, &cancel).error().failure, Failure::kTryAgain);
  }
}

// What is no list, and what would fill the memory: a sentence each.
TEST(Spreadsheet, RefusesWhatItIsNot) {
  auto bomb = Workbook("");
  bomb[5].claimed_size = std::int64_t{600} * 1024 * 1024;
  auto dense = Workbook("");
  dense[5].claimed_size = std::int64_t{100} * 1024 * 1024;
  auto locked = Workbook("");
  locked[5].is_encrypted = true;
  auto lying = Workbook("<row><c><v>1</v></c></row>");
  lying[5].claimed_size = 20;
  auto encrypted = OpenDocument("");
  encrypted[1].content = "<manifest:encryption-data/>";
  const std::string whole = StoredArchive(Workbook(""));
  struct Refusal {
    const char* name;
    std::string content;
    const char* why;
  };
  for (const Refusal& c : std::initializer_list<Refusal>{
           {"a bomb", StoredArchive(bomb), " would unpack to more than 512.0 MiB."},
           {"a dense one", StoredArchive(dense), " would unpack to more than 200 times its size, which no list does."},
           {"a directory that lies", StoredArchive(lying),
            " is damaged: its part xl/worksheets/sheet1.xml cannot be unpacked."},
           {"with a password", StoredArchive(locked), " is protected by a password."},
           {"OpenDocument with a password", StoredArchive(encrypted), " is protected by a password."},
           {"another archive", StoredArchive({{"list.csv", "a@x.org"}}), " is an archive, and no spreadsheet."},
           {"a text document",
            StoredArchive({{"mimetype", "application/vnd.oasis.opendocument.text"}, {"content.xml", ""}}),
            " is an archive, and no spreadsheet."},
           {"an empty archive", StoredArchive({}), " is an archive, and no spreadsheet."},
           {"the beginning alone", whole.substr(0, whole.size() / 2), " is damaged: it is no whole archive."},
           {"an old one", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 and so on",
            " is a spreadsheet of the old kind (.xls), or one"},
           {"packed", "\x1F\x8B\x08", " is packed."}}) {
    const std::string told = LinesOf(c.content, FileFormat::kSpreadsheet);
    EXPECT_EQ(told.substr(0, std::string_view(c.why).size()), c.why) << c.name << told;
  }
  // Every way to be cut off, and every byte of the end wrong: told, and never more.
  for (std::size_t cut = 1; cut < 200; ++cut) LinesOf(whole.substr(0, whole.size() - cut), FileFormat::kSpreadsheet);
}

TEST(Archive, AddsUpSizesOfAnyLength) {
  const std::string large(4, '\xFF');
  const auto entry = [&](const std::string& extra) {
    return "PK\1\2" + test::LittleEndian(0, 16) + large + large + test::LittleEndian(1, 2) +
           test::LittleEndian(extra.size(), 2) + test::LittleEndian(0, 14) + "n" + extra;
  };
  const std::string sizes = test::LittleEndian(1, 2) + test::LittleEndian(16, 2) +
                            test::LittleEndian(std::uint64_t{1} << 40, 8) + test::LittleEndian(7, 8);
  const auto directory =
      ArchiveDirectory::Parse(entry(test::LittleEndian(9, 2) + test::LittleEndian(1, 2) + "x" + sizes), "f");
  ASSERT_TRUE(directory);
  EXPECT_EQ(directory->entries()[0].unpacked, std::uint64_t{1} << 40);
  EXPECT_EQ(directory->entries()[0].packed, 7U);
  EXPECT_FALSE(directory->CheckSizes("f"));
  for (const std::string& damaged :
       {entry(""), entry(sizes.substr(0, 12)), entry(sizes) + "x", std::string("PK\1\2")}) {
    EXPECT_FALSE(ArchiveDirectory::Parse(damaged, "f"));
  }
}

}  // namespace
}  // namespace quillcast::recipients
