#include "cli/import_options.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "cli/import_headings.h"
#include "platform/text.h"
#include "recipients/import/kept_mappings.h"
#include "recipients/import/taken_fields.h"

namespace quillcast::cli {
namespace {

using recipients::ImportMode;
using recipients::ImportRequest;
using recipients::KeptMapping;

constexpr std::string_view kFindOut = "Auto";
constexpr std::string_view kAll = "All";

Error WaysOfMapping(const char* what) {
  return {Failure::kUsage, what,
          "--harvest finds every address in the file; --map \"Email Address=1\", --header or --mapping NAME take one "
          "recipient from each line."};
}

Result<void> CheckWays(const ImportOptions& options) {
  const int ways = static_cast<int>(options.harvest) + static_cast<int>(!options.map.empty()) +
                   static_cast<int>(options.header) + static_cast<int>(!options.mapping.empty());
  if (ways > 1) return WaysOfMapping("An import takes either --harvest or --map, --header or --mapping.");
  if (ways == 0 && !options.preview)
    return WaysOfMapping("An import takes either --harvest or one of --map, --header and --mapping.");
  if (options.take && options.harvest)
    return WaysOfMapping("--take does not go with --harvest, which looks at all columns.");
  if (options.skip && options.harvest) {
    return Error{Failure::kUsage, "--skip does not go with --harvest, which looks at all lines.",
                 "Leave one of them out."};
  }
  if (options.quotes && options.rfc4180) {
    return Error{
        Failure::kUsage, "--quotes and --rfc4180 exclude each other.",
        "--rfc4180 reads quotes as spreadsheets write them; --quotes takes the first and the last character off "
        "every field, whatever they are."};
  }
  if (options.harvest && !options.save_mapping.empty()) {
    return Error{Failure::kUsage, "--harvest maps no fields, so that --save-mapping has nothing to keep.",
                 "Leave one of them out."};
  }
  return {};
}

Result<void> TakeDelimiter(const ImportOptions& options, const std::string& codeset,
                           const platform::CancelToken& cancel, ImportPlan& plan) {
  auto& reading = plan.request.reading;
  if (options.delimiter.empty()) return {};
  if (platform::EqualsIgnoringAsciiCase(options.delimiter, kFindOut)) {
    const auto found = recipients::FindDelimiterOf(plan.request.file, reading, codeset, &cancel);
    if (!found) return found.error();
    reading.delimiter = found->delimiter.character;
    plan.delimiter_was_found = true;
    return {};
  }
  const auto delimiter = recipients::DelimiterOf(options.delimiter);
  if (!delimiter) {
    return Error{Failure::kUsage, Say("\"{}\" is no delimiter.", options.delimiter),
                 "Name Tab, Colon, Space, Comma or Semicolon, or Auto to have it found out."};
  }
  reading.delimiter = *delimiter;
  return {};
}

Result<void> TakeFormat(const ImportOptions& options, recipients::ReadingOptions& reading) {
  if (options.sheet) reading.sheet = *options.sheet;
  if (options.encoding)
    reading.encoding = platform::EqualsIgnoringAsciiCase(*options.encoding, kFindOut) ? "" : *options.encoding;
  if (options.format.empty() || platform::EqualsIgnoringAsciiCase(options.format, kFindOut)) return {};
  const auto format = recipients::FormatOfName(options.format);
  if (!format) {
    return Error{Failure::kUsage, Say("\"{}\" is no format that is read.", platform::Printable(options.format, 100)),
                 "Name Text, Spreadsheet, vCard or LDIF, or Auto to have it found out."};
  }
  reading.format = *format;
  return {};
}

// A script whose variable is empty does not mean every column.
Result<void> TakeColumns(const ImportOptions& options, recipients::ReadingOptions& reading) {
  if (!options.take) return {};
  if (platform::Trim(*options.take).empty()) {
    return Error{Failure::kUsage, "--take names no column.",
                 "Name columns by their numbers, as in \"25,1,2\", or All."};
  }
  reading.columns.clear();
  if (platform::EqualsIgnoringAsciiCase(*options.take, kAll)) return {};
  auto columns = recipients::ParseColumns(*options.take);
  if (!columns) return columns.error();
  reading.columns = std::move(*columns);
  return {};
}

void TakeKept(const KeptMapping& kept, ImportPlan& plan) {
  ImportRequest& request = plan.request;
  const auto fitted = recipients::FitMapping(kept.mapping, recipients::kSourceFields);
  request.mapping = fitted.mapping;
  if (const auto lacking = recipients::DescribeLacking(fitted, kept.mapping)) plan.left_out = lacking->InEnglish();
  request.reading.delimiter = kept.delimiter;
  request.reading.rfc4180 = kept.rfc4180;
  request.quotes = kept.quotes;
  request.skip = kept.skip;
  request.reading.sheet = kept.sheet;
  request.reading.encoding = kept.encoding;
  request.reading.columns = kept.columns;
}

}  // namespace

Result<ImportPlan> PlanImport(const ImportOptions& options, const std::filesystem::path& file,
                              const profile::SettingsStore& settings, const std::string& codeset,
                              const platform::CancelToken& cancel) {
  if (const auto checked = CheckWays(options); !checked) return checked.error();
  ImportPlan plan;
  ImportRequest& request = plan.request;
  request.file = file;
  request.group = options.group;
  request.mode = options.harvest ? ImportMode::kHarvest : ImportMode::kDelimited;
  if (!options.mapping.empty()) {
    const auto kept = recipients::FindMapping(settings, options.mapping);
    if (!kept) return kept.error();
    TakeKept(*kept, plan);
  }
  if (const auto taken = TakeFormat(options, request.reading); !taken) return taken.error();
  request.reading.rfc4180 = (request.reading.rfc4180 && !options.quotes) || options.rfc4180;
  request.quotes = (request.quotes && !options.rfc4180) || options.quotes;
  request.dry_run = options.dry_run;
  request.skip = options.skip.value_or(request.skip);
  if (const auto taken = TakeColumns(options, request.reading); !taken) return taken.error();
  if (const auto taken = TakeDelimiter(options, codeset, cancel, plan); !taken) return taken.error();
  if (!options.map.empty()) {
    const auto mapping = recipients::ParseMapping(options.map);
    if (!mapping) return mapping.error();
    request.mapping = *mapping;
  }
  if (options.header) {
    if (const auto mapped = MapByHeader(codeset, cancel, plan); !mapped) return mapped.error();
  }
  return plan;
}

Result<void> SaveMappingOf(const ImportOptions& options, const ImportPlan& plan, profile::SettingsStore& settings) {
  if (options.save_mapping.empty()) return {};
  const auto& request = plan.request;
  if (request.mapping.IsAllIgnore()) {
    return Error{Failure::kUsage, "There is no mapping to keep.", "--map or --header makes one."};
  }
  return recipients::KeepMapping(settings, {.name = options.save_mapping,
                                            .mapping = request.mapping,
                                            .delimiter = request.reading.delimiter,
                                            .quotes = request.quotes,
                                            .rfc4180 = request.reading.rfc4180,
                                            .skip = request.skip,
                                            .sheet = request.reading.sheet,
                                            .encoding = request.reading.encoding,
                                            .columns = request.reading.columns});
}

}  // namespace quillcast::cli
