#include "account/shown_route.h"

#include "account/account_connection.h"
#include "platform/text.h"

namespace quillcast::account {

ShownRoute::ShownRoute(const profile::SettingsStore& settings, Server server)
    : settings_(settings), server_(server), servers_(Servers()) {}

std::string ShownRoute::Servers() const {
  const auto account = AccountSettings::Load(settings_);
  return account && ServersOf(*account) ? ServersText(*account) : std::string();
}

bool ShownRoute::IsStillSo() {
  auto now = Servers();
  if (now.empty() || now == servers_) return true;
  server_ = Server::kReal;
  servers_ = std::move(now);
  return false;
}

Result<void> CheckRoute(const AccountSettings& account, const std::string& servers) {
  const std::string now = ServersText(account);
  if (now == servers || !ServersOf(account)) return {};
  return Error{Failure::kNotPermitted,
               Say("Nothing was sent: the account names another server by now, {}.", platform::Printable(now, 200)),
               "Look whether that is right, and send once more."};
}

}  // namespace quillcast::account
