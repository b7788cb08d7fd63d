#include "smtp/mailbox/mailbox_server.h"

#include <fmt/format.h>
#include <sys/socket.h>

#include <list>
#include <vector>

#include "net/event_loop.h"
#include "net/listener.h"
#include "smtp/mailbox/mailbox_connection.h"

namespace quillcast::smtp {
namespace {

using namespace std::chrono_literals;
using platform::Duration;
using platform::Instant;

constexpr std::size_t kReadBlock = 64UL * 1024;
constexpr Duration kLongestLinger = 2s;     // how long a client may take to close after the last word
constexpr Duration kPauseWithoutRoom = 1s;  // until connections are taken again when no descriptor was free

}  // namespace

// Two lists hold the connections: those that are served and those that are about to close. Each is in the order of the
// last step, the last word of ours or whole command of theirs, oldest first, so that only the front has to be looked at
// for who waited too long.
class MailboxServer::Loop {
 public:
  Loop(Mailbox mailbox, net::Listener listener, net::EventLoop events, const platform::Clock& clock)
      : mailbox_(std::move(mailbox)),
        listener_(std::move(listener)),
        events_(std::move(events)),
        clock_(clock),
        buffer_(kReadBlock) {}

  const std::string& address() const { return listener_.address(); }
  Result<std::uint64_t> Run(const platform::CancelToken& cancel);

 private:
  struct Entry;
  using Entries = std::list<Entry>;
  struct Entry {
    Entry(net::Listener::Accepted accepted, Mailbox& mailbox) : connection(std::move(accepted), mailbox) {}
    MailboxConnection connection;
    net::Interest watched = net::Interest::kRead;
    bool closing = false;
    Instant last_step;
    Entries::iterator self;
  };

  Result<void> Turn(const platform::CancelToken& cancel);
  void AcceptOne();
  void Serve(Entry& entry, const net::EventLoop::Ready& ready);
  void Settle(Entry& entry);
  void CloseIdle();
  void CutOffLingering();
  void StopServing();
  std::optional<std::chrono::milliseconds> UntilNextDeadline() const;

  Mailbox mailbox_;
  net::Listener listener_;
  net::EventLoop events_;
  const platform::Clock& clock_;
  std::vector<char> buffer_;
  Entries served_;
  Entries closing_;
  Instant now_;
  std::optional<Instant> paused_until_;  // no connection is taken before
  std::optional<Instant> stop_at_;       // set: the server is ending
};

Result<std::uint64_t> MailboxServer::Loop::Run(const platform::CancelToken& cancel) {
  now_ = clock_.Monotonic();
  if (const auto added = events_.Add(listener_.fd(), net::Interest::kRead, &listener_); !added) return added.error();
  if (cancel.PollFd() >= 0) {
    if (const auto added = events_.Add(cancel.PollFd(), net::Interest::kRead, nullptr); !added) return added.error();
  }
  while (cancel.Requested() != platform::Stop::kAbandon) {
    if (!stop_at_ && (cancel.Requested() == platform::Stop::kStop || mailbox_.IsFull())) {
      // The token stays readable from now on, and would keep the loop spinning.
      if (cancel.PollFd() >= 0) IgnoreErrors(events_.Change(cancel.PollFd(), net::Interest::kNone, nullptr));
      StopServing();
    }
    if (stop_at_ && ((served_.empty() && closing_.empty()) || now_ >= *stop_at_)) break;
    if (const auto turned = Turn(cancel); !turned) return turned.error();
  }
  return mailbox_.kept;
}

Result<void> MailboxServer::Loop::Turn(const platform::CancelToken& cancel) {
  const auto ready = events_.Wait(UntilNextDeadline());
  if (!ready) return ready.error();
  now_ = clock_.Monotonic();
  for (const auto& event : *ready) {
    if (event.owner == &listener_) {
      AcceptOne();
    } else if (event.owner != nullptr) {
      Serve(*static_cast<Entry*>(event.owner), event);
    }
    // The others are told 421 next.
    if (!stop_at_ && (cancel.Requested() != platform::Stop::kNone || mailbox_.IsFull())) break;
  }
  CloseIdle();
  CutOffLingering();
  if (paused_until_ && now_ >= *paused_until_ && !stop_at_) {
    paused_until_.reset();
    return events_.Change(listener_.fd(), net::Interest::kRead, &listener_);
  }
  return {};
}

// One at a time: those already here are served between two new ones.
void MailboxServer::Loop::AcceptOne() {
  auto accepted = listener_.Accept();
  if (!accepted) {
    IgnoreErrors(events_.Change(listener_.fd(), net::Interest::kNone, &listener_));
    paused_until_ = now_ + kPauseWithoutRoom;
    return;
  }
  if (!*accepted) return;
  if (served_.size() >= mailbox_.options.connection_limit) {
    const std::string words =
        fmt::format("421 {} has too many connections, try later\r\n", mailbox_.options.session.host_name);
    IgnoreErrors(::send((**accepted).fd.get(), words.data(), words.size(), MSG_NOSIGNAL));  // it is hung up on anyway
    return;
  }
  Entry& entry = served_.emplace_back(*std::move(*accepted), mailbox_);
  entry.self = std::prev(served_.end());
  entry.last_step = now_;
  if (!events_.Add(entry.connection.fd(), net::Interest::kRead, &entry)) {
    served_.pop_back();
    return;
  }
  entry.connection.Write();
  Settle(entry);
}

void MailboxServer::Loop::Serve(Entry& entry, const net::EventLoop::Ready& ready) {
  const auto step = entry.connection.Step();
  if (ready.writable && entry.connection.interest() == net::Interest::kWrite) {
    entry.connection.Write();
  } else if (ready.readable) {
    entry.connection.Read(buffer_);
  }
  if (!entry.closing && entry.connection.Step() != step) {
    entry.last_step = now_;
    served_.splice(served_.end(), served_, entry.self);
  }
  Settle(entry);
}

// Puts the connection where it belongs after something happened to it. It may be gone afterwards.
void MailboxServer::Loop::Settle(Entry& entry) {
  const auto state = entry.connection.state();
  if (state == MailboxConnection::State::kClosed) {
    (entry.closing ? closing_ : served_).erase(entry.self);
    return;
  }
  if (state == MailboxConnection::State::kLingering && !entry.closing) {
    entry.closing = true;
    entry.last_step = now_;
    closing_.splice(closing_.end(), served_, entry.self);
  }
  if (const auto wanted = entry.connection.interest(); wanted != entry.watched) {
    entry.watched = wanted;
    IgnoreErrors(events_.Change(entry.connection.fd(), wanted, &entry));
  }
}

void MailboxServer::Loop::CloseIdle() {
  while (!served_.empty() && now_ - served_.front().last_step >= mailbox_.options.timeout) {
    Entry& entry = served_.front();
    entry.connection.Shutdown("waited too long for you");
    Settle(entry);
    // One that does not even take its 421 has had its time.
    if (!served_.empty() && &served_.front() == &entry) served_.pop_front();
  }
}

void MailboxServer::Loop::CutOffLingering() {
  while (!closing_.empty() && now_ - closing_.front().last_step >= kLongestLinger) closing_.pop_front();
}

void MailboxServer::Loop::StopServing() {
  stop_at_ = now_ + kLongestLinger;
  IgnoreErrors(events_.Change(listener_.fd(), net::Interest::kNone, &listener_));
  for (auto entry = served_.begin(); entry != served_.end();) {
    Entry& each = *entry++;  // Settle may take it out of the list
    each.connection.Shutdown("is ending");
    Settle(each);
  }
}

std::optional<std::chrono::milliseconds> MailboxServer::Loop::UntilNextDeadline() const {
  std::optional<Instant> next = stop_at_;
  const auto consider = [&next](Instant deadline) { next = next ? std::min(*next, deadline) : deadline; };
  if (!served_.empty()) consider(served_.front().last_step + mailbox_.options.timeout);
  if (!closing_.empty()) consider(closing_.front().last_step + kLongestLinger);
  if (paused_until_) consider(*paused_until_);
  if (!next) return {};
  return std::chrono::ceil<std::chrono::milliseconds>(*next - now_);
}

Result<MailboxServer> MailboxServer::Listen(MailboxOptions options, const platform::Clock& clock) {
  Mailbox mailbox{std::move(options), {}, {}, 0};
  auto& given = mailbox.options;
  if (given.certificate.empty() != given.key.empty()) {
    return Error{Failure::kUsage, "A certificate and its key go together.", "Name both files, or neither."};
  }
  given.session.has_certificate = !given.certificate.empty();
  const bool in_clear = !given.session.user.empty() && !given.session.has_certificate;
  if (in_clear && !given.sign_in_in_clear && !net::IsLoopbackAddress(given.listen)) {
    return Error{
        Failure::kUsage, Say("At {} passwords would come in clear from other computers.", given.listen),
        "Give it a certificate by --tls-cert and --tls-key, listen on 127.0.0.1, or say --auth-in-clear if you "
        "trust the network."};
  }
  if (given.session.has_certificate) {
    auto tls = net::ServerTls::Load(given.certificate, given.key);
    if (!tls) return tls.error();
    mailbox.tls.emplace(*std::move(tls));
  }
  if (given.store) {
    auto store = MailboxStore::Open(*given.store, clock);
    if (!store) return store.error();
    mailbox.store.emplace(*std::move(store));
  }
  auto listener = net::Listener::Open(given.listen);
  if (!listener) return listener.error();
  auto events = net::EventLoop::Create();
  if (!events) return events.error();
  return MailboxServer(std::make_unique<Loop>(std::move(mailbox), *std::move(listener), *std::move(events), clock));
}

MailboxServer::MailboxServer(std::unique_ptr<Loop> loop) : loop_(std::move(loop)) {}
MailboxServer::MailboxServer(MailboxServer&&) noexcept = default;
MailboxServer& MailboxServer::operator=(MailboxServer&&) noexcept = default;
MailboxServer::~MailboxServer() = default;

const std::string& MailboxServer::address() const { return loop_->address(); }

Result<std::uint64_t> MailboxServer::Run(const platform::CancelToken& cancel) { return loop_->Run(cancel); }

}  // namespace quillcast::smtp
