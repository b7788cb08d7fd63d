// What of a link in HTML is worth reading in plain text.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::html {

// The part of an "href" to show; empty when there is none.
std::string ReadableTarget(std::string href);

// The description of a picture; empty when it is only the name of a file or an address, as some editors fill it in.
std::string ReadableDescription(std::string alt);

// Whether the text of a link tells the reader its target already.
bool SaysTarget(std::string_view text, std::string_view target);

}  // namespace quillcast::html
