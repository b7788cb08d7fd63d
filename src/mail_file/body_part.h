// One text or page of the body by itself.
#pragma once

#include <optional>
#include <string_view>

#include "mail_file/embedded_parts.h"
#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

bool IsTextOrPage(const Part& part);

// Which of them show something. What their pictures are called is gathered once for all that are asked about.
class ShownParts {
 public:
  // The message outlives this.
  explicit ShownParts(const MailMessage& message) : message_(message) {}

  // Whether whoever looks at such a part sees anything: a word or a picture, no blanks, no-break spaces and line ends
  // alone. What cannot be decoded shows nothing; of a large one it is taken for granted.
  bool Shows(const Part& part);

 private:
  bool HasWordOrPicture(const Part& part);
  bool HasPictureOfItsOwn(const Part& part, std::string_view html);

  const MailMessage& message_;
  std::optional<EmbeddedParts> embedded_;  // once it was needed
};

}  // namespace quillcast::mail_file
