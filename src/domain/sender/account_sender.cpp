#include "domain/sender/account_sender.h"

#include "net/idna.h"
#include "platform/text.h"

namespace quillcast::domain {

Result<SenderQuestion> QuestionOf(const account::AccountSettings& account) {
  const std::string& address = account[account::AccountKey::kEmail];
  const std::size_t at = address.rfind('@');
  if (at == std::string::npos || at + 1 == address.size()) {
    return Error{Failure::kNotConfigured, "The account has no address whose domain could be checked.",
                 "Name a domain, or fill in the account's address."};
  }
  Result<std::string> domain = net::AsciiHost(address.substr(at + 1));
  if (!domain) return domain.error();
  return SenderQuestion{.domain = platform::AsciiLower(net::WithoutRootDot(*domain)),
                        .local_part = address.substr(0, at),
                        .server = account[account::AccountKey::kServer]};
}

Result<SenderQuestion> QuestionOf(std::string_view domain, const account::AccountSettings& account) {
  const Result<std::string> ascii = net::AsciiHost(domain);
  if (!ascii) return ascii.error();
  const std::string name = platform::AsciiLower(net::WithoutRootDot(*ascii));
  if (name.find('.') == std::string::npos || name.find("..") != std::string::npos || name.starts_with('.')) {
    return Error{Failure::kUsage, Say("\"{}\" is no domain.", platform::Printable(domain, 100)),
                 "Write what stands behind the \"@\" of the address, such as example.org."};
  }
  if (Result<SenderQuestion> own = QuestionOf(account); own && own->domain == name) return own;
  return SenderQuestion{.domain = name};
}

}  // namespace quillcast::domain
