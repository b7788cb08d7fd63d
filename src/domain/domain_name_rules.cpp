#include "domain/domain_name_rules.h"

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::domain {
namespace {

DomainComplaint About(const char* message, DomainControl control = DomainControl::kDomain) {
  return {message, control};
}

bool IsOneCharacter(std::string_view text) { return platform::DecodeUtf8(text).length == text.size(); }

}  // namespace

std::string FilterDomainKeys(std::string_view typed, DotKey dot) {
  std::string taken;
  for (const char c : typed) {
    if (platform::AsciiIsAlnum(c) || c == '-' || (c == '.' && dot == DotKey::kTaken)) taken += c;
  }
  return taken;
}

std::optional<DomainComplaint> CheckDomainName(std::string_view name) {
  if (name.empty()) return About("Please specify your domain.");
  if (IsOneCharacter(name)) return About("Domain name must be at least 2 characters.");
  if (name.starts_with('-')) return About("Domain name can not begin with dash.");
  if (name.ends_with('-')) return About("Domain name can not end with dash.");
  return {};
}

std::optional<DomainComplaint> CheckWholeDomainName(std::string_view name) {
  if (auto complaint = CheckDomainName(name)) return complaint;
  if (name.find('.') == std::string_view::npos) return About("Domain name must have the extension.");
  if (name.starts_with('.')) return About("Domain name can not begin with dot.");
  if (name.ends_with('.')) return About("Domain name can not end with dot.");
  return {};
}

std::optional<DomainComplaint> CheckMxQuestion(std::size_t offered, std::string_view server, std::string_view name) {
  if (offered == 0) return About("There is no DNS server.", DomainControl::kServers);
  if (server.empty()) return About("Please select a DNS server.", DomainControl::kServers);
  return CheckWholeDomainName(name);
}

}  // namespace quillcast::domain
