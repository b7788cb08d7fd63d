#include "smtp/client/client.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "smtp/client/lanes.h"
#include "smtp/client/no_core_dump.h"

namespace quillcast::smtp {
namespace {

// How often a source that has none now is asked again: it may have one sooner than it said. And at least so long after
// it was asked, should the moment that it names have passed.
constexpr std::chrono::milliseconds kAskAgain{500};
constexpr std::chrono::milliseconds kNotYet{1};

Outcome Succeeded() { return {State::kSent, ResultCode::kSuccess, {}, {}}; }

}  // namespace

class Client::Driver {
 public:
  Driver(ClientOptions options, const platform::Clock& clock, const platform::CancelToken& cancel)
      : options_(std::move(options)),
        jobs_(cancel, ConnectionLimit::kMost, options_.network_wait.count() > 0),
        around_{options_, clock, cancel, window_, jobs_, [this] { return Tls(); }} {
    if (!options_.password.empty()) no_core_.emplace();
    if (options_.per_connection > 0) window_.LimitConnection(options_.per_connection);
  }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  void Run(JobSource& source);
  Outcome Test(JobSource& source, ConnectionWatch* watch, const net::Deadline& until);

 private:
  Result<net::TlsContext*> Tls();
  void Stop(Lanes& lanes);
  net::Deadline AskAgain() const;
  Outcome GoIn(WayIn& way);

  std::optional<NoCoreDump> no_core_;  // while the password is in memory
  ClientOptions options_;
  SendWindow window_;
  JobQueue jobs_;
  std::unique_ptr<net::TlsContext> tls_;
  Surroundings around_;
};

Result<net::TlsContext*> Client::Driver::Tls() {
  if (tls_) return tls_.get();
  auto made = net::TlsContext::ForClient(options_.ca_file);
  if (!made) return made.error();
  tls_ = *std::move(made);
  return tls_.get();
}

net::Deadline Client::Driver::AskAgain() const {
  const auto now = around_.clock.Monotonic();
  return net::Deadline::At(std::clamp<platform::Instant>(*jobs_.due(), now + kNotYet, now + kAskAgain));
}

// What is under way is waited for; nothing else begins.
void Client::Driver::Stop(Lanes& lanes) {
  jobs_.Leave();
  lanes.Withdraw();
}

void Client::Driver::Run(JobSource& source) {
  around_.source = &source;
  jobs_.Begin(source);
  Lanes lanes(around_, options_.connections);
  bool recorded = true;
  for (;;) {
    lanes.GoOn();
    const bool has_none = recorded && lanes.HandOut();
    recorded = jobs_.CatchUp() && recorded;
    const bool stops = !recorded || around_.Stopped();
    if (stops) Stop(lanes);
    const bool waits_for_due = !stops && has_none && jobs_.due();
    if (jobs_.empty() && !waits_for_due && (stops || has_none)) break;
    lanes.LeaveIdle(waits_for_due ? jobs_.due() : std::nullopt);
    lanes.Wait(waits_for_due ? AskAgain() : net::Deadline::Never());
  }
  jobs_.CatchUp();
  lanes.LeaveAll();
}

// kSuccess once a connection is ready.
Outcome Client::Driver::GoIn(WayIn& way) {
  std::vector<pollfd> descriptors;
  for (way.GoOn(); !way.done(); way.GoOn()) {
    descriptors.clear();
    way.WaitFor(descriptors);
    const auto began = around_.clock.Monotonic();
    const auto waited = WaitAndShow(
        around_, began, way.Until(began),
        [&](const net::Deadline& until) {
          return net::WaitAny(descriptors, {around_.clock, around_.cancel, platform::Stop::kStop}, until);
        },
        [](const auto& got) { return got && !*got; });
    if (!waited) return OutcomeOf(waited.error());
  }
  return way.outcome();
}

Outcome Client::Driver::Test(JobSource& source, ConnectionWatch* watch, const net::Deadline& until) {
  around_.source = &source;
  around_.until = until;
  around_.watch = watch;
  jobs_.Begin(source);
  WayIn way(around_, 0);
  Outcome opened = GoIn(way);
  if (opened.code != ResultCode::kSuccess) return opened;
  const auto connection = way.TakeConnection();
  connection->Quit(options_.timeout, platform::Stop::kStop);
  while (!connection->closed()) connection->Wait(net::Deadline::Never());
  Outcome quit = connection->end();
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
