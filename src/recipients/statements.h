// Every statement that is issued to the recipient store, as data. Of each row two texts are made: the one that is shown
// and logged, with the values in it, and the one that is run, in which every value is a parameter, so that nothing
// a person types can change a statement.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sqlite.h"

namespace quillcast::recipients {

enum class StatementId : std::uint8_t {
  kGroupNames,             // no values
  kFindGroup,              // name
  kFindDuplicate,          // group key, address
  kFindRecipient,          // group key, address
  kAddRecipient,           // group key, eighteen values
  kImportRecipient,        // group key, eighteen values
  kAddAddress,             // group key, address
  kUpdateRecipient,        // eighteen values, recipient key
  kDeleteRecipient,        // recipient key
  kFailingSelect,          // recipient key; malformed, and issued all the same
  kCreateGroup,            // name
  kRenameGroup,            // new name, old name
  kDeleteGroup,            // name
  kDeleteGroupRecipients,  // group key
  kListNames,              // group key; sort text
  kListAddresses,          // group key; sort text
  kListFields,             // group key; sort text
  kFindEqual,              // group key, term; column
  kFindContaining,         // group key, term; column
  kFindStarting,           // group key, term; column
  kFindEnding,             // group key, term; column
  kSetSort,                // sort text, group key

  // Our own.
  kGroupsAndKeys,     // no values
  kGroupOfKey,        // group key
  kCountRows,         // group key
  kListKeys,          // group key; sort text
  kListSortTexts,     // group key; columns
  kNamesOfKeys,       // recipient keys
  kRowsOfKeys,        // recipient keys
  kRowOfKey,          // recipient key
  kListRows,          // group key
  kListEntries,       // group key
  kEntriesOfKeys,     // recipient keys
  kEntriesHolding,    // text
  kMakeUndoStep,      // no values
  kMakeUndoGroups,    // no values
  kMakeUndoEmails,    // no values
  kHasUndo,           // no values
  kForgetUndoStep,    // no values
  kForgetUndoGroups,  // no values
  kForgetUndoEmails,  // no values
  kKeepUndoStep,      // kind, group name, other group's name, rows
  kKeepGroup,         // what it becomes, group key
  kKeepGroupRows,     // group key
  kKeepRow,           // what it becomes, 1 when it has a twin, recipient key
  kKeepNewRow,        // recipient key, what it becomes
  kUndoStep,          // no values
  kUndoGroups,        // no values
  kUndoRows,          // no values
  kUndoRowOfKey,      // recipient key
  kPutGroupBack,      // group key
  kPutRowBack,        // recipient key
  kNameGroup,         // name, group key
  kFindAnyGroup,      // name, also one that no given statement takes
};

// The most keys that a statement takes which is given several.
inline constexpr std::size_t kKeysAtOnce = 100;

using Values = std::span<const std::string_view>;

// The statement as it is told to people: values spliced in, apostrophes doubled except in group names. `extra` is the
// sort text (empty for none) or the column, for the statements that have one.
std::string IssuedText(StatementId id, Values values, std::string_view extra = {});

// Whether bound values are known to stay where they are until the statement has been stepped; they are copied
// otherwise.
enum class Lifetime : std::uint8_t { kUnknown, kOutlivesStep };

// A statement of the catalogue on a connection, to be given its values once or many times.
class CatalogueStatement {
 public:
  // Fails as the issued text would: a column that does not exist, a sort text that is no list of columns, a malformed
  // statement. Rows come in the order of their keys unless there is a sort text.
  static Result<CatalogueStatement> Prepare(platform::Database& database, StatementId id, std::string_view extra = {});
  // The same with something round the statement, inside its order: "CREATE TEMP TABLE x AS " before it, or
  // "SELECT [ID] FROM (" and ")".
  static Result<CatalogueStatement> PrepareWithin(std::string_view before, std::string_view after,
                                                  platform::Database& database, StatementId id, std::string_view extra);

  // An INSERT of so many rows at once, which takes their values one row behind the other.
  static Result<CatalogueStatement> PrepareRows(platform::Database& database, StatementId id, std::size_t rows);

  // As many values as the row of StatementId names. A group name with an apostrophe fails with kUsage, as it would
  // break the issued text. Resets the statement first.
  Result<void> Bind(Values values, Lifetime lifetime = Lifetime::kUnknown);
  platform::Statement& rows() { return statement_; }

 private:
  struct Parameter {
    std::string before;  // "%" of a pattern
    std::string after;   // "%", or the blank that some statements have before the closing quote
    bool is_number;
    bool is_name;
  };
  CatalogueStatement(platform::Statement statement, std::vector<Parameter> parameters)
      : statement_(std::move(statement)), parameters_(std::move(parameters)), is_empty_(parameters_.size()) {}

  platform::Statement statement_;
  std::vector<Parameter> parameters_;
  std::vector<bool> is_empty_;  // by parameter: the empty text is bound to it, and stays so
  std::string scratch_;
};

}  // namespace quillcast::recipients
