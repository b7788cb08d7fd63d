// Sends messages over SMTP: connects, signs in, keeps the connection over many messages, tells what became of each.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cancel.h"
#include "platform/clock.h"
#include "smtp/envelope.h"
#include "smtp/outcome.h"
#include "smtp/secret.h"

namespace quillcast::smtp {

// kAutomatic: TLS from the first byte on port 465; else STARTTLS when it is offered, and required when credentials are
// to be sent to any host but a loopback one. Certificates and names are always verified.
enum class Security { kAutomatic, kStartTls, kTls, kNone };

// The way of signing in that is asked for; sasl.cpp has the mechanisms that serve each.
enum class AuthMode { kLogin, kCramMd5, kNtlm };

struct Server {
  std::string host;  // a name, an IPv4 address, or an IPv6 address without brackets
  std::uint16_t port = 25;
};

struct ClientOptions {
  std::vector<Server> servers;  // tried in this order for each connection
  Security security = Security::kAutomatic;
  bool sign_in = false;
  std::string user;
  Secret password;
  AuthMode auth_mode = AuthMode::kLogin;
  bool send_without_auth = false;    // where no authentication is offered; only after TLS or to a loopback host
  bool extended = false;             // use extensions even where the greeting does not say ESMTP
  bool pipeline = false;             // accepted, and served one command and one reply at a time for now
  std::chrono::seconds timeout{60};  // of each step: finding the host, connecting, TLS, one command and its whole reply
  std::string ca_file;               // PEM file of trusted authorities; empty for those of the system
};

// One message on its way.
struct Job {
  Envelope envelope;
  MessageSource* message = nullptr;
};

// Where the client takes messages from, and whom it tells. All calls come from the thread that called Run.
class Mailing {
 public:
  virtual ~Mailing() = default;
  // The next message, nullptr when there is none. The job stays where it is until Finished has been called for it;
  // with several messages in flight more than one is out at a time.
  virtual Job* NextJob() = 0;
  // Called once for each job, in the order in which they were taken.
  virtual void Finished(Job& job, const Outcome& outcome) = 0;
  // One line of the connection log, "C: " or "S: " first, without line end, safe to show, secrets masked.
  virtual void LogLine(std::string_view line) = 0;
  // How many of a message's octets are out; told a few times a message at most.
  virtual void Progress(std::uint64_t sent, std::uint64_t total) = 0;
};

class Client {
 public:
  // `cancel`: after kStop no new job is taken; kAbandon, or a deadline, ends the one in flight.
  Client(ClientOptions options, const platform::Clock& clock, const platform::CancelToken& cancel);
  ~Client();

  // Takes jobs until there are none left or the person cancels, then says QUIT. A connection that is found closed
  // before a message's end of data went out is replaced once for that message; one lost after it makes the outcome
  // kUnknown, and the message is never sent again. Where no connection can be had the job fails with the reason, and
  // the next job tries anew.
  void Run(Mailing& mailing);

  // Connects, greets, starts TLS, signs in, quits. kSuccess in the outcome's code when all of it went well.
  Outcome Test(Mailing& mailing);

 private:
  class Driver;
  std::unique_ptr<Driver> driver_;
};

}  // namespace quillcast::smtp
