#include "smtp/mailbox/client_command.h"

#include <fmt/format.h>

#include <charconv>
#include <string>

#include "platform/text.h"
#include "platform/utf8.h"
#include "smtp/mailbox/mail_path.h"

namespace quillcast::smtp {
namespace {

using Refusal = std::optional<ServerReply>;

// One "KEY=VALUE" behind a path.
struct Parameter {
  std::string key;  // upper case
  std::string_view value;
  bool has_value;
};

ServerReply BadValue(const Parameter& parameter) {
  return {501, "5.5.4", fmt::format("Bad value of {}", platform::Printable(parameter.key, 100))};
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// RFC 3461 4: "+" and two upper-case hexadecimal digits stand for an octet.
std::optional<std::string> DecodeXtext(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '=' || text[i] < '!' || text[i] > '~') return {};
    if (text[i] != '+') {
      out += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return {};
    const int high = HexValue(text[i + 1]);
    const int low = HexValue(text[i + 2]);
    if (high < 0 || low < 0) return {};
    out += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return out;
}

// Calls `take` for each parameter until one is refused.
template <typename Take>
Refusal ForEachParameter(std::string_view text, Take take) {
  if (!text.empty() && text.front() != ' ') return ServerReply{501, "5.5.4", "A blank must follow the address"};
  std::string seen = " ";
  for (const auto piece : platform::Split(text, ' ')) {
    if (piece.empty()) continue;
    const auto equals = piece.find('=');
    const bool has_value = equals != std::string_view::npos;
    const Parameter parameter{platform::AsciiUpper(piece.substr(0, equals)),
                              has_value ? piece.substr(equals + 1) : std::string_view(), has_value};
    if (has_value && parameter.value.empty()) return BadValue(parameter);
    if (seen.find(" " + parameter.key + " ") != std::string::npos) {
      return ServerReply{501, "5.5.4", fmt::format("{} is given twice", platform::Printable(parameter.key, 100))};
    }
    seen += parameter.key + " ";
    if (auto refusal = take(parameter)) return refusal;
  }
  return {};
}

struct MailTarget {
  ReceivedEnvelope& envelope;
  std::uint64_t size_limit;
};

Refusal TakeSize(const Parameter& parameter, MailTarget& mail) {
  const auto size = ReadNumber(parameter.value);
  if (!size) return BadValue(parameter);
  if (*size <= mail.size_limit) return {};
  return ServerReply{552, "5.3.4", fmt::format("The message is larger than {} octets", mail.size_limit)};
}

Refusal TakeBody(const Parameter& parameter, MailTarget& mail) {
  mail.envelope.body = platform::AsciiUpper(parameter.value);
  const auto& body = mail.envelope.body;
  if (body == "7BIT" || body == "8BITMIME" || body == "BINARYMIME") return {};
  return BadValue(parameter);
}

Refusal TakeReturn(const Parameter& parameter, MailTarget& mail) {
  mail.envelope.dsn_return = platform::AsciiUpper(parameter.value);
  if (mail.envelope.dsn_return == "FULL" || mail.envelope.dsn_return == "HDRS") return {};
  return BadValue(parameter);
}

Refusal TakeEnvelopeId(const Parameter& parameter, MailTarget& mail) {
  const auto id = DecodeXtext(parameter.value);
  if (!id || id->size() > 100) return BadValue(parameter);  // RFC 3461 4.4
  mail.envelope.envelope_id = *id;
  return {};
}

Refusal TakeUtf8(const Parameter& parameter, MailTarget& mail) {
  mail.envelope.utf8 = true;
  return parameter.has_value ? Refusal(BadValue(parameter)) : Refusal();
}

// RFC 4954 5: who handed the message in first. The mailbox trusts nobody's word on that, and checks the form only.
Refusal TakeAuth(const Parameter& parameter, MailTarget&) {
  return DecodeXtext(parameter.value) ? Refusal() : Refusal(BadValue(parameter));
}

// RFC 3461 4.1: NEVER alone, or some of the three others.
Refusal TakeNotify(const Parameter& parameter, ReceivedRecipient& recipient) {
  recipient.notify = platform::AsciiUpper(parameter.value);
  if (recipient.notify == "NEVER") return {};
  for (const auto word : platform::Split(recipient.notify, ',')) {
    if (word != "SUCCESS" && word != "FAILURE" && word != "DELAY") return BadValue(parameter);
  }
  return {};
}

Refusal TakeOriginal(const Parameter& parameter, ReceivedRecipient& recipient) {
  const auto semicolon = parameter.value.find(';');
  if (semicolon == std::string_view::npos || semicolon == 0) return BadValue(parameter);
  const auto address = DecodeXtext(parameter.value.substr(semicolon + 1));
  if (!address) return BadValue(parameter);
  recipient.original = fmt::format("{};{}", parameter.value.substr(0, semicolon), *address);
  return {};
}

template <typename Target>
struct ParameterRow {
  std::string_view key;
  Feature feature;
  bool needs_value;
  Refusal (*take)(const Parameter&, Target&);
};
constexpr ParameterRow<MailTarget> kMailParameters[] = {
    {"SIZE", kSize, true, TakeSize},       {"BODY", kEightBitMime, true, TakeBody}, {"RET", kDsn, true, TakeReturn},
    {"ENVID", kDsn, true, TakeEnvelopeId}, {"SMTPUTF8", kUtf8, false, TakeUtf8},    {"AUTH", kAuth, true, TakeAuth},
};
constexpr ParameterRow<ReceivedRecipient> kRecipientParameters[] = {
    {"NOTIFY", kDsn, true, TakeNotify},
    {"ORCPT", kDsn, true, TakeOriginal},
};

template <typename Target, std::size_t N>
Refusal TakeParameters(std::string_view text, Features features, const ParameterRow<Target> (&rows)[N],
                       Target& target) {
  return ForEachParameter(text, [&](const Parameter& parameter) -> Refusal {
    for (const auto& row : rows) {
      if (row.key != parameter.key || (features & row.feature) == 0) continue;
      if (row.needs_value && !parameter.has_value) return BadValue(parameter);
      return row.take(parameter, target);
    }
    return ServerReply{555, "5.5.4", fmt::format("{} is not known here", platform::Printable(parameter.key, 100))};
  });
}

// Takes "FROM:" or "TO:" off and reads the path.
std::optional<MailPath> ReadMailPathBehind(std::string_view argument, std::string_view prefix) {
  if (!platform::StartsWithIgnoringAsciiCase(argument, prefix)) return {};
  return ReadMailPath(argument.substr(prefix.size()));
}

Refusal CheckAscii(const std::string& address, bool utf8) {
  if (utf8 || platform::IsAscii(address)) return {};
  return ServerReply{553, "5.6.7", "An address that is not ASCII needs SMTPUTF8"};
}

}  // namespace

ClientCommand SplitCommand(std::string_view line) {
  const auto blank = line.find(' ');
  if (blank == std::string_view::npos) return {line, {}};
  return {line.substr(0, blank), platform::Trim(line.substr(blank))};
}

Refusal ReadMail(std::string_view argument, Features features, std::uint64_t size_limit, ReceivedEnvelope& envelope) {
  const auto path = ReadMailPathBehind(argument, "FROM:");
  if (!path) return ServerReply{501, "5.1.7", "Write MAIL FROM:<address>, without a blank before the bracket"};
  if (!path->address.empty() && !path->has_domain) {
    return ServerReply{501, "5.1.7", "The sender has no domain"};
  }
  envelope.sender = path->address;
  MailTarget target{envelope, size_limit};
  if (auto refusal = TakeParameters(path->rest, features, kMailParameters, target)) return refusal;
  if (envelope.body == "BINARYMIME" && (features & kBinaryMime) == 0) {
    return ServerReply{501, "5.5.4", "BINARYMIME is not offered"};
  }
  return CheckAscii(envelope.sender, envelope.utf8);
}

Refusal ReadRecipient(std::string_view argument, Features features, bool utf8, ReceivedRecipient& recipient) {
  const auto path = ReadMailPathBehind(argument, "TO:");
  if (!path || path->address.empty()) {
    return ServerReply{501, "5.1.3", "Write RCPT TO:<address>, without a blank before the bracket"};
  }
  if (!path->has_domain && !platform::EqualsIgnoringAsciiCase(path->address, "postmaster")) {
    return ServerReply{501, "5.1.3", "The recipient has no domain"};
  }
  recipient.address = path->address;
  if (auto refusal = TakeParameters(path->rest, features, kRecipientParameters, recipient)) return refusal;
  return CheckAscii(recipient.address, utf8);
}

std::optional<Chunk> ReadChunk(std::string_view argument) {
  const auto [digits, last] = SplitCommand(argument);
  const auto size = ReadNumber(digits);
  if (!size || (!last.empty() && !platform::EqualsIgnoringAsciiCase(last, "LAST"))) return {};
  return Chunk{*size, !last.empty()};
}

std::optional<std::uint64_t> ReadNumber(std::string_view digits) {
  std::uint64_t value = 0;
  if (digits.empty() || digits.size() > 19) return {};
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size()) return {};
  return value;
}

}  // namespace quillcast::smtp
