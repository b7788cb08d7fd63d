// One connection of the client: a session and the stream under it, and the loop that moves bytes between them.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>

#include "net/stream.h"
#include "smtp/client/client_options.h"
#include "smtp/client/client_session.h"
#include "smtp/client/connection_watch.h"
#include "smtp/client/job_queue.h"

namespace quillcast::smtp {

// What the connections of one client share.
struct Surroundings {
  const ClientOptions& options;
  const platform::Clock& clock;
  const platform::CancelToken& cancel;
  SendWindow& window;
  JobQueue& jobs;
  std::function<Result<net::TlsContext*>()> tls;  // made when it is first needed: reading the authorities takes long
  JobSource* source = nullptr;
  ConnectionWatch* watch = nullptr;              // null where nobody looks on
  net::Deadline until = net::Deadline::Never();  // for every step together
};

class Connection {
 public:
  Connection(const Surroundings& around, net::Stream stream, std::string host, bool encrypted);

  // Greets and signs in. kSuccess, or why not; the connection is then closed.
  Outcome Open();
  // Whether a message should be submitted now, if there is one.
  bool WantsMessage() { return session_.WantsMessage(); }
  void Submit(Job& job);
  // Messages that nothing was sent of yet get this outcome.
  void Withdraw(const Outcome& why);
  // Writes what can be written, then waits for replies once and takes them. `back`: until then at most.
  void Advance(const net::Deadline& back = net::Deadline::Never());
  // While idle: waits until then, or until the server says or does something, or the person cancels.
  void Rest(const net::Deadline& back);
  // Says QUIT and waits for the reply `longest` at most, or until the person gives up.
  Outcome Quit(std::chrono::seconds longest, platform::Stop gives_up_at = platform::Stop::kAbandon);

  // Whether the server has closed it, or said anything, while there was nothing to say; then it is of no more use.
  bool ClosedMeanwhile();
  bool closed() const { return session_.closed(); }
  // Whether it has served all the messages that it can, and another connection may serve more.
  bool used_up() const { return session_.UsedUp() && session_.Idle(); }
  bool idle() const { return session_.Idle(); }

 private:
  net::Patience HandshakePatience() const;
  bool WriteAll();
  void WaitAndRead(bool blocked, const net::Deadline& back);
  Result<std::optional<std::size_t>> ReadOrShow(bool blocked, platform::Instant began, const net::Deadline& back);
  void ReadAll();
  bool Take(const Result<std::optional<std::size_t>>& count);
  void TakeEvents();
  void TellLine(const Event& event);
  void TellWatch(const Event& event);
  void StartTls();
  void TellProgress();
  void GiveUp(const Error& error);

  const Surroundings& around_;
  net::Stream stream_;
  std::string host_;
  ClientSession session_;
  platform::Stop gives_up_at_ = platform::Stop::kStop;  // until it is open; then kAbandon
  std::chrono::seconds longest_step_;
  std::uint64_t step_;  // the one that `deadline_` belongs to
  net::Deadline deadline_ = net::Deadline::Never();
  platform::Instant shown_;  // when the conversation was shown last
  std::optional<platform::Instant> waits_since_;
  bool ready_ = false;
  std::optional<Outcome> ended_;
  std::uint64_t told_ = 0;  // octets of the message under way
  std::array<char, std::size_t{16} * 1024> buffer_;
};

// The outcome that an error of net/ comes to in the middle of a session, which says itself what it waited for.
Outcome OutcomeOf(const Error& error);

}  // namespace quillcast::smtp
