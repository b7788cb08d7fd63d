// TLS with certificates made here: the good one is taken, every other is refused in words, and nothing leaves in clear.
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <sys/prctl.h>

#include <filesystem>
#include <fstream>

#include "net/connect.h"
#include "smtp/certificates.h"
#include "smtp/client/client.h"
#include "smtp/client/connection.h"
#include "smtp/letters.h"
#include "smtp/scripted_server.h"

namespace quillcast::smtp {
namespace {

class ClientTls : public testing::Test {
 protected:
  void SetUp() override {
    ca_ = Make("Test Authority", "", nullptr, -kHour, kHour);
    ca_file_ = std::filesystem::path(testing::TempDir()) / ("ca-" + std::to_string(::getpid()) + ".pem");
    std::FILE* file = std::fopen(ca_file_.c_str(), "w");
    ASSERT_NE(file, nullptr);
    PEM_write_X509(file, ca_.certificate);
    std::fclose(file);
  }
  void TearDown() override {
    Free(ca_);
    std::filesystem::remove(ca_file_);
  }

  ClientOptions OptionsFor(const std::string& host, std::uint16_t port) const {
    ClientOptions options;
    options.servers = {{host, port}};
    options.timeout = std::chrono::seconds(5);
    options.ca_file = ca_file_;
    options.sign_in = true;
    options.user = "ada";
    options.password = platform::Secret("s3cret");
    return options;
  }

  Certificate ca_;
  std::filesystem::path ca_file_;
};

// A server with STARTTLS, or with TLS at once, that takes the password and keeps what it heard in clear.
struct TlsServer {
  TlsServer(const Certificate& certificate, bool at_once_)
      : context(ServerContext(certificate)), at_once(at_once_), server([this](Peer& peer, int) { Serve(peer); }) {}

  void Serve(Peer& peer) {
    if (!at_once) {
      peer.Say("220 ESMTP\r\n");
      clear.push_back(peer.Line());
      peer.Say("250-mx\r\n250-AUTH PLAIN\r\n250 STARTTLS\r\n");
      clear.push_back(peer.Line());
      peer.Say("220 go\r\n");
    }
    if (!peer.StartTls(context.get())) return peer.Stall();
    resumed.push_back(peer.resumed());
    if (at_once) peer.Say("220 ESMTP\r\n");
    for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
      if (line.starts_with("AUTH")) auth = line;
      peer.Say(line.starts_with("EHLO")   ? "250-mx\r\n250 AUTH PLAIN\r\n"
               : line.starts_with("AUTH") ? "235 ok\r\n"
                                          : "221 bye\r\n");
      if (line == "QUIT") return;
    }
  }

  Context context;
  bool at_once;
  std::vector<std::string> clear;
  std::string auth;
  std::vector<bool> resumed;
  ScriptedServer server;  // last: its thread ends before what it writes to goes
};

Outcome TestAccount(const ClientOptions& options) {
  const platform::SystemClock clock;
  const platform::CancelToken cancel;
  Letters silent(0);
  return Client(options, clock, cancel).Test(silent);
}

TEST_F(ClientTls, TakesWhatIsTrustedAndRefusesTheRestInWords) {
  struct Case {
    const char *host, *name;
    bool signed_by_ca;
    long from, to;
    const char* why;  // nullptr when it is trusted
  };
  for (const Case& c : std::initializer_list<Case>{
           {"localhost", "DNS:localhost", true, -kHour, kHour, nullptr},
           {"127.0.0.1", "IP:127.0.0.1", true, -kHour, kHour, nullptr},
           {"m\u00FCller.localhost", "DNS:xn--mller-kva.localhost", true, -kHour, kHour, nullptr},
           {"localhost.", "DNS:localhost", true, -kHour, kHour, nullptr},
           {"mail.box.localhost", "DNS:*.box.localhost", true, -kHour, kHour, nullptr},
           {"mail.box.localhost", "DNS:m*.box.localhost", true, -kHour, kHour, "another name"},
           {"mail.box.localhost", "DNS:*.localhost", true, -kHour, kHour, "another name"},
           {"localhost", "", true, -kHour, kHour, "another name"},  // the common name alone says so
           {"localhost", "DNS:mx.example", true, -kHour, kHour, "another name"},
           {"127.0.0.1", "IP:127.0.0.2", true, -kHour, kHour, "another name"},
           {"127.0.0.1", "DNS:127.0.0.1", true, -kHour, kHour, "another name"},
           {"localhost", "DNS:localhost", true, -2 * kHour, -kHour, "expired"},
           {"localhost", "DNS:localhost", true, kHour, 2 * kHour, "not yet valid"},
           {"localhost", "DNS:localhost", false, -kHour, kHour, "self-signed"}}) {
    for (const bool at_once : {false, true}) {
      SCOPED_TRACE(std::string(c.host) + " " + c.name + " " + (c.why != nullptr ? c.why : "good"));
      const Certificate certificate = Make(c.host, c.name, c.signed_by_ca ? &ca_ : nullptr, c.from, c.to);
      Outcome outcome;
      TlsServer tls(certificate, at_once);
      {
        ClientOptions options = OptionsFor(c.host, tls.server.port());
        options.security = at_once ? Security::kTls : Security::kAutomatic;
        outcome = TestAccount(options);
      }
      EXPECT_EQ(outcome.code, c.why == nullptr ? ResultCode::kSuccess : ResultCode::kGreetingRefused);
      if (c.why != nullptr) {
        EXPECT_NE(outcome.reason.find(c.why), std::string::npos) << outcome.reason;
        EXPECT_NE(outcome.reason.find(c.host), std::string::npos) << outcome.reason;
      }
      EXPECT_EQ(tls.auth, c.why == nullptr ? "AUTH PLAIN AGFkYQBzM2NyZXQ=" : "");
      if (!at_once) {
        EXPECT_EQ(tls.clear, (std::vector<std::string>{"EHLO [127.0.0.1]", "STARTTLS"}));
      }
      Free(certificate);
    }
  }
}

TEST_F(ClientTls, WantsTheWholeChain) {
  const Certificate between = Make("Test Authority 2", "", &ca_, -kHour, kHour);
  const Certificate certificate = Make("localhost", "DNS:localhost", &between, -kHour, kHour);
  for (const bool whole : {true, false}) {
    TlsServer tls(certificate, false);
    if (whole) SSL_CTX_add1_chain_cert(tls.context.get(), between.certificate);
    const Outcome outcome = TestAccount(OptionsFor("localhost", tls.server.port()));
    EXPECT_EQ(outcome.code, whole ? ResultCode::kSuccess : ResultCode::kGreetingRefused) << outcome.reason;
    const bool unknown = outcome.reason.find("authority that this computer does not know") != std::string::npos;
    EXPECT_EQ(unknown, !whole) << outcome.reason;
    EXPECT_EQ(tls.auth.empty(), !whole);
  }
  Free(certificate);
  Free(between);
}

TEST_F(ClientTls, TakesSafeVersionsAndResumesTheSessionOfTheLastConnection) {
  const Certificate certificate = Make("localhost", "DNS:localhost", &ca_, -kHour, kHour);
  for (const int version : {TLS1_VERSION, TLS1_1_VERSION, TLS1_2_VERSION, TLS1_3_VERSION}) {
    SCOPED_TRACE(version);
    const bool safe = version >= TLS1_2_VERSION;
    TlsServer tls(certificate, false);
    SSL_CTX_set_min_proto_version(tls.context.get(), version);
    SSL_CTX_set_max_proto_version(tls.context.get(), version);
    if (!safe) SSL_CTX_set_security_level(tls.context.get(), 0);
    const platform::SystemClock clock;
    const platform::CancelToken cancel;
    Letters silent(0);
    Client client(OptionsFor("localhost", tls.server.port()), clock, cancel);
    for (int n = 0; n < 2; ++n) {
      const Outcome outcome = client.Test(silent);
      EXPECT_EQ(outcome.code, safe ? ResultCode::kSuccess : ResultCode::kGreetingRefused);
      EXPECT_EQ(outcome.reason.find("older than 1.2") != std::string::npos, !safe) << outcome.reason;
    }
    EXPECT_EQ(tls.resumed, safe ? (std::vector<bool>{false, true}) : std::vector<bool>());
    EXPECT_EQ(tls.auth.empty(), !safe);
  }
  Free(certificate);
}

TEST_F(ClientTls, SaysThatAPortDoesNotSpeakTls) {
  Outcome outcome;
  {
    const ScriptedServer server([](Peer& peer, int) {
      peer.Say("220 ESMTP\r\n");
      peer.Stall();
    });
    ClientOptions options = OptionsFor("localhost", server.port());
    options.security = Security::kTls;
    outcome = TestAccount(options);
  }
  EXPECT_EQ(outcome.code, ResultCode::kGreetingRefused);
  EXPECT_NE(outcome.reason.find("does not answer with TLS"), std::string::npos) << outcome.reason;
}

// A server that goes silent in the midst of it is waited for as for a reply; one that hangs up is a way that is lost.
TEST_F(ClientTls, TellsAHandshakeThatBreaksOffFromOneThatIsRefused) {
  struct Case {
    const char* what;
    std::function<void(Peer&)> breaks_off;
    ResultCode code;
    bool is_of_way;
  };
  for (const Case& c :
       {Case{"silent", [](Peer& peer) { peer.Stall(); }, ResultCode::kReplyTimeout, false},
        Case{"hangs up", [](Peer& peer) { peer.Octets(1), peer.HangUp(); }, ResultCode::kConnectionLost, true},
        Case{"resets", [](Peer& peer) { peer.Reset(); }, ResultCode::kConnectionLost, true},
        Case{"hangs up in its first record",
             [](Peer& peer) { peer.Octets(1), peer.Say("\x16\x03\x03"), peer.HangUp(); }, ResultCode::kConnectionLost,
             true},
        Case{"refuses", [](Peer& peer) { peer.Octets(1), peer.Say(std::string("\x15\x03\x03\0\2\2\x28", 7)); },
             ResultCode::kGreetingRefused, false}}) {
    for (const bool at_once : {true, false}) {
      SCOPED_TRACE(std::string(c.what) + (at_once ? " at once" : " behind STARTTLS"));
      const ScriptedServer server([&](Peer& peer, int) {
        if (!at_once) {
          peer.Say("220 ESMTP\r\n");
          peer.Line();
          peer.Say("250-mx\r\n250 STARTTLS\r\n");
          peer.Line();
          peer.Say("220 go\r\n");
        }
        c.breaks_off(peer);
      });
      ClientOptions options = OptionsFor("localhost", server.port());
      options.security = at_once ? Security::kTls : Security::kStartTls;
      options.timeout = std::chrono::seconds(1);
      const Outcome outcome = TestAccount(options);
      EXPECT_EQ(outcome.code, c.code);
      EXPECT_EQ(IsOfWay(outcome), c.is_of_way);
      EXPECT_FALSE(outcome.reason.empty());
    }
  }
}

// A session that is resumed has no certificate looked at, so it may serve the name alone that it was made for.
TEST_F(ClientTls, ResumesASessionForItsOwnHostOnly) {
  const Certificate certificate = Make("localhost", "DNS:localhost", &ca_, -kHour, kHour);
  {
    const Context server_context = ServerContext(certificate);
    SSL_CTX_set_max_proto_version(server_context.get(), TLS1_2_VERSION);  // the session is there with the handshake
    const ScriptedServer server([&](Peer& peer, int) {
      if (peer.StartTls(server_context.get())) peer.Stall();
    });
    const auto context = net::TlsContext::ForClient(ca_file_);
    ASSERT_TRUE(context);
    const platform::SystemClock clock;
    const platform::CancelToken cancel;
    const net::Patience patience{clock, cancel, platform::Stop::kStop,
                                 net::Deadline::After(clock.Monotonic(), std::chrono::seconds(5))};
    const auto here = *net::ParseIpAddress("127.0.0.1");
    for (const auto& [host, taken] : {std::pair{"localhost", true}, std::pair{"mx.example", false}}) {
      auto socket = net::Connect(std::span(&here, 1), server.port(), patience);
      ASSERT_TRUE(socket);
      net::Stream stream(*std::move(socket));
      ASSERT_TRUE(stream.BeginTls(**context, host));
      auto done = stream.ShakeHands();
      for (; done && !*done; done = stream.ShakeHands()) {
        const pollfd wanted = stream.WaitsFor(false);
        ASSERT_TRUE(net::Wait(wanted.fd, wanted.events, patience));
      }
      EXPECT_EQ(static_cast<bool>(done), taken) << host;
      stream.Close();
    }
  }
  Free(certificate);
}

TEST(NoCoreDump, LastsAsLongAsAClientWithAPassword) {
  const auto may_dump = [] { return ::prctl(PR_GET_DUMPABLE); };
  const platform::SystemClock clock;
  const platform::CancelToken cancel;
  ClientOptions options;
  const Client without(options, clock, cancel);
  EXPECT_EQ(may_dump(), 1);
  options.password = platform::Secret("s3cret");
  std::optional<Client> first(std::in_place, options, clock, cancel);
  std::optional<Client> second(std::in_place, options, clock, cancel);
  first.reset();
  EXPECT_EQ(may_dump(), 0);
  second.reset();
  EXPECT_EQ(may_dump(), 1);
}

// Somebody on the way takes the offer of TLS out, or puts words of their own behind the server's last one in clear.
TEST_F(ClientTls, SendsNothingInClearToWhoMeddles) {
  struct Case {
    const char *offers, *to_starttls;
    ResultCode code;
    const char* words;
  };
  for (const Case& c :
       {Case{"250-mx\r\n250 AUTH PLAIN\r\n", "", ResultCode::kGreetingRefused, "does not offer STARTTLS"},
        Case{"250-mx\r\n250 STARTTLS\r\n", "454 not now\r\n", ResultCode::kGreetingRefused, "STARTTLS"},
        Case{"250-mx\r\n250 STARTTLS\r\n", "220 go\r\n250-mx\r\n250 AUTH PLAIN\r\n", ResultCode::kBadResponse,
             "in clear"}}) {
    std::vector<std::string> clear;
    Outcome outcome;
    {
      const ScriptedServer server([&](Peer& peer, int) {
        peer.Say("220 ESMTP\r\n");
        clear.push_back(peer.Line());
        peer.Say(c.offers);
        clear.push_back(peer.Line());
        peer.Say(c.to_starttls);
        peer.Stall();
      });
      ClientOptions options = OptionsFor("localhost", server.port());
      options.security = Security::kStartTls;
      outcome = TestAccount(options);
    }
    EXPECT_EQ(outcome.code, c.code) << c.to_starttls;
    EXPECT_NE(outcome.reason.find(c.words), std::string::npos) << outcome.reason;
    clear.erase(std::remove(clear.begin(), clear.end(), ""), clear.end());
    for (const std::string& line : clear) EXPECT_TRUE(line == "STARTTLS" || line.starts_with("EHLO")) << line;
  }
}

// A name server, or whoever answers in its place, can make any name lead to this computer, where others listen as well.
TEST(ClientInClear, TrustsThisComputerByItsNameOnly) {
  struct Case {
    const char* host;
    bool trusted;
  };
  for (const Case& c : {Case{"127.0.0.1", true}, Case{"localhost", true}, Case{"relay.example", false}}) {
    for (const bool offered : {true, false}) {
      SCOPED_TRACE(std::string(c.host) + (offered ? ", sign-in offered" : ", not offered"));
      const ScriptedServer server([&](Peer& peer, int) {
        peer.Say("220 ESMTP\r\n");
        peer.Line();
        peer.Say(offered ? "250-mx\r\n250 AUTH PLAIN\r\n" : "250 mx\r\n");
        if (peer.Line().starts_with("AUTH")) peer.Say("235 ok\r\n");
      });
      ClientOptions options;
      options.sign_in = options.send_without_auth = true;
      options.user = "ada";
      options.security = offered ? Security::kAutomatic : Security::kNone;
      const platform::SystemClock clock;
      const platform::CancelToken cancel;
      SendWindow window;
      JobQueue jobs(cancel);
      Letters silent(0);
      jobs.Begin(silent);
      Surroundings around{options, clock, cancel, window, jobs, {}, &silent};
      const auto here = *net::ParseIpAddress("127.0.0.1");
      const net::Patience patience{clock, cancel, platform::Stop::kStop, net::Deadline::Never()};
      auto socket = net::Connect(std::span(&here, 1), server.port(), patience);
      ASSERT_TRUE(socket);
      Connection connection(around, net::Stream(*std::move(socket)), c.host, false, 0);
      while (!connection.ready() && !connection.closed()) connection.Wait(net::Deadline::Never());
      EXPECT_EQ(connection.ready(), c.trusted);
    }
  }
}

}  // namespace
}  // namespace quillcast::smtp
