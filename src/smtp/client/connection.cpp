#include "smtp/client/connection.h"

#include <algorithm>
#include <utility>

#include "net/resolver.h"
#include "platform/entropy.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::smtp {
namespace {

// A message's progress is told at each of so many parts of it.
constexpr std::uint64_t kProgressParts = 4;

// A server that takes longer to answer than this is not pressed for more.
constexpr std::chrono::seconds kQuick{1};

// Short printable ASCII, which may be shown as it is.
bool IsPlain(std::string_view line) { return line.size() <= 200 && platform::PrintableRun(line) == line.size(); }

// At most so many reads in a row, of which each may be of one octet under TLS; what they said is told now and then.
constexpr int kMostReads = 10'000;
constexpr int kReadsTold = 64;

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

Connection::Connection(Surroundings& around, net::Stream stream, std::string host, bool encrypted, std::size_t lane)
    : around_(around),
      stream_(std::move(stream)),
      host_(std::move(host)),
      lane_(lane),
      session_(around.options,
               {net::AddressLiteral(stream_.local().address), net::IsLoopbackHost(host_), encrypted,
                platform::RandomOctets(24), around.clock.Now()},
               around.window),
      longest_step_(around.options.timeout),
      step_(session_.Step() - 1) {}

void Connection::Submit(Job& job) {
  session_.Submit(job.envelope, *job.message);
  TakeEvents();
}

void Connection::Withdraw() {
  session_.Withdraw();
  TakeEvents();
}

void Connection::Quit(std::chrono::seconds longest, platform::Stop gives_up_at) {
  gives_up_at_ = gives_up_at;
  longest_step_ = std::min(longest_step_, longest);
  quits_ = true;
  if (!closed()) session_.Quit();
}

// --- what can be done now ---

void Connection::Write() {
  if (shakes_hands_) ShakeHands();
  blocked_ = !shakes_hands_ && !WriteAll();
  TakeEvents();
}

// False when the server does not take all of it now.
bool Connection::WriteAll() {
  for (auto bytes = session_.BytesToSend(); !bytes.empty(); bytes = session_.BytesToSend()) {
    if (around_.cancel.Requested() >= gives_up_at_) {
      End(Error{Failure::kTryAgain, {}});
      return true;
    }
    const auto sent = stream_.WriteNow(bytes);
    if (!sent) {
      // A server that refuses a message half-way may say so before it closes: its word is worth more than "lost".
      if (sent.error().failure == Failure::kIo) ReadAll();
      End(sent.error());
      return true;
    }
    if (!*sent) return false;
    session_.Sent(**sent);
    TellProgress();
  }
  return true;
}

void Connection::Read() {
  if (closed()) return;
  if (shakes_hands_) return ShakeHands();
  const auto count = stream_.ReadNow(buffer_);
  if (!count || *count) EndWait();
  TakeAsMuchAsThereIs(count);
}

// A short read in clear took all that there is.
void Connection::TakeAsMuchAsThereIs(const Result<std::optional<std::size_t>>& count) {
  if (Take(count) && (stream_.encrypted() || **count == buffer_.size())) ReadAll();
  TakeEvents();
}

void Connection::ReadAll() {
  for (int n = 1; Take(stream_.ReadNow(buffer_)); ++n) {
    if (ready_ && n % kReadsTold == 0) TakeEvents();
    if (n == kMostReads) return session_.GiveUp(Lost("The server does not stop answering."));
  }
}

// Hands on what was read into the buffer; false when there was nothing, or there will be nothing more.
bool Connection::Take(const Result<std::optional<std::size_t>>& count) {
  if (!count) {
    End(count.error());
  } else if (*count && **count == 0) {
    session_.GiveUp(Lost("The server closed the connection."));
  } else if (*count) {
    session_.Receive({buffer_.data(), **count});
    return !session_.closed();
  }
  return false;
}

bool Connection::ClosedMeanwhile() {
  ReadAll();
  TakeEvents();
  return closed();
}

// --- what is waited for ---

// The deadline of a step is set when it is first waited for, and holds until the server has done it: has answered,
// whole reply and all, or has taken a block. Bytes that drip, in either direction, do not move it. Replies are read
// while a write waits, so that two sides that both have much to say do not wait for each other.
net::Deadline Connection::Until(platform::Instant now) {
  if (shakes_hands_) return deadline_;
  if (idle() || closed()) return net::Deadline::Never();
  // Another connection may have learned meanwhile that the server's silence is to be waited for before this goes on.
  if (session_.Step() != step_ || session_.Listens() != listens_) {
    step_ = session_.Step();
    listens_ = session_.Listens();
    deadline_ = around_.StepUntil(std::min<std::chrono::milliseconds>(session_.Patience(), longest_step_), now);
  }
  if (!waits_since_) waits_since_ = now;
  return deadline_;
}

void Connection::TimePassed(platform::Instant now) {
  if (closed() || !Until(now).Passed(now)) return;
  if (std::exchange(shakes_hands_, false)) TellOfHandshake();
  GiveUp(Error{Failure::kTimedOut, {}});
}

void Connection::EndWait() {
  const auto since = std::exchange(waits_since_, {});
  if (since) session_.SetQuick(around_.clock.Monotonic() - *since < kQuick);
}

void Connection::Wait(const net::Deadline& back) {
  Write();
  if (closed() || idle()) return;
  const auto is_late = [](const auto& count) { return !count && count.error().failure == Failure::kTimedOut; };
  const auto began = around_.clock.Monotonic();
  const auto count = WaitAndShow(
      around_, began, Earlier(Until(began), back),
      [this](const net::Deadline& until) {
        return stream_.Read(buffer_, blocked_, {around_.clock, around_.cancel, gives_up_at_, until});
      },
      is_late);
  if (is_late(count) && !deadline_.Passed(around_.clock.Monotonic())) return;  // it was time to come back
  EndWait();
  TakeAsMuchAsThereIs(count);
  if (count && !*count) TimePassed(around_.clock.Monotonic());  // what came says nothing, however often it comes
}

// --- what the session tells ---

void Connection::GiveUp(const Error& error) {
  End(error);
  TakeEvents();
}

// Of a server whose silence was waited for there is nothing to be heard; what goes on then is a step of its own.
void Connection::End(const Error& error) {
  if (error.failure != Failure::kTimedOut || !session_.Listens()) return session_.GiveUp(OutcomeOf(error));
  session_.OnSilence();
  step_ = session_.Step() - 1;
}

void Connection::TellProgress() {
  const std::uint64_t made = session_.octets_made();
  const std::uint64_t total = session_.octets_in_all();
  if (total == 0 || made == told_ || (made > told_ && made < told_ + total / kProgressParts && made < total)) return;
  told_ = made;
  if (around_.jobs.HasOldest(lane_)) around_.source->Progress(made, total);
}

void Connection::TellLine(const Event& event) {
  const std::string printable = IsPlain(event.text) ? std::string() : platform::Printable(event.text);
  around_.jobs.TellLine(lane_, event.place, printable.empty() ? std::string_view(event.text) : printable);
}

void Connection::TellWatch(const Event& event) {
  if (around_.watch == nullptr) return;
  if (event.kind == Event::Kind::kOffer) return around_.watch->Offered(event.text);
  if (event.kind == Event::Kind::kOddity) return around_.watch->Senseless(event.text);
  if (event.kind == Event::Kind::kUnfinished) return around_.watch->Unfinished(event.text);
  if (event.kind == Event::Kind::kInClear) return around_.watch->InClear(event.text);
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
      case Event::Kind::kUnfinished:
      case Event::Kind::kInClear:
        TellWatch(*event);
        break;
      case Event::Kind::kStartTls:
        BeginTls();
        break;
      case Event::Kind::kReady:
        ready_ = true;
        around_.jobs.EndLines(lane_);
        around_.source->Connected(session_.capabilities());
        break;
      case Event::Kind::kOutcome:
        around_.jobs.Settle(lane_, event->outcome);
        break;
      case Event::Kind::kClosed:
        end_ = event->outcome;
        stream_.Close();
        around_.jobs.EndLines(lane_);
        break;
    }
  }
}

void Connection::BeginTls() {
  if (around_.watch != nullptr) around_.watch->Begins(ConnectionStep::kTls);
  const auto tls = around_.tls();
  if (!tls) return End(tls.error());
  if (const auto begun = stream_.BeginTls(**tls, host_); !begun) {
    TellOfHandshake();
    return End(begun.error());
  }
  shakes_hands_ = true;
  deadline_ = around_.StepUntil(longest_step_);
}

void Connection::ShakeHands() {
  const auto done = stream_.ShakeHands();
  if (done && !*done) return;
  shakes_hands_ = false;
  TellOfHandshake();
  done ? session_.TlsStarted() : End(done.error());
  TakeEvents();
}

void Connection::TellOfHandshake() {
  if (around_.watch != nullptr) around_.watch->Encrypted(stream_.Facts());
}

}  // namespace quillcast::smtp
