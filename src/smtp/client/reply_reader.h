// Reads a server's replies (RFC 5321 4.2) out of bytes that come in any pieces.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "smtp/server_reply.h"

namespace quillcast::smtp {

class ReplyReader {
 public:
  // In octets. RFC 5321 4.5.3.1.5 asks for 512, RFC 4954 4 for 12288 of a challenge.
  static constexpr std::size_t kLongestLine = 4096;
  static constexpr std::size_t kLongestChallenge = 12288;
  static constexpr int kMostLines = 200;

  enum class Step {
    kNeedMore,   // no whole reply is there yet
    kReply,      // reply() and lines() tell the next one
    kSenseless,  // these bytes are no reply: complaint() says why, and every later call says so again
  };

  void Add(std::string_view bytes);
  Step Next();

  const ServerReply& reply() const { return reply_; }
  // The reply as it came, its lines each ended by "\n".
  std::string_view lines() const { return lines_; }
  const std::string& complaint() const { return complaint_; }
  // The beginning of what it complains of.
  const std::string& odd() const { return odd_; }
  // Whether bytes are here that belong to no reply that was given out.
  bool HasMore() const { return at_ < buffer_.size() || line_count_ > 0; }
  // Their beginning.
  std::string More() const;

 private:
  bool TakeLine(std::string_view line);  // true when it is the last one of its reply
  void Complain(std::string why, std::string_view line);

  std::string buffer_;
  std::size_t at_ = 0;       // what lies before is read
  std::size_t scanned_ = 0;  // up to here there is no line end, so a dripped line is not searched again
  int line_count_ = 0;       // of the reply under way
  ServerReply reply_;
  std::string lines_;
  std::string complaint_;
  std::string odd_;
};

}  // namespace quillcast::smtp
