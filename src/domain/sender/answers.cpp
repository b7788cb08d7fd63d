#include "domain/sender/answers.h"

#include "platform/text.h"

namespace quillcast::domain {

const DnsAnswer* Answers::Of(std::string_view name, DnsType type) {
  const auto [row, is_new] = answers_.try_emplace({platform::AsciiLower(name), type});
  if (is_new) wanted_.push_back({std::string(name), type});
  return row->second ? &*row->second : nullptr;
}

NameAddresses Answers::AddressesOf(std::string_view name) {
  const DnsAnswer* ip4 = Of(name, DnsType::kA);
  const DnsAnswer* ip6 = Of(name, DnsType::kAaaa);
  if (ip4 == nullptr || ip6 == nullptr) return {};
  NameAddresses found{.known = Known::kYes};
  for (const DnsAnswer* answer : {ip4, ip6}) {
    for (const net::DnsRecord& record : answer->records) found.addresses.push_back(record.address);
    if (!answer->answered() && found.unanswered == nullptr) found.unanswered = answer;
  }
  return found;
}

NameTexts Answers::TextsAt(std::string_view name, bool (*is_one)(std::string_view record)) {
  NameTexts found{.answer = Of(name, DnsType::kTxt)};
  if (found.answer == nullptr) return found;
  for (const net::DnsRecord& record : found.answer->records) {
    if (is_one(record.text)) found.texts.push_back(record.text);
  }
  return found;
}

void Answers::Put(const net::DnsQuestion& question, DnsAnswer answer) {
  answers_[{platform::AsciiLower(question.name), question.type}] = std::move(answer);
}

}  // namespace quillcast::domain
