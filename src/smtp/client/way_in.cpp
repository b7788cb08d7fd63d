#include "smtp/client/way_in.h"

#include <utility>

namespace quillcast::smtp {
namespace {

constexpr std::uint16_t kTlsPort = 465;

// A failure before anything was said, where `timeout` and `otherwise` are the numbers of that part of the way.
Outcome Unreachable(const Error& error, ResultCode timeout, ResultCode otherwise) {
  const std::string reason = InOneLine(error);
  return {State::kFailed, error.failure == Failure::kTimedOut ? timeout : otherwise, {}, reason};
}

// Whether another server may do better. A wrong password is not tried at each of them; a server that cannot say now
// whether it is right is passed over.
bool WorthAnotherServer(const Outcome& outcome) {
  const bool wrong = outcome.code == ResultCode::kAuthRefused && outcome.state == State::kRefused;
  return outcome.code != ResultCode::kCancelled && !wrong && outcome.code != ResultCode::kAuthNotOffered &&
         outcome.code != ResultCode::kAuthProtocolError;
}

}  // namespace

void WayIn::GoOn() {
  while (Step()) {
  }
}

// False where it has to wait, or has ended.
bool WayIn::Step() {
  switch (stage_) {
    case Stage::kNextServer:
      BeginServer();
      return true;
    case Stage::kName:
      return Find();
    case Stage::kConnect:
      return Connect();
    case Stage::kTls:
      return ShakeHands();
    case Stage::kSession:
      return Greet();
    case Stage::kDone:
      return false;
  }
  return false;
}

void WayIn::Begin(Stage stage, ConnectionStep step) {
  stage_ = stage;
  deadline_ = around_.StepUntil(around_.options.timeout);
  if (around_.watch != nullptr) around_.watch->Begins(step);
}

void WayIn::BeginServer() {
  if (server_ == around_.options.servers.size() || around_.until.Passed(around_.clock.Monotonic())) return End();
  if (around_.watch != nullptr) around_.watch->Begins(server());
  Begin(Stage::kName, ConnectionStep::kName);
  resolver_.Begin(server().host, around_.clock.Monotonic());
}

bool WayIn::Find() {
  auto found = resolver_.Step(around_.clock.Monotonic());
  if (!found && !IsLate()) return false;
  if (!found) found = resolver_.Late();
  if (!*found) {
    if (around_.watch != nullptr) around_.watch->NotFound(resolver_.fault());
    return Fail(Unreachable(found->error(), ResultCode::kResolveTimeout, ResultCode::kHostNotFound));
  }
  connecting_.emplace(**found, server().port, net::ToString(net::HostPort{server().host, server().port}));
  Begin(Stage::kConnect, ConnectionStep::kConnect);
  return true;
}

bool WayIn::Connect() {
  auto connected = connecting_->Step(around_.clock.Monotonic());
  if (!connected && !IsLate()) return false;
  if (!connected) connected = net::Connecting::Late();
  if (around_.watch != nullptr) around_.watch->Tried(connecting_->tried());
  connecting_.reset();
  if (!*connected) {
    return Fail(Unreachable(connected->error(), ResultCode::kConnectTimeout, ResultCode::kConnectFailed));
  }
  stream_ = net::Stream(*std::move(*connected));
  const Security security = around_.options.security;
  const bool tls_at_once =
      security == Security::kTls || (security == Security::kAutomatic && server().port == kTlsPort);
  if (!tls_at_once) {
    BeginSession(false);
    return true;
  }
  Begin(Stage::kTls, ConnectionStep::kTls);
  const auto tls = around_.tls();
  if (!tls) return Fail(OutcomeOf(tls.error()));
  deadline_ = around_.StepUntil(around_.options.timeout);  // the first time that took some
  if (const auto begun = stream_.BeginTls(**tls, server().host); !begun) return Fail(OutcomeOf(begun.error()));
  return true;
}

bool WayIn::ShakeHands() {
  const auto done = stream_.ShakeHands();
  if (done && !*done && !IsLate()) return false;
  if (around_.watch != nullptr) around_.watch->Encrypted(stream_.Facts());
  if (!done) return Fail(OutcomeOf(done.error()));
  if (!*done) return Fail({State::kFailed, ResultCode::kReplyTimeout, {}, MeaningOf(Awaited::kHandshake).missing});
  BeginSession(true);
  return true;
}

void WayIn::BeginSession(bool encrypted) {
  Begin(Stage::kSession, ConnectionStep::kGreeting);
  connection_ = std::make_unique<Connection>(around_, std::move(stream_), server().host, encrypted, lane_);
}

bool WayIn::Greet() {
  connection_->Write();
  connection_->Read();
  connection_->Write();
  connection_->TimePassed(around_.clock.Monotonic());
  if (connection_->closed()) {
    Outcome why = connection_->end();
    connection_.reset();
    return Fail(std::move(why));
  }
  if (!connection_->ready()) return false;
  outcome_ = {State::kSent, ResultCode::kSuccess, {}, {}};
  stage_ = Stage::kDone;
  return true;
}

bool WayIn::Fail(Outcome why) {
  stream_ = {};
  why.no_way = true;
  if (!WorthAnotherServer(why)) {
    outcome_ = std::move(why);
    stage_ = Stage::kDone;
    return true;
  }
  if (around_.watch != nullptr) around_.watch->Failed(why);
  const bool says_more = outcome_.code == ResultCode::kHostNotFound && why.code != ResultCode::kHostNotFound;
  if (server_ == 0 || says_more) {
    outcome_ = std::move(why);
    told_of_ = server_;
  }
  ++server_;
  stage_ = Stage::kNextServer;
  return true;
}

void WayIn::End() {
  if (around_.watch != nullptr) around_.watch->Told(told_of_);
  stage_ = Stage::kDone;
}

void WayIn::WaitFor(std::vector<pollfd>& out) const {
  if (stage_ == Stage::kName) resolver_.WaitFor(out);
  if (stage_ == Stage::kConnect) connecting_->WaitFor(out);
  if (stage_ == Stage::kTls) out.push_back(stream_.WaitsFor(false));
  if (stage_ == Stage::kSession) out.push_back(connection_->WaitsFor());
}

net::Deadline WayIn::Until(platform::Instant now) const {
  if (stage_ == Stage::kSession) return connection_->Until(now);
  net::Deadline again = net::Deadline::Never();
  if (stage_ == Stage::kName) again = resolver_.Again(now);
  if (stage_ == Stage::kConnect) again = connecting_->Again();
  return Earlier(deadline_, again);
}

}  // namespace quillcast::smtp
