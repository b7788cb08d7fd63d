// A disk whose stores may be read and not written, whoever runs the test. For one test at a time.
#pragma once

#include <fcntl.h>
#include <sqlite3.h>

#include <cerrno>

namespace quillcast::test {

class ReadOnlyDisk {
 public:
  ReadOnlyDisk() { Disk()->xSetSystemCall(Disk(), "open", reinterpret_cast<sqlite3_syscall_ptr>(Open)); }
  ~ReadOnlyDisk() { Disk()->xSetSystemCall(Disk(), "open", nullptr); }
  ReadOnlyDisk(const ReadOnlyDisk&) = delete;
  ReadOnlyDisk& operator=(const ReadOnlyDisk&) = delete;

 private:
  static sqlite3_vfs* Disk() { return sqlite3_vfs_find(nullptr); }
  static int Open(const char* path, int flags, int mode) {
    if ((flags & O_ACCMODE) == O_RDONLY) return ::open(path, flags, mode);
    errno = EACCES;
    return -1;
  }
};

}  // namespace quillcast::test
