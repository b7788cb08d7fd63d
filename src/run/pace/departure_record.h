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
};

struct Departure {
  DepartureState state = DepartureState::kNone;
  Moment when;  // that it was taken or went out, from 1970 to 2100
  Domain domain{};

  bool operator==(const Departure&) const = default;
};

inline constexpr std::size_t kDepartureSize = 16;
using DepartureOctets = std::array<char, kDepartureSize>;

DepartureOctets OctetsOf(const Departure& departure);
// Nothing for octets that are none: each has a check number of 32 bits.
std::optional<Departure> DepartureOf(std::string_view octets);

}  // namespace quillcast::run
