// A message compiled once for a run. Rendering it for a recipient writes only what is personal.
//
//   mixed( alternative( text, related( html, pictures ) ), attachments ), each level only where it is needed.
//
// Without MIME: the text, and behind it the attachments as uuencoded lines.
#pragma once

#include <bitset>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "document/message_document.h"
#include "message/encoded_files.h"
#include "message/file_source.h"
#include "message/merged_body.h"
#include "message/message_headers.h"
#include "message/message_layout.h"
#include "message/message_options.h"
#include "message/part_headers.h"
#include "message/related_pictures.h"
#include "message/rendered_message.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "recipients/recipient.h"

namespace quillcast::message {

// For one thread, though rendering is const: the encoded files grow while it goes on.
class MessageTemplate {
 public:
  // `scratch_folder` takes large attachments in their encoded form. Files that cannot be read do not fail it: see
  // trouble() and picture_troubles().
  MessageTemplate(const document::MessageDocument& document, MessageOptions options,
                  const std::filesystem::path& scratch_folder, const platform::Clock& clock,
                  platform::Entropy& entropy);
  // The same with the document's files out of `files`, which need not outlive this.
  MessageTemplate(const document::MessageDocument& document, MessageOptions options,
                  const std::filesystem::path& scratch_folder, const platform::Clock& clock, platform::Entropy& entropy,
                  const FileSource& files);

  // An attachment that could not be taken in: no message can go out.
  const std::optional<FileTrouble>& trouble() const { return trouble_; }
  // Local pictures that the HTML refers to and that could not be taken in; the reference stays as it is.
  const std::vector<PictureTrouble>& picture_troubles() const { return picture_troubles_; }
  // Those that go along, and those that lie where the document may not take pictures from.
  const std::vector<Picture>& pictures() const { return pictures_; }
  const std::vector<ForeignPicture>& foreign_pictures() const { return foreign_pictures_; }
  // Which merge tags the message uses anywhere.
  std::bitset<document::kMergeFields.size()> UsedFields() const;
  bool is_html() const { return html_.has_value(); }
  bool has_text() const { return !texts_.empty(); }
  // Whether the server is asked for delivery notifications.
  bool asks_for_notice() const { return headers_.AsksForNotice(); }
  // Whether the account's character set, which is `charset()`, holds this recipient's subject.
  bool CanHoldSubject(const recipients::Recipient& recipient) const;
  const charset::Charset& charset() const { return options_.charset; }

  // The recipient's message. `address` is the envelope's; empty for a message to nobody. `number` is the recipient's
  // place in the run, for a Message-ID of its own. Fails with kBadData for values that make the message grow without
  // measure.
  Result<void> Render(const recipients::Recipient& recipient, const smtp::Address& address, std::int64_t number,
                      RenderedMessage& out) const;

 private:
  struct TextPart {
    HeadersByForm headers;
    MergedBody body;
  };
  struct FilePart {
    std::string header;
    std::string seven_bit_header;  // for one that holds octets above 127
  };

  // What the constructor is made of. A file that cannot be taken in is noted: see trouble() and picture_troubles().
  BodyStyle StyleOf(charset::Charset charset, bool is_html) const;
  void CompileText(const std::string& text);
  void CompileParts(const std::vector<std::string>& attachments, platform::Entropy& entropy, const FileSource& files);
  void CompileBare(const std::vector<std::string>& attachments, const FileSource& files);
  template <typename Take>
  void TakeFile(const OpenedFile& file, const Take& take);
  void AddPicture(const Picture& picture, const FileSource& files);
  void AddAttachment(const std::filesystem::path& file, const FileSource& files);
  void AddFilePart(std::string_view media_type, std::string_view disposition, const std::filesystem::path& file,
                   std::string_view content_id);

  // What Render is made of; false when the values make a text grow without measure.
  bool AppendTexts(const document::MergeValues& values, RenderedMessage& out) const;
  bool AppendText(const TextPart& part, const document::MergeValues& values, RenderedMessage& out) const;
  void AppendFile(std::size_t file, RenderedMessage& out) const;
  bool AppendParts(const document::MergeValues& values, RenderedMessage& out) const;

  MessageOptions options_;
  const platform::Clock& clock_;
  MessageHeaders headers_;
  MessageLayout layout_;
  // In the account's character set and, for the recipients whose values that set cannot hold, in UTF-8. Empty for HTML
  // without a text part.
  std::vector<TextPart> texts_;
  std::optional<TextPart> html_;
  std::vector<FilePart> file_parts_;  // by the number of the file
  mutable EncodedFiles files_;        // grows where a server needs files without octets above 127
  std::optional<FileTrouble> trouble_;
  std::vector<Picture> pictures_;
  std::vector<PictureTrouble> picture_troubles_;
  std::vector<ForeignPicture> foreign_pictures_;
};

}  // namespace quillcast::message
