// One SPF record as it is written: who may send for a domain (RFC 7208 sections 4.6 and 5).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "net/address.h"
#include "platform/result.h"

namespace quillcast::domain {

// What the sign before a mechanism says of the sender that it matches; without one it is "+".
enum class SpfVerdict { kPass, kFail, kSoftFail, kNeutral };

enum class SpfMechanism { kAll, kInclude, kA, kMx, kPtr, kIp4, kIp6, kExists };

struct SpfTerm {
  SpfVerdict verdict = SpfVerdict::kPass;
  SpfMechanism mechanism = SpfMechanism::kAll;
  std::string name;        // behind ":", macros as they are written; empty: the domain that has the record
  net::IpAddress network;  // of "ip4" and "ip6"
  int bits4 = 32;          // how much of an address must agree, by its family
  int bits6 = 128;
  std::string text;  // as it stands in the record

  // The mechanisms that the limit of ten counts (RFC 7208 4.6.4).
  bool NeedsLookup() const;
};

struct SpfRecord {
  std::vector<SpfTerm> terms;
  std::string redirect;  // the domain whose record decides where no term does; empty without one, and with "all"

  const SpfTerm* All() const;
};

// Whether a text record is meant as this one: "v=spf1", then a blank or nothing.
bool IsSpf(std::string_view record);

// Fails with kBadData for what RFC 7208 makes a "permerror": an unknown mechanism, an address that is none, a modifier
// that stands twice. The error names the word. Unknown modifiers are passed over.
Result<SpfRecord> ParseSpf(std::string_view record);

}  // namespace quillcast::domain
