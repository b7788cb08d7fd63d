// Disks that fail, files that are damaged or not ours, and other programs at the same file.
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <functional>
#include <map>

#include "run/journal/journal_fixture.h"
#include "run/journal/sending.h"
#include "support/full_disk.h"
#include "support/read_only_disk.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;

class FaultsTest : public JournalTest {
 protected:
  // A mailing with a file, cut off among those whom it was sent to.
  void CutOffIn(const fs::path& folder) {
    fs::create_directories(folder);
    const auto journal = OpenJournal("monday", folder);
    test::FakeRows rows(300);
    const KeptFile file = KeepIn(*journal, "attached.txt", "what is attached");
    const auto run = Take(journal->Begin({"Subject", "Group", "inputs", {file}}, rows, {}, {"base"}));
    for (const std::int64_t position : Given(*run, 200)) {
      run->GoesOut(position);
      Take(run->Record());
      if (position % 50 != 0) run->Settled(position, position % 9 == 0 ? Deferred(position) : Sent(position));
    }
    Take(run->Record());
  }
  KeptFile KeepIn(RunJournal& journal, const std::string& name, const std::string& content) const {
    const auto fd = Take(platform::OpenForReading(root_.Write(name, content)));
    return Take(journal.Keep(name, fd.get()));
  }
  // All that can be asked, in a line.
  std::string Told(const fs::path& folder) {
    const auto journal = OpenJournal("monday", folder);
    std::string told;
    for (const MailingEntry& entry : Take(journal->List()).mailings) {
      told += entry.subject + entry.group + std::to_string(entry.recipients) + " " + States(*journal, entry.id) + " ";
      for (const RunEntry& run : entry.runs) {
        told += run.history + std::to_string(static_cast<int>(run.standing)) + std::to_string(run.recipients) + " ";
      }
      for (const KeptFile& file : Take(journal->Inputs(entry.id)).files) told += file.name + file.content;
      Take(journal->Visit(entry.id, kAll, 0, [&](const JournalRow& row) -> Result<bool> {
        told += row.recipient.email() + row.reply.text + row.reason;
        return true;
      }));
    }
    return told;
  }
};

// Every write of everything that changes the journal fails once: all of it is there afterwards, or nothing, and another
// try succeeds.
TEST_F(FaultsTest, ADiskThatFailsLeavesAllOrNothing) {
  using Change = std::function<Result<void>(SqliteRunJournal&)>;
  const auto none = [](auto result) { return result ? Result<void>() : Result<void>(result.error()); };
  const fs::path image = root_.Write("picture", std::string(200'000, 'p'));
  const std::map<const char*, Change> changes = {
      {"begin",
       [&](auto& journal) {
         test::FakeRows rows(400);
         return none(journal.Begin({"Other", "Group", "inputs", {}}, rows, {}, {"base"}));
       }},
      {"go on", [&](auto& journal) { return none(journal.GoOn(1, RunKind::kResume, kLeft, {"again"})); }},
      {"keep", [&](auto& journal) { return none(journal.Keep("p", Take(platform::OpenForReading(image)).get())); }},
      {"forget", [](auto& journal) { return journal.Forget(1); }}};
  CutOffIn(root_ / "before");
  const std::string before = Told(root_ / "before");
  for (const auto& [name, change] : changes) {
    CopyFiles(root_ / "before", root_ / "after");
    Take(change(*OpenJournal("monday", root_ / "after")));
    const std::string after = Told(root_ / "after");
    for (const auto kind : {test::FullDisk::Kind::kFull, test::FullDisk::Kind::kBroken}) {
      int failures = 0;
      for (int good_writes = 0;; ++good_writes) {
        CopyFiles(root_ / "before", root_ / "tried");
        bool is_done = false;
        {
          const auto journal = OpenJournal("monday", root_ / "tried");
          const test::FullDisk disk(kind, good_writes);
          const auto done = change(*journal);
          is_done = bool(done);
          EXPECT_TRUE(done || done.error().failure == Failure::kIo) << name << " " << Describe(done.error());
          if (!disk.has_failed()) break;
        }
        failures += is_done ? 0 : 1;
        ASSERT_EQ(Told(root_ / "tried"), is_done ? after : before) << name << " " << good_writes;
        if (is_done) continue;
        Take(change(*OpenJournal("monday", root_ / "tried")));
        ASSERT_EQ(Told(root_ / "tried"), after) << name << " " << good_writes;
      }
      EXPECT_GT(failures, 1) << name;
    }
  }
}

// What was told before the disk was full stands there, and what was told since once it no longer is.
TEST_F(FaultsTest, ARunOutlivesAFullDisk) {
  for (const auto kind : {test::FullDisk::Kind::kFull, test::FullDisk::Kind::kBroken}) {
    for (int good_writes = 0, ended = 0; ended == 0; ++good_writes) {
      const fs::path folder = root_ / "run";
      fs::remove_all(folder);
      fs::create_directories(folder);
      const auto journal = OpenJournal("monday", folder);
      const auto run = BeginWith(*journal, 140);
      const auto given = Given(*run);
      std::string kept(140, '-');
      std::string told = kept;
      Result<void> recorded;
      {
        const test::FullDisk disk(kind, good_writes);
        for (std::size_t i = 0; i < given.size() && recorded; ++i) {
          run->GoesOut(given[i]);
          told[i] = 'o';
          if (i > 3) run->Settled(given[i - 4], Sent(given[i - 4]));
          if (i > 3) told[i - 4] = 's';
          if (i % 7 != 0) continue;
          recorded = run->Record();
          if (recorded) kept = told;
        }
        ended = test::FullDisk::has_failed() ? 0 : 1;
      }
      if (ended != 0) break;
      ASSERT_FALSE(recorded);
      EXPECT_EQ(recorded.error().failure, Failure::kIo);
      ASSERT_EQ(States(*journal), kept) << good_writes;
      Take(run->Record());
      ASSERT_EQ(States(*journal), told) << good_writes;
      Take(run->End());
    }
  }
}

// It goes on, for what was sent is in the report; but somebody who looks for it here later is not to wonder.
TEST_F(FaultsTest, AFileThatWasRemovedOrReplacedIsToldOfAtTheEnd) {
  for (const bool is_replaced : {false, true}) {
    SCOPED_TRACE(is_replaced);
    const auto folder = root_ / (is_replaced ? "replaced" : "removed");
    fs::create_directories(folder);
    const auto journal = OpenJournal("monday", folder);
    const auto run = BeginWith(*journal, 3);
    run->GoesOut(Given(*run, 1).front());
    fs::remove(folder / "runs.db");
    if (is_replaced) std::ofstream(folder / "runs.db") << "another";
    run->Settled(1, Sent(1));
    Take(run->Record());
    const auto ended = run->End();
    ASSERT_FALSE(ended);
    EXPECT_EQ(ended.error().failure, Failure::kIo);
    EXPECT_NE(Describe(ended.error()).find("was removed or replaced"), std::string::npos) << Describe(ended.error());
  }
}

TEST_F(FaultsTest, ADamagedFileIsToldAndNothingWorse) {
  CutOffIn(root_ / "good");
  std::mt19937 random(5);
  const auto good = test::ReadAll(root_ / "good" / "runs.db");
  int told = 0;
  for (int times = 0; times < 300; ++times) {
    std::string bad = good;
    if (times < 20) {
      bad.resize(good.size() * times / 20);
      if (bad.empty()) continue;  // nobody's yet
    } else {
      const std::size_t at = times < 40 ? random() % 4096 : random() % bad.size();
      for (std::size_t i = at; i < std::min(bad.size(), at + 16); ++i) bad[i] = static_cast<char>(random());
    }
    fs::remove_all(root_ / "bad");
    root_.Write("bad/runs.db", bad);
    const auto asked = [&]() -> Result<void> {
      auto journal = SqliteRunJournal::Open(Place("monday", root_ / "bad"));
      if (!journal) return journal.error();
      if (const auto list = (*journal)->List(); !list) return list.error();
      const auto seen = (*journal)->Visit(1, kAll, 0, [](const JournalRow&) -> Result<bool> { return true; });
      if (!seen) return seen;
      if (const auto inputs = (*journal)->Inputs(1); !inputs) return inputs.error();
      const auto run = (*journal)->GoOn(1, RunKind::kResume, kLeft, {"again"});
      if (!run) return run.error();
      recipients::Recipient row;
      for (std::int64_t position = 0;;) {
        const auto next = (*run)->Next(row, position);
        if (!next) return next.error();
        if (!*next) return {};
      }
    }();
    if (asked) continue;
    ++told;
    EXPECT_TRUE(asked.error().failure == Failure::kBadData || asked.error().failure == Failure::kNoInput ||
                asked.error().failure == Failure::kUnavailable)
        << times << " " << Describe(asked.error());
    if (asked.error().failure == Failure::kBadData) {
      EXPECT_NE(Describe(asked.error()).find("runs.db"), std::string::npos) << Describe(asked.error());
      const std::string words = Describe(asked.error());
      EXPECT_TRUE(words.find("ove ") != std::string::npos || words.find("Forget it") != std::string::npos) << words;
    }
  }
  EXPECT_GT(told, 50);
}

TEST_F(FaultsTest, WhatADiskDoesNotReadIsNoDamage) {
  CutOffIn(root_ / "good");
  Take(OpenJournal("monday", root_ / "good")->List());  // takes in what was told last
  int good_reads = 0;
  for (bool has_failed = true; has_failed; ++good_reads) {
    const auto journal = OpenJournal("monday", root_ / "good");
    const test::FullDisk disk(test::FullDisk::Kind::kUnreadable, good_reads);
    const auto list = journal->List();
    has_failed = test::FullDisk::has_failed();
    ASSERT_EQ(bool(list), !has_failed) << good_reads;
    if (list) continue;
    EXPECT_EQ(list.error().failure, Failure::kIo) << Describe(list.error());
  }
  EXPECT_GT(good_reads, 3);
}

TEST_F(FaultsTest, NumbersThatCannotBeAreDamage) {
  for (const char* sql : {"UPDATE runs SET recipients = -4604", "UPDATE runs SET recipients = 1000000",
                          "UPDATE runs SET began = -9223372036854775808", "UPDATE runs SET ended = 252460800000",
                          "UPDATE mailings SET recipients = -1", "UPDATE mailings SET first = 0",
                          "UPDATE mailings SET counts = x'7F00000000000000'", "DELETE FROM runs"}) {
    const fs::path folder = root_ / "impossible";
    fs::remove_all(folder);
    CutOffIn(folder);
    auto journal = Take(SqliteRunJournal::Open(Place("monday", folder)));
    Take(Take(journal->GoOn(1, RunKind::kResume, kLeft, {"again"}))->End());  // it is named by its first run
    Take(Take(platform::Database::Open(folder / "runs.db", platform::OpenMode::kReadWrite)).Execute(sql));
    EXPECT_TRUE(Take(journal->List()).mailings.empty()) << sql;
    ASSERT_EQ(Take(journal->List()).damaged.size(), 1U) << sql;
    const auto found = journal->Count(1, kAll);
    ASSERT_FALSE(found) << sql;
    EXPECT_EQ(found.error().failure, Failure::kBadData) << sql;
    const DamagedMailing damaged = Take(journal->List()).damaged.front();
    const RunId first = std::string(sql) == "DELETE FROM runs" ? 0 : 1;
    EXPECT_EQ(damaged, (DamagedMailing{1, first, "Subject", "Group"})) << sql;
    Take(BeginWith(*journal, 2)->End());
    EXPECT_EQ(Take(journal->List()).mailings.size(), 1U) << "the others are listed";
    Take(journal->Forget(1));
    EXPECT_TRUE(Take(journal->List()).damaged.empty()) << sql;
  }
}

TEST_F(FaultsTest, WhatIsNotOursIsLeftAlone) {
  struct Row {
    const char* name;
    std::function<void(const fs::path& file)> make;
    Failure failure;
  };
  const auto with = [](const char* sql) {
    return [sql](const fs::path& file) {
      Take(Take(platform::Database::Open(file, platform::OpenMode::kCreate)).Execute(sql));
    };
  };
  for (const Row& row :
       {Row{"text", [](const fs::path& file) { std::ofstream(file) << std::string(5000, 'x'); }, Failure::kBadData},
        Row{"another program's", with("CREATE TABLE bookmarks(a)"), Failure::kBadData},
        Row{"a trigger in it",
            with("PRAGMA application_id = 1365457483; CREATE TABLE runs(a); CREATE TRIGGER t AFTER "
                 "INSERT ON runs BEGIN SELECT 1; END"),
            Failure::kBadData},
        Row{"a later version",
            with("PRAGMA application_id = 1365457483; PRAGMA user_version = 4; CREATE TABLE runs(a)"),
            Failure::kUnavailable},
        Row{"a version that none has",
            with("PRAGMA application_id = 1365457483; PRAGMA user_version = -1; CREATE TABLE runs(a)"),
            Failure::kBadData},
        Row{"a folder", [](const fs::path& file) { fs::create_directory(file); }, Failure::kNoInput}}) {
    fs::remove_all(root_ / "place");
    fs::create_directories(root_ / "place");
    row.make(root_ / "place/runs.db");
    const bool is_file = fs::is_regular_file(root_ / "place/runs.db");
    const std::string before = is_file ? test::ReadAll(root_ / "place/runs.db") : "";
    const auto opened = SqliteRunJournal::Open(Place("monday", root_ / "place"));
    ASSERT_FALSE(opened) << row.name;
    EXPECT_EQ(opened.error().failure, row.failure) << row.name << Describe(opened.error());
    EXPECT_EQ(is_file ? test::ReadAll(root_ / "place/runs.db") : "", before) << row.name;
  }
  CutOffIn(root_ / "good");
  EXPECT_EQ(fs::status(root_ / "good/runs.db").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(fs::status(root_ / "good/runs.lock").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  const test::ReadOnlyDisk disk;
  const auto opened = SqliteRunJournal::Open(Place("monday", root_ / "good"));
  ASSERT_FALSE(opened);
  EXPECT_EQ(opened.error().failure, Failure::kNotPermitted);
}

// Another program that has a mailing in hand: forked before anything is open here, since SQLite would take for its own
// what it inherits.
class OtherProgram {
 public:
  explicit OtherProgram(const std::function<void(const std::function<void()>& tell_and_wait)>& work) {
    if (::pipe(told_.data()) != 0 || ::pipe(asked_.data()) != 0) return;
    child_ = ::fork();
    if (child_ != 0) return;
    work([this] {
      char octet = 'x';
      if (::write(told_[1], &octet, 1) != 1 || ::read(asked_[0], &octet, 1) != 1) ::_exit(1);
    });
    ::_exit(0);
  }
  void WaitUntilItTells() {
    char octet = 0;
    ASSERT_EQ(::read(told_[0], &octet, 1), 1);
  }
  void GoOn() { ASSERT_EQ(::write(asked_[1], "x", 1), 1); }
  int Wait() {
    int status = 0;
    ::waitpid(child_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  void Kill() {
    ::kill(child_, SIGKILL);
    Wait();
  }

 private:
  std::array<int, 2> told_{};
  std::array<int, 2> asked_{};
  pid_t child_ = -1;
};

TEST_F(FaultsTest, AMailingBelongsToOneProgramUntilThatIsGone) {
  OtherProgram other([&](const auto& tell_and_wait) {
    const auto journal = OpenJournal();
    const auto run = BeginWith(*journal, 50);
    for (const std::int64_t position : Given(*run, 10)) run->GoesOut(position);
    for (std::int64_t position = 1; position <= 7; ++position) run->Settled(position, Sent(position));
    Take(run->Record());
    tell_and_wait();
  });
  other.WaitUntilItTells();
  const auto journal = OpenJournal();
  EXPECT_EQ(Take(journal->List()).mailings.front().runs.front().standing, RunStanding::kGoesOn);
  EXPECT_EQ(States(*journal).substr(0, 12), "sssssssooo--");
  for (const auto& refused : {Result<void>(journal->GoOn(1, RunKind::kResume, kLeft, {"again"}).error()),
                              Result<void>(journal->Forget(1).error())}) {
    EXPECT_EQ(refused.error().failure, Failure::kTryAgain);
    EXPECT_EQ(refused.error().what.InEnglish(), "Another window or command has this mailing in hand.");
  }
  other.Kill();
  EXPECT_EQ(Take(journal->List()).mailings.front().runs.front().standing, RunStanding::kCutOff);
  EXPECT_EQ(States(*journal).substr(0, 12), "sssssssuuu--");
  const auto run = Take(journal->GoOn(1, RunKind::kResume, kLeft, {"again"}));
  EXPECT_EQ(run->size(), 40);
  EXPECT_EQ(journal->GoOn(1, RunKind::kRetry, kAll, {"third"}).error().failure, Failure::kTryAgain)
      << "of the same program as well";
}

TEST_F(FaultsTest, TwoProgramsSendAtOnce) {
  const auto send = [&](std::uint32_t seed) {
    const auto journal = OpenJournal();
    const auto run = BeginWith(*journal, 600);
    std::mt19937 random(seed);
    Sending sending(*run, std::string(600, '-'), random, 10);
    for (int turn = 0; sending.Turn(); ++turn) {
      if (turn % 20 == 0) Take(journal->List());
    }
    Take(run->End());
    const MailingId mailing = Take(journal->Find(run->id())).id;
    return States(*journal, mailing) == sending.After();
  };
  OtherProgram other([&](const auto& tell_and_wait) {
    tell_and_wait();
    if (!send(1)) ::_exit(2);
  });
  other.WaitUntilItTells();
  other.GoOn();
  EXPECT_TRUE(send(2));
  EXPECT_EQ(other.Wait(), 0);
  EXPECT_EQ(Take(OpenJournal()->List()).mailings.size(), 2U);
}

}  // namespace
}  // namespace quillcast::run
