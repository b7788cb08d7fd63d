// What a person reads when the server falls silent, or hangs up, wherever it was waited for: each wait by its name, and
// of each message whether it may have been taken.
#include <gtest/gtest.h>

#include <deque>

#include "smtp/client/client_play.h"

namespace quillcast::smtp {
namespace {

using Texts = std::vector<std::string>;

struct Wait {
  const char* name;
  std::string dialogue;  // until the server falls silent
  const char* missing;   // what is told of the session
  Texts outcomes;        // of each message its state and, in brackets, what is told of it
  bool partly = false;   // half of what was to be sent last is not out
};

// A session that submits letters to r0, r1 and so on whenever one is wanted, played up to the wait.
struct Silence {
  explicit Silence(const Wait& wait) {
    options.pipeline = true;
    options.sign_in = wait.dialogue.find("AUTH") != std::string::npos;
    options.user = "ada";
    options.password = platform::Secret("s3cret");
    for (std::size_t n = 0; n < wait.outcomes.size(); ++n) letters.emplace_back("hi" + std::to_string(n) + "\r\n");
    session.emplace(options, SessionSetup{"[127.0.0.1]", true, false}, window);
    Play(*session, told, wait.dialogue, [&] { Feed(); });
    if (!wait.partly) return;
    session->Receive("354 go\r\n");
    session->Sent(session->BytesToSend().size() / 2);
  }
  void Feed() {
    for (; submitted < letters.size() && session->WantsMessage(); ++submitted) {
      const auto recipient = Address::From("r" + std::to_string(submitted) + "@b.c");
      session->Submit({.sender = "a@b.c"_address, .recipient = *recipient, .size = 5}, letters[submitted]);
    }
    Listen(*session, told);
  }
  void GiveUp(ResultCode code, const char* reason) {
    session->GiveUp({State::kFailed, code, {}, reason});
    Listen(*session, told);
  }
  std::vector<std::string> Outcomes() const {
    std::vector<std::string> out;
    for (const Outcome& outcome : told.outcomes)
      out.push_back(Name(outcome.state) + (outcome.reason.empty() ? "" : " (" + outcome.reason + ")"));
    return out;
  }

  ClientOptions options;
  KnownWindow window;
  Told told;
  std::deque<TextSource> letters;
  std::size_t submitted = 0;
  std::optional<ClientSession> session;
};

#define EHLO "S: 220 ESMTP\nC: EHLO [127.0.0.1]\n"
#define PLAIN EHLO "S: 250 mx\n"
#define STARTTLS EHLO "S: 250-mx\nS: 250 STARTTLS\nC: STARTTLS\n"
#define AUTH EHLO "S: 250-mx\nS: 250 AUTH LOGIN\nC: AUTH LOGIN\n"
#define PIPELINING EHLO "S: 250-mx\nS: 250 PIPELINING\n"
#define CHUNKING EHLO "S: 250-mx\nS: 250-PIPELINING\nS: 250 CHUNKING\n"
#define MAIL(n) "C: MAIL FROM:<a@b.c>\n"
#define RCPT(n) "C: RCPT TO:<r" #n "@b.c>\n"
#define TEXT(n) "C: hi" #n "\nC: .\n"
#define CHUNK(n) MAIL(n) RCPT(n) "C: BDAT 5 LAST\nC: hi" #n "\n"
#define YES "S: 250 ok\n"
#define END "The server did not answer the end of the message: it may have been taken."
#define BEFORE "The connection ended before the server answered."

const std::vector<Wait>& Waits() {
  static const std::vector<Wait> waits{
      {"greeting", "", "The server did not greet.", {}},
      {"EHLO", EHLO, "The server did not answer the greeting (EHLO).", {}},
      {"HELO", EHLO "S: 502 what?\nC: HELO [127.0.0.1]\n", "The server did not answer the greeting (HELO).", {}},
      {"STARTTLS", STARTTLS, "The server did not answer the request for encryption (STARTTLS).", {}},
      {"handshake", STARTTLS "S: 220 go\n", "The server did not finish the handshake of TLS.", {}},
      {"EHLO under TLS", STARTTLS "S: 220 go\nTLS\nC: EHLO [127.0.0.1]\n",
       "The server did not answer the greeting (EHLO).", Texts{}},
      {"AUTH", AUTH, "The server did not answer the sign-in (AUTH).", {}},
      {"a response", AUTH "S: 334 VXNlcm5hbWU6\nC: YWRh\n", "The server did not answer the sign-in (AUTH).", {}},
      {"MAIL", PLAIN MAIL(0), "The server did not answer the sender (MAIL).",
       Texts{"failed (The server did not answer the sender (MAIL).)"}},
      {"RCPT", PLAIN MAIL(0) YES RCPT(0), "The server did not answer the recipient (RCPT).",
       Texts{"failed (The server did not answer the recipient (RCPT).)"}},
      {"DATA", PLAIN MAIL(0) YES RCPT(0) YES "C: DATA\n",
       "The server did not answer the announcement of the message (DATA).",
       Texts{"failed (The server did not answer the announcement of the message (DATA).)"}},
      {"a block", PLAIN MAIL(0) YES RCPT(0) YES "C: DATA\n", "The server stopped taking what was sent.",
       Texts{"failed (The server stopped taking what was sent.)"}, true},
      {"the end", PLAIN MAIL(0) YES RCPT(0) YES "C: DATA\nS: 354 go\n" TEXT(0), END, {"unknown (" END ")"}},
      {"a lone dot", PIPELINING MAIL(0) RCPT(0) "C: DATA\n" YES "S: 550 no\nS: 354 go\nC: .\n",
       "The server did not answer the end of the message that it had refused.", Texts{"refused"}},
      {"RSET", PLAIN MAIL(0) YES RCPT(0) "S: 550 no\nC: RSET\n",
       "The server did not answer the request to start afresh (RSET).",
       Texts{"refused", "failed (The server did not answer the request to start afresh (RSET).)"}},
      {"the end, and the next envelope",
       PIPELINING MAIL(0) RCPT(0) "C: DATA\n" YES YES "S: 354 go\n" TEXT(0) MAIL(1) RCPT(1) "C: DATA\n", END,
       Texts{"unknown (" END ")", "failed (" BEFORE ")"}},
      {"two chunks, and RSET behind one of them",
       CHUNKING MAIL(0) RCPT(0) YES YES "C: BDAT 5 LAST\nC: hi0\nC: RSET\n" CHUNK(1) YES "C: RSET\n" CHUNK(2),
       "The server did not answer the request to start afresh (RSET).",
       Texts{"sent", "unknown (" END ")", "unknown (" END ")"}},
  };
  return waits;
}

TEST(ClientWaits, ASilentServerIsToldByWhatItDidNotAnswer) {
  for (const Wait& wait : Waits()) {
    SCOPED_TRACE(wait.name);
    Silence silence(wait);
    silence.GiveUp(ResultCode::kReplyTimeout, "");
    ASSERT_TRUE(silence.told.closed);
    EXPECT_EQ(silence.told.closed->reason, wait.missing);
    EXPECT_EQ(silence.Outcomes(), wait.outcomes);
  }
}

TEST(ClientWaits, AConnectionThatIsLostSaysTheSameBehindItsReason) {
  for (const Wait& wait : Waits()) {
    SCOPED_TRACE(wait.name);
    Silence silence(wait);
    silence.GiveUp(ResultCode::kConnectionLost, "Gone.");
    EXPECT_EQ(silence.told.closed->reason, std::string("Gone. ") + wait.missing);
    for (const Outcome& outcome : silence.told.outcomes) {
      const bool in_doubt = outcome.state == State::kUnknown;
      EXPECT_EQ(outcome.reason.ends_with(END), in_doubt) << outcome.reason;
    }
  }
  Silence idle({"nothing", PLAIN, "", {}});
  idle.GiveUp(ResultCode::kConnectionLost, "Gone.");
  EXPECT_EQ(idle.told.closed->reason, "Gone.");
}

// What makes no sense decides nothing: behind the end of a message it leaves it in doubt, and that is told.
TEST(ClientWaits, NonsenseBehindTheEndLeavesTheMessageInDoubt) {
  for (const char* nonsense : {"what?\r\n", "\r\n", "999 odd\r\n", "354 go\r\n"}) {
    SCOPED_TRACE(nonsense);
    Silence silence({"the end", PLAIN MAIL(0) YES RCPT(0) YES "C: DATA\nS: 354 go\n" TEXT(0), END, {"one"}});
    silence.session->Receive(nonsense);
    Listen(*silence.session, silence.told);
    ASSERT_EQ(silence.told.outcomes.size(), 1U);
    EXPECT_EQ(silence.told.outcomes[0].state, State::kUnknown);
    EXPECT_NE(silence.told.outcomes[0].reason.find("may have been taken"), std::string::npos);
  }
}

// A server that says goodbye within the text has not taken it: the message goes over another connection.
TEST(ClientWaits, AGoodbyeWithinTheTextLetsTheMessageGoAgain) {
  Silence silence({"a block", PLAIN MAIL(0) YES RCPT(0) YES "C: DATA\n", "", {"one"}, true});
  silence.session->Receive("421 4.3.2 bye\r\n");
  Listen(*silence.session, silence.told);
  EXPECT_EQ(silence.told.again, std::vector<bool>{true});
  EXPECT_EQ(silence.told.outcomes.at(0).state, State::kFailed);
}

// Whoever stops knows what they did; only what may have gone out has to be told.
TEST(ClientWaits, WhoeverStopsIsToldWhatMayHaveBeenTaken) {
  for (const Wait& wait : Waits()) {
    SCOPED_TRACE(wait.name);
    Silence silence(wait);
    silence.GiveUp(ResultCode::kCancelled, "");
    EXPECT_EQ(silence.told.closed->reason, "");
    for (const Outcome& outcome : silence.told.outcomes)
      EXPECT_EQ(outcome.reason, outcome.state == State::kUnknown ? END : "");
  }
}

// A broken exchange that signs in was cancelled: that is why, whatever is waited for then. And a farewell may be
// missed.
TEST(ClientWaits, WhatWasDecidedBeforeStands) {
  Silence broken({"cancelled", AUTH "S: 334 ?\nC: *\n", "", {}});
  broken.GiveUp(ResultCode::kReplyTimeout, "");
  EXPECT_EQ(broken.told.closed->code, ResultCode::kAuthProtocolError);
  EXPECT_EQ(broken.told.closed->reason, "The server broke the exchange that signs in: its challenge is no base 64.");
  Silence quit({"QUIT", PLAIN, "", {}});
  quit.session->Quit();
  Play(*quit.session, quit.told, "C: QUIT");
  quit.GiveUp(ResultCode::kReplyTimeout, "");
  EXPECT_EQ(quit.told.closed->reason, "The server did not answer the farewell (QUIT).");
}

}  // namespace
}  // namespace quillcast::smtp
