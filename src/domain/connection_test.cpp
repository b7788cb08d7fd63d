#include "domain/connection_test.h"

#include <algorithm>
#include <utility>

#include "account/account_connection.h"
#include "account/account_settings.h"
#include "platform/text.h"
#include "smtp/client/client.h"

namespace quillcast::domain {
namespace {

using smtp::ConnectionStep;

constexpr std::size_t kMostLines = 1000;
constexpr std::size_t kMostWays = 50;
constexpr std::size_t kLongestWord = 200;  // octets of an extension
constexpr std::chrono::seconds kSecondTry{10};
constexpr int kMostSteps = 2;  // as many times the patience of one step the whole may take

// The names of one line, each once.
void AddWays(std::string_view names, std::vector<std::string>& ways) {
  for (const std::string_view name : platform::Split(names, ' ')) {
    if (ways.size() == kMostWays) return;
    std::string shown = platform::Printable(name, kLongestWord);
    const bool is_new = std::find(ways.begin(), ways.end(), shown) == ways.end();
    if (!name.empty() && is_new) ways.push_back(std::move(shown));
  }
}

Offer OfferOf(std::string_view reply) {
  Offer offer{.known = smtp::ParseCapabilities(reply)};
  const auto lines = platform::Split(reply, '\n');
  for (std::size_t n = 1; n < lines.size(); ++n) {
    const std::string_view line = platform::Trim(lines[n]);
    const bool is_sign_in =
        platform::StartsWithIgnoringAsciiCase(line, "AUTH ") || platform::StartsWithIgnoringAsciiCase(line, "AUTH=");
    if (is_sign_in) {
      AddWays(line.substr(5), offer.sign_in);
    } else if (!line.empty()) {
      offer.extensions.push_back(platform::Printable(line, kLongestWord));
    }
  }
  return offer;
}

// Writes down what a client tells, of each server apart.
class Recorder final : public smtp::JobSource, public smtp::ConnectionWatch {
 public:
  explicit Recorder(const platform::Clock& clock) : clock_(clock) {}

  // The test of the server that is told, with the outcome of the whole, and beside it the others.
  ConnectionTest Finish(smtp::Outcome outcome) {
    EndStep();
    Told(told_.value_or(tries_.empty() ? 0 : tries_.size() - 1));
    ConnectionTest told;
    std::vector<ConnectionTest> others;
    for (std::size_t n = 0; n < tries_.size(); ++n) {
      if (n == told_) tries_[n].test.outcome = std::move(outcome);
      Report(tries_[n]);
      if (n == told_) {
        told = std::move(tries_[n].test);
      } else {
        others.push_back(std::move(tries_[n].test));
      }
    }
    if (tries_.empty()) told.outcome = std::move(outcome);
    told.others = std::move(others);
    return told;
  }
  // Of the server that is told, once it is finished.
  bool said_anything() const { return told_ && *told_ < tries_.size() && tries_[*told_].lines > 0; }
  std::size_t tries() const { return tries_.size(); }

  smtp::Job* NextJob() override { return nullptr; }
  void Finished(smtp::Job&, const smtp::Outcome&) override {}
  void Progress(std::uint64_t, std::uint64_t) override {}
  void LogLine(std::string_view line) override {
    Try& now = tries_.back();
    if (++now.lines <= kMostLines) now.conversation.append(line).append("\r\n");
    if (now.lines == kMostLines + 1) now.conversation += "...\r\n";
  }

  void Begins(const smtp::Server& server) override {
    EndStep();
    tries_.emplace_back().test.server = server;
  }
  void Failed(const smtp::Outcome& outcome) override { tries_.back().test.outcome = outcome; }
  void Told(std::size_t server) override { told_ = server; }
  void Begins(ConnectionStep step) override {
    EndStep();
    Now().steps.push_back({step, {}});
    began_ = clock_.Monotonic();
  }
  void Tried(std::span<const net::TriedAddress> addresses) override {
    Now().addresses.assign(addresses.begin(), addresses.end());
  }
  void Encrypted(const net::TlsFacts& facts) override { Now().tls = facts; }
  void Offered(std::string_view text) override { (Now().tls ? Now().under_tls : Now().in_clear) = OfferOf(text); }
  void Senseless(std::string_view bytes) override {
    Now().odd = platform::Printable(bytes);
    LogLine("S: " + Now().odd);
  }

 private:
  struct Try {
    ConnectionTest test;
    std::string conversation;
    std::size_t lines = 0;
  };

  ConnectionTest& Now() { return tries_.back().test; }
  void EndStep() {
    if (began_) Now().steps.back().took = clock_.Monotonic() - *began_;
    began_.reset();
  }
  static void Report(Try& one) {
    ConnectionTest& test = one.test;
    if (!test.Works()) test.report = smtp::ResultText(static_cast<int>(test.outcome.code)) + "\r\n";
    test.report += one.conversation;
  }

  const platform::Clock& clock_;
  std::optional<platform::Instant> began_;  // the step that is under way
  std::vector<Try> tries_;                  // one for each server; the first call is that one begins
  std::optional<std::size_t> told_;
};

// Whether it may be a server that waits for the other side to begin TLS.
bool SaidNothing(const ConnectionTest& test, const Recorder& recorder) {
  const bool is_silent =
      test.outcome.code == smtp::ResultCode::kReplyTimeout || test.outcome.code == smtp::ResultCode::kConnectionLost;
  return is_silent && test.last_step() == ConnectionStep::kGreeting && !test.tls && !recorder.said_anything();
}

void TryUnderTls(ConnectionTest& test, smtp::ClientOptions options, const platform::Clock& clock,
                 const platform::CancelToken& cancel, const net::Deadline& until) {
  options.servers = {test.server};
  options.security = smtp::Security::kTls;
  options.timeout = std::min(options.timeout, kSecondTry);
  Recorder second(clock);
  const auto tried = second.Finish(smtp::Client(std::move(options), clock, cancel).Test(second, &second, until));
  if (!tried.tls || (tried.tls->version.empty() && !tried.tls->certificate)) return;
  test.speaks_tls = true;
  test.tls = tried.tls;
}

account::AccountSettings AccountOf(std::string_view server, std::string_view port, std::string_view security) {
  account::AccountSettings account;
  account.Set(account::AccountKey::kServer, std::string(server));
  account.Set(account::AccountKey::kPort, std::string(port));
  account.Set(account::AccountKey::kSecurity, std::string(security));
  return account;
}

}  // namespace

std::optional<TestComplaint> CheckTest(std::string_view server, std::string_view port) {
  if (server.empty()) return TestComplaint{"Please enter your mail server.", TestControl::kServer};
  if (port.empty()) return TestComplaint{"Please enter your port.", TestControl::kPort};
  const auto servers = account::ServersOf(AccountOf(server, port, "Automatic"));
  if (!servers) return TestComplaint{"", TestControl::kPort, servers.error().what};
  if (servers->empty()) {
    return TestComplaint{"", TestControl::kServer, Sentence("That is no name of a server.")};
  }
  return {};
}

Result<smtp::ClientOptions> TestOptions(std::string_view server, std::string_view port, std::string_view security,
                                        std::chrono::seconds patience) {
  auto options = account::ConnectionOptionsOf(AccountOf(server, port, security));
  if (options) options->timeout = patience;
  return options;
}

ConnectionTest TestConnection(const smtp::ClientOptions& options, const platform::Clock& clock,
                              const platform::CancelToken& cancel) {
  Recorder recorder(clock);
  const auto began = clock.Monotonic();
  const platform::Duration whole = kMostSteps * options.timeout;
  // Silent servers of a list would use up the time in which the first of them is to be tried under TLS.
  const platform::Duration kept =
      options.servers.size() > 1 ? std::min<platform::Duration>(kSecondTry, platform::Duration(options.timeout) / 2)
                                 : platform::Duration::zero();
  auto test = recorder.Finish(
      smtp::Client(options, clock, cancel).Test(recorder, &recorder, net::Deadline::After(began, whole - kept)));
  test.security = options.security;
  for (ConnectionTest& other : test.others) other.security = options.security;
  for (std::size_t n = recorder.tries(); n < options.servers.size(); ++n) test.untried.push_back(options.servers[n]);
  if (SaidNothing(test, recorder)) TryUnderTls(test, options, clock, cancel, net::Deadline::After(began, whole));
  return test;
}

}  // namespace quillcast::domain
