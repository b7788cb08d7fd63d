#include "run/journal/state_record.h"

#include <algorithm>

namespace quillcast::run {
namespace {

constexpr int kTriesShift = 3;
constexpr std::uint8_t kManyTries = kTriesBits >> kTriesShift;

// Little-endian, whatever the machine.
template <typename Number>
Number Read(const char* octets) {
  Number number = 0;
  for (std::size_t i = sizeof(Number); i-- > 0;) {
    number = static_cast<Number>((std::uint64_t{number} << 8) | static_cast<std::uint8_t>(octets[i]));
  }
  return number;
}

template <typename Number>
void Write(Number number, char* octets) {
  for (std::size_t i = 0; i < sizeof(Number); ++i) octets[i] = static_cast<char>(std::uint64_t{number} >> (8 * i));
}

}  // namespace

StateRecord ReadRecord(const char* octets) {
  const auto attempts = Read<std::uint8_t>(octets + 1);
  const auto tries = static_cast<std::uint8_t>((static_cast<std::uint8_t>(*octets) & kTriesBits) >> kTriesShift);
  return {StateAt(octets),
          IsReservedAt(octets),
          attempts,
          Read<std::uint16_t>(octets + 2),
          Read<std::uint32_t>(octets + 4),
          Read<std::uint8_t>(octets + 8),
          Read<std::uint16_t>(octets + 9),
          Read<std::uint32_t>(octets + 11),
          tries == kManyTries ? std::max(tries, attempts) : tries};
}

void WriteRecord(const StateRecord& record, char* octets) {
  const int tries = std::min(record.tries, kManyTries) << kTriesShift;
  const int reserved = record.reserved ? kReservedBit : 0;
  Write(static_cast<std::uint8_t>(static_cast<int>(record.state) | reserved | tries), octets);
  Write(record.attempts, octets + 1);
  Write(record.run, octets + 2);
  Write(record.when, octets + 4);
  Write(record.code, octets + 8);
  Write(record.reply, octets + 9);
  Write(record.words, octets + 11);
}

bool IsBlock(std::string_view octets) {
  if (octets.empty() || octets.size() % kRecordSize != 0 || octets.size() > kBlockSize * kRecordSize) return false;
  for (std::size_t at = 0; at < octets.size(); at += kRecordSize) {
    if (static_cast<std::size_t>(StateAt(octets.data() + at)) >= kResultStates) return false;
  }
  return true;
}

}  // namespace quillcast::run
