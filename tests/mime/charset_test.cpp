// Character sets: what they hold, what they do not, and that every byte comes back.
#include "mime/charset.h"

#include <gtest/gtest.h>

namespace quillcast::mime {
namespace {

TEST(Charset, IsFoundByAnyOfItsNames) {
  EXPECT_EQ(FindCharset("Windows-1252")->MimeName(), "Windows-1252");
  EXPECT_EQ(FindCharset("UTF8"), Charset::Utf8());
  EXPECT_FALSE(FindCharset(""));
  EXPECT_FALSE(FindCharset("windows-12520"));
}

TEST(Charset, WritesWhatItHoldsAndCountsWhatItDoesNot) {
  struct Case {
    const char* charset;
    const char* text;
    const char* with_marks;
    const char* with_references;
    std::size_t lost;
  };
  const Case cases[] = {
      {"windows-1252", "caf\u00E9 \u20AC5 \u201Cq\u201D",
       "caf\xE9 \x80"
       "5 \x93q\x94",
       "caf\xE9 \x80"
       "5 \x93q\x94",
       0},
      {"windows-1252", "a\u0081b\u0416\U0001F600", "a?b??", "a&#129;b&#1046;&#128512;", 3},
      {"iso-8859-1", "\u20AC\u00E9", "?\xE9", "&#8364;\xE9", 1},
      {"iso-8859-2", "\u0141\u00F3d\u017A \u00E6",
       "\xA3\xF3"
       "d\xBC ?",
       "\xA3\xF3"
       "d\xBC &#230;",
       1},
      {"iso-8859-15", "\u20AC\u0153", "\xA4\xBD", "\xA4\xBD", 0},
      {"windows-1251", "\u0416\u20AC\u00FF", "\xC6\x88?", "\xC6\x88&#255;", 1},
      {"koi8-r", "\u0416\uFF21", "\xF6?", "\xF6&#65313;", 1},
      {"us-ascii", "a\u00E9", "a?", "a&#233;", 1},
      {"utf-8", "\u0416\xFF", "\u0416\uFFFD", "\u0416\uFFFD", 1},
      {"windows-1252", "a\xC3", "a?", "a&#65533;", 1},
  };
  for (const Case& c : cases) {
    const Charset charset = *FindCharset(c.charset);
    std::string out;
    std::size_t lost = 0;
    EXPECT_TRUE(charset.Encode(c.text, out, &lost));
    EXPECT_EQ(out, c.with_marks) << c.charset << c.text;
    EXPECT_EQ(lost, c.lost) << c.charset << c.text;
    out.clear();
    EXPECT_TRUE(charset.Encode(c.text, out, nullptr, Unmapped::kHtmlReference));
    EXPECT_EQ(out, c.with_references) << c.charset << c.text;
    out = "kept";
    EXPECT_EQ(charset.Encode(c.text, out, nullptr, Unmapped::kFail), c.lost == 0);
    EXPECT_EQ(out, c.lost == 0 ? std::string("kept") + c.with_marks : "kept");
  }
}

TEST(Charset, EveryByteThatHasAMeaningComesBack) {
  const std::pair<const char*, std::size_t> undefined[] = {
      {"windows-1252", 5}, {"iso-8859-1", 0},   {"iso-8859-2", 0}, {"iso-8859-15", 0},
      {"windows-1250", 0}, {"windows-1251", 0}, {"koi8-r", 0},     {"us-ascii", 128}};
  for (const auto& [name, expected] : undefined) {
    const Charset charset = *FindCharset(name);
    std::size_t missing = 0;
    for (int byte = 0; byte < 256; ++byte) {
      const std::string bytes(1, static_cast<char>(byte));
      const std::string text = charset.Decode(bytes);
      std::string back;
      if (text == "\uFFFD") {
        ++missing;
      } else if (charset.Encode(text, back, nullptr, Unmapped::kFail)) {
        EXPECT_EQ(back, bytes) << name << byte;
      } else {
        ADD_FAILURE() << name << " gives nothing back for " << byte;
      }
    }
    EXPECT_EQ(missing, expected) << name;
  }
}

}  // namespace
}  // namespace quillcast::mime
