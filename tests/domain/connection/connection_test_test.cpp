// The connection test against servers of every kind: what each means for the account, and what is written down of it.
#include "domain/connection/connection_test.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <thread>

#include "domain/connection/connection_facts.h"
#include "domain/connection/connection_input.h"
#include "domain/connection/connection_meaning.h"
#include "domain/connection/connection_verdict.h"
#include "platform/text.h"
#include "smtp/certificates.h"
#include "smtp/scripted_server.h"
#include "support/memory.h"
#include "support/temporary_folder.h"

namespace quillcast::domain {
namespace {

using namespace std::chrono_literals;
using smtp::Certificate;
using smtp::kHour;
using smtp::Peer;
using testing::HasSubstr;

enum class Then { kGoesOn, kHangsUp, kHangsUpAtHello, kHangsUpAtStartTls, kStalls, kDrips, kFloods };

// What a server says where. `greeting` may be anything; what follows it is `then`.
struct Script {
  bool tls_at_once = false;
  std::string greeting = "220 mx ESMTP\r\n";
  Then then = Then::kGoesOn;
  std::chrono::milliseconds after{};                                           // the greeting comes
  std::string clear = "250-mx\r\n250-PIPELINING\r\n250 AUTH LOGIN PLAIN\r\n";  // to EHLO; empty: it stalls there
  std::string starttls = "220 go\r\n";
  bool text_goes_on = false;  // after STARTTLS
  bool tls_stalls = false;
  std::string secure = "250-mx\r\n250-SIZE 1000\r\n250 AUTH LOGIN PLAIN\r\n";
  std::string quit = "221 bye\r\n";
};

constexpr const char* kOffersTls = "250-mx\r\n250 STARTTLS\r\n";
constexpr const char* kOffersBoth = "250-mx\r\n250-AUTH LOGIN\r\n250 STARTTLS\r\n";

void Drip(Peer& peer, const std::string& text) {
  for (int turn = 0; turn < 200 && peer.Say(text); ++turn) std::this_thread::sleep_for(20ms);
}

void Flood(Peer& peer, const std::string& text) {
  constexpr std::size_t kBlock = std::size_t{64} * 1024;
  constexpr int kBlocks = 1600;  // 100 MiB
  std::string block;
  while (block.size() < kBlock) block += text;
  for (int n = 0; n < kBlocks && peer.Say(block); ++n) {
  }
}

void Serve(Peer& peer, const Script& script, SSL_CTX* context) {
  if (script.tls_at_once && !peer.StartTls(context)) return peer.Stall();
  bool secure = script.tls_at_once;
  switch (script.then) {
    case Then::kDrips:
      return Drip(peer, script.greeting);
    case Then::kFloods:
      return Flood(peer, script.greeting);
    default:
      break;
  }
  std::this_thread::sleep_for(script.after);
  if (!script.greeting.empty()) peer.Say(script.greeting);
  if (script.then == Then::kStalls) return peer.Stall();
  if (script.then == Then::kHangsUp) return;
  for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
    if (line.starts_with("EHLO") || line.starts_with("HELO")) {
      if (script.then == Then::kHangsUpAtHello) return;
      const std::string& reply = secure ? script.secure : script.clear;
      if (reply.empty()) return peer.Stall();
      peer.Say(reply);
    } else if (line == "STARTTLS") {
      if (script.then == Then::kHangsUpAtStartTls) return;
      peer.Say(script.starttls);
      if (!script.starttls.starts_with("220")) continue;
      if (script.text_goes_on) {
        peer.Octets(1);  // of the client's handshake
        peer.Say("500 what\r\n");
        return peer.Stall();
      }
      if (script.tls_stalls || !peer.StartTls(context)) return peer.Stall();
      secure = true;
    } else if (line == "QUIT" && script.quit.empty()) {
      return peer.Stall();
    } else {
      peer.Say(line == "QUIT" ? script.quit : "500 what\r\n");
      if (line == "QUIT") return;
    }
  }
}

class ConnectionTests : public testing::Test {
 protected:
  ConnectionTests() : ca_(smtp::Make("Test Authority", "", nullptr, -kHour, kHour)) {
    std::FILE* file = std::fopen(CaFile().c_str(), "w");
    PEM_write_X509(file, ca_.certificate);
    std::fclose(file);
  }
  ~ConnectionTests() override { smtp::Free(ca_); }

  std::string CaFile() const { return folder_ / "ca.pem"; }

  // Tries a server that follows the script, with a certificate that is good but for what is changed.
  ConnectionTest Try(const Script& script, const char* security, const char* host, const Certificate& certificate,
                     int newest = 0) {
    const auto context = smtp::ServerContext(certificate);
    if (newest != 0) SSL_CTX_set_security_level(context.get(), 0);
    if (newest != 0) SSL_CTX_set_min_proto_version(context.get(), newest);
    if (newest != 0) SSL_CTX_set_max_proto_version(context.get(), newest);
    const smtp::ScriptedServer server([&](Peer& peer, int) { Serve(peer, script, context.get()); });
    port = server.port();
    return TryPort(host, security, server.port());
  }
  ConnectionTest Try(const Script& script, const char* security, const char* host = "localhost") {
    const Certificate good = smtp::Make("mx", "DNS:localhost,IP:127.0.0.1", &ca_, -kHour, kHour);
    auto test = Try(script, security, host, good);
    smtp::Free(good);
    return test;
  }
  ConnectionTest TryPort(const char* host, const char* security, std::uint16_t at) {
    auto options = *TestOptions(host, std::to_string(at), security, 1s);
    options.ca_file = CaFile();
    return TestConnection(options, clock_, cancel_);
  }

  std::string Words(const ConnectionTest& test) const {
    std::string words;
    for (const auto& sentence : MeaningOf(test)) words += sentence.InEnglish() + " ";
    return platform::ReplaceAll(words, std::to_string(port), "N");
  }

  test::TemporaryFolder folder_;
  platform::SystemClock clock_;
  platform::CancelToken cancel_;
  Certificate ca_;
  std::uint16_t port = 0;
};

void ExpectPrintable(const std::string& text) { EXPECT_EQ(text, platform::Printable(text, text.size())); }

// Nothing of it could do harm to a terminal, and all of it is short enough to be read.
void ExpectHarmless(const ConnectionTest& test) {
  for (const auto line : platform::Split(test.report, '\n'))
    ExpectPrintable(std::string(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line));
  for (const auto& sentence : MeaningOf(test)) ExpectPrintable(sentence.InEnglish());
  for (const auto& fact : FactsOf(test)) ExpectPrintable(fact.value.InEnglish());
  EXPECT_LT(test.report.size(), 2U << 20);
}

TEST_F(ConnectionTests, TellsWhatEachServerMeansForTheAccount) {
  struct Case {
    const char* verdict;
    Script script;
    const char* security;
    int code;
    const char* words;
    const char* host = "localhost";
  };
  const std::string escape =
      "220 \x1B[2J\x1B]0;x\x07 \xC2\x9B"
      "1m\r\n";
  for (const Case& c : std::initializer_list<Case>{
           {"wants-starttls", Script{.clear = kOffersTls}, "Automatic", 0,
            "This server wants STARTTLS on port N before it lets you sign in. In the account: port N, Security "
            "STARTTLS, "
            "and Mode AUTH LOGIN for signing in. "},
           {"wants-starttls", {.clear = kOffersTls}, "None", 0, "This server wants STARTTLS on port N before"},
           {"starttls", Script{.clear = kOffersBoth}, "STARTTLS", 0,
            "encrypts by STARTTLS on port N and lets you sign in with LOGIN, PLAIN."},
           {"tls", {.tls_at_once = true}, "TLS", 0, "speaks TLS from the first byte on port N"},
           {"in-clear", {}, "Automatic", 0, "which is no harm: it is this computer itself."},
           {"in-clear", Script{}, "Automatic", 0, "speaks plain text alone on port N: a password would travel in clear",
            "0.0.0.0"},
           {"in-clear", {}, "None", 0, "alone on port N: a password travels in clear. Providers", "0.0.0.0"},
           {"in-clear", {.clear = kOffersBoth}, "None", 0, "though it offers STARTTLS: a password would", "0.0.0.0"},
           {"no-sign-in-in-clear", {.clear = "250 mx\r\n"}, "Automatic", 0, "offers no way to sign in"},
           {"no-sign-in", Script{.clear = kOffersTls, .secure = "250 mx\r\n"}, "Automatic", 0,
            "encrypts on port N and offers no way"},
           {"unknown-sign-in", Script{.clear = "250-mx\r\n250 AUTH GSSAPI XFOO\r\n"}, "Automatic", 0,
            "with GSSAPI, XFOO alone"},
           {"parts-badly", {.quit = "550 stay\r\n"}, "Automatic", 6, "does not part as it should"},
           {"parts-badly", Script{.clear = kOffersTls, .quit = ""}, "Automatic", 6,
            "In the account: port N, Security STARTTLS, and Mode AUTH LOGIN for signing in. It does not part as it "
            "should,"},
           {"speaks-tls", Script{.tls_at_once = true}, "None", 27,
            "speaks TLS from the first byte on port N, where plain text was expected. In the account set Security to "
            "TLS."},
           {"speaks-text", {}, "TLS", 5, "speaks plain text on port N, where TLS was expected."},
           {"no-starttls", {}, "STARTTLS", 5, "does not offer STARTTLS on port N."},
           {"starttls-refused", Script{.clear = kOffersTls, .starttls = "454 4.7.0 no\r\n"}, "Automatic", 5,
            "and then refuses it."},
           {"text-after-starttls", Script{.clear = kOffersTls, .text_goes_on = true}, "STARTTLS", 5,
            "agrees to STARTTLS on port N and then goes on in plain text."},
           {"text-after-starttls", Script{.clear = kOffersTls, .starttls = "220 go\r\n250 more\r\n"}, "STARTTLS", 18,
            "agrees to STARTTLS on port N and then goes on in plain text."},
           {"turned-away-for-now", {.greeting = "421 4.3.2 busy\r\n"}, "Automatic", 5, "for now: 421 4.3.2 busy."},
           {"turned-away-for-now", {.clear = "421 busy\r\n"}, "Automatic", 5, "for now: 421 busy."},
           {"turned-away", Script{.greeting = "554 5.7.1 not you\r\n"}, "Automatic", 5,
            "wants no connection from here: 554 5.7.1 not you."},
           {"fetches-mail", {.greeting = "+OK POP3 ready\r\n"}, "Automatic", 18, "mail is fetched from"},
           {"fetches-mail", {.greeting = "* OK IMAP4rev1 ready\r\n"}, "Automatic", 18, "mail is fetched from"},
           {"no-mail-server", {.greeting = "SSH-2.0-Server\r\n"}, "Automatic", 18, "on port N is no mail server."},
           {"no-mail-server", {.greeting = "250 ok\r\n"}, "Automatic", 18, "on port N is no mail server."},
           {"no-mail-server", Script{.greeting = "220-more\r\n", .then = Then::kFloods}, "Automatic", 18,
            "is no mail server."},
           {"no-mail-server", {.greeting = "x", .then = Then::kFloods}, "Automatic", 18, "is no mail server."},
           {"no-mail-server", Script{.greeting = "\xFF\xFD\x18login: ", .then = Then::kHangsUp}, "Automatic", 16,
            "is no mail server."},
           {"no-mail-server", {.greeting = "login: ", .then = Then::kStalls}, "Automatic", 27, "is no mail server."},
           {"odd-answer", Script{.clear = std::string("250-a\x1B[2J\r\nb\x07\r\n")}, "Automatic", 18,
            "greets, and then answers on port N what is no answer of a mail server."},
           {"odd-answer", {.clear = "354 go on\r\n"}, "Automatic", 18, "is no answer of a mail server."},
           {"odd-answer", {.clear = kOffersTls, .starttls = "go\r\n"}, "Automatic", 18, "is no answer of a mail"},
           {"hello-refused", {.clear = "550 go away\r\n"}, "Automatic", 5, "greeting of this computer: 550 go away."},
           {"silent", {.greeting = "", .then = Then::kStalls}, "Automatic", 27, "and does not greet."},
           {"silent", {.greeting = "", .then = Then::kStalls}, "TLS", 27, "and does not greet."},
           {"silent", {.greeting = "2", .then = Then::kDrips}, "Automatic", 27, "and does not greet."},
           {"silent", Script{.greeting = "220-mx\r\n220-", .then = Then::kStalls}, "Automatic", 27,
            "What came of its answer: \"220-mx\"."},
           {"stopped-answering", {.clear = ""}, "Automatic", 27, "stopped answering"},
           {"stopped-answering", {.clear = kOffersTls, .tls_stalls = true}, "Automatic", 27, "stopped answering"},
           {"hung-up", Script{.greeting = "", .then = Then::kHangsUp}, "Automatic", 16,
            "ended the connection without a word."},
           {"broke-off", Script{.greeting = "421 Too many", .then = Then::kHangsUp}, "Automatic", 16,
            "in the middle of the conversation. What came of its answer: \"421 Too many\"."},
           {"broke-off", {.then = Then::kHangsUpAtHello}, "Automatic", 16, "ended the connection in the middle of"},
           {"broke-off", Script{.then = Then::kHangsUpAtStartTls, .clear = kOffersTls}, "STARTTLS", 16,
            "in the middle of the conversation."},
           {"unknown-sign-in",
            Script{.greeting = escape, .clear = "250-mx\r\n250-X\x1B[2J\r\n250 AUTH LOGIN\x1B[1m\r\n"}, "Automatic", 0,
            "with LOGIN?[1m alone"},
       }) {
    SCOPED_TRACE(std::string(c.verdict) + " " + c.security + " " + c.script.greeting.substr(0, 20));
    const auto test = Try(c.script, c.security, c.host);
    EXPECT_EQ(WordOf(VerdictOf(test)), c.verdict) << test.outcome.reason << test.report;
    EXPECT_THAT(Words(test), HasSubstr(c.words));
    EXPECT_EQ(static_cast<int>(test.outcome.code), c.code);
    EXPECT_EQ(test.report.starts_with("Error " + std::to_string(c.code) + ":"), c.code != 0) << test.report;
    ExpectHarmless(test);
  }
}

TEST_F(ConnectionTests, KeepsNoMoreOfAnOfferThanIsRead) {
  std::string reply;
  for (int line = 0; line < 190; ++line) {
    reply += "250-AUTH";
    for (int way = 0; way < 400; ++way) reply += " W" + std::to_string(line * 400 + way);
    reply += "\r\n";
  }
  const auto test = Try({.clear = reply + "250 X" + std::string(3000, 'x') + "\r\n"}, "Automatic");
  EXPECT_TRUE(test.Works()) << test.outcome.reason;
  ASSERT_TRUE(test.in_clear);
  EXPECT_EQ(test.in_clear->sign_in.size(), 50U);
  EXPECT_LT(test.in_clear->extensions.front().size(), 210U);
  EXPECT_LT(Words(test).size(), 500U);
  ExpectHarmless(test);
}

TEST_F(ConnectionTests, TellsWhatIsWrongWithACertificate) {
  struct Case {
    const char *verdict, *name;
    bool signed_by_ca;
    long from, to;
    int newest;
    const char* words;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"certificate-expired", "DNS:localhost", true, -48 * kHour, -24 * kHour, 0,
            "The certificate of localhost expired on 2"},
           {"certificate-not-yet-valid", "DNS:localhost", true, 24 * kHour, 48 * kHour, 0, "holds from 2"},
           {"certificate-other-name", "DNS:mx.example,IP:::1", true, -kHour, kHour, 0,
            "is for another name: mx.example, ::1."},
           {"certificate-other-name", "DNS:*.hoster.example", true, -kHour, kHour, 0,
            "another name: *.hoster.example. If that is your provider's, put the name that the server has there"},
           {"certificate-other-name", "", true, -kHour, kHour, 0, "names no server."},
           {"certificate-self-signed", "DNS:localhost", false, -kHour, kHour, 0, "signed by itself alone"},
           {"tls-too-old", "DNS:localhost", true, -kHour, kHour, TLS1_1_VERSION, "older than 1.2"}}) {
    for (const bool at_once : {false, true}) {
      SCOPED_TRACE(std::string(c.verdict) + (at_once ? " at once" : " by STARTTLS"));
      const Certificate shown = smtp::Make("mx\x1B[2J", c.name, c.signed_by_ca ? &ca_ : nullptr, c.from, c.to);
      const Script script{.tls_at_once = at_once, .clear = kOffersTls};
      const auto test = Try(script, at_once ? "TLS" : "Automatic", "localhost", shown, c.newest);
      EXPECT_EQ(WordOf(VerdictOf(test)), c.verdict) << test.outcome.reason;
      EXPECT_THAT(Words(test), HasSubstr(c.words));
      EXPECT_EQ(test.report.find("Error 5: "), 0U);
      EXPECT_EQ(test.tls.has_value() && test.tls->certificate.has_value(), c.newest == 0);
      ExpectHarmless(test);
      smtp::Free(shown);
    }
  }
  const Certificate other = smtp::Make("Stranger", "", nullptr, -kHour, kHour);
  const Certificate shown = smtp::Make("mx", "DNS:localhost", &other, -kHour, kHour);
  const auto test = Try({.tls_at_once = true}, "TLS", "localhost", shown);
  EXPECT_EQ(WordOf(VerdictOf(test)), "certificate-unknown-issuer");
  EXPECT_THAT(Words(test), HasSubstr("that this computer does not know: Stranger."));
  smtp::Free(shown);
  smtp::Free(other);
}

// Where no server is reached; those that would take a network of our own to come about are made up.
TEST_F(ConnectionTests, TellsWhyNoServerIsReached) {
  const auto made_up = [](smtp::ResultCode code, int error, net::NameFault fault = net::NameFault::kNone) {
    ConnectionTest test;
    test.server = {"mx.example", 25};
    test.outcome.code = code;
    test.name_fault = fault;
    test.addresses = {{*net::FromSystem(net::ToSystem({*net::ParseIpAddress("192.0.2.1"), 25}).get()), false, error}};
    return test;
  };
  const std::uint16_t closed = [] { return smtp::ScriptedServer([](Peer&, int) {}).port(); }();
  const auto unknown = TryPort("nobody.onion", "Automatic", 25);
  const auto refused = TryPort("localhost", "Automatic", closed);
  EXPECT_EQ(static_cast<int>(unknown.outcome.code), 17);
  EXPECT_EQ(static_cast<int>(refused.outcome.code), 9);
  EXPECT_EQ(refused.report, "Error 9: There was an error connecting to the SMTP mail server.\r\n");
  ASSERT_EQ(refused.addresses.size(), 2U);  // both were tried
  using enum smtp::ResultCode;
  for (const auto& [test, verdict, words] : std::vector<std::tuple<ConnectionTest, const char*, const char*>>{
           {unknown, "name-unknown", "No name server knows nobody.onion. "},
           {refused, "port-refused", "localhost is there, and nothing listens on its port "},
           {made_up(kHostNotFound, 0, net::NameFault::kNoSuchName), "name-unknown", "Check the spelling"},
           {made_up(kHostNotFound, 0, net::NameFault::kNoAddress), "name-without-address", "mx.example has no address"},
           {made_up(kHostNotFound, 0, net::NameFault::kNoServer), "no-name-server", "No name server can be reached"},
           {made_up(kHostNotFound, 0, net::NameFault::kServersFailed), "name-servers-failed", "failed, or refused,"},
           {made_up(kResolveTimeout, 0), "name-timed-out", "did not answer when they were asked for mx.example."},
           {made_up(kConnectFailed, EHOSTUNREACH), "unreachable", "The network does not lead to mx.example from here."},
           {made_up(kConnectTimeout, 0), "connect-timed-out",
            "mx.example did not answer on port 25. Many networks let nobody out to port 25. Try port 587."}}) {
    EXPECT_EQ(WordOf(VerdictOf(test)), verdict);
    EXPECT_THAT(Words(test), HasSubstr(words));
  }
}

std::string Listed(const ConnectionTest& test) {
  std::string lines;
  for (const auto& fact : FactsOf(test)) {
    const std::string value = fact.value.InEnglish();
    lines += fact.what.InEnglish() + ": " + (value.ends_with(" ms") ? "a while" : value) + "\n";
  }
  return lines;
}

TEST_F(ConnectionTests, WritesDownEachStep) {
  const auto test = Try({.clear = kOffersTls}, "Automatic", "127.0.0.1");
  EXPECT_EQ(test.report,
            "S: 220 mx ESMTP\r\nC: EHLO [127.0.0.1]\r\nS: 250-mx\r\nS: 250 STARTTLS\r\nC: STARTTLS\r\nS: 220 go\r\n"
            "C: EHLO [127.0.0.1]\r\nS: 250-mx\r\nS: 250-SIZE 1000\r\nS: 250 AUTH LOGIN PLAIN\r\nC: QUIT\r\n"
            "S: 221 bye\r\n");
  ASSERT_TRUE(test.tls && test.tls->certificate);
  const auto day = [](std::chrono::system_clock::time_point moment) {
    return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(moment.time_since_epoch()).count());
  };
  const auto now = clock_.Now();
  EXPECT_LT(test.tls->certificate->valid_from, now - std::chrono::minutes(59)) << day(now);
  EXPECT_GT(test.tls->certificate->valid_to, now + std::chrono::minutes(59)) << day(now);
  EXPECT_THAT(
      Listed(test),
      testing::MatchesRegex(
          "Server: 127.0.0.1:[0-9]+\nFinding the address: a while\nConnecting: a while\nWaiting for the greeting: a "
          "while\nSaying EHLO: a while\n"
          "Asking for STARTTLS: a while\nEncrypting .TLS.: a while\nSaying EHLO: a while\nParting .QUIT.: a while\n"
          "Address: 127.0.0.1:[0-9]+: connected\nEncryption: TLSv1.3, TLS_[A-Z0-9_]+\n"
          "Certificate for: localhost, 127.0.0.1\nIts name: mx\nIssued by: Test Authority\n"
          "Valid: [0-9-]+ to [0-9-]+\nTrusted: yes\nSigning in: LOGIN, PLAIN\nExtensions: SIZE 1000\n"
          "Signing in before TLS: not offered\nExtensions before TLS: STARTTLS\n"));
  const auto cut = Try({.clear = ""}, "Automatic");
  EXPECT_THAT(Listed(cut), HasSubstr(" ms; it ended here\nAddress: "));
}

// Each place where a server may be waited for, the second try under TLS among them.
TEST_F(ConnectionTests, EndsWithinASecondOfACancel) {
  struct Case {
    Script script;
    std::chrono::milliseconds after = 300ms;
    std::chrono::seconds patience = 30s;
    std::size_t servers = 1;
  };
  const Script silent{.greeting = "", .then = Then::kStalls};
  for (const Case& c : std::initializer_list<Case>{{silent},
                                                   {{.greeting = "x", .then = Then::kDrips}},
                                                   {{.clear = ""}},
                                                   {{.quit = ""}},
                                                   {silent, 1300ms, 1s},
                                                   {silent, 2300ms, 1s, 2}}) {
    const smtp::ScriptedServer server([&](Peer& peer, int) { Serve(peer, c.script, nullptr); });
    platform::CancelToken cancel;
    std::atomic<platform::Instant> asked;
    std::thread person([&] {
      std::this_thread::sleep_for(c.after);
      asked = clock_.Monotonic();
      cancel.Request();
    });
    auto options = *TestOptions("127.0.0.1", std::to_string(server.port()), "Automatic", c.patience);
    options.servers.resize(c.servers, options.servers.front());
    const auto test = TestConnection(options, clock_, cancel);
    person.join();
    EXPECT_LT(clock_.Monotonic() - asked.load(), 10s);
    EXPECT_EQ(test.report.find("Error 20: The operation cancelled."), 0U) << test.report;
    EXPECT_EQ(test.report.find("Error", 1), std::string::npos) << test.report;
    EXPECT_EQ(WordOf(VerdictOf(test)), "cancelled");
  }
}

// Two steps' worth, however many servers and steps there are.
TEST_F(ConnectionTests, EndsInTime) {
  const smtp::ScriptedServer server([&](Peer& peer, int) { Serve(peer, {.clear = ""}, nullptr); });
  auto options = *TestOptions("127.0.0.1", std::to_string(server.port()), "None", 1s);
  options.servers.resize(6, options.servers.front());
  const auto began = clock_.Monotonic();
  const auto test = TestConnection(options, clock_, cancel_);
  EXPECT_LT(clock_.Monotonic() - began, 5s);
  EXPECT_FALSE(test.Works());

  const smtp::ScriptedServer good([&](Peer& peer, int) { Serve(peer, {}, nullptr); });
  options.servers.resize(2);
  options.servers.push_back({"127.0.0.1", good.port()});
  options.servers.push_back({"2001:db8::1", 25});
  const auto silent = TestConnection(options, clock_, cancel_);
  EXPECT_EQ(WordOf(VerdictOf(silent)), "stopped-answering");
  EXPECT_EQ(good.connections(), 0);
  port = good.port();
  EXPECT_THAT(Words(silent), HasSubstr("There was no time left to try 127.0.0.1:N, [2001:db8::1]:25."));
}

// Of each server of a list what would be told of it alone: nothing of the others is in its report and verdict.
TEST_F(ConnectionTests, TellsOfOneServerAlone) {
  const Certificate good = smtp::Make("mx", "DNS:localhost,IP:127.0.0.1", &ca_, -kHour, kHour);
  const auto context = smtp::ServerContext(good);
  std::vector<std::unique_ptr<smtp::ScriptedServer>> running;
  const auto start = [&](const Script& script) {
    running.push_back(std::make_unique<smtp::ScriptedServer>(
        [script, &context](Peer& peer, int) { Serve(peer, script, context.get()); }));
    return smtp::Server{"localhost", running.back()->port()};
  };
  const auto works = start({});
  const auto parts_badly = start({.quit = "550 stay\r\n"});
  const auto refuses = start({.greeting = "554 no service for you\r\n", .then = Then::kHangsUp});
  const auto hangs_up = start({.greeting = "", .then = Then::kHangsUp});
  const auto silent = start({.greeting = "", .then = Then::kStalls});
  const auto stops = start({.clear = ""});
  const auto stops_late = start({.after = 700ms, .clear = ""});
  const auto greets_late = start({.after = 700ms});
  const auto refuses_tls = start({.clear = kOffersTls, .starttls = "454 no\r\n"});
  const auto waits_for_tls = start({.tls_at_once = true});
  const smtp::Server nowhere{"127.0.0.1", 1};  // nothing listens
  const smtp::Server unknown{"a..b", 25};
  struct Case {
    const char* verdict;
    std::size_t told;
    std::vector<smtp::Server> servers;
    std::vector<const char*> beside = {};  // what is said of the others
    const char* security = "Automatic";
  };
  const auto test_of = [&](std::vector<smtp::Server> servers, const char* security) {
    auto options = *TestOptions("127.0.0.1", "25", security, 1s);
    options.ca_file = CaFile();
    options.servers = std::move(servers);
    return TestConnection(options, clock_, cancel_);
  };
  std::map<std::string, ConnectionTest> alone;
  const auto test_alone = [&](const smtp::Server& server, const char* security) -> const ConnectionTest& {
    const std::string key = TextOf(server) + security;
    if (!alone.contains(key)) alone[key] = test_of({server}, security);
    return alone[key];
  };
  for (const Case& c : std::initializer_list<Case>{
           {"turned-away",
            0,
            {refuses, stops},
            {"None of the servers that were tried works. Of localhost:N: This",
             " was tried too: This server stopped answering in the middle"}},
           {"in-clear",
            1,
            {refuses, works, nowhere},
            {"Of the servers localhost:N is the first that works. This",
             " was tried too: This server wants no connection from here: 554",
             "Not tried, as this one works: 127.0.0.1:1."}},
           {"parts-badly", 1, {nowhere, parts_badly}, {"Of the servers localhost:N is the first that works."}},
           {"turned-away",
            0,
            {refuses, works},
            {" was tried too: This server does not offer STARTTLS on port"},
            "STARTTLS"},
           {"stopped-answering", 0, {stops, refuses}},
           {"stopped-answering",
            0,
            {stops_late, silent},
            {" was tried too: Something takes connections", " had only 0.", " s: there was no time left for more."}},
           {"hung-up", 0, {hangs_up, refuses}},
           {"hung-up", 0, {hangs_up, waits_for_tls}},
           {"silent", 0, {silent, refuses}},
           {"in-clear", 1, {silent, greets_late}},
           {"starttls-refused", 0, {refuses_tls, refuses}},
           {"speaks-tls", 0, {waits_for_tls, refuses}},
           {"speaks-tls", 0, {waits_for_tls, waits_for_tls}},
           {"in-clear", 1, {waits_for_tls, works}},
           {"port-refused", 0, {nowhere, refuses}},
           {"port-refused", 0, {nowhere, silent, waits_for_tls}},
           {"turned-away", 1, {unknown, refuses}},
           {"turned-away", 1, {unknown, refuses, unknown, hangs_up}},
           {"name-unknown", 0, {unknown, smtp::Server{"c..d", 25}}}}) {
    const smtp::Server& server = c.servers[c.told];
    const auto test = test_of(c.servers, c.security);
    const auto& wanted = test_alone(server, c.security);
    SCOPED_TRACE(fmt::format("{} of {}", c.verdict, c.servers.size()));
    EXPECT_EQ(TextOf(test.server), TextOf(server));
    EXPECT_EQ(WordOf(VerdictOf(test)), c.verdict);
    EXPECT_EQ(test.report, wanted.report);
    EXPECT_EQ(test.steps.size(), wanted.steps.size());
    EXPECT_LT(test.steps.back().took, wanted.steps.back().took + 900ms);
    port = server.port;
    EXPECT_THAT(Words(test), HasSubstr(Words(wanted)));
    EXPECT_EQ(test.others.size() + test.untried.size() + 1, c.servers.size());
    for (std::size_t n = 0; n < test.others.size(); ++n) {
      const auto& other = test_alone(c.servers[n < c.told ? n : n + 1], c.security);
      EXPECT_EQ(WordOf(VerdictOf(test.others[n])), WordOf(VerdictOf(other)));
      EXPECT_EQ(test.others[n].report, other.report);
    }
    for (const char* words : c.beside) EXPECT_THAT(Words(test), HasSubstr(words));
  }
  smtp::Free(good);
}

TEST(ConnectionTestInput, IsCheckedInOrder) {
  struct Case {
    const char *server, *port, *message, *reason;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"", "", "Please enter your mail server.", ""},
           {"", "x", "Please enter your mail server.", ""},
           {"mx.example", "", "Please enter your port.", ""},
           {"mx.example", "0", "", "\"0\" is no port of a mail server."},
           {"mx.example", "70000", "", "\"70000\" is no port of a mail server."},
           {"mx.example", "smtp", "", "\"smtp\" is no port of a mail server."},
           {" ; ", "25", "", "That is no name of a server."},
           {"127.0.0.1;fe80::1%nowhere7; [fe80::1%nowhere7]:25", "0", "", "\"0\" is no port of a mail server."},
           {"mx.example; []:25", "25", "", "Server: \"[]:25\" is no name of a mail server."},
           {"https://mx.example:25", "x", "", "Server: \"https://mx.example:25\" is no name of a mail server."}}) {
    const auto complaint = CheckTest(c.server, c.port);
    EXPECT_TRUE(complaint) << c.server << c.port;
    if (!complaint) continue;
    EXPECT_EQ(complaint->message, c.message);
    EXPECT_EQ(complaint->reason.InEnglish(), c.reason);
  }
  EXPECT_FALSE(CheckTest("mx.example", "25"));
  EXPECT_FALSE(CheckTest("[::1]:2525; mx.example", "65535"));
  EXPECT_FALSE(CheckTest("fe80::1%lo; b\u00FCcher_1.example.", "65535"));
}

}  // namespace
}  // namespace quillcast::domain
