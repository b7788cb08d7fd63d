// What a second start of the program hands to the first: the files and links that it was started with.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::profile {

// Bytes and arguments of one message; a longer one is refused.
inline constexpr std::size_t kLargestStart = std::size_t{256} * 1024;
inline constexpr std::size_t kMostArguments = 64;

// Each argument is the absolute path of a file or a "mailto:" address; nothing where one is neither, or there are too
// many of them.
std::optional<std::string> WriteStartMessage(std::span<const std::string> arguments);

enum class StartMessageState { kIncomplete, kComplete, kRefused };
struct StartMessage {
  StartMessageState state = StartMessageState::kRefused;
  std::vector<std::string> arguments = {};
};

// What has come so far. Refused is what no start of this program wrote, as soon as that shows.
StartMessage ReadStartMessage(std::string_view bytes);

// The answer to one that is complete; whoever gets another one, or none, was not heard.
inline constexpr std::string_view kStartTaken = "taken\n";

}  // namespace quillcast::profile
