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

// A check is a function of the answers that are there: where one is missing it goes on with what does not depend on it,
// and is called once more when more is known. So it needs no order of its own, and whatever can be asked at once is.
class Answers {
 public:
  // Null while it is not there; it is then wanted. Names are compared without regard to ASCII case.
  const net::DnsAnswer* Of(std::string_view name, net::DnsType type);

  // What was wanted since the last call.
  std::vector<net::DnsQuestion> TakeWanted() { return std::exchange(wanted_, {}); }
  void Put(const net::DnsQuestion& question, net::DnsAnswer answer);

 private:
  std::map<std::pair<std::string, net::DnsType>, std::optional<net::DnsAnswer>> answers_;
  std::vector<net::DnsQuestion> wanted_;
};

}  // namespace quillcast::domain
