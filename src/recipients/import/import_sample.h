// A look at the first lines of a file, before anything is imported.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/import/find_delimiter.h"
#include "recipients/import/open_lines.h"

namespace quillcast::recipients {

struct SampleLine {
  std::int64_t number = 0;
  LineFault fault = LineFault::kNone;
  std::vector<std::string> texts;

  std::vector<std::string_view> Fields() const { return {texts.begin(), texts.end()}; }
};

struct ImportSample {
  FileFacts facts;
  std::vector<SampleLine> lines;
  std::size_t widest_line = 0;  // fields of it, those that were skipped among them
};

// The first lines behind the `skip` ones before them, `count` at most. Errors: as OpenLines.
Result<ImportSample> ReadSample(const std::filesystem::path& file, const ReadingOptions& options,
                                std::string_view code_page, std::size_t count, std::int64_t skip = 0,
                                const platform::CancelToken* cancel = nullptr);

// Whether a line has fields behind those that can be chosen by number.
bool HasMoreFields(const ImportSample& sample);

// By the first lines of the file; other formats than delimited text have no delimiter, and need none. The encoding that
// it was read in goes into `options` as known, so that who reads the file next need not find that out again.
Result<FoundDelimiter> FindDelimiterOf(const std::filesystem::path& file, ReadingOptions& options,
                                       std::string_view code_page, const platform::CancelToken* cancel = nullptr);

// The mapping that a file suggests: that of its format, or the one of its headings.
struct ProposedMapping {
  ImportMapping mapping;                   // of fields that can be chosen by number
  std::int64_t skip = 0;                   // lines that are no recipients: those up to the headings
  std::vector<std::string> headings = {};  // all of that line; none for a format whose fields are known
  std::vector<std::size_t> columns = {};   // see HeadingMapping, also the next two
  std::vector<std::size_t> beyond = {};
  bool names_address = true;
};
// The headings behind the eighteenth and what takes them, for a window; nothing where there are none.
std::optional<Sentence> DescribeBeyond(const ProposedMapping& proposed);
// That no line behind the `skip` first ones has an address where the mapping looks for it; nothing where one has, or
// where none is looked for.
std::optional<Sentence> DescribeNoAddress(const ImportSample& sample, const ImportMapping& mapping, bool quotes,
                                          std::int64_t skip);

// A title may stand above the headings, and so many lines are looked at.
inline constexpr std::size_t kLinesForHeadings = 5;
// Headings are looked for among as many fields as the widest spreadsheets have columns.
inline constexpr std::size_t kFieldsForHeadings = 16'384;
// Nothing where none of the first lines looks like headings; of several that do the one that names most fields, for a
// title may be called as a field is. `quotes` takes the first and last character off each,
// where it is delimited text.
std::optional<ProposedMapping> ProposeMapping(const ImportSample& sample, bool quotes);

}  // namespace quillcast::recipients
