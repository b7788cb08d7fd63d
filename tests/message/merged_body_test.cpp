// A body rendered from pieces that were encoded apart reads as the text merged whole.
#include "message/merged_body.h"

#include <gtest/gtest.h>

#include <random>

#include "html/line_wrap.h"
#include "mime/quoted_printable.h"
#include "platform/base64.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::message {
namespace {

using enum TransferEncoding;
using Values = std::array<std::string, document::kMergeFields.size()>;

struct Wire {
  std::string bytes;
  WireForm form;
};

Wire Render(const MergedBody& body, const document::MergeValues& values) {
  RenderedPieces pieces;
  pieces.AddShared("before");
  const auto form = body.Render(values, pieces);
  EXPECT_TRUE(form);
  std::string out;
  for (std::size_t i = 0; i < pieces.count(); ++i) out += pieces.At(i);
  EXPECT_EQ(out.size(), pieces.size());
  EXPECT_EQ(out.substr(0, 6), "before");
  return {out.substr(6), form.value_or(WireForm::kSevenBit)};
}

bool Ends(std::string_view line, std::string_view with) { return line.ends_with(with); }

// What every reader relies on for a form, line by line.
void CheckLine(std::string_view line, WireForm form, bool is_last) {
  ASSERT_EQ(line.find_first_of(std::string_view("\r\0", 2)), std::string_view::npos);
  ASSERT_LE(line.size(), IsAsItStands(form) ? kLongestLine : 76) << line;
  ASSERT_TRUE(form == WireForm::kEightBit || platform::IsAscii(line)) << line;
  const bool whole_groups = line.size() % 4 == 0 && !Ends(line, "=");
  ASSERT_TRUE(form != WireForm::kBase64 || is_last || whole_groups) << line;
  ASSERT_FALSE(line.starts_with("From ")) << line;
  if (IsAsItStands(form)) return;
  ASSERT_FALSE(line.starts_with(".")) << line;
  ASSERT_FALSE(Ends(line, " ") || Ends(line, "\t")) << line;
}

std::string Decoded(const Wire& wire) {
  EXPECT_TRUE(wire.bytes.ends_with("\r\n"));
  const auto lines = platform::Split(std::string_view(wire.bytes).substr(0, wire.bytes.size() - 2), '\n');
  for (const auto& line : lines) {
    const bool is_last = &line == &lines.back();
    EXPECT_TRUE(is_last || Ends(line, "\r"));
    CheckLine(is_last ? line : line.substr(0, line.size() - 1), wire.form, is_last);
  }
  std::string decoded = wire.bytes;
  if (wire.form == WireForm::kQuotedPrintable) decoded = mime::DecodeQuotedPrintable(wire.bytes);
  if (wire.form == WireForm::kBase64) {
    decoded = platform::DecodeBase64(platform::ReplaceAll(wire.bytes, "\r\n", "")).value_or("not base64");
  }
  return platform::ReplaceAll(decoded, "\r\n", "\n");
}

// Texts and values made by chance from what is awkward to encode, to merge or to cut.
class Chance {
 public:
  std::string Text() {
    static const std::vector<std::string> parts = {"$*MergeFirstName*$",
                                                   "$*MergeEmail*$",
                                                   "\n",
                                                   " ",
                                                   ".",
                                                   "From ",
                                                   "=",
                                                   "x",
                                                   "word ",
                                                   "\xC3\xA9",
                                                   "\xE6\xBC\xA2",
                                                   "\t",
                                                   "$5",
                                                   "*",
                                                   "<p>",
                                                   std::string(80, 'y'),
                                                   std::string(61, 'w')};
    std::string text;
    for (std::size_t n = random_() % 30; n > 0; --n) text += Pick(parts);
    if (random_() % 50 == 0) text += std::string(1000, 'z');
    return text;
  }

  void Fill(Values& owned, document::MergeValues& values) {
    static const std::vector<std::string> contents = {"",
                                                      "Ada",
                                                      "AB",
                                                      ".",
                                                      "From here",
                                                      "rom ",
                                                      " ",
                                                      "\n",
                                                      "a\nb",
                                                      "\xF0\x9F\x98\x80",
                                                      std::string(100, 'z'),
                                                      "$*MergeEmail*$",
                                                      "=",
                                                      "\xE2\x82\xAC",
                                                      std::string(990, 'v')};
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = owned[i] = Pick(contents);
  }

 private:
  const std::string& Pick(const std::vector<std::string>& from) { return from[random_() % from.size()]; }
  std::mt19937 random_{4};
};

std::string Merged(const std::string& text, const document::MergeValues& values) {
  return *document::ReplaceMergeFields(text.ends_with('\n') ? text : text + "\n", values);
}

TEST(MergedBody, ReadsAsTheTextMergedWhole) {
  Chance chance;
  const auto western = *charset::FindCharset("windows-1252");
  std::array<int, kWireForms> seen{};
  for (int round = 0; round < 5000; ++round) {
    const std::string text = chance.Text();
    Values owned;
    document::MergeValues values;
    chance.Fill(owned, values);
    const std::string merged = Merged(text, values);
    std::string references;
    western.Encode(merged, references, nullptr, charset::Unmapped::kHtmlReference);
    for (const auto encoding : {kNone, kQuotedPrintable, kBase64}) {
      const Wire utf8 = Render(MergedBody(text, {.encoding = encoding}), values);
      ASSERT_EQ(Decoded(utf8), merged) << text;
      const BodyStyle html{
          .charset = western, .unmapped = charset::Unmapped::kHtmlReference, .encoding = encoding, .is_html = true};
      const Wire wire = Render(MergedBody(text, html), values);
      ASSERT_EQ(Decoded(wire), references) << text;
      const Wire begun = Render(MergedBody(text, {.start = "\033$)C", .encoding = encoding}), values);
      ASSERT_EQ(Decoded(begun), "\033$)C" + merged) << text;
      ++seen[static_cast<std::size_t>(wire.form)];
    }
  }
  for (const int count : seen) EXPECT_GT(count, 500);
}

TEST(MergedBody, WrapsAsTheTextMergedWhole) {
  Chance chance;
  for (int round = 0; round < 2000; ++round) {
    const std::string text = chance.Text();
    Values owned;
    document::MergeValues values;
    chance.Fill(owned, values);
    const std::string merged = Merged(text, values);
    ASSERT_EQ(Decoded(Render(MergedBody(text, {.encoding = kNone, .wrap = 40}), values)), html::WrapText(merged, 40));
    ASSERT_EQ(Decoded(Render(MergedBody(text, {.encoding = kNone, .wrap = 40, .is_html = true}), values)),
              html::WrapHtml(merged, 40));
  }
}

TEST(MergedBody, WithoutMimeHasOnlyLinesThatMayGoOut) {
  const std::string wide = "\xE6\xBC\xA2";
  std::string long_word;
  for (int i = 0; i < 700; ++i) long_word += wide;
  for (const std::string& text : {"short\n" + long_word + "\n.", std::string(2000, 'x'), std::string("a b\n  c \n"),
                                  "$*MergeEmail*$ " + std::string(997, 'x')}) {
    document::MergeValues values;
    values[0] = long_word;
    const Wire wire = Render(MergedBody(text, {.encoding = kNone, .is_bare = true}), values);
    EXPECT_TRUE(IsAsItStands(wire.form));
    for (const auto line : platform::Split(wire.bytes, '\n')) {
      EXPECT_LE(line.size(), kLongestLine + 1);
      EXPECT_TRUE(platform::IsUtf8(line));
    }
    const auto without_breaks = [](std::string bytes) {
      std::erase_if(bytes, [](char c) { return c == ' ' || c == '\r' || c == '\n'; });
      return bytes;
    };
    EXPECT_EQ(without_breaks(wire.bytes), without_breaks(Merged(text, values)));
  }
}

TEST(MergedBody, KnowsWhatItsCharacterSetHolds) {
  const BodyStyle western{.charset = *charset::FindCharset("windows-1252")};
  document::MergeValues values;
  values[2] = "\xE6\xBC\xA2";
  EXPECT_TRUE(MergedBody("caf\xC3\xA9", western).CanHold(values));
  EXPECT_FALSE(MergedBody("\xE6\xBC\xA2", western).CanHold({}));
  EXPECT_FALSE(MergedBody("$*MergeFirstName*$", western).CanHold(values));
  values[0] = "$*MergeFirstName*$";
  EXPECT_FALSE(MergedBody("$*MergeEmail*$", western).CanHold(values));
}

// How text may be cut must not matter, least of all inside a line end or "From ".
TEST(WireText, SeesTheSameHoweverTheTextIsCut) {
  struct Case {
    std::string text;
    bool fits;
  };
  const std::string nul("a\0b\r\n", 5);
  const std::string longest(kLongestLine, 'x');
  for (const auto& [text, fits] :
       {Case{"", true}, Case{"a", true}, Case{"a\r\n", true}, Case{"a\n", false}, Case{"a\r", false},
        Case{"a\rb\r\n", false}, Case{"a\r\r\n", false}, Case{nul, false}, Case{"From me\r\n", false},
        Case{"x\r\nFrom me", false}, Case{" From\r\n", true}, Case{"From\r\n", true}, Case{longest + "\r\n", true},
        Case{longest + "x\r\n", false}, Case{longest + "x", false}, Case{longest, true}, Case{".\r\n\r\n.", true}}) {
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
      WireText look;
      look.Look(std::string_view(text).substr(0, cut));
      look.Look(std::string_view(text).substr(cut));
      ASSERT_EQ(look.Fits(), fits) << platform::Printable(text) << " cut at " << cut;
    }
  }
}

}  // namespace
}  // namespace quillcast::message
