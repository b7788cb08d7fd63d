// Dialogues of several messages under pipelining: what goes out without waiting, what each reply means where more is in
// flight behind it, and what becomes of the messages behind.
#include <gtest/gtest.h>

#include <deque>

#include "smtp/client/client_play.h"

namespace quillcast::smtp {
namespace {

// Messages of one line to r0, r1 and so on, submitted as the session wants them. To a server that is known to take
// messages in the words in which it takes all, or of which nothing is known.
struct Pipeline {
  explicit Pipeline(const char* extensions, std::size_t messages, bool known = true) {
    if (known) window.words().Learn({250, "", "ok"});
    options.pipeline = true;
    for (std::size_t n = 0; n < messages; ++n) sources.emplace_back("hi" + std::to_string(n) + "\r\n");
    session.emplace(options, SessionSetup{"[127.0.0.1]", true, false}, window);
    Play(*session, told, std::string("S: 220 ESMTP\nC: EHLO [127.0.0.1]\nS: 250-mx\n") + extensions);
  }
  void Run(std::string_view dialogue) {
    Play(*session, told, dialogue, [this] {
      while (submitted < sources.size() && session->WantsMessage()) {
        const std::string recipient = "r" + std::to_string(submitted) + "@b.c";
        session->Submit({.sender = "a@b.c"_address, .recipient = *Address::From(recipient), .size = 5},
                        sources[submitted]);
        ++submitted;
      }
      Listen(*session, told);
    });
  }
  // "sent 0, failed 16 again": of the messages, in order.
  std::string Outcomes() const {
    std::string out;
    for (std::size_t n = 0; n < told.outcomes.size(); ++n) {
      if (n > 0) out += ", ";
      out += std::string(Name(told.outcomes[n].state)) + " " + std::to_string(static_cast<int>(told.outcomes[n].code));
      if (told.again[n]) out += " again";
    }
    return out;
  }

  ClientOptions options;
  SendWindow window;
  Told told;
  std::deque<TextSource> sources;
  std::size_t submitted = 0;
  std::optional<ClientSession> session;
};

struct Case {
  const char* name;
  std::string dialogue;
  const char* outcomes;
};

void Check(const char* extensions, const Case& c, bool known = true) {
  SCOPED_TRACE(c.name);
  std::size_t messages = 2;
  while (c.dialogue.find("r" + std::to_string(messages) + "@") != std::string::npos) ++messages;
  Pipeline p(extensions, messages, known);
  p.Run(c.dialogue);
  EXPECT_EQ(p.Outcomes(), c.outcomes);
}

#define ENVELOPE(n) "C: MAIL FROM:<a@b.c>\nC: RCPT TO:<r" #n "@b.c>\n"
#define DATA(n) ENVELOPE(n) "C: DATA\n"
#define BODY(n) "C: hi" #n "\nC: .\n"
#define YES "S: 250 ok\n"
#define GO YES YES "S: 354 go\n"

TEST(ClientPipeline, DataGoesWithItsEnvelopeAndTheNextEnvelopeWithTheEnd) {
  for (const Case& c : std::initializer_list<Case>{
           {"all is well", DATA(0) GO BODY(0) DATA(1) YES GO BODY(1) YES, "sent 0, sent 0"},
           {"replies in one packet",
            DATA(0) "S+ 250 ok\nS+ 250 ok\nS: 354 go\n" BODY(0)
                DATA(1) "S+ 250 taken\nS+ 250 ok\nS+ 250 ok\nS: 354 go\n" BODY(1) YES,
            "sent 0, sent 0"},
           {"recipient and DATA refused",
            DATA(0) YES "S: 550 5.1.1 no\nS: 554 no recipients\nC: RSET\n" DATA(1) YES GO BODY(1) YES,
            "refused 8, sent 0"},
           {"354 in vain", DATA(0) YES "S: 550 no\nS: 354 go\nC: .\n" DATA(1) "S: 554 no recipients\n" GO BODY(1) YES,
            "refused 8, sent 0"},
           {"354 and 250 in vain",
            DATA(0) YES "S: 450 no\nS: 354 go\nC: .\n" DATA(1) "S: 250 whatever\n" GO BODY(1) YES,
            "deferred 8, sent 0"},
           {"sender refused", DATA(0) "S: 550 no\nS: 503 MAIL first\nS: 503 MAIL first\n" DATA(1) GO BODY(1) YES,
            "refused 7, sent 0"},
           {"sender refused, recipient taken", DATA(0) "S: 550 no\nS: 250 ok\n", "failed 18 again"},
           {"DATA refused", DATA(0) YES YES "S: 452 full\nC: RSET\n" DATA(1) YES GO BODY(1) YES, "deferred 4, sent 0"},
           {"message refused", DATA(0) GO BODY(0) DATA(1) "S: 554 spam\n" GO BODY(1) YES, "refused 4, sent 0"},
           {"goodbye to MAIL", DATA(0) "S: 421 bye\n", "failed 16 again"},
           {"goodbye to DATA", DATA(0) YES YES "S: 421 bye\n", "failed 16 again"},
           {"goodbye to the message", DATA(0) GO BODY(0) DATA(1) "S: 421 bye\n", "deferred 4, failed 16 again"},
           {"goodbye after a refusal", DATA(0) YES "S: 550 no\nS: 421 bye\n", "refused 8"},
           {"taken before it is out", DATA(0) YES YES "S+ 354 go\nS: 250 taken\n", "failed 18 again"},
           {"a reply too many", DATA(0) GO BODY(0) DATA(1) YES GO BODY(1) YES YES, "sent 0, sent 0"},
           {"no reply at all to the message", DATA(0) GO BODY(0) DATA(1) "S: what?\n", "unknown 18, failed 16 again"},
           {"pipelining not kept at MAIL", DATA(0) "S: 503 one at a time\n", "failed 18 again"},
           {"pipelining not kept at RCPT", DATA(0) YES "S: 500 what?\n", "failed 18 again"},
           {"out of order later, and so refused", DATA(0) GO BODY(0) DATA(1) YES "S: 503 no\nS: 503 no\nS: 503 no\n",
            "sent 0, refused 7"}}) {
    Check("S: 250 PIPELINING\n", c);
  }
}

#define CHUNK(n) "C: BDAT 5 LAST\nC: hi" #n "\n"
#define WHOLE(n) "C: RSET\n" ENVELOPE(n) CHUNK(n)
// The first message has gone alone as far as its chunk, and the second one behind it.
#define BEGUN ENVELOPE(0) YES YES CHUNK(0) WHOLE(1)
#define TAKEN YES YES YES "S: 250 taken\n"

TEST(ClientPipeline, ChunksGoOneBehindTheOther) {
  for (const Case& c : std::initializer_list<Case>{
           {"all is well", BEGUN YES WHOLE(2) TAKEN TAKEN, "sent 0, sent 0, sent 0"},
           {"first recipient refused", ENVELOPE(0) YES "S: 550 no\nC: RSET\n" ENVELOPE(1) CHUNK(1) WHOLE(2) TAKEN TAKEN,
            "refused 8, sent 0, sent 0"},
           {"recipient refused", BEGUN YES WHOLE(2) YES YES "S: 550 no\nS: 503 no recipients\n" TAKEN,
            "sent 0, refused 8, sent 0"},
           {"chunk taken in vain", BEGUN YES WHOLE(2) YES YES "S: 550 no\nS: 250 whatever\n" TAKEN,
            "sent 0, refused 8, sent 0"},
           {"sender and all refused", BEGUN YES WHOLE(2) YES "S: 550 no\nS: 503 no\nS: 503 no\n" TAKEN,
            "sent 0, refused 7, sent 0"},
           {"sender refused, recipient taken", BEGUN YES WHOLE(2) YES "S: 550 no\nS: 250 ok\n",
            "sent 0, unknown 18, unknown 16"},
           {"message refused", BEGUN "S: 554 spam\n" TAKEN, "refused 4, sent 0"},
           {"last message refused", BEGUN YES YES YES YES "S: 554 spam\n", "sent 0, refused 4"},
           {"after a 4xx one at a time, envelope first", BEGUN "S: 451 later\n" TAKEN ENVELOPE(2) YES YES CHUNK(2) YES,
            "deferred 4, sent 0, sent 0"},
           {"RSET refused", BEGUN YES "S: 502 what?\n", "sent 0, unknown 18"},
           {"goodbye to a message", BEGUN YES WHOLE(2) YES YES YES "S: 421 bye\n", "sent 0, deferred 4, unknown 16"},
           {"no sense", BEGUN YES WHOLE(2) "S: what?\n", "sent 0, unknown 18, unknown 16"},
           {"pipelining not kept", ENVELOPE(0) YES "S: 503 one at a time\n", "failed 18 again"}}) {
    Check("S: 250-PIPELINING\nS: 250 CHUNKING\n", c);
  }
}

// Ten went before it, or as many as were taken when the server said that it takes no more, which may be its limit.
// Those behind would be told of as out, and nothing of them is.
TEST(ClientPipeline, AMessageThatWaitsForItsEnvelopeHasNoneBehindIt) {
  const auto with = [](std::string dialogue, std::size_t n) {
    for (auto at = dialogue.find('#'); at != std::string::npos; at = dialogue.find('#')) {
      dialogue.replace(at, 1, std::to_string(n));
    }
    return dialogue;
  };
  const auto text = [](std::size_t n) { return (n < 10 ? "hi" : n < 100 ? "h" : "") + std::to_string(n); };
  const auto chunk = [&](std::size_t n) { return "C: BDAT 5 LAST\nC: " + text(n) + "\n"; };
  const std::string envelope = "C: RSET\nC: MAIL FROM:<a@b.c>\nC: RCPT TO:<r#@b.c>\n";
  for (const bool is_said : {false, true}) {
    SCOPED_TRACE(is_said);
    const std::vector<std::size_t> limits =
        is_said ? std::vector<std::size_t>{5} : std::vector<std::size_t>{10, 20, 50, 100};
    const std::size_t all = limits.back() + 4;
    Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", static_cast<int>(all));
    for (std::size_t n = 0; n < SendWindow::kMost; ++n) p.window.Taken(true);
    if (is_said) p.window.SuspectLimit(limits.back());
    for (std::size_t n = 0; n < all; ++n) p.sources[n] = TextSource(text(n) + "\r\n");
    std::string dialogue = ENVELOPE(0) YES YES + chunk(0);
    std::size_t before = 0;
    for (const std::size_t limit : limits) {
      for (std::size_t n = before + 1; n < limit; ++n) dialogue += with(envelope, n) + chunk(n);
      p.Run(dialogue + with(envelope, limit) + YES);
      EXPECT_EQ(p.submitted, limit + 1);
      dialogue.clear();
      for (std::size_t n = before + 1; n < limit; ++n) dialogue += YES YES YES YES;
      dialogue += (is_said ? YES YES : YES YES YES) + chunk(limit);  // where MAIL is taken, it is none
      before = limit;
    }
    for (std::size_t n = before + 1; n < all; ++n) dialogue += with(envelope, n) + chunk(n);
    p.Run(dialogue + (is_said ? YES YES : YES));
    EXPECT_EQ(p.submitted, all);
    EXPECT_EQ(p.told.outcomes.size(), before + 1);
  }
}

// The server took one, and says goodbye to the sender of the next one, with that and another one out: it takes none of
// them, where it keeps to that. Where it answers on, its answers tell; where it does neither, nobody knows.
TEST(ClientPipeline, BehindAGoodbyeToTheSenderNothingIsTaken) {
  enum class Then { kEnds, kEndsWithin, kIsSilent, kAnswers };
#define GOODBYE BEGUN YES WHOLE(2) YES "S: 421 bye\n"
#define NO "S: 503 no\n"
  const struct {
    const char* name;
    std::string dialogue;
    Then then;
    const char* outcomes;
  } kCases[] = {
      {"it ends", GOODBYE, Then::kEnds, "sent 0, deferred 7 again, failed 16 again"},
      {"it says so to all, and ends", GOODBYE "S: 421 bye\nS: 421 bye\nS: 421 bye\n", Then::kEnds,
       "sent 0, deferred 7 again, failed 16 again"},
      {"behind the one that it took", BEGUN YES WHOLE(2) "S: 421 bye\n", Then::kEnds,
       "sent 0, failed 16 again, failed 16 again"},
      {"behind the one that it took, and goes on", BEGUN YES WHOLE(2) "S: 421 bye\n" YES YES "S: 250 taken\n" TAKEN,
       Then::kAnswers, "sent 0, sent 0, sent 0"},
      {"it is silent", GOODBYE, Then::kIsSilent, "sent 0, deferred 7 again, unknown 27"},
      {"it goes on", GOODBYE NO NO YES YES YES "S: 250 taken\n", Then::kAnswers, "sent 0, deferred 7 again, sent 0"},
      {"it goes on, and ends", GOODBYE NO NO, Then::kEnds, "sent 0, deferred 7 again, unknown 16"},
      {"behind the one that it took, and refuses all", BEGUN YES WHOLE(2) "S: 421 bye\n" NO NO NO, Then::kEnds,
       "sent 0, refused 7 again, unknown 16"},
      {"it ends within an answer", GOODBYE, Then::kEndsWithin, "sent 0, deferred 7 again, unknown 16"},
      {"it goes on without sense", GOODBYE "S: 354 go\n", Then::kAnswers, "sent 0, deferred 7 again, unknown 16"},
      {"it goes on, and takes what it refused", GOODBYE YES, Then::kAnswers, "sent 0, unknown 18, unknown 16"},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.name);
    Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", 3);
    p.Run(each.dialogue);
    EXPECT_FALSE(p.session->WantsMessage());
    EXPECT_TRUE(each.then != Then::kIsSilent || p.session->Patience() == std::chrono::seconds(5));
    if (each.then != Then::kAnswers) {
      const bool ends = each.then != Then::kIsSilent;
      if (each.then == Then::kEndsWithin) p.session->Receive("503 n");
      p.session->GiveUp({State::kFailed, ends ? ResultCode::kConnectionLost : ResultCode::kReplyTimeout, {}, "why"});
      Listen(*p.session, p.told);
    }
    EXPECT_EQ(p.Outcomes(), each.outcomes);
    EXPECT_TRUE(each.then != Then::kEnds || p.window.IsSuspectedLimit(1));
    EXPECT_TRUE(each.then != Then::kIsSilent || p.window.cautious());
  }
}

// Said to the MAIL or the RSET of one of which nothing is out: the next connection goes as far ahead.
TEST(ClientPipeline, AGoodbyeToWhatWaitsForItsEnvelopeIsALimit) {
  for (const char* before : {"", YES}) {
    SCOPED_TRACE(before);
    Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", 3);
    p.window.SuspectLimit(1);
    p.Run(std::string(ENVELOPE(0) YES YES CHUNK(0) "C: RSET\n" ENVELOPE(1) YES) + before + "S: 421 bye\n");
    EXPECT_EQ(p.Outcomes(), "sent 0, failed 16 again");
    EXPECT_TRUE(p.window.IsSuspectedLimit(1));
    EXPECT_FALSE(p.window.cautious());
  }
}

// Of who is in doubt it does not say that nothing went out.
TEST(ClientPipeline, AGoodbyeSaysOfEachWhetherItsMessageWasOut) {
  constexpr const char* kInDoubt =
      "The server ended the connection before it answered for the message. The message may have been taken all the "
      "same.";
  const struct {
    const char* name;
    std::string dialogue;
    std::size_t which;
    const char* reason;
  } kCases[] = {
      {"goodbye to RCPT", BEGUN YES WHOLE(2) YES YES "S: 421 bye\n", 1, kInDoubt},
      {"goodbye before anything is out", ENVELOPE(0) "S: 421 bye\n", 0,
       "The server ended the connection before the message."},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.name);
    Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", 3);
    p.Run(each.dialogue);
    ASSERT_GT(p.told.outcomes.size(), each.which);
    EXPECT_EQ(p.told.outcomes[each.which].reason, each.reason);
  }
}

// Its answers are one ahead from then on, and the last of them may be to a message that it never takes.
TEST(ClientPipeline, AnAnswerTooManyTakesNoMessage) {
#define TWO(to_mail, to_rcpt, taken) \
  ENVELOPE(0) "S: 250 " to_mail "\nS: 250 " to_rcpt "\n" CHUNK(0) WHOLE(1) "S: 250 " taken "\n"
#define FIRST(to_mail, to_rcpt, taken) TWO(to_mail, to_rcpt, taken) WHOLE(2)
#define RESET "C: RSET\nS: 250 reset\n"
#define CODED FIRST("2.1.0 ok", "2.1.5 <r0@b.c> ok", "2.0.0 ok: id=1")
#define WORDY FIRST("ok", "Accepted", "OK id=1")
  for (const Case& c : std::initializer_list<Case>{
           {"in step", CODED "S: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 <r1@b.c> ok\nS: 250 2.6.0 id=2\n",
            "sent 0, sent 0"},
           {"to a message, by codes",
            CODED "S: 250 2.0.0 ok: id=1\nS: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 <r1@b.c> ok\n",
            "sent 0, unknown 18, unknown 16"},
           {"to the recipient, by codes",
            CODED "S: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 <r1@b.c> ok\nS: 250 2.1.5 <r1@b.c> ok\n",
            "sent 0, unknown 18, unknown 16"},
           {"to the first sender",
            ENVELOPE(0) "S: 250 2.1.0 ok\nS: 250 2.1.0 ok\n" CHUNK(0) WHOLE(1) "S: 250 2.1.5 ok\n",
            "unknown 18, unknown 16"},
           {"a server that says the same to recipient and message",
            TWO("2.1.0 ok", "2.1.5 ok", "2.1.5 ok") "S: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 ok\n"
                                                    "S: 250 2.1.5 ok\n" RESET "-\n",
            "sent 0, sent 0"},
           {"and names the recipient in both",
            TWO("ok", "<r0@b.c> fine", "<r0@b.c> fine") "S: 250 reset\nS: 250 ok\nS: 250 <r1@b.c> fine\n"
                                                        "S: 250 <r1@b.c> fine\n" RESET "-\n",
            "sent 0, sent 0"},
           {"one that delivers some at once",
            CODED "S: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 <r1@b.c> ok\nS: 250 2.1.5 delivered\n"
                  "S: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 <r2@b.c> ok\nS: 250 2.0.0 id=3\n" RESET "-\n",
            "sent 0, sent 0, sent 0"},
           {"with the address, and no codes",
            FIRST("ok", "<r0@b.c>... Recipient ok", "id=1") "S: 250 id=1\nS: 250 ok\nS: 250 ok\nS: 250 <r1@b.c>... "
                                                            "Recipient ok\n",
            "sent 0, unknown 18, unknown 16"},
           {"by words", WORDY "S: 250 OK id=1\nS: 250 reset\nS: 250 ok\nS: 250 Accepted\n",
            "sent 0, unknown 18, unknown 16"},
           {"in step, by words", WORDY "S: 250 reset\nS: 250 ok\nS: 250 Accepted\nS: 250 OK id=2\n",
            "sent 0, sent 0"}}) {
    Check("S: 250-PIPELINING\nS: 250 CHUNKING\n", c);
  }
}

// Words that may be another command's are believed once the server is found in step: RSET has its answer, and nothing
// comes behind that.
TEST(ClientPipeline, AnAnswerTooManyThatComesLateTakesNoMessage) {
#define BOTH_REFUSED DATA(0) GO BODY(0) DATA(1) "S: 554 spam\n" GO BODY(1) "S: 554 spam\n"
#define BOTH_ALIKE ENVELOPE(0) YES YES CHUNK(0) WHOLE(1) YES YES YES YES YES
  const std::string both_alike = BOTH_ALIKE;
  for (const Case& c : std::initializer_list<Case>{
           {"in step", both_alike + RESET "-\n", "sent 0, sent 0"},
           {"in step, and does not know RSET", both_alike + "C: RSET\nS: 502 what?\n-\n", "sent 0, sent 0"},
           {"is learnt", both_alike + RESET "-\n" ENVELOPE(2) CHUNK(2) WHOLE(3) YES YES YES YES YES YES YES,
            "sent 0, sent 0, sent 0, sent 0"},
           {"is not heard out yet", both_alike + RESET, ""},
           {"one more", both_alike + RESET YES, "unknown 18, unknown 18"},
           {"a refusal left", both_alike + RESET "S: 554 spam\n", "unknown 18, unknown 18"},
           {"a refusal in the place of RSET's", both_alike + "C: RSET\nS: 554 spam\n", "unknown 18, unknown 18"},
           {"a refusal in the midst", ENVELOPE(0) YES YES CHUNK(0) WHOLE(1) YES "S: 554 spam\n",
            "unknown 18, unknown 18"},
           {"goodbye", both_alike + RESET "S: 421 bye\n", "unknown 18, unknown 18"},
           {"the recipient's code, to the first", TWO("2.1.0 ok", "2.1.5 ok", "2.1.5 ok") "S: 554 5.7.1 spam\n",
            "unknown 18, unknown 18"},
           {"a server with other words for messages", WORDY "S: 250 reset\nS: 250 ok\nS: 250 Accepted\nS: 250 id=2\n",
            "sent 0, sent 0"}}) {
    Check("S: 250-PIPELINING\nS: 250 CHUNKING\n", c, false);
  }
  for (const Case& c : std::initializer_list<Case>{
           {"in step", DATA(0) GO BODY(0) DATA(1) YES GO BODY(1) YES RESET "-\n", "sent 0, sent 0"},
           {"in the place of the next message's", DATA(0) GO BODY(0) DATA(1) YES YES YES YES,
            "unknown 18, failed 18 again"},
           {"a refusal behind", DATA(0) GO BODY(0) DATA(1) YES "S: 554 spam\n" YES, "unknown 18, failed 18 again"},
           {"both refused alike, in step", BOTH_REFUSED RESET "-\n", "refused 4, refused 4"},
           {"a refusal once more, and the next one's own", BOTH_REFUSED RESET YES, "refused 4, unknown 18"}}) {
    Check("S: 250 PIPELINING\n", c, false);
  }
}

// Whose connection is lost while nothing else is asked has said all there was: it has taken them.
TEST(ClientPipeline, AServerThatHangsUpBehindItsAnswerTookTheMessage) {
  for (const char* asked : {"C: RSET\n", RESET}) {
    Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", 2, false);
    p.Run(std::string(BOTH_ALIKE) + asked);
    p.session->GiveUp({State::kFailed, ResultCode::kConnectionLost, {}, "why"});
    Listen(*p.session, p.told);
    EXPECT_EQ(p.Outcomes(), "sent 0, sent 0");
  }
}

// It is remembered over connections: one thing is asked at a time, and what comes too often is waited for before a
// message goes, where it belongs to nothing.
TEST(ClientPipeline, AServerThatAnswersTooOftenIsServedAllTheSame) {
  Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", 2, false);
  p.Run(BOTH_ALIKE RESET YES);
  p.session.emplace(p.options, SessionSetup{"[127.0.0.1]", true, false}, p.window);
  p.told = {};
  for (TextSource& source : p.sources) source.Rewind();
  p.submitted = 0;
#define DOUBLED(n, taken) \
  "C: MAIL FROM:<a@b.c>\n" YES "C: RCPT TO:<r" #n "@b.c>\n" YES YES "-\n" CHUNK(n) "S: " taken "\n"
  p.Run("S: 220 ESMTP\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250-PIPELINING\nS: 250 CHUNKING\n" DOUBLED(
      0, "554 spam") "C: RSET\n" YES DOUBLED(1, "250 ok"));
  EXPECT_EQ(p.Outcomes(), "refused 4, sent 0");
}

// A refusal that never came: the answer to the next sender is none to the message.
TEST(ClientPipeline, AnAnswerTooFewTakesNoMessage) {
#define CODED_GO "S: 250 2.1.0 ok\nS: 250 2.1.5 ok\nS: 354 go\n"
  for (const Case& c : std::initializer_list<Case>{
           {"by codes",
            DATA(0) CODED_GO BODY(0) DATA(1) "S: 250 2.0.0 taken\n" CODED_GO BODY(1) DATA(2) "S: 250 2.1.0 ok\n",
            "sent 0, unknown 18, failed 16 again"},
           {"to the first message", DATA(0) CODED_GO BODY(0) DATA(1) "S: 250 2.1.0 ok\n",
            "unknown 18, failed 16 again"},
           {"a server that delivers some at once",
            DATA(0) CODED_GO BODY(0) DATA(1) "S: 250 2.0.0 taken\n" CODED_GO BODY(1) "S: 250 2.1.5 delivered\n" RESET
                                                                                     "-\n",
            "sent 0, sent 0"}}) {
    Check("S: 250 PIPELINING\n", c);
  }
#define CODED_WHOLE(n) "S: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 <r" #n "@b.c> ok\n"
  Check("S: 250-PIPELINING\nS: 250 CHUNKING\n",
        {"the answer to RSET stands in its place",
         CODED WHOLE(3) CODED_WHOLE(1) "S: 250 2.0.0 ok: id=2\n" CODED_WHOLE(2) "S: 250 2.0.0 ok\n",
         "sent 0, sent 0, unknown 18, unknown 16"});
}

// Where the connection breaks: before any byte of a message's end is out it may go again, after it nobody knows.
TEST(ClientPipeline, ALostConnectionIsJudgedMessageByMessage) {
  for (const auto& [code, first, second] : {std::tuple{ResultCode::kConnectionLost, "unknown 16", "failed 16 again"},
                                            std::tuple{ResultCode::kReplyTimeout, "unknown 27", "failed 27 again"},
                                            std::tuple{ResultCode::kCancelled, "unknown 20", "failed 20 again"}}) {
    Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", 2);
    p.Run(ENVELOPE(0) YES YES CHUNK(0) WHOLE(1));
    p.session->GiveUp({State::kFailed, code, {}, "why"});
    Listen(*p.session, p.told);
    EXPECT_EQ(p.Outcomes(), std::string(first) + ", " + first);

    Pipeline q("S: 250-PIPELINING\nS: 250 CHUNKING\n", 2);
    q.Run(ENVELOPE(0));
    q.session->Receive("250 ok\r\n250 ok\r\n");
    q.session->BytesToSend();
    q.session->Submit({.sender = "a@b.c"_address, .recipient = "r1@b.c"_address, .size = 5}, q.sources[1]);
    q.session->Sent(q.session->BytesToSend().size() - 1);
    q.session->GiveUp({State::kFailed, code, {}, "why"});
    Listen(*q.session, q.told);
    EXPECT_EQ(q.Outcomes(), std::string(first) + ", " + second);
  }
}

// A server that answers the first of several commands and no more has one chance: the message goes again, in lock-step.
TEST(ClientPipeline, AServerThatDoesNotKeepItIsRemembered) {
  Pipeline p("S: 250 PIPELINING\n", 1);
  p.Run(DATA(0) YES);
  p.session->GiveUp({State::kFailed, ResultCode::kReplyTimeout, {}, "It took too long."});
  Listen(*p.session, p.told);
  EXPECT_EQ(p.Outcomes(), "failed 27 again");
  p.session.emplace(p.options, SessionSetup{"[127.0.0.1]", true, false}, p.window);
  p.submitted = 0;
  p.Run(
      "S: 220 ESMTP\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250 PIPELINING\n"
      "C: MAIL FROM:<a@b.c>\nS: 250 ok\nC: RCPT TO:<r0@b.c>\nS: 250 ok\nC: DATA\nS: 354 go\n" BODY(0) YES);
  EXPECT_EQ(p.Outcomes(), "failed 27 again, sent 0");
}

// What looks like the recipient's answer to one message may be this server's way of taking some: over the next
// connection it is asked one thing at a time, and once it takes one in those words there, they are no sign any more.
TEST(ClientPipeline, AServerThatTakesAMessageInAnothersWordsIsLearnt) {
#define LOCKED(n, taken) \
  "C: MAIL FROM:<a@b.c>\nS: 250 2.1.0 ok\nC: RCPT TO:<r" #n "@b.c>\nS: 250 2.1.5 ok\n-\n" CHUNK(n) "S: 250 " taken "\n"
  Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", 5);
  p.Run(FIRST("2.1.0 ok", "2.1.5 ok", "2.0.0 id=1")
            WHOLE(3) "S: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 ok\nS: 250 2.1.5 ok\n");
  EXPECT_EQ(p.Outcomes(), "sent 0, unknown 18, unknown 16, unknown 16");
  p.session.emplace(p.options, SessionSetup{"[127.0.0.1]", true, false}, p.window);
  p.told = {};
  for (TextSource& source : p.sources) source.Rewind();
  p.submitted = 0;
  p.Run("S: 220 ESMTP\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250-PIPELINING\nS: 250 CHUNKING\n" LOCKED(0, "2.0.0 id=4")
            LOCKED(1, "2.1.5 ok") ENVELOPE(2) CHUNK(2) WHOLE(3) WHOLE(4)
                "S: 250 2.1.0 ok\nS: 250 2.1.5 ok\nS: 250 2.0.0 id=6\n"
                "S: 250 2.0.0 ok\nS: 250 2.1.0 ok\nS: 250 2.1.5 ok\nS: 250 2.1.5 ok\n");
  EXPECT_EQ(p.Outcomes(), "sent 0, sent 0, sent 0, sent 0");
}

// The attachment of a message in flight fails: those before it keep their replies, those behind go elsewhere.
TEST(ClientPipeline, AFileThatFailsHarmsNoOtherMessage) {
  Pipeline p("S: 250-PIPELINING\nS: 250 CHUNKING\n", 2);
  p.sources[1].fails_at = 0;
  p.Run(ENVELOPE(0) YES YES CHUNK(0) "C: RSET\n" ENVELOPE(1) "C: BDAT 5 LAST\n" YES);
  EXPECT_EQ(p.Outcomes(), "sent 0, failed 11");
  EXPECT_TRUE(p.session->closed());
}

TEST(SendWindow, GrowsWhileTheServerIsQuickAndClosesForGood) {
  SendWindow window;
  bool filling = true;
  EXPECT_EQ(window.limit(), 2U);
  for (int n = 0; n < 200; ++n) window.Taken(true);
  EXPECT_EQ(window.limit(), 128U);
  EXPECT_TRUE(window.Wants(64, 1000, filling));
  EXPECT_FALSE(window.Wants(128, 1000, filling));
  EXPECT_FALSE(window.Wants(65, 1000, filling));  // not until half of it is answered
  EXPECT_TRUE(window.Wants(64, 1000, filling));
  EXPECT_FALSE(window.Wants(1, SendWindow::kMostOctets, filling));
  SendWindow slow;
  slow.Taken(false);
  EXPECT_EQ(slow.limit(), 2U);
  window.BeCautious();
  window.Taken(true);
  EXPECT_EQ(window.limit(), 1U);
}

}  // namespace
}  // namespace quillcast::smtp
