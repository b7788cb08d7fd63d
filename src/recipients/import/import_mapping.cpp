#include "recipients/import/import_mapping.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::recipients {
namespace {

constexpr std::string_view kHow = "Write it as in \"Email Address=2,First Name=1\"";

std::string EntryText(std::string_view text) {
  std::size_t end = 0;
  for (std::size_t count = 0; count < kLongestEntryText && end < text.size(); ++count)
    end += platform::DecodeUtf8(text.substr(end)).length;
  return platform::Printable(text.substr(0, end), text.size()) + (end < text.size() ? "…" : "");
}

Error BadMapping(std::string what) { return {Failure::kUsage, std::move(what), fmt::format("{}.", kHow)}; }

}  // namespace

Result<ImportMapping> ParseMapping(std::string_view text, int most) {
  ImportMapping mapping;
  std::array<bool, kFieldCount> named{};
  for (const std::string_view raw : platform::Split(text, ',')) {
    const auto equals = raw.find('=');
    const std::string_view label = platform::Trim(raw.substr(0, equals));
    const std::size_t field = FieldOfLabel(label);
    if (equals == std::string_view::npos) {
      return BadMapping(fmt::format("\"{}\" does not say which field of the line it takes.", label));
    }
    if (field == kFieldCount) return NoSuchField(label, kHow);
    if (std::exchange(named[field], true)) return BadMapping(fmt::format("\"{}\" is mapped twice.", label));
    const std::string_view source = platform::Trim(raw.substr(equals + 1));
    if (platform::EqualsIgnoringAsciiCase(source, kIgnoreEntry)) continue;
    const auto number = platform::ParseWholeNumber(source);
    if (!number || *number < 1 || *number > most) {
      return Error{
          Failure::kUsage, Say(R"("{}" cannot be taken from field "{}" of a line.)", label, source),
          "Only the first eighteen fields of a line can be chosen: name a number from 1 to 18, or \"Ignore\"."};
    }
    mapping.source[field] = static_cast<int>(*number);
  }
  return mapping;
}

std::string MappingText(const ImportMapping& mapping) {
  std::string text;
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    if (mapping.source[field] == kIgnore) continue;
    text += fmt::format("{}{}={}", text.empty() ? "" : ",", kFields[field].label, mapping.source[field]);
  }
  return text;
}

FittedMapping FitMapping(const ImportMapping& mapping, std::size_t fields) {
  const int last = static_cast<int>(std::min<std::size_t>(fields, kSourceFields));
  FittedMapping fitted{mapping, {}};
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    if (mapping.source[field] <= last) continue;
    fitted.mapping.source[field] = kIgnore;
    fitted.lacking.push_back(field);
  }
  return fitted;
}

std::optional<Sentence> DescribeLacking(const FittedMapping& fitted, const ImportMapping& wanted) {
  if (fitted.lacking.empty()) return {};
  const std::size_t first = fitted.lacking.front();
  return SayOf(static_cast<std::int64_t>(fitted.lacking.size()),
               "{} field that the mapping takes cannot be chosen in this file and stands at “Ignore”: field {} of a "
               "line, for “{}”.",
               "{} fields that the mapping takes cannot be chosen in this file and stand at “Ignore”, the first is "
               "field {} of a line, for “{}”.",
               wanted.source[first], Sentence(kFields[first].label, {}));
}

std::optional<Sentence> DescribeMissingFields(const ImportMapping& mapping, std::size_t fields) {
  const auto fitted = FitMapping(mapping, fields);
  if (fields == 0 || fitted.lacking.empty()) return {};
  std::vector<std::string> missing;
  for (const std::size_t field : fitted.lacking)
    missing.push_back(fmt::format("{}={}", kFields[field].label, mapping.source[field]));
  return SayOf(static_cast<std::int64_t>(missing.size()),
               "{} field that the mapping takes stands in no line that was read: {}.",
               "{} fields that the mapping takes stand in no line that was read: {}.",
               fmt::format("{}", fmt::join(missing, ", ")));
}

std::optional<Sentence> DescribeLackingSheet(std::string_view wanted, std::string_view read) {
  if (wanted.empty() || read.empty() || wanted == read) return {};
  return Say("The file has no sheet “{}”. “{}” is read.", platform::Printable(wanted, 100),
             platform::Printable(read, 100));
}

std::vector<std::string> SampleEntries(std::span<const std::string_view> fields, bool quotes) {
  std::vector<std::string> entries{kIgnoreEntry};
  for (std::size_t i = 0; i < std::min<std::size_t>(fields.size(), kSourceFields); ++i) {
    const std::string_view trimmed = platform::Trim(fields[i]);
    entries.push_back(fmt::format("Field {} = {}", i + 1, EntryText(quotes ? WithoutQuotes(trimmed) : trimmed)));
  }
  return entries;
}

int SourceFieldOf(std::string_view entry) {
  for (int field = 1; field <= kSourceFields; ++field) {
    const std::string key = fmt::format("{:<8}", fmt::format("Field {}", field));
    if (entry.substr(0, key.size()) == key) return field;
  }
  return kIgnore;
}

std::string_view WithoutQuotes(std::string_view field) {
  if (field.empty()) return {};
  field.remove_prefix(platform::DecodeUtf8(field).length);
  if (field.empty()) return {};
  std::size_t last = field.size() - 1;
  while (last > 0 && field.size() - last < 4 && (static_cast<unsigned char>(field[last]) & 0xC0) == 0x80) --last;
  return field.substr(0, last);
}

std::array<std::string_view, kFieldCount> MapFields(std::span<const std::string_view> fields, bool quotes,
                                                    const ImportMapping& mapping) {
  std::array<std::string_view, kFieldCount> values;
  for (std::size_t target = 0; target < kFieldCount; ++target) {
    const int source = mapping.source[target];
    if (source == kIgnore || static_cast<std::size_t>(source) > fields.size()) continue;
    const std::string_view field = fields[static_cast<std::size_t>(source) - 1];
    values[target] = quotes ? WithoutQuotes(field) : field;
  }
  return values;
}

}  // namespace quillcast::recipients
