#include "domain/sender/sts_fetch.h"

#include <curl/curl.h>
#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "platform/text.h"

namespace quillcast::domain {
namespace {

constexpr std::size_t kLargest = 64 << 10;  // RFC 8461 3.2 lets readers refuse more

struct Transfer {
  const net::Patience& patience;
  std::string content = {};
  bool is_too_large = false;
};

std::size_t Take(char* bytes, std::size_t, std::size_t size, void* context) {
  auto& transfer = *static_cast<Transfer*>(context);
  transfer.is_too_large = transfer.content.size() + size > kLargest;
  if (transfer.is_too_large) return 0;
  transfer.content.append(bytes, size);
  return size;
}

// Called about once a second, more often while bytes come; anything but 0 ends the transfer.
int GiveUp(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  const net::Patience& patience = static_cast<Transfer*>(context)->patience;
  return patience.cancel.Requested() >= patience.gives_up_at || patience.deadline.Passed(patience.clock.Monotonic());
}

struct EndTransfer {
  void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
};
struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

// What the domain's own side does wrong, as against a network that does not lead there.
Error Misplaced(const std::string& host, Sentence why) {
  return {Failure::kBadData, Say("The policy could not be fetched from {}: {}.", host, std::move(why)),
          Say("Put the policy at https://{}/.well-known/mta-sts.txt, or remove the record.", host)};
}
Error NotReached(const std::string& host, Sentence why) {
  return {Failure::kUnavailable, Say("The policy could not be fetched from {}: {}.", host, std::move(why)),
          "Check that this computer reaches web servers, and try again."};
}

bool IsTheNetworks(CURLcode code) {
  return code == CURLE_COULDNT_CONNECT || code == CURLE_COULDNT_RESOLVE_PROXY || code == CURLE_COULDNT_RESOLVE_HOST ||
         code == CURLE_RECV_ERROR || code == CURLE_SEND_ERROR || code == CURLE_GOT_NOTHING;
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
  const std::unique_ptr<CURL, EndTransfer> curl(curl_easy_init());
  if (!curl) return Error{Failure::kInternal, "A transfer could not be begun."};
  Transfer transfer{patience};
  // No other name server is asked than the one that was chosen.
  const std::unique_ptr<curl_slist, FreeList> resolved(
      curl_slist_append(nullptr, fmt::format("{}:{}:{}", host, place.port, JoinedAddresses(place)).c_str()));
  const std::string address = fmt::format("https://{}:{}/.well-known/mta-sts.txt", host, place.port);
  const int wait = std::max(patience.deadline.PollTimeout(patience.clock.Monotonic()), 0);
  const auto set = [&](auto option, auto value) { return curl_easy_setopt(curl.get(), option, value) == CURLE_OK; };
  const bool is_set =
      set(CURLOPT_URL, address.c_str()) && set(CURLOPT_RESOLVE, resolved.get()) &&
      set(CURLOPT_PROTOCOLS_STR, "https") && set(CURLOPT_FOLLOWLOCATION, 0L) && set(CURLOPT_FAILONERROR, 1L) &&
      set(CURLOPT_NOSIGNAL, 1L) && set(CURLOPT_NOPROGRESS, 0L) &&
      set(CURLOPT_TIMEOUT_MS, static_cast<long>(wait)) &&  // NOLINT(google-runtime-int): as libcurl has it
      set(CURLOPT_WRITEFUNCTION, Take) && set(CURLOPT_WRITEDATA, &transfer) && set(CURLOPT_XFERINFOFUNCTION, GiveUp) &&
      set(CURLOPT_XFERINFODATA, &transfer) &&
      (place.authorities.empty() || set(CURLOPT_CAINFO, place.authorities.c_str()));
  if (!is_set) return Error{Failure::kInternal, "A transfer could not be set up."};
  const CURLcode code = curl_easy_perform(curl.get());
  if (code == CURLE_OK) return std::move(transfer.content);
  if (patience.cancel.Requested() >= patience.gives_up_at) return Error{Failure::kTryAgain, "Cancelled."};
  if (transfer.is_too_large) return Misplaced(host, "it is larger than 64 KiB");
  if (code == CURLE_OPERATION_TIMEDOUT || code == CURLE_ABORTED_BY_CALLBACK) {
    return NotReached(host, "no answer came in time");
  }
  const std::string why = curl_easy_strerror(code);
  return IsTheNetworks(code) ? NotReached(host, why) : Misplaced(host, why);
}

}  // namespace quillcast::domain
