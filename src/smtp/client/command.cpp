#include "smtp/client/command.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "net/idna.h"
#include "platform/address_limits.h"
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

constexpr std::size_t kLongestEnvelopeId = 100;  // characters before they are encoded (RFC 3461 4.4)

// Blanks and angle brackets end an address early; quoted local parts that need them are not served.
bool BreaksCommand(std::string_view address) {
  return std::any_of(address.begin(), address.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= 0x20 || byte == 0x7F || c == '<' || c == '>';
  });
}

// RFC 6531 3: a local part beyond ASCII has no other form, while a domain has its A-labels.
bool NeedsUtf8(std::string_view address) { return !platform::IsAscii(address.substr(0, address.rfind('@'))); }

std::optional<Outcome> Cannot(ResultCode code, const char* reason) { return Outcome{State::kFailed, code, {}, reason}; }

// Of an address that is not ASCII.
std::optional<Outcome> FitLetters(std::string& address, const Capabilities& capabilities, ResultCode code) {
  if (!platform::IsUtf8(address)) return Cannot(code, "The address is not UTF-8, so it was not sent.");
  std::string ascii_domain = net::WithAsciiDomain(address);
  if (!platform::IsAscii(ascii_domain.substr(ascii_domain.rfind('@') + 1))) {
    return Cannot(code, "The domain of the address is no name that a host can have, so it was not sent.");
  }
  if (!NeedsUtf8(address)) {
    address = std::move(ascii_domain);
  } else if (!capabilities.smtputf8) {
    return Cannot(code,
                  "The address holds characters beyond ASCII before its \"@\", and the server does not take such "
                  "addresses (SMTPUTF8), so it was not sent.");
  }
  return {};
}

std::optional<Outcome> FitAddress(std::string& address, const Capabilities& capabilities, ResultCode code) {
  if (BreaksCommand(address)) {
    return Cannot(code, "The address holds a blank, an angle bracket or a control character, so it was not sent.");
  }
  if (!platform::IsAscii(address)) {
    if (auto bad = FitLetters(address, capabilities, code)) return bad;
  }
  if (!platform::AddressIsTooLong(address)) return {};  // A-labels are longer than what was typed
  return Cannot(code, "The address has more than 254 octets, or more than 64 before its \"@\", so it was not sent.");
}

std::optional<Outcome> Refuse(std::string reason) {
  return Outcome{State::kRefused, ResultCode::kMessageRefused, {}, std::move(reason)};
}

std::optional<Outcome> UseSevenBit(Envelope& envelope, MessageSource& message) {
  const auto size = message.UseSevenBit();
  if (size) {
    envelope.size = *size;
    envelope.eight_bit = false;
    return {};
  }
  if (size.error().failure == Failure::kBadData) return Refuse(InOneLine(size.error()));
  return Outcome{State::kFailed, CodeOfSource(size.error()), {}, size.error().what.InEnglish()};
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

ResultCode CodeOfSource(const Error& error) {
  if (error.failure == Failure::kInternal) return ResultCode::kException;
  return error.failure == Failure::kNoInput ? ResultCode::kFileNotOpened : ResultCode::kFileNotRead;
}

std::optional<Outcome> FitEnvelope(Envelope& envelope, MessageSource& message, const Capabilities& capabilities) {
  if (auto bad = FitAddress(envelope.sender, capabilities, ResultCode::kSenderRefused)) return bad;
  if (auto bad = FitAddress(envelope.recipient, capabilities, ResultCode::kRecipientRefused)) return bad;
  if (envelope.recipient.empty()) return Cannot(ResultCode::kRecipientRefused, "The recipient has no address.");
  if (envelope.eight_bit && !capabilities.eight_bit_mime) {
    if (auto bad = UseSevenBit(envelope, message)) return bad;
  }
  if (capabilities.size_limit != 0 && envelope.size > capabilities.size_limit) {
    return Refuse(fmt::format("The message has {} octets, and the server takes {} at most, so it was not sent.",
                              envelope.size, capabilities.size_limit));
  }
  return {};
}

std::optional<SmtpLine> MailCommand(const Envelope& envelope, const Capabilities& capabilities) {
  const bool utf8 = NeedsUtf8(envelope.sender) || NeedsUtf8(envelope.recipient);
  std::string line = "MAIL FROM:<" + envelope.sender + ">";
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
  const std::string& recipient = envelope.recipient;
  std::string line = "RCPT TO:<" + recipient + ">";
  for (const NotifyWord& row : kNotifyWords) {
    if (!capabilities.dsn || row.notify != envelope.notify) continue;
    const std::string original = NeedsUtf8(recipient) ? "utf-8;" + Utf8Xtext(recipient) : "rfc822;" + Xtext(recipient);
    line += fmt::format(" NOTIFY={} ORCPT={}", row.word, original);
  }
  return SmtpLine::From(std::move(line));
}

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

}  // namespace quillcast::smtp
