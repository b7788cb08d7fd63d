// A message compiled once for a run. Rendering it for a recipient writes only what is personal.
//
//   mixed( alternative( text, related( html, pictures ) ), attachments ), each level only where it is needed.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "compose/message_document.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "sending/merged_body.h"
#include "sending/message_options.h"
#include "sending/related_pictures.h"
#include "sending/shared_tail.h"
#include "smtp/envelope.h"

namespace quillcast::sending {

// One recipient's message: what MAIL and RCPT need, and the bytes. Reused from one recipient to the next; it must not
// outlive the template that rendered it.
class RenderedMessage final : public smtp::MessageSource {
 public:
  smtp::Envelope envelope;
  bool subject_not_encoded = false;  // the account's character set cannot hold it; it goes out as UTF-8
  RenderedPieces pieces;             // everything before the shared tail

  // Empty again, for the next recipient.
  void Begin(const SharedTail& tail);
  std::uint64_t size() const { return pieces.size() + tail_->size(); }

  Result<std::string_view> Next() override;
  void Rewind() override;
  bool MayHaveLeadingDots() const override { return false; }  // every body is encoded, see AppendQuotedPrintable

 private:
  const SharedTail* tail_ = nullptr;
  std::size_t next_piece_ = 0;
  std::uint64_t tail_offset_ = 0;
  std::string buffer_;
};

// The bytes of a message into an open file; the message is rewound for its sending.
Result<void> WriteMessage(RenderedMessage& message, int fd, const std::filesystem::path& file);

class MessageTemplate {
 public:
  // `scratch_folder` takes large attachments in their encoded form. Files that cannot be read do not fail it: see
  // trouble() and missing_pictures().
  MessageTemplate(const compose::MessageDocument& document, MessageOptions options,
                  const std::filesystem::path& scratch_folder, const platform::Clock& clock,
                  platform::Entropy& entropy);

  // An attachment that could not be taken in: no message can go out.
  const std::optional<FileTrouble>& trouble() const { return trouble_; }
  // Local pictures that the HTML refers to and that could not be read; the reference stays as it is.
  const std::vector<std::string>& missing_pictures() const { return missing_pictures_; }
  // Which merge tags the message uses anywhere.
  std::bitset<compose::kMergeFields.size()> UsedFields() const;
  bool is_html() const { return html_.has_value(); }

  // `recipient_address` is bare: the envelope's. `number` is the recipient's place in the run, for a Message-ID of its
  // own. Fails with kBadData for values that make the message grow without measure.
  Result<void> Render(const compose::MergeValues& values, const std::string& recipient_address, std::uint64_t number,
                      RenderedMessage& out) const;

 private:
  // A text part in the account's character set and, for the recipients whose values that set cannot hold, in UTF-8.
  struct TextVariant {
    std::string header;
    MergedBody body;
  };

  void CompileHeaders(const compose::MessageDocument& document);
  void CompileText(std::string text);
  void CompileParts(std::span<const Picture> pictures, const std::vector<std::string>& attachments,
                    platform::Entropy& entropy);
  bool AppendHeaders(const compose::MergeValues& values, const std::string& address, std::uint64_t number,
                     RenderedMessage& out) const;
  bool AppendSubject(const compose::MergeValues& values, RenderedMessage& out) const;
  bool AppendText(const compose::MergeValues& values, RenderedPieces& out) const;

  MessageOptions options_;
  const platform::Clock& clock_;
  std::uint64_t run_id_;  // chance; with the number of a message it makes its Message-ID
  std::string id_domain_;
  compose::MergePieces subject_;
  std::string from_header_;
  std::string other_headers_;      // the mailer, the priority, and so on
  std::string before_text_;        // from MIME-Version to the header of the text part
  std::vector<TextVariant> text_;  // empty for HTML without a text part
  std::string before_html_;        // from the end of the text part to the beginning of the HTML
  std::optional<MergedBody> html_;
  SharedTail tail_;
  std::optional<FileTrouble> trouble_;
  std::vector<std::string> missing_pictures_;
};

}  // namespace quillcast::sending
