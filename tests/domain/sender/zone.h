// A zone written out in lines, and the check of a sender that asks it alone.
#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "domain/sender/sender_check.h"

namespace quillcast::domain {

// A domain that does everything right. Lines of "name type value"; of a name without the type there is no such record,
// other names do not exist. "FAILS" stands for a server's failure, "FAILS-AAAA" for that at one type alone.
inline constexpr const char* kZone = R"(
example.org MX 20 mx2.example.org
example.org MX 10 mx1.example.org
mx1.example.org A 198.51.100.7
mx2.example.org AAAA 2001:db8::7
example.org TXT site-verification=1
example.org TXT v=spf1 include:_spf.provider.example -all
_spf.provider.example TXT v=spf1 ip4:203.0.113.0/24 ~all
smtp.provider.example A 203.0.113.5
5.113.0.203.in-addr.arpa PTR out5.provider.example
out5.provider.example A 203.0.113.5
s1._domainkey.example.org TXT v=DKIM1; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=
_dmarc.example.org TXT v=DMARC1; p=reject; rua=mailto:d@example.org
)";

class Zone {
 public:
  explicit Zone(const std::string& lines) {
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
      std::istringstream words(line);
      std::string name;
      std::string type;
      if (!(words >> name >> type)) continue;
      std::string value;
      std::getline(words >> std::ws, value);
      rows_.push_back({name, type, value});
    }
  }

  net::DnsAnswer Answer(const net::DnsQuestion& question) const {
    net::DnsAnswer answer;
    answer.outcome = net::DnsOutcome::kNoSuchName;
    for (const Row& row : rows_) {
      if (row.name != question.name) continue;
      if (row.type == "FAILS" || row.type == "FAILS-" + Word(question.type)) {
        answer.outcome = net::DnsOutcome::kServerFailed;
        return answer;
      }
      if (answer.records.empty()) answer.outcome = net::DnsOutcome::kNoData;
      if (row.type != Word(question.type)) continue;
      answer.outcome = net::DnsOutcome::kFound;
      answer.records.push_back(Record(question.type, row.value));
    }
    return answer;
  }

 private:
  struct Row {
    std::string name, type, value;
  };
  static std::string Word(net::DnsType type) {
    return type == net::DnsType::kA     ? "A"
           : type == net::DnsType::kMx  ? "MX"
           : type == net::DnsType::kTxt ? "TXT"
           : type == net::DnsType::kPtr ? "PTR"
                                        : "AAAA";
  }
  static net::DnsRecord Record(net::DnsType type, const std::string& value) {
    net::DnsRecord record;
    if (type == net::DnsType::kA || type == net::DnsType::kAaaa) record.address = *net::ParseIpAddress(value);
    if (type == net::DnsType::kTxt || type == net::DnsType::kPtr) record.text = value;
    if (type == net::DnsType::kMx) {
      const std::size_t blank = value.find(' ');
      record.preference = static_cast<std::uint16_t>(std::stoi(value));
      record.text = value.substr(blank + 1) == "." ? "" : value.substr(blank + 1);
    }
    return record;
  }
  std::vector<Row> rows_;
};

struct Checked {
  SenderReport report;
  int rounds = 0;     // of questions that depend on the answers before
  int questions = 0;  // in all
};

inline Checked Check(const Zone& zone,
                     SenderQuestion question = {.domain = "example.org",
                                                .selectors = {"s1"},
                                                .servers = {"smtp.provider.example"}},
                     Result<std::string> policy = std::string()) {
  Checked checked;
  Answers answers;
  StsFile sts;
  while (true) {
    checked.report = CheckSender(question, answers, sts);
    const std::vector<net::DnsQuestion> wanted = answers.TakeWanted();
    if (wanted.empty() && (!sts.is_wanted || sts.content)) break;
    for (const net::DnsQuestion& one : wanted) answers.Put(one, zone.Answer(one));
    if (sts.is_wanted && !sts.content) sts.content = policy;
    checked.questions += static_cast<int>(wanted.size());
    ++checked.rounds;
  }
  EXPECT_TRUE(checked.report.is_complete);
  return checked;
}

inline std::string Drawn(const Finding& finding) {
  return fmt::format("{}: {}: {}\n{}", WordOf(finding.verdict), finding.topic(), finding.what.InEnglish(),
                     finding.remedy.InEnglish());
}

inline std::string Words(const SenderReport& report) {
  std::string words;
  for (const Finding& finding : report.findings) words += fmt::format("{} ", finding.word());
  return words;
}

}  // namespace quillcast::domain
