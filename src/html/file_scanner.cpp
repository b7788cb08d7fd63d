#include "html/file_scanner.h"

#include <algorithm>

#include "html/characters.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// 0 stands for the beginning of the text.
constexpr std::string_view kBeforeValue("\0\"'(=", 5);
// A server without a scheme may be a part of something else, such as behind a "file:" in another spelling.
constexpr std::string_view kBeforeServer("\0\"'(=,", 6);

bool IsOneOf(char c, std::string_view signs) { return signs.find(c) != std::string_view::npos; }
bool IsBlankOrControl(char c) { return static_cast<unsigned char>(c) <= ' ' || c == 0x7F; }
bool IsOfWord(char c) { return platform::AsciiIsAlnum(c) || c == '+' || c == '-' || c == '.'; }
bool IsLetterOrDigit(char c) { return platform::AsciiIsAlnum(c) || static_cast<unsigned char>(c) >= 0x80; }

// Whether `name`, which stands between backslashes, is an escape of a text within a text, as in "\\u003cp\\u003e",
// "\\n\\t" and "\\w\\.x". The slashes of "\\\\server\\share" are fewer behind it.
bool IsEscape(std::string_view name, std::size_t slashes, std::string_view behind) {
  const std::size_t same = std::min(behind.find_first_not_of('\\'), behind.size());
  if (name.size() == 1) return same >= slashes && IsOneOf(platform::AsciiLower(name[0]), "bdfnrstw");
  const std::string_view code = name.substr(1, 4);
  const bool is_code = name[0] == 'u' && code.size() == 4 && std::all_of(code.begin(), code.end(), IsHexDigit);
  return is_code && (same >= slashes || behind.starts_with("\\/"));
}

}  // namespace

bool FileScanner::FindsFile() {
  while (at_ < text_.size()) {
    const char c = text_[at_];
    if (at_ == asks_ && at_ < end_) {
      PassOverAddress();
    } else if (IsOfWord(c) ? ReadWord() : IsSlash(c) ? ReadSlashes() : ReadSign()) {
      return true;
    }
  }
  return false;
}

void FileScanner::Keep(std::size_t end) {
  rest_ += text_.substr(at_, end - at_);
  for (; at_ < end; ++at_) {
    if (!IsBlankOrControl(text_[at_])) before_ = text_[at_];
  }
}

void FileScanner::PassOverAddress() {
  rest_ += ' ';
  before_ = text_[end_ - 1];
  at_ = end_;
  is_in_pairs_ = false;
}

bool FileScanner::IsFileOrPassesOver(AddressReach reach) {
  if (reach == AddressReach::kFile) return true;
  PassOverAddress();
  return false;
}

bool FileScanner::ReadSign() {
  const char c = text_[at_];
  is_in_pairs_ = c == '&' || (is_in_pairs_ && IsOneOf(c, "=_"));
  if (IsBlankOrControl(c) || IsOneOf(c, "\"'<>()")) awaits_slash_ = false;
  Keep(at_ + 1);
  return false;
}

bool FileScanner::ReadSlashes() {
  if (awaits_slash_ || IsShare()) return true;
  if (text_.substr(at_).starts_with("//") && IsOneOf(before_, kBeforeServer)) {
    const bool is_within = at_ < end_;
    BeginAddress(at_ + 2);
    const AddressReach reach = ReachOf(text_.substr(at_, end_ - at_));
    if (reach != AddressReach::kNeither) return IsFileOrPassesOver(reach);
    if (!is_within) asks_ = std::string_view::npos;  // it may be no address at all
  }
  is_in_pairs_ = false;
  Keep(std::min(text_.find_first_not_of("/\\", at_), text_.size()));
  return false;
}

bool FileScanner::ReadWord() {
  std::size_t end = at_;
  while (IsOfWord(CharacterAt(end))) ++end;
  if (CharacterAt(end) == ':') return ReadScheme(end);
  Keep(end);
  return false;
}

bool FileScanner::ReadScheme(std::size_t colon) {
  if (IsFile(colon)) return true;
  std::size_t begin = at_;  // digits and dots may stand before
  while (begin < colon && !IsLetter(text_[begin])) ++begin;
  const std::string_view scheme = text_.substr(begin, colon - begin);
  if (IsNetScheme(scheme) || (scheme.size() > 1 && text_.substr(colon + 1).starts_with("//"))) {
    BeginAddress(colon + 1);
    const AddressReach reach = ReachOf(text_.substr(begin, end_ - begin));
    if (reach != AddressReach::kNeither) return IsFileOrPassesOver(reach);
  }
  is_in_pairs_ = false;
  Keep(colon + 1);
  return false;
}

// Another scheme may end in one that names files: "git+file:///x".
bool FileScanner::IsFile(std::size_t colon) {
  const std::string_view word = text_.substr(at_, colon - at_);
  const std::string_view scheme = word.substr(word.find_last_of("+-.") + 1);
  if (scheme.size() == 1) return IsLetter(scheme[0]) && IsDrive(colon);
  if (!IsFileScheme(scheme)) return false;
  if (IsSlash(CharacterAt(colon + 1))) return true;
  if (IsLetter(CharacterAt(colon + 1)) && CharacterAt(colon + 2) == '|') return true;
  if (kind_ == Text::kOfPrograms && scheme == word && IsOneOf(before_, kBeforeValue)) awaits_slash_ = true;
  return false;
}

// "c:\x", "c:/x" behind the letter of the drive.
bool FileScanner::IsDrive(std::size_t colon) const {
  if (!IsSlash(CharacterAt(colon + 1))) return false;
  if (text_[colon + 1] == '/') {
    const bool is_part = colon > 1 && IsOneOf(text_[colon - 2], "+-._");
    const std::size_t name = colon + 2;
    const bool is_hidden = kind_ == Text::kOfPrograms && IsOneOf(CharacterAt(name), ".@-$!") &&
                           IsLetterOrDigit(CharacterAt(name + 1));  // "C:/.ssh"; "a:/." is none
    if (is_part || !(IsLetterOrDigit(CharacterAt(name)) || IsOneOf(CharacterAt(name), "_~(%") || is_hidden))
      return false;
    return kind_ == Text::kOfPrograms || !IsSizeOrUnit(colon);
  }
  std::size_t name = colon + 2;
  while (IsSlash(CharacterAt(name))) ++name;  // as scripts write it
  return IsLetterOrDigit(CharacterAt(name)) || (name < text_.size() && IsOneOf(text_[name], "_~(%$#@![{+-.^&"));
}

// In words, "S:/M:/L" and "C:/D:" are a list, and "p:/unit" is what a thing costs; a folder has more behind it.
bool FileScanner::IsSizeOrUnit(std::size_t colon) const {
  const std::size_t sizes = std::min(text_.find_first_not_of("SMLX/", colon + 2), text_.size());  // "S:/M/L/XL"
  if (sizes == text_.size()) return true;
  std::size_t end = colon + 2;
  while (IsLetterOrDigit(CharacterAt(end))) ++end;
  if (end == colon + 3) return end == text_.size() || text_[end] == ':';
  return platform::AsciiLower(text_[colon - 1]) == text_[colon - 1] && end == text_.size();
}

// "\\server\share", "\\server/share", "app:///\\server\share".
bool FileScanner::IsShare() const {
  const char before = at_ > 0 ? text_[at_ - 1] : '\0';
  const std::size_t begin = std::min(text_.find_first_not_of('/', at_), text_.size());
  const std::size_t name = std::min(text_.find_first_not_of('\\', begin), text_.size());
  if (begin == at_ + 1 || name < begin + 2 || IsOfWord(before) || before == '_') return false;
  if (platform::StartsWithIgnoringAsciiCase(text_.substr(name), "?\\UNC\\") ||
      platform::StartsWithIgnoringAsciiCase(text_.substr(name), "?\\\\UNC\\")) {
    return true;  // as programs write it, and in a script
  }
  std::size_t end = name;
  while (IsLetterOrDigit(CharacterAt(end)) || (end < text_.size() && IsOneOf(text_[end], "-._$@"))) ++end;
  if (end == name || !IsSlash(CharacterAt(end)) || IsBlankOrControl(CharacterAt(end + 1))) return false;
  return !IsEscape(text_.substr(name, end - name), name - begin, text_.substr(end));
}

// Finds its end, unless at_ is within one: what its query asks for may look like others.
void FileScanner::BeginAddress(std::size_t from) {
  if (at_ < end_) return;
  host_ = std::min(text_.find_first_not_of("/\\", from), text_.size());
  asks_ = std::string_view::npos;
  is_value_ = is_in_pairs_ && before_ == '=';
  open_ = 0;
  end_ = from;
  while (end_ < text_.size() && !EndsAddress(text_[end_])) ++end_;
}

// Brackets are of its query, or around an IPv6 address; one that closes what it has not opened is around the address
// itself. "&" is of its query, unless the address is a value among others.
bool FileScanner::EndsAddress(char c) {
  const bool asks = asks_ != std::string_view::npos;
  if (IsBlankOrControl(c) || IsOneOf(c, "\"'<>(),;|`^")) return true;
  if (!asks && IsOneOf(c, "?#")) asks_ = end_;
  if (c == '&') return !asks || is_value_;
  if (IsOneOf(c, "]}")) return open_-- == 0;
  if (!IsOneOf(c, "[{")) return false;
  ++open_;
  return !asks && !(c == '[' && (end_ == host_ || text_[end_ - 1] == '@'));
}

}  // namespace quillcast::html
