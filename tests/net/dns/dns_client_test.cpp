// Questions to name servers that answer rightly, wrongly, late and not at all.
#include "net/dns/dns_client.h"

#include <gtest/gtest.h>

#include "net/resolver_file.h"
#include "support/dns_server.h"
#include "support/temporary_folder.h"

namespace quillcast::net {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class DnsClientTest : public testing::Test {
 protected:
  // Long enough for a busy machine: what is waited for to its end has a shorter one.
  Patience Within(milliseconds time) const {
    return {clock_, cancel_, platform::Stop::kAbandon, Deadline::After(clock_.Monotonic(), time)};
  }
  DnsAnswer Ask(const Endpoint& server, const std::string& name, DnsType type, milliseconds time = seconds(20)) {
    auto answers = AskAll(std::vector{DnsQuestion{name, type}}, {server}, Within(time));
    EXPECT_TRUE(answers) << (answers ? "" : InOneLine(answers.error()));
    return answers ? answers->front() : DnsAnswer{};
  }

  platform::SystemClock clock_;
  platform::CancelToken cancel_;
};

std::string AsText(const DnsAnswer& answer) {
  std::string text;
  for (const DnsRecord& one : answer.records) {
    text += one.text.empty() && one.preference == 0 ? ToString(one.address) : one.text;
    if (one.preference != 0) text += "/" + std::to_string(one.preference);
    text += ' ';
  }
  return text;
}

std::vector<ZoneRecord> Zone() {
  std::vector<ZoneRecord> zone = {AddressRecord("example.org", "192.0.2.7"),
                                  AddressRecord("example.org", "2001:db8::7"),
                                  MxRecord("example.org", 20, "b.example.org"),
                                  MxRecord("example.org", 10, "a.example.org"),
                                  TxtRecord("example.org", {"v=spf1 ip4:192.0", ".2.0/24 -all"}),
                                  TxtRecord("example.org", {"other"}),
                                  PtrRecord("7.2.0.192.in-addr.arpa", "mail.example.org"),
                                  AliasRecord("www.example.org", "web.example.org"),
                                  AliasRecord("web.example.org", "example.org"),
                                  AliasRecord("round.example.org", "about.example.org"),
                                  AliasRecord("about.example.org", "round.example.org"),
                                  AddressRecord("xn--mller-kva.example", "192.0.2.8")};
  for (unsigned n = 0; n < 3000; ++n) zone.push_back({"many.example.org", 1, Octets({10, 0, n >> 8, n & 255U})});
  return zone;
}

TEST_F(DnsClientTest, FindsWhatTheZoneHas) {
  struct Case {
    const char* name;
    DnsType type;
    DnsOutcome outcome;
    const char* records = "";
    const char* belongs_to = nullptr;  // where that is another name
  };
  const DnsServer server(Zone());
  for (const Case& c : std::initializer_list<Case>{
           {"example.org", DnsType::kA, DnsOutcome::kFound, "192.0.2.7 "},
           {"EXAMPLE.org.", DnsType::kAaaa, DnsOutcome::kFound, "2001:db8::7 ", "EXAMPLE.org"},
           {"example.org", DnsType::kMx, DnsOutcome::kFound, "b.example.org/20 a.example.org/10 "},
           {"example.org", DnsType::kTxt, DnsOutcome::kFound, "v=spf1 ip4:192.0.2.0/24 -all other "},
           {"7.2.0.192.in-addr.arpa", DnsType::kPtr, DnsOutcome::kFound, "mail.example.org "},
           {"www.example.org", DnsType::kA, DnsOutcome::kFound, "192.0.2.7 ", "example.org"},
           {"m\u00FCller.example", DnsType::kA, DnsOutcome::kFound, "192.0.2.8 ", "xn--mller-kva.example"},
           {"xn--mller-kva.example", DnsType::kMx, DnsOutcome::kNoData},
           {"round.example.org", DnsType::kA, DnsOutcome::kMalformed},
           {"nobody.example.org", DnsType::kMx, DnsOutcome::kNoSuchName},
           {"two..dots", DnsType::kA, DnsOutcome::kBadName},
           {"", DnsType::kA, DnsOutcome::kBadName},
           {"line\nend.example", DnsType::kA, DnsOutcome::kBadName},
           {"m\u00FC..example", DnsType::kA, DnsOutcome::kBadName}}) {
    SCOPED_TRACE(c.name);
    const DnsAnswer answer = Ask(server.endpoint(), c.name, c.type);
    EXPECT_EQ(answer.outcome, c.outcome);
    EXPECT_EQ(AsText(answer), c.records);
    if (c.outcome != DnsOutcome::kFound) continue;
    EXPECT_EQ(answer.name, c.belongs_to ? c.belongs_to : c.name);
  }
  EXPECT_EQ(Ask(server.endpoint(), std::string(300, 'a') + ".org", DnsType::kA).outcome, DnsOutcome::kBadName);
  // 48,000 octets, over TCP and one at a time.
  const DnsAnswer many = Ask(server.endpoint(), "many.example.org", DnsType::kA);
  ASSERT_EQ(many.records.size(), 3000U);
  EXPECT_EQ(ToString(many.records[2999].address), "10.0.11.183");
}

TEST_F(DnsClientTest, TellsHowAServerFails) {
  struct Case {
    const char* what;
    DnsOutcome outcome;
    DnsServer::Answer answer;
  };
  const std::vector<ZoneRecord> forged = {MxRecord("other.example", 1, "evil.example"),
                                          AliasRecord("other.example", "example.org")};
  const auto from_zone = [zone = Zone()](const std::string& query, bool tcp) { return AnswerFrom(zone, query, tcp); };
  const auto code = [](unsigned number) {
    return [number](const std::string& query, bool) { return std::vector{ReplyTo(query, number, {})}; };
  };
  const auto other_identifier = [](std::string message) {
    message[0] = static_cast<char>(message[0] ^ 1);
    return message;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"SERVFAIL", DnsOutcome::kServerFailed, code(2)},
           {"REFUSED", DnsOutcome::kRefused, code(5)},
           {"FORMERR", DnsOutcome::kNotUnderstood, code(1)},
           {"NOTIMP", DnsOutcome::kNotUnderstood, code(4)},
           {"silence", DnsOutcome::kNoAnswer, [](const std::string&, bool) { return std::vector<std::string>(); }},
           {"other identifiers", DnsOutcome::kMalformed,
            [&](const std::string&query, bool) { return std::vector{other_identifier(ReplyTo(query, 0, {}))}; }},
           {"other identifiers, with SERVFAIL", DnsOutcome::kMalformed,
            [&](const std::string&query, bool) { return std::vector{other_identifier(ReplyTo(query, 2, {}))}; }},
           {"other identifiers, cut", DnsOutcome::kMalformed,
            [&](const std::string&query, bool) { return std::vector{other_identifier(ReplyTo(query, 0, {}, true))}; }},
           {"its own identifier, and nothing that can be read", DnsOutcome::kMalformed,
            [](const std::string&query, bool) { return std::vector{query.substr(0, 2) + std::string(30, '\xFF')}; }},
           {"two questions", DnsOutcome::kMalformed,
            [](const std::string&query, bool) {
              std::string reply = ReplyTo(query, 0, {});
              reply[5] = 2;
              return std::vector{reply};
            }},
           {"REFUSED of another identifier before the right answer", DnsOutcome::kFound,
            [&](const std::string&query, bool tcp) {
              return std::vector{other_identifier(ReplyTo(query, 5, {})), from_zone(query, tcp).front()};
            }},
           {"a forged answer before the right one", DnsOutcome::kFound,
            [&](const std::string&query, bool tcp) {
              return std::vector{other_identifier(ReplyTo(query, 3, {})), from_zone(query, tcp).front()};
            }},
           {"another question", DnsOutcome::kMalformed,
            [](std::string query, bool) {
              query[13] = 'X';
              return std::vector{ReplyTo(query, 0, {})};
            }},
           {"records of another name", DnsOutcome::kMalformed,
            [&](const std::string&query, bool) { return std::vector{ReplyTo(query, 0, forged)}; }},
           {"an alias of another name", DnsOutcome::kMalformed,
            [&](const std::string&query, bool) { return std::vector{ReplyTo(query, 0, {forged[1]})}; }},
           {"a referral", DnsOutcome::kMalformed,
            [](const std::string&query, bool) {
              return std::vector{ReplyTo(query, 0, {}, false, {{"org", 2, WireName("ns.example")}})};
            }},
           {"nothing, with the servers and the start of the zone", DnsOutcome::kNoData,
            [](const std::string&query, bool) {
              return std::vector{ReplyTo(query, 0, {}, false, {{"org", 2, WireName("ns.example")}, {"org", 6, ""}})};
            }},
           {"the query sent back", DnsOutcome::kMalformed,
            [](const std::string&query, bool) { return std::vector{query}; }},
           {"eleven octets", DnsOutcome::kMalformed,
            [](const std::string&query, bool) { return std::vector{query.substr(0, 11)}; }},
           {"cut, and nothing over TCP", DnsOutcome::kMalformed,
            [](const std::string&query, bool tcp) {
              const std::vector half = {MxRecord("example.org", 1, "mx.example.org")};
              return tcp ? std::vector<std::string>() : std::vector{ReplyTo(query, 0, half, true)};
            }},
           {"cut, and cut over TCP again", DnsOutcome::kMalformed,
            [](const std::string&query, bool) { return std::vector{ReplyTo(query, 0, {}, true)}; }},
           {"cut off within a record", DnsOutcome::kMalformed,
            [](const std::string&query, bool) {
              const std::string whole = ReplyTo(query, 0, {MxRecord("example.org", 1, "mx.example.org")});
              return std::vector{whole.substr(0, whole.size() - 3)};
            }},
       }) {
    SCOPED_TRACE(c.what);
    const DnsServer server(c.answer);
    const DnsAnswer answer = Ask(server.endpoint(), "example.org", DnsType::kMx, milliseconds(400));
    EXPECT_EQ(answer.outcome, c.outcome);
    EXPECT_EQ(answer.records.empty(), c.outcome != DnsOutcome::kFound);
  }
}

TEST_F(DnsClientTest, TellsThatNoServerIsThere) {
  Endpoint gone;
  {
    const DnsServer server(Zone());
    gone = server.endpoint();
  }
  const DnsAnswer answer = Ask(gone, "example.org", DnsType::kA);
  EXPECT_EQ(answer.outcome, DnsOutcome::kNoSocket);
  EXPECT_EQ(answer.error_number, ECONNREFUSED);
  EXPECT_FALSE(answer.answered());
  // Of two at once neither waits for what cannot come.
  const auto begun = clock_.Monotonic();
  const std::vector both = {DnsQuestion{"example.org", DnsType::kA}, DnsQuestion{"example.org", DnsType::kAaaa}};
  const auto answers = AskAll(both, {gone}, Within(seconds(20)));
  ASSERT_TRUE(answers);
  for (const DnsAnswer& one : *answers) {
    EXPECT_EQ(one.outcome, DnsOutcome::kNoSocket);
    EXPECT_EQ(one.error_number, ECONNREFUSED);
  }
  EXPECT_LT(clock_.Monotonic() - begun, seconds(10));
}

// Longer than the first wait for a datagram.
TEST_F(DnsClientTest, WaitsForAnAnswerOverTcpWhileThereIsTime) {
  const DnsServer slow([zone = Zone()](const std::string& query, bool tcp) {
    if (tcp) std::this_thread::sleep_for(milliseconds(1700));
    return AnswerFrom(zone, query, tcp);
  });
  EXPECT_EQ(Ask(slow.endpoint(), "many.example.org", DnsType::kA).records.size(), 3000U);
  EXPECT_EQ(slow.queries(), 2);
}

TEST_F(DnsClientTest, AsksTheNextServer) {
  const DnsServer failing([](const std::string& query, bool) { return std::vector{ReplyTo(query, 2, {})}; });
  const DnsServer right(Zone());
  const std::vector<DnsQuestion> questions = {{"example.org", DnsType::kA}};
  auto answers = AskAll(questions, {failing.endpoint(), right.endpoint()}, Within(seconds(20)));
  ASSERT_TRUE(answers);
  EXPECT_EQ(AsText(answers->front()), "192.0.2.7 ");
  answers = AskAll(questions, {failing.endpoint(), failing.endpoint()}, Within(seconds(20)));
  ASSERT_TRUE(answers);
  EXPECT_EQ(answers->front().outcome, DnsOutcome::kServerFailed);
}

TEST_F(DnsClientTest, AsksAServerThatDoesNotKnowEdns) {
  const DnsServer server([zone = Zone()](const std::string& query, bool tcp) {
    const bool edns = query[11] != 0;
    return edns ? std::vector{ReplyTo(query, 1, {})} : AnswerFrom(zone, query, tcp);
  });
  const std::vector questions = {DnsQuestion{"example.org", DnsType::kA}, DnsQuestion{"example.org", DnsType::kMx},
                                 DnsQuestion{"example.org", DnsType::kAaaa}};
  const auto answers = AskAll(questions, {server.endpoint()}, Within(seconds(20)));
  ASSERT_TRUE(answers);
  for (const DnsAnswer& answer : *answers) EXPECT_EQ(answer.outcome, DnsOutcome::kFound);
}

// Forty questions that wait for each other would take four seconds.
TEST_F(DnsClientTest, AsksAllAtOnce) {
  const DnsServer server(Zone(), milliseconds(100));
  const auto begun = clock_.Monotonic();
  DnsClient client({server.endpoint()});
  int told = 0;
  std::string last;
  for (int n = 0; n < 20; ++n) {
    client.Ask({"example.org", DnsType::kMx}, [&](const DnsAnswer& mx) {
      ASSERT_EQ(mx.records.size(), 2U);
      client.Ask({"example.org", DnsType::kA}, [&](const DnsAnswer& address) {
        ++told;
        last = AsText(address);
      });
    });
  }
  ASSERT_TRUE(client.Run(Within(seconds(20))));
  EXPECT_EQ(told, 20);
  EXPECT_EQ(last, "192.0.2.7 ");
  EXPECT_LT(clock_.Monotonic() - begun, milliseconds(3500));
}

TEST_F(DnsClientTest, EndsAtACancel) {
  const DnsServer server([this](const std::string&, bool) {
    cancel_.Request();
    cancel_.Request();
    return std::vector<std::string>();
  });
  DnsClient client({server.endpoint()});
  bool told = false;
  client.Ask({"example.org", DnsType::kMx}, [&](const DnsAnswer&) { told = true; });
  const auto ran = client.Run(Within(seconds(60)));
  ASSERT_FALSE(ran);
  EXPECT_EQ(ran.error().failure, Failure::kTryAgain);
  EXPECT_FALSE(told);
}

// A link-local address is one of an interface. Whether one leads anywhere is for the system to say: without its
// interface it does not even try (EINVAL).
TEST_F(DnsClientTest, ReachesALinkLocalServerThroughItsInterface) {
  for (const char* server : {"fe80::53%lo", "[fe80::53%1]:5353"}) {
    const auto endpoint = ParseDnsServer(server);
    ASSERT_TRUE(endpoint) << server;
    EXPECT_NE(Ask(*endpoint, "example.org", DnsType::kA, milliseconds(300)).error_number, EINVAL) << server;
    const IpAddress held = ForLibrary(endpoint->address);
    EXPECT_EQ(held.scope, 0U);
    EXPECT_NE(held, endpoint->address);
    EXPECT_EQ(FromLibrary(held), endpoint->address);
  }
  const IpAddress other = *ParseIpAddress("2001:db8:1:2::53");
  EXPECT_EQ(ForLibrary(other), other);
  EXPECT_EQ(FromLibrary(other), other);
}

TEST(ResolverFile, NamesServersThatTheLibraryPassesOver) {
  struct Case {
    const char* text;
    std::vector<const char*> servers;
  };
  const test::TemporaryFolder folder;
  for (const Case& c : std::initializer_list<Case>{
           {"nameserver 192.0.2.1\nnameserver ::1\n", {}},
           {"search example.org\nnameserver fe80::1%lo # here\n", {"fe80::1%lo"}},
           {"nameserver 192.0.2.1\nnameserver\tfe80::1%1\nnameserver fe80::2%none", {"192.0.2.1", "fe80::1%lo"}},
           {"# nameserver fe80::1%lo\n", {}}}) {
    std::vector<Endpoint> wanted;
    for (const char* server : c.servers) wanted.push_back({*ParseIpAddress(server), 53});
    EXPECT_EQ(ServersBehindInterfaces(folder.Write("resolv.conf", c.text)), wanted) << c.text;
  }
  EXPECT_TRUE(ServersBehindInterfaces(folder.path() / "none").empty());
}

TEST(DnsServerText, IsAnAddressWithAPort) {
  struct Case {
    const char* text;
    const char* endpoint;  // nullptr: no address
  };
  for (const Case& c : {Case{"192.0.2.1", "192.0.2.1:53"}, Case{"192.0.2.1:5353", "192.0.2.1:5353"},
                        Case{"2001:db8::1", "[2001:db8::1]:53"}, Case{"[::1]:54", "[::1]:54"}, Case{"", nullptr},
                        Case{"dns.example", nullptr}, Case{"192.0.2.1:", nullptr}, Case{"192.0.2.1:70000", nullptr},
                        Case{"192.0.2", nullptr}, Case{"192.0.2.256", nullptr}}) {
    const auto server = ParseDnsServer(c.text);
    EXPECT_EQ(server ? ToString(*server) : "no address", c.endpoint ? c.endpoint : "no address") << c.text;
  }
}

TEST(ReverseName, IsThatOfBothFamilies) {
  EXPECT_EQ(ReverseName(*ParseIpAddress("192.0.2.7")), "7.2.0.192.in-addr.arpa");
  EXPECT_EQ(ReverseName(*ParseIpAddress("2001:db8::7")),
            "7.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.8.b.d.0.1.0.0.2.ip6.arpa");
}

}  // namespace
}  // namespace quillcast::net
