// One connection of the client: a session and the stream under it, and the loop that moves bytes between them.
#pragma once

#include <array>
#include <memory>
#include <optional>

#include "net/stream.h"
#include "smtp/client.h"
#include "smtp/client_session.h"

namespace quillcast::smtp {

// What the connections of one client share.
struct Surroundings {
  const ClientOptions& options;
  const platform::Clock& clock;
  const platform::CancelToken& cancel;
  net::TlsContext* tls = nullptr;
  Mailing* mailing = nullptr;
};

class Connection {
 public:
  Connection(const Surroundings& around, net::Stream stream, std::string host, bool encrypted);

  // Greets and signs in. kSuccess, or why not; the connection is then closed.
  Outcome Open();
  // Sends one message. Sets end_of_data_out().
  Outcome Send(Job& job);
  // Says QUIT and waits for the reply `longest` at most.
  Outcome Quit(std::chrono::seconds longest);

  // Whether the server has closed it, or said anything, while there was nothing to say; then it is of no more use.
  bool ClosedMeanwhile();
  bool closed() const { return session_.closed(); }
  bool end_of_data_out() const { return session_.end_of_data_out(); }

 private:
  net::Patience StepPatience(std::chrono::seconds longest) const;
  void Pump(const std::optional<Outcome>& until);
  void WriteOnce();
  void ReadOnce(const net::Patience& patience);
  void TakeEvents();
  void StartTls();
  void TellProgress(std::uint64_t total);
  void GiveUp(const Error& error);

  const Surroundings& around_;
  net::Stream stream_;
  std::string host_;
  ClientSession session_;
  platform::Stop gives_up_at_ = platform::Stop::kStop;  // until it is open; then kAbandon
  std::chrono::seconds step_;
  bool ready_ = false;
  std::optional<Outcome> outcome_;
  std::optional<Outcome> ended_;
  std::uint64_t total_ = 0;
  std::uint64_t told_ = 0;
  std::array<char, std::size_t{16} * 1024> buffer_{};
};

// The outcome that an error of net/ comes to in the middle of a session.
Outcome OutcomeOf(const Error& error);

}  // namespace quillcast::smtp
