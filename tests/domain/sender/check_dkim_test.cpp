// The keys of signatures: whose count, and what those are worth that nobody named.
#include "domain/sender/zone.h"

namespace quillcast::domain {
namespace {

// RFC 7489 3.1.1: the signature may be of another name of the organisation, where the record is not strict.
TEST(CheckDkim, KnowsWhoseSignatureCounts) {
  struct Row {
    const char *domain, *key_at, *dmarc;
    const char* spf;  // of 203.0.113.5
    bool selector_is_given;
    const char* words;  // of DKIM and DMARC
  };
  constexpr const char* kPasses = "v=spf1 ip4:203.0.113.5 -all";
  for (const Row& row : {
           Row{"a.example.org", "example.org", "", "", true, "dkim dmarc dmarc-alignment"},
           Row{"a.example.org", "a.example.org", "", "", true, "dkim dmarc dmarc-alignment"},
           Row{"a.example.org", "example.org", "adkim=s", "", true, "dkim dmarc dmarc-strict-key dmarc-no-alignment"},
           Row{"a.example.org", "example.org", "adkim=s", kPasses, true, "dkim dmarc dmarc-strict-key dmarc-alignment"},
           Row{"a.example.org", "example.org", "adkim=s", "", false, "dkim dmarc dmarc-alignment-unknown"},
           Row{"a.example.org", "example.org", "aspf=s", "", false, "dkim dmarc dmarc-alignment"},
           Row{"a.example.org", "a.example.org", "adkim=s; aspf=s", "", true, "dkim dmarc dmarc-alignment"},
           Row{"a.example.org", "other.example", "", "", true, "no-dkim dmarc dmarc-no-alignment"},
           Row{"a.example.org", "other.example", "adkim=s; aspf=s", kPasses, true, "no-dkim dmarc dmarc-alignment"},
           Row{"example.co.uk", "co.uk", "", "", true, "no-dkim dmarc dmarc-no-alignment"},
       }) {
    SCOPED_TRACE(std::string(row.domain) + " " + row.key_at + " " + row.dmarc + row.spf);
    const Zone zone(
        fmt::format("{0} TXT {1}\n_dmarc.{0} TXT v=DMARC1; p=reject; rua=mailto:a@b.example; {2}\n"
                    "s1._domainkey.{3} TXT v=DKIM1; k=ed25519; "
                    "p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=",
                    row.domain, row.spf, row.dmarc, row.key_at));
    SenderQuestion question{.domain = row.domain, .servers = {"203.0.113.5"}};
    if (row.selector_is_given) question.selectors = {"s1"};
    std::string words;
    for (const Finding& finding : Check(zone, question).report.findings) {
      if (finding.topic() != "DKIM" && finding.topic() != "DMARC") continue;
      words += (words.empty() ? "" : " ") + std::string(finding.word());
    }
    EXPECT_EQ(words, row.words);
  }
}

// A key that nobody named may be one of long ago.
TEST(CheckDkim, HoldsNoKeyOfAGuessedNameAgainstTheDomain) {
  constexpr const char* kGood = "v=DKIM1; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=";
  constexpr const char* kShort =  // 1024 bits
      "v=DKIM1; p=MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQC2TXPj/aD9gQN3/N7oZqfue+OcgPsoI87mbMQsnhonumbpVEy3ke2vNuXj"
      "ro0sDgkdxMR/6+aDapYHjhWpYml4+HpulsjLbnEB13th2cBZOtbZO5ZKWAkEMcPJ3tlFg+PeW6gwH0h8/hwo5K2u+O/brqUM"
      "L8C1nOtRb6lf3bQW9QIDAQAB";
  struct Row {
    std::string first, second;
    const char* drawn;
    const char* remedy;  // of the first finding
  };
  const std::string at_default = "default._domainkey.a.example.org TXT ";
  const std::string good = std::string("s1._domainkey.a.example.org TXT ") + kGood;
  const std::string trial = std::string(kGood) + "; t=y";
  constexpr const char* kPublish =
      "If your mail is signed with it: Publish the key that your mail provider signs with now.";
  constexpr const char* kRemove =
      "If your mail is signed with it: Remove the mark, as until then receivers treat your mail as not signed.";
  constexpr const char* kLonger = "Let your mail provider make one of 2048 bits, and publish it.";
  const std::string longer = std::string("If your mail is signed with it: ") + kLonger;
  for (const Row& row : {
           Row{at_default + "v=DKIM1; p=", good, "note dkim-revoked, good dkim, ", kPublish},
           Row{"default._domainkey.example.org TXT v=DKIM1; p=", good, "note dkim-revoked, good dkim, ", kPublish},
           Row{at_default + "v=DKIM1; p=", "", "note dkim-revoked, unknown dkim-not-found, ", kPublish},
           Row{at_default + trial, good, "note dkim-tests, good dkim, ", kRemove},
           Row{at_default + trial, "", "note dkim-tests, unknown dkim-not-found, ", kRemove},
           Row{at_default + kShort, good, "note dkim-short, good dkim, ", longer.c_str()},
           Row{at_default + kShort, "", "weak dkim-short, ", kLonger},
           Row{"default._domainkey.a.example.org FAILS", "", "unknown no-answer, ",
               "Ask another name server, or try again later."},
       }) {
    const Zone zone(row.first + "\n" + row.second);
    std::string drawn;
    std::string remedy;
    for (const Finding& finding : Check(zone, {.domain = "a.example.org"}).report.findings) {
      if (finding.topic() != "DKIM") continue;
      if (drawn.empty()) remedy = finding.remedy.InEnglish();
      drawn += fmt::format("{} {}, ", WordOf(finding.verdict), finding.word());
    }
    EXPECT_EQ(drawn, row.drawn) << row.first;
    EXPECT_EQ(remedy, row.remedy) << row.first;
  }
}

}  // namespace
}  // namespace quillcast::domain
