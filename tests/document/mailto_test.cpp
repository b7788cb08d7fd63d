#include "document/mailto.h"

#include <gtest/gtest.h>

namespace quillcast::document {
namespace {

struct Case {
  const char *address, *subject, *body;
  std::vector<std::string> left_out = {};
};

TEST(Mailto, GivesSubjectAndBodyAndSaysWhatItLeftOut) {
  for (const Case& c : std::initializer_list<Case>{
           {"mailto:?subject=Spring%20papers&body=Dear%20friend%2C%0D%0Anew%0Apapers", "Spring papers",
            "Dear friend,\nnew\npapers"},
           {"MailTo:bob@example.net?SUBJECT=a+b", "a+b", "", {"bob@example.net"}},
           {"mailto:a@example.org,b%2Cc@example.org?to=a@example.org&cc=d@example.org&Bcc=e@example.org",
            "",
            "",
            {"a@example.org", "b,c@example.org", "cc", "bcc"}},
           {"mailto:?attach=/etc/passwd&in-reply-to=%3Cx%3E&body=x", "", "x", {"attach", "in-reply-to"}},
           {"mailto:?subject=one&subject=two&cc=&&body", "one", "", {"subject"}},
           {"mailto:?subject=J%C3%BCrgen%20100%%2", "J\xC3\xBCrgen 100%%2", ""},
           {"mailto:?subject=a%0D%0ABcc:%20x%1B%FF&body=1%092%07", "a  Bcc: x??", "1 2?"},
           {"mailto:1,2,3,4,5,6,7,8?cc=x", "", "", {"1", "2", "3", "4", "5", "6", "..."}},
           {"mailto:", "", ""},
           {"mailto:?body=x#part", "", "x"},
       }) {
    const auto message = ReadMailto(c.address);
    ASSERT_TRUE(message) << c.address;
    EXPECT_EQ(message->subject, c.subject) << c.address;
    EXPECT_EQ(message->body, c.body) << c.address;
    EXPECT_EQ(message->left_out, c.left_out) << c.address;
  }
  for (const char* other : {"", "mailto", "https://example.org/?mailto:", "mailto:?body=%00", "mailto:a%00"})
    EXPECT_FALSE(ReadMailto(other)) << other;
}

}  // namespace
}  // namespace quillcast::document
