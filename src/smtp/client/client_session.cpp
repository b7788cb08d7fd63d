#include "smtp/client/client_session.h"

#include <fmt/format.h>

#include <utility>

namespace quillcast::smtp {
namespace {

constexpr const char* kWentOnInClear = "it went on in clear after it agreed to TLS";

}  // namespace

ClientSession::ClientSession(const ClientOptions& options, SessionSetup setup, SendWindow& window)
    : options_(options),
      wire_(events_),
      opening_(options, std::move(setup), wire_),
      transfers_(window, wire_, events_) {}

bool ClientSession::Idle() const {
  return ready_ && !closed_ && !wire_.awaits() && transfers_.empty() && wire_.Unsent().empty();
}

// --- sending ---

void ClientSession::Submit(const Envelope& envelope, MessageSource& message) {
  transfers_.Submit(envelope, message);
  EndWhereDue();
}

void ClientSession::Withdraw() {
  transfers_.Withdraw();
  EndWhereDue();
}

std::string_view ClientSession::BytesToSend() {
  if (closed_) return {};
  wire_.Compact();
  while (wire_.HasRoom() && transfers_.SendMore()) {
  }
  EndWhereDue();
  return closed_ ? std::string_view() : wire_.Unsent();
}

// --- receiving ---

void ClientSession::Receive(std::string_view bytes) {
  if (closed_) return;
  if (opening_.handshake()) return Close(transfers_.OnNoSense(kWentOnInClear));
  wire_.Receive(bytes);
  while (!closed_) {
    switch (wire_.NextReply()) {
      case ReplyReader::Step::kNeedMore:
        return;
      case ReplyReader::Step::kSenseless:
        events_.Add(Event::Kind::kOddity).text = wire_.odd();
        return Close(transfers_.OnNoSense(wire_.complaint()));
      case ReplyReader::Step::kReply:
        TakeReply();
    }
  }
}

// A challenge is half of what it takes to try passwords at home, and a server may repeat what it was told, in its
// verdict or long after it. The log, and the outcome that others show, have none of it: such a reply is shown by its
// codes. What is only read, a challenge or what the server can do, is read as it is.
void ClientSession::TakeReply() {
  const ServerReply& reply = wire_.reply();
  const bool challenge = wire_.Awaits(Awaited::kAuth) && reply.code / 100 == 3;
  const bool offer = wire_.Awaits(Awaited::kEhlo) && reply.code / 100 == 2;
  if (!challenge && !opening_.Hides(reply.text)) {
    wire_.TellReply();
    return OnReply(reply);
  }
  wire_.TellReply(fmt::format("{}{}{} ****", reply.code, reply.enhanced.empty() ? "" : " ", reply.enhanced));
  if (challenge || offer) return OnReply(reply);
  ServerReply shown = reply;
  shown.text = "****";
  OnReply(shown);
}

void ClientSession::OnReply(const ServerReply& reply) {
  wire_.CountReply();
  if (!wire_.awaits()) {
    if (transfers_.PassesOver(reply)) return;
    if (reply.code == 421) return Close({VerdictOf(ResultCode::kConnectionLost, reply)});
    return Close(transfers_.OnOneTooMany("it answered without having been asked"));
  }
  if (opening_.given_up()) return Close({});
  if (reply.code == 421) return OnGoodbye(reply);
  if (!wire_.ReplyIsDue()) return OnEarlyReply(reply);
  const Awaited command = wire_.awaited();
  if (command == Awaited::kAuth && reply.code / 100 == 3) {
    wire_.Answered();
    return Follow(opening_.OnChallenge(reply));
  }
  const bool refused = reply.code / 100 == 4 || reply.code / 100 == 5;
  const bool accepted = reply.code / 100 == MeaningOf(command).ok_class;
  if (!refused && (!accepted || (command == Awaited::kGreeting && reply.code != 220))) {
    const std::string what = fmt::format("{} is no answer to what it was asked", reply.code);
    const bool is_of_another = command == Awaited::kData && reply.code / 100 == 2;
    return Close(is_of_another ? transfers_.OnOneTooMany(what) : transfers_.OnNoSense(what));
  }
  wire_.Answered();
  OnAnswer(command, reply, accepted);
}

// To what is not wholly out. A message cut short by its refusal leaves the server in the middle of it, so there is no
// way on.
void ClientSession::OnEarlyReply(const ServerReply& reply) {
  if (!wire_.Awaits(Awaited::kEndOfData)) return Close(transfers_.OnOneTooMany("it answered before it was asked"));
  const bool refused = reply.code / 100 == 4 || reply.code / 100 == 5;
  if (!refused) return Close(transfers_.OnOneTooMany("it took the message before it was complete"));
  Close({Refusal(Awaited::kEndOfData, reply)});
}

void ClientSession::OnGoodbye(const ServerReply& reply) {
  const Awaited command = wire_.awaited();
  if (IsOfMessage(command) && wire_.ReplyIsDue() && transfers_.AwaitsEnd(command)) {
    wire_.Answered();
    transfers_.OnLastRefusal(command, reply);
    return EndWhereDue();
  }
  if (IsOfMessage(command)) return Close(transfers_.OnGoodbye(command, reply));
  Close({VerdictOf(MeaningOf(command).refused, reply)});
}

void ClientSession::OnAnswer(Awaited command, const ServerReply& reply, bool accepted) {
  if (IsOfMessage(command)) {
    accepted ? transfers_.OnAccepted(command, reply) : transfers_.OnRefused(command, reply);
    return EndWhereDue();
  }
  if (command == Awaited::kQuit) {
    return Close({accepted ? Outcome{State::kSent, ResultCode::kSuccess, reply, {}} : Refusal(command, reply)});
  }
  if (command == Awaited::kEhlo && accepted) events_.Add(Event::Kind::kOffer).text = reply.text;
  Follow(accepted ? opening_.OnAccepted(command, reply) : opening_.OnRefused(command, reply));
}

void ClientSession::TlsStarted() { Follow(opening_.OnTlsStarted()); }

void ClientSession::Follow(Opening::Step step) {
  if (auto* const why = std::get_if<Outcome>(&step)) return Close({std::move(*why)});
  switch (std::get<Opening::Turn>(step)) {
    case Opening::Turn::kGoesOn:
      return;
    case Opening::Turn::kInClear:
      events_.Add(Event::Kind::kInClear).text = wire_.More();
      return Close(transfers_.OnNoSense(kWentOnInClear));
    case Opening::Turn::kHandshake:
      events_.Add(Event::Kind::kStartTls);
      return;
    case Opening::Turn::kReady:
      ready_ = true;
      transfers_.Begin(opening_.capabilities(), options_.pipeline);
      events_.Add(Event::Kind::kReady);
  }
}

void ClientSession::OnSilence() {
  transfers_.OnSilence();
  EndWhereDue();
}

// --- ends ---

// What the server owes and has not done, as a sentence; empty where it owes nothing.
std::string_view ClientSession::Missing() const {
  if (opening_.handshake()) return MeaningOf(Awaited::kHandshake).missing;
  if (!wire_.awaits() && wire_.Unsent().empty()) return {};
  return MeaningOf(wire_.Due()).missing;
}

void ClientSession::GiveUp(Outcome why) {
  if (closed_) return;
  const bool waited = why.code == ResultCode::kConnectionLost || why.code == ResultCode::kReplyTimeout;
  if (wire_.HasMore()) transfers_.AnswersOn();
  SessionEnd end = transfers_.OnGivenUp(std::move(why));
  if (waited) end.missing = Missing();
  if (waited && wire_.HasMore()) events_.Add(Event::Kind::kUnfinished).text = wire_.More();
  Close(std::move(end));
}

void ClientSession::EndWhereDue() {
  if (transfers_.end()) Close(*transfers_.end());
}

void ClientSession::Close(SessionEnd end) {
  if (closed_) return;
  closed_ = true;
  if (opening_.given_up()) end = {*opening_.given_up()};
  wire_.Close();
  transfers_.Close(end);
  AddSentence(end.why.reason, end.missing);
  end.why.whereabouts = Whereabouts::kDecided;  // of the session it is the verdict
  events_.Add(Event::Kind::kClosed).outcome = std::move(end.why);
}

}  // namespace quillcast::smtp
