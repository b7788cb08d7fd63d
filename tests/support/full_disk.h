// A disk that is full from the n-th write of the stores on, or broken at that or at the n-th read. For one test at a
// time.
#pragma once

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace quillcast::test {

class FullDisk {
 public:
  // kFull: nothing grows any more. kBroken: one write fails. kUnreadable: one read does.
  enum class Kind { kFull, kBroken, kUnreadable };

  FullDisk(Kind kind, int good_calls) {
    state_ = {kind, good_calls, false};
    for (const auto& [name, call] : Calls()) Disk()->xSetSystemCall(Disk(), name, call);
  }
  ~FullDisk() {
    for (const auto& [name, call] : Calls()) Disk()->xSetSystemCall(Disk(), name, nullptr);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

  static bool has_failed() { return state_.has_failed; }

 private:
  struct State {
    Kind kind;
    int good_calls;
    bool has_failed;
  };
  struct Call {
    const char* name;
    sqlite3_syscall_ptr call;
  };
  static std::array<Call, 4> Calls() {
    return {{{"pwrite", reinterpret_cast<sqlite3_syscall_ptr>(Write)},
             {"pwrite64", reinterpret_cast<sqlite3_syscall_ptr>(Write)},
             {"pread", reinterpret_cast<sqlite3_syscall_ptr>(Read)},
             {"pread64", reinterpret_cast<sqlite3_syscall_ptr>(Read)}}};
  }
  static sqlite3_vfs* Disk() { return sqlite3_vfs_find(nullptr); }

  static bool Fails(int file, off_t end) {
    if (state_.kind == Kind::kUnreadable || state_.good_calls-- > 0) return false;
    struct stat status {};
    if (state_.kind == Kind::kBroken) return state_.good_calls == -1;
    return ::fstat(file, &status) == 0 && end > status.st_size;
  }
  static ssize_t Write(int file, const void* bytes, size_t size, off_t at) {
    if (!Fails(file, at + static_cast<off_t>(size))) return ::pwrite(file, bytes, size, at);
    state_.has_failed = true;
    errno = state_.kind == Kind::kFull ? ENOSPC : EIO;
    return -1;
  }
  static ssize_t Read(int file, void* bytes, size_t size, off_t at) {
    if (state_.kind != Kind::kUnreadable || state_.good_calls-- != 0) return ::pread(file, bytes, size, at);
    state_.has_failed = true;
    errno = ESTALE;  // SQLite takes EIO for damage
    return -1;
  }

  static inline State state_{};
};

}  // namespace quillcast::test
