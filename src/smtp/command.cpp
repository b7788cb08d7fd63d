#include "smtp/command.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

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

// Blanks and angle brackets end an address early; quoted local parts that need them are not served.
bool BreaksCommand(std::string_view address) {
  return std::any_of(address.begin(), address.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= 0x20 || byte == 0x7F || c == '<' || c == '>';
  });
}

std::optional<Outcome> CheckAddress(const std::string& address, ResultCode code) {
  if (BreaksCommand(address)) {
    return Outcome{State::kFailed,
                   code,
                   {},
                   "The address holds a blank, an angle bracket or a control character, so it was not sent."};
  }
  if (!platform::IsAscii(address)) {
    return Outcome{State::kFailed,
                   code,
                   {},
                   "The address holds characters beyond ASCII; that needs SMTPUTF8, which is not yet served."};
  }
  return {};
}

std::optional<Outcome> Refuse(std::string reason) {
  return Outcome{State::kRefused, ResultCode::kMessageRefused, {}, std::move(reason)};
}

}  // namespace

std::optional<Outcome> CheckEnvelope(const Envelope& envelope, const Capabilities& capabilities) {
  if (auto bad = CheckAddress(envelope.sender, ResultCode::kSenderRefused)) return bad;
  if (auto bad = CheckAddress(envelope.recipient, ResultCode::kRecipientRefused)) return bad;
  if (envelope.recipient.empty()) {
    return Outcome{State::kFailed, ResultCode::kRecipientRefused, {}, "The recipient has no address."};
  }
  if (capabilities.size_limit != 0 && envelope.size > capabilities.size_limit) {
    return Refuse(fmt::format("The message has {} octets, and the server takes {} at most, so it was not sent.",
                              envelope.size, capabilities.size_limit));
  }
  if (envelope.eight_bit && !capabilities.eight_bit_mime) {
    return Refuse(
        "The message holds octets above 127, and the server does not take them (8BITMIME). Choose the "
        "encoding Quoted Printable.");
  }
  return {};
}

std::optional<SmtpLine> MailCommand(const Envelope& envelope, const Capabilities& capabilities) {
  std::string line = "MAIL FROM:<" + envelope.sender + ">";
  if (capabilities.size && envelope.size > 0) line += " SIZE=" + std::to_string(envelope.size);
  if (envelope.eight_bit) line += " BODY=8BITMIME";
  if (capabilities.dsn) {
    if (envelope.dsn_return == DsnReturn::kHeaders) line += " RET=HDRS";
    if (envelope.dsn_return == DsnReturn::kFull) line += " RET=FULL";
    if (!envelope.envelope_id.empty()) line += " ENVID=" + Xtext(envelope.envelope_id);
  }
  return SmtpLine::From(std::move(line));
}

std::optional<SmtpLine> RcptCommand(const Envelope& envelope, const Capabilities& capabilities) {
  std::string line = "RCPT TO:<" + envelope.recipient + ">";
  for (const NotifyWord& row : kNotifyWords) {
    if (capabilities.dsn && row.notify == envelope.notify) line += std::string(" NOTIFY=") + row.word;
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
