// The client over real sockets against servers that refuse, stall, hang up and drip: nothing lost, nothing sent twice,
// and the next recipient is served.
#include <gtest/gtest.h>

#include <map>
#include <optional>

#include "smtp/client/client.h"
#include "smtp/letters.h"
#include "smtp/scripted_server.h"

namespace quillcast::smtp {
namespace {

ClientOptions OptionsFor(std::uint16_t port) {
  ClientOptions options;
  options.servers = {{"127.0.0.1", port}};
  options.timeout = std::chrono::seconds(1);
  return options;
}

void SendAll(const ClientOptions& options, Letters& letters, const platform::CancelToken& cancel = {}) {
  const platform::SystemClock clock;
  Client(options, clock, cancel).Run(letters);
}

enum class Fault { kHangUp, kStall, kGoodbye, kLimit };

// Serves a connection well, except that at reply number `at` the fault happens in place of it.
// Replies: 0 greeting, 1 EHLO, 2 MAIL, 3 RCPT, 4 DATA, 5 end of data.
void Serve(Peer& peer, int at, Fault fault, std::vector<std::string>& taken) {
  int reply = 0;
  const auto answer = [&](const std::string& text) {
    if (reply++ != at) {
      peer.Say(text);
      return true;
    }
    if (fault == Fault::kStall) peer.Stall();
    if (fault == Fault::kLimit) return peer.Say("452 4.5.3 no more over this connection\r\n");
    if (fault == Fault::kGoodbye) peer.Say("421 4.3.2 enough for this connection\r\n");
    return false;
  };
  if (!answer("220 ESMTP\r\n")) return;
  for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
    if (!answer(line == "DATA" ? "354 go\r\n" : "250 ok\r\n") || line == "QUIT") return;
    if (line != "DATA") continue;
    taken.push_back(peer.Message());
    if (!answer("250 taken\r\n")) return;
  }
}

TEST(ClientFaults, AtEveryReplyOfAConnection) {
  for (const Fault fault : {Fault::kHangUp, Fault::kStall}) {
    for (int at = 0; at <= 5; ++at) {
      SCOPED_TRACE(std::to_string(static_cast<int>(fault)) + " at reply " + std::to_string(at));
      std::vector<std::string> taken;
      Letters letters(2);
      {
        ScriptedServer server([&](Peer& peer, int n) { Serve(peer, n == 0 ? at : -1, fault, taken); });
        SendAll(OptionsFor(server.port()), letters);
      }
      ASSERT_EQ(letters.outcomes.size(), 2U);
      const Outcome& first = letters.outcomes[0];
      const bool resent = fault == Fault::kHangUp && at >= 2 && at <= 4;
      EXPECT_EQ(first.state, at == 5 ? State::kUnknown : resent ? State::kSent : State::kFailed);
      const ResultCode code = fault == Fault::kStall ? ResultCode::kReplyTimeout : ResultCode::kConnectionLost;
      EXPECT_EQ(first.code, resent ? ResultCode::kSuccess : code);
      EXPECT_EQ(letters.outcomes[1].state, State::kSent);
      std::map<std::string, int> times;
      for (const auto& message : taken) ++times[message.substr(0, 10)];
      EXPECT_EQ(times["Subject: 0"], first.state == State::kFailed ? 0 : 1);
      EXPECT_EQ(times["Subject: 1"], 1);
      EXPECT_EQ(taken.back(), "Subject: 1\n\n..dot\n");
    }
  }
}

// At every record that fails, over every way of sending: who is written to was recorded before, the others are told as
// left.
TEST(ClientFaults, NobodyIsWrittenToWhoCouldNotBeRecorded) {
  struct Row {
    const char* offers;
    std::size_t connections, letters;
    int records;
  };
  constexpr const char* kPipelining = "250-ok\r\n250 PIPELINING\r\n";
  constexpr const char* kChunking = "250-ok\r\n250-PIPELINING\r\n250 CHUNKING\r\n";
  for (const Row& row : {Row{"250 ok\r\n", 1, 4, 8}, Row{kPipelining, 1, 4, 8}, Row{kChunking, 1, 4, 8},
                         Row{"250 ok\r\n", 3, 12, 30}, Row{kChunking, 3, 12, 30}}) {
    int with_all = 0;
    for (int fails_at = 1; fails_at <= row.records; ++fails_at) {
      SCOPED_TRACE(testing::Message() << row.offers << row.connections << " connections, record " << fails_at);
      Letters letters(static_cast<int>(row.letters), {}, Letters::Size::kKnown);
      letters.fails_at = fails_at;
      std::atomic<std::uint64_t> written_to = 0;
      std::atomic<bool> is_recorded = true;
      {
        ScriptedServer server(
            [&](Peer& peer, int) {
              peer.Say("220 ESMTP\r\n");
              for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
                if (line.starts_with("RCPT")) {
                  const auto bit = std::uint64_t{1} << std::stoi(line.substr(line.find('<') + 2));
                  written_to |= bit;
                  is_recorded = is_recorded && (letters.kept & bit) != 0;
                }
                if (line.starts_with("BDAT")) peer.Octets(static_cast<std::size_t>(std::stoi(line.substr(5))));
                peer.Say(line == "DATA" ? "354 go\r\n" : line.starts_with("EHLO") ? row.offers : "250 ok\r\n");
                if (line == "DATA") {
                  peer.Message();
                  peer.Say("250 ok\r\n");
                }
              }
            },
            ScriptedServer::Serving::kAtOnce);
        ClientOptions options = OptionsFor(server.port());
        options.pipeline = true;
        options.connections = row.connections;
        SendAll(options, letters);
      }
      EXPECT_TRUE(is_recorded);
      ASSERT_EQ(letters.decided, letters.outcomes.size());
      for (std::size_t n = 0; n < letters.outcomes.size(); ++n)
        EXPECT_EQ(letters.outcomes[n].is_decided(), (written_to >> n & 1) == 1) << n;
      with_all += letters.outcomes.size() == row.letters && letters.outcomes.back().is_decided() ? 1 : 0;
      EXPECT_TRUE(fails_at > 1 || written_to == 0);
    }
    EXPECT_GT(with_all, 0);
    EXPECT_LT(with_all, row.records - 1);
  }
}

TEST(ClientFaults, AMessageIsTakenToOneNewConnectionOnly) {
  std::vector<std::string> taken;
  ScriptedServer server([&](Peer& peer, int n) { Serve(peer, n < 2 ? 3 : -1, Fault::kHangUp, taken); });
  Letters letters(2);
  SendAll(OptionsFor(server.port()), letters);
  EXPECT_EQ(letters.outcomes.at(0).code, ResultCode::kConnectionLost);
  EXPECT_EQ(letters.outcomes.at(0).state, State::kFailed);
  EXPECT_EQ(letters.outcomes.at(1).state, State::kSent);
}

TEST(ClientFaults, AServerThatServesOneMessageAConnectionIsServedAll) {
  const struct {
    Fault fault;
    bool once;  // and has no limit from then on
  } kCases[] = {
      {Fault::kHangUp, false}, {Fault::kGoodbye, false}, {Fault::kLimit, false},
      {Fault::kGoodbye, true}, {Fault::kLimit, true},
  };
  for (const auto& [fault, once] : kCases) {
    std::vector<std::string> taken;
    std::atomic<int> connections = 0;
    ScriptedServer server([&](Peer& peer, int n) {
      ++connections;
      Serve(peer, once && n > 0 ? -1 : 6, fault, taken);
    });
    Letters letters(6);
    SendAll(OptionsFor(server.port()), letters);
    for (const Outcome& outcome : letters.outcomes) EXPECT_EQ(outcome.state, State::kSent);
    EXPECT_EQ(taken.size(), 6U);
    EXPECT_TRUE(!once || connections == 2) << connections;
  }
}

TEST(ClientFaults, AServerThatKeepsSayingGoodbyeDefersTheMessage) {
  std::vector<std::string> taken;
  ScriptedServer server([&](Peer& peer, int) { Serve(peer, 2, Fault::kGoodbye, taken); });
  Letters letters(1);
  SendAll(OptionsFor(server.port()), letters);
  EXPECT_EQ(letters.outcomes.at(0).state, State::kDeferred);
  EXPECT_EQ(letters.outcomes.at(0).code, ResultCode::kConnectionLost);
  EXPECT_EQ(letters.outcomes.at(0).reply.code, 421);
  EXPECT_TRUE(taken.empty());
}

// Listens, and answers nobody: its queue of two is full, and the system passes over whoever comes then.
class FullListener {
 public:
  FullListener() : listener_(NewSocket()), waiting_{NewSocket(), NewSocket()} {
    port_ = ListenOnLoopback(listener_.get(), 0);
    sockaddr_in address{};
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    ::getsockname(listener_.get(), generic, &length);
    for (const auto& one : waiting_) ::connect(one.get(), generic, length);
  }
  std::uint16_t port() const { return port_; }

 private:
  static platform::UniqueFd NewSocket() {
    return platform::UniqueFd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  }
  platform::UniqueFd listener_;
  std::array<platform::UniqueFd, 2> waiting_;
  std::uint16_t port_ = 0;
};

TEST(ClientFaults, NoConnectionIsToldByItsReason) {
  std::uint16_t closed_port = 0;
  {
    closed_port = ScriptedServer([](Peer&, int) {}).port();
  }
  std::vector<std::string> taken;
  ScriptedServer good([&](Peer& peer, int) { Serve(peer, -1, Fault::kHangUp, taken); });
  const FullListener full;
  struct Case {
    std::vector<Server> servers;
    ResultCode code;
  };
  for (const Case& c :
       std::initializer_list<Case>{{{}, ResultCode::kNoServer},
                                   {{{"127.0.0.1", closed_port}}, ResultCode::kConnectFailed},
                                   {{{"127.0.0.1", full.port()}}, ResultCode::kConnectTimeout},
                                   {{{"no\u00E9 name", good.port()}}, ResultCode::kHostNotFound},
                                   {{{"a..b", 25}, {"127.0.0.1", closed_port}}, ResultCode::kConnectFailed},
                                   {{{"127.0.0.1", closed_port}, {"a..b", 25}}, ResultCode::kConnectFailed},
                                   {{{"127.0.0.1", closed_port}, {"127.0.0.1", good.port()}}, ResultCode::kSuccess}}) {
    Letters letters(2);
    ClientOptions options = OptionsFor(0);
    options.servers = c.servers;
    SendAll(options, letters);
    ASSERT_EQ(letters.outcomes.size(), 2U);
    EXPECT_EQ(letters.outcomes[0].code, c.code);
    EXPECT_EQ(letters.outcomes[1].code, c.code);
  }
}

// At a line of the log, or while a letter is made; of the last that was taken.
TEST(ClientFaults, StopsForThePerson) {
  struct Case {
    const char* at_line;
    std::size_t at_letter;  // so many are before it
    int requests;
    std::size_t outcomes;
    State state;
    ResultCode code;
    bool is_decided;
  };
  using enum ResultCode;
  constexpr std::size_t kNever = 9;
  constexpr const char* kMail = "C: MAIL FROM:<ada@example.org>";
  for (const Case& c :
       {Case{kMail, kNever, 1, 1, State::kSent, kSuccess, true},
        Case{kMail, kNever, 2, 1, State::kFailed, kCancelled, false},
        Case{"C: EHLO [127.0.0.1]", kNever, 1, 1, State::kFailed, kCancelled, false},
        Case{"", 0, 1, 1, State::kFailed, kCancelled, false}, Case{"", 1, 1, 2, State::kFailed, kCancelled, false}}) {
    SCOPED_TRACE(std::string(c.at_line) + std::to_string(c.requests) + std::to_string(c.at_letter));
    std::vector<std::string> taken;
    ScriptedServer server([&](Peer& peer, int) { Serve(peer, -1, Fault::kHangUp, taken); });
    platform::CancelToken cancel;
    Letters letters(3);
    letters.on_line = [&](std::string_view line) {
      for (int n = 0; line == c.at_line && n < c.requests; ++n) cancel.Request();
    };
    letters.on_next = [&](std::size_t before) {
      if (before == c.at_letter) cancel.Request();
    };
    SendAll(OptionsFor(server.port()), letters, cancel);
    ASSERT_EQ(letters.outcomes.size(), c.outcomes);
    EXPECT_EQ(letters.outcomes.back().state, c.state);
    EXPECT_EQ(letters.outcomes.back().code, c.code);
    EXPECT_EQ(letters.outcomes.back().is_decided(), c.is_decided);
  }
}

// Whatever ends the connection, before the stop or behind it, by a word or by silence: only whose end is out is in
// doubt, and whoever is not out is left, so that whoever goes on with the run comes to them.
TEST(ClientFaults, AStopPassesOverNobody) {
  enum class Order { kStopThenLoss, kStopThenStop, kStopThenSilence, kLossThenStop };
  for (const Order order :
       {Order::kStopThenLoss, Order::kStopThenStop, Order::kStopThenSilence, Order::kLossThenStop}) {
    for (const auto wait : {std::chrono::hours(0), std::chrono::hours(1)}) {
      for (int at = 2; at <= 5; ++at) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(order) << " at reply " << at << ", wait " << wait.count());
        std::vector<std::string> taken;
        platform::CancelToken cancel;
        ScriptedServer server([&](Peer& peer, int number) {
          if (number == 0) Serve(peer, at, Fault::kHangUp, taken);
          if (number == 0 && order == Order::kLossThenStop) return;
          cancel.Request();
          if (order == Order::kStopThenStop) cancel.Request();
          if (order == Order::kStopThenStop || order == Order::kStopThenSilence) peer.Stall();
        });
        ClientOptions options = OptionsFor(server.port());
        options.network_wait = wait;
        options.timeout = std::chrono::seconds(order == Order::kStopThenSilence ? 1 : 30);
        Letters letters(1);
        SendAll(options, letters, cancel);
        ASSERT_EQ(letters.outcomes.size(), 1U);
        EXPECT_EQ(letters.outcomes[0].is_decided(), at == 5);
        EXPECT_EQ(letters.outcomes[0].state, at == 5 ? State::kUnknown : State::kFailed);
      }
    }
  }
}

// A clock at whose given reading somebody asks to stop.
class StoppingClock final : public platform::Clock {
 public:
  StoppingClock(platform::CancelToken& cancel, int at) : cancel_(cancel), at_(at) {}
  std::chrono::system_clock::time_point Now() const override { return real_.Now(); }
  std::tm Local(std::chrono::system_clock::time_point moment) const override { return real_.Local(moment); }
  platform::Instant Monotonic() const override {
    const platform::Instant now = real_.Monotonic();
    if (++readings_ != at_) return now;
    asked_ = now;
    cancel_.Request();
    return now;
  }
  std::optional<platform::Instant> asked() const { return asked_; }

 private:
  platform::SystemClock real_;
  platform::CancelToken& cancel_;
  int at_;
  mutable int readings_ = 0;
  mutable std::optional<platform::Instant> asked_ = {};
};

// A server that takes the connection and never greets is waited for no longer, whenever the request comes.
TEST(ClientFaults, HearsARequestWheneverItComes) {
  ScriptedServer server([](Peer& peer, int) { peer.Stall(); });
  ClientOptions options = OptionsFor(server.port());
  options.timeout = std::chrono::seconds(3);
  for (int at = 1; at <= 40; ++at) {
    platform::CancelToken cancel;
    const StoppingClock clock(cancel, at);
    const auto began = std::chrono::steady_clock::now();
    Letters letters(2);
    Client(options, clock, cancel).Run(letters);
    if (!clock.asked() || *clock.asked() - began > std::chrono::seconds(2)) break;  // the server's time was over
    ASSERT_LT(clock.Monotonic() - *clock.asked(), std::chrono::seconds(2)) << "at reading " << at;
  }
}

// A second request while a server keeps silent after the end of data: given up at once, and not known.
TEST(ClientFaults, AbandonsAMessageThatIsOut) {
  std::vector<std::string> taken;
  platform::CancelToken cancel;
  ScriptedServer server([&](Peer& peer, int) {
    Serve(peer, 5, Fault::kHangUp, taken);
    cancel.Request();
    cancel.Request();
    peer.Stall();
  });
  ClientOptions options = OptionsFor(server.port());
  options.timeout = std::chrono::seconds(30);
  Letters letters(2);
  SendAll(options, letters, cancel);
  ASSERT_EQ(letters.outcomes.size(), 1U);
  EXPECT_EQ(letters.outcomes[0].state, State::kUnknown);
  EXPECT_EQ(letters.outcomes[0].code, ResultCode::kCancelled);
}

TEST(ClientFaults, TestTellsOfQuit) {
  for (const auto& [fault_at, code] : {std::pair{-1, ResultCode::kSuccess}, std::pair{2, ResultCode::kQuitFailed},
                                       std::pair{1, ResultCode::kConnectionLost}}) {
    std::vector<std::string> taken;
    ScriptedServer server([&, at = fault_at](Peer& peer, int) { Serve(peer, at, Fault::kHangUp, taken); });
    const platform::SystemClock clock;
    const platform::CancelToken cancel;
    Letters letters(0);
    EXPECT_EQ(Client(OptionsFor(server.port()), clock, cancel).Test(letters).code, code);
  }
}

}  // namespace
}  // namespace quillcast::smtp
