// The header fields of a part that say what it is (RFC 2045 3), and what they come to.
#pragma once

#include <string>
#include <string_view>

#include "mail_file/part.h"

namespace quillcast::mail_file {

struct PartFields {
  std::string type;
  std::string disposition;
  std::string encoding;
  std::string id;
  std::string location;
  std::string base;

  // Keeps the value of a field that counts here; of several the first, as most readers do.
  void Take(std::string_view name, std::string_view value);
};

// Whole characters of at most kLongestPartText bytes. `text` is UTF-8.
std::string BoundedPartText(std::string_view text);

// What a part's header comes to.
struct PartMeaning {
  std::string boundary;  // of a multipart, else empty
  std::string start;     // the Content-ID of what a multipart begins with (RFC 2387 3.2), where it says so
  bool is_multipart = false;
  bool is_message = false;          // whose content is a message with parts of its own
  bool has_two_boundaries = false;  // the parameter stands twice
  bool is_to_be_saved = false;      // by its disposition
};

// Fills in what the fields say. `part.type` holds what the part is without a Content-Type.
PartMeaning ReadPartFields(const PartFields& fields, Part& part);

// By its name, in small letters; kUnknown for what is not decoded here.
TransferEncoding EncodingOf(std::string_view name);

}  // namespace quillcast::mail_file
