#include "cli/import_preview.h"

#include <fmt/format.h>

#include "platform/text.h"

namespace quillcast::cli {
namespace {

using recipients::ImportMode;
using recipients::ImportRequest;

constexpr std::size_t kPreviewLines = 5;
constexpr std::size_t kLongestShownValue = 200;  // bytes of a field
constexpr const char* kHowToTake =
    "--map takes the first eighteen fields. --take makes others the ones that it takes: with --take 25,1,2, "
    "Field 25 is number 1.";

std::string MappedHeadings(const ImportPlan& plan) {
  std::string mapped;
  for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
    const int source = plan.request.mapping.source[field];
    if (source == recipients::kIgnore || static_cast<std::size_t>(source) > plan.headings.size()) continue;
    mapped += fmt::format("{}{} = \"{}\"", mapped.empty() ? "" : ", ", recipients::kFields[field].label,
                          platform::Printable(plan.headings[static_cast<std::size_t>(source) - 1], kLongestShownValue));
  }
  return mapped;
}

// As programs are told.
const char* NameOf(recipients::LineFault fault) {
  return fault == recipients::LineFault::kOpenQuote ? "quote that is not closed" : "longer than 1 MiB";
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
    context.output.Line(fmt::format("Sheet: {}", platform::Printable(facts.sheet, kLongestShownValue)));
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
  const auto sample =
      recipients::ReadSample(request.file, reading, codeset, kPreviewLines, request.skip, &context.cancel);
  if (!sample) return context.output.Fail(sample.error());
  request.quotes = request.quotes && recipients::MayHaveQuotes(sample->facts.format);
  TellFile(context, sample->facts, plan);
  for (const auto& line : sample->lines) {
    context.output.Line(fmt::format("Line {}:", line.number));
    nlohmann::ordered_json object = {{"line", line.number}};
    if (line.fault != recipients::LineFault::kNone) {
      context.output.Line(fmt::format("  ({})", NameOf(line.fault)));
      object["fault"] = NameOf(line.fault);
    }
    for (const auto& [name, text] : Shown(line, request)) {
      context.output.Line(fmt::format("  {} = {}", name, platform::Printable(text, kLongestShownValue)));
      object[name] = text;
    }
    context.output.Object(object);
  }
  for (const auto& sentence : recipients::Describe(sample->facts)) context.output.Note(sentence.InEnglish());
  if (const auto missing = DescribeMissingFields(request.mapping, sample->widest_line)) {
    if (!recipients::HasKnownFields(sample->facts.format)) context.output.Note(missing->InEnglish());
  }
  if (request.mapping.IsAllIgnore() && recipients::HasMoreFields(*sample)) context.output.Note(kHowToTake);
  if (!plan.left_out.empty()) context.output.Note(plan.left_out);
  return 0;
}

}  // namespace quillcast::cli
