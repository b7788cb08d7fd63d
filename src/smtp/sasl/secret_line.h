// A line of signing in: a type like SmtpLine whose text people must not see.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/secret.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {

// Wiped when it goes.
class SecretLine {
 public:
  // Words that people may see.
  explicit SecretLine(const SmtpLine& words) : text_(words.text()), shown_(words.text()) {}
  // The octets of a message in base 64, which has no line end; people see "****".
  static SecretLine Coded(const platform::Secret& message);
  // A command with this line as what goes with it, which is "=" where this line is empty, not absent (RFC 4954 4).
  SecretLine Behind(const SmtpLine& command) const;

  // Without the line end.
  std::string_view text() const { return text_.view(); }
  // What the log has in its place.
  const std::string& shown() const { return shown_; }

 private:
  SecretLine(std::string&& text, std::string shown) : text_(std::move(text)), shown_(std::move(shown)) {}

  platform::Secret text_;
  std::string shown_;
};

}  // namespace quillcast::smtp
