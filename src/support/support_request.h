// A request for help: what a person writes, and which files go along.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/complaint.h"
#include "platform/result.h"
#include "profile/folders.h"
#include "profile/settings_store.h"

namespace quillcast::support {

inline constexpr std::array<std::string_view, 5> kTopics = {"Bug Report", "Sales Query", "Support Request",
                                                            "Criticism or Complaint", "Product Idea and Suggestion"};
inline constexpr std::string_view kUsualTopic = kTopics[2];

// What goes along only where it is asked for, in the order of the boxes. The first two name recipients.
enum class FurtherItem : std::uint8_t { kLastReport, kFirstMessage, kSessionLog };
inline constexpr std::size_t kFurtherItems = 3;
using FurtherFiles = std::array<std::optional<std::filesystem::path>, kFurtherItems>;

// "Tarnwick Quillcast Classic Edition 1.0".
std::string ProductName();

struct SupportRequest {
  std::string name;  // whom the answer goes to; as the account has it, unless it is written over
  std::string email;
  std::string product = ProductName();
  std::string topic = std::string(kUsualTopic);
  std::string priority = "Normal";
  std::string description;
  std::filesystem::path attachment;  // empty for none
  std::array<bool, kFurtherItems> further{};

  bool operator==(const SupportRequest&) const = default;
};

// One with nothing written yet. Fails where the settings cannot be read.
Result<SupportRequest> NewRequest(const profile::SettingsStore& settings);

// A longer text belongs into an attachment.
inline constexpr std::size_t kLongestDescription = std::size_t{1} * 1024 * 1024;  // bytes

// What is told where the account was never filled in: nothing can be sent then.
inline constexpr const char* kNoAccount = "Please fill out the Mail Account section in Email Manager.";

enum class SupportControl { kDescription, kEmail };
// What keeps it from being sent: the description's fault, or else the address's.
std::optional<Complaint<SupportControl>> CheckRequest(const SupportRequest& request);
// There is one, and it is not too long.
std::optional<Complaint<SupportControl>> CheckDescription(const SupportRequest& request);
// It is one address, and no more.
std::optional<Complaint<SupportControl>> CheckEmail(const SupportRequest& request);

// The last run's report and first message, and the log of this session and those before it; nothing where there is
// none.
Result<FurtherFiles> FindFurtherFiles(const profile::Folders& folders);

}  // namespace quillcast::support
