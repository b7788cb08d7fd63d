// Names, addresses and mail hosts, asked of a name server on loopback.
#include "domain/name_look_ups.h"

#include <gtest/gtest.h>

#include <fstream>

#include "domain/dns_server_list.h"
#include "domain/mx_look_up.h"
#include "support/dns_server.h"
#include "support/temporary_folder.h"

namespace quillcast::domain {
namespace {

using net::AddressRecord;
using net::DnsServer;
using net::MxRecord;
using net::PtrRecord;

class NameLookUps : public testing::Test {
 protected:
  net::Patience Within(std::chrono::milliseconds time = std::chrono::seconds(20)) const {
    return {clock_, cancel_, platform::Stop::kStop, net::Deadline::After(clock_.Monotonic(), time)};
  }
  MxReport Mx(const DnsServer& server, std::string_view domain,
              std::chrono::milliseconds time = std::chrono::seconds(20)) {
    const auto report = LookUpMx(net::ToString(server.endpoint()), domain, Within(time));
    EXPECT_TRUE(report);
    return report ? *report : MxReport{};
  }

  platform::SystemClock clock_;
  platform::CancelToken cancel_;
};

// What goes into the box, or the sentence in its place.
std::string Shown(const Result<FoundLines>& found) {
  return found ? found->Box() + found->status.InEnglish() : found.error().what.InEnglish();
}

TEST_F(NameLookUps, ConvertNamesAndAddresses) {
  const DnsServer server(
      {AddressRecord("both.example", "2001:db8::7"), AddressRecord("both.example", "192.0.2.7"),
       AddressRecord("both.example", "192.0.2.8"), MxRecord("mail.example", 1, "mx.example"),
       PtrRecord("7.2.0.192.in-addr.arpa", "both.example"), PtrRecord("7.2.0.192.in-addr.arpa", "other.example"),
       PtrRecord("7.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.8.b.d.0.1.0.0.2.ip6.arpa", "both.example")});
  const std::vector servers = {server.endpoint()};
  struct Case {
    const char *asked, *shown;
  };
  for (const Case& c : {Case{"both.example", "192.0.2.7\r\n192.0.2.8\r\n2001:db8::7\r\n3 addresses of both.example."},
                        Case{"[::1]", "::1\r\nThis is an address already."},
                        Case{"mail.example", "mail.example does not have an address."},
                        Case{"no.example", "There is no name no.example."},
                        Case{"two..dots", "\"two..dots\" is not a name that a host can have."}}) {
    EXPECT_EQ(Shown(AddressesOf(c.asked, servers, Within())), c.shown);
  }
  for (const Case& c :
       {Case{"192.0.2.7", "both.example\r\nother.example\r\n2 names of 192.0.2.7."},
        Case{"2001:db8::7", "both.example\r\n1 name of 2001:db8::7."},
        Case{"192.0.2.9", "192.0.2.9 does not have a name."}, Case{"192.0.2", "\"192.0.2\" is not an IP address."},
        Case{"\x1B[2J", "\"?[2J\" is not an IP address."}}) {
    EXPECT_EQ(Shown(NamesOf(c.asked, servers, Within())), c.shown);
  }
}

TEST_F(NameLookUps, KeepOneFamilyWhenTheOtherFails) {
  const DnsServer server([](const std::string& query, bool) {
    const bool v4 = net::QuestionOf(query).type == 1;
    return std::vector{v4 ? net::ReplyTo(query, 0, {AddressRecord("half.example", "192.0.2.7")})
                          : net::ReplyTo(query, 2, {})};
  });
  EXPECT_EQ(Shown(AddressesOf("half.example", {server.endpoint()}, Within())),
            "192.0.2.7\r\n1 address of half.example. There may be more: The name server failed when it was asked for "
            "half.example (SERVFAIL).");
}

TEST_F(NameLookUps, FindTheHostsOfADomainsMail) {
  const DnsServer server({MxRecord("three.example", 20, "b.example"), MxRecord("three.example", 20, "a.example"),
                          MxRecord("three.example", 5, "z.example"), MxRecord("null.example", 0, ""),
                          MxRecord("both.example", 0, ""), MxRecord("both.example", 10, "a.example"),
                          AddressRecord("null.example", "192.0.2.1"), AddressRecord("host.example", "192.0.2.7"),
                          net::TxtRecord("text.example", {"nothing else"})});
  struct Case {
    const char* domain;
    std::int64_t count;
    const char *box, *status;
  };
  for (const Case& c :
       {Case{"three.example", 3, "z.example\r\na.example\r\nb.example\r\n",
             "3 hosts take the mail of three.example, the most preferred first."},
        Case{"both.example", 1, "a.example\r\n",
             "1 host takes the mail of both.example, though a null MX record beside it says that none does."},
        Case{"null.example", 0, "", "null.example takes no mail: it says so with a null MX record."},
        Case{"host.example", 0, "", "host.example has no MX record: its mail goes to its own address, 192.0.2.7."},
        Case{"text.example", 0, "",
             "text.example has no MX record and no address was found for it: no mail gets there."},
        Case{"no.example", 0, "", "There is no name no.example. Check the spelling of the name."},
        Case{"two..dots", 0, "",
             "\"two..dots\" is not a name that a host can have. Check the spelling of the name."}}) {
    const MxReport report = Mx(server, c.domain);
    EXPECT_EQ(report.code, c.count) << c.domain;
    EXPECT_EQ(report.Box(), c.box);
    EXPECT_EQ(report.status.InEnglish(), c.status);
  }
}

TEST_F(NameLookUps, SayInAWordWhyThereAreNoHosts) {
  struct Case {
    const char* what;
    std::int64_t code;
    const char* word;
    DnsServer::Answer answer;
  };
  const auto code = [](unsigned number) {
    return [number](const std::string& query, bool) { return std::vector{net::ReplyTo(query, number, {})}; };
  };
  for (const Case& c : std::initializer_list<Case>{
           {"SERVFAIL", -5, "Bad DNS", code(2)},
           {"REFUSED", -5, "Bad DNS", code(5)},
           {"FORMERR", -5, "Bad DNS", code(1)},
           {"malformed", -5, "Bad DNS", [](const std::string&query, bool) { return std::vector{query}; }},
           {"referral", -5, "Bad DNS",
            [](const std::string&query, bool) {
              return std::vector{net::ReplyTo(query, 0, {}, false, {{"org", 2, net::WireName("ns.example")}})};
            }},
           {"foreign", -5, "Bad DNS",
            [](const std::string&query, bool) {
              return std::vector{net::ReplyTo(query, 0, {MxRecord("example.net", 10, "mx.example.net")})};
            }},
           {"silence", -1, "No DNS", [](const std::string&, bool) { return std::vector<std::string>(); }}}) {
    SCOPED_TRACE(c.what);
    const DnsServer server(c.answer);
    const MxReport report = Mx(server, "example.org", std::chrono::milliseconds(300));
    EXPECT_EQ(report.code, c.code);
    EXPECT_EQ(report.Box(), c.word);
    EXPECT_TRUE(report.failure);
  }
  const DnsServer no_addresses([](const std::string& query, bool) {
    return std::vector{net::ReplyTo(query, net::QuestionOf(query).type == 15 ? 0 : 2, {})};
  });
  const MxReport unknown = Mx(no_addresses, "example.org");
  EXPECT_EQ(unknown.Box(), "Bad DNS");
  ASSERT_TRUE(unknown.failure);
  EXPECT_EQ(unknown.failure->what.InEnglish(),
            "example.org has no MX record, and its own address could not be found out: The name server failed when it "
            "was asked for example.org (SERVFAIL).");
  for (const char* no_address : {"dns.example", "192.0.2.1:x", "1"}) {
    const auto report = LookUpMx(no_address, "example.org", Within());
    ASSERT_TRUE(report);
    EXPECT_EQ(report->Box(), "Invalid Parameter");
    EXPECT_EQ(report->code, -87);
  }
  const auto unreachable = LookUpMx("127.0.0.1:1", "example.org", Within());
  ASSERT_TRUE(unreachable);
  EXPECT_EQ(unreachable->Box(), "Bad socket");
  EXPECT_EQ(unreachable->code, -3);
  EXPECT_EQ(MxWord(-4), "");
}

TEST(DnsServerListTest, ReadsTheResolversFile) {
  const test::TemporaryFolder folder;
  const auto file = folder.path() / "resolv.conf";
  std::ofstream(file) << "# nameserver 192.0.2.9\nsearch example.org\nnameserver 192.0.2.1\n\tnameserver\t::1 # here\n"
                         "nameserver no-address\nnameserverx 192.0.2.3\nnameserver 192.0.2.2";
  EXPECT_EQ(ReadDnsServerList(file).addresses, (std::vector<std::string>{"192.0.2.1", "::1", "192.0.2.2"}));
  std::ofstream(file) << "search example.org\n";
  EXPECT_TRUE(ReadDnsServerList(file).addresses.empty());
  EXPECT_EQ(ReadDnsServerList(file).failure, "");
  EXPECT_EQ(ReadDnsServerList(folder.path() / "none").failure, "GetNetworkParams sizing failed with error 2");
  EXPECT_EQ(ReadDnsServerList(folder.path()).failure, "GetNetworkParams failed with error 21");
}

}  // namespace
}  // namespace quillcast::domain
