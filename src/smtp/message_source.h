// Where the bytes of a message come from.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/result.h"

namespace quillcast::smtp {

// The bytes of one message, complete (headers and body, CRLF line ends, the last line ended), in pieces. A session may
// rewind it when a message has to go over a second connection.
class MessageSource {
 public:
  virtual ~MessageSource() = default;
  // The next piece; empty at the end. It stays valid until the next call. Fails when a file of ours cannot be read.
  virtual Result<std::string_view> Next() = 0;
  // The message starts anew, in its first form.
  virtual void Rewind() = 0;
  // Turns the message into its form without octets above 127 and gives the size of that form, which holds until Rewind.
  // Called before the first byte is taken, for a server without 8BITMIME. Fails with kBadData where there is no such
  // form.
  virtual Result<std::uint64_t> UseSevenBit() {
    return Error{Failure::kBadData, "The message holds octets above 127, and the server does not take them (8BITMIME).",
                 "Choose the encoding Quoted Printable."};
  }
  // False when it is known that no line begins with "." (encoded bodies): dot-stuffing can then be skipped.
  virtual bool MayHaveLeadingDots() const { return true; }
};

}  // namespace quillcast::smtp
