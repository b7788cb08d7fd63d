// What lies between the TLS library and a socket: records are gathered, so that many go out in one call of the system.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace quillcast::net {

// The socket stays the caller's. Nothing waits, and SIGPIPE is never raised.
class TlsSocket {
 public:
  explicit TlsSocket(int socket) : socket_(socket) {}

  // The library's calls; they return what send(2) and recv(2) do, errno included.
  ssize_t Write(const char* bytes, std::size_t size);
  ssize_t Read(char* buffer, std::size_t size);

  // So many bytes are there to be read at most, whatever has come.
  void Allow(std::size_t bytes) { allowed_ = bytes; }

  // From here on what the library writes is gathered until it is sent.
  void Gather() { gathers_ = true; }
  // What was gathered since the last call carries so many bytes of the caller's.
  void Carry(std::size_t bytes) { records_.push_back({gathered_.size(), bytes}); }
  // Whether nothing is left to be sent; and whether anything is that carries bytes of the caller's.
  bool empty() const { return gathered_.empty(); }
  bool carries() const { return next_ < records_.size(); }
  // Sends what the system takes in one call, and adds to `out` the bytes of the caller's that are wholly out: those in
  // a record that went in part are none yet to the other side. False, and errno is that of send(2), where none goes.
  bool Send(std::size_t& out);

 private:
  struct Record {
    std::size_t end;
    std::size_t bytes;
  };

  int socket_;
  std::size_t allowed_ = std::numeric_limits<std::size_t>::max();
  bool gathers_ = false;
  std::string gathered_;
  std::size_t at_ = 0;  // what lies before is out
  std::vector<Record> records_;
  std::size_t next_ = 0;  // those before it are
};

}  // namespace quillcast::net
