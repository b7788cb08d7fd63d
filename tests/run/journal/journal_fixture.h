// A journal in a folder of its own, and its recipients' states as a line of letters.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "run/journal/sqlite_run_journal.h"
#include "support/fake_clock.h"
#include "support/fake_rows.h"
#include "support/temporary_folder.h"

namespace quillcast::run {

// The value, which the test cannot go on without.
template <typename T>
T Take(Result<T> result) {
  if (!result) throw std::runtime_error(Describe(result.error()));
  if constexpr (!std::is_void_v<T>) return *std::move(result);
}

inline smtp::Outcome Sent(std::int64_t position) {
  return {smtp::State::kSent,
          smtp::ResultCode::kSuccess,
          {250, "2.0.0", "queued as " + std::to_string(position * 7919)},
          ""};
}
inline smtp::Outcome Deferred(std::int64_t position) {
  return {smtp::State::kDeferred,
          smtp::ResultCode::kRecipientRefused,
          {450, "4.2.0", "not now, " + std::to_string(position)},
          "It asked to come again."};
}
inline smtp::Outcome Refused() {
  return {smtp::State::kRefused, smtp::ResultCode::kRecipientRefused, {550, "5.1.1", "no such user"}, ""};
}
inline smtp::Outcome Failed() { return {smtp::State::kFailed, smtp::ResultCode::kFileNotOpened, {}, "No such file."}; }

inline const StateSet kAll = StateSet().set();
inline const StateSet kLeft = SetOf({ResultState::kNotTried});

// Sent, refused, deferred, failed, unknown, not tried, in flight.
inline constexpr std::string_view kLetters = "srdfu-o";

class JournalTest : public ::testing::Test {
 protected:
  JournalPlace Place(const std::string& boot = "monday", const std::filesystem::path& folder = {}) {
    return {.file = (folder.empty() ? root_.path() : folder) / "runs.db",
            .boot = boot,
            .clock = &clock_,
            .disk = &disk_,
            .patience = {.lock_wait = std::chrono::seconds(5)},
            .between_commits = between_commits_};
  }
  std::unique_ptr<SqliteRunJournal> OpenJournal(const std::string& boot = "monday",
                                                const std::filesystem::path& folder = {}) {
    return Take(SqliteRunJournal::Open(Place(boot, folder)));
  }
  static std::unique_ptr<JournalledRun> BeginWith(RunJournal& journal, std::int64_t recipients) {
    test::FakeRows rows(recipients);
    return Take(journal.Begin({"Subject", "Group", "inputs", {}}, rows, {}, {"base"}));
  }
  // Those whom Next gives, until it gives no more of them.
  static std::vector<std::int64_t> Given(JournalledRun& run, std::int64_t most = 1'000'000) {
    std::vector<std::int64_t> positions;
    recipients::Recipient row;
    for (std::int64_t position = 0; std::ssize(positions) < most && Take(run.Next(row, position));) {
      EXPECT_EQ(row.email(), test::FakeRows::AddressAt(position));
      positions.push_back(position);
    }
    return positions;
  }
  static std::string States(RunJournal& journal, MailingId mailing = 1) {
    std::string letters;
    Take(journal.Visit(mailing, kAll, 0, [&](const JournalRow& row) -> Result<bool> {
      letters += kLetters[static_cast<std::size_t>(row.state)];
      return true;
    }));
    return letters;
  }
  static JournalRow RowAt(RunJournal& journal, std::int64_t position) {
    JournalRow found;
    Take(journal.Visit(1, kAll, position - 1, [&](const JournalRow& row) -> Result<bool> {
      found = row;
      return false;
    }));
    return found;
  }
  // The files as they are now, as another computer would find them. Only this process has them open, so that the locks
  // which it loses by that are missed by nobody.
  static void CopyFiles(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::filesystem::remove_all(to);
    std::filesystem::create_directories(to);
    for (const auto& each : std::filesystem::directory_iterator(from)) {
      const std::string name = each.path().filename();
      if (name == "runs.db" || name == "runs.db-wal" || name.starts_with("runs.db-recent-"))
        std::filesystem::copy_file(each.path(), to / name);
    }
  }

  const test::TemporaryFolder root_;
  test::FakeClock clock_;
  SystemDisk disk_;
  std::chrono::milliseconds between_commits_{0};
};

}  // namespace quillcast::run
