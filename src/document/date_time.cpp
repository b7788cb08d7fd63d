#include "document/date_time.h"

#include <fmt/format.h>

#include <algorithm>

namespace quillcast::document {
namespace {

constexpr auto kDays =
    std::to_array<const char*>({"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"});
constexpr auto kMonths = std::to_array<const char*>({"January", "February", "March", "April", "May", "June", "July",
                                                     "August", "September", "October", "November", "December"});

// A run of one letter stands for a number or a name; "AM/PM" for itself. Letters of dates and times differ but for "m".
std::string Part(const std::tm& moment, std::string_view run, bool is_time, bool to_twelve) {
  const int hour = to_twelve ? (moment.tm_hour + 11) % 12 + 1 : moment.tm_hour;
  const int month_or_minute = is_time ? moment.tm_min : moment.tm_mon + 1;
  if (run == "dddd") return kDays[static_cast<std::size_t>(moment.tm_wday) % kDays.size()];
  if (run == "mmmm") return kMonths[static_cast<std::size_t>(moment.tm_mon) % kMonths.size()];
  if (run == "yyyy") return fmt::format("{:04}", moment.tm_year + 1900);
  if (run == "yy") return fmt::format("{:02}", moment.tm_year % 100);
  int number = moment.tm_sec;
  if (run[0] == 'd') number = moment.tm_mday;
  if (run[0] == 'm') number = month_or_minute;
  if (run[0] == 'h') number = hour;
  return fmt::format("{:0{}}", number, run.size());
}

}  // namespace

std::string Written(const std::tm& moment, std::string_view format) {
  constexpr std::string_view kHalf = "AM/PM";
  const bool is_time = format.starts_with('h');
  const bool to_twelve = format.ends_with(kHalf);
  std::string text;
  while (!format.empty()) {
    std::size_t length = 1;
    if (format.starts_with(kHalf)) {
      text += moment.tm_hour < 12 ? "AM" : "PM";
      length = kHalf.size();
    } else if (std::string_view("dmyhs").find(format[0]) != std::string_view::npos) {
      length = std::min(format.find_first_not_of(format[0]), format.size());
      text += Part(moment, format.substr(0, length), is_time, to_twelve);
    } else {
      text += format[0];
    }
    format.remove_prefix(length);
  }
  return text;
}

std::optional<Complaint<DateTimeBox>> CheckDateTime(const DateTimeChoice& choice) {
  if (choice.date.empty()) return Complaint<DateTimeBox>{"Please select date format.", DateTimeBox::kDate};
  if (choice.time.empty()) return Complaint<DateTimeBox>{"Please select time format.", DateTimeBox::kTime};
  return {};
}

std::string DateTimeText(const DateTimeChoice& choice) { return choice.date + " - " + choice.time; }

}  // namespace quillcast::document
