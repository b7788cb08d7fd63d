// What is a picture, by how its file begins: its name says nothing.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::document {

// The media type, "image/png"; empty for what is no picture. Some hundred bytes are enough.
std::string_view PictureType(std::string_view first_bytes);

// The same of a file that is open, at its beginning.
Result<std::string> PictureType(int fd, const std::filesystem::path& file);

// Whether the file can be read, and is one. Only regular files are opened.
bool IsPicture(const std::filesystem::path& file);

}  // namespace quillcast::document
