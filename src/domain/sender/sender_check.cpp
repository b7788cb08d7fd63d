#include "domain/sender/sender_check.h"

#include <algorithm>

#include "domain/sender/sender_topics.h"

namespace quillcast::domain {

Verdict SenderReport::Gravest() const {
  constexpr auto kRank = [](Verdict verdict) {
    return verdict == Verdict::kBad ? 4 : verdict == Verdict::kUnknown ? 3 : static_cast<int>(verdict);
  };
  const auto gravest = std::max_element(findings.begin(), findings.end(), [&](const Finding& a, const Finding& b) {
    return kRank(a.verdict) < kRank(b.verdict);
  });
  return gravest == findings.end() ? Verdict::kUnknown : gravest->verdict;
}

bool SenderReport::IsBlank() const {
  return std::all_of(findings.begin(), findings.end(),
                     [](const Finding& finding) { return finding.verdict == Verdict::kUnknown; });
}

Sentence SenderReport::Summary(std::string_view domain) const {
  if (IsBlank()) return Say("Nothing could be found out about {}.", domain);
  const auto count = std::count_if(findings.begin(), findings.end(), IsToMend);
  if (count > 0) return SayOf(count, "{} thing is to be mended in {}.", "{} things are to be mended in {}.", domain);
  return Gravest() == Verdict::kUnknown
             ? Say("Nothing wrong was found in {}, but not everything could be found out.", domain)
             : Say("There is nothing to mend in {}.", domain);
}

SenderReport CheckSender(const SenderQuestion& question, Answers& answers, StsFile& sts) {
  SenderReport report;
  Findings& found = report.findings;
  // Each part is called whatever the others lack, so that all they want is asked for at once.
  const MailHosts mail_hosts = CheckMx(question.domain, answers, found);
  Known known = mail_hosts.known;
  std::vector<SeenServer> seen;
  for (const std::string& name : question.servers) {
    std::optional<SeenServer> server = LookAtServer(name, answers);
    if (!server) known = Known::kNotYet;
    if (server) seen.push_back(*std::move(server));
  }
  const SpfPassing spf = CheckSpf(question, seen, answers, found);
  const KeysPassing keys = CheckDkim(question, answers, found);
  const Ways ways{.spf = spf.passing, .key = keys.own, .organisations_key = keys.organisations};
  known = Both(known, Both(spf.known, keys.known));
  known = Both(known, CheckDmarc(question.domain, ways, answers, found));
  known = Both(known, CheckSts(question.domain, mail_hosts.names, answers, sts, found));
  for (const SeenServer& server : seen) {
    known = Both(known, CheckReverseNames(question.domain, server, answers, found));
  }
  report.is_complete = known == Known::kYes;
  return report;
}

}  // namespace quillcast::domain
