// What the preview inside the program shows: one recipient's message, and what may be wrong with all of them. All of it
// runs beside a window, so it waits for a locked settings file until it is cancelled, however impatient the window is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "document/message_document.h"
#include "message/related_pictures.h"
#include "platform/cancel.h"
#include "profile/program.h"
#include "recipients/recipient_store.h"

namespace quillcast::run {

// The message as this recipient would read it. Pictures are referred to as in the document.
struct RecipientView {
  std::string address;  // as stored
  std::string subject;
  std::string html;
  std::string text;
};

// Fails with kUsage behind the end of the list, and with kBadData for values that make the message grow without
// measure.
Result<RecipientView> ViewFor(const document::MessageDocument& document, const recipients::RecipientStore& store,
                              const recipients::RecipientGroup& group, std::int64_t position,
                              const platform::CancelToken& cancel);

struct MessageLook {
  std::vector<std::string> troubles;  // sentences
  std::vector<std::string> pictures;  // that go along, one a sentence
  std::string size;                   // one too; empty where no message can be made
};

// A look over the message and the whole group.
Result<MessageLook> FindTrouble(const document::MessageDocument& document, const profile::Program& program,
                                const recipients::RecipientGroup& group, const platform::CancelToken& cancel);

// The pictures that go along as the account in this settings file is now, and those to be asked about; none where it
// is not filled in. Fails when the settings cannot be read.
Result<message::RelatedPictures> LookForPictures(const document::MessageDocument& document,
                                                 const std::filesystem::path& settings_file,
                                                 const platform::CancelToken& cancel);

// Sends the message of that recipient to the account's own address: a sentence on what became of it.
Result<std::string> SendToMyself(const document::MessageDocument& document, const profile::Program& program,
                                 const recipients::RecipientGroup& group, std::int64_t position,
                                 const platform::CancelToken& cancel);

}  // namespace quillcast::run
