// What the preview inside the program shows: one recipient's message, and what may be wrong with all of them. All of it
// runs beside a window, so it waits for a locked settings file until it is cancelled, however impatient the window is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/program.h"
#include "compose/message_document.h"
#include "platform/cancel.h"
#include "recipients/recipient_store.h"
#include "sending/related_pictures.h"

namespace quillcast::sending {

// The message as this recipient would read it. Pictures are referred to as in the document.
struct RecipientView {
  std::string address;  // as stored
  std::string subject;
  std::string html;
  std::string text;
};

// Fails with kUsage behind the end of the list, and with kBadData for values that make the message grow without
// measure.
Result<RecipientView> ViewFor(const compose::MessageDocument& document, const recipients::RecipientStore& store,
                              const recipients::RecipientGroup& group, std::int64_t position,
                              const platform::CancelToken& cancel);

struct MessageLook {
  std::vector<std::string> troubles;  // sentences
  std::vector<std::string> pictures;  // that go along, one a sentence
  std::string size;                   // one too; empty where no message can be made
};

// A look over the message and the whole group.
Result<MessageLook> FindTrouble(const compose::MessageDocument& document, const app::Program& program,
                                const recipients::RecipientGroup& group, const platform::CancelToken& cancel);

// The pictures that go along as the account in this settings file is now, and those to be asked about; none where it
// is not filled in. Fails when the settings cannot be read.
Result<RelatedPictures> LookForPictures(const compose::MessageDocument& document,
                                        const std::filesystem::path& settings_file,
                                        const platform::CancelToken& cancel);

// Sends the message of that recipient to the account's own address: a sentence on what became of it.
Result<std::string> SendToMyself(const compose::MessageDocument& document, const app::Program& program,
                                 const recipients::RecipientGroup& group, std::int64_t position,
                                 const platform::CancelToken& cancel);

}  // namespace quillcast::sending
