#include "charset/charset.h"

#include <algorithm>
#include <cstdint>

#include "charset/charset_rows.h"
#include "charset/charset_shifted.h"
#include "charset/charset_utf7.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::charset {
namespace {

using platform::DecodeUtf8;
using platform::kNotUtf8;

// Writers have the members of ShiftedWriter.
class Utf8Writer {
 public:
  explicit Utf8Writer(std::string& out) : out_(out) {}
  static std::size_t DirectRun(std::string_view utf8) { return platform::AsciiRun(utf8); }
  void PutDirect(std::string_view ascii) { out_ += ascii; }
  bool Put(char32_t code) {
    platform::AppendUtf8(out_, code);
    return true;
  }
  void Finish() {}

 private:
  std::string& out_;
};

class PlainWriter {
 public:
  PlainWriter(std::string& out, const CodedCharacters& characters) : out_(out), characters_(characters) {}
  static std::size_t DirectRun(std::string_view utf8) { return platform::AsciiRun(utf8); }
  void PutDirect(std::string_view ascii) { out_ += ascii; }
  bool Put(char32_t code) {
    const std::uint32_t bytes = characters_.BytesOf(code);
    if (bytes == 0) return false;
    if (bytes > 0xFFFFFF) out_ += static_cast<char>(bytes >> 24);
    if (bytes > 0xFFFF) out_ += static_cast<char>(bytes >> 16);
    if (bytes > 0xFF) out_ += static_cast<char>(bytes >> 8);
    out_ += static_cast<char>(bytes);
    return true;
  }
  void Finish() {}

 private:
  std::string& out_;
  const CodedCharacters& characters_;
};

// How much was lost; with kFail it ends at the first loss.
template <typename Writer>
std::size_t EncodeWith(Writer writer, std::string_view utf8, Unmapped unmapped) {
  std::size_t lost = 0;
  while (!utf8.empty()) {
    if (const std::size_t run = writer.DirectRun(utf8); run != 0) {
      writer.PutDirect(utf8.substr(0, run));
      utf8.remove_prefix(run);
      continue;
    }
    const auto [code, length] = DecodeUtf8(utf8);
    utf8.remove_prefix(length);
    const bool broken = code == kNotUtf8;
    const char32_t written = broken ? platform::kReplacement : code;
    const bool held = writer.Put(written);
    if (held && !broken) continue;
    ++lost;
    if (unmapped == Unmapped::kFail) return lost;
    if (held) continue;
    writer.PutDirect(
        unmapped == Unmapped::kHtmlReference ? "&#" + std::to_string(static_cast<std::uint32_t>(written)) + ';' : "?");
  }
  writer.Finish();
  return lost;
}

// The shortest bytes that mean something are taken; where none do, one byte is passed over.
std::string DecodePlain(std::string_view bytes, const CodedCharacters& characters) {
  std::string out;
  while (!bytes.empty()) {
    const std::size_t run = platform::AsciiRun(bytes);
    out += bytes.substr(0, run);
    bytes.remove_prefix(run);
    std::uint32_t packed = 0;
    std::size_t size = 0;
    char32_t code = platform::kReplacement;
    while (size < std::min<std::size_t>(bytes.size(), 3) && code == platform::kReplacement) {
      packed = packed << 8 | static_cast<std::uint8_t>(bytes[size++]);
      code = characters.CharacterOf(packed);
    }
    if (size == 0) break;
    if (code == platform::kReplacement) size = 1;
    platform::AppendUtf8(out, code);
    bytes.remove_prefix(size);
  }
  return out;
}

bool HasName(const CharsetRow& row, std::string_view name) {
  return platform::EqualsIgnoringAsciiCase(name, row.mime_name) ||
         std::ranges::any_of(row.aliases, [&](std::string_view alias) {
           return !alias.empty() && platform::EqualsIgnoringAsciiCase(name, alias);
         });
}

}  // namespace

Charset Charset::Utf8() { return Charset(CharsetRows().data()); }

std::string_view Charset::MimeName() const { return row_->mime_name; }

bool Charset::IsUtf8() const { return row_->form == CharsetForm::kUtf8; }

Charset Charset::ForHeaders() const {
  return row_->form == CharsetForm::kIso2022Kr ? FindCharset("euc-kr").value_or(Utf8()) : *this;
}

std::string_view Charset::BodyPrefix() const { return row_->form == CharsetForm::kIso2022Kr ? "\x1B$)C" : ""; }

bool Charset::Encode(std::string_view utf8, std::string& out, std::size_t* lost, Unmapped unmapped) const {
  const std::size_t start = out.size();
  std::size_t count = 0;
  switch (row_->form) {
    case CharsetForm::kUtf8:
      if (platform::IsUtf8(utf8)) {
        out += utf8;
        return true;
      }
      count = EncodeWith(Utf8Writer(out), utf8, unmapped);
      break;
    case CharsetForm::kUtf7:
      count = EncodeWith(Utf7Writer(out), utf8, unmapped);
      break;
    case CharsetForm::kPlain:
      count = EncodeWith(PlainWriter(out, CharactersOf(*row_)), utf8, unmapped);
      break;
    case CharsetForm::kIso2022Jp:
    case CharsetForm::kIso2022Kr:
    case CharsetForm::kHz:
      count = EncodeWith(ShiftedWriter(out, *row_), utf8, unmapped);
      break;
  }
  if (lost != nullptr) *lost += count;
  if (count == 0 || unmapped != Unmapped::kFail) return true;
  out.resize(start);
  return false;
}

std::string Charset::Decode(std::string_view bytes) const {
  std::string out;
  switch (row_->form) {
    case CharsetForm::kUtf8:
      Encode(bytes, out);
      return out;
    case CharsetForm::kUtf7:
      return DecodeUtf7(bytes);
    case CharsetForm::kPlain:
      return DecodePlain(bytes, CharactersOf(*row_));
    case CharsetForm::kIso2022Jp:
    case CharsetForm::kIso2022Kr:
    case CharsetForm::kHz:
      return DecodeShifted(bytes, *row_);
  }
  return out;
}

std::optional<Charset> FindCharset(std::string_view mime_name) {
  for (const CharsetRow& row : CharsetRows()) {
    if (HasName(row, mime_name)) return Charset(&row);
  }
  return std::nullopt;
}

}  // namespace quillcast::charset
