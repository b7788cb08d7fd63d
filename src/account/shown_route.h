// Where a window says that mail goes, held against where the account leads when it is sent.
#pragma once

#include <optional>
#include <string>

#include "account/account_settings.h"
#include "profile/settings_store.h"

namespace quillcast::account {

// Which way mail goes and in whose name, as a person reads it.
struct Route {
  std::string servers;   // "mail.example.org, port 587, or mx.example.org, port 25"; empty where there are none
  std::string security;  // as the account has it
  std::optional<std::string> from;  // "Ada <ada@example.org>"; none where what is sent has a sender of its own

  bool operator==(const Route&) const = default;
};

class ShownRoute {
 public:
  // Whether the account's server is the practice mailbox.
  enum class Server { kReal, kPractice };
  // Who is named as sender in what is sent.
  enum class Sender { kOfTheAccount, kItsOwn };
  // As it is now; nothing where it cannot be read. The settings must outlive it.
  ShownRoute(const profile::SettingsStore& settings, Server server, Sender sender);

  bool is_practice() const { return server_ == Server::kPractice; }
  const Route& route() const { return route_; }
  // What is other by now, as CheckRoute says it, as far as can be read: another window or program may have named others
  // meanwhile. From then on that is to be shown; a server that was not there at first is no practice. What is sent is
  // held to route() by CheckRoute, whoever changes it behind this.
  std::optional<Error> TakeChange();

 private:
  const profile::SettingsStore* settings_;
  Server server_;
  Sender sender_;
  Route route_;
};

// kNotPermitted for an account that leads elsewhere than this route, or another way: nothing goes where the person was
// not told of. One that leads nowhere is for sending itself to refuse.
Result<void> CheckRoute(const AccountSettings& account, const Route& route);

}  // namespace quillcast::account
