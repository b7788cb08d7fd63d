// The mailbox's side of the protocol, as dialogues. Each is played turn by turn, and again with its bytes cut anywhere.
#include "smtp/mailbox/server_session.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "smtp/mailbox/server_play.h"

namespace quillcast::smtp {
namespace {

struct Scene {
  ServerOptions options;
  MemorySink sink;
};

using Kept = std::vector<std::string>;

struct Case {
  const char* name;
  std::string dialogue;
  Kept kept = {};
  std::function<void(Scene&)> prepare = [](Scene&) {};
  ServerSession::Next end = ServerSession::Next::kContinue;
};

ServerOptions Small() {
  ServerOptions options;
  options.host_name = "box";
  options.offer = kPipelining | kSize | kEightBitMime | kBinaryMime | kChunking | kDsn | kUtf8 | kEnhancedCodes;
  options.size_limit = 5000;
  return options;
}

// The greeting, EHLO, and what they are answered with the options above.
const std::string kHello = R"(
  S: 220 box ESMTP Quillcast mailbox
  C: EHLO client
  S: 250-box
  S: 250-PIPELINING
  S: 250-SIZE 5000
  S: 250-8BITMIME
  S: 250-BINARYMIME
  S: 250-CHUNKING
  S: 250-DSN
  S: 250-SMTPUTF8
  S: 250 ENHANCEDSTATUSCODES
)";

// The same, with a sender and a recipient taken.
const std::string kReady = kHello + R"(
  C: MAIL FROM:<ada@example.org>
  C: RCPT TO:<bob@example.net>
  S: 250 2.1.0 Ok
  S: 250 2.1.5 Ok
)";

// The same, and the content asked for.
const std::string kContent = kReady + R"(
  C: DATA
  S: 354 End with <CRLF>.<CRLF>
)";

// A line of a web request ends the session, whatever commands stand behind it.
std::string Web(const std::string& line) {
  return "C: " + line + R"(
  C: MAIL FROM:<ada@example.org>
  S: 421 4.7.0 box takes mail and nothing else, closing
)";
}

void Rule(Scene& scene, const char* text, RuleKind kind) {
  scene.options.rules.push_back(*ParseServerRule(text, kind));
}

void AskToSignIn(Scene& scene) {
  scene.options.offer = kAuth | kStartTls;
  scene.options.user = "ada";
  scene.options.password = "secret";
}

std::vector<Case> Transactions() {
  return {
      {"messages one after the other, dots taken off",
       kReady + R"(
  C: DATA
  S: 354 End with <CRLF>.<CRLF>
  C: Subject: x
  C:
  C: ..one dot
  C: .no stuffing
  C: a.
  C: ..
  C: .
  S: 250 2.0.0 kept
  C: MAIL FROM:<>
  S: 250 2.1.0 Ok
  C: rcpt to:<postmaster>
  S: 250 2.1.5 Ok
  C: DATA
  S: 354 End with <CRLF>.<CRLF>
  C: .
  S: 250 2.0.0 kept
  C: QUIT
  S: 221 2.0.0 box closing)",
       {"Subject: x\r\n\r\n.one dot\r\nno stuffing\r\na.\r\n.\r\n", ""},
       [](Scene&) {},
       ServerSession::Next::kClose},
      {"a batch is answered in one",
       kHello + R"(
  C: MAIL FROM:<a@b.example> BODY=8BITMIME SIZE=10 RET=HDRS ENVID=x+2By SMTPUTF8
  C: RCPT TO:<c@d.example> NOTIFY=SUCCESS,DELAY ORCPT=rfc822;c+40d.example
  C: RCPT TO:<@relay.example,@[10.0.0.1]:"odd \\"> one"@[IPv6:::1]>
  C: DATA
  C: hello
  C: .
  C: RSET
  C: NOOP anything
  C: VRFY bob
  C: HELP
  S: 250 2.1.0 Ok
  S: 250 2.1.5 Ok
  S: 250 2.1.5 Ok
  S: 354 End with <CRLF>.<CRLF>
  S: 250 2.0.0 kept
  S: 250 2.0.0 Ok
  S: 250 2.0.0 Ok
  S: 252 2.0.0 Send mail to it and see
  S: 214 2.0.0 EHLO HELO MAIL RCPT DATA BDAT RSET NOOP VRFY AUTH STARTTLS HELP QUIT)",
       {"hello\r\n"}},
      {"chunks, empty ones and binary ones",
       kHello + R"(
  C: MAIL FROM:<a@b.example> BODY=BINARYMIME
  C: RCPT TO:<c@d.example>
  C: BDAT 5
  c: a\n.\r\n
  C: RCPT TO:<e@d.example>
  C: DATA
  C: BDAT 3
  c: \0\r\xff
  C: BDAT 0 LAST
  C: BDAT 4 LAST
  c: lost
  C: MAIL FROM:<a@b.example>
  C: RCPT TO:<c@d.example>
  C: BDAT 9 LAST
  c: two\r\n.\r\n\r
  S: 250 2.1.0 Ok
  S: 250 2.1.5 Ok
  S: 250 2.0.0 5 octets so far
  S: 503 5.5.1 The message is under way
  S: 503 5.5.1 DATA cannot follow BDAT
  S: 250 2.0.0 8 octets so far
  S: 250 2.0.0 kept
  S: 503 5.5.1 Say MAIL first
  S: 250 2.1.0 Ok
  S: 250 2.1.5 Ok
  S: 554 5.6.0 The message has a lone CR; its lines must end in CRLF)",
       {std::string("a\n.\r\n\0\r\xff", 8)}},
      {"a chunk whose size cannot be read ends the session",
       kReady + R"(
  C: BDAT 5x
  C: MAIL FROM:<evil@example.org>
  S: 501 5.5.4 Write BDAT SIZE or BDAT SIZE LAST; closing)",
       {},
       [](Scene&) {},
       ServerSession::Next::kClose},
      {"HELO has no extensions", R"(
  S: 220 box ESMTP Quillcast mailbox
  C: HELO client
  S: 250 box
  C: MAIL FROM:<a@b.example> SIZE=3
  S: 555 SIZE is not known here
  C: MAIL FROM:<a@b.example>
  S: 250 Ok
  C: RCPT TO:<c@d.example> NOTIFY=NEVER
  S: 555 NOTIFY is not known here
  C: BDAT 6 LAST
  C: QUIT
  S: 502 BDAT is not offered
  C: DATA
  S: 554 No valid recipients)"},
      {"commands out of order", R"(
  S: 220 box ESMTP Quillcast mailbox
  C: MAIL FROM:<a@b.example>
  C: STARTTLS
  C: AUTH PLAIN
  C: EHLO
  C: FROB
  C: EXPN list
  C: QUIT now
  S: 503 Say EHLO first
  S: 502 No TLS here
  S: 503 Say EHLO first
  S: 501 Say your own name behind it
  S: 500 Command not known; try HELP
  S: 502 Not implemented
  S: 501 QUIT takes no argument)"},
      {"a transaction out of order", kHello + R"(
  C: RCPT TO:<c@d.example>
  C: DATA
  C: MAIL FROM:<a@b.example>
  C: MAIL FROM:<a@b.example>
  C: DATA
  C: RSET
  C: RCPT TO:<c@d.example>
  S: 503 5.5.1 Say MAIL first
  S: 503 5.5.1 Say MAIL first
  S: 250 2.1.0 Ok
  S: 503 5.5.1 One sender a message; RSET begins anew
  S: 554 5.5.1 No valid recipients
  S: 250 2.0.0 Ok
  S: 503 5.5.1 Say MAIL first)"},
      {"nothing is offered",
       R"(
  S: 220 box ESMTP Quillcast mailbox
  C: EHLO client
  S: 250 box
  C: MAIL FROM:<a@b.example> BODY=8BITMIME
  S: 555 BODY is not known here)",
       {},
       [](Scene& scene) { scene.options.offer = 0; }},
  };
}

std::vector<Case> Limits() {
  const std::string line_998(998, 'x');
  const std::string longest_command = "NOOP " + std::string(2041, 'n');
  std::string faults = kHello;
  for (int i = 0; i < 20; ++i) faults += "C: FROB\n";
  for (int i = 0; i < 20; ++i) faults += "S: 500 5.5.1 Command not known; try HELP\n";
  std::string large = kContent;
  for (int i = 0; i < 5; ++i) large += "C: " + line_998 + "\n";
  return {
      {"the longest line of a message", kContent + "C: " + line_998 + "\nC: .\nS: 250 2.0.0 kept", {line_998 + "\r\n"}},
      {"a stuffed dot does not count", kContent + "C: .." + line_998.substr(1) + "\nC: .\nS: 250 2.0.0 kept",
       Kept{"." + line_998.substr(1) + "\r\n"}},
      {"a line too long", kContent + "C: x" + line_998 + R"(
  C: .
  S: 500 5.6.0 A line of the message is longer than 1000 octets)"},
      {"the largest message", large + "C: .\nS: 250 2.0.0 kept", {[&] {
         std::string content;
         for (int i = 0; i < 5; ++i) content += line_998 + "\r\n";
         return content;
       }()}},
      {"a message too large",
       large + "C: x\nC: .\nS: 552 5.3.4 The message is larger than 5000 octets\nC: NOOP\n" + "S: 250 2.0.0 Ok"},
      {"said to be too large", kHello + R"(
  C: MAIL FROM:<a@b.example> SIZE=5001
  S: 552 5.3.4 The message is larger than 5000 octets)"},
      {"chunks too large", kReady + R"(
  C: BDAT 4999
  c: )" + std::string(4999, 'x') +
                               R"(
  C: BDAT 2
  c: yy
  C: BDAT 1 LAST
  c: z
  S: 250 2.0.0 4999 octets so far
  S: 552 5.3.4 The message is larger than 5000 octets
  S: 503 5.5.1 Say MAIL first)"},
      {"the longest command", kHello + "C: " + longest_command + "\nC: n" + longest_command + R"(
  C: NOOP
  S: 250 2.0.0 Ok
  S: 500 5.5.2 The line is too long
  S: 250 2.0.0 Ok)"},
      {"too many recipients",
       kReady + R"(
  C: RCPT TO:<c@example.net>
  C: RCPT TO:<d@example.net>
  S: 250 2.1.5 Ok
  S: 452 4.5.3 Too many recipients)",
       {},
       [](Scene& scene) { scene.options.recipient_limit = 2; }},
      {"a request of the web", kHello + Web("GET / HTTP/1.1"), {}, [](Scene&) {}, ServerSession::Next::kClose},
      {"one of the oldest kind", kHello + Web("POST /"), {}, [](Scene&) {}, ServerSession::Next::kClose},
      {"one that looks like a command", kHello + Web("HELO / HTTP/1.1"), Kept{}, [](Scene&) {},
       ServerSession::Next::kClose},
      {"one whose first line is too long",
       kHello + "C: POST /" + longest_command + " HTTP/1.1\nS: 500 5.5.2 The line is too long\n" + Web("Host: x"),
       Kept{}, [](Scene&) {}, ServerSession::Next::kClose},
      {"too many faults", faults + "S: 421 4.7.0 Too many faults, closing", Kept{}, [](Scene&) {},
       ServerSession::Next::kClose},
      {"the disk is full under way", kContent + "C: x\nC: .\nS: 452 4.3.1 The message cannot be stored now", Kept{},
       [](Scene& scene) { scene.sink.fail_write = true; }},
      {"the disk is full at the end", kContent + "C: x\nC: .\nS: 452 4.3.1 The message cannot be stored now", Kept{},
       [](Scene& scene) { scene.sink.fail_keep = true; }},
  };
}

// No line end but CRLF may end a message or a command, or two programs could see different messages in the same bytes.
std::vector<Case> Smuggling() {
  std::vector<Case> cases;
  struct Attempt {
    const char *end, *fault;
  };
  for (const Attempt& attempt : std::initializer_list<Attempt>{{R"(\n.\n)", "LF"},
                                                               {R"(\n.\r\n)", "LF"},
                                                               {R"(\r\n.\n)", "LF"},
                                                               {R"(\r.\r\n)", "CR"},
                                                               {R"(\r\n.\r\r\n)", "CR"},
                                                               {R"(\r\n.\rx\r\n)", "CR"},
                                                               {R"(\r\r\n.\0\r\n)", "CR"}}) {
    cases.push_back({attempt.end, kContent + "c: one" + attempt.end + R"(MAIL FROM:<evil@example.org>
  C:
  C: .
  C: NOOP
  S: 554 5.6.0 The message has a lone )" +
                                      attempt.fault + R"(; its lines must end in CRLF
  S: 250 2.0.0 Ok)"});
  }
  cases.push_back({"commands", kHello + R"(
  c: NOOP\n
  c: NOOP\rNOOP\r\n
  C: NO\0OP
  C: NOOP
  S: 500 5.5.2 Lines must end in CRLF
  S: 500 5.5.2 Control characters in a line
  S: 500 5.5.2 Control characters in a line
  S: 250 2.0.0 Ok)"});
  return cases;
}

std::vector<Case> Refusals() {
  return {
      {"recipients, senders and messages by rule",
       kHello + R"(
  C: MAIL FROM:<spam@bad.example>
  S: 550 5.7.1 <spam@bad.example> refused by a rule of this mailbox
  C: MAIL FROM:<ada@example.org>
  C: RCPT TO:<Bob@Example.net>
  C: RCPT TO:<slow@example.net>
  C: RCPT TO:<late@example.net>
  C: DATA
  S: 250 2.1.0 Ok
  S: 550 5.1.1 <Bob@Example.net> refused by a rule of this mailbox
  S: 451 4.3.0 <slow@example.net> deferred by a rule of this mailbox
  S: 250 2.1.5 Ok
  S: 354 End with <CRLF>.<CRLF>
  C: hello
  C: .
  S: 554 5.6.0 <late@example.net> refused by a rule of this mailbox
  C: MAIL FROM:<ada@example.org>
  C: RCPT TO:<gone@example.net>
  C: NOOP
  S: 250 2.1.0 Ok
  S: 421 4.3.2 <gone@example.net> deferred by a rule of this mailbox)",
       {},
       [](Scene& scene) {
         Rule(scene, "MAIL:*@bad.example=550", RuleKind::kRefuse);
         Rule(scene, "bob@*=550", RuleKind::kRefuse);
         Rule(scene, "data:late@*=554", RuleKind::kRefuse);
         Rule(scene, "s?ow@*=451", RuleKind::kDefer);
         Rule(scene, "gone@*=421", RuleKind::kDefer);
       },
       ServerSession::Next::kClose},
      {"what is no address or parameter", kHello + R"(
  C: MAIL FROM: <a@b.example>
  C: MAIL FROM:<a@b.example
  C: MAIL FROM:<a..b@c.example>
  C: MAIL FROM:<a@b.example>SIZE=1
  C: MAIL FROM:<a@b.example> SIZE=1 SIZE=1
  C: MAIL FROM:<a@b.example> SIZE=-1
  C: MAIL FROM:<a@b.example> BODY=9BIT
  C: MAIL FROM:<a@b.example> ENVID=a+4
  C: MAIL FROM:<\xc3\xa9@b.example>
  C: MAIL FROM:<\xff@b.example> SMTPUTF8
  S: 501 5.1.7 Write MAIL FROM:<address>, without a blank before the bracket
  S: 501 5.1.7 Write MAIL FROM:<address>, without a blank before the bracket
  S: 501 5.1.7 Write MAIL FROM:<address>, without a blank before the bracket
  S: 501 5.5.4 A blank must follow the address
  S: 501 5.5.4 SIZE is given twice
  S: 501 5.5.4 Bad value of SIZE
  S: 501 5.5.4 Bad value of BODY
  S: 501 5.5.4 Bad value of ENVID
  S: 553 5.6.7 An address that is not ASCII needs SMTPUTF8
  S: 501 5.1.7 Write MAIL FROM:<address>, without a blank before the bracket)"},
      {"what is no recipient", kReady + R"(
  C: RCPT TO:<>
  C: RCPT TO:<bob>
  C: RCPT TO:<a@b.example> NOTIFY=NEVER,DELAY
  C: RCPT TO:<a@b.example> ORCPT=x
  C: RCPT TO:<a@b.example> FROB=1
  S: 501 5.1.3 Write RCPT TO:<address>, without a blank before the bracket
  S: 501 5.1.3 The recipient has no domain
  S: 501 5.5.4 Bad value of NOTIFY
  S: 501 5.5.4 Bad value of ORCPT
  S: 555 5.5.4 FROB is not known here)"},
  };
}

const std::string kSignInHello = R"(
  S: 220 box ESMTP Quillcast mailbox
  C: EHLO client
  S: 250-box
  S: 250 AUTH PLAIN LOGIN CRAM-MD5 SCRAM-SHA-256
)";

std::vector<Case> SigningIn() {
  return {
      {"PLAIN in one line",
       kSignInHello + R"(
  C: MAIL FROM:<a@b.example>
  S: 530 Sign in first
  C: AUTH PLAIN AGFkYQBzZWNyZXQ=
  S: 235 Welcome
  C: AUTH PLAIN AGFkYQBzZWNyZXQ=
  S: 503 You are signed in already
  C: MAIL FROM:<a@b.example> AUTH=<>
  S: 250 Ok)",
       {},
       AskToSignIn},
      {"PLAIN in two lines, and failures",
       kSignInHello + R"(
  C: AUTH PLAIN
  S: 334 
  C: AGFkYQB3cm9uZw==
  S: 535 User name or password not right
  C: AUTH PLAIN AGFkYQBzZWNyZXQx
  S: 535 User name or password not right
  C: AUTH PLAIN Ym9iAGFkYQBzZWNyZXQ=
  S: 535 Sign in as yourself
  C: AUTH PLAIN =
  S: 501 That is not a PLAIN response
  C: AUTH PLAIN AGFkYQ=
  S: 501 That is not base64
  C: AUTH PLAIN
  S: 334 
  C: *
  S: 501 Signing in was given up
  C: AUTH GSSAPI
  S: 504 Choose one of PLAIN, LOGIN, CRAM-MD5, SCRAM-SHA-256
  C: AUTH plain
  S: 334 
  C: AGFkYQBzZWNyZXQ=
  S: 235 Welcome)",
       {},
       AskToSignIn},
      {"LOGIN",
       kSignInHello + R"(
  C: AUTH LOGIN
  S: 334 VXNlcm5hbWU6
  C: YWRh
  S: 334 UGFzc3dvcmQ6
  C: c2VjcmV0
  S: 235 Welcome)",
       {},
       AskToSignIn},
      {"not in clear from another machine",
       R"(
  S: 220 box ESMTP Quillcast mailbox
  C: EHLO client
  S: 250-box
  S: 250 STARTTLS
  C: AUTH PLAIN AGFkYQBzZWNyZXQ=
  S: 538 Say STARTTLS first)",
       {},
       [](Scene& scene) {
         AskToSignIn(scene);
         scene.options.has_certificate = true;
       }},
  };
}

std::string AllSent(const std::vector<Turn>& turns) {
  std::string all;
  for (const auto& turn : turns) all += turn.sent;
  return all;
}

std::string AllExpected(const std::vector<Turn>& turns) {
  std::string all;
  for (const auto& turn : turns) all += turn.expected;
  return all;
}

class Dialogues : public testing::Test {
 protected:
  static void Play(const std::vector<Case>& cases) {
    for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      const auto turns = ReadDialogue(c.dialogue);
      PlayByTurns(c, turns);
      if (HasFatalFailure()) continue;
      const std::string all = AllSent(turns);
      PlayCut(c, turns, all, [] { return std::size_t{1}; });
      PlayCut(c, turns, all, [&] { return all.size(); });
      std::mt19937 random(7);
      for (int round = 0; round < 20; ++round) {
        PlayCut(c, turns, all, [&] { return std::size_t{1} + random() % 40; });
      }
    }
  }

 private:
  static void PlayByTurns(const Case& c, const std::vector<Turn>& turns) {
    Scene scene{Small(), {}};
    c.prepare(scene);
    const ServerPeer peer{"192.0.2.1:1000", false};
    ServerSession session(scene.options, peer, scene.sink);
    for (const auto& turn : turns) {
      session.Receive(turn.sent);
      ASSERT_EQ(TakeReplies(session), turn.expected) << "after " << turn.sent;
    }
    Check(c, scene, session);
  }

  template <typename Cut>
  static void PlayCut(const Case& c, const std::vector<Turn>& turns, std::string_view all, Cut cut) {
    Scene scene{Small(), {}};
    c.prepare(scene);
    const ServerPeer peer{"192.0.2.1:1000", false};
    ServerSession session(scene.options, peer, scene.sink);
    std::string replies = TakeReplies(session);
    while (!all.empty()) {
      const auto piece = all.substr(0, cut());
      session.Receive(piece);
      replies += TakeReplies(session);
      all.remove_prefix(piece.size());
    }
    ASSERT_EQ(replies, AllExpected(turns));
    Check(c, scene, session);
  }

  static void Check(const Case& c, const Scene& scene, const ServerSession& session) {
    std::vector<std::string> kept;
    for (const auto& message : scene.sink.kept) kept.push_back(message.content);
    ASSERT_EQ(kept, c.kept);
    ASSERT_EQ(session.WhatNext(), c.end);
    ASSERT_FALSE(scene.sink.open()) << "a message was neither kept nor dropped";
  }
};

TEST_F(Dialogues, Transactions) { Play(Transactions()); }
TEST_F(Dialogues, Limits) { Play(Limits()); }
TEST_F(Dialogues, Smuggling) { Play(Smuggling()); }
TEST_F(Dialogues, Refusals) { Play(Refusals()); }
TEST_F(Dialogues, SigningIn) { Play(SigningIn()); }

TEST(ServerSession, TellsTheSinkTheWholeEnvelope) {
  Scene scene{Small(), {}};
  const ServerPeer peer{"127.0.0.1:9", true};
  ServerSession session(scene.options, peer, scene.sink);
  session.Receive(
      "EHLO me\r\nMAIL FROM:<a@b.example> BODY=8bitmime RET=full ENVID=x+2By SMTPUTF8\r\n"
      "RCPT TO:<@r.example:\xC3\xA9@d.example> NOTIFY=never ORCPT=rfc822;c+40d.example\r\n"
      "RCPT TO:<\"q \\\" x\"@d.example>\r\nDATA\r\n.\r\n");
  ASSERT_EQ(scene.sink.kept.size(), 1U);
  const auto& envelope = scene.sink.kept[0].envelope;
  EXPECT_EQ(envelope.sender, "a@b.example");
  ASSERT_EQ(envelope.recipients.size(), 2U);
  EXPECT_EQ(envelope.recipients[0].address, "\xC3\xA9@d.example");
  EXPECT_EQ(envelope.recipients[0].notify, "NEVER");
  EXPECT_EQ(envelope.recipients[0].original, "rfc822;c@d.example");
  EXPECT_EQ(envelope.recipients[1].address, "\"q \\\" x\"@d.example");
  EXPECT_EQ(envelope.body + envelope.dsn_return + envelope.envelope_id, "8BITMIMEFULLx+y");
  EXPECT_TRUE(envelope.utf8);
  EXPECT_EQ(envelope.helo + " " + envelope.peer + " " + envelope.user, "me 127.0.0.1:9 ");
}

TEST(ServerSession, StartTlsForgetsWhatCameInClear) {
  Scene scene{Small(), {}};
  AskToSignIn(scene);
  scene.options.has_certificate = true;
  const ServerPeer peer{"192.0.2.1:1000", false};
  ServerSession session(scene.options, peer, scene.sink);
  session.Receive("EHLO client\r\nSTARTTLS\r\n");
  ASSERT_EQ(session.WhatNext(), ServerSession::Next::kStartTls);
  TakeReplies(session);
  session.TlsStarted();
  session.Receive("MAIL FROM:<a@b.example>\r\nEHLO client\r\nSTARTTLS\r\n");
  EXPECT_EQ(
      TakeReplies(session),
      "503 Say EHLO first\r\n250-box\r\n250 AUTH PLAIN LOGIN CRAM-MD5 SCRAM-SHA-256\r\n502 TLS is on already\r\n");
}

TEST(ServerSession, ClearTextBehindStartTlsEndsTheConnection) {
  for (const bool in_one_read : {true, false}) {
    Scene scene{Small(), {}};
    scene.options.has_certificate = true;
    scene.options.offer = kStartTls;
    const ServerPeer peer{"192.0.2.1:1000", false};
    ServerSession session(scene.options, peer, scene.sink);
    session.Receive(in_one_read ? "EHLO c\r\nSTARTTLS\r\nMAIL FROM:<x@y.example>\r\n" : "EHLO c\r\nSTARTTLS\r\n");
    if (!in_one_read) session.Receive("M");
    EXPECT_EQ(session.WhatNext(), ServerSession::Next::kClose);
    EXPECT_EQ(TakeReplies(session),
              "220 box ESMTP Quillcast mailbox\r\n250-box\r\n250 STARTTLS\r\n220 Begin the TLS handshake\r\n");
  }
}

TEST(ServerSession, ShutdownDropsTheMessageUnderWay) {
  Scene scene{Small(), {}};
  const ServerPeer peer{"127.0.0.1:9", true};
  ServerSession session(scene.options, peer, scene.sink);
  session.Receive("HELO c\r\nMAIL FROM:<a@b.example>\r\nRCPT TO:<c@d.example>\r\nDATA\r\nhalf");
  TakeReplies(session);
  session.Shutdown("is ending");
  session.Receive("\r\n.\r\n");
  EXPECT_EQ(TakeReplies(session), "421 box is ending, closing\r\n");
  EXPECT_TRUE(scene.sink.kept.empty());
  EXPECT_FALSE(scene.sink.open());
}

// The deadline of a step is moved by whole lines, 64 KiB of content, and its end; never by bytes that drip.
TEST(ServerSession, CountsWholeStepsAlone) {
  struct Fed {
    std::string bytes;
    bool step;
  };
  ServerOptions options;
  options.size_limit = 1000;  // what is thrown away counts as well
  const ServerPeer peer;
  MemorySink sink;
  ServerSession session(options, peer, sink);
  for (const Fed& c : std::initializer_list<Fed>{
           Fed{"EHLO", false}, Fed{" c\r", false}, Fed{"\n", true}, Fed{std::string(100'000, 'x'), false},
           Fed{"\r\n", true}, Fed{"MAIL FROM:<a@b.example>\r\nRCPT TO:<c@d.example>\r\n", true}, Fed{"DATA\r\n", true},
           Fed{std::string(60'000, 'x'), false}, Fed{std::string(10'000, 'x'), true}, Fed{"\r\n.", false},
           Fed{"\r\n", true}, Fed{"MAIL FROM:<a@b.example>\r\nRCPT TO:<c@d.example>\r\n", true},
           Fed{"BDAT 10 LAST\r\n", true}, Fed{"123456789", false}, Fed{"0", true}}) {
    const auto before = session.Step();
    session.Receive(c.bytes);
    EXPECT_EQ(session.Step() != before, c.step) << c.bytes.substr(0, 30);
  }
}

}  // namespace
}  // namespace quillcast::smtp
