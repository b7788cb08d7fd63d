#include "domain/dns_server_list.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "net/address.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

constexpr std::size_t kLargestFile = 65536;  // bytes

DnsServerList Failed(const std::string& text, const std::filesystem::path& file, int error_number) {
  DnsServerList list;
  list.failure = text + std::to_string(error_number);
  list.status = AsSentence(platform::SystemError("read", file, error_number));
  return list;
}

void TakeLine(std::string_view line, std::vector<std::string>& addresses) {
  constexpr std::string_view kKeyword = "nameserver";
  line = platform::Trim(line);
  if (!line.starts_with(kKeyword)) return;
  line.remove_prefix(kKeyword.size());
  const std::string_view value = platform::Trim(line);
  if (value.size() == line.size()) return;  // another word that begins so
  const auto address = value.substr(0, value.find_first_of(" \t#;"));
  if (net::ParseIpAddress(address)) addresses.emplace_back(address);
}

}  // namespace

DnsServerList ReadDnsServerList(const std::filesystem::path& resolver_file) {
  const platform::UniqueFd file(::open(resolver_file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) return Failed("GetNetworkParams sizing failed with error ", resolver_file, errno);
  std::string text(kLargestFile, '\0');
  std::size_t size = 0;
  while (size < text.size()) {
    const auto count = ::read(file.get(), text.data() + size, text.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Failed("GetNetworkParams failed with error ", resolver_file, errno);
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  text.resize(size);
  DnsServerList list;
  for (const std::string_view line : platform::Split(text, '\n')) TakeLine(line, list.addresses);
  if (list.addresses.empty()) list.status = Say("{} names no DNS server.", resolver_file.string());
  return list;
}

}  // namespace quillcast::domain
