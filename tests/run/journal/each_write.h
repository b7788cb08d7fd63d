// Calls something before each write of the stores to their disk, when a program can be killed. For one test at a time.
#pragma once

#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <utility>

namespace quillcast::test {

class EachWrite {
 public:
  explicit EachWrite(std::function<void()> call) {
    call_ = std::move(call);
    Replace(reinterpret_cast<sqlite3_syscall_ptr>(Write));
  }
  ~EachWrite() {
    Replace(nullptr);
    call_ = nullptr;
  }
  EachWrite(const EachWrite&) = delete;
  EachWrite& operator=(const EachWrite&) = delete;

 private:
  static void Replace(sqlite3_syscall_ptr call) {
    sqlite3_vfs* disk = sqlite3_vfs_find(nullptr);
    for (const char* name : {"pwrite", "pwrite64"}) disk->xSetSystemCall(disk, name, call);
  }
  // What the call itself writes is not its concern, nor what other threads do.
  static ssize_t Write(int file, const void* bytes, size_t size, off_t at) {
    if (::gettid() == ::getpid() && !std::exchange(is_calling_, true)) {
      call_();
      is_calling_ = false;
    }
    return ::pwrite(file, bytes, size, at);
  }

  static inline std::function<void()> call_;
  static inline bool is_calling_ = false;
};

}  // namespace quillcast::test
