#include "profile/start_message.h"

#include <gtest/gtest.h>

namespace quillcast::profile {
namespace {

using State = StartMessageState;
using Arguments = std::vector<std::string>;

TEST(StartMessage, IsReadAsItWasWrittenAndNoSooner) {
  for (const Arguments& arguments :
       {Arguments{}, Arguments{"/home/ada/letter.html"}, Arguments{"/a\nb", "MAILTO:?subject=x", "/\xFF"}}) {
    const auto bytes = WriteStartMessage(arguments);
    ASSERT_TRUE(bytes);
    for (std::size_t length = 0; length < bytes->size(); ++length) {
      EXPECT_EQ(ReadStartMessage(std::string_view(*bytes).substr(0, length)).state, State::kIncomplete) << length;
    }
    const auto read = ReadStartMessage(*bytes);
    EXPECT_EQ(read.state, State::kComplete);
    EXPECT_EQ(read.arguments, arguments);
    EXPECT_EQ(ReadStartMessage(*bytes + "x").state, State::kRefused);
  }
}

TEST(StartMessage, WhatIsNoStartOfOursIsRefused) {
  using std::string_literals::operator""s;
  const std::string begin = "quillcast start 1\n";
  std::string too_many = begin;
  for (std::size_t i = 0; i <= kMostArguments; ++i) too_many += "/x\0"s;
  const std::pair<const char*, std::string> cases[] = {
      {"a web page's request", "GET / HTTP/1.1\r\n\r\n"},
      {"another version", "quillcast start 2\n\0"s},
      {"a relative path", begin + "letter.html\0"s},
      {"another scheme", begin + "https://example.org/\0"s},
      {"too many arguments", too_many},
      {"too long", begin + std::string(kLargestStart, '/')},
  };
  for (const auto& [name, bytes] : cases) EXPECT_EQ(ReadStartMessage(bytes).state, State::kRefused) << name;
  EXPECT_FALSE(WriteStartMessage(Arguments{"letter.html"}));
  EXPECT_FALSE(WriteStartMessage(Arguments{"/a\0b"s}));
  EXPECT_FALSE(WriteStartMessage(Arguments(kMostArguments + 1, "/x")));
  EXPECT_FALSE(WriteStartMessage(Arguments{"/" + std::string(kLargestStart, 'x')}));
}

}  // namespace
}  // namespace quillcast::profile
