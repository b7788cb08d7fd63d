// From a name to its addresses, from an address to its names, and from a domain to the hosts that take its mail.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "net/dns/dns_client.h"
#include "platform/result.h"

namespace quillcast::domain {

inline constexpr std::chrono::seconds kLookUpTime{15};  // for the whole of one look-up

// The server that a person chose, an address with or without a port; none, which is the system's, where it is empty.
// Fails with kUsage for what is no address.
Result<std::vector<net::Endpoint>> ChosenDnsServers(std::string_view text);

// What is wrong with the box of a conversion, empty text alone; the rest is for the look-up to say.
std::string CheckNameToConvert(std::string_view name);
std::string CheckAddressToConvert(std::string_view address);

// What goes into the box, one a line, and what is said beside it.
struct FoundLines {
  std::vector<std::string> lines;
  Sentence status;

  // Each line ended by CRLF.
  std::string Box() const;
};

// IPv4 first, then IPv6, each in the server's order; an address is its own answer. `servers` are those of the system
// when there are none. Errors, whose box stays as it is: kUsage for no name, kNoInput when it has no address,
// kTimedOut, kUnavailable, kTryAgain for a cancel.
Result<FoundLines> AddressesOf(std::string_view name, const std::vector<net::Endpoint>& servers,
                               const net::Patience& patience);

// Both families. Errors as above; kUsage for what is no address. That the names lead back is not looked at.
Result<FoundLines> NamesOf(std::string_view address, const std::vector<net::Endpoint>& servers,
                           const net::Patience& patience);

// What a look-up of mail hosts ended with, where it found no count.
enum class MxCode { kInvalidParameter = -87, kBadDns = -5, kBadSocket = -3, kNoDns = -1 };

struct MxHost {
  std::uint16_t preference = 0;
  std::string host;

  bool operator==(const MxHost&) const = default;
};

struct MxReport {
  std::int64_t code = 0;              // how many hosts there are, or an MxCode
  std::vector<MxHost> hosts;          // the most preferred first, equal ones by name (RFC 5321 5.1)
  bool takes_no_mail = false;         // a null MX (RFC 7505)
  std::vector<std::string> fallback;  // the domain's own addresses, which take its mail where it has no MX
  Sentence status;                    // what is said beside the box, failures included
  std::optional<Error> failure;       // with an MxCode alone

  // The hosts, each ended by CRLF; or the word for the code. Empty for a count of 0.
  std::string Box() const;
};

// The word for a code: "Invalid Parameter", "Bad DNS", "Bad socket", "No DNS"; empty for any other.
std::string_view MxWord(std::int64_t code);

// `server` as ParseDnsServer takes it, the system's when it is empty. Every failure is a report but a cancel, which is
// kTryAgain, or a system that refuses a resource.
Result<MxReport> LookUpMx(std::string_view server, std::string_view domain, const net::Patience& patience);

}  // namespace quillcast::domain
