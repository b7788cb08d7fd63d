// What is kept of a message that went out, in the octets that stand in their file.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "run/pace/pace.h"

namespace quillcast::run {

enum class DepartureState : std::uint8_t {
  kNone,   // it did not go out after all
  kTaken,  // on its way, as long as whoever took it lives
  kOut,
  kClock,  // of nobody: what time of day it was when the computer was started, and which start that was
};

struct Departure {
  DepartureState state = DepartureState::kNone;
  Moment when;      // that it was taken or went out, from 1970 to 2100, by the clock told before it
  Domain domain{};  // or the number of the start

  bool operator==(const Departure&) const = default;
};

inline constexpr std::size_t kDepartureSize = 16;
using DepartureOctets = std::array<char, kDepartureSize>;

DepartureOctets OctetsOf(const Departure& departure);
// Nothing for octets that are none: each has a check number of 32 bits.
std::optional<Departure> DepartureOf(std::string_view octets);

}  // namespace quillcast::run
