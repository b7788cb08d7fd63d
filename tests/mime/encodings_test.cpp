// Base64 and quoted-printable: the RFCs' own examples, and what must hold for any bytes cut anywhere.
#include <gtest/gtest.h>

#include "mime/quoted_printable.h"
#include "platform/base64.h"
#include "platform/text.h"
#include "support/random_text.h"

namespace quillcast::mime {
namespace {

TEST(Base64, EncodesTheExamplesOfRfc4648) {
  const std::pair<const char*, const char*> cases[] = {{"", ""},
                                                       {"f", "Zg=="},
                                                       {"fo", "Zm8="},
                                                       {"foo", "Zm9v"},
                                                       {"foob", "Zm9vYg=="},
                                                       {"fooba", "Zm9vYmE="},
                                                       {"foobar", "Zm9vYmFy"},
                                                       {"\xFB\xFF\xFE", "+//+"}};
  for (const auto& [bytes, text] : cases) {
    std::string out = "kept ";
    platform::AppendBase64(out, bytes);
    EXPECT_EQ(out, std::string("kept ") + text);
    EXPECT_EQ(platform::DecodeBase64(text), bytes);
  }
}

TEST(Base64, RefusesWhatIsMalformed) {
  for (const char* bad :
       {"Z", "Zg", "Zg=", "Zg===", "Zm9v=", "=", "Zg==Zg==", "Zm-v", "Zm9v\x80", "Zm 9", "Zm9v\r\n", "=Zm9"}) {
    EXPECT_EQ(platform::DecodeBase64(bad), std::nullopt) << bad;
  }
}

TEST(Base64, LinesAreTheSameHoweverTheStreamIsCut) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    const std::string bytes = test::RandomText(random, test::EveryByte(), 400);
    platform::Base64LineEncoder encoder;
    std::string lines;
    for (const std::string_view piece : test::RandomPieces(random, bytes)) encoder.Encode(piece, lines);
    encoder.Finish(lines);
    std::string plain;
    platform::AppendBase64(plain, bytes);
    ASSERT_EQ(platform::DecodeBase64(plain), bytes);
    std::string expected;
    for (std::size_t at = 0; at < plain.size(); at += 76) expected += plain.substr(at, 76) + "\r\n";
    ASSERT_EQ(lines, expected);
  }
}

std::string Encode(std::string_view text) {
  std::string out;
  std::size_t column = 0;
  AppendQuotedPrintable(out, text, column, true);
  return out;
}

TEST(QuotedPrintable, EncodesWhatTheWayWouldChange) {
  const std::string x75(75, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"caf\xC3\xA9 = 1", "caf=C3=A9 =3D 1"},
      {"a\r\nb\rc\nd", "a\r\nb=0Dc=0Ad"},
      {"a \r\nb\t\r\nc ", "a=20\r\nb=09\r\nc=20"},
      {"a  \r\n", "a =20\r\n"},
      {".\r\n..\r\nx.", "=2E\r\n=2E.\r\nx."},
      {"From me\r\nFrom\r\nFro", "=46rom me\r\nFrom\r\nFro"},
      {x75, x75},
      {x75 + "\r\n", x75 + "\r\n"},
      {x75 + ".", x75 + "=\r\n=2E"},
      {x75 + "From here", x75 + "=\r\n=46rom here"},
      {std::string(73, 'x') + "\xC3\xA9", std::string(73, 'x') + "=\r\n=C3=A9"},
      {std::string(74, 'x') + " \r\n", std::string(74, 'x') + "=\r\n=20\r\n"},
      {std::string(75, 'x') + " y", x75 + "=\r\n y"},
      {std::string("\0\x7F", 2), "=00=7F"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(Encode(text), expected);
    EXPECT_EQ(DecodeQuotedPrintable(expected), text);
  }
}

TEST(QuotedPrintable, DecodesWhatOthersWrite) {
  EXPECT_EQ(DecodeQuotedPrintable("caf=c3=a9 \t\r\nb= \r\nc=\n=4"), "caf\xC3\xA9\r\nbc=4");
  EXPECT_EQ(DecodeQuotedPrintable("=ZZ=3D="), "=ZZ=");
}

TEST(QuotedPrintable, AnyPiecesComeBackAndNoLineInvitesChanges) {
  std::mt19937 random(2);
  std::vector<std::string> alphabet = {".",  "F", "From ", "r",  "o",  "m",       " ",
                                       "\t", "=", "\r\n",  "\r", "\n", "\xC3\xA9"};
  for (int round = 0; round < 4000; ++round) {
    const bool dense = round % 2 == 0;  // alternately the awkward characters alone, and mostly plain text
    std::vector<std::string> letters = alphabet;
    if (!dense) letters.insert(letters.end(), 40, "x");
    if (round % 10 == 0) letters = test::EveryByte();
    const std::string text = test::RandomText(random, letters, 400);
    std::string out;
    std::size_t column = 0;
    for (const std::string_view piece : test::RandomPieces(random, text)) {
      AppendQuotedPrintable(out, piece, column, false);
      if (random() % 4 == 0) AppendSoftBreak(out, column);
    }
    ASSERT_EQ(DecodeQuotedPrintable(out), text);
    for (std::string_view line : platform::Split(out, '\n')) {
      if (line.ends_with('\r')) line.remove_suffix(1);
      ASSERT_LE(line.size(), 76U);
      ASSERT_FALSE(line.starts_with('.') || line.starts_with("From ")) << line;
      ASSERT_FALSE(line.ends_with(' ') || line.ends_with('\t')) << line;
    }
  }
}

}  // namespace
}  // namespace quillcast::mime
