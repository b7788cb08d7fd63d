// What goes into MAIL and RCPT for one message.
#pragma once

#include <cstdint>
#include <string>

#include "smtp/address.h"

namespace quillcast::smtp {

// Delivery status notifications (RFC 3461). kNone and kServerDefault both send no parameter.
enum class DsnNotify { kNone, kServerDefault, kAll, kFailure, kSuccess, kDelay, kNever };
enum class DsnReturn { kNone, kServerDefault, kHeaders, kFull };

// One message to one recipient. The addresses were checked when they were made. What the server does not offer is
// settled by smtp/client/fit_envelope.
struct Envelope {
  Address sender;          // nobody for a message that nobody is to answer
  Address recipient;       // the session refuses nobody
  std::uint64_t size = 0;  // octets of the whole message as it goes out, before dot-stuffing; 0 for unknown
  bool eight_bit = false;  // some octet of the message is above 127 (BODY=8BITMIME, RFC 6152)
  DsnNotify notify = DsnNotify::kNone;
  DsnReturn dsn_return = DsnReturn::kNone;
  std::string envelope_id = {};  // ENVID, empty for none; the first 100 characters go out, as xtext (RFC 3461 4.4)
};

}  // namespace quillcast::smtp
