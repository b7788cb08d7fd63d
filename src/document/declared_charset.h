// The character set that an HTML document says it is written in.
#pragma once

#include <string>
#include <string_view>

#include "document/body_file.h"

namespace quillcast::document {

// What a meta element names as it, by "charset" or as a content type: the first that does; empty where none does. An
// XML declaration does not count: few readers of HTML look at it. The document may be in any set that ASCII is a part
// of.
std::string DeclaredCharset(std::string_view html);

// "utf-8" and "utf8" in any case.
bool IsUtf8Label(std::string_view label);

// The document with a meta element that names the set it will be saved in: "utf-8", or another one for a file that
// stays so; few readers of HTML look at an XML declaration. It goes to the start of the head, or where the parser of a
// browser begins one, behind a document type and an XML declaration, and no other byte changes. Where one names a set
// already it stays, but "utf-8" takes the place of another in what is saved so without a mark.
std::string WithCharset(std::string_view html, BodyEncoding encoding);

}  // namespace quillcast::document
