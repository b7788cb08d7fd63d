#include "profile/start_message.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::profile {
namespace {

// Each argument ends in a NUL, and the message in an empty one.
constexpr std::string_view kBegin = "quillcast start 1\n";

bool IsArgument(std::string_view text) {
  const bool is_known = text.starts_with('/') || platform::StartsWithIgnoringAsciiCase(text, "mailto:");
  return is_known && text.find('\0') == std::string_view::npos;
}

}  // namespace

std::optional<std::string> WriteStartMessage(std::span<const std::string> arguments) {
  if (arguments.size() > kMostArguments || !std::all_of(arguments.begin(), arguments.end(), IsArgument)) return {};
  std::string bytes(kBegin);
  for (const auto& argument : arguments) bytes.append(argument).push_back('\0');
  bytes.push_back('\0');
  if (bytes.size() > kLargestStart) return {};
  return bytes;
}

StartMessage ReadStartMessage(std::string_view bytes) {
  if (bytes.size() > kLargestStart) return {};
  if (bytes.substr(0, kBegin.size()) != kBegin.substr(0, bytes.size())) return {};
  bytes.remove_prefix(std::min(bytes.size(), kBegin.size()));
  StartMessage message{StartMessageState::kIncomplete};
  for (std::size_t end = bytes.find('\0'); end != std::string_view::npos; end = bytes.find('\0')) {
    const std::string_view argument = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    if (argument.empty()) {
      if (bytes.empty()) message.state = StartMessageState::kComplete;
      return bytes.empty() ? message : StartMessage();
    }
    if (!IsArgument(argument) || message.arguments.size() == kMostArguments) return {};
    message.arguments.emplace_back(argument);
  }
  return message;
}

}  // namespace quillcast::profile
