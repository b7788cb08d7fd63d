#include "net/https_fetch.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

namespace quillcast::net {
namespace {

struct Transfer {
  const Patience& patience;
  std::size_t largest;
  std::string content = {};
  std::size_t header_size = 0;
  bool is_too_large = false;
};

struct EndTransfer {
  void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
};
struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

std::size_t Take(char* bytes, std::size_t, std::size_t size, void* context) {
  auto& transfer = *static_cast<Transfer*>(context);
  transfer.is_too_large = transfer.content.size() + size > transfer.largest;
  if (transfer.is_too_large) return 0;
  transfer.content.append(bytes, size);
  return size;
}

// Nothing of it is kept; a server can send header fields without end.
std::size_t CountHeader(char*, std::size_t, std::size_t size, void* context) {
  auto& transfer = *static_cast<Transfer*>(context);
  transfer.header_size += size;
  transfer.is_too_large = transfer.header_size > transfer.largest;
  return transfer.is_too_large ? 0 : size;
}

// Called about once a second, more often while bytes come; anything but 0 ends the transfer.
int GiveUp(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  const Patience& patience = static_cast<Transfer*>(context)->patience;
  return patience.cancel.Requested() >= patience.gives_up_at || patience.deadline.Passed(patience.clock.Monotonic());
}

HttpsEnd EndOf(CURLcode code) {
  switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
      return HttpsEnd::kNoName;
    case CURLE_COULDNT_RESOLVE_PROXY:
      return HttpsEnd::kNoProxy;
    case CURLE_COULDNT_CONNECT:
      return HttpsEnd::kNotReached;
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_GOT_NOTHING:
      return HttpsEnd::kLost;
    case CURLE_PEER_FAILED_VERIFICATION:
      return HttpsEnd::kNotTrusted;
    case CURLE_SSL_CACERT_BADFILE:
      return HttpsEnd::kNoAuthorities;
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_ABORTED_BY_CALLBACK:
      return HttpsEnd::kLate;
    case CURLE_FILESIZE_EXCEEDED:
      return HttpsEnd::kTooLarge;
    default:
      return HttpsEnd::kBroken;
  }
}

// False where the library lacks one of them: nothing is asked with less than was meant.
bool SetUp(CURL* curl, const HttpsRequest& request, const curl_slist* resolved, Transfer& transfer) {
  const auto set = [curl](auto option, auto value) { return curl_easy_setopt(curl, option, value) == CURLE_OK; };
  const auto set_text = [&set](auto option, const std::string& text) {
    return text.empty() || set(option, text.c_str());
  };
  const Patience& patience = transfer.patience;
  const int wait = patience.deadline.PollTimeout(patience.clock.Monotonic());
  const long longest = wait < 0 ? 0 : std::max(wait, 1);  // NOLINT(google-runtime-int): as libcurl has it; 0 for ever
  return set(CURLOPT_URL, request.address.c_str()) && set(CURLOPT_PROTOCOLS_STR, "https") &&
         set(CURLOPT_FOLLOWLOCATION, 0L) && set(CURLOPT_NOSIGNAL, 1L) && set(CURLOPT_NOPROGRESS, 0L) &&
         set(CURLOPT_QUICK_EXIT, 1L) &&  // a cancel waits for no name server
         set(CURLOPT_TIMEOUT_MS, longest) && set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request.largest)) &&
         set(CURLOPT_WRITEFUNCTION, Take) && set(CURLOPT_WRITEDATA, &transfer) &&
         set(CURLOPT_HEADERFUNCTION, CountHeader) && set(CURLOPT_HEADERDATA, &transfer) &&
         set(CURLOPT_XFERINFOFUNCTION, GiveUp) && set(CURLOPT_XFERINFODATA, &transfer) &&
         (resolved == nullptr || set(CURLOPT_RESOLVE, resolved)) && set_text(CURLOPT_CAINFO, request.authorities) &&
         set_text(CURLOPT_CAPATH, request.authority_folder) &&
         (!request.proxy || (set(CURLOPT_PROXY, request.proxy->c_str()) && set(CURLOPT_NOPROXY, "")));
}

}  // namespace

HttpsAnswer FetchHttps(const HttpsRequest& request, const Patience& patience) {
  const std::unique_ptr<CURL, EndTransfer> curl(curl_easy_init());
  const std::unique_ptr<curl_slist, FreeList> resolved(
      request.resolved.empty() ? nullptr : curl_slist_append(nullptr, request.resolved.c_str()));
  Transfer transfer{patience, request.largest};
  if (!curl || !SetUp(curl.get(), request, resolved.get(), transfer)) {
    return {.end = HttpsEnd::kBroken, .why = "A transfer could not be set up"};
  }
  const CURLcode code = curl_easy_perform(curl.get());
  long status = 0;        // NOLINT(google-runtime-int): as libcurl has it
  long proxy_status = 0;  // NOLINT(google-runtime-int)
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(curl.get(), CURLINFO_HTTP_CONNECTCODE, &proxy_status);
  if (code == CURLE_OK) {
    const char* type = nullptr;
    curl_easy_getinfo(curl.get(), CURLINFO_CONTENT_TYPE, &type);
    return {.end = HttpsEnd::kAnswered,
            .status = static_cast<int>(status),
            .content = std::move(transfer.content),
            .type = type == nullptr ? "" : type};
  }
  HttpsAnswer answer{.end = EndOf(code), .why = curl_easy_strerror(code)};
  if (patience.cancel.Requested() >= patience.gives_up_at) {
    answer.end = HttpsEnd::kCancelled;
  } else if (transfer.is_too_large) {
    answer.end = HttpsEnd::kTooLarge;
  } else if (proxy_status >= 300) {
    answer.end = HttpsEnd::kProxyRefused;
    answer.status = static_cast<int>(proxy_status);
  }
  if (answer.end == HttpsEnd::kTooLarge) answer.status = static_cast<int>(status);
  return answer;
}

}  // namespace quillcast::net
