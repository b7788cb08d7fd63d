// The characters of a character set beyond ASCII, and the bytes that each has in it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace quillcast::charset {

// Bytes are packed into a number, the first one highest: 0xB0A1 stands for B0 A1, 0x8FB0A1 for three bytes.
class CodedCharacters {
 public:
  // In ascending order of the bytes. A character that comes twice is written with the first ones.
  void Add(std::uint32_t bytes, char32_t code);
  // Bytes that spell a character with several others, for writing only.
  void AddSpelling(std::uint32_t bytes, char32_t code);

  // 0 when the set has no such character.
  std::uint32_t BytesOf(char32_t code) const {
    return code > 0xFFFF ? 0 : cells_[pages_[code >> 8] * 256U + (code & 0xFF)];
  }
  // U+FFFD when the bytes mean nothing.
  char32_t CharacterOf(std::uint32_t bytes) const;

 private:
  struct Coded {
    std::uint32_t bytes;
    char32_t code;
  };
  std::array<std::uint16_t, 256> pages_{};  // of 256 code points each; page 0 is the empty one
  std::vector<std::uint32_t> cells_ = std::vector<std::uint32_t>(256);  // the pages that are not empty, behind page 0
  std::vector<Coded> by_bytes_;
};

// A rectangle of bytes: each lead (of one or two bytes, or 0 for none) with each trail.
struct ByteArea {
  std::uint32_t first_lead;
  std::uint32_t last_lead;
  std::uint8_t first_trail;
  std::uint8_t last_trail;
};

// Where the characters of a set are found.
struct CharacterSource {
  // A converter of the library, read through these areas; nullptr for private characters of the bytes' own number.
  const char* converter = nullptr;
  std::span<const ByteArea> areas;
  // From the converter's bytes to the set's own, 0 for a character that is left out.
  std::uint32_t (*recode)(std::uint32_t bytes) = nullptr;
};

// Empty when the library lacks the converter.
CodedCharacters ReadCharacters(const CharacterSource& source);

}  // namespace quillcast::charset
