// One thing that a sender should know of a domain, and what can be done about it.
#pragma once

#include <string_view>

#include "net/dns/dns_answer.h"
#include "platform/sentence.h"

namespace quillcast::domain {

// From what is as it should be to what keeps mail from arriving; then what could not be found out.
enum class Verdict { kGood, kNote, kWeak, kBad, kUnknown };

struct Finding {
  std::string_view topic;  // "SPF"
  std::string_view word;   // "no-spf": the same in every version, for programs
  Verdict verdict = Verdict::kGood;
  Sentence what;
  Sentence remedy = {};  // empty where nothing is to be done
};

// What is weak or bad.
bool IsToMend(const Finding& finding);

// "good", "note", "weak", "bad", "unknown".
std::string_view WordOf(Verdict verdict);

// The finding of a question that got no answer.
Finding Unanswered(std::string_view topic, std::string_view name, const net::DnsAnswer& answer);

}  // namespace quillcast::domain
