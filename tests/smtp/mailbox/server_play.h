// Plays dialogues with a server session. A line "C: text" is sent with CRLF, "c: text" without; "S: text" is what must
// come back, to the letter. In what is sent \r, \n, \0, \t, \\ and \xHH stand for bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "smtp/mailbox/server_session.h"

namespace quillcast::smtp {

struct KeptMessage {
  ReceivedEnvelope envelope;
  std::string content;
};

// Keeps messages in memory, and fails where it is told to.
class MemorySink final : public MessageSink {
 public:
  std::vector<KeptMessage> kept;
  bool fail_write = false;
  bool fail_keep = false;

  void Begin() override {
    open_ = true;
    content_.clear();
  }
  Result<void> Write(std::string_view content) override {
    if (!open_ || fail_write) return Error{Failure::kIo, "full", ""};
    content_ += content;
    return {};
  }
  Result<std::string> Keep(const ReceivedEnvelope& envelope) override {
    if (!open_ || fail_keep) return Error{Failure::kIo, "full", ""};
    open_ = false;
    kept.push_back({envelope, content_});
    return std::string("kept");
  }
  void Drop() override { open_ = false; }
  bool open() const { return open_; }

 private:
  bool open_ = false;
  std::string content_;
};

// What one side said between two turns of the other.
struct Turn {
  std::string sent;
  std::string expected;
};
std::vector<Turn> ReadDialogue(std::string_view text);

// All that waits to be sent, taken out of the session.
std::string TakeReplies(ServerSession& session);

}  // namespace quillcast::smtp
