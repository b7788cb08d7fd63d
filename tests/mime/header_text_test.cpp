// Header fields: written out by hand for the rules, and read back by a small decoder of its own for any text.
#include "mime/header_text.h"

#include <gtest/gtest.h>

#include <ctime>

#include "mime/quoted_printable.h"
#include "platform/base64.h"
#include "platform/text.h"
#include "support/random_text.h"

namespace quillcast::mime {
namespace {

constexpr const char* kLong = "One two three four five six seven eight nine ten eleven twelve thirteen fourteen";

std::string Subject(std::string_view value, HeaderEncoding encoding = HeaderEncoding::kQ,
                    const charset::Charset& charset = charset::Charset::Utf8()) {
  std::string out;
  AppendUnstructured(out, "Subject", HeaderText(value), charset, encoding);
  return out;
}

TEST(HeaderText, HoldsNoLineBreak) {
  EXPECT_EQ(HeaderText("a\r\nBcc: b\x00\x1B\x7F z").text(), "a  Bcc: b");
  EXPECT_EQ(HeaderText(std::string("a\0b\tc\xC2\x85"
                                   "d\xFF ",
                                   9))
                .text(),
            "a b c d\uFFFD");
  EXPECT_EQ(HeaderText(" \r\n ").text(), "");
}

TEST(HeaderText, WritesUnstructuredText) {
  const std::pair<std::string, std::string> cases[] = {
      {"Plain words", "Subject: Plain words\r\n"},
      {"", "Subject: \r\n"},
      {"a\r\nBcc: x@example.org", "Subject: a  Bcc: x@example.org\r\n"},
      {"For caf\u00E9 owners", "Subject: For =?utf-8?Q?caf=C3=A9?= owners\r\n"},
      {"\u00E9 \u00E9 x", "Subject: =?utf-8?Q?=C3=A9_=C3=A9?= x\r\n"},
      {"read =?utf-8?Q?x?= now", "Subject: read =?utf-8?Q?=3D=3Futf-8=3FQ=3Fx=3F=3D?= now\r\n"},
      {kLong, "Subject: One two three four five six seven eight nine ten eleven twelve\r\n thirteen fourteen\r\n"},
  };
  for (const auto& [value, expected] : cases) EXPECT_EQ(Subject(value), expected);
}

TEST(HeaderText, ChoosesTheEncodingAsked) {
  const charset::Charset western = *charset::FindCharset("windows-1252");
  EXPECT_EQ(Subject("caf\u00E9", HeaderEncoding::kB), "Subject: =?utf-8?B?Y2Fmw6k=?=\r\n");
  EXPECT_EQ(Subject("caf\u00E9", HeaderEncoding::kQ, western), "Subject: =?Windows-1252?Q?caf=E9?=\r\n");
  EXPECT_EQ(Subject("abcdefghijkl\u00E9", HeaderEncoding::kNone), "Subject: =?utf-8?Q?abcdefghijkl=C3=A9?=\r\n");
  EXPECT_EQ(Subject("\u0416\u0416\u0416", HeaderEncoding::kNone), "Subject: =?utf-8?B?0JbQltCW?=\r\n");
  std::string letters;
  while (letters.size() < 200) letters += "\u0416";
  EXPECT_EQ(Subject("(" + letters, HeaderEncoding::kB).find("=?=\r\n "), std::string::npos) << "padding inside a run";
  EXPECT_TRUE(CanEncode(western, "\u20AC"));
  EXPECT_FALSE(CanEncode(western, "\u0416"));
}

TEST(HeaderText, WritesMailboxes) {
  struct Case {
    const char *name, *address, *expected;
  };
  const Case cases[] = {
      {"", "ada@example.org", "To: ada@example.org\r\n"},
      {"Ada Lovelace", "ada@example.org", "To: Ada Lovelace <ada@example.org>\r\n"},
      {"Lovelace, Ada", "ada@example.org", "To: \"Lovelace, Ada\" <ada@example.org>\r\n"},
      {"Ada \"Count\\ess\"", "a@example.org", "To: \"Ada \\\"Count\\\\ess\\\"\" <a@example.org>\r\n"},
      {"Zo\u00EB, x", "zoe@example.org", "To: =?utf-8?Q?Zo=C3=AB=2C_x?= <zoe@example.org>\r\n"},
      {"=?utf-8?Q?x?=", "a@example.org", "To: =?utf-8?Q?=3D=3Futf-8=3FQ=3Fx=3F=3D?= <a@example.org>\r\n"},
      {"A\r\nBcc: b", "a@example.org>,\r\n <b@example.org", "To: \"A  Bcc: b\" <a@example.orgb@example.org>\r\n"},
      {"", "\"a, b\"@example.org", "To: \"a, b\"@example.org\r\n"},
      {"", "\"a, b@example.org", "To: ab@example.org\r\n"},
      {"A name that fills the line so that its address goes below", "somebody@example.org",
       "To: A name that fills the line so that its address goes below\r\n <somebody@example.org>\r\n"},
  };
  for (const Case& c : cases) {
    std::string out;
    AppendMailbox(out, "To", HeaderText(c.name), HeaderText(c.address), charset::Charset::Utf8(), HeaderEncoding::kQ);
    EXPECT_EQ(out, c.expected);
  }
}

TEST(HeaderText, WritesFileNames) {
  struct Case {
    std::string file, disposition, type;
  };
  const Case cases[] = {
      {"a b.pdf", ";\r\n filename=\"a b.pdf\"", ";\r\n name=\"a b.pdf\""},
      {"../x\"\r\ny", ";\r\n filename=\"..x\\\"y\"", ";\r\n name=\"..x\\\"y\""},
      {"/", ";\r\n filename=\"attachment\"", ";\r\n name=\"attachment\""},
      {"\u00FC 1.txt", ";\r\n filename*=utf-8''%C3%BC%201.txt", ";\r\n name=\"=?utf-8?B?w7wgMS50eHQ=?=\""},
      {std::string(250, 'n') + ".pdf", ";\r\n filename=\"" + std::string(250, 'n') + ".pdf\"",
       ";\r\n name=\"" + std::string(250, 'n') + ".pdf\""},
      {"=?x?.txt", ";\r\n filename*=utf-8''%3D%3Fx%3F.txt", ";\r\n name=\"=?utf-8?B?PT94Py50eHQ=?=\""},
      {std::string(90, 'n') + "\u00FC",
       ";\r\n filename*0*=utf-8''" + std::string(57, 'n') + ";\r\n filename*1*=" + std::string(33, 'n') + "%C3%BC",
       ";\r\n name=\"=?utf-8?Q?" + std::string(56, 'n') + "?=\r\n =?utf-8?Q?" + std::string(34, 'n') + "=C3=BC?=\""},
  };
  for (const Case& c : cases) {
    std::string out;
    AppendParameter(out, "filename", c.file);
    EXPECT_EQ(out, c.disposition);
    out.clear();
    AppendNameParameter(out, c.file);
    EXPECT_EQ(out, c.type);
  }
}

TEST(HeaderText, WritesDatesInEnglishWithTheirOffset) {
  std::tm local{};
  local.tm_year = 97, local.tm_mon = 10, local.tm_mday = 21, local.tm_wday = 5;
  local.tm_hour = 9, local.tm_min = 55, local.tm_sec = 6;
  EXPECT_EQ(FormatDate(local, -21600), "Fri, 21 Nov 1997 09:55:06 -0600");
  EXPECT_EQ(FormatDate(local, 20700), "Fri, 21 Nov 1997 09:55:06 +0545");
  EXPECT_EQ(FormatDate(local, -1800), "Fri, 21 Nov 1997 09:55:06 -0030");
  for (int day = 0; day < 400; ++day) {  // the names of every month and weekday, as the C locale has them
    const std::time_t time = day * 86400;
    char expected[40];
    std::strftime(expected, sizeof expected, "%a, %d %b %Y %H:%M:%S +0000", gmtime_r(&time, &local));
    EXPECT_EQ(FormatDate(local, 0), expected);
  }
}

TEST(HeaderText, MakesIdentifiersThatHoldNothingForeign) {
  EXPECT_EQ(MakeMessageId(1, 33, "ex ample.org>\r\n"), "<100000000000.110000000000@example.org>");
  EXPECT_EQ(IdDomain("b.org\"x>\xC3\xBC"), "b.orgx");
  EXPECT_EQ(MakeMessageId(0, 0, ""), "<000000000000.000000000000@localhost>");
  EXPECT_EQ(MakeBoundary(31, 0), "=_v00000000000000000000000");
  EXPECT_NE(MakeBoundary(1ULL << 59, 0), MakeBoundary(0, 0));
}

// Reads an unstructured value as RFC 2047 says readers do, each word on its own.
std::string ReadBack(std::string value) {
  value = platform::ReplaceAll(value, "\r\n", "");
  std::string out;
  bool after_word = false;
  for (std::size_t at = 0; at < value.size();) {
    const std::size_t word = std::min(value.find_first_not_of(' ', at), value.size());
    const std::size_t end = std::min(value.find(' ', word), value.size());
    const std::string token = value.substr(word, end - word);
    const bool encoded = token.starts_with("=?") && token.ends_with("?=");
    if (!(encoded && after_word)) out += value.substr(at, word - at);
    if (encoded) {
      const auto parts = platform::Split(token, '?');
      std::string text(parts.at(3));
      if (parts[2] == "B") text = platform::DecodeBase64(text).value_or("not base64");
      if (parts[2] == "Q") text = DecodeQuotedPrintable(platform::ReplaceAll(text, "_", "=20"));
      text = charset::FindCharset(parts[1])->Decode(text);
      EXPECT_FALSE(text.starts_with("\u0301") || text.starts_with("\u0323")) << "a letter without its mark: " << value;
      out += text;
    } else {
      out += token;
    }
    after_word = encoded;
    at = end;
  }
  return out;
}

TEST(HeaderText, AnyValueComesBackInShortLines) {
  struct Case {
    const char* charset;
    std::vector<std::string> characters;
  };
  const Case cases[] = {
      {"utf-8", {"\u00E9", "\u20AC", "\U0001F600", "e\u0301"}},
      {"utf-7", {"\u00E9", "\u65E5", "\U0001F600", "+", "~"}},
      {"Windows-1252", {"\u00E9", "\u20AC", "J\u00FCrgen"}},
      {"windows-1258", {"a\u0301", "\u1EBF", "\u1EAD", "\u1EA1", "\u0111"}},
      {"x-user-defined", {"\uF780", "\uF7FF"}},
      {"gb2312", {"\u4E2D", "\u6587"}},
      {"hz-gb-2312", {"\u4E2D", "\u6587", "~", "~{"}},
      {"iso-2022-jp", {"\u65E5", "\u672C", "\u00A5", "\\"}},
      {"shift-jis", {"\u8868", "\uFF83", "\\"}},
      {"iso-2022-kr", {"\uD55C", "\uAE00"}},
  };
  std::mt19937 random(3);
  for (const Case& c : cases) {
    const charset::Charset charset = *charset::FindCharset(c.charset);
    std::vector<std::string> alphabet = {" ", " ", "a", "Wort", "=?", "?=", "_", "=", "\"", "elevenchars"};
    for (int twice = 0; twice < 2; ++twice) alphabet.insert(alphabet.end(), c.characters.begin(), c.characters.end());
    for (int round = 0; round < 600; ++round) {
      const HeaderText value(test::RandomText(random, alphabet, 60));
      std::string bytes;
      ASSERT_TRUE(charset.Encode(value.text(), bytes, nullptr, charset::Unmapped::kFail));
      const std::string field = Subject(value.text(), static_cast<HeaderEncoding>(round % 3), charset);
      ASSERT_TRUE(field.ends_with("\r\n"));
      ASSERT_EQ(ReadBack(field.substr(9, field.size() - 11)), charset.Decode(bytes)) << field;
      ASSERT_EQ(field.find("iso-2022-kr"), std::string::npos);
      for (std::string_view line : platform::Split(std::string_view(field).substr(0, field.size() - 2), '\n')) {
        if (line.ends_with('\r')) line.remove_suffix(1);
        ASSERT_TRUE(line.size() <= 76 || line.find("=?") == std::string_view::npos) << field;
        ASSERT_LE(line.size(), 998U);
        ASSERT_NE(line.find_first_not_of(' '), std::string_view::npos) << field;
        for (const std::string_view word : platform::Split(line, ' '))
          ASSERT_TRUE(word.size() <= 75 || !word.starts_with("=?"));
      }
    }
  }
  std::string marks = "e";
  for (int i = 0; i < 300; ++i) marks += "\u0302";
  for (const std::string& hard : {std::string(5000, 'x'), "a" + std::string(3000, ' ') + "b",
                                  "a " + std::string(2000, '.'), "a" + std::string(58, ' ') + "\U0001F600 " + marks}) {
    const std::string field = Subject(hard);
    EXPECT_EQ(ReadBack(field.substr(9, field.size() - 11)), hard);
    for (const std::string_view line : platform::Split(field, '\n')) EXPECT_LE(line.size(), 77U);
  }
}

}  // namespace
}  // namespace quillcast::mime
