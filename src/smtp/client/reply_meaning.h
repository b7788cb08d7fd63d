// What a reply means to the client that gave the command.
#pragma once

#include <array>
#include <chrono>

#include "smtp/client/client_session.h"
#include "smtp/result_code.h"

namespace quillcast::smtp {

struct Meaning {
  ResultCode refused;                // what a 4xx or 5xx makes of it
  const char* what;                  // that the server did not take
  int ok_class = 2;                  // the class that lets things go on
  std::chrono::minutes patience{5};  // RFC 5321 4.5.3.2; what is not named there takes as long as MAIL
};

// In the order of ClientSession::Command.
inline constexpr std::array kMeanings{
    Meaning{ResultCode::kGreetingRefused, "the connection"},
    Meaning{ResultCode::kGreetingRefused, "EHLO"},
    Meaning{ResultCode::kGreetingRefused, "HELO"},
    Meaning{ResultCode::kGreetingRefused, "STARTTLS"},
    Meaning{ResultCode::kAuthRefused, "the user or the password"},
    Meaning{ResultCode::kSenderRefused, "the sender"},
    Meaning{ResultCode::kRecipientRefused, "the recipient"},
    Meaning{ResultCode::kMessageRefused, "the message", 3, std::chrono::minutes(2)},
    Meaning{ResultCode::kMessageRefused, "the message", 2, std::chrono::minutes(10)},
    Meaning{ResultCode::kMessageRefused, "the message", 2, std::chrono::minutes(10)},
    Meaning{ResultCode::kBadResponse, "RSET"},
    Meaning{ResultCode::kQuitFailed, "QUIT"},
};
static_assert(kMeanings.size() == static_cast<std::size_t>(ClientSession::Command::kQuit) + 1);

constexpr const Meaning& MeaningOf(ClientSession::Command command) {
  return kMeanings[static_cast<std::size_t>(command)];
}

}  // namespace quillcast::smtp
