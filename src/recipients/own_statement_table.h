// The rows of the catalogue for what is our own: reading by key, duplicates, and taking a change back. Private to it.
//
// Slots as in statement_table.h, and <keys>: as many keys as there are values, kKeysAtOnce at most.
#pragma once

#include "recipients/statement_row.h"

namespace quillcast::recipients {

inline constexpr StatementRow kOwnStatements[] = {
    {StatementId::kGroupsAndKeys, "SELECT * FROM [Groups]", true},
    {StatementId::kGroupOfKey, "SELECT * FROM [Groups] WHERE ([ID] = <key>)", false},
    {StatementId::kCountRows, "SELECT count(*) FROM [Emails] WHERE ([G-ID] = '<key>')", false},
    {StatementId::kListKeys, "SELECT [ID] FROM [Emails] WHERE ([G-ID] = '<key>')<sort>", true},
    {StatementId::kListSortTexts, "SELECT [ID], [<column>] FROM [Emails] WHERE ([G-ID] = '<key>')", true},
    {StatementId::kNamesOfKeys,
     "SELECT [ID], [G-Email], [G-FirstName], [G-LastName], [G-ID] FROM [Emails] WHERE ([ID] IN (<keys>))", false},
    {StatementId::kRowsOfKeys, "SELECT * FROM [Emails] WHERE ([ID] IN (<keys>))", false},
    {StatementId::kRowOfKey, "SELECT * FROM [Emails] WHERE ([ID] = <key>)", false},
    {StatementId::kListRows, "SELECT * FROM [Emails] WHERE ([G-ID] = '<key>')", true},
    {StatementId::kListEntries, "SELECT [ID], [G-ID], [G-Email] FROM [Emails] WHERE ([G-ID] = '<key>')", true},
    {StatementId::kEntriesOfKeys, "SELECT [ID], [G-ID], [G-Email] FROM [Emails] WHERE ([ID] IN (<keys>))", false},
    {StatementId::kEntriesHolding, "SELECT [ID], [G-ID], [G-Email] FROM [Emails] WHERE ([G-Email] Like '%<value>%')",
     true},

    // What the last change of many recipients found, kept in the same file so that both are written or neither. A row
    // with the group key 0 was not there before; [After] tells what the change made of it, empty where it is gone.
    {StatementId::kMakeUndoStep,
     "CREATE TABLE IF NOT EXISTS [UndoStep] ([Kind] TEXT, [GroupName] TEXT, [OtherName] TEXT, [Rows] INTEGER)", false},
    {StatementId::kMakeUndoGroups,
     "CREATE TABLE IF NOT EXISTS [UndoGroups] ([ID] INTEGER PRIMARY KEY, [GroupName] TEXT, [SortSQL] TEXT, "
     "[After] TEXT)",
     false},
    {StatementId::kMakeUndoEmails,
     "CREATE TABLE IF NOT EXISTS [UndoEmails] ([ID] INTEGER PRIMARY KEY, [G-ID] INTEGER, [G-Email] TEXT, [G-Title] "
     "TEXT, [G-FirstName] TEXT, [G-LastName] TEXT, [G-Country] TEXT, [G-State] TEXT, [G-City] TEXT, [G-Address1] TEXT, "
     "[G-Address2] TEXT, [G-ZIPCode] TEXT, [G-Phone] TEXT, [G-Fax] TEXT, [G-Company] TEXT, [G-JobTitle] TEXT, "
     "[G-WebSite] TEXT, [G-Add1] TEXT, [G-Add2] TEXT, [G-Add3] TEXT, [After] TEXT, [Twin] INTEGER)",
     false},
    {StatementId::kHasUndo, "SELECT [name] FROM [sqlite_master] WHERE ([name] = 'UndoStep')", false},
    {StatementId::kForgetUndoStep, "DELETE FROM [UndoStep]", false},
    {StatementId::kForgetUndoGroups, "DELETE FROM [UndoGroups]", false},
    {StatementId::kForgetUndoEmails, "DELETE FROM [UndoEmails]", false},
    {StatementId::kKeepUndoStep, "INSERT INTO [UndoStep] VALUES ('<value>', '<value>', '<value>', <key>)", false},
    {StatementId::kKeepGroup,
     "INSERT INTO [UndoGroups] SELECT [ID], [GroupName], [SortSQL], '<value>' FROM [Groups] "
     "WHERE ([ID] = <key>)",
     false},
    {StatementId::kKeepGroupRows, "INSERT INTO [UndoEmails] SELECT *, '', 0 FROM [Emails] WHERE ([G-ID] = '<key>')",
     false},
    {StatementId::kKeepRow, "INSERT INTO [UndoEmails] SELECT *, '<value>', <key> FROM [Emails] WHERE ([ID] = <key>)",
     false},
    {StatementId::kKeepNewRow, "INSERT INTO [UndoEmails] ([ID], [G-ID], [After]) VALUES (<key>, 0, '<value>')", false},
    {StatementId::kUndoStep, "SELECT [Kind], [GroupName], [OtherName], [Rows] FROM [UndoStep]", false},
    {StatementId::kUndoGroups, "SELECT [ID], [GroupName], [SortSQL], [After] FROM [UndoGroups]", true},
    {StatementId::kUndoRows, "SELECT [ID], [G-ID], [G-Email], [After], [Twin] FROM [UndoEmails]", true},
    {StatementId::kUndoRowOfKey, "SELECT [ID] FROM [UndoEmails] WHERE ([ID] = <key>)", false},
    {StatementId::kPutGroupBack,
     "INSERT INTO [Groups] SELECT [ID], [GroupName], [SortSQL] FROM [UndoGroups] WHERE ([ID] = <key>)", false},
    {StatementId::kPutRowBack,
     "INSERT OR REPLACE INTO [Emails] SELECT [ID], [G-ID], [G-Email], [G-Title], [G-FirstName], [G-LastName], "
     "[G-Country], [G-State], [G-City], [G-Address1], [G-Address2], [G-ZIPCode], [G-Phone], [G-Fax], [G-Company], "
     "[G-JobTitle], [G-WebSite], [G-Add1], [G-Add2], [G-Add3] FROM [UndoEmails] WHERE ([ID] = <key>)",
     false},
    {StatementId::kNameGroup, "UPDATE [Groups] SET [GroupName] = '<name>' WHERE ([ID] = <key>)", false},
    {StatementId::kFindAnyGroup, "SELECT * FROM [Groups] WHERE [GroupName] = '<value>'", false},
};

}  // namespace quillcast::recipients
