// The steps that the commands around sending share.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "account/account_settings.h"
#include "cli/document_options.h"
#include "message/message_template.h"
#include "recipients/recipient_store.h"
#include "run/run_report.h"

namespace quillcast::cli {

// Everything that a run needs to know before it starts.
struct Mailing {
  profile::Folders folders;
  account::AccountSettings account;
  document::MessageDocument document;
  recipients::RecipientGroup group;  // id 0 for a group that does not exist
  std::int64_t recipients = 0;
};

Result<Mailing> PrepareMailing(Context& context, const DocumentOptions& options, const std::string& group);

// The checks and questions before sending. 0 when the run may start, else the exit code.
int AskBeforeSending(Context& context, const Mailing& mailing);

// What to do about pictures that the document names where it may not take them from.
enum class ForeignPictures { kAskAbout, kLeaveOut };

// Asks about them; --yes is no answer, for it was given before anybody knew of them. Fails with kNotPermitted when
// there is nobody to ask, or when nothing is to be sent.
Result<void> SettlePictures(Context& context, const message::MessageOptions& options, ForeignPictures choice,
                            document::MessageDocument& document);

// Looks the group over and tells, on standard error, what the person may not have meant. A run asks its server itself
// what it offers, where the rest does not speak to one. Gives what was told.
Result<std::vector<std::string>> TellFindings(Context& context, const Mailing& mailing,
                                              const message::MessageTemplate& message, bool asks_server);

Result<recipients::RecipientCursor> OpenRows(const Mailing& mailing);

struct Composed {
  std::int64_t messages = 0;
  std::int64_t unaddressed = 0;  // entries without an address to send to
  std::uint64_t octets = 0;
};

// Renders every message of the range, bytes included, and drops it.
Result<Composed> ComposeAll(recipients::RowSource& rows, const message::MessageTemplate& message,
                            const std::optional<run::PartialRange>& range, const platform::CancelToken& cancel);

}  // namespace quillcast::cli
