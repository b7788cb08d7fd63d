// Whether a text names a file of this computer or of a server beside it.
#pragma once

#include <string_view>

namespace quillcast::html {

// Whether a text holds an address of a file: "file:" with a folder or a drive, "C:\", "\\server\share", in any spelling
// that browsers read, such as with character references, percent signs, escapes and control characters. A text that is
// one address without a blank may do without the folder. What an address of the web, of mail or of a telephone holds
// is the person's own, such as what it asks for.
bool NamesLocalFile(std::string_view text);

// The same of a text that is one address, with its blanks.
bool AddressNamesLocalFile(std::string_view address);

// The same of words that a person reads: they may name a file, where they do not begin with it, nor what stands behind
// their label does.
bool WordsNameLocalFile(std::string_view words);

}  // namespace quillcast::html
