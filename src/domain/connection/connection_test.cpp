#include "domain/connection/connection_test.h"

#include <algorithm>
#include <utility>

#include "domain/connection/connection_record.h"
#include "smtp/client/client.h"

namespace quillcast::domain {
namespace {

using smtp::ConnectionStep;

using smtp::ResultCode;

constexpr std::chrono::seconds kSecondTries{10};  // all of them together
constexpr int kMostSteps = 2;  // as many times the patience of one step the first tries may take together

// A wait that is cut by the end of all ends clearly before its own.
bool WasCutShort(const ConnectionTest& test, std::chrono::seconds patience) {
  const ResultCode code = test.outcome.code;
  const bool is_late =
      code == ResultCode::kReplyTimeout || code == ResultCode::kConnectTimeout || code == ResultCode::kResolveTimeout;
  return is_late && !test.steps.empty() && test.steps.back().took < platform::Duration(patience) * 9 / 10;
}

// Whether it may be a server that waits for the other side to begin TLS.
bool SaidNothing(const ConnectionTest& test) {
  const bool is_silent =
      test.outcome.code == ResultCode::kReplyTimeout || test.outcome.code == ResultCode::kConnectionLost;
  return is_silent && test.last_step() == ConnectionStep::kGreeting && !test.tls && !test.said_anything;
}

void TryUnderTls(ConnectionTest& test, smtp::ClientOptions options, const platform::Clock& clock,
                 const platform::CancelToken& cancel, const net::Deadline& until) {
  options.servers = {test.server};
  options.security = smtp::Security::kTls;
  ConnectionRecord second(clock);
  const auto tried = second.Finish(smtp::Client(std::move(options), clock, cancel).Test(second, &second, until));
  if (!tried.tls || (tried.tls->version.empty() && !tried.tls->certificate)) return;
  test.speaks_tls = true;
  test.tls = tried.tls;
}

// Each gets an equal share of what the ones before it left.
void TryUnderTls(const std::vector<ConnectionTest*>& silent, smtp::ClientOptions options, const platform::Clock& clock,
                 const platform::CancelToken& cancel) {
  options.timeout = std::min(options.timeout, kSecondTries);
  const platform::Instant end = clock.Monotonic() + options.timeout;
  for (std::size_t n = 0; n < silent.size(); ++n) {
    const platform::Instant now = clock.Monotonic();
    const platform::Duration share = (end - now) / static_cast<platform::Duration::rep>(silent.size() - n);
    TryUnderTls(*silent[n], options, clock, cancel, net::Deadline::After(now, share));
  }
}

}  // namespace

ConnectionTest TestConnection(const smtp::ClientOptions& options, const platform::Clock& clock,
                              const platform::CancelToken& cancel) {
  ConnectionRecord record(clock);
  const auto until = net::Deadline::After(clock.Monotonic(), kMostSteps * options.timeout);
  auto test = record.Finish(smtp::Client(options, clock, cancel).Test(record, &record, until));
  for (std::size_t n = record.tries(); n < options.servers.size(); ++n) test.untried.push_back(options.servers[n]);
  std::vector<ConnectionTest*> all = {&test};
  for (ConnectionTest& other : test.others) all.push_back(&other);
  std::vector<ConnectionTest*> silent;
  for (ConnectionTest* one : all) {
    one->security = options.security;
    one->cut_short = WasCutShort(*one, options.timeout);
    if (SaidNothing(*one)) silent.push_back(one);
  }
  TryUnderTls(silent, options, clock, cancel);
  if (!silent.empty() && cancel.Requested() >= platform::Stop::kStop) {
    Retell(test, {smtp::State::kFailed, ResultCode::kCancelled, {}, {}});
  }
  return test;
}

}  // namespace quillcast::domain
