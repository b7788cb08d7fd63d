#include "platform/base64.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "platform/base64_paths.h"

namespace quillcast::platform {
namespace base64 {
namespace {

using Pair = std::array<char, 2>;

// Two characters for each value of twelve bits, so that three bytes cost two look-ups.
constexpr std::array<Pair, 4096> MakePairs() {
  std::array<Pair, 4096> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {kAlphabet[i >> 6], kAlphabet[i & 63]};
  return pairs;
}
constexpr std::array<Pair, 4096> kPairs = MakePairs();

std::uint32_t ByteAt(const char* in, std::size_t at) { return static_cast<std::uint8_t>(in[at]); }

void EncodeLinesPortably(char* to, const char* in, std::size_t lines) {
  for (; lines > 0; --lines, in += kLineBytes, to += kLineSize) {
    EncodePortably(to, in, kLineBytes);
    std::memcpy(to + kLineSize - kLineEnd.size(), kLineEnd.data(), kLineEnd.size());
  }
}

}  // namespace

void EncodePortably(char* to, const char* in, std::size_t size) {
  for (; size >= 3; size -= 3, in += 3, to += 4) {
    const std::uint32_t bits = ByteAt(in, 0) << 16 | ByteAt(in, 1) << 8 | ByteAt(in, 2);
    std::memcpy(to, kPairs[bits >> 12].data(), 2);
    std::memcpy(to + 2, kPairs[bits & 0xFFF].data(), 2);
  }
  if (size == 0) return;
  const std::uint32_t bits = ByteAt(in, 0) << 16 | (size == 2 ? ByteAt(in, 1) << 8 : 0);
  std::memcpy(to, kPairs[bits >> 12].data(), 2);
  to[2] = size == 2 ? kAlphabet[(bits >> 6) & 63] : '=';
  to[3] = '=';
}

std::span<const Path> Paths() {
  static const std::vector<Path> paths = [] {
    std::vector<Path> found = {{"portable", EncodePortably, EncodeLinesPortably}};
    AddVectorPaths(found);
    return found;
  }();
  return paths;
}

}  // namespace base64

namespace {

constexpr std::uint8_t kForeign = 0xFF;

constexpr std::array<std::uint8_t, 256> MakeValues() {
  std::array<std::uint8_t, 256> values{};
  values.fill(kForeign);
  for (std::size_t i = 0; i < base64::kAlphabet.size(); ++i) {
    values[static_cast<std::uint8_t>(base64::kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}
constexpr std::array<std::uint8_t, 256> kValues = MakeValues();

}  // namespace

void AppendBase64(std::string& out, std::string_view bytes) {
  const std::size_t start = out.size();
  out.resize(start + base64::EncodedSize(bytes.size()));
  base64::Paths().back().encode(out.data() + start, bytes.data(), bytes.size());
}

std::string Base64(std::string_view bytes) {
  std::string out;
  AppendBase64(out, bytes);
  return out;
}

void Base64LineEncoder::Encode(std::string_view bytes, std::string& out) {
  static_assert(kLineBytes == base64::kLineBytes);
  if (pending_size_ > 0 || bytes.size() < kLineBytes) {
    const std::size_t taken = std::min(kLineBytes - pending_size_, bytes.size());
    std::copy_n(bytes.data(), taken, pending_.data() + pending_size_);
    pending_size_ += taken;
    bytes.remove_prefix(taken);
    if (pending_size_ < kLineBytes) return;
    Finish(out);
  }
  const std::size_t lines = bytes.size() / kLineBytes;
  const std::size_t start = out.size();
  out.resize(start + lines * base64::kLineSize);
  base64::Paths().back().encode_lines(out.data() + start, bytes.data(), lines);
  bytes.remove_prefix(lines * kLineBytes);
  std::copy_n(bytes.data(), bytes.size(), pending_.data());
  pending_size_ = bytes.size();
}

void Base64LineEncoder::Finish(std::string& out) {
  if (pending_size_ == 0) return;
  AppendBase64(out, {pending_.data(), pending_size_});
  out += "\r\n";
  pending_size_ = 0;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  std::string out;
  out.reserve(text.size() / 4 * 3);
  std::uint32_t bits = 0;
  std::size_t digits = 0;
  std::size_t padding = 0;
  for (const char c : text) {
    const std::uint8_t value = kValues[static_cast<std::uint8_t>(c)];
    if (c == '=') {
      ++padding;
      continue;
    }
    if (value == kForeign || padding > 0) return std::nullopt;
    bits = bits << 6 | value;
    if (++digits % 4 == 0) {
      out += {static_cast<char>(bits >> 16), static_cast<char>(bits >> 8), static_cast<char>(bits)};
    }
  }
  const std::size_t left = digits % 4;
  if (left == 1 || padding != (4 - left) % 4) return std::nullopt;
  if (left >= 2) out += static_cast<char>(left == 2 ? bits >> 4 : bits >> 10);
  if (left == 3) out += static_cast<char>(bits >> 2);
  return out;
}

}  // namespace quillcast::platform
