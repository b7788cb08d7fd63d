// The ways in which base64 is written, one for each kind of processor. Private to base64.cpp, its test and its
// measurement.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace quillcast::platform::base64 {

inline constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline constexpr std::size_t kLineBytes = 57;  // 76 columns
inline constexpr std::size_t kLineSize = 78;   // with CRLF
inline constexpr std::array<char, 2> kLineEnd = {'\r', '\n'};

// Characters, padding included, line ends not.
constexpr std::size_t EncodedSize(std::size_t bytes) { return (bytes + 2) / 3 * 4; }

// Neither function reads or writes outside what is said here, so that both ends may lie at the end of a page.
struct Path {
  std::string_view name;
  // Reads `size` bytes and writes EncodedSize(size) characters, padding included.
  void (*encode)(char* to, const char* in, std::size_t size);
  // Reads lines * kLineBytes and writes lines * kLineSize.
  void (*encode_lines)(char* to, const char* in, std::size_t lines);
};

// What this processor can run: the portable way first, the fastest last.
std::span<const Path> Paths();

// `encode` of the portable way, with which the vector ways write what is left over at the end.
void EncodePortably(char* to, const char* in, std::size_t size);

// Adds the ways that need vector instructions which not every processor of this architecture has.
void AddVectorPaths(std::vector<Path>& paths);

}  // namespace quillcast::platform::base64
