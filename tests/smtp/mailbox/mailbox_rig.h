// A mailbox that serves in a thread of its own, and a plain blocking client to talk to it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "smtp/mailbox/running_mailbox.h"

namespace quillcast::smtp {

// A folder that is removed with all in it.
class TestFolder {
 public:
  TestFolder();
  ~TestFolder();
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// A mailbox on a thread of its own; a test fails where it cannot listen.
class TestMailbox {
 public:
  explicit TestMailbox(MailboxOptions options);
  const std::string& address() const { return mailbox_->address(); }
  std::uint64_t Wait() { return mailbox_->Wait().ValueOr(UINT64_MAX); }
  std::uint64_t Stop() { return mailbox_->Stop().ValueOr(UINT64_MAX); }

 private:
  platform::SystemClock clock_;
  std::unique_ptr<RunningMailbox> mailbox_;
};

// Ten seconds without an answer count as the end of the connection.
class TestClient {
 public:
  explicit TestClient(std::string_view address);
  TestClient(const TestClient&) = delete;
  TestClient& operator=(const TestClient&) = delete;
  ~TestClient();

  void Send(std::string_view bytes);
  // The next reply, all its lines, without the last line end; empty when the connection ended.
  std::string Reply();
  // Sends a line and returns its reply.
  std::string Say(std::string_view line);
  // Sends one message; returns the reply to its end. `recipient` is what follows RCPT TO:, `content` is sent as it
  // stands.
  std::string Deliver(std::string_view recipient, std::string_view content);
  int fd() const { return fd_; }

 private:
  std::string ReadLine();
  int fd_;
  std::string received_;
};

std::string ReadAll(const std::filesystem::path& file);
std::vector<std::string> NamesIn(const std::filesystem::path& folder);

}  // namespace quillcast::smtp
