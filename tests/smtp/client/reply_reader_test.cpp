// Replies in one piece and in many, and what is no reply.
#include "smtp/client/reply_reader.h"

#include <gtest/gtest.h>

#include "smtp/capabilities.h"

namespace quillcast::smtp {
namespace {

using Step = ReplyReader::Step;

// Everything that a reader makes of a text, in one line per reply.
std::string Read(const std::string& text, std::size_t cut) {
  ReplyReader reader;
  std::string out;
  for (const std::string& part : {text.substr(0, cut), text.substr(cut)}) {
    reader.Add(part);
    Step step = reader.Next();
    for (; step == Step::kReply; step = reader.Next()) {
      out += std::to_string(reader.reply().code) + "|" + reader.reply().enhanced + "|" + reader.reply().text + ";";
    }
    if (step == Step::kSenseless) return out + "senseless";
  }
  return out + (reader.HasMore() ? "more" : "");
}

TEST(Reply, IsReadTheSameWhereverItIsCut) {
  struct Case {
    std::string text;
    const char* wanted;
  };
  for (const Case& c :
       std::initializer_list<Case>{{"250 ok\r\n", "250||ok;"},
                                   {"250\r\n", "250||;"},
                                   {"250 \n", "250||;"},
                                   {"250 ok\n220 two\r\n", "250||ok;220||two;"},
                                   {"250-a\r\n250-b\r\n250 c\r\n", "250||a\nb\nc;"},
                                   {"550-5.1.1 no such\r\n550 5.1.1 user\r\n", "550|5.1.1|no such\nuser;"},
                                   {"550 5.1.1\r\n", "550|5.1.1|;"},
                                   {"550 4.1.1 other class\r\n", "550||4.1.1 other class;"},
                                   {"550 5.1.1234 long\r\n", "550||5.1.1234 long;"},
                                   {"250 5.1 short\r\n", "250||5.1 short;"},
                                   {"250-a\r\n", "more"},
                                   {"25", "more"},
                                   {"250-a\r\n251 b\r\n", "senseless"},
                                   {"\r\n", "senseless"},
                                   {"25\r\n", "senseless"},
                                   {"2500 ok\r\n", "senseless"},
                                   {"150 ok\r\n", "senseless"},
                                   {"650 ok\r\n", "senseless"},
                                   {"25a ok\r\n", "senseless"},
                                   {std::string("250 o\0k\r\n", 9), "senseless"}}) {
    for (std::size_t cut = 0; cut <= c.text.size(); ++cut) EXPECT_EQ(Read(c.text, cut), c.wanted) << cut << c.text;
  }
}

TEST(Reply, HasLimits) {
  for (const auto& [code, most] : {std::pair<std::string, std::size_t>{"250", 4096}, {"334", 12288}}) {
    const auto line = [&code](std::size_t length) { return code + " " + std::string(length - 4, 'x'); };
    EXPECT_EQ(Read(line(most) + "\r\n", 0).substr(0, 5), code + "||");
    EXPECT_EQ(Read(line(most + 1) + "\r\n", 0), "senseless");
    EXPECT_EQ(Read(line(most + 2), 0), "senseless");  // and does not wait for its end
  }
  std::string many;
  for (int n = 0; n < 199; ++n) many += "250-x\r\n";
  EXPECT_EQ(Read(many + "250 x\r\n", 0).substr(0, 5), "250||");
  EXPECT_EQ(Read(many + "250-x\r\n250 x\r\n", 0), "senseless");
}

TEST(Capabilities, AreReadFromEhlo) {
  const auto c =
      ParseCapabilities("PIPELINING\nsize 1000\n8BITMIME\r\nAUTH plain  login\nAUTH=LOGIN CRAM-MD5\nDSNX\nCHUNKING");
  EXPECT_FALSE(c.pipelining);  // the first line is a name
  EXPECT_TRUE(c.size && c.eight_bit_mime && c.chunking);
  EXPECT_FALSE(c.dsn || c.starttls || c.smtputf8);
  EXPECT_EQ(c.size_limit, 1000U);
  EXPECT_EQ(c.mechanisms, (std::vector<std::string_view>{"PLAIN", "LOGIN", "CRAM-MD5"}));
  EXPECT_EQ(ParseCapabilities("mx\nSIZE 99999999999999999999").size_limit, 0U);
}

}  // namespace
}  // namespace quillcast::smtp
