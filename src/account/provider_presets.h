// The public mail servers of well-known providers, offered by the domain of an address.
#pragma once

#include <optional>
#include <string_view>

#include "account/account_settings.h"

namespace quillcast::account {

// Part of the program: nothing is looked up over the network.
struct ProviderPreset {
  std::string_view name;     // "Fastmail"
  std::string_view domains;  // parted by blanks
  std::string_view server;
  std::string_view port;
  std::string_view security;  // a choice of the account's Security
  std::string_view note;      // what else a person has to do there; may be empty
};

// The preset for the part behind the "@"; nothing where none is known.
std::optional<ProviderPreset> PresetFor(std::string_view address);

// The one to offer for the address on screen: none where its server stands there already.
std::optional<ProviderPreset> PresetToOffer(const AccountSettings& shown);

// The values with the preset's server and with signing in, as the address where no user was named.
AccountSettings FilledIn(AccountSettings shown, const ProviderPreset& preset);

}  // namespace quillcast::account
