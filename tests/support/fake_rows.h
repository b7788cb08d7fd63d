// A group's list without a store, with one row that cannot be read where a test wants that.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "recipients/row_source.h"

namespace quillcast::test {

class FakeRows final : public recipients::RowSource {
 public:
  // So many recipients with AddressAt as their addresses.
  explicit FakeRows(std::int64_t count) {
    for (std::int64_t position = 1; position <= count; ++position) addresses_.push_back(AddressAt(position));
  }
  explicit FakeRows(std::vector<std::string> addresses) : addresses_(std::move(addresses)) {}

  static std::string AddressAt(std::int64_t position) { return "r" + std::to_string(position) + "@example.org"; }

  bool is_copy = false;                  // knows its size
  std::int64_t unreadable = 0;           // the row that fails, 0 for none
  std::function<void()> before_failing;  // then
  int asked = 0;                         // how often for a row

  Result<bool> Next(recipients::Recipient& recipient) override {
    const auto row = static_cast<std::size_t>(asked++);
    if (asked == unreadable) {
      if (before_failing) before_failing();
      return Error{Failure::kIo, "The store cannot be read.", ""};
    }
    if (row >= addresses_.size()) return false;
    recipient = {};
    recipient.values[recipients::kEmail] = addresses_[row];
    return true;
  }

  std::optional<std::int64_t> size() const override {
    return is_copy ? std::optional(std::ssize(addresses_)) : std::nullopt;
  }

 private:
  std::vector<std::string> addresses_;
};

}  // namespace quillcast::test
