// Whether a text names a file of this computer or of a server beside it.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quillcast::html {

// What stands below them is a file of this computer.
using Folders = std::span<const std::string>;

// Whether a text holds an address of a file: "file:" with a folder or a drive, "C:\", "\\server\share" and
// "smb://server", in any spelling that browsers read, such as with character references, percent signs, escapes and
// control characters. What an address of the net holds, or one of a program's own scheme asks for ("app://x?y"), is the
// person's own.
// Paths below one of the `known` folders count as well.
bool NamesLocalFile(std::string_view text, Folders known = {});

// The same of a text that is one address, with its blanks: what it leads to counts, see address_reach.h, and of what
// leads nowhere by itself, such as "page.html?x#y", what stands before its query.
bool AddressNamesLocalFile(std::string_view address);

// The same of several addresses with blanks between them, as "srcset" has them.
bool AddressesNameLocalFile(std::string_view addresses);

// The same of words that a person reads: they may name a file, also "/home/ada/x", where they do not begin with it, nor
// what stands behind a label of theirs does ("Description: C:\x.png"). "C:\Temp can be emptied" is a sentence.
bool WordsNameLocalFile(std::string_view words);

// Whether a note that nobody reads holds a path below a person's own folder ("/home/ada/x", "~/x"): elsewhere it may be
// a page of a server.
bool HoldsHomeFolder(std::string_view note);

}  // namespace quillcast::html
