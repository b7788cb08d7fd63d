// The first look at a list: its first lines, and what can be found out of them.
#pragma once

#include <string>
#include <vector>

#include "recipients/import/import_sample.h"

namespace quillcast::recipients {

struct FileLookRequest {
  std::filesystem::path file;
  ReadingOptions reading;
  std::int64_t skip = 0;         // lines that are left out, and shown where that is taken back
  bool finds_delimiter = false;  // and reads the lines with it
  std::string other_sheet = {};  // that is read where the file lacks the wanted one; else the first that is filled
};

struct FileLook {
  Result<ImportSample> sample;
  Result<FoundDelimiter> delimiter;
  std::vector<std::string> sheets = {};  // of a spreadsheet
};

inline constexpr std::size_t kLinesShown = 20;  // behind those that are left out
// Of more lines that are left out than may stand up to the headings a look keeps the last one alone, which may have
// them: there may be millions.
constexpr bool SkipsMany(std::int64_t skip) { return skip > static_cast<std::int64_t>(kLinesForHeadings); }

// Fields are cut out as far as headings are looked for. Failures stand in what it gives; see OpenLines.
FileLook LookAtFile(const FileLookRequest& request, std::string_view code_page, const platform::CancelToken* cancel);

}  // namespace quillcast::recipients
