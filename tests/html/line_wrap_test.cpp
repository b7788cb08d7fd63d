// Where lines are broken, case by case at a width of 32 columns, and what no break may change in any text.
#include "html/line_wrap.h"

#include <gtest/gtest.h>

#include "html/html_to_text.h"
#include "platform/text.h"
#include "support/random_text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kWidth = 32;

struct Case {
  const char* name;
  std::string text, wrapped;
};

std::string Times(std::size_t count, std::string_view text) {
  std::string out;
  for (; count > 0; --count) out += text;
  return out;
}

TEST(WrapText, BreaksWhereAReaderExpects) {
  const std::string x30(30, 'x');
  const std::string x32(32, 'x');
  const std::string ri = "日";
  const std::string acute = "e\xCC\x81";            // a letter with a combining mark
  const std::string family = "👨‍👩‍👧";  // three emoji and two joiners
  const Case cases[] = {
      {"nothing", "", ""},
      {"lines that fit", "a\n\n" + x32 + "\n", "a\n\n" + x32 + "\n"},
      {"the blank gives way", x30 + " a b", x30 + " a\nb"},
      {"all the blanks give way", x30 + "  \t abc", x30 + "\nabc"},
      {"a word that ends at the width", x30 + " a " + x32, x30 + " a\n" + x32},
      {"indentation stays, at the first line", "    " + Times(9, "abc "), "    " + Times(6, "abc ") + "abc\nabc abc "},
      {"indentation is no place", "    " + x30, "    " + x30},
      {"blanks that do not fit go", x32 + "   \nb ", x32 + "\nb "},
      {"a tab reaches far", "1234567\t1234567\t1234567\tabcdefgh i", "1234567\t1234567\t1234567\tabcdefgh\ni"},
      {"a word wider than the line", "a " + x30 + x30 + " b", "a\n" + x32 + "\n" + Times(28, "x") + " b"},
      {"a web address stays whole", "see <http://" + x32 + "/a> or", "see\n<http://" + x32 + "/a>\nor"},
      {"a long address after indentation", "  http://" + x32, "  http://" + x32},
      {"no break at a no-break space",
       x30 + " a\xC2\xA0"
             "b",
       x30 + "\na\xC2\xA0"
             "b"},
      {"marks take no column", Times(32, acute) + " b", Times(32, acute) + "\nb"},
      {"marks stay with their letter", Times(40, acute), Times(32, acute) + "\n" + Times(8, acute)},
      {"a mark on a blank makes it none",
       x30 + " a \xCC\x81"
             "b",
       x30 + "\na \xCC\x81"
             "b"},
      {"emoji take two and stay joined", Times(17, family), Times(16, family) + "\n" + family},
      {"wide characters", Times(17, ri), Times(16, ri) + "\n" + ri},
      {"no stop begins a line", Times(16, ri) + "。" + ri, Times(15, ri) + "\n" + ri + "。" + ri},
      {"nor does small kana", Times(16, ri) + "ょ" + ri, Times(15, ri) + "\n" + ri + "ょ" + ri},
      {"no bracket ends one", Times(15, ri) + "「" + ri + "」", Times(15, ri) + "\n「" + ri + "」"},
      {"wide and narrow do not part", Times(15, ri) + ri + "abc", Times(15, ri) + "\n" + ri + "abc"},
      {"an address among wide characters", Times(10, ri) + "http://例え.jp/" + Times(12, ri) + "。" + ri + ri,
       Times(9, ri) + "\n" + ri + "http://例え.jp/" + Times(12, ri) + "。\n" + ri + ri},
      {"broken UTF-8", x30 + "\xFF\xFE\xC3", x30 + "\xFF\xFE\n\xC3"},
  };
  for (const Case& c : cases) EXPECT_EQ(WrapText(c.text, kWidth), c.wrapped) << c.name;
}

std::string WithoutBlanks(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c != ' ' && c != '\t' && c != '\n') out += c;
  }
  return out;
}

TEST(WrapText, LosesNothingAndIsDoneAtOnce) {
  const std::vector<std::string> letters = {
      "a",  "b", " ",         "  ", "\t",   "\n", "://",  "日", "。", "「", "ょ", "👨‍👩‍👧",
      "\r", "é", "e\xCC\x81", "🇩🇪", "\xFF", "ab", "word", "한"};
  const std::vector<std::string> ascii(letters.begin(), letters.begin() + 7);
  std::mt19937 random(9);
  for (int round = 0; round < 3000; ++round) {
    const std::string text = test::RandomText(random, round % 2 == 0 ? ascii : letters, 300);
    const std::size_t width = 32 + random() % 97;
    const std::string wrapped = WrapText(text, width);
    ASSERT_EQ(WithoutBlanks(wrapped), WithoutBlanks(text));
    ASSERT_EQ(WrapText(wrapped, width), wrapped) << text;
    ASSERT_GE(platform::Split(wrapped, '\n').size(), platform::Split(text, '\n').size());
    if (round % 2 != 0) continue;
    for (const std::string_view line : platform::Split(wrapped, '\n')) {
      const bool may_be_long =
          line.find("://") != std::string_view::npos || line.starts_with(' ') || line.starts_with('\t');
      ASSERT_TRUE(line.size() <= width || may_be_long) << line;
    }
  }
}

TEST(WrapHtml, BreaksWhereItChangesNothing) {
  const std::string x30(30, 'x');
  const Case cases[] = {
      {"nothing", "", ""},
      {"running text", "<p>" + x30 + " a <b>b</b></p>", "<p>" + x30 + "\na <b>b</b></p>"},
      {"a word is never broken", "<p>" + x30 + x30 + "</p>", "<p>" + x30 + x30 + "</p>"},
      {"between attributes", "<img alt=\"" + x30 + "\" src=x width = 1>",
       "<img\nalt=\"" + x30 + "\"\nsrc=x width = 1>"},
      {"never in a quoted value", "<img alt='" + x30 + " a b c d'>", "<img\nalt='" + x30 + " a b c d'>"},
      {"pre", "<pre>" + x30 + " a</pre>" + x30 + " a", "<pre>" + x30 + " a</pre>" + x30 + "\na"},
      {"textarea", "<textarea>" + x30 + " a b</textarea> " + x30, "<textarea>" + x30 + " a b</textarea>\n" + x30},
      {"style", "<style>" + x30 + " { } </style>", "<style>" + x30 + " { } </style>"},
      {"script", "<script>" + x30 + " = 1 + 1</script>", "<script>" + x30 + " = 1 + 1</script>"},
      {"comment", "<!-- " + x30 + " a b -->", "<!-- " + x30 + " a b -->"},
      {"white-space that keeps blanks", "<p style='white-space: pre-wrap'>" + x30 + " a b",
       "<p\nstyle='white-space: pre-wrap'>" + x30 + " a b"},
      {"white-space that does not", "<p style=white-space:nowrap>" + x30 + " a b",
       "<p\nstyle=white-space:nowrap>" + x30 + "\na b"},
      {"wide characters are one word", Times(20, "日") + " a", Times(20, "日") + "\na"},
      {"existing lines stay", "a\n  b\n", "a\n  b\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(WrapHtml(c.text, kWidth), c.wrapped) << c.name;
}

TEST(WrapHtml, ReadsTheSameAsBefore) {
  const std::vector<std::string> letters = {
      "a",          " ",           " ",       "word ",    "<p>",        "<b class='x y' id=z>",
      "<pre>",      "</pre>",      "<!-- ",   " -->",     "<td a=1 b>", "\n",
      "&amp;",      "é",           "<style>", "</style>", "'",          "\"",
      "<textarea>", "</textarea>", "<br />",  ">",        "<"};
  std::mt19937 random(10);
  for (int round = 0; round < 3000; ++round) {
    const std::string html = test::RandomText(random, letters, 200);
    const std::string wrapped = WrapHtml(html, kWidth);
    ASSERT_EQ(HtmlToText(wrapped), HtmlToText(html)) << html;
    ASSERT_EQ(wrapped.size(), html.size());
    for (std::size_t i = 0; i < html.size(); ++i)
      ASSERT_TRUE(wrapped[i] == html[i] || (html[i] == ' ' && wrapped[i] == '\n')) << html;
    ASSERT_EQ(WrapHtml(wrapped, kWidth), wrapped) << html;
  }
}

}  // namespace
}  // namespace quillcast::html
