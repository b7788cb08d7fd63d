// One client of the mailbox: its socket, its TLS, its session, and the message that it is sending.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "net/event_loop.h"
#include "net/listener.h"
#include "net/server_tls.h"
#include "smtp/mailbox/mailbox_server.h"
#include "smtp/mailbox/mailbox_store.h"
#include "smtp/mailbox/server_session.h"

namespace quillcast::smtp {

// What all connections of one mailbox share.
struct Mailbox {
  MailboxOptions options;
  std::optional<MailboxStore> store;
  std::optional<net::ServerTls> tls;
  std::uint64_t kept = 0;

  // Never where no count was set.
  bool IsFull() const { return options.count > 0 && kept >= options.count; }
};

// Hands a session's messages to the store, or to nobody.
class MailboxSink final : public MessageSink {
 public:
  // `mailbox` must outlive it; a message that is kept counts there.
  explicit MailboxSink(Mailbox& mailbox);

  void Begin() override { size_ = 0; }
  Result<void> Write(std::string_view content) override;
  Result<std::string> Keep(const ReceivedEnvelope& envelope) override;
  void Drop() override;

 private:
  Mailbox& mailbox_;
  std::optional<IncomingMessage> incoming_;  // nothing when the mailbox discards
  std::uint64_t size_ = 0;
};

// Driven by the loop of MailboxServer: Read or Write as interest() asks, then state() says whether it goes on. Nothing
// here waits.
class MailboxConnection {
 public:
  // kLingering: all is said; what the client still sends is read and thrown away until it closes, because closing
  // before would take the last reply away from it.
  enum class State { kOpen, kLingering, kClosed };

  // `mailbox` must outlive it. The greeting goes out with the first Write.
  MailboxConnection(net::Listener::Accepted accepted, Mailbox& mailbox);
  MailboxConnection(const MailboxConnection&) = delete;
  MailboxConnection& operator=(const MailboxConnection&) = delete;

  // Sends what waits, as far as the socket takes it.
  void Write();
  // Takes what is there, up to the size of `buffer`, and answers.
  void Read(std::span<char> buffer);
  // Says 421 and goes no further.
  void Shutdown(std::string_view why);

  State state() const { return state_; }
  // See ServerSession.
  std::uint64_t Step() const { return session_.Step(); }
  // A client that does not take its replies is not read from.
  net::Interest interest() const { return blocked_ ? net::Interest::kWrite : net::Interest::kRead; }
  int fd() const { return fd_.get(); }

 private:
  void TakeBytes(std::string_view wire);
  bool SendAll();
  bool SendPlain();
  bool SendTls();
  std::size_t SendSome(std::string_view bytes);
  void StartTls();
  void EndSaying();

  platform::UniqueFd fd_;
  ServerPeer peer_;
  Mailbox& mailbox_;
  MailboxSink sink_;
  ServerSession session_;
  std::optional<net::ServerTlsStream> tls_;
  std::string clear_;  // what was decrypted last
  std::string wire_;   // encrypted and not sent yet
  State state_ = State::kOpen;
  bool blocked_ = false;
  bool broken_ = false;  // the other side is gone, or its TLS makes no sense: nothing more can be said
};

}  // namespace quillcast::smtp
