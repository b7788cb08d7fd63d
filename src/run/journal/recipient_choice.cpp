#include "run/journal/recipient_choice.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"

namespace quillcast::run {
namespace {

bool IsNumber(std::string_view text, std::size_t longest) {
  return !text.empty() && text.size() <= longest &&
         std::ranges::all_of(text, [](char letter) { return letter >= '0' && letter <= '9'; });
}

// "4" alone is both: every code that begins so has an enhanced code that does, if any.
bool BeginsCode(std::string_view text) {
  if (text.empty() || (text[0] != '2' && text[0] != '4' && text[0] != '5')) return false;
  const auto parts = platform::Split(text, '.');
  if (parts.size() == 1) return IsNumber(text, 3);
  return parts.size() <= 3 && parts[0].size() == 1 &&
         std::ranges::all_of(parts, [](std::string_view part) { return IsNumber(part, 3); });
}

}  // namespace

Result<std::vector<std::string>> RepliesFrom(std::string_view text) {
  std::vector<std::string> replies;
  if (platform::Trim(text).empty()) return replies;
  for (const std::string_view part : platform::Split(text, ',')) {
    const std::string_view reply = platform::Trim(part);
    if (!BeginsCode(reply)) {
      return Error{Failure::kUsage, Say("\"{}\" begins no code of a reply.", platform::Printable(reply, 60)),
                   "Write 250, 452, 45, 5.2 or 5.2.2, several parted by commas."};
    }
    replies.emplace_back(reply);
  }
  return replies;
}

bool IsAmong(const std::vector<std::string>& replies, int code, std::string_view enhanced) {
  if (replies.empty()) return true;
  const std::string digits = code == 0 ? "" : fmt::format("{:03}", code);
  return std::ranges::any_of(replies, [&](const std::string& reply) {
    if (reply.find('.') == std::string::npos) return digits.starts_with(reply);
    return enhanced.starts_with(reply) && (enhanced.size() == reply.size() || enhanced[reply.size()] == '.');
  });
}

}  // namespace quillcast::run
