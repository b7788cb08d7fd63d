// The issued text of every statement, to the letter, against texts written out by hand.
#include "recipients/statements.h"

#include <gtest/gtest.h>

#include <vector>

#include "recipients/sort_order.h"

namespace quillcast::recipients {
namespace {

const std::vector<std::string_view> kKeyAndEighteen = {"7",  "o'n@x.org", "2",  "3",  "4",  "5",  "6",  "7",  "8", "9",
                                                       "10", "11",        "12", "13", "14", "15", "16", "17", "18"};
const std::vector<std::string_view> kEighteenAndKey = {"o'n@x.org", "2",  "3",  "4",  "5",  "6",  "7",  "8",  "9", "10",
                                                       "11",        "12", "13", "14", "15", "16", "17", "18", "7"};

TEST(Statements, AreIssuedToTheLetter) {
  using Values = std::vector<std::string_view>;
  struct Case {
    StatementId id;
    Values values;
    const char *extra, *text;
  };
  for (const Case& c : std::initializer_list<Case>{
           {StatementId::kGroupNames, {}, "", "SELECT [GroupName] FROM [Groups]"},
           {StatementId::kFindGroup, {"A-1 b"}, "", "SELECT * FROM [Groups] WHERE ([GroupName] = 'A-1 b ')"},
           {StatementId::kFindDuplicate, Values{"7", "o'n@x.org"}, "",
            "SELECT * FROM [Emails] WHERE (([G-ID] = '7 ') AND ([G-Email] = 'o''n@x.org'))"},
           {StatementId::kFindRecipient, Values{"7", "o'n@x.org"}, "",
            "SELECT * FROM [Emails] WHERE (([G-ID] = '7') AND ([G-Email] = 'o''n@x.org'))"},
           {StatementId::kAddRecipient, kKeyAndEighteen, "",
            "INSERT INTO [Emails] ([G-ID] , [G-Email] , [G-Title], [G-FirstName], [G-LastName], [G-Country], "
            "[G-State], [G-City], [G-Address1], [G-Address2], [G-ZIPCode], [G-Phone], [G-Fax], [G-Company], "
            "[G-JobTitle], [G-WebSite], [G-Add1], [G-Add2], [G-Add3] ) VALUES ( 7 , 'o''n@x.org' , '2' , '3' , '4' , "
            "'5' , '6' , '7' , '8' , '9' , '10' , '11' , '12' , '13' , '14' , '15' , '16' , '17' , '18') "},
           {StatementId::kImportRecipient, kKeyAndEighteen, "",
            "INSERT INTO [Emails] ([G-ID] , [G-Email] , [G-Title], [G-FirstName], [G-LastName], [G-Country], "
            "[G-State], [G-City], [G-Address1], [G-Address2], [G-ZIPCode], [G-Phone], [G-Fax], [G-Company], "
            "[G-JobTitle], [G-WebSite], [G-Add1], [G-Add2], [G-Add3] ) VALUES ( 7 , 'o''n@x.org' , '2' , '3' , '4' , "
            "'5' , '6' , '7' , '8' , '9' , '10' , '11' , '12' , '13' , '14' , '15' , '16' , '17' , '18')"},
           {StatementId::kAddAddress, Values{"7", "o'n@x.org"}, "",
            "INSERT INTO [Emails] ([G-ID] , [G-Email]) VALUES ( '7' , 'o''n@x.org')"},
           {StatementId::kUpdateRecipient, kEighteenAndKey, "",
            "UPDATE [Emails] SET [G-Email] = 'o''n@x.org' , [G-Title] = '2', [G-FirstName] = '3', [G-LastName] = '4', "
            "[G-Country] = '5', [G-State] = '6', [G-City] = '7', [G-Address1] = '8', [G-Address2] = '9', "
            "[G-ZIPCode] = '10', [G-Phone] = '11', [G-Fax] = '12', [G-Company] = '13', [G-JobTitle] = '14', "
            "[G-WebSite] = '15', [G-Add1] = '16', [G-Add2] = '17', [G-Add3] = '18' WHERE ([ID]=7)"},
           {StatementId::kDeleteRecipient, {"7"}, "", "DELETE FROM [Emails] WHERE ([ID]=7)"},
           {StatementId::kFailingSelect, {"7"}, "", "SELECT FROM [Emails] WHERE ([ID]=7)"},
           {StatementId::kCreateGroup, {"A'b"}, "", "INSERT INTO [Groups] ([GroupName]) VALUES ('A'b')"},
           {StatementId::kRenameGroup, Values{"new", "old"}, "",
            "Update [Groups] Set [GroupName] = 'new' Where [GroupName] = 'old'"},
           {StatementId::kDeleteGroup, {"old"}, "", "DELETE from [Groups] Where [GroupName] = 'old'"},
           {StatementId::kDeleteGroupRecipients, {"7"}, "", "DELETE from [Emails] Where [G-ID] = '7'"},
           {StatementId::kListNames, Values{"7"}, "",
            "SELECT [G-Email], [G-FirstName], [G-LastName] FROM [Emails] WHERE ([G-ID] = '7 ')"},
           {StatementId::kListNames, Values{"7"}, "[G-City]",
            "SELECT [G-Email], [G-FirstName], [G-LastName] FROM [Emails] WHERE ([G-ID] = '7 ') ORDER BY [G-City]"},
           {StatementId::kListAddresses, {"7"}, "", "SELECT [G-Email] FROM [Emails] WHERE ([G-ID] = '7 ')"},
           {StatementId::kListFields, Values{"7"}, "G-City DESC",
            "SELECT [G-Email], [G-Title], [G-FirstName], [G-LastName], [G-Country], [G-State], [G-City], "
            "[G-Address1], [G-Address2], [G-ZIPCode], [G-Phone], [G-Fax], [G-Company], [G-JobTitle], [G-WebSite], "
            "[G-Add1], [G-Add2], [G-Add3] FROM [Emails] WHERE ([G-ID] = '7 ') ORDER BY G-City DESC"},
           {StatementId::kFindEqual, Values{"7", "o'n"}, "G-Email",
            "SELECT * From [Emails] WHERE (([G-ID] = '7') AND ([G-Email] = 'o''n'))"},
           {StatementId::kFindContaining, Values{"7", "o'n"}, "G-City",
            "SELECT * From [Emails] WHERE (([G-ID] = '7') AND ([G-City] Like '%o''n%'))"},
           {StatementId::kFindStarting, Values{"7", "o"}, "G-Address 1",
            "SELECT * From [Emails] WHERE (([G-ID] = '7') AND ([G-Address 1] Like 'o%'))"},
           {StatementId::kFindEnding, Values{"7", "o"}, "G-Add3",
            "SELECT * From [Emails] WHERE (([G-ID] = '7') AND ([G-Add3] Like '%o'))"}}) {
    EXPECT_EQ(IssuedText(c.id, c.values, c.extra), c.text);
  }
}

TEST(Statements, OfOurOwnTakeSeveralKeys) {
  EXPECT_EQ(IssuedText(StatementId::kNamesOfKeys, std::vector<std::string_view>{"7", "9"}),
            "SELECT [ID], [G-Email], [G-FirstName], [G-LastName], [G-ID] FROM [Emails] WHERE ([ID] IN (7, 9))");
}

TEST(Statements, TakeOnlyColumnsToSortBy) {
  struct Case {
    const char* sort;
    const char* order;  // nullptr: refused
    const char* text;   // as a picked order writes it
  };
  for (const Case& c : std::initializer_list<Case>{
           {"[G-LastName]", " ORDER BY [G-LastName] ASC, [ID]", "[G-LastName]"},
           {"g-lastname desc , [G-FirstName]  Asc", " ORDER BY [G-LastName] DESC, [G-FirstName] ASC, [ID]",
            "[G-LastName] DESC, [G-FirstName]"},
           {"ID DESC", " ORDER BY [ID] DESC, [ID]", "[ID] DESC"},
           {"G-City, ID DESC, g-city desc", " ORDER BY [G-City] ASC, [ID] DESC, [ID]", "[G-City], [ID] DESC"},
           {"[G-City", nullptr, ""},
           {"[G-Address 1]", nullptr, ""},
           {"G-City,", nullptr, ""},
           {"G-City up", nullptr, ""},
           {"G-City; DROP TABLE [Emails]", nullptr, ""},
           {"(SELECT 1)", nullptr, ""},
           {"1", nullptr, ""}}) {
    const auto order = OrderByOf(c.sort);
    ASSERT_EQ(bool(order), c.order != nullptr) << c.sort;
    if (!order) continue;
    EXPECT_EQ(*order, c.order);
    EXPECT_EQ(SortTextOf(*SortKeysOf(c.sort)), c.text);
  }
  EXPECT_TRUE(SortKeysOf("")->empty());
}

}  // namespace
}  // namespace quillcast::recipients
