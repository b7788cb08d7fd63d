// Which domain an account sends in the name of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "account/account_settings.h"
#include "domain/sender/sender_check.h"

namespace quillcast::domain {

// The hosts of a list as the account writes it ("a.example:465; b.example"), in A-labels and each once. Fails for a
// list that the account could not use.
Result<std::vector<std::string>> HostsIn(const std::string& list);

// The selector in what a person pastes for one: "s1", "s=s1;", "s1._domainkey.example.org.". Fails with kUsage where
// none is in it.
Result<std::string> SelectorIn(std::string_view typed);

// By the account's address and its servers. Fails with kNotConfigured where the address has no domain.
Result<SenderQuestion> QuestionOf(const account::AccountSettings& account);

// The same of a domain that a person names, in any script; the account's servers are taken along where the domain is
// the account's own. Fails with kUsage for what is no domain.
Result<SenderQuestion> QuestionOf(std::string_view domain, const account::AccountSettings& account);

}  // namespace quillcast::domain
