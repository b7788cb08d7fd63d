// One recipient's message by itself: looked at in a preview, written to a file, or sent to an address of one's own.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "message/message_template.h"
#include "platform/cancel.h"
#include "recipients/row_source.h"
#include "run/carrier.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// The recipient with this address, as it is stored or as mail is sent to it; the first of the list when it is empty.
// Fails with kUsage when there is none.
Result<recipients::Recipient> FindRow(recipients::RowSource& rows, std::string_view address);

// The recipient at this place of the list. Fails with kUsage behind its end, and with kTryAgain after a cancel.
Result<recipients::Recipient> FindRowAt(recipients::RowSource& rows, std::int64_t position,
                                        const platform::CancelToken& cancel);

// Renders the row's message, addressed to `send_to` where that is given.
Result<void> RenderFor(const recipients::Recipient& row, std::string_view send_to,
                       const message::MessageTemplate& message, message::RenderedMessage& out);

// Renders it with its merge tags left as they are, to `to`; to nobody where that is empty.
Result<void> RenderWithTags(const message::MessageTemplate& message, const smtp::Address& to,
                            message::RenderedMessage& out);

// Hands over one message and tells what became of it. `log_line` gets the lines of the connection's log.
smtp::Outcome SendAlone(Carrier& carrier, message::RenderedMessage& message,
                        const std::function<void(std::string_view)>& log_line);

}  // namespace quillcast::run
