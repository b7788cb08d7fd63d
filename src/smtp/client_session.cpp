#include "smtp/client_session.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/base64.h"
#include "platform/text.h"
#include "smtp/command.h"

namespace quillcast::smtp {
namespace {

using Command = ClientSession::Command;

// As much of a message as is kept ready to be written.
constexpr std::size_t kBlock = std::size_t{64} * 1024;

enum class After { kGoOn, kReset, kHangUp };

// What a reply means: the class that lets things go on, and what a 4xx or 5xx makes of it.
struct Meaning {
  Command command;
  int ok_class;
  ResultCode refused;
  After after_refusal;
  const char* what;  // that the server did not take
};
constexpr std::array kMeanings{
    Meaning{Command::kGreeting, 2, ResultCode::kGreetingRefused, After::kHangUp, "the connection"},
    Meaning{Command::kEhlo, 2, ResultCode::kGreetingRefused, After::kHangUp, "EHLO"},
    Meaning{Command::kHelo, 2, ResultCode::kGreetingRefused, After::kHangUp, "HELO"},
    Meaning{Command::kStartTls, 2, ResultCode::kGreetingRefused, After::kHangUp, "STARTTLS"},
    Meaning{Command::kAuth, 2, ResultCode::kAuthRefused, After::kHangUp, "the user or the password"},
    Meaning{Command::kMail, 2, ResultCode::kSenderRefused, After::kGoOn, "the sender"},
    Meaning{Command::kRcpt, 2, ResultCode::kRecipientRefused, After::kReset, "the recipient"},
    Meaning{Command::kData, 3, ResultCode::kMessageRefused, After::kReset, "the message"},
    Meaning{Command::kEndOfData, 2, ResultCode::kMessageRefused, After::kGoOn, "the message"},
    Meaning{Command::kReset, 2, ResultCode::kBadResponse, After::kHangUp, "RSET"},
    Meaning{Command::kQuit, 2, ResultCode::kQuitFailed, After::kHangUp, "QUIT"},
};

const Meaning& MeaningOf(Command command) { return kMeanings[static_cast<std::size_t>(command)]; }

Outcome Verdict(ResultCode code, const ServerReply& reply) {
  return {reply.code / 100 == 4 ? State::kDeferred : State::kRefused, code, reply, {}};
}

constexpr const char* kNoTls =
    "The server does not offer STARTTLS, so the password would travel in clear. Set Security to None only if you trust "
    "the network.";
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

ClientSession::ClientSession(const ClientOptions& options, SessionSetup setup)
    : options_(options), setup_(std::move(setup)), awaited_{Command::kGreeting} {}

ClientSession::~ClientSession() { Wipe(out_); }

bool ClientSession::Idle() const {
  return ready_ && !closed_ && awaited_.empty() && envelope_ == nullptr && out_at_ == out_.size();
}

// --- sending ---

void ClientSession::Log(std::string_view side, std::string_view line) {
  events_.push_back({Event::Kind::kLogLine, std::string(side).append(line), {}});
}

void ClientSession::Send(Command command, const SmtpLine& line) {
  out_.append(line.text()).append("\r\n");
  awaited_.push_back(command);
  Log("C: ", line.text());
}

void ClientSession::SendWords(Command command, const char* words) { Send(command, *SmtpLine::From(words)); }

// `line` is made of base 64 and fixed words, so it cannot break out.
void ClientSession::SendSecret(const std::string& line, std::string_view shown) {
  out_.reserve(out_.size() + line.size() + 2);  // growing later would leave a copy behind
  out_.append(line).append("\r\n");
  out_secret_ = true;
  awaited_.push_back(Command::kAuth);
  Log("C: ", shown);
}

void ClientSession::SendEhlo() {
  if (const auto line = SmtpLine::From("EHLO " + setup_.local_name)) return Send(Command::kEhlo, *line);
  Fail(ResultCode::kException, "The name of this computer cannot be sent.");
}

std::string_view ClientSession::BytesToSend() {
  if (closed_) return {};
  if (body_ && !body_->ended() && out_.size() - out_at_ < kBlock) {
    out_.erase(0, out_at_);
    out_at_ = 0;
    if (const auto filled = body_->Fill(out_, kBlock); !filled) {
      Fail(CodeOfSource(filled.error()), filled.error().what);
      return {};
    }
    if (body_->ended()) Log("C: ", fmt::format("(message, {} bytes)", body_->taken()));
  }
  return std::string_view(out_).substr(out_at_);
}

void ClientSession::Sent(std::size_t count) {
  out_at_ += count;
  if (out_at_ < out_.size()) return;
  if (out_secret_) Wipe(out_);
  out_secret_ = false;
  out_.clear();
  out_at_ = 0;
  if (body_ && body_->ended()) end_of_data_out_ = true;
}

void ClientSession::Submit(const Envelope& envelope, MessageSource& message) {
  fitted_ = envelope;
  envelope_ = &fitted_;
  message_ = &message;
  end_of_data_out_ = false;
  if (auto bad = FitEnvelope(fitted_, message, capabilities_)) return FinishMessage(*std::move(bad));
  const auto line = MailCommand(fitted_, capabilities_);
  if (!line) return FinishMessage({State::kFailed, ResultCode::kSenderRefused, {}, "The sender cannot be sent."});
  Send(Command::kMail, *line);
}

void ClientSession::Quit() { SendWords(Command::kQuit, "QUIT"); }

void ClientSession::StartData() {
  if (!capabilities_.chunking || envelope_->size == 0) return SendWords(Command::kData, "DATA");
  // The one chunk follows its command without a reply in between (RFC 3030 2).
  SendWords(Command::kEndOfData, ("BDAT " + std::to_string(envelope_->size) + " LAST").c_str());
  body_.emplace(*message_, BodyWriter::Form::kCounted, envelope_->size);
}

void ClientSession::StartBody(BodyWriter::Form form) {
  body_.emplace(*message_, form, envelope_->size);
  awaited_.push_back(Command::kEndOfData);
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
        std::string_view lines = reader_.lines();
        for (auto end = lines.find('\n'); end != std::string_view::npos; end = lines.find('\n')) {
          Log("S: ", lines.substr(0, end));
          lines.remove_prefix(end + 1);
        }
        OnReply(reader_.reply());
    }
  }
}

void ClientSession::OnReply(const ServerReply& reply) {
  if (awaited_.empty()) {
    if (reply.code == 421) return Close(Verdict(ResultCode::kConnectionLost, reply));
    return Senseless("it answered without having been asked");
  }
  const Command command = awaited_.front();
  const Meaning& meaning = MeaningOf(command);
  const int reply_class = reply.code / 100;
  if (reply.code == 421 && message_under_way() && !end_of_data_out_) {
    // The connection is over, not the message: none of it counts before its end, so it may go over another one.
    Close({State::kFailed, ResultCode::kConnectionLost, reply, "The server ended the connection before the message."});
  } else if (reply.code == 421) {
    Close(Verdict(meaning.refused, reply));
  } else if (command == Command::kAuth && reply.code == 334) {
    awaited_.pop_front();
    OnChallenge(reply);
  } else if (command == Command::kAuth && reply_class == 3) {
    Fail(ResultCode::kAuthProtocolError, "The server broke the exchange that signs in.");
  } else if (reply_class == 4 || reply_class == 5) {
    awaited_.pop_front();
    OnRefused(command, reply);
  } else if (reply_class != meaning.ok_class || (command == Command::kGreeting && reply.code != 220)) {
    Senseless(fmt::format("{} is no answer to what it was asked", reply.code));
  } else if (command == Command::kEndOfData && !end_of_data_out_) {
    Senseless("it took the message before it was complete");
  } else {
    awaited_.pop_front();
    OnAccepted(command, reply);
  }
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
      return events_.push_back({Event::Kind::kStartTls, {}, {}});
    case Command::kAuth:
      return BecomeReady();
    case Command::kMail:
      if (const auto line = RcptCommand(*envelope_, capabilities_)) return Send(Command::kRcpt, *line);
      return Fail(ResultCode::kRecipientRefused, "The recipient cannot be sent.");
    case Command::kRcpt:
      return StartData();
    case Command::kData:
      return StartBody(message_->MayHaveLeadingDots() ? BodyWriter::Form::kDots : BodyWriter::Form::kBare);
    case Command::kEndOfData:
      return FinishMessage({State::kSent, ResultCode::kSuccess, reply, {}});
    case Command::kReset:
      return;
    case Command::kQuit:
      return Close({State::kSent, ResultCode::kSuccess, reply, {}});
  }
}

void ClientSession::OnRefused(Command command, const ServerReply& reply) {
  const Meaning& meaning = MeaningOf(command);
  if (command == Command::kEhlo && reply.code / 100 == 5) {
    if (const auto line = SmtpLine::From("HELO " + setup_.local_name)) return Send(Command::kHelo, *line);
  }
  Outcome outcome = Verdict(meaning.refused, reply);
  // A message cut short by its refusal leaves the server in the middle of it, so there is no way on.
  const bool cut_short = command == Command::kEndOfData && !end_of_data_out_;
  if (meaning.after_refusal == After::kHangUp || cut_short) {
    outcome.reason = fmt::format("The server did not take {}.", meaning.what);
    return Close(std::move(outcome));
  }
  // RFC 3030 4.2: after a BDAT that failed the transaction is in doubt until RSET.
  const bool chunk = command == Command::kEndOfData && capabilities_.chunking && envelope_->size != 0;
  FinishMessage(std::move(outcome));
  if (chunk || meaning.after_refusal == After::kReset) SendWords(Command::kReset, "RSET");
}

void ClientSession::OnGreeting(const ServerReply& reply) {
  extended_ = options_.extended || platform::AsciiUpper(reply.text).find("ESMTP") != std::string::npos;
  SendEhlo();
}

// What a server offers before TLS is forgotten with the EHLO after it (RFC 3207 4.2).
void ClientSession::OnCapabilities(const ServerReply& reply) {
  capabilities_ = ParseCapabilities(reply.text);
  if (MayUseStartTls()) return SendWords(Command::kStartTls, "STARTTLS");
  const bool clear = !setup_.encrypted;
  if (clear && options_.security == Security::kStartTls) return Fail(ResultCode::kGreetingRefused, kStartTlsMissing);
  if (clear && options_.security == Security::kAutomatic && options_.sign_in && !setup_.loopback) {
    return Fail(ResultCode::kGreetingRefused, kNoTls);
  }
  if (!extended_) {
    Capabilities kept;
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
  SendEhlo();
}

void ClientSession::SignIn() {
  if (!capabilities_.mechanisms.empty()) {
    auto mechanism = ChooseMechanism(options_.auth_mode, capabilities_, {options_.user, options_.password});
    if (!mechanism) return Fail(ResultCode::kAuthNotOffered, mechanism.error().what);
    return SignInWith(*std::move(mechanism));
  }
  const bool safe = setup_.encrypted || setup_.loopback;
  if (!options_.send_without_auth) return Fail(ResultCode::kAuthNotOffered, kAuthMissing);
  if (!safe) return Fail(ResultCode::kAuthNotOffered, kAuthMissingInClear);
  BecomeReady();
}

void ClientSession::SignInWith(std::unique_ptr<SaslMechanism> mechanism) {
  mechanism_ = std::move(mechanism);
  const std::string command = std::string("AUTH ") + mechanism_->Name();
  const auto initial = mechanism_->Start();
  if (!initial) return SendSecret(command, command);
  std::string coded;
  platform::AppendBase64(coded, initial->view());
  std::string line;
  line.reserve(command.size() + coded.size() + 2);
  // RFC 4954 4: an empty initial response is "=".
  line.append(command).append(" ").append(coded.empty() ? "=" : coded);
  SendSecret(line, command + " ****");
  Wipe(coded);
  Wipe(line);
}

void ClientSession::OnChallenge(const ServerReply& reply) {
  const auto challenge = platform::DecodeBase64(platform::Trim(reply.text));
  if (!challenge) return Fail(ResultCode::kAuthProtocolError, "The server broke the exchange that signs in.");
  const auto response = mechanism_->Step(*challenge);
  if (!response) return Fail(ResultCode::kAuthProtocolError, response.error().what);
  std::string coded;
  platform::AppendBase64(coded, response->view());
  SendSecret(coded, "****");
  Wipe(coded);
}

void ClientSession::BecomeReady() {
  mechanism_.reset();
  ready_ = true;
  events_.push_back({Event::Kind::kReady, {}, {}});
}

// --- ends ---

void ClientSession::Senseless(std::string_view what) {
  Fail(ResultCode::kBadResponse, fmt::format("The server's answer makes no sense: {}.", what));
}

void ClientSession::Fail(ResultCode code, std::string reason) { Close({State::kFailed, code, {}, std::move(reason)}); }

void ClientSession::GiveUp(Outcome why) { Close(std::move(why)); }

void ClientSession::FinishMessage(Outcome outcome) {
  envelope_ = nullptr;
  message_ = nullptr;
  body_.reset();
  events_.push_back({Event::Kind::kOutcome, {}, std::move(outcome)});
}

// A verdict of the server stands as it is; without one, a message whose last byte is out may have been taken.
void ClientSession::Close(Outcome why) {
  if (closed_) return;
  closed_ = true;
  if (out_secret_) Wipe(out_);
  if (envelope_ != nullptr) {
    Outcome outcome = why;
    if (end_of_data_out_ && why.state == State::kFailed) outcome.state = State::kUnknown;
    FinishMessage(std::move(outcome));
  }
  events_.push_back({Event::Kind::kClosed, {}, std::move(why)});
}

std::optional<Event> ClientSession::NextEvent() {
  if (events_.empty()) return {};
  Event event = std::move(events_.front());
  events_.pop_front();
  return event;
}

}  // namespace quillcast::smtp
