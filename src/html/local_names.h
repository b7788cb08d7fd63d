// What of a page names files of this computer or of a server beside it, wherever it stands.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::html {

// Whether a text holds an address of a file: "file:" with a folder or a drive, "C:\", "\\server\share", in any spelling
// that browsers read, such as with character references, percent signs, escapes and control characters. A text that is
// one address without a blank may do without the folder. "File:" in an address of the web is the name of a page.
bool NamesLocalFile(std::string_view text);

// The page without such addresses in attributes, comments, style sheets, scripts and the document type; what people
// read as text stays. What holds one goes as a whole: the value of an attribute is emptied, of styles the string, the
// comment or the declaration goes. Everything else stays byte for byte. Linear in time.
std::string WithoutLocalNames(std::string_view html);

}  // namespace quillcast::html
