// What became of loading the body, as the number and the text that a report has for it.
#pragma once

#include <cstdint>
#include <string>

namespace quillcast::message {

// The codes as they arise here. They are not those of smtp/result_code.h, whose numbers mean something else.
inline constexpr std::int32_t kBodyNotOpened = 1;    // a picture's file is missing, or may not be opened
inline constexpr std::int32_t kBodyNotRead = 2;      // it was found and cannot be read: a folder, a failing disk
inline constexpr std::int32_t kBodyNoFile = 3;       // the reference names no file: a device, a pipe, too long a path
inline constexpr std::int32_t kBodyNotParsed = 101;  // the file's content is no picture

// Empty for a code that writes no line.
std::string BodyImportText(std::int32_t code);

}  // namespace quillcast::message
