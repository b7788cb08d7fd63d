// A question to a name server and what came of it, and the reader of the server's message.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "net/address.h"

namespace quillcast::net {

// With the numbers of the wire (RFC 1035 3.2.2, RFC 3596 2.1).
enum class DnsType : std::uint16_t { kA = 1, kPtr = 12, kMx = 15, kTxt = 16, kAaaa = 28 };

inline constexpr std::uint16_t kInternetClass = 1;  // RFC 1035 3.2.4

// Of the addresses of a family.
constexpr DnsType TypeFor(Family family) { return family == Family::kIpv4 ? DnsType::kA : DnsType::kAaaa; }

struct DnsQuestion {
  // Whole: no search list is put behind it. In any script; labels that no host has ("_dmarc") go in front of what
  // AsciiHost made of the domain. For a PTR question, of ReverseName.
  std::string name;
  DnsType type = DnsType::kA;
};

// How a question ended.
enum class DnsOutcome {
  kFound,          // at least one record
  kNoData,         // the name is there and has no such record
  kNoSuchName,     // NXDOMAIN
  kBadName,        // no name at all (an empty label, one of more than 63 octets, 255 in all): it was not asked for
  kServerFailed,   // SERVFAIL
  kRefused,        // REFUSED
  kNotUnderstood,  // FORMERR, NOTIMP and every other code of the server
  kMalformed,      // what came cannot be read, was cut short, or answered another question
  kNoAnswer,       // nothing came in time
  kNoSocket,       // no server could be reached; DnsAnswer::error_number says why
};

// One record; which members count is the question's type.
struct DnsRecord {
  // kPtr, kMx: the host, without the dot of the root; empty for the root itself (a null MX, RFC 7505), and with what is
  // not printable as "\ddd". kTxt: its strings joined without anything between them (RFC 7208 3.3), any bytes.
  std::string text;
  std::uint16_t preference = 0;  // kMx: the lowest comes first
  IpAddress address;             // kA, kAaaa

  bool operator==(const DnsRecord&) const = default;
};

struct DnsAnswer {
  DnsOutcome outcome = DnsOutcome::kNoAnswer;
  std::vector<DnsRecord> records;  // in the server's order; with kFound alone
  std::string name;                // what the records belong to: the name asked for, or where its aliases led
  int error_number = 0;            // errno; with kNoSocket alone

  // A server has answered, if only that there is nothing; what else ended it may be otherwise the next time.
  bool answered() const { return outcome <= DnsOutcome::kNoSuchName; }
};

// The name under which the owner of an address may have put its host's name: "1.2.0.192.in-addr.arpa" (RFC 1035 3.5),
// nibbles under "ip6.arpa" (RFC 3596 2.5).
std::string ReverseName(const IpAddress& address);

// Reads one message as it came over the wire. Records of the answer section count when they belong to the name, or to
// where at most 16 aliases (CNAME) of that section lead from it; what else the server put there is passed over. When
// they lead to a name without records, that is kNoData under that name, which then is to be asked for.
DnsAnswer ReadDnsAnswer(std::span<const std::uint8_t> message, const DnsQuestion& question);

}  // namespace quillcast::net
