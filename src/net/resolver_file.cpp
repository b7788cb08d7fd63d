#include "net/resolver_file.h"

#include <algorithm>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::net {

std::vector<std::string> NameServersIn(std::string_view resolver_file) {
  constexpr std::string_view kKeyword = "nameserver";
  std::vector<std::string> addresses;
  for (std::string_view line : platform::Split(resolver_file, '\n')) {
    line = platform::Trim(line);
    if (!line.starts_with(kKeyword)) continue;
    line.remove_prefix(kKeyword.size());
    const std::string_view value = platform::Trim(line);
    if (value.size() == line.size()) continue;  // another word that begins so
    const auto address = value.substr(0, value.find_first_of(" \t#;"));
    if (ParseIpAddress(address)) addresses.emplace_back(address);
  }
  return addresses;
}

std::vector<Endpoint> ServersBehindInterfaces(const std::filesystem::path& resolver_file) {
  const std::string text = IgnoreErrors(platform::ReadFile(resolver_file, kLargestResolverFile), std::string());
  std::vector<Endpoint> servers;
  for (const std::string& address : NameServersIn(text)) servers.push_back({*ParseIpAddress(address), kDnsPort});
  const bool any = std::ranges::any_of(servers, [](const Endpoint& server) { return server.address.scope != 0; });
  return any ? servers : std::vector<Endpoint>();
}

}  // namespace quillcast::net
