// The fields and parameters of header_text.h that are built from names and numbers, not from running text.
#include <array>

#include "mime/encoded_words.h"
#include "mime/header_text.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mime {
namespace {

constexpr std::size_t kLongestLine = 78;
constexpr std::size_t kLongestPlainName = 900;  // well under the 998 octets of a line, with the parameter's name
constexpr std::string_view kUpperHex = "0123456789ABCDEF";

std::string Quoted(std::string_view ascii) {
  std::string quoted = "\"";
  for (const char c : ascii) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

// One octet of an RFC 2231 value: attribute-char as it is, all else as %XX.
std::string PercentEncoded(char c) {
  if (platform::AsciiIsAlnum(c) || std::string_view("!#$&+-.^_`{|}~").find(c) != std::string_view::npos) return {c};
  const auto byte = static_cast<std::uint8_t>(c);
  return {'%', kUpperHex[byte >> 4], kUpperHex[byte & 15]};
}

void AppendParameterLine(std::string& out, std::string_view line) {
  out += ";\r\n ";
  out += line;
}

// RFC 2231 sections 3 and 4: one parameter, or numbered pieces where the line would be too long.
void AppendExtended(std::string& out, std::string_view attribute, std::string_view value) {
  std::string whole = std::string(attribute) + "*=utf-8''";
  for (const char c : value) whole += PercentEncoded(c);
  if (whole.size() + 2 <= kLongestLine) {
    AppendParameterLine(out, whole);
    return;
  }
  std::size_t number = 0;
  std::string piece = std::string(attribute) + "*0*=utf-8''";
  for (const char c : value) {
    const std::string octet = PercentEncoded(c);
    if (piece.size() + octet.size() + 2 > kLongestLine) {
      AppendParameterLine(out, piece);
      piece = std::string(attribute) + '*' + std::to_string(++number) + "*=";
    }
    piece += octet;
  }
  AppendParameterLine(out, piece);
}

// A quoted name cannot be folded, and readers that know no other form show it as it stands, however long its line is.
bool StandsAsItIs(std::string_view name) { return !NeedsEncodedWord(name) && name.size() <= kLongestPlainName; }

// Twelve characters, 60 bits.
void AppendToken(std::string& out, std::uint64_t bits) {
  constexpr std::string_view kLetters = "0123456789abcdefghijklmnopqrstuv";
  for (int i = 0; i < 12; ++i, bits >>= 5) out += kLetters[bits & 31];
}

}  // namespace

std::string SafeFileName(std::string_view utf8) {
  std::string name;
  while (!utf8.empty()) {
    const auto [code, length] = platform::DecodeUtf8(utf8);
    const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    if (code == platform::kNotUtf8) {
      platform::AppendUtf8(name, 0xFFFD);
    } else if (!control && code != '/' && code != '\\') {
      name += utf8.substr(0, length);
    }
    utf8.remove_prefix(length);
  }
  const std::string_view trimmed = platform::Trim(name);
  return trimmed.empty() ? "attachment" : std::string(trimmed);
}

std::string AsciiFileName(std::string_view utf8) {
  constexpr std::size_t kLongest = 50;
  constexpr std::size_t kLongestExtension = 10;
  const std::string name = SafeFileName(utf8);
  std::string plain;
  for (std::string_view rest = name; !rest.empty();) {
    const auto [code, length] = platform::DecodeUtf8(rest);
    plain += code < 0x80 ? static_cast<char>(code) : '_';
    rest.remove_prefix(length);
  }
  if (plain.size() <= kLongest) return plain;
  const std::size_t dot = plain.rfind('.');
  const bool keep = dot != std::string::npos && plain.size() - dot <= kLongestExtension;
  const std::string extension = keep ? plain.substr(dot) : "";
  return plain.substr(0, kLongest - extension.size()) + extension;
}

void AppendParameter(std::string& out, std::string_view attribute, std::string_view file_name) {
  const std::string name = SafeFileName(file_name);
  if (StandsAsItIs(name)) {
    AppendParameterLine(out, std::string(attribute) + '=' + Quoted(name));
  } else {
    AppendExtended(out, attribute, name);
  }
}

void AppendNameParameter(std::string& out, std::string_view file_name) {
  const std::string name = SafeFileName(file_name);
  if (StandsAsItIs(name)) {
    AppendParameterLine(out, "name=" + Quoted(name));
    return;
  }
  std::string words;
  std::size_t column = 8;  // ` name="` and the closing quote
  AppendEncodedWords(words, name, charset::Charset::Utf8(), HeaderEncoding::kNone, column);
  AppendParameterLine(out, "name=\"" + words + '"');
}

std::string FormatDate(const std::tm& local, long utc_offset_seconds) {
  // Neither strftime, whose names are the locale's, nor a format, which took a tenth of making a message.
  constexpr std::array<std::string_view, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const long minutes = (utc_offset_seconds < 0 ? -utc_offset_seconds : utc_offset_seconds) / 60;
  std::string text;
  text.reserve(32);
  const auto add = [&text](long number) {
    text += static_cast<char>('0' + number / 10 % 10);
    text += static_cast<char>('0' + number % 10);
  };
  text += kDays[static_cast<unsigned>(local.tm_wday) % kDays.size()];
  text += ", ";
  add(local.tm_mday);
  (text += ' ') += kMonths[static_cast<unsigned>(local.tm_mon) % kMonths.size()];
  text += ' ';
  add((local.tm_year + 1900) / 100);
  add((local.tm_year + 1900) % 100);
  text += ' ';
  add(local.tm_hour);
  text += ':';
  add(local.tm_min);
  text += ':';
  add(local.tm_sec);
  text += utc_offset_seconds < 0 ? " -" : " +";
  add(minutes / 60 % 100);
  add(minutes % 60);
  return text;
}

std::string IdDomain(std::string_view domain) {
  std::string out(domain);
  std::erase_if(out, [](char c) { return !platform::AsciiIsAlnum(c) && c != '.' && c != '-'; });
  return out.empty() ? "localhost" : out;
}

std::string MakeMessageId(std::uint64_t first, std::uint64_t second, std::string_view domain) {
  std::string id;
  id.reserve(domain.size() + 40);
  id += '<';
  AppendToken(id, first);
  id += '.';
  AppendToken(id, second);
  return id.append("@").append(IdDomain(domain)).append(">");
}

std::string MakeBoundary(std::uint64_t first, std::uint64_t second) {
  std::string boundary = "=_";
  AppendToken(boundary, first);
  AppendToken(boundary, second);
  return boundary;
}

}  // namespace quillcast::mime
