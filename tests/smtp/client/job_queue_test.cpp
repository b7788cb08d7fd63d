// When a run is asked whether it makes sense to go on, and what becomes of jobs over several connections.
#include "smtp/client/job_queue.h"

#include <gtest/gtest.h>

#include "smtp/letters.h"

namespace quillcast::smtp {
namespace {

Outcome Refused(ResultCode code, int reply, State state = State::kRefused) {
  return {state, code, {reply, "5.7.1", "no"}, {}};
}

Outcome WithWhereabouts(Whereabouts whereabouts) {
  return {State::kFailed, ResultCode::kConnectionLost, {}, {}, whereabouts};
}

const Outcome kHungUp = WithWhereabouts(Whereabouts::kNotOut);

TEST(Breaker, AsksOnceTheSameRefusalHasComeOftenEnough) {
  struct Case {
    Outcome outcome;
    int first_asked;  // 0 for never
  };
  using enum ResultCode;
  for (const Case& c : std::initializer_list<Case>{{Refused(kSenderRefused, 550), 20},
                                                   {Refused(kSenderRefused, 530), 20},
                                                   {Refused(kGreetingRefused, 554), 20},
                                                   {Refused(kAuthRefused, 535), 3},
                                                   {{State::kFailed, kAuthNotOffered, {}, "no"}, 3},
                                                   {Refused(kAuthRefused, 454, State::kDeferred), 3},
                                                   {Refused(kSenderRefused, 451, State::kDeferred), 0},
                                                   {Refused(kRecipientRefused, 550), 0},
                                                   {Refused(kMessageRefused, 554), 0},
                                                   {Refused(kGreetingRefused, 421, State::kDeferred), 20},
                                                   {{State::kFailed, kGreetingRefused, {}, "not trusted"}, 20},
                                                   {{State::kFailed, kConnectFailed, {}, {}}, 20},
                                                   {{State::kFailed, kConnectionLost, {}, {}}, 20},
                                                   {{State::kUnknown, kConnectionLost, {}, {}}, 0},
                                                   {{State::kFailed, kReplyTimeout, {}, {}}, 0}}) {
    Breaker breaker;
    int asked = 0;
    for (int n = 1; n <= 50 && asked == 0; ++n) asked = breaker.TimeToAsk(c.outcome);
    EXPECT_EQ(asked, c.first_asked) << static_cast<int>(c.outcome.code) << " " << c.outcome.reply.code;
  }
}

TEST(Breaker, CountsOnlyTheSameInARow) {
  const Outcome refused = Refused(ResultCode::kSenderRefused, 550);
  for (const Outcome& between : {Refused(ResultCode::kSenderRefused, 553), Refused(ResultCode::kRecipientRefused, 550),
                                 Outcome{State::kSent, ResultCode::kSuccess, {}, {}}}) {
    Breaker breaker;
    for (int n = 0; n < 19; ++n) EXPECT_EQ(breaker.TimeToAsk(refused), 0);
    EXPECT_EQ(breaker.TimeToAsk(between), 0);
    for (int n = 0; n < 19; ++n) EXPECT_EQ(breaker.TimeToAsk(refused), 0);
    EXPECT_EQ(breaker.TimeToAsk(refused), 20);
    for (int n = 0; n < 19; ++n) EXPECT_EQ(breaker.TimeToAsk(refused), 0);
    EXPECT_EQ(breaker.TimeToAsk(refused), 40);
  }
}

// Over one more connection; where a way may be lost, what fails then waits until it is known whether it was.
TEST(JobQueue, MovesAMessageOnceForEachLoss) {
  enum class Found { kNothing, kLost, kThere, kStop };
  using enum Whereabouts;
  struct Case {
    const char* what;
    bool waits_for_way;
    std::vector<Whereabouts> losses;
    Found found;
    std::string told;  // n not tried, f failed, "" nothing yet
  };
  for (const Case& c :
       std::initializer_list<Case>{{"once", false, {kNotOut}, Found::kNothing, ""},
                                   {"twice", false, {kNotOut, kNotOut}, Found::kNothing, "f"},
                                   {"twice, and who knows why", true, {kNotOut, kNotOut}, Found::kNothing, ""},
                                   {"by itself", true, {kNotOut, kNotOut}, Found::kThere, "f"},
                                   {"by the way", true, {kNotOut, kNotOut}, Found::kLost, ""},
                                   {"by silence, and who knows why", true, {kSilent}, Found::kNothing, ""},
                                   {"by its silence", true, {kSilent}, Found::kThere, "f"},
                                   {"by the silence of the way", true, {kSilent}, Found::kLost, ""},
                                   {"a stop comes before that is known", true, {kSilent}, Found::kStop, "n"}}) {
    SCOPED_TRACE(c.what);
    const platform::CancelToken cancel;
    Letters letters(1);
    JobQueue queue(cancel, 1, c.waits_for_way);
    queue.Begin(letters);
    for (const auto again : c.losses) {
      ASSERT_NE(queue.Next(), nullptr);
      queue.Submitted();
      queue.Settle(0, WithWhereabouts(again));
    }
    if (c.found == Found::kLost) queue.WayLost();
    if (c.found == Found::kThere) queue.WayFound();
    if (c.found == Found::kStop) queue.Leave();
    std::string told;
    for (const Outcome& outcome : letters.outcomes) told += outcome.is_decided() ? 'f' : 'n';
    EXPECT_EQ(told, c.told);
    EXPECT_EQ(queue.empty(), !c.told.empty());
    if (c.found != Found::kLost) continue;
    ASSERT_NE(queue.Next(), nullptr) << "it goes again";
    queue.Submitted();
    queue.Settle(0, kHungUp);
    EXPECT_TRUE(letters.outcomes.empty()) << "and may lose its connection once more";
  }
}

// Several that are lost are no sign that the server takes nothing where it takes others, or may.
TEST(JobQueue, LosesAllWhereNoneIsDecidedBetween) {
  struct Case {
    const char* steps;  // of one after the other: lost 'x', sent 's', out over another connection 'o'; found out 't'
    bool all;
  };
  for (const Case& c : {Case{"xx", false}, Case{"xxx", true}, Case{"xtxtx", true}, Case{"xsxsx", false},
                        Case{"xxxo", false}, Case{"xxxsx", false}, Case{"xsxstx", false}, Case{"xxtxs", false}}) {
    SCOPED_TRACE(c.steps);
    const platform::CancelToken cancel;
    Letters letters(9);
    JobQueue queue(cancel, 2, true);
    queue.Begin(letters);
    for (const char step : std::string_view(c.steps)) {
      if (step == 't') {
        queue.WayFound();
        continue;
      }
      ASSERT_NE(queue.Next(), nullptr);
      queue.Submitted(step == 'o' ? 1 : 0);
      if (step == 'x') queue.Settle(0, WithWhereabouts(Whereabouts::kSilent));
      if (step == 's') queue.Settle(0, {State::kSent, ResultCode::kSuccess, {250, "2.0.0", "taken"}, {}});
    }
    EXPECT_EQ(queue.LosesAll(), c.all);
  }
}

class HeldLetters final : public Letters {
 public:
  using Letters::Letters;
  Passage MayGo(Job& job) override {
    asked += job.envelope.recipient.text()[1];
    return passages.at(static_cast<std::size_t>(job.envelope.recipient.text()[1] - '0'));
  }
  std::optional<platform::Instant> NextDue() override { return due; }
  std::vector<Passage> passages = {3, Passage::kAllHeld};  // of each of them
  std::string asked;
  std::optional<platform::Instant> due;
};

// Whoever came back, or waited for the way, goes once the source says so; meanwhile those behind go whom it lets go.
TEST(JobQueue, AsksBeforeOneGoesThatCouldNotGo) {
  using enum Passage;
  const platform::CancelToken cancel;
  HeldLetters letters(3);
  JobQueue queue(cancel);
  queue.Begin(letters);
  Job* const first = queue.Next();
  queue.Submitted();
  Job* const second = queue.Next();
  queue.Submitted();
  EXPECT_EQ(letters.asked, "") << "they are new";
  queue.Settle(0, kHungUp);
  queue.Settle(0, kHungUp);
  letters.due = platform::Instant(std::chrono::seconds(7));
  EXPECT_EQ(queue.Next(), nullptr);
  EXPECT_FALSE(queue.has_next());
  EXPECT_EQ(queue.due(), letters.due);
  EXPECT_EQ(letters.asked, "0");
  letters.passages = {kHeld, kFree, kFree};
  EXPECT_EQ(queue.Next(), second);
  EXPECT_EQ(queue.next_number(), 1U);
  EXPECT_FALSE(queue.due());
  queue.Submitted();
  Job* const third = queue.Next();
  ASSERT_NE(third, nullptr) << "a new one, too";
  queue.Submitted();
  EXPECT_EQ(queue.Next(), nullptr);
  EXPECT_EQ(queue.due(), letters.due);
  letters.passages[0] = kFree;
  letters.asked.clear();
  EXPECT_EQ(queue.Next(), first);
  EXPECT_EQ(queue.Next(), first);
  EXPECT_EQ(letters.asked, "0") << "once it may go it may";
  queue.WayLost();
  letters.passages[0] = kHeld;
  EXPECT_EQ(queue.Next(), nullptr);
  queue.Leave();
  queue.Settle(0, kHungUp);
  queue.Settle(0, kHungUp);
  ASSERT_EQ(letters.outcomes.size(), 3U) << "who is held is left as well";
  EXPECT_FALSE(letters.outcomes[0].is_decided());
}

// Those of a connection that was lost go before new ones, in the order taken; each is told in that order.
TEST(JobQueue, KeepsTheOrderOverSeveralConnections) {
  const Outcome sent{State::kSent, ResultCode::kSuccess, {}, {}};
  const platform::CancelToken cancel;
  Letters letters(6);
  JobQueue queue(cancel, 3);
  queue.Begin(letters);
  const auto recipient = [&] { return queue.Next()->envelope.recipient.text().substr(0, 2); };
  for (const std::size_t lane : {0, 1, 0, 1, 2}) {
    ASSERT_NE(queue.Next(), nullptr);
    queue.Submitted(lane);
  }
  queue.TellLine(0, 0, "of r0");
  queue.TellLine(1, 1, "of r3");
  queue.TellLine(1, 2, "of none");
  queue.Settle(1, kHungUp);  // r1
  queue.Settle(1, sent);     // r3
  queue.EndLines(1);
  queue.Settle(0, WithWhereabouts(Whereabouts::kNoRoom));  // r0
  EXPECT_EQ(letters.log, (std::vector<std::string>{"of r0"}));
  EXPECT_EQ(recipient(), "r0");
  queue.Submitted(2);
  EXPECT_EQ(recipient(), "r1");
  queue.Submitted(2);
  EXPECT_EQ(recipient(), "r5");
  EXPECT_FALSE(queue.HasOldest(0));
  EXPECT_FALSE(queue.HasOldest(2));
  queue.Settle(2, sent);  // r4
  EXPECT_TRUE(queue.HasOldest(2));
  EXPECT_TRUE(letters.outcomes.empty());
  queue.Settle(2, kHungUp);  // r0: what did not count is not held against it
  EXPECT_EQ(recipient(), "r0");
  queue.Submitted(1);
  queue.Settle(1, sent);
  EXPECT_EQ(letters.log, (std::vector<std::string>{"of r0", "of none"}));
  queue.Settle(2, kHungUp);                // r1, for the second time
  queue.Settle(0, sent);                   // r2
  EXPECT_EQ(letters.outcomes.size(), 5U);  // r5 was not submitted
  EXPECT_EQ(letters.outcomes[1].state, State::kFailed);
  EXPECT_EQ(letters.log, (std::vector<std::string>{"of r0", "of none", "of r3"}));
}

// One connection is slow: the others go so far ahead of it, and on once it has answered.
TEST(JobQueue, GoesSoFarAheadOfTheOldestAndNoFurther) {
  const Outcome sent{State::kSent, ResultCode::kSuccess, {}, {}};
  const platform::CancelToken cancel;
  Letters letters(JobQueue::kMostAhead + 10);
  JobQueue queue(cancel, 2);
  queue.Begin(letters);
  ASSERT_NE(queue.Next(), nullptr);
  queue.Submitted(0);
  std::size_t taken = 1;
  const auto take_all = [&] {
    for (; queue.Next() != nullptr; ++taken) {
      queue.Submitted(1);
      queue.Settle(1, sent);
    }
  };
  take_all();
  EXPECT_EQ(taken, JobQueue::kMostAhead);
  EXPECT_TRUE(letters.outcomes.empty());
  queue.Settle(0, sent);
  EXPECT_EQ(letters.outcomes.size(), JobQueue::kMostAhead);
  take_all();
  EXPECT_EQ(taken, JobQueue::kMostAhead + 10);
  EXPECT_TRUE(queue.empty());
}

}  // namespace
}  // namespace quillcast::smtp
