#include "domain/sender/reverse_names.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::domain {

WayBack FollowBack(const net::IpAddress& address, const std::vector<net::DnsRecord>& names, Answers& answers,
                   const std::function<bool(const std::string&)>& counts) {
  const auto is_address = [&](const net::DnsRecord& record) { return record.address == address; };
  WayBack way = WayBack::kElsewhere;
  for (std::size_t i = 0; i < std::min(names.size(), kMostReverseNames); ++i) {
    const std::string name = platform::AsciiLower(names[i].text);
    if (!counts(name)) continue;
    const DnsAnswer* back = answers.Of(name, net::TypeFor(address.family));
    if (back == nullptr) {
      way = WayBack::kPending;
    } else if (!back->answered()) {
      if (way != WayBack::kPending) way = WayBack::kNoAnswer;
    } else if (std::any_of(back->records.begin(), back->records.end(), is_address)) {
      return WayBack::kThere;
    }
  }
  return way;
}

}  // namespace quillcast::domain
