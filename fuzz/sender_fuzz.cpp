// Records of a sending domain, made by whoever runs it and whomever it names. Each line of the input is one record, and
// each question gets the next of them.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "domain/sender/dkim_key.h"
#include "domain/sender/dmarc_record.h"
#include "domain/sender/mta_sts.h"
#include "domain/sender/sender_check.h"
#include "domain/sender/spf_macros.h"
#include "platform/text.h"

namespace {

namespace domain = quillcast::domain;
namespace net = quillcast::net;

constexpr int kMostQuestions = 1000;

class Lines {
 public:
  explicit Lines(std::string_view text) : lines_(quillcast::platform::Split(text, '\n')) {}

  net::DnsAnswer Next(net::DnsType type) {
    net::DnsAnswer answer;
    answer.outcome = net::DnsOutcome::kFound;
    for (int records = 0; records < 2; ++records) {
      net::DnsRecord record;
      record.text = lines_[at_++ % lines_.size()];
      if (type == net::DnsType::kAaaa) record.address.family = net::Family::kIpv6;
      std::copy_n(record.text.begin(), std::min<std::size_t>(record.text.size(), 16), record.address.bytes.begin());
      if (record.text.empty()) answer.outcome = static_cast<net::DnsOutcome>(at_ % 10);
      answer.records.push_back(std::move(record));
    }
    if (answer.outcome != net::DnsOutcome::kFound) answer.records.clear();
    return answer;
  }

 private:
  std::vector<std::string_view> lines_;
  std::size_t at_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  quillcast::IgnoreErrors(domain::ParseDkimKey(text));
  quillcast::IgnoreErrors(domain::ParseDmarc(text));
  quillcast::IgnoreErrors(domain::ParseStsPolicy(text));
  const auto expanded = domain::ExpandSpfName(text, "example.org", {.local_part = std::string(text), .domain = "a.b"});
  if (expanded && expanded->size() > 253) std::abort();

  Lines lines(text);
  domain::Answers answers;
  domain::StsFile sts;
  const domain::SenderQuestion question{
      .domain = "example.org", .selectors = {"s"}, .servers = {"mx.example.org", "192.0.2.1"}};
  int questions = 0;
  while (!domain::CheckSender(question, answers, sts).is_complete) {
    const auto wanted = answers.TakeWanted();
    questions += static_cast<int>(wanted.size());
    for (const net::DnsQuestion& one : wanted) answers.Put(one, lines.Next(one.type));
    if (sts.is_wanted && !sts.content) {
      sts.content = std::string(text);
    } else if (wanted.empty() || questions > kMostQuestions) {
      std::abort();  // it waits for nothing, or is sent round
    }
  }
  return 0;
}
