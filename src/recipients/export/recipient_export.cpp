#include "recipients/export/recipient_export.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/file.h"
#include "platform/locale_codeset.h"
#include "platform/text.h"
#include "recipients/store_connection.h"
#include "recipients/store_rows.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kBlock = std::size_t{256} * 1024;
constexpr std::int64_t kRowsBetweenLooks = 1000;
constexpr std::size_t kLongestName = 200;  // bytes of a file's name, where it is told
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

Error Cancelled() {
  return {Failure::kTryAgain,
          "The export was cancelled before its first line; no file was written and none was replaced.",
          "Run it again."};
}

// One export under way.
class Run {
 public:
  Run(const ExportRequest& request, const ExportSink& sink, const platform::CancelToken& cancel,
      const ExportProgress& progress)
      : request_(request), lines_(request.format), sink_(sink), cancel_(cancel), progress_(progress) {}

  Result<void> Export(const std::filesystem::path& store) {
    auto database = OpenStore(store, {.cancel = &cancel_});
    if (!database) return database.error();
    // The count and the rows are of one moment.
    if (auto begun = database->Execute("BEGIN"); !begun) return begun;
    const auto group = RequireGroupOn(*database, request_.group);
    if (!group) return group.error();
    if (auto counted = Count(*database, *group); !counted) return counted;
    return WriteRows(*database, *group);
  }
  // What is left to be handed on, after a cancel too.
  Result<void> Finish() { return failed_ ? Result<void>(*failed_) : HandOn(); }

  // Before the last row; a request also ends a statement of the store, which then fails.
  bool is_cancelled() const { return !is_whole_ && is_asked_to_stop(); }
  std::int64_t written() const { return written_; }
  const ExportLines& lines() const { return lines_; }

 private:
  bool is_asked_to_stop() const { return cancel_.Requested() != platform::Stop::kNone; }

  static Result<CatalogueStatement> Rows(platform::Database& database, StatementId id, const RecipientGroup& group) {
    const std::string key = std::to_string(group.id);
    return Bound(database, id, List<1>{key}, group.sort_sql);
  }

  Result<void> Count(platform::Database& database, const RecipientGroup& group) {
    auto addresses = Rows(database, StatementId::kListAddresses, group);
    if (!addresses) return addresses.error();
    return ForEachRow(addresses->rows(), [this] { return ++total_, true; });
  }

  Result<void> WriteRows(platform::Database& database, const RecipientGroup& group) {
    auto rows = Rows(database, StatementId::kListFields, group);
    if (!rows) return rows.error();
    if (request_.format.rfc4180) lines_.AppendHeading(block_);
    std::vector<std::string_view> values(request_.format.fields.size());
    while (!is_asked_to_stop()) {
      const auto row = rows->rows().Step();
      if (!row) return row.error();
      if (!*row) {
        is_whole_ = true;
        break;
      }
      for (std::size_t at = 0; at < values.size(); ++at) {
        values[at] = rows->rows().Text(static_cast<int>(request_.format.fields[at]));
      }
      lines_.Append(values, block_);
      if (++written_ == 1) KeepFirstCharacter();
      if (auto told = AfterRow(); !told) return told;
    }
    return {};
  }

  // A reader takes a byte order mark for none of the text; behind one, a first character that is the same stays.
  void KeepFirstCharacter() {
    if (lines_.charset().IsUtf8() && block_.starts_with(kByteOrderMark)) block_.insert(0, kByteOrderMark);
  }

  Result<void> AfterRow() {
    if (progress_ && written_ % kRowsBetweenLooks == 0) progress_(written_, total_);
    return block_.size() < kBlock ? Result<void>() : HandOn();
  }

  Result<void> HandOn() {
    auto handed_on = sink_(block_);
    if (!handed_on) failed_ = handed_on.error();
    block_.clear();
    return handed_on;
  }

  const ExportRequest& request_;
  ExportLines lines_;
  const ExportSink& sink_;
  const platform::CancelToken& cancel_;
  const ExportProgress& progress_;
  std::string block_;
  std::int64_t written_ = 0;
  std::int64_t total_ = 0;
  bool is_whole_ = false;
  std::optional<Error> failed_;  // where the lines went
};

bool Contains(const std::vector<std::size_t>& fields, std::size_t field) {
  return std::find(fields.begin(), fields.end(), field) != fields.end();
}

std::vector<std::size_t> AllFields() {
  std::vector<std::size_t> fields;
  for (std::size_t field = 0; field < kFieldCount; ++field) fields.push_back(field);
  return fields;
}

}  // namespace

std::optional<Complaint<ExportControl>> CheckExport(const ExportForm& form) {
  using C = Complaint<ExportControl>;
  if (!form.has_groups) return C{"There is no group to export.", ExportControl::kGroup};
  if (form.group.empty()) return C{"Please select a group.", ExportControl::kGroup};
  if (form.file.empty()) return C{"Please specify a file.", ExportControl::kFile};
  if (form.mode == ExportMode::kChosenFields && form.fields.empty()) {
    return C{"Please select at least one field to export.", ExportControl::kFieldList};
  }
  return {};
}

std::string FieldEntry(std::size_t field) { return fmt::format("    {}", kFields[field].label); }

std::size_t FieldOfEntry(std::string_view entry) {
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    if (FieldEntry(field) == entry) return field;
  }
  return kFieldCount;
}

Result<std::vector<std::size_t>> ParseFields(std::string_view text) {
  if (platform::EqualsIgnoringAsciiCase(platform::Trim(text), "All")) return AllFields();
  std::vector<std::size_t> fields;
  for (const std::string_view raw : platform::Split(text, ',')) {
    const std::string_view label = platform::Trim(raw);
    const std::size_t field = FieldOfLabel(label);
    if (field != kFieldCount && !Contains(fields, field)) {
      fields.push_back(field);
      continue;
    }
    if (field == kFieldCount) return NoSuchField(label, "Name \"All\", or one or more parted by commas");
    return Error{Failure::kUsage, Say("\"{}\" is named twice.", kFields[field].label), "Name each field once."};
  }
  return fields;
}

ExportOutcome ExportRecipients(const std::filesystem::path& store, const ExportRequest& request, const ExportSink& sink,
                               const platform::CancelToken& cancel, const ExportProgress& progress) {
  Run run(request, sink, cancel, progress);
  auto done = run.Export(store);
  ExportOutcome outcome;
  outcome.cancelled = run.is_cancelled();
  if (done || outcome.cancelled) done = run.Finish();
  if (!done) outcome.error = done.error();
  outcome.written = run.written();
  outcome.charset = run.lines().charset().MimeName();
  outcome.lost = run.lines().lost();
  outcome.unserved = run.lines().charset().IsUtf8() && !platform::IsUtf8Codeset(request.format.code_page);
  return outcome;
}

ExportOutcome ExportToFile(const std::filesystem::path& store, const ExportRequest& request,
                           const std::filesystem::path& file, const platform::OwnFiles& own,
                           const platform::CancelToken& cancel, const ExportProgress& progress) {
  ExportOutcome outcome;
  const auto replaced = platform::ReplaceChosenFile(file, own, [&](int fd) -> Result<void> {
    const auto sink = [&](std::string_view block) { return platform::WriteAll(fd, file, block); };
    outcome = ExportRecipients(store, request, sink, cancel, progress);
    if (outcome.error) return *outcome.error;
    if (outcome.cancelled && outcome.written == 0) return Cancelled();
    return {};
  });
  if (!replaced) {
    outcome.written = 0;
    outcome.error = replaced.error();
  }
  return outcome;
}

std::vector<Sentence> ExportTroubles(const ExportOutcome& outcome) {
  std::vector<Sentence> troubles;
  if (outcome.lost > 0) {
    troubles.push_back(SayOf(static_cast<std::int64_t>(outcome.lost),
                             "{} character that {} does not have was written as \"?\". UTF-8 has every one.",
                             "{} characters that {} does not have were written as \"?\". UTF-8 has every one.",
                             outcome.charset));
  }
  if (outcome.unserved) troubles.emplace_back("The character set of this system is not known here; UTF-8 was written.");
  return troubles;
}

std::optional<Sentence> DescribeCancelled(const ExportOutcome& outcome, const std::filesystem::path& file) {
  if (!outcome.cancelled || outcome.error) return {};
  return SayOf(outcome.written, "{} recipient was written to {} before the export was cancelled.",
               "{} recipients were written to {} before the export was cancelled.",
               platform::Printable(file.filename().string(), kLongestName));
}

std::string ExportSummary(std::int64_t written) { return fmt::format("{} recipients exported successfully.", written); }

}  // namespace quillcast::recipients
