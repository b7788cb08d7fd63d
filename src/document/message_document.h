// The one message that is being composed.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/attachment_list.h"
#include "document/edited_document.h"
#include "document/picture_places.h"
#include "html/html_to_text.h"
#include "platform/prompts.h"
#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::document {

// kText sends no HTML at all.
enum class Format { kHtml, kText };
enum class Priority { kLow, kNormal, kHigh };

// What the boxes of the main window and the options of the command call them; any other text counts as the usual one.
Format FormatFrom(std::string_view text);
Priority PriorityFrom(std::string_view text);

// A value: a run keeps a copy, which later typing does not change.
struct MessageDocument {
  std::string subject;
  std::string html;                   // the body, always kept as HTML
  std::filesystem::path base_folder;  // what relative references in the HTML start from
  PicturePlaces picture_places;       // where pictures may come from besides that folder
  std::optional<std::string> text;    // a text part of its own, in place of the one made from the HTML
  Format format = Format::kHtml;
  AttachmentList attachments;
  Priority priority = Priority::kNormal;
  bool read_receipt = false;
  std::vector<std::filesystem::path> sources;  // the files that its texts were read from

  // The body as plain text: `text` where it is given, else made from the HTML and wrapped. Lines end in "\n".
  std::string PlainText(std::size_t columns = html::kTextColumns) const;
  bool operator==(const MessageDocument&) const = default;
};

// Reads a body from a file: as HTML, or, for a name that ends in ".txt", as text (the format becomes kText and the HTML
// is the text with its markup characters escaped). Encodings, and what is no body: see ReadLetterFile.
Result<void> LoadBody(MessageDocument& document, const std::filesystem::path& file);

// Before a file is written that is made of the document: kNotPermitted where it would take the place of one of those
// that the document is read from, that go along with it, or that its HTML shows, by whichever spelling or link.
Result<void> CheckIsNoSource(const std::filesystem::path& target, const MessageDocument& document);

// Text as an HTML body: "<" and "&" escaped, line ends as "<br>".
std::string HtmlFromText(std::string_view text);

// What picking `chosen` in the format box does: the text that the box then shows. Picking HTML is refused, with a
// message, while `Advanced` `Encoding` is "Plain". The document itself is never converted.
Result<std::string> PickFormat(std::string_view chosen, const profile::SettingsStore& settings,
                               platform::Prompts& prompts);

// The Open command: asks for a file, offers to save changes first, gives the file to load. Empty when the person
// cancels on the way; an error when the changes could not be saved.
Result<std::filesystem::path> PickDocumentToOpen(EditedDocument& document, platform::Prompts& prompts);

// The Save command: Save, except to the preview file, which is never the person's own.
Result<void> SaveDocument(EditedDocument& document, const std::filesystem::path& preview_body,
                          platform::Prompts& prompts);

}  // namespace quillcast::document
