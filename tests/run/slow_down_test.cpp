// When a server's answer makes a run slower, how much, and how it gets faster again.
#include "run/slow_down.h"

#include <gtest/gtest.h>

#include "smtp/outcome.h"
#include "support/fake_clock.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;

smtp::Outcome Answer(int code, const char* enhanced, const char* text) {
  return smtp::VerdictOf(smtp::ResultCode::kRecipientRefused, {code, enhanced, text});
}

TEST(SlowDown, HearsWhoAsksForFewerMessages) {
  const struct {
    int code;
    const char* enhanced;
    const char* text;
    bool is_asked;
    bool of_connection = false;  // where the message goes over another one, that is the remedy
  } kCases[] = {
      {421, "", "Too many messages from your address", true},
      {421, "4.7.28", "An unusual rate of mail comes from your address", true},
      {451, "4.7.650", "The address was temporarily rate limited", true},
      {421, "4.7.0", "deferred due to unexpected volume", true},
      {451, "", "Sending RATE exceeded", true},
      {452, "4.3.1", "throttled", true},
      {451, "4.3.2", "please slow down", true},
      {421, "4.7.0", "Rate limit exceeded, closing connection", true},
      {421, "4.7.0", "Rate limit exceeded; closing this session", true},
      {421, "4.7.0", "Too many messages over this Connection", true, true},
      {452, "4.5.3", "too many messages in a session", true, true},
      {451, "4.3.0", "lookup failed", false},
      {450, "4.7.1", "try again later", false},
      {451, "4.7.650", "", false},
      {432, "4.7.12", "a password is needed", false},
      {450, "4.2.0", "greylisted, try again later", false},
      {451, "4.7.1", "Greylisted, try again later", false},
      {450, "4.7.1", "Graylisting in effect: too many unknown senders", false},
      {451, "", "Grey-listed, do not send too fast", false},
      {421, "4.3.0", "shutting down", false},
      {452, "4.2.2", "mailbox limit exceeded", false},
      {452, "", "quota of the mailbox exceeded", false},
      {454, "", "too many", false},
      {550, "5.7.1", "too many messages", false},
      {550, "4.7.1", "too many messages", false},
      {250, "2.0.0", "too many thanks", false},
      {0, "", "", false},
  };
  const test::FakeClock clock;
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.text);
    const smtp::Outcome answer = Answer(each.code, each.enhanced, each.text);
    EXPECT_EQ(SlowDown::IsAskedBy(answer), each.is_asked);
    SlowDown slow_down(clock);
    slow_down.WentOut();
    EXPECT_EQ(slow_down.CameBack(answer).has_value(), each.is_asked && !each.of_connection);
  }
}

// A run with something to send at any time, by a clock that moves ten milliseconds at a time.
class SlowRun : public testing::Test {
 protected:
  // The messages that went out in so long.
  int GoOnFor(platform::Duration time) {
    int messages = 0;
    for (const auto end = clock_.monotonic + time; clock_.monotonic < end; clock_.monotonic += 10ms) {
      if (const auto said = slow_down_.GoFaster()) said_.push_back(said->InEnglish());
      if (slow_down_.Due() > clock_.monotonic) continue;
      slow_down_.Taken();
      slow_down_.WentOut();
      ++messages;
    }
    return messages;
  }
  bool Complain() {
    const auto said = slow_down_.Decided(Answer(450, "4.7.1", "slow down"));
    if (said) said_.push_back(said->InEnglish());
    return said.has_value();
  }

  test::FakeClock clock_;
  SlowDown slow_down_{clock_};
  std::vector<std::string> said_;
};

TEST_F(SlowRun, GoesHalfAsFastAndATenthFasterEachQuietMinute) {
  EXPECT_EQ(GoOnFor(10s), 1000);
  EXPECT_TRUE(Complain());
  EXPECT_FALSE(Complain()) << "what was on its way has the same answer";
  EXPECT_NEAR(GoOnFor(9s), 450, 20);
  EXPECT_FALSE(Complain());
  EXPECT_NEAR(GoOnFor(2s), 100, 5);
  EXPECT_TRUE(Complain()) << "the next after ten seconds";
  EXPECT_NEAR(GoOnFor(59s), 1475, 75);
  EXPECT_FALSE(slow_down_.Decided(Answer(250, "2.0.0", "taken"))) << "who is content asks for nothing";
  GoOnFor(1s);
  const int before = GoOnFor(30s);
  EXPECT_NEAR(before, 25 * 30 * 1.1, 60);
  EXPECT_EQ(std::count_if(said_.begin(), said_.end(), [](const auto& one) { return one.starts_with("No complaint"); }),
            1);
  EXPECT_EQ(said_.front(),
            "The server asks for fewer messages: 450 4.7.1 slow down. The run goes slower from now on, up to 3,000 "
            "messages a minute.");
  GoOnFor(15min);  // 1.1 to the 15th is more than four
  EXPECT_FALSE(slow_down_.Due());
  EXPECT_TRUE(said_.back().ends_with("as fast as it did at first.")) << said_.back();
  EXPECT_EQ(GoOnFor(1s), 100);
}

TEST_F(SlowRun, SendsAMessageAMinuteHoweverOftenTheServerComplains) {
  GoOnFor(100ms);
  for (int n = 0; n < 40; ++n) {
    Complain();
    GoOnFor(30s);
  }
  const auto told = said_.size();
  for (int n = 0; n < 10; ++n) EXPECT_FALSE(Complain());
  EXPECT_EQ(said_.size(), told) << "nothing is told where nothing changes";
  int messages = 0;
  for (int n = 0; n < 20; ++n) {
    messages += GoOnFor(30s);
    Complain();
  }
  EXPECT_NEAR(messages, 10, 1);
}

}  // namespace
}  // namespace quillcast::run
