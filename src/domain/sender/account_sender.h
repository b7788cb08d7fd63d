// Which domain an account sends in the name of.
#pragma once

#include "account/account_settings.h"
#include "domain/sender/sender_check.h"

namespace quillcast::domain {

// By the account's address and its server. Fails with kNotConfigured where the address has no domain.
Result<SenderQuestion> QuestionOf(const account::AccountSettings& account);

// The same of a domain that a person names, in any script; the account's server is taken along where the domain is the
// account's own. Fails with kUsage for what is no domain.
Result<SenderQuestion> QuestionOf(std::string_view domain, const account::AccountSettings& account);

}  // namespace quillcast::domain
