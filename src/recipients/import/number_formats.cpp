#include "recipients/import/number_formats.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>

namespace quillcast::recipients {
namespace {

constexpr std::int64_t kSecondsOfADay = 86'400;
constexpr double kLargestWhole = 1e15;      // beyond it, digits of a number are rounded
constexpr double kLargestDate = 2'958'466;  // days: the first of the year 10000
constexpr std::size_t kLongestZeros = 15;

// The formats that every file has without naming them.
bool IsBuiltInDate(std::uint32_t id) {
  return (id >= 14 && id <= 22) || (id >= 27 && id <= 36) || (id >= 45 && id <= 47) || (id >= 50 && id <= 58);
}

// A letter of dates outside quotes, brackets and escapes.
bool IsDateCode(std::string_view code) {
  char closing = '\0';
  for (std::size_t at = 0; at < code.size(); ++at) {
    const char c = code[at];
    if (closing != '\0') {
      if (c == closing) closing = '\0';
    } else if (c == '"' || c == '[') {
      closing = c == '"' ? '"' : ']';
    } else if (c == '\\' || c == '_' || c == '*') {
      ++at;
    } else if (std::string_view("yYmMdDhHsS").find(c) != std::string_view::npos) {
      return true;
    }
  }
  return false;
}

std::string DateText(double number, std::int64_t first_day) {
  const auto seconds = std::llround(number * static_cast<double>(kSecondsOfADay));
  const auto day = seconds / kSecondsOfADay;
  const auto time = seconds % kSecondsOfADay;
  std::string clock = fmt::format("{:02}:{:02}:{:02}", time / 3600, time / 60 % 60, time % 60);
  if (day == 0) return clock;  // a time of no day
  const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{day + first_day}}};
  const std::string text = fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return time == 0 ? text : text + " " + clock;
}

}  // namespace

bool NumberFormats::IsDate(std::uint32_t id) const {
  const auto code = codes_.find(id);
  return code == codes_.end() ? IsBuiltInDate(id) : IsDateCode(code->second);
}

std::string NumberFormats::TextOf(double number, std::size_t cell_format) const {
  const std::uint32_t id = cell_format < cells_.size() ? cells_[cell_format] : 0;
  if (number >= 0 && number < kLargestDate && IsDate(id)) return DateText(number, first_day_);
  std::string text = NumberText(number);
  const auto code = codes_.find(id);
  const bool is_zeros = code != codes_.end() && code->second.size() <= kLongestZeros &&
                        code->second.find_first_not_of('0') == std::string::npos;
  const bool is_digits = text.find_first_not_of("0123456789") == std::string::npos;
  if (is_zeros && is_digits && text.size() < code->second.size()) {
    text.insert(0, code->second.size() - text.size(), '0');
  }
  return text;
}

std::string NumberText(double number) {
  const bool is_whole = std::abs(number) < kLargestWhole && number == std::floor(number);
  return is_whole ? fmt::format("{:.0f}", number) : fmt::format("{}", number);
}

}  // namespace quillcast::recipients
