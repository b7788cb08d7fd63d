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

// Writes down what a client tells.
class Recorder final : public smtp::JobSource, public smtp::ConnectionWatch {
 public:
  explicit Recorder(const platform::Clock& clock) : clock_(clock) {}

  ConnectionTest Finish(smtp::Outcome outcome) {
    EndStep();
    test_.outcome = std::move(outcome);
    if (!test_.Works()) test_.report = smtp::ResultText(static_cast<int>(test_.outcome.code)) + "\r\n";
    test_.report += conversation_;
    return std::move(test_);
  }
  bool said_anything() const { return test_lines_ > 0; }

  smtp::Job* NextJob() override { return nullptr; }
  void Finished(smtp::Job&, const smtp::Outcome&) override {}
  void Progress(std::uint64_t, std::uint64_t) override {}
  void LogLine(std::string_view line) override {
    ++test_lines_;
    if (++lines_ <= kMostLines) conversation_.append(line).append("\r\n");
    if (lines_ == kMostLines + 1) conversation_ += "...\r\n";
  }

  void Begins(const smtp::Server& server) override {
    PutAside();
    test_.server = server;
  }
  void Told(const smtp::Server& server) override {
    const auto untried = test_.untried;
    PutAside();
    const auto whose = std::ranges::find_if(past_, [&](const Past& past) {
      return past.test.server.host == server.host && past.test.server.port == server.port;
    });
    if (whose == past_.end()) return;
    test_ = std::move(whose->test);
    test_lines_ = whose->lines;
    test_.untried = untried;
  }
  void Untried(const smtp::Server& server) override { test_.untried.push_back(server); }
  void Begins(ConnectionStep step) override {
    EndStep();
    test_.steps.push_back({step, {}});
    began_ = clock_.Monotonic();
  }
  void Tried(std::span<const net::TriedAddress> addresses) override {
    test_.addresses.assign(addresses.begin(), addresses.end());
  }
  void Encrypted(const net::TlsFacts& facts) override { test_.tls = facts; }
  void Offered(std::string_view text) override { (test_.tls ? test_.under_tls : test_.in_clear) = OfferOf(text); }
  void Senseless(std::string_view bytes) override {
    test_.odd = platform::Printable(bytes);
    LogLine("S: " + test_.odd);
  }

 private:
  struct Past {
    ConnectionTest test;
    std::size_t lines;
  };

  void EndStep() {
    const bool is_open = !test_.steps.empty() && test_.steps.back().took == test_.steps.back().took.zero();
    if (is_open) test_.steps.back().took = clock_.Monotonic() - began_;
  }
  void PutAside() {
    EndStep();
    past_.push_back({std::exchange(test_, {}), std::exchange(test_lines_, 0)});
  }

  const platform::Clock& clock_;
  platform::Instant began_;
  ConnectionTest test_;
  std::string conversation_;
  std::size_t lines_ = 0;
  std::size_t test_lines_ = 0;  // of the server that is tried
  std::vector<Past> past_;      // servers that were tried before
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
  const auto until = net::Deadline::After(clock.Monotonic(), kMostSteps * options.timeout);
  auto test = recorder.Finish(smtp::Client(options, clock, cancel).Test(recorder, &recorder, until));
  test.security = options.security;
  if (SaidNothing(test, recorder)) TryUnderTls(test, options, clock, cancel, until);
  return test;
}

}  // namespace quillcast::domain
