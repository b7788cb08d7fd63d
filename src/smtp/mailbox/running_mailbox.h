// A mailbox beside the rest of the program: for the demonstration, for practice, and for tests.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include "smtp/mailbox/mailbox_server.h"

namespace quillcast::smtp {

// Serves on a thread of its own for as long as it lives, or to the count that its options set.
class RunningMailbox {
 public:
  // On a free port of this computer, unless the options name another place. The clock must outlive it. The errors are
  // those of MailboxServer::Listen.
  static Result<std::unique_ptr<RunningMailbox>> Start(MailboxOptions options, const platform::Clock& clock);

  ~RunningMailbox() { IgnoreErrors(Stop()); }  // who sends to it then is told that nobody answers
  RunningMailbox(const RunningMailbox&) = delete;
  RunningMailbox& operator=(const RunningMailbox&) = delete;

  const std::string& address() const { return server_.address(); }  // "127.0.0.1:2525"
  // What the account has as its port.
  std::string port() const { return address().substr(address().rfind(':') + 1); }

  // How many messages it has kept, once it has ended: by its count, or by Stop.
  Result<std::uint64_t> Wait();
  Result<std::uint64_t> Stop();

 private:
  explicit RunningMailbox(MailboxServer server);

  platform::CancelToken stop_;
  MailboxServer server_;
  Result<std::uint64_t> kept_ = 0;
  std::thread thread_;
};

}  // namespace quillcast::smtp
