// The name servers of this computer, as its resolver's file lists them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/sentence.h"

namespace quillcast::domain {

inline constexpr const char* kResolverFile = "/etc/resolv.conf";

struct DnsServerList {
  std::vector<std::string> addresses;  // in the file's order
  std::string failure;                 // for a box, with errno; empty when the file was read
  Sentence status;                     // what is said beside it: the failure, or that the file names none
};

// Takes the "nameserver" lines of the first 64 KiB. What is no address is passed over.
DnsServerList ReadDnsServerList(const std::filesystem::path& resolver_file = kResolverFile);

}  // namespace quillcast::domain
