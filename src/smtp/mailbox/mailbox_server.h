// The built-in mailbox: an SMTP server that keeps what it is handed as files, for practice, demonstrations and tests.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/result.h"
#include "smtp/mailbox/server_session.h"

namespace quillcast::smtp {

// One message that was kept.
struct MailboxMessage {
  const std::filesystem::path& file;  // empty when the mailbox discards
  const ReceivedEnvelope& envelope;
  std::uint64_t size;
};

// As they stand here: for this computer alone, without TLS and sign-in, and nothing is kept.
struct MailboxOptions {
  std::string listen = "127.0.0.1:2525";       // "[::1]:2525"; port 0 takes a free one
  std::optional<std::filesystem::path> store;  // nothing: messages are taken and thrown away
  ServerOptions session;                       // has_certificate is set by the two files below
  std::filesystem::path certificate;           // PEM; both or none
  std::filesystem::path key;
  bool sign_in_in_clear = false;  // without a certificate, also from other computers
  std::size_t connection_limit = 100;
  // A client that takes longer for a step is closed: for a command and its replies, or 64 KiB of a message.
  std::chrono::seconds timeout{300};
  std::uint64_t count = 0;                          // stop after so many messages; 0: never
  std::function<void(const MailboxMessage&)> kept;  // called before the client gets its 250, by the thread in Run
};

// All connections on the thread that calls Run. Known limits: one beyond `connection_limit` hears 421 and is closed;
// when the system has no descriptor left, none is taken for a second.
class MailboxServer {
 public:
  // Listens from here on; nobody is answered before Run. The clock must outlive the server. Fails with kUsage where
  // passwords would come in clear from other computers, unless the options say that they may.
  static Result<MailboxServer> Listen(MailboxOptions options, const platform::Clock& clock);

  MailboxServer(MailboxServer&&) noexcept;
  MailboxServer& operator=(MailboxServer&&) noexcept;
  ~MailboxServer();

  // "127.0.0.1:2525", with the port that was really taken.
  const std::string& address() const;

  // Serves until the token says stop or `count` is reached: then what was answered goes out, every client is told 421,
  // and those that do not take it within two seconds are cut off. Returns how many messages were kept.
  Result<std::uint64_t> Run(const platform::CancelToken& cancel);

 private:
  class Loop;
  explicit MailboxServer(std::unique_ptr<Loop> loop);
  std::unique_ptr<Loop> loop_;
};

}  // namespace quillcast::smtp
