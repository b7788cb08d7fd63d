// One recipient's message by itself: looked at in a preview, written to a file, or sent to an address of one's own.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "account/account_settings.h"
#include "message/message_template.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "recipients/recipient_store.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// The recipient with this address, as it is stored or as mail is sent to it; the first of the list when it is empty.
// Fails with kUsage when there is none.
Result<recipients::Recipient> FindRow(recipients::RowSource& rows, std::string_view address);

// Renders the row's message, addressed to `send_to` where that is given.
Result<void> RenderFor(const recipients::Recipient& row, std::string_view send_to,
                       const message::MessageTemplate& message, message::RenderedMessage& out);

// Hands over one message and tells what became of it. Fails for settings that describe no connection.
Result<smtp::Outcome> SendAlone(const account::AccountSettings& account, message::RenderedMessage& message,
                                const platform::Clock& clock, const platform::CancelToken& cancel,
                                const std::function<void(std::string_view)>& log_line);

}  // namespace quillcast::run
