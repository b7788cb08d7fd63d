// The way to a connection that takes messages: the servers of the list in their turn, and of each its name, TCP, TLS,
// the greeting and the sign-in.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "net/connect.h"
#include "net/resolver.h"
#include "smtp/client/connection.h"

namespace quillcast::smtp {

// Goes in steps that do not wait, so that who is on a connection already is not held up by one that takes its time.
class WayIn {
 public:
  WayIn(Surroundings& around, std::size_t lane) : around_(around), lane_(lane), began_(around.clock.Monotonic()) {}
  WayIn(const WayIn&) = delete;
  WayIn& operator=(const WayIn&) = delete;

  // As far as it goes now. What is waited for then: WaitFor, until Until at most.
  void GoOn();
  void WaitFor(std::vector<pollfd>& out) const;
  net::Deadline Until(platform::Instant now) const;

  // At the end of it stands a connection, or none: then `outcome` says why. That is the failure of the first server
  // that could be found, as a name that is misspelt says less than a server that refused; where none could be found, of
  // the first.
  bool done() const { return stage_ == Stage::kDone; }
  platform::Instant began() const { return began_; }
  const Outcome& outcome() const { return outcome_; }
  std::unique_ptr<Connection> TakeConnection() { return std::move(connection_); }

 private:
  enum class Stage { kNextServer, kName, kConnect, kTls, kSession, kDone };

  bool Step();
  void BeginServer();
  bool Find();
  bool Connect();
  bool ShakeHands();
  bool Greet();
  void Begin(Stage stage, ConnectionStep step);
  bool IsLate() const { return deadline_.Passed(around_.clock.Monotonic()); }
  void BeginSession(bool encrypted);
  bool Fail(Outcome why);
  void End();
  const Server& server() const { return around_.options.servers[server_]; }

  Surroundings& around_;
  const std::size_t lane_;
  const platform::Instant began_;
  Stage stage_ = Stage::kNextServer;
  std::size_t server_ = 0;
  std::size_t told_of_ = 0;  // whose failure outcome_ is
  Outcome outcome_{State::kFailed, ResultCode::kNoServer, {}, "No server is set up."};
  net::Deadline deadline_ = net::Deadline::Never();  // of the stage
  net::Resolver resolver_;
  std::optional<net::Connecting> connecting_;
  net::Stream stream_;
  std::unique_ptr<Connection> connection_;
};

}  // namespace quillcast::smtp
