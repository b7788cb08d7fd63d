#include "recipients/import/file_look.h"

#include <algorithm>

namespace quillcast::recipients {

FileLook LookAtFile(const FileLookRequest& request, std::string_view code_page, const platform::CancelToken* cancel) {
  auto reading = request.reading;
  reading.most_fields = kFieldsForHeadings;
  auto delimiter = FindDelimiterOf(request.file, reading, code_page, cancel);
  if (request.finds_delimiter && delimiter && delimiter->is_needed) reading.delimiter = delimiter->delimiter.character;
  const std::int64_t dropped = SkipsMany(request.skip) ? request.skip - 1 : 0;
  const auto count = kLinesShown + static_cast<std::size_t>(request.skip - dropped);
  const auto read = [&] { return ReadSample(request.file, reading, code_page, count, dropped, cancel); };
  FileLook look{read(), std::move(delimiter)};
  if (!request.lists_sheets) return look;
  if (look.sample ? look.sample->facts.format != FileFormat::kSpreadsheet : reading.sheet.empty()) return look;
  if (auto sheets = ListSheets(request.file, cancel)) look.sheets = std::move(*sheets);
  const bool has_wanted = std::ranges::find(look.sheets, reading.sheet) != look.sheets.end();
  if (look.sample || look.sheets.empty() || has_wanted) return look;
  reading.sheet.clear();
  look.sample = read();
  return look;
}

}  // namespace quillcast::recipients
