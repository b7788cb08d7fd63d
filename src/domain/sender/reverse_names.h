// Whether the names of an address lead back to it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "domain/sender/answers.h"

namespace quillcast::domain {

inline constexpr std::size_t kMostReverseNames = 10;  // of one address that are followed (RFC 7208 4.6.4)

enum class WayBack { kPending, kNoAnswer, kElsewhere, kThere };

// Follows those names, in small letters, that count; kThere where one leads back, whatever becomes of the others.
WayBack FollowBack(
    const net::IpAddress& address, const std::vector<net::DnsRecord>& names, Answers& answers,
    const std::function<bool(const std::string&)>& counts = [](const std::string&) { return true; });

}  // namespace quillcast::domain
