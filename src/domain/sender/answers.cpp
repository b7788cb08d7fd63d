#include "domain/sender/answers.h"

#include "platform/text.h"

namespace quillcast::domain {

const net::DnsAnswer* Answers::Of(std::string_view name, net::DnsType type) {
  const auto [row, is_new] = answers_.try_emplace({platform::AsciiLower(name), type});
  if (is_new) wanted_.push_back({std::string(name), type});
  return row->second ? &*row->second : nullptr;
}

void Answers::Put(const net::DnsQuestion& question, net::DnsAnswer answer) {
  answers_[{platform::AsciiLower(question.name), question.type}] = std::move(answer);
}

}  // namespace quillcast::domain
