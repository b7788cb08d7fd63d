// The check of a domain against a name server, and the policy file against a web server.
#include "domain/sender/sender_lookup.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "domain/sender/account_sender.h"
#include "domain/sender/kept_check.h"
#include "support/dns_server.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::domain {
namespace {

using std::chrono::milliseconds;

std::string Words(const SenderReport& report) {
  std::string words;
  for (const Finding& finding : report.findings) words += std::string(finding.word()) + " ";
  return words;
}

// Chains of three: the record, what it includes, the address of a server there; the policy's record, its host's
// address, the file.
std::vector<net::ZoneRecord> Zone() {
  return {net::MxRecord("example.org", 10, "mx.example.org"),
          net::AddressRecord("mx.example.org", "198.51.100.7"),
          net::TxtRecord("example.org", {"v=spf1 include:", "_spf.example.net -all"}),
          net::TxtRecord("_spf.example.net", {"v=spf1 a:out.example.net ~all"}),
          net::AddressRecord("out.example.net", "203.0.113.5"),
          net::PtrRecord("5.113.0.203.in-addr.arpa", "out.example.net"),
          net::TxtRecord("s1._domainkey.example.org",
                         {"v=DKIM1; k=ed25519; p=", "11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo="}),
          net::TxtRecord("_dmarc.example.org", {"v=DMARC1; p=reject; rua=mailto:d@example.org"}),
          net::TxtRecord("_mta-sts.example.org", {"v=STSv1; id=1"}),
          net::AddressRecord("mta-sts.example.org", "198.51.100.8")};
}

const SenderQuestion kQuestion{.domain = "example.org", .selectors = {"s1"}, .servers = {"out.example.net"}};

class LookUp : public testing::Test {
 protected:
  net::Patience For(milliseconds long_enough) {
    return {.clock = clock_,
            .cancel = cancel_,
            .gives_up_at = platform::Stop::kStop,
            .deadline = net::Deadline::After(clock_.Monotonic(), long_enough)};
  }
  platform::SystemClock clock_;
  platform::CancelToken cancel_;
};

TEST_F(LookUp, AsksForAllThatTheCheckWants) {
  const net::DnsServer server(Zone());
  StsPlace fetched;
  const SenderLookup lookup{
      {server.endpoint()}, [&](const StsPlace& place, const net::Patience&) {
        fetched = place;
        return Result<std::string>("version: STSv1\nmode: enforce\nmx: *.example.org\nmax_age: 1");
      }};
  const auto report = LookUpSender(kQuestion, lookup, For(milliseconds(10'000)));
  ASSERT_TRUE(report) << Describe(report.error());
  EXPECT_EQ(Words(*report), "mx spf spf-covers-server dkim dmarc dmarc-alignment mta-sts reverse-name ");
  EXPECT_EQ(fetched.domain, "example.org");
  ASSERT_EQ(fetched.addresses.size(), 1U);
  EXPECT_EQ(net::ToString(fetched.addresses[0]), "198.51.100.8");
}

// As after the settings could not be written: what was found is still told.
TEST_F(LookUp, GivesBackWhatCouldNotBeKept) {
  const net::DnsServer server(Zone());
  const test::TemporaryFolder folder;
  profile::SettingsStore settings(folder.path());  // no file
  SenderQuestion question = kQuestion;
  question.servers.clear();
  const auto kept = CheckAndKeep(question,
                                 {{server.endpoint()},
                                  [](const StsPlace&, const net::Patience&) {
                                    return Result<std::string>("version: STSv1\nmode: none\nmax_age: 1");
                                  }},
                                 settings, clock_, cancel_);
  ASSERT_TRUE(kept) << Describe(kept.error());
  EXPECT_TRUE(kept->not_kept);
  EXPECT_EQ(Words(kept->report), "mx spf dkim dmarc dmarc-alignment mta-sts-off ");
}

TEST_F(LookUp, SaysWhatNobodyAnswered) {
  const net::DnsServer silent([](const std::string&, bool) { return std::vector<std::string>(); });
  const SenderQuestion question{.domain = "example.org", .servers = {"out.example.net"}};
  const auto report = LookUpSender(question, {.servers = {silent.endpoint()}}, For(milliseconds(200)));
  ASSERT_TRUE(report) << Describe(report.error());
  EXPECT_EQ(report->Gravest(), Verdict::kUnknown);
  EXPECT_EQ(Words(*report), "no-answer no-answer no-answer no-answer no-answer no-answer ");
}

TEST_F(LookUp, EndsWhenThePersonCancels) {
  const net::DnsServer server(Zone());
  const SenderLookup lookup{{server.endpoint()}, [&](const StsPlace&, const net::Patience&) {
                              cancel_.Request();
                              return Result<std::string>(Error{Failure::kTryAgain, "Cancelled."});
                            }};
  const auto report = LookUpSender(kQuestion, lookup, For(milliseconds(10'000)));
  ASSERT_FALSE(report);
  EXPECT_EQ(report.error().failure, Failure::kTryAgain);
}

// A web server with one file, for one connection.
class WebServer {
 public:
  WebServer(const test::TemporaryFolder& folder, const std::string& reply) {
    folder.Write(".well-known/mta-sts.txt", reply);
    const std::string command = "cd " + folder.path().string() +
                                " && exec openssl s_server -HTTP -naccept 1 -accept 127.0.0.1:0 -cert web.pem -key "
                                "web.key 2>&1";
    output_ = ::popen(command.c_str(), "r");
    for (char line[256]; port_ == 0 && std::fgets(line, sizeof line, output_) != nullptr;) {
      if (std::string_view(line).starts_with("ACCEPT 127.0.0.1:")) port_ = std::atoi(line + 17);
    }
  }
  ~WebServer() { ::pclose(output_); }
  std::uint16_t port() const { return static_cast<std::uint16_t>(port_); }

 private:
  std::FILE* output_;
  int port_ = 0;
};

TEST_F(LookUp, FetchesThePolicyFromItsPlaceAlone) {
  const test::TemporaryFolder folder;
  const std::string make = "cd " + folder.path().string() +
                           " && openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 1 -subj "
                           "/CN=test -addext subjectAltName=DNS:mta-sts.example.org -keyout web.key -out web.pem "
                           ">/dev/null 2>&1";
  ASSERT_EQ(std::system(make.c_str()), 0);
  const std::string trusted = (folder / "web.pem").string();
  const std::string type = "\r\nContent-Type: text/plain\r\n";
  const std::string head = "HTTP/1.0 200 OK" + type + "\r\n";
  struct Case {
    std::string reply, domain, authorities;
    std::string content;  // or a piece of the reason
  };
  for (const Case& c : {
           Case{head + "version: STSv1\n", "example.org", trusted, "version: STSv1\n"},
           Case{head + "version: STSv1\n", "example.org", "", "certificate is not trusted"},
           Case{head + "version: STSv1\n", "example.net", trusted, "certificate"},
           Case{"HTTP/1.0 302 Found" + type + "Location: https://127.0.0.1/\r\n\r\nversion: STSv1\n", "example.org",
                trusted, "it answers 302, and senders follow to no other place"},
           Case{"HTTP/1.0 206 Partial Content" + type + "\r\nversion: STSv1\n", "example.org", trusted,
                "it answers 206 in place of 200"},
           Case{"HTTP/1.0 404 Not Found" + type + "\r\nversion: STSv1\n", "example.org", trusted,
                "it answers 404 in place of 200"},
           Case{"HTTP/1.0 200 OK\r\nContent-Type: text/html\r\n\r\nversion: STSv1\n", "example.org", trusted,
                "it is sent as \"text/html\", and not as text/plain.\nLet the web server send"},
           Case{"HTTP/1.0 200 OK\r\nContent-Type: TEXT/Plain; charset=utf-8\r\n\r\nversion: STSv1\n", "example.org",
                trusted, "version: STSv1\n"},
           Case{"HTTP/1.0 200 OK\r\n\r\nversion: STSv1\n", "example.org", trusted, "it is sent without a type"},
           Case{head + std::string(70'000, 'x'), "example.org", trusted, "larger than 64 KiB"},
           Case{"HTTP/1.0 404 Not Found" + type + "\r\n" + std::string(70'000, 'x'), "example.org", trusted,
                "it answers 404 in place of 200"},
           Case{"HTTP/1.0 404 Not Found\r\nContent-Length: 70000" + type + "\r\n" + std::string(70'000, 'x'),
                "example.org", trusted, "it answers 404 in place of 200"},
           Case{head + "version: STSv1\n", "example.org", (folder / "gone.pem").string(),
                "This computer has no list of authorities that can be read"},
       }) {
    SCOPED_TRACE(c.reply.substr(0, 20) + c.domain);
    const WebServer server(folder, c.reply);
    ASSERT_NE(server.port(), 0);
    const auto file = FetchStsPolicy({c.domain, {*net::ParseIpAddress("127.0.0.1")}, server.port(), c.authorities},
                                     For(milliseconds(10'000)));
    if (file) {
      EXPECT_EQ(*file, c.content);
    } else {
      EXPECT_NE(Describe(file.error()).find(c.content), std::string::npos) << Describe(file.error());
    }
    EXPECT_EQ(static_cast<bool>(file), c.content == "version: STSv1\n");
  }
}

TEST(KeptCheck, RemindsForADay) {
  const test::TemporaryFolder folder;
  profile::SettingsStore settings(folder / "settings.db");
  const test::FakeClock clock;
  const SenderReport report{
      true,
      {Found(FindingKind::kDmarcNone, "It only watches."),
       Found(FindingKind::kNoSpf, Say("{} says nothing.", "example.org")), Found(FindingKind::kMx, "Right.")}};
  account::AccountSettings account;
  account.Set(account::AccountKey::kEmail, "ada@example.org");
  ASSERT_TRUE(account.Save(settings));
  ASSERT_TRUE(KeepSenderCheck(settings, "example.org", clock.now, report));
  ASSERT_TRUE(KeepSenderCheck(settings, "example.com", clock.now, report));  // of no use, and the own one stays
  struct Case {
    const char* domain;
    std::chrono::minutes later;
    bool reminds;
  };
  for (const Case& c :
       {Case{"example.org", std::chrono::minutes(0), true}, Case{"example.org", std::chrono::hours(24), true},
        Case{"example.org", std::chrono::hours(24) + std::chrono::minutes(1), false},
        Case{"example.org", std::chrono::minutes(-1), false}, Case{"example.net", std::chrono::minutes(0), false}}) {
    const auto reminder = RememberSenderCheck(settings, c.domain, clock.now + c.later);
    ASSERT_TRUE(reminder);
    EXPECT_EQ(reminder->has_value(), c.reminds) << c.domain << " after " << c.later.count();
    if (*reminder) {
      EXPECT_EQ((*reminder)->InEnglish(),
                "2 things to mend were found when example.org was checked, the first: example.org says nothing.");
    }
  }
  ASSERT_TRUE(KeepSenderCheck(settings, "example.org", clock.now, {true, {Found(FindingKind::kMxNoAnswer, "?")}}));
  EXPECT_TRUE(RememberSenderCheck(settings, "example.org", clock.now)->has_value());  // it found out nothing
  ASSERT_TRUE(KeepSenderCheck(settings, "example.org", clock.now, {true, {Found(FindingKind::kMx, "Right.")}}));
  EXPECT_FALSE(RememberSenderCheck(settings, "example.org", clock.now)->has_value());
}

std::string Spaced(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

TEST(AccountSender, TakesTheSelectorOutOfWhatIsPasted) {
  for (const char* typed : {"s1", " s1 ", "s1.", "s=s1", "S = s1;", "s1._domainkey", "s1._DomainKey.example.org."})
    EXPECT_EQ(SelectorIn(typed).ValueOr("none"), "s1") << typed;
  EXPECT_EQ(SelectorIn("2026.news").ValueOr("none"), "2026.news");
  for (const char* none : {"", " ", "s=", "._domainkey.example.org", "a b", "a..b", "a\x1B[2J"}) {
    const auto selector = SelectorIn(none);
    ASSERT_FALSE(selector) << none;
    EXPECT_EQ(selector.error().failure, Failure::kUsage);
  }
}

TEST(AccountSender, AsksForTheDomainBehindTheAddress) {
  account::AccountSettings account;
  EXPECT_FALSE(QuestionOf(account));
  account.Set(account::AccountKey::kEmail, "Ada@M\u00fcller.Example");
  account.Set(account::AccountKey::kServer, "smtp.example.net");
  const auto own = QuestionOf(account);
  ASSERT_TRUE(own);
  EXPECT_EQ(own->domain + " " + own->local_part + " " + Spaced(own->servers),
            "xn--mller-kva.example Ada smtp.example.net");
  EXPECT_EQ(Spaced(QuestionOf("m\u00fcller.example.", account)->servers), "smtp.example.net");
  EXPECT_EQ(Spaced(QuestionOf("example.org", account)->servers), "");
  for (const std::string& other : std::vector<std::string>{
           "m\u00fc..example", "two..dots", "example", ".org", ".", "ada@example.org", "192.0.2.1", "[192.0.2.1]",
           "a b.example", "a\x1B[2J.example", std::string(64, 'a') + ".example", "m\u00fc..x", "-.example."}) {
    const auto question = QuestionOf(other, account);
    EXPECT_FALSE(question) << other;
    EXPECT_EQ(question ? Failure::kInternal : question.error().failure, Failure::kUsage) << other;
  }
  EXPECT_TRUE(QuestionOf("a_b.example", account));
  struct List {
    const char *written, *servers;
  };
  for (const List& list :
       {List{" smtp.example.net:465 ", "smtp.example.net"}, List{"a.example;b.example:587;", "a.example b.example"},
        List{"[2001:db8::1]:25; 192.0.2.1", "2001:db8::1 192.0.2.1"}, List{"a.example:25;A.Example.:587", "a.example"},
        List{"M\u00fcller.example", "xn--mller-kva.example"}, List{"a.example:x", "a.example:x"},
        List{"a:b:c", "a:b:c"}, List{" ; ", ""}}) {
    account.Set(account::AccountKey::kServer, list.written);
    EXPECT_EQ(Spaced(QuestionOf(account)->servers), list.servers) << list.written;
  }
  account.Set(account::AccountKey::kEmail, "ada@[192.0.2.1]");
  EXPECT_FALSE(QuestionOf(account));
}

}  // namespace
}  // namespace quillcast::domain
