// The recipient store: named groups of recipients in one file. Every operation opens a connection of its own and closes
// it again; only a cursor keeps its connection, for as long as it lives.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "recipients/progress.h"
#include "recipients/recipient.h"
#include "recipients/row_source.h"
#include "recipients/statements.h"

namespace quillcast::recipients {

// kLive reads from the store while it is walked through, and holds up writers meanwhile. kCopy first copies the rows
// to a private file on disk: for walks that take long, as a sending run does; what is changed later is not seen, and a
// cancel ends the copying alone.
enum class Reading : std::uint8_t { kLive, kCopy };

// Walks through the recipients of a group one by one, in constant memory.
class RecipientCursor final : public RowSource {
 public:
  // Over rows that give all fields in order, or address, first and last name.
  RecipientCursor(platform::Database connection, platform::Statement rows, int columns,
                  std::optional<std::int64_t> size = {})
      : connection_(std::move(connection)), rows_(std::move(rows)), columns_(columns), size_(size) {}

  Result<bool> Next(Recipient& recipient) override;
  std::optional<std::int64_t> size() const override { return size_; }  // of a copy

 private:
  platform::Database connection_;  // before rows_: it is closed after them
  platform::Statement rows_;
  int columns_;
  std::optional<std::int64_t> size_;
};

// Why a group or a recipient that a dialog was opened for cannot be read or written any more.
Error GroupGone();
Error RecipientGone();

// Keys of recipients are looked up whichever group they are in.
inline constexpr std::int64_t kAnyGroup = 0;

class RecipientStore {
 public:
  explicit RecipientStore(std::filesystem::path file, const platform::LockPatience& patience = {})
      : file_(std::move(file)), patience_(patience) {}
  const std::filesystem::path& file() const { return file_; }
  const platform::LockPatience& patience() const { return patience_; }

  // The names in the order in which the groups were made.
  Result<std::vector<std::string>> ListGroupNames() const;
  // Nothing when there is no such group. Case and blanks at the end of the name do not matter.
  Result<std::optional<RecipientGroup>> FindGroup(std::string_view name) const;
  // The same of any name; FindGroup fails for one with an apostrophe, which another program may have given.
  Result<std::optional<RecipientGroup>> FindAnyGroup(std::string_view name) const;
  // The same by its key, whatever its name is by now.
  Result<std::optional<RecipientGroup>> FindGroupOfKey(std::int64_t group_id) const;
  // 0 for an empty group and for one that does not exist.
  Result<std::int64_t> CountRecipients(std::string_view group_name) const;
  // Whether a group is there, of any name, said as an error for people when it is not (RequireGroupOn).
  Result<RecipientGroup> RequireGroup(std::string_view name) const;

  Result<std::optional<StoredRecipient>> FindRecipient(std::int64_t group_id, std::string_view address) const;

  // These look and write in one transaction, so that of two at once only one succeeds. False, with nothing written,
  // when the name or the address is taken. The checks on what a person typed come before: see group_checks.h.
  Result<bool> CreateGroupIfFree(std::string_view name);
  Result<bool> RenameGroupIfFree(std::string_view old_name, std::string_view new_name);
  // The key of the new recipient; nothing when the address is taken. Fails with kUsage where the group is gone.
  Result<std::optional<std::int64_t>> AddRecipientIfNew(std::int64_t group_id, const Recipient& recipient);
  // Fails with kUsage where the recipient is gone, or in another group by now.
  Result<bool> UpdateRecipientIfNew(std::int64_t group_id, std::int64_t recipient_id, const Recipient& recipient);

  // Every field of every recipient. `sort_sql` as the group has it; what is no list of columns fails with kBadData.
  Result<RecipientCursor> ListRecipients(std::int64_t group_id, std::string_view sort_sql,
                                         Reading reading = Reading::kLive) const;
  // The same with address, first and last name alone; the other fields stay empty.
  Result<RecipientCursor> ListNames(std::int64_t group_id, std::string_view sort_sql) const;

  // The keys of the group's recipients in the order of the list: what a grid keeps, eight bytes a row.
  Result<std::vector<std::int64_t>> ListKeys(std::int64_t group_id, std::string_view sort_sql,
                                             const OnProgress& on_read = {}) const;
  // What a grid shows of them, in the order of `keys`; what is no longer there, or in another group by now, has the key
  // 0 and no texts.
  Result<std::vector<GridRow>> RowsOfKeys(std::span<const std::int64_t> keys, std::int64_t group_id = kAnyGroup) const;
  // The same with all their fields.
  Result<std::vector<StoredRecipient>> RecipientsOfKeys(std::span<const std::int64_t> keys) const;
  // The same for as many keys as there are, a block at a time: between two of them the store is free for writers. Who
  // is gone is passed over; ends where `visit` gives false.
  Result<void> VisitByKey(std::span<const std::int64_t> keys,
                          const std::function<bool(const StoredRecipient&)>& visit) const;
  // The keys of the recipients with these addresses, in their order; 0 where there is none. One that is not there as it
  // stands names the recipient whose entry is the same but for blanks and control characters around it, also as these
  // are shown.
  Result<std::vector<std::int64_t>> KeysOfAddresses(std::int64_t group_id,
                                                    std::span<const std::string> addresses) const;

 private:
  // Rows in the order of their keys; one that is gone is as `read` never made it.
  template <typename Row>
  Result<std::vector<Row>> ReadByKey(StatementId id, std::span<const std::int64_t> keys,
                                     const std::function<Row(const platform::Statement&)>& read) const;
  // Runs one statement that gives no rows, on a connection of its own, unless the thing is there already; the key of
  // what was inserted, or any.
  Result<std::optional<std::int64_t>> RunUnless(const std::function<Result<bool>(platform::Database&)>& is_there,
                                                StatementId id, Values values);

  std::filesystem::path file_;
  platform::LockPatience patience_;
};

}  // namespace quillcast::recipients
