// The date and the time that a person puts into a message, in the formats to choose from. English in every locale.
#pragma once

#include <array>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

#include "platform/complaint.h"

namespace quillcast::document {

// As their lists show them, in this order. "mm" is the month in a date and the minutes in a time; "hh" counts to 12
// where "AM/PM" follows, else to 23.
inline constexpr std::array<const char*, 4> kDateFormats = {"m/d/yy", "mm/dd/yyyy", "yyyy/mm/dd",
                                                            "dddd, mmmm dd, yyyy"};
inline constexpr std::array<const char*, 6> kTimeFormats = {"hh:mm:ss AM/PM", "hh:mm:ss",   "hh:mm AM/PM",
                                                            "hh:mm",          "h:mm AM/PM", "h AM/PM"};

// A broken-down local time, written in one of these formats.
std::string Written(const std::tm& moment, std::string_view format);

// What was chosen of the two lists: the texts themselves, empty for nothing.
struct DateTimeChoice {
  std::string date;
  std::string time;
};
enum class DateTimeBox { kDate, kTime };

std::optional<Complaint<DateTimeBox>> CheckDateTime(const DateTimeChoice& choice);

// Of a choice that passed the checks.
std::string DateTimeText(const DateTimeChoice& choice);

}  // namespace quillcast::document
