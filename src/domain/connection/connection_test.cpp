#include "domain/connection/connection_test.h"

#include <algorithm>
#include <utility>

#include "domain/connection/connection_record.h"
#include "smtp/client/client.h"

namespace quillcast::domain {
namespace {

using smtp::ConnectionStep;

constexpr std::chrono::seconds kSecondTry{10};
constexpr int kMostSteps = 2;  // as many times the patience of one step the whole may take

// Whether it may be a server that waits for the other side to begin TLS.
bool SaidNothing(const ConnectionTest& test, const ConnectionRecord& record) {
  const bool is_silent =
      test.outcome.code == smtp::ResultCode::kReplyTimeout || test.outcome.code == smtp::ResultCode::kConnectionLost;
  return is_silent && test.last_step() == ConnectionStep::kGreeting && !test.tls && !record.said_anything();
}

void TryUnderTls(ConnectionTest& test, smtp::ClientOptions options, const platform::Clock& clock,
                 const platform::CancelToken& cancel, const net::Deadline& until) {
  options.servers = {test.server};
  options.security = smtp::Security::kTls;
  options.timeout = std::min(options.timeout, kSecondTry);
  ConnectionRecord second(clock);
  const auto tried = second.Finish(smtp::Client(std::move(options), clock, cancel).Test(second, &second, until));
  if (!tried.tls || (tried.tls->version.empty() && !tried.tls->certificate)) return;
  test.speaks_tls = true;
  test.tls = tried.tls;
}

}  // namespace

ConnectionTest TestConnection(const smtp::ClientOptions& options, const platform::Clock& clock,
                              const platform::CancelToken& cancel) {
  ConnectionRecord record(clock);
  const auto began = clock.Monotonic();
  const platform::Duration whole = kMostSteps * options.timeout;
  // Silent servers of a list would use up the time in which the first of them is to be tried under TLS.
  const platform::Duration kept =
      options.servers.size() > 1 ? std::min<platform::Duration>(kSecondTry, platform::Duration(options.timeout) / 2)
                                 : platform::Duration::zero();
  auto test = record.Finish(
      smtp::Client(options, clock, cancel).Test(record, &record, net::Deadline::After(began, whole - kept)));
  test.security = options.security;
  for (ConnectionTest& other : test.others) other.security = options.security;
  for (std::size_t n = record.tries(); n < options.servers.size(); ++n) test.untried.push_back(options.servers[n]);
  if (SaidNothing(test, record)) TryUnderTls(test, options, clock, cancel, net::Deadline::After(began, whole));
  return test;
}

}  // namespace quillcast::domain
