#include "recipients/import/import_sample.h"

#include <algorithm>

#include "recipients/import/headings.h"
#include "recipients/import/line_reader.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kLinesForADelimiter = 64;

}  // namespace

Result<ImportSample> ReadSample(const std::filesystem::path& file, const ReadingOptions& options,
                                std::string_view code_page, std::size_t count, std::int64_t skip,
                                const platform::CancelToken* cancel) {
  auto lines = OpenLines(file, options, code_page, cancel);
  if (!lines) return lines.error();
  ImportSample sample;
  const auto read = (*lines)->Read([&](const FieldLine& line) {
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

std::optional<ProposedMapping> ProposeMapping(const ImportSample& sample, bool quotes) {
  if (HasKnownFields(sample.facts.format)) return ProposedMapping{.mapping = KnownMapping()};
  for (std::size_t at = 0; at < std::min(sample.lines.size(), kLinesForHeadings); ++at) {
    auto headings = sample.lines[at].Fields();
    if (quotes) std::transform(headings.begin(), headings.end(), headings.begin(), WithoutQuotes);
    if (std::any_of(headings.begin(), headings.end(), IsBareAddress)) break;
    const HeadingMapping found = MapByHeadings(headings);
    if (!found.looks_like_headings) continue;
    return ProposedMapping{.mapping = found.mapping,
                           .skip = sample.lines[at].number,
                           .headings = {headings.begin(), headings.end()},
                           .columns = found.columns,
                           .beyond = found.beyond,
                           .names_address = found.names_address};
  }
  return {};
}

}  // namespace quillcast::recipients
