// From a name to its addresses, and from an address to its names.
#pragma once

#include <chrono>
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

// The lines, each ended by CRLF.
std::string BoxOf(const std::vector<std::string>& lines);

// What goes into the box, one a line, and what is said beside it.
struct FoundLines {
  std::vector<std::string> lines;
  Sentence status;

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

}  // namespace quillcast::domain
