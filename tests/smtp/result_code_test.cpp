// The texts that people read for the result of a send.
#include "smtp/result_code.h"

#include <gtest/gtest.h>

namespace quillcast::smtp {
namespace {

TEST(ResultCode, GivesTheTextsToTheLetter) {
  for (const auto& [code, text] : std::initializer_list<std::pair<int, const char*>>{
           {0, "Error 0: Unknown Error."},
           {1, "Error 1: An exception has occurred."},
           {2, "Error 2: Unknown Error."},
           {6, "Error 6: There was an error terminating the conversation with the SMTP mail server."},
           {8,
            "Error 8: An error was reported in response to a recipient address. The SMTP server may refuse to handle "
            "mail for unknown recipients."},
           {11,
            "Error 11: There was an error reading a file. If you have specified file attachments, ensure that they "
            "exist and the you have access to them."},
           {12, "Error 12: Unknown Error."},
           {23, "Error 23: Unknown Error."},
           {27, "Error 27: Socket Timeout Error."},
           {28, "Error 28: Unknown Error."},
           {-5, "Error -5: Unknown Error."}}) {
    EXPECT_EQ(ResultText(code), text);
    EXPECT_EQ(WriteSendStatus(code), std::string("There was an error sending your message.\r\n") + text);
    EXPECT_EQ(TestResultText(code), code == 6 ? "Error 6: Unknown Error." : text);
  }
}

}  // namespace
}  // namespace quillcast::smtp
