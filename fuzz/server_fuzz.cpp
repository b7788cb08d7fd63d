// The mailbox's session against any bytes. The first byte chooses what is offered and how the input is cut; what comes
// out must not depend on the cut, and a message that is begun must be kept or dropped once.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "smtp/mailbox/server_session.h"

namespace {

using namespace quillcast;

// Remembers what became of each message. How much of a dropped one came before it was dropped is up to the cut.
class RecordingSink final : public smtp::MessageSink {
 public:
  std::string record;
  bool open = false;

  void Begin() override {
    if (open) std::abort();
    open = true;
    content_.clear();
  }
  Result<void> Write(std::string_view content) override {
    if (!open) std::abort();
    content_ += content;
    return {};
  }
  Result<std::string> Keep(const smtp::ReceivedEnvelope& envelope) override {
    if (!open || envelope.recipients.empty()) std::abort();
    open = false;
    record += content_ + " kept";
    return std::string("kept");
  }
  void Drop() override {
    open = false;
    record += " dropped";
  }

 private:
  std::string content_;
};

std::string Play(std::string_view input, std::size_t piece, bool certificate, bool sign_in) {
  smtp::ServerOptions options;
  options.size_limit = 2000;
  options.recipient_limit = 3;
  options.has_certificate = certificate;
  if (sign_in) options.user = options.password = "ada";
  options.rules.push_back({smtp::RuleStage::kRecipient, "b*", 550});
  const smtp::ServerPeer peer{"127.0.0.1:1", true};
  RecordingSink sink;
  smtp::ServerSession session(options, peer, sink);
  std::string replies;
  while (!input.empty()) {
    const auto part = input.substr(0, piece);
    session.Receive(part);
    input.remove_prefix(part.size());
    replies += session.BytesToSend();
    session.Sent(session.BytesToSend().size());
  }
  session.Shutdown("is ending");
  if (sink.open || session.WhatNext() != smtp::ServerSession::Next::kClose) std::abort();
  return replies + std::string(session.BytesToSend()) + sink.record;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const bool certificate = (data[0] & 1) != 0;
  const bool sign_in = (data[0] & 2) != 0;
  const std::size_t piece = 1 + (data[0] >> 2);
  if (Play(input, piece, certificate, sign_in) != Play(input, size, certificate, sign_in)) std::abort();
  return 0;
}
