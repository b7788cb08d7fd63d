#include "smtp/mailbox/mail_path.h"

#include <algorithm>

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::smtp {
namespace {

bool IsHigh(char c) { return static_cast<unsigned char>(c) >= 0x80; }

// RFC 5321 4.1.2 Atom, RFC 5322 3.2.3 atext, RFC 6531 3.3.
bool IsAtomText(char c) {
  constexpr std::string_view kSpecial = "!#$%&'*+-/=?^_`{|}~";
  return platform::AsciiIsAlnum(c) || IsHigh(c) || kSpecial.find(c) != std::string_view::npos;
}

bool IsLabelText(char c) { return platform::AsciiIsAlnum(c) || IsHigh(c) || c == '-' || c == '_'; }

bool IsLiteralText(char c) { return platform::AsciiIsAlnum(c) || c == '.' || c == ':' || c == '-'; }

// The length of the run of characters at the start that `allowed` takes.
template <typename Allowed>
std::size_t RunLength(std::string_view text, Allowed allowed) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), allowed) - text.begin());
}

// The length of words joined by single dots at the start; 0 when there is no such thing.
template <typename Allowed>
std::size_t DottedLength(std::string_view text, Allowed allowed) {
  std::size_t length = 0;
  while (true) {
    const std::size_t word = RunLength(text.substr(length), allowed);
    if (word == 0) return 0;
    length += word;
    if (length == text.size() || text[length] != '.') return length;
    ++length;
  }
}

std::size_t QuotedLength(std::string_view text) {
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == '"') {
      return i + 1;
    }
  }
  return 0;
}

std::size_t LocalLength(std::string_view text) {
  return !text.empty() && text.front() == '"' ? QuotedLength(text) : DottedLength(text, IsAtomText);
}

std::size_t DomainLength(std::string_view text) {
  if (text.empty() || text.front() != '[') return DottedLength(text, IsLabelText);
  const std::size_t inside = RunLength(text.substr(1), IsLiteralText);
  return inside > 0 && text.substr(1 + inside).starts_with(']') ? inside + 2 : 0;
}

// Takes "@a,@b:" off the start; false when it begins like a route and is none.
bool SkipRoute(std::string_view& text) {
  if (!text.starts_with('@')) return true;
  while (text.starts_with('@')) {
    const std::size_t domain = DomainLength(text.substr(1));
    if (domain == 0) return false;
    text.remove_prefix(1 + domain);
    if (!text.starts_with(',')) break;
    text.remove_prefix(1);
  }
  if (!text.starts_with(':')) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

std::optional<MailPath> ReadMailPath(std::string_view text) {
  if (!text.starts_with('<')) return {};
  text.remove_prefix(1);
  if (text.starts_with('>')) return MailPath{"", false, text.substr(1)};
  if (!SkipRoute(text)) return {};

  std::size_t length = LocalLength(text);
  if (length == 0) return {};
  const bool has_domain = text.substr(length).starts_with('@');
  if (has_domain) {
    const std::size_t domain = DomainLength(text.substr(length + 1));
    if (domain == 0) return {};
    length += 1 + domain;
  }
  if (!text.substr(length).starts_with('>') || !platform::IsUtf8(text.substr(0, length))) return {};
  return MailPath{std::string(text.substr(0, length)), has_domain, text.substr(length + 1)};
}

}  // namespace quillcast::smtp
