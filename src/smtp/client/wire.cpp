#include "smtp/client/wire.h"

namespace quillcast::smtp {

void Wire::Send(Awaited reply, const SmtpLine& line, std::size_t place) {
  out_.append(line.text()).append("\r\n");
  Await(reply, made());
  events_.Client(line.text(), place).asks_for = reply;
}

void Wire::SendSecret(Awaited reply, const SecretLine& line) {
  out_.reserve(out_.size() + line.text().size() + 2);  // growing later would leave a copy behind
  out_.append(line.text()).append("\r\n");
  out_secret_ = true;
  Await(reply, made());
  events_.Client(line.shown(), 0).asks_for = reply;
}

void Wire::Sent(std::size_t count) {
  const std::uint64_t blocks = sent() / kBlock;
  out_at_ += count;
  steps_ += sent() / kBlock - blocks;
  if (out_at_ < out_.size()) return;
  base_ += out_.size();
  if (out_secret_) platform::Wipe(out_);
  out_secret_ = false;
  out_.clear();
  out_at_ = 0;
}

// Where that moves no more than is out: a buffer that swings over twice its room stays in no cache.
void Wire::Compact() {
  if (out_at_ < out_.size() - out_at_) return;
  out_.erase(0, out_at_);
  base_ += out_at_;
  out_at_ = 0;
}

void Wire::Close() {
  if (out_secret_) platform::Wipe(out_);
}

void Wire::TellReply() {
  std::string_view lines = reader_.lines();
  for (auto end = lines.find('\n'); end != std::string_view::npos; end = lines.find('\n')) {
    events_.Server(lines.substr(0, end));
    lines.remove_prefix(end + 1);
  }
}

}  // namespace quillcast::smtp
