#include "run/pace/departure_record.h"

#include <chrono>

#include "run/pace/short_hash.h"

namespace quillcast::run {
namespace {

// A state, and nanoseconds since 1970; who went there; and the check number of what stands before it.
constexpr std::size_t kDomainAt = 8;
constexpr std::size_t kCheckAt = 12;
constexpr int kStateBit = 62;
constexpr std::uint64_t kWhen = (std::uint64_t{1} << kStateBit) - 1;

// Little-endian, whatever the machine.
void Put(std::uint64_t number, std::size_t at, std::size_t size, DepartureOctets& octets) {
  for (std::size_t i = 0; i < size; ++i) octets[at + i] = static_cast<char>(number >> (8 * i));
}

std::uint64_t Get(std::string_view octets, std::size_t at, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = size; i-- > 0;) number = (number << 8) | static_cast<std::uint8_t>(octets[at + i]);
  return number;
}

}  // namespace

DepartureOctets OctetsOf(const Departure& departure) {
  const std::chrono::nanoseconds since = departure.when.time_since_epoch();
  DepartureOctets octets{};
  Put((std::uint64_t{static_cast<std::uint8_t>(departure.state)} << kStateBit) |
          (static_cast<std::uint64_t>(since.count()) & kWhen),
      0, kDomainAt, octets);
  Put(static_cast<std::uint32_t>(departure.domain), kDomainAt, kCheckAt - kDomainAt, octets);
  Put(ShortHash({octets.data(), kCheckAt}), kCheckAt, kDepartureSize - kCheckAt, octets);
  return octets;
}

std::optional<Departure> DepartureOf(std::string_view octets) {
  const std::uint64_t first = Get(octets, 0, kDomainAt);
  const std::uint64_t state = first >> kStateBit;
  if (Get(octets, kCheckAt, kDepartureSize - kCheckAt) != ShortHash(octets.substr(0, kCheckAt))) return {};
  const std::chrono::nanoseconds since(static_cast<std::int64_t>(first & kWhen));
  return Departure{static_cast<DepartureState>(state), Moment(since),
                   Domain(static_cast<std::uint32_t>(Get(octets, kDomainAt, kCheckAt - kDomainAt)))};
}

}  // namespace quillcast::run
