// The address rule against an independent matcher, and the envelope address that is made of a stored one.
#include "recipients/check_email.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <string>

#include "recipients/import/address_harvest.h"

namespace quillcast::recipients {
namespace {

std::string AllMatches(std::string_view text) {
  std::string all;
  std::size_t from = 0;
  while (const auto match = FindAddress(text, from)) {
    all += fmt::format("{}{}:{}", all.empty() ? "" : " ", match->position, match->length);
    from = match->position + match->length;
  }
  return all;
}

TEST(CheckEmail, MatchesAsABacktrackingMatcherDoes) {
  std::ifstream golden(std::string(QUILLCAST_TEST_DATA) + "/check_email_golden.txt");
  int seen = 0;
  for (std::string line; std::getline(golden, line);) {
    if (line[0] == '#') continue;
    const auto tab = line.find('\t');
    const std::string text = line.substr(0, tab);
    EXPECT_EQ(AllMatches(text), line.substr(tab + 1)) << text;
    EXPECT_EQ(CheckEmail(text), tab + 1 < line.size()) << text;
    ++seen;
  }
  EXPECT_EQ(seen, 160);
}

TEST(CheckEmail, TakesLinearTimeOnTextMadeToBeSlow) {
  std::string at_signs;
  for (int i = 0; i < 500'000; ++i) at_signs += "a@";
  EXPECT_FALSE(CheckEmail(at_signs));
  EXPECT_FALSE(CheckEmail(std::string(1 << 20, 'a')));
  EXPECT_FALSE(CheckEmail("a@" + std::string(1 << 20, '.')));
  EXPECT_EQ(FindAddress(std::string(1 << 20, 'a') + "@b.cd", 0)->length, (1U << 20) + 5);
}

std::string Harvested(const std::vector<std::string_view>& pieces) {
  std::string all;
  AddressHarvest harvest([&](std::string_view address, bool is_cut) {
    all.append(address).append(is_cut ? "+ " : " ");
    return true;
  });
  for (const auto piece : pieces) EXPECT_TRUE(harvest.Feed(piece));
  harvest.Finish();
  return all;
}

TEST(AddressHarvest, FindsTheSameWhereverTheTextIsCut) {
  std::mt19937 random(3);
  const std::string_view letters = "aZb.@.@-c d1'+\xC3\xA9\xE2\x80\x9C";
  for (int round = 0; round < 3000; ++round) {
    std::string text(random() % 60, ' ');
    for (char& c : text) c = letters[random() % letters.size()];
    std::string whole;
    std::size_t from = 0;
    while (const auto match = FindAddress(text, from)) {
      whole.append(text, match->position, match->length).append(match->is_cut ? "+ " : " ");
      from = match->position + match->length;
    }
    std::vector<std::string_view> pieces;
    for (std::string_view rest = text; !rest.empty();) {
      const std::size_t length = std::min<std::size_t>(rest.size(), random() % 5);
      pieces.push_back(rest.substr(0, length));
      rest.remove_prefix(length);
    }
    ASSERT_EQ(Harvested(pieces), whole) << text;
  }
}

TEST(AddressHarvest, LeavesOutCandidatesBeyondTheLimit) {
  const std::string most(AddressHarvest::kLongestCandidate - 5, 'a');  // with "@b.cd" just within it
  const std::string fits = most + "@b.cd";
  EXPECT_EQ(Harvested({fits}), fits + " ");
  EXPECT_EQ(Harvested({"a" + fits + " x@y.zz"}), "x@y.zz ");
  EXPECT_EQ(Harvested({"a@" + std::string(3, 'b') + ".cd" + most + "bbbbb x@y.zz"}), "x@y.zz ");
  EXPECT_EQ(Harvested({"a@" + most, most, most + ".com@y.zz"}), "");
}

TEST(AddressHarvest, TellsWhatIsCutOutOfItsWord) {
  for (const auto& [text, harvested] : std::initializer_list<std::pair<const char*, const char*>>{
           {"ada@x.museum", "ada@x.museu+ "},
           {"ada@x.xn--p1ai", "ada@x.xn+ "},
           {"ada@x.org\xC3\xBC", "ada@x.org+ "},
           {"ada@x.org. ada@x.org-, ada@x.org's (ada@x.org)", "ada@x.org ada@x.org ada@x.org ada@x.org "},
           {"o'brien@x.org", "brien@x.org+ "},
           {"john+tag@x.org", "tag@x.org+ "},
           {"j\xC3\xBCrg@x.org", "rg@x.org+ "},
           {"\xC3\xBC-b@x.org", "-b@x.org+ "},
           {"x@ada@x.org", "ada@x.org+ "},
           {"a@x.museumb@y.org", "a@x.museu+ mb@y.org+ "},
           {"'ada@x.org' <ada@x.org> =ada@x.org &ada@x.org +ada@x.org",
            "ada@x.org ada@x.org ada@x.org ada@x.org ada@x.org "},
           {"to:ada@x.org?cc=ada@x.org;ada@x.org/ada@x.org|ada@x.org",
            "ada@x.org ada@x.org ada@x.org ada@x.org ada@x.org "},
           {"\xE2\x80\x9C"
            "ada@x.org\xE2\x80\x9D \xEF\xBC\x9A"
            "ada@x.org",
            "ada@x.org ada@x.org "},
       }) {
    EXPECT_EQ(Harvested({text}), harvested) << text;
  }
}

}  // namespace
}  // namespace quillcast::recipients
