// Checks of numbers that a person types for a piece of HTML. They are put into it as they were typed.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/complaint.h"
#include "platform/text.h"

namespace quillcast::document {

enum class Digits { kWhole, kWithFraction };

// Both bounds are allowed. `name` is what the messages call it.
template <typename Choice, typename Box>
struct NumberRule {
  const std::string Choice::*field;
  const char* name;
  Box box;
  std::int64_t lowest;
  std::int64_t highest;
  Digits digits;
};

// The first of the rules that is not kept.
template <typename Choice, typename Box>
std::optional<Complaint<Box>> CheckNumbers(const Choice& choice, std::span<const NumberRule<Choice, Box>> rules) {
  for (const auto& rule : rules) {
    const std::string& text = choice.*rule.field;
    if (text.empty()) return Complaint<Box>{std::string("Please enter your ") + rule.name + '.', rule.box};
    const bool is_within = rule.digits == Digits::kWhole
                               ? platform::WholeNumberBetween(text, rule.lowest, rule.highest).has_value()
                               : platform::IsNumberBetween(text, rule.lowest, rule.highest);
    if (!is_within) return Complaint<Box>{std::string("Please enter a valid ") + rule.name + '.', rule.box};
  }
  return {};
}

}  // namespace quillcast::document
