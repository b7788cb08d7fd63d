// Why a question to a name server has no answer, in words.
#pragma once

#include <string_view>

#include "net/dns/dns_answer.h"
#include "platform/result.h"

namespace quillcast::domain {

// For every outcome but kFound. `name` is what the person asked for, `record` what it does not have then: "an address".
Error DnsFailure(const net::DnsAnswer& answer, std::string_view name, const Sentence& record);

}  // namespace quillcast::domain
