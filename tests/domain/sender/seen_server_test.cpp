// Servers as others see them: their public addresses, and the names of these.
#include "domain/sender/seen_server.h"

#include "domain/sender/reverse_names.h"
#include "domain/sender/zone.h"

namespace quillcast::domain {
namespace {

// Answers what is asked until nothing more is.
template <typename Ask>
void AskAll(const Zone& zone, Answers& answers, const Ask& ask) {
  for (auto wanted = (ask(), answers.TakeWanted()); !wanted.empty(); ask(), wanted = answers.TakeWanted()) {
    for (const net::DnsQuestion& one : wanted) answers.Put(one, zone.Answer(one));
  }
}

TEST(SeenServer, HasItsPublicAddressesAlone) {
  std::string zone;
  for (const char* address :
       {"0.1.2.3", "10.255.0.1", "100.63.255.255", "100.64.0.0", "100.127.255.255", "100.128.0.0", "127.0.0.2",
        "169.254.1.1", "172.15.255.255", "172.16.0.0", "172.31.255.255", "172.32.0.0", "192.168.1.1", "192.169.0.0"}) {
    zone += fmt::format("smtp.example A {}\n", address);
  }
  for (const char* address :
       {"::1", "fd00::1", "fe80::1", "::ffff:10.0.0.1", "::ffff:192.169.0.1", "fec0::1", "2001:db8::1"}) {
    zone += fmt::format("smtp.example AAAA {}\n", address);
  }
  Answers answers;
  std::optional<SeenServer> server;
  AskAll(Zone(zone), answers, [&] { server = LookAtServer("smtp.example", answers); });
  ASSERT_TRUE(server);
  std::string seen;
  for (const net::IpAddress& address : server->addresses) seen += net::ToString(address) + " ";
  EXPECT_EQ(seen, "100.63.255.255 100.128.0.0 172.15.255.255 172.32.0.0 192.169.0.0 192.169.0.1 fec0::1 2001:db8::1 ");
}

TEST(ReverseNames, AreFollowedUpToTheTenth) {
  const net::IpAddress address = *net::ParseIpAddress("192.0.2.1");
  for (const auto& [leads_back, way] : {std::pair{10, WayBack::kThere}, std::pair{11, WayBack::kElsewhere}}) {
    std::vector<net::DnsRecord> names;
    for (int i = 1; i <= 11; ++i) names.emplace_back().text = fmt::format("H{}.example", i);
    const Zone zone(fmt::format("h{}.example A 192.0.2.1\nh1.example A 192.0.2.2", leads_back));
    Answers answers;
    WayBack found = WayBack::kPending;
    AskAll(zone, answers, [&, &names = names] { found = FollowBack(address, names, answers); });
    EXPECT_EQ(found, way) << leads_back;
  }
}

}  // namespace
}  // namespace quillcast::domain
