// SASLprep (RFC 4013): the one form of a user name or a password that can be written in several ways.
#pragma once

#include <string_view>

#include "platform/result.h"
#include "platform/secret.h"

namespace quillcast::smtp {

// As a query: code points that Unicode has not assigned may stand. Fails with kBadData for what is not UTF-8, holds
// characters that are never taken (controls, a mix of directions), or has more than 4,096 octets, of which no line of
// SMTP could hold what is made; the error does not repeat the text.
Result<platform::Secret> SaslPrep(std::string_view text);

}  // namespace quillcast::smtp
