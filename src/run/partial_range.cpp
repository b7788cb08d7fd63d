#include "run/partial_range.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::run {

std::int64_t SizeOf(const PartialRange& range) { return std::max<std::int64_t>(0, range.last - range.first + 1); }

Result<PartialRange> RangeOf(std::int64_t first, std::int64_t last, std::int64_t recipients) {
  if (first >= 1 && first <= last && last <= recipients) return PartialRange{first, last};
  return Error{Failure::kUsage, Say("#{} to #{} is no part of the list.", first, last),
               Say("It has the places from 1 to {}.", recipients)};
}

Result<std::optional<PartialRange>> RangeFrom(std::string_view text, std::int64_t recipients) {
  if (text.empty()) return std::optional<PartialRange>();
  const auto dash = text.find('-');
  const auto first = platform::ParseWholeNumber(text.substr(0, dash));
  const auto last = dash == std::string_view::npos ? first : platform::ParseWholeNumber(text.substr(dash + 1));
  if (first && last) {
    if (const auto range = RangeOf(*first, *last, recipients)) return std::optional(*range);
  }
  return Error{Failure::kUsage, Say("\"{}\" is no range of recipients.", platform::Printable(text, 40)),
               Say("Write FIRST-LAST with numbers from 1 to {}.", recipients)};
}

PartialRange UpTo(std::int64_t recipients, const PartialRange& range) {
  return {range.first, std::min(range.last, std::max(recipients, range.first - 1))};
}

}  // namespace quillcast::run
