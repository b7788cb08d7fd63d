// The address that a server is given for a recipient, taken out of what the store holds for it.
#pragma once

#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::recipients {

// "Ada <ada@example.org>" gives "ada@example.org": the part in angle brackets, else the word round the "@" without
// commas, semicolons, quotes and parentheses at its ends. Letters are kept as they are, also those beyond ASCII.
// Errors: kBadData when nothing is left, when it holds blanks or no "@" or is too long (AddressIsTooLong), and when a
// control character stands anywhere in what is stored.
Result<std::string> EnvelopeAddress(std::string_view stored);

}  // namespace quillcast::recipients
