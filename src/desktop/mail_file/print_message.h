// A message file as pages: its heading above each, its body, and the number of the page below.
#pragma once

#include <QImage>
#include <functional>
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
// `most`: see ReadPrintedBody. Errors: kTryAgain after a cancel.
Result<MessagePages> ReadPages(const mail_file::MailMessage& message, const mail_file::PrintForm& form,
                               std::size_t most, const platform::CancelToken& cancel);

// Whether to go on, and how far it is.
struct PrintWatch {
  const platform::CancelToken& cancel;
  std::function<void(int page, int of)> see = [](int, int) {};
};

// Sets the margins and draws, of the printer's page ranges where it has any. Nothing is run or fetched for a page: it
// is laid out as a text is. May be called on any thread. A cancel is heeded between the blocks of the layout, each of
// which is a paragraph or a table, and between pages.
mail_file::PrintedMessage DrawMessage(QPrinter& printer, const MessagePages& pages, const PrintWatch& watch);
// The same, into a file whole or not at all (see PrintWhole); kNoPrinter where the printer has neither name nor file.
mail_file::PrintedMessage PrintMessageFile(QPrinter& printer, const MessagePages& pages, const platform::OwnFiles& own,
                                           const PrintWatch& watch);
// The same into a file that is open (see PrintInto).
mail_file::PrintedMessage PrintMessageInto(QPrinter& printer, const MessagePages& pages, int fd,
                                           const std::filesystem::path& told, const PrintWatch& watch);

}  // namespace quillcast::desktop
