// A change of many recipients: one transaction, in which each row is written down before it is changed, so that all of
// it happens or nothing does, and it can be taken back once (undo.h).
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sqlite.h"
#include "recipients/progress.h"
#include "recipients/recipient.h"
#include "recipients/recipient_store.h"
#include "recipients/statements.h"

namespace quillcast::recipients {

// Whoever waits for a change hears how far it is each time that so many rows are done.
inline constexpr std::int64_t kRowsBetweenReports = 256;

enum class EditKind : std::uint8_t { kCapitalise, kSort, kMove, kCopy, kMerge, kDelete, kDuplicates, kDeleteGroup };

// What was done, as it is told and kept for undo.
struct EditStep {
  EditKind kind = EditKind::kCapitalise;
  std::string group;
  std::string other_group = {};  // where they went
  std::int64_t rows = 0;
};

// Whoever holds it is the store's only writer. What is not committed is taken back at the end of its life. Every call
// fails as the store does, and with kTryAgain once the store's patience was cancelled.
class Edit {
 public:
  Edit(const RecipientStore& store, OnProgress on_progress)
      : file_(store.file()), patience_(store.patience()), on_progress_(std::move(on_progress)) {}
  // Before everything else.
  Result<void> Begin();

  platform::Database& database() { return *database_; }
  // As RequireGroupToChangeOn, so of fewer names than RecipientStore::RequireGroup.
  Result<RecipientGroup> RequireGroup(std::string_view name);
  // In the order of adding, whatever the group is sorted by.
  Result<std::vector<std::int64_t>> KeysOf(const RecipientGroup& group);
  // Nothing when it is gone.
  Result<std::optional<StoredRecipient>> FindRow(std::int64_t id);

  // False when the group holds the address.
  Result<bool> AddIfNew(std::int64_t group_id, const Recipient& recipient);
  Result<void> Update(const StoredRecipient& before, const Recipient& after);
  Result<void> Delete(const StoredRecipient& row);
  // The group and all recipients that are left in it.
  Result<void> DeleteGroup(const RecipientGroup& group);
  Result<void> SetSort(const RecipientGroup& group, std::string_view sort_sql);

  // To be called for each row: tells of the progress, and fails once it was cancelled.
  Result<void> Advance();
  // From here on each row that a statement writes is a step of the progress; for statements that take many at once.
  void CountRows();
  void ExpectMore(std::size_t rows) { total_ += static_cast<std::int64_t>(rows); }
  // From here on this step is what undo takes back. Where nothing was changed, the step before stays that.
  Result<void> Commit(const EditStep& step);

 private:
  Result<void> PrepareAll();
  // One of those that a change runs for each of many rows.
  CatalogueStatement& Prepared(StatementId id) { return prepared_.at(id); }

  void Step();
  Result<void> CheckCancel() const;
  Result<bool> HasTwin(const StoredRecipient& row);

  std::filesystem::path file_;
  platform::LockPatience patience_;
  OnProgress on_progress_;
  std::optional<platform::Database> database_;  // before the transaction and the statements: they end before it
  std::optional<platform::Transaction> transaction_;
  std::map<StatementId, CatalogueStatement> prepared_;
  std::int64_t done_ = 0;
  std::int64_t total_ = 0;
  bool has_changed_ = false;
};

// What a row holds, in a few characters: whether another program changed it since can be told by them. The same for
// ever, for they are stored.
std::string RowDigest(std::int64_t group_id, const Recipient& recipient);

// What a change, and taking it back, may keep of the store in memory: about the index of a million addresses and what
// is written beside it.
inline constexpr int kEditCacheMiB = 96;

// The kind as it is stored, "merge".
std::string_view EditWord(EditKind kind);

}  // namespace quillcast::recipients
