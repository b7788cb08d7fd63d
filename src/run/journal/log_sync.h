// Makes what a run committed durable while the run goes on: a thread that syncs the write-ahead log, and from time to
// time takes what is in the log into the file.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/file.h"
#include "run/journal/journal_file.h"

namespace quillcast::run {

class LogSync {
 public:
  // The log is there: somebody has the file open and has written.
  static Result<std::unique_ptr<LogSync>> Start(const JournalPlace& place);
  // Waits for what is under way.
  ~LogSync();
  LogSync(const LogSync&) = delete;
  LogSync& operator=(const LogSync&) = delete;

  // Commits are counted by the caller, from 1. Everything up to this one is to become durable.
  void Ask(std::int64_t commit);
  // Until it is. Fails, from the first failure on, as the disk does.
  Result<void> Wait(std::int64_t commit);
  // The log has grown long.
  void Shorten();

 private:
  LogSync(JournalPlace place, platform::UniqueFd log);
  void Work();

  JournalPlace place_;
  platform::UniqueFd log_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::int64_t asked_ = 0;
  std::int64_t durable_ = 0;
  bool shorten_ = false;
  bool ends_ = false;
  std::optional<Error> failed_;
  std::thread thread_;  // the last: it uses all of them
};

}  // namespace quillcast::run
