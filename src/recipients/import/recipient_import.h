// Adds the recipients of a text file to a group: every address that is found anywhere in it (the harvest), or one a
// line with up to eighteen fields (the delimited import).
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cancel.h"
#include "platform/complaint.h"
#include "recipients/import/import_mapping.h"
#include "recipients/import/import_report.h"

namespace quillcast::recipients {

enum class ImportMode : std::uint8_t { kHarvest, kDelimited };

struct ImportRequest {
  std::filesystem::path file;
  std::string group;
  ImportMode mode = ImportMode::kHarvest;
  char delimiter = ',';
  bool quotes = false;  // take the first and last character off every field
  ImportMapping mapping;
  std::string encoding;  // empty: found out, see TextSource
};

// Where an import reads and writes beside its file.
struct ImportPlaces {
  std::filesystem::path store;
  std::filesystem::path report;
  std::string code_page;  // the locale's codeset
};

// The controls of the import's dialog that a complaint sends the focus to.
enum class ImportControl { kFile, kGroup, kGetData, kMapping };

// What the checks before an import look at.
struct ImportForm {
  std::string file;
  bool has_groups = true;
  std::string group;
  ImportMode mode = ImportMode::kHarvest;
  bool sample_was_read = true;
  ImportMapping mapping;
};
std::optional<Complaint<ImportControl>> CheckImport(const ImportForm& form);

// The question that must be answered with OK before an import.
inline constexpr const char* kConsentQuestion =
    "To comply with the CAN-SPAM please confirm that you are importing a valid opt-in list.\r\n"
    "You must not import lists of purchased addresses which don't have given permission.";

struct ImportProgress {
  std::uint64_t bytes_done = 0;
  std::uint64_t bytes_total = 0;
  ImportCounts counts;  // of what is committed
};

struct ImportOutcome {
  ImportCounts counts;  // what is in the store and in the report
  std::uint64_t bytes = 0;
  std::int64_t cut_addresses = 0;  // harvested as a part of their word only
  std::string first_cut;           // as it was harvested
  std::string encoding;            // empty when the file could not be read
  std::string how_known;
  bool cancelled = false;
  std::optional<Error> no_report;  // why there is none; the import went on without
  std::optional<Error> error;      // why it ended early, or that the file could not be read
};

// Runs the import; the checks and the consent come before. A file that cannot be read gives a report with zero counts;
// any other failure ends the run, and what was committed before stays and is in the report. After a cancel the
// current batch is committed and the report closed.
ImportOutcome ImportRecipients(const ImportRequest& request, const ImportPlaces& places,
                               const platform::CancelToken& cancel,
                               const std::function<void(const ImportProgress&)>& progress);

// What the counts do not say and whoever imports has to know, a sentence each; none where all went well.
std::vector<Sentence> ImportTroubles(const ImportOutcome& outcome);

// The text of the box at the end, three lines joined by CR LF.
std::string ImportSummary(const ImportCounts& counts);

struct ImportSample {
  std::string encoding;
  std::string how_known;
  std::vector<std::string> lines;  // a line that is too long is empty
};
// The first lines of a file, `count` at most.
Result<ImportSample> ReadSample(const std::filesystem::path& file, std::string_view encoding,
                                std::string_view code_page, std::size_t count);

}  // namespace quillcast::recipients
