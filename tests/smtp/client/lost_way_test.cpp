// A network that is lost under way: who waits for it, how long, and who fails.
#include "smtp/client/lost_way.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "smtp/client/client.h"
#include "smtp/letters.h"
#include "smtp/scripted_server.h"
#include "smtp/side_by_side.h"

namespace quillcast::smtp {
namespace {

using namespace std::chrono_literals;

class PatientLetters final : public Letters {
 public:
  using Letters::Letters;
  void WayLost(const Outcome& why, platform::Instant until) override {
    EXPECT_NE(why.state, State::kSent);
    EXPECT_GT(until, clock_.Monotonic());
    ++times_lost;
    if (on_lost) on_lost();
  }
  void ComesBack(Job& job, const Outcome& /*why*/) override {
    EXPECT_NE(job.message, nullptr);
    ++times_back;
  }
  void WayGivenUp(const Outcome& why) override {
    EXPECT_NE(why.state, State::kSent);
    ++times_given_up;
  }
  int times_lost = 0;
  int times_back = 0;
  int times_given_up = 0;
  std::function<void()> on_lost;

 private:
  platform::SystemClock clock_;
};

// Takes so many messages, then hangs up between two of them.
void Take(Peer& peer, int messages) {
  peer.Say("220 ESMTP\r\n");
  for (std::string line = peer.Line(); !line.empty() && line != "QUIT"; line = peer.Line()) {
    if (line.starts_with("MAIL") && messages-- == 0) return;
    peer.Say(line == "DATA" ? "354 go\r\n" : "250 ok\r\n");
    if (line != "DATA") continue;
    peer.Message();
    peer.Say("250 taken\r\n");
  }
}

TEST(LostWay, CountsNoTimeInWhichTheRunWasHeld) {
  const Outcome refused{State::kFailed, ResultCode::kConnectFailed, {}, ""};
  const platform::Instant began{};
  LostWay way(20s, true);
  ASSERT_TRUE(way.Outlasts(refused, began, 0s));
  const auto goes_on = *way.again() + 1h;
  way.Tries(goes_on, 0s);
  EXPECT_TRUE(way.Outlasts(refused, goes_on, 0s)) << "nobody was due";
  way.Tries(goes_on + 12s, 12s);
  EXPECT_TRUE(way.Outlasts(refused, goes_on + 12s, 12s)) << "held, also before it could be tried";
  way.Tries(goes_on + 30s, 30s);
  EXPECT_TRUE(way.Outlasts(refused, goes_on + 30s, 30s)) << "held once more";
  way.Tries(*way.again(), 30s);
  EXPECT_TRUE(way.Outlasts(refused, goes_on + 44s, 30s)) << "15 seconds without those";
  way.Tries(*way.again(), 30s);
  EXPECT_TRUE(way.Outlasts(refused, goes_on + 50s, 42s)) << "held while it was tried";
  way.Tries(*way.again(), 42s);
  EXPECT_FALSE(way.Outlasts(refused, goes_on + 65s, 42s));
  EXPECT_TRUE(way.is_over());
}

TEST(LostWay, IsWaitedForWhereItWasThere) {
  struct Case {
    const char* what;
    std::string connections;  // of each: '3' takes three messages, '9' all, '-' hangs up at once, '4' refuses for now,
                              // '^' takes three and is silent then, 'h' says what is no SMTP, 'm' hangs up at MAIL,
                              // 's' greets late and takes all, 'S' does and is silent, 'M' hangs up at MAIL
    std::chrono::seconds wait;
    std::string states;  // s sent, f failed, d deferred, n not tried
    int times_lost;
    bool cancels = false;
    bool was_there = false;
  };
  const std::vector<Case> cases = {
      Case{"comes again", "3--9", 60s, "sssssss", 2},
      Case{"twice", "3-3-9", 60s, "sssssss", 2},
      Case{"not asked for", "3---------", 0s, "sssffff", 0},
      Case{"stays away: the rest is left", "3---------", 1s, "sssn", 1},
      Case{"was never there", "-9", 60s, "fssssss", 0},
      Case{"was there before", "-9", 60s, "sssssss", 1, false, true},
      Case{"was there before, and stays away", "----------", 1s, "n", 1, false, true},
      Case{"was there before, and not waited for", "-9", 0s, "fssssss", 0, false, true},
      Case{"says that it is busy", "349", 60s, "sssssss", 1},
      Case{"is busy, and was never there", "49", 60s, "dssssss", 0},
      Case{"lets in and hangs up for a while", "3mmmmmm9", 60s, "sssssss", 1},
      Case{"hangs up on three in a row", "3mmmmmmmmmmmmmmm9", 2s, "sssfffs", 2},
      Case{"comes again and is busy first", "3-49", 60s, "sssssss", 2},
      Case{"something else answers meanwhile", "3h9", 60s, "sssssss", 1},
      Case{"cancelled meanwhile", "3---------", 60s, "sssn", 1, true},
      Case{"is silent to one, and lets others in", "^9", 60s, "sssfsss", 0},
      Case{"is silent and away", "^-9", 60s, "sssssss", 1},
      Case{"is silent, and lets others in late", "^s", 60s, "sssssss", 0},
      Case{"always lets in late, and is silent", "SSS9", 60s, "ffsssss", 0},
      Case{"always lets in late, and hangs up on one message", "MMMs", 60s, "fssssss", 0},
      Case{"lost thrice under the same message", "m-m-m-9", 60s, "sssssss", 3},
      Case{"hangs up on one message", "mm9", 60s, "fssssss", 0},
      Case{"is silent, and not waited for", "^9", 0s, "sssfsss", 0},
  };
  PlaySideBySide(cases, 12, [](const Case& c) {
    SCOPED_TRACE(c.what);
    PatientLetters letters(7);
    platform::CancelToken cancel;
    letters.on_lost = [&] {
      if (c.cancels) cancel.Request();
    };
    ScriptedServer server([&](Peer& peer, int number) {
      const char kind = c.connections.at(static_cast<std::size_t>(number));
      if (kind == '4') peer.Say("421 4.3.2 busy\r\n");
      if (kind == 'h') peer.Say("HTTP/1.1 302 Found\r\n");
      if (kind == '^') Take(peer, 3), peer.Stall();
      if (kind == 'm') Take(peer, 0);
      const bool is_late = kind == 's' || kind == 'S' || kind == 'M';
      if (is_late) std::this_thread::sleep_for(1200ms), Take(peer, kind == 's' ? 9 : 0);
      if (kind == 'S') peer.Stall();
      if (kind == '3' || kind == '9') Take(peer, kind - '0');
    });
    ClientOptions options;
    options.servers = {{"127.0.0.1", server.port()}};
    options.timeout = 3s;
    options.network_wait = c.wait;
    options.way_was_there = c.was_there;
    const platform::SystemClock clock;
    const auto began = clock.Monotonic();
    Client(options, clock, cancel).Run(letters);
    EXPECT_LT(clock.Monotonic() - began, 60s);
    std::string states;
    for (const Outcome& outcome : letters.outcomes) {
      states.push_back(outcome.is_decided() ? Name(outcome.state)[0] : 'n');
    }
    EXPECT_EQ(states, c.states);
    EXPECT_EQ(letters.times_lost, c.times_lost);
    EXPECT_EQ(letters.times_given_up > 0, c.wait == 1s);
    const char first = c.connections[0];
    EXPECT_EQ(letters.times_back > 0,
              first == '3' || first == 'm' || first == 'S' || first == 'M' || (first == '^' && c.wait > 0s))
        << "a journal had it as out";
  });
}

}  // namespace
}  // namespace quillcast::smtp
