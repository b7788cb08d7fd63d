#include "recipients/import/recipient_import.h"

#include <fmt/format.h>

#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/import/address_harvest.h"
#include "recipients/import/import_writer.h"
#include "recipients/import/line_reader.h"
#include "recipients/recipient_store.h"

namespace quillcast::recipients {
namespace {

constexpr std::int64_t kLinesBetweenProgress = 512;

// What one run shares among its steps.
struct Run {
  const ImportRequest& request;
  const platform::CancelToken& cancel;
  const std::function<void(const ImportProgress&)>& progress;
  TextSource& source;
  ImportWriter& writer;
  ImportOutcome& outcome;

  bool IsCancelled() const { return cancel.Requested() != platform::Stop::kNone; }
  void TellProgress() const {
    if (progress) progress({source.bytes_read(), source.size(), writer.Counts()});
  }
};

Result<void> Harvest(Run& run) {
  Result<void> offered;
  AddressHarvest harvest([&](std::string_view address, bool is_cut) {
    if (is_cut && ++run.outcome.cut_addresses == 1) run.outcome.first_cut = address;
    offered = run.writer.Offer({&address, 1});
    return offered && !run.IsCancelled();
  });
  std::string block;
  for (;;) {
    const auto more = run.source.Read(block);
    if (!more) return more.error();
    if (!*more) break;
    const bool goes_on = harvest.Feed(block) && !run.IsCancelled();
    run.TellProgress();
    if (goes_on) continue;
    run.outcome.cancelled = run.IsCancelled();
    return offered;
  }
  harvest.Finish();
  return offered;
}

Result<void> TakeLine(Run& run, const Line& line) {
  if (line.is_too_long) return run.writer.Ignore(fmt::format("(line {} is longer than 1 MiB)", line.number));
  const auto values = MapLine(line.text, run.request.delimiter, run.request.quotes, run.request.mapping);
  if (!CheckEmail(values[kEmail])) return run.writer.Ignore(values[kEmail]);
  return run.writer.Offer(values);
}

Result<void> ImportLines(Run& run) {
  LineReader reader(run.source);
  Line line;
  for (;;) {
    const auto more = reader.Next(line);
    if (!more) return more.error();
    if (!*more) return {};
    if (auto taken = TakeLine(run, line); !taken) return taken;
    if (line.number % kLinesBetweenProgress == 0) run.TellProgress();
    if (run.IsCancelled()) {
      run.outcome.cancelled = true;
      return {};
    }
  }
}

Result<void> RunImport(const ImportRequest& request, const ImportPlaces& places, std::int64_t group_id,
                       const platform::CancelToken& cancel, const std::function<void(const ImportProgress&)>& progress,
                       ImportOutcome& outcome) {
  const bool is_harvest = request.mode == ImportMode::kHarvest;
  auto made = ImportReport::Create(places.report, places.code_page);
  if (!made) {
    NotePassedOver(made.error());
    outcome.no_report = made.error();
  }
  ImportReport report = made ? std::move(*made) : ImportReport::Nowhere();
  auto source = TextSource::Open(request.file, request.encoding, places.code_page);
  if (!source) {
    // The file's failure is the one to tell.
    IgnoreErrors(report.Close(ImportReport::End::kCompleted, 0, {}, is_harvest));
    return source.error();
  }
  outcome.encoding = source->encoding();
  outcome.how_known = source->how_known();
  outcome.bytes = source->size();
  auto writer =
      ImportWriter::Open(places.store, group_id, is_harvest ? StatementId::kAddAddress : StatementId::kImportRecipient,
                         report, {.cancel = &cancel, .cancel_ends_statements = false});
  if (!writer) return writer.error();
  Run run{request, cancel, progress, *source, *writer, outcome};
  auto done = is_harvest ? Harvest(run) : ImportLines(run);
  if (done) done = writer->Commit();
  outcome.counts = writer->Counts();
  if (!done) return done;
  const auto end = outcome.cancelled ? ImportReport::End::kCancelled : ImportReport::End::kCompleted;
  return report.Close(end, outcome.bytes, outcome.counts, is_harvest);
}

}  // namespace

std::optional<Complaint<ImportControl>> CheckImport(const ImportForm& form) {
  if (form.file.empty()) return Complaint<ImportControl>{"Please specify a file.", ImportControl::kFile};
  if (!form.has_groups) return Complaint<ImportControl>{"There is no group to import.", ImportControl::kGroup};
  if (form.group.empty()) return Complaint<ImportControl>{"Please select a group.", ImportControl::kGroup};
  if (form.mode == ImportMode::kHarvest) return {};
  if (!form.sample_was_read) return Complaint<ImportControl>{"There is no data to import.", ImportControl::kGetData};
  if (form.mapping.IsAllIgnore())
    return Complaint<ImportControl>{"Please select at least one field to import.", ImportControl::kMapping};
  if (form.mapping.source[kEmail] == kIgnore)
    return Complaint<ImportControl>{"Email Address field is required.", ImportControl::kMapping};
  return {};
}

ImportOutcome ImportRecipients(const ImportRequest& request, const ImportPlaces& places,
                               const platform::CancelToken& cancel,
                               const std::function<void(const ImportProgress&)>& progress) {
  ImportOutcome outcome;
  const auto group = RecipientStore(places.store, {.cancel = &cancel}).RequireGroup(request.group);
  const auto done =
      group ? RunImport(request, places, group->id, cancel, progress, outcome) : Result<void>(group.error());
  if (!done) outcome.error = done.error();
  return outcome;
}

std::vector<Sentence> ImportTroubles(const ImportOutcome& outcome) {
  std::vector<Sentence> sentences;
  if (outcome.cut_addresses > 0) {
    sentences.push_back(SayOf(
        outcome.cut_addresses,
        "{} address was cut, the first to {}: a harvest takes letters, digits, “.”, “_” and “-”, and five letters "
        "at the end. Import such a list with “quillcast import --map”.",
        "{} addresses were cut, the first to {}: a harvest takes letters, digits, “.”, “_” and “-”, and five "
        "letters at the end. Import such a list with “quillcast import --map”.",
        platform::Printable(outcome.first_cut, 100)));
  }
  if (outcome.no_report) sentences.push_back(Say("There is no report. {}", AsSentence(*outcome.no_report)));
  return sentences;
}

std::string ImportSummary(const ImportCounts& counts) {
  return fmt::format(
      "{} recipients imported successfully.\r\n{} duplicate recipients ignored.\r\n{} invalid recipients ignored.",
      counts.added, counts.duplicates, counts.ignored);
}

Result<ImportSample> ReadSample(const std::filesystem::path& file, std::string_view encoding,
                                std::string_view code_page, std::size_t count) {
  auto source = TextSource::Open(file, encoding, code_page);
  if (!source) return source.error();
  ImportSample sample{source->encoding(), source->how_known(), {}};
  LineReader reader(*source);
  Line line;
  while (sample.lines.size() < count) {
    const auto more = reader.Next(line);
    if (!more) return more.error();
    if (!*more) break;
    sample.lines.emplace_back(line.text);
  }
  return sample;
}

}  // namespace quillcast::recipients
