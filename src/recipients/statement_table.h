// The rows of the statement catalogue for the commands that are given, private to it.
//
// <key> is a decimal key, <value> a text whose apostrophes are doubled, <name> a group's name, never escaped, <column>
// a column, <sort> an optional ORDER BY. A slot inside quotes takes the whole quoted text, its blank or "%" included.
#pragma once

#include "recipients/statement_row.h"

namespace quillcast::recipients {

inline constexpr StatementRow kStatements[] = {
    {StatementId::kGroupNames, "SELECT [GroupName] FROM [Groups]", true},
    {StatementId::kFindGroup, "SELECT * FROM [Groups] WHERE ([GroupName] = '<name> ')", true},
    {StatementId::kFindDuplicate, "SELECT * FROM [Emails] WHERE (([G-ID] = '<key> ') AND ([G-Email] = '<value>'))",
     false},
    {StatementId::kFindRecipient, "SELECT * FROM [Emails] WHERE (([G-ID] = '<key>') AND ([G-Email] = '<value>'))",
     true},
    {StatementId::kAddRecipient,
     "INSERT INTO [Emails] ([G-ID] , [G-Email] , [G-Title], [G-FirstName], [G-LastName], [G-Country], [G-State], "
     "[G-City], [G-Address1], [G-Address2], [G-ZIPCode], [G-Phone], [G-Fax], [G-Company], [G-JobTitle], [G-WebSite], "
     "[G-Add1], [G-Add2], [G-Add3] ) VALUES ( <key> , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , "
     "'<value>' , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , "
     "'<value>' , '<value>' , '<value>' , '<value>') ",
     false},
    {StatementId::kImportRecipient,
     "INSERT INTO [Emails] ([G-ID] , [G-Email] , [G-Title], [G-FirstName], [G-LastName], [G-Country], [G-State], "
     "[G-City], [G-Address1], [G-Address2], [G-ZIPCode], [G-Phone], [G-Fax], [G-Company], [G-JobTitle], [G-WebSite], "
     "[G-Add1], [G-Add2], [G-Add3] ) VALUES ( <key> , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , "
     "'<value>' , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , '<value>' , "
     "'<value>' , '<value>' , '<value>' , '<value>')",
     false},
    {StatementId::kAddAddress, "INSERT INTO [Emails] ([G-ID] , [G-Email]) VALUES ( '<key>' , '<value>')", false},
    {StatementId::kUpdateRecipient,
     "UPDATE [Emails] SET [G-Email] = '<value>' , [G-Title] = '<value>', [G-FirstName] = '<value>', [G-LastName] = "
     "'<value>', [G-Country] = '<value>', [G-State] = '<value>', [G-City] = '<value>', [G-Address1] = '<value>', "
     "[G-Address2] = '<value>', [G-ZIPCode] = '<value>', [G-Phone] = '<value>', [G-Fax] = '<value>', [G-Company] = "
     "'<value>', [G-JobTitle] = '<value>', [G-WebSite] = '<value>', [G-Add1] = '<value>', [G-Add2] = '<value>', "
     "[G-Add3] = '<value>' WHERE ([ID]=<key>)",
     false},
    {StatementId::kDeleteRecipient, "DELETE FROM [Emails] WHERE ([ID]=<key>)", false},
    {StatementId::kFailingSelect, "SELECT FROM [Emails] WHERE ([ID]=<key>)", false},
    {StatementId::kCreateGroup, "INSERT INTO [Groups] ([GroupName]) VALUES ('<name>')", false},
    {StatementId::kRenameGroup, "Update [Groups] Set [GroupName] = '<name>' Where [GroupName] = '<name>'", false},
    {StatementId::kDeleteGroup, "DELETE from [Groups] Where [GroupName] = '<name>'", false},
    {StatementId::kDeleteGroupRecipients, "DELETE from [Emails] Where [G-ID] = '<key>'", false},
    {StatementId::kListNames,
     "SELECT [G-Email], [G-FirstName], [G-LastName] FROM [Emails] WHERE ([G-ID] = '<key> ')<sort>", true},
    {StatementId::kListAddresses, "SELECT [G-Email] FROM [Emails] WHERE ([G-ID] = '<key> ')<sort>", true},
    {StatementId::kListFields,
     "SELECT [G-Email], [G-Title], [G-FirstName], [G-LastName], [G-Country], [G-State], [G-City], [G-Address1], "
     "[G-Address2], [G-ZIPCode], [G-Phone], [G-Fax], [G-Company], [G-JobTitle], [G-WebSite], [G-Add1], [G-Add2], "
     "[G-Add3] FROM [Emails] WHERE ([G-ID] = '<key> ')<sort>",
     true},
    {StatementId::kFindEqual, "SELECT * From [Emails] WHERE (([G-ID] = '<key>') AND ([<column>] = '<value>'))", true},
    {StatementId::kFindContaining,
     "SELECT * From [Emails] WHERE (([G-ID] = '<key>') AND ([<column>] Like '%<value>%'))", true},
    {StatementId::kFindStarting, "SELECT * From [Emails] WHERE (([G-ID] = '<key>') AND ([<column>] Like '<value>%'))",
     true},
    {StatementId::kFindEnding, "SELECT * From [Emails] WHERE (([G-ID] = '<key>') AND ([<column>] Like '%<value>'))",
     true},
    {StatementId::kSetSort, "UPDATE [Groups] SET [SortSQL] = '<value>' WHERE ([ID]=<key>)", false},
};

}  // namespace quillcast::recipients
