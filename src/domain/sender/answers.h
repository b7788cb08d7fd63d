// What name servers have said so far to a check that runs again with each answer, and what it still wants to know.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "net/dns/dns_answer.h"

namespace quillcast::domain {

using net::DnsAnswer;
using net::DnsOutcome;
using net::DnsType;

// Whether all is there that a part of a check depends on; what is not is wanted by then.
enum class Known { kNotYet, kYes };
constexpr Known Both(Known a, Known b) { return a == Known::kYes ? b : a; }

struct NameAddresses {
  Known known = Known::kNotYet;
  std::vector<net::IpAddress> addresses = {};  // IPv4 first, each family in the server's order
  const DnsAnswer* unanswered = nullptr;       // the first family of which no server told
};

// The text records of one kind.
struct NameTexts {
  const DnsAnswer* answer = nullptr;  // null while it is not there
  std::vector<std::string> texts = {};
};

// A check is a function of the answers that are there: where one is missing it goes on with what does not depend on it,
// and is called once more when more is known. So it needs no order of its own, and whatever can be asked at once is.
class Answers {
 public:
  // Null while it is not there; it is then wanted. Names are compared without regard to ASCII case.
  const DnsAnswer* Of(std::string_view name, DnsType type);
  // Both families, asked for at once.
  NameAddresses AddressesOf(std::string_view name);
  // What else the name has in text records is passed over.
  NameTexts TextsAt(std::string_view name, bool (*is_one)(std::string_view record));

  // What was wanted since the last call.
  std::vector<net::DnsQuestion> TakeWanted() { return std::exchange(wanted_, {}); }
  void Put(const net::DnsQuestion& question, DnsAnswer answer);

 private:
  std::map<std::pair<std::string, DnsType>, std::optional<DnsAnswer>> answers_;
  std::vector<net::DnsQuestion> wanted_;
};

}  // namespace quillcast::domain
