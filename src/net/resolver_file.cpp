#include "net/resolver_file.h"

#include <algorithm>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::net {
namespace {

// As much of it as counts; nothing where it cannot be read.
std::string TextOf(const std::filesystem::path& resolver_file) {
  const auto fd = platform::OpenForReading(resolver_file);
  if (!fd) return {};
  std::string text(kLargestResolverFile, '\0');
  text.resize(IgnoreErrors(platform::ReadSome(fd->get(), resolver_file, text.data(), text.size()), 0));
  return text;
}

}  // namespace

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
  std::vector<Endpoint> servers;
  for (const std::string& address : NameServersIn(TextOf(resolver_file)))
    servers.push_back({*ParseIpAddress(address), kDnsPort});
  const bool any = std::ranges::any_of(servers, [](const Endpoint& server) { return server.address.scope != 0; });
  return any ? servers : std::vector<Endpoint>();
}

}  // namespace quillcast::net
