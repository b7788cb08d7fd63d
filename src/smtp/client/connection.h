// One connection of the client: a session and the stream under it, and what moves bytes between them.
#pragma once

#include <array>
#include <optional>

#include "net/stream.h"
#include "smtp/client/client_session.h"
#include "smtp/client/surroundings.h"

namespace quillcast::smtp {

// Nothing here waits but Wait: Write and Read do what can be done now, WaitsFor and Until say what is waited for then,
// and TimePassed gives up where that has not come.
class Connection {
 public:
  // `lane`: its place among the connections of the client.
  Connection(Surroundings& around, net::Stream stream, std::string host, bool encrypted, std::size_t lane);

  // Greeted and signed in, so that messages may be submitted.
  bool ready() const { return ready_; }
  bool WantsMessage() { return !quits_ && session_.WantsMessage(); }
  void Submit(Job& job);
  // Messages that nothing was sent of yet are left.
  void Withdraw();
  // Says QUIT, whose reply may take so long.
  void Quit(std::chrono::seconds longest, platform::Stop gives_up_at = platform::Stop::kAbandon);
  // It is of no more use: the person gives up what is under way, or the system refuses to wait.
  void GiveUp(const Error& error);

  void Write();
  void Read();
  pollfd WaitsFor() const { return stream_.WaitsFor(blocked_); }
  net::Deadline Until(platform::Instant now);
  void TimePassed(platform::Instant now);

  // Writes what can be written, then waits for replies once and takes them, until `back` at most: the fewest calls of
  // the system, for a connection that is alone. While it is not idle.
  void Wait(const net::Deadline& back);

  // Whether the server has closed it, or said anything, while there was nothing to say; then it is of no more use.
  bool ClosedMeanwhile();
  bool closed() const { return session_.closed(); }
  // Why it is.
  const Outcome& end() const { return end_; }
  // Whether it has served all the messages that it can, and another connection may serve more.
  bool used_up() const { return session_.UsedUp() && session_.Idle(); }
  // Whether the server took none, because there are others already; and whether it takes some.
  bool crowded() const { return session_.crowded(); }
  bool accepted() const { return session_.accepted(); }
  bool quits() const { return quits_; }
  bool idle() const { return session_.Idle(); }
  std::size_t in_flight() const { return session_.in_flight(); }

 private:
  bool WriteAll();
  void ReadAll();
  bool Take(const Result<std::optional<std::size_t>>& count);
  void TakeAsMuchAsThereIs(const Result<std::optional<std::size_t>>& count);
  void EndWait();
  void End(const Error& error);
  void TellProgress();
  void TellLine(const Event& event);
  void TellWatch(const Event& event);
  void TakeEvents();
  void BeginTls();
  void ShakeHands();
  void TellOfHandshake();

  Surroundings& around_;
  net::Stream stream_;
  std::string host_;
  const std::size_t lane_;
  ClientSession session_;
  platform::Stop gives_up_at_ = platform::Stop::kAbandon;
  std::chrono::seconds longest_step_;
  std::uint64_t step_;    // the one that `deadline_` belongs to
  bool listens_ = false;  // in it
  net::Deadline deadline_ = net::Deadline::Never();
  std::optional<platform::Instant> waits_since_;
  bool blocked_ = false;       // the server does not take all of it now
  bool shakes_hands_ = false;  // the handshake of TLS is under way
  bool ready_ = false;
  bool quits_ = false;
  Outcome end_;
  std::uint64_t told_ = 0;  // octets of the message under way
  std::array<char, std::size_t{16} * 1024> buffer_;
};

// The outcome that an error of net/ comes to in the middle of a session, which says itself what it waited for.
Outcome OutcomeOf(const Error& error);

}  // namespace quillcast::smtp
