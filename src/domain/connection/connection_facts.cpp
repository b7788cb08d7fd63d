#include "domain/connection/connection_facts.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <array>
#include <cstring>

#include "net/address.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using smtp::ConnectionStep;
using Facts = std::vector<ConnectionFact>;

constexpr std::size_t kLongestInFact = 4000;  // octets

struct StepWords {
  ConnectionStep step;
  const char* name;
  const char* words;
};
constexpr std::array kSteps{
    StepWords{ConnectionStep::kName, "name", "Finding the address"},
    StepWords{ConnectionStep::kConnect, "connect", "Connecting"},
    StepWords{ConnectionStep::kTls, "tls", "Encrypting (TLS)"},
    StepWords{ConnectionStep::kGreeting, "greeting", "Waiting for the greeting"},
    StepWords{ConnectionStep::kHello, "ehlo", "Saying EHLO"},
    StepWords{ConnectionStep::kStartTls, "starttls", "Asking for STARTTLS"},
    StepWords{ConnectionStep::kSignIn, "sign-in", "Signing in"},
    StepWords{ConnectionStep::kQuit, "quit", "Parting (QUIT)"},
};
static_assert([] {
  for (std::size_t i = 0; i < kSteps.size(); ++i) {
    if (kSteps[i].step != static_cast<ConnectionStep>(i)) return false;
  }
  return kSteps.back().step == ConnectionStep::kQuit;
}());

const StepWords& WordsOf(smtp::ConnectionStep step) { return kSteps.at(static_cast<std::size_t>(step)); }

Sentence TookOf(platform::Duration took) {
  const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(took).count();
  return Say("{} ms", fmt::format("{:.1f}", static_cast<double>(microseconds) / 1000));
}

void AddSteps(const ConnectionTest& test, Facts& facts) {
  for (const StepTime& step : test.steps) {
    const Sentence took = TookOf(step.took);
    facts.push_back({WordsOf(step.step).words, test.EndedAt(step) ? Say("{}; it ended here", took) : took});
  }
}

Sentence EndOf(const net::TriedAddress& address) {
  if (address.connected) return "connected";
  if (address.error == 0) return "no answer by then";
  return std::string(std::strerror(address.error));
}

void AddAddresses(const ConnectionTest& test, Facts& facts) {
  for (const net::TriedAddress& address : test.addresses) {
    facts.push_back({"Address", Say("{}: {}", net::ToString(address.peer), EndOf(address))});
  }
}

void AddCertificate(const net::CertificateFacts& certificate, Facts& facts) {
  if (!certificate.names.empty()) facts.push_back({"Certificate for", Joined(certificate.names, kLongestInFact)});
  if (!certificate.subject.empty()) facts.push_back({"Its name", platform::Printable(certificate.subject, 255)});
  facts.push_back({"Issued by", platform::Printable(certificate.issuer, 255)});
  facts.push_back({"Valid", Say("{} to {}", DayOf(certificate.valid_from), DayOf(certificate.valid_to))});
  facts.push_back({"Trusted", certificate.fault == net::CertificateFault::kNone
                                  ? Sentence("yes")
                                  : Say("no: {}", platform::Printable(certificate.why))});
}

void AddTls(const ConnectionTest& test, Facts& facts) {
  if (!test.tls) return;
  if (!test.tls->version.empty()) {
    facts.push_back({"Encryption", Say("{}, {}", test.tls->version, test.tls->cipher)});
  }
  if (test.tls->certificate) AddCertificate(*test.tls->certificate, facts);
}

void AddOffer(const std::optional<Offer>& offer, const char* sign_in, const char* extensions, Facts& facts) {
  if (!offer) return;
  facts.push_back({sign_in, offer->sign_in.empty() ? Sentence("not offered") : Joined(offer->sign_in, kLongestInFact)});
  if (!offer->extensions.empty()) facts.push_back({extensions, Joined(offer->extensions, kLongestInFact)});
}

}  // namespace

std::vector<ConnectionFact> FactsOf(const ConnectionTest& test) {
  Facts facts = {{"Server", TextOf(test.server)}};
  AddSteps(test, facts);
  AddAddresses(test, facts);
  AddTls(test, facts);
  AddOffer(test.under_tls, "Signing in", "Extensions", facts);
  if (test.under_tls) {
    AddOffer(test.in_clear, "Signing in before TLS", "Extensions before TLS", facts);
  } else {
    AddOffer(test.in_clear, "Signing in", "Extensions", facts);
  }
  return facts;
}

std::string DayOf(std::chrono::system_clock::time_point moment) {
  return fmt::format("{:%Y-%m-%d}", fmt::gmtime(std::chrono::system_clock::to_time_t(moment)));
}

std::string TextOf(const smtp::Server& server) {
  return net::ToString(net::HostPort{platform::Printable(server.host, 255), server.port});
}

std::string Joined(const std::vector<std::string>& texts, std::size_t longest) {
  std::string all;
  for (const std::string& text : texts) {
    if (all.size() > longest) return all + "...";
    all += (all.empty() ? "" : ", ") + platform::Printable(text, 255);
  }
  return all;
}

const char* WordOf(smtp::ConnectionStep step) { return WordsOf(step).name; }

}  // namespace quillcast::domain
