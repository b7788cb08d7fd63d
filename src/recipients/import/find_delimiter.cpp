#include "recipients/import/find_delimiter.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>
#include <vector>

#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/import/delimited_lines.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kFieldsLookedAt = 256;
constexpr std::size_t kLongestLookedAt = std::size_t{16} * 1024;  // bytes of a line
constexpr std::string_view kPartsTexts = " \t:,;<>\"|";

// The order in which they are preferred where several fit as well.
constexpr std::array<std::size_t, 5> kPreference = {0, 4, 3, 1, 2};

std::string_view Unquoted(std::string_view field) {
  field = platform::Trim(field);
  return IsQuoted(field) ? platform::Trim(field.substr(1, field.size() - 2)) : field;
}

struct Fit {
  std::size_t addresses = 0;     // lines with one in the same place
  std::size_t equally_many = 0;  // lines with the most usual number of fields, where that is not 1
  std::size_t quoted = 0;        // of the addresses

  bool IsBetterThan(const Fit& other) const {
    return std::tie(addresses, equally_many) > std::tie(other.addresses, other.equally_many);
  }
};

template <typename Tally>
auto MostUsual(const Tally& tally) {
  return std::max_element(tally.begin(), tally.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
}

Fit FitOf(char delimiter, std::span<const std::string> lines) {
  Fit fit;
  std::map<std::size_t, std::size_t> places;
  std::map<std::size_t, std::size_t> counts;
  std::vector<std::string_view> fields;
  for (const std::string_view line : lines) {
    if (platform::Trim(line).empty()) continue;
    SplitLine(line.substr(0, kLongestLookedAt), delimiter, kFieldsLookedAt, fields);
    if (fields.size() > 1) ++counts[fields.size()];
    const auto address = std::find_if(fields.begin(), fields.end(), IsBareAddress);
    if (address == fields.end()) continue;
    ++places[static_cast<std::size_t>(address - fields.begin())];
    fit.quoted += static_cast<std::size_t>(IsQuoted(platform::Trim(*address)));
  }
  if (!places.empty()) fit.addresses = MostUsual(places)->second;
  if (!counts.empty()) fit.equally_many = MostUsual(counts)->second;
  return fit;
}

}  // namespace

bool IsQuoted(std::string_view field) { return field.size() >= 2 && field.front() == '"' && field.back() == '"'; }

bool IsBareAddress(std::string_view field) {
  field = Unquoted(field);
  return field.find_first_of(kPartsTexts) == std::string_view::npos && CheckEmail(field);
}

FoundDelimiter FindDelimiter(std::span<const std::string> lines) {
  FoundDelimiter found;
  Fit best;
  for (const std::size_t place : kPreference) {
    const Delimiter& delimiter = kDelimiters[place];
    const Fit fit = FitOf(delimiter.character, lines);
    if (!fit.IsBetterThan(best)) continue;
    best = fit;
    found.delimiter = fit.equally_many > 0 ? delimiter : found.delimiter;
    found.is_needed = fit.equally_many > 0;
    found.is_quoted = fit.quoted * 2 > fit.addresses;
  }
  return found;
}

}  // namespace quillcast::recipients
