// The body of a message as a folder that a browser shows: a page that nothing runs in, and its pictures beside it.
#pragma once

#include <string>
#include <vector>

#include "mail_file/body_page.h"
#include "mail_file/chosen_folder.h"
#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

struct BodyFolderOptions {
  std::string page_name = "index.html";
  // For pages that are opened as they are; a page that goes on into a message of one's own has no use for it.
  bool forbids_loading = true;
  TextAsHtml text_as_html = html::PageOfText;
  const platform::CancelToken* cancel = nullptr;  // outlives the call
};

struct BodyFolder {
  std::string page;                   // what the page is called there
  std::vector<std::string> pictures;  // and they
  std::vector<Error> failures;        // pictures that could not be written; the page then shows none in their place
};

// What BodyAsHtml gives, as html::SafePage makes it, and of the parts that it shows, and of what lies in its addresses
// (RFC 2397), those that are pictures by their content; drawings (SVG) are none. Fails where the page cannot be
// written.
Result<BodyFolder> WriteBodyFolder(const MailMessage& message, ChosenFolder& folder, const BodyFolderOptions& options);

// Writes the content of a part to a file that is open, block by block. kTryAgain when it was cancelled.
Result<void> WritePart(const MailMessage& message, const Part& part, int fd, const std::filesystem::path& file,
                       const platform::CancelToken* cancel);

}  // namespace quillcast::mail_file
