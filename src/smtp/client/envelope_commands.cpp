#include "smtp/client/envelope_commands.h"

#include <fmt/format.h>

#include <array>
#include <string>
#include <string_view>

#include "platform/utf8.h"

namespace quillcast::smtp {
namespace {

struct NotifyWord {
  DsnNotify notify;
  const char* word;
};
constexpr std::array kNotifyWords{
    NotifyWord{DsnNotify::kAll, "SUCCESS,FAILURE,DELAY"},
    NotifyWord{DsnNotify::kFailure, "FAILURE"},
    NotifyWord{DsnNotify::kSuccess, "SUCCESS"},
    NotifyWord{DsnNotify::kDelay, "DELAY"},
    NotifyWord{DsnNotify::kNever, "NEVER"},
};

constexpr std::size_t kUsualLine = 120;          // octets that a line has room for from the start
constexpr std::size_t kLongestEnvelopeId = 100;  // characters before they are encoded (RFC 3461 4.4)

// Whether the server has to be told that it is coming (RFC 6531 3.4).
bool NeedsUtf8(const Address& address) { return !platform::IsAscii(address.local_part()); }

// RFC 3461 4: what is not printable ASCII, and "+" and "=", as "+XX".
std::string Xtext(std::string_view text) {
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > 0x20 && byte < 0x7F && c != '+' && c != '=') {
      out += c;
    } else {
      out += fmt::format("+{:02X}", byte);
    }
  }
  return out;
}

// RFC 6533 3, the form that is ASCII: "=", "+" and "\" and what is beyond ASCII as "\x{HEX}".
std::string Utf8Xtext(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const auto [code, length] = platform::DecodeUtf8(text);
    const bool as_it_is = code > 0x20 && code < 0x7F && code != '+' && code != '=' && code != '\\';
    out += as_it_is ? std::string(1, text.front()) : fmt::format("\\x{{{:02X}}}", static_cast<std::uint32_t>(code));
    text.remove_prefix(length);
  }
  return out;
}

}  // namespace

std::optional<SmtpLine> MailCommand(const Envelope& envelope, const Capabilities& capabilities) {
  const bool utf8 = NeedsUtf8(envelope.sender) || NeedsUtf8(envelope.recipient);
  std::string line;
  line.reserve(kUsualLine);
  line.append("MAIL FROM:<").append(envelope.sender.text()).append(">");
  if (capabilities.size && envelope.size > 0) line += " SIZE=" + std::to_string(envelope.size);
  // A server on the way may add such an address to the header, so 8BITMIME is claimed with it.
  if (envelope.eight_bit || (utf8 && capabilities.eight_bit_mime)) line += " BODY=8BITMIME";
  if (utf8) line += " SMTPUTF8";
  if (capabilities.dsn) {
    if (envelope.dsn_return == DsnReturn::kHeaders) line += " RET=HDRS";
    if (envelope.dsn_return == DsnReturn::kFull) line += " RET=FULL";
    const std::string id = Xtext(std::string_view(envelope.envelope_id).substr(0, kLongestEnvelopeId));
    if (!id.empty()) line += " ENVID=" + id;
  }
  return SmtpLine::From(std::move(line));
}

std::optional<SmtpLine> RcptCommand(const Envelope& envelope, const Capabilities& capabilities) {
  const std::string& recipient = envelope.recipient.text();
  std::string line;
  line.reserve(kUsualLine);
  line.append("RCPT TO:<").append(recipient).append(">");
  for (const NotifyWord& row : kNotifyWords) {
    if (!capabilities.dsn || row.notify != envelope.notify) continue;
    const std::string original =
        NeedsUtf8(envelope.recipient) ? "utf-8;" + Utf8Xtext(recipient) : "rfc822;" + Xtext(recipient);
    line += fmt::format(" NOTIFY={} ORCPT={}", row.word, original);
  }
  return SmtpLine::From(std::move(line));
}

}  // namespace quillcast::smtp
