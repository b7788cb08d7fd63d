#include "domain/sender/spf_record.h"

#include <gtest/gtest.h>

#include "domain/sender/spf_macros.h"

namespace quillcast::domain {
namespace {

TEST(SpfRecord, IsKnownByItsVersion) {
  EXPECT_TRUE(IsSpf("v=spf1"));
  EXPECT_TRUE(IsSpf("V=SPF1 -all"));
  for (const char* other : {"v=spf10 -all", "v=spf1; -all", "spf2.0/pra -all", " v=spf1", ""})
    EXPECT_FALSE(IsSpf(other)) << other;
}

// A term as one line: verdict, mechanism, name, network, bits.
std::string Drawn(const SpfRecord& record) {
  std::string out;
  for (const SpfTerm& term : record.terms) {
    out += "+-~?"[static_cast<int>(term.verdict)];
    out += std::to_string(static_cast<int>(term.mechanism)) + " " + term.name;
    if (term.mechanism == SpfMechanism::kIp4 || term.mechanism == SpfMechanism::kIp6)
      out += net::ToString(term.network);
    if (term.bits4 != 32 || term.bits6 != 128)
      out += "/" + std::to_string(term.bits4) + "/" + std::to_string(term.bits6);
    out += ";";
  }
  return record.redirect.empty() ? out : out + ">" + record.redirect;
}

TEST(SpfRecord, IsReadTermByTerm) {
  struct Case {
    const char* record;
    const char* drawn;  // nullptr: a mistake
  };
  for (const Case& c : {
           Case{"v=spf1", ""},
           Case{"v=spf1 -all", "-0 ;"},
           Case{"v=spf1  include:_spf.example.net   ~ALL ", "+1 _spf.example.net;~0 ;"},
           Case{"v=spf1 a a:mx.example a/24 a:mx.example/24//64 a//64",
                "+2 ;+2 mx.example;+2 /24/128;+2 mx.example/24/64;+2 /32/64;"},
           Case{"v=spf1 ?mx:example.org/0 ptr ptr:example.org", "?3 example.org/0/128;+4 ;+4 example.org;"},
           Case{"v=spf1 ip4:192.0.2.0/24 ip4:192.0.2.1 ip6:2001:db8::/32",
                "+5 192.0.2.0/24/128;+5 192.0.2.1;+6 2001:db8::/32/32;"},
           Case{"v=spf1 exists:%{ir}.%{l1r-}.x a:%{d/}.x/8", "+7 %{ir}.%{l1r-}.x;+2 %{d/}.x/8/128;"},
           Case{"v=spf1 redirect=_spf.example.net exp=e.example new=thing:1", ">_spf.example.net"},
           Case{"v=spf1 redirect=_spf.example.net -all", "-0 ;"},
           Case{"v=spf1 ip4:300.0.2.0", nullptr},
           Case{"v=spf1 ip4:192.0.2.0/33", nullptr},
           Case{"v=spf1 ip4:192.0.2.0/024", nullptr},
           Case{"v=spf1 ip4:2001:db8::1", nullptr},
           Case{"v=spf1 ip6:192.0.2.1", nullptr},
           Case{"v=spf1 ip4", nullptr},
           Case{"v=spf1 ipv4:192.0.2.1", nullptr},
           Case{"v=spf1 include", nullptr},
           Case{"v=spf1 include:", nullptr},
           Case{"v=spf1 a:", nullptr},
           Case{"v=spf1 a/33", nullptr},
           Case{"v=spf1 all:example.org", nullptr},
           Case{"v=spf1 -", nullptr},
           Case{"v=spf1 redirect=", nullptr},
           Case{"v=spf1 redirect=a.example redirect=b.example", nullptr},
           Case{"v=spf1 exp=a exp=b", nullptr},
           Case{"v=spf1 v=spf1 include:x.example", "+1 x.example;"},
           Case{"v=spf1 include:x.example;", nullptr},
           Case{"v=spf1 a:x.example. mx:x.4a include:x.a--b exists:%{d}%% a:%{d.}/24",
                "+2 x.example.;+3 x.4a;+1 x.a--b;+7 %{d}%%;+2 %{d.}/24/128;"},
           Case{"v=spf1 a:203.0.113.5", nullptr},
           Case{"v=spf1 mx:203.0.113.5/24", nullptr},
           Case{"v=spf1 a:mail", nullptr},
           Case{"v=spf1 include:x.", nullptr},
           Case{"v=spf1 exists:%{ir}.x-", nullptr},
           Case{"v=spf1 redirect=mail", nullptr},
       }) {
    SCOPED_TRACE(c.record);
    const auto record = ParseSpf(c.record);
    EXPECT_EQ(record ? Drawn(*record) : "mistake", c.drawn != nullptr ? c.drawn : "mistake");
  }
  EXPECT_EQ(Describe(ParseSpf("v=spf1 a ipv4:1.2.3.4 -all").error()),
            "\"ipv4:1.2.3.4\" is not understood.\n"
            "Receivers take a record with a mistake for none at all: mend or remove that word.");
}

TEST(SpfRecord, ComparesNetworksBitByBit) {
  struct Case {
    const char *address, *network;
    int bits;
    bool is_in;
  };
  for (const Case& c : {Case{"192.0.2.77", "192.0.2.0", 24, true}, Case{"192.0.3.77", "192.0.2.0", 24, false},
                        Case{"192.0.3.77", "192.0.2.0", 23, true}, Case{"192.0.2.1", "192.0.2.0", 32, false},
                        Case{"10.0.0.1", "192.0.2.0", 0, true}, Case{"2001:db8::2", "2001:db8::", 127, false},
                        Case{"2001:db8::3", "2001:db8::", 126, true}, Case{"2001:db8::1", "0.0.0.0", 0, false}}) {
    EXPECT_EQ(InNetwork(*net::ParseIpAddress(c.address), *net::ParseIpAddress(c.network), c.bits), c.is_in)
        << c.address << " in " << c.network << "/" << c.bits;
  }
}

// The examples of RFC 7208 7.4, and what is no macro.
TEST(SpfMacros, GiveTheNamesOfTheStandard) {
  SpfSender sender{.local_part = "strong-bad",
                   .domain = "email.example.com",
                   .address = *net::ParseIpAddress("192.0.2.3"),
                   .host = "mx.example.org"};
  struct Case {
    const char* name;
    const char* expanded;  // nullptr: no macro
  };
  constexpr Case kCases[] = {
      {"%{s}", "strong-bad@email.example.com"},
      {"%{o}", "email.example.com"},
      {"%{d4}", "email.example.com"},
      {"%{d3}", "email.example.com"},
      {"%{d2}", "example.com"},
      {"%{d1}", "com"},
      {"%{dr}", "com.example.email"},
      {"%{d2r}", "example.email"},
      {"%{l}", "strong-bad"},
      {"%{l-}", "strong.bad"},
      {"%{lr}", "strong-bad"},
      {"%{lr-}", "bad.strong"},
      {"%{l1r-}", "strong"},
      {"%{ir}.%{v}._spf.%{d2}", "3.2.0.192.in-addr._spf.example.com"},
      {"%{lr-}.lp._spf.%{d2}", "bad.strong.lp._spf.example.com"},
      {"%{ir}.%{v}.%{l1r-}.lp._spf.%{d2}", "3.2.0.192.in-addr.strong.lp._spf.example.com"},
      {"%{d2}.trusted-domains.example.net", "example.com.trusted-domains.example.net"},
      {"%%%_%-%{H}", "% %20mx.example.org"},
      {"%{p}.x", "unknown.x"},
      {"plain.example", "plain.example"},
      {"%{x}", nullptr},
      {"%{d0}", nullptr},
      {"%{d", nullptr},
      {"%{}", nullptr},
      {"%{d2x}", nullptr},
      {"%(d}", nullptr},
      {"100%", nullptr},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(ExpandSpfName(c.name, "email.example.com", sender).value_or("none"), c.expanded ? c.expanded : "none")
        << c.name;
  }
  sender.address = *net::ParseIpAddress("2001:db8::cb01");
  EXPECT_EQ(ExpandSpfName("%{ir}.%{v}._spf.%{d2}", "email.example.com", sender),
            "1.0.b.c.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.8.b.d.0.1.0.0.2.ip6._spf.example.com");
  sender.local_part = std::string(300, 'a') + ".b";
  EXPECT_EQ(ExpandSpfName("%{l}.example", "x.example", sender), "b.example");
}

}  // namespace
}  // namespace quillcast::domain
