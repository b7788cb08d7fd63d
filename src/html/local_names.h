// What of a page names files of this computer or of a server beside it, wherever it stands.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::html {

// The page without what names a file, see local_name.h, in attributes, comments, style sheets, scripts and the document
// type; what people read as text stays. What holds one goes as a whole: the value of an attribute is emptied, of styles
// the string, the comment or the declaration goes. Everything else stays byte for byte. Linear in time.
std::string WithoutLocalNames(std::string_view html);

}  // namespace quillcast::html
