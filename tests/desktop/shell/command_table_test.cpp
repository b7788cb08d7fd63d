#include "desktop/shell/command_table.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace quillcast::desktop {
namespace {

TEST(CommandTable, ButtonsDoWhatTheirMenuEntriesDo) {
  for (const auto& [entry, button] :
       std::map<int, int>{{1, 83},  {2, 84},  {4, 85},  {5, 86},   {7, 87},   {8, 88},   {9, 89},
                          {10, 90}, {11, 91}, {12, 92}, {14, 93},  {27, 94},  {28, 95},  {29, 96},
                          {30, 97}, {31, 98}, {32, 99}, {33, 101}, {34, 100}, {35, 102}, {36, 103}}) {
    const auto a = FindCommand(entry);
    const auto b = FindCommand(button);
    ASSERT_TRUE(a && b) << entry;
    EXPECT_EQ(a->action, b->action) << entry;
    EXPECT_EQ(a->editor_code, b->editor_code) << entry;
  }
}

TEST(CommandTable, GapsDoNothing) {
  const std::set<int> gaps = {3, 45, 46, 47, 48, 49, 50, 51, 62, 81, 82};
  for (int identifier = -5; identifier <= 120; ++identifier) {
    const bool is_gap = identifier < 1 || identifier > 107 || gaps.contains(identifier);
    EXPECT_EQ(FindCommand(identifier).has_value(), !is_gap) << identifier;
  }
  EXPECT_EQ(Commands().size(), 107U - gaps.size());
}

TEST(CommandTable, CodesAndMergeFieldsAreAsPublished) {
  for (const auto& [identifier, code] : std::map<int, int>{
           {7, 5049}, {13, 5035}, {25, 5050}, {26, 5034}, {33, 5018}, {34, 5031}, {35, 5051}, {36, 5030}}) {
    EXPECT_EQ(FindCommand(identifier)->editor_code, code) << identifier;
  }
  for (const auto& [identifier, field] : std::map<int, std::string_view>{{67, "MergeEmail"},
                                                                         {73, "MergeCity"},
                                                                         {74, "MergeAddress2"},
                                                                         {75, "MergeZIPCode"},
                                                                         {104, "MergeAddress1"},
                                                                         {107, "MergeAdditional3"}}) {
    EXPECT_EQ(FindCommand(identifier)->merge_field, field) << identifier;
  }
}

}  // namespace
}  // namespace quillcast::desktop
