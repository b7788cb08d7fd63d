#include "mime/read_header.h"

#include <gtest/gtest.h>

#include "platform/text.h"

namespace quillcast::mime {
namespace {

TEST(ReadHeader, DecodesWords) {
  struct Case {
    std::string text;
    std::string decoded;
  };
  const std::string longest(243, 'a');  // with what stands round it 255 octets
  for (const Case& c : {
           Case{"plain = text?", "plain = text?"},
           {"=?utf-8?Q?Gr=C3=BC=C3=9Fe_f=C3=BCr_Bob?=", "Grüße für Bob"},
           {"=?UTF-8*de?b?w7xi?= und =?iso-8859-1?q?=E4?=", "üb und ä"},
           {"=?utf-8?q?a?=  \r\n =?utf-8?q?b?=", "ab"},
           {"=?utf-8?q?a?= c =?utf-8?q?b?=", "a c b"},
           {"x=?utf-8?q?a?=y", "xay"},
           {"=?unknown-9?q?a?= =?utf-8?q?b?=", "=?unknown-9?q?a?= b"},
           {"=?utf-8?x?a?=", "=?utf-8?x?a?="},
           {"=?utf-8?q?not a word?=", "=?utf-8?q?not a word?="},
           {"=?utf-8?b?***?= =?utf-8?b?YQ?=", "=?utf-8?b?***?= a"},
           {"=?utf-8?q?cut", "=?utf-8?q?cut"},
           {"=?=?=?utf-8?q?a?=", "=?=?a"},
           {"=?", "=?"},
           {"=?utf-8?q?" + longest + "?=b", longest + "b"},
           {"=?utf-8?q?a" + longest + "?=b", "=?utf-8?q?a" + longest + "?=b"},
       }) {
    EXPECT_EQ(DecodeEncodedWords(c.text), c.decoded) << c.text;
  }
}

TEST(ReadHeader, JoinsWordsInBase64) {
  for (const auto& [text, joined] : {
           std::pair("=?utf-8?b?YWJjZA==?=\r\n =?UTF-8?B?ZWZnaA==?= =?utF-8?b?aWo=?=", "=?utf-8?b?YWJjZGVmZ2hpag==?="),
           {"=?x?b?SGFsbG8?= =?x?b?V2VsdA?=", "=?x?b?SGFsbG9XZWx0?="},
           {"=?x?b?QQ==QUI=?= =?x?b?Q-Q===?= =?x?b?QQ=?=", "=?x?b?QUFCQUE=?="},
           {"=?x?b?8J?= =?x?b?+YgA==?= =?x?b?YQ?=", "=?x?b?8J?= =?x?b?+YgA==?= =?x?b?YQ==?="},
           {"=?x?b?QUJD =?x?b?YWI=?= =?x?b?Yw==?=", "=?x?b?QUJD =?x?b?YWJj?="},
           {"a=?x?b?YQ==?==?x?b?Yg==?=\tb =?x?b?YQ==?= c", "a=?x?b?YWI=?=\tb =?x?b?YQ==?= c"},
           {"=?x?b?YQ==?= =?y?b?YQ==?= =?y?q?a?= =?y?b?Y?= =?", "=?x?b?YQ==?= =?y?b?YQ==?= =?y?q?a?= =?y?b?Y?= =?"},
       }) {
    EXPECT_EQ(JoinBase64Words(text), joined) << text;
  }
}

TEST(ReadHeader, FindsTheFirstOfAName) {
  const std::string message =
      "X-Subject: no\r\nsubject:\r\n =?utf-8?q?one?=\r\n\t=?utf-8?q?_two?= three\r\nSubject: second\r\nTo: a@b.org\n\n"
      "From: body\r\n";
  EXPECT_EQ(ReadHeader(message, "Subject"), "one two three");
  EXPECT_EQ(ReadHeader(message, "To"), "a@b.org");
  EXPECT_EQ(ReadHeader(message, "From"), "");
  EXPECT_EQ(ReadHeader("To", "To"), "");
  EXPECT_EQ(ReadHeader("To:", "To"), "");
}

}  // namespace
}  // namespace quillcast::mime
