// Asks a whois server (RFC 3912) who holds a domain.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "net/address.h"
#include "net/wait.h"

namespace quillcast::domain {

inline constexpr std::uint16_t kWhoisPort = 43;                    // RFC 3912
inline constexpr std::size_t kLongestWhoisAnswer = 1024UL * 1024;  // bytes; a registry sends some thousand
inline constexpr std::chrono::seconds kWhoisTime{30};              // for the whole of one question

struct WhoisAnswer {
  std::string text;                       // UTF-8, its lines ended by LF; control characters are in it as they came
  std::string charset;                    // what it was read as: "utf-8" unless it cannot be that
  std::optional<net::HostPort> referral;  // a server that it names, which knows more: by a name, at port 43; not asked
  std::optional<Error> cut_short;         // why `text` is not all that the server had to say

  // What goes into the box: the text with CRLF line ends.
  std::string Box() const;
};

// For a status line: from whom the answer is, in which character set, and whether it is whole.
Sentence DescribeWhois(const WhoisAnswer& answer, const net::HostPort& server);

// Sends the name, in A-labels, as one line, and reads until the server closes, the deadline passes or the answer is
// longer than kLongestWhoisAnswer; what came until then is an answer that was cut short. Fails with kUsage for a name
// that cannot be sent, kUnavailable when nothing came or the server speaks TLS, and as Patience and Resolver say.
// `charset` as in ReadWhoisAnswer.
Result<WhoisAnswer> AskWhois(const net::HostPort& server, std::string_view name, const net::Patience& patience,
                             std::string_view charset = {});

// Reads the bytes of an answer, which are of any kind. `charset` is the name of a set to read it in, empty for the one
// that it looks like: UTF-8, ISO-2022-JP by its escapes, else windows-1252.
WhoisAnswer ReadWhoisAnswer(std::string_view bytes, std::string_view charset = {});

}  // namespace quillcast::domain
