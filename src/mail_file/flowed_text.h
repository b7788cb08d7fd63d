// Texts whose lines were broken for the way (RFC 3676).
#pragma once

#include <string>
#include <string_view>

#include "mail_file/part.h"

namespace quillcast::mail_file {

// Each paragraph as one line again, quoted ones behind their ">". Lines end by CRLF, before and after.
std::string Unflowed(std::string_view text, Flow flow);

}  // namespace quillcast::mail_file
