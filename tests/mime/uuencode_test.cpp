// Uuencoding against vectors of Python's binascii.b2a_uu(..., backtick=True).
#include "mime/uuencode.h"

#include <gtest/gtest.h>

#include "support/random_text.h"

namespace quillcast::mime {
namespace {

std::string Encode(const std::vector<std::string_view>& pieces, std::string_view name = "f") {
  Uuencoder encoder;
  std::string out;
  encoder.Begin(name, out);
  for (const std::string_view piece : pieces) encoder.Encode(piece, out);
  encoder.Finish(out);
  return out;
}

TEST(Uuencode, WritesKnownLines) {
  std::string ascending;
  for (char c = 0; c < 45; ++c) ascending += c;
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"Cat", "#0V%T\r\n"},
      {"a", "!80``\r\n"},
      {"ab", "\"86(`\r\n"},
      {std::string(14, '\0'), ".````````````````````\r\n"},
      {ascending, "M``$\"`P0%!@<(\"0H+#`T.#Q`1$A,4%187&!D:&QP='A\\@(2(C)\"4F)R@I*BLL\r\n"},
      {std::string(45, '\0') + "x", "M" + std::string(60, '`') + "\r\n!>```\r\n"},
  };
  for (const auto& [bytes, lines] : cases) EXPECT_EQ(Encode({bytes}), "begin 644 f\r\n" + lines + "`\r\nend\r\n");
}

TEST(Uuencode, NamesAreAsciiWithoutFolders) {
  const std::pair<const char*, const char*> cases[] = {{"price list.txt", "price list.txt"},
                                                       {"../etc/pass\r\nend", "..etcpassend"},
                                                       {"caf\xC3\xA9.pdf", "caf_.pdf"},
                                                       {"\xE6\x97\xA5\xE6\x9C\xAC.txt", "__.txt"},
                                                       {"", "attachment"}};
  for (const auto& [name, written] : cases) {
    EXPECT_EQ(Encode({}, name), std::string("begin 644 ") + written + "\r\n`\r\nend\r\n");
  }
}

// Lines as others write them: blanks for zero bits, some of them gone, a check digit behind, nothing at the end.
TEST(Uuencode, ReadsLinesOfOthers) {
  const std::pair<const char*, const char*> cases[] = {
      {"#0V%T\n`\nend\n", "Cat"},    {"!80  \n \nend\n", "a"},        {"!80\r\n", "a"},
      {"#0V%Tx\n#0V%T\n", "CatCat"}, {"#0V%T\nnone\n#0V%T\n", "Cat"}, {"", ""},
  };
  for (const auto& [lines, bytes] : cases) {
    std::string decoded;
    Uudecoder().Decode(lines, decoded);
    EXPECT_EQ(decoded, bytes) << lines;
  }
}

TEST(Uuencode, IsTheSameHoweverTheStreamIsCut) {
  std::mt19937 random(6);
  for (int round = 0; round < 300; ++round) {
    const std::string bytes = test::RandomText(random, test::EveryByte(), 400);
    const std::string encoded = Encode({bytes});
    ASSERT_EQ(Encode(test::RandomPieces(random, bytes)), encoded);
    Uudecoder decoder;
    std::string decoded;
    const std::string lines = encoded.substr(encoded.find('\n') + 1);
    for (const std::string_view piece : test::RandomPieces(random, lines)) decoder.Decode(piece, decoded);
    ASSERT_EQ(decoded, bytes);
  }
}

}  // namespace
}  // namespace quillcast::mime
