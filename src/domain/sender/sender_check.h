// Whether mail in the name of a domain will be believed: what receivers look up about it, each with a verdict and a
// remedy.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "domain/sender/answers.h"
#include "domain/sender/finding.h"
#include "platform/result.h"

namespace quillcast::domain {

struct SenderQuestion {
  std::string domain;  // of the From address, in A-labels, without a dot at its end
  std::string local_part = "postmaster";
  std::vector<std::string> selectors = {};  // of the signature's key; none: UsualSelectors are tried
  std::vector<std::string> servers = {};    // to which the account gives its mail, names in A-labels or addresses
};

// Names under which many providers publish their keys, tried where nobody gave one.
const std::vector<std::string>& UsualSelectors();

// What stands outside of name servers: the policy file of MTA-STS, fetched over HTTPS once its record is there.
struct StsFile {
  bool is_wanted = false;
  std::vector<net::IpAddress> addresses;       // of the host that has it
  std::optional<Result<std::string>> content;  // nothing until it was fetched
};

struct SenderReport {
  bool is_complete = false;  // else it is to be made again when what is wanted is there
  std::vector<Finding> findings;
  // The gravest of what was found out, kUnknown counted below kBad.
  Verdict Gravest() const;
  // No question was answered.
  bool IsBlank() const;
  // How many things there are to mend, in one sentence.
  Sentence Summary(std::string_view domain) const;
};

// A pure function of what is known. Findings stand in the order MX, SPF, DKIM, DMARC, MTA-STS, reverse names.
SenderReport CheckSender(const SenderQuestion& question, Answers& answers, StsFile& sts);

}  // namespace quillcast::domain
