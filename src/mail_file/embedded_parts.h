// The parts of a message that its body shows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "mail_file/mail_message.h"
#include "mail_file/part_addresses.h"

namespace quillcast::mail_file {

class EmbeddedParts {
 public:
  // The message outlives this.
  explicit EmbeddedParts(const MailMessage& message);

  // A page of the message with AddressOf in place of each address of a picture that is one of its parts, so that it
  // may stand among others. Those that it uses for anything, shown here or not, come to `used`, and so do those of the
  // style sheets that lie in the message.
  using Used = std::unordered_set<const Part*>;
  std::string WithAddresses(const Part& page, std::string_view html, Used& used) const;
  // Whether it has an <img> that shows a picture of the message, or one that it has in itself.
  bool ShowsPicture(const Part& page, std::string_view html) const;
  void NoteUsedBySheets(Used& used) const;

  // An address of its own: "cid:logo%40example.org", of a part that has no name, or not alone, "cid:part3".
  std::string AddressOf(const Part& part) const;
  // Of such an address; null for what is not there.
  const Part* Find(std::string_view address) const;
  // Its media type by its content; empty for what is no picture, or cannot be read.
  std::string PictureTypeOf(const Part& part) const;
  std::size_t PlaceOf(const Part& part) const { return static_cast<std::size_t>(&part - message_.parts().data()); }

 private:
  const MailMessage& message_;
  PartAddresses addresses_;
  std::vector<std::string> ids_;                                // by part; empty for what is never shown
  std::unordered_map<std::string, std::size_t> part_;           // by id
  mutable std::unordered_map<const Part*, std::string> types_;  // of those that were looked at
};

}  // namespace quillcast::mail_file
