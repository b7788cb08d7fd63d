// The file that names this computer's name servers (resolv.conf(5)).
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "net/address.h"

namespace quillcast::net {

inline constexpr const char* kResolverFile = "/etc/resolv.conf";
inline constexpr std::size_t kLargestResolverFile = 65536;  // octets that are read of it
inline constexpr std::uint16_t kDnsPort = 53;

// The addresses of the "nameserver" lines, as written and in their order. What is no address is passed over.
std::vector<std::string> NameServersIn(std::string_view resolver_file);

// All name servers of the file, where one of them is reached through the interface that stands behind its address:
// c-ares 1.18 passes over such a line. Nothing where there is none, or no file: what the library reads is right then.
std::vector<Endpoint> ServersBehindInterfaces(const std::filesystem::path& resolver_file = kResolverFile);

}  // namespace quillcast::net
