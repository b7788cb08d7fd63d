// The walk through a list: which places it comes to, and how it ends.
#include "recipients/row_source.h"

#include <gtest/gtest.h>

#include "support/fake_rows.h"

namespace quillcast::recipients {
namespace {

using test::FakeRows;

TEST(Walk, ComesToTheRangeAloneAndAsksNoMoreThanItNeeds) {
  struct Case {
    const char* name;
    std::optional<PartialRange> range;
    int unreadable;  // the row that cannot be read, 0 for none
    int ended_at;    // the place where the visitor has enough, 0 for none
    int cancelled_at;
    std::vector<std::int64_t> visited;
    std::optional<Walked> end;  // nothing for a failure
    int asked;                  // how often for a row
  };
  for (const Case& c : std::initializer_list<Case>{
           {"all", {}, 0, 0, 0, {1, 2, 3, 4, 5}, Walked::kToTheEnd, 6},
           {"the middle", PartialRange{2, 4}, 0, 0, 0, {2, 3, 4}, Walked::kToTheEnd, 4},
           {"the first", PartialRange{1, 1}, 0, 0, 0, {1}, Walked::kToTheEnd, 1},
           {"the last", PartialRange{5, 5}, 0, 0, 0, {5}, Walked::kToTheEnd, 5},
           {"beyond the list", PartialRange{4, 9}, 0, 0, 0, {4, 5}, Walked::kToTheEnd, 6},
           {"enough", {}, 0, 3, 0, {1, 2, 3}, Walked::kEnded, 3},
           {"cancelled", {}, 0, 0, 2, {1, 2}, Walked::kCancelled, 2},
           {"unreadable", {}, 3, 0, 0, {1, 2}, {}, 3},
           {"unreadable before the range", PartialRange{4, 5}, 3, 0, 0, {}, {}, 3},
       }) {
    FakeRows rows(5);
    rows.unreadable = c.unreadable;
    platform::CancelToken cancel;
    std::vector<std::int64_t> visited;
    const auto walked = Walk(rows, c.range, &cancel, [&](const Recipient& row, std::int64_t position) {
      EXPECT_EQ(row.email(), FakeRows::AddressAt(position)) << c.name;
      visited.push_back(position);
      if (position == c.cancelled_at) cancel.Request();
      return position != c.ended_at;
    });
    EXPECT_EQ(visited, c.visited) << c.name;
    EXPECT_EQ(walked ? std::optional(*walked) : std::nullopt, c.end) << c.name;
    EXPECT_EQ(rows.asked, c.asked) << c.name;
  }
}

// A request ends the statement under a row as well: that is no failure of the store.
TEST(Walk, TakesAReadThatACancelEndedForTheCancel) {
  platform::CancelToken cancel;
  FakeRows rows(3);
  rows.unreadable = 2;
  rows.before_failing = [&] { cancel.Request(); };
  const auto walked = Walk(rows, {}, &cancel, [](const Recipient&, std::int64_t) { return true; });
  ASSERT_TRUE(walked);
  EXPECT_EQ(*walked, Walked::kCancelled);
}

// Behind its end, and behind a failure, a statement would begin anew.
TEST(RowWalk, NeverAsksAgainAfterTheEnd) {
  for (const int unreadable : {0, 2}) {
    FakeRows rows(2);
    rows.unreadable = unreadable;
    RowWalk walk(rows, {});
    Recipient row;
    while (true) {
      const auto more = walk.Next(row);
      if (!more || !*more) break;
    }
    const int asked = rows.asked;
    const auto again = walk.Next(row);
    EXPECT_TRUE(again && !*again);
    EXPECT_EQ(rows.asked, asked);
  }
}

}  // namespace
}  // namespace quillcast::recipients
