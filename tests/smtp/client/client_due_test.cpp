// Letters that are not due yet: when they go out, over which connection, and what ends the wait.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <thread>

#include "smtp/client/client.h"
#include "smtp/letters.h"
#include "smtp/scripted_server.h"

namespace quillcast::smtp {
namespace {

using namespace std::chrono_literals;
using platform::Duration;
using platform::Instant;

// The system's, and whatever the test has it leap.
class LeapingClock final : public platform::Clock {
 public:
  std::chrono::system_clock::time_point Now() const override { return system_.Now(); }
  Instant Monotonic() const override { return system_.Monotonic() + leapt; }
  std::tm Local(std::chrono::system_clock::time_point moment) const override { return system_.Local(moment); }
  Duration leapt{};

 private:
  platform::SystemClock system_;
};

// Each letter is due so long after the one before it was taken.
class TimedLetters : public Letters {
 public:
  TimedLetters(LeapingClock& clock, std::vector<Duration> waits)
      : Letters(static_cast<int>(waits.size()), {}, Size::kKnown), clock_(clock), waits_(std::move(waits)) {}
  Job* NextJob() override {
    ++asked;
    if (taken.size() < waits_.size() && clock_.Monotonic() < Due()) return nullptr;
    Job* job = Letters::NextJob();
    if (job != nullptr) taken.push_back(clock_.Monotonic());
    return job;
  }
  std::optional<Instant> NextDue() override {
    if (taken.size() == waits_.size()) return {};
    return named.value_or(Due());
  }
  Instant Due() const { return (taken.empty() ? began_ : taken.back()) + waits_[taken.size()]; }

  std::vector<Instant> taken;
  std::optional<Instant> named;  // in place of the moment
  int asked = 0;

 private:
  LeapingClock& clock_;
  std::vector<Duration> waits_;
  Instant began_ = clock_.Monotonic();
};

// Takes everything, and keeps what was said over each connection. `closes`: after so many messages over the first.
class Taker {
 public:
  explicit Taker(int closes = -1, bool waits_for_the_third = false)
      : closes_(closes),
        waits_for_the_third_(waits_for_the_third),
        server_([this](Peer& peer, int number) { Serve(peer, number == 0 ? closes_ : -1); }) {}
  ClientOptions Options() const {
    ClientOptions options;
    options.servers = {{"127.0.0.1", server_.port()}};
    options.timeout = 5s;
    options.pipeline = true;
    return options;
  }
  std::vector<std::vector<std::string>> said() {
    const std::lock_guard lock(mutex_);
    return said_;
  }

 private:
  void Serve(Peer& peer, int closes) {
    const auto heard = [this](const std::string& line) {
      const std::lock_guard lock(mutex_);
      said_.back().push_back(line);
    };
    {
      const std::lock_guard lock(mutex_);
      said_.emplace_back();
    }
    peer.Say("220 ESMTP\r\n");
    int messages = 0;
    std::string held;
    for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
      heard(line.substr(0, 4));
      if (line.starts_with("BDAT")) peer.Octets(static_cast<std::size_t>(std::stoi(line.substr(5))));
      messages += line.starts_with("BDAT") ? 1 : 0;
      const std::string reply = line.starts_with("EHLO")   ? "250-ok\r\n250-PIPELINING\r\n250 CHUNKING\r\n"
                                : line.starts_with("BDAT") ? "250 taken\r\n"
                                                           : "250 ok\r\n";
      if (waits_for_the_third_ && messages == 2) {
        held += reply;
        continue;
      }
      peer.Say(std::exchange(held, {}) + reply);
      if (line == "QUIT" || messages == closes) return;
    }
  }

  const int closes_;
  const bool waits_for_the_third_;
  std::mutex mutex_;
  std::vector<std::vector<std::string>> said_;
  ScriptedServer server_;
};

struct Row {
  const char* name;
  std::vector<Duration> waits;
  Duration leap;                 // the clock, in each wait that is told
  int closes;                    // the server, the first connection
  std::vector<int> connections;  // messages over each
  bool quits = true;             // the first ends with QUIT
};

TEST(ClientDue, EachGoesWhenItIsDueOverTheConnectionThatWasWorthKeeping) {
  for (const Row& row : std::initializer_list<Row>{
           {"at once", {0s, 0s, 0s}, 0s, -1, {3}},
           {"a short while", {0s, 120ms, 120ms}, 0s, -1, {3}},
           {"half a minute nearly", {0s, 29s, 0s, 29s}, 30s, -1, {4}},
           {"half a minute", {0s, 0s, 31s, 0s}, 40s, -1, {2, 2}},
           {"before the first", {40s, 0s}, 50s, -1, {2}},
           {"the server hangs up", {0s, 200ms, 0s}, 0s, 1, {1, 2}, false},
       }) {
    SCOPED_TRACE(row.name);
    LeapingClock clock;
    TimedLetters letters(clock, row.waits);
    letters.on_waiting = [&] {
      const bool nothing_is_in_flight = letters.outcomes.size() == letters.taken.size();
      const bool one_is_left = letters.taken.size() < row.waits.size();
      if (nothing_is_in_flight && one_is_left && clock.Monotonic() < letters.Due()) clock.leapt += row.leap;
    };
    const platform::CancelToken cancel;
    std::vector<std::vector<std::string>> said;
    {
      Taker taker(row.closes);
      Client(taker.Options(), clock, cancel).Run(letters);
      said = taker.said();
    }
    ASSERT_EQ(letters.outcomes.size(), row.waits.size());
    for (const Outcome& outcome : letters.outcomes) EXPECT_EQ(outcome.state, State::kSent);
    std::vector<int> connections;
    for (const auto& lines : said) connections.push_back(static_cast<int>(std::ranges::count(lines, "BDAT")));
    EXPECT_EQ(connections, row.connections);
    EXPECT_EQ(said.front().back() == "QUIT", row.quits);
    for (std::size_t n = 1; n < row.waits.size(); ++n) EXPECT_GE(letters.taken[n] - letters.taken[n - 1], row.waits[n]);
    EXPECT_LE(letters.asked, 25) << "it was asked in a busy loop";
  }
}

// What is due goes out while others are in flight: this server answers the second only once it has the third.
TEST(ClientDue, NoReplyIsWaitedForWhereOneIsDue) {
  LeapingClock clock;
  TimedLetters letters(clock, {0s, 0s, 100ms});
  const platform::CancelToken cancel;
  Taker taker(-1, true);
  Client(taker.Options(), clock, cancel).Run(letters);
  ASSERT_EQ(letters.outcomes.size(), 3U);
  for (const Outcome& outcome : letters.outcomes) EXPECT_EQ(outcome.state, State::kSent);
  EXPECT_LE(letters.asked, 20);
}

// The moment that a source names need not be kept, in either direction.
TEST(ClientDue, ASourceMayChangeItsMind) {
  for (const bool is_late : {true, false}) {
    LeapingClock clock;
    TimedLetters letters(clock, {0s, 100ms});
    letters.named = is_late ? Instant::max() : Instant::min();
    const platform::CancelToken cancel;
    Taker taker;
    Client(taker.Options(), clock, cancel).Run(letters);
    ASSERT_EQ(letters.outcomes.size(), 2U);
    EXPECT_LE(letters.taken[1] - letters.taken[0], 10s);
    EXPECT_LE(letters.asked, 300) << "it was asked in a busy loop";
  }
}

// An outcome may bring another letter, though there were none left: one that is tried again.
TEST(ClientDue, AnOutcomeMayBringAnother) {
  class Retrying : public Letters {
   public:
    Retrying() : Letters(2) {}
    Job* NextJob() override { return taken_ > outcomes.size() ? nullptr : (++taken_, Letters::NextJob()); }

   private:
    std::size_t taken_ = 0;
  };
  const LeapingClock clock;
  const platform::CancelToken cancel;
  Retrying letters;
  Taker taker;
  Client(taker.Options(), clock, cancel).Run(letters);
  EXPECT_EQ(letters.outcomes.size(), 2U);
}

TEST(ClientDue, AStopEndsTheWaitAtOnce) {
  for (const bool is_first : {true, false}) {
    LeapingClock clock;
    TimedLetters letters(clock, {is_first ? Duration(20s) : 0s, 20s});
    platform::CancelToken cancel;
    Taker taker;
    std::thread person;
    letters.on_waiting = [&] {
      if (person.joinable()) return;
      person = std::thread([&cancel] {
        std::this_thread::sleep_for(50ms);
        cancel.Request();
      });
    };
    const auto began = clock.Monotonic();
    Client(taker.Options(), clock, cancel).Run(letters);
    EXPECT_LT(clock.Monotonic() - began, 10s);
    person.join();
    EXPECT_EQ(letters.outcomes.size(), is_first ? 0U : 1U);
  }
}

}  // namespace
}  // namespace quillcast::smtp
