// What a domain asks to be done with mail that fails, and whether its own passes.
#include "domain/sender/zone.h"

namespace quillcast::domain {
namespace {

TEST(CheckDmarc, SaysWhetherAMessageCanPass) {
  struct Way {
    const char *spf, *key;
    bool selector_is_given;
    const char* word;
  };
  for (const Way& way : {
           Way{"v=spf1 ip4:203.0.113.5 -all", "", true, "dmarc-alignment"},
           Way{"v=spf1 -all", "v=DKIM1; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=", false,
               "dmarc-alignment"},
           Way{"v=spf1 -all", "v=DKIM1; t=y; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=", true,
               "dmarc-alignment-unknown"},
           Way{"v=spf1 -all", "", true, "dmarc-alignment-unknown"},
           Way{"v=spf1 ipv4:1", "", false, "dmarc-alignment-unknown"},
           Way{"v=spf1 ipv4:1", "", true, "dmarc-no-alignment"},
           Way{"v=spf1 include:fails.example -all", "", true, "dmarc-alignment-unknown"},
           Way{"v=spf1 ip4:203.0.113.5 include:none.example -all", "", true, "dmarc-alignment-unknown"},
       }) {
    const Zone zone(
        fmt::format("example.org TXT {}\ns1._domainkey.example.org TXT {}\nsmtp.example A 203.0.113.5\n"
                    "fails.example FAILS\n_dmarc.example.org TXT v=DMARC1; p=reject",
                    way.spf, way.key));
    SenderQuestion question{.domain = "example.org", .servers = {"smtp.example"}};
    if (way.selector_is_given) question.selectors = {"s1"};
    EXPECT_NE(Words(Check(zone, question).report).find(std::string(" ") + way.word + " "), std::string::npos)
        << way.spf << " " << way.key;
  }
}

TEST(CheckDmarc, TakesTheOrganisationsDmarcForADomainBelow) {
  const Zone zone(std::string(kZone) +
                  "news.example.org TXT v=spf1 ip4:203.0.113.5 -all\nnews.example.org A 198.51.100.1");
  EXPECT_EQ(Words(Check(zone, {.domain = "news.example.org", .servers = {"203.0.113.5"}}).report),
            "no-mx spf spf-covers-server dkim dmarc dmarc-alignment no-mta-sts reverse-name ");
  struct Row {
    const char *record, *drawn;
    const char* word = "dmarc-none";
  };
  for (const Row& row : {
           Row{"p=reject; sp=none",
               "weak: DMARC: The record of example.org only watches (\"sp=none\"): what others send in the name of "
               "news.example.org is delivered.\n"
               "When its reports show that your own mail passes, write \"sp=quarantine\" at _dmarc.example.org, and "
               "later \"sp=reject\"."},
           Row{"p=none; sp=none",
               "weak: DMARC: The record of example.org only watches (\"sp=none\"): what others send in the name of "
               "news.example.org is delivered.\n"
               "When its reports show that your own mail passes, write \"sp=quarantine\" at _dmarc.example.org, and "
               "later \"sp=reject\"."},
           Row{"p=none",
               "weak: DMARC: The record of example.org only watches (\"p=none\"): what others send in the name of "
               "news.example.org is delivered.\n"
               "When its reports show that your own mail passes, write \"p=quarantine\" at _dmarc.example.org, and "
               "later \"p=reject\"."},
           Row{"p=quarantine; pct=0",
               "weak: DMARC: The record of example.org only watches (\"pct=0\"): what others send in the name of "
               "news.example.org is delivered.\n"
               "Remove \"pct=\" at _dmarc.example.org once your own mail passes."},
           Row{"p=reject; pct=50",
               "note: DMARC: The record at _dmarc.example.org asks that of 50 in 100 messages alone.\n"
               "Remove \"pct=\" at _dmarc.example.org once your own mail passes.",
               "dmarc-part"},
           Row{"p=reject",
               "note: DMARC: Nobody gets the reports of receivers.\n"
               "Add \"rua=mailto:\" and an address at _dmarc.example.org, to learn whether your mail passes.",
               "dmarc-no-reports"},
           Row{"p=reject; rua=d@example.org",
               "weak: DMARC: No report reaches \"d@example.org\".\n"
               "Write \"mailto:\" before each address of \"rua=\" at _dmarc.example.org.",
               "dmarc-reports-nowhere"},
           Row{"p=reject; adkim=s",
               "weak: DMARC: The record asks for a signature of news.example.org itself (\"adkim=s\"); the key is at "
               "example.org.\n"
               "Let your mail provider sign for news.example.org, or write \"adkim=r\" at _dmarc.example.org.",
               "dmarc-strict-key"},
       }) {
    const Zone watching(std::string("s1._domainkey.example.org TXT v=DKIM1; k=ed25519; "
                                    "p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=\n"
                                    "_dmarc.example.org TXT v=DMARC1; ") +
                        row.record);
    const auto report = Check(watching, {.domain = "news.example.org", .selectors = {"s1"}}).report;
    const auto finding = std::find_if(report.findings.begin(), report.findings.end(),
                                      [&](const Finding& each) { return each.word() == row.word; });
    EXPECT_NE(finding, report.findings.end()) << row.record << Words(report);
    if (finding == report.findings.end()) continue;
    EXPECT_EQ(Drawn(*finding), row.drawn);
  }
}

}  // namespace
}  // namespace quillcast::domain
