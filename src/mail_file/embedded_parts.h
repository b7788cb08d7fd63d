// The parts of a message that its body shows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

// Finds parts by their Content-ID (RFC 2392) or Content-Location (RFC 2557); what lies in attached messages belongs to
// those.
class EmbeddedParts {
 public:
  // The message outlives this.
  explicit EmbeddedParts(const MailMessage& message);
  // Of an address as HTML writes it; null for what is not there.
  const Part* Find(std::string_view address) const;
  // An address that finds the part, also one that has none of its own: "cid:logo%40example.org".
  std::string AddressOf(const Part& part) const;
  // Its media type by its content; empty for what is no picture, or cannot be read.
  std::string PictureTypeOf(const Part& part) const;
  std::size_t PlaceOf(const Part& part) const { return static_cast<std::size_t>(&part - message_.parts().data()); }

 private:
  std::string IdOf(const Part& part) const;

  const MailMessage& message_;
  std::string base_;                                  // of the body's addresses
  std::unordered_map<std::string, std::size_t> ids_;  // places, the first of one name
  std::unordered_map<std::string, std::size_t> locations_;
};

}  // namespace quillcast::mail_file
