// Dialogues of signing in where the password does not travel, and the rules of the exchange itself.
#include <gtest/gtest.h>

#include "platform/base64.h"
#include "smtp/client/client_play.h"

namespace quillcast::smtp {
namespace {

struct Played {
  Told told;
  Outcome closed;  // kSuccess when the session became ready
};

// A message is submitted as soon as the session is ready where the dialogue has one.
Played SignIn(AuthMode mode, const platform::Secret& password, const std::string& dialogue, bool loopback = true) {
  ClientOptions options;
  options.sign_in = true;
  options.user = "ada";
  options.password = password;
  options.auth_mode = mode;
  KnownWindow window;
  ClientSession session(options, {"[192.0.2.1]", loopback, false, std::string(24, '\xAA')}, window);
  const Envelope envelope{.sender = "ada@example.org"_address, .recipient = "bob@example.net"_address};
  TextSource message{"Subject: x\r\n\r\nhello\r\n"};
  const bool submits = dialogue.find("C: MAIL") != std::string::npos;
  Played out;
  Play(session, out.told, dialogue, [&] {
    if (submits && session.Idle() && out.told.outcomes.empty()) session.Submit(envelope, message);
  });
  EXPECT_NE(out.told.ready, out.told.closed.has_value());
  out.closed = out.told.closed.value_or(Outcome{State::kSent, ResultCode::kSuccess, {}, {}});
  return out;
}

#define EHLO "S: 220 mx ESMTP\nC: EHLO [192.0.2.1]\n"
#define AUTH(mechanisms) EHLO "S: 250-mx\nS: 250 AUTH " mechanisms "\n"
#define CRAM \
  AUTH("LOGIN CRAM-MD5") "C: AUTH CRAM-MD5\nS: 334 PDFAYT4=\nC: YWRhIGI2N2JkZmQ1ODVjZGQ2ZjA0ZmQ4MjYwNTkzZjhiMjIz\n"
#define SCRAM_FIRST              \
  AUTH("CRAM-MD5 SCRAM-SHA-256") \
  "C: AUTH SCRAM-SHA-256 "       \
  "biwsbj1hZGEscj1xcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcQ==\n"
#define SCRAM                                                                     \
  SCRAM_FIRST                                                                     \
  "S: 334 cj1xcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXgscz1jMkZzZEE9PSxpPTE=\n" \
  "C: Yz1iaXdzLHI9cXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXF4LHA9"               \
  "dVlOUjJZU21ZaGtjZm96NXE4MGZGa3h6YWJ0RHZrN0tYcklISzVOdklrRT0=\n"
#define NTLM_FIRST AUTH("LOGIN NTLM") "C: AUTH NTLM TlRMTVNTUAABAAAABYKIAAAAAAAAAAAAAAAAAAAAAAA=\n"
#define NTLM                                                                               \
  NTLM_FIRST                                                                               \
  "S: 334 TlRMTVNTUAACAAAADAAMADgAAAAzgoriASNFZ4mrze8AAAAAAAAAACQAJABEAAAABgBwFw"          \
  "AAAA9TAGUAcgB2AGUAcgACAAwARABvAG0AYQBpAG4AAQAMAFMAZQByAHYAZQByAAAAAAA=\n"               \
  "C: TlRMTVNTUAADAAAAGAAYAEgAAABUAFQAYAAAAAAAAAC0AAAABgAGALQAAAAAAAAAugAAAAAAAAC6AAAAAYK" \
  "IAAAAAAAAAAAAbnKVxa8UhK6bLsHCMGFbI6qqqqqqqqqqxBL6lFE03s1njUAudKApgAEBAAAAAAAAAIA+1d"    \
  "6xnQGqqqqqqqqqqgAAAAACAAwARABvAG0AYQBpAG4AAQAMAFMAZQByAHYAZQByAAAAAAAAAAAAYQBkAGEA\n"

// What the client says was computed with the hmac module of Python.
TEST(ClientSignIn, SignsInWithoutSendingThePassword) {
  using enum ResultCode;
  using enum AuthMode;
  struct Case {
    const char* name;
    AuthMode mode;
    const char* dialogue;
    ResultCode code;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"cram", kCramMd5, CRAM "S: 235 ok", kSuccess},
           {"cram refused", kCramMd5, CRAM "S: 535 no", kAuthRefused},
           {"cram asks again", kCramMd5, CRAM "S: 334 PDFAYT4=\nC: *\nS: 501 no", kAuthProtocolError},
           {"only what sends the password", kCramMd5, AUTH("LOGIN PLAIN"), kAuthNotOffered},
           {"scram", kCramMd5,
            SCRAM "S: 334 dj1LSnJDVmtlMzU0c2lvNnlsREVxZWNTUFBTbVhIWWdZcVQ0aVc3UWdmTVhRPQ==\nC: \nS: 235 ok", kSuccess},
           {"scram refused", kCramMd5, SCRAM "S: 535 no", kAuthRefused},
           {"scram refused in its own words", kCramMd5, SCRAM "S: 334 ZT14\nC: \nS: 535 no", kAuthRefused},
           {"scram repeated in the verdict", kCramMd5,
            SCRAM "S: 535-no: r=qqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqx,s=c2FsdA==,i=1\n"
                  "S: 535 cj1xcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXFxcXgscz1jMkZzZEE9PSxpPTE=",
            kAuthRefused},
           {"scram without a proof", kCramMd5, SCRAM "S: 235 ok", kAuthProtocolError},
           {"scram with a wrong proof", kCramMd5, SCRAM "S: 334 dj1BQUFB\nC: *\nS: 501 ok", kAuthProtocolError},
           {"scram taken at once", kCramMd5, SCRAM_FIRST "S: 235 ok", kAuthProtocolError},
           {"ntlm", kNtlm, NTLM "S: 235 ok", kSuccess},
           {"ntlm refused", kNtlm, NTLM "S: 535 no", kAuthRefused},
           {"ntlm asks again", kNtlm, NTLM "S: 334 TlRM\nC: *\nS: 501 no", kAuthProtocolError},
           {"ntlm with a challenge that is none", kNtlm, NTLM_FIRST "S: 334 Tk9QRQ==\nC: *\nS: 501 ok",
            kAuthProtocolError},
           {"ntlm not offered", kNtlm, AUTH("LOGIN"), kAuthNotOffered}}) {
    SCOPED_TRACE(c.name);
    const Played played = SignIn(c.mode, platform::Secret("s3cret"), c.dialogue);
    EXPECT_EQ(played.closed.code, c.code);
    // With what the server says, a password can be tried without it: neither side of an exchange is shown.
    std::vector<std::string> shown = played.told.log;
    shown.insert(shown.end(), {played.closed.reply.text, played.closed.reason});
    for (const std::string& line : shown) {
      for (const char* secret : {"s3cret", "YWRhIG", "Yz1iaXdz", "TlRM", "PDFAYT4", "cj1x", "r=qq", "dj1", "ZT14"})
        EXPECT_EQ(line.find(secret), std::string::npos) << line;
    }
  }
}

#define LOGIN(user, password) \
  AUTH("LOGIN") "C: AUTH LOGIN\nS: 334 VXNlcm5hbWU6\nC: " user "\nS: 334 VQ==\nC: " password "\n"
#define PLAIN AUTH("PLAIN") "C: AUTH PLAIN AGFkYQBzM2NyZXQ=\n"
#define SCRAM_PROVED SCRAM "S: 334 dj1LSnJDVmtlMzU0c2lvNnlsREVxZWNTUFBTbVhIWWdZcVQ0aVc3UWdmTVhRPQ==\nC: \n"
#define LOGIN_7 LOGIN("YWRh", "aHVudGVyNw==")
#define LOGIN_2 LOGIN("YWRh", "eHk=")

// Servers repeat what they were told, in the verdict or in what they say of a message later.
TEST(ClientSignIn, HidesWhatTheServerRepeatsOfIt) {
  using enum AuthMode;
  struct Case {
    AuthMode mode;
    const char* password;
    const char* dialogue;  // up to the verdict
    const char* said;      // by the server
    bool in_verdict;       // hidden there
    bool later;
  };
  const Case cases[] = {
      {kLogin, "s3cret", PLAIN, "s3cret", true, true},
      {kLogin, "s3cret", PLAIN, "S3CRET", true, true},
      {kLogin, "s3cret", PLAIN, "s3cr", true, false},
      {kLogin, "s3cret", PLAIN, "czNjcmV0", true, true},
      {kLogin, "s3cret", PLAIN, "AGFkYQBzM2NyZXQ", true, true},
      {kLogin, "s3cret", PLAIN, "733363726574", true, true},
      {kLogin, "hunter7", LOGIN_7, "hunter7", true, true},
      {kLogin, "hunter7", LOGIN_7, "aHVudGVyNw", true, true},
      {kLogin, "xy", LOGIN_2, "xy", true, true},
      {kCramMd5, "s3cret", CRAM, "b67bdfd585cdd6f04fd8260593f8b223", true, true},
      {kCramMd5, "s3cret", CRAM, "<1@a>", true, false},
      {kCramMd5, "s3cret", SCRAM_PROVED, "qqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqx", true, true},
      {kCramMd5, "s3cret", SCRAM_PROVED, "c2FsdA", true, false},
      {kCramMd5, "s3cret", SCRAM_PROVED, "uYNR2YSmYhkcfoz5q80fFkxzabtDvk7KXrIHK5NvIkE", true, true},
      {kNtlm, "s3cret", NTLM, "C412FA945134DECD678D402E74A02980", true, true},
      // What is no secret is for people.
      {kLogin, "s3cret", PLAIN, "ada", false, false},
      {kLogin, "hunter7", LOGIN_7, "Username and Password not accepted, see https://example.org/", false, false},
      {kNtlm, "s3cret", NTLM, "NTLM authentication failed", false, false},
      {kLogin, "mailpass", LOGIN("YWRh", "bWFpbHBhc3M="), "no such mailbox", true, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.dialogue) + c.said);
    const std::string said = std::string("[") + c.said + "]";
    const auto count_shown = [&](const std::string& rest, bool hidden) {
      const Played played = SignIn(c.mode, platform::Secret(c.password), c.dialogue + rest);
      std::vector<std::string> shown = played.told.log;
      shown.insert(shown.end(), {played.closed.reply.text, played.closed.reason});
      for (const Outcome& outcome : played.told.outcomes) {
        EXPECT_EQ(outcome.reply.enhanced, "5.7.1");
        shown.insert(shown.end(), {outcome.reply.text, outcome.reason});
      }
      return std::count_if(shown.begin(), shown.end(), [&](const std::string& line) {
        return line.find(hidden ? c.said : said) != std::string::npos;
      });
    };
    EXPECT_EQ(count_shown("S: 535 5.7.1 no: " + said, c.in_verdict), c.in_verdict ? 0 : 2);
    const std::string later = "S: 235 ok\nC: MAIL FROM:<ada@example.org>\nS: 550-5.7.1 no\nS: 550 5.7.1 " + said;
    EXPECT_EQ(count_shown(later, c.later), c.later ? 0 : 2);
  }
}

// It may know them from an earlier connection.
TEST(ClientSignIn, HidesWhatTheServerKnowsBeforeIt) {
  for (const std::string said : {"hunter2secret", "AGFkYQBodW50ZXIyc2VjcmV0"}) {
    for (const std::string& dialogue :
         {"S: 554 you are " + said,
          "S: 220 ok\nC: EHLO [192.0.2.1]\nS: 550 you are " + said + "\nC: HELO [192.0.2.1]\nS: 550 you are " + said}) {
      const Played played = SignIn(AuthMode::kLogin, platform::Secret("hunter2secret"), dialogue);
      EXPECT_FALSE(played.told.log.empty());
      std::vector<std::string> shown = played.told.log;
      shown.insert(shown.end(), {played.closed.reply.text, played.closed.reason});
      for (const auto& line : shown) EXPECT_EQ(line.find(said), std::string::npos) << line;
    }
  }
}

TEST(ClientSignIn, ReadsTheMechanismsAnewUnderTls) {
  const std::string until_tls =
      EHLO "S: 250-mx\nS: 250-AUTH LOGIN\nS: 250 STARTTLS\nC: STARTTLS\nS: 220 go\nTLS\nC: EHLO [192.0.2.1]\n";
  for (const auto& [dialogue, code] :
       {std::pair{"S: 250-mx\nS: 250 AUTH PLAIN\nC: AUTH PLAIN AGFkYQBzM2NyZXQ=\nS: 235 ok", ResultCode::kSuccess},
        std::pair{"S: 250 mx", ResultCode::kAuthNotOffered}}) {
    EXPECT_EQ(SignIn(AuthMode::kLogin, platform::Secret("s3cret"), until_tls + dialogue, false).closed.code, code)
        << dialogue;
  }
}

TEST(ClientSignIn, SaysWhyItWasNotTaken) {
  struct Case {
    const char* reply;
    State state;
    const char* words;
  };
  using enum State;
  for (const Case& c : {Case{"535 5.7.8 no", kRefused, "the user or the password"},
                        Case{"454 4.7.0 no", kDeferred, "cannot check the password at present"},
                        Case{"432 4.7.12 no", kDeferred, "change of the password"},
                        Case{"504 5.5.4 no", kRefused, "Choose another"}, Case{"534 5.7.9 no", kRefused, "too weak"},
                        Case{"538 5.7.11 no", kRefused, "encrypted"}, Case{"451 no", kDeferred, "Try again later"}}) {
    const auto closed =
        SignIn(AuthMode::kLogin, platform::Secret("x"), AUTH("LOGIN") "C: AUTH LOGIN\nS: " + std::string(c.reply))
            .closed;
    EXPECT_EQ(closed.state, c.state) << c.reply;
    EXPECT_EQ(closed.code, ResultCode::kAuthRefused) << c.reply;
    EXPECT_NE(closed.reason.find(c.words), std::string::npos) << closed.reason;
  }
}

// A command has 512 octets at most, a line of the exchange 12288 (RFC 4954 4).
TEST(ClientSignIn, KeepsItsLinesToTheLengthThatServersTake) {
  struct Case {
    std::size_t password;
    bool in_command, sent;
  };
  for (const Case& c :
       {Case{367, true, true}, Case{368, false, true}, Case{9208, false, true}, Case{9211, false, false}}) {
    const std::string password(c.password, 'x');
    std::string coded;
    platform::AppendBase64(coded, std::string("\0ada\0", 5) + password);
    std::string dialogue = AUTH("PLAIN") "C: AUTH PLAIN";
    dialogue += c.in_command ? " " : "\nS: 334 \nC: ";
    dialogue += c.sent ? coded + "\nS: 235 ok" : "*\nS: 501 ok";
    EXPECT_EQ(SignIn(AuthMode::kLogin, platform::Secret(password), dialogue).told.ready, c.sent) << c.password;
  }
}

}  // namespace
}  // namespace quillcast::smtp
