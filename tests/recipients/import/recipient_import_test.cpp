// Whole imports: the report against golden files, the rows in the store, encodings, limits and cancelling.
#include "recipients/import/recipient_import.h"

#include <fmt/format.h>

#include <fstream>

#include "recipients/import/delimited_lines.h"
#include "recipients/store_fixture.h"

namespace quillcast::recipients {
namespace {

class ImportTest : public StoreTest {
 protected:
  ImportPlaces Places(const char* code_page = "UTF-8") {
    return {folder_ / "Group.mdb", folder_ / "Temp" / "ReportButton.txt", code_page};
  }
  ImportOutcome Run(const ImportRequest& request, const char* code_page = "UTF-8") {
    return ImportRecipients(request, Places(code_page), cancel_, nullptr);
  }
  ImportRequest Lines(const std::filesystem::path& file, const char* map, char delimiter = ',', bool quotes = false) {
    ImportRequest request{.file = file, .group = "A", .mode = ImportMode::kDelimited, .reading = {}, .mapping = {}};
    request.reading.delimiter = delimiter;
    request.quotes = quotes;
    request.mapping = *ParseMapping(map);
    return request;
  }
  std::string Report() { return FileText(Places().report); }

  platform::CancelToken cancel_;
};

TEST_F(ImportTest, LinesGoInAsTheGoldenReportSays) {
  const auto group = NewGroup("A");
  const std::filesystem::path data(QUILLCAST_TEST_DATA "/import");
  // The quotes of the first field are not there: it loses its first and last characters all the same.
  const auto outcome = Run(Lines(data / "import_lines.txt", "Email Address=2,First Name=1,City=3", ',', true));
  EXPECT_FALSE(outcome.error);
  EXPECT_EQ(outcome.counts, (ImportCounts{4, 1, 4}));
  EXPECT_EQ(Report(), FileText(data / "import_lines_report.txt"));
  EXPECT_EQ(Addresses(group), "ada@example.org o'neill@example.org Bob <bob@example.net> e@x.org\"extr ");
  EXPECT_EQ((*store().FindRecipient(group, "bob <bob@example.net>"))->recipient,
            Named("Bob <bob@example.net>", "\xC3\xBCric", ""));
  EXPECT_EQ(ImportSummary(outcome.counts),
            "4 recipients imported successfully.\r\n1 duplicate recipients ignored.\r\n4 invalid recipients ignored.");
}

TEST_F(ImportTest, AHarvestFindsWhatTheGoldenReportSays) {
  const auto group = NewGroup("A");
  const std::filesystem::path data(QUILLCAST_TEST_DATA "/import");
  const auto outcome = Run({.file = data / "import_harvest.txt", .group = "a ", .reading = {}, .mapping = {}});
  EXPECT_FALSE(outcome.error);
  EXPECT_EQ(outcome.counts, (ImportCounts{6, 2, 0}));
  EXPECT_EQ(outcome.findings.cut_addresses, 5);
  EXPECT_EQ(outcome.findings.first_cut, "bob@example.museu");
  EXPECT_EQ(Report(), FileText(data / "import_harvest_report.txt"));
  EXPECT_EQ(Addresses(group), "ada@example.org bob@example.museu b@example.net brien@x.org tag@x.org y@z.info ");
}

TEST_F(ImportTest, ASecondRunFindsDuplicatesOnly) {
  NewGroup("A");
  std::string text;
  for (int i = 0; i < 10000; ++i) text += fmt::format("u{}@x.org\n", i);
  const auto request = Lines(NewFile("list.txt", text), "Email Address=1");
  EXPECT_EQ(Run(request).counts, (ImportCounts{10000, 0, 0}));
  EXPECT_EQ(Run(request).counts, (ImportCounts{0, 10000, 0}));
  EXPECT_EQ(*store().CountRecipients("A"), 10000);
}

// Another program writes between two batches: what it added is found all the same.
TEST_F(ImportTest, SeesWhatOthersAddMeanwhile) {
  const auto group = NewGroup("A");
  std::string text;
  for (int i = 0; i < 6000; ++i) text += fmt::format("u{}@x.org\n", i);
  bool added = false;
  const auto outcome = ImportRecipients(Lines(NewFile("list.txt", text), "Email Address=1"), Places(), cancel_,
                                        [&](const ImportProgress& progress) {
                                          if (added || progress.counts.added != 4096) return;
                                          Add(group, "U5999@x.org");
                                          added = true;
                                        });
  EXPECT_TRUE(added);
  EXPECT_EQ(outcome.counts, (ImportCounts{5999, 1, 0}));
}

// Another program deletes the group between two batches: nothing more goes in, and what went in before is told.
TEST_F(ImportTest, EndsWhereTheGroupIsDeletedMeanwhile) {
  NewGroup("A");
  std::string text;
  for (int i = 0; i < 20'000; ++i) text += fmt::format("u{}@x.org\n", i);
  const auto outcome = ImportRecipients(
      Lines(NewFile("list.txt", text), "Email Address=1"), Places(), cancel_, [&](const ImportProgress& progress) {
        if (progress.counts.added != 4096) return;
        EXPECT_TRUE(OpenStore(store().file())->Execute("DELETE FROM [Groups]; DELETE FROM [Emails]"));
      });
  ASSERT_TRUE(outcome.error);
  EXPECT_EQ(Describe(*outcome.error),
            "The group is no longer there.\nAnother program has deleted it; choose another group.");
  EXPECT_EQ(outcome.counts, (ImportCounts{4096, 0, 0}));
  EXPECT_TRUE(Report().ends_with("Email Added : u4095@x.org\r\n"));
  auto database = OpenStore(store().file());
  EXPECT_FALSE(*database->Prepare("SELECT 1 FROM [Emails]")->Step());
}

TEST_F(ImportTest, ACancelKeepsWhatItReports) {
  NewGroup("A");
  std::string text;
  for (int i = 0; i < 6000; ++i) text += fmt::format("u{}@x.org\n", i);
  const auto outcome = ImportRecipients(Lines(NewFile("list.txt", text), "Email Address=1"), Places(), cancel_,
                                        [&](const ImportProgress& progress) {
                                          if (progress.counts.added > 0) cancel_.Request();
                                        });
  EXPECT_TRUE(outcome.cancelled);
  EXPECT_LT(outcome.counts.added, 6000);
  EXPECT_EQ(outcome.counts.added, *store().CountRecipients("A"));
  EXPECT_TRUE(Report().ends_with(
      fmt::format("@x.org\r\n\r\nAdded : {}\r\nIgnored : 0\r\nDuplicates : 0\r\n", outcome.counts.added)));
  for (const char* untrue : {"Processed", "Bytes", "Completed"})
    EXPECT_EQ(Report().find(untrue), std::string::npos) << untrue;
}

TEST_F(ImportTest, WhatCannotBeginGivesAReportOfZeros) {
  NewGroup("A");
  const auto list = NewFile("list.txt", "a@x.org");
  for (const auto& [file, group, failure] :
       {std::tuple(folder_ / "none.txt", "A", Failure::kNoInput), std::tuple(list, "gone", Failure::kUsage)}) {
    ASSERT_FALSE(Run({.file = list, .group = "A", .reading = {}, .mapping = {}}).error) << "another run's report";
    const auto outcome = Run({.file = file, .group = group, .reading = {}, .mapping = {}});
    EXPECT_EQ(outcome.error->failure, failure);
    EXPECT_EQ(Report(),
              "Import Started\r\n--------------\r\n\r\n\r\nProcessed : 0 Bytes\r\n\r\nAdded : 0\r\nDuplicates : "
              "0\r\n\r\n----------------\r\nImport Completed\r\n");
  }
}

TEST_F(ImportTest, AnOverlongLineIsIgnoredByItsNumber) {
  const auto group = NewGroup("A");
  const std::string longest(LineReader::kLongestLine - 8, 'x');
  const auto file = NewFile("list.txt", "a@x.org\r\n" + longest + ",b@x.org\n" + longest + "yy,c@x.org\r\nd@x.org");
  const auto outcome = Run(Lines(file, "Email Address=2"));
  EXPECT_EQ(outcome.counts, (ImportCounts{1, 0, 3}));
  EXPECT_EQ(Addresses(group), "b@x.org ");
  EXPECT_NE(Report().find("Email Ignored : (line 3 is longer than 1 MiB)\r\n"), std::string::npos);
}

TEST_F(ImportTest, NulBytesAreData) {
  const auto group = NewGroup("A");
  const auto file = NewFile("list.txt", std::string_view("a@x.org,x\0y\na@x.org\0,z\n", 23));
  EXPECT_EQ(Run(Lines(file, "Email Address=1,First Name=2")).counts, (ImportCounts{2, 0, 0}));
  EXPECT_EQ(Addresses(group), std::string("a@x.org a@x.org\0 ", 17));
  EXPECT_EQ((*store().FindRecipient(group, "a@x.org"))->recipient.values[kFirstName], std::string("x\0y", 3));
}

TEST_F(ImportTest, ReadsEachEncoding) {
  struct Case {
    std::string bytes;
    const char *overrule, *code_page;
    const char* encoding;  // nullptr: refused
    const char* text;
  };
  const auto wide = [](const char16_t* text, bool big) {
    std::string bytes;
    for (; *text != 0; ++text) {
      const char high = static_cast<char>(*text >> 8);
      const char low = static_cast<char>(*text & 0xFF);
      bytes += big ? high : low;
      bytes += big ? low : high;
    }
    return bytes;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"abc", "", "UTF-8", "UTF-8", "abc"},
           {"", "", "UTF-8", "UTF-8", ""},
           {"\xC3\xA4", "", "ISO-8859-1", "UTF-8", "\xC3\xA4"},
           {"\xEF\xBB\xBF\xC3\xA4", "", "UTF-8", "UTF-8", "\xC3\xA4"},
           {"\xEF\xBB\xBF"
            "a\xE4",
            "", "UTF-8", "UTF-8", "a\xEF\xBF\xBD"},
           {"\xE4\x80", "", "UTF-8", "windows-1252", "\xC3\xA4\xE2\x82\xAC"},
           {"\xE4\x80", "", "ANSI_X3.4-1968", "windows-1252", "\xC3\xA4\xE2\x82\xAC"},
           {"\xE4", "", "KOI8-R", "KOI8-R", "\xD0\x94"},
           {"\xE4", "", "no such thing", "windows-1252", "\xC3\xA4"},
           {"a\xC3", "", "UTF-8", "windows-1252", "a\xC3\x83"},
           // A byte that went wrong in a file that is UTF-8 for the rest.
           {"\xC3\xA4 \xE2\x82\xAC \xE4.", "", "UTF-8", "UTF-8", "\xC3\xA4 \xE2\x82\xAC \xEF\xBF\xBD."},
           {"\xC3\xA4 \xE4 \xE4.", "", "UTF-8", "windows-1252", "\xC3\x83\xC2\xA4 \xC3\xA4 \xC3\xA4."},
           {wide(u"ada@x.org\xE4", false), "", "UTF-8", "UTF-16LE", "ada@x.org\xC3\xA4"},
           {wide(u"\x0418\x0432 i@x.org", true), "", "UTF-8", "UTF-16BE", "\xD0\x98\xD0\xB2 i@x.org"},
           {std::string("\xFF\xFE\0\0\xE4\0\0\0", 8), "", "UTF-8", "UTF-32LE", "\xC3\xA4"},
           {std::string("\0\0\xFE\xFF\0\0\0\xE4", 8), "", "UTF-8", "UTF-32BE", "\xC3\xA4"},
           {"\x83\x65", "Shift_JIS", "UTF-8", "Shift_JIS", "\xE3\x83\x86"},
           {"\xC3\xA4", "windows-1252", "UTF-8", "windows-1252", "\xC3\x83\xC2\xA4"},
           {wide(u"\xFEFF\xE4\n\xD83D\xDE00", false), "", "UTF-8", "UTF-16LE", "\xC3\xA4\n\xF0\x9F\x98\x80"},
           {wide(u"\xFEFF\xE4\xD83D", true), "", "UTF-8", "UTF-16BE", "\xC3\xA4\xEF\xBF\xBD"},
           {wide(u"\xE4", false), "UTF-16LE", "UTF-8", "UTF-16LE", "\xC3\xA4"},
           {"\xEF\xBB\xBF\xC3\xA4", "utf8", "UTF-8", "utf8", "\xC3\xA4"},
           {"\xEF\xBB\xBF"
            "a\xE4",
            "utf8", "UTF-8", "utf8", "a\xEF\xBF\xBD"},
           {wide(u"\xFEFF\xE4", false), "utf-16le", "UTF-8", "utf-16le", "\xC3\xA4"},
           {wide(u"\xFEFF\xE4", false), "UTF-16", "UTF-8", "UTF-16", "\xC3\xA4"},
           {"\xEF\xBB\xBF", "windows-1252", "UTF-8", "windows-1252", "\xC3\xAF\xC2\xBB\xC2\xBF"},
           {"abc", "klingon", "UTF-8", nullptr, ""}}) {
    auto source = TextSource::Open(NewFile("text.txt", c.bytes), c.overrule, c.code_page);
    ASSERT_EQ(bool(source), c.encoding != nullptr) << c.overrule;
    if (!source) continue;
    EXPECT_EQ(source->encoding().name, c.encoding) << c.text;
    std::string all;
    std::string block;
    while (*source->Read(block)) all += block;
    EXPECT_EQ(all, c.text) << c.encoding;
  }
}

// Characters and line ends that straddle the blocks in which a file is read.
TEST_F(ImportTest, BlocksMayEndAnywhere) {
  for (std::size_t lead = 256 * 1024 - 6; lead <= 256 * 1024; ++lead) {
    const std::string text = std::string(lead, 'x') + "\xE2\x82\xAC\r\n\xF0\x9F\x98\x80\r\rend";
    for (const char* encoding : {"", "UTF-8", "UTF-16LE"}) {
      std::string bytes = text;
      if (std::string_view(encoding) == "UTF-16LE") {
        bytes.clear();
        for (std::size_t i = 0; i < lead; ++i) bytes += std::string("x\0", 2);
        bytes += std::string("\xAC\x20\r\0\n\0\x3D\xD8\x00\xDE\r\0\r\0e\0n\0d\0", 20);
      }
      auto source = TextSource::Open(NewFile("text.txt", bytes), encoding, "UTF-8");
      ASSERT_TRUE(source);
      EXPECT_EQ(source->encoding().name, std::string_view(encoding).empty() ? "UTF-8" : encoding);
      LineReader reader(*source);
      Line line;
      std::vector<std::string> ends;
      while (*reader.Next(line))
        ends.emplace_back(line.text.substr(line.text.size() - std::min<std::size_t>(line.text.size(), 4)));
      EXPECT_EQ(ends, (std::vector<std::string>{"x\xE2\x82\xAC", "\xF0\x9F\x98\x80", "", "end"})) << lead << encoding;
    }
  }
}

TEST_F(ImportTest, TheReportIsInTheCodePage) {
  NewGroup("A");
  const auto file = NewFile("list.txt", "\xC3\xA4@\xE2\x82\xAC \xE2\x80\x8D\xF0\x9F\x98\x80 a@x.org\n");
  EXPECT_EQ(Run(Lines(file, "Email Address=1"), "ISO-8859-1").counts.added, 1);
  EXPECT_NE(Report().find("Email Added : \xE4@? ?? a@x.org\r\n"), std::string::npos) << Report();
}

TEST(ImportMapping, ReadsLabelsAndFields) {
  struct Case {
    const char* text;
    const char* complaint;  // a part of it; nullptr: accepted
  };
  for (const Case& c : std::initializer_list<Case>{{"Email Address=18, first name = 1", nullptr},
                                                   {"Email Address=1,Title=ignore", nullptr},
                                                   {"Email Address=1,First Name=1", nullptr},
                                                   {"Email Address=19", "cannot be taken from field \"19\""},
                                                   {"Email Address=0", "cannot be taken from field \"0\""},
                                                   {"Email Address", "does not say which field"},
                                                   {"email=1", nullptr},
                                                   {"Mail=1", "\"Mail\" names no field"},
                                                   {"Title=1,title=2", "mapped twice"},
                                                   {"", "does not say which field"}}) {
    const auto mapping = ParseMapping(c.text);
    ASSERT_EQ(bool(mapping), c.complaint == nullptr) << c.text;
    if (!mapping) {
      EXPECT_NE(mapping.error().what.InEnglish().find(c.complaint), std::string::npos)
          << mapping.error().what.InEnglish();
    }
  }
  EXPECT_EQ(ParseMapping("Email Address=18,First Name=1")->source[kEmail], 18);
  EXPECT_NE(ParseMapping("Mail=1").error().remedy.InEnglish().find("\"Email Address\", \"Title\""), std::string::npos);
}

TEST(ImportMapping, ShowsASampleAndReadsItsKeysBack) {
  const auto entries_of = [](std::string_view line, char delimiter, bool quotes) {
    std::vector<std::string_view> fields;
    SplitLine(line, delimiter, kSourceFields, fields);
    return SampleEntries(fields, quotes);
  };
  EXPECT_EQ(entries_of(" \"a\" ;b;;\xC3\xA4xy", ';', true),
            (std::vector<std::string>{"Ignore", "Field 1 = a", "Field 2 = ", "Field 3 = ", "Field 4 = x"}));
  const auto entries = entries_of(" 1, 2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20", ',', false);
  ASSERT_EQ(entries.size(), 19U);
  EXPECT_EQ(entries[1], "Field 1 = 1");
  for (int field = 0; field <= 18; ++field) EXPECT_EQ(SourceFieldOf(entries[static_cast<std::size_t>(field)]), field);
  for (const char* other : {"", "Field 1", "Field 0 = x", "Field 19 = x", "field 1 = x"})
    EXPECT_EQ(SourceFieldOf(other), kIgnore) << other;
}

// What the counts do not say: each file with its options, and the sentences.
TEST_F(ImportTest, TellsWhatWentOddly) {
  using Texts = std::vector<std::string>;
  struct Case {
    std::string text;
    char delimiter;
    bool rfc4180;
    const char* map;  // nullptr: a harvest
    Texts told;
  };
  const std::string long_line(LineReader::kLongestLine + 1, 'x');
  const auto group = NewGroup("A");
  for (const Case& c : std::initializer_list<Case>{
           {"a1@x.org\n o'n@x.org \n\"b1@x.org\"\n", ',', false, "Email Address=1",
            Texts{"1 address has blanks around it, which are stored with it: “ o'n@x.org ”."}},
           {"Ada,a2@x.org\nBob,b2@x.org\n", ';', false, "Email Address=1",
            Texts{"2 addresses have other text around them, which is stored with them; the first is “Ada,a2@x.org”.",
                  "The delimiter “Comma” would fit this file."}},
           {"Ada,a3@x.org\nBob,b3@x.org\n", '\t', false, "Email Address=2",
            Texts{"The delimiter “Comma” would fit this file."}},
           {"Bob <b4@x.org>,Bob\nc4@x.org,Cyd\n", ',', false, "Email Address=1",
            Texts{"1 address has other text around it, which is stored with it: “Bob <b4@x.org>”."}},
           {"\"Lovelace, Ada\",\"a5@x.org\"\n\"Bee, Bob\",\"b5@x.org\"\n", ',', false, "Email Address=2",
            Texts{"Its fields stand in quotes; reading quotes as spreadsheets write them (RFC 4180) takes them off."}},
           {"\"Ada\",\"e5@x.org\"\n", ',', false, "Email Address=2",
            Texts{"Its fields stand in quotes; reading quotes as spreadsheets write them (RFC 4180) takes them off."}},
           {"\"Lovelace, Ada\",\"a6@x.org\"\n", ',', true, "Email Address=2", {}},
           {"a7@x.org\nb7@x.org,\"open\n", ',', true, "Email Address=1",
            Texts{"A quote in the record that begins on line 2 is never closed; what stands behind it was not taken."}},
           {"a8@x.org\n" + long_line + "\n" + long_line + "\nb8@x.org", ',', false, "Email Address=1",
            Texts{"2 lines are longer than 1 MiB and were ignored, the first is line 2."}},
           {"a9@x.org,\xC3\xA4\xC3\xA4\r\nb9@x.org\rc9@x.org,\xE4\nd9@x.org", ',', false, "Email Address=1",
            Texts{"1 byte is not UTF-8, on line 3: “\uFFFD” stands for it. The rest was read as UTF-8."}},
           {std::string("d\0@\0x\0.\0o\0r\0g\0", 14), ',', false, "Email Address=1",
            Texts{"The file has no mark of its encoding; it was read as UTF-16LE for the zeros in it."}},
           {"o'neill@x.org ada+news@x.org", ',', false, nullptr,
            Texts{"2 addresses were cut, the first to neill@x.org: a harvest takes letters, digits, “.”, “_” and “-”, "
                  "and "
                  "five letters at the end. A recipient from each line keeps an address as it stands."}}}) {
    auto request = Lines(NewFile("list.txt", c.text), c.map == nullptr ? "Title=1" : c.map, c.delimiter);
    if (c.map == nullptr) request.mode = ImportMode::kHarvest;
    request.reading.rfc4180 = c.rfc4180;
    std::vector<std::string> told;
    for (const auto& sentence : ImportTroubles(Run(request))) told.push_back(sentence.InEnglish());
    EXPECT_EQ(told, c.told) << c.text.substr(0, 40);
  }
  EXPECT_NE(Addresses(group).find(" o'n@x.org  \"b1@x.org\" "), std::string::npos) << "stored as they stand";
}

TEST_F(ImportTest, ADryRunCountsAndChangesNothing) {
  const auto group = NewGroup("A");
  Add(group, "u1@x.org");
  std::string text;
  for (int i = 0; i < 9000; ++i) text += fmt::format("U{}@x.org\n", i);
  auto request = Lines(NewFile("list.txt", text + "nobody\nu0@x.org\n"), "Email Address=1");
  request.dry_run = true;
  EXPECT_EQ(Run(request).counts, (ImportCounts{8999, 2, 1}));
  EXPECT_EQ(Addresses(group), "u1@x.org ");
  EXPECT_FALSE(std::filesystem::exists(Places().report));
}

TEST_F(ImportTest, SkipsLinesAtTheBeginning) {
  const auto group = NewGroup("A");
  auto request = Lines(NewFile("list.txt", "\"two\nlines\",t@x.org\r\nu@x.org,2\nv@x.org,3\n"), "Email Address=1");
  request.reading.rfc4180 = true;
  request.skip = 1;  // the record that begins on line 1 is over two lines
  EXPECT_EQ(Run(request).counts, (ImportCounts{2, 0, 0}));
  EXPECT_EQ(Addresses(group), "u@x.org v@x.org ");
}

TEST(ImportChecks, ComplainInTheGivenOrder) {
  const auto message = [](const ImportForm& form) {
    const auto complaint = CheckImport(form);
    return complaint ? complaint->message : "accepted";
  };
  ImportForm form{.file = "",
                  .has_groups = false,
                  .group = "",
                  .mode = ImportMode::kDelimited,
                  .sample_was_read = false,
                  .mapping = {}};
  EXPECT_EQ(message(form), "Please specify a file.");
  form.file = "list.txt";
  EXPECT_EQ(message(form), "There is no group to import.");
  form.has_groups = true;
  EXPECT_EQ(message(form), "Please select a group.");
  form.group = "A";
  EXPECT_EQ(message(form), "There is no data to import.");
  form.sample_was_read = true;
  EXPECT_EQ(message(form), "Please select at least one field to import.");
  form.mapping.source[kFirstName] = 2;
  EXPECT_EQ(message(form), "Email Address field is required.");
  form.mapping.source[kEmail] = 1;
  EXPECT_EQ(message(form), "accepted");
  form.mapping = {};
  form.mode = ImportMode::kHarvest;
  EXPECT_EQ(message(form), "accepted");
}

}  // namespace
}  // namespace quillcast::recipients
