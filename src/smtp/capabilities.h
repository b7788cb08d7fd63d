// What a server says it can do (RFC 5321 4.1.1.1), from its reply to EHLO.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace quillcast::smtp {

// As it stands here a server offers nothing, as after HELO.
struct Capabilities {
  bool pipelining = false;             // RFC 2920
  bool eight_bit_mime = false;         // RFC 6152
  bool size = false;                   // RFC 1870
  bool dsn = false;                    // RFC 3461
  bool starttls = false;               // RFC 3207
  bool chunking = false;               // RFC 3030
  bool binary_mime = false;            // RFC 3030
  bool smtputf8 = false;               // RFC 6531
  bool enhanced_status_codes = false;  // RFC 2034
  std::uint64_t size_limit = 0;        // octets; 0 when none was named
  bool auth = false;                   // RFC 4954, by whatever mechanism
  // Those of AUTH that have a name known here, in capitals, each once: what a server makes up is not kept.
  std::vector<std::string_view> mechanisms;

  // In any case of its letters. False for a mechanism without a name known here, whatever the server said.
  bool Offers(std::string_view mechanism) const;
};

// `text`: the lines of the reply joined by "\n"; the first is the greeting and says nothing.
Capabilities ParseCapabilities(std::string_view text);

}  // namespace quillcast::smtp
