#include "html/local_name.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "html/html_css.h"
#include "html/html_tokenizer.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

bool IsSlash(char c) { return c == '/' || c == '\\'; }
bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }
bool IsHexDigit(char c) { return platform::AsciiIsAlnum(c) && platform::AsciiLower(c) <= 'f'; }
bool IsOfScheme(char c) { return platform::AsciiIsAlnum(c) || c == '+' || c == '-' || c == '.' || c == '_'; }

bool IsOfAddress(char c) { return IsOfScheme(c) || c == ':' || c == '/'; }

char At(std::string_view text, std::size_t at) { return at < text.size() ? text[at] : '\0'; }

// What leads to the web, to mail or to a telephone.
bool BeginsAddressOfTheNet(std::string_view text) {
  constexpr auto kSchemes = std::to_array<std::string_view>({"http://", "https://", "mailto:", "tel:", "sms:"});
  return std::any_of(kSchemes.begin(), kSchemes.end(), [&](std::string_view scheme) {
    return platform::StartsWithIgnoringAsciiCase(text, scheme) && !IsSlash(At(text, scheme.size()));
  });
}

// "//example.org/x", of the same web.
bool BeginsWithHost(std::string_view text) {
  if (!text.starts_with("//")) return false;
  const auto end = std::find_if_not(text.begin() + 2, text.end(), IsOfScheme);
  const std::string_view host = text.substr(2, static_cast<std::size_t>(end - text.begin()) - 2);
  return !host.starts_with('.') && host.find('.') != std::string_view::npos;
}

// Such addresses are the person's own, whatever they ask for. A host without a scheme may be a part of something else,
// such as behind a "file:" in another spelling, so only a quote and the like may stand before it.
std::string WithoutAddressesOfTheNet(std::string_view text) {
  std::string out;
  char before = '\0';  // no blank
  bool is_within = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    const bool ends = IsControl(c) || std::string_view(" \"'<>(),;|`").find(c) != std::string_view::npos;
    if (ends) is_within = false;
    const bool begins =
        !is_within && ((c != '/' && !IsOfAddress(before) && BeginsAddressOfTheNet(text.substr(at))) ||
                       (c == '/' && std::string_view("\0\"'(=", 5).find(before) != std::string_view::npos &&
                        BeginsWithHost(text.substr(at))));
    if (begins) is_within = true;
    if (!is_within) out += c;
    if (c != ' ' && !IsControl(c)) before = c;
  }
  return out;
}

// "file:" and what belongs to it. Both texts here are in lower case.
bool NamesByScheme(std::string_view text) {
  constexpr std::string_view kScheme = "file:";
  const std::string_view whole = platform::Trim(text);
  if (whole.starts_with(kScheme) && whole.size() > kScheme.size() && whole.find(' ') == std::string_view::npos) {
    return true;
  }
  for (std::size_t at = text.find(kScheme); at != std::string_view::npos; at = text.find(kScheme, at)) {
    const bool is_end = at > 0 && IsOfScheme(text[at - 1]);  // of another scheme
    at += kScheme.size();
    if (is_end) continue;
    if (IsSlash(At(text, at)) || (platform::AsciiIsAlnum(At(text, at)) && At(text, at + 1) == '|')) return true;
    const std::size_t end = std::min(text.find_first_of(" \"'<>()", at), text.size());
    if (text.substr(at, end - at).find_first_of("/\\") != std::string_view::npos) return true;
    at = end;
  }
  return false;
}

// "c:\x", "c:/x" behind the letter of the drive.
bool IsDrive(std::string_view text, std::size_t colon) {
  const bool is_letter = colon > 0 && text[colon - 1] >= 'a' && text[colon - 1] <= 'z';
  if (!is_letter || (colon > 1 && IsOfAddress(text[colon - 2]))) return false;
  if (!IsSlash(At(text, colon + 1))) return false;
  const bool is_back = text[colon + 1] == '\\';
  std::size_t at = colon + 2;
  while (is_back && At(text, at) == '\\') ++at;  // as scripts write it
  const char first = At(text, at);
  const std::string_view signs = is_back ? "_~(%$#@![{+-.^&" : "_~(%";  // that a name begins with
  return platform::AsciiIsAlnum(first) || static_cast<unsigned char>(first) >= 0x80 ||
         (first != '\0' && signs.find(first) != std::string_view::npos);
}

// "\\server\share", "\\server/share".
bool IsServer(std::string_view text, std::size_t begin) {
  if (begin > 0 && (IsOfScheme(text[begin - 1]) || IsSlash(text[begin - 1]))) return false;
  const std::size_t name = text.find_first_not_of('\\', begin);
  if (name == std::string_view::npos || name < begin + 2) return false;
  const auto behind = std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(name), text.end(), [](char c) {
    return IsOfScheme(c) || c == '$' || static_cast<unsigned char>(c) >= 0x80;
  });
  const auto end = static_cast<std::size_t>(behind - text.begin());
  return end > name && IsSlash(At(text, end)) && !IsControl(At(text, end + 1)) && At(text, end + 1) != ' ';
}

bool NamesByPath(std::string_view text) {
  for (std::size_t at = text.find_first_of(":\\"); at != std::string_view::npos;
       at = text.find_first_of(":\\", at + 1)) {
    if (text[at] == ':' ? IsDrive(text, at) : IsServer(text, at)) return true;
  }
  return false;
}

// Control characters part words or are none at all.
bool NamesAsWritten(std::string_view text) {
  std::string parted = platform::AsciiLower(text);
  std::string without = parted;
  std::replace_if(parted.begin(), parted.end(), IsControl, ' ');
  if (NamesByScheme(parted) || NamesByPath(parted)) return true;
  return std::erase_if(without, IsControl) > 0 && (NamesByScheme(without) || NamesByPath(without));
}

// "%66" is the character, and so are "\x66" and "\u0066" of scripts.
std::string BytesDecoded(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view rest = text.substr(at);
    const std::size_t mark = rest.starts_with("\\u00") ? 4
                             : rest.starts_with("\\x") ? 2
                             : rest.starts_with('%')   ? 1
                                                       : 0;
    if (mark == 0 || !IsHexDigit(At(rest, mark)) || !IsHexDigit(At(rest, mark + 1))) {
      out += text[at];
      continue;
    }
    out += platform::PercentDecoded("%" + std::string(rest.substr(mark, 2))).value_or("");
    at += mark + 1;
  }
  return out;
}

std::string Unescaped(std::string_view text) { return DecodeCssAddress(text, CssPlace::kElement); }
std::string WithoutReferences(std::string_view text) { return DecodeCharacterReferences(text, true); }

}  // namespace

bool NamesLocalFile(std::string_view text) {
  constexpr int kRounds = 2;  // a page within an attribute has two
  std::string read = WithoutAddressesOfTheNet(text);
  if (NamesAsWritten(read)) return true;
  for (int round = 0; round < kRounds; ++round) {
    for (const auto& decode : {WithoutReferences, BytesDecoded, Unescaped}) {
      if (read.find_first_of("&%\\") == std::string::npos) return false;
      const std::string decoded = decode(read);
      if (decoded == read) continue;
      read = WithoutAddressesOfTheNet(decoded);
      if (NamesAsWritten(read)) return true;
    }
  }
  return false;
}

bool AddressNamesLocalFile(std::string_view address) {
  std::string read(address);
  std::erase_if(read, IsControl);
  const std::string_view trimmed = platform::Trim(read);
  return !BeginsAddressOfTheNet(trimmed) && !BeginsWithHost(trimmed) && NamesLocalFile(address);
}

bool WordsNameLocalFile(std::string_view words) {
  const std::string_view text = platform::Trim(words);
  if (!NamesLocalFile(text)) return false;
  const auto begins_with_it = [](std::string_view part) { return NamesLocalFile(part.substr(0, part.find(' '))); };
  const std::size_t label = text.rfind(": ");  // "Description: C:\Users\Ada\a.png", as word processors write it
  return begins_with_it(text) ||
         (label != std::string_view::npos && begins_with_it(platform::Trim(text.substr(label + 1))));
}

}  // namespace quillcast::html
