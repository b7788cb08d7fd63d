// How large a picture is, out of the beginning of its content.
#pragma once

#include <optional>
#include <string_view>

#include "html/html_to_rtf.h"

namespace quillcast::mail_file {

inline constexpr std::size_t kPictureHead = std::size_t{256} * 1024;  // bytes that are enough but for odd photographs

// Width and height in pixels of a PNG, JPEG or BMP, each within 1 and 100,000; nothing for anything else. Nothing is
// decoded.
std::optional<html::RtfPictureSize> PixelsOf(std::string_view head);

}  // namespace quillcast::mail_file
