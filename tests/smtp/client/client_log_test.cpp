// The connection log of a mailing: whose lines stand where, and when they can be seen.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <thread>

#include "smtp/client/client.h"
#include "smtp/letters.h"
#include "smtp/scripted_server.h"

namespace quillcast::smtp {
namespace {

void SendAll(std::uint16_t port, bool pipeline, Letters& letters, std::size_t connections = 1) {
  ClientOptions options;
  options.servers = {{"127.0.0.1", port}};
  options.pipeline = pipeline;
  options.connections = connections;
  const platform::SystemClock clock;
  const platform::CancelToken cancel;
  Client(options, clock, cancel).Run(letters);
}

// Takes whole messages by BDAT, but hangs up in place of the reply to the last byte of message number `at`, from 0.
void TakeChunks(Peer& peer, int at) {
  peer.Say("220 ESMTP\r\n");
  int taken = 0;
  for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
    if (line.starts_with("EHLO")) {
      peer.Say("250-mx\r\n250-PIPELINING\r\n250 CHUNKING\r\n");
      continue;
    }
    if (line.starts_with("BDAT ")) {
      peer.Octets(std::stoul(line.substr(5)));
      if (taken++ == at) return;
    }
    peer.Say("250 ok\r\n");
  }
}

// Slowly, so that several are kept busy.
void TakeOneByOne(Peer& peer) {
  peer.Say("220 ESMTP\r\n");
  for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    peer.Say(line == "DATA" ? "354 go\r\n" : "250 ok\r\n");
    if (line != "DATA") continue;
    peer.Message();
    peer.Say("250 taken\r\n");
  }
}

// "r3@example.net" for a line that names it.
std::string RecipientIn(std::string_view line) {
  const auto at = line.find("RCPT TO:<");
  return at == std::string_view::npos ? "" : std::string(line.substr(at + 9, line.find('>') - at - 9));
}

TEST(ClientLog, EachMessagesLinesStandTogetherBeforeItsOutcome) {
  constexpr int kLetters = 12;
  for (const int hang_up_at : {-1, 4}) {
    SCOPED_TRACE(hang_up_at);
    Letters letters(kLetters, {}, Letters::Size::kKnown);
    std::vector<std::vector<std::string>> lines(kLetters + 1);  // by the number of outcomes before them
    letters.on_line = [&](std::string_view line) { lines[letters.outcomes.size()].emplace_back(line); };
    {
      ScriptedServer server([&](Peer& peer, int n) { TakeChunks(peer, n == 0 ? hang_up_at : -1); });
      SendAll(server.port(), true, letters);
    }
    ASSERT_EQ(letters.outcomes.size(), static_cast<std::size_t>(kLetters));
    for (int n = 0; n < kLetters; ++n) {
      int own = 0;
      for (const auto& line : lines[static_cast<std::size_t>(n)]) {
        const std::string recipient = RecipientIn(line);
        EXPECT_TRUE(recipient.empty() || recipient == "r" + std::to_string(n) + "@example.net") << n << ": " << line;
        own += !recipient.empty() || line.starts_with("C: BDAT") || line.starts_with("C: (message") ? 1 : 0;
      }
      EXPECT_GE(own, 3) << n;
    }
    EXPECT_EQ(lines.back(), (std::vector<std::string>{"C: QUIT", "S: 250 ok"}));
  }
}

// So they do over several connections; and what a connection says apart from its messages stands together as well.
TEST(ClientLog, StandsTogetherOverSeveralConnections) {
  constexpr int kLetters = 40;
  Letters letters(kLetters);
  std::vector<std::vector<std::string>> lines(kLetters + 1);
  letters.on_line = [&](std::string_view line) { lines[letters.outcomes.size()].emplace_back(line); };
  int connections = 0;
  {
    ScriptedServer server([&](Peer& peer, int) { TakeOneByOne(peer); }, ScriptedServer::Serving::kAtOnce);
    SendAll(server.port(), false, letters, 4);
    connections = server.connections();
  }
  EXPECT_GE(connections, 3);
  int greetings = 0;
  for (int n = 0; n < kLetters; ++n) {
    std::vector<std::string> own = lines[static_cast<std::size_t>(n)];
    const std::vector<std::string> opening{"S: 220 ESMTP", "C: EHLO [127.0.0.1]", "S: 250 ok"};
    while (own.size() > opening.size() && std::equal(opening.begin(), opening.end(), own.begin())) {
      own.erase(own.begin(), own.begin() + 3);
      ++greetings;
    }
    const std::string rcpt = "C: RCPT TO:<r" + std::to_string(n) + "@example.net>";
    EXPECT_EQ(own, (std::vector<std::string>{"C: MAIL FROM:<ada@example.org>", "S: 250 ok", rcpt, "S: 250 ok",
                                             "C: DATA", "S: 354 go", own.size() > 6 ? own[6] : "", "S: 250 taken"}))
        << n;
  }
  EXPECT_GE(greetings, connections - 1);  // the run may end while one is on its way
}

TEST(ClientLog, CanBeSeenWhileTheServerIsWaitedFor) {
  for (const std::string waits_at : {"EHLO", "MAIL", "RCPT", "DATA", "."}) {
    SCOPED_TRACE(waits_at);
    Letters letters(1);
    std::promise<void> seen;
    bool is_seen = false;
    letters.on_waiting = [&] {
      const std::string last = letters.log.empty() ? "" : letters.log.back();
      const bool is_it = last.starts_with("C: " + waits_at) || (waits_at == "." && last.starts_with("C: (message"));
      if (is_it && !std::exchange(is_seen, true)) seen.set_value();
    };
    ScriptedServer server([&](Peer& peer, int) {
      const auto answer = [&](const std::string& line, const char* reply) {
        if (line.starts_with(waits_at)) seen.get_future().wait_for(std::chrono::seconds(10));
        peer.Say(reply);
      };
      peer.Say("220 ESMTP\r\n");
      for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
        answer(line, line == "DATA" ? "354 go\r\n" : "250 ok\r\n");
        if (line != "DATA") continue;
        peer.Message();
        answer(".", "250 ok\r\n");
      }
    });
    SendAll(server.port(), false, letters);
    EXPECT_TRUE(is_seen);
    EXPECT_EQ(letters.outcomes.front().state, State::kSent);
  }
}

}  // namespace
}  // namespace quillcast::smtp
