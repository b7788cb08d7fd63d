#include "domain/whois_servers.h"

#include <algorithm>

#include "domain/whois.h"
#include "platform/text.h"

namespace quillcast::domain {

net::HostPort WhoisServerFor(std::string_view extension) {
  const auto row = std::find_if(kWhoisServers.begin(), kWhoisServers.end(),
                                [extension](const WhoisServer& one) { return one.extension == extension; });
  return {std::string(row != kWhoisServers.end() ? row->host : kRootWhoisServer), kWhoisPort};
}

net::HostPort WhoisServerForName(std::string_view name) {
  const auto dot = name.rfind('.');
  return WhoisServerFor(dot == std::string_view::npos ? "" : platform::AsciiLower(name.substr(dot)));
}

}  // namespace quillcast::domain
