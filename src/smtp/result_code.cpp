#include "smtp/result_code.h"

#include <fmt/format.h>

#include <array>
#include <string_view>

namespace quillcast::smtp {
namespace {

struct Row {
  ResultCode code;
  std::string_view text;
};

// Shown to the letter, their spelling included.
using enum ResultCode;
constexpr auto kResults = std::to_array<Row>({
    {kException, "Error 1: An exception has occurred."},
    {kOutOfMemory, "Error 3: The process has run out of memory."},
    {kMessageRefused, "Error 4: An error has occurred due to a problem with the message body or attachments."},
    {kGreetingRefused, "Error 5: There was a problem initiating the conversation with the mail server."},
    {kQuitFailed, "Error 6: There was an error terminating the conversation with the SMTP mail server."},
    {kSenderRefused,
     "Error 7: The from address was not formatted correctly or was rejected by the SMTP mail server. Some SMTP mail "
     "servers will only accept mail from particular addresses or domains. SMTP mail servers may also reject a from "
     "address if the server cannot successfully do a reverse lookup on the from address."},
    {kRecipientRefused,
     "Error 8: An error was reported in response to a recipient address. The SMTP server may refuse to handle mail for "
     "unknown recipients."},
    {kConnectFailed, "Error 9: There was an error connecting to the SMTP mail server."},
    {kFileNotOpened,
     "Error 10: There was an error opening a file. If you have specified file attachments, ensure that they exist and "
     "that you have access to them."},
    {kFileNotRead,
     "Error 11: There was an error reading a file. If you have specified file attachments, ensure that they exist and "
     "the you have access to them."},
    {kNoServer, "Error 15: No mail server specified."},
    {kConnectionLost, "Error 16: There was a problem with the connection and a socket error occurred."},
    {kHostNotFound, "Error 17: Could not resolve host."},
    {kBadResponse, "Error 18: Connected but server sent back bad response."},
    {kNoThread, "Error 19: Could not create thread."},
    {kCancelled, "Error 20: The operation cancelled."},
    {kResolveTimeout, "Error 21: The operation timed-out while the host was being resolved."},
    {kConnectTimeout, "Error 22: The operation timed-out while connecting."},
    {kAuthRefused, "Error 24: ESMTP Authentication failed."},
    {kAuthNotOffered, "Error 25: The selected ESMTP Authentication mode is not supported by the server."},
    {kAuthProtocolError, "Error 26: ESMTP Authentication protocol error."},
    {kReplyTimeout, "Error 27: Socket Timeout Error."},
});

std::string Unknown(std::int32_t code) { return fmt::format("Error {}: Unknown Error.", code); }

}  // namespace

std::string ResultText(std::int32_t code) {
  for (const Row& row : kResults) {
    if (row.code == static_cast<ResultCode>(code)) return std::string(row.text);
  }
  return Unknown(code);
}

std::string TestResultText(std::int32_t code) {
  constexpr auto kRowThatTheTestLacks = static_cast<std::int32_t>(kQuitFailed);
  return code == kRowThatTheTestLacks ? Unknown(code) : ResultText(code);
}

std::string WriteSendStatus(std::int32_t code) {
  return "There was an error sending your message.\r\n" + ResultText(code);
}

}  // namespace quillcast::smtp
