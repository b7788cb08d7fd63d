#include "domain/dns_server_list.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file.h"

namespace quillcast::domain {
namespace {

DnsServerList Failed(const std::string& text, const std::filesystem::path& file, int error_number) {
  DnsServerList list;
  list.failure = text + std::to_string(error_number);
  list.status = AsSentence(platform::SystemError("read", file, error_number));
  return list;
}

}  // namespace

DnsServerList ReadDnsServerList(const std::filesystem::path& resolver_file) {
  const platform::UniqueFd file(::open(resolver_file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) return Failed("GetNetworkParams sizing failed with error ", resolver_file, errno);
  std::string text(net::kLargestResolverFile, '\0');
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
  list.addresses = net::NameServersIn(text);
  if (list.addresses.empty()) list.status = Say("{} names no DNS server.", resolver_file.string());
  return list;
}

}  // namespace quillcast::domain
