// Plays a dialogue against a client session, line by line, and tells where the two part.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text.h"
#include "smtp/client/client_session.h"

namespace quillcast::smtp {

// Of a run to a server that is known to take messages in the words in which it takes all.
struct KnownWindow : SendWindow {
  KnownWindow() { words().Learn({250, "", "ok"}); }
};

inline Address operator""_address(const char* text, std::size_t length) { return *Address::From({text, length}); }

// A message in pieces of a given length.
class TextSource final : public MessageSource {
 public:
  explicit TextSource(std::string text, std::size_t piece = 0, bool dots = true)
      : text_(std::move(text)), piece_(piece == 0 ? text_.size() : piece), dots_(dots) {}
  Result<std::string_view> Next() override {
    if (fails_at && at_ >= *fails_at) return Error{Failure::kIo, "The attachment cannot be read."};
    const auto next = std::string_view(text_).substr(at_, piece_);
    at_ += next.size();
    return next;
  }
  void Rewind() override { at_ = 0; }
  bool MayHaveLeadingDots() const override { return dots_; }
  std::optional<std::size_t> fails_at;

 private:
  std::string text_;
  std::size_t piece_;
  std::size_t at_ = 0;
  bool dots_;
};

// What a session told in the course of a dialogue.
struct Told {
  std::vector<std::string> log;
  std::vector<Outcome> outcomes;
  std::vector<bool> again;  // of each outcome
  std::optional<Outcome> closed;
  bool ready = false;
  bool tls_wanted = false;
};

inline void Listen(ClientSession& session, Told& told) {
  while (const Event* event = session.NextEvent()) {
    switch (event->kind) {
      case Event::Kind::kLogLine:
        told.log.push_back(event->text);
        break;
      case Event::Kind::kStartTls:
        told.tls_wanted = true;
        break;
      case Event::Kind::kReady:
        told.ready = true;
        break;
      case Event::Kind::kOutcome:
        told.outcomes.push_back(event->outcome);
        told.again.push_back(event->outcome.whereabouts == Whereabouts::kNotOut ||
                             event->outcome.whereabouts == Whereabouts::kNoRoom);
        break;
      case Event::Kind::kClosed:
        told.closed = event->outcome;
        break;
      case Event::Kind::kOffer:
      case Event::Kind::kOddity:
      case Event::Kind::kUnfinished:
      case Event::Kind::kInClear:
        break;
    }
  }
}

// "S: " lines are received, "C: " lines must be what is sent next, "TLS" is a handshake that succeeds, and "-" a while
// in which the server is silent. "S+ " lines come in one packet with the line after them. After the last line nothing
// more may be waiting to be sent. `feed` is called wherever a client would look for messages to submit.
inline void Play(ClientSession& session, Told& told, std::string_view dialogue,
                 const std::function<void()>& feed = {}) {
  std::string sent;
  std::string packet;
  const auto take = [&] {
    if (feed) feed();
    for (auto bytes = session.BytesToSend(); !bytes.empty(); bytes = session.BytesToSend()) {
      sent += bytes;
      session.Sent(bytes.size());
    }
    Listen(session, told);
  };
  for (std::string_view line : platform::Split(dialogue, '\n')) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));  // a blank at the end belongs to the line
    if (line.starts_with("S: ") || line.starts_with("S+ ")) {
      if (packet.empty()) take();
      ASSERT_EQ(sent, "") << "sent before: " << line;
      packet.append(line.substr(3)).append("\r\n");
      if (line.starts_with("S+ ")) continue;
      session.Receive(std::exchange(packet, {}));
      Listen(session, told);
    } else if (line.starts_with("C: ")) {
      take();
      const std::string wanted = std::string(line.substr(3)) + "\r\n";
      ASSERT_EQ(sent.substr(0, wanted.size()), wanted);
      sent.erase(0, wanted.size());
    } else if (line == "-") {
      take();
      ASSERT_TRUE(session.Listens());
      session.OnSilence();
    } else if (line == "TLS") {
      Listen(session, told);
      ASSERT_TRUE(told.tls_wanted);
      session.TlsStarted();
    }
  }
  take();
  EXPECT_EQ(sent, "") << "after the end of the dialogue";
}

}  // namespace quillcast::smtp
