// What the file of a part is called: names come from strangers, and are made such that a file of that name lies in the
// folder that was meant, shows, and opens as what its ending says.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "mail_file/part.h"

namespace quillcast::mail_file {

// The last piece of a path, in either spelling, without control characters and those that change the direction of what
// follows, without leading dots and blanks, whatever kind of blank, and trailing dots and blanks; "_" for what other
// systems keep for themselves, also before a name that they do (CON, LPT1) and one that begins with "-" or "~". At most
// 200 bytes with the ending kept, so that a number fits behind it. Empty when nothing is left.
std::string SafePartName(std::string_view name);

// SafePartName of what the part is called; of one without a name "Part 3" with the ending of its type, by `place`, its
// place in MailMessage::parts().
std::string FileNameOf(const Part& part, std::size_t place);

// "letter (2).txt" for 2.
std::string NumberedName(std::string_view name, std::size_t number);

// "text/html" -> ".html"; ".bin" for what is not known.
std::string_view EndingOfType(std::string_view media_type);

}  // namespace quillcast::mail_file
