#include "domain/connection/connection_input.h"

#include "account/account_connection.h"
#include "account/account_settings.h"

namespace quillcast::domain {
namespace {

account::AccountSettings AccountOf(std::string_view server, std::string_view port, std::string_view security) {
  account::AccountSettings account;
  account.Set(account::AccountKey::kServer, std::string(server));
  account.Set(account::AccountKey::kPort, std::string(port));
  account.Set(account::AccountKey::kSecurity, std::string(security));
  return account;
}

// What is wrong with the box of the server, whatever stands in that of the port.
std::optional<Sentence> FaultOfServer(std::string_view server) {
  const auto servers = account::ServersOf(AccountOf(server, "25", "Automatic"));
  if (!servers) return servers.error().what;
  if (servers->empty()) return "That is no name of a server.";
  return {};
}

}  // namespace

std::optional<TestComplaint> CheckTest(std::string_view server, std::string_view port) {
  if (server.empty()) return TestComplaint{"Please enter your mail server.", TestControl::kServer};
  if (port.empty()) return TestComplaint{"Please enter your port.", TestControl::kPort};
  if (const auto fault = FaultOfServer(server)) return TestComplaint{"", TestControl::kServer, *fault};
  const auto servers = account::ServersOf(AccountOf(server, port, "Automatic"));
  if (!servers) return TestComplaint{"", TestControl::kPort, servers.error().what};
  return {};
}

Result<smtp::ClientOptions> TestOptions(std::string_view server, std::string_view port, std::string_view security,
                                        std::chrono::seconds patience) {
  auto options = account::ConnectionOptionsOf(AccountOf(server, port, security));
  if (options) options->timeout = patience;
  return options;
}

}  // namespace quillcast::domain
