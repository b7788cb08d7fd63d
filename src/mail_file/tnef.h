// winmail.dat (TNEF): attachments and a body in a format of one maker's mail programs.
#pragma once

#include "mail_file/found_files.h"

namespace quillcast::mail_file {

// Adds what lies in the part as parts of their own: its attachments, and its body where it is HTML or the message has
// no text; a body in compressed RTF where it has no other. They are pieces of its content, which is read once, and
// never held. What an attached message holds is attachments of its own. Where nothing is found in it the part stays an
// attachment. Damage is told as kException, and what was found before it is used; an extended load goes on behind a
// wrong sum.
Result<void> UnpackTnef(FoundFiles& found, std::size_t place);

}  // namespace quillcast::mail_file
