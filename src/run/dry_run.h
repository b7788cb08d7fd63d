// A run that hands over nothing: every message is made, bytes and all, and dropped.
#pragma once

#include <cstdint>
#include <optional>

#include "message/message_template.h"
#include "platform/cancel.h"
#include "platform/result.h"
#include "recipients/row_source.h"

namespace quillcast::run {

struct Composed {
  std::int64_t messages = 0;
  std::int64_t unaddressed = 0;  // entries without an address to send to
  std::uint64_t octets = 0;
};

// Fails with the first message that cannot be made, and with kTryAgain after a cancel.
Result<Composed> ComposeAll(recipients::RowSource& rows, const message::MessageTemplate& message,
                            const std::optional<recipients::PartialRange>& range, const platform::CancelToken& cancel);

}  // namespace quillcast::run
