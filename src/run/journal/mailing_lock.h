// Who has a mailing in hand: a lock on one octet of a file for each, which the system takes away from whoever dies,
// however that happens, and which holds between the connections of one process as well as between processes.
#pragma once

#include <chrono>
#include <filesystem>

#include "platform/file.h"
#include "platform/result.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

class MailingLock {
 public:
  // kTryAgain when somebody has it, of this process or another. It is held until the end of its life.
  static Result<MailingLock> Take(const std::filesystem::path& file, MailingId mailing);
  // Of no mailing, but of the file as a whole; waits so long for whoever has it.
  static Result<MailingLock> Wait(const std::filesystem::path& file, std::chrono::milliseconds patience);

 private:
  explicit MailingLock(platform::UniqueFd fd) : fd_(std::move(fd)) {}
  platform::UniqueFd fd_;
};

// Whether somebody has it. May be over by the time it is told.
Result<bool> IsInHand(const std::filesystem::path& file, MailingId mailing);

}  // namespace quillcast::run
