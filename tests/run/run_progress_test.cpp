// What is shown of a run while it goes: how far it is, how fast, and what it waits for, by a clock that the test moves.
#include "run/run_progress.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "support/fake_clock.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;

class Progress : public testing::Test {
 protected:
  void Pass(platform::Duration time) {
    clock_.now += time;
    clock_.monotonic += time;
  }
  void Tell(int tries, bool again) { progress_->Finished({1, "", {}, tries, again}); }
  // So many results, one each `step`, with a look at each.
  void Tell(int results, platform::Duration step, int tries = 1, bool again = false) {
    for (int n = 0; n < results; ++n) {
      Pass(step);
      progress_->GoesOut();
      Tell(tries, again);
      progress_->Now();
    }
  }
  std::string Line() { return progress_->Now().line.InEnglish(); }
  std::string Count() {
    const auto look = progress_->Now();
    return std::to_string(look.done) + "+" + std::to_string(look.again) + "/" + std::to_string(look.total);
  }
  std::string Waits(platform::Duration time) {
    progress_->Waits("Why.", clock_.now + time);
    return Line();
  }

  test::FakeClock clock_;
  std::optional<RunProgress> progress_{clock_};
};

TEST_F(Progress, CountsWhoIsTriedAgainOnceAndWhenItIsOver) {
  progress_->Begins(3);
  EXPECT_EQ(Count(), "0+0/3");
  Tell(1, false);
  Tell(1, true);
  Tell(1, true);
  EXPECT_EQ(Count(), "1+2/3");
  Tell(2, true);
  EXPECT_EQ(Count(), "1+2/3");
  Tell(3, false);
  EXPECT_EQ(Count(), "2+1/3");
  progress_->Ends();
  EXPECT_EQ(Count(), "2+0/3") << "who was to be tried again is not any more";
}

TEST_F(Progress, TellsAWaitUntilItsTimeAlone) {
  progress_->Begins(300);
  Tell(300, 50ms, 1, true);
  EXPECT_EQ(Waits(30s).substr(0, 12), "Waits until ");
  Pass(29'900ms);
  EXPECT_EQ(Line().substr(0, 12), "Waits until ");
  EXPECT_EQ(Waits(100ms).substr(0, 12), "Waits until ") << "told anew, it is the same wait";
  Pass(100ms);
  EXPECT_EQ(Line(), "20 messages a second, at least 15 seconds left");
  // Each is due a little later than the one before it, and they go out meanwhile.
  for (int n = 0; n < 130; ++n) {
    Pass(100ms);
    Tell(2, false);
    EXPECT_NE(Waits(50ms).substr(0, 5), "Waits") << n;
  }
  EXPECT_EQ(Line(), "10 messages a second, at least 17 seconds left");
  EXPECT_EQ(Waits(60s).substr(0, 12), "Waits until ");
  progress_->GoesOut();
  EXPECT_NE(Line().substr(0, 5), "Waits");
}

TEST_F(Progress, CountsNoTimeInWhichARunDoesNotWork) {
  struct Case {
    const char* what;
    std::function<void()> pauses;
  };
  const Case kCases[] = {{"for another try",
                          [&] {
                            Waits(45s);
                            Pass(45s);
                          }},
                         {"without a way",
                          [&] {
                            progress_->WayLost("Lost.", clock_.now + 30s);
                            Pass(30s);  // and then it is tried, in vain first
                            progress_->WayLost("Lost.", clock_.now + 15s);
                            Pass(15s);
                          }},
                         {"asked",
                          [&] {
                            progress_->Asks();
                            Pass(45s);
                            progress_->Answered();
                          }},
                         {"held", [&] {
                            progress_->IsHeld(RunProgress::UnderWay::kNothing);
                            Pass(45s);
                            progress_->IsLetGo();
                          }}};
  for (const Case& c : kCases) {
    progress_->Begins(20);
    Tell(20, 100ms, 1, true);
    c.pauses();
    Tell(20, 100ms, 2);
    progress_->Ends();
    EXPECT_EQ(Line(), "10 messages a second") << c.what;
    progress_.emplace(clock_);
  }
  progress_->Begins(20);
  Tell(20, 100ms);
  progress_->Asks();
  EXPECT_EQ(Line(), "") << "nobody is sent to while a person is asked";
  progress_.emplace(clock_);
  progress_->Begins(20);  // a pace is how fast it goes
  for (int n = 0; n < 20; ++n) {
    Waits(2s);
    Tell(1, 2s);
  }
  progress_->Ends();
  EXPECT_EQ(Line(), "0.5 messages a second");
}

TEST_F(Progress, TellsNoMoreThanALimitLetsOut) {
  struct Case {
    int messages;
    std::chrono::seconds within;
    const char* line;
  };
  for (const Case& c : {Case{20, 1s, "20 messages a second"}, {30, 60s, "0.5 messages a second"}}) {
    progress_.emplace(clock_);
    progress_->KeepsTo({c.messages, c.within});
    progress_->Begins(1000);
    for (int stretch = 0; stretch < 12; ++stretch) {
      for (int n = 0; n < c.messages; ++n) {
        Tell(1, 10ms);
        const std::string line = Line();
        EXPECT_TRUE(line.empty() || line.starts_with(c.line)) << line << " in stretch " << stretch;
      }
      Pass(c.within - c.messages * 10ms);
    }
    progress_->Ends();
    EXPECT_EQ(Line(), c.line);
  }
}

TEST_F(Progress, SaysHowItIsHeld) {
  progress_->Begins(1200);
  Tell(1000, 1ms);
  Waits(60s);
  progress_->IsHeld(RunProgress::UnderWay::kSomething);
  EXPECT_EQ(Line(), "Pausing as soon as what is under way has its answer.");
  Tell(1, 1ms);
  progress_->IsHeld(RunProgress::UnderWay::kNothing);
  EXPECT_EQ(Line(), "Paused. 1,001 of 1,200 are done.");
  progress_->IsLetGo();
  EXPECT_NE(Line().substr(0, 5), "Pause");
  progress_->IsHeld(RunProgress::UnderWay::kNothing);
  progress_->Ends();
  EXPECT_NE(Line().substr(0, 5), "Pause");
}

TEST_F(Progress, SaysThatTheWayIsLostWhateverThePersonDoes) {
  const auto waits = [&] { return Line().substr(0, 12); };
  progress_->Begins(30);
  Tell(10, 100ms);
  progress_->WayLost("Lost.", clock_.now + 30s);
  EXPECT_EQ(waits(), "Waits until ");
  progress_->IsHeld(RunProgress::UnderWay::kSomething);
  EXPECT_EQ(Line(), "Paused. 10 of 30 are done. The way to the server is lost, and is tried again when you go on.");
  progress_->IsLetGo();
  EXPECT_EQ(waits(), "Waits until ");
  Pass(30s);
  EXPECT_EQ(Line(), "The way to the server was lost, and is being tried now.");
  Tell(1, 100ms);  // which belong to the wait
  EXPECT_EQ(Line(), "11 messages a second, 2 seconds left");
  progress_->WayLost("Lost.", clock_.now + 30s);
  Waits(100ms);
  EXPECT_EQ(Line(), "11 messages a second, 2 seconds left") << "whoever waits for the pace has found a way";
}

}  // namespace
}  // namespace quillcast::run
