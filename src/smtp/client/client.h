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
#include "smtp/capabilities.h"
#include "smtp/envelope.h"
#include "smtp/outcome.h"
#include "smtp/secret.h"

namespace quillcast::smtp {

// kAutomatic: TLS from the first byte on port 465; else STARTTLS when it is offered, and required when credentials are
// to be sent to any host but a loopback one (net::IsLoopbackHost). Certificates and names are always verified.
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
  bool send_without_auth = false;  // where no authentication is offered; only after TLS or to a loopback host
  bool extended = false;           // use extensions even where the greeting does not say ESMTP
  // Where the server offers PIPELINING: commands that need no reply in between in one write, and with CHUNKING several
  // messages in flight (see ClientSession). Off: one command, one reply.
  bool pipeline = false;
  // Of each step: finding the host, connecting, TLS, one command and its whole reply, 64 KiB of a message. The times of
  // RFC 5321 4.5.3.2, from two minutes to ten, hold where they are shorter.
  std::chrono::seconds timeout{60};
  std::string ca_file;  // PEM file of trusted authorities; empty for those of the system
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
  // The next message, nullptr when there is none any more. The job stays where it is until Finished has been called for
  // it; with several messages in flight more than one is out at a time.
  virtual Job* NextJob() = 0;
  // Called once for each job, in the order in which they were taken.
  virtual void Finished(Job& job, const Outcome& outcome) = 0;
  // Everything that the server's replies decided so far has been told, and more is about to be sent or waited for: the
  // time to put on disk what Finished told. What is told later than it came is what waits for an earlier message that
  // goes over another connection, less than a window of messages.
  virtual void CaughtUp() {}
  // Nothing is gained by going on: the sign-in was refused three times in a row, or the sender or the session twenty
  // times, with this same outcome. Asked again after as many more. False: no further job is taken.
  virtual bool GoOn(const Outcome& /*refusal*/, int /*times*/) { return true; }
  // A connection is ready for its first message: what its server offers.
  virtual void Connected(const Capabilities& /*offered*/) {}
  // One line of the connection log, "C: " or "S: " first, without line end, safe to show, secrets masked. It belongs to
  // the next job that is finished; with several in flight, lines of the later ones wait for the earlier.
  virtual void LogLine(std::string_view line) = 0;
  // The server is being waited for: the time to show what LogLine told. A few times a second at most.
  virtual void Waiting() {}
  // How many of a message's octets are out; told a few times a message at most.
  virtual void Progress(std::uint64_t sent, std::uint64_t total) = 0;
};

class Client {
 public:
  // `cancel`: after kStop no new job is taken; kAbandon, or a deadline, ends the one in flight.
  Client(ClientOptions options, const platform::Clock& clock, const platform::CancelToken& cancel);
  ~Client();

  // Takes jobs until there are none left or the person cancels, then says QUIT. A message whose end had not gone out
  // when the connection was lost goes over a new one, once; one whose end was out has the outcome kUnknown, and is
  // never sent again. Where no connection can be had the job fails with the reason, and the next job tries anew.
  void Run(Mailing& mailing);

  // Connects, greets, starts TLS, signs in, quits. kSuccess in the outcome's code when all of it went well.
  Outcome Test(Mailing& mailing);

 private:
  class Driver;
  std::unique_ptr<Driver> driver_;
};

}  // namespace quillcast::smtp
