#include "smtp/client/client.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "net/connect.h"
#include "net/resolver.h"
#include "smtp/client/connection.h"
#include "smtp/client/job_queue.h"
#include "smtp/client/no_core_dump.h"
#include "smtp/client/send_window.h"

namespace quillcast::smtp {
namespace {

using platform::Stop;

constexpr std::uint16_t kTlsPort = 465;
constexpr std::chrono::seconds kQuitPatience{2};

// How long a connection is kept for a message that is not due yet.
constexpr std::chrono::seconds kIdleKept{30};

// How often a source that has none now is asked again: it may have one sooner than it said. And at least so long after
// it was asked, should the moment that it names have passed.
constexpr std::chrono::milliseconds kAskAgain{500};
constexpr std::chrono::milliseconds kNotYet{1};

Outcome Succeeded() { return {State::kSent, ResultCode::kSuccess, {}, {}}; }
Outcome Cancelled() { return {State::kFailed, ResultCode::kCancelled, {}, {}, false}; }

// A failure on the way to a connection, where `timeout` and `otherwise` are the numbers of that part of the way.
Outcome Unreachable(const Error& error, ResultCode timeout, ResultCode otherwise) {
  if (error.failure == Failure::kTryAgain) return Cancelled();
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

class Client::Driver {
 public:
  Driver(ClientOptions options, const platform::Clock& clock, const platform::CancelToken& cancel)
      : options_(std::move(options)), jobs_(cancel), around_{options_, clock, cancel,
                                                             window_,  jobs_, [this] { return Tls(); }} {
    if (!options_.password.empty()) no_core_.emplace();
    if (options_.per_connection > 0) window_.LimitConnection(options_.per_connection);
  }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  void Run(JobSource& source);
  Outcome Test(JobSource& source, ConnectionWatch* watch, const net::Deadline& until);

 private:
  bool Stopped() const { return around_.cancel.Requested() >= Stop::kStop; }
  Outcome Connect();
  net::Patience Patience() const;
  void Begins(ConnectionStep step);
  Result<platform::UniqueFd> Reach(std::span<const net::IpAddress> addresses, std::uint16_t port);
  Outcome StartTls(net::Stream& stream, const std::string& host);
  Outcome ConnectTo(const Server& server);
  Result<net::TlsContext*> Tls();
  void SendOver(Job& job);
  net::Deadline AskAgain() const;
  void RestUntilDue();

  std::optional<NoCoreDump> no_core_;  // while the password is in memory
  ClientOptions options_;
  SendWindow window_;
  JobQueue jobs_;
  Surroundings around_;
  net::Resolver resolver_;
  std::unique_ptr<net::TlsContext> tls_;
  std::optional<Connection> connection_;
  std::optional<platform::Instant> rests_since_;  // nothing is in flight, and nothing was due
};

Result<net::TlsContext*> Client::Driver::Tls() {
  if (tls_) return tls_.get();
  auto made = net::TlsContext::ForClient(options_.ca_file);
  if (!made) return made.error();
  tls_ = *std::move(made);
  return tls_.get();
}

net::Patience Client::Driver::Patience() const {
  return {around_.clock, around_.cancel, Stop::kStop,
          Earlier(around_.until, net::Deadline::After(around_.clock.Monotonic(), options_.timeout))};
}

void Client::Driver::Begins(ConnectionStep step) {
  if (around_.watch != nullptr) around_.watch->Begins(step);
}

Result<platform::UniqueFd> Client::Driver::Reach(std::span<const net::IpAddress> addresses, std::uint16_t port) {
  Begins(ConnectionStep::kConnect);
  std::vector<net::TriedAddress> tried;
  auto socket = net::Connect(addresses, port, Patience(), &tried);
  if (around_.watch != nullptr) around_.watch->Tried(tried);
  return socket;
}

Outcome Client::Driver::StartTls(net::Stream& stream, const std::string& host) {
  Begins(ConnectionStep::kTls);
  const auto tls = Tls();
  if (!tls) return OutcomeOf(tls.error());
  const auto started = stream.StartTls(**tls, host, Patience());
  if (around_.watch != nullptr) around_.watch->Encrypted(stream.Facts());
  if (started) return Succeeded();
  Outcome outcome = OutcomeOf(started.error());
  if (outcome.code == ResultCode::kReplyTimeout) outcome.reason = MeaningOf(Awaited::kHandshake).missing;
  return outcome;
}

Outcome Client::Driver::ConnectTo(const Server& server) {
  if (around_.watch != nullptr) around_.watch->Begins(server);
  Begins(ConnectionStep::kName);
  const auto addresses = resolver_.Resolve(server.host, Patience());
  if (!addresses) return Unreachable(addresses.error(), ResultCode::kResolveTimeout, ResultCode::kHostNotFound);
  auto socket = Reach(*addresses, server.port);
  if (!socket) return Unreachable(socket.error(), ResultCode::kConnectTimeout, ResultCode::kConnectFailed);

  net::Stream stream(*std::move(socket));
  const bool tls_at_once =
      options_.security == Security::kTls || (options_.security == Security::kAutomatic && server.port == kTlsPort);
  if (tls_at_once) {
    if (Outcome started = StartTls(stream, server.host); started.code != ResultCode::kSuccess) return started;
  }
  connection_.emplace(around_, std::move(stream), server.host, tls_at_once);
  Outcome opened = connection_->Open();
  if (opened.code != ResultCode::kSuccess) connection_.reset();
  return opened;
}

// Where none answers, tells the failure of the first that could be found, as a name that is misspelt says less than a
// server that refused; where none could be found, of the first.
Outcome Client::Driver::Connect() {
  Outcome told{State::kFailed, ResultCode::kNoServer, {}, "No server is set up."};
  std::size_t whose = 0;
  for (std::size_t n = 0; n < options_.servers.size() && !around_.until.Passed(around_.clock.Monotonic()); ++n) {
    Outcome outcome = ConnectTo(options_.servers[n]);
    if (outcome.code == ResultCode::kSuccess || !WorthAnotherServer(outcome)) return outcome;
    if (around_.watch != nullptr) around_.watch->Failed(outcome);
    const bool says_more = told.code == ResultCode::kHostNotFound && outcome.code != ResultCode::kHostNotFound;
    if (n > 0 && !says_more) continue;
    told = std::move(outcome);
    whose = n;
  }
  if (around_.watch != nullptr) around_.watch->Told(whose);
  return told;
}

// Over the connection that is there, or a new one.
void Client::Driver::SendOver(Job& job) {
  if (connection_ && connection_->idle() && connection_->ClosedMeanwhile()) {
    connection_.reset();
    jobs_.Move();
  }
  if (!connection_) {
    if (!jobs_.CatchUp()) return jobs_.Fail(Cancelled());
    Outcome opened = Connect();
    opened.begun = opened.code != ResultCode::kCancelled;
    if (opened.code != ResultCode::kSuccess) return jobs_.Fail(opened);
  }
  if (Stopped()) return jobs_.Fail(Cancelled());
  jobs_.Submitted();
  connection_->Submit(job);
}

net::Deadline Client::Driver::AskAgain() const {
  const auto now = around_.clock.Monotonic();
  return net::Deadline::At(std::clamp<platform::Instant>(*jobs_.due(), now + kNotYet, now + kAskAgain));
}

// Servers hang up on who says nothing for some minutes, and a person's own are few: over a longer wait none is kept.
void Client::Driver::RestUntilDue() {
  const auto now = around_.clock.Monotonic();
  if (!rests_since_) rests_since_ = now;
  if (connection_ && *jobs_.due() >= *rests_since_ + kIdleKept) {
    connection_->Quit(kQuitPatience, Stop::kStop);
    connection_.reset();
  }
  around_.source->Waiting();
  if (connection_) return connection_->Rest(AskAgain());
  IgnoreErrors(net::WaitAny({}, {around_.clock, around_.cancel, Stop::kStop}, AskAgain()));  // a stop is seen by Run
}

void Client::Driver::Run(JobSource& source) {
  around_.source = &source;
  jobs_.Begin(source);
  for (;;) {
    if (connection_ && connection_->used_up()) connection_->Quit(kQuitPatience);
    if (connection_ && connection_->closed()) connection_.reset();
    const bool wants = !connection_ || connection_->WantsMessage();
    Job* job = wants ? jobs_.Next() : nullptr;
    if (job != nullptr) {
      rests_since_.reset();
      SendOver(*job);
      continue;
    }
    const bool caught_up = jobs_.CatchUp();
    const bool awaits_due = wants && jobs_.due() && caught_up;
    if (!connection_ || connection_->idle()) {
      if (!awaits_due || Stopped()) break;
      RestUntilDue();
      continue;
    }
    if (Stopped() || !caught_up) connection_->Withdraw(Cancelled());
    connection_->Advance(awaits_due ? AskAgain() : net::Deadline::Never());
  }
  if (connection_) connection_->Quit(kQuitPatience);  // every message has its outcome: how QUIT goes is no matter
  connection_.reset();
}

Outcome Client::Driver::Test(JobSource& source, ConnectionWatch* watch, const net::Deadline& until) {
  around_.source = &source;
  around_.until = until;
  around_.watch = watch;
  Outcome opened = Connect();
  if (opened.code != ResultCode::kSuccess) return opened;
  Outcome quit = connection_->Quit(options_.timeout, Stop::kStop);
  connection_.reset();
  if (quit.code == ResultCode::kSuccess) return Succeeded();
  quit.code = quit.code == ResultCode::kCancelled ? ResultCode::kCancelled : ResultCode::kQuitFailed;
  return quit;
}

Client::Client(ClientOptions options, const platform::Clock& clock, const platform::CancelToken& cancel)
    : driver_(std::make_unique<Driver>(std::move(options), clock, cancel)) {}
Client::~Client() = default;

void Client::Run(JobSource& source) { driver_->Run(source); }
Outcome Client::Test(JobSource& source, ConnectionWatch* watch, const net::Deadline& until) {
  return driver_->Test(source, watch, until);
}

}  // namespace quillcast::smtp
