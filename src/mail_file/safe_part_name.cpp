#include "mail_file/safe_part_name.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/text.h"
#include "platform/unseen_signs.h"
#include "platform/utf8.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kLongestName = 200;   // bytes; systems take 255
constexpr std::size_t kLongestEnding = 20;  // bytes, the dot included
constexpr std::string_view kKeptElsewhere = "<>:\"|?*";

struct TypeRow {
  std::string_view type;
  std::string_view ending;
};
constexpr std::array kEndings = {
    TypeRow{"text/plain", ".txt"},
    TypeRow{"text/html", ".html"},
    TypeRow{"text/calendar", ".ics"},
    TypeRow{"text/csv", ".csv"},
    TypeRow{"text/rtf", ".rtf"},
    TypeRow{"text/vcard", ".vcf"},
    TypeRow{"text/xml", ".xml"},
    TypeRow{"application/json", ".json"},
    TypeRow{"application/msword", ".doc"},
    TypeRow{"application/pdf", ".pdf"},
    TypeRow{"application/pgp-signature", ".asc"},
    TypeRow{"application/pkcs7-mime", ".p7m"},
    TypeRow{"application/pkcs7-signature", ".p7s"},
    TypeRow{"application/rtf", ".rtf"},
    TypeRow{"application/xml", ".xml"},
    TypeRow{"application/zip", ".zip"},
    TypeRow{"audio/mpeg", ".mp3"},
    TypeRow{"image/bmp", ".bmp"},
    TypeRow{"image/gif", ".gif"},
    TypeRow{"image/jpeg", ".jpg"},
    TypeRow{"image/png", ".png"},
    TypeRow{"image/svg+xml", ".svg"},
    TypeRow{"image/tiff", ".tif"},
    TypeRow{"image/webp", ".webp"},
    TypeRow{"message/delivery-status", ".txt"},
    TypeRow{"message/rfc822", ".eml"},
    TypeRow{"video/mp4", ".mp4"},
};

bool IsDropped(char32_t code) {
  const bool is_control = code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x2028 || code == 0x2029;
  const bool is_direction = code == 0x061C || (code >= 0x200B && code <= 0x200F) ||
                            (code >= 0x202A && code <= 0x202E) || (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF;
  return is_control || is_direction;
}

// How many bytes at its beginning are dots and blanks of any kind.
std::size_t UnseenBeginning(std::string_view name) {
  std::size_t at = 0;
  while (at < name.size()) {
    const auto [code, length] = platform::DecodeUtf8(name.substr(at));
    if (code != '.' && !platform::IsBlank(code) && !platform::IsUnseen(code)) break;
    at += length;
  }
  return at;
}

std::string WithoutForeignCharacters(std::string_view name) {
  std::string out;
  while (!name.empty()) {
    const auto [code, length] = platform::DecodeUtf8(name);
    if (code == platform::kNotUtf8 ||
        (code < 0x80 && kKeptElsewhere.find(static_cast<char>(code)) != std::string_view::npos)) {
      out += '_';
    } else if (!IsDropped(code)) {
      out += name.substr(0, length);
    }
    name.remove_prefix(length);
  }
  return out;
}

// Names of devices, with whatever ending; a number may be written above the line.
bool IsDevice(std::string_view name) {
  const std::string stem = platform::AsciiUpper(platform::Trim(name.substr(0, name.find('.'))));
  for (const char* device : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"}) {
    if (stem == device) return true;
  }
  if (!stem.starts_with("COM") && !stem.starts_with("LPT")) return false;
  const std::string_view number = std::string_view(stem).substr(3);
  if (number == "\u00B9" || number == "\u00B2" || number == "\u00B3") return true;
  return number.size() == 1 && number[0] >= '0' && number[0] <= '9';
}

// A command would take the one for an option, the other for somebody's home.
bool IsReserved(std::string_view name) { return name.starts_with('-') || name.starts_with('~') || IsDevice(name); }

// Where the ending begins, or the end where there is none.
std::size_t EndingOf(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 || name.size() - dot > kLongestEnding ? name.size() : dot;
}

std::string Cut(const std::string& name) {
  if (name.size() <= kLongestName) return name;
  const std::string ending = name.substr(EndingOf(name));
  std::string stem = name.substr(0, kLongestName - ending.size());
  stem.resize(stem.size() - platform::IncompleteUtf8Tail(stem));
  return stem + ending;
}

}  // namespace

std::string SafePartName(std::string_view name) {
  if (const std::size_t separator = name.find_last_of("/\\"); separator != std::string_view::npos)
    name.remove_prefix(separator + 1);
  std::string safe = WithoutForeignCharacters(name);
  safe.erase(0, UnseenBeginning(safe));
  if (IsReserved(safe)) safe.insert(0, 1, '_');
  safe = Cut(safe);
  safe.resize(safe.find_last_not_of(". ") + 1);
  return safe;
}

std::string FileNameOf(const Part& part, std::size_t place) {
  std::string name = SafePartName(part.name);
  return name.empty() ? fmt::format("Part {}{}", place, EndingOfType(part.type)) : name;
}

std::string NumberedName(std::string_view name, std::size_t number) {
  const std::size_t ending = EndingOf(name);
  return fmt::format("{} ({}){}", name.substr(0, ending), number, name.substr(ending));
}

std::string_view EndingOfType(std::string_view media_type) {
  const auto* const row = std::ranges::find(kEndings, media_type, &TypeRow::type);
  return row == kEndings.end() ? ".bin" : row->ending;
}

}  // namespace quillcast::mail_file
