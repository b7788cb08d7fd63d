#include "smtp/capabilities.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace quillcast::smtp {
namespace {

struct Keyword {
  std::string_view name;
  bool Capabilities::*flag;
};
constexpr std::array kKeywords{
    Keyword{"PIPELINING", &Capabilities::pipelining},
    Keyword{"8BITMIME", &Capabilities::eight_bit_mime},
    Keyword{"SIZE", &Capabilities::size},
    Keyword{"DSN", &Capabilities::dsn},
    Keyword{"STARTTLS", &Capabilities::starttls},
    Keyword{"CHUNKING", &Capabilities::chunking},
    Keyword{"BINARYMIME", &Capabilities::binary_mime},
    Keyword{"SMTPUTF8", &Capabilities::smtputf8},
    Keyword{"ENHANCEDSTATUSCODES", &Capabilities::enhanced_status_codes},
};

// Those that can be used, and those that a person may look for when none of them is offered.
constexpr std::array<std::string_view, 15> kMechanisms{
    "LOGIN",         "PLAIN",      "CRAM-MD5",    "SCRAM-SHA-1",      "SCRAM-SHA-256",
    "SCRAM-SHA-512", "NTLM",       "DIGEST-MD5",  "SCRAM-SHA-1-PLUS", "SCRAM-SHA-256-PLUS",
    "XOAUTH2",       "GSS-SPNEGO", "OAUTHBEARER", "GSSAPI",           "EXTERNAL"};

void AddMechanisms(std::string_view names, Capabilities& out) {
  for (const std::string_view name : platform::Split(names, ' ')) {
    if (name.empty()) continue;
    out.auth = true;
    for (const std::string_view known : kMechanisms) {
      if (platform::EqualsIgnoringAsciiCase(known, name) && !out.Offers(known)) out.mechanisms.push_back(known);
    }
  }
}

void ParseLine(std::string_view line, Capabilities& out) {
  // "AUTH=LOGIN" is an old form that servers still send beside, or in place of, "AUTH LOGIN".
  const auto end = line.find_first_of(" =");
  const std::string keyword = platform::AsciiUpper(line.substr(0, end));
  const std::string_view values = end == std::string_view::npos ? std::string_view() : line.substr(end + 1);
  if (keyword == "AUTH") AddMechanisms(values, out);
  for (const Keyword& known : kKeywords) {
    if (known.name == keyword) out.*known.flag = true;
  }
  if (keyword == "SIZE") {
    out.size_limit = static_cast<std::uint64_t>(platform::ParseWholeNumber(values).value_or(0));
  }
}

}  // namespace

bool Capabilities::Offers(std::string_view mechanism) const {
  return std::any_of(mechanisms.begin(), mechanisms.end(),
                     [&](std::string_view offered) { return platform::EqualsIgnoringAsciiCase(offered, mechanism); });
}

Capabilities ParseCapabilities(std::string_view text) {
  Capabilities out;
  const auto lines = platform::Split(text, '\n');
  for (std::size_t n = 1; n < lines.size(); ++n) ParseLine(platform::Trim(lines[n]), out);
  return out;
}

}  // namespace quillcast::smtp
