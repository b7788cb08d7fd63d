// Writes the recipients of a group as lines of text, in the order of the group: the addresses alone, or chosen fields.
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
#include "platform/file_attributes.h"
#include "platform/result.h"
#include "recipients/export/export_line.h"

namespace quillcast::recipients {

enum class ExportMode : std::uint8_t { kAddresses, kChosenFields };

// The controls of the export's dialog that a complaint sends the focus to.
enum class ExportControl : std::uint8_t { kGroup, kFile, kFieldList };

// What the checks before an export look at.
struct ExportForm {
  bool has_groups = true;
  std::string group = {};
  std::string file = {};
  ExportMode mode = ExportMode::kAddresses;
  std::vector<std::size_t> fields = {};  // those that are ticked
};
std::optional<Complaint<ExportControl>> CheckExport(const ExportForm& form);

// An entry of the list of fields: the label behind four blanks.
std::string FieldEntry(std::size_t field);
// The field of an entry, or kFieldCount for every other text.
std::size_t FieldOfEntry(std::string_view entry);
// "Email Address, First Name" in that order, or "All"; labels in any case. kUsage for a text that names none.
Result<std::vector<std::size_t>> ParseFields(std::string_view text);

struct ExportRequest {
  std::string group = {};
  ExportFormat format;
};

struct ExportOutcome {
  std::int64_t written = 0;  // recipients, in what was written
  std::string charset;       // of what was written
  std::size_t lost = 0;      // characters that it does not have
  bool unserved = false;     // the locale's own set could not be written
  bool cancelled = false;
  std::optional<Error> error;
};

// Takes the lines in blocks of some 256 KiB.
using ExportSink = std::function<Result<void>(std::string_view block)>;
// `total` is what the group has.
using ExportProgress = std::function<void(std::int64_t done, std::int64_t total)>;

// The store can be read meanwhile, and not written. After a cancel the rows so far are handed on.
ExportOutcome ExportRecipients(const std::filesystem::path& store, const ExportRequest& request, const ExportSink& sink,
                               const platform::CancelToken& cancel, const ExportProgress& progress = {});

// The same into a file of the person's choice, which takes its place when it is whole, or after a cancel with the rows
// so far where there are any. After an error, as where it would be one of the program's `own`, what was there before is
// still there, and nothing counts as written.
ExportOutcome ExportToFile(const std::filesystem::path& store, const ExportRequest& request,
                           const std::filesystem::path& file, const platform::OwnFiles& own,
                           const platform::CancelToken& cancel, const ExportProgress& progress = {});

// What the count does not say and whoever exports has to know, a sentence each; none where all went well.
std::vector<Sentence> ExportTroubles(const ExportOutcome& outcome);

// Why there is a file and it is not whole, where the export was cancelled; the error says why there is none.
std::optional<Sentence> DescribeCancelled(const ExportOutcome& outcome, const std::filesystem::path& file);

// The text of the box at the end.
std::string ExportSummary(std::int64_t written);

// The question before an export is given up.
inline constexpr const char* kCancelExportQuestion = "Are you sure you want to cancel the export process?";

}  // namespace quillcast::recipients
