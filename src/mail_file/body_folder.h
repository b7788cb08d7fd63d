// The body of a message as a folder that a browser shows: a page that nothing runs in, and its pictures beside it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "mail_file/chosen_folder.h"
#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

struct BodyFolderOptions {
  std::string page_name = "index.html";
  // For pages that are opened as they are; a page that goes on into a message of one's own has no use for it.
  bool forbids_loading = true;
  const platform::CancelToken* cancel = nullptr;  // outlives the call
};

struct BodyFolder {
  std::string page;                   // what the page is called there
  std::vector<std::string> pictures;  // and they
  std::vector<Error> failures;        // pictures that could not be written; the page then shows none in their place
};

// The HTML of the message as html::SafePage makes it, or a page of its text, and of the embedded parts that it shows
// (RFC 2392), and of what lies in its addresses (RFC 2397), those that are pictures by their content; drawings (SVG)
// are none. Fails where the page cannot be written.
Result<BodyFolder> WriteBodyFolder(const MailMessage& message, ChosenFolder& folder, const BodyFolderOptions& options);

// Whether the body is a page: one that shows nothing, beside a text, is none.
bool HasPage(const MailMessage& message);

// The body as HTML, not made safe: of a message that has no page, one of its text.
Result<std::string> BodyAsHtml(const MailMessage& message);

// Why a message has no body that can be read, and what to do: it is encrypted, or there is none. Nothing where it has.
std::optional<Error> WhyNoBody(const MailMessage& message);

// Writes the content of a part to a file that is open, block by block. kTryAgain when it was cancelled.
Result<void> WritePart(const MailMessage& message, const Part& part, int fd, const std::filesystem::path& file,
                       const platform::CancelToken* cancel);

// Finds the parts that a body shows by their Content-ID; what lies in attached messages belongs to those.
class EmbeddedParts {
 public:
  // The message outlives this.
  explicit EmbeddedParts(const MailMessage& message);
  // Of "cid:logo@example.org", as HTML writes it; null for any other address, and what is not there.
  const Part* Find(std::string_view address) const;
  // Its media type by its content; empty for what is no picture, or cannot be read.
  std::string PictureTypeOf(const Part& part) const;
  std::size_t PlaceOf(const Part& part) const { return static_cast<std::size_t>(&part - message_.parts().data()); }

 private:
  const MailMessage& message_;
  std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace quillcast::mail_file
