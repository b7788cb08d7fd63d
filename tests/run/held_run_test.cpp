// A run that a person holds for a while: what is under way comes to its end, nobody else is come to, and nobody is
// lost.
#include <gtest/gtest.h>

#include <random>

#include "run/paced_run.h"

namespace quillcast::run {
namespace {

class HeldRun : public PacedRun {
 protected:
  // Held from before that step of the carrier on, until it was asked so many times while nothing was under way.
  std::function<void(FakeCarrier&)> Holds(int from_step, int asked, bool then_cancels = false) {
    return [=, this](FakeCarrier& carrier) {
      is_held_ = false;
      waits_ = 0;
      carrier.at_step = [=, this](int step) {
        if (step == 1) told_.is_held = [this] { return is_held_; };
        if (step == from_step) is_held_ = true;
      };
      carrier.waits_until = [=, this, passes = carrier.waits_until](platform::Instant due) {
        passes(due);
        if (!is_held_ || ++waits_ < asked) return;
        is_held_ = false;
        if (then_cancels) cancel_->Request();
      };
    };
  }

  bool is_held_ = false;
  int waits_ = 0;
};

TEST_F(HeldRun, EndsWhatIsUnderWayAndGoesOnWhereItWas) {
  Run({.domains = "aaaaa", .window = 2, .change = Holds(3, 10)});
  EXPECT_EQ(Times(), "1@0 2@0 3@5 4@5 5@5 ");
  EXPECT_EQ(told_.held, (std::vector<std::int64_t>{1, 0}));
  EXPECT_EQ(told_.let_go, 1);
  EXPECT_TRUE(told_.waits.empty());
  EXPECT_TRUE(summary_.everybody_got_it());

  // Who is due meanwhile goes right behind, and the pace holds then as ever.
  Run({.domains = "ab", .retries = {1, 2s}, .fates = "ds", .then = {{1, "s"}}, .change = Holds(5, 20)});
  EXPECT_EQ(Times(), "1@0 2@0 1@10 ");
  Run({.domains = "aaa", .rules = {.rate = MessageLimit{1, 4s}}, .change = Holds(2, 20)});
  EXPECT_EQ(Times(), "1@0 2@10 3@14 ");
}

TEST_F(HeldRun, CountsNobodyAsUnderWayWhoseConnectionIsLost) {
  Run({.domains = "aa", .change = [&](FakeCarrier& carrier) {
         Holds(1'000'000, 10)(carrier);
         carrier.comes_back = {{1, 1}};
         carrier.is_back = [&](std::int64_t) { is_held_ = true; };
       }});
  EXPECT_EQ(told_.held, std::vector<std::int64_t>{0});
  EXPECT_EQ(told_.let_go, 1);
  EXPECT_TRUE(summary_.everybody_got_it());
}

TEST_F(HeldRun, IsCancelledAtOnceAndNamesWhoWasLeft) {
  Run({.domains = "aaaaa", .window = 2, .change = Holds(3, 1, true)});
  EXPECT_EQ(told_.sent, Places(1, 2));
  EXPECT_EQ(told_.not_tried, 3);
  EXPECT_TRUE(summary_.cancelled);
  EXPECT_TRUE(kept_.ended);
}

TEST_F(HeldRun, EndsByItselfWhereNobodyIsLeft) {
  Run({.domains = "aaa", .window = 3, .change = Holds(4, 1'000'000)});
  EXPECT_TRUE(summary_.everybody_got_it());
  EXPECT_EQ(waits_, 0);
}

TEST_F(HeldRun, LosesAndDoublesNobody) {
  std::mt19937 random(5);
  for (int round = 0; round < 200 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    Setting setting{.window = 1 + random() % 4};
    for (std::size_t n = 2 + random() % 20; n > 0; --n) {
      setting.domains += "aabcx"[random() % 5];
      setting.fates += "sddr"[random() % 4];
    }
    if (random() % 2 == 0) setting.rules.rate = MessageLimit{3, 1s};
    if (random() % 2 == 0) setting.rules.per_domain = MessageLimit{2, 20s};
    setting.slow_down = random() % 2 == 0;
    setting.change = Holds(static_cast<int>(random() % 60), 1 + static_cast<int>(random() % 30), random() % 3 == 0);
    Run(setting);
    EXPECT_LE(told_.let_go, 1);
    EXPECT_TRUE(summary_.cancelled || told_.not_tried == 0);
  }
}

}  // namespace
}  // namespace quillcast::run
