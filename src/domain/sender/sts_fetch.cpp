#include "domain/sender/sts_fetch.h"

#include <fmt/format.h>

#include "net/https_fetch.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

constexpr std::size_t kLargest = 64 << 10;  // bytes; RFC 8461 3.2 lets readers refuse more
constexpr std::size_t kLongestType = 100;   // octets of what the server says, in a sentence

// What the domain's own side does wrong, as against a network that does not lead there.
Error Misplaced(const std::string& host, const Sentence& why) {
  return {Failure::kBadData, Say("The policy could not be fetched from {}: {}.", host, why),
          Say("Put the policy at https://{}/.well-known/mta-sts.txt, or remove the record.", host)};
}
Error NotReached(const std::string& host, const Sentence& why) {
  return {Failure::kUnavailable, Say("The policy could not be fetched from {}: {}.", host, why),
          "Check that this computer reaches web servers, and try again."};
}

Error NotTrusted(const std::string& host) {
  return {Failure::kBadData, Say("The policy could not be fetched from {}: its certificate is not trusted.", host),
          Say("Give the web server a certificate for {} that a public authority signed, or remove the record.", host)};
}

// RFC 8461 3.2: text/plain, whatever parameters it has.
bool IsPlainText(const std::string& type) {
  return platform::AsciiLower(platform::Trim(type.substr(0, type.find(';')))) == "text/plain";
}

Error OfOtherType(const std::string& host, const std::string& type) {
  return {Failure::kBadData,
          type.empty() ? Say("The policy could not be fetched from {}: it is sent without a type.", host)
                       : Say("The policy could not be fetched from {}: it is sent as \"{}\", and not as text/plain.",
                             host, platform::Printable(type, kLongestType)),
          "Let the web server send it as text/plain, or remove the record."};
}

// A status other than 200.
Error Elsewhere(const std::string& host, int status) {
  const bool leads_on = status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
  return Misplaced(host, leads_on ? Say("it answers {}, and senders follow to no other place", status)
                                  : Say("it answers {} in place of 200", status));
}

// The policy, where it comes as RFC 8461 3.3 wants it: with 200 alone, as redirects are not followed.
Result<std::string> PolicyIn(const std::string& host, net::HttpsAnswer& answer) {
  if (answer.status != 200) return Elsewhere(host, answer.status);
  if (!IsPlainText(answer.type)) return OfOtherType(host, answer.type);
  return std::move(answer.content);
}

bool IsTheNetworks(net::HttpsEnd end) {
  return end == net::HttpsEnd::kNotReached || end == net::HttpsEnd::kNoProxy || end == net::HttpsEnd::kNoName ||
         end == net::HttpsEnd::kLost;
}

std::string JoinedAddresses(const StsPlace& place) {
  std::string joined;
  for (const net::IpAddress& address : place.addresses) {
    const std::string text = net::ToString(address);
    joined +=
        fmt::format("{}{}", joined.empty() ? "" : ",", address.family == net::Family::kIpv6 ? "[" + text + "]" : text);
  }
  return joined;
}

}  // namespace

Result<std::string> FetchStsPolicy(const StsPlace& place, const net::Patience& patience) {
  const std::string host = "mta-sts." + place.domain;
  if (place.addresses.empty()) return Misplaced(host, "it has no address");
  // No other name server is asked than the one that was chosen.
  net::HttpsAnswer answer =
      net::FetchHttps({.address = fmt::format("https://{}:{}/.well-known/mta-sts.txt", host, place.port),
                       .largest = kLargest,
                       .resolved = fmt::format("{}:{}:{}", host, place.port, JoinedAddresses(place)),
                       .authorities = place.authorities},
                      patience);
  switch (answer.end) {
    case net::HttpsEnd::kAnswered:
      return PolicyIn(host, answer);
    case net::HttpsEnd::kCancelled:
      return Error{Failure::kTryAgain, "Cancelled."};
    case net::HttpsEnd::kNotTrusted:
      return NotTrusted(host);
    case net::HttpsEnd::kNoAuthorities:
      return Error{Failure::kUnavailable, net::kNoAuthoritiesText, net::kNoAuthoritiesRemedy};
    case net::HttpsEnd::kTooLarge:
      if (answer.status != 0 && answer.status != 200) return Elsewhere(host, answer.status);
      return Misplaced(host, "it is larger than 64 KiB");
    case net::HttpsEnd::kLate:
      return NotReached(host, "no answer came in time");
    default:
      return IsTheNetworks(answer.end) ? NotReached(host, answer.why) : Misplaced(host, answer.why);
  }
}

}  // namespace quillcast::domain
