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
  std::vector<std::string> mail_hosts;
  bool is_complete = CheckMx(question.domain, answers, found, mail_hosts);
  std::vector<SeenServer> seen;
  for (const std::string& name : question.servers) {
    std::optional<SeenServer> server = LookAtServer(name, answers);
    is_complete = server.has_value() && is_complete;
    if (server) seen.push_back(*std::move(server));
  }
  Ways ways;
  is_complete = CheckSpf(question, seen, answers, found, ways.spf) && is_complete;
  is_complete = CheckDkim(question, answers, found, ways) && is_complete;
  is_complete = CheckDmarc(question.domain, ways, answers, found) && is_complete;
  is_complete = CheckSts(question.domain, mail_hosts, answers, sts, found) && is_complete;
  for (const SeenServer& server : seen) {
    is_complete = CheckReverseNames(question.domain, server, answers, found) && is_complete;
  }
  report.is_complete = is_complete;
  return report;
}

}  // namespace quillcast::domain
