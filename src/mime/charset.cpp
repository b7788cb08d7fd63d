#include "mime/charset.h"

#include <unicode/ucnv.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mime {

enum class CharsetKind { kUtf8, kAscii, kLatin1, kWindows1252, kConverter };

struct CharsetRow {
  std::string_view mime_name;
  CharsetKind kind;
  const char* converter;  // the name under which ICU has the mapping that mail readers use
  std::array<std::string_view, 3> aliases;
};

namespace {

using platform::DecodeUtf8;
using platform::kNotUtf8;

constexpr std::array kRows = {
    CharsetRow{"utf-8", CharsetKind::kUtf8, nullptr, {"utf8", "unicode-1-1-utf-8"}},
    CharsetRow{"us-ascii", CharsetKind::kAscii, nullptr, {"ascii", "ansi_x3.4-1968", "iso646-us"}},
    CharsetRow{"iso-8859-1", CharsetKind::kLatin1, nullptr, {"latin1", "iso_8859-1", "l1"}},
    CharsetRow{"Windows-1252", CharsetKind::kWindows1252, nullptr, {"cp1252", "x-cp1252", "x-ansi"}},
    CharsetRow{"iso-8859-2", CharsetKind::kConverter, "ibm-912_P100-1995", {"latin2", "iso_8859-2", "l2"}},
    CharsetRow{"iso-8859-15", CharsetKind::kConverter, "ibm-923_P100-1998", {"latin-9", "iso_8859-15"}},
    CharsetRow{"windows-1250", CharsetKind::kConverter, "ibm-5346_P100-1998", {"cp1250", "x-cp1250"}},
    CharsetRow{"windows-1251", CharsetKind::kConverter, "ibm-5347_P100-1998", {"cp1251", "x-cp1251"}},
    CharsetRow{"koi8-r", CharsetKind::kConverter, "ibm-878_P100-1996", {"koi8", "koi"}},
};

// U+0000 where windows-1252 has nothing.
constexpr std::array<char16_t, 32> kWindows1252High = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                       0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                       0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                       0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr char32_t kReplacement = 0xFFFD;

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

// A converter that stops at what it cannot map. ICU keeps the tables; opening costs about a microsecond.
Converter OpenConverter(const CharsetRow& row) {
  UErrorCode status = U_ZERO_ERROR;
  Converter converter(ucnv_open(row.converter, &status));
  if (U_FAILURE(status)) return nullptr;
  ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  ucnv_setFallback(converter.get(), false);
  return converter;
}

std::u16string ToUtf16(char32_t code) {
  if (code < 0x10000) return {static_cast<char16_t>(code)};
  const char32_t above = code - 0x10000;
  return {static_cast<char16_t>(0xD800 + (above >> 10)), static_cast<char16_t>(0xDC00 + (above & 0x3FF))};
}

// Encodes one character and converts it back: ICU drops some characters without an error, and bends others.
bool AppendConverted(std::string& out, UConverter* converter, char32_t code) {
  const std::u16string text = ToUtf16(code);
  std::array<char, 32> bytes{};
  std::array<char16_t, 8> back{};
  UErrorCode status = U_ZERO_ERROR;
  const int size =
      ucnv_fromUChars(converter, bytes.data(), bytes.size(), text.data(), static_cast<int>(text.size()), &status);
  if (U_FAILURE(status) || size == 0) return false;
  const int back_size = ucnv_toUChars(converter, back.data(), back.size(), bytes.data(), size, &status);
  if (U_FAILURE(status) || std::u16string_view(back.data(), static_cast<std::size_t>(back_size)) != text) return false;
  out.append(bytes.data(), static_cast<std::size_t>(size));
  return true;
}

// The byte of a character above U+007F in windows-1252, 0 when it has none.
std::uint8_t Windows1252Byte(char32_t code) {
  if (code >= 0xA0 && code <= 0xFF) return static_cast<std::uint8_t>(code);
  for (std::size_t i = 0; i < kWindows1252High.size(); ++i) {
    if (code != 0 && kWindows1252High[i] == code) return static_cast<std::uint8_t>(0x80 + i);
  }
  return 0;
}

bool AppendCharacter(std::string& out, const CharsetRow& row, UConverter* converter, char32_t code) {
  switch (row.kind) {
    case CharsetKind::kUtf8:
      platform::AppendUtf8(out, code);
      return true;
    case CharsetKind::kAscii:
      return false;
    case CharsetKind::kLatin1:
      if (code > 0xFF) return false;
      out += static_cast<char>(code);
      return true;
    case CharsetKind::kWindows1252: {
      const std::uint8_t byte = Windows1252Byte(code);
      if (byte != 0) out += static_cast<char>(byte);
      return byte != 0;
    }
    case CharsetKind::kConverter:
      return converter != nullptr && AppendConverted(out, converter, code);
  }
  return false;
}

void AppendUnmapped(std::string& out, Unmapped unmapped, char32_t code) {
  if (unmapped == Unmapped::kHtmlReference) {
    out += "&#" + std::to_string(static_cast<std::uint32_t>(code)) + ';';
  } else {
    out += '?';
  }
}

std::size_t AsciiRun(std::string_view text) {
  std::size_t run = 0;
  std::uint64_t eight = 0;
  while (run + sizeof eight <= text.size()) {
    std::memcpy(&eight, text.data() + run, sizeof eight);
    if ((eight & 0x8080808080808080) != 0) break;
    run += sizeof eight;
  }
  while (run < text.size() && static_cast<std::uint8_t>(text[run]) < 0x80) ++run;
  return run;
}

// The character of a byte above 0x7F in the charsets that need no converter.
char32_t SingleByteCharacter(CharsetKind kind, std::uint8_t byte) {
  if (kind == CharsetKind::kAscii) return kReplacement;
  if (kind == CharsetKind::kLatin1 || byte >= 0xA0) return byte;
  const char16_t code = kWindows1252High[byte - 0x80];
  return code == 0 ? kReplacement : code;
}

std::string DecodeConverted(const CharsetRow& row, std::string_view bytes) {
  const Converter converter = OpenConverter(row);
  std::string out;
  if (!converter) return out;
  const char* from = bytes.data();
  const char* const end = from + bytes.size();
  std::array<char16_t, 1024> buffer{};
  for (;;) {
    UErrorCode status = U_ZERO_ERROR;
    char16_t* to = buffer.data();
    ucnv_toUnicode(converter.get(), &to, buffer.data() + buffer.size(), &from, end, nullptr, true, &status);
    for (const char16_t* at = buffer.data(); at < to; ++at) {
      char32_t code = *at;
      // A pair is never cut at the end of the buffer: ICU holds it back.
      if (code >= 0xD800 && code < 0xDC00 && at + 1 < to) code = 0x10000 + ((code - 0xD800) << 10) + (*++at - 0xDC00);
      platform::AppendUtf8(out, code >= 0xD800 && code < 0xE000 ? kReplacement : code);
    }
    if (status != U_BUFFER_OVERFLOW_ERROR) return out;
  }
}

}  // namespace

Charset Charset::Utf8() { return Charset(kRows.data()); }

std::string_view Charset::MimeName() const { return row_->mime_name; }

bool Charset::IsUtf8() const { return row_->kind == CharsetKind::kUtf8; }

bool Charset::Encode(std::string_view utf8, std::string& out, std::size_t* lost, Unmapped unmapped) const {
  if (IsUtf8() && platform::IsUtf8(utf8)) {
    out += utf8;
    return true;
  }
  const std::size_t start = out.size();
  Converter converter;
  while (!utf8.empty()) {
    const std::size_t run = AsciiRun(utf8);
    out += utf8.substr(0, run);
    utf8.remove_prefix(run);
    if (utf8.empty()) break;
    const auto [code, length] = DecodeUtf8(utf8);
    utf8.remove_prefix(length);
    if (row_->kind == CharsetKind::kConverter && !converter) converter = OpenConverter(*row_);
    const bool broken = code == kNotUtf8;
    if (AppendCharacter(out, *row_, converter.get(), broken ? kReplacement : code) && !broken) continue;
    if (unmapped == Unmapped::kFail) {
      out.resize(start);
      return false;
    }
    if (lost != nullptr) ++*lost;
    if (!IsUtf8()) AppendUnmapped(out, unmapped, broken ? kReplacement : code);
  }
  return true;
}

std::string Charset::Decode(std::string_view bytes) const {
  std::string out;
  if (IsUtf8()) {
    Encode(bytes, out);
    return out;
  }
  if (row_->kind == CharsetKind::kConverter) return DecodeConverted(*row_, bytes);
  out.reserve(bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    platform::AppendUtf8(out, byte < 0x80 ? byte : SingleByteCharacter(row_->kind, byte));
  }
  return out;
}

std::optional<Charset> FindCharset(std::string_view mime_name) {
  for (const CharsetRow& row : kRows) {
    if (platform::EqualsIgnoringAsciiCase(mime_name, row.mime_name)) return Charset(&row);
    for (const std::string_view alias : row.aliases) {
      if (!alias.empty() && platform::EqualsIgnoringAsciiCase(mime_name, alias)) return Charset(&row);
    }
  }
  return std::nullopt;
}

}  // namespace quillcast::mime
