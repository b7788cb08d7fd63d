// The writing half of an import: rows go into a group in batches, and a report line follows when its batch is safe.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sqlite.h"
#include "recipients/import/address_filter.h"
#include "recipients/import/import_report.h"
#include "recipients/statements.h"

namespace quillcast::recipients {

// kRollBack: everything is tried in one transaction, which is taken back at the end.
enum class Keeping : std::uint8_t { kCommit, kRollBack };

// A batch is one transaction. Until it is committed neither the report nor Counts() tells of it; when a step fails it
// is rolled back, and the writer must not be used again but for Counts(). Batches grow, for every commit costs about
// the same: few rows are lost to an early failure, and few commits are made in a long run.
class ImportWriter {
 public:
  // `report` outlives the writer. `statement` is kAddAddress or kImportRecipient.
  static Result<ImportWriter> Open(const std::filesystem::path& store, std::int64_t group_id, StatementId statement,
                                   ImportReport& report, Keeping keeping, const platform::LockPatience& patience = {});

  // Adds a recipient, or counts a duplicate when the group holds the address. `values` begins with the address, and has
  // as many values as the statement takes behind the group's key. kUsage where the group is gone.
  Result<void> Offer(std::span<const std::string_view> values);
  // Counts a value that is no address; `told` stands in the report.
  Result<void> Ignore(std::string_view told);
  // Ends the current batch.
  Result<void> Commit();

  const ImportCounts& Counts() const { return committed_; }

 private:
  static constexpr std::size_t kRowsAtOnce = 16;

  // The rows that wait to be inserted with others: their values, one behind the other.
  struct Waiting {
    std::string texts;
    std::vector<std::size_t> ends;
    std::size_t rows = 0;
  };

  ImportWriter(platform::Database database, CatalogueStatement find, CatalogueStatement insert,
               CatalogueStatement insert_several, platform::Statement version, std::int64_t group_id,
               ImportReport& report, Keeping keeping);

  Result<void> Begin();
  Result<void> FillFilter();
  Result<std::int64_t> DataVersion();
  Result<bool> IsThere(std::string_view address);
  void Wait(std::span<const std::string_view> values);
  Result<void> InsertWaiting();
  Result<void> CountRow();
  Result<void> GiveUp(const Result<void>& failed);

  platform::Database database_;  // first: the statements and the transaction end before it
  CatalogueStatement find_;
  CatalogueStatement insert_;
  CatalogueStatement insert_several_;  // kRowsAtOnce of them
  Waiting waiting_;
  platform::Statement version_;
  std::optional<platform::Transaction> transaction_;
  std::int64_t group_id_;
  std::string group_key_;
  ImportReport& report_;
  Keeping keeping_;
  std::optional<AddressFilter> filter_;  // none once another program has written to the store
  std::int64_t seen_version_ = 0;
  std::int64_t rows_in_batch_ = 0;
  std::int64_t batch_size_;
  ImportCounts batch_;
  ImportCounts committed_;
};

}  // namespace quillcast::recipients
