#include "account/account_connection.h"

#include <fmt/format.h>

#include <algorithm>

#include "account/account_choices.h"
#include "account/password_place.h"
#include "net/address.h"
#include "net/idna.h"
#include "platform/text.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

Result<std::uint16_t> PortFrom(std::string_view text) {
  const auto port =
      platform::WholeNumberBetween(platform::Trim(text), RowOf(kPort).bounds->lowest, RowOf(kPort).bounds->highest);
  if (port) return static_cast<std::uint16_t>(*port);
  return Error{Failure::kNotConfigured, Say("\"{}\" is no port of a mail server.", platform::Printable(text, 40)),
               "A port is a number from 1 to 65535: quillcast account set Port=587"};
}

// Whether it may be one, in any script: what cannot be asked for is no fault of name servers. No name ends in a number:
// 10.0.0.256 was to be an address.
bool IsHost(std::string_view text) {
  if (net::ParseIpAddress(text.substr(0, text.find('%')))) return true;  // also behind an interface that is away
  const auto last_dot = net::WithoutRootDot(text).rfind('.');
  const bool ends_in_number =
      last_dot != std::string_view::npos && platform::ParseWholeNumber(net::WithoutRootDot(text).substr(last_dot + 1));
  return !ends_in_number && net::IsHostName(text);
}

Error NoServer(std::string_view entry) {
  return Error{
      Failure::kNotConfigured,
      Say("Server: \"{}\" is no name of a mail server.", platform::Printable(std::string(entry), 80)),
      "Type it anew, as mail.example.org, mail.example.org:587 or [2001:db8::1]:25, several of them parted by a "
      "semicolon."};
}

Result<smtp::Server> ServerFrom(std::string_view entry, std::uint16_t port) {
  if (entry.find("//") != std::string_view::npos) return NoServer(entry);  // what follows its colon is no port
  smtp::Server server{std::string(entry), port};
  std::string_view port_text;
  if (entry.starts_with('[')) {
    const auto end = entry.find(']');
    server.host = entry.substr(1, end == std::string_view::npos ? end : end - 1);
    if (end != std::string_view::npos && entry.substr(end + 1).starts_with(':')) port_text = entry.substr(end + 2);
  } else if (std::count(entry.begin(), entry.end(), ':') == 1) {  // more of them: a bare IPv6 address
    server.host = platform::Trim(entry.substr(0, entry.find(':')));
    port_text = entry.substr(entry.find(':') + 1);
  }
  if (!IsHost(server.host)) return NoServer(entry);
  if (port_text.empty()) return server;
  const auto own_port = PortFrom(port_text);
  if (!own_port) {
    return Error{own_port.error().failure,
                 Say("Server: \"{}\" names no port of a mail server.", platform::Printable(entry, 80)),
                 "A port is a number from 1 to 65535, as in mail.example.org:587."};
  }
  server.port = *own_port;
  return server;
}

}  // namespace

Result<std::vector<smtp::Server>> ServersOf(const AccountSettings& account) {
  std::vector<smtp::Server> servers;
  const auto port = PortFrom(account[kPort]);
  if (!port) return port.error();
  for (const auto entry : platform::Split(account[kServer], ';')) {
    if (platform::Trim(entry).empty()) continue;
    auto server = ServerFrom(platform::Trim(entry), *port);
    if (!server) return server.error();
    servers.push_back(std::move(*server));
  }
  return servers;
}

std::string ServersText(const AccountSettings& account) {
  const auto servers = ServersOf(account);
  if (!servers) return account[kServer];
  std::string text;
  for (const auto& server : *servers) {
    text += fmt::format("{}{}, port {}", text.empty() ? "" : ", or ", server.host, server.port);
  }
  return text;
}

Result<smtp::ClientOptions> ConnectionOptionsOf(const AccountSettings& account) {
  smtp::ClientOptions options;
  auto servers = ServersOf(account);
  if (!servers) return servers.error();
  options.servers = std::move(*servers);
  const auto security = ChosenAs<smtp::Security>(account, kSecurity);
  if (!security) return security.error();
  options.security = *security;
  options.sign_in = account.IsOn(kAuth);
  if (options.sign_in) {
    const auto auth_mode = ChosenAs<smtp::AuthMode>(account, kAuthMode);
    if (!auth_mode) return auth_mode.error();
    options.auth_mode = *auth_mode;
    const auto place = ChosenAs<PasswordPlace>(account, kPasswordFrom);
    if (!place) return place.error();
  }
  options.user = account[kUsername];
  options.send_without_auth = account.IsOn(kNoAuth);
  options.extended = account.IsOn(kExtended);
  options.pipeline = account.IsOn(kPipeline);
  options.timeout = std::chrono::seconds(account.TimeoutSeconds());
  return options;
}

}  // namespace quillcast::account
