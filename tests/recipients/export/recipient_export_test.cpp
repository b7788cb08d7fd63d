// Whole exports: the file to the byte, character sets, and what stands at the file's place before and after.
#include "recipients/export/recipient_export.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "profile/folders.h"
#include "recipients/import/recipient_import.h"
#include "recipients/store_fixture.h"
#include "recipients/store_rows.h"
#include "support/random_text.h"
#include "support/room_on_disk.h"
#include "support/scripted_prompts.h"

namespace quillcast::recipients {
namespace {

namespace fs = std::filesystem;

class ExportTest : public StoreTest {
 protected:
  void Put(std::int64_t group, std::string_view email, std::string_view first_name = {}, std::string_view city = {}) {
    EXPECT_TRUE(*store().AddRecipientIfNew(group, Named(email, first_name, city)));
  }
  void Fill(std::int64_t group, const std::vector<Recipient>& recipients) {
    auto database = OpenStore(store().file());
    auto all = platform::Transaction::Begin(*database);
    const std::string key = std::to_string(group);
    for (const Recipient& recipient : recipients)
      ASSERT_TRUE(RunOn(*database, StatementId::kAddRecipient, KeyAndValues(key, recipient)));
    ASSERT_TRUE(all->Commit());
  }
  ExportOutcome Run(const ExportFormat& format, const char* group = "A") {
    return ExportToFile(store().file(), {group, format}, file_, {}, cancel_);
  }
  std::string Written(const ExportFormat& format) {
    const auto outcome = Run(format);
    EXPECT_FALSE(outcome.error) << Describe(*outcome.error);
    return FileText(file_);
  }

  fs::path file_ = folder_ / "list.txt";
  platform::CancelToken cancel_;
};

const std::vector<std::size_t> kThree = {FieldOfLabel("City"), kEmail, kFirstName};

TEST_F(ExportTest, WritesWhatTheFormatSays) {
  const auto group = NewGroup("A");
  Put(group, "zoe@x.org", "Zo\xC3\xAB", "Oslo");
  Put(group, "ada@x.org", "Ada, \"the\" first", "");
  Put(group, "Bob <bob@x.org>", "=1+1", "a\r\n b");
  struct Case {
    const char* name;
    ExportFormat format;
    const char* expected;
  };
  const Case cases[] = {
      {"addresses alone", {}, "zoe@x.org\r\nada@x.org\r\nBob <bob@x.org>\r\n"},
      {"fields", ExportFormat{.fields = kThree, .delimiter = '\t'},
       "Oslo\tzoe@x.org\tZo\xC3\xAB\r\n\tada@x.org\tAda, \"the\" first\r\na\r\n b\tBob <bob@x.org>\t=1+1\r\n"},
      {"a delimiter in a value is no concern of this format",
       ExportFormat{.fields = {kFirstName, kEmail}, .delimiter = ','},
       "Zo\xC3\xAB,zoe@x.org\r\nAda, \"the\" first,ada@x.org\r\n=1+1,Bob <bob@x.org>\r\n"},
      {"RFC 4180", ExportFormat{.fields = kThree, .delimiter = ',', .rfc4180 = true},
       "City,Email Address,First Name\r\nOslo,zoe@x.org,Zo\xC3\xAB\r\n,ada@x.org,\"Ada, \"\"the\"\" first\"\r\n"
       "\"a\r\n b\",Bob <bob@x.org>,=1+1\r\n"},
      {"RFC 4180 with another delimiter, and a record that holds nothing",
       ExportFormat{.fields = {FieldOfLabel("City")}, .delimiter = ' ', .rfc4180 = true},
       "City\r\nOslo\r\n\"\"\r\n\"a\r\n b\"\r\n"},
      {"inert", {.fields = {kFirstName}, .inert_formulas = true}, "Zo\xC3\xAB\r\nAda, \"the\" first\r\n'=1+1\r\n"},
      {"the locale's set, which has no such letter",
       ExportFormat{.fields = {kFirstName, kEmail}, .code_page = "ISO-8859-5"},
       "Zo?,zoe@x.org\r\nAda, \"the\" first,ada@x.org\r\n=1+1,Bob <bob@x.org>\r\n"},
      {"the locale's set, which has it", ExportFormat{.fields = {kFirstName}, .code_page = "ISO-8859-1"},
       "Zo\xEB\r\nAda, \"the\" first\r\n=1+1\r\n"},
      {"the locale that programs run in", ExportFormat{.fields = {kFirstName}, .code_page = "ANSI_X3.4-1968"},
       "Zo\xC3\xAB\r\nAda, \"the\" first\r\n=1+1\r\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(Written(c.format), c.expected) << c.name;

  ASSERT_TRUE(OpenStore(store().file())->Execute("UPDATE [Groups] SET [SortSQL] = '[G-Email] DESC'"));
  EXPECT_EQ(Written({}), "zoe@x.org\r\nBob <bob@x.org>\r\nada@x.org\r\n");
  NewGroup("Empty");
  EXPECT_EQ(Run({}, "Empty").written, 0);
  EXPECT_EQ(FileText(file_), "");
}

TEST_F(ExportTest, FormulasBecomeTextForSpreadsheets) {
  struct Case {
    const char* value;
    const char* plain;  // where a comma and a line end part cells, and a spreadsheet takes quotes off
    const char* rfc4180;
  };
  const Case cases[] = {
      {"=1", "'=1", "'=1"},
      {"+47 22", "'+47 22", "'+47 22"},
      {"-", "'-", "'-"},
      {"@SUM(A1)", "'@SUM(A1)", "'@SUM(A1)"},
      {"  =1", "'  =1", "'  =1"},
      {"\t@a", "'\t@a", "'\t@a"},
      {"a=1", "a=1", "a=1"},
      {"'=1", "'=1", "'=1"},
      {"", "", "\"\""},
      {" ", " ", " "},
      {"\"=1\"", "'\"=1\"", "\"\"\"=1\"\"\""},
      {"a,=1", "a,'=1", "\"a,=1\""},
      {"a,b\n=1,-", "a,b\n'=1,'-", "\"a,b\n=1,-\""},
      {"\n=1", "\n'=1", "\"'\n=1\""},
  };
  for (const Case& c : cases) {
    for (const bool rfc4180 : {false, true}) {
      ExportLines lines({.fields = {kEmail}, .delimiter = ',', .rfc4180 = rfc4180, .inert_formulas = true});
      std::string line;
      const std::string_view value = c.value;
      lines.Append({&value, 1}, line);
      EXPECT_EQ(line, std::string(rfc4180 ? c.rfc4180 : c.plain) + "\r\n") << c.value;
    }
  }
}

TEST_F(ExportTest, TellsOfCharactersThatTheSetDoesNotHave) {
  Put(NewGroup("A"), "a@x.org", "\xD0\x96\xE2\x82\xAC\xFF");  // the last one is no UTF-8
  struct Case {
    const char* code_page;
    std::vector<std::string> troubles;
    const char* first_name;
  };
  const Case cases[] = {
      {"ISO-8859-15",
       {"2 characters that iso-8859-15 does not have were written as \"?\". UTF-8 has every one."},
       "?\xA4?"},
      {"KOI8-R", {"2 characters that koi8-r does not have were written as \"?\". UTF-8 has every one."}, "\xF6??"},
      {"", {}, "\xD0\x96\xE2\x82\xAC\xFF"},
      {"UTF-8", {}, "\xD0\x96\xE2\x82\xAC\xFF"},
      {"KLINGON",
       {"The character set of this system is not known here; UTF-8 was written."},
       "\xD0\x96\xE2\x82\xAC\xFF"},
  };
  for (const Case& c : cases) {
    const auto outcome = Run({.fields = {kFirstName}, .code_page = c.code_page});
    std::vector<std::string> troubles;
    for (const Sentence& trouble : ExportTroubles(outcome)) troubles.push_back(trouble.InEnglish());
    EXPECT_EQ(troubles, c.troubles) << c.code_page;
    EXPECT_EQ(FileText(file_), std::string(c.first_name) + "\r\n") << c.code_page;
  }
}

TEST_F(ExportTest, ComplainsInTheGivenOrder) {
  using C = Complaint<ExportControl>;
  const std::vector<std::size_t> none;
  const auto fields = ExportMode::kChosenFields;
  EXPECT_EQ(CheckExport({false, "", "", fields, none}), (C{"There is no group to export.", ExportControl::kGroup}));
  EXPECT_EQ(CheckExport({true, "", "", fields, none}), (C{"Please select a group.", ExportControl::kGroup}));
  EXPECT_EQ(CheckExport({true, "A", "", fields, none}), (C{"Please specify a file.", ExportControl::kFile}));
  EXPECT_EQ(CheckExport({true, "A", "f", fields, none}),
            (C{"Please select at least one field to export.", ExportControl::kFieldList}));
  EXPECT_FALSE(CheckExport({true, "A", "f", fields, {kEmail}}));
  EXPECT_FALSE(CheckExport({true, "A", "f", ExportMode::kAddresses, none}));
}

TEST_F(ExportTest, FieldsAreNamed) {
  EXPECT_EQ(FieldEntry(kEmail), "    Email Address");
  EXPECT_EQ(FieldOfEntry("    Additional Field 3"), kFieldCount - 1);
  EXPECT_EQ(FieldOfEntry("Additional Field 3"), kFieldCount);
  EXPECT_EQ(*ParseFields("city, EMAIL ADDRESS"), (std::vector{FieldOfLabel("City"), kEmail}));
  EXPECT_EQ(ParseFields(" all ")->size(), kFieldCount);
  for (const char* bad : {"", "City,", "Town", "City;State", "City,City"}) {
    const auto refused = ParseFields(bad);
    ASSERT_FALSE(refused) << bad;
    EXPECT_EQ(refused.error().failure, Failure::kUsage) << bad;
  }
}

TEST_F(ExportTest, TakesThePlaceOfAFileAsOthersMayReadIt) {
  Put(NewGroup("A"), "a@x.org");
  const auto mode = [](const fs::path& file) { return fs::status(file).permissions(); };
  EXPECT_EQ(Written({}), "a@x.org\r\n");
  EXPECT_EQ(mode(file_), fs::perms(0600));
  const fs::path other = NewFile("other.txt", "old");
  fs::permissions(other, fs::perms(0640));
  fs::remove(file_);
  fs::create_symlink(other, file_);
  EXPECT_EQ(Written({}), "a@x.org\r\n");
  EXPECT_TRUE(fs::is_symlink(file_)) << "what it leads to was written";
  EXPECT_EQ(FileText(other), "a@x.org\r\n");
  EXPECT_EQ(mode(other), fs::perms(0640));
  fs::remove(file_);
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  fs::create_directory(folder_ / "folder");
  for (const fs::path& bad : {file_, folder_ / "folder", folder_ / "none" / "list.txt"}) {
    const auto outcome = ExportToFile(store().file(), {"A", {}}, bad, {}, cancel_);
    ASSERT_TRUE(outcome.error) << bad;
    EXPECT_NE(Describe(*outcome.error).find(bad.string()), std::string::npos) << Describe(*outcome.error);
    EXPECT_EQ(outcome.written, 0);
  }
  EXPECT_TRUE(fs::is_fifo(file_));
}

TEST_F(ExportTest, NeverReplacesTheProgramsOwnFiles) {
  Put(NewGroup("A"), "a@x.org");
  fs::create_directories(folder_ / "data" / "Templates");
  fs::create_directory(folder_ / "beside");
  const fs::path report = folder_ / "data" / "Report.txt";
  std::ofstream(report) << "kept";
  fs::create_symlink(store().file(), folder_ / "link.txt");
  fs::create_symlink(folder_, folder_ / "way");
  fs::create_hard_link(store().file(), folder_ / "hard.txt");
  const platform::OwnFiles own = {.kept = {store().file(), folder_ / "settings.db", folder_ / "data" / ""},
                                  .free = {folder_ / "data" / "Templates"}};
  const auto before = FileText(store().file());
  const auto relative = fs::relative(store().file());
  for (const fs::path& file :
       {store().file(), folder_ / "beside" / ".." / "Group.mdb", folder_ / "link.txt", folder_ / "way" / "Group.mdb",
        folder_ / "hard.txt", relative, folder_ / "Group.mdb-journal", folder_ / "settings.db",
        folder_ / "settings.db-wal", folder_ / "data" / "new.txt", report}) {
    const auto outcome = ExportToFile(store().file(), {"A", {}}, file, own, cancel_);
    ASSERT_TRUE(outcome.error) << file;
    EXPECT_EQ(Describe(*outcome.error),
              "Cannot write " + file.string() + ": the program keeps its own files there.\nName another file.");
    EXPECT_EQ(outcome.written, 0);
  }
  EXPECT_EQ(FileText(store().file()), before);
  EXPECT_EQ(FileText(report), "kept");
  // Before a question is asked that unlocks it, too, and by the names that the program itself keeps.
  profile::Folders folders;
  folders.data = folder_ / "";
  fs::permissions(store().file(), fs::perms::owner_read);
  test::ScriptedPrompts prompts;
  EXPECT_FALSE(platform::MayWriteTo(folder_ / "hard.txt", folders.OwnFiles(), prompts));
  EXPECT_TRUE(platform::IsLocked(store().file()) && prompts.shown.empty());
  for (const fs::path& file : {folder_ / "data" / "Templates" / "list.htm", folder_ / "database.txt"}) {
    EXPECT_FALSE(ExportToFile(store().file(), {"A", {}}, file, own, cancel_).error) << file;
  }
}

TEST_F(ExportTest, AStoreThatCannotBeReadLeavesTheFileAsItWas) {
  Put(NewGroup("A"), "a@x.org");
  NewFile("list.txt", "old");
  EXPECT_EQ(Run({}, "B").error->failure, Failure::kUsage);
  auto open = OpenStore(store().file());
  ASSERT_TRUE(open->Execute("UPDATE [Groups] SET [SortSQL] = 'random()'"));
  EXPECT_EQ(Run({}).error->failure, Failure::kBadData);
  ASSERT_TRUE(open->Execute("UPDATE [Groups] SET [SortSQL] = ''; ALTER TABLE [Emails] DROP COLUMN [G-City]"));
  EXPECT_TRUE(Run({}).error);
  EXPECT_EQ(ExportToFile(folder_ / "none.mdb", {"A", {}}, file_, {}, cancel_).error->failure, Failure::kNoInput);
  EXPECT_EQ(ExportToFile(NewFile("bad.mdb", std::string(5000, 'x')), {"A", {}}, file_, {}, cancel_).error->failure,
            Failure::kBadData);
  EXPECT_EQ(FileText(file_), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 3) << "something was left beside it";
}

// Each page of the store is damaged in turn: all of the list or the old file, and never a part.
TEST_F(ExportTest, ADamagedStoreWritesNoPartOfAList) {
  constexpr std::size_t kPage = 4096;
  const auto group = NewGroup("A");
  std::vector<Recipient> all;
  for (int i = 0; i < 800; ++i) all.push_back(Named(fmt::format("user{}@x.org", i), std::string(40, 'x')));
  Fill(group, all);
  const ExportFormat format{.fields = {kEmail, kFirstName}};
  const std::string whole = Written(format);
  const std::string good = FileText(store().file());
  ASSERT_GT(good.size() / kPage, 15U);
  int failures = 0;
  for (std::size_t at = 0; at < good.size(); at += kPage) {
    std::string damaged = good;
    damaged.replace(at, kPage, std::string(kPage, '\xF5'));
    NewFile("Group.mdb", damaged);
    NewFile("list.txt", "old");
    const auto outcome = Run(format);
    ASSERT_EQ(FileText(file_), outcome.error ? "old" : whole) << at;
    failures += outcome.error ? 1 : 0;
  }
  EXPECT_GT(failures, 10) << "the pages of the rows and of the schema";
}

TEST_F(ExportTest, ACancelKeepsTheRowsSoFar) {
  constexpr int kRows = 30'000;
  const auto group = NewGroup("A");
  ASSERT_TRUE(OpenStore(store().file())
                  ->Execute(fmt::format("WITH RECURSIVE [n](x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM [n] "
                                        "WHERE x < {}) INSERT INTO [Emails] ([G-ID], [G-Email]) SELECT {}, "
                                        "'a' || x || '@x.org' FROM [n]",
                                        kRows, group)
                                .c_str()));
  std::vector<std::int64_t> told;
  const auto outcome =
      ExportToFile(store().file(), {"A", {}}, file_, {}, cancel_, [&](std::int64_t done, std::int64_t total) {
        EXPECT_EQ(total, kRows);
        told.push_back(done);
        if (done == 3000) cancel_.Request();
      });
  EXPECT_TRUE(outcome.cancelled && !outcome.error);
  EXPECT_EQ(told, (std::vector<std::int64_t>{1000, 2000, 3000}));
  EXPECT_EQ(outcome.written, 3000);
  EXPECT_EQ(
      DescribeCancelled(outcome, file_)->InEnglish(),
      fmt::format("3,000 recipients were written to {} before the export was cancelled.", file_.filename().string()));
  const std::string text = FileText(file_);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3000);
  EXPECT_TRUE(text.ends_with("\r\na3000@x.org\r\n"));

  platform::CancelToken again;
  bool has_failed = false;
  const auto torn = ExportRecipients(
      store().file(), {"A", {}},
      [&](std::string_view) -> Result<void> {
        if (std::exchange(has_failed, true)) return {};
        again.Request();
        return Error{Failure::kIo, "The disk is full."};
      },
      again);
  EXPECT_EQ(torn.error->failure, Failure::kIo) << "a cancel does not hide what was lost";

  const auto nothing = Run({});  // the request still stands: not one row
  EXPECT_EQ(nothing.error->failure, Failure::kTryAgain);
  EXPECT_FALSE(DescribeCancelled(nothing, file_));  // the error says it
  EXPECT_EQ(FileText(file_), text);
}

// The disk is full after n bytes: the new file or the old one, and never a part.
TEST_F(ExportTest, AFullDiskLeavesTheOldFile) {
  const auto group = NewGroup("A");
  std::string whole;
  for (int i = 0; i < 40; ++i) {
    Put(group, fmt::format("user{}@x.org", i), std::string(200, 'x'));
    whole += fmt::format("user{}@x.org,{}\r\n", i, std::string(200, 'x'));
  }
  std::set<bool> ends;
  for (rlim_t limit = 0; limit <= whole.size() + 1000; limit += 499) {
    NewFile("list.txt", "old");
    const pid_t child = ::fork();
    if (child == 0) {
      const test::RoomOnDisk room(limit);
      const auto outcome = Run({.fields = {kEmail, kFirstName}});
      ::_exit(!outcome.error
                  ? 0
                  : (outcome.written == 0 && Describe(*outcome.error).find("list.txt") != std::string::npos ? 1 : 2));
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << limit;
    const bool went_well = WEXITSTATUS(status) == 0;
    ends.insert(went_well);
    ASSERT_EQ(FileText(file_), went_well ? whole : "old") << limit;
    ASSERT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2) << limit;
  }
  EXPECT_EQ(ends.size(), 2U) << "the sweep has to see both";
}

// In, out and in again: the same recipients, to the byte; as they stand, for values that hold neither delimiter nor
// line end, and quoted, for any.
TEST_F(ExportTest, WhatWasExportedComesBack) {
  ImportMapping mapping;
  for (std::size_t field = 0; field < kFieldCount; ++field) mapping.source[field] = static_cast<int>(field) + 1;
  for (const bool quoted : {false, true}) {
    std::vector<std::string> alphabet = {
        "a",  " ", "\"", "'",  "=",    "\xC3\xA9",          "\xF0\x9F\x98\x80", "\xEF\xBB\xBF",
        "\t", ";", ":",  "\v", "\x1A", std::string(1, '\0')};
    if (quoted) alphabet.insert(alphabet.end(), {",", "\r", "\n", "\r\n", "\"\"", ""});
    std::mt19937 random(1);
    const std::string first = quoted ? "Q1" : "A1";
    const auto group = NewGroup(first.c_str());
    std::vector<Recipient> all(500);
    for (std::size_t i = 0; i < all.size(); ++i) {
      for (auto& value : all[i].values) value = test::RandomText(random, alphabet, 8);
      all[i].values[kEmail] += fmt::format(" u{}@x.org", i);
    }
    all[0].values[kEmail].insert(0, "\xEF\xBB\xBF");  // what a file may begin with, and is taken off it
    Fill(group, all);
    ImportRequest request{
        .file = file_, .group = "", .mode = ImportMode::kDelimited, .reading = {}, .mapping = mapping};
    request.reading.encoding = "UTF-8";
    request.reading.rfc4180 = quoted;
    request.skip = quoted ? 1 : 0;  // the headings
    request.group = quoted ? "Q2" : "A2";
    const auto second = NewGroup(request.group.c_str());
    EXPECT_FALSE(Run({.fields = *ParseFields("All"), .delimiter = ',', .rfc4180 = quoted}, first.c_str()).error);
    const auto imported =
        ImportRecipients(request, {store().file(), folder_ / "Report.txt", "UTF-8"}, cancel_, nullptr);
    EXPECT_EQ(imported.counts, (ImportCounts{500, 0, 0}));
    fs::remove(file_);
    auto cursor = store().ListRecipients(second, "");
    Recipient recipient;
    for (const Recipient& expected : all) {
      ASSERT_TRUE(*cursor->Next(recipient));
      ASSERT_EQ(recipient.values, expected.values) << quoted;
    }
  }
}

}  // namespace
}  // namespace quillcast::recipients
