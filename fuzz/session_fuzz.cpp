// The client's session against a hostile server. The first two bytes choose the account and the number of messages; of
// the rest a byte below 9 is something that happens (see Play), and the others are what the server says.
//
// Whatever it says: what the client writes are whole commands and whole messages, each message has one outcome that its
// bytes on the wire bear out, a password stays where it belongs, and the end comes once, behind everything else.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "smtp/client/client_session.h"

namespace {

using namespace quillcast;
using namespace quillcast::smtp;

constexpr std::string_view kPassword = "s3cret-of-ada";
constexpr std::string_view kCoded = "czNjcmV0LW9mLWFkYQ==";  // as LOGIN sends it

void Require(bool holds) {
  if (!holds) std::abort();
}

// A message that names its recipient in its first line; every third one has lines that begin with dots.
class Letter final : public MessageSource {
 public:
  explicit Letter(std::size_t number) : recipient("r" + std::to_string(number) + "@b.c"), dots_(number % 3 == 0) {
    text = "To: " + recipient + "\r\n";
    for (std::size_t line = 0; line < number * 40; ++line) text += dots_ ? ".dot\r\n" : "line\r\n";
  }
  Result<std::string_view> Next() override {
    const auto piece = std::string_view(text).substr(at_, 500);
    at_ += piece.size();
    return piece;
  }
  void Rewind() override { at_ = 0; }
  bool MayHaveLeadingDots() const override { return dots_; }

  std::string recipient;
  std::string text;

 private:
  std::size_t at_ = 0;
  bool dots_;
};

// Reads what the client writes as a strict server would, and knows which messages are wholly out.
class WireReader {
 public:
  void Hear(std::string_view bytes) {
    pending_ += bytes;
    while (chunk_ > 0 ? HearChunk() : HearLine()) {
    }
  }
  bool IsOut(const Letter& letter) const {
    for (const std::string& content : contents_) {
      if (content == letter.text) return true;
    }
    return false;
  }
  bool signed_in() const { return signed_in_; }

 private:
  bool HearChunk() {
    if (pending_.size() < chunk_) return false;
    contents_.push_back(pending_.substr(0, chunk_));
    pending_.erase(0, chunk_);
    chunk_ = 0;
    return true;
  }
  bool HearLine() {
    const auto end = pending_.find("\r\n");
    if (end == std::string::npos) return false;
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 2);
    Require(line.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos);
    if (in_message_) return HearMessageLine(line), true;
    if (after_data_ && line.starts_with("To: ")) {
      in_message_ = true;
      content_.clear();
      return HearMessageLine(line), true;
    }
    after_data_ = line == "DATA";
    if (line.starts_with("AUTH")) signed_in_ = true;
    if (line.starts_with("BDAT ")) chunk_ = std::stoul(line.substr(5));
    return true;
  }
  void HearMessageLine(std::string line) {
    if (line == ".") {
      in_message_ = after_data_ = false;
      contents_.push_back(content_);
      return;
    }
    if (line.starts_with('.')) line.erase(0, 1);
    content_ += line + "\r\n";
  }

  std::string pending_;
  std::string content_;
  std::vector<std::string> contents_;
  std::size_t chunk_ = 0;
  bool after_data_ = false;
  bool in_message_ = false;
  bool signed_in_ = false;
};

class Conversation {
 public:
  Conversation(std::uint8_t account, std::uint8_t about) {
    options_.pipeline = (account & 1) != 0;
    options_.extended = (account & 2) != 0;
    options_.sign_in = (account & 4) != 0;
    options_.send_without_auth = (account & 8) != 0;
    options_.security =
        std::array{Security::kAutomatic, Security::kStartTls, Security::kTls, Security::kNone}[(account >> 4) & 3];
    options_.auth_mode =
        std::array{AuthMode::kLogin, AuthMode::kCramMd5, AuthMode::kNtlm, AuthMode::kLogin}[(account >> 6) & 3];
    options_.user = "ada";
    options_.password = platform::Secret(kPassword);
    loopback_ = (about & 1) != 0;
    encrypted_ = options_.security == Security::kTls;
    for (std::size_t n = 0; n < 1 + ((about >> 1) & 7U); ++n) letters_.emplace_back(n);
    if ((about & 16) != 0) window_.BeCautious();
    session_.emplace(options_, SessionSetup{"[127.0.0.1]", loopback_, encrypted_, std::string(24, 'n'), {}}, window_);
  }

  void Play(std::string_view script) {
    std::string said;
    for (std::size_t at = 0; at < script.size() && !session_->closed(); ++at) {
      const char c = script[at];
      if (c < 0 || c > 8) {
        said += c;
        continue;
      }
      Take();
      session_->Receive(said);
      said.clear();
      Happen(c);
    }
    session_->Receive(said);
    Happen(4);
    Check();
  }

 private:
  void Happen(char what) {
    switch (what) {
      case 1:  // everything goes out
        Take();
        for (auto bytes = session_->BytesToSend(); !bytes.empty(); bytes = session_->BytesToSend()) Write(bytes.size());
        break;
      case 2:  // a few bytes go out
        Take();
        if (const auto bytes = session_->BytesToSend(); !bytes.empty()) Write(bytes.size() < 7 ? bytes.size() : 7);
        break;
      case 3:
        Take();
        if (tls_wanted_ && !session_->closed()) {
          encrypted_ = true;
          tls_wanted_ = false;
          session_->TlsStarted();
        }
        break;
      case 4:
        session_->GiveUp({State::kFailed, ResultCode::kConnectionLost, {}, "The server closed the connection."});
        break;
      case 5:
        session_->GiveUp({State::kFailed, ResultCode::kReplyTimeout, {}, "It took too long."});
        break;
      case 6:
        session_->GiveUp({State::kFailed, ResultCode::kCancelled, {}, {}});
        break;
      case 7:
        session_->Withdraw();
        break;
      case 8:
        if (session_->Listens()) session_->OnSilence();
        break;
      default:  // what was said comes in one piece
        break;
    }
    Take();
  }

  void Write(std::size_t count) {
    const bool before = wire_.signed_in();
    wire_.Hear(session_->BytesToSend().substr(0, count));
    session_->Sent(count);
    const bool may =
        encrypted_ || options_.security == Security::kNone || (options_.security == Security::kAutomatic && loopback_);
    Require(before || !wire_.signed_in() || may);
  }

  // Takes what the session tells, and submits what it wants.
  void Take() {
    while (const Event* event = session_->NextEvent()) Hear(*event);
    while (submitted_ < letters_.size() && session_->WantsMessage()) {
      Letter& letter = letters_[submitted_++];
      session_->Submit({.sender = *Address::From("a@b.c"),
                        .recipient = *Address::From(letter.recipient),
                        .size = letter.text.size()},
                       letter);
      while (const Event* event = session_->NextEvent()) Hear(*event);
    }
  }

  void Hear(const Event& event) {
    Require(!ended_);
    switch (event.kind) {
      case Event::Kind::kLogLine:
        // What the server says is its own affair.
        Require(event.text.starts_with("S: ") ||
                (event.text.find(kPassword) == std::string::npos && event.text.find(kCoded) == std::string::npos));
        Require(event.text.find('\n') == std::string::npos);
        break;
      case Event::Kind::kStartTls:
        tls_wanted_ = true;
        break;
      case Event::Kind::kOutcome:
        Judge(event);
        break;
      case Event::Kind::kClosed:
        ended_ = true;
        break;
      case Event::Kind::kOffer:
      case Event::Kind::kOddity:
      case Event::Kind::kUnfinished:
      case Event::Kind::kInClear:
      case Event::Kind::kReady:
        break;
    }
  }

  void Judge(const Event& event) {
    Require(judged_ < submitted_);
    const Outcome& outcome = event.outcome;
    const bool out = wire_.IsOut(letters_[judged_++]);
    if (outcome.state == State::kSent) Require(out && outcome.reply.code / 100 == 2);
    if (outcome.state == State::kUnknown) Require(out && outcome.is_decided());
    if (outcome.state == State::kRefused) Require(outcome.reply.code / 100 == 5 || outcome.reply.code == 0);
    if (!outcome.is_decided()) Require(!out || outcome.reply.code / 100 == 4 || outcome.reply.code / 100 == 5);
  }

  void Check() {
    Take();
    Require(session_->closed() && ended_ && judged_ == submitted_);
    Require(session_->BytesToSend().empty() && !session_->WantsMessage());
  }

  ClientOptions options_;
  SendWindow window_;
  std::deque<Letter> letters_;
  std::optional<ClientSession> session_;
  WireReader wire_;
  std::size_t submitted_ = 0;
  std::size_t judged_ = 0;
  bool loopback_ = false;
  bool encrypted_ = false;
  bool tls_wanted_ = false;
  bool ended_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2) return 0;
  Conversation(bytes[0], bytes[1]).Play({reinterpret_cast<const char*>(bytes) + 2, size - 2});
  return 0;
}
