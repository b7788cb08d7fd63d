#include "domain/sender/finding.h"

#include "domain/dns_failure.h"

namespace quillcast::domain {

bool IsToMend(const Finding& finding) { return finding.verdict == Verdict::kBad || finding.verdict == Verdict::kWeak; }

std::string_view WordOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kGood:
      return "good";
    case Verdict::kNote:
      return "note";
    case Verdict::kWeak:
      return "weak";
    case Verdict::kBad:
      return "bad";
    case Verdict::kUnknown:
      break;
  }
  return "unknown";
}

Finding Unanswered(std::string_view topic, std::string_view name, const net::DnsAnswer& answer) {
  const Error failure = DnsFailure(answer, name, "a record");
  return {topic, "no-answer", Verdict::kUnknown, failure.what, failure.remedy};
}

}  // namespace quillcast::domain
