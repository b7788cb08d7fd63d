// A run that tries some of its recipients again: when, how often, behind whom, and what is told and kept of it.
#include <gtest/gtest.h>

#include <random>

#include "run/paced_run.h"
#include "run/retries.h"
#include "support/fake_clock.h"

namespace quillcast::run {
namespace {

using RetriedRun = PacedRun;

TEST_F(RetriedRun, ComesBehindTheListWhenItIsDueAndCountsByTheLastResult) {
  constexpr const char* kOneWaits = "1 recipient was deferred and is tried again then.";
  using Then = std::map<std::int64_t, Fates>;
  using Texts = std::vector<std::string>;
  const struct {
    std::string domains;
    Fates fates;
    Then then;
    RetryRules retries;
    PaceRules rules;
    std::string times;  // who went after how many seconds
    std::string told;
    Texts waits;
  } kCases[] = {
      {"ab", "ds", {{1, "s"}}, {1, 60s}, {}, "1@0 2@0 1@60 ", "1d+ 2s 1s2 ", {kOneWaits}},
      {"ab", "ds", {{1, "d"}}, {2, 60s}, {}, "1@0 2@0 1@60 1@180 ", "1d+ 2s 1d2+ 1d3 ", {kOneWaits}},
      {"ab", "ds", {}, {0, 60s}, {}, "1@0 2@0 ", "1d 2s ", {}},
      // Only what another time may change: no refusal, nothing that may be out, nobody without an address.
      {"abcxa", "rudxc", Then{{3, "r"}, {5, "s"}}, RetryRules{9, 60s}, PaceRules{}, "1@0 2@0 3@0 5@0 3@60 5@60 ",
       "1r 2u 3d+ 4f 5f+ 3r2 5s2 ", Texts{"2 recipients were deferred and are tried again from then on."}},
      {"a", "d", Then{{1, "d"}}, RetryRules{5, 20min}, PaceRules{}, "1@0 1@1200 1@3600 1@7200 1@10800 1@14400 ",
       "1d+ 1d2+ 1d3+ 1d4+ 1d5+ 1d6 ", Texts{kOneWaits}},
      {"a", "d", {{1, "d"}}, {2, 2h}, {}, "1@0 1@7200 1@14400 ", "1d+ 1d2+ 1d3 ", {kOneWaits}},
      // It keeps to the pace, and lets the list go first.
      {"abc", "dds", Then{{1, "s"}, {2, "s"}}, RetryRules{1, 30s}, PaceRules{.rate = MessageLimit{1, 60s}},
       "1@0 2@60 3@120 1@180 2@240 ", "1d+ 2d+ 3s 1s2 2s2 ",
       Texts{"1 message has gone out within a minute, which is the limit."}},
      {"ab", "ds", Then{{1, "s"}}, RetryRules{1, 60s}, PaceRules{.per_domain = MessageLimit{1, 3600s}},
       "1@0 2@0 1@3600 ", "1d+ 2s 1s2 ",
       Texts{kOneWaits, "The domains of those who are next have had their 1 within an hour."}},
  };
  for (const auto& each : kCases) {
    for (const std::size_t window : {1, 3}) {
      SCOPED_TRACE(each.domains + " " + each.fates + " window " + std::to_string(window));
      Run({.domains = each.domains,
           .rules = each.rules,
           .window = window,
           .retries = each.retries,
           .fates = each.fates,
           .then = each.then});
      EXPECT_EQ(Times(), each.times);
      EXPECT_EQ(told_.tries, each.told);
      if (window > 1) told_.waits = each.waits;  // told while answers are waited for, too
      EXPECT_EQ(told_.waits, each.waits);
      const auto sent =
          std::ranges::count(told_.states, ResultState::kSent, [](const auto& one) { return one.second; });
      EXPECT_EQ(summary_.sent, sent);
      EXPECT_EQ(summary_.failed, std::ssize(each.domains) - sent);
      EXPECT_TRUE(summary_.reached_its_end());
      EXPECT_EQ(kept_.states, told_.states);
      EXPECT_EQ(Count(report_, "Message sent successfully.") + Count(report_, "There was an error sending"),
                std::ranges::count(each.told, ' '))
          << "each try has its lines";
      EXPECT_EQ(Count(report_, "process has been completed."), 1);
    }
  }
}

TEST_F(RetriedRun, WaitsNoLongerForASleepOfTheComputer) {
  test::FakeClock clock;
  Retries retries({1, 30min}, clock);
  EXPECT_TRUE(retries.Defer({.position = 1, .tries = 1}));
  clock.monotonic += 10min;
  EXPECT_EQ(retries.NextDue(), clock.monotonic + 20min);
  clock.asleep = 1h;
  EXPECT_TRUE(retries.IsOneDue());
  EXPECT_LE(retries.NextDue(), clock.monotonic);
}

// A run that goes on with one that ended while some waited: this try is their next, and how long they wait for another,
// and how often, goes by all of them.
TEST_F(RetriedRun, GoesOnWithTheTriesOfTheRunBefore) {
  const struct {
    int before;
    int retries;
    std::string times;
    std::string told;
  } kCases[] = {{0, 3, "1@0 2@0 1@60 1@180 1@420 ", "1d+ 2s 1d2+ 1d3+ 1d4 "},
                {2, 3, "1@0 2@0 1@240 ", "1d+ 2s 1d2 "},
                {3, 3, "1@0 2@0 ", "1d 2s "},
                {9, 3, "1@0 2@0 ", "1d 2s "}};
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.before);
    Setting setting{.domains = "ab", .retries = {each.retries, 60s}, .fates = "ds", .then = {{1, "d"}}};
    if (each.before > 0) setting.before[1] = each.before;
    Run(setting);
    EXPECT_EQ(Times(), each.times);
    EXPECT_EQ(told_.tries, each.told);
    EXPECT_EQ(summary_.failed, 1);
    EXPECT_TRUE(summary_.reached_its_end());
    EXPECT_TRUE(kept_.tries.empty()) << "nobody is to be tried again";
  }
}

// Who waits for another try keeps the result that there is, whatever ends the run.
TEST_F(RetriedRun, LeavesResultsAsTheyAreWhereItEndsBefore) {
  const auto cancels = [this](FakeCarrier& carrier) {
    carrier.waits_until = [this](platform::Instant) { cancel_->Request(); };
  };
  Run({.domains = "aab", .retries = {3, 60s}, .fates = "dsc", .change = cancels});
  EXPECT_EQ(told_.tries, "1d+ 2s 3f+ ");
  EXPECT_EQ(kept_.states[1], ResultState::kDeferred);
  EXPECT_EQ(kept_.tries, (std::map<std::int64_t, int>{{1, 1}, {3, 1}}));
  EXPECT_TRUE(kept_.ended);
  EXPECT_TRUE(summary_.cancelled);
  EXPECT_EQ(summary_.retries_left, 2);
  EXPECT_EQ(summary_.not_tried, 0);
  EXPECT_FALSE(summary_.reached_its_end());

  // The row cannot be read again: the turn is free, for a limit that would have no other.
  const struct {
    std::string domains;
    PaceRules rules;
    std::set<std::int64_t> unreadable;
    Fates fates;
    std::string told;
    std::int64_t not_tried;
  } kCases[] = {
      {"ab", {.rate = MessageLimit{1, 60s}}, {1}, "ds", "1d+ 2s ", 0},
      {"aab", {.per_domain = MessageLimit{1, 60s}}, {2}, "sss", "1s 3s ", 1},  // kept back, never tried
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.domains);
    Run({.domains = each.domains,
         .rules = each.rules,
         .retries = {1, 30s},
         .fates = each.fates,
         .unreadable = each.unreadable,
         .after = [this](Turns& turns) {
           clock_.now += 24h;
           EXPECT_FALSE(turns.Due(DomainOf("a.example")).why);
         }});
    EXPECT_EQ(told_.tries, each.told);
    EXPECT_EQ(summary_.not_tried, each.not_tried);
    ASSERT_TRUE(summary_.stopped);
    EXPECT_EQ(summary_.stopped->failure, Failure::kBadData);
    for (const auto& [position, state] : told_.states) EXPECT_EQ(kept_.states[position], state);
  }
}

// A run that is cut short leaves whoever was lost, unless the server went on with somebody who went out after that.
TEST_F(RetriedRun, LeavesThoseBehindWhomTheServerWentOnWithNobody) {
  const struct {
    const char* what;
    std::size_t window;
    Fates fates;
    int cancelled_at;  // the step
    std::map<std::int64_t, int> left;
  } kCases[] = {
      {"the next is taken", 1, "cssss", 6, {}},
      {"the next is refused", 1, "crsss", 6, {}},
      {"no connection came about, and the next is taken", 1, "nssss", 6, {{1, 1}}},
      {"the next is lost as well", 1, "ccsss", 6, {{1, 1}, {2, 1}}},
      {"of the next nobody knows", 1, "cusss", 6, {{1, 1}}},
      {"one that was out is taken", 3, "csssss", 8, {{1, 1}}},
      {"one behind those is taken", 3, "cssssss", 12, {}},
      {"the second is lost behind one that is taken", 3, "scsssss", 10, {{2, 1}}},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.what);
    const auto cancels = [this, &each](FakeCarrier& carrier) {
      carrier.withdraws = true;
      carrier.at_step = [this, &each](int step) {
        if (step == each.cancelled_at) cancel_->Request();
      };
    };
    Run({.domains = std::string(each.fates.size(), 'a'),
         .window = each.window,
         .fates = each.fates,
         .change = cancels});
    EXPECT_TRUE(summary_.cancelled);
    EXPECT_EQ(kept_.tries, each.left);
    EXPECT_EQ(summary_.not_their_doing, std::ssize(each.left));
  }
}

// Whoever may have a message from before is not to get another one, nor be told to have none, as this one was not
// taken.
TEST_F(RetriedRun, LeavesInDoubtWhoseMessageWasNotTakenThisTime) {
  for (const int retries : {0, 2}) {
    SCOPED_TRACE(retries);
    Run({.domains = "aaxaaaaac",
         .retries = {retries, 1min},
         .fates = "chxsdrust",
         .before = {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}, {7, 0}, {9, 0}}});
    using enum ResultState;
    const std::map<std::int64_t, ResultState> expected{{1, kUnknown}, {2, kUnknown}, {3, kUnknown},
                                                       {4, kSent},    {5, kUnknown}, {6, kUnknown},
                                                       {7, kUnknown}, {8, kSent},    {9, kUnknown}};
    EXPECT_EQ(kept_.states, expected);
    EXPECT_TRUE(kept_.tries.empty());
    EXPECT_EQ(summary_.unknown, 7);
    EXPECT_EQ(summary_.not_their_doing, 0);
  }
}

// Nobody else shows that the server takes anything; that it hung up at them again shows it as well.
TEST_F(RetriedRun, FailsThoseAtWhomTheServerHangsUpAgain) {
  const struct {
    const char* what;
    Fates fates;
    std::map<std::int64_t, int> before;
    std::map<std::int64_t, int> left;
  } kCases[] = {
      {"for the first time", "h", {}, {{1, 1}}},
      {"again", "h", {{1, 1}}, {}},
      {"again, before it took the sender", "c", {{1, 1}}, {{1, 2}}},
      {"at one again, and at another for the first time", "hh", {{2, 1}}, {{1, 1}}},
      {"at all again", "hhh", {{1, 1}, {2, 1}, {3, 2}}, {}},
      {"and takes somebody before", "shh", {}, {}},
      {"at so many behind that it is nothing of each", "shhh", {}, {{2, 1}, {3, 1}, {4, 1}}},
      {"at those again", "shhh", {{2, 1}, {3, 1}, {4, 1}}, {}},
      {"and is gone", "sc", {}, {{2, 1}}},
      {"or lets no connection come about, and takes somebody behind", "snhs", {}, {{2, 1}}},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.what);
    Run({.domains = std::string(each.fates.size(), 'a'), .fates = each.fates, .before = each.before});
    EXPECT_EQ(kept_.tries, each.left);
    EXPECT_EQ(summary_.not_their_doing, std::ssize(each.left));
  }
}

TEST_F(RetriedRun, GoesSlowerWhereTheServerAsksForItAndEndsWithItsLastMessage) {
  Run({.domains = "aaaa", .retries = {1, 5s}, .slow_down = true, .fates = "tsss", .then = {{1, "s"}}});
  EXPECT_EQ(Times(), "1@0 2@2 3@4 4@6 1@8 ");  // one went out within the first second: half of 60 a minute
  EXPECT_EQ(told_.waits, std::vector<std::string>{"The server asked for fewer messages: up to 30 go out a minute."});
  EXPECT_EQ(told_.NotesOn("The server asks for fewer messages: 451 4.7.1 slow down."), 1);
  EXPECT_LT(clock_.now - begin_, 9s);
  const auto comes_back = [](FakeCarrier& carrier) {
    carrier.comes_back[1] = 1;
    carrier.why_back = OutcomeOf('t');
  };
  Run({.domains = "aaa", .slow_down = true, .fates = "sss", .change = comes_back});
  EXPECT_EQ(Times(), "1@2 2@4 3@6 ") << "said of one that goes over another connection";
  Run({.domains = "aaaa", .retries = {1, 5s}, .fates = "tsss", .then = {{1, "s"}}});
  EXPECT_EQ(Times(), "1@0 2@0 3@0 4@0 1@5 ");
}

// The time passes, too, between the question for a message and the one until when there is none.
TEST_F(RetriedRun, GoesOnWithWhatBecameDueMeanwhile) {
  const auto passes = [this](FakeCarrier& carrier) {
    carrier.has_none = [this] {
      clock_.now += 70s;
      clock_.monotonic += 70s;
    };
  };
  Run({.domains = "aaa", .retries = {1, 60s}, .fates = "dsd", .then = {{1, "s"}, {3, "s"}}, .change = passes});
  EXPECT_EQ(summary_.sent, 3);
  Run({.domains = "aaa", .retries = {1, 60s}, .slow_down = true, .fates = "tss", .then = {{1, "s"}}, .change = passes});
  EXPECT_EQ(summary_.sent, 3);
  EXPECT_TRUE(summary_.reached_its_end());
}

// Fates, paces and windows at random, each ended at a random step by a cancel, or not.
TEST_F(RetriedRun, LosesAndDoublesNobody) {
  std::mt19937 random(11);
  for (int round = 0; round < 300 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    Setting setting{.window = 1 + random() % 4, .retries = {static_cast<int>(1 + random() % 3), 10s}};
    for (std::size_t n = 5 + random() % 25; n > 0; --n) {
      setting.domains += "aaaabbcx"[random() % 8];
      setting.fates += "sddcru"[random() % 6];
      setting.then[std::ssize(setting.fates)] = std::string(1, "sddcr"[random() % 5]) + "sdru"[random() % 4];
    }
    if (random() % 2 == 0) setting.rules.rate = MessageLimit{3, 1s};
    if (random() % 2 == 0) setting.rules.per_domain = MessageLimit{2, 20s};
    const int cancelled_at = random() % 2 == 0 ? static_cast<int>(random() % 120) : 0;
    setting.change = [&](FakeCarrier& carrier) {
      carrier.withdraws = random() % 2 == 0;
      carrier.at_step = [this, cancelled_at](int step) {
        if (step == cancelled_at) cancel_->Request();
      };
    };
    Run(setting);
    std::map<std::int64_t, int> tries;
    std::map<std::int64_t, char> last;
    for (const std::int64_t position : carried_) {
      const int before = tries[position]++;
      ASSERT_TRUE(before == 0 || last[position] == 'd' || last[position] == 'c') << position;
      ASSERT_LE(before, setting.retries.times);
      const auto at = static_cast<std::size_t>(position - 1);
      const Fates& then = setting.then[position];
      last[position] = before == 0 ? setting.fates[at] : then[std::min<std::size_t>(before - 1, then.size() - 1)];
    }
    for (const auto& [position, fate] : last) {
      EXPECT_EQ(told_.states[position], StateOf(OutcomeOf(fate).state)) << position;
      EXPECT_EQ(kept_.states[position], told_.states[position]) << position;
    }
    EXPECT_EQ(std::ssize(told_.states) + told_.not_tried, std::ssize(setting.domains));
    EXPECT_EQ(summary_.sent + summary_.failed, std::ssize(told_.states));
    const auto sent = std::ranges::count(told_.states, ResultState::kSent, [](const auto& one) { return one.second; });
    EXPECT_EQ(summary_.sent, sent);
    EXPECT_EQ(std::ssize(kept_.tries), summary_.retries_left + summary_.not_their_doing)
        << "who was to be tried again is known";
    if (summary_.reached_its_end()) continue;
    EXPECT_TRUE(summary_.cancelled);
    EXPECT_EQ(summary_.retries_left + summary_.not_tried > 0, true);
  }
}

}  // namespace
}  // namespace quillcast::run
