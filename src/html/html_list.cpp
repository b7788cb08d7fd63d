#include "html/html_list.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::int64_t kLargestNumber = 999'999'999;
constexpr std::int64_t kLargestRoman = 3999;

struct RomanRow {
  std::int64_t value;
  std::string_view numeral;
};
constexpr std::array kRoman = {
    RomanRow{1000, "m"}, RomanRow{900, "cm"}, RomanRow{500, "d"}, RomanRow{400, "cd"}, RomanRow{100, "c"},
    RomanRow{90, "xc"},  RomanRow{50, "l"},   RomanRow{40, "xl"}, RomanRow{10, "x"},   RomanRow{9, "ix"},
    RomanRow{5, "v"},    RomanRow{4, "iv"},   RomanRow{1, "i"},
};

std::string Roman(std::int64_t number) {
  std::string out;
  for (const RomanRow& row : kRoman) {
    for (; number >= row.value; number -= row.value) out += row.numeral;
  }
  return out;
}

// "a" to "z", then "aa".
std::string Letters(std::int64_t number) {
  std::string out;
  for (; number > 0; number = (number - 1) / 26) out += static_cast<char>('a' + (number - 1) % 26);
  std::reverse(out.begin(), out.end());
  return out;
}

}  // namespace

std::int64_t ListNumber(std::string_view attribute, std::int64_t otherwise) {
  std::string_view digits = platform::Trim(attribute);
  const bool negative = digits.starts_with('-');
  if (negative) digits.remove_prefix(1);
  const std::int64_t number = platform::ParseWholeNumber(digits).value_or(kLargestNumber + 1);
  if (number > kLargestNumber) return otherwise;
  return negative ? -number : number;
}

std::string ListNumeral(std::int64_t number, std::string_view type) {
  const bool roman = (type == "i" || type == "I") && number > 0 && number <= kLargestRoman;
  const bool letters = (type == "a" || type == "A") && number > 0;
  if (!roman && !letters) return std::to_string(number);
  const std::string numeral = roman ? Roman(number) : Letters(number);
  return type == "I" || type == "A" ? platform::AsciiUpper(numeral) : numeral;
}

}  // namespace quillcast::html
