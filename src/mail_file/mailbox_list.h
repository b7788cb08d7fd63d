// Address fields (RFC 5322 3.4) of any length, cut into single mailboxes.
#pragma once

#include <functional>
#include <string_view>

#include "mail_file/message_facts.h"

namespace quillcast::mail_file {

// Calls `take` with each mailbox of an unfolded field, in order, until it answers false. The members of a group count
// as those of the list, its name as nothing. A piece that is no mailbox is one with that text as its name, or as its
// address where it is one word. Of a single mailbox 4 KiB are read.
void EachMailbox(std::string_view field, const std::function<bool(Mailbox)>& take);

}  // namespace quillcast::mail_file
