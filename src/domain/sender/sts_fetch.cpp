#include "domain/sender/sts_fetch.h"

#include <fmt/format.h>

#include "net/https_fetch.h"

namespace quillcast::domain {
namespace {

constexpr std::size_t kLargest = 64 << 10;  // bytes; RFC 8461 3.2 lets readers refuse more

// What the domain's own side does wrong, as against a network that does not lead there.
Error Misplaced(const std::string& host, const Sentence& why) {
  return {Failure::kBadData, Say("The policy could not be fetched from {}: {}.", host, why),
          Say("Put the policy at https://{}/.well-known/mta-sts.txt, or remove the record.", host)};
}
Error NotReached(const std::string& host, const Sentence& why) {
  return {Failure::kUnavailable, Say("The policy could not be fetched from {}: {}.", host, why),
          "Check that this computer reaches web servers, and try again."};
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
      if (answer.status >= 400) return Misplaced(host, "HTTP response code said error");
      return std::move(answer.content);
    case net::HttpsEnd::kCancelled:
      return Error{Failure::kTryAgain, "Cancelled."};
    case net::HttpsEnd::kTooLarge:
      return Misplaced(host, "it is larger than 64 KiB");
    case net::HttpsEnd::kLate:
      return NotReached(host, "no answer came in time");
    default:
      return IsTheNetworks(answer.end) ? NotReached(host, answer.why) : Misplaced(host, answer.why);
  }
}

}  // namespace quillcast::domain
