#include "help/tips.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/temporary_folder.h"

namespace quillcast::help {
namespace {

TEST(Tips, ComeOneOfEachSeriesAfterTheOtherAndNoneTwice) {
  std::set<std::string> seen;
  TipPlace place;
  std::string order;
  for (int i = 1; i <= 30; ++i) {
    EXPECT_EQ(NumberOf(place), i);
    EXPECT_EQ(TipBefore(NextTip(place)), place);
    EXPECT_TRUE(seen.insert(TipAt(place).text).second) << TipAt(place).text;
    if (i <= 4) order += SeriesName(place.series) + std::to_string(place.place) + ' ';
    place = NextTip(place);
  }
  EXPECT_EQ(order, "Writing1 People1 Sending1 Writing2 ");
  EXPECT_EQ(place, TipPlace());
}

TEST(Tips, BeginWhereTheLastOneWasKept) {
  const test::TemporaryFolder folder;
  profile::SettingsStore settings(folder / "settings.db");
  struct Case {
    const char* series;
    const char* place;
    TipPlace first;
  };
  for (const Case& c : {Case{"", "", {1, 1}}, Case{"2", "", {2, 1}}, Case{"3", "10", {3, 10}}, Case{"4", "11", {1, 1}},
                        Case{"0", "x", {1, 1}}, Case{"-1", " 2", {1, 1}}}) {
    ASSERT_TRUE(settings.Write("Options", "FirstTip", c.series) && settings.Write("Options", "TipPlace", c.place));
    EXPECT_EQ(FirstTip(settings), c.first) << c.series << ' ' << c.place;
  }
  ASSERT_TRUE(KeepFirstTip(settings, {2, 7}));
  EXPECT_EQ(*settings.Read("Options", "FirstTip", ""), "2");
  EXPECT_EQ(FirstTip(settings), (TipPlace{2, 7}));
}

}  // namespace
}  // namespace quillcast::help
