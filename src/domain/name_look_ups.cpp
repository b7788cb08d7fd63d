#include "domain/name_look_ups.h"

#include <array>

#include "domain/dns_failure.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using net::DnsAnswer;
using net::DnsOutcome;
using net::DnsType;

void AppendAddresses(const DnsAnswer& answer, std::vector<std::string>& addresses) {
  for (const net::DnsRecord& one : answer.records) addresses.push_back(net::ToString(one.address));
}

// Of the answers for both families the one that tells more: a server that failed, before a family that is not there.
const DnsAnswer& WorseOf(const DnsAnswer& v4, const DnsAnswer& v6) { return v4.answered() ? v6 : v4; }

Sentence FoundAddresses(std::string_view name, const DnsAnswer& v4, const DnsAnswer& v6, std::size_t count) {
  const auto number = static_cast<std::int64_t>(count);
  const std::string shown = platform::Printable(name);
  if (!v4.answered() || !v6.answered()) {
    return SayOf(number, "{} address of {}. There may be more: {}", "{} addresses of {}. There may be more: {}", shown,
                 DnsFailure(WorseOf(v4, v6), name, "an address").what);
  }
  return SayOf(number, "{} address of {}.", "{} addresses of {}.", shown);
}

}  // namespace

Result<std::vector<net::Endpoint>> ChosenDnsServers(std::string_view text) {
  std::vector<net::Endpoint> servers;
  if (text.empty()) return servers;
  const auto server = net::ParseDnsServer(text);
  if (!server) {
    return Error{Failure::kUsage, Say("\"{}\" is not the address of a name server.", platform::Printable(text)),
                 "Give it as an address with or without a port: 192.0.2.1 or 192.0.2.1:53."};
  }
  servers.push_back(*server);
  return servers;
}

std::string CheckNameToConvert(std::string_view name) { return name.empty() ? "Please enter your domain." : ""; }

std::string CheckAddressToConvert(std::string_view address) { return address.empty() ? "Please enter your IP." : ""; }

std::string FoundLines::Box() const { return BoxOf(lines); }

std::string BoxOf(const std::vector<std::string>& lines) {
  std::string box;
  for (const std::string& line : lines) box += line + "\r\n";
  return box;
}

Result<FoundLines> AddressesOf(std::string_view name, const std::vector<net::Endpoint>& servers,
                               const net::Patience& patience) {
  if (const auto address = net::ParseIpAddress(name)) {
    return FoundLines{{net::ToString(*address)}, "This is an address already."};
  }
  const std::array questions = {net::DnsQuestion{std::string(name), DnsType::kA},
                                net::DnsQuestion{std::string(name), DnsType::kAaaa}};
  const auto answers = net::AskAll(questions, servers, patience);
  if (!answers) return answers.error();
  const DnsAnswer& v4 = answers->front();
  const DnsAnswer& v6 = answers->back();
  FoundLines found;
  AppendAddresses(v4, found.lines);
  AppendAddresses(v6, found.lines);
  if (found.lines.empty()) return DnsFailure(WorseOf(v4, v6), name, "an address");
  found.status = FoundAddresses(name, v4, v6, found.lines.size());
  return found;
}

Result<FoundLines> NamesOf(std::string_view address, const std::vector<net::Endpoint>& servers,
                           const net::Patience& patience) {
  const auto parsed = net::ParseIpAddress(address);
  if (!parsed) {
    return Error{Failure::kUsage, Say("\"{}\" is not an IP address.", platform::Printable(address)),
                 "Give it as numbers: 192.0.2.1 or 2001:db8::1."};
  }
  const std::array questions = {net::DnsQuestion{net::ReverseName(*parsed), DnsType::kPtr}};
  const auto answers = net::AskAll(questions, servers, patience);
  if (!answers) return answers.error();
  DnsAnswer answer = answers->front();
  if (answer.outcome == DnsOutcome::kNoSuchName) answer.outcome = DnsOutcome::kNoData;  // the address is there
  if (answer.outcome != DnsOutcome::kFound) return DnsFailure(answer, net::ToString(*parsed), "a name");
  FoundLines found;
  for (const net::DnsRecord& one : answer.records) found.lines.push_back(one.text);
  found.status =
      SayOf(static_cast<std::int64_t>(found.lines.size()), "{} name of {}.", "{} names of {}.", net::ToString(*parsed));
  return found;
}

}  // namespace quillcast::domain
