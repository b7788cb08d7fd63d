#include "document/link_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "document/link_address.h"
#include "document/link_trouble.h"
#include "document/merge_fields.h"
#include "platform/text.h"
#include "recipients/check_email.h"

namespace quillcast::document {
namespace {

constexpr std::string_view kMailScheme = "mailto:";
constexpr std::string_view kSubjectField = "?subject=";

// Every tag taken out, with what stands in for its value.
std::string WithoutTags(std::string text, std::string_view value) {
  for (const auto& field : kMergeFields) text = platform::ReplaceAll(text, field.tag, value);
  return text;
}

bool BeginsWith(std::string_view text, std::string_view begin) {
  return platform::EqualsIgnoringAsciiCase(text.substr(0, begin.size()), begin);
}

bool HasBlank(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) <= ' '; });
}

Complaint<LinkBox> Wrong(const char* message, LinkBox box = LinkBox::kAddress) { return {message, box}; }

std::optional<Complaint<LinkBox>> CheckWeb(std::string_view typed) {
  const std::string target = LinkAddress(WithoutTags(std::string(platform::Trim(typed)), "tag"));
  if (target.empty()) return Wrong("Please enter the address of a page.");
  if (HasBlank(target)) return Wrong("There is a blank in the address. Take it out, or write %20 for it.");
  if (CanBeFollowed(target)) return {};
  const std::string scheme = SchemeOf(target);
  if (scheme == "http" || scheme == "https") {
    return Wrong("The server is missing in the address. It has the form example.org/page.");
  }
  return Wrong("Mail programs follow no link of this kind. Give the address of a page on the web.");
}

// Of what was typed or pasted, the scheme of a link included.
std::string_view MailAddress(std::string_view typed) {
  typed = platform::Trim(typed);
  return BeginsWith(typed, kMailScheme) ? platform::Trim(typed.substr(kMailScheme.size())) : typed;
}

std::optional<Complaint<LinkBox>> CheckMail(const LinkChoice& choice) {
  const std::string address = WithoutTags(std::string(MailAddress(choice.address)), "tag@example.org");
  if (address.empty()) return Wrong("Please enter a mail address.");
  const bool is_one = !HasBlank(address) && address.find_first_of("?&,;:<>\"") == std::string::npos &&
                      std::count(address.begin(), address.end(), '@') == 1;
  if (!is_one || !recipients::CheckEmail(address))
    return Wrong("That is no mail address. It has the form name@example.org.");
  if (choice.subject.find_first_of("\r\n") != std::string::npos)
    return Wrong("A subject is one line.", LinkBox::kSubject);
  return {};
}

std::optional<Complaint<LinkBox>> CheckPlace(std::string_view typed) {
  const auto name = platform::Trim(typed);
  if (name.empty()) return Wrong("Please choose or name a place in the message.");
  if (HasBlank(name) || name.find_first_of("#\"<>") != std::string_view::npos)
    return Wrong("The name of a place has no blanks, and neither #, \", < nor >.");
  return {};
}

// As RFC 6068 2 has an address or a subject; a tag stays, for it is replaced as it stands.
// Beside what stays everywhere, `stays_too` does.
std::string Encoded(std::string_view text, std::string_view stays_too = {}) {
  std::string encoded;
  for (const char c : text) {
    const bool stays = platform::AsciiIsAlnum(c) || std::string_view("-._~$*!,:@/").find(c) != std::string_view::npos ||
                       stays_too.find(c) != std::string_view::npos;
    encoded += stays ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
  }
  return encoded;
}

// "mailto:a@b" and "mailto:a@b?subject=c" alone.
std::optional<LinkChoice> ReadMail(std::string_view target) {
  if (!BeginsWith(target, kMailScheme)) return {};
  target.remove_prefix(kMailScheme.size());
  const auto fields = std::min(target.find('?'), target.size());
  const auto address = platform::PercentDecoded(target.substr(0, fields));
  const std::string_view rest = target.substr(fields);
  const bool has_subject = BeginsWith(rest, kSubjectField) && rest.find('&') == std::string_view::npos;
  if (!address || (!rest.empty() && !has_subject)) return {};
  const auto subject = platform::PercentDecoded(has_subject ? rest.substr(kSubjectField.size()) : rest);
  if (!subject) return {};
  LinkChoice choice{LinkKind::kMail, *address, *subject};
  if (CheckMail(choice)) return {};
  return choice;
}

}  // namespace

std::optional<Complaint<LinkBox>> CheckLink(const LinkChoice& choice) {
  if (!UnknownTags(choice.address + ' ' + choice.subject).empty())
    return Wrong("There is no such merge tag. Copy its name from the menu of merge tags.");
  if (choice.kind == LinkKind::kMail) return CheckMail(choice);
  return choice.kind == LinkKind::kWeb ? CheckWeb(choice.address) : CheckPlace(choice.address);
}

std::string LinkTarget(const LinkChoice& choice) {
  const std::string address(platform::Trim(choice.address));
  if (choice.kind == LinkKind::kWeb) return LinkAddress(address);
  if (choice.kind == LinkKind::kPlace) return '#' + address;
  const auto subject = platform::Trim(choice.subject);
  std::string target = std::string(kMailScheme) + Encoded(MailAddress(address), "+'");
  if (!subject.empty()) target += std::string(kSubjectField) + Encoded(subject);
  return target;
}

LinkChoice ReadLink(std::string_view target) {
  if (target.starts_with('#')) return {LinkKind::kPlace, std::string(target.substr(1))};
  return ReadMail(target).value_or(LinkChoice{LinkKind::kWeb, std::string(target)});
}

}  // namespace quillcast::document
