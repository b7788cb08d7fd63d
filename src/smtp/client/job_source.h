// Where a client takes its messages from, and whom it tells what became of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/clock.h"
#include "smtp/capabilities.h"
#include "smtp/envelope.h"
#include "smtp/message_source.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

// One message on its way.
struct Job {
  Envelope envelope;
  MessageSource* message = nullptr;
  std::int64_t position = 0;  // in the list that it comes from, for whoever names it; no order is read from it
};

// Whether one that waits may go now: it may; it may not, and others may; nobody may.
enum class Passage { kFree, kHeld, kAllHeld };

// All calls come from the thread that called Client::Run.
class JobSource {
 public:
  virtual ~JobSource() = default;
  // The next message, nullptr when there is none now. The job stays where it is until Finished has been called for it,
  // its message until Decided; with several messages in flight more than one is out at a time.
  virtual Job* NextJob() = 0;
  // Asked right after NextJob had none, or MayGo let nobody go: the moment of Clock::Monotonic from which there may be
  // one, of all who were asked about since it was asked last. It need not be kept; nothing where there is none any
  // more. All three are asked again once an outcome was told, and twice a second while the moment is waited for; so
  // whoever does not know it names one that is far.
  virtual std::optional<platform::Instant> NextDue() { return {}; }
  // From the next CaughtUp on the message may be out. A second time where it goes over another connection.
  virtual void GoesOut(Job& /*job*/) {}
  // It is not out after all: its connection is lost or takes no more, and nothing that a server could have taken it by
  // had gone. It waits for another one.
  virtual void ComesBack(Job& /*job*/, const Outcome& /*why*/) {}
  // Asked of those that came back, or that waited while there was no way, in the order taken, until one may be sent
  // after all: it goes right behind that. Where they are held, others go before them, new ones too; where all are,
  // nobody does.
  virtual Passage MayGo(Job& /*job*/) { return Passage::kFree; }
  // For how long somebody has let nobody go till now, in all.
  virtual platform::Duration HeldFor() { return {}; }
  // What became of it, as soon as that is known: once for each job, at the latest right before Finished.
  virtual void Decided(Job& /*job*/, const Outcome& /*outcome*/) {}
  // Called once for each job, in the order in which they were taken.
  virtual void Finished(Job& job, const Outcome& outcome) = 0;
  // Nothing of what GoesOut told has been sent, and all that the server's replies decided has been told; now more is
  // about to be sent or waited for: the time to put on disk what was told. False where that could not be done: none of
  // the messages that nothing was sent of goes out, and each is left.
  virtual bool CaughtUp() { return true; }
  // Nothing is gained by going on: the sign-in was refused three times in a row, or the sender or the session twenty
  // times, with this same outcome; or no server was reached, or let a message begin, as often. Asked again after as
  // many more. False: no further job is taken.
  virtual bool GoOn(const Outcome& /*refusal*/, int /*times*/) { return true; }
  // There is no way to a server any more: ClientOptions::network_wait has the messages wait until then, when it is
  // tried again.
  virtual void WayLost(const Outcome& /*why*/, platform::Instant /*until*/) {}
  // It was waited for as long as that says, in vain: no further job is taken, and those that wait are not tried.
  virtual void WayGivenUp(const Outcome& /*why*/) {}
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

}  // namespace quillcast::smtp
