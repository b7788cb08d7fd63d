// MAIL and RCPT, the commands that carry a person's text, built so that nothing in it can break out of its place.
#pragma once

#include <optional>

#include "smtp/capabilities.h"
#include "smtp/envelope.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {

// With the parameters that the server understands and the envelope asks for. For envelopes that fit (FitEnvelope);
// nothing where the line would hold a control character.
std::optional<SmtpLine> MailCommand(const Envelope& envelope, const Capabilities& capabilities);
std::optional<SmtpLine> RcptCommand(const Envelope& envelope, const Capabilities& capabilities);

}  // namespace quillcast::smtp
