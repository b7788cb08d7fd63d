// The library that speaks DNS (c-ares), driven by the waits of this folder.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "net/address.h"
#include "net/wait.h"

struct ares_channeldata;

namespace quillcast::net {

struct CloseAresChannel {
  // Questions that are open are given up: the library calls back for each before this returns.
  void operator()(ares_channeldata* channel) const;
};
using AresChannel = std::unique_ptr<ares_channeldata, CloseAresChannel>;

// Milliseconds that a server is waited for before the next is asked; twice as long each time they are all asked again.
inline constexpr int kFirstWait = 1500;

// The library knows no interfaces. That of a link-local address (fe80::/10) is written into octets of it that are zero
// otherwise (RFC 4291 2.5.6) while the library has it, and stands beside it for the system. Any other address stays as
// it is.
IpAddress ForLibrary(const IpAddress& address);
IpAddress FromLibrary(const IpAddress& address);

// Has the channel ask these servers in place of the system's; of a channel that a SocketWatch is attached to also those
// that are reached through one interface. False where the system has no memory for it.
bool SetServers(ares_channeldata* channel, std::span<const Endpoint> servers);

// What the library waits for: its sockets, put behind those that are there, and when it wants to be called again though
// nothing came, to ask the next server.
void AddSockets(ares_channeldata* channel, std::vector<pollfd>& out);
Deadline NextRetry(ares_channeldata* channel, platform::Instant now);
// Lets it go on after poll(2); a descriptor that is none of its own is passed over.
void LetGoOn(ares_channeldata* channel, std::span<const pollfd> polled);

// Waits once, until a socket of the channel is ready or the library wants to ask again, and lets it go on. False when
// the deadline passed; nothing is cancelled then, nor when this fails with what Patience fails with. `second` is waited
// for beside it, where there is one.
Result<bool> DriveChannel(ares_channeldata* channel, const Patience& patience, ares_channeldata* second = nullptr);

}  // namespace quillcast::net
