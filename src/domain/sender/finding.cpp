#include "domain/sender/finding.h"

#include <cstring>

namespace quillcast::domain {

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

Sentence WhyUnanswered(const net::DnsAnswer& answer) {
  switch (answer.outcome) {
    case net::DnsOutcome::kBadName:
      return "it is no name";
    case net::DnsOutcome::kServerFailed:
      return "the name server failed";
    case net::DnsOutcome::kRefused:
      return "the name server refused";
    case net::DnsOutcome::kNoSocket:
      return std::string(std::strerror(answer.error_number));
    case net::DnsOutcome::kNoAnswer:
      return "no answer came in time";
    default:
      return "the answer cannot be understood";
  }
}

Finding Unanswered(std::string_view topic, std::string_view name, const net::DnsAnswer& answer) {
  return {topic, "no-answer", Verdict::kUnknown, Say("{} could not be asked for: {}.", name, WhyUnanswered(answer)),
          "Try again later, or ask another name server."};
}

}  // namespace quillcast::domain
