// Who is found by a field, a comparison and a term.
#include "recipients/recipient_search.h"

#include "recipients/store_fixture.h"

namespace quillcast::recipients {
namespace {

class SearchTest : public StoreTest {
 protected:
  // The keys of those found, or {-1} when the statement fails.
  std::vector<std::int64_t> Found(std::size_t field, Comparison comparison, std::string_view term) {
    std::vector<std::int64_t> keys;
    const auto done = Search(store(), {group_, field, comparison, std::string(term)}, [&](std::int64_t key) {
      keys.push_back(key);
      return true;
    });
    return done ? keys : std::vector<std::int64_t>{-1};
  }
  std::int64_t group_ = NewGroup("A");
};

TEST_F(SearchTest, FindsByOneFieldOrAll) {
  Recipient ada = Named("ada@example.org", "Ada", "L'Aquila");
  ada.values[FieldOfLabel("Address 1")] = "1 Main Street";
  const auto a = **store().AddRecipientIfNew(group_, ada);
  const auto b = **store().AddRecipientIfNew(group_, Named("bob@EXAMPLE.net", "Bob", "100%"));
  ASSERT_TRUE(*store().AddRecipientIfNew(NewGroup("B"), ada));
  const std::int64_t fails = -1;
  struct Case {
    const char* label;
    Comparison comparison;
    const char* term;
    std::vector<std::int64_t> found;
  };
  for (const Case& c : std::initializer_list<Case>{{"Email", Comparison::kContains, "example", {a, b}},
                                                   {"Email", Comparison::kEquals, "ADA@example.org ", {a}},
                                                   {"Email", Comparison::kEquals, "%", {}},
                                                   {"Email", Comparison::kStartsWith, "Bob", {b}},
                                                   {"Email", Comparison::kEndsWith, ".ORG", {a}},
                                                   {"Email", Comparison::kContains, "a_a@", {a}},
                                                   {"City", Comparison::kContains, "'", {a}},
                                                   {"City", Comparison::kContains, "%", {a, b}},
                                                   {"City", Comparison::kEquals, "x' OR '1'='1", {}},
                                                   {"Address 1", Comparison::kContains, "%", {fails}},
                                                   {"Address 2", Comparison::kEquals, "", {fails}},
                                                   {"All fields", Comparison::kContains, "main", {a}},
                                                   {"All fields", Comparison::kEquals, "l'aquila", {a}},
                                                   {"All fields", Comparison::kStartsWith, "bob", {b}},
                                                   {"All fields", Comparison::kEndsWith, "street", {a}},
                                                   {"All fields", Comparison::kEquals, " ", {a, b}},  // some are empty
                                                   {"All fields", Comparison::kContains, "oslo", {}}}) {
    const auto labels = SearchLabels();
    const auto field = std::find(labels.begin(), labels.end(), c.label) - labels.begin();
    EXPECT_EQ(Found(static_cast<std::size_t>(field), c.comparison, c.term), c.found) << c.label << " " << c.term;
  }
  EXPECT_EQ(SearchLabels().back(), kAllFieldsLabel);
  for (const char* letter : {"a", "\xC3\xA4"}) {
    std::string term;
    while (term.size() < 1000 * std::string_view(letter).size()) term += letter;
    EXPECT_EQ(Found(kEmail, Comparison::kContains, term), std::vector<std::int64_t>());
    EXPECT_EQ(Found(kEmail, Comparison::kContains, term + letter), std::vector<std::int64_t>{fails});
  }
}

TEST_F(SearchTest, GivesThemInTheOrderOfAddingAndStopsWhereItIsTold) {
  for (const char* address : {"z@x.org", "a@x.org", "m@x.org"}) Add(group_, address);
  const auto all_keys = *store().ListKeys(group_, "");
  for (const std::size_t field : {kEmail, kAllFields}) {
    EXPECT_EQ(Found(field, Comparison::kContains, "x.org"), all_keys);
    std::int64_t visits = 0;
    ASSERT_TRUE(Search(store(), {group_, field, Comparison::kContains, "x.org"}, [&](auto) { return ++visits != 2; }));
    EXPECT_EQ(visits, 2);
  }
  platform::CancelToken cancel;
  cancel.Request();
  Fill(group_, 2000);
  const RecipientStore cancelled(store().file(), {.cancel = &cancel});
  const SearchRequest all{group_, kAllFields, Comparison::kContains, "n"};
  EXPECT_EQ(Search(cancelled, all, [](auto) { return true; }).error().failure, Failure::kTryAgain);
}

TEST_F(SearchTest, ChecksAsTheDialogsDo) {
  struct Case {
    std::optional<GroupComplaint> complaint;
    const char* message;  // nullptr: none
    std::optional<GroupControl> control;
  };
  for (const Case& c : std::initializer_list<Case>{
           {CheckSearchTerm(""), "Please enter your search term.", GroupControl::kSearchTerm},
           {CheckSearchTerm(" "), nullptr, {}},
           {CheckFoundChosen(false), "Please specify an email address.", GroupControl::kFoundRecipient},
           {CheckFoundChosen(true), nullptr, {}},
           {CheckGroupChosen(""), "Please specify a group.", GroupControl::kGroup},
           {CheckGroupNotEmpty(0), "The selected group does not contain any recipients.", {}},
           {CheckGroupNotEmpty(1), nullptr, {}},
           {CheckGroupsToImportTo(false), "There is no group to import the data to.", {}},
           {CheckGroupsToExportFrom(false), "There is no group to export the data from.", {}},
           {CheckOtherGroup("A", ""), "Please specify a group.", GroupControl::kGroup},
           {CheckOtherGroup("A", "a "), "The recipients are in that group already. Choose another group.",
            GroupControl::kGroup},
           {CheckOtherGroup("A", "B"), nullptr, {}}}) {
    ASSERT_EQ(c.complaint.has_value(), c.message != nullptr);
    if (!c.complaint) continue;
    EXPECT_EQ(c.complaint->message, c.message);
    EXPECT_EQ(c.complaint->control, c.control);
  }
}

}  // namespace
}  // namespace quillcast::recipients
