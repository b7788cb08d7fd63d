#include "smtp/client/client_session.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/text.h"
#include "smtp/client/reply_meaning.h"

namespace quillcast::smtp {
namespace {

using namespace std::chrono_literals;
using Command = ClientSession::Command;

constexpr std::chrono::minutes kPatienceForABlock = 3min;

constexpr const char* kNoTls =
    "The server does not offer STARTTLS, so the password would travel in clear. Set Security to None only if you trust "
    "the network.";
constexpr const char* kAuthBroken = "The server broke the exchange that signs in.";
constexpr const char* kEndedBefore = "The connection ended before the server answered.";
constexpr const char* kStartTlsMissing =
    "The server does not offer STARTTLS, which the account asks for. Choose another Security, or another port.";
constexpr const char* kAuthMissing =
    "The server does not offer authentication. Switch signing in off, or allow sending without it, if the server is to "
    "be used without.";
constexpr const char* kAuthMissingInClear =
    "The server does not offer authentication, and the connection is not encrypted, so somebody on the way may have "
    "taken "
    "the offer out. Sending without it is done only under TLS or to this computer.";

}  // namespace

ClientSession::ClientSession(const ClientOptions& options, SessionSetup setup, SendWindow& window)
    : options_(options), setup_(std::move(setup)), window_(window) {
  HidePassword();
  Await(Command::kGreeting, 0);
}

ClientSession::~ClientSession() { Wipe(out_); }

bool ClientSession::Idle() const {
  return ready_ && !closed_ && awaited_.empty() && transfers_.empty() && out_at_ == out_.size();
}

// A server that was told on an earlier connection may repeat it from the greeting on.
void ClientSession::HidePassword() {
  if (!options_.sign_in) return;
  const Secret plain(std::string(1, '\0') + options_.user + '\0' + std::string(options_.password.view()));
  traces_.Begin(options_.user, {}, options_.password.view());
  traces_.AddResponse(plain.view());
  traces_.End();
}

// --- receiving ---

void ClientSession::Receive(std::string_view bytes) {
  if (closed_) return;
  // After the 220 to STARTTLS nothing in clear may be believed (RFC 3207 4.2): it is not the server's.
  if (handshake_) return Senseless("it went on in clear after it agreed to TLS");
  reader_.Add(bytes);
  while (!closed_) {
    switch (reader_.Next()) {
      case ReplyReader::Step::kNeedMore:
        return;
      case ReplyReader::Step::kSenseless:
        return Senseless(reader_.complaint());
      case ReplyReader::Step::kReply:
        TakeReply();
    }
  }
}

void ClientSession::LogLines(std::string_view lines) {
  for (auto end = lines.find('\n'); end != std::string_view::npos; end = lines.find('\n')) {
    Log("S: ", lines.substr(0, end));
    lines.remove_prefix(end + 1);
  }
}

// A challenge is half of what it takes to try passwords at home, and a server may repeat what it was told, in its
// verdict or long after it. The log, and the outcome that others show, have none of it: such a reply is shown by its
// codes. What is only read, a challenge or what the server can do, is read as it is.
void ClientSession::TakeReply() {
  const ServerReply& reply = reader_.reply();
  const bool challenge = SigningIn() && reply.code / 100 == 3;
  const bool offer = !awaited_.empty() && awaited_.front().command == Command::kEhlo && reply.code / 100 == 2;
  if (!challenge && !traces_.In(reply.text)) {
    LogLines(reader_.lines());
    return OnReply(reply);
  }
  Log("S: ", fmt::format("{}{}{} ****", reply.code, reply.enhanced.empty() ? "" : " ", reply.enhanced));
  if (challenge || offer) return OnReply(reply);
  ServerReply shown = reply;
  shown.text = "****";
  OnReply(shown);
}

void ClientSession::OnReply(const ServerReply& reply) {
  ++steps_;
  if (awaited_.empty()) {
    if (reply.code == 421) return Close(VerdictOf(ResultCode::kConnectionLost, reply));
    return Senseless("it answered without having been asked");
  }
  if (!cancelled_.empty()) return Close({});
  const Command command = awaited_.front().command;
  const bool refused = reply.code / 100 == 4 || reply.code / 100 == 5;
  if (reply.code == 421) return OnGoodbye(command, reply);
  if (!ReplyIsDue()) {
    if (command != Command::kEndOfData) return Senseless("it answered before it was asked");
    if (!refused) return Senseless("it took the message before it was complete");
    // A message cut short by its refusal leaves the server in the middle of it, so there is no way on.
    Outcome outcome = VerdictOf(ResultCode::kMessageRefused, reply);
    outcome.reason = "The server did not take the message.";
    return Close(std::move(outcome));
  }
  if (command == Command::kAuth && reply.code / 100 == 3) {
    if (reply.code != 334) return Fail(ResultCode::kAuthProtocolError, kAuthBroken);
    awaited_.Pop();
    return OnChallenge(reply);
  }
  const bool accepted = reply.code / 100 == MeaningOf(command).ok_class;
  if (!refused && (!accepted || (command == Command::kGreeting && reply.code != 220))) {
    return Senseless(fmt::format("{} is no answer to what it was asked", reply.code));
  }
  awaited_.Pop();
  if (OfMessage(command)) return accepted ? OnMessageAccepted(command, reply) : OnMessageRefused(command, reply);
  accepted ? OnAccepted(command, reply) : OnRefused(command, reply);
}

// The 421 is the verdict of the message whose end it answers. Those behind it are in doubt once their end is out: not
// every server stops where it says so.
void ClientSession::OnGoodbye(Command command, const ServerReply& reply) {
  if (!OfMessage(command)) return Close(VerdictOf(MeaningOf(command).refused, reply));
  if (IsLimit(command) && !IsOut(transfers_.front())) {
    window_.LimitConnection(mails_taken_);
  } else {
    window_.BeCautious();
  }
  if (command == Command::kEndOfData && ReplyIsDue()) {
    return Close(VerdictOf(ResultCode::kMessageRefused, reply));
  }
  Close({State::kFailed, ResultCode::kConnectionLost, reply, "The server ended the connection before the message."},
        true);
}

void ClientSession::OnAccepted(Command command, const ServerReply& reply) {
  switch (command) {
    case Command::kGreeting:
      return OnGreeting(reply);
    case Command::kEhlo:
      return OnCapabilities(reply);
    case Command::kHelo:
      return OnCapabilities({});
    case Command::kStartTls:
      handshake_ = true;
      if (reader_.HasMore()) return Senseless("it went on in clear after it agreed to TLS");
      NewEvent(Event::Kind::kStartTls);
      return;
    case Command::kAuth:
      if (const auto proved = exchange_->Finish(); !proved) {
        return Fail(ResultCode::kAuthProtocolError, proved.error().what.InEnglish());
      }
      return BecomeReady();
    default:  // kQuit
      return Close({State::kSent, ResultCode::kSuccess, reply, {}});
  }
}

void ClientSession::OnRefused(Command command, const ServerReply& reply) {
  if (command == Command::kEhlo && reply.code / 100 == 5) return SendHello(Command::kHelo);
  Outcome outcome = VerdictOf(MeaningOf(command).refused, reply);
  outcome.reason = command == Command::kAuth ? AuthRefusal(reply.code)
                                             : fmt::format("The server did not take {}.", MeaningOf(command).what);
  Close(std::move(outcome));
}

std::chrono::minutes ClientSession::Patience() const {
  return ReplyIsDue() ? MeaningOf(awaited_.front().command).patience : kPatienceForABlock;
}

// --- greeting and signing in ---

void ClientSession::OnGreeting(const ServerReply& reply) {
  extended_ = options_.extended || platform::AsciiUpper(reply.text).find("ESMTP") != std::string::npos;
  SendHello(Command::kEhlo);
}

// What a server offers before TLS is forgotten with the EHLO after it (RFC 3207 4.2).
void ClientSession::OnCapabilities(const ServerReply& reply) {
  capabilities_ = ParseCapabilities(reply.text);
  if (MayUseStartTls()) return Send(Command::kStartTls, "STARTTLS");
  const bool clear = !setup_.encrypted;
  if (clear && options_.security == Security::kStartTls) return Fail(ResultCode::kGreetingRefused, kStartTlsMissing);
  if (clear && options_.security == Security::kAutomatic && options_.sign_in && !setup_.loopback) {
    return Fail(ResultCode::kGreetingRefused, kNoTls);
  }
  if (!extended_) {
    Capabilities kept;
    kept.auth = capabilities_.auth;
    kept.mechanisms = std::move(capabilities_.mechanisms);
    capabilities_ = std::move(kept);
  }
  if (options_.sign_in) return SignIn();
  BecomeReady();
}

bool ClientSession::MayUseStartTls() const {
  const bool wanted = options_.security == Security::kAutomatic || options_.security == Security::kStartTls;
  return wanted && !setup_.encrypted && capabilities_.starttls;
}

void ClientSession::TlsStarted() {
  handshake_ = false;
  setup_.encrypted = true;
  SendHello(Command::kEhlo);
}

void ClientSession::SignIn() {
  if (capabilities_.auth) {
    auto mechanism = ChooseMechanism(options_.auth_mode, capabilities_,
                                     {options_.user, options_.password.view(), setup_.nonce, setup_.now});
    if (!mechanism) return Fail(ResultCode::kAuthNotOffered, mechanism.error().what.InEnglish());
    traces_.Begin(options_.user, (*mechanism)->Name().text(), options_.password.view());
    exchange_.emplace(*std::move(mechanism), traces_);
    return SendSecret(exchange_->Begin());
  }
  const bool safe = setup_.encrypted || setup_.loopback;
  if (!options_.send_without_auth) return Fail(ResultCode::kAuthNotOffered, kAuthMissing);
  if (!safe) return Fail(ResultCode::kAuthNotOffered, kAuthMissingInClear);
  BecomeReady();
}

void ClientSession::OnChallenge(const ServerReply& reply) {
  const auto response = exchange_->Answer(platform::Trim(reply.text));
  if (response) return SendSecret(*response);
  cancelled_ = response.error().what.InEnglish();
  SendSecret(CancelSaslExchange());
}

void ClientSession::BecomeReady() {
  exchange_.reset();
  traces_.End();
  ready_ = true;
  pipelined_ = options_.pipeline && capabilities_.pipelining && window_.pipelining();
  NewEvent(Event::Kind::kReady);
}

// --- ends ---

Event& ClientSession::NewEvent(Event::Kind kind) {
  Event& event = events_.Push();
  event.kind = kind;
  event.text.clear();
  event.place = 0;
  event.again = false;
  return event;
}

const Event* ClientSession::NextEvent() {
  if (events_.empty()) return nullptr;
  const Event& event = events_.front();
  events_.Pop();
  return &event;
}

// What is sent belongs to the message that is being sent, what comes to the oldest one.
Event& ClientSession::Log(std::string_view side, std::string_view line) {
  Event& event = NewEvent(Event::Kind::kLogLine);
  event.text.append(side).append(line);
  if (side == "C: ") event.place = sending_;
  return event;
}

// A server that makes no sense while it is first asked for several things at once may do well with one at a time.
void ClientSession::Senseless(std::string_view what) {
  const bool overtaxed = pipelined_ && !proven_ && !transfers_.empty();
  if (overtaxed) window_.GiveUpPipelining();
  Close({State::kFailed, ResultCode::kBadResponse, {}, fmt::format("The server's answer makes no sense: {}.", what)},
        overtaxed);
}

void ClientSession::Fail(ResultCode code, std::string reason) { Close({State::kFailed, code, {}, std::move(reason)}); }

void ClientSession::GiveUp(Outcome why) {
  const bool lost = why.code == ResultCode::kConnectionLost;
  const bool late = why.code == ResultCode::kReplyTimeout;
  const bool overtaxed = (lost || late) && pipelined_ && !proven_ && !transfers_.empty() && !awaited_.empty();
  if (overtaxed) window_.GiveUpPipelining();
  if ((lost || late) && !transfers_.empty()) window_.BeCautious();
  Close(std::move(why), lost || overtaxed);
}

void ClientSession::Close(Outcome why, bool again) {
  if (closed_) return;
  closed_ = true;
  if (!cancelled_.empty()) why = {State::kFailed, ResultCode::kAuthProtocolError, {}, std::move(cancelled_)};
  exchange_.reset();
  if (out_secret_) Wipe(out_);
  const bool cancelled = why.code == ResultCode::kCancelled;
  for (bool oldest = true; !transfers_.empty(); oldest = false) {
    const Transfer& transfer = transfers_.front();
    Event& event = NewEvent(Event::Kind::kOutcome);
    if (transfer.verdict) {
      event.outcome = *transfer.verdict;
      event.again = transfer.again && !cancelled;
    } else {
      const bool out = IsOut(transfer);
      const bool shared = oldest || cancelled || why.code == ResultCode::kReplyTimeout;
      event.outcome = shared ? why : Outcome{State::kFailed, ResultCode::kConnectionLost, {}, kEndedBefore};
      if (out && event.outcome.state == State::kFailed) event.outcome.state = State::kUnknown;
      event.again = !out && !cancelled && event.outcome.state == State::kFailed && (again || !oldest);
    }
    PopTransfer();
  }
  NewEvent(Event::Kind::kClosed).outcome = std::move(why);
}

}  // namespace quillcast::smtp
