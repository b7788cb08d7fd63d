// What the journal keeps of a recipient while a run goes on, in the octets that stand in its file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "run/journal/recipient_states.h"

namespace quillcast::run {

// Recipients stand in the file in blocks of so many, one row of a table each: few enough that writing a block for one
// result costs little, many enough that a million are counted in some milliseconds.
inline constexpr std::int64_t kBlockSize = 128;

struct StateRecord {
  ResultState state = ResultState::kNotTried;
  // Its message may be out after a loss of power, whatever the state says.
  bool reserved = false;
  std::uint8_t attempts = 0;  // 255 for more
  std::uint16_t run = 0;      // that tried last, counted within the mailing from 1; 0 for none
  std::uint32_t when = 0;     // of the last change, in seconds since 1970; 0 for never
  std::uint8_t code = 0;      // smtp::ResultCode of the last attempt
  std::uint16_t reply = 0;    // its three digits
  std::uint32_t words = 0;    // the number of its words within the mailing, from 1; 0 for none
  // It is to be tried again, which was promised so many attempts ago; 0 where it is not. Behind 14 all attempts count.
  std::uint8_t tries = 0;
};

inline constexpr std::size_t kRecordSize = 15;

StateRecord ReadRecord(const char* octets);
void WriteRecord(const StateRecord& record, char* octets);

// The first octet alone has the state, so that counting looks at no other.
inline constexpr std::uint8_t kReservedBit = 0x80;
inline ResultState StateAt(const char* octets) { return static_cast<ResultState>(*octets & 0x07); }
inline bool IsReservedAt(const char* octets) { return (static_cast<std::uint8_t>(*octets) & kReservedBit) != 0; }
inline constexpr std::uint8_t kTriesBits = 0x78;
// Whether it is to be tried again, where it counts as in this state: what is in doubt is not.
inline bool IsTriedAgain(ResultState state, const char* octets) {
  return state == StateAt(octets) && (static_cast<std::uint8_t>(*octets) & kTriesBits) != 0;
}

// Whether these octets can be a block: whole records, each in a state that there is.
bool IsBlock(std::string_view octets);

}  // namespace quillcast::run
