// The wire of a session: bytes in, bytes out, and what the server owes.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "smtp/client/body_writer.h"
#include "smtp/client/reply_meaning.h"
#include "smtp/client/reply_reader.h"
#include "smtp/client/reused_queue.h"
#include "smtp/client/session_events.h"
#include "smtp/sasl/secret_line.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {

// Bytes are made only here, and only of lines that cannot hold a line end and of a message's body; each line that goes
// out or comes in is told as an event.
class Wire {
 public:
  // `events` must outlive it. The server's greeting is awaited from the start.
  explicit Wire(SessionEvents& events) : events_(events) { Await(Awaited::kGreeting, 0); }
  ~Wire() { platform::Wipe(out_); }
  Wire(const Wire&) = delete;
  Wire& operator=(const Wire&) = delete;

  // --- out ---

  // A command, whose reply is awaited. `place` is the line's, see Event.
  void Send(Awaited reply, const SmtpLine& line, std::size_t place = 0);
  void SendSecret(Awaited reply, const SecretLine& line);
  // The end of a message is awaited from its first byte on: a server may refuse a message while it comes.
  void AwaitEnd() { Await(Awaited::kEndOfData, kNotMade); }
  // The same after a command that the message follows without a reply in between: its reply is the message's.
  void AwaitEndOfLast() { awaited_.back().end = kNotMade; }
  // The next bytes of the message; fails as BodyWriter::Fill does.
  Result<void> Fill(BodyWriter& body) { return body.Fill(out_, out_at_ + kBlock); }
  // The last byte of the message is made. Gives where it is among the bytes of this connection.
  std::uint64_t EndMade() { return awaited_.back().end = made(); }

  // Whether more should be made: no more than a block is kept ready to be written.
  bool HasRoom() const { return out_.size() - out_at_ < kBlock; }
  // What is to be written; valid until something is made or sent.
  std::string_view Unsent() const { return std::string_view(out_).substr(out_at_); }
  // Its first `count` bytes are out.
  void Sent(std::size_t count);
  // How many bytes of this connection are.
  std::uint64_t sent() const { return base_ + out_at_; }
  // Frees the room of what is out; Unsent() is then another view.
  void Compact();
  // Nothing more goes out.
  void Close();

  // --- in ---

  void Receive(std::string_view bytes) { reader_.Add(bytes); }
  ReplyReader::Step NextReply() { return reader_.Next(); }
  const ServerReply& reply() const { return reader_.reply(); }
  const std::string& complaint() const { return reader_.complaint(); }
  const std::string& odd() const { return reader_.odd(); }
  // Whether more has come than the replies that were given out.
  bool HasMore() const { return reader_.HasMore(); }
  std::string More() const { return reader_.More(); }
  // The reply's lines, or `masked` in their place, are told.
  void TellReply();
  void TellReply(std::string_view masked) { events_.Server(masked); }

  // --- what is owed ---

  bool awaits() const { return !awaited_.empty(); }
  // The oldest; only while awaits().
  Awaited awaited() const { return awaited_.front().what; }
  bool Awaits(Awaited what) const { return awaits() && awaited() == what; }
  // Whether the server may answer: it has all of what it is to answer.
  bool ReplyIsDue() const { return awaits() && awaited_.front().end <= sent(); }
  void Answered() { awaited_.Pop(); }
  // What the server has to do next, where it is not a handshake.
  Awaited Due() const { return ReplyIsDue() ? awaited() : Awaited::kBlock; }

  // A number that changes when the server has done what it was waited for: answered a command, or taken a block.
  std::uint64_t Step() const { return steps_ * 2 + (ReplyIsDue() ? 1 : 0); }
  void CountReply() { ++steps_; }

 private:
  // As much as is kept ready to be written. The server has to take each such block within the time of a step.
  static constexpr std::size_t kBlock = std::size_t{64} * 1024;
  static constexpr std::uint64_t kNotMade = std::numeric_limits<std::uint64_t>::max();

  struct Debt {
    Awaited what = Awaited::kGreeting;
    std::uint64_t end = 0;  // where the last byte that it answers is among the bytes of this connection
  };

  void Await(Awaited what, std::uint64_t end) { awaited_.Push() = {what, end}; }
  std::uint64_t made() const { return base_ + out_.size(); }

  SessionEvents& events_;
  std::string out_;
  std::size_t out_at_ = 0;  // what lies before is out
  std::uint64_t base_ = 0;  // how many bytes of this connection were before out_
  bool out_secret_ = false;
  ReplyReader reader_;
  ReusedQueue<Debt> awaited_;  // oldest first
  std::uint64_t steps_ = 0;
};

}  // namespace quillcast::smtp
