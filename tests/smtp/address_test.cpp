// What an address may hold, and what a line for the wire may.
#include "smtp/address.h"

#include <gtest/gtest.h>

#include "smtp/envelope_address.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {
namespace {

TEST(Address, RefusesWhatCouldEndACommandAPathOrAMailbox) {
  struct Case {
    std::string text;
    const char* fault;  // a part of it; nullptr: taken
  };
  const std::string longest_name(64, 'n');
  const std::string longest = longest_name + "@" + std::string(181, 'd') + ".example";  // 254 octets
  for (const Case& c : std::initializer_list<Case>{{"ada@example.org", nullptr},
                                                   {"o'neill+x=y@example.museum", nullptr},
                                                   {"j\u00FCrgen@b\u00FCcher.example", nullptr},
                                                   {"\"a,;()\\\"b@c\"@example.org", nullptr},
                                                   {longest, nullptr},
                                                   {"ada@[192.0.2.1]", nullptr},
                                                   {"ada@[IPv6:2001:db8::1]", nullptr},
                                                   {"\"" + std::string(62, 'a') + "@\"@x.org", "too long"},
                                                   {"@relay:a@x.org", "no address"},
                                                   {"@a:c@d.org", "no address"},
                                                   {"a:b@x.org", "no address"},
                                                   {"a@b@c.org", "no address"},
                                                   {"p@\"y,z\"", "no address"},
                                                   {"\"a\"b\"c\"@y.org", "no address"},
                                                   {"a\"b\"@y.org", "no address"},
                                                   {"ada@[x", "no address"},
                                                   {"ada@x]y", "no address"},
                                                   {"n" + longest, "too long"},
                                                   {longest + "e", "too long"},
                                                   {longest_name + "n@x.org", "too long"},
                                                   {"", "no address"},
                                                   {"ada", "no address"},
                                                   {"@x.org", "no address"},
                                                   {"ada@", "no address"},
                                                   {"x@y.z>\r\nRCPT TO:<evil@y.z", "control"},
                                                   {"x@y.z\nDATA", "control"},
                                                   {"a@b.c\rX", "control"},
                                                   {std::string("a\0@b.c", 6), "control"},
                                                   {"a@b.c\x7F", "control"},
                                                   {"a\u0085@b.c", "control"},
                                                   {"\"a\r\nb\"@b.c", "control"},
                                                   {"x@y.z NOTIFY=NEVER", "no address"},
                                                   {"<a@b.c", "no address"},
                                                   {"a@b.c>", "no address"},
                                                   {"\"a b\"@x.org", "no address"},
                                                   {"a,b@x.org", "no address"},
                                                   {"a@x.org;b@y.org", "no address"},
                                                   {"a(b@x.org", "no address"},
                                                   {"a\\@x.org", "no address"},
                                                   {"\"a@x.org", "no address"},
                                                   {"\"a\\\"@x.org", "no address"},
                                                   {"a@x.org\"\\", "no address"},
                                                   {"j\xFC@y.z", "UTF-8"}}) {
    SCOPED_TRACE(c.text);
    const auto address = Address::From(c.text);
    ASSERT_EQ(static_cast<bool>(address), c.fault == nullptr);
    if (address) {
      EXPECT_EQ(address->text(), c.text);
    } else {
      EXPECT_NE(address.error().what.InEnglish().find(c.fault), std::string::npos) << address.error().what.InEnglish();
    }
  }
}

TEST(EnvelopeAddress, IsTakenOutOfWhatIsStored) {
  struct Case {
    std::string stored;
    const char* address;  // nullptr: refused
  };
  const std::string longest_name(64, 'n');
  const std::string longest = longest_name + "@" + std::string(181, 'd') + ".example";  // 254 octets
  for (const Case& c : std::initializer_list<Case>{{"ada@example.org", "ada@example.org"},
                                                   {"Ada <ada@example.org>", "ada@example.org"},
                                                   {"\"a@b\" < ada@example.org >", "ada@example.org"},
                                                   {"Ada Lovelace ada@example.museum", "ada@example.museum"},
                                                   {" (ada+b@example.org); ", "ada+b@example.org"},
                                                   {"'o@x.org',", "o@x.org"},
                                                   {"o'neill@x.org", "o'neill@x.org"},
                                                   {"j\xC3\xB6rg@m\xC3\xBCller.de", "j\xC3\xB6rg@m\xC3\xBCller.de"},
                                                   {"", nullptr},
                                                   {"ada", nullptr},
                                                   {"@example.org", nullptr},
                                                   {"ada@", nullptr},
                                                   {"ada @ example.org", nullptr},
                                                   {"Ada <ada lovelace@example.org>", nullptr},
                                                   {"a@x.org\r\nRCPT", nullptr},
                                                   {std::string("a\0b@x.org", 9), nullptr},
                                                   {"<a@x.org>\r\n<b@x.org\r\n>", nullptr},
                                                   {"Ada\x01 <a@x.org>", nullptr},
                                                   {"a@x.org\t", nullptr},
                                                   {"\na@x.org", nullptr},
                                                   {"a@x.org\xC2\x85", nullptr},
                                                   {longest, longest.c_str()},
                                                   {"n" + longest, nullptr},
                                                   {longest + "e", nullptr},
                                                   {"<" + longest_name + "n@x.org>", nullptr},
                                                   {"<a@x.org\x7F>", nullptr},
                                                   {"<a,b@x.org>", nullptr},
                                                   {"<a(b@x.org>", nullptr},
                                                   {"<a@x.org;b@y.org>", nullptr},
                                                   {"<a\\@x.org>", nullptr},
                                                   {"<\"a@x.org>", nullptr},
                                                   {"<\"a,\\\"b\"@x.org>", "\"a,\\\"b\"@x.org"},
                                                   {"Ada <\xFC@x.org>", nullptr},
                                                   {"\xFC <a@x.org>", "a@x.org"}}) {
    const auto address = EnvelopeAddress(c.stored);
    EXPECT_EQ(address ? address->text() : "refused", c.address == nullptr ? "refused" : c.address) << c.stored;
  }
}

TEST(SmtpLine, IsJoinedOfLinesAndRefusesControls) {
  EXPECT_EQ(SmtpLine("BDAT").Then(SmtpLine::Of(86'000)).Then("LAST").text(), "BDAT 86000 LAST");
  for (const char bad : {'\r', '\n', '\0', '\t', '\x1F', '\x7F'}) {
    EXPECT_FALSE(SmtpLine::From(std::string("RCPT TO:<a") + bad + "@b.c>")) << static_cast<int>(bad);
  }
  EXPECT_EQ(SmtpLine::From("RCPT TO:<\u00FC@b.c>")->text(), "RCPT TO:<\u00FC@b.c>");
}

}  // namespace
}  // namespace quillcast::smtp
