// The name servers of this computer, as its resolver's file lists them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "net/resolver_file.h"
#include "platform/sentence.h"

namespace quillcast::domain {

struct DnsServerList {
  std::vector<std::string> addresses;  // in the file's order
  std::string failure;                 // for a box, with errno; empty when the file was read
  Sentence status;                     // what is said beside it: the failure, or that the file names none
};

// Takes the "nameserver" lines of the first 64 KiB.
DnsServerList ReadDnsServerList(const std::filesystem::path& resolver_file = net::kResolverFile);

}  // namespace quillcast::domain
