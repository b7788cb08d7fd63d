#include "smtp/mailbox/mailbox_connection.h"

#include <fmt/format.h>
#include <sys/socket.h>

#include <cerrno>

#include "platform/entropy.h"

namespace quillcast::smtp {

MailboxSink::MailboxSink(Mailbox& mailbox) : mailbox_(mailbox) {
  if (mailbox.store) incoming_.emplace(*mailbox.store);
}

Result<void> MailboxSink::Write(std::string_view content) {
  size_ += content.size();
  return incoming_ ? incoming_->Write(content) : Result<void>();
}

Result<std::string> MailboxSink::Keep(const ReceivedEnvelope& envelope) {
  if (mailbox_.IsFull()) return Error{Failure::kTryAgain, "The mailbox has all the messages that it waited for."};
  std::filesystem::path file;
  if (incoming_) {
    auto kept = incoming_->Keep(envelope);
    if (!kept) return kept.error();
    file = *std::move(kept);
  }
  ++mailbox_.kept;
  if (mailbox_.options.kept) mailbox_.options.kept({file, envelope, size_});
  return incoming_ ? "Kept as " + file.filename().string() : std::string("Taken and thrown away");
}

void MailboxSink::Drop() {
  if (incoming_) incoming_->Drop();
}

MailboxConnection::MailboxConnection(net::Listener::Accepted accepted, Mailbox& mailbox)
    : fd_(std::move(accepted.fd)),
      peer_{std::move(accepted.peer), accepted.loopback, platform::RandomOctets(24)},
      mailbox_(mailbox),
      sink_(mailbox),
      session_(mailbox.options.session, peer_, sink_) {}

void MailboxConnection::Read(std::span<char> buffer) {
  const ssize_t got = ::recv(fd_.get(), buffer.data(), buffer.size(), 0);
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (got <= 0) {
    state_ = State::kClosed;
    return;
  }
  if (state_ != State::kOpen) return;
  TakeBytes({buffer.data(), static_cast<std::size_t>(got)});
  Write();
}

void MailboxConnection::TakeBytes(std::string_view wire) {
  if (!tls_) return session_.Receive(wire);
  clear_.clear();
  broken_ = !tls_->Receive(wire, clear_);
  session_.Receive(clear_);
}

void MailboxConnection::Write() {
  if (state_ != State::kOpen) return;
  blocked_ = !SendAll();
  if (blocked_ || state_ == State::kClosed) return;
  const auto next = session_.WhatNext();
  if (next == ServerSession::Next::kStartTls) StartTls();
  if (next == ServerSession::Next::kClose || broken_) EndSaying();
}

void MailboxConnection::Shutdown(std::string_view why) {
  session_.Shutdown(why);
  Write();
}

bool MailboxConnection::SendAll() { return tls_ ? SendTls() : SendPlain(); }

bool MailboxConnection::SendPlain() {
  session_.Sent(SendSome(session_.BytesToSend()));
  return session_.BytesToSend().empty();
}

bool MailboxConnection::SendTls() {
  const auto clear = session_.BytesToSend();
  if (!clear.empty() && tls_->Send(clear)) session_.Sent(clear.size());
  if (session_.WhatNext() == ServerSession::Next::kClose) tls_->Finish();
  tls_->TakeOutput(wire_);
  wire_.erase(0, SendSome(wire_));
  return wire_.empty();
}

// How many octets the socket took. A connection that is gone takes all, and is closed.
std::size_t MailboxConnection::SendSome(std::string_view bytes) {
  if (bytes.empty()) return 0;
  const ssize_t sent = ::send(fd_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (sent >= 0) return static_cast<std::size_t>(sent);
  if (errno == EAGAIN || errno == EINTR) return 0;
  state_ = State::kClosed;
  return bytes.size();
}

void MailboxConnection::StartTls() {
  auto stream = net::ServerTlsStream::Create(*mailbox_.tls);
  if (!stream) return EndSaying();
  tls_.emplace(*std::move(stream));
  session_.TlsStarted();
}

// After QUIT nothing more comes, and the socket can be closed at once.
void MailboxConnection::EndSaying() {
  if (session_.ended_by_quit() || ::shutdown(fd_.get(), SHUT_WR) != 0) {
    state_ = State::kClosed;
  } else {
    state_ = State::kLingering;
  }
}

}  // namespace quillcast::smtp
