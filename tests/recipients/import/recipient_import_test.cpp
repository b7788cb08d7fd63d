// Whole imports: the report against golden files, the rows in the store, encodings, limits and cancelling.
#include "recipients/import/recipient_import.h"

#include <fmt/format.h>

#include <fstream>

#include "recipients/import/line_reader.h"
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
    return {file, "A", ImportMode::kDelimited, delimiter, quotes, *ParseMapping(map), ""};
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
  const auto outcome = Run({.file = data / "import_harvest.txt", .group = "a ", .mapping = {}, .encoding = ""});
  EXPECT_FALSE(outcome.error);
  EXPECT_EQ(outcome.counts, (ImportCounts{6, 2, 0}));
  EXPECT_EQ(outcome.cut_addresses, 5);
  EXPECT_EQ(outcome.first_cut, "bob@example.museu");
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
  for (const char* untrue : {"Processed", "Bytes", "Completed"}) {
    EXPECT_EQ(Report().find(untrue), std::string::npos) << untrue;
  }
}

TEST_F(ImportTest, AFileThatCannotBeReadGivesAReportOfZeros) {
  NewGroup("A");
  const auto outcome = Run({.file = folder_ / "none.txt", .group = "A", .mapping = {}, .encoding = ""});
  EXPECT_EQ(outcome.error->failure, Failure::kNoInput);
  EXPECT_EQ(Report(),
            "Import Started\r\n--------------\r\n\r\n\r\nProcessed : 0 Bytes\r\n\r\nAdded : 0\r\nDuplicates : 0\r\n\r\n"
            "----------------\r\nImport Completed\r\n");
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
    const char* overrule;
    const char* code_page;
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
    EXPECT_EQ(source->encoding(), c.encoding) << c.text;
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
      EXPECT_EQ(source->encoding(), std::string_view(encoding).empty() ? "UTF-8" : encoding);
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
                                                   {"Email=1", "There is no field \"Email\""},
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
  EXPECT_NE(ParseMapping("Email=1").error().remedy.InEnglish().find("\"Email Address\", \"Title\""), std::string::npos);
}

TEST(ImportMapping, ShowsASampleAndReadsItsKeysBack) {
  EXPECT_EQ(SampleEntries(" \"a\" ;b;;\xC3\xA4xy", ';', true),
            (std::vector<std::string>{"Ignore", "Field 1 = a", "Field 2 = ", "Field 3 = ", "Field 4 = x"}));
  const auto entries = SampleEntries(" 1, 2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20", ',', false);
  ASSERT_EQ(entries.size(), 19U);
  EXPECT_EQ(entries[1], "Field 1 = 1");
  for (int field = 0; field <= 18; ++field) EXPECT_EQ(SourceFieldOf(entries[static_cast<std::size_t>(field)]), field);
  for (const char* other : {"", "Field 1", "Field 0 = x", "Field 19 = x", "field 1 = x"}) {
    EXPECT_EQ(SourceFieldOf(other), kIgnore) << other;
  }
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
