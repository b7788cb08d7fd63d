#include "domain/sender/sender_check.h"

#include <cstring>
#include <set>

#include "domain/sender/zone.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

std::vector<std::string> ListOf(const std::string& server) {
  return server.empty() ? std::vector<std::string>() : std::vector{server};
}

TEST(SenderCheck, FindsNothingToMendInADomainThatIsRight) {
  const Checked checked = Check(Zone(kZone));
  EXPECT_EQ(Words(checked.report), "mx spf spf-covers-server dkim dmarc dmarc-alignment no-mta-sts reverse-name ");
  EXPECT_EQ(checked.report.Gravest(), Verdict::kNote);
  // The record, what it includes; the server, its reverse name, and the address of that: no chain is longer.
  EXPECT_EQ(checked.rounds, 3);
}

// `without` is the beginning of the lines that are taken out of the zone above.
struct Case {
  const char *without, *with, *word, *drawn;
};

const Case kCases[] = {
    {"example.org TXT v=spf1", "", "no-spf",
     "bad: SPF: example.org does not say who may send for it.\n"
     "Publish a text record at example.org that begins with \"v=spf1\" and names who sends for you; your mail provider "
     "tells what belongs into it."},
    {"", "example.org TXT v=spf1 -all", "two-spf",
     "bad: SPF: example.org has 2 records that begin with \"v=spf1\"; receivers then take none of them.\n"
     "Join them into one record."},
    {"example.org TXT v=spf1",
     "example.org TXT v=spf1 a mx a:mx1.example.org a:mx2.example.org include:i1.example -all\n"
     "example.org A 198.51.100.1\n"
     "i1.example TXT v=spf1 a:mx1.example.org a:mx2.example.org mx:example.org a:mx1.example.org a:mx2.example.org "
     "include:_spf.provider.example",
     "spf-lookups",
     "bad: SPF: The record takes 11 look-ups; receivers give up after 10.\n"
     "Remove each \"include:\" through which you no longer send, and write addresses in place of \"a\" and \"mx\"."},
    {"example.org TXT v=spf1", "example.org TXT v=spf1 +all", "spf-open",
     "bad: SPF: The record lets everybody in the world send for example.org.\n"
     "Name those who send for you alone, and end it with \"~all\" or \"-all\"."},
    {"example.org TXT v=spf1", "example.org TXT v=spf1 -all", "spf-nobody",
     "bad: SPF: The record lets nobody send for example.org.\n"
     "Name those who send for you before its \"-all\"; your mail provider tells what belongs there."},
    {"example.org TXT v=spf1", "example.org TXT v=spf1 ip4:203.0.113.5 ~all include:new.example mx", "spf-behind-all",
     "weak: SPF: Receivers pass over \"include:new.example\" in the record, as it stands behind \"~all\".\n"
     "Put \"~all\" at the end of the record."},
    {"example.org TXT v=spf1", "example.org TXT v=spf1 ip4:203.0.113.5 ptr:example.org -all", "spf-ptr",
     "note: SPF: The record uses \"ptr\", which many receivers pass over.\n"
     "Name the servers by \"a:\", \"ip4:\" or \"ip6:\" in its place."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=reject; rua=mailto:d@example.org, e@example.org",
     "dmarc-reports-nowhere",
     "weak: DMARC: No report reaches \"e@example.org\".\nWrite \"mailto:\" before each address of \"rua=\" at "
     "_dmarc.example.org."},
    {"example.org MX 10", "example.org MX 10 198.51.100.7", "mx-is-address",
     "bad: MX: The MX record has 198.51.100.7 where the name of a server belongs.\n"
     "Put a name into the record that has this address; few others send anything to an address."},
    {"smtp.provider", "", "server-without-address",
     "weak: Reverse name: smtp.provider.example, to which the mail is given, has no address.\n"
     "Check how it is written; if it is known in your own network alone, nothing is to be done."},
    {"example.org TXT v=spf1", "example.org TXT v=spf1 ip4:203.0.113.5 ?all", "spf-neutral",
     "weak: SPF: The record says nothing of those whom it does not name.\n"
     "End it with \"~all\" or \"-all\"."},
    {"example.org TXT v=spf1", "example.org TXT v=spf1 ip4:203.0.113.500 -all", "spf-mistake",
     "bad: SPF: The record of example.org has a mistake: \"ip4:203.0.113.500\" is not understood.\n"
     "Receivers take a record with a mistake for none at all: mend or remove that word."},
    {"_spf.provider.example", "_spf.provider.example TXT v=spf1 include:example.org -all", "spf-loop",
     "bad: SPF: The record of example.org leads back to itself.\n"
     "Remove the \"include:\" or \"redirect=\" that closes the circle."},
    {"_spf.provider.example", "_spf.provider.example TXT v=spf1 include:Example.Org -all", "spf-loop",
     "bad: SPF: The record of example.org leads back to itself.\n"
     "Remove the \"include:\" or \"redirect=\" that closes the circle."},
    {"_spf.provider.example", "", "spf-broken-include",
     "bad: SPF: The record leads to _spf.provider.example, which has none.\n"
     "Receivers then take the whole record for a mistake: remove what leads there, or ask who runs that domain."},
    {"example.org TXT v=spf1", "example.org TXT v=spf1 a:gone1.example mx:gone2.example a:gone3.example -all",
     "spf-void",
     "bad: SPF: The record names 3 hosts that are not there, gone1.example among them; receivers give up after 2.\n"
     "Remove them from the record."},
    {"_spf.provider.example", "_spf.provider.example TXT v=spf1 ip4:203.0.113.6 ~all", "spf-misses-server",
     "weak: SPF: The record does not name 203.0.113.5, an address of smtp.provider.example.\n"
     "If that is the server that sends your mail to others, add it; if it passes your mail on, ask its provider which "
     "\"include:\" belongs into the record."},
    {"_dmarc", "", "no-dmarc",
     "bad: DMARC: example.org does not say what is to become of mail that others send in its name.\n"
     "Publish the text record \"v=DMARC1; p=none; rua=mailto:you@example.org\" at _dmarc.example.org; large mail "
     "providers refuse newsletters without one."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=none; rua=mailto:d@example.org", "dmarc-none",
     "weak: DMARC: The record only watches (\"p=none\"): what others send in the name of example.org is delivered.\n"
     "When its reports show that your own mail passes, write \"p=quarantine\", and later \"p=reject\"."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=reject; sp=quarentine; rua=mailto:d@example.org", "dmarc-none",
     "weak: DMARC: \"sp=quarentine\" is no policy, so the record at _dmarc.example.org only watches: what others send "
     "in "
     "the name of example.org is delivered.\n"
     "Write \"sp=none\", \"sp=quarantine\" or \"sp=reject\", or remove that tag."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=rejct; rua=mailto:d@example.org", "dmarc-none",
     "weak: DMARC: \"p=rejct\" is no policy, so the record at _dmarc.example.org only watches: what others send in the "
     "name of example.org is delivered.\n"
     "Write \"p=none\", \"p=quarantine\" or \"p=reject\" behind \"v=DMARC1\"."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; rua=mailto:d@example.org", "dmarc-none",
     "weak: DMARC: There is no \"p=\", so the record at _dmarc.example.org only watches: what others send in the name "
     "of "
     "example.org is delivered.\n"
     "Write \"p=none\", \"p=quarantine\" or \"p=reject\" behind \"v=DMARC1\"."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=odd; rua=foo", "dmarc-mistake",
     "bad: DMARC: The record at _dmarc.example.org has a mistake: \"p=odd\" is no policy.\n"
     "Write \"p=none\", \"p=quarantine\" or \"p=reject\" behind \"v=DMARC1\"."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=quarantine; pct=0; rua=mailto:d@example.org", "dmarc-none",
     "weak: DMARC: The record only watches (\"pct=0\"): what others send in the name of example.org is delivered.\n"
     "Remove \"pct=\" at _dmarc.example.org once your own mail passes."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=reject; pct=0; rua=mailto:d@example.org", "dmarc-part",
     "note: DMARC: The record at _dmarc.example.org refuses nothing (\"pct=0\").\nRemove \"pct=\" at "
     "_dmarc.example.org once your own mail passes."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=quarantine; pct=20; rua=mailto:d@example.org", "dmarc-part",
     "note: DMARC: The record at _dmarc.example.org asks that of 20 in 100 messages alone.\nRemove \"pct=\" at "
     "_dmarc.example.org once your own mail passes."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=reject", "dmarc-no-reports",
     "note: DMARC: Nobody gets the reports of receivers.\n"
     "Add \"rua=mailto:\" and an address at _dmarc.example.org, to learn whether your mail passes."},
    {"", "_dmarc.example.org TXT v=DMARC1; p=none", "two-dmarc",
     "bad: DMARC: There are 2 records at _dmarc.example.org; receivers then take none of them.\n"
     "Leave one of them."},
    {"_dmarc", "_dmarc.example.org TXT v=DMARC1; p=rejected", "dmarc-mistake",
     "bad: DMARC: The record at _dmarc.example.org has a mistake: \"p=rejected\" is no policy.\n"
     "Write \"p=none\", \"p=quarantine\" or \"p=reject\" behind \"v=DMARC1\"."},
    {"s1._domainkey", "", "no-dkim",
     "bad: DKIM: There is no key at s1._domainkey.example.org.\n"
     "Publish the key that your mail provider gives for this selector, or check the selector: it stands behind \"s=\" "
     "in the DKIM-Signature of a message that you sent."},
    {"s1._domainkey",
     "s1._domainkey.example.org TXT "
     "v=DKIM1; p=MFwwDQYJKoZIhvcNAQEBBQADSwAwSAJBAM0KqrSZGAK7FTvLbL50QzkG0mTXFVkd8bObZGF9+1ccaJUZaGkLBFmPzk/"
     "uDm+5sPYy9CotJ95TFNjp03vjX6kCAwEAAQ==",
     "dkim-short",
     "bad: DKIM: The key at s1._domainkey.example.org has 512 bits; receivers pass over what has fewer than 1024.\n"
     "Let your mail provider make one of 2048 bits, and publish it."},
    {"s1._domainkey", "s1._domainkey.example.org TXT v=DKIM1; p=", "dkim-revoked",
     "bad: DKIM: The key at s1._domainkey.example.org was withdrawn.\n"
     "Publish the key that your mail provider signs with now."},
    {"s1._domainkey",
     "s1._domainkey.example.org TXT v=DKIM1; s=tlsrpt; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=",
     "dkim-unfit",
     "bad: DKIM: The key at s1._domainkey.example.org does not serve e-mail: it says \"s=tlsrpt\".\n"
     "Publish it without that tag, or the key that your mail provider signs with."},
    {"s1._domainkey",
     "s1._domainkey.example.org TXT v=DKIM1; h=sha1; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=",
     "dkim-unfit",
     "bad: DKIM: The key at s1._domainkey.example.org does not serve e-mail: it says \"h=sha1\".\n"
     "Publish it without that tag, or the key that your mail provider signs with."},
    {"s1._domainkey", "s1._domainkey.example.org TXT v=DKIM1; p=AAAA", "dkim-damaged",
     "bad: DKIM: The key at s1._domainkey.example.org is damaged: The key cannot be read.\n"
     "Publish the key again as the signing server gives it; a long one is often cut when it is pasted."},
    {"s1._domainkey", "s1._domainkey.example.org TXT v=DKIM1; k=new; p=AAAA", "dkim-unknown-kind",
     "weak: DKIM: The key at s1._domainkey.example.org is of a kind that few receivers know.\n"
     "Publish an RSA key of 2048 bits beside it."},
    {"", "s1._domainkey.example.org TXT v=DKIM1; p=", "two-dkim",
     "bad: DKIM: There are 2 keys at s1._domainkey.example.org.\n"
     "Leave the one that your mail provider signs with, as receivers take either, or none."},
    {"", "_mta-sts.example.org TXT v=STSv1", "mta-sts-mistake",
     "bad: MTA-STS: The record has no \"id=\".\nGive it one, and another whenever the policy changes."},
    {"example.org MX", "example.org A 198.51.100.1", "no-mx",
     "weak: MX: example.org has no MX record; mail to it goes to its own address.\n"
     "Publish an MX record for the server that takes replies: some receivers doubt a sender without."},
    {"example.org MX", "", "no-mail-server",
     "bad: MX: No server takes mail for example.org.\n"
     "Publish an MX record for the server that takes replies, or send from another domain: most receivers refuse a "
     "sender that nobody can answer."},
    {"example.org MX", "example.org MX 0 .", "null-mx",
     "bad: MX: example.org says that it takes no mail at all (a null MX).\n"
     "Publish an MX record for the server that takes replies, or send from another domain: most receivers refuse a "
     "sender that nobody can answer."},
    {"mx2", "", "mx-without-address",
     "bad: MX: mx2.example.org, which takes mail for the domain, has no address.\n"
     "Remove the MX record, or give the server's name an address."},
    {"", "example.org MX 0 .", "null-mx-beside",
     "bad: MX: example.org says that it takes no mail at all (a null MX), and names servers that do.\n"
     "Remove the null MX (\"0 .\"): receivers may take either for the truth."},
    {"5.113", "", "no-reverse-name",
     "weak: Reverse name: The address 203.0.113.5 has no name.\n"
     "If smtp.provider.example sends your mail to others itself, ask its provider to give the address its name: many "
     "receivers refuse a server without. If it passes your mail on, nothing is to be done."},
    {"out5", "out5.provider.example A 203.0.113.6", "reverse-name-elsewhere",
     "weak: Reverse name: The address 203.0.113.5 is called out5.provider.example, which does not lead back to it.\n"
     "If smtp.provider.example sends your mail to others itself, ask its provider to make the two agree. If it passes "
     "your mail on, nothing is to be done."},
    {"_dmarc", "_dmarc.example.org FAILS -", "no-answer",
     "unknown: DMARC: The name server failed when it was asked for _dmarc.example.org (SERVFAIL).\n"
     "Ask another name server, or try again later."},
};

Zone Changed(const Case& c, const std::string& more = "") {
  std::string lines = more;
  for (const std::string_view line : platform::Split(std::string_view(kZone), '\n')) {
    if (*c.without == '\0' || !line.starts_with(c.without)) lines += std::string(line) + "\n";
  }
  return Zone(lines + c.with);
}

TEST(SenderCheck, SaysWhatIsWrongAndWhatToDo) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(std::string(c.word) + " without " + c.without);
    const Checked checked = Check(Changed(c));
    const auto& findings = checked.report.findings;
    const auto finding =
        std::find_if(findings.begin(), findings.end(), [&](const Finding& each) { return each.word() == c.word; });
    EXPECT_NE(finding, findings.end()) << Words(checked.report);
    if (finding == findings.end()) continue;
    EXPECT_EQ(Drawn(*finding), c.drawn);
    EXPECT_EQ(checked.report.Gravest(), finding->verdict) << Words(checked.report);
  }
}

// Programs go by the words: each kind of finding comes about, and under its word.
TEST(SenderCheck, HasAZoneForEachKindOfFinding) {
  std::set<FindingKind> seen;
  for (const Case& c : kCases) {
    for (const Finding& finding : Check(Changed(c)).report.findings) seen.insert(finding.kind);
  }
  const std::string short_key =  // 1024 bits
      "s1._domainkey.example.org TXT v=DKIM1; p=MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQC2TXPj/aD9gQN3/N7oZqfue+Ocg"
      "PsoI87mbMQsnhonumbpVEy3ke2vNuXjro0sDgkdxMR/6+aDapYHjhWpYml4+HpulsjLbnEB13th2cBZOtbZO5ZKWAkEMcPJ3tlFg+PeW6gw"
      "H0h8/hwo5K2u+O/brqUML8C1nOtRb6lf3bQW9QIDAQAB";
  const std::string no_way = short_key + "; t=y\n_dmarc.example.org TXT v=DMARC1; rua=mailto:a@b.example; p=";
  const std::string sts = std::string(kZone) + "_mta-sts.example.org TXT v=STSv1; id=1\nmta-sts.example.org A 1.2.3.4";
  const std::string own = "mail.example.org A 203.0.113.5\n";
  const std::string spf = "example.org TXT v=spf1 mx a:v1.example a:v2.example a:v3.example -all\n";
  std::string crowd = "example.org TXT v=spf1 mx -all";
  for (int i = 0; i < 11; ++i) crowd += fmt::format("\nexample.org MX 10 m{}.example", i);
  struct Row {
    std::string zone;
    const char* server = "203.0.113.5";
    const char* policy = nullptr;  // nullptr: it could not be fetched
    std::vector<std::string> selectors = {"s1"};
  };
  for (const Row& row :
       {Row{"", "", nullptr, {}},
        Row{"example.org FAILS\ns1._domainkey.example.org FAILS\n_mta-sts.example.org FAILS\n"
            "5.113.0.203.in-addr.arpa FAILS"},
        Row{short_key + "\n_dmarc.example.org TXT v=DMARC1; p=reject"}, Row{no_way + "reject"}, Row{no_way + "none"},
        Row{"example.org TXT x\n_dmarc.example.org TXT v=DMARC1; p=reject", "", nullptr, {}}, Row{crowd},
        Row{spf + "example.org MX 1 h.example\nh.example A 1.2.3.4\nv1.example A 1.2.3.4\nv2.example A 1.2.3.4\n"
                  "v3.example A 1.2.3.4",
            "2a01:488::40"},
        Row{"example.org TXT v=spf1 mx -all\nexample.org MX 1 h.example\nh.example FAILS"}, Row{sts},
        Row{sts, "", "<html>"}, Row{sts, "", "version: STSv1\nmode: none\nmax_age: 1"},
        Row{sts, "", "version: STSv1\nmode: enforce\nmx: *.example.org\nmax_age: 1"},
        Row{sts, "", "version: STSv1\nmode: enforce\nmx: mx1.example.org\nmax_age: 1"},
        Row{sts, "", "version: STSv1\nmode: testing\nmx: mx1.example.org\nmax_age: 1"}, Row{own, "mail.example.org"},
        Row{own + "5.113.0.203.in-addr.arpa PTR smtp.other.example", "mail.example.org"}}) {
    const Result<std::string> file = row.policy != nullptr
                                         ? Result<std::string>(std::string(row.policy))
                                         : Result<std::string>(Error{Failure::kUnavailable, "It is not there."});
    const SenderQuestion question{.domain = "example.org", .selectors = row.selectors, .servers = ListOf(row.server)};
    for (const Finding& finding : Check(Zone(row.zone), question, file).report.findings) seen.insert(finding.kind);
  }
  const Zone strict(
      "s1._domainkey.example.org TXT v=DKIM1; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=\n"
      "_dmarc.example.org TXT v=DMARC1; p=reject; adkim=s");
  for (const Finding& finding : Check(strict, {.domain = "a.example.org", .selectors = {"s1"}}).report.findings)
    seen.insert(finding.kind);
  for (const FindingRow& row : FindingRows())
    EXPECT_EQ(seen.count(row.kind), 1U) << row.topic << ": " << row.word << " " << WordOf(row.verdict);
}

TEST(SenderCheck, WeighsTheNameOfAServerByWhoCanMendIt) {
  constexpr const char* kWithout = "5.113";
  constexpr const char* kServers =
      "mail.example.org A 203.0.113.5\nMail.Example.ORG. A 203.0.113.5\nmail.other.example A 203.0.113.5\n";
  struct Row {
    const char *domain, *server, *with;
    const char* drawn;  // its beginning
  };
  for (const Row& row :
       {Row{"example.org", "mail.example.org", "", "bad: Reverse name: The address 203.0.113.5 has no name.\nAsk who"},
        Row{"news.example.org", "mail.example.org", "", "bad: "}, Row{"example.org", "203.0.113.5", "", "bad: "},
        Row{"example.org", "Mail.Example.ORG.", "", "bad: "}, Row{"example.org", "mail.other.example", "", "weak: "},
        Row{"example.org", "mail.example.org", "5.113.0.203.in-addr.arpa PTR smtp.other.example",
            "bad: Reverse name: The address 203.0.113.5 is called smtp.other.example, which does not lead back to "
            "it.\nGive that name the address, or let who provides the server give the address its right name."}}) {
    SCOPED_TRACE(std::string(row.domain) + " " + row.server);
    const Zone zone = Changed({kWithout, row.with, "", ""}, kServers);
    const Checked checked = Check(zone, {.domain = row.domain, .selectors = {"s1"}, .servers = ListOf(row.server)});
    EXPECT_EQ(Drawn(checked.report.findings.back()).substr(0, std::strlen(row.drawn)), row.drawn);
  }
}

TEST(SenderCheck, TellsWhatIsNotKnownFromWhatIsWrong) {
  struct Row {
    const char *zone, *server;
    const char* words;  // of SPF, MX and the reverse name alone
  };
  for (const Row& row : {
           Row{"example.org TXT v=spf1 include:sub.example -all\nsub.example FAILS", "203.0.113.5", "no-answer"},
           Row{"example.org TXT v=spf1 include:sub.example -all\nsub.example FAILS", "", "no-answer"},
           Row{"example.org TXT v=spf1 include:sub.example include:none.example -all\nsub.example FAILS", "",
               "spf-broken-include"},
           Row{"example.org TXT v=spf1 mx -all\nexample.org MX 1 h.example\nh.example FAILS", "203.0.113.5",
               "mx spf spf-server-unknown"},
           Row{"example.org FAILS", "", "no-answer"},
           Row{"example.org TXT v=spf1 redirect=open.example\nopen.example TXT v=spf1 ?all +all", "", "spf"},
           Row{"example.org TXT v=spf1 redirect=open.example\nopen.example TXT v=spf1 +all", "", "spf-open"},
           Row{"example.org TXT v=spf1 include:open.example -all\nopen.example TXT v=spf1 +all", "", "spf-open"},
           Row{"example.org TXT v=spf1 ip4:0.0.0.0/0 -all", "", "spf-open"},
           Row{"example.org TXT v=spf1 ip6:::/0 -all", "", "spf-open"},
           Row{"example.org TXT v=spf1 ptr ptr:a.example ptr:b.example +all", "", "spf-open spf-ptr"},
           Row{"example.org TXT v=spf1 ptr a:v1.example a:v2.example +all", "", "spf-open spf-ptr"},
           Row{"example.org TXT v=spf1 ptr exists:%{i}.a.example exists:%{i}.b.example exists:%{i}.c.example +all", "",
               "spf spf-ptr"},
           Row{"example.org TXT v=spf1 ip6:2000::/3 -all", "", "spf-open"},
           Row{"example.org TXT v=spf1 ip6:2001:db8::/32 -all", "", "spf"},
           Row{"example.org TXT v=spf1 include:%{i}._spf.example -all", "", "spf"},
           Row{"example.org TXT v=spf1 include:%{i}._spf.example -all", "203.0.113.5", "spf-broken-include"},
           Row{"example.org TXT v=spf1 include:%{z}.example -all", "", "spf-mistake"},
           Row{"example.org TXT v=spf1 ip4:192.0.2.1 -all a:v1.example a:v2.example a:v3.example include:none.example",
               "", "spf spf-behind-all"},
           Row{"example.org TXT v=spf1 ?ip4:192.0.2.1 ~all mx", "", "spf-nobody spf-behind-all"},
           Row{"example.org TXT v=spf1 a:v1.example a:v2.example a:v3.example -all\nv1.example A 192.0.2.1\n"
               "v2.example A 192.0.2.2\nv3.example A 192.0.2.3",
               "2a01:488::40", "spf spf-stops-at-server"},
           Row{"example.org TXT v=spf1 ip4:192.0.2.1 -all", "localhost", "spf"},
           Row{"example.org TXT v=spf1 ip4:192.0.2.1 -all", "typo.example", "spf server-without-address"},
           Row{"example.org TXT v=spf1 ip4:192.0.2.1 -all\n5.113.0.203.in-addr.arpa PTR h.example\nh.example FAILS",
               "203.0.113.5", "spf spf-misses-server no-answer"},
           Row{"example.org TXT v=spf1 ip4:192.0.2.1 -all\nsmtp.example FAILS", "smtp.example", "spf no-answer"},
           Row{"example.org TXT v=spf1 ip4:192.0.2.1 -all\nsmtp.example A 192.0.2.1\nsmtp.example FAILS-AAAA",
               "smtp.example", "spf spf-covers-server no-answer"},
           Row{"example.org TXT v=spf1 ip4:192.0.2.1 -all\nsmtp.example A 10.0.0.1\nsmtp.example FAILS-AAAA",
               "smtp.example", "spf no-answer"},
       }) {
    SCOPED_TRACE(std::string(row.zone) + " " + row.server);
    std::string words;
    for (const Finding& finding :
         Check(Zone(row.zone), {.domain = "example.org", .servers = ListOf(row.server)}).report.findings) {
      const bool counts = finding.topic() == "SPF" || finding.topic() == "Reverse name" || finding.word() == "mx";
      if (counts && finding.word() != "no-reverse-name")
        words += (words.empty() ? "" : " ") + std::string(finding.word());
    }
    EXPECT_EQ(words, row.words);
  }
  std::string crowd = "example.org TXT v=spf1 mx -all\n";
  for (int i = 0; i < 11; ++i) crowd += fmt::format("example.org MX 10 m{}.example\n", i);
  EXPECT_NE(Words(Check(Zone(crowd)).report).find("spf-mx-hosts"), std::string::npos);
  EXPECT_EQ(Words(Check(Zone("example.org TXT x\n_dmarc.example.org TXT v=DMARC1; rua=mailto:a@b.example\n"
                             "default._domainkey.example.org TXT v=DMARC1; p=reject"),
                        {.domain = "example.org"})
                      .report),
            "no-mail-server no-spf dkim-not-found dmarc-none dmarc-alignment-unknown no-mta-sts ");
}

TEST(SenderCheck, SaysThatTheAddressOfAServerIsNotKnown) {
  const std::string one = "example.org MX 10 mx1.example\nexample.org MX 20 mx2.example\nmx2.example FAILS\n";
  EXPECT_EQ(Words(Check(Zone(one + "mx1.example FAILS"), {.domain = "example.org"}).report).find("mx no-answer no-spf"),
            0U);
  EXPECT_EQ(Words(Check(Zone(one), {.domain = "example.org"}).report).find("mx mx-without-address no-answer no-spf"),
            0U);
}

TEST(SenderCheck, SaysThatADomainIsNotThere) {
  const Checked checked = Check(Zone(""), {.domain = "gone.example"});
  EXPECT_EQ(Words(checked.report), "no-such-domain no-spf dkim-not-found no-dmarc no-mta-sts ");
  EXPECT_EQ(checked.rounds, 1);
}

// One that does not send for the domain is told whatever the others do.
TEST(SenderCheck, LooksAtEachServerOfTheAccount) {
  const Zone zone(std::string(kZone) + "smtp2.provider.example A 198.51.100.9");
  const SenderQuestion question{
      .domain = "example.org", .selectors = {"s1"}, .servers = {"smtp.provider.example", "smtp2.provider.example"}};
  EXPECT_EQ(Words(Check(zone, question).report),
            "mx spf spf-covers-server spf-misses-server dkim dmarc dmarc-alignment no-mta-sts reverse-name "
            "no-reverse-name ");
}

TEST(SenderCheck, ComparesThePolicyOfMtaStsWithTheServers) {
  const std::string record = std::string(kZone) + "_mta-sts.example.org TXT v=STSv1; id=1\n";
  const Checked silent = Check(Zone(record + "mta-sts.example.org FAILS -"), {.domain = "example.org"});
  EXPECT_NE(Words(silent.report).find(" no-answer "), std::string::npos) << Words(silent.report);
  const Zone zone(record + "mta-sts.example.org A 198.51.100.8");
  struct Policy {
    const char* text;  // nullptr: it could not be fetched
    const char* word;
  };
  for (const Policy& policy : {
           Policy{"version: STSv1\nmode: enforce\nmx: *.example.org\nmax_age: 1", "mta-sts"},
           Policy{"version: STSv1\nmode: enforce\nmx: mx1.example.org\nmax_age: 1", "mta-sts-other-server"},
           Policy{"version: STSv1\nmode: none\nmax_age: 1", "mta-sts-off"},
           Policy{"<html>", "mta-sts-no-policy"},
           Policy{nullptr, "mta-sts-not-fetched"},
       }) {
    const Result<std::string> file = policy.text != nullptr
                                         ? Result<std::string>(std::string(policy.text))
                                         : Result<std::string>(Error{Failure::kUnavailable, "It is not there."});
    const Checked checked = Check(zone, {.domain = "example.org"}, file);
    EXPECT_NE(Words(checked.report).find(std::string(" ") + policy.word + " "), std::string::npos)
        << policy.word << ": " << Words(checked.report);
  }
}

// Records of strangers: however they are made, the number of questions is bounded.
TEST(SenderCheck, IsNotSentRoundForEver) {
  std::string wide = "example.org TXT v=spf1";
  std::string deep = "example.org TXT v=spf1 include:d0.example\n";
  for (int i = 0; i < 2000; ++i) {
    wide += fmt::format(" include:w{}.example a:h{}.example mx:h{}.example", i, i, i);
    deep += fmt::format("d{}.example TXT v=spf1 include:d{}.example include:d{}.example\n", i, i + 1, i + 1);
  }
  std::string servers = "example.org TXT v=spf1 mx mx:example.org ptr -all\n";
  for (int i = 0; i < 10000; ++i) servers += fmt::format("example.org MX 10 m{}.example\n", i);
  for (const std::string& zone : {wide, deep, servers}) {
    const Checked checked = Check(Zone(zone));
    EXPECT_LT(checked.questions, 200);
    EXPECT_EQ(checked.report.Gravest(), Verdict::kBad);
  }
}

}  // namespace
}  // namespace quillcast::domain
