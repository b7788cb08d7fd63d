// One question to a web server over HTTPS, with an answer that is bounded in size and time: no other address is
// followed, the certificate is verified, and nothing is kept between two questions.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "net/wait.h"

namespace quillcast::net {

struct HttpsRequest {
  std::string address;                // "https://example.org/file"; any other scheme ends with kBroken
  std::size_t largest = 64 << 10;     // bytes of the answer, and of its header
  std::string resolved = {};          // "HOST:PORT:ADDRESS,...": no name server is asked
  std::string authorities = {};       // a file of certificates to trust in place of the system's
  std::string authority_folder = {};  // the same, of a folder of them (c_rehash)
  // "host:port" of a proxy, which is asked for a tunnel; empty for none whatever the environment says, which decides
  // where nothing is given.
  std::optional<std::string> proxy = {};
};

enum class HttpsEnd {
  kAnswered,       // with any status
  kNoName,         // the server's host is not known
  kNoProxy,        // the proxy's is not
  kNotReached,     // nothing listens there, or no way leads there
  kLost,           // the connection broke under way
  kProxyRefused,   // the proxy makes no tunnel
  kNotTrusted,     // the certificate
  kNoAuthorities,  // this computer's list of them cannot be read
  kLate,           // the patience came to its end
  kCancelled,
  kTooLarge,
  kBroken,  // anything else: no HTTP, no TLS
};

// What is told of kNoAuthorities.
inline constexpr const char* kNoAuthoritiesText =
    "This computer has no list of authorities that can be read, so it can trust no certificate.";
inline constexpr const char* kNoAuthoritiesRemedy = "Install the package \"ca-certificates\", and try again.";

struct HttpsAnswer {
  HttpsEnd end = HttpsEnd::kBroken;
  int status = 0;  // the server's with kAnswered and with kTooLarge (0: not known), the proxy's with kProxyRefused
  std::string content = {};  // with kAnswered
  std::string type = {};     // the answer's Content-Type, as the server wrote it; empty where it names none
  std::string why = {};      // with the others, in the library's words
};

// Asks by GET, and says nothing of who asks. A request to cancel is seen within a second.
HttpsAnswer FetchHttps(const HttpsRequest& request, const Patience& patience);

}  // namespace quillcast::net
