#include "update/update_check.h"

#include <nlohmann/json.hpp>

#include "net/https_fetch.h"
#include "platform/text.h"
#include "profile/version.h"

namespace quillcast::update {
namespace {

constexpr std::size_t kLargest = 16 << 10;  // bytes
constexpr std::size_t kLongestNotes = 500;  // bytes
constexpr std::int64_t kLastNumber = 9999;  // of a version
constexpr std::string_view kScheme = "https://";

// With one host in it: others are told now, and not as a network that fails.
bool IsHttps(std::string_view address) {
  if (!platform::EqualsIgnoringAsciiCase(address.substr(0, kScheme.size()), kScheme)) return false;
  address.remove_prefix(kScheme.size());
  const auto authority = address.substr(0, address.find_first_of("/?#"));
  const auto host = authority.substr(authority.find('@') + 1);
  return !host.empty() && host.find('@') == std::string_view::npos &&
         host.starts_with('[') == (host.find(']') != std::string_view::npos);
}

// For sentences, without a name and a password in it: rather too little than too much.
std::string WithoutSignIn(std::string_view address) {
  constexpr std::string_view kBehindScheme = "://";
  const auto scheme = address.find(kBehindScheme);
  const auto begin = scheme == std::string_view::npos ? 0 : scheme + kBehindScheme.size();
  const auto at = address.rfind('@');
  if (at == std::string_view::npos || at < begin) return platform::Printable(address, 200);
  return platform::Printable(std::string(address.substr(0, begin)).append(address.substr(at + 1)), 200);
}

// For sentences: "updates.example.org:8443", without a name and a password before it.
std::string HostOf(std::string_view address) {
  address.remove_prefix(std::min(address.size(), kScheme.size()));
  address = address.substr(0, address.find_first_of("/?#"));
  return platform::Printable(address.substr(address.rfind('@') + 1), 200);
}

// Why no answer of the server came.
Error NoAnswer(const net::HttpsAnswer& answer, const Question& question) {
  const std::string host = HostOf(question.address);
  const bool by_proxy = !question.proxy.empty();
  const char* const network =
      "Check that this computer is on the network, and whether it needs a proxy to reach the web.";
  const char* const proxy = "Check the address and the port of the proxy.";
  switch (answer.end) {
    case net::HttpsEnd::kCancelled:
      return {Failure::kTryAgain, "Cancelled."};
    case net::HttpsEnd::kLate:
      return {Failure::kTimedOut, Say("{} did not answer in time.", host), "Try again later, or wait longer."};
    case net::HttpsEnd::kNoName:
      return {Failure::kUnavailable, Say("{} cannot be found.", host), network};
    case net::HttpsEnd::kNoProxy:
      return {Failure::kUnavailable, Say("The proxy {} cannot be found.", question.proxy), proxy};
    case net::HttpsEnd::kNotReached:
      if (by_proxy) return {Failure::kUnavailable, Say("The proxy {} cannot be reached.", question.proxy), proxy};
      return {Failure::kUnavailable, Say("{} cannot be reached.", host), network};
    case net::HttpsEnd::kProxyRefused:
      return {Failure::kUnavailable,
              Say("The proxy {} does not let us through: it answers {}.", question.proxy, answer.status),
              "Ask whoever looks after it, or look at the home page with a browser."};
    case net::HttpsEnd::kNotTrusted:
      return {Failure::kNotPermitted,
              Say("The certificate of {} is not trusted, so no answer was taken: {}.", host, answer.why),
              "Check this computer's clock, and whether somebody stands between it and the web."};
    case net::HttpsEnd::kNoAuthorities:
      return {Failure::kNotConfigured, net::kNoAuthoritiesText, net::kNoAuthoritiesRemedy};
    case net::HttpsEnd::kTooLarge:
      return {Failure::kBadData, Say("The answer of {} is longer than 16 KiB, so it was thrown away.", host),
              "Try again another day."};
    default:
      return {Failure::kUnavailable, Say("The question to {} failed: {}.", host, answer.why), "Try again later."};
  }
}

// What a status other than 200 means.
Error Unserved(int status, const std::string& host) {
  if (status >= 300 && status < 400) {
    return {Failure::kBadData, Say("{} leads to another address, which is not followed.", host),
            "Look at the home page with a browser."};
  }
  return {Failure::kUnavailable, Say("{} has no answer: it says {}.", host, status), "Try again another day."};
}

Standing StandingOf(Version latest, Version own) {
  return latest > own ? Standing::kNewer : latest == own ? Standing::kSame : Standing::kOlder;
}

// A text of the document; empty where it has none of that name.
std::string TextIn(const nlohmann::json& document, const char* name) {
  if (!document.is_object()) return {};
  const auto found = document.find(name);
  return found != document.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace

std::optional<Version> ParseVersion(std::string_view text) {
  const auto numbers = platform::Split(text, '.');
  if (numbers.size() != 2) return {};
  const auto major = platform::WholeNumberBetween(numbers[0], 0, kLastNumber);
  const auto minor = platform::WholeNumberBetween(numbers[1], 0, kLastNumber);
  if (!major || !minor) return {};
  return Version{static_cast<int>(*major), static_cast<int>(*minor)};
}

Version OwnVersion() { return {profile::kVersionMajor, profile::kVersionMinor}; }

std::string TextOf(Version version) { return std::to_string(version.major) + '.' + std::to_string(version.minor); }

Question QuestionOf(const UpdateSettings& settings, const platform::Environment& environment) {
  return {.address = environment.Get("QUILLCAST_UPDATE_ADDRESS").value_or(kUpdateAddress),
          .proxy = ProxyOf(settings),
          .authorities = environment.Get("SSL_CERT_FILE").value_or(""),
          .authority_folder = environment.Get("SSL_CERT_DIR").value_or(""),
          .patience = std::chrono::minutes(platform::ParseWholeNumber(settings.timeout).value_or(1))};
}

std::optional<Answer> ReadAnswer(std::string_view document, Version own) {
  const auto read = nlohmann::json::parse(document, nullptr, false);
  const auto latest = ParseVersion(TextIn(read, "version"));
  if (!latest) return std::nullopt;
  return Answer{*latest, StandingOf(*latest, own), platform::Printable(TextIn(read, "notes"), kLongestNotes)};
}

Result<Answer> AskForLatest(const Question& question, Version own, const net::Patience& patience) {
  if (!IsHttps(question.address)) {
    return Error{Failure::kUsage, Say("\"{}\" is not an address of HTTPS.", WithoutSignIn(question.address)),
                 "QUILLCAST_UPDATE_ADDRESS has to begin with https://, or to be left out."};
  }
  const net::HttpsAnswer answer = net::FetchHttps({.address = question.address,
                                                   .largest = kLargest,
                                                   .authorities = question.authorities,
                                                   .authority_folder = question.authority_folder,
                                                   .proxy = question.proxy},
                                                  patience);
  const std::string host = HostOf(question.address);
  if (answer.end != net::HttpsEnd::kAnswered) return NoAnswer(answer, question);
  if (answer.status != 200) return Unserved(answer.status, host);
  if (auto read = ReadAnswer(answer.content, own)) return *std::move(read);
  return Error{Failure::kBadData, Say("The answer of {} names no version.", host), "Try again another day."};
}

Sentence Describe(const Answer& answer, Version own) {
  switch (answer.standing) {
    case Standing::kSame:
      return Say("Quillcast {} is the latest version.", TextOf(own));
    case Standing::kOlder:
      return Say("This is Quillcast {}, which is newer than the latest that was published: {}.", TextOf(own),
                 TextOf(answer.latest));
    case Standing::kNewer:
      break;
  }
  if (answer.notes.empty()) return Say("Quillcast {} is there; this is {}.", TextOf(answer.latest), TextOf(own));
  return Say("Quillcast {} is there; this is {}. {}", TextOf(answer.latest), TextOf(own), answer.notes);
}

std::string_view Name(Standing standing) {
  return standing == Standing::kNewer ? "newer" : standing == Standing::kSame ? "same" : "older";
}

}  // namespace quillcast::update
