// The client over real sockets against a server that does everything wrong, once, at each place where a server speaks;
// with and without pipelining, over DATA and over BDAT. Whatever the fault: nobody is sent a message twice, nobody is
// told as sent who was not or the reverse, and whoever comes after the fault is served.
#include <gtest/gtest.h>

#include <chrono>
#include <map>

#include "smtp/client/client.h"
#include "smtp/letters.h"
#include "smtp/scripted_server.h"
#include "smtp/side_by_side.h"
#include "support/memory.h"

namespace quillcast::smtp {
namespace {

using namespace std::chrono_literals;

constexpr int kLetters = 24;  // more than are in flight when the fault happens
constexpr auto kStep = 1s;    // the longest that the client waits for one reply

// Where a server speaks. Messages are counted from 0; faults happen at the second, so that one has gone well.
enum class Place { kGreeting, kEhlo, kStartTls, kAuth, kPassword, kMail, kRcpt, kData, kEnd, kQuit };
constexpr const char* kPlaceNames[] = {"greeting", "EHLO", "STARTTLS", "AUTH",        "password",
                                       "MAIL",     "RCPT", "DATA",     "end of data", "QUIT"};
constexpr const char* kUser = "YWRh";
constexpr const char* kPassword = "czNjcmV0";

enum class Then { kGoOn, kHangUp, kStall, kDrip, kFlood };

struct Fault {
  const char* name;
  std::string says;  // in place of the reply
  Then then;
};

const std::vector<Fault>& Faults() {
  using enum Then;
  static const std::vector<Fault> kFaults = {
      {"hangs up", "", kHangUp},
      {"stalls", "", kStall},
      {"drips", "250 ", kDrip},
      {"421 and hangs up", "421 4.3.2 going away\r\n", kHangUp},
      {"421 and goes on", "421 4.3.2 going away\r\n", kGoOn},
      {"450", "450 4.7.1 later\r\n", kGoOn},
      {"550", "550 5.7.1 never\r\n", kGoOn},
      {"cut reply", "250-4.0", kHangUp},
      {"cut code", "25", kHangUp},
      {"no code", "hello there\r\n", kGoOn},
      {"wrong code", "999 what\r\n", kGoOn},
      {"code of another step", "334 bXkgc2VjcmV0\r\n", kGoOn},
      {"1xx", "150 opening\r\n", kGoOn},
      {"two codes in one reply", "250-first\r\n550 second\r\n", kGoOn},
      {"NUL", std::string("250 a\0b\r\n", 9), kGoOn},
      {"control characters", "550 5.0.0 \x1B[2J\x07\x08gone\x7F\r\n", kGoOn},
      {"bare LF", "250 ok\n", kGoOn},
      {"bare CR", "250 ok\rRCPT TO:<x@example.org>\r\n", kGoOn},
      {"HTTP", "HTTP/1.1 400 Bad Request\r\nServer: x\r\n\r\n", kHangUp},
      {"SSH", "SSH-2.0-OpenSSH_9.2p1\r\n", kStall},
      {"TLS", std::string("\x16\x03\x01\x00\x05\x01\x00\x00\x01\x00", 10), kStall},
      {"endless line", "250 ", kFlood},
      {"endless reply", "250-more\r\n", kFlood},
      {"the reply doubled", "250 ok\r\n250 ok\r\n", kGoOn},
  };
  return kFaults;
}

// What the server came to hold, by the recipient's number.
struct Ledger {
  std::map<int, int> whole;   // complete messages that came
  std::map<int, int> agreed;  // of these, how often it said 2xx
  std::uint64_t flooded = 0;
};

// Speaks SMTP well but for one fault. One instance a connection.
class Hostile {
 public:
  Hostile(Peer& peer, bool chunking, Ledger& ledger) : peer_(peer), chunking_(chunking), ledger_(ledger) {}
  void GoesWrongAt(Place place, const Fault& fault) {
    place_ = place;
    fault_ = &fault;
  }

  void Serve() {
    if (!Answer(Place::kGreeting, "220 hostile.example ESMTP\r\n")) return;
    for (std::string line = peer_.Line(); !line.empty(); line = peer_.Line()) {
      if (!Command(line)) return;
      if (line == "QUIT") return;
    }
  }

 private:
  bool Command(const std::string& line) {
    if (line.starts_with("EHLO")) {
      // TLS is offered only where its start goes wrong.
      const bool tls = place_ == Place::kStartTls && fault_ != nullptr;
      return Answer(Place::kEhlo, std::string("250-hostile.example\r\n250-PIPELINING\r\n250-AUTH LOGIN\r\n") +
                                      (chunking_ ? "250-CHUNKING\r\n" : "") + (tls ? "250-STARTTLS\r\n" : "") +
                                      "250 8BITMIME\r\n");
    }
    if (line == "STARTTLS") return Answer(Place::kStartTls, "220 go\r\n");
    if (line == "AUTH LOGIN") return Answer(Place::kAuth, "334 VXNlcm5hbWU6\r\n");
    if (line == kUser) return Answer(Place::kPassword, "334 UGFzc3dvcmQ6\r\n");
    if (line == kPassword) return Say("235 welcome\r\n");
    if (line == "*") return Say("501 cancelled\r\n");
    if (line.starts_with("MAIL")) {
      has_recipient_ = false;
      has_sender_ = Agrees(Place::kMail, "250 ok\r\n");
      return going_;
    }
    if (line.starts_with("RCPT")) {
      recipient_ = std::atoi(line.c_str() + line.find("<r") + 2);
      if (!has_sender_) return Say("503 5.5.1 MAIL first\r\n");
      has_recipient_ = Agrees(Place::kRcpt, "250 ok\r\n");
      return going_;
    }
    if (line == "DATA") {
      if (!has_recipient_) return Say("503 5.5.1 RCPT first\r\n");
      if (!Agrees(Place::kData, "354 go\r\n")) return going_;
      const std::string message = peer_.Message();
      if (!message.ends_with("end\n")) return false;
      return EndOfData();
    }
    if (line.starts_with("BDAT")) {
      const std::string message = peer_.Octets(std::strtoul(line.c_str() + 5, nullptr, 10));
      if (!message.ends_with("end\r\n")) return false;
      if (!has_recipient_) return Say("503 5.5.1 RCPT first\r\n");
      return EndOfData();
    }
    if (line == "QUIT") return Answer(Place::kQuit, "221 bye\r\n");
    has_sender_ = has_recipient_ = false;  // RSET, NOOP
    return Say("250 ok\r\n");
  }

  bool EndOfData() {
    ++ledger_.whole[recipient_];
    if (Agrees(Place::kEnd, "250 kept\r\n")) ++ledger_.agreed[recipient_];
    has_sender_ = has_recipient_ = false;
    ++messages_;
    return going_;
  }

  // False when the connection is to be closed.
  bool Answer(Place place, const std::string& good) {
    const bool early = place < Place::kMail || place == Place::kQuit;
    if (fault_ == nullptr || place != place_ || (!early && messages_ != 1)) {
      last_ = good;
      return Say(good);
    }
    const Fault& fault = *std::exchange(fault_, nullptr);
    last_ = fault.says;
    peer_.Say(fault.says);
    if (fault.then == Then::kHangUp) return going_ = false;
    if (fault.then == Then::kStall) return peer_.Stall(), going_ = false;
    for (int n = 0; fault.then == Then::kDrip && n < 300 && peer_.Say("x"); ++n) std::this_thread::sleep_for(100ms);
    for (int n = 0; fault.then == Then::kFlood && n < 200'000 && peer_.Say(fault.says); ++n)
      ledger_.flooded += fault.says.size();
    return going_ = fault.then == Then::kGoOn;
  }
  bool Say(const std::string& text) { return peer_.Say(text); }
  bool Agrees(Place place, const std::string& good) {
    Answer(place, good);
    return last_.starts_with("2") || last_.starts_with("3");
  }

  Peer& peer_;
  bool chunking_;
  Ledger& ledger_;
  Place place_ = Place::kGreeting;
  const Fault* fault_ = nullptr;
  std::string last_;
  bool going_ = true;
  bool has_sender_ = false;
  bool has_recipient_ = false;
  int recipient_ = -1;
  int messages_ = 0;
};

struct FaultRun {
  Place place;
  const Fault& fault;
  bool pipeline, chunking;
};

std::ostream& operator<<(std::ostream& out, const FaultRun& run) {
  return out << run.fault.name << " at " << kPlaceNames[static_cast<std::size_t>(run.place)] << ", Pipeline "
             << run.pipeline << (run.chunking ? ", CHUNKING" : "");
}

void Check(const FaultRun& run) {
  Ledger ledger;
  Letters letters(kLetters, "end\r\n", Letters::Size::kKnown);
  const auto start = std::chrono::steady_clock::now();
  {
    ScriptedServer server([&](Peer& peer, int n) {
      Hostile hostile(peer, run.chunking, ledger);
      if (n == 0) hostile.GoesWrongAt(run.place, run.fault);
      hostile.Serve();
    });
    ClientOptions options;
    options.servers = {{"127.0.0.1", server.port()}};
    options.timeout = kStep;
    options.pipeline = run.pipeline;
    options.sign_in = true;
    options.user = "ada";
    options.password = platform::Secret("s3cret");
    const platform::SystemClock clock;
    Client(options, clock, platform::CancelToken()).Run(letters);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, 20s);
  for (const auto& line : letters.log) {
    EXPECT_TRUE(std::all_of(line.begin(), line.end(), [](unsigned char c) { return c >= ' ' && c != 0x7F; })) << line;
    EXPECT_EQ(line.find(kPassword), std::string::npos) << line;
  }
  EXPECT_LT(ledger.flooded, 8U << 20);
  ASSERT_EQ(letters.outcomes.size(), static_cast<std::size_t>(kLetters));
  for (int n = 0; n < kLetters; ++n) {
    SCOPED_TRACE("letter " + std::to_string(n) + " " + Name(letters.outcomes[n].state) + " " +
                 std::to_string(static_cast<int>(letters.outcomes[n].code)) + " " + letters.outcomes[n].reason);
    const State state = letters.outcomes[n].state;
    EXPECT_LE(ledger.whole[n], 1) << "sent twice";
    if (state == State::kSent) {
      EXPECT_EQ(ledger.agreed[n], 1) << "told as sent, and was not";
    } else {
      EXPECT_NE(letters.outcomes[n].code, ResultCode::kSuccess);
    }
    if (state == State::kFailed || state == State::kDeferred || state == State::kRefused) {
      EXPECT_EQ(ledger.agreed[n], 0) << "told as not sent, and was";
    }
  }
  EXPECT_EQ(letters.outcomes.back().state, State::kSent) << "who comes after the fault is served";
}

// Those that take a step's whole time are played side by side.
TEST(FaultTable, EveryFaultAtEveryPlace) {
  test::ForgetPeakMemory();
  std::vector<FaultRun> runs;
  for (const Fault& fault : Faults()) {
    for (auto at = static_cast<int>(Place::kGreeting); at <= static_cast<int>(Place::kQuit); ++at) {
      const auto place = static_cast<Place>(at);
      for (const bool pipeline : {false, true}) {
        for (const bool chunking : {false, true}) {
          if (chunking && place == Place::kData) continue;
          if (chunking && (place == Place::kStartTls || place == Place::kAuth)) continue;  // before it matters
          runs.push_back({place, fault, pipeline, chunking});
        }
      }
    }
  }
  PlaySideBySide(runs, 48, [](const FaultRun& run) {
    std::ostringstream name;
    name << run;
    SCOPED_TRACE(name.str());
    Check(run);
  });
  std::cout << runs.size() << " faults played\n";
#ifndef __SANITIZE_ADDRESS__
  EXPECT_LT(test::PeakMemory(), 64U << 20);  // with all the servers, and 48 clients at a time
#endif
}

}  // namespace
}  // namespace quillcast::smtp
