// A body in a file: the encoding it was found in, and back into it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::document {

// UTF-16 is known by its byte-order mark and written with it.
enum class BodyEncoding {
  kUtf8,
  kUtf8WithMark,
  kUtf16Little,
  kUtf16Big,
  kWindows1252,
  kDeclared,  // the set that the document itself names, see charset/page_charset.h
};

// Both forms, so that what nobody edits can go back byte for byte.
struct BodyFile {
  std::string bytes;  // as they stand in the file
  std::string text;   // in UTF-8, without a byte-order mark
  BodyEncoding encoding = BodyEncoding::kUtf8;
};

// The longest body that is read from a file.
inline constexpr std::uint64_t kLongestBody = 64ULL * 1024 * 1024;

// Whether the name is one of plain text: it ends in ".txt".
bool IsPlainTextName(const std::filesystem::path& file);

// A byte-order mark decides, else what is UTF-8 counts as UTF-8, all other as the set that it names, or as
// Windows-1252. Plain text names none, whatever markup it speaks of. In what names UTF-8 each byte that is none counts
// as Windows-1252 by itself.
Result<BodyFile> ReadBodyFile(const std::filesystem::path& file);

// The same of a letter that a person names. kBadData for what is neither HTML nor text, such as a picture, or a word
// processor's document: sent or saved, its bytes would be lost among what was made of them.
Result<BodyFile> ReadLetterFile(const std::filesystem::path& file);

// HTML in that encoding, UTF-8 where it names no other any longer; characters that it lacks become numeric references.
std::string EncodeBody(std::string_view html, BodyEncoding encoding);

}  // namespace quillcast::document
