// The commands that carry a person's text, built so that nothing in it can break out of its place.
#pragma once

#include "smtp/capabilities.h"
#include "smtp/envelope.h"
#include "smtp/outcome.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {

// Makes an envelope and its message fit for a server with these capabilities: the message in its form without octets
// above 127 where the server does not take them, domains in A-labels. Why it cannot be sent, nothing when it can;
// nothing has to be sent to find out.
std::optional<Outcome> FitEnvelope(Envelope& envelope, MessageSource& message, const Capabilities& capabilities);

// For envelopes that fit; nothing for others.
std::optional<SmtpLine> MailCommand(const Envelope& envelope, const Capabilities& capabilities);
std::optional<SmtpLine> RcptCommand(const Envelope& envelope, const Capabilities& capabilities);

// The number of a message that its source cannot give.
ResultCode CodeOfSource(const Error& error);

// RFC 3461 4: what is not printable ASCII, and "+" and "=", as "+XX".
std::string Xtext(std::string_view text);

}  // namespace quillcast::smtp
