// Whom to ask for the holder of a domain.
#pragma once

#include <array>
#include <string_view>

#include "net/address.h"

namespace quillcast::domain {

struct WhoisServer {
  std::string_view extension;
  std::string_view host;
};

// The registries that are offered, in the order of the list. Whose public servers they are: the root's list of domains.
inline constexpr std::array<WhoisServer, 7> kWhoisServers = {{
    {".com", "whois.verisign-grs.com"},
    {".net", "whois.verisign-grs.com"},
    {".org", "whois.publicinterestregistry.org"},
    {".info", "whois.nic.info"},
    {".biz", "whois.nic.biz"},
    {".us", "whois.nic.us"},
    {".name", "whois.nic.name"},
}};

// Knows of every other extension which registry has it.
inline constexpr std::string_view kRootWhoisServer = "whois.iana.org";

// The server for an extension with its dot, compared letter by letter: ".COM" is not in the list, and the root's.
net::HostPort WhoisServerFor(std::string_view extension);

// The same for a whole name, by what follows its last dot, in whichever letters.
net::HostPort WhoisServerForName(std::string_view name);

}  // namespace quillcast::domain
