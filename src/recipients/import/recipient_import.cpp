#include "recipients/import/recipient_import.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/import/address_harvest.h"
#include "recipients/import/find_delimiter.h"
#include "recipients/import/import_sample.h"
#include "recipients/import/import_writer.h"
#include "recipients/import/reading_given_up.h"
#include "recipients/import/text_source.h"
#include "recipients/recipient_store.h"

namespace quillcast::recipients {
namespace {

constexpr std::int64_t kLinesBetweenProgress = 512;

// What one run shares among its steps.
struct Run {
  const ImportRequest& request;
  const platform::CancelToken& cancel;
  const std::function<void(const ImportProgress&)>& progress;
  ImportWriter& writer;
  ImportOutcome& outcome;
  bool quotes = false;  // are taken off

  // What a reading came to whose lines were `offered`: one that was given up is no failure.
  Result<void> EndOf(const Result<void>& read, const Result<void>& offered) const {
    return read || !GoesOn() ? offered : read;
  }
  // Whether to go on; from here on the outcome says so where not.
  bool GoesOn() const {
    if (cancel.Requested() != platform::Stop::kNone) outcome.cancelled = true;
    return !outcome.cancelled;
  }
  void TellProgress(std::uint64_t bytes_read) const {
    if (progress) progress({bytes_read, outcome.facts->size, writer.Counts()});
  }
};

// Offers every address to the writer; `offered` keeps the first failure.
AddressHarvest HarvestInto(Run& run, Result<void>& offered) {
  return AddressHarvest([&run, &offered](std::string_view address, bool is_cut) {
    if (is_cut) run.outcome.findings.NoteCut(address);
    offered = run.writer.Offer({&address, 1});
    return offered && run.GoesOn();
  });
}

Result<void> HarvestText(Run& run, TextSource& source) {
  Result<void> offered;
  auto harvest = HarvestInto(run, offered);
  std::string block;
  for (;;) {
    const auto more = source.Read(block);
    if (!more) return run.EndOf(more.error(), offered);
    if (!*more) break;
    const bool goes_on = harvest.Feed(block) && run.GoesOn();
    run.TellProgress(source.bytes_read());
    if (!goes_on) return offered;
  }
  harvest.Finish();
  return offered;
}

// Addresses do not go on from one field into the next.
Result<void> HarvestFields(Run& run, FieldLines& lines) {
  Result<void> offered;
  auto harvest = HarvestInto(run, offered);
  const auto read = lines.Read([&](const FieldLine& line) {
    if (line.fault != LineFault::kNone) run.outcome.findings.NoteFault(line);  // it tells no fields
    for (const std::string_view field : line.fields) {
      if (!harvest.Feed(field) || !harvest.Feed("\n")) return false;
    }
    if (line.number % kLinesBetweenProgress == 0) run.TellProgress(lines.BytesRead());
    return run.GoesOn();
  });
  return run.EndOf(read, offered);
}

std::string ToldOf(const FieldLine& line) {
  return line.fault == LineFault::kOpenQuote ? fmt::format("(line {} has a quote that is not closed)", line.number)
                                             : fmt::format("(line {} is longer than 1 MiB)", line.number);
}

Result<void> TakeLine(Run& run, const FieldLine& line) {
  if (line.fault != LineFault::kNone) {
    run.outcome.findings.NoteFault(line);
    return run.writer.Ignore(ToldOf(line));
  }
  const auto values = MapFields(line.fields, run.quotes, run.request.mapping);
  const auto address = FindAddress(values[kEmail], 0);
  if (!address) return run.writer.Ignore(values[kEmail]);
  if (IsQuoted(platform::Trim(values[kEmail]))) run.outcome.findings.addresses_in_quotes = true;
  if (address->length != values[kEmail].size() && !IsBareAddress(values[kEmail])) {
    run.outcome.findings.NoteInText(values[kEmail]);
  } else if (platform::Trim(values[kEmail]).size() != values[kEmail].size()) {
    run.outcome.findings.NoteInBlanks(values[kEmail]);
  }
  return run.writer.Offer(values);
}

Result<void> ImportLines(Run& run, FieldLines& lines) {
  Result<void> taken;
  auto& findings = run.outcome.findings;
  const auto read = lines.Read([&](const FieldLine& line) {
    findings.widest_line = std::max(findings.widest_line, line.fields.size());
    if (line.number <= run.request.skip) return true;
    taken = TakeLine(run, line);
    if (line.number % kLinesBetweenProgress == 0) run.TellProgress(lines.BytesRead());
    return taken && run.GoesOn();
  });
  // A card need not have every field of its format.
  if (!HasKnownFields(lines.Facts().format))
    findings.missing_fields = DescribeMissingFields(run.request.mapping, findings.widest_line);
  return run.EndOf(read, taken);
}

// Where addresses stand in text or in quotes, or most lines have none, the delimiter may be another one.
void LookAtDelimiter(const ImportRequest& request, const ImportPlaces& places, ImportOutcome& outcome) {
  auto& findings = outcome.findings;
  const auto& counts = outcome.counts;
  const bool is_odd = findings.addresses_in_text > 0 || findings.addresses_in_quotes ||
                      counts.ignored > counts.added + counts.duplicates;
  if (!is_odd || outcome.facts->format != FileFormat::kDelimited) return;
  ReadingOptions reading = request.reading;
  reading.known = outcome.facts->encoding;
  const auto found = FindDelimiterOf(request.file, reading, places.code_page);
  if (!found) return IgnoreErrors(found);
  if (found->is_needed && found->delimiter.character != request.reading.delimiter) findings.fitting = found->delimiter;
  findings.quotes_unread = found->is_quoted && !request.quotes && !request.reading.rfc4180;
}

// The file that is imported, opened as its mode reads it: one of the two.
struct Opened {
  std::optional<TextSource> text;
  std::unique_ptr<FieldLines> lines;

  FileFacts Facts() const {
    if (lines) return lines->Facts();
    return {.format = FileFormat::kDelimited, .encoding = text->encoding(), .size = text->size()};
  }
};

// A harvest reads texts as they are, whatever format they follow.
Result<Opened> Open(const ImportRequest& request, const ImportPlaces& places, const platform::CancelToken& cancel) {
  Opened opened;
  if (request.mode == ImportMode::kHarvest) {
    const auto format = FormatOf(request.file, request.reading);
    if (!format) return format.error();
    if (*format != FileFormat::kSpreadsheet) {
      auto source = OpenText(request.file, request.reading, places.code_page, &cancel);
      if (!source) return source.error();
      opened.text.emplace(std::move(*source));
      return opened;
    }
  }
  auto lines = OpenLines(request.file, request.reading, places.code_page, &cancel);
  if (!lines) return lines.error();
  opened.lines = std::move(*lines);
  return opened;
}

ImportReport ReportOf(const ImportRequest& request, const ImportPlaces& places, ImportOutcome& outcome) {
  if (request.dry_run) return ImportReport::Nowhere();
  auto made = ImportReport::Create(places.report, places.code_page);
  if (made) return std::move(*made);
  NotePassedOver(made.error());
  outcome.no_report = made.error();
  return ImportReport::Nowhere();
}

Result<void> RunImport(const ImportRequest& request, const ImportPlaces& places, const platform::CancelToken& cancel,
                       const std::function<void(const ImportProgress&)>& progress, ImportOutcome& outcome) {
  const bool is_harvest = request.mode == ImportMode::kHarvest;
  ImportReport report = ReportOf(request, places, outcome);
  // Why nothing was read is what to tell, and not how its report fared.
  const auto end_early = [&](ImportReport::End end) { IgnoreErrors(report.Close(end, 0, {}, is_harvest)); };
  const auto group = RecipientStore(places.store, {.cancel = &cancel}).RequireGroup(request.group);
  if (!group) {
    end_early(ImportReport::End::kCompleted);
    return group.error();
  }
  auto opened = Open(request, places, cancel);
  if (!opened) {
    outcome.cancelled = IsGivenUp(&cancel);
    end_early(outcome.cancelled ? ImportReport::End::kCancelled : ImportReport::End::kCompleted);
    return outcome.cancelled ? Result<void>() : opened.error();
  }
  outcome.facts = opened->Facts();
  auto writer = ImportWriter::Open(
      places.store, group->id, is_harvest ? StatementId::kAddAddress : StatementId::kImportRecipient, report,
      request.dry_run ? Keeping::kRollBack : Keeping::kCommit, {.cancel = &cancel, .cancel_ends_statements = false});
  if (!writer) return writer.error();
  Run run{request, cancel, progress, *writer, outcome, request.quotes && MayHaveQuotes(outcome.facts->format)};
  outcome.findings.quotes_left = !is_harvest && request.quotes && !run.quotes;
  auto done = opened->text ? HarvestText(run, *opened->text)
              : is_harvest ? HarvestFields(run, *opened->lines)
                           : ImportLines(run, *opened->lines);
  if (done) done = writer->Commit();
  outcome.counts = writer->Counts();
  outcome.facts = opened->Facts();
  if (!done) return done;
  if (!is_harvest && !outcome.cancelled) LookAtDelimiter(request, places, outcome);
  const auto end = outcome.cancelled ? ImportReport::End::kCancelled : ImportReport::End::kCompleted;
  return report.Close(end, outcome.facts->size, outcome.counts, is_harvest);
}

}  // namespace

ImportOutcome ImportRecipients(const ImportRequest& request, const ImportPlaces& places,
                               const platform::CancelToken& cancel,
                               const std::function<void(const ImportProgress&)>& progress) {
  ImportOutcome outcome;
  const auto done = RunImport(request, places, cancel, progress, outcome);
  if (!done) outcome.error = done.error();
  return outcome;
}

std::vector<Sentence> ImportTroubles(const ImportOutcome& outcome) {
  std::vector<Sentence> told = Describe(outcome.findings);
  if (outcome.facts) {
    for (Sentence& sentence : Describe(*outcome.facts)) told.push_back(std::move(sentence));
  }
  if (outcome.no_report) told.push_back(Say("There is no report. {}", AsSentence(*outcome.no_report)));
  return told;
}

std::string ImportSummary(const ImportCounts& counts) {
  return fmt::format(
      "{} recipients imported successfully.\r\n{} duplicate recipients ignored.\r\n{} invalid recipients ignored.",
      counts.added, counts.duplicates, counts.ignored);
}

}  // namespace quillcast::recipients
