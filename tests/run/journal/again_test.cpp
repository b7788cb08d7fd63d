// Recipients who are not met once and in the order of the list: read again, or kept back for later.
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "run/journal/sqlite_run_journal.h"
#include "support/fake_rows.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

class JournalAgain : public testing::Test {
 protected:
  std::unique_ptr<RunJournal> Open(const std::string& boot = "this") {
    auto journal = SqliteRunJournal::Open({.file = folder_ / "runs.db", .boot = boot, .clock = &clock_});
    EXPECT_TRUE(journal) << Describe(journal.error());
    return *std::move(journal);
  }
  static std::unique_ptr<JournalledRun> Begin(RunJournal& journal, std::int64_t recipients) {
    test::FakeRows rows(recipients);
    auto run = journal.Begin({"Subject", "Group", "", {}}, rows, {}, {"history"});
    EXPECT_TRUE(run) << Describe(run.error());
    return *std::move(run);
  }

  test::TemporaryFolder folder_;
  platform::SystemClock clock_;
};

TEST_F(JournalAgain, ReadsAnybodyOnceMoreAndGoesOnWithTheNext) {
  const auto journal = Open();
  const auto run = Begin(*journal, 700);
  std::mt19937 random(3);
  recipients::Recipient recipient;
  std::int64_t position = 0;
  for (std::int64_t next = 1; next <= 700; ++next) {
    ASSERT_TRUE(*run->Next(recipient, position));
    ASSERT_EQ(position, next);
    ASSERT_EQ(recipient.email(), test::FakeRows::AddressAt(next));
    for (auto again = random() % 3; again > 0; --again) {
      const auto earlier = 1 + static_cast<std::int64_t>(random() % static_cast<unsigned>(next));
      const auto read = run->Again(earlier, recipient);
      ASSERT_TRUE(read) << Describe(read.error());
      ASSERT_EQ(recipient.email(), test::FakeRows::AddressAt(earlier));
    }
  }
  EXPECT_FALSE(*run->Next(recipient, position));
}

// Their places were reserved with those around them; that they were put off ends it, and their turn begins it anew.
TEST_F(JournalAgain, LeavesNoDoubtAboutThoseWhoWereKeptBackWhenThePowerIsLost) {
  const std::set<std::int64_t> out = {40, 90};  // of those kept back, on their way in the end
  {
    const auto journal = Open();
    const auto run = Begin(*journal, 1000);
    recipients::Recipient recipient;
    std::int64_t position = 0;
    for (int n = 1; n <= 500; ++n) {
      ASSERT_TRUE(*run->Next(recipient, position));
      if (position % 10 == 0) {
        run->Settled(position, smtp::Left());
        continue;
      }
      run->GoesOut(position);
      ASSERT_TRUE(run->Record());
      run->Settled(position, {smtp::State::kSent, smtp::ResultCode::kSuccess, {}, {}});
    }
    for (const std::int64_t late : out) run->GoesOut(late);
    ASSERT_TRUE(run->Record());
  }
  std::set<std::int64_t> doubtful;
  const auto visited = Open("another")->Visit(1, SetOf({ResultState::kUnknown}), 0, [&](const JournalRow& row) {
    doubtful.insert(row.position);
    return Result<bool>(true);
  });
  ASSERT_TRUE(visited) << Describe(visited.error());
  std::erase_if(doubtful, [](std::int64_t position) { return position > 500; });  // reserved, as they were to be next
  EXPECT_EQ(doubtful, out);
}

}  // namespace
}  // namespace quillcast::run
