// History names, listing, opening and clearing.
#include "run/history.h"

#include <gtest/gtest.h>

#include "platform/file_attributes.h"
#include "support/fake_clock.h"
#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;
using platform::Answer;

class RecordingDesktop final : public platform::Desktop {
 public:
  std::vector<fs::path> opened;
  Result<void> OpenFile(const fs::path& file) override {
    opened.push_back(file);
    return {};
  }
  Result<void> OpenPage(std::string_view) override { return {}; }
};

TEST(History, NamesARunByItsMomentAndItsSubject) {
  const std::tm moment = test::FakeClock().Local(test::FakeClock().now);
  struct Case {
    std::string subject, base;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"Re: Offer_2026!", "07-03-2026_09-05-07_Re Offer2026"},
           {"", "07-03-2026_09-05-07_No Subject"},
           {"?!_./", "07-03-2026_09-05-07_No Subject"},
           {"../../etc/passwd", "07-03-2026_09-05-07_etcpasswd"},
           {"Привет, Ada - 5", "07-03-2026_09-05-07_ Ada - 5"},
           {std::string(100, 'x'), "07-03-2026_09-05-07_" + std::string(64, 'x')},
       }) {
    EXPECT_EQ(HistoryBaseName(moment, c.subject), c.base);
  }
}

TEST(History, TwoRunsInOneSecondTakeDifferentNames) {
  const test::TemporaryFolder folder;
  const test::FakeClock clock;
  folder.Write("07-03-2026_09-05-08_Hello.eml", "left by a run whose report is gone");
  std::vector<std::string> bases;
  for (int run = 0; run < 2; ++run) {
    auto entry = BeginHistoryEntry(folder.path(), clock, "Hello");
    ASSERT_TRUE(entry);
    EXPECT_TRUE(fs::exists(folder / (entry->base + ".txt")));
    bases.push_back(entry->base);
  }
  EXPECT_EQ(bases, (std::vector<std::string>{"07-03-2026_09-05-07_Hello", "07-03-2026_09-05-09_Hello"}));
  EXPECT_FALSE(BeginHistoryEntry(folder / "missing", clock, "Hello"));
}

TEST(History, ListsReportsAndMakesThemWritable) {
  const test::TemporaryFolder folder;
  for (const char* name : {"07-03-2026_09-05-07_Hello.txt", "two_parts.txt", "one.txt", "a_b_c_d.txt", "x.eml"})
    folder.Write(name, "x");
  folder.Write("a_b_d.txt", "The messages are written into files. Nothing is sent.\r\nWriting for 1 recipient.\r\n");
  fs::permissions(folder / "one.txt", fs::perms::owner_read);
  auto rows = ListHistory(folder.path());
  ASSERT_TRUE(rows);
  std::vector<std::string> texts;
  for (const auto& row : *rows) {
    texts.push_back(row.text);
    EXPECT_EQ(row.delivery == Delivery::kWritten, row.file == "a_b_d.txt") << row.file;
  }
  std::sort(texts.begin(), texts.end());
  EXPECT_EQ(texts, (std::vector<std::string>{"Date = 07-03-2026  -  Time = 09-05-07 - Subject = Hello",
                                             "Date = a  -  Time = b - Subject = c",
                                             "Date = a  -  Time = b - Subject = d (written into files, not sent)",
                                             "Date = one", "Date = two  -  Time = parts"}));
  EXPECT_FALSE(platform::IsLocked(folder / "one.txt"));
}

TEST(History, TouchesNeitherFoldersNorWhatLinksPointTo) {
  const test::TemporaryFolder folder;
  const test::TemporaryFolder elsewhere;
  const auto mine = elsewhere.Write("mine.txt", "x");
  fs::permissions(mine, fs::perms::owner_read);
  fs::create_directory(folder / "folder_a_b.txt");
  fs::permissions(folder / "folder_a_b.txt", fs::perms::owner_read | fs::perms::owner_exec);
  fs::create_symlink(mine, folder / "link_a_b.txt");
  fs::create_directory_symlink(elsewhere.path(), folder / "album");
  fs::create_symlink("/nowhere", folder / "dangling.txt");
  const auto rows = ListHistory(folder.path());
  ASSERT_TRUE(rows);
  ASSERT_EQ(rows->size(), 1U);
  EXPECT_EQ(rows->front().file, "link_a_b.txt");

  test::ScriptedPrompts prompts;
  prompts.answers = {Answer::kYes};
  const auto cleared = ClearHistory(folder.path(), prompts);
  EXPECT_EQ(cleared.deleted, 3U);
  EXPECT_EQ(cleared.folders, 1U);
  EXPECT_TRUE(platform::IsLocked(folder / "folder_a_b.txt")) << "was made writable";
  EXPECT_FALSE(fs::is_symlink(folder / "album"));
  EXPECT_TRUE(platform::IsLocked(mine)) << "what a link points to is gone, or was made writable";

  // The folder itself may be one.
  fs::create_directory_symlink(elsewhere.path(), folder / "History");
  fs::rename(mine, elsewhere.path() / "a_b_mine.txt");
  EXPECT_EQ(ListHistory(folder / "History" / "")->size(), 1U);
  prompts.answers = {Answer::kYes};
  const auto kept = ClearHistory(folder / "History" / "", prompts);
  EXPECT_EQ(kept.deleted, 0U);
  EXPECT_EQ(WhatStayed(kept).size(), 1U);
  EXPECT_TRUE(platform::IsLocked(elsewhere.path() / "a_b_mine.txt"));
}

TEST(History, ClearingTellsWhatStayed) {
  struct Case {
    ClearedHistory cleared;
    const char* told;
  };
  for (const Case& c : std::initializer_list<Case>{
           {{Clearing::kCleared, 5, 0, 0, 0}, ""},
           {{Clearing::kCleared, 5, 1, 0, 0}, "1 file could not be deleted. Look at the permissions of /h.|"},
           {{Clearing::kCleared, 0, 1000, 2, 2},
            "2 folders in it were left as they are.|The files of a run that is going on were kept.|"
            "1,000 files could not be deleted. Look at the permissions of /h.|"}}) {
    std::string told;
    for (const auto& sentence : WhatStayed(c.cleared)) told += sentence.InEnglish() + "|";
    const auto done = WhatFailed(c.cleared, "/h");
    if (!done) told += InOneLine(done.error()) + "|";
    EXPECT_EQ(told, c.told);
  }
}

TEST(History, OpensWhatIsThereAndSaysWhatIsNot) {
  const test::TemporaryFolder folder;
  folder.Write("a_b_c.txt", "x");
  folder.Write("a_b_c.eml", "x");
  RecordingDesktop desktop;
  test::ScriptedPrompts prompts;
  ASSERT_TRUE(OpenLog(folder.path(), {"a_b_c.txt", ""}, desktop, prompts));
  ASSERT_TRUE(OpenMessage(folder.path(), {"a_b_c.txt", ""}, desktop, prompts));
  EXPECT_EQ(desktop.opened, (std::vector<fs::path>{folder / "a_b_c.txt", folder / "a_b_c.eml"}));
  ASSERT_TRUE(OpenLog(folder.path(), {"gone.txt", ""}, desktop, prompts));
  ASSERT_TRUE(OpenMessage(folder.path(), {"gone.txt", ""}, desktop, prompts));
  EXPECT_EQ(prompts.shown, (std::vector<std::string>{"warn: Server Log is not available.",
                                                     "warn: Original Message is not available."}));
}

TEST(History, IsClearedWholeOrNotAtAll) {
  const test::TemporaryFolder folder;
  for (const char* name : {"a_b_c.txt", "a_b_c.eml", "holiday.jpg"}) folder.Write(name, "x");
  fs::permissions(folder / "holiday.jpg", fs::perms::owner_read);
  test::ScriptedPrompts prompts;
  EXPECT_EQ(ClearHistory(folder.path(), prompts).clearing, Clearing::kKept);
  EXPECT_TRUE(fs::exists(folder / "a_b_c.txt"));
  prompts.answers = {Answer::kYes};
  const auto cleared = ClearHistory(folder.path(), prompts);
  EXPECT_EQ(cleared.deleted, 3U);
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_EQ(prompts.shown.front(), "ask: Are you sure you want to delete your history?");
}

TEST(History, ArrangesItsRowsByWhatTheirNamesSay) {
  const std::vector<HistoryRow> rows = {{"12-01-2025_10-00-00_Bees.txt", ""},
                                        {"07-03-2026_09-05-07_Ants.txt", ""},
                                        {"notes.txt", ""},
                                        {"07-03-2026_09-05-06_Cows and_sheep.txt", ""},
                                        {"01-01-2026 10-00-00 Dogs.txt", ""}};
  using Places = std::vector<std::size_t>;
  EXPECT_EQ(Arranged(rows, HistoryOrder::kAsListed), (Places{0, 1, 2, 3, 4}));
  EXPECT_EQ(Arranged(rows, HistoryOrder::kNewestFirst), (Places{1, 3, 0, 2, 4}));
  EXPECT_EQ(Arranged(rows, HistoryOrder::kOldestFirst), (Places{2, 4, 0, 3, 1}));
  EXPECT_EQ(Arranged(rows, HistoryOrder::kBySubject), (Places{4, 1, 0, 3, 2}));
  const std::tm late = test::FakeClock().Local(std::chrono::system_clock::from_time_t(1798761539));
  const std::vector<HistoryRow> written = {{HistoryBaseName(late, "Z") + ".txt", ""}, rows[1]};
  EXPECT_EQ(Arranged(written, HistoryOrder::kOldestFirst), (Places{1, 0})) << "as they are written";
}

TEST(History, KnowsTheRunThatBeganLast) {
  const test::TemporaryFolder folder;
  EXPECT_EQ(*NewestReport(folder / "nowhere"), std::nullopt);
  for (const char* name : {"notes.txt", "12-31-2027_10-00-00_Folder.txt/x", "12-31-2027_10-00-00_Other.eml"})
    folder.Write(name, "x");
  fs::create_symlink("/etc/passwd", folder / "12-31-2028_10-00-00_Link.txt");
  EXPECT_EQ(*NewestReport(folder.path()), std::nullopt);
  for (const char* name : {"07-03-2026_09-05-07_Ants.txt", "12-01-2025_10-00-00_Bees.txt"}) folder.Write(name, "x");
  fs::permissions(folder / "07-03-2026_09-05-07_Ants.txt", fs::perms::owner_read);
  EXPECT_EQ(*NewestReport(folder.path()), folder / "07-03-2026_09-05-07_Ants.txt");
  EXPECT_TRUE(platform::IsLocked(folder / "07-03-2026_09-05-07_Ants.txt")) << "looking changes nothing";
  EXPECT_EQ(MessageOf(folder / "a_b_c.txt"), folder / "a_b_c.eml");
}

TEST(History, KeepsTheFilesOfARunThatIsGoingOn) {
  const test::TemporaryFolder folder;
  const platform::SystemClock clock;
  test::ScriptedPrompts prompts;
  prompts.answers = {Answer::kYes, Answer::kYes};
  folder.Write("01-01-2026_10-00-00_Old.txt", "x");
  {
    const auto running = BeginHistoryEntry(folder.path(), clock, "Now");
    ASSERT_TRUE(running);
    folder.Write(running->message.filename(), "its first message");
    const auto cleared = ClearHistory(folder.path(), prompts);
    EXPECT_EQ(cleared.deleted, 1U);
    EXPECT_EQ(cleared.going_on, 2U);
    EXPECT_TRUE(fs::exists(running->message));
  }
  EXPECT_EQ(ClearHistory(folder.path(), prompts).deleted, 2U) << "the run has ended";
}

}  // namespace
}  // namespace quillcast::run
