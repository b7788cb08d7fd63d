// The address that a server is given for a recipient, taken out of what the store holds for it.
#pragma once

#include <string_view>

#include "platform/result.h"
#include "smtp/address.h"

namespace quillcast::smtp {

// "Ada <ada@example.org>" gives "ada@example.org": the part in angle brackets, else the word round the "@" without
// commas, semicolons, quotes and parentheses at its ends. Letters are kept as they are, also those beyond ASCII.
// Errors: kBadData when what is left is no Address, and when a control character stands anywhere in what is
// stored.
Result<Address> EnvelopeAddress(std::string_view stored);

}  // namespace quillcast::smtp
