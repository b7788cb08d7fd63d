// Answers of name servers. The first octet chooses what was asked for.
#include <array>

#include "net/dns/dns_answer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using quillcast::net::DnsType;
  if (size == 0) return 0;
  constexpr std::array kTypes = {DnsType::kA, DnsType::kPtr, DnsType::kMx, DnsType::kTxt, DnsType::kAaaa};
  const quillcast::net::DnsQuestion question{"example.org", kTypes[bytes[0] % kTypes.size()]};
  const auto answer = quillcast::net::ReadDnsAnswer({bytes + 1, size - 1}, question);
  const bool found = answer.outcome == quillcast::net::DnsOutcome::kFound;
  if (found == answer.records.empty()) __builtin_trap();
  return 0;
}
