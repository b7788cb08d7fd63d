#include "charset/charset_utf7.h"

#include <algorithm>
#include <array>

#include "platform/utf8.h"

namespace quillcast::charset {
namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<bool, 256> kDirect = [] {
  std::array<bool, 256> direct{};
  for (const char c : kDigits.substr(0, 62)) direct[static_cast<std::uint8_t>(c)] = true;
  for (const char c : std::string_view("'(),-./:? \t\r\n")) direct[static_cast<std::uint8_t>(c)] = true;
  return direct;
}();

bool IsDirect(char c) { return kDirect[static_cast<std::uint8_t>(c)]; }

bool IsHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// Puts UTF-16 together as UTF-8.
class Utf16Reader {
 public:
  explicit Utf16Reader(std::string& out) : out_(out) {}

  void Put(std::uint32_t unit) {
    if (high_ != 0 && IsLowSurrogate(unit)) {
      platform::AppendUtf8(out_, 0x10000 + ((high_ - 0xD800) << 10) + (unit - 0xDC00));
      high_ = 0;
      return;
    }
    Finish();
    if (IsHighSurrogate(unit)) {
      high_ = unit;
    } else {
      platform::AppendUtf8(out_, IsLowSurrogate(unit) ? platform::kReplacement : unit);
    }
  }
  void Finish() {
    if (high_ != 0) platform::AppendUtf8(out_, platform::kReplacement);
    high_ = 0;
  }

 private:
  std::string& out_;
  std::uint32_t high_ = 0;  // waits for its partner
};

// Reads what stands behind a "+" and returns its length.
std::size_t ReadShifted(std::string_view bytes, std::string& out) {
  Utf16Reader units(out);
  std::uint32_t bits = 0;
  int bit_count = 0;
  std::size_t at = 0;
  for (; at < bytes.size(); ++at) {
    const std::size_t digit = kDigits.find(bytes[at]);
    if (digit == std::string_view::npos) break;
    bits = (bits << 6 | static_cast<std::uint32_t>(digit)) & 0xFFFFFF;
    bit_count += 6;
    if (bit_count < 16) continue;
    bit_count -= 16;
    units.Put(bits >> bit_count & 0xFFFF);
  }
  units.Finish();
  const bool closed = at < bytes.size() && bytes[at] == '-';
  if (closed && at == 0) out += '+';
  return closed ? at + 1 : at;
}

}  // namespace

std::size_t Utf7Writer::DirectRun(std::string_view utf8) {
  return static_cast<std::size_t>(std::ranges::find_if_not(utf8, IsDirect) - utf8.begin());
}

void Utf7Writer::PutDirect(std::string_view ascii) {
  Finish();
  out_ += ascii;
}

bool Utf7Writer::Put(char32_t code) {
  if (code == '+' && !shifted_) {
    out_ += "+-";
    return true;
  }
  if (!shifted_) out_ += '+';
  shifted_ = true;
  if (code < 0x10000) {
    PutUnit(code);
  } else {
    PutUnit(0xD800 + ((code - 0x10000) >> 10));
    PutUnit(0xDC00 + ((code - 0x10000) & 0x3FF));
  }
  return true;
}

void Utf7Writer::PutUnit(std::uint32_t unit) {
  bits_ = bits_ << 16 | unit;
  for (bit_count_ += 16; bit_count_ >= 6;) {
    bit_count_ -= 6;
    out_ += kDigits[bits_ >> bit_count_ & 63];
  }
}

void Utf7Writer::Finish() {
  if (!shifted_) return;
  if (bit_count_ > 0) out_ += kDigits[bits_ << (6 - bit_count_) & 63];
  out_ += '-';
  shifted_ = false;
  bits_ = 0;
  bit_count_ = 0;
}

std::string DecodeUtf7(std::string_view bytes) {
  std::string out;
  while (!bytes.empty()) {
    const std::size_t plain = std::min(bytes.find('+'), bytes.size());
    for (const char c : bytes.substr(0, plain)) {
      platform::AppendUtf8(out,
                           static_cast<std::uint8_t>(c) < 0x80 ? static_cast<char32_t>(c) : platform::kReplacement);
    }
    bytes.remove_prefix(plain);
    if (!bytes.empty()) bytes.remove_prefix(1 + ReadShifted(bytes.substr(1), out));
  }
  return out;
}

}  // namespace quillcast::charset
