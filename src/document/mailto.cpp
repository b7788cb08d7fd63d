#include "document/mailto.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::document {
namespace {

constexpr std::string_view kScheme = "mailto:";
constexpr std::size_t kLongestLeftOut = 60;  // bytes of what is left out
constexpr std::size_t kMostShown = 6;

std::string OneLine(std::string_view text, std::size_t longest) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n' || c == '\t'; }, ' ');
  return platform::Printable(line, longest);
}

// RFC 6068 5: a line ends in "%0D%0A". Others write one of the two.
std::string Lines(std::string_view text) {
  std::string lines;
  const std::string ends = platform::ReplaceAll(platform::ReplaceAll(text, "\r\n", "\n"), "\r", "\n");
  for (const std::string_view line : platform::Split(ends, '\n')) lines += OneLine(line, line.size()) + '\n';
  if (!lines.empty()) lines.pop_back();
  return lines;
}

void LeaveOut(MailtoMessage& message, std::string_view what) {
  auto& all = message.left_out;
  if (all.size() > kMostShown) return;
  std::string shown = OneLine(platform::Trim(what), kLongestLeftOut);
  if (shown.empty() || std::find(all.begin(), all.end(), shown) != all.end()) return;
  all.push_back(all.size() < kMostShown ? std::move(shown) : "...");
}

bool LeaveOutRecipients(MailtoMessage& message, std::string_view list) {
  for (const std::string_view entry : platform::Split(list, ',')) {
    const auto recipient = platform::PercentDecoded(entry);
    if (!recipient) return false;
    LeaveOut(message, *recipient);
  }
  return true;
}

// Of a field that stands there twice the first counts.
bool TakeField(MailtoMessage& message, std::string_view field) {
  const std::size_t equals = std::min(field.find('='), field.size());
  const auto name = platform::PercentDecoded(field.substr(0, equals));
  const std::string_view encoded = field.substr(std::min(equals + 1, field.size()));
  const auto value = platform::PercentDecoded(encoded);
  if (!name || !value) return false;
  if (platform::EqualsIgnoringAsciiCase(*name, "to")) return LeaveOutRecipients(message, encoded);
  if (platform::EqualsIgnoringAsciiCase(*name, "subject") && message.subject.empty()) {
    message.subject = OneLine(*value, value->size());
  } else if (platform::EqualsIgnoringAsciiCase(*name, "body") && message.body.empty()) {
    message.body = Lines(*value);
  } else if (!value->empty()) {
    LeaveOut(message, platform::AsciiLower(*name));
  }
  return true;
}

}  // namespace

std::optional<MailtoMessage> ReadMailto(std::string_view address) {
  if (!platform::StartsWithIgnoringAsciiCase(address, kScheme)) return {};
  address = address.substr(kScheme.size(), address.find('#') - kScheme.size());
  const std::size_t query = std::min(address.find('?'), address.size());
  MailtoMessage message;
  if (!LeaveOutRecipients(message, address.substr(0, query))) return {};
  if (query == address.size()) return message;
  for (const std::string_view field : platform::Split(address.substr(query + 1), '&')) {
    if (!field.empty() && !TakeField(message, field)) return {};
  }
  return message;
}

}  // namespace quillcast::document
