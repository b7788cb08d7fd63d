// How a spreadsheet shows its numbers, as far as a list is concerned: dates, and leading zeros.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quillcast::recipients {

// Of Office Open XML (ECMA-376 18.8.30): a cell names its format by number, and that one the format of numbers.
class NumberFormats {
 public:
  // One that is longer than the programs allow is none.
  void AddCode(std::uint32_t id, std::string_view code) {
    if (code.size() <= kLongestCode) codes_[id] = code;
  }
  // Of the next format of cells.
  void AddCellFormat(std::uint32_t id) { cells_.push_back(id); }
  // Days are counted from 1904-01-01, as some files do, not from 1899-12-30.
  void CountFrom1904() { first_day_ = -24'107; }

  // As people see it: "2024-03-01", "01234" (where the format is "00000"), "12.5".
  std::string TextOf(double number, std::size_t cell_format) const;

  bool has_too_many() const { return codes_.size() > kMost || cells_.size() > kMost; }

 private:
  static constexpr std::size_t kMost = 100'000;  // the programs allow some 65,000
  static constexpr std::size_t kLongestCode = 1024;

  bool IsDate(std::uint32_t id) const;

  std::unordered_map<std::uint32_t, std::string> codes_;
  std::vector<std::uint32_t> cells_;
  std::int64_t first_day_ = -25'569;  // in days since 1970-01-01
};

// Without an exponent and with no more digits than it needs: "4915112345678", "0.1".
std::string NumberText(double number);

}  // namespace quillcast::recipients
