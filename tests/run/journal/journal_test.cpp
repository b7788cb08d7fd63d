#include <gtest/gtest.h>

#include "run/journal/sqlite_run_journal.h"
#include "support/fake_rows.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

TEST(Journal, Smoke) {
  const test::TemporaryFolder root;
  const platform::SystemClock clock;
  SystemDisk disk;
  JournalPlace place{.file = root / "runs.db", .clock = &clock, .disk = &disk};
  auto journal = SqliteRunJournal::Open(place);
  ASSERT_TRUE(journal) << Describe(journal.error());
  test::FakeRows rows(1000);
  auto run = (*journal)->Begin({"S", "G", "inputs", {}}, rows, {}, "history");
  ASSERT_TRUE(run) << Describe(run.error());
  recipients::Recipient row;
  std::int64_t position = 0;
  int n = 0;
  for (;;) {
    const auto next = (*run)->Next(row, position);
    ASSERT_TRUE(next) << Describe(next.error());
    if (!*next || position > 700) break;
    ASSERT_EQ(row.email(), test::FakeRows::AddressAt(position));
    (*run)->GoesOut(position);
    ASSERT_TRUE((*run)->Record());
    smtp::Outcome outcome{smtp::State::kSent,
                          smtp::ResultCode::kSuccess,
                          {250, "2.0.0", "Ok: queued as " + std::to_string(position * 7919)},
                          ""};
    (*run)->Settled(position, outcome);
    ++n;
  }
  ASSERT_TRUE((*run)->Record());
  auto list = (*journal)->List();
  ASSERT_TRUE(list) << Describe(list.error());
  ASSERT_EQ(list->size(), 1U);
  EXPECT_EQ((*list)[0].counts[0], 700);
  EXPECT_EQ((*list)[0].runs[0].standing, RunStanding::kGoesOn);
  run = Error{};
  list = (*journal)->List();
  EXPECT_EQ((*list)[0].runs[0].standing, RunStanding::kCutOff);
  auto again = (*journal)->GoOn(1, RunKind::kResume, SetOf({ResultState::kNotTried}), "h2");
  ASSERT_TRUE(again) << Describe(again.error());
  EXPECT_EQ((*again)->size(), 300);
  ASSERT_TRUE(*(*again)->Next(row, position));
  EXPECT_EQ(position, 701);
  ASSERT_TRUE((*again)->End());
  int seen = 0;
  const auto visited =
      (*journal)->Visit(1, SetOf({ResultState::kSent}), 5, [&](const JournalRow& each) -> Result<bool> {
        ++seen;
        EXPECT_EQ(each.position, seen + 5);
        EXPECT_EQ(each.reply.text, "Ok: queued as " + std::to_string(each.position * 7919));
        EXPECT_EQ(each.run, 1);
        return true;
      });
  ASSERT_TRUE(visited) << Describe(visited.error());
  EXPECT_EQ(seen, 695);
}

}  // namespace
}  // namespace quillcast::run
