// Texts that their senders broke into lines, and what they are as they were written.
#include <gtest/gtest.h>

#include "mail_file/mail_message.h"
#include "platform/text.h"
#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

TEST(FlowedText, IsWholeAgain) {
  struct Case {
    const char* name;
    const char* parameters;
    const char* lines;
    const char* expected;
  };
  const test::TemporaryFolder folder;
  for (const Case& c : std::initializer_list<Case>{
           {"fixed", "", "a \nb\n> c", "a \nb\n> c"},
           {"flowed", "; format=flowed", "`Take some more tea,' the March Hare said to Alice, \nvery earnestly.\n\nx\n",
            "`Take some more tea,' the March Hare said to Alice, very earnestly.\n\nx\n"},
           {"in capitals", "; Format=Flowed", "a \nb\n", "a b\n"},
           {"the sender's spaces", "; format=flowed; delsp=yes", "Donaudampf \nschiff  \nfahrt\n",
            "Donaudampfschiff fahrt\n"},
           {"DelSp alone", "; delsp=yes", "a \nb\n", "a \nb\n"},
           {"quoted", "; format=flowed", ">>>Take some more tea. \n>>>Now.\n>>I've had nothing yet, \n>>so.\n>\nx\n",
            ">>> Take some more tea. Now.\n>> I've had nothing yet, so.\n>\nx\n"},
           {"quoted with blanks", "; format=flowed", "> a \n> b\n> > c\n", "> a b\n> > c\n"},
           {"a depth that changes in a paragraph", "; format=flowed", "> a \nb \n>> c\n", "> a \nb \n>> c\n"},
           {"stuffed", "; format=flowed", " From here \n  on\n >no quotation\n", "From here  on\n>no quotation\n"},
           {"signature", "; format=flowed", "a \n-- \nAda \nB.\n> -- \n> C\n", "a \n-- \nAda B.\n> -- \n> C\n"},
           {"line of a space", "; format=flowed", "a\n \nb\n", "a\n\nb\n"},
           {"before an empty line", "; format=flowed", "Dear Bob, \n\nx \n \n> y \n>\n> z\n",
            "Dear Bob, \n\nx \n\n> y \n>\n> z\n"},
           {"before an empty line, the sender's spaces", "; format=flowed; delsp=yes", "Dear Bob,  \n\nx\n",
            "Dear Bob, \n\nx\n"},
           {"without an end", "; format=flowed", "a \nb", "a b"},
           {"that goes on nowhere", "; format=flowed", "a \n", "a \n"},
       }) {
    const auto file = folder.Write("a.eml", "Content-Type: text/plain" + std::string(c.parameters) + "\n\n" + c.lines);
    const auto text = Load(file, {})->message->TextBody();
    EXPECT_EQ(platform::ReplaceAll(*text, "\r\n", "\n"), c.expected) << c.name;
  }
}

}  // namespace
}  // namespace quillcast::mail_file
