#include "recipients/import/file_look.h"

#include <algorithm>

namespace quillcast::recipients {
namespace {

bool Holds(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

}  // namespace

FileLook LookAtFile(const FileLookRequest& request, std::string_view code_page, const platform::CancelToken* cancel) {
  auto reading = request.reading;
  reading.most_fields = kFieldsForHeadings;
  auto delimiter = FindDelimiterOf(request.file, reading, code_page, cancel);
  if (request.finds_delimiter && delimiter && delimiter->is_needed) reading.delimiter = delimiter->delimiter.character;
  const std::int64_t dropped = SkipsMany(request.skip) ? request.skip - 1 : 0;
  const auto count = kLinesShown + static_cast<std::size_t>(request.skip - dropped);
  const auto read = [&] { return ReadSample(request.file, reading, code_page, count, dropped, cancel); };
  FileLook look{read(), std::move(delimiter)};
  const bool may_have_sheets =
      look.sample ? look.sample->facts.format == FileFormat::kSpreadsheet : !reading.sheet.empty();
  if (!may_have_sheets) return look;
  if (auto sheets = ListSheets(request.file, cancel)) look.sheets = std::move(*sheets);
  if (look.sample || look.sheets.empty() || Holds(look.sheets, reading.sheet)) return look;
  reading.sheet = Holds(look.sheets, request.other_sheet) ? request.other_sheet : std::string();
  look.sample = read();
  return look;
}

}  // namespace quillcast::recipients
