// The threading modes of the mail component, one for each protocol: a small dialog of its own, three radio buttons
// each.
#pragma once

#include <array>
#include <string_view>

#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::account {

// In the order of the radio buttons.
enum class ThreadMode { kNo, kSingle, kSecond };
inline constexpr std::array<std::string_view, 3> kThreadModes = {"No", "Single", "Second"};

// In the order of the dialog's groups.
enum class ThreadProtocol { kSmtp, kPop3, kImap4 };
inline constexpr std::array<std::string_view, 3> kThreadSections = {"SMTP-Thread", "POP3-Thread", "IMAP4-Thread"};

// What there is to say of them until a run has threads to choose from.
inline constexpr std::string_view kThreadModesNote =
    "The modes are kept, and have no effect yet: messages are made and sent on one thread.";

// All three, read and written together; "Second" where nothing is stored.
class ThreadModes {
 public:
  // "No" and "Single" to the letter; anything else, or nothing, is "Second".
  static Result<ThreadModes> Load(const profile::SettingsStore& store);
  Result<void> Save(profile::SettingsStore& store) const;

  ThreadMode operator[](ThreadProtocol protocol) const { return modes_[static_cast<std::size_t>(protocol)]; }
  void Set(ThreadProtocol protocol, ThreadMode mode) { modes_[static_cast<std::size_t>(protocol)] = mode; }

 private:
  std::array<ThreadMode, 3> modes_ = {ThreadMode::kSecond, ThreadMode::kSecond, ThreadMode::kSecond};
};

constexpr std::string_view Name(ThreadMode mode) { return kThreadModes[static_cast<std::size_t>(mode)]; }

// The mode with this name, to the letter; "Second" for any other text.
ThreadMode ThreadModeFrom(std::string_view stored);

// What the mail component takes for the mode: 2, 0, 1.
int ComponentValue(ThreadMode mode);

}  // namespace quillcast::account
