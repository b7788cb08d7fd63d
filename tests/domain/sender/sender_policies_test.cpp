// The records by which a domain says what becomes of its mail: DMARC and MTA-STS.
#include <gtest/gtest.h>

#include "domain/sender/dmarc_record.h"
#include "domain/sender/mta_sts.h"

namespace quillcast::domain {
namespace {

using Policy = DmarcRecord::Policy;

TEST(Dmarc, IsReadTagByTag) {
  struct Case {
    const char* record;
    DmarcRecord read;  // but for the words of a mistake
    const char* mistake = "";
  };
  for (const Case& c : {
           Case{"v=DMARC1; p=none", {}},
           Case{"v=DMARC1;p=reject;", {Policy::kReject, Policy::kReject}},
           Case{"v=DMARC1; rua=mailto:a@example.org",
                {Policy::kNone, Policy::kNone, false, 100, {"mailto:a@example.org"}},
                "There is no \"p=\""},
           Case{"v=DMARC1; rua=mailto:a@example.org; sp=reject",
                {Policy::kNone, Policy::kNone, false, 100, {"mailto:a@example.org"}, true},
                "There is no \"p=\""},
           Case{"v=DMARC1; p=reject; rua=foo,mailto:a@example.org; sp=odd",
                {Policy::kNone, Policy::kNone, false, 100, {"foo", "mailto:a@example.org"}, true},
                "\"sp=odd\" is no policy"},
           Case{" v = DMARC1 ; p = Quarantine ; sp=none; adkim=s; aspf=S; pct=20; ruf=mailto:x@y",
                {Policy::kQuarantine, Policy::kNone, true, 20, {}, true}},
           Case{"v=DMARC1; P=reject; strict; pct=20; pct=30; =x", {Policy::kReject, Policy::kReject, false, 20}},
           Case{"v=DMARC1; p=reject; rua=mailto:a@example.org, mailto:b@example.net!10m; pct=101",
                {Policy::kReject, Policy::kReject, false, 100, {"mailto:a@example.org", "mailto:b@example.net!10m"}}},
       }) {
    SCOPED_TRACE(c.record);
    EXPECT_TRUE(IsDmarc(c.record));
    const auto read = ParseDmarc(c.record);
    ASSERT_TRUE(read) << Describe(read.error());
    EXPECT_EQ(read->mistake.InEnglish(), c.mistake);
    DmarcRecord rest = *read;
    rest.mistake = rest.remedy = {};
    EXPECT_TRUE(rest == c.read);
  }
  for (const char* bad : {"v=DMARC1", "v=DMARC1; p=", "v=DMARC1; p=all", "v=DMARC1; p=none; p=reject", "v=DMARC1; none",
                          "v=DMARC1 p=none", "v=DMARC1; p=reject; sp=odd", "v=DMARC1; p=odd; rua=foo",
                          "v=DMARC1; p=reject; sp=; rua=mailto:"}) {
    EXPECT_FALSE(ParseDmarc(bad)) << bad;
  }
  for (const char* other : {"v=DMARC2; p=none", "p=none; v=DMARC1", "v=spf1 -all", ""})
    EXPECT_FALSE(IsDmarc(other)) << other;
}

TEST(Dmarc, KnowsWhereAnOrganisationsNamesBegin) {
  struct Case {
    const char *domain, *organisation;
  };
  for (const Case& c : {Case{"example.org", "example.org"}, Case{"bounce.mail.example.org", "example.org"},
                        Case{"a.example.co.uk", "example.co.uk"}, Case{"a.co.uk", "a.co.uk"}, Case{"co.uk", "co.uk"}}) {
    EXPECT_EQ(OrganisationalDomain(c.domain), c.organisation);
  }
}

TEST(MtaSts, IsReadLineByLine) {
  EXPECT_TRUE(IsStsRecord("v=STSv1; id=20260101000000Z;"));
  EXPECT_FALSE(IsStsRecord("v=STSv2; id=1"));
  EXPECT_EQ(ParseStsRecord("v=STSv1; id=20260101000000Z;").ValueOr(""), "20260101000000Z");
  EXPECT_FALSE(ParseStsRecord("v=STSv1;"));

  const auto policy = ParseStsPolicy(
      "version: STSv1\r\nmode: enforce\r\nmx: Mail.example.org\r\nmx: *.example.net\r\nmax_age: 604800\r\nmode: "
      "none\r\n");
  ASSERT_TRUE(policy) << Describe(policy.error());
  EXPECT_TRUE(*policy == (StsPolicy{StsPolicy::Mode::kEnforce, {"mail.example.org", "*.example.net"}, 604800}));
  EXPECT_TRUE(ParseStsPolicy("version: STSv1\nmode: none\nmax_age: 0"));
  for (const char* bad : {"", "mode: enforce\nmx: a\nmax_age: 1", "version: STSv1\nmx: a\nmax_age: 1",
                          "version: STSv1\nmode: enforce\nmax_age: 1", "version: STSv1\nmode: testing\nmx: a",
                          "version: STSv1\nmode: testing\nmx: a\nmax_age: 31557601", "<html>Not found</html>"}) {
    EXPECT_FALSE(ParseStsPolicy(bad)) << bad;
  }
}

TEST(MtaSts, NamesServersByOneLabel) {
  EXPECT_TRUE(StsNames("mail.example.org", "MAIL.example.org."));
  EXPECT_TRUE(StsNames("*.example.org", "a.example.org"));
  for (const char* other : {"example.org", "a.b.example.org", ".example.org", "a.example.net"})
    EXPECT_FALSE(StsNames("*.example.org", other)) << other;
}

}  // namespace
}  // namespace quillcast::domain
