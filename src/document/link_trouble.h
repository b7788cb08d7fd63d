// What is wrong with a link of a letter, as far as its address and its words tell; nothing is looked up.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/sentence.h"

namespace quillcast::document {

// The scheme of an address in lower case, without its colon, as browsers read it: control characters within are none.
std::string SchemeOf(std::string_view target);

// Whether a mail reader can follow an address by its form: a complete one of the web, of a mail, of a telephone and the
// like, or a place in the letter; no script, no file, no page that holds itself.
bool CanBeFollowed(std::string_view target);

// Whether an address is one of a file of this computer or of a server beside it, also where a merge tag is part of it.
bool LeadsToFile(std::string_view target);

// `target` is the link's address, `text` its words, both decoded. A sentence that names the link and says what to do;
// nothing where it is in order. What a merge tag fills in is not judged, unless it names a file.
std::optional<Sentence> LinkTrouble(std::string_view target, std::string_view text);

}  // namespace quillcast::document
