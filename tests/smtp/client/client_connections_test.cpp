// How many connections a run opens, how many messages go over each, and that none is held up or harmed by another.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "smtp/client/client.h"
#include "smtp/letters.h"
#include "smtp/scripted_server.h"
#include "smtp/side_by_side.h"

namespace quillcast::smtp {
namespace {

using namespace std::chrono_literals;

constexpr const char* kPlain = "250 mx\r\n";
constexpr const char* kChunking = "250-mx\r\n250-PIPELINING\r\n250 CHUNKING\r\n";

ClientOptions OptionsFor(std::uint16_t port, std::size_t connections = 1) {
  ClientOptions options;
  options.servers = {{"127.0.0.1", port}};
  options.timeout = 2s;
  options.pipeline = true;
  options.connections = connections;
  return options;
}

void SendAll(const ClientOptions& options, Letters& letters, const platform::CancelToken& cancel = {}) {
  const platform::SystemClock clock;
  Client(options, clock, cancel).Run(letters);
}

// What a server does in place of the reply to a line ("" for the greeting, "." for a message), or ahead of the octets
// of a message ("<"). True ends the connection.
using Instead = std::function<std::optional<bool>(Peer&, const std::string& line)>;

// Takes everything that comes over a connection, until QUIT, and calls `took` with the first line of each message.
// Gives how many messages those were; -1 without a QUIT.
int TakeAll(Peer& peer, const char* offers, const Instead& instead = {},
            const std::function<void(const std::string&)>& took = {}) {
  int messages = 0;
  const auto ends = [&](const std::string& line, const char* reply) {
    const auto done = instead ? instead(peer, line) : std::nullopt;
    if (!done) peer.Say(reply);
    return done.value_or(false);
  };
  if (ends("", "220 ESMTP\r\n")) return -1;
  for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
    const bool chunk = line.starts_with("BDAT");
    if (line == "DATA") peer.Say("354 go\r\n");
    if ((chunk || line == "DATA") && instead && instead(peer, "<").value_or(false)) return -1;
    std::string message = chunk ? peer.Octets(static_cast<std::size_t>(std::stoi(line.substr(5)))) : "";
    if (line == "DATA") message = peer.Message();
    if (!message.empty() && ++messages > 0 && took) took(message.substr(0, message.find_first_of("\r\n")));
    const char* reply = !message.empty() ? "250 taken\r\n" : line.starts_with("EHLO") ? offers : "250 ok\r\n";
    if (ends(message.empty() ? line : ".", reply)) return -1;
    if (line == "QUIT") return messages;
  }
  return -1;
}

// A server that serves all its connections at once, and keeps account of them. `instead` is asked for each of them.
struct Busy {
  explicit Busy(std::function<Instead(int number)> instead, const char* offers = kPlain) {
    server.emplace(
        [this, instead, offers](Peer& peer, int number) {
          Count(+1);
          bool has_left = false;  // before the client hears of it, and comes again
          const auto count_leaving = [&, own = instead(number)](Peer& from, const std::string& line) {
            if (line == "QUIT" && !std::exchange(has_left, true)) Count(-1);
            return own ? own(from, line) : std::nullopt;
          };
          TakeAll(peer, offers, count_leaving, [&](const std::string& subject) {
            const std::lock_guard lock(mutex);
            ++taken[subject];
            over.insert(number);
          });
          if (!has_left) Count(-1);
        },
        ScriptedServer::Serving::kAtOnce);
  }
  // Once all connections are served to their end.
  void End() { server.reset(); }
  void Count(int change) {
    const std::lock_guard lock(mutex);
    at_once += change;
    most_at_once = std::max(most_at_once, at_once);
  }

  std::mutex mutex;
  std::map<std::string, int> taken;  // messages to times
  std::set<int> over;                // the connections that took any
  int at_once = 0;
  int most_at_once = 0;
  std::optional<ScriptedServer> server;  // the last, so that it ends before what it tells of
};

void ExpectAllSentOnce(const Letters& letters, const std::map<std::string, int>& taken, int count) {
  ASSERT_EQ(letters.outcomes.size(), static_cast<std::size_t>(count));
  for (const Outcome& outcome : letters.outcomes)
    EXPECT_EQ(outcome.state, State::kSent) << outcome.reason << outcome.reply.text;
  EXPECT_EQ(taken.size(), static_cast<std::size_t>(count));
  for (const auto& [subject, times] : taken) EXPECT_EQ(times, 1) << subject;
}

TEST(ClientConnections, NoMoreMessagesThanAskedForGoOverOne) {
  for (const char* offers : {kPlain, kChunking}) {
    for (const auto& [most, expected] : std::initializer_list<std::pair<std::size_t, std::vector<int>>>{
             {0, {7}}, {1, {1, 1, 1, 1, 1, 1, 1}}, {3, {3, 3, 1}}, {7, {7}}}) {
      SCOPED_TRACE(testing::Message() << offers << most);
      std::vector<int> messages;
      Letters letters(7, {}, Letters::Size::kKnown);
      {
        ScriptedServer server([&](Peer& peer, int) { messages.push_back(TakeAll(peer, offers)); });
        ClientOptions options = OptionsFor(server.port());
        options.per_connection = most;
        SendAll(options, letters);
      }
      EXPECT_EQ(messages, expected);
      ASSERT_EQ(letters.outcomes.size(), 7U);
      for (const Outcome& outcome : letters.outcomes) EXPECT_EQ(outcome.state, State::kSent);
    }
  }
}

// Takes its time for each reply, so that there is something to gain by another connection.
Instead SlowBy(std::chrono::milliseconds delay) {
  return [delay](Peer&, const std::string&) {
    std::this_thread::sleep_for(delay);
    return std::optional<bool>();
  };
}

TEST(ClientConnections, AreOpenedAsTheyAreNeeded) {
  struct Case {
    int letters;
    std::size_t connections;
    int least, most;  // at once
    std::size_t per_connection = 0;
  };
  for (const char* offers : {kPlain, kChunking}) {
    for (const Case& c : {Case{0, 8, 0, 0}, Case{1, 50, 1, 1}, Case{3, 50, 1, 3}, Case{60, 1, 1, 1}, Case{60, 2, 2, 2},
                          Case{150, 8, 4, 8}, Case{30, 4, 2, 4, 3}}) {
      SCOPED_TRACE(testing::Message() << offers << c.letters << " letters, " << c.connections);
      Letters letters(c.letters, {}, Letters::Size::kKnown);
      Busy busy([](int) { return SlowBy(3ms); }, offers);
      ClientOptions options = OptionsFor(busy.server->port(), c.connections);
      options.per_connection = c.per_connection;
      SendAll(options, letters);
      const std::lock_guard lock(busy.mutex);
      ExpectAllSentOnce(letters, busy.taken, c.letters);
      EXPECT_GE(busy.most_at_once, c.least);
      EXPECT_LE(busy.most_at_once, c.most);
    }
  }
}

// A server that takes three connections at a time, and says so in one of many ways: nobody is lost by that, and it is
// not asked for more again and again.
TEST(ClientConnections, NoMoreAreAskedForThanTheServerTakes) {
  constexpr int kTakes = 3;
  constexpr int kLetters = 80;
  struct Case {
    const char* name;
    const char* at;  // the line
    const char* says;
    bool hangs_up;
  };
  for (const char* offers : {kPlain, kChunking}) {
    for (const Case& c : {Case{"421 in place of the greeting", "", "421 4.7.0 too many\r\n", true},
                          Case{"554 in place of the greeting", "", "554 5.7.1 too many\r\n", true},
                          Case{"hangs up in place of the greeting", "", "", true},
                          Case{"450 to EHLO", "EHLO", "450 4.7.1 too many\r\n", false},
                          Case{"452 to MAIL", "MAIL", "452 4.3.2 too many connections\r\n", false},
                          Case{"421 to MAIL", "MAIL", "421 4.3.2 busy\r\n", true}}) {
      SCOPED_TRACE(testing::Message() << offers << c.name);
      Letters letters(kLetters, {}, Letters::Size::kKnown);
      std::atomic<int> serves = 0;
      Busy busy(
          [&](int) -> Instead {
            return [&, is_one_too_many = ++serves > kTakes, is_refused = false](
                       Peer& peer, const std::string& line) mutable -> std::optional<bool> {
              std::this_thread::sleep_for(2ms);
              if (!is_one_too_many || (*c.at == '\0' ? !line.empty() : !line.starts_with(c.at))) {
                if (!is_refused || line == "QUIT") return {};
                peer.Say("503 5.5.1 MAIL first\r\n");
                return false;
              }
              if (!std::exchange(is_refused, true)) --serves;
              peer.Say(c.says);
              return c.hangs_up;
            };
          },
          offers);
      SendAll(OptionsFor(busy.server->port(), 12), letters);
      const std::lock_guard lock(busy.mutex);
      ExpectAllSentOnce(letters, busy.taken, kLetters);
      EXPECT_EQ(busy.over.size(), static_cast<std::size_t>(kTakes));
      EXPECT_LE(busy.server->connections(), kTakes + 3);
    }
  }
}

// One connection has the answer to its recipient in the same moment as another one answer too many, by which no message
// goes any more before a short silence: the first waits for that, and not as long as for an answer.
TEST(ClientConnections, WhatOneLearnsHoldsUpNoOther) {
  std::atomic<bool> first_waits = false, second_waits = false, says = false, is_over = false;
  std::atomic<int> said = 0;
  const auto wait_for = [&](const auto& what) {
    while (!what && !is_over) std::this_thread::sleep_for(1ms);
  };
  Busy busy([&](int number) -> Instead {
    return [&, number, lines = 0](Peer& peer, const std::string& line) mutable -> std::optional<bool> {
      std::this_thread::sleep_for(2ms);
      const bool is_first = number == 1 && line.starts_with("RCPT");
      const bool is_second = number == 2 && line == ".";
      if ((!is_first && !is_second) || ++lines != 8) return {};
      (is_first ? first_waits : second_waits) = true;
      wait_for(says);
      peer.Say(is_first ? "250 ok\r\n" : "250 taken\r\n250 taken\r\n");
      ++said;
      return false;
    };
  });
  Letters letters(120);
  letters.on_next = [&](std::size_t) {
    if (!first_waits || !second_waits || says) return;
    says = true;
    while (said < 2) std::this_thread::sleep_for(1ms);
  };
  ClientOptions options = OptionsFor(busy.server->port(), 3);
  options.timeout = 60s;
  const auto began = std::chrono::steady_clock::now();
  SendAll(options, letters);
  is_over = true;
  EXPECT_LT(std::chrono::steady_clock::now() - began, 30s);
  EXPECT_EQ(said, 2);
  EXPECT_EQ(letters.outcomes.size(), 120U);
}

// The second connection goes wrong, in each way and at each line; whoever is on another is served meanwhile.
TEST(ClientConnections, OneThatGoesWrongStopsNoOther) {
  enum class Way { kHangsUp, kHangsUpInItsReply, kHangsUpBehindIt, kIsSilent, kIsLate };
  enum class Doubt { kNone, kWhatIsInFlight };
  using enum Way;
  constexpr int kLetters = 200;
  struct Case {
    const char* offers;
    const char* at;
    Way way;
    Doubt doubt = Doubt::kNone;
  };
  std::vector<Case> cases;
  for (const char* offers : {kPlain, kChunking}) {
    cases.insert(cases.end(), {Case{offers, "", kHangsUp},
                               {offers, "", kHangsUpInItsReply},
                               {offers, "", kHangsUpBehindIt},
                               {offers, "", kIsSilent},
                               {offers, "EHLO", kHangsUp},
                               {offers, "EHLO", kHangsUpInItsReply},
                               {offers, "EHLO", kHangsUpBehindIt},
                               {offers, "MAIL", kHangsUp},
                               {offers, "MAIL", kHangsUpInItsReply},
                               {offers, "MAIL", kHangsUpBehindIt},
                               {offers, "MAIL", kIsSilent, Doubt::kWhatIsInFlight},
                               {offers, "MAIL", kIsLate},
                               {offers, "RCPT", kHangsUp},
                               {offers, "RCPT", kHangsUpInItsReply},
                               {offers, "RCPT", kHangsUpBehindIt, Doubt::kWhatIsInFlight},
                               {offers, "<", kHangsUp, Doubt::kWhatIsInFlight},
                               {offers, ".", kHangsUp, Doubt::kWhatIsInFlight},
                               {offers, ".", kHangsUpInItsReply, Doubt::kWhatIsInFlight},
                               {offers, ".", kHangsUpBehindIt, Doubt::kWhatIsInFlight},
                               {offers, ".", kIsSilent, Doubt::kWhatIsInFlight},
                               {offers, ".", kIsLate}});
  }
  PlaySideBySide(cases, 6, [](const Case& c) {
    SCOPED_TRACE(testing::Message() << c.offers << "at \"" << c.at << "\" way " << static_cast<int>(c.way));
    Letters letters(kLetters, {}, Letters::Size::kKnown);
    std::atomic<int> taken = 0;
    std::atomic<int> taken_by_then = 0;
    Busy busy(
        [&](int number) -> Instead {
          return [&, number, messages = 0](Peer& peer, const std::string& line) mutable -> std::optional<bool> {
            std::this_thread::sleep_for(300us);
            const bool is_place = *c.at == '\0' ? line.empty() : line.starts_with(c.at);
            taken += line == "." ? 1 : 0;
            if (number != 1 || !is_place || ((*c.at == '.' || *c.at == '<') && messages++ == 0)) return {};
            if (c.way == kIsLate) std::this_thread::sleep_for(60ms);
            if (c.way == kIsLate) return {};
            if (c.way == kIsSilent) peer.Stall();
            if (*c.at == '<') peer.Octets(5);
            const char* reply = *c.at == '\0' ? "220 ESMTP\r\n" : *c.at == 'E' ? c.offers : "250 ok\r\n";
            if (c.way == kHangsUpInItsReply) peer.Say(std::string(reply).substr(0, 2));
            if (c.way == kHangsUpBehindIt) peer.Say(reply);
            taken_by_then = taken.load();
            return true;
          };
        },
        c.offers);
    ClientOptions options = OptionsFor(busy.server->port(), 4);
    options.timeout = 5s;  // the silent one alone sits it out
    SendAll(options, letters);
    busy.End();
    ASSERT_EQ(letters.outcomes.size(), static_cast<std::size_t>(kLetters));
    const std::lock_guard lock(busy.mutex);
    std::size_t not_sent = 0;
    for (std::size_t n = 0; n < kLetters; ++n) {
      const State state = letters.outcomes[n].state;
      const int times = busy.taken["Subject: " + std::to_string(n)];
      EXPECT_LE(times, 1) << n;
      if (state != State::kUnknown) {
        EXPECT_EQ(times, state == State::kSent ? 1 : 0) << n;
      }
      not_sent += state == State::kSent ? 0 : 1;
    }
    const std::size_t in_flight = std::string(c.offers) == kPlain ? 1 : SendWindow::kMost;
    EXPECT_LE(not_sent, c.doubt == Doubt::kNone ? 0 : in_flight);
    if (c.way == kIsSilent) {
      EXPECT_GT(taken_by_then, kLetters / 2) << "the others waited for it";
    }
  });
}

// The server hangs up on one message, and counts the connections that it is lost over; whether the way was lost is
// found out all the same, and at once.
TEST(ClientConnections, WhoIsInDoubtIsToldWhereNoMoreAreTaken) {
  constexpr int kTakes = 4;
  constexpr std::size_t kLetters = 60;
  for (const auto& [lost, refuses] : {std::pair{10, "421 4.7.0 too many\r\n"},
                                      {10, ""},
                                      {59, "421 4.7.0 too many\r\n"},
                                      {59, "554 5.7.1 too many\r\n"}}) {
    SCOPED_TRACE(testing::Message() << lost << " " << refuses);
    Letters letters(kLetters, {}, Letters::Size::kKnown);
    const std::string recipient = "RCPT TO:<r" + std::to_string(lost) + "@";
    std::atomic<int> counted = 0;
    Busy busy([&, refuses = refuses](int) -> Instead {
      return [&, refuses, is_one_too_many = counted >= kTakes, is_counted = false](
                 Peer& peer, const std::string& line) mutable -> std::optional<bool> {
        std::this_thread::sleep_for(2ms);
        if (is_one_too_many) peer.Say(refuses);
        if (is_one_too_many) return true;
        if (!std::exchange(is_counted, true)) ++counted;
        if (line == "QUIT") --counted;
        return line.starts_with(recipient) ? std::optional(true) : std::nullopt;
      };
    });
    ClientOptions options = OptionsFor(busy.server->port(), kTakes);
    options.network_wait = 60s;
    const platform::SystemClock clock;
    const auto began = clock.Monotonic();
    SendAll(options, letters);
    EXPECT_LT(clock.Monotonic() - began, 10s);
    ASSERT_EQ(letters.outcomes.size(), kLetters);
    EXPECT_EQ(letters.outcomes[static_cast<std::size_t>(lost)].state, State::kFailed);
    const auto is_sent = [](const Outcome& outcome) { return outcome.state == State::kSent; };
    const auto sent = std::count_if(letters.outcomes.begin(), letters.outcomes.end(), is_sent);
    EXPECT_EQ(static_cast<std::size_t>(sent), kLetters - 1);
  }
}

// A wrong password is tried for one message after the other, and the person asked after three, however many
// connections there might be.
TEST(ClientConnections, AWrongPasswordIsNotTriedOverMany) {
  Letters letters(20);
  letters.goes_on = false;
  Busy busy(
      [](int) -> Instead {
        return [](Peer& peer, const std::string& line) -> std::optional<bool> {
          if (!line.starts_with("AUTH")) return {};
          peer.Say("535 5.7.8 no\r\n");
          return false;
        };
      },
      "250-mx\r\n250 AUTH PLAIN\r\n");
  ClientOptions options = OptionsFor(busy.server->port(), 8);
  options.sign_in = true;
  options.user = "ada";
  SendAll(options, letters);
  EXPECT_EQ(letters.outcomes.size(), 3U);
  EXPECT_EQ(busy.server->connections(), 3);
}

TEST(ClientConnections, AStopLetsWhatIsUnderWayEndAndNothingBegin) {
  for (const int requests : {1, 2}) {
    Letters letters(400, {}, Letters::Size::kKnown);
    platform::CancelToken cancel;
    Busy busy([](int) { return SlowBy(5ms); });
    letters.on_next = [&](std::size_t before) {
      for (int n = 0; before == 60 && n < requests; ++n) cancel.Request();
    };
    SendAll(OptionsFor(busy.server->port(), 6), letters, cancel);
    const std::lock_guard lock(busy.mutex);
    ASSERT_EQ(letters.outcomes.size(), 61U);
    for (std::size_t n = 0; n < letters.outcomes.size(); ++n) {
      const Outcome& outcome = letters.outcomes[n];
      const int times = busy.taken["Subject: " + std::to_string(n)];
      if (outcome.state != State::kUnknown) {
        EXPECT_EQ(times, outcome.state == State::kSent ? 1 : 0);
      }
      if (requests == 1) {
        EXPECT_TRUE(outcome.state == State::kSent || !outcome.is_decided()) << n;
      }
    }
    EXPECT_FALSE(letters.outcomes.back().is_decided());
  }
}

}  // namespace
}  // namespace quillcast::smtp
