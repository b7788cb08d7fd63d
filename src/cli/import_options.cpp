#include "cli/import_options.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "platform/text.h"
#include "recipients/import/kept_mappings.h"
#include "recipients/import/taken_fields.h"

namespace quillcast::cli {
namespace {

using recipients::ImportMode;
using recipients::ImportRequest;
using recipients::KeptMapping;

constexpr std::size_t kPreviewLines = 5;
constexpr std::size_t kLongestShown = 200;  // bytes of a field
constexpr std::string_view kFindOut = "Auto";
constexpr const char* kHowToTake =
    "--map takes the first eighteen fields. --take makes others the ones that it takes: with --take 25,1,2, Field 25 "
    "is "
    "number 1.";

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

Result<void> TakeDelimiter(const ImportOptions& options, const std::string& codeset, ImportPlan& plan) {
  auto& reading = plan.request.reading;
  if (options.delimiter.empty()) return {};
  if (platform::EqualsIgnoringAsciiCase(options.delimiter, kFindOut)) {
    const auto found = recipients::FindDelimiterOf(plan.request.file, reading, codeset);
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

// Which headings stand too far back, and how they are mapped all the same.
std::string LeftOut(const recipients::ProposedMapping& found) {
  if (found.beyond.empty()) return {};
  std::string named;
  for (const std::size_t column : found.beyond) {
    named += fmt::format("{}\"{}\" (column {})", named.empty() ? "" : ", ",
                         platform::Printable(found.headings[column - 1], kLongestShown), column);
  }
  return fmt::format(
      "Left out, for only the first eighteen columns are mapped: {}. Reorder the columns, or take these: --take {}.",
      named, recipients::ColumnsText(found.columns));
}

Error NoAddressAmong(const std::vector<std::string>& headings) {
  return {Failure::kBadData,
          Say("The heading line names no field for the address: {}.",
              platform::Printable(fmt::format("{}", fmt::join(headings, ", ")), kLongestShown)),
          "`--preview` shows the fields by number, `--map` takes them by it; `--skip` leaves lines before the "
          "headings out, and `--delimiter` says how they are parted."};
}

// Where none of the first lines looks like headings, the one that cannot be read may have been them.
Error NoHeadings(const recipients::ImportSample& sample) {
  for (const auto& line : sample.lines) {
    if (line.fault == recipients::LineFault::kNone) continue;
    return {Failure::kBadData, Say("The heading line, line {}, cannot be read.", line.number),
            "A line holds 1 MiB at most, and a quote that is opened is closed; `--skip` leaves lines before the "
            "headings out."};
  }
  return NoAddressAmong(sample.lines.empty() ? std::vector<std::string>() : sample.lines.front().texts);
}

Result<void> MapByHeader(const std::string& codeset, ImportPlan& plan) {
  auto& request = plan.request;
  auto reading = request.reading;
  reading.most_fields = recipients::kFieldsForHeadings;
  const auto sample =
      recipients::ReadSample(request.file, reading, codeset, recipients::kLinesForHeadings, request.skip);
  if (!sample) return sample.error();
  if (!sample->facts.encoding.name.empty()) request.reading.known = sample->facts.encoding;
  const auto found = recipients::ProposeMapping(*sample, request.quotes);
  if (!found) return NoHeadings(*sample);
  request.mapping = found->mapping;
  request.skip = std::max(request.skip, found->skip);
  plan.headings = found->headings;
  plan.left_out = LeftOut(*found);
  if (request.mapping.source[recipients::kEmail] != recipients::kIgnore) return {};
  if (!found->names_address) return NoAddressAmong(found->headings);
  return Error{Failure::kBadData, "No field is mapped to the address.", plan.left_out};
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

std::string MappedHeadings(const ImportPlan& plan) {
  std::string mapped;
  for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
    const int source = plan.request.mapping.source[field];
    if (source == recipients::kIgnore || static_cast<std::size_t>(source) > plan.headings.size()) continue;
    mapped += fmt::format("{}{} = \"{}\"", mapped.empty() ? "" : ", ", recipients::kFields[field].label,
                          platform::Printable(plan.headings[static_cast<std::size_t>(source) - 1], kLongestShown));
  }
  return mapped;
}

// The fields that are shown of a line: what they are called and what stands in them.
std::vector<std::pair<std::string, std::string>> Shown(const recipients::SampleLine& line,
                                                       const ImportRequest& request) {
  std::vector<std::pair<std::string, std::string>> shown;
  const auto fields = line.Fields();
  if (request.mapping.IsAllIgnore()) {
    for (std::size_t at = 0; at < fields.size(); ++at) {
      shown.emplace_back(fmt::format("Field {}", at + 1),
                         request.quotes ? recipients::WithoutQuotes(fields[at]) : fields[at]);
    }
    return shown;
  }
  const auto values = recipients::MapFields(fields, request.quotes, request.mapping);
  for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
    if (request.mapping.source[field] != recipients::kIgnore)
      shown.emplace_back(recipients::kFields[field].label, values[field]);
  }
  return shown;
}

void TellFile(Context& context, const recipients::FileFacts& facts, const ImportPlan& plan) {
  nlohmann::ordered_json object;
  if (!facts.encoding.name.empty()) {
    context.output.Line(fmt::format("Encoding: {} ({})", facts.encoding.name, facts.encoding.how_known));
    object = {{"encoding", facts.encoding.name}, {"known_by", facts.encoding.how_known}};
  }
  object["format"] = recipients::NameOf(facts.format);
  context.output.Line(fmt::format("Format: {}", recipients::NameOf(facts.format)));
  if (!facts.sheet.empty()) {
    object["sheet"] = facts.sheet;
    context.output.Line(fmt::format("Sheet: {}", platform::Printable(facts.sheet, kLongestShown)));
  }
  if (facts.format == recipients::FileFormat::kDelimited && plan.request.mode == ImportMode::kDelimited) {
    const auto name = recipients::NameOf(plan.request.reading.delimiter);
    context.output.Line(fmt::format("Delimiter: {}{}", name, plan.delimiter_was_found ? " (found out)" : ""));
    object["delimiter"] = name;
  }
  if (!plan.headings.empty()) object["mapping"] = recipients::MappingText(plan.request.mapping);
  context.output.Object(object);
}

}  // namespace

Result<ImportPlan> PlanImport(const ImportOptions& options, const std::filesystem::path& file,
                              const profile::SettingsStore& settings, const std::string& codeset) {
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
  if (options.take) {
    auto columns = recipients::ParseColumns(*options.take);
    if (!columns) return columns.error();
    request.reading.columns = std::move(*columns);
  }
  if (const auto taken = TakeDelimiter(options, codeset, plan); !taken) return taken.error();
  if (!options.map.empty()) {
    const auto mapping = recipients::ParseMapping(options.map);
    if (!mapping) return mapping.error();
    request.mapping = *mapping;
  }
  if (options.header) {
    if (const auto mapped = MapByHeader(codeset, plan); !mapped) return mapped.error();
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

void TellPlan(Context& context, const ImportPlan& plan) {
  if (plan.delimiter_was_found) {
    context.output.Note(fmt::format("Delimiter: {} (found out).", recipients::NameOf(plan.request.reading.delimiter)));
  }
  if (!plan.headings.empty()) context.output.Note(fmt::format("Mapped by the headings: {}.", MappedHeadings(plan)));
  if (!plan.left_out.empty()) context.output.Note(plan.left_out);
}

int PreviewImport(Context& context, const ImportPlan& plan, const std::string& codeset) {
  auto request = plan.request;
  auto reading = request.reading;
  if (request.mode == ImportMode::kHarvest) {  // whole lines
    reading.rfc4180 = false;
    reading.delimiter = '\n';
  }
  reading.most_fields = recipients::kFieldsForHeadings;  // those behind the eighteenth can be taken too
  const auto sample = recipients::ReadSample(request.file, reading, codeset, kPreviewLines, request.skip);
  if (!sample) return context.output.Fail(sample.error());
  request.quotes = request.quotes && recipients::MayHaveQuotes(sample->facts.format);
  TellFile(context, sample->facts, plan);
  for (const auto& line : sample->lines) {
    context.output.Line(fmt::format("Line {}:", line.number));
    nlohmann::ordered_json object = {{"line", line.number}};
    for (const auto& [name, text] : Shown(line, request)) {
      context.output.Line(fmt::format("  {} = {}", name, platform::Printable(text, kLongestShown)));
      object[name] = text;
    }
    context.output.Object(object);
  }
  for (const auto& sentence : recipients::Describe(sample->facts)) context.output.Note(sentence.InEnglish());
  if (request.mapping.IsAllIgnore() && recipients::HasMoreFields(*sample)) context.output.Note(kHowToTake);
  if (!plan.left_out.empty()) context.output.Note(plan.left_out);
  return 0;
}

}  // namespace quillcast::cli
