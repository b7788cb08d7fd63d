// Whole runs over one connection and several, against a server that refuses, says goodbye and hangs up by chance, at
// every step, with the bytes of both sides cut and joined by chance: whatever happens, each job has one outcome, in
// order, and the outcome is true.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <vector>

#include "smtp/client/client_play.h"
#include "smtp/client/client_random_server.h"
#include "smtp/client/connection_limit.h"
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

// What the client's loop over sockets does, with wires of strings under it; chance decides which of them moves.
class Wires {
 public:
  Wires(const ServerKind& kind, bool pipeline, std::size_t lanes, std::uint32_t seed)
      : kind_(kind),
        chance_(seed),
        source_(5 + chance_() % (lanes == 1 ? 30 : 60), chance_),
        jobs_(cancel_, lanes),
        limit_(lanes),
        wires_(lanes) {
    options_.pipeline = pipeline;
    jobs_.Begin(source_);
  }

  void Run() {
    for (;;) {
      for (Wire& wire : wires_) Leave(wire);
      limit_.Accepted(Count().working);
      HandOut();
      if (jobs_.empty() && jobs_.Next() == nullptr) return;
      if (!AdvanceOne()) Stall();
    }
  }

  const Account& account() const { return account_; }
  const RandomSource& source() const { return source_; }
  std::size_t lanes() const { return wires_.size(); }
  int stalls() const { return stalls_; }

 private:
  struct Wire {
    std::optional<RandomServer> server;
    std::optional<ClientSession> session;
    std::string under_way;
    bool ready = false;
    Outcome end;
  };

  std::size_t LaneOf(const Wire& wire) const { return static_cast<std::size_t>(&wire - wires_.data()); }

  ConnectionLimit::Now Count() const {
    ConnectionLimit::Now now;
    for (const Wire& wire : wires_) {
      if (wire.session) ++(wire.session->accepted() ? now.working : now.coming);
    }
    return now;
  }

  void Connect(Wire& wire) {
    wire.ready = false;
    wire.under_way.clear();
    wire.server.emplace(kind_, chance_, account_);
    wire.session.emplace(options_, SessionSetup{"[127.0.0.1]", true, false}, window_);
  }

  void Leave(Wire& wire) {
    if (!wire.session || !(wire.session->closed() || (wire.session->Idle() && wire.session->UsedUp()))) return;
    const bool crowded = wire.session->crowded();
    wire.session.reset();
    wire.server.reset();
    const ConnectionLimit::Now now = Count();
    if (crowded) limit_.Refused(now.working);
    if (!wire.ready) limit_.Failed(wire.end, now.in_all(), {});
    if (!wire.ready && now.in_all() == 0 && jobs_.has_next()) jobs_.Fail(wire.end);
    CountReady();
  }

  void CountReady() {
    const auto ready = std::ranges::count_if(wires_, [](const Wire& one) { return one.session && one.ready; });
    window_.SetConnections(static_cast<std::size_t>(ready));
  }

  void HandOut() {
    for (Wire& wire : wires_) {
      while (wire.session && wire.session->WantsMessage()) {
        Job* job = jobs_.Next();
        if (job == nullptr) return;
        jobs_.Submitted(LaneOf(wire));
        wire.session->Submit(job->envelope, *job->message);
        TakeEvents(wire);
      }
    }
    if (!limit_.MayOpen(Count(), {}) || jobs_.Next() == nullptr) return;
    Connect(*std::ranges::find_if(wires_, [](const Wire& wire) { return !wire.session; }));
  }

  // One that has something to move; false where none has.
  bool AdvanceOne() {
    const std::size_t first = chance_() % wires_.size();
    for (std::size_t n = 0; n < wires_.size(); ++n) {
      Wire& wire = wires_[(first + n) % wires_.size()];
      if (!wire.session || wire.session->closed()) continue;
      if (Advance(wire) || wire.session->closed()) return true;
    }
    return false;
  }

  void Stall() {
    for (Wire& wire : wires_) {
      if (!wire.session || wire.session->Idle()) continue;
      if (wire.session->Listens()) {
        wire.session->OnSilence();
        return TakeEvents(wire);
      }
      ++stalls_;
      wire.session->GiveUp({State::kFailed, ResultCode::kReplyTimeout, {}, "It took too long."});
      return TakeEvents(wire);
    }
  }

  // Moves some bytes one way or the other; false when there are none to move.
  bool Advance(Wire& wire) {
    const bool cut = kind_.kept == ServerKind::Pipelining::kKept;
    const auto bytes = wire.session->BytesToSend();
    TakeEvents(wire);
    if (!bytes.empty() && (chance_() % 2 == 0 || wire.server->out().empty())) {
      const std::size_t count = cut ? 1 + chance_() % bytes.size() : bytes.size();
      wire.under_way += bytes.substr(0, count);
      wire.session->Sent(count);
      if (!wire.server->open()) return Lose(wire);
      const std::size_t heard = cut ? chance_() % (wire.under_way.size() + 1) : wire.under_way.size();
      wire.server->Hear(wire.under_way.substr(0, heard));
      wire.under_way.erase(0, heard);
      return true;
    }
    if (!wire.under_way.empty()) {
      wire.server->Hear(wire.under_way);
      wire.under_way.clear();
      return true;
    }
    if (std::string& said = wire.server->out(); !said.empty()) {
      const std::size_t count = 1 + chance_() % said.size();
      const std::string part = said.substr(0, count);
      said.erase(0, count);
      wire.session->Receive(part);
      TakeEvents(wire);
      return true;
    }
    return wire.server->open() ? false : Lose(wire);
  }

  bool Lose(Wire& wire) {
    wire.session->Receive(wire.server->out());
    wire.session->GiveUp({State::kFailed, ResultCode::kConnectionLost, {}, "The server closed the connection."});
    TakeEvents(wire);
    return true;
  }

  void TakeEvents(Wire& wire) {
    while (const Event* event = wire.session->NextEvent()) {
      if (event->kind == Event::Kind::kOutcome) jobs_.Settle(LaneOf(wire), event->outcome);
      if (event->kind == Event::Kind::kClosed) wire.end = event->outcome;
      if (event->kind == Event::Kind::kReady) {
        wire.ready = true;
        CountReady();
      }
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
  ConnectionLimit limit_;
  std::vector<Wire> wires_;
  int stalls_ = 0;
};

int TimesIn(const std::map<std::string, int>& counts, const std::string& key) {
  const auto found = counts.find(key);
  return found == counts.end() ? 0 : found->second;
}

void ExpectTruth(const Wires& wires, const ServerKind& kind) {
  const auto& [finished, outcomes] = std::tie(wires.source().finished, wires.source().outcomes);
  const Account& account = wires.account();
  EXPECT_EQ(account.misdelivered, 0);
  for (std::size_t n = 0; n < finished.size(); ++n) {
    ASSERT_EQ(finished[n], "r" + std::to_string(n) + "@example.net");
    const int taken = TimesIn(account.taken, finished[n]);
    const State state = outcomes[n].state;
    EXPECT_LE(taken, 1) << finished[n];
    if (kind.most_at_once == 1000) {
      // Where it takes no more over one connection, each of the others that are there may say so as well.
      const std::size_t most = kind.most == 1000 && kind.refuse == 0 ? 2 : wires.lanes() + 2;
      EXPECT_LE(TimesIn(account.attempts, finished[n]), static_cast<int>(most)) << finished[n];
    }
    if (state != State::kUnknown) {
      EXPECT_EQ(taken, state == State::kSent ? 1 : 0) << finished[n] << Name(state);
    }
    // Without trouble on the line every message has the server's own word.
    const bool no_goodbye = kind.goodbye == 0 && (kind.code_of_limit != 421 || kind.most == 1000);
    if (kind.drop == 0 && no_goodbye) {
      EXPECT_TRUE(state == State::kSent || outcomes[n].reply.code >= 400) << Name(state) << outcomes[n].reason;
    }
    if (kind.drop == 0 && kind.goodbye == 0 && kind.refuse == 0) {
      EXPECT_EQ(state, State::kSent) << finished[n];
    }
  }
}

#ifdef __SANITIZE_ADDRESS__
constexpr std::uint32_t kSeeds = 20;  // a sanitizer takes its time, and finds what it looks for in few
#else
constexpr std::uint32_t kSeeds = 80;
#endif

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
           {.name = "loses what comes together, and hangs up", .refuse = 50, .drop = 8, .kept = kRestLost},
           {.name = "greets two at a time", .code_of_limit = 421, .most_at_once = 2},
           {.name = "serves two at a time", .most_at_once = 2, .says_at = "MAIL"},
           {.name = "serves two at a time, and refuses", .refuse = 60, .most_at_once = 2, .says_at = "MAIL"},
           {.name = "serves one at a time, and hangs up",
           .code_of_limit = 421,
           .most_at_once = 1,
           .says_at = "MAIL",
           .drop = 8}}) {
    for (int offer = 0; offer < 8; ++offer) {
      ServerKind kind = row;
      kind.pipelining = (offer & 1) != 0;
      kind.chunking = (offer & 2) != 0;
      const bool pipeline = (offer & 4) != 0;
      for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
        const std::size_t lanes = seed % 4 != 0 ? 1 : 2 + seed / 4 % 4;
        SCOPED_TRACE(testing::Message() << kind.name << ", offer " << offer << ", seed " << seed);
        Wires wires(kind, pipeline, lanes, seed);
        wires.Run();
        ExpectTruth(wires, kind);
        // Only a server that loses commands makes the client wait in vain, and only once in a run on each connection.
        EXPECT_LE(wires.stalls(), kind.kept == kRestLost ? static_cast<int>(lanes) : 0);
        if (HasFailure()) return;
      }
    }
  }
}

}  // namespace
}  // namespace quillcast::smtp
