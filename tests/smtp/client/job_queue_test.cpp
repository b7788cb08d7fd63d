// When a run is asked whether it makes sense to go on.
#include "smtp/client/job_queue.h"

#include <gtest/gtest.h>

#include "smtp/letters.h"

namespace quillcast::smtp {
namespace {

Outcome Refused(ResultCode code, int reply, State state = State::kRefused) {
  return {state, code, {reply, "5.7.1", "no"}, {}};
}

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
                                                   {{State::kFailed, kConnectFailed, {}, {}}, 0}}) {
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

// What was on a connection before has begun, whether the stop found it on its second one or before that.
TEST(JobQueue, TellsAMessageThatLostAConnectionAsBegun) {
  const Outcome stopped{State::kFailed, ResultCode::kCancelled, {}, {}};
  for (const bool is_submitted : {true, false}) {
    const platform::CancelToken cancel;
    Letters letters(2);
    JobQueue queue(cancel);
    queue.Begin(letters);
    for (int n = 0; n < 2; ++n) {
      ASSERT_NE(queue.Next(), nullptr);
      queue.Submitted();
    }
    for (int n = 0; n < 2; ++n) queue.Settle({State::kFailed, ResultCode::kConnectionLost, {}, {}}, true);
    for (int n = 0; n < 2; ++n) {
      ASSERT_NE(queue.Next(), nullptr);
      if (is_submitted) queue.Submitted();
      if (is_submitted) queue.Settle(stopped, false);
      if (!is_submitted) queue.Fail(stopped);
    }
    ASSERT_EQ(letters.outcomes.size(), 2U);
    for (const Outcome& outcome : letters.outcomes) EXPECT_TRUE(outcome.begun) << is_submitted;
  }
}

}  // namespace
}  // namespace quillcast::smtp
