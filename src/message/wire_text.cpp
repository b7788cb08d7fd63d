#include "message/wire_text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quillcast::message {
namespace {

constexpr std::string_view kFrom = "From ";

bool HasHighBit(std::string_view bytes) {
  std::uint64_t eight = 0;
  for (; bytes.size() >= sizeof eight; bytes.remove_prefix(sizeof eight)) {
    std::memcpy(&eight, bytes.data(), sizeof eight);
    if ((eight & 0x8080808080808080) != 0) return true;
  }
  return std::any_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<std::uint8_t>(c) >= 0x80; });
}

}  // namespace

bool WireText::LineFits(std::size_t length) const { return length <= kLongestLine && start_ != kFrom; }

void WireText::Look(std::string_view bytes) {
  eight_bit_ = eight_bit_ || HasHighBit(bytes);
  while (!bytes.empty()) {
    const auto line_feed = bytes.find('\n');
    LookInsideLine(bytes.substr(0, line_feed));
    if (line_feed == std::string_view::npos) return;
    EndLine();
    bytes.remove_prefix(line_feed + 1);
  }
}

void WireText::LookInsideLine(std::string_view part) {
  if (part.empty()) return;
  const auto inside = part.substr(0, part.size() - 1);
  const bool odd = inside.find('\r') != std::string_view::npos || part.find('\0') != std::string_view::npos;
  if (after_return_ || odd) fits_ = false;
  after_return_ = part.back() == '\r';
  if (start_.size() < kFrom.size()) start_ += part.substr(0, kFrom.size() - start_.size());
  length_ += part.size();
}

void WireText::EndLine() {
  const std::size_t length = length_ - (after_return_ ? 1 : 0);
  fits_ = fits_ && after_return_ && LineFits(length);
  lines_fit_ = lines_fit_ && length <= kLongestLine;
  after_return_ = false;
  length_ = 0;
  start_.clear();
}

void WireText::Add(const WireText& other) {
  fits_ = fits_ && other.Fits();
  lines_fit_ = lines_fit_ && other.lines_fit();
  eight_bit_ = eight_bit_ || other.eight_bit_;
}

}  // namespace quillcast::message
