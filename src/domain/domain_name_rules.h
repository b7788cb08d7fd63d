// What a person may type as a domain, and whom to ask for the holder of it.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "net/address.h"
#include "platform/complaint.h"

namespace quillcast::domain {

enum class DomainControl { kDomain, kServers };
using DomainComplaint = Complaint<DomainControl>;

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

// What of a typed or pasted text gets into the box: letters, digits and "-", and "." only where the whole name stands.
enum class DotKey { kDropped, kTaken };
std::string FilterDomainKeys(std::string_view typed, DotKey dot);

// The name without its extension, as it stands.
std::optional<DomainComplaint> CheckDomainName(std::string_view name);
// The whole name.
std::optional<DomainComplaint> CheckWholeDomainName(std::string_view name);
// The whole name and the name server to ask; `offered` is how many servers the list has.
std::optional<DomainComplaint> CheckMxQuestion(std::size_t offered, std::string_view server, std::string_view name);

}  // namespace quillcast::domain
