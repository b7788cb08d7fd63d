// What happened on the sockets of a channel of c-ares, whose own results tell little of it.
#pragma once

#include <cstddef>
#include <cstdint>

struct ares_channeldata;

namespace quillcast::net {

// Opens, reads and writes the channel's sockets, and remembers what tells a server that is not there from one that is
// silent and from one that says what nobody asked. It outlives the channel.
class SocketWatch {
 public:
  // From now on the channel's sockets are opened here.
  void Attach(ares_channeldata* channel);

  // errno of the last call that failed for good; 0 while none did.
  int error_number() const { return error_number_; }
  // The code of the last reply that the library passed over for the next server (RFC 1035 4.1.1); 0 while none was.
  unsigned passed_over_code() const { return passed_over_code_; }
  // Datagrams so far that answered no question.
  std::uint64_t unclaimed() const { return unclaimed_; }
  // The message that was read last answered a question.
  void Claim();

  // For the library's calls; `error` is what a call of the system left in errno.
  void NoteError(int error);
  void NoteRead(const std::uint8_t* message, std::size_t size, bool datagram);

 private:
  int error_number_ = 0;
  unsigned passed_over_code_ = 0;
  std::uint64_t unclaimed_ = 0;
  bool last_counts_ = false;
};

}  // namespace quillcast::net
