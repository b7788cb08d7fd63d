#include "recipients/import/import_sample.h"

#include <algorithm>

#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/import/headings.h"
#include "recipients/import/line_reader.h"
#include "recipients/import/taken_fields.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kLinesForADelimiter = 64;
constexpr std::size_t kLongestToldHeading = 60;  // bytes, where it is told

}  // namespace

Result<ImportSample> ReadSample(const std::filesystem::path& file, const ReadingOptions& options,
                                std::string_view code_page, std::size_t count, std::int64_t skip,
                                const platform::CancelToken* cancel) {
  auto lines = OpenLines(file, options, code_page, cancel);
  if (!lines) return lines.error();
  ImportSample sample;
  const auto read = (*lines)->Read([&](const FieldLine& line) {
    sample.widest_line = std::max(sample.widest_line, line.fields.size());
    if (line.number <= skip) return true;
    if (sample.lines.size() == count) return false;
    sample.lines.push_back({line.number, line.fault, {line.fields.begin(), line.fields.end()}});
    return sample.lines.size() < count;
  });
  if (!read) return read.error();
  sample.facts = (*lines)->Facts();
  return sample;
}

Result<FoundDelimiter> FindDelimiterOf(const std::filesystem::path& file, ReadingOptions& options,
                                       std::string_view code_page, const platform::CancelToken* cancel) {
  const auto format = FormatOf(file, options);
  if (!format) return format.error();
  if (*format != FileFormat::kDelimited) return FoundDelimiter{};
  auto source = OpenText(file, options, code_page, cancel);
  if (!source) return source.error();
  options.known = source->encoding();
  LineReader reader(*source);
  Line line;
  std::vector<std::string> lines;
  while (lines.size() < kLinesForADelimiter) {
    const auto more = reader.Next(line);
    if (!more) return more.error();
    if (!*more) break;
    lines.emplace_back(line.text);
  }
  return FindDelimiter(lines);
}

bool HasMoreFields(const ImportSample& sample) {
  return std::any_of(sample.lines.begin(), sample.lines.end(), [](const SampleLine& line) {
    return line.texts.size() > static_cast<std::size_t>(kSourceFields);
  });
}

std::optional<Sentence> DescribeBeyond(const ProposedMapping& proposed) {
  if (proposed.beyond.empty()) return {};
  std::string names;
  for (const std::size_t column : proposed.beyond)
    names +=
        (names.empty() ? "“" : ", “") + platform::Printable(proposed.headings[column - 1], kLongestToldHeading) + "”";
  return SayOf(static_cast<std::int64_t>(proposed.beyond.size()),
               "{} field stands behind the eighteenth: {}. “Map by Headings” takes it, and so does {} as “Columns”.",
               "{} fields stand behind the eighteenth: {}. “Map by Headings” takes them, and so does {} as “Columns”.",
               names, ColumnsText(proposed.columns));
}

std::optional<Sentence> DescribeNoAddress(const ImportSample& sample, const ImportMapping& mapping, bool quotes,
                                          std::int64_t skip) {
  if (mapping.source[kEmail] == kIgnore) return {};
  std::int64_t lines = 0;
  for (const SampleLine& line : sample.lines) {
    if (line.number <= skip || line.fault != LineFault::kNone) continue;
    ++lines;
    if (FindAddress(MapFields(line.Fields(), quotes, mapping)[kEmail], 0)) return {};
  }
  if (lines == 0) return {};
  return Sentence(
      "None of the lines shown here has an address in the field that is chosen for it. Such lines are ignored.");
}

std::optional<ProposedMapping> ProposeMapping(const ImportSample& sample, bool quotes) {
  quotes = quotes && MayHaveQuotes(sample.facts.format);
  if (HasKnownFields(sample.facts.format)) return ProposedMapping{.mapping = KnownMapping()};
  std::optional<ProposedMapping> best;
  for (std::size_t at = 0; at < std::min(sample.lines.size(), kLinesForHeadings); ++at) {
    auto headings = sample.lines[at].Fields();
    if (quotes) std::transform(headings.begin(), headings.end(), headings.begin(), WithoutQuotes);
    if (std::any_of(headings.begin(), headings.end(), IsBareAddress)) break;
    const HeadingMapping found = MapByHeadings(headings);
    if (!found.looks_like_headings || (best && found.columns.size() <= best->columns.size())) continue;
    best = {.mapping = found.mapping,
            .skip = sample.lines[at].number,
            .headings = {headings.begin(), headings.end()},
            .columns = found.columns,
            .beyond = found.beyond,
            .names_address = found.names_address};
  }
  return best;
}

}  // namespace quillcast::recipients
