#include "domain/sender/tag_list.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::domain {
namespace {

bool IsTagName(std::string_view name) {
  return !name.empty() &&
         std::all_of(name.begin(), name.end(), [](char c) { return platform::AsciiIsAlnum(c) || c == '_'; });
}

}  // namespace

Result<TagList> TagList::Parse(std::string_view text) {
  TagList list;
  for (const std::string_view piece : platform::Split(text, ';')) {
    const std::string_view part = platform::Trim(piece);
    if (part.empty()) continue;  // the last ";" may be followed by nothing
    const std::size_t equals = part.find('=');
    const std::string_view name = platform::Trim(part.substr(0, equals));
    if (equals == std::string_view::npos || !IsTagName(name)) {
      return Error{Failure::kBadData, Say("\"{}\" is no \"tag=value\".", platform::Printable(part, 60)),
                   "Write the record as tags with values, parted by \";\"."};
    }
    const auto same = [&](const auto& row) { return row.first == name; };
    if (std::any_of(list.rows_.begin(), list.rows_.end(), same)) {
      return Error{Failure::kBadData, Say("\"{}=\" stands twice.", platform::Printable(name, 60)),
                   "Leave each tag in the record once."};
    }
    list.rows_.emplace_back(name, platform::Trim(part.substr(equals + 1)));
  }
  return list;
}

std::string_view TagList::ValueOf(std::string_view tag, std::string_view fallback) const {
  const auto row = std::find_if(rows_.begin(), rows_.end(), [&](const auto& each) { return each.first == tag; });
  return row == rows_.end() ? fallback : std::string_view(row->second);
}

}  // namespace quillcast::domain
