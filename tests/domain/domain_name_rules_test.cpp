#include "domain/domain_name_rules.h"

#include <gtest/gtest.h>

#include "domain/whois_servers.h"

namespace quillcast::domain {
namespace {

constexpr const char* kEmpty = "Please specify your domain.";
constexpr const char* kShort = "Domain name must be at least 2 characters.";
constexpr const char* kBeginsWithDash = "Domain name can not begin with dash.";
constexpr const char* kEndsWithDash = "Domain name can not end with dash.";
constexpr const char* kNoExtension = "Domain name must have the extension.";

std::string MessageOf(const std::optional<DomainComplaint>& complaint) { return complaint ? complaint->message : ""; }

TEST(DomainNameRules, SayWhatIsWrongFirst) {
  struct Case {
    const char *name, *without_extension, *whole;
  };
  for (const Case& c :
       {Case{"", kEmpty, kEmpty}, Case{"a", kShort, kShort}, Case{"-", kShort, kShort}, Case{".", kShort, kShort},
        Case{"\u00FC", kShort, kShort},  // one character, two bytes
        Case{"-a", kBeginsWithDash, kBeginsWithDash}, Case{"--", kBeginsWithDash, kBeginsWithDash},
        Case{"a-", kEndsWithDash, kEndsWithDash}, Case{"ab", "", kNoExtension}, Case{" a", "", kNoExtension},
        Case{".com", "", "Domain name can not begin with dot."}, Case{"com.", "", "Domain name can not end with dot."},
        Case{"..", "", "Domain name can not begin with dot."}, Case{"a..b", "", ""}, Case{"example.com", "", ""},
        Case{"-.", kBeginsWithDash, kBeginsWithDash}}) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(MessageOf(CheckDomainName(c.name)), c.without_extension);
    EXPECT_EQ(MessageOf(CheckWholeDomainName(c.name)), c.whole);
  }
}

TEST(DomainNameRules, LookAtTheServersFirst) {
  EXPECT_EQ(CheckMxQuestion(0, "", ""), (DomainComplaint{"There is no DNS server.", DomainControl::kServers}));
  EXPECT_EQ(CheckMxQuestion(1, "", ""), (DomainComplaint{"Please select a DNS server.", DomainControl::kServers}));
  EXPECT_EQ(CheckMxQuestion(1, "192.0.2.1", "ab"), (DomainComplaint{kNoExtension, DomainControl::kDomain}));
  EXPECT_FALSE(CheckMxQuestion(1, "192.0.2.1", "example.com"));
}

TEST(DomainNameRules, TakeTheKeysOfAName) {
  EXPECT_EQ(FilterDomainKeys("E-x 9_.\u00FC\n.com", DotKey::kDropped), "E-x9com");
  EXPECT_EQ(FilterDomainKeys("E-x 9_.\u00FC\n.com", DotKey::kTaken), "E-x9..com");
}

TEST(DomainNameRules, ChooseTheRegistrysServer) {
  EXPECT_EQ(WhoisServerFor(".com"), WhoisServerFor(".net"));
  EXPECT_EQ(WhoisServerFor(".biz"), (net::HostPort{"whois.nic.biz", 43}));
  for (const char* unknown : {".COM", ".de", "com", ""})
    EXPECT_EQ(WhoisServerFor(unknown), (net::HostPort{"whois.iana.org", 43})) << unknown;
  EXPECT_EQ(WhoisServerForName("mail.Example.BIZ"), (net::HostPort{"whois.nic.biz", 43}));
  EXPECT_EQ(WhoisServerForName("biz"), (net::HostPort{"whois.iana.org", 43}));
}

}  // namespace
}  // namespace quillcast::domain
