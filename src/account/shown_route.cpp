#include "account/shown_route.h"

#include <utility>

#include "account/account_connection.h"
#include "account/account_steps.h"
#include "platform/text.h"

namespace quillcast::account {
namespace {

constexpr std::size_t kLongestShown = 200;

Route RouteOf(const AccountSettings& account, ShownRoute::Sender sender) {
  Route route{ServersOf(account) ? ServersText(account) : std::string(), account[AccountKey::kSecurity], {}};
  if (sender == ShownRoute::Sender::kOfTheAccount) route.from = TextsOf(account).from;
  return route;
}

// What is other by now.
std::optional<Sentence> Difference(const Route& shown, const Route& now) {
  const auto of = [](const std::string& value) { return platform::Printable(value, kLongestShown); };
  if (now.servers != shown.servers) {
    return Say("Nothing was sent: the account names another server by now, {}.", of(now.servers));
  }
  if (now.security != shown.security) {
    return Say("Nothing was sent: the account asks for another security by now, {}.", of(now.security));
  }
  if (shown.from && now.from != shown.from) {
    return Say("Nothing was sent: the account names another sender by now, {}.", of(now.from.value_or("")));
  }
  return {};
}

std::optional<Error> ChangeOf(const Route& shown, const Route& now) {
  if (now.servers.empty()) return {};
  auto difference = Difference(shown, now);
  if (!difference) return {};
  return Error{Failure::kNotPermitted, *std::move(difference), "Look whether that is right, and send once more."};
}

}  // namespace

ShownRoute::ShownRoute(const profile::SettingsStore& settings, Server server, Sender sender)
    : settings_(&settings), server_(server), sender_(sender) {
  if (const auto account = AccountSettings::Load(*settings_)) route_ = RouteOf(*account, sender_);
}

std::optional<Error> ShownRoute::TakeChange() {
  const auto account = AccountSettings::Load(*settings_);
  if (!account) return {};
  Route now = RouteOf(*account, sender_);
  auto change = ChangeOf(route_, now);
  if (!change) return {};
  if (now.servers != route_.servers) server_ = Server::kReal;
  route_ = std::move(now);
  return change;
}

Result<void> CheckRoute(const AccountSettings& account, const Route& route) {
  const auto sender = route.from ? ShownRoute::Sender::kOfTheAccount : ShownRoute::Sender::kItsOwn;
  const auto change = ChangeOf(route, RouteOf(account, sender));
  return change ? Result<void>(*change) : Result<void>();
}

}  // namespace quillcast::account
