// Whois servers that answer rightly, slowly, endlessly, in other character sets and in other protocols.
#include "domain/whois.h"

#include <gtest/gtest.h>

#include "smtp/scripted_server.h"

namespace quillcast::domain {
namespace {

using smtp::Peer;
using smtp::ScriptedServer;

class WhoisTest : public testing::Test {
 protected:
  net::Patience Within(std::chrono::milliseconds time) const {
    return {clock_, cancel_, platform::Stop::kStop, net::Deadline::After(clock_.Monotonic(), time)};
  }
  Result<WhoisAnswer> Ask(const ScriptedServer& server, std::string_view name,
                          std::chrono::milliseconds time = std::chrono::seconds(20)) {
    return AskWhois({"127.0.0.1", server.port()}, name, Within(time));
  }

  platform::SystemClock clock_;
  platform::CancelToken cancel_;
};

TEST_F(WhoisTest, SendsTheNameAsOneLineAndReadsToTheEnd) {
  const ScriptedServer server([](Peer& peer, int) {
    const std::string line = peer.Line();
    for (const char c : "Domain: " + line + "\r\nHolder: J\u00FCrgen\nwhois: whois.registrar.example\r\n") {
      if (c != '\0') peer.Say(std::string(1, c));  // a packet for each
    }
  });
  const auto answer = Ask(server, "m\u00FCller.example");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->text, "Domain: xn--mller-kva.example\nHolder: J\u00FCrgen\nwhois: whois.registrar.example\n");
  EXPECT_EQ(answer->Box(),
            "Domain: xn--mller-kva.example\r\nHolder: J\u00FCrgen\r\nwhois: whois.registrar.example\r\n");
  EXPECT_EQ(answer->charset, "utf-8");
  EXPECT_EQ(answer->referral, (net::HostPort{"whois.registrar.example", 43}));
  EXPECT_FALSE(answer->cut_short);
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(WhoisTest, CutsAnAnswerThatDoesNotEnd) {
  const ScriptedServer endless([](Peer& peer, int) {
    peer.Line();
    while (peer.Say(std::string(65536, 'x'))) {
    }
  });
  const auto answer = Ask(endless, "example.com");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->text.size(), kLongestWhoisAnswer);
  ASSERT_TRUE(answer->cut_short);
  EXPECT_EQ(answer->cut_short->failure, Failure::kBadData);

  const ScriptedServer unfinished([](Peer& peer, int) {
    peer.Line();
    peer.Say("Domain: example.com\r\n");
    peer.Stall();
  });
  const auto part = Ask(unfinished, "example.com", std::chrono::milliseconds(200));
  ASSERT_TRUE(part);
  EXPECT_EQ(part->text, "Domain: example.com\n");
  ASSERT_TRUE(part->cut_short);
  EXPECT_EQ(part->cut_short->failure, Failure::kTimedOut);
  EXPECT_EQ(part->cut_short->what.InEnglish(), "127.0.0.1 had not finished in time.");
}

TEST_F(WhoisTest, TellsWhyThereIsNoAnswer) {
  struct Case {
    const char *what, *name;
    Failure failure;
    std::function<void(Peer&, int)> serve;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"closes", "example.com", Failure::kUnavailable, [](Peer&peer, int) { peer.Line(); }},
           {"an alert of TLS", "example.com", Failure::kUnavailable,
            [](Peer&peer, int) {
              peer.Line();
              peer.Say({"\x15\x03\x01\x00\x02\x02\x46", 7});
            }},
           {"silence", "example.com", Failure::kTimedOut, [](Peer&peer, int) { peer.Stall(); }},
           {"two lines", "a.com\r\nb.com", Failure::kUsage, {}},
           {"nothing", "", Failure::kUsage, {}},
           {"no name", "m\u00FC..com", Failure::kUsage, {}}}) {
    SCOPED_TRACE(c.what);
    const ScriptedServer server(c.serve);
    const auto answer = Ask(server, c.name, std::chrono::milliseconds(300));
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().failure, c.failure);
    EXPECT_EQ(server.connections() > 0, c.serve != nullptr);
  }
}

TEST_F(WhoisTest, EndsAtACancelEvenWhileBytesCome) {
  const ScriptedServer server([this](Peer& peer, int) {
    peer.Line();
    peer.Say("Domain: example.com\r\n");
    cancel_.Request();
    peer.Stall();
  });
  const auto answer = Ask(server, "example.com");
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().failure, Failure::kTryAgain);
}

TEST(WhoisAnswerReading, TakesAnyCharacterSet) {
  struct Case {
    const char *bytes, *chosen, *charset, *text;
  };
  for (const Case& c :
       {Case{"J\xC3\xBCrgen", "", "utf-8", "J\u00FCrgen"}, Case{"J\xFCrgen", "", "Windows-1252", "J\u00FCrgen"},
        Case{"\x1B$B;3\x1B(B", "", "iso-2022-jp", "\u5C71"},
        Case{"\xE9\xCD\xD1", "koi8-r", "koi8-r", "\u0418\u043C\u044F"},
        Case{"a\r\nb\nc", "no-such-set", "utf-8", "a\nb\nc"}, Case{"", "", "utf-8", ""}}) {
    const WhoisAnswer answer = ReadWhoisAnswer(c.bytes, c.chosen);
    EXPECT_EQ(answer.charset, c.charset) << c.text;
    EXPECT_EQ(answer.text, c.text);
  }
}

TEST(WhoisAnswerReading, FindsTheServerThatKnowsMore) {
  struct Case {
    const char* text;
    const char* server;  // empty: none
  };
  for (const Case& c : {Case{"refer:        whois.nic.example\n", "whois.nic.example:43"},
                        Case{"  Registrar WHOIS Server: whois.registrar.example\r\n", "whois.registrar.example:43"},
                        Case{"ReferralServer: whois://whois.region.example:43/\n", "whois.region.example:43"},
                        Case{"Whois Server: whois.region.example:4343\nrefer: other.example\n", "other.example:43"},
                        Case{"Registrar WHOIS Server: 127.0.0.1:25\n", ""},
                        Case{"refer: 10.0.0.1\n", ""},
                        Case{"refer: [::1]\n", ""},
                        Case{"refer: ::ffff:10.0.0.1\n", ""},
                        Case{"refer: 127.1\n", ""},
                        Case{"refer: 127.0x1\n", ""},
                        Case{"refer: a.localhost.\n", ""},
                        Case{"refer: localhost.localdomain\nrefer: printer.LOCAL\n", ""},
                        Case{"Whois Server:\nwhois: second.example", "second.example:43"},  // an empty one is none
                        Case{"Registrar WHOIS Server: https://registrar.example/whois\n", ""},
                        Case{"Whois Server: bad host.example\n", ""},
                        Case{"Whois Server: \x1B[2Jevil.example\n", ""},
                        Case{"Whois Server: host.example:0\n", ""},
                        Case{"Whois Server: localhost\n", ""},
                        Case{"see whois: whois.example in the text", ""},
                        Case{"", ""}}) {
    const auto referral = ReadWhoisAnswer(c.text).referral;
    EXPECT_EQ(referral ? referral->host + ":" + std::to_string(referral->port) : "", c.server) << c.text;
  }
}

}  // namespace
}  // namespace quillcast::domain
