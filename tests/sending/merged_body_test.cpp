// A body rendered from pieces that were encoded apart reads as the text merged whole.
#include "sending/merged_body.h"

#include <gtest/gtest.h>

#include <random>

#include "mime/quoted_printable.h"
#include "platform/text.h"

namespace quillcast::sending {
namespace {

std::string WireBytes(const MergedBody& body, const compose::MergeValues& values) {
  RenderedPieces pieces;
  EXPECT_TRUE(body.Render(values, pieces));
  std::string out;
  for (std::size_t i = 0; i < pieces.count(); ++i) out += pieces.At(i);
  EXPECT_EQ(out.size(), pieces.size());
  return out;
}

void CheckLines(const std::string& wire) {
  ASSERT_TRUE(wire.ends_with("\r\n"));
  for (const auto line : platform::Split(std::string_view(wire).substr(0, wire.size() - 2), '\n')) {
    const auto text = line.substr(0, line.find('\r'));
    ASSERT_LE(text.size(), 76U) << text;
    ASSERT_FALSE(text.starts_with(".")) << text;
    ASSERT_FALSE(text.starts_with("From ")) << text;
    ASSERT_FALSE(text.ends_with(" ") || text.ends_with("\t")) << text;
  }
}

TEST(MergedBody, ReadsAsTheTextMergedWhole) {
  const std::vector<std::string> parts = {"$*MergeFirstName*$",
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
                                          std::string(80, 'y'),
                                          "$5",
                                          "*"};
  const std::vector<std::string> contents = {"",
                                             "Ada",
                                             ".",
                                             "From here",
                                             " ",
                                             "\n",
                                             "a\nb",
                                             "\xF0\x9F\x98\x80",
                                             std::string(100, 'z'),
                                             "$*MergeEmail*$",
                                             "=",
                                             "\xE2\x82\xAC"};
  std::mt19937 random(4);
  const auto pick = [&random](const auto& from) { return from[random() % from.size()]; };
  const auto western = *mime::FindCharset("windows-1252");
  for (int round = 0; round < 5000; ++round) {
    std::string text;
    for (std::size_t n = random() % 30; n > 0; --n) text += pick(parts);
    std::array<std::string, compose::kMergeFields.size()> owned;
    compose::MergeValues values;
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = owned[i] = pick(contents);
    std::string merged = *compose::ReplaceMergeFields(text.ends_with('\n') ? text : text + "\n", values);

    const std::string utf8 = WireBytes(MergedBody(text, mime::Charset::Utf8(), mime::Unmapped::kQuestionMark), values);
    CheckLines(utf8);
    ASSERT_EQ(platform::ReplaceAll(mime::DecodeQuotedPrintable(utf8), "\r\n", "\n"), merged) << text;

    const MergedBody html(text, western, mime::Unmapped::kHtmlReference);
    const std::string wire = WireBytes(html, values);
    CheckLines(wire);
    std::string references;
    western.Encode(merged, references, nullptr, mime::Unmapped::kHtmlReference);
    ASSERT_EQ(platform::ReplaceAll(mime::DecodeQuotedPrintable(wire), "\r\n", "\n"), references) << text;
  }
}

TEST(MergedBody, KnowsWhatItsCharacterSetHolds) {
  const auto western = *mime::FindCharset("windows-1252");
  compose::MergeValues values;
  values[2] = "\xE6\xBC\xA2";
  EXPECT_TRUE(MergedBody("caf\xC3\xA9", western, mime::Unmapped::kQuestionMark).CanHold(values));
  EXPECT_FALSE(MergedBody("\xE6\xBC\xA2", western, mime::Unmapped::kQuestionMark).CanHold({}));
  EXPECT_FALSE(MergedBody("$*MergeFirstName*$", western, mime::Unmapped::kQuestionMark).CanHold(values));
  values[0] = "$*MergeFirstName*$";
  EXPECT_FALSE(MergedBody("$*MergeEmail*$", western, mime::Unmapped::kQuestionMark).CanHold(values));
}

}  // namespace
}  // namespace quillcast::sending
