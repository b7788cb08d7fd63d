// Message files (.eml, RFC 5322 and MIME) of any size, as strangers write them: parts, bodies, recipients, relay
// stamps.
//
//   const auto loading = Load(file, {.mode = LoadMode::kPlain});
//   if (!loading) ...                          // cancelled
//   if (!loading->message) ...                 // nothing was loaded; TextOf(loading->code()) says why
//   for (const Part& part : loading->message->parts()) {
//     auto reader = loading->message->Open(part);
//     for (auto block = reader->Next(); block && !block->empty(); block = reader->Next()) ...
//   }
//
// A message holds what its header says and where its parts are, never their content: memory stays below 64 MiB
// whatever the file's size. The file stays open and is not to change.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail_file/limits.h"
#include "mail_file/load_code.h"
#include "mail_file/load_mode.h"
#include "mail_file/message_facts.h"
#include "mail_file/part.h"
#include "mail_file/part_reader.h"
#include "platform/cancel.h"
#include "platform/result.h"

namespace quillcast::mail_file {

struct LoadOptions {
  LoadMode mode = LoadMode::kPlain;
  const platform::CancelToken* cancel = nullptr;  // outlives the call
  std::string name = {};                          // what the file is called to people; empty for its path
};

class MailMessage {
 public:
  // For Load.
  MailMessage(std::shared_ptr<const MessageFile> file, std::vector<Part> parts, MessageFacts facts)
      : file_(std::move(file)), parts_(std::move(parts)), facts_(std::move(facts)) {}

  const MessageFacts& facts() const { return facts_; }

  // In the order of the file, each behind what holds it; the first is the message itself. Behind them come the files
  // that were found in the content of others: by uuencode, yEnc or BinHex in a text, in winmail.dat (TNEF).
  const std::vector<Part>& parts() const { return parts_; }

  // Calls `take` with each field of a part's header, in order: the name, and the value unfolded and decoded to UTF-8.
  // Of more than kMostListedFields it gives the first; the load tells of the message's own that were left out.
  using TakeField = std::function<void(std::string_view name, std::string_view value)>;
  Result<void> EachField(const Part& part, const TakeField& take) const;

  // The content, decoded. Errors: kBadData for a part whose encoding is refused.
  Result<PartReader> Open(const Part& part) const;
  // The bytes of a part as they stand in the file, header and all: a message of its own for an attached message.
  PartReader OpenAsItStands(const Part& part) const;

  // The whole content as UTF-8, lines ended by CRLF however they were. What character set it is in is found out in this
  // order: a byte-order mark, the declared set where the bytes mean something in it, what an HTML page says of itself,
  // UTF-8 where it is that, Windows-1252. Lines that its sender broke are whole (RFC 3676). Files within a text are
  // left out: they are parts of their own. Held whole: the one call whose memory grows with the part; kIo where there
  // is not as much.
  Result<std::string> TextOf(const Part& part) const;

  // The parts marked as body of that type, in order.
  bool HasBody(std::string_view type) const;
  // All of them one after the other, as TextOf, parted by a line end; empty where there is none. What cannot be decoded
  // is passed over beside others.
  Result<std::string> TextBody() const;
  Result<std::string> HtmlBody() const;

  // What was found out about a part before; `find` is asked the first time. Many ask whether a part shows anything, and
  // that takes as long as reading it.
  bool ShowsSomething(const Part& part, const std::function<bool()>& find) const;

 private:
  Error Refused(const Part& part) const;
  Result<std::string> BodyOf(std::string_view type) const;
  Result<std::string> WholeText(const Part& part) const;

  std::shared_ptr<const MessageFile> file_;
  std::vector<Part> parts_;
  MessageFacts facts_;
  mutable std::vector<std::optional<bool>> shows_something_;  // by part
};

struct Loading {
  std::vector<LoadFault> faults;       // in the order in which they were met, at most 100
  std::optional<MailMessage> message;  // none: nothing could be loaded

  // The one that is told: that of the first fault.
  LoadCode code() const { return faults.empty() ? LoadCode::kLoaded : faults.front().code; }
};

// Standard input is loaded by way of a scratch file, see cli::InputFile. Fails with kTryAgain alone, when it was
// cancelled; everything else is a code.
Result<Loading> Load(const std::filesystem::path& file, const LoadOptions& options);

}  // namespace quillcast::mail_file
