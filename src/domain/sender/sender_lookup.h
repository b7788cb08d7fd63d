// Asks name servers, and a server of the domain's own, what the check of a sending domain wants to know.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "domain/sender/sender_check.h"
#include "domain/sender/sts_fetch.h"
#include "net/wait.h"

namespace quillcast::domain {

struct SenderLookup {
  std::vector<net::Endpoint> servers = {};  // name servers; none: the system's
  std::function<Result<std::string>(const StsPlace&, const net::Patience&)> fetch = FetchStsPolicy;
};

inline constexpr std::chrono::seconds kSenderCheckTime{20};  // for the whole of one check

// Every question goes out as soon as it is known, and the file is fetched meanwhile: the whole takes as long as the
// longest chain of questions of which each needs the answer before. What got no answer by the deadline is a finding
// (kUnknown). Fails with kTryAgain when the person cancels, kInternal when the system refuses a resource.
Result<SenderReport> LookUpSender(const SenderQuestion& question, const SenderLookup& lookup,
                                  const net::Patience& patience);

}  // namespace quillcast::domain
