#include "platform/system_name.h"

#include <gtest/gtest.h>

namespace quillcast::platform {
namespace {

TEST(SystemName, IsWhatTheSystemCallsItself) {
  struct Case {
    const char* os_release;
    const char* name;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"NAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nID=debian\n",
            "Debian GNU/Linux 12 (bookworm)"},
           {"PRETTY_NAME='Ada\\'s \\\"own\\\"'\r\n", "Ada's \"own\""},
           {"PRETTY_NAME=Alpine\n", "Alpine"},
           {"PRETTY_NAME=\"\"\nNAME=Void", "Void"},
           {"#PRETTY_NAME=no\nVARIANT_NAME=x\n", ""},
           {"PRETTY_NAME=\"", "\""},
           {"", ""},
       }) {
    EXPECT_EQ(SystemNameIn(c.os_release), c.name) << c.os_release;
  }
  EXPECT_FALSE(SystemName().empty());
}

}  // namespace
}  // namespace quillcast::platform
