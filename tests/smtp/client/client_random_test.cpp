// Whole runs against a server that refuses, says goodbye and hangs up by chance, at every step, with the bytes of both
// sides cut and joined by chance: whatever happens, each job has one outcome, in order, and the outcome is true.
#include <gtest/gtest.h>

#include <deque>

#include "smtp/client/client_play.h"
#include "smtp/client/client_random_server.h"
#include "smtp/client/job_queue.h"

namespace quillcast::smtp {
namespace {

struct RandomJob : Job {
  std::string recipient;
  std::unique_ptr<TextSource> source;
};

class RandomSource final : public JobSource {
 public:
  RandomSource(std::size_t count, std::mt19937& chance) {
    for (std::size_t n = 0; n < count; ++n) {
      RandomJob& job = jobs_.emplace_back();
      job.recipient = "r" + std::to_string(n) + "@example.net";
      const std::size_t lines = chance() % 10 == 0 ? 3000 : chance() % 5;
      std::string text = "To: " + job.recipient + "\r\n";
      for (std::size_t line = 0; line < lines; ++line) text += "a line of the message\r\n";
      job.envelope = {
          .sender = "ada@example.org"_address, .recipient = *Address::From(job.recipient), .size = text.size()};
      job.source = std::make_unique<TextSource>(text, 1 + chance() % 5000, false);
      job.message = job.source.get();
    }
  }
  Job* NextJob() override { return taken_ < jobs_.size() ? &jobs_[taken_++] : nullptr; }
  void Finished(Job& job, const Outcome& outcome) override {
    finished.push_back(static_cast<RandomJob&>(job).recipient);
    outcomes.push_back(outcome);
  }
  void LogLine(std::string_view) override {}
  void Progress(std::uint64_t, std::uint64_t) override {}

  std::vector<std::string> finished;
  std::vector<Outcome> outcomes;

 private:
  std::deque<RandomJob> jobs_;
  std::size_t taken_ = 0;
};

// What the client's loop over sockets does, with a wire of strings under it.
class Wire {
 public:
  Wire(const ServerKind& kind, bool pipeline, std::uint32_t seed)
      : kind_(kind), chance_(seed), source_(5 + chance_() % 30, chance_), jobs_(cancel_) {
    options_.pipeline = pipeline;
    jobs_.Begin(source_);
  }

  void Run() {
    for (;;) {
      const bool used_up = session_ && session_->Idle() && session_->UsedUp();
      if (!session_ || session_->closed() || used_up) Connect();
      Job* job = session_->WantsMessage() ? jobs_.Next() : nullptr;
      if (job != nullptr) {
        jobs_.Submitted();
        session_->Submit(job->envelope, *job->message);
        TakeEvents();
      } else if (session_->Idle()) {
        return;
      } else if (!session_->closed() && !Advance()) {
        ++stalls_;
        session_->GiveUp({State::kFailed, ResultCode::kReplyTimeout, {}, "It took too long."});
        TakeEvents();
      }
    }
  }

  const Account& account() const { return account_; }
  const RandomSource& source() const { return source_; }
  int stalls() const { return stalls_; }

 private:
  void Connect() {
    server_.emplace(kind_, chance_, account_);
    session_.emplace(options_, SessionSetup{"[127.0.0.1]", true, false}, window_);
    under_way_.clear();
  }

  // Moves some bytes one way or the other; false when there are none to move.
  bool Advance() {
    const bool cut = kind_.kept == ServerKind::Pipelining::kKept;
    const auto bytes = session_->BytesToSend();
    TakeEvents();
    if (!bytes.empty() && (chance_() % 2 == 0 || server_->out().empty())) {
      const std::size_t count = cut ? 1 + chance_() % bytes.size() : bytes.size();
      under_way_ += bytes.substr(0, count);
      session_->Sent(count);
      if (!server_->open()) return Lose();
      const std::size_t heard = cut ? chance_() % (under_way_.size() + 1) : under_way_.size();
      server_->Hear(under_way_.substr(0, heard));
      under_way_.erase(0, heard);
      return true;
    }
    if (!under_way_.empty()) {
      server_->Hear(under_way_);
      under_way_.clear();
      return true;
    }
    if (std::string& said = server_->out(); !said.empty()) {
      const std::size_t count = 1 + chance_() % said.size();
      const std::string part = said.substr(0, count);
      said.erase(0, count);
      session_->Receive(part);
      TakeEvents();
      return true;
    }
    return server_->open() ? false : Lose();
  }

  bool Lose() {
    session_->Receive(server_->out());
    session_->GiveUp({State::kFailed, ResultCode::kConnectionLost, {}, "The server closed the connection."});
    TakeEvents();
    return true;
  }

  void TakeEvents() {
    while (const Event* event = session_->NextEvent()) {
      if (event->kind == Event::Kind::kOutcome) jobs_.Settle(event->outcome, event->again);
    }
  }

  const ServerKind& kind_;
  std::mt19937 chance_;
  platform::CancelToken cancel_;
  ClientOptions options_;
  Account account_;
  RandomSource source_;
  SendWindow window_;
  JobQueue jobs_;
  std::optional<RandomServer> server_;
  std::optional<ClientSession> session_;
  std::string under_way_;
  int stalls_ = 0;
};

int TimesIn(const std::map<std::string, int>& counts, const std::string& key) {
  const auto found = counts.find(key);
  return found == counts.end() ? 0 : found->second;
}

void ExpectTruth(const Wire& wire, const ServerKind& kind) {
  const auto& [finished, outcomes] = std::tie(wire.source().finished, wire.source().outcomes);
  const Account& account = wire.account();
  EXPECT_EQ(account.misdelivered, 0);
  for (std::size_t n = 0; n < finished.size(); ++n) {
    ASSERT_EQ(finished[n], "r" + std::to_string(n) + "@example.net");
    const int taken = TimesIn(account.taken, finished[n]);
    const State state = outcomes[n].state;
    EXPECT_LE(taken, 1) << finished[n];
    EXPECT_LE(TimesIn(account.attempts, finished[n]), 2) << finished[n];
    if (state != State::kUnknown) {
      EXPECT_EQ(taken, state == State::kSent ? 1 : 0) << finished[n] << Name(state);
    }
    // Without trouble on the line every message has the server's own word.
    const bool no_goodbye = kind.goodbye == 0 && kind.code_of_limit != 421;
    if (kind.drop == 0 && no_goodbye) {
      EXPECT_TRUE(state == State::kSent || outcomes[n].reply.code >= 400) << Name(state) << outcomes[n].reason;
    }
    if (kind.drop == 0 && kind.goodbye == 0 && kind.refuse == 0) {
      EXPECT_EQ(state, State::kSent) << finished[n];
    }
  }
}

TEST(ClientRandom, TellsTheTruthWhateverTheServerDoes) {
  using enum ServerKind::Pipelining;
  for (const ServerKind& row : std::initializer_list<ServerKind>{
           {.name = "well"},
           {.name = "refuses", .refuse = 150},
           {.name = "refuses, 354 in vain", .refuse = 150, .data_in_vain = true},
           {.name = "refuses, wants RSET", .refuse = 150, .needs_reset = true},
           {.name = "refuses for good", .refuse = 150, .only_for_good = true},
           {.name = "refuses for good, wants RSET", .refuse = 150, .only_for_good = true, .needs_reset = true},
           {.name = "takes twelve a connection", .most = 12},
           {.name = "takes a few a connection, and refuses", .refuse = 50, .most = 4},
           {.name = "says goodbye after twenty", .most = 20, .code_of_limit = 421},
           {.name = "says goodbye", .refuse = 20, .goodbye = 30},
           {.name = "hangs up", .drop = 15},
           {.name = "all of it", .refuse = 60, .goodbye = 15, .drop = 8, .data_in_vain = true, .needs_reset = true},
           {.name = "loses what comes together", .kept = kRestLost},
           {.name = "refuses what comes together", .kept = kRestRefused},
           {.name = "loses what comes together, and hangs up", .refuse = 50, .drop = 8, .kept = kRestLost}}) {
    for (int offer = 0; offer < 8; ++offer) {
      ServerKind kind = row;
      kind.pipelining = (offer & 1) != 0;
      kind.chunking = (offer & 2) != 0;
      const bool pipeline = (offer & 4) != 0;
      for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(testing::Message() << kind.name << ", offer " << offer << ", seed " << seed);
        Wire wire(kind, pipeline, seed);
        wire.Run();
        ExpectTruth(wire, kind);
        // Only a server that loses commands makes the client wait in vain, and only once in a run.
        EXPECT_LE(wire.stalls(), kind.kept == kRestLost ? 1 : 0);
        if (HasFailure()) return;
      }
    }
  }
}

}  // namespace
}  // namespace quillcast::smtp
