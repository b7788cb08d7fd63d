// The client's mechanisms against the mailbox's: the right password signs in, every other is refused.
#include <gtest/gtest.h>

#include "smtp/mailbox/server_mechanism.h"
#include "smtp/sasl/sasl_mechanism.h"

namespace quillcast::smtp {
namespace {

// The code that ends the exchange; 0 when the client breaks it off.
int Meet(SaslMechanism& client, ServerMechanism& server) {
  auto response = client.Start();
  if (!response) {
    auto first = client.Step(server.Begin());
    if (!first) return 0;
    response = *std::move(first);
  }
  for (int n = 0; n < 5; ++n) {
    const ServerStep step = server.Step(response->view());
    if (!step.challenge) return step.reply.code == 235 && !client.Finish() ? 0 : step.reply.code;
    auto next = client.Step(*step.challenge);
    if (!next) return 0;
    response = *std::move(next);
  }
  return -1;
}

TEST(SaslBothSides, AgreeOnWhoSignsIn) {
  struct Mechanism {
    const char* name;
    std::unique_ptr<SaslMechanism> (*make)(const Credentials&);
  };
  const std::string client_nonce(24, 'c');
  const std::string server_nonce(24, 's');
  for (const Mechanism& m : {Mechanism{"PLAIN", MakePlain}, Mechanism{"login", MakeLogin},
                             Mechanism{"CRAM-MD5", MakeCramMd5}, Mechanism{"SCRAM-SHA-256", MakeScramSha256}}) {
    for (const auto& [user, password, code] :
         {std::tuple{"a=d,a", "pass w\u00F6rd", 235}, std::tuple{"a=d,a", "pass w\u00F6rd ", 535},
          std::tuple{"a=d,a", "", 535}, std::tuple{"ada", "pass w\u00F6rd", 535}}) {
      SCOPED_TRACE(std::string(m.name) + " " + user + " " + password);
      const auto server = MakeServerMechanism(m.name, {"a=d,a", "pass w\u00F6rd", server_nonce});
      ASSERT_TRUE(server);
      EXPECT_EQ(Meet(*m.make({user, password, client_nonce}), *server), code);
    }
  }
}

TEST(SaslBothSides, TheServerRefusesWhatIsNoScram) {
  for (const char* first :
       {"", "n", "n,", "n,,", "n,,n=ada", "n,,r=x,n=ada", "p=tls-unique,,n=ada,r=x", "n,,n=ada,r="}) {
    const auto server = MakeServerMechanism("SCRAM-SHA-256", {"ada", "x", "0123456789"});
    EXPECT_EQ(server->Step(first).reply.code, 501) << first;
  }
  for (const char* last : {"", "c=biws", "c=biws,r=x,p=AAAA", "c=eSws,r=xNTY3ODk=,p=AAAA", "c=biws,r=xNTY3ODk="}) {
    const auto server = MakeServerMechanism("SCRAM-SHA-256", {"ada", "x", "0123456789"});
    EXPECT_EQ(server->Step("n,,n=ada,r=x").challenge.value_or(""), "r=xNTY3ODk=,s=MDEyMzQ=,i=4096");
    EXPECT_EQ(server->Step(last).reply.code, 501) << last;
  }
}

}  // namespace
}  // namespace quillcast::smtp
