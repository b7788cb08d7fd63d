// Dialogues up to the first message: greeting, EHLO, TLS and signing in, and that no secret shows or leaves in clear.
#include <gtest/gtest.h>

#include "smtp/client/client_play.h"

namespace quillcast::smtp {
namespace {

struct Start {
  const char *name, *dialogue;
  ResultCode code;  // kSuccess when the session becomes ready
  State state = State::kFailed;
  bool loopback = false;
  Security security = Security::kAutomatic;
  bool sign_in = false;
  bool without_auth = false;
  AuthMode mode = AuthMode::kLogin;
};

void Check(const Start& c) {
  SCOPED_TRACE(c.name);
  ClientOptions options;
  options.security = c.security;
  options.sign_in = c.sign_in;
  options.user = "ada";
  options.password = platform::Secret("s3cret");
  options.send_without_auth = c.without_auth;
  options.auth_mode = c.mode;
  KnownWindow window;
  ClientSession session(options, {"[192.0.2.1]", c.loopback, c.security == Security::kTls}, window);
  Told told;
  Play(session, told, c.dialogue);
  EXPECT_EQ(told.ready, c.code == ResultCode::kSuccess);
  if (c.code != ResultCode::kSuccess) {
    ASSERT_TRUE(told.closed);
    EXPECT_EQ(told.closed->code, c.code);
    EXPECT_EQ(told.closed->state, c.state);
    EXPECT_TRUE(told.closed->reply.code == 421 || !told.closed->reason.empty());
  }
  for (const std::string& line : told.log) {
    for (const char* secret : {"s3cret", "czNjcmV0", "AGFkYQBzM2NyZXQ=", "YWRh"})
      EXPECT_EQ(line.find(secret), std::string::npos) << line;
  }
}

#define EHLO "S: 220 mx ESMTP\nC: EHLO [192.0.2.1]\n"

TEST(ClientSessionStart, GreetsAndIsGreeted) {
  using enum ResultCode;
  for (const Start& c : std::initializer_list<Start>{
           {"plain", EHLO "S: 250 mx", kSuccess},
           {"many lines", "S: 220-mx\nS: 220 ESMTP\nC: EHLO [192.0.2.1]\nS: 250 mx", kSuccess},
           {"HELO", EHLO "S: 502 what\nC: HELO [192.0.2.1]\nS: 250 mx", kSuccess},
           {"both refused", EHLO "S: 502 what\nC: HELO [192.0.2.1]\nS: 550 no", kGreetingRefused, State::kRefused},
           {"HELO deferred", EHLO "S: 502 what\nC: HELO [192.0.2.1]\nS: 450 no", kGreetingRefused, State::kDeferred},
           {"EHLO deferred", EHLO "S: 451 later", kGreetingRefused, State::kDeferred},
           {"EHLO odd", EHLO "S: 354 go", kBadResponse},
           {"EHLO garbage", EHLO "S: hello", kBadResponse},
           {"EHLO 421", EHLO "S: 421 closing", kGreetingRefused, State::kDeferred},
           {"greeting 554", "S: 554 go away", kGreetingRefused, State::kRefused},
           {"greeting 450", "S: 450 later", kGreetingRefused, State::kDeferred},
           {"greeting 421", "S: 421 busy", kGreetingRefused, State::kDeferred},
           {"greeting 250", "S: 250 odd", kBadResponse},
           {"greeting 354", "S: 354 odd", kBadResponse},
           {"another protocol", "S: SSH-2.0-x", kBadResponse}}) {
    Check(c);
  }
}

TEST(ClientSessionStart, TakesTlsWhereItMust) {
  using enum ResultCode;
  for (const Start& c : std::initializer_list<Start>{
           {"offered", EHLO "S: 250-mx\nS: 250 STARTTLS\nC: STARTTLS\nS: 220 go\nTLS\nC: EHLO [192.0.2.1]\nS: 250 mx",
            kSuccess},
           {"refused", EHLO "S: 250-mx\nS: 250 STARTTLS\nC: STARTTLS\nS: 554 no", kGreetingRefused, State::kRefused},
           {"deferred", EHLO "S: 250-mx\nS: 250 STARTTLS\nC: STARTTLS\nS: 454 no", kGreetingRefused, State::kDeferred},
           {"odd", EHLO "S: 250-mx\nS: 250 STARTTLS\nC: STARTTLS\nS: 354 no", kBadResponse},
           {"asked for, not offered", EHLO "S: 250 mx", kGreetingRefused, State::kFailed, true, Security::kStartTls},
           {"offered, not wanted", EHLO "S: 250-mx\nS: 250 STARTTLS", kSuccess, {}, false, Security::kNone},
           {"password in clear", EHLO "S: 250-mx\nS: 250 AUTH PLAIN", kGreetingRefused, State::kFailed, false,
            Security::kAutomatic, true}}) {
    Check(c);
  }
}

// Bytes in the same packet as the 220 may come from somebody on the way who wants them believed under TLS.
TEST(ClientSessionStart, BelievesNothingInClearAfterStartTls) {
  for (const char* packet : {"220 go\r\n250 mx\r\n", "220 go\r\n2"}) {
    ClientOptions options;
    SendWindow window;
    ClientSession session(options, {"[192.0.2.1]", false, false}, window);
    Told told;
    Play(session, told, EHLO "S: 250-mx\nS: 250 STARTTLS\nC: STARTTLS");
    session.Receive(packet);
    Listen(session, told);
    EXPECT_FALSE(told.tls_wanted);
    ASSERT_TRUE(told.closed);
    EXPECT_EQ(told.closed->code, ResultCode::kBadResponse);
    EXPECT_EQ(session.BytesToSend(), "");
  }
}

#define AUTH(mechanisms) EHLO "S: 250-mx\nS: 250 AUTH " mechanisms "\n"
#define LOGIN_USER AUTH("LOGIN") "C: AUTH LOGIN\nS: 334 VXNlcm5hbWU6\nC: YWRh\n"

TEST(ClientSessionStart, SignsIn) {
  using enum ResultCode;
  const auto at_home = [](Start start) {
    start.loopback = true;
    start.sign_in = true;
    return start;
  };
  for (const Start& c : std::initializer_list<Start>{
           {"login", LOGIN_USER "S: 334 UGFzc3dvcmQ6\nC: czNjcmV0\nS: 235 ok", kSuccess},
           {"odd prompts", AUTH("LOGIN") "C: AUTH LOGIN\nS: 334 UGFzc3dvcmQ6\nC: YWRh\nS: 334 \nC: czNjcmV0\nS: 235 ok",
            kSuccess},
           {"plain in place of login", AUTH("PLAIN") "C: AUTH PLAIN AGFkYQBzM2NyZXQ=\nS: 235 ok", kSuccess},
           {"old form", EHLO "S: 250-mx\nS: 250 AUTH=LOGIN\nC: AUTH LOGIN\nS: 535 no", kAuthRefused, State::kRefused},
           {"refused", LOGIN_USER "S: 334 UGFzc3dvcmQ6\nC: czNjcmV0\nS: 535 5.7.8 no", kAuthRefused, State::kRefused},
           {"deferred", LOGIN_USER "S: 454 4.7.0 later", kAuthRefused, State::kDeferred},
           {"421", LOGIN_USER "S: 421 later", kAuthRefused, State::kDeferred},
           {"no base 64", AUTH("LOGIN") "C: AUTH LOGIN\nS: 334 user?\nC: *\nS: 501 ok", kAuthProtocolError},
           {"asks once more", LOGIN_USER "S: 334 UGFzc3dvcmQ6\nC: czNjcmV0\nS: 334 UGFzc3dvcmQ6\nC: *\nS: 501 ok",
            kAuthProtocolError},
           {"cancelled, then taken", LOGIN_USER "S: 334 *\nC: *\nS: 235 ok", kAuthProtocolError},
           {"cancelled, then closing", LOGIN_USER "S: 334 *\nC: *\nS: 421 bye", kAuthProtocolError},
           {"first message passed over",
            AUTH("PLAIN") "C: AUTH PLAIN AGFkYQBzM2NyZXQ=\nS: 334 \nC: AGFkYQBzM2NyZXQ=\nS: 235 ok", kSuccess},
           {"first message passed over twice",
            AUTH("PLAIN") "C: AUTH PLAIN AGFkYQBzM2NyZXQ=\nS: 334 \nC: AGFkYQBzM2NyZXQ=\nS: 334\nC: *\nS: 501 ok",
            kAuthProtocolError},
           {"354", LOGIN_USER "S: 354 go", kAuthProtocolError},
           {"garbage", LOGIN_USER "S: ***", kBadResponse},
           {"other mechanism", AUTH("GSSAPI"), kAuthNotOffered},
           {"unheard-of mechanism", AUTH("X-NEW"), kAuthNotOffered},
           {"none", EHLO "S: 250 mx", kAuthNotOffered}}) {
    Check(at_home(c));
  }
  Check(at_home({.name = "without", .dialogue = EHLO "S: 250 mx", .code = kSuccess, .without_auth = true}));
  Check(at_home({.name = "in another way", .dialogue = AUTH("X-NEW"), .code = kAuthNotOffered, .without_auth = true}));
}

TEST(ClientSessionStart, SendsWithoutSigningInOnlyWhereNobodyCanHaveTakenTheOfferOut) {
  Start c{.name = "in clear", .dialogue = EHLO "S: 250 mx", .code = ResultCode::kAuthNotOffered};
  c.sign_in = c.without_auth = true;
  c.security = Security::kNone;
  Check(c);
  c.name = "under TLS";
  c.security = Security::kTls;
  c.code = ResultCode::kSuccess;
  Check(c);
}

}  // namespace
}  // namespace quillcast::smtp
