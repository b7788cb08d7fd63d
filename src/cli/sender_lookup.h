// The check of a sending domain, as `domain check` and `send --check-domain` make it.
#pragma once

#include <vector>

#include "cli/context.h"
#include "domain/sender/sender_check.h"
#include "net/address.h"

namespace quillcast::cli {

// Asks these name servers (none: the system's), and keeps what was found so that runs can be reminded of it. That it
// could not be kept is a note alone.
Result<domain::SenderReport> CheckSenderNow(Context& context, const domain::SenderQuestion& question,
                                            std::vector<net::Endpoint> servers);

// A finding as people read it: its verdict, its topic and what it is, and the remedy below.
void ShowFinding(const Context& context, const domain::Finding& finding);

}  // namespace quillcast::cli
