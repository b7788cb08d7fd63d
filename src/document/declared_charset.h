// The character set that an HTML document says it is written in.
#pragma once

#include <string>
#include <string_view>

#include "document/body_file.h"

namespace quillcast::document {

// Whether a meta element names one, by "charset" or as a content type. An XML declaration does not count: few readers
// of HTML look at it.
bool DeclaresCharset(std::string_view html);

// The document with a meta element that names the set it will be saved in: "utf-8", or "windows-1252" for a file that
// stays so. It goes to the start of the head, or where the parser of a browser begins one, behind a document type and
// an XML declaration, and no other byte changes. One that declares a set already comes back as it is, whatever it says.
std::string WithCharset(std::string_view html, BodyEncoding encoding);

}  // namespace quillcast::document
