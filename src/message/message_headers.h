// The header fields of a message, from From to those of the account; MIME begins behind them.
#pragma once

#include <bitset>
#include <string>

#include "document/merge_pieces.h"
#include "document/message_document.h"
#include "message/message_options.h"
#include "message/rendered_message.h"
#include "platform/clock.h"
#include "platform/entropy.h"

namespace quillcast::message {

// Known limit: a subject of more than 1 MiB, its values put in, makes no message.
class MessageHeaders {
 public:
  // `run_id` is chance; with the number of a message it makes its Message-ID.
  MessageHeaders(const document::MessageDocument& document, MessageOptions options, std::uint64_t run_id);

  // Also fills in the envelope, but its size. A message to nobody, whose address is empty, has no To. False when the
  // values make the subject grow without measure.
  bool Append(const document::MergeValues& values, const smtp::Address& address, std::uint64_t number,
              const platform::Clock& clock, RenderedMessage& out) const;

  const std::bitset<document::kMergeFields.size()>& used_fields() const { return subject_.used(); }
  // Whether MAIL or RCPT gets a parameter of RFC 3461; the envelope then has the Message-ID as its ENVID.
  bool AsksForNotice() const;
  // Whether the account's set holds the subject.
  bool CanHoldSubject(const document::MergeValues& values) const;
  // What the Content-IDs of this run end in.
  std::string ContentIdSuffix() const;

 private:
  bool AppendSubject(const document::MergeValues& values, RenderedMessage& out) const;

  MessageOptions options_;
  std::uint64_t run_id_;
  std::string id_domain_;
  document::MergePieces subject_;
  std::string from_;
  std::string others_;  // the mailer, the priority, and so on
};

// Line ends as "\n", no NUL, well-formed UTF-8: the shape in which values are merged too.
std::string ForMerging(std::string_view text);

}  // namespace quillcast::message
