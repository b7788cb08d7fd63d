// An address as MAIL and RCPT take it, and a header field.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/result.h"

namespace quillcast::smtp {

// Bare ("ada@example.org"), in UTF-8, without angle brackets. It holds nothing that could end a command, a path or a
// mailbox of a header early: no control character (C1 included), no blank, no angle bracket, and outside a quoted
// local part or an address literal none of ,;:()[]\"@ beside the one "@", so that it names no route either. It has at
// most 64 octets before its last "@" and 254 in all (RFC 5321 4.5.3.1, RFC 3696 errata 1690), so that a line it
// stands in stays below 998 (RFC 5322 2.1.1), also with its domain in A-labels.
//
// Known limit: quoted local parts that hold blanks or angle brackets are refused, though RFC 5321 4.1.2 has them.
class Address {
 public:
  // Nobody: as a sender, what notifications of failure come from ("<>"); as a recipient, none.
  Address() = default;

  // Errors: kBadData, naming the text and what is wrong with it (see Fault).
  static Result<Address> From(std::string_view text);
  // What keeps a text from being an address, as a sentence about it; nothing when nothing does.
  static std::optional<SentencePattern<1>> Fault(std::string_view text);
  static constexpr SentencePattern<1> kHoldsControl =
      "\"{}\" holds a control character, so it is no address to send to.";

  // As it was given: the domain is in A-labels only where it came so.
  const std::string& text() const { return text_; }
  bool empty() const { return text_.empty(); }
  // What stands before the last "@", and behind it.
  std::string_view local_part() const { return std::string_view(text_).substr(0, text_.rfind('@')); }
  std::string_view domain() const { return std::string_view(text_).substr(text_.rfind('@') + 1); }

 private:
  explicit Address(std::string text) : text_(std::move(text)) {}
  std::string text_;
};

}  // namespace quillcast::smtp
