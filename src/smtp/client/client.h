// Sends messages over SMTP: connects, signs in, keeps the connection over many messages, tells what became of each.
#pragma once

#include <memory>

#include "platform/cancel.h"
#include "platform/clock.h"
#include "smtp/client/client_options.h"
#include "smtp/client/connection_watch.h"
#include "smtp/client/job_source.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

// Known limits: one recipient an envelope; BINARYMIME is not used, and nothing is said while no job is there
// (ARCHITECTURE.md says why).
class Client {
 public:
  // `cancel`: after kStop no new job is taken; kAbandon, or a deadline, ends the one in flight.
  Client(ClientOptions options, const platform::Clock& clock, const platform::CancelToken& cancel);
  ~Client();

  // Takes jobs until there are none left or the person cancels, then says QUIT; where none is due yet it waits, below
  // half a minute over the connection that is there, else without one. A message whose end had not gone out when the
  // connection was lost goes over a new one, once; one whose end was out has the outcome kUnknown, and is never sent
  // again. Where no connection can be had, and no other is there, the job fails with the reason, and the next job tries
  // anew.
  void Run(JobSource& source);

  // Connects, greets, starts TLS, signs in, quits. kSuccess in the outcome's code when all of it went well. `watch` is
  // told how it goes. Every step has the time that the options give it, and all of them end by `until`.
  Outcome Test(JobSource& source, ConnectionWatch* watch = nullptr,
               const net::Deadline& until = net::Deadline::Never());

 private:
  class Driver;
  std::unique_ptr<Driver> driver_;
};

}  // namespace quillcast::smtp
