// The keys of signatures: whose count, and what those are worth that nobody named.
#include "domain/sender/zone.h"

namespace quillcast::domain {
namespace {

// RFC 7489 3.1.1: the signature may be of another name of the organisation, where the record is not strict.
TEST(CheckDkim, KnowsWhoseSignatureCounts) {
  struct Row {
    const char* domain;
    const char* key_at;
    const char* dmarc;
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
      if (finding.topic != "DKIM" && finding.topic != "DMARC") continue;
      words += (words.empty() ? "" : " ") + std::string(finding.word);
    }
    EXPECT_EQ(words, row.words);
  }
}

// A key that nobody named may be one of long ago.
TEST(CheckDkim, HoldsNoKeyOfAGuessedNameAgainstTheDomain) {
  constexpr const char* kGood = "v=DKIM1; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=";
  struct Row {
    const char* withdrawn_at;
    const char* good_at;
    const char* drawn;
    const char* key = "v=DKIM1; p=";
  };
  const std::string trial = std::string(kGood) + "; t=y";
  const char* const kTrial = trial.c_str();
  for (const Row& row : {
           Row{"default._domainkey.a.example.org", "s1._domainkey.a.example.org", "note dkim-revoked, good dkim, "},
           Row{"default._domainkey.example.org", "s1._domainkey.a.example.org", "note dkim-revoked, good dkim, "},
           Row{"default._domainkey.a.example.org", "x", "note dkim-revoked, unknown dkim-not-found, "},
           Row{"default._domainkey.a.example.org", "s1._domainkey.a.example.org", "note dkim-tests, good dkim, ",
               kTrial},
           Row{"default._domainkey.a.example.org", "x", "note dkim-tests, unknown dkim-not-found, ", kTrial},
       }) {
    const Zone zone(fmt::format("{} TXT {}\n{} TXT {}", row.withdrawn_at, row.key, row.good_at, kGood));
    std::string drawn;
    for (const Finding& finding : Check(zone, {.domain = "a.example.org"}).report.findings) {
      if (finding.topic == "DKIM") drawn += fmt::format("{} {}, ", WordOf(finding.verdict), finding.word);
    }
    EXPECT_EQ(drawn, row.drawn) << row.withdrawn_at;
  }
}

}  // namespace
}  // namespace quillcast::domain
