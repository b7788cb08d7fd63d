// The "%{...}" of the names in an SPF record (RFC 7208 section 7).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "net/address.h"

namespace quillcast::domain {

struct SpfSender {
  std::string local_part;       // "ada" of ada@example.org
  std::string domain;           // "example.org"
  net::IpAddress address = {};  // of the server that hands the message over
  std::string host = {};        // by which that server greets; may be empty
};

// `domain` is the one whose record is read. Nothing for what is no macro. A result of more than 253 octets loses labels
// on its left (RFC 7208 7.3). "%{p}" is "unknown", as RFC 7208 advises.
std::optional<std::string> ExpandSpfName(std::string_view name, std::string_view domain, const SpfSender& sender);

// The name that a term or "redirect" leads to, without the root's dot and in small letters; `domain` itself where none
// is written.
std::string SpfNameOf(const std::string& written, const std::string& domain, const SpfSender& sender);

}  // namespace quillcast::domain
