#include "smtp/client/connection.h"

#include <algorithm>
#include <utility>

#include "net/resolver.h"
#include "platform/entropy.h"
#include "platform/text.h"

namespace quillcast::smtp {
namespace {

// A message's progress is told at each of so many parts of it.
constexpr std::uint64_t kProgressParts = 4;

// A server that takes longer to answer than this is not pressed for more.
constexpr std::chrono::seconds kQuick{1};

// How long a wait may be before what was said is shown, and the time between two such waits. Longer than the wait that
// takes a read one call alone.
constexpr std::chrono::milliseconds kUnshown{250};

// Short printable ASCII, which may be shown as it is.
bool IsPlain(std::string_view line) {
  return line.size() <= 200 && std::all_of(line.begin(), line.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

// The step that a command is, where it belongs to the way to a connection.
std::optional<ConnectionStep> StepOf(Awaited reply) {
  switch (reply) {
    case Awaited::kEhlo:
    case Awaited::kHelo:
      return ConnectionStep::kHello;
    case Awaited::kStartTls:
      return ConnectionStep::kStartTls;
    case Awaited::kAuth:
      return ConnectionStep::kSignIn;
    case Awaited::kQuit:
      return ConnectionStep::kQuit;
    default:
      return {};
  }
}

bool IsLate(const Result<std::optional<std::size_t>>& count) {
  return !count && count.error().failure == Failure::kTimedOut;
}

Outcome Lost(std::string reason) { return {State::kFailed, ResultCode::kConnectionLost, {}, std::move(reason)}; }

}  // namespace

Outcome OutcomeOf(const Error& error) {
  const std::string reason = InOneLine(error);
  switch (error.failure) {
    case Failure::kTimedOut:
      return {State::kFailed, ResultCode::kReplyTimeout, {}, {}};
    case Failure::kTryAgain:
      return {State::kFailed, ResultCode::kCancelled, {}, {}};
    case Failure::kNotPermitted:
    case Failure::kUnavailable:
      return {State::kFailed, ResultCode::kGreetingRefused, {}, reason};
    case Failure::kIo:
      return Lost(reason);
    default:
      return {State::kFailed, ResultCode::kException, {}, reason};
  }
}

Connection::Connection(const Surroundings& around, net::Stream stream, std::string host, bool encrypted)
    : around_(around),
      stream_(std::move(stream)),
      host_(std::move(host)),
      session_(around.options,
               {net::AddressLiteral(stream_.local().address), net::IsLoopbackHost(host_), encrypted,
                platform::RandomOctets(24), around.clock.Now()},
               around.window),
      longest_step_(around.options.timeout),
      step_(session_.Step() - 1),
      shown_(around.clock.Monotonic()) {}

net::Patience Connection::HandshakePatience() const {
  return {around_.clock, around_.cancel, gives_up_at_,
          Earlier(around_.until, net::Deadline::After(around_.clock.Monotonic(), longest_step_))};
}

void Connection::Submit(Job& job) {
  session_.Submit(job.envelope, *job.message);
  TakeEvents();
}

void Connection::Withdraw(const Outcome& why) {
  session_.Withdraw(why);
  TakeEvents();
}

void Connection::Advance(const net::Deadline& back) {
  const bool blocked = !WriteAll();
  TakeEvents();
  if (session_.closed() || session_.Idle()) return;
  WaitAndRead(blocked, back);
  TakeEvents();
}

// Nothing is owed, so neither a wait that is over nor a cancel says anything of the connection.
void Connection::Rest(const net::Deadline& back) {
  if (stream_.WaitToRead({around_.clock, around_.cancel, platform::Stop::kStop, back})) ClosedMeanwhile();
}

// False when the server does not take all of it now.
bool Connection::WriteAll() {
  for (auto bytes = session_.BytesToSend(); !bytes.empty(); bytes = session_.BytesToSend()) {
    if (around_.cancel.Requested() >= gives_up_at_) {
      session_.GiveUp({State::kFailed, ResultCode::kCancelled, {}, {}});
      return true;
    }
    const auto sent = stream_.WriteNow(bytes);
    if (!sent) {
      // A server that refuses a message half-way may say so before it closes: its word is worth more than "lost".
      if (sent.error().failure == Failure::kIo) ReadAll();
      GiveUp(sent.error());
      return true;
    }
    if (!*sent) return false;
    session_.Sent(**sent);
    TellProgress();
  }
  return true;
}

// The deadline of a step is set when it is first waited for, and holds until the server has done it: has answered,
// whole reply and all, or has taken a block. Bytes that drip, in either direction, do not move it. Replies are read
// while a write waits, so that two sides that both have much to say do not wait for each other.
void Connection::WaitAndRead(bool blocked, const net::Deadline& back) {
  const auto began = around_.clock.Monotonic();
  if (session_.Step() != step_) {
    step_ = session_.Step();
    deadline_ = Earlier(
        around_.until, net::Deadline::After(began, std::min<std::chrono::seconds>(session_.Patience(), longest_step_)));
  }
  const auto count = ReadOrShow(blocked, began, back);
  if (!waits_since_) waits_since_ = began;
  if (!count || *count || blocked) {
    around_.window.SetQuick(around_.clock.Monotonic() - *std::exchange(waits_since_, {}) < kQuick);
  }
  // A short read in clear took all that there is.
  if (Take(count) && (stream_.encrypted() || **count == buffer_.size())) ReadAll();
}

// Reads; and where the server takes its time, lets the conversation so far be shown. Once in a while, and not at each
// wait, because that costs a write. Nothing where it was time to come back before anything came.
Result<std::optional<std::size_t>> Connection::ReadOrShow(bool blocked, platform::Instant began,
                                                          const net::Deadline& back) {
  const net::Deadline last = Earlier(deadline_, back);
  const auto read = [&](const net::Deadline& until) {
    return stream_.Read(buffer_, blocked, {around_.clock, around_.cancel, gives_up_at_, until});
  };
  if (began - shown_ < kUnshown) {
    auto count = read(Earlier(last, net::Deadline::After(began, kUnshown)));
    if (!IsLate(count) || deadline_.Passed(around_.clock.Monotonic())) return count;
    if (back.Passed(around_.clock.Monotonic())) return std::optional<std::size_t>();
  }
  around_.source->Waiting();
  shown_ = around_.clock.Monotonic();
  auto count = read(last);
  if (!IsLate(count) || deadline_.Passed(around_.clock.Monotonic())) return count;
  return std::optional<std::size_t>();
}

void Connection::ReadAll() {
  while (Take(stream_.ReadNow(buffer_))) {
  }
}

// Hands on what was read into the buffer; false when there was nothing, or there will be nothing more.
bool Connection::Take(const Result<std::optional<std::size_t>>& count) {
  if (!count) {
    GiveUp(count.error());
  } else if (*count && **count == 0) {
    session_.GiveUp(Lost("The server closed the connection."));
  } else if (*count) {
    session_.Receive({buffer_.data(), **count});
    return !session_.closed();
  }
  return false;
}

void Connection::GiveUp(const Error& error) { session_.GiveUp(OutcomeOf(error)); }

void Connection::TellProgress() {
  const std::uint64_t made = session_.octets_made();
  const std::uint64_t total = session_.octets_in_all();
  if (total == 0 || made == told_ || (made > told_ && made < told_ + total / kProgressParts && made < total)) return;
  told_ = made;
  around_.source->Progress(made, total);
}

void Connection::TellLine(const Event& event) {
  const std::string printable = IsPlain(event.text) ? std::string() : platform::Printable(event.text);
  const std::string_view line = printable.empty() ? std::string_view(event.text) : printable;
  if (!around_.jobs.KeepLine(event.place, line)) around_.source->LogLine(line);
}

void Connection::TellWatch(const Event& event) {
  if (around_.watch == nullptr) return;
  if (event.kind == Event::Kind::kOffer) return around_.watch->Offered(event.text);
  if (event.kind == Event::Kind::kOddity) return around_.watch->Senseless(event.text);
  if (event.asks_for) {
    if (const auto step = StepOf(*event.asks_for)) around_.watch->Begins(*step);
  }
}

void Connection::TakeEvents() {
  while (const Event* event = session_.NextEvent()) {
    switch (event->kind) {
      case Event::Kind::kLogLine:
        TellWatch(*event);
        TellLine(*event);
        break;
      case Event::Kind::kOffer:
      case Event::Kind::kOddity:
        TellWatch(*event);
        break;
      case Event::Kind::kStartTls:
        StartTls();
        break;
      case Event::Kind::kReady:
        ready_ = true;
        around_.source->Connected(session_.capabilities());
        break;
      case Event::Kind::kOutcome:
        around_.jobs.Settle(event->outcome, event->again);
        break;
      case Event::Kind::kClosed:
        ended_ = event->outcome;
        stream_.Close();
        break;
    }
  }
}

void Connection::StartTls() {
  const auto tls = around_.tls();
  if (!tls) return GiveUp(tls.error());
  if (around_.watch != nullptr) around_.watch->Begins(ConnectionStep::kTls);
  const auto started = stream_.StartTls(**tls, host_, HandshakePatience());
  if (around_.watch != nullptr) around_.watch->Encrypted(stream_.Facts());
  if (!started) return GiveUp(started.error());
  session_.TlsStarted();
}

Outcome Connection::Open() {
  if (around_.watch != nullptr) around_.watch->Begins(ConnectionStep::kGreeting);
  while (!ready_ && !session_.closed()) Advance();
  if (session_.closed()) return ended_.value_or(Outcome{});
  gives_up_at_ = platform::Stop::kAbandon;
  return {State::kSent, ResultCode::kSuccess, {}, {}};
}

Outcome Connection::Quit(std::chrono::seconds longest, platform::Stop gives_up_at) {
  gives_up_at_ = gives_up_at;
  longest_step_ = std::min(longest_step_, longest);
  if (!session_.closed()) session_.Quit();
  while (!session_.closed()) Advance();
  return ended_.value_or(Outcome{});
}

bool Connection::ClosedMeanwhile() {
  ReadAll();
  TakeEvents();
  return session_.closed();
}

}  // namespace quillcast::smtp
