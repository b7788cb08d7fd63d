#include "support/system_facts.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "net/address.h"
#include "platform/file.h"
#include "platform/system_name.h"
#include "platform/text.h"
#include "support/drives.h"

namespace quillcast::support {
namespace {

constexpr std::uint64_t kLongestUsers = std::uint64_t{4} * 1024 * 1024;  // bytes
constexpr std::size_t kLongestFact = 200;
constexpr const char* kUsers = "/etc/passwd";

// The address that this computer would speak from to that one. To connect a datagram socket sends nothing.
std::string AddressTowards(const char* other) {
  constexpr std::uint16_t kDiscard = 9;  // no port of 0 can be connected to
  const auto target = net::ToSystem({*net::ParseIpAddress(other), kDiscard});
  const platform::UniqueFd socket(::socket(target.storage.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!socket || ::connect(socket.get(), target.get(), target.length) != 0) return {};
  return net::ToString(net::LocalEndpoint(socket.get()).address);
}

// Both are documentation's own networks, which every other address outside goes the way of.
std::string LocalAddress() {
  for (const char* other : {"192.0.2.1", "2001:db8::1"}) {
    if (auto address = AddressTowards(other); !address.empty()) return address;
  }
  return "127.0.0.1";
}

std::string HostName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) return {};
  return platform::Printable(name.data(), kLongestFact);
}

}  // namespace

std::string FullNameIn(std::string_view users, uid_t user) {
  constexpr std::size_t kUser = 2;
  constexpr std::size_t kFullName = 4;
  for (const auto line : platform::Split(users, '\n')) {
    const auto fields = platform::Split(line, ':');
    if (fields.size() <= kFullName || platform::ParseWholeNumber(fields[kUser]) != std::int64_t{user}) continue;
    return platform::Printable(platform::Trim(platform::Split(fields[kFullName], ',').front()), kLongestFact);
  }
  return {};
}

// Not getpwuid(3), which may wait for a directory in the network.
SystemFacts ReadSystemFacts() {
  return {.operating_system = platform::SystemName(),
          .owner = FullNameIn(IgnoreErrors(platform::ReadFile(kUsers, kLongestUsers), {}), ::getuid()),
          .host = HostName(),
          .screen = {},
          .drives = Drives(),
          .local_address = LocalAddress()};
}

}  // namespace quillcast::support
