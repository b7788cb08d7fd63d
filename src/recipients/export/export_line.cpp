#include "recipients/export/export_line.h"

#include <algorithm>

#include "platform/locale_codeset.h"

namespace quillcast::recipients {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr char kQuote = '"';

charset::Charset CharsetOf(const std::string& code_page) {
  if (platform::IsUtf8Codeset(code_page)) return charset::Charset::Utf8();
  return charset::FindCharset(code_page).value_or(charset::Charset::Utf8());
}

// Whether a spreadsheet takes the cell for a formula.
bool CalculatesBehind(std::string_view cell, std::string_view passed_over) {
  const auto first = cell.find_first_not_of(passed_over);
  return first != std::string_view::npos && std::string_view("=+-@").find(cell[first]) != std::string_view::npos;
}

}  // namespace

std::string WithoutFormula(std::string_view value) {
  return (CalculatesBehind(value, " \t\r\n") ? "'" : "") + std::string(value);
}

ExportLines::ExportLines(const ExportFormat& format) : format_(format), charset_(CharsetOf(format.code_page)) {}

void ExportLines::Append(std::span<const std::string_view> values, std::string& out) {
  if (charset_.IsUtf8()) return AppendLine(values, out);  // to the byte as it is stored
  line_.clear();
  AppendLine(values, line_);
  std::size_t lost = 0;
  charset_.Encode(line_, out, &lost);
  lost_ += lost;
}

void ExportLines::AppendHeading(std::string& out) {
  std::vector<std::string_view> labels;
  for (const std::size_t field : format_.fields) labels.push_back(kFields[field].label);
  Append(labels, out);
}

void ExportLines::AppendLine(std::span<const std::string_view> values, std::string& out) const {
  for (std::size_t at = 0; at < values.size(); ++at) {
    if (at > 0) out += format_.delimiter;
    AppendValue(values[at], out);
  }
  out += kLineEnd;
}

void ExportLines::AppendValue(std::string_view value, std::string& out) const {
  std::string inert;
  if (format_.inert_formulas) value = WithoutFormulas(value, inert);
  // A line that holds nothing at all would be no record to many readers.
  const bool is_blank_line = value.empty() && format_.fields.size() == 1;
  if (!format_.rfc4180 || !(is_blank_line || NeedsQuotes(value))) {
    out += value;
    return;
  }
  out += kQuote;
  for (const char c : value) out.append(c == kQuote ? 2 : 1, c);
  out += kQuote;
}

bool ExportLines::NeedsQuotes(std::string_view value) const {
  return std::any_of(value.begin(), value.end(), [delimiter = format_.delimiter](char c) {
    return c == delimiter || c == kQuote || c == '\r' || c == '\n';
  });
}

// Without quotes, a spreadsheet makes a cell of each piece of a value, and takes quotes round a piece off.
std::string_view ExportLines::WithoutFormulas(std::string_view value, std::string& scratch) const {
  if (format_.rfc4180) return scratch = WithoutFormula(value);
  AppendInert(value, scratch);
  return scratch;
}

void ExportLines::AppendInert(std::string_view value, std::string& out) const {
  const char ends[] = {format_.delimiter, '\r', '\n'};
  for (;;) {
    const auto end = value.find_first_of(std::string_view(ends, sizeof ends));
    if (CalculatesBehind(value.substr(0, end), " \t\"")) out += '\'';
    out += value.substr(0, end);
    if (end == std::string_view::npos) return;
    out += value[end];
    value.remove_prefix(end + 1);
  }
}

}  // namespace quillcast::recipients
