// The disk as a loss of power leaves it: each file as it was when it was last synced, by us or by SQLite.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <random>
#include <string>

namespace quillcast::test {

// Watches the files of one folder; for one test at a time. While nobody watches, nothing waits for the disk.
class PowerCut {
 public:
  explicit PowerCut(std::filesystem::path folder);
  ~PowerCut();
  PowerCut(const PowerCut&) = delete;
  PowerCut& operator=(const PowerCut&) = delete;

  // Puts there what is left when the power goes now.
  void Leave(const std::filesystem::path& folder);
  // The same where some of what was written since has come to the disk as well, a block here and there.
  void LeaveTorn(const std::filesystem::path& folder, std::mt19937& random);
  // From the next sync on each fails.
  void Break();
  // Each sync takes until it is let go.
  void Hold();
  void LetGo();

  static int Sync(int fd);

 private:
  int Note(int fd);

  std::filesystem::path folder_;
  std::mutex mutex_;
  std::condition_variable let_go_;
  std::map<std::string, std::string> durable_;
  bool is_broken_ = false;
  bool is_held_ = false;
};

}  // namespace quillcast::test
