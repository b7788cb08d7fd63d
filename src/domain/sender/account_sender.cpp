#include "domain/sender/account_sender.h"

#include <algorithm>
#include <optional>

#include "account/account_connection.h"
#include "net/address.h"
#include "net/idna.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

// In A-labels and small letters; nothing for what cannot stand behind the "@", or is an address of the network.
std::optional<std::string> DomainIn(std::string_view text) {
  const Result<std::string> ascii = net::AsciiHost(text);
  if (!ascii) return std::nullopt;
  std::string name = platform::AsciiLower(net::WithoutRootDot(*ascii));
  const bool is_domain = net::IsDottedName(name) && name.find('.') != std::string::npos && !net::ParseIpAddress(name);
  return is_domain ? std::optional(std::move(name)) : std::nullopt;
}

}  // namespace

Result<std::vector<std::string>> HostsIn(const std::string& list) {
  account::AccountSettings account;
  account.Set(account::AccountKey::kServer, list);
  const auto servers = account::ServersOf(account);
  if (!servers) return servers.error();
  std::vector<std::string> hosts;
  for (const smtp::Server& server : *servers) {
    const Result<std::string> ascii = net::AsciiHost(server.host);
    if (!ascii) return ascii.error();
    if (ascii->find_first_of(": ") != std::string::npos && !net::ParseIpAddress(*ascii)) {
      return Error{Failure::kNotConfigured, Say("\"{}\" is no server.", platform::Printable(*ascii, 100)),
                   "Give its name or its address."};
    }
    std::string host = platform::AsciiLower(net::WithoutRootDot(*ascii));
    if (std::find(hosts.begin(), hosts.end(), host) == hosts.end()) hosts.push_back(std::move(host));
  }
  return hosts;
}

Result<std::string> SelectorIn(std::string_view typed) {
  std::string_view text = platform::Trim(typed);
  if (text.ends_with(';')) text.remove_suffix(1);
  const std::size_t equals = text.find('=');
  if (equals != std::string_view::npos &&
      platform::EqualsIgnoringAsciiCase(platform::Trim(text.substr(0, equals)), "s"))
    text = platform::Trim(text.substr(equals + 1));
  text = net::WithoutRootDot(text.substr(0, platform::AsciiLower(text).find("._domainkey")));
  if (net::IsDottedName(text)) return std::string(text);
  return Error{Failure::kUsage, Say("\"{}\" is no selector.", platform::Printable(typed, 100)),
               "Write what stands behind \"s=\" in the DKIM-Signature of a message that you sent."};
}

Result<SenderQuestion> QuestionOf(const account::AccountSettings& account) {
  const std::string& address = account[account::AccountKey::kEmail];
  const std::size_t at = address.rfind('@');
  const std::optional<std::string> domain =
      at == std::string::npos ? std::nullopt : DomainIn(std::string_view(address).substr(at + 1));
  if (!domain) {
    return Error{Failure::kNotConfigured, "The account has no address whose domain could be checked.",
                 "Name a domain, or fill in the account's address."};
  }
  // A list that cannot be read is asked about as it stands: the check then tells that it has no address.
  const std::string& list = account[account::AccountKey::kServer];
  return SenderQuestion{.domain = *domain,
                        .local_part = address.substr(0, at),
                        .servers = IgnoreErrors(HostsIn(list), std::vector{list})};
}

Result<SenderQuestion> QuestionOf(std::string_view domain, const account::AccountSettings& account) {
  const std::optional<std::string> name = DomainIn(domain);
  if (!name) {
    return Error{Failure::kUsage, Say("\"{}\" is no domain.", platform::Printable(domain, 100)),
                 "Write what stands behind the \"@\" of the address, such as example.org."};
  }
  if (Result<SenderQuestion> own = QuestionOf(account); own && own->domain == *name) return own;
  return SenderQuestion{.domain = *name};
}

}  // namespace quillcast::domain
