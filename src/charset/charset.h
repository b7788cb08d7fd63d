// The character sets that a message can be written in, by their MIME names.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillcast::charset {

// What is written in place of a character that the charset does not have.
enum class Unmapped {
  kQuestionMark,
  kHtmlReference,  // "&#8364;"
  kFail,           // nothing is written, the call fails
};

struct CharsetRow;

// A handle to one of the served character sets; copied freely.
class Charset {
 public:
  // The one that holds every character, and what texts go out in that a set cannot hold.
  static Charset Utf8();

  // The preferred MIME name, as it goes into the headers: "utf-8", "windows-1251".
  std::string_view MimeName() const;
  bool IsUtf8() const;

  // The set to write encoded words in: itself, but EUC-KR in place of ISO-2022-KR (RFC 1557).
  Charset ForHeaders() const;

  // What the caller writes once, as the first bytes of a body in this set; empty for nearly all.
  std::string_view BodyPrefix() const;

  // Appends `utf8` in this charset. Each call begins and ends in ASCII, and so does each line in it: what was encoded
  // in pieces can be put together. Each code point that the charset lacks, and each byte that is not UTF-8, counts in
  // `lost` and is written as `unmapped` says. False only with kFail, when something would be lost; `out` is then as it
  // was before. A letter with marks may come out as letter and marks, where the set has it so.
  bool Encode(std::string_view utf8, std::string& out, std::size_t* lost = nullptr,
              Unmapped unmapped = Unmapped::kQuestionMark) const;

  // The text of `bytes` as UTF-8; U+FFFD for what has no meaning in this charset.
  std::string Decode(std::string_view bytes) const;

  bool operator==(const Charset&) const = default;

  explicit Charset(const CharsetRow* row) : row_(row) {}  // for FindCharset

 private:
  const CharsetRow* row_;
};

// Any of the names in use, without regard to case. Nothing when the charset is not served.
std::optional<Charset> FindCharset(std::string_view mime_name);

}  // namespace quillcast::charset
