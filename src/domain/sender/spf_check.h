// Whom a domain lets send for it, as receivers find it out (RFC 7208 section 4).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "domain/sender/answers.h"
#include "domain/sender/spf_macros.h"
#include "domain/sender/spf_record.h"

namespace quillcast::domain {

inline constexpr int kMostSpfLookups = 10;      // RFC 7208 4.6.4
inline constexpr int kMostVoidLookups = 2;      // the same section
inline constexpr int kMostCountedLookups = 30;  // where we stop, so that nobody sends us round for ever

inline constexpr std::size_t kMostSpfHosts = 10;  // of one "mx", the same section

// Nothing is there: no such name, or no record of the type.
bool IsVoidLookup(const net::DnsAnswer& answer);

// What a receiver concludes of one sender (RFC 7208 2.6), or that it is not known yet.
enum class SpfResult { kPass, kFail, kSoftFail, kNeutral, kNone, kTemporaryError, kPermanentError, kPending };

// The one record of a domain, or why there is none to go by.
struct SpfPublished {
  enum class State { kPending, kNoAnswer, kNone, kSeveral, kMistake, kRead };
  State state = State::kPending;
  int count = 0;          // of records
  SpfRecord record = {};  // with kRead alone
  Error mistake = {};     // with kMistake alone
};
SpfPublished FindSpf(Answers& answers, const std::string& domain);

// What a whole record costs and leads to, every term of it up to "all" followed, as none can know which of them match.
// A name with macros is followed only where the sender's address is known (it is not where it is all zeros).
struct SpfCost {
  bool is_pending = false;
  int lookups = 0;                      // up to kMostCountedLookups
  std::vector<std::string> void_names;  // asked for, and nothing is there
  std::string itself;                   // a domain whose record leads back to it
  std::string crowded;                  // an "mx" whose domain has more hosts than receivers look at
  // The first name that no answer came for; what lies behind it is not counted.
  std::string unanswered;
  net::DnsAnswer no_answer;
  // The first domain that is led to and has no record to go by, and how.
  std::string broken;
  SpfPublished::State broken_state = SpfPublished::State::kRead;
};
SpfCost CountSpf(Answers& answers, const SpfSender& sender);  // in spf_count.cpp

// The check of one sender, with the limits that receivers keep. `may_have_name` is for an address that stands for
// others, most of which have a reverse name: that it has none itself is then no void look-up.
SpfResult EvaluateSpf(Answers& answers, const SpfSender& sender, bool may_have_name = false);

}  // namespace quillcast::domain
