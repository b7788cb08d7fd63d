// What a person is shown of the body of a stranger's message.
#pragma once

#include <string>
#include <vector>

#include "html/simple_colours.h"
#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

// Of links that say no colour, in a page that is cut down.
using html::kLinkInk;

struct ShownPicture {
  std::string type;   // the media type, by its content
  std::string bytes;  // of the picture's file
};

struct ShownBody {
  std::string html;                    // see html::Simplify; "cid:0" is the first of the pictures, and so on
  std::vector<ShownPicture> pictures;  // that lie in the message, at most 100, together below 64 MiB
  bool is_cut = false;                 // the body goes on
  std::size_t pictures_left_out = 0;   // of the message's own, for want of room
};

// Of a body of over 32 MiB the first MiB alone is read. `most` is about how many bytes of HTML there may be. Errors:
// kIo when the file cannot be read; kTryAgain when it was cancelled.
Result<ShownBody> ReadShownBody(const MailMessage& message, std::size_t most, const platform::CancelToken* cancel);

}  // namespace quillcast::mail_file
