#include "net/idna.h"

#include <gtest/gtest.h>

namespace quillcast::net {
namespace {

TEST(Idna, GivesHostsTheirNameInAscii) {
  struct Case {
    const char* host;
    const char* ascii;  // nullptr: no host's name
  };
  for (const Case& c : {
           Case{"mx.example.org", "mx.example.org"},
           Case{"My_Server", "My_Server"},  // not a host's name by the book, and in use
           Case{"b\u00FCcher_1.example.", "xn--bcher_1-n2a.example."}, Case{"m\u00FC.a/c", nullptr}, Case{"::1", "::1"},
           Case{"m\u00FCller.example", "xn--mller-kva.example"}, Case{"M\u00DCLLER.EXAMPLE.", "xn--mller-kva.example."},
           Case{"fa\u00DF.example", "xn--fa-hia.example"},             // the ss of older rules is another host
           Case{"b\u00FCcher\u3002example", "xn--bcher-kva.example"},  // the full stop of other scripts
           Case{"\u4F8B\u3048.\u30C6\u30B9\u30C8", "xn--r8jz45g.xn--zckzah"}, Case{"m\u00FC ller.example", nullptr},
           Case{"m\u00FC..example", nullptr}, Case{"-m\u00FC.example", nullptr},
           Case{"\u05D0a.example", nullptr},         // right to left and left to right in one label
           Case{"a\u200Db\u00FC.example", nullptr},  // an invisible joiner
           Case{"m\xFCller.example", nullptr},       // not UTF-8
       }) {
    SCOPED_TRACE(c.host);
    const auto ascii = AsciiHost(c.host);
    EXPECT_EQ(ascii ? *ascii : "no name", c.ascii != nullptr ? c.ascii : "no name");
  }
  EXPECT_FALSE(AsciiHost("\u00FC" + std::string(300, 'a')));
}

TEST(Idna, TouchesTheDomainOfAnAddressAlone) {
  EXPECT_EQ(WithAsciiDomain("ada@m\u00FCller.example"), "ada@xn--mller-kva.example");
  EXPECT_EQ(WithAsciiDomain("\u00FC@m\u00FCller.example"), "\u00FC@xn--mller-kva.example");
  for (const char* same : {"ada@Example.ORG", "ada", "", "ada@[127.0.0.1]", "ada@m\u00FC..example"}) {
    EXPECT_EQ(WithAsciiDomain(same), same);
  }
}

}  // namespace
}  // namespace quillcast::net
