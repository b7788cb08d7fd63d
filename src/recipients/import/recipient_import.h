// Adds the recipients of a file to a group: every address that is found anywhere in it (the harvest), or one a line
// with up to eighteen fields (the delimited import).
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/cancel.h"
#include "recipients/import/import_checks.h"
#include "recipients/import/import_findings.h"
#include "recipients/import/import_report.h"
#include "recipients/import/open_lines.h"

namespace quillcast::recipients {

struct ImportRequest {
  std::filesystem::path file;
  std::string group;
  ImportMode mode = ImportMode::kHarvest;
  ReadingOptions reading;
  bool quotes = false;  // take the first and last character off every field
  ImportMapping mapping;
  std::int64_t skip = 0;  // lines at the beginning that are not looked at, by the delimited import alone
  bool dry_run = false;   // count what would be added, and leave store and report as they are
};

// Where an import reads and writes beside its file.
struct ImportPlaces {
  std::filesystem::path store;
  std::filesystem::path report;
  std::string code_page;  // the locale's codeset
};

struct ImportProgress {
  std::uint64_t bytes_done = 0;
  std::uint64_t bytes_total = 0;
  ImportCounts counts;  // of what is committed
};

struct ImportOutcome {
  ImportCounts counts;             // what is in the store and in the report
  std::optional<FileFacts> facts;  // none when the file could not be read
  ImportFindings findings;
  bool cancelled = false;
  std::optional<Error> no_report;  // why there is none; the import went on without
  std::optional<Error> error;      // why it ended early, or that the file could not be read
};

// Runs the import; the checks and the consent come before. A file that cannot be read, or a group that is gone, gives a
// report with zero counts; any other failure ends the run, also that the group is deleted meanwhile, and what was
// committed before stays and is in the report. After a cancel the current batch is committed and the report closed.
ImportOutcome ImportRecipients(const ImportRequest& request, const ImportPlaces& places,
                               const platform::CancelToken& cancel,
                               const std::function<void(const ImportProgress&)>& progress);

// What the counts do not say and whoever imports has to know, a sentence each; none where all went well.
std::vector<Sentence> ImportTroubles(const ImportOutcome& outcome);

// The text of the box at the end, three lines joined by CR LF.
std::string ImportSummary(const ImportCounts& counts);

}  // namespace quillcast::recipients
