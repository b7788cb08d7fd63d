// One sender against the records of domains, as receivers judge it.
#include "domain/sender/spf_check.h"

#include "domain/sender/zone.h"

namespace quillcast::domain {
namespace {

TEST(Spf, JudgesASenderAsReceiversDo) {
  const Zone zone(R"(
a.example A 192.0.2.1
m.example MX 10 mx.m.example
mx.m.example A 192.0.2.2
four.example MX 10 mx.m.example
four.example MX 20 a.example
four.example MX 30 host.p.example
four.example MX 40 six.example
six.example AAAA 2a01:488::40
ok.example TXT v=spf1 ip4:192.0.2.9 -all
soft.example TXT v=spf1 ~all
two.example TXT v=spf1 -all
two.example TXT v=spf1 +all
9.2.0.192.in-addr.arpa PTR host.p.example
host.p.example A 192.0.2.9
8.2.0.192.in-addr.arpa PTR HOST8.P.Example
host8.p.example A 192.0.2.8
6.2.0.192.in-addr.arpa PTR host.p.example
5.2.0.192.in-addr.arpa PTR badp.example
badp.example A 192.0.2.5
4.2.0.192.in-addr.arpa FAILS -
9.2.0.192.x.example A 127.0.0.2
broken.example FAILS -
)");
  struct One {
    const char* record;
    SpfResult result;
    const char* address = "192.0.2.9";
  };
  std::string terms;
  for (int i = 0; i < 10; ++i) terms += " a:a.example";
  const std::string ten = "v=spf1" + terms + " +all";
  const std::string eleven = "v=spf1 mx:m.example" + terms + " +all";
  const std::string redirected = "v=spf1" + terms + " redirect=ok.example";
  for (const One& c : {
           One{"v=spf1 ip4:192.0.2.9 -all", SpfResult::kPass},
           One{"v=spf1 -ip4:192.0.2.8/31 +all", SpfResult::kFail},
           One{"v=spf1 a:a.example -all", SpfResult::kFail},
           One{"v=spf1 a:a.example/28 -all", SpfResult::kPass},
           One{"v=spf1 mx:m.example/24 -all", SpfResult::kPass},
           One{"v=spf1 mx:m.example ~all", SpfResult::kSoftFail},
           One{"v=spf1 include:ok.example -all", SpfResult::kPass},
           One{"v=spf1 include:soft.example ?all", SpfResult::kNeutral},
           One{"v=spf1 include:two.example +all", SpfResult::kPermanentError},
           One{"v=spf1 include:none.example +all", SpfResult::kPermanentError},
           One{"v=spf1 redirect=ok.example", SpfResult::kPass},
           One{"v=spf1 redirect=none.example", SpfResult::kPermanentError},
           One{"v=spf1 ptr:p.example -all", SpfResult::kPass},
           One{"v=spf1 ptr:example -all", SpfResult::kPermanentError},
           One{"v=spf1 ptr:other.example -all", SpfResult::kFail},
           One{"v=spf1 PTR:P.EXAMPLE -all", SpfResult::kPass},
           One{"v=spf1 ptr:p.example -all", SpfResult::kPass, "192.0.2.8"},
           One{"v=spf1 ptr:p.example -all", SpfResult::kFail, "192.0.2.6"},  // leads to another address
           One{"v=spf1 ptr:p.example -all", SpfResult::kFail, "192.0.2.5"},  // ends so, in the middle of a label
           One{"v=spf1 ptr a:n1.example ip4:192.0.2.7 -all", SpfResult::kPass, "192.0.2.7"},
           One{"v=spf1 ptr a:n1.example a:n2.example +all", SpfResult::kPermanentError, "192.0.2.7"},
           One{"v=spf1 ptr a:n1.example a:n2.example +all", SpfResult::kPass, "192.0.2.4"},
           One{"v=spf1 exists:%{ir}.x.example -all", SpfResult::kPass},
           One{"v=spf1 exists:%{i}.x.example -all", SpfResult::kFail},
           One{"v=spf1 a:broken.example +all", SpfResult::kTemporaryError},
           One{"v=spf1 a:n1.example a:n2.example a:n3.example +all", SpfResult::kPermanentError},
           One{"v=spf1 mx:four.example -all", SpfResult::kPass, "2a01:488::40"},
           One{"v=spf1 mx:four.example -all", SpfResult::kFail, "2a01:488::41"},
           One{ten.c_str(), SpfResult::kPass},
           One{eleven.c_str(), SpfResult::kPermanentError},
           One{redirected.c_str(), SpfResult::kPermanentError},
           One{"v=spf1", SpfResult::kNeutral},
           One{"no record", SpfResult::kNone},
       }) {
    Answers answers;
    answers.Put({"example.org", net::DnsType::kTxt},
                Zone(std::string("example.org TXT ") + c.record).Answer({"example.org", net::DnsType::kTxt}));
    const SpfSender sender{.local_part = "ada", .domain = "example.org", .address = *net::ParseIpAddress(c.address)};
    SpfResult result = SpfResult::kPending;
    for (int round = 0; round < 20 && result == SpfResult::kPending; ++round) {
      result = EvaluateSpf(answers, sender);
      for (const net::DnsQuestion& one : answers.TakeWanted()) answers.Put(one, zone.Answer(one));
    }
    EXPECT_EQ(result, c.result) << c.record << " " << c.address;
  }
}

}  // namespace
}  // namespace quillcast::domain
