#include "domain/mx_look_up.h"

#include <utility>

#include "domain/dns_failure.h"
#include "domain/name_look_ups.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using net::DnsAnswer;
using net::DnsOutcome;
using net::DnsType;

MxReport FailedReport(MxCode code, const Error& error) {
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
  return BoxOf(lines);
}

Result<MxReport> LookUpMx(std::string_view server, std::string_view domain, const net::Patience& patience) {
  auto servers = ChosenDnsServers(server);
  if (!servers) return FailedReport(MxCode::kInvalidParameter, servers.error());
  net::DnsClient client(*std::move(servers));
  MxReport report;
  DnsAnswer mx;
  std::optional<DnsAnswer> unanswered;
  const auto keep_address = [&](const DnsAnswer& address) {
    for (const net::DnsRecord& one : address.records) report.fallback.push_back(net::ToString(one.address));
    if (!address.answered() && !unanswered) unanswered = address;
  };
  client.Ask({std::string(domain), DnsType::kMx}, [&](const DnsAnswer& answer) {
    mx = answer;
    if (answer.outcome != DnsOutcome::kNoData) return;
    client.Ask({answer.name, DnsType::kA}, keep_address);
    client.Ask({answer.name, DnsType::kAaaa}, keep_address);
  });
  if (auto ran = client.Run(patience); !ran) return ran.error();
  if (const auto code = CodeOf(mx.outcome)) return FailedReport(*code, DnsFailure(mx, domain, "an MX record"));
  if (unanswered && report.fallback.empty()) {
    return FailedReport(CodeOf(unanswered->outcome).value_or(MxCode::kBadDns), NoFallback(*unanswered, domain));
  }
  MxHosts found = MxHostsOf(mx);
  report.takes_no_mail = found.has_null && found.hosts.empty();
  report.hosts = std::move(found.hosts);
  report.code = static_cast<std::int64_t>(report.hosts.size());
  report.status = DescribeMx(report, mx, domain);
  return report;
}

}  // namespace quillcast::domain
