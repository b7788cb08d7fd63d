// What of a page names files of this computer or of a server beside it, wherever it stands.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quillcast::html {

// The page without what names a file, see local_name.h, in attributes, comments, style sheets, scripts and the document
// type; what people read as text stays. What holds one goes as a whole: the value of an attribute is emptied, of styles
// the string, the comment or the declaration goes. Everything else stays byte for byte. Paths
// below one of the `known` folders name files, wherever people do not read them. Linear in time.
std::string WithoutLocalNames(std::string_view html, std::span<const std::string> known = {});

}  // namespace quillcast::html
