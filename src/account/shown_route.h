// Where a window says that mail goes, held against where the account leads when it is sent.
#pragma once

#include <string>

#include "account/account_settings.h"
#include "profile/settings_store.h"

namespace quillcast::account {

class ShownRoute {
 public:
  // Whether the account's server is the practice mailbox.
  enum class Server { kReal, kPractice };
  // As it is now. The settings must outlive it.
  ShownRoute(const profile::SettingsStore& settings, Server server);

  bool is_practice() const { return server_ == Server::kPractice; }
  // "mail.example.org, port 587, or mx.example.org, port 25"; empty where there are none, or they cannot be read.
  const std::string& servers() const { return servers_; }
  // Whether the account still names those, as far as can be read: another window or program may have named others
  // meanwhile. Those are to be shown from then on; one that was not there at first is no practice. What is sent is held
  // to servers() by CheckRoute, whoever names others behind this.
  bool IsStillSo();

 private:
  std::string Servers() const;

  const profile::SettingsStore& settings_;
  Server server_;
  std::string servers_;
};

// kNotPermitted for an account that leads elsewhere than to these servers, as ShownRoute has them: nothing goes where
// the person was not told of. One that leads nowhere is for sending itself to refuse.
Result<void> CheckRoute(const AccountSettings& account, const std::string& servers);

}  // namespace quillcast::account
