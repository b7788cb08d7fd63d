// What a message needs of a server, compared to what the server offers.
#pragma once

#include <optional>

#include "smtp/capabilities.h"
#include "smtp/envelope.h"
#include "smtp/message_source.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

// Makes an envelope and its message fit for a server with these capabilities: the message in its form without octets
// above 127 where the server does not take them, domains in A-labels. Why it cannot be sent, nothing when it can;
// nothing has to be sent to find out.
std::optional<Outcome> FitEnvelope(Envelope& envelope, MessageSource& message, const Capabilities& capabilities);

// The number of a message that its source cannot give.
ResultCode CodeOfSource(const Error& error);

}  // namespace quillcast::smtp
