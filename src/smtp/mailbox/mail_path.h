// Reads the path in angle brackets that MAIL and RCPT begin with.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillcast::smtp {

// Known limit: how long the address and its parts are is not looked at; the line that they stand in has its own limit.
struct MailPath {
  std::string address;  // what stands in the brackets without the source route; empty for <>
  bool has_domain = false;
  std::string_view rest;  // what follows the closing bracket
};

// "<@relay.example:ada@example.org>" and "<ada@example.org>" read alike: source routes are ignored (RFC 5321 4.1.2).
// Local parts are dot strings or quoted strings; bytes above 127 count as letters when they are well-formed UTF-8.
// Nothing when it is not a path. <> and a name without a domain are paths here: who may use them, the command knows.
std::optional<MailPath> ReadMailPath(std::string_view text);

}  // namespace quillcast::smtp
