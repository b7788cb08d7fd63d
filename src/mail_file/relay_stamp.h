// Reads a Received field (RFC 5321 4.4).
#pragma once

#include <string_view>

#include "mail_file/message_facts.h"

namespace quillcast::mail_file {

// `field` is unfolded and decoded. Words that are in a comment or unknown are passed over; each clause is cut at 1,000
// bytes.
RelayStamp ReadRelayStamp(std::string_view field);

}  // namespace quillcast::mail_file
