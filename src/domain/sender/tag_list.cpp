#include "domain/sender/tag_list.h"

#include <algorithm>
#include <optional>

#include "platform/text.h"

namespace quillcast::domain {
namespace {

bool IsTagName(std::string_view name) {
  return !name.empty() &&
         std::all_of(name.begin(), name.end(), [](char c) { return platform::AsciiIsAlnum(c) || c == '_'; });
}

// The tag and its value; nothing for what is none.
std::optional<std::pair<std::string, std::string>> RowOf(std::string_view part) {
  const std::size_t equals = part.find('=');
  const std::string_view name = platform::Trim(part.substr(0, equals));
  if (equals == std::string_view::npos || !IsTagName(name)) return std::nullopt;
  return std::pair<std::string, std::string>(name, platform::Trim(part.substr(equals + 1)));
}

}  // namespace

Result<TagList> TagList::Parse(std::string_view text) {
  TagList list;
  for (const std::string_view piece : platform::Split(text, ';')) {
    const std::string_view part = platform::Trim(piece);
    if (part.empty()) continue;  // the last ";" may be followed by nothing
    auto row = RowOf(part);
    if (!row) {
      return Error{Failure::kBadData, Say("\"{}\" is no \"tag=value\".", platform::Printable(part, 60)),
                   "Write the record as tags with values, parted by \";\"."};
    }
    if (list.CountOf(row->first) > 0) {
      return Error{Failure::kBadData, Say("\"{}=\" stands twice.", platform::Printable(row->first, 60)),
                   "Leave each tag in the record once."};
    }
    list.rows_.push_back(*std::move(row));
  }
  return list;
}

TagList TagList::Read(std::string_view text) {
  TagList list;
  for (const std::string_view piece : platform::Split(text, ';')) {
    auto row = RowOf(platform::Trim(piece));
    if (!row) continue;
    row->first = platform::AsciiLower(row->first);
    list.rows_.push_back(*std::move(row));
  }
  return list;
}

std::size_t TagList::CountOf(std::string_view tag) const {
  return static_cast<std::size_t>(
      std::count_if(rows_.begin(), rows_.end(), [&](const auto& each) { return each.first == tag; }));
}

std::string_view TagList::ValueOf(std::string_view tag, std::string_view fallback) const {
  const auto row = std::find_if(rows_.begin(), rows_.end(), [&](const auto& each) { return each.first == tag; });
  return row == rows_.end() ? fallback : std::string_view(row->second);
}

}  // namespace quillcast::domain
