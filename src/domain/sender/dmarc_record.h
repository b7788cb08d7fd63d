// What a domain asks of receivers whose checks of its mail fail (RFC 7489 6.3).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "platform/sentence.h"

namespace quillcast::domain {

struct DmarcRecord {
  enum class Policy { kNone, kQuarantine, kReject };
  Policy policy = Policy::kNone;
  Policy subdomain_policy = Policy::kNone;  // the same as `policy` where the record has none
  // "adkim=s": the signer is the domain of the From address itself. That the envelope's domain be it ("aspf=s") is not
  // read: messages of this program have the same address in both.
  bool dkim_is_strict = false;
  int percent = 100;                         // of the failing messages that the policy is for
  std::vector<std::string> reports_to = {};  // as "mailto:..." in the record
  bool names_subdomains = false;             // it has a policy of theirs
  // A policy that is none, in whose place receivers take "none" for both (RFC 7489 6.6.3), and how to mend it. Empty
  // where they are right.
  Sentence mistake = {};  // without the dot at its end
  Sentence remedy = {};

  // What is asked for mail of the domain that has the record, or of one below. Where the percentage is 0, the next that
  // is milder (RFC 7489 6.6.4).
  Policy For(bool below) const;

  bool operator==(const DmarcRecord&) const = default;
};

// A text record at "_dmarc" that is another thing is passed over (RFC 7489 6.6.3).
bool IsDmarc(std::string_view record);

// Fails with kBadData for two policies, and for none or an unknown one where nobody is to get reports, which receivers
// take for no record. What else is wrong they pass over (RFC 7489 6.3), and so does this.
Result<DmarcRecord> ParseDmarc(std::string_view record);

// Whether a report can be sent there: a scheme and what belongs to it.
bool IsReportPlace(std::string_view place);

// The domain at which an organisation's names begin, by the list of public suffixes: "example.co.uk" of
// "news.example.co.uk". The name itself where it has none. In small letters and without the root's
// dot; what comes in is in A-labels.
std::string OrganisationalDomain(const std::string& domain);

}  // namespace quillcast::domain
