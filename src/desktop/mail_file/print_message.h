// A message file as pages: its heading above each, its body, and the number of the page below.
#pragma once

#include <QImage>
#include <optional>
#include <vector>

#include "mail_file/message_pages.h"
#include "platform/file_attributes.h"

class QPrinter;

namespace quillcast::desktop {

// What is printed, read and decoded.
struct MessagePages {
  mail_file::PrintForm form;
  mail_file::PrintedBody body;
  std::vector<QImage> pictures;
};

struct PrintedMessage {
  mail_file::PrintCode code = mail_file::PrintCode::kPrinted;
  int pages = 0;
  std::optional<Error> error;  // why, where there is more to say
};

// Sets the margins and draws. Nothing is run or fetched for a page: it is laid out as a text is. May be called on any
// thread.
PrintedMessage DrawMessage(QPrinter& printer, const MessagePages& pages);
// The same, into a file whole or not at all (see PrintWhole).
PrintedMessage PrintMessageFile(QPrinter& printer, const MessagePages& pages, const platform::OwnFiles& own);

}  // namespace quillcast::desktop
