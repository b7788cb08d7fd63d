#include "smtp/connection.h"

#include "platform/entropy.h"
#include "platform/text.h"

namespace quillcast::smtp {
namespace {

// A message's progress is told at each of so many parts of it.
constexpr std::uint64_t kProgressParts = 4;

Outcome Lost(std::string reason) { return {State::kFailed, ResultCode::kConnectionLost, {}, std::move(reason)}; }

}  // namespace

Outcome OutcomeOf(const Error& error) {
  const std::string reason = error.remedy.empty() ? error.what : error.what + " " + error.remedy;
  switch (error.failure) {
    case Failure::kTimedOut:
      return {State::kFailed, ResultCode::kReplyTimeout, {}, "The server did not answer in time."};
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
      session_(around.options, {net::AddressLiteral(stream_.local().address), net::IsLoopback(stream_.peer().address),
                                encrypted, platform::RandomOctets(24), around.clock.Now()}),
      step_(around.options.timeout) {}

net::Patience Connection::StepPatience(std::chrono::seconds longest) const {
  return {around_.clock, around_.cancel, gives_up_at_, net::Deadline::After(around_.clock.Monotonic(), longest)};
}

// Moves bytes until `until` has a value, the session is open (where none is waited for) or over. The deadline of a
// reply is set when its command is out, and holds for the whole reply: bytes that drip in do not move it.
void Connection::Pump(const std::optional<Outcome>& until) {
  TakeEvents();
  while (!until && !session_.closed()) {
    if (!session_.BytesToSend().empty()) {
      WriteOnce();
      TakeEvents();
      continue;
    }
    const net::Patience patience = StepPatience(step_);
    do {
      ReadOnce(patience);
      TakeEvents();
    } while (!until && !session_.closed() && session_.BytesToSend().empty() && !session_.Idle());
    if (session_.Idle()) return;
  }
}

void Connection::WriteOnce() {
  const auto sent = stream_.WriteSome(session_.BytesToSend(), {}, StepPatience(step_));
  if (sent) {
    session_.Sent(*sent);
    TellProgress(session_.message_octets_taken());
    return;
  }
  // A server that refuses a message half-way may say so before it closes: its word is worth more than "lost".
  if (sent.error().failure == Failure::kIo) {
    const auto last_words = stream_.ReadNow(buffer_);
    if (last_words && last_words->value_or(0) > 0) session_.Receive({buffer_.data(), **last_words});
  }
  GiveUp(sent.error());
}

void Connection::ReadOnce(const net::Patience& patience) {
  const auto count = stream_.Read(buffer_, patience);
  if (!count) return GiveUp(count.error());
  if (*count == 0) return session_.GiveUp(Lost("The server closed the connection."));
  session_.Receive({buffer_.data(), *count});
}

void Connection::GiveUp(const Error& error) { session_.GiveUp(OutcomeOf(error)); }

void Connection::TellProgress(std::uint64_t taken) {
  if (total_ == 0 || taken < told_ + total_ / kProgressParts || taken == told_) return;
  told_ = taken;
  around_.mailing->Progress(taken, total_);
}

void Connection::TakeEvents() {
  while (auto event = session_.NextEvent()) {
    switch (event->kind) {
      case Event::Kind::kLogLine:
        around_.mailing->LogLine(platform::Printable(event->text));
        break;
      case Event::Kind::kStartTls:
        StartTls();
        break;
      case Event::Kind::kReady:
        ready_ = true;
        break;
      case Event::Kind::kOutcome:
        outcome_ = std::move(event->outcome);
        break;
      case Event::Kind::kClosed:
        ended_ = std::move(event->outcome);
        stream_.Close();
        break;
    }
  }
}

void Connection::StartTls() {
  const auto started = stream_.StartTls(*around_.tls, host_, StepPatience(step_));
  if (!started) return GiveUp(started.error());
  session_.TlsStarted();
}

Outcome Connection::Open() {
  Pump(ended_);
  if (!ready_) return ended_.value_or(Outcome{});
  gives_up_at_ = platform::Stop::kAbandon;
  return {State::kSent, ResultCode::kSuccess, {}, {}};
}

Outcome Connection::Send(Job& job) {
  outcome_.reset();
  total_ = job.envelope.size;
  told_ = 0;
  session_.Submit(job.envelope, *job.message);
  Pump(outcome_);
  Outcome outcome = outcome_.value_or(Outcome{});
  // RSET after a refusal is waited for here, so that the next message finds an idle session.
  if (!session_.closed() && !session_.Idle()) Pump(ended_);
  return outcome;
}

Outcome Connection::Quit(std::chrono::seconds longest) {
  if (session_.closed()) return ended_.value_or(Outcome{});
  step_ = std::min(step_, longest);
  session_.Quit();
  Pump(ended_);
  return ended_.value_or(Outcome{});
}

bool Connection::ClosedMeanwhile() {
  const auto count = stream_.ReadNow(buffer_);
  if (!count) {
    GiveUp(count.error());
  } else if (*count && **count == 0) {
    session_.GiveUp(Lost("The server closed the connection."));
  } else if (*count) {
    session_.Receive({buffer_.data(), **count});
  }
  TakeEvents();
  return session_.closed();
}

}  // namespace quillcast::smtp
