// The commands that carry a person's text, built so that nothing in it can break out of its place.
#pragma once

#include "smtp/capabilities.h"
#include "smtp/envelope.h"
#include "smtp/outcome.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {

// Why an envelope cannot be sent to a server with these capabilities; nothing when it can. Nothing has to be sent to
// find out.
std::optional<Outcome> CheckEnvelope(const Envelope& envelope, const Capabilities& capabilities);

// For envelopes that have passed the check; nothing for others.
std::optional<SmtpLine> MailCommand(const Envelope& envelope, const Capabilities& capabilities);
std::optional<SmtpLine> RcptCommand(const Envelope& envelope, const Capabilities& capabilities);

// RFC 3461 4: what is not printable ASCII, and "+" and "=", as "+XX".
std::string Xtext(std::string_view text);

}  // namespace quillcast::smtp
