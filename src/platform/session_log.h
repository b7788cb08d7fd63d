// The log of a session: what went wrong and was passed over, for whoever looks for a cause later.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace quillcast::platform {

// The text with everything that looks like a mail address taken out.
std::string WithoutAddresses(std::string_view text);

// "Session.log" in the folder, 0600. All that runs on the same data writes behind one another there, a window and the
// commands beside it; at its largest size it becomes "Session.before.log". Where it cannot be written, nothing is. Any
// thread may write.
class SessionLog {
 public:
  // Hears of the failures that are passed over for as long as it lives.
  SessionLog(std::filesystem::path folder, const Clock& clock);
  SessionLog(const SessionLog&) = delete;
  SessionLog& operator=(const SessionLog&) = delete;
  ~SessionLog();

  // One line with the time, cut at 2,000 bytes; nothing when it says the same as the line before. No address comes into
  // it.
  void Write(std::string_view text);

  // Where it is in its folder.
  static std::filesystem::path FileIn(const std::filesystem::path& folder) { return folder / "Session.log"; }

  static constexpr std::uint64_t kLargest = 1024ULL * 1024;

 private:
  std::filesystem::path folder_;
  const Clock& clock_;
  std::mutex lock_;
  std::string last_;
};

}  // namespace quillcast::platform
