#include "smtp/mailbox/running_mailbox.h"

namespace quillcast::smtp {

Result<std::unique_ptr<RunningMailbox>> RunningMailbox::Start(MailboxOptions options, const platform::Clock& clock) {
  if (options.listen == MailboxOptions().listen) options.listen = "127.0.0.1:0";
  auto server = MailboxServer::Listen(std::move(options), clock);
  if (!server) return server.error();
  return std::unique_ptr<RunningMailbox>(new RunningMailbox(std::move(*server)));
}

RunningMailbox::RunningMailbox(MailboxServer server)
    : server_(std::move(server)), thread_([this] { kept_ = server_.Run(stop_); }) {}

Result<std::uint64_t> RunningMailbox::Wait() {
  if (thread_.joinable()) thread_.join();
  return kept_;
}

Result<std::uint64_t> RunningMailbox::Stop() {
  stop_.Request();
  return Wait();
}

}  // namespace quillcast::smtp
