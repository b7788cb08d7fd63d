#include "document/body_file.h"

#include <algorithm>

#include "charset/charset.h"
#include "charset/page_charset.h"
#include "document/declared_charset.h"
#include "platform/file.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::document {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleMark = "\xFF\xFE";
constexpr std::string_view kBigMark = "\xFE\xFF";

std::string DecodeUtf16(std::string_view bytes, bool big_endian) {
  std::string out;
  const auto unit = [&](std::size_t at) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<char32_t>(big_endian ? (first << 8) | second : (second << 8) | first);
  };
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    char32_t code = unit(at);
    const bool pair = code >= 0xD800 && code < 0xDC00 && at + 3 < bytes.size() && (unit(at + 2) & 0xFC00) == 0xDC00;
    if (pair) {
      code = 0x10000 + ((code - 0xD800) << 10) + (unit(at + 2) - 0xDC00);
      at += 2;
    }
    platform::AppendUtf8(out, code >= 0xD800 && code < 0xE000 ? 0xFFFD : code);
  }
  return out;
}

void AppendUnit(std::string& out, char32_t unit, bool big_endian) {
  const auto high = static_cast<char>(unit >> 8);
  const auto low = static_cast<char>(unit & 0xFF);
  out += big_endian ? high : low;
  out += big_endian ? low : high;
}

std::string EncodeUtf16(std::string_view text, bool big_endian) {
  std::string out(big_endian ? kBigMark : kLittleMark);
  while (!text.empty()) {
    const auto [read, length] = platform::DecodeUtf8(text);
    const char32_t code = read == platform::kNotUtf8 ? 0xFFFD : read;
    if (code >= 0x10000) {
      AppendUnit(out, 0xD800 + ((code - 0x10000) >> 10), big_endian);
      AppendUnit(out, 0xDC00 + ((code - 0x10000) & 0x3FF), big_endian);
    } else {
      AppendUnit(out, code, big_endian);
    }
    text.remove_prefix(length);
  }
  return out;
}

constexpr char kEscape = '\x1B';

// Those that change their tables by escapes are ASCII to who does not know of it, and so UTF-8.
bool IsUtf8(std::string_view bytes) {
  return platform::IsUtf8(bytes) && (bytes.find(kEscape) == std::string_view::npos ||
                                     !platform::StartsWithIgnoringAsciiCase(DeclaredCharset(bytes), "iso-2022-"));
}

BodyEncoding EncodingOf(std::string_view bytes, bool is_plain) {
  if (bytes.starts_with(kUtf8Mark)) return BodyEncoding::kUtf8WithMark;
  if (bytes.starts_with(kLittleMark)) return BodyEncoding::kUtf16Little;
  if (bytes.starts_with(kBigMark)) return BodyEncoding::kUtf16Big;
  if (is_plain ? platform::IsUtf8(bytes) : IsUtf8(bytes)) return BodyEncoding::kUtf8;
  const std::string declared = is_plain ? std::string() : DeclaredCharset(bytes);
  if (IsUtf8Label(declared)) return BodyEncoding::kUtf8;
  return charset::IsPageCharset(declared) ? BodyEncoding::kDeclared : BodyEncoding::kWindows1252;
}

std::string FromWindows1252(std::string_view bytes) { return charset::FindCharset("windows-1252")->Decode(bytes); }

// A byte gone wrong in UTF-8 was put in by another program, and is of its set.
std::string DecodeUtf8(std::string_view bytes) {
  if (platform::IsUtf8(bytes)) return std::string(bytes);
  const auto western = charset::FindCharset("windows-1252");
  std::string out;
  while (!bytes.empty()) {
    const auto [code, length] = platform::DecodeUtf8(bytes);
    const std::string_view one = bytes.substr(0, length);
    if (code == platform::kNotUtf8) {
      out += western->Decode(one);
    } else {
      out += one;
    }
    bytes.remove_prefix(length);
  }
  return out;
}

std::string Decode(std::string_view bytes, BodyEncoding encoding) {
  switch (encoding) {
    case BodyEncoding::kUtf8:
      return DecodeUtf8(bytes);
    case BodyEncoding::kUtf8WithMark:
      return DecodeUtf8(bytes.substr(kUtf8Mark.size()));
    case BodyEncoding::kUtf16Little:
    case BodyEncoding::kUtf16Big:
      return DecodeUtf16(bytes.substr(2), encoding == BodyEncoding::kUtf16Big);
    case BodyEncoding::kWindows1252:
      return FromWindows1252(bytes);
    case BodyEncoding::kDeclared:
      break;
  }
  auto text = charset::DecodePage(bytes, DeclaredCharset(bytes));
  return text ? *std::move(text) : FromWindows1252(bytes);
}

// What no text has but by accident. Blanks, the marks between pages, and what old character sets change their tables by
// (ISO 2022) are none of it.
bool IsOfNoText(char c) {
  constexpr std::string_view kOfTexts = "\b\t\n\v\f\r\x0E\x0F\x1B";
  return static_cast<unsigned char>(c) < 0x20 && kOfTexts.find(c) == std::string_view::npos;
}

bool IsText(std::string_view text) {
  constexpr std::ptrdiff_t kFewest = 16;  // characters to one that is of no text; old files end in one
  if (text.starts_with("%PDF-") || text.starts_with("{\\rtf") || text.find('\0') != std::string_view::npos)
    return false;
  return std::ranges::count_if(text, IsOfNoText) * kFewest <= std::ssize(text);
}

}  // namespace

bool IsPlainTextName(const std::filesystem::path& file) {
  return platform::EqualsIgnoringAsciiCase(file.extension().string(), ".txt");
}

Result<BodyFile> ReadBodyFile(const std::filesystem::path& file) {
  auto bytes = platform::ReadFile(file, kLongestBody);
  if (!bytes) return bytes.error();
  const BodyEncoding encoding = EncodingOf(*bytes, IsPlainTextName(file));
  std::string text = Decode(*bytes, encoding);
  return BodyFile{std::move(*bytes), std::move(text), encoding};
}

Result<BodyFile> ReadLetterFile(const std::filesystem::path& file) {
  auto read = ReadBodyFile(file);
  if (!read || IsText(read->text)) return read;
  return Error{Failure::kBadData, Say("{} is neither HTML nor text.", platform::Printable(file.string(), 300)),
               "Name an HTML file, as word processors save one too, or a text file whose name ends in .txt."};
}

std::string EncodeBody(std::string_view html, BodyEncoding encoding) {
  std::string out;
  switch (encoding) {
    case BodyEncoding::kUtf8:
      return std::string(html);
    case BodyEncoding::kUtf8WithMark:
      return std::string(kUtf8Mark) + std::string(html);
    case BodyEncoding::kUtf16Little:
    case BodyEncoding::kUtf16Big:
      return EncodeUtf16(html, encoding == BodyEncoding::kUtf16Big);
    case BodyEncoding::kWindows1252:
      charset::FindCharset("windows-1252")->Encode(html, out, nullptr, charset::Unmapped::kHtmlReference);
      break;
    case BodyEncoding::kDeclared:
      return charset::EncodePage(html, DeclaredCharset(html)).value_or(std::string(html));
  }
  return out;
}

}  // namespace quillcast::document
