// What of a body is laid out on pages.
#include "mail_file/message_pages.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

// Time on paper goes with the square of a line's length: 8 MiB of one word took a minute.
TEST(MessagePages, HaveNoLineThatTakesTooLong) {
  struct Case {
    const char* name;
    const char* pattern;
    int times;
    std::size_t longest;  // bytes of a line, at the most
    std::size_t lines;    // at the most
  };
  const test::TemporaryFolder folder;
  for (const Case& c : std::initializer_list<Case>{{"lines", "abc\n", 10000, 3, 10001},
                                                   {"words", "abc ", 30000, 33000, 5},
                                                   {"one word", "a", 100000, 4096, 26},
                                                   {"letters of two bytes", "\u00E9", 20000, 2 * 4096, 6},
                                                   {"Japanese, where lines end anywhere", "\u3042", 20000, 60000, 2}}) {
    std::string text;
    for (int i = 0; i < c.times; ++i) text += c.pattern;
    const auto file = folder.Write("a.eml", "Content-Type: text/plain; charset=utf-8\n\n" + text);
    const auto body = ReadPrintedBody(*Load(file, {})->message, BodyFormat::kText, kMostPrinted, nullptr);
    ASSERT_TRUE(body) << c.name;
    const std::string shown = platform::ReplaceAll(body->text, "\r", "");
    const auto lines = platform::Split(std::string_view(shown), '\n');
    EXPECT_LE(lines.size(), c.lines) << c.name;
    for (const std::string_view line : lines) EXPECT_LE(line.size(), c.longest) << c.name;
    EXPECT_EQ(platform::ReplaceAll(shown, "\n", ""), platform::ReplaceAll(text, "\n", "")) << c.name;
  }
}

}  // namespace
}  // namespace quillcast::mail_file
