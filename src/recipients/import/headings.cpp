#include "recipients/import/headings.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/import/heading_names.h"
#include "recipients/text_order.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kLongestHeading = 256;  // bytes; a longer one names nothing

// Without blanks and signs, as the names of the table are written.
std::string Bare(std::string_view heading) {
  std::string bare;
  if (heading.size() > kLongestHeading) return bare;
  for (const char c : heading) {
    if (platform::AsciiIsAlnum(c) || static_cast<unsigned char>(c) >= 0x80) bare += platform::AsciiLower(c);
  }
  return bare;
}

// Which field a name stands for.
class NameTable {
 public:
  NameTable() {
    for (std::size_t field = 0; field < kFieldCount; ++field) AddAll(kHeadingNames[field], field);
    AddAll(kWholeNames, kWholeName);
    qualifiers_ = platform::Split(kHeadingQualifiers, ' ');
  }

  std::optional<std::size_t> Find(std::string_view name) const {
    const auto [first, last] = names_.equal_range(HashText(name));
    const auto found =
        std::find_if(first, last, [name](const auto& row) { return CompareText(row.second.name, name) == 0; });
    return found == last ? std::nullopt : std::optional(found->second.field);
  }
  // With the first qualifier off that leaves a name.
  std::optional<std::size_t> FindQualified(std::string_view name) const {
    for (const std::string_view qualifier : qualifiers_) {
      if (!name.starts_with(qualifier)) continue;
      if (const auto field = Find(name.substr(qualifier.size()))) return field;
    }
    return {};
  }

 private:
  struct Row {
    std::string_view name;
    std::size_t field;
  };
  void AddAll(std::string_view names, std::size_t field) {
    for (const std::string_view name : platform::Split(names, ' ')) names_.emplace(HashText(name), Row{name, field});
  }

  std::unordered_multimap<std::uint64_t, Row> names_;
  std::vector<std::string_view> qualifiers_;
};

}  // namespace

HeadingMapping MapByHeadings(std::span<const std::string_view> headings) {
  static const NameTable table;
  HeadingMapping found;
  std::vector<std::string> names;
  for (const std::string_view heading : headings) names.push_back(Bare(heading));
  int whole_name = kIgnore;
  const auto take = [&](std::optional<std::size_t> field, int source) {
    if (!field) return;
    int& place = *field == kWholeName ? whole_name : found.mapping.source[*field];
    if (place == kIgnore) place = source;
  };
  for (std::size_t at = 0; at < names.size(); ++at) take(table.Find(names[at]), static_cast<int>(at) + 1);
  for (std::size_t at = 0; at < names.size(); ++at) take(table.FindQualified(names[at]), static_cast<int>(at) + 1);
  auto& source = found.mapping.source;
  if (whole_name != kIgnore) {
    const std::size_t part = source[kFirstName] == kIgnore ? kFirstName : kLastName;
    if (source[part] == kIgnore) source[part] = whole_name;
  }
  const auto mapped = std::count_if(source.begin(), source.end(), [](int from) { return from != kIgnore; });
  found.names_address = source[kEmail] != kIgnore;
  found.looks_like_headings =
      (found.names_address || mapped >= 2) &&
      std::none_of(headings.begin(), headings.end(), [](auto text) { return CheckEmail(text); });
  for (int& from : source) {
    if (from == kIgnore) continue;
    found.columns.push_back(static_cast<std::size_t>(from));
    if (from <= kSourceFields) continue;
    found.beyond.push_back(static_cast<std::size_t>(from));
    from = kIgnore;
  }
  return found;
}

}  // namespace quillcast::recipients
