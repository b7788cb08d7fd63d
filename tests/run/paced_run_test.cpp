// A run that keeps to a pace: who goes when, and that all of it is told in the order of the list all the same.
#include "run/paced_run.h"

#include <gtest/gtest.h>

#include <random>

namespace quillcast::run {
namespace {

TEST_F(PacedRun, GoesByItsRulesAndSaysWhatItWaitsFor) {
  const Moment now = clock_.now;  // 09:05:07
  using Texts = std::vector<std::string>;
  const struct {
    std::string domains;
    PaceRules rules = {};
    std::string times;  // who went after how many seconds
    Texts waits;
  } kCases[] = {
      {"aaaa", {}, "1@0 2@0 3@0 4@0 ", {}},
      {"aaaa", PaceRules{.rate = MessageLimit{2, 60s}}, "1@0 2@0 3@60 4@60 ",
       Texts{"2 messages have gone out within a minute, which is the limit."}},
      {"aaa", {.rate = MessageLimit{3, 60s}}, "1@0 2@0 3@0 ", {}},
      {"aaxa", {.pause = PauseAfter{2, 90s}}, "1@0 2@0 4@90 ", {"A pause after 2 messages."}},
      {"aaabbc", PaceRules{.per_domain = MessageLimit{1, 3600s}}, "1@0 4@0 6@0 2@3600 5@3600 3@7200 ",
       Texts{"The domains of those who are next have had their 1 within an hour."}},
      {"aabab", PaceRules{.rate = MessageLimit{2, 1s}, .per_domain = MessageLimit{1, 60s}}, "1@0 3@0 2@60 5@60 4@120 ",
       Texts{"2 messages have gone out within a second, which is the limit.",
             "The domains of those who are next have had their 1 within a minute.",
             "2 messages have gone out within a second, which is the limit.",
             "The domains of those who are next have had their 1 within a minute."}},
      {"aa", {.pause = PauseAfter{2, 90s}}, "1@0 2@0 ", {}},
      {"aa", {.begin = now + 30s}, "1@30 2@30 ", {"It is to begin then."}},
      {"aa", PaceRules{.rate = MessageLimit{1, 60s}, .hours = HoursOfDay{8h, 9h + 6min}}, "1@0 2@82493 ",
       Texts{"Messages go out from 8:00 to 9:06."}},
  };
  for (const auto& each : kCases) {
    for (const std::size_t window : {1, 3}) {
      SCOPED_TRACE(each.domains + " window " + std::to_string(window));
      clock_.now = now;
      Run({.domains = each.domains, .rules = each.rules, .window = window});
      EXPECT_EQ(Times(), each.times);
      EXPECT_EQ(told_.waits, each.waits);
    }
  }
}

// Who comes back waits like anybody who is next, and the turn that was not used is there again.
TEST_F(PacedRun, WhoeverComesBackIsNextAndStandsInTheJournalAsNotOut) {
  const Moment now = clock_.now;  // 09:05:07
  const struct {
    const char* what;
    PaceRules rules;
    std::chrono::seconds lost;  // how long
    std::string times;
    bool is_held = false;
    std::string domains = "aaa";
    std::size_t window = 1;
    bool others_take = false;  // the turn of the one who came back
  } kCases[] = {
      {"nothing to wait for", {}, 60s, "1@0 2@60 3@60 "},
      {"the turns of two losses", {.rate = MessageLimit{3, 3600s}}, 1s, "1@0 2@1 3@1 "},
      {"the limit is reached meanwhile", {.rate = MessageLimit{1, 60s}}, 1s, "1@0 2@61 3@121 "},
      {"back at night", {.hours = HoursOfDay{8h, 9h + 6min}}, 60s, "1@0 2@82493 3@82493 "},
      {"held meanwhile", {}, 1s, "1@0 2@31 3@31 ", true},
      {"another run has reached the limit of its domain: the others go",
       {.per_domain = MessageLimit{1, 60s}},
       1s,
       "1@0 3@1 4@1 5@1 2@61 ",
       false,
       "abcde",
       3,
       true},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.what);
    clock_.now = now;
    told_.is_held = {};
    Run({.domains = each.domains, .rules = each.rules, .window = each.window, .change = [&](FakeCarrier& carrier) {
           carrier.comes_back = {{2, 1}};
           carrier.is_back = [&](std::int64_t position) {
             EXPECT_EQ(kept_.states[position], ResultState::kNotTried);
             clock_.now += each.lost;
             clock_.monotonic += each.lost;
             if (each.others_take) AnotherRunSendsTo(each.domains[1]);
             const auto until = clock_.now + 30s;
             if (each.is_held) told_.is_held = [this, until] { return clock_.now < until; };
           };
         }});
    EXPECT_EQ(Times(), each.times);
    EXPECT_EQ(told_.held.size(), each.is_held ? 1U : 0U);
  }
}

// Rules, lists and windows at random, each ended at a random step by a cancel, or not.
TEST_F(PacedRun, BreaksNoRuleAndLosesNobody) {
  std::mt19937 random(7);
  const auto limit = [&random](std::chrono::seconds within) {
    return random() % 2 == 0 ? std::optional(MessageLimit{1 + static_cast<std::int64_t>(random() % 4), within})
                             : std::nullopt;
  };
  for (int round = 0; round < 300 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    Setting setting{.window = 1 + random() % 4};
    for (std::size_t n = 5 + random() % 25; n > 0; --n) {
      setting.domains += "aaaabbcx"[random() % 8];
      setting.fates += "sssru"[random() % 5];
    }
    setting.rules.rate = limit(1s);
    setting.rules.per_domain = limit(60s);
    if (random() % 3 == 0) setting.rules.pause = PauseAfter{2, 5s};
    const int cancelled_at = random() % 2 == 0 ? static_cast<int>(random() % 60) : 0;
    setting.change = [&](FakeCarrier& carrier) {
      carrier.withdraws = random() % 2 == 0;
      carrier.at_step = [this, cancelled_at](int step) {
        if (step == cancelled_at) cancel_->Request();
      };
    };
    Run(setting);
    const auto broken = [this](const std::optional<MessageLimit>& rule, const std::vector<platform::Duration>& times) {
      if (!rule) return false;
      for (std::size_t n = 0; n + static_cast<std::size_t>(rule->messages) < times.size(); ++n) {
        if (times[n + static_cast<std::size_t>(rule->messages)] - times[n] < rule->within) return true;
      }
      return false;
    };
    EXPECT_FALSE(broken(setting.rules.rate, went_)) << Times();
    for (const char domain : {'a', 'b', 'c'}) {
      std::vector<platform::Duration> there;
      for (std::size_t n = 0; n < went_.size(); ++n) {
        if (setting.domains[static_cast<std::size_t>(carried_[n] - 1)] == domain) there.push_back(went_[n]);
      }
      EXPECT_FALSE(broken(setting.rules.per_domain, there)) << Times();
    }
  }
}

// Those who are kept back, and the results that wait for one of them, are few, however long the list.
TEST_F(PacedRun, HoldsLittleWhileItWaits) {
  std::string many(1001, 'a');
  for (char domain = 'b'; domain <= 'm'; ++domain) many.append(1000, domain);
  const struct {
    std::string domains;
    MessageLimit per_domain;
    int read;  // when nothing more may go out
  } kCases[] = {{std::string(1500, 'a') + "b", {1, 1s}, 1 + 1000}, {many, {1000, 1h}, 1000 + 10'000}};
  for (const auto& each : kCases) {
    int read = 0;
    Run({.domains = each.domains, .rules = {.per_domain = each.per_domain}, .change = [&](FakeCarrier& carrier) {
           carrier.waits_until = [this, &read, waits = carrier.waits_until](platform::Instant due) {
             if (read == 0) read = rows_->asked;
             waits(due);
           };
         }});
    EXPECT_EQ(read, each.read);
    EXPECT_EQ(summary_.sent, std::ssize(each.domains));
  }
}

}  // namespace
}  // namespace quillcast::run
