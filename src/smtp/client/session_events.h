// What a session tells: lines of the conversation, outcomes of messages, and its own turns.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "smtp/client/reply_meaning.h"
#include "smtp/client/reused_queue.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

struct Event {
  enum class Kind {
    kLogLine,     // `text`: "C: ..." or "S: ...", secrets masked, not yet safe to show
    kOffer,       // `text`: what the server can do, its reply to EHLO
    kOddity,      // `text`: the beginning of what is no reply
    kUnfinished,  // `text`: the beginning of a reply whose end did not come
    kInClear,     // `text`: the beginning of what came behind the 220 to STARTTLS
    kStartTls,    // make the handshake now, then call TlsStarted or GiveUp
    kReady,       // greeted and signed in, once
    kOutcome,     // of the oldest message that has none yet
    kClosed,      // the session is over; `outcome` says why. Comes last
  };
  Kind kind = Kind::kLogLine;
  std::string text;
  std::size_t place = 0;  // of a log line: how many messages without outcome come before the one that it belongs to
  std::optional<Awaited> asks_for;  // of a line of the client's: the reply that it wants
  Outcome outcome;
};

// Oldest first.
class SessionEvents {
 public:
  // A new last one. Where its kind has an outcome the caller sets what that is and in which words; it is decided,
  // unless the caller says otherwise.
  Event& Add(Event::Kind kind) {
    Event& event = events_.Push();
    event.kind = kind;
    event.text.clear();
    event.place = held_;
    event.asks_for.reset();
    event.outcome.whereabouts = Whereabouts::kDecided;
    event.outcome.has_sender = event.outcome.no_way = false;
    return event;
  }
  // What the client said (`place` as above), and what the server did.
  Event& Client(std::string_view line, std::size_t place) {
    Event& event = Add(Event::Kind::kLogLine);
    event.text.append("C: ").append(line);
    event.place = held_ + place;
    return event;
  }
  void Server(std::string_view line) { Add(Event::Kind::kLogLine).text.append("S: ").append(line); }

  // So many messages are answered, and their outcomes are yet to be told: lines belong to those behind them.
  void SetHeld(std::size_t messages) { held_ = messages; }

  // Valid until the next call of another function; nullptr when there is none.
  const Event* Next() {
    if (events_.empty()) return nullptr;
    const Event& event = events_.front();
    events_.Pop();
    return &event;
  }

 private:
  ReusedQueue<Event> events_;
  std::size_t held_ = 0;
};

// Why a session ends. `why` is told of the oldest message; its whereabouts are those of a message that is not out.
// `missing`: what was waited for and did not come, as a sentence (Meaning).
struct SessionEnd {
  Outcome why;
  std::string_view missing = {};
};

}  // namespace quillcast::smtp
