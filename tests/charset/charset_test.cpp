// Character sets: what they hold, what they do not, and that every byte comes back.
#include "charset/charset.h"

#include <gtest/gtest.h>

#include <fstream>

#include "platform/text.h"
#include "platform/utf8.h"
#include "support/random_text.h"

namespace quillcast::charset {
namespace {

TEST(Charset, IsFoundByAnyOfItsNames) {
  EXPECT_EQ(FindCharset("Windows-1252")->MimeName(), "Windows-1252");
  EXPECT_EQ(FindCharset("UTF8"), Charset::Utf8());
  EXPECT_FALSE(FindCharset(""));
  EXPECT_FALSE(FindCharset("windows-12520"));
}

TEST(Charset, WritesWhatItHoldsAndCountsWhatItDoesNot) {
  struct Case {
    const char *charset, *text, *with_marks, *with_references;
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
      {"iso-2022-jp", "a\u65E5\u00E9\x1B$B", "a\x1B$BF|\x1B(B??$B", "a\x1B$BF|\x1B(B&#233;&#27;$B", 2},
      {"hz-gb-2312", "\u4E2D~\u0416\u00F1", "~{VP~}~~~{'(~}?", "~{VP~}~~~{'(~}&#241;", 1},
      {"utf-7", "a+\xFF\u00E9", "a+-+//0A6Q-", "a+-+//0A6Q-", 1},
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
      {"windows-1252", 5}, {"iso-8859-1", 32},   {"iso-8859-2", 32},    {"iso-8859-15", 32}, {"windows-1250", 5},
      {"windows-1251", 1}, {"windows-1253", 17}, {"windows-1255", 23},  {"windows-1258", 9}, {"windows-874", 31},
      {"koi8-r", 0},       {"koi8-u", 0},        {"x-user-defined", 0}, {"us-ascii", 128}};
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

// A line of charset_samples.tsv: made with another implementation of the sets, but for x-user-defined.
struct Sample {
  Charset charset = Charset::Utf8();
  std::string text, bytes;
  std::string refused;  // characters that the set lacks, or that readers would see as something else
  std::string decoded;  // the text with letters and marks taken apart as the set has them
};

std::vector<Sample> Samples() {
  std::vector<Sample> samples;
  std::ifstream file(QUILLCAST_TEST_DATA "/charset_samples.tsv");
  for (std::string line; std::getline(file, line);) {
    line = platform::ReplaceAll(line, "\u23CE", "\n");
    const auto fields = platform::Split(line, '\t');
    const auto charset = FindCharset(fields[0]);
    if (!charset || charset->MimeName() != fields[0]) {
      ADD_FAILURE() << fields[0];
      continue;
    }
    Sample& sample = samples.emplace_back(Sample{*charset, std::string(fields[1]), {}, std::string(fields[3]), {}});
    for (std::size_t i = 0; i < fields[2].size(); i += 2)
      sample.bytes += static_cast<char>(std::stoi(std::string(fields[2].substr(i, 2)), nullptr, 16));
    sample.decoded = fields.size() > 4 ? fields[4] : fields[1];
  }
  return samples;
}

std::vector<std::string> CharactersOfText(std::string_view text) {
  std::vector<std::string> characters;
  while (!text.empty()) {
    characters.emplace_back(text.substr(0, platform::DecodeUtf8(text).length));
    text.remove_prefix(characters.back().size());
  }
  return characters;
}

TEST(Charset, WritesAndReadsEverySet) {
  const auto samples = Samples();
  EXPECT_EQ(samples.size(), 37U);
  for (const Sample& sample : samples) {
    const auto name = sample.charset.MimeName();
    std::string out;
    EXPECT_TRUE(sample.charset.Encode(sample.text, out, nullptr, Unmapped::kFail)) << name;
    EXPECT_EQ(out, sample.bytes) << name;
    EXPECT_EQ(sample.charset.Decode(sample.bytes), sample.decoded) << name;
    for (const std::string& character : CharactersOfText(sample.refused))
      EXPECT_FALSE(sample.charset.Encode(character, out, nullptr, Unmapped::kFail)) << name << character;
  }
}

TEST(Charset, PiecesAndLinesStandAlone) {
  std::mt19937 random(11);
  for (const Sample& sample : Samples()) {
    auto alphabet = CharactersOfText(sample.decoded);
    for (const char* const more : {"\n", " ", "~", "+", "-", "\\", "{", "&"}) alphabet.emplace_back(more);
    for (int round = 0; round < 60; ++round) {
      std::string text;
      std::string bytes(sample.charset.BodyPrefix());
      for (int piece = 0; piece < 8; ++piece) {
        const std::string part = test::RandomText(random, alphabet, 9);
        ASSERT_TRUE(sample.charset.Encode(part, bytes, nullptr, Unmapped::kFail));
        text += part;
      }
      ASSERT_EQ(sample.charset.Decode(bytes), text) << sample.charset.MimeName();
      std::string lines;
      for (const std::string_view line : platform::Split(bytes, '\n')) lines += sample.charset.Decode(line) + '\n';
      ASSERT_EQ(lines, text + '\n') << sample.charset.MimeName();
    }
  }
}

TEST(Charset, AnnouncesHangulOnceInABodyAndNeverInAHeader) {
  for (const Sample& sample : Samples()) {
    const bool shifts = sample.charset.MimeName() == "iso-2022-kr";
    EXPECT_EQ(sample.charset.BodyPrefix(), shifts ? "\x1B$)C" : "");
    EXPECT_EQ(sample.charset.ForHeaders(), shifts ? *FindCharset("euc-kr") : sample.charset);
  }
}

}  // namespace
}  // namespace quillcast::charset
