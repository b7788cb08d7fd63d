// Opens a TCP connection to the first of several addresses that answers.
#pragma once

#include <span>
#include <vector>

#include "net/address.h"
#include "net/wait.h"
#include "platform/file.h"

namespace quillcast::net {

// What became of one address.
struct TriedAddress {
  Endpoint peer;
  bool connected = false;
  int error = 0;  // of the system, where it was refused or cannot be reached; else it had not answered
};

// Tries the addresses in their order. The next one is tried when one fails, or 250 ms after the last one was begun,
// while those begun go on; the first to answer wins and the others are dropped (RFC 8305 5). At most 16 are under way
// at a time. The socket is non-blocking, with TCP_NODELAY and SO_KEEPALIVE. Errors: kUnavailable with the words of the
// last address that failed, and those of Patience.
// `tried` is told of each address that was begun with, in that order.
Result<platform::UniqueFd> Connect(std::span<const IpAddress> addresses, std::uint16_t port, const Patience& patience,
                                   std::vector<TriedAddress>* tried = nullptr);

}  // namespace quillcast::net
