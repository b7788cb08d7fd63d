// How fast a run was told to go, as the journal keeps it, and what is told of it later.
#include "run/frozen/frozen_pace.h"

#include <gtest/gtest.h>

#include "account/account_pace.h"
#include "support/fake_clock.h"

namespace quillcast::run {
namespace {

TEST(FrozenPaceTest, ComesBackAsItWas) {
  const test::FakeClock clock;
  const PaceTexts options{.rate = "10/s",
                          .hours = "9-17",
                          .connections = "none",
                          .at = "18:00",
                          .retries = "3",
                          .retry_after = "90s",
                          .slow_down = "true"};
  const PaceTexts account{.quota_hour = "\xFF", .quota_day = "500", .domain_rate = "5/min", .pause_after = "9:9"};
  const Moment begin(std::chrono::seconds(1'799'999'999));
  const auto thawed = ReadFrozenPace(FrozenPaceText({options, account, begin}), clock);
  ASSERT_TRUE(thawed);
  PaceTexts begun = options;
  begun.at.clear();
  EXPECT_EQ((*thawed)->options, begun);
  EXPECT_EQ((*thawed)->account, account);
  EXPECT_EQ((*thawed)->begin, begin);
  EXPECT_EQ(account::PaceInWords(options), "Rate=10/s, Hours=9-17, Retries=3, RetryAfter=90s, SlowDown=true");
  EXPECT_EQ(account::PaceInWords({.rate = " None ", .retries = "0", .slow_down = "no"}), "");
  // What an option said is not asked of the account.
  EXPECT_EQ(ChangedSince((*thawed)->account, options,
                         {.rate = "1/h", .quota_day = "5", .connections = "9", .slow_down = "0"}),
            (std::vector<std::string>{"QuotaHour", "QuotaDay", "DomainRate", "PauseAfter"}));
  EXPECT_FALSE(*ReadFrozenPace("", clock)) << "of a version that kept none";
}

// What is chosen for one run differs from the account in what it is told, and in nothing else.
TEST(FrozenPaceTest, TellsARunWhatDiffers) {
  const PaceTexts account{.rate = "30/min", .hours = "9-17", .connections = "4", .slow_down = "0"};
  struct Case {
    const char* name;
    PaceTexts wanted;
    PaceTexts told;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"the account's own", account, {}},
           {"blanks and nothing in other words",
            {.rate = " 30/min ", .hours = "9-17", .connections = "4", .retries = "0", .slow_down = "no"},
            {}},
           {"an emptied field", {.hours = "9-17", .connections = "4"}, {.rate = "none"}},
           {"others",
            {.rate = "5/s", .hours = "9-17", .connections = " 1", .retries = "3", .slow_down = "1"},
            {.rate = "5/s", .connections = "1", .retries = "3", .slow_down = "1"}},
       }) {
    EXPECT_EQ(account::InsteadOf(account, c.wanted), c.told) << c.name;
  }
  const test::FakeClock clock;
  const auto text = FrozenPaceText({{.rate = "5/s", .slow_down = "1"}, account});
  EXPECT_EQ(OptionsIn(text, clock), (PaceTexts{.rate = "5/s", .slow_down = "1"}));
  for (const auto& [ahead, at] :
       {std::pair(std::chrono::hours(1), "2026-07-03 10:05"), std::pair(std::chrono::hours(-1), "")}) {
    EXPECT_EQ(OptionsIn(FrozenPaceText({{}, account, clock.Now() + ahead}), clock), PaceTexts{.at = at});
  }
  EXPECT_EQ(OptionsIn("damaged", clock), PaceTexts());
  EXPECT_EQ(OptionsIn("", clock), PaceTexts());
}

TEST(FrozenPaceTest, RefusesTextThatIsNotItsOwn) {
  const test::FakeClock clock;
  for (const char* text :
       {"{", "null", "[]", "{}", R"({"options":{}})", R"({"options":{},"account":5})",
        R"({"options":{"Rate":5},"account":{}})", R"({"options":{},"account":{},"begin":"noon"})",
        R"({"options":{"Rate":"fast"},"account":{}})", R"({"options":{"Rate":{"base64":"*"}},"account":{}})"}) {
    const auto thawed = ReadFrozenPace(text, clock);
    ASSERT_FALSE(thawed) << text;
    EXPECT_EQ(thawed.error().failure, Failure::kBadData) << text;
  }
  EXPECT_TRUE(ReadFrozenPace(R"({"options":{},"account":{"Rate":"fast"}})", clock)) << "that is read when it counts";
}

}  // namespace
}  // namespace quillcast::run
