// The lists of the entry dialogs.
#include "recipients/entry_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace quillcast::recipients {
namespace {

TEST(EntryLists, AreOfTheirSizeAndInOrder) {
  struct Case {
    std::span<const std::string_view> list;
    std::size_t size;
    std::vector<std::string_view> first;
    std::vector<std::string_view> last;
  };
  for (const Case& c : std::initializer_list<Case>{
           {Countries(), 240, {"Afghanistan", "Albania", "Algeria"}, {"Yemen", "Zambia", "Zimbabwe"}},
           {States(), 51, {"Alabama", "Alaska", "Arizona"}, {"West Virginia", "Wisconsin", "Wyoming"}}}) {
    EXPECT_EQ(std::set(c.list.begin(), c.list.end()).size(), c.size);
    EXPECT_TRUE(std::is_sorted(c.list.begin(), c.list.end()));
    EXPECT_TRUE(std::equal(c.first.begin(), c.first.end(), c.list.begin()));
    EXPECT_TRUE(std::equal(c.last.begin(), c.last.end(), c.list.end() - 3));
  }
  EXPECT_EQ(std::vector(Titles().begin(), Titles().end()), (std::vector<std::string_view>{"Mr.", "Ms.", "Mrs."}));
}

}  // namespace
}  // namespace quillcast::recipients
