// What happened on the sockets of a channel of c-ares, whose own results tell little of it.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

struct ares_channeldata;

namespace quillcast::net {

// Opens, reads and writes the channel's sockets, and remembers what tells a server that is not there from one that is
// silent and from one that says what nobody asked. It outlives the channel.
class SocketWatch {
 public:
  // From now on the channel's sockets are opened here.
  void Attach(ares_channeldata* channel);

  // Begins anew: what comes late for questions of before is then for nobody.
  void Forget();

  // errno of the last call that failed for good; 0 while none did.
  int error_number() const { return error_number_; }
  // The code of the last reply that says a server could not or would not answer (RFC 1035 4.1.1); 0 while none did. Up
  // to 5 the library passed it over for the next server, above it took it for an answer without records.
  unsigned failure_code() const { return failure_code_; }
  // Datagrams so far that belong to no question that was asked, or cannot be read.
  std::uint64_t strays() const { return strays_; }

  // For the library's calls; `error` is what a call of the system left in errno.
  void NoteError(int error);
  void NoteSent(std::string_view datagram);
  void NoteRead(std::string_view message, bool is_datagram);

 private:
  int error_number_ = 0;
  unsigned failure_code_ = 0;
  std::uint64_t strays_ = 0;
  std::set<std::string, std::less<>> asked_ = {};
};

}  // namespace quillcast::net
