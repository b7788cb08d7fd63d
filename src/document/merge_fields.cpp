#include "document/merge_fields.h"

#include <algorithm>
#include <set>

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::document {
namespace {

constexpr std::string_view kTagStart = "$*Merge";
constexpr std::string_view kTagEnd = "*$";
constexpr std::size_t kLongestTag = 64;

bool NeedsChange(std::string_view value) {
  if (platform::PrintableRun(value) == value.size()) return false;
  return value.find('\r') != std::string_view::npos || value.find('\0') != std::string_view::npos ||
         !platform::IsUtf8(value);
}

std::string ForMerge(std::string_view value) {
  std::string out;
  while (!value.empty()) {
    const auto [code, length] = platform::DecodeUtf8(value);
    if (code == '\r') {
      out += '\n';
      if (value.starts_with("\r\n")) value.remove_prefix(1);
    } else if (code != 0) {
      platform::AppendUtf8(out, code == platform::kNotUtf8 ? 0xFFFD : code);
    }
    value.remove_prefix(length);
  }
  return out;
}

std::size_t Count(std::string_view text, std::string_view tag) {
  std::size_t count = 0;
  for (auto at = text.find(tag); at != std::string_view::npos; at = text.find(tag, at + tag.size())) ++count;
  return count;
}

}  // namespace

MergeValues ValuesForMerge(const recipients::Recipient& recipient,
                           std::array<std::string, kMergeFields.size()>& changed) {
  MergeValues values;
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i] = recipient.values[i];
    if (NeedsChange(values[i])) values[i] = changed[i] = ForMerge(values[i]);
  }
  return values;
}

std::optional<std::string> ReplaceMergeFields(std::string text, const MergeValues& values) {
  for (std::size_t i = 0; i < kMergeFields.size(); ++i) {
    const std::size_t occurrences = Count(text, kMergeFields[i].tag);
    if (occurrences == 0) continue;
    if (!values[i].empty() && occurrences > kLargestMergedText / values[i].size()) return {};
    text = platform::ReplaceAll(text, kMergeFields[i].tag, values[i]);
    if (text.size() > kLargestMergedText) return {};
  }
  return text;
}

std::vector<std::string> UnknownTags(std::string_view text) {
  std::vector<std::string> unknown;
  std::set<std::string_view> seen;
  for (auto at = text.find(kTagStart); at != std::string_view::npos && seen.size() < kMostUnknownTags;
       at = text.find(kTagStart, at + 1)) {
    const auto end = text.substr(at, kLongestTag).find(kTagEnd, kTagStart.size());
    if (end == std::string_view::npos) continue;
    const auto tag = text.substr(at, end + kTagEnd.size());
    const bool known =
        std::any_of(kMergeFields.begin(), kMergeFields.end(), [&](const auto& f) { return f.tag == tag; });
    if (!known && seen.insert(tag).second) unknown.emplace_back(tag);
  }
  return unknown;
}

Sentence DescribeUnknownTag(std::string_view tag) {
  return Say("Unknown tag {}: it goes out as it stands.", platform::Printable(tag));
}

}  // namespace quillcast::document
