// What merging means, and that the fast way of doing it means the same.
#include <gtest/gtest.h>

#include <random>

#include "document/merge_pieces.h"

namespace quillcast::document {
namespace {

MergeValues Values(std::initializer_list<std::pair<std::size_t, std::string_view>> set) {
  MergeValues values;
  for (const auto& [field, value] : set) values[field] = value;
  return values;
}

constexpr std::size_t kEmail = 0, kTitle = 1, kFirstName = 2, kField3 = 17;

TEST(Merge, ReplacesInTheOrderOfTheTable) {
  struct Case {
    const char* text;
    MergeValues values;
    const char* merged;
  };
  const MergeValues plain = Values({{kEmail, "a@b.de"}, {kTitle, "Ms."}, {kFirstName, "Ada"}, {kField3, "x"}});
  for (const Case& c : std::initializer_list<Case>{
           {"", plain, ""},
           {"no tags $5 * $", plain, "no tags $5 * $"},
           {"$*MergeFirstName*$ $*MergeFirstName*$!", plain, "Ada Ada!"},
           {"$*mergefirstname*$ $*MergeFirstName*", plain, "$*mergefirstname*$ $*MergeFirstName*"},
           {"$*MergeField3*$|$*MergeAdd3*$|$*MergeAdditional3*$", plain, "x|$*MergeAdd3*$|$*MergeAdditional3*$"},
           // a value that spells a later tag is replaced in turn, one that spells an earlier tag is not
           {"$*MergeTitle*$", Values({{kTitle, "$*MergeFirstName*$"}, {kFirstName, "Ada"}}), "Ada"},
           {"$*MergeFirstName*$", Values({{kTitle, "Ms."}, {kFirstName, "$*MergeTitle*$"}}), "$*MergeTitle*$"},
           // tags that share a character: the earlier of the table wins
           {"$*MergeTitle*$*MergeEmail*$", plain, "$*MergeTitle*a@b.de"},
           {"$*MergeTitle$*MergeEmail*$*$", Values({{kTitle, "Ms."}}), "Ms."},
           {"$$*MergeEmail*$*MergeTitle*$", Values({{kTitle, "Ms."}}), "Ms."},
       }) {
    EXPECT_EQ(ReplaceMergeFields(c.text, c.values), c.merged) << c.text;
  }
}

// Random texts from the pieces that tags are made of, so that overlapping, broken and completed tags are common.
TEST(Merge, PiecesMergeAsTheirTextDoes) {
  const std::vector<std::string> parts = {"$",
                                          "*",
                                          "$*",
                                          "*$",
                                          "$*Merge",
                                          "Merge",
                                          "Title",
                                          "Email",
                                          "x",
                                          " ",
                                          "MergeTitle",
                                          "$*MergeEmail*$",
                                          "$*MergeTitle*$",
                                          "$*MergeFirstName*$",
                                          "$*MergeField3*$"};
  const std::vector<std::string> contents = {"", "Ada", "Title", "MergeTitle", "$", "*", "$*MergeFirstName*$", "Merge"};
  std::mt19937 random(20261124);
  const auto pick = [&random](const auto& from) { return from[random() % from.size()]; };
  int one_pass = 0;
  constexpr int kRounds = 20000;
  for (int round = 0; round < kRounds; ++round) {
    std::string text;
    for (std::size_t n = random() % 8; n > 0; --n) text += pick(parts);
    std::array<std::string, kMergeFields.size()> owned;
    MergeValues values;
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = owned[i] = pick(contents);
    const MergePieces pieces(text);
    if (pieces.OnePassHolds(values)) ++one_pass;
    ASSERT_EQ(pieces.Merge(values), ReplaceMergeFields(text, values)) << text;
  }
  EXPECT_GT(one_pass, kRounds / 20) << "the fast way is hardly ever taken";
}

TEST(Merge, TheFastWayIsTakenForAnOrdinaryLetter) {
  const MergePieces letter("Dear $*MergeFirstName*$, 25 sheets are $6. $*MergeEmail*$");
  EXPECT_TRUE(letter.OnePassHolds(Values({{kFirstName, "Ada"}, {kField3, "$*unused*$"}})));
  EXPECT_FALSE(letter.OnePassHolds(Values({{kFirstName, "A$AP"}})));
}

TEST(Merge, ValuesBecomeMergeable) {
  recipients::Recipient recipient;
  recipient.values[0] = "a\r\nb\rc\nd";
  recipient.values[1] = std::string("n\0ul", 4);
  recipient.values[2] = "bro\xFFken";
  recipient.values[3] = "fine \xC3\xA9";
  std::array<std::string, kMergeFields.size()> changed;
  const MergeValues values = ValuesForMerge(recipient, changed);
  EXPECT_EQ(values[0], "a\nb\nc\nd");
  EXPECT_EQ(values[1], "nul");
  EXPECT_EQ(values[2], "bro\xEF\xBF\xBDken");
  EXPECT_EQ(values[3].data(), recipient.values[3].data()) << "copied without need";
}

TEST(Merge, GivesUpOnValuesThatGrowWithoutMeasure) {
  std::array<std::string, kMergeFields.size()> owned;
  MergeValues values;
  for (std::size_t i = 0; i + 1 < values.size(); ++i) {
    for (int n = 0; n < 50; ++n) owned[i] += kMergeFields[i + 1].tag;
    values[i] = owned[i];
  }
  EXPECT_FALSE(ReplaceMergeFields("$*MergeEmail*$", values));
  EXPECT_TRUE(ReplaceMergeFields("$*MergeField1*$", values)) << "2,500 empty texts";
}

TEST(Merge, FindsUnknownTags) {
  EXPECT_EQ(UnknownTags("$*MergeFirstName*$ $*MergeFristName*$ $*MergeAdd1*$ $*MergeFristName*$ $*Merge and *$ on"),
            (std::vector<std::string>{"$*MergeFristName*$", "$*MergeAdd1*$", "$*Merge and *$"}));
  EXPECT_TRUE(UnknownTags("$*Merge" + std::string(200, 'x') + "*$").empty());
}

}  // namespace
}  // namespace quillcast::document
