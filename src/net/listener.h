// A listening TCP socket on an address that is given as numbers.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "platform/result.h"

namespace quillcast::net {

// Whether "127.0.0.1:25", "[::1]:25" or "[::ffff:127.0.0.1]:25" names this machine alone. False for what is no address.
bool IsLoopbackAddress(std::string_view address_and_port);

// One address, given as numbers; no name is looked up. It stops listening at the end of its life, and the connections
// that were taken go on.
class Listener {
 public:
  // One connection that came in. Its descriptor does not block.
  struct Accepted {
    platform::UniqueFd fd;
    std::string peer;  // "127.0.0.1:54321", "[::1]:54321"
    bool loopback;
  };

  // "127.0.0.1:2525" or "[::1]:2525"; port 0 takes a free one. Fails with kUsage for what is no such address, with
  // kUnavailable when it is taken and kNotPermitted when the system forbids it.
  static Result<Listener> Open(std::string_view address_and_port);

  // Nothing when nobody is waiting. Fails when the system has no descriptor left for one who is.
  Result<std::optional<Accepted>> Accept();

  // For an EventLoop: readable when somebody waits for Accept.
  int fd() const { return fd_.get(); }
  // With the port that was really taken.
  const std::string& address() const { return address_; }

 private:
  Listener(platform::UniqueFd fd, std::string address) : fd_(std::move(fd)), address_(std::move(address)) {}

  platform::UniqueFd fd_;
  std::string address_;
};

}  // namespace quillcast::net
