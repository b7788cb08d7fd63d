// What operations of the store share on a connection that is open: catalogue statements with their values, and rows.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "recipients/progress.h"
#include "recipients/recipient.h"
#include "recipients/statements.h"

namespace quillcast::recipients {

// The remedy where a group that was asked for by its name is not there; a terminal adds its commands.
inline constexpr const char* kNoSuchGroupRemedy = "Choose another group, or make this one.";

template <std::size_t size>
using List = std::array<std::string_view, size>;

// A statement of the catalogue with its values, ready to be stepped.
Result<CatalogueStatement> Bound(platform::Database& database, StatementId id, Values values,
                                 std::string_view extra = {});
// SQLite calls a disk full, too, where the last key is used: another error then.
Error WithTrueCause(platform::Database& database, const Error& error);
// Runs one that gives no rows.
Result<void> RunOn(platform::Database& database, StatementId id, Values values);

// Steps to the end and calls `visit` at each row, until that gives false; fails as it does.
Result<void> ForEachRow(platform::Statement& rows, const std::function<Result<bool>()>& visit);

// The rows of a statement that takes several keys, for as many keys as there are; in no order.
Result<void> ForEachOfKeys(CatalogueStatement& statement, std::span<const std::int64_t> keys,
                           const std::function<void(const platform::Statement& row)>& visit);

// The row that a "SELECT *" of groups, or of recipients, stands at.
RecipientGroup ReadGroup(const platform::Statement& row);
StoredRecipient ReadRecipient(const platform::Statement& row);

// By the given statement, which fails with kUsage for a group whose name has an apostrophe: nobody can enter one here,
// yet another program may have given it.
Result<std::optional<RecipientGroup>> FindGroupOn(platform::Database& database, std::string_view name);
// Of any name.
Result<std::optional<RecipientGroup>> FindAnyGroupOn(platform::Database& database, std::string_view name);
Result<std::optional<RecipientGroup>> FindGroupOfKeyOn(platform::Database& database, std::int64_t group_id);
// Two rules for a group that has to be there, kUsage where it is not. To be read, or given another name, it may have
// any name. To be changed it has one that every given statement takes, for some of them name it: else the error says to
// rename it first, before anything is written.
Result<RecipientGroup> RequireGroupOn(platform::Database& database, std::string_view name);
Result<RecipientGroup> RequireGroupToChangeOn(platform::Database& database, std::string_view name);
// The keys of a group's recipients in the order of its list.
Result<std::vector<std::int64_t>> ReadKeys(platform::Database& database, std::int64_t group_id,
                                           std::string_view sort_sql, const OnProgress& on_read = {});
// Whether the group is still there; another program may have deleted it since its key was read.
Result<bool> IsGroupKey(platform::Database& database, std::int64_t group_id);

// The values of a statement that has the group's key, or another, before the eighteen.
List<kFieldCount + 1> KeyAndValues(std::string_view key, const Recipient& recipient);
// For the statement that has its key at the end.
List<kFieldCount + 1> ValuesAndKey(std::string_view key, const Recipient& recipient);

}  // namespace quillcast::recipients
