#include "domain/name_look_ups.h"

#include <algorithm>
#include <array>
#include <optional>
#include <tuple>

#include "domain/dns_failure.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using net::DnsAnswer;
using net::DnsOutcome;
using net::DnsType;

std::string AsLines(const std::vector<std::string>& lines) {
  std::string out;
  for (const std::string& line : lines) out += line + "\r\n";
  return out;
}

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

MxReport Failed(MxCode code, const Error& error) {
  MxReport report;
  report.code = static_cast<std::int64_t>(code);
  report.status = AsSentence(error);
  report.failure = error;
  return report;
}

std::optional<MxCode> CodeOf(DnsOutcome outcome) {
  switch (outcome) {
    case DnsOutcome::kFound:
    case DnsOutcome::kNoData:
    case DnsOutcome::kNoSuchName:
    case DnsOutcome::kBadName:
      return {};
    case DnsOutcome::kNoAnswer:
      return MxCode::kNoDns;
    case DnsOutcome::kNoSocket:
      return MxCode::kBadSocket;
    case DnsOutcome::kServerFailed:
    case DnsOutcome::kRefused:
    case DnsOutcome::kNotUnderstood:
    case DnsOutcome::kMalformed:
      break;
  }
  return MxCode::kBadDns;
}

// The root as the only host says that the domain takes no mail; beside others it names none.
void TakeHosts(const DnsAnswer& answer, MxReport& report) {
  for (const net::DnsRecord& one : answer.records) {
    if (!one.text.empty()) report.hosts.push_back({one.preference, one.text});
  }
  report.takes_no_mail = report.hosts.empty() && !answer.records.empty();
  std::sort(report.hosts.begin(), report.hosts.end(), [](const MxHost& a, const MxHost& b) {
    return std::tie(a.preference, a.host) < std::tie(b.preference, b.host);
  });
  report.code = static_cast<std::int64_t>(report.hosts.size());
}

// A domain without MX, and without an answer to tell whether it has an address.
Error NoFallback(const DnsAnswer& address, std::string_view domain) {
  Error failure = DnsFailure(address, domain, "an address");
  failure.what = Say("{} has no MX record, and its own address could not be found out: {}", platform::Printable(domain),
                     failure.what);
  return failure;
}

Sentence DescribeMx(const MxReport& report, const DnsAnswer& answer, std::string_view domain) {
  const std::string shown = platform::Printable(domain);
  if (report.takes_no_mail) return Say("{} takes no mail: it says so with a null MX record.", shown);
  if (report.hosts.size() < answer.records.size()) {
    return SayOf(report.code, "{} host takes the mail of {}, though a null MX record beside it says that none does.",
                 "{} hosts take the mail of {}, though a null MX record beside them says that none does.", shown);
  }
  if (!report.hosts.empty()) {
    return SayOf(report.code, "{} host takes the mail of {}.",
                 "{} hosts take the mail of {}, the most preferred first.", shown);
  }
  if (!report.fallback.empty()) {
    return Say("{} has no MX record: its mail goes to its own address, {}.", shown, report.fallback.front());
  }
  if (answer.outcome == DnsOutcome::kNoData)
    return Say("{} has no MX record and no address was found for it: no mail gets there.", shown);
  return AsSentence(DnsFailure(answer, domain, "an MX record"));
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

std::string FoundLines::Box() const { return AsLines(lines); }

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

std::string_view MxWord(std::int64_t code) {
  switch (static_cast<MxCode>(code)) {
    case MxCode::kInvalidParameter:
      return "Invalid Parameter";
    case MxCode::kBadDns:
      return "Bad DNS";
    case MxCode::kBadSocket:
      return "Bad socket";
    case MxCode::kNoDns:
      return "No DNS";
  }
  return "";
}

std::string MxReport::Box() const {
  if (code < 0) return std::string(MxWord(code));
  std::vector<std::string> lines;
  for (const MxHost& one : hosts) lines.push_back(one.host);
  return AsLines(lines);
}

Result<MxReport> LookUpMx(std::string_view server, std::string_view domain, const net::Patience& patience) {
  auto servers = ChosenDnsServers(server);
  if (!servers) return Failed(MxCode::kInvalidParameter, servers.error());
  net::DnsClient client(*std::move(servers));
  MxReport report;
  DnsAnswer mx;
  std::optional<DnsAnswer> unanswered;
  const auto keep_address = [&](const DnsAnswer& address) {
    AppendAddresses(address, report.fallback);
    if (!address.answered() && !unanswered) unanswered = address;
  };
  client.Ask({std::string(domain), DnsType::kMx}, [&](const DnsAnswer& answer) {
    mx = answer;
    if (answer.outcome != DnsOutcome::kNoData) return;
    client.Ask({answer.name, DnsType::kA}, keep_address);
    client.Ask({answer.name, DnsType::kAaaa}, keep_address);
  });
  if (auto ran = client.Run(patience); !ran) return ran.error();
  if (const auto code = CodeOf(mx.outcome)) return Failed(*code, DnsFailure(mx, domain, "an MX record"));
  if (unanswered && report.fallback.empty()) {
    return Failed(CodeOf(unanswered->outcome).value_or(MxCode::kBadDns), NoFallback(*unanswered, domain));
  }
  TakeHosts(mx, report);
  report.status = DescribeMx(report, mx, domain);
  return report;
}

}  // namespace quillcast::domain
