// How many connections a run opens, and how many messages go over each.
#include <gtest/gtest.h>

#include "smtp/client/client.h"
#include "smtp/letters.h"
#include "smtp/scripted_server.h"

namespace quillcast::smtp {
namespace {

constexpr const char* kPlain = "250 mx\r\n";
constexpr const char* kChunking = "250-mx\r\n250-PIPELINING\r\n250 CHUNKING\r\n";

ClientOptions OptionsFor(std::uint16_t port) {
  ClientOptions options;
  options.servers = {{"127.0.0.1", port}};
  options.timeout = std::chrono::seconds(2);
  options.pipeline = true;
  return options;
}

void SendAll(const ClientOptions& options, Letters& letters) {
  const platform::SystemClock clock;
  const platform::CancelToken cancel;
  Client(options, clock, cancel).Run(letters);
}

// Takes everything that comes over a connection, until QUIT. Gives how many messages those were; -1 without a QUIT.
int TakeAll(Peer& peer, const char* offers) {
  peer.Say("220 ESMTP\r\n");
  int messages = 0;
  for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
    if (line.starts_with("BDAT")) peer.Octets(static_cast<std::size_t>(std::stoi(line.substr(5))));
    if (line == "DATA") {
      peer.Say("354 go\r\n");
      peer.Message();
    }
    messages += line == "DATA" || line.starts_with("BDAT") ? 1 : 0;
    peer.Say(line.starts_with("EHLO") ? offers : "250 ok\r\n");
    if (line == "QUIT") return messages;
  }
  return -1;
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

}  // namespace
}  // namespace quillcast::smtp
