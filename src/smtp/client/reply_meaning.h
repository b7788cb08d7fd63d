// What a session waits for, and what it means when it comes, is refused, or does not come.
#pragma once

#include <array>
#include <chrono>
#include <string>
#include <string_view>

#include "smtp/outcome.h"
#include "smtp/result_code.h"

namespace quillcast::smtp {

// The order is that of the table.
enum class Awaited {
  kGreeting,
  kEhlo,
  kHelo,
  kStartTls,
  kAuth,
  kMail,
  kRcpt,
  kData,
  kEndOfData,
  kLoneDot,  // the end of data where DATA was accepted in vain
  kReset,
  kQuit,
  // What is no reply.
  kHandshake,
  kBlock,  // that the server takes so much of what is sent
};

struct Meaning {
  Awaited awaited;
  ResultCode refused;                // what a 4xx or 5xx makes of it
  const char* what;                  // that the server did not take
  const char* missing;               // a sentence, where it does not come
  int ok_class = 2;                  // the class that lets things go on
  std::chrono::minutes patience{5};  // RFC 5321 4.5.3.2; what is not named there takes as long as MAIL
};

inline constexpr std::array kMeanings{
    Meaning{Awaited::kGreeting, ResultCode::kGreetingRefused, "the connection", "The server did not greet."},
    Meaning{Awaited::kEhlo, ResultCode::kGreetingRefused, "EHLO", "The server did not answer the greeting (EHLO)."},
    Meaning{Awaited::kHelo, ResultCode::kGreetingRefused, "HELO", "The server did not answer the greeting (HELO)."},
    Meaning{Awaited::kStartTls, ResultCode::kGreetingRefused, "STARTTLS",
            "The server did not answer the request for encryption (STARTTLS)."},
    Meaning{Awaited::kAuth, ResultCode::kAuthRefused, "the user or the password",
            "The server did not answer the sign-in (AUTH)."},
    Meaning{Awaited::kMail, ResultCode::kSenderRefused, "the sender", "The server did not answer the sender (MAIL)."},
    Meaning{Awaited::kRcpt, ResultCode::kRecipientRefused, "the recipient",
            "The server did not answer the recipient (RCPT)."},
    Meaning{Awaited::kData, ResultCode::kMessageRefused, "the message",
            "The server did not answer the announcement of the message (DATA).", 3, std::chrono::minutes(2)},
    Meaning{Awaited::kEndOfData, ResultCode::kMessageRefused, "the message",
            "The server did not answer the end of the message: it may have been taken.", 2, std::chrono::minutes(10)},
    Meaning{Awaited::kLoneDot, ResultCode::kMessageRefused, "the message",
            "The server did not answer the end of the message that it had refused.", 2, std::chrono::minutes(10)},
    Meaning{Awaited::kReset, ResultCode::kBadResponse, "RSET",
            "The server did not answer the request to start afresh (RSET)."},
    Meaning{Awaited::kQuit, ResultCode::kQuitFailed, "QUIT", "The server did not answer the farewell (QUIT)."},
    Meaning{Awaited::kHandshake, ResultCode::kGreetingRefused, "the encryption",
            "The server did not finish the handshake of TLS."},
    Meaning{Awaited::kBlock, ResultCode::kConnectionLost, "what was sent", "The server stopped taking what was sent.",
            2, std::chrono::minutes(3)},
};

constexpr const Meaning& MeaningOf(Awaited awaited) { return kMeanings[static_cast<std::size_t>(awaited)]; }

static_assert([] {
  for (const Meaning& row : kMeanings) {
    if (&MeaningOf(row.awaited) != &row) return false;
  }
  return true;
}());

// Whether it is the reply to a command of a message.
constexpr bool IsOfMessage(Awaited awaited) { return awaited >= Awaited::kMail && awaited <= Awaited::kReset; }

// The verdict of a 4xx or 5xx, which says in a sentence what was not taken.
Outcome Refusal(Awaited awaited, const ServerReply& reply);

// Of a server whose answer is none to what it was asked; `what` goes behind a colon.
Outcome NoSense(std::string_view what);

}  // namespace quillcast::smtp
