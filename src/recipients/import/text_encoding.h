// Finds out what a text file is encoded in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "charset/converter.h"
#include "platform/cancel.h"
#include "platform/result.h"

namespace quillcast::recipients {

struct TextEncoding {
  std::string name;                // "UTF-8", "windows-1252"
  std::string how_known;           // "byte order mark", "all of it is valid"
  std::size_t mark_length = 0;     // bytes of the mark before the text
  bool is_valid_utf8 = false;      // known to be from end to end
  bool is_utf16_unmarked = false;  // told by its zeros alone
  std::int64_t bad_bytes = 0;      // in a file that is UTF-8 all the same
  std::int64_t first_bad_line = 0;

  bool operator==(const TextEncoding&) const = default;
};

// A byte order mark decides (UTF-8, UTF-16, UTF-32); else text whose every other byte is zero is UTF-16; else a file
// that is UTF-8 throughout, or but for a byte here and there, is that; else it is in `system_code_page`, the locale's
// codeset, or where that is UTF-8 too, in Windows-1252. Reads the file once, and leaves its position anywhere.
// Errors: kTryAgain when `cancel`, where there is one, asks to give up.
Result<TextEncoding> FindOutEncoding(int fd, const std::filesystem::path& path, std::string_view system_code_page,
                                     const platform::CancelToken* cancel = nullptr);

// The encoding that somebody asked for, which decides alone, but for the mark of its own encoding. Looks at the first
// bytes only. Errors: kUsage for a name that is not known.
Result<TextEncoding> EncodingAsAsked(int fd, const std::filesystem::path& path, std::string_view name);

// Errors: kUsage for a name that is not known; empty is as good as a name, it has it found out.
Result<void> CheckEncodingName(std::string_view name);

// One encoding has many names: "utf8" is UTF-8.
bool IsSameEncoding(std::string_view a, std::string_view b);

// Appends text with U+FFFD for each byte that is not UTF-8.
void AppendRepairedUtf8(std::string_view text, std::string& out);

}  // namespace quillcast::recipients
