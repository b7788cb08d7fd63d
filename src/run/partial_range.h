// A part of a group's list, as a person asks for it and as the list has it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/result.h"
#include "recipients/row_source.h"

namespace quillcast::run {

using recipients::PartialRange;

// How many places it has; 0 where it ends before it begins.
std::int64_t SizeOf(const PartialRange& range);

// Two places of a list of so many recipients. Fails with kUsage for what is no part of it.
Result<PartialRange> RangeOf(std::int64_t first, std::int64_t last, std::int64_t recipients);

// The same out of "FIRST-LAST", or "PLACE" for one; nothing for an empty text, which means the whole list.
Result<std::optional<PartialRange>> RangeFrom(std::string_view text, std::int64_t recipients);

// What a list that has so many by now still has of it: as much as there is, or no place.
PartialRange UpTo(std::int64_t recipients, const PartialRange& range);

}  // namespace quillcast::run
