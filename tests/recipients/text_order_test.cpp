// The store's own text equality, order and wildcards.
#include "recipients/text_order.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace quillcast::recipients {
namespace {

int Sign(int value) { return (value > 0) - (value < 0); }

std::string Octets(const std::optional<std::string_view>& text) {
  std::string octets;
  AppendSortOctets(octets, text);
  return octets;
}

TEST(TextOrder, FoldsCaseAndIgnoresBlanksAtTheEnd) {
  struct Case {
    const char *a, *b;
    int order;
  };
  for (const Case& c : std::initializer_list<Case>{{"", "", 0},
                                                   {"", "   ", 0},
                                                   {"Ada", "aDA", 0},
                                                   {"ada ", "ada", 0},
                                                   {"ada\t", "ada", 1},
                                                   {" ada", "ada", -1},
                                                   {"a", "b", -1},
                                                   {"B", "a", 1},
                                                   {"ab", "a", 1},
                                                   {"a b", "a", 1},
                                                   {"\xC3\x84rger", "\xC3\xA4RGER", 0},
                                                   {"\xC3\xA4", "a", 1},
                                                   {"z", "\xC3\x84", -1},
                                                   {"\xE1\xBA\x9E", "\xC3\x9F", 0},  // capital and small sharp s
                                                   {"\xC3\x9F", "ss", 1},            // simple folding, not full
                                                   {"\xE2\x84\xAA", "k", 0},         // Kelvin sign
                                                   {"\xCE\xA3", "\xCF\x82", 0},      // sigma and final sigma
                                                   {"\xF0\x90\x90\x80", "\xF0\x90\x90\xA8", 0},  // Deseret
                                                   {"\xC4\xB0", "i", 1},  // dotted I folds to itself
                                                   {"\xFF", "\xFF", 0},
                                                   {"\xFE", "\xFF", -1},
                                                   {"\xFF", "\xF0\x9F\x98\x80", 1}}) {
    EXPECT_EQ(Sign(CompareText(c.a, c.b)), c.order) << c.a << " and " << c.b;
    EXPECT_EQ(Sign(CompareText(c.b, c.a)), -c.order) << c.b << " and " << c.a;
    if (c.order == 0) {
      EXPECT_EQ(HashText(c.a), HashText(c.b)) << c.a << " and " << c.b;
    }
  }
}

// An index is only as good as the order is total: equal hashes for equals, and no cycle among three.
TEST(TextOrder, IsATotalOrderOnAnyBytes) {
  std::mt19937 random(11);
  const std::string letters("aAkK \xC3\x84\xA4\xE2\x84\xAA\xFF\x01\0", 14);
  const auto any = [&] {
    std::string text(random() % 5, ' ');
    for (char& c : text) c = letters[random() % letters.size()];
    return text;
  };
  for (int round = 0; round < 20000; ++round) {
    const std::string a = any();
    const std::string b = any();
    const std::string c = any();
    ASSERT_EQ(CompareText(a, b) < 0, CompareText(b, a) > 0) << a << "|" << b;
    if (CompareText(a, b) <= 0 && CompareText(b, c) <= 0) {
      ASSERT_LE(CompareText(a, c), 0) << a << "|" << b << "|" << c;
    }
    if (CompareText(a, b) == 0) {
      ASSERT_EQ(HashText(a), HashText(b)) << a << "|" << b;
    }
    ASSERT_EQ(Sign(Octets(a).compare(Octets(b))), Sign(CompareText(a, b))) << a << "|" << b;
    ASSERT_LT(Octets({}), Octets(a)) << "none before all";
  }
}

// The rule as it reads: every run that "%" could stand for is tried.
bool LikePlainly(std::string_view pattern, std::string_view text) {
  const auto length = [](std::string_view of) { return std::size_t{of[0] == '\xC3' ? 2U : of[0] == '\xE2' ? 3U : 1U}; };
  if (pattern.empty()) return text.empty();
  if (pattern[0] == '%')
    return LikePlainly(pattern.substr(1), text) || (!text.empty() && LikePlainly(pattern, text.substr(length(text))));
  if (text.empty()) return false;
  const std::string_view wanted = pattern.substr(0, length(pattern));
  // Another letter behind each, for blanks at the end do not count.
  const bool fits =
      wanted == "_" || CompareText(std::string(wanted) + ".", std::string(text, 0, length(text)) + ".") == 0;
  return fits && LikePlainly(pattern.substr(wanted.size()), text.substr(length(text)));
}

TEST(TextOrder, LikeSkipsNothingThatFits) {
  std::mt19937 random(7);
  const std::vector<std::string> letters = {"a", "A", "k",        "K",        "s",           " ",
                                            "%", "_", "\xC3\x84", "\xC3\xA4", "\xE2\x84\xAA"};
  const auto any = [&](std::size_t most) {
    std::string text;
    for (auto left = random() % most; left > 0; --left) text += letters[random() % letters.size()];
    return text;
  };
  for (int round = 0; round < 20000; ++round) {
    const std::string pattern = (random() % 2 == 0 ? "%" : "") + any(5) + (random() % 2 == 0 ? "%" : "");
    const std::string text = any(9);
    ASSERT_EQ(LikeText(pattern, text), LikePlainly(pattern, text)) << pattern << " on " << text;
  }
}

TEST(TextOrder, LikeTakesWildcardsInAnyCase) {
  struct Case {
    const char *pattern, *text;
    bool fits;
  };
  for (const Case& c : std::initializer_list<Case>{{"%", "", true},
                                                   {"_", "", false},
                                                   {"", "", true},
                                                   {"", "a", false},
                                                   {"%EXAMPLE%", "ada@example.org", true},
                                                   {"ada%", "Ada@example.org", true},
                                                   {"%.org", "ada@example.org.uk", false},
                                                   {"%.org", "ada@x.org.org", true},
                                                   {"a_a", "ada", true},
                                                   {"a_a",
                                                    "a\xC3\xA4"
                                                    "a",
                                                    true},
                                                   {"a_a", "adda", false},
                                                   {"%\xC3\x84%", "x\xC3\xA4y", true},
                                                   {"%a%b%c%", "xxaxxbxxcxx", true},
                                                   {"%a%b%c%", "xxaxxcxxbxx", false},
                                                   {"%aab", "aaaaaab", true},
                                                   {"%k%", "x\xE2\x84\xAA", true},  // the Kelvin sign
                                                   {"%kx", "yk \xE2\x84\xAAx", true},
                                                   {"%_k", "k", false},
                                                   {"ada", "ada ", false},
                                                   {"%%", "x", true}}) {
    EXPECT_EQ(LikeText(c.pattern, c.text), c.fits) << c.pattern << " on " << c.text;
  }
  // What fits nearly everywhere is compared another way.
  const std::string many(3000, 'a');
  const std::string most(100, 'A');
  for (const auto& [pattern, text, fits] :
       {std::tuple("%" + most + "b%", many, false), std::tuple("%" + most + "b%", many + "Bc", true),
        std::tuple("%" + most + "_b%", many + "\xC3\xA4" + "b", true), std::tuple("%" + most + "b", many + "bx", false),
        std::tuple("%" + most + "b", many + "b" + many + "b", true),
        std::tuple("%" + most + "b%c%", many + "cb", false),
        std::tuple("a%" + most + "b%c%%d_", many + "b" + most + "bacd\xC3\xA4", true),
        std::tuple("b%" + most + "b%", many + "b", false),
        std::tuple("%" + most + "b%" + most, many + "b" + most, true),
        std::tuple("%" + most + "b%" + most, many + "b" + most.substr(1), false)}) {
    EXPECT_EQ(LikeText(pattern, text), fits) << pattern;
  }
}

}  // namespace
}  // namespace quillcast::recipients
