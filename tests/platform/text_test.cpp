// Text operations on the values that have gone wrong elsewhere: empty, broken UTF-8, control characters, limits.
#include "platform/text.h"

#include <gtest/gtest.h>

#include "platform/utf8.h"

namespace quillcast::platform {
namespace {

TEST(Text, ParsesWholeNumbersOnly) {
  struct Case {
    const char* text;
    std::optional<std::int64_t> value;
  };
  for (const Case& c :
       std::initializer_list<Case>{Case{"0", 0}, Case{" 25 ", 25}, Case{"65536", 65536}, Case{"", {}}, Case{"-1", {}},
                                   Case{"1.5", {}}, Case{"0x10", {}}, Case{"9223372036854775807", INT64_MAX},
                                   Case{"9223372036854775808", {}}, Case{"25 26", {}}}) {
    EXPECT_EQ(ParseWholeNumber(c.text), c.value) << c.text;
  }
}

TEST(Text, FormatsThousands) {
  EXPECT_EQ(WithThousands(0), "0");
  EXPECT_EQ(WithThousands(999), "999");
  EXPECT_EQ(WithThousands(1000), "1,000");
  EXPECT_EQ(WithThousands(-1234567), "-1,234,567");
}

TEST(Text, PrintableLetsNothingThroughThatATerminalObeys) {
  EXPECT_EQ(Printable("250 ok\r\n\x1b[31mred\x07\x7f"), "250 ok???[31mred??");
  EXPECT_EQ(Printable("caf\xC3\xA9 \xC2\x9B \xFF"), "caf\xC3\xA9 ? ?");  // U+009B is a control sequence introducer
  EXPECT_EQ(Printable("abcdef", 3), "abcd...");
  struct Case {
    const char *text, *printable, *json;
  };
  for (const Case& c :
       std::initializer_list<Case>{{"a\x7F\u0080\u009Fb", "a???b", R"(a\u007f\u0080\u009fb)"},
                                   {"a\u2028b\u2029", "a?b?", R"(a\u2028b\u2029)"},
                                   {"gpj.\u202Aa\u202Eexe", "gpj.?a?exe", R"(gpj.\u202aa\u202eexe)"},
                                   {"\u2066x\u2069", "?x?", R"(\u2066x\u2069)"},
                                   {"\u00A0\u2027\u202F\u2065\u206A \u05D0", "\u00A0\u2027\u202F\u2065\u206A \u05D0",
                                    "\u00A0\u2027\u202F\u2065\u206A \u05D0"}}) {
    EXPECT_EQ(Printable(c.text), c.printable);
    EXPECT_EQ(PrintableJson(c.text), c.json);
  }
}

TEST(Utf8, RefusesWhatIsNotWellFormed) {
  for (const char* good : {"", "a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"})
    EXPECT_TRUE(IsUtf8(good)) << good;
  for (const char* bad : {"\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                          "\xE2\x82", "12345678\xFF", "\xF8\x88\x80\x80\x80"}) {
    EXPECT_FALSE(IsUtf8(bad)) << bad;
  }
}

// At each place of the eight that are looked at together, and behind them.
TEST(Utf8, ARunEndsAtTheFirstByteThatIsNotOfIt) {
  for (std::size_t at = 0; at < 19; ++at) {
    for (int byte = 0; byte < 256; ++byte) {
      std::string text(19, '~');
      text[at] = static_cast<char>(byte);
      EXPECT_EQ(AsciiRun(text), byte < 0x80 ? text.size() : at) << byte;
      EXPECT_EQ(PrintableRun(text), byte >= 0x20 && byte < 0x7F ? text.size() : at) << byte;
      const bool is_control = byte < 0x20 || byte == 0x7F;
      EXPECT_EQ(HoldsControl(text), is_control) << byte;
    }
  }
  EXPECT_TRUE(HoldsControl("caf\u00E9\u0085"));
  EXPECT_FALSE(HoldsControl("caf\u00E9\u00A0"));
}

TEST(Utf8, EveryCodePointComesBack) {
  for (char32_t code = 0; code <= 0x10FFFF; ++code) {
    if (code >= 0xD800 && code < 0xE000) continue;
    std::string text;
    AppendUtf8(text, code);
    const auto decoded = DecodeUtf8(text);
    ASSERT_EQ(decoded.code, code);
    ASSERT_EQ(decoded.length, text.size());
    for (std::size_t cut = 1; cut < text.size(); ++cut) ASSERT_EQ(IncompleteUtf8Tail(text.substr(0, cut)), cut);
    ASSERT_EQ(IncompleteUtf8Tail(text), 0U);
  }
}

TEST(Text, NumbersAreDecimalDigitsAlone) {
  for (const auto& [text, value] : std::initializer_list<std::pair<std::string, std::int64_t>>{
           {"1", 1}, {"7", 7}, {"007", 7}, {"10", 10}, {std::string(10'000, '0') + "10", 10}}) {
    EXPECT_EQ(WholeNumberBetween(text, 1, 10), value) << text;
  }
  for (const std::string& text : std::initializer_list<std::string>{
           "", " ", " 7", "7 ", "7\n", "+5", "-5", "1e1", "0x5", "5.0", "5,", "\xD9\xA3", "\xEF\xBC\x92", "0", "11",
           "18446744073709551621", std::string(10'000, '9')}) {
    EXPECT_FALSE(WholeNumberBetween(text, 1, 10)) << text;
  }
}

}  // namespace
}  // namespace quillcast::platform
