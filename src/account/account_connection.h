// The servers that the account names, and how they are spoken to.
#pragma once

#include <string>
#include <vector>

#include "account/account_settings.h"
#include "platform/result.h"
#include "smtp/client/client.h"

namespace quillcast::account {

// The account's servers, with the port of each. A list that names none is empty; kNotConfigured for what is no name of
// a host, and for what is no port.
Result<std::vector<smtp::Server>> ServersOf(const AccountSettings& account);

// "mail.example.org, port 587, or mx.example.org, port 25", in the order in which they are tried; the list as it is
// stored where it cannot be read.
std::string ServersText(const AccountSettings& account);

// The connection that the account describes, without its password: account_secrets.h has that. "host", "host:port" and
// "[v6]:port" are understood in the server list; blanks round entries and empty entries are passed over.
Result<smtp::ClientOptions> ConnectionOptionsOf(const AccountSettings& account);

}  // namespace quillcast::account
