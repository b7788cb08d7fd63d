#include "html/html_css.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "html/characters.h"
#include "html/html_tokenizer.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::html {
namespace {

using platform::StartsWithIgnoringAsciiCase;

constexpr std::size_t kMostEscapeDigits = 6;
constexpr std::size_t kLongestWindowsPath = 1000;

bool IsLineEnd(char c) { return c == '\n' || c == '\r' || c == '\f'; }
bool IsOfCssName(char c) {
  return platform::AsciiIsAlnum(c) || c == '-' || c == '_' || c == '\\' || static_cast<unsigned char>(c) >= 0x80;
}

// A quote as it is written. Length 0: none.
struct Quote {
  char mark = 0;
  std::size_t length = 0;
};

Quote ReadQuote(std::string_view css, CssPlace place) {
  if (css.empty()) return {};
  if (css.front() == '"' || css.front() == '\'') return {css.front(), 1};
  if (place == CssPlace::kElement || css.front() != '&') return {};
  constexpr std::array<std::pair<std::string_view, char>, 6> kReferences = {
      {{"&quot;", '"'}, {"&#34;", '"'}, {"&#x22;", '"'}, {"&apos;", '\''}, {"&#39;", '\''}, {"&#x27;", '\''}}};
  for (const auto& [reference, mark] : kReferences) {
    if (StartsWithIgnoringAsciiCase(css, reference)) return {mark, reference.size()};
  }
  return {};
}

// "Pictures\x.png": a backslash before a letter that no escape has ("\27 ", "\(" and "\_" do, the last where Markdown
// became HTML), or for a control character. Behind dots alone ("..\_x.png") it stands for none of them.
bool HasFolderOfWindows(std::string_view address) {
  for (std::size_t at = address.find('\\'); at != std::string_view::npos; at = address.find('\\', at + 2)) {
    const std::string_view name = address.substr(at + 1, 2);
    const bool is_behind_dots = at > 0 && address.find_first_not_of('.') == at;
    const bool is_escape = name.starts_with('_') && !is_behind_dots;
    if (name.empty() || is_escape || name[0] == '\\' || !IsOfCssName(name[0]) || name[0] == '-') continue;
    if (!IsHexDigit(name[0]) || name.size() < 2 || !IsHexDigit(name[1])) return true;
  }
  return false;
}

// "C:\x", "c:/x\y", "\\server\x", "file:\\\C:\x", "file:///\\server\x", also percent-encoded; or with a folder.
bool IsPathOfWindows(std::string_view address) {
  if (HasFolderOfWindows(address)) return true;
  const std::string decoded = platform::PercentDecoded(address).value_or(std::string(address));
  std::string_view rest = platform::Trim(decoded);
  const bool is_file = StartsWithIgnoringAsciiCase(rest, "file:");
  if (is_file) rest.remove_prefix(5);
  const std::size_t slashes = std::min(rest.find_first_not_of("/\\"), rest.size());
  const std::string_view path = rest.substr(slashes);
  if (path.size() > 2 && (path[1] == ':' || path[1] == '|') && platform::AsciiIsAlnum(path[0])) {
    return path[2] == '/' || path[2] == '\\';
  }
  return is_file ? rest.substr(0, slashes).find('\\') != std::string_view::npos : rest.starts_with("\\\\");
}

std::string Written(std::string_view css, CssPlace place) {
  return place == CssPlace::kAttribute ? DecodeCharacterReferences(css, true) : std::string(css);
}

class CssReader {
 public:
  CssReader(std::string_view css, CssPlace place) : css_(css), place_(place) {}

  struct Found {
    std::vector<CssRange> addresses;
    std::vector<CssRange> imports;
  };
  Found Run() {
    bool importing = false;  // from "@import" to its semicolon
    while (at_ < css_.size()) {
      const std::string_view rest = css_.substr(at_);
      if (const Quote quote = ReadQuote(rest, place_); quote.length > 0) {
        const std::size_t begin = at_ += quote.length;
        SkipTo(quote);
        if (importing) found_.imports.push_back({begin, at_});
        at_ += ReadQuote(css_.substr(at_), place_).length;
      } else if (rest.starts_with("/*")) {
        at_ = std::min(css_.find("*/", at_ + 2), css_.size() - 2) + 2;
      } else if (StartsWithIgnoringAsciiCase(rest, "@import")) {
        importing = true;
        at_ += std::string_view("@import").size();
      } else if (StartsWithIgnoringAsciiCase(rest, kUrl) && (at_ == 0 || !IsOfCssName(css_[at_ - 1]))) {
        at_ += kUrl.size();
        const auto address = ReadAddress();
        if (address) (importing ? found_.imports : found_.addresses).push_back(*address);
      } else {
        importing = importing && rest.front() != ';';
        at_ += rest.front() == '\\' ? std::min<std::size_t>(2, rest.size()) : 1;
      }
    }
    return std::move(found_);
  }

 private:
  // Nothing when it is not closed, also by the end of a line within quotes.
  std::optional<CssRange> ReadAddress() {
    while (at_ < css_.size() && IsSpace(css_[at_])) ++at_;
    const Quote quote = ReadQuote(css_.substr(at_), place_);
    const std::size_t begin = at_ += quote.length;
    if (quote.length > 0) {
      if (!BeginsPath() || !SkipPathTo(quote)) SkipTo(quote);
    } else if (BeginsPath()) {
      if (!SkipPath()) return std::nullopt;
    } else {
      while (at_ < css_.size() && css_[at_] != ')') SkipCharacter();
    }
    if (at_ >= css_.size() || IsLineEnd(css_[at_])) return std::nullopt;
    CssRange address{begin, at_};
    while (quote.length == 0 && address.end > escape_end_ && address.end > begin && IsSpace(css_[address.end - 1])) {
      --address.end;
    }
    at_ += ReadQuote(css_.substr(at_), place_).length;  // it begins no string
    return address;
  }

  bool BeginsPath() const {
    constexpr std::size_t kLongEnough = 80;  // "&#92;" is a sign
    const std::string_view begin = css_.substr(at_, kLongEnough);
    return IsPathOfWindows(Written(begin.substr(0, begin.find(')')), place_));
  }

  // No browser reads "C:\Program Files (x86)\x" there; whoever put it there meant it as a whole. False for one that is
  // not closed.
  bool SkipPath() {
    const std::size_t limit = std::min(at_ + kLongestWindowsPath, css_.size());
    auto end = EndOfPairs(limit);
    if (!end) end = EndBeforeOthers(limit);
    at_ = end.value_or(std::min(css_.find(')', at_), css_.size()));
    return end.has_value();
  }

  // The bracket behind all that are closed, within what they may stand in.
  std::optional<std::size_t> EndOfPairs(std::size_t end) const {
    std::size_t open = 0;
    bool had_pair = false;
    for (std::size_t at = at_; at < end; ++at) {
      const char c = css_[at];
      const bool is_part = c == ')' && css_[at - 1] == '\\' && css_.substr(at + 1).starts_with(')');  // "\\))"
      if (c == ')' && open == 0 && !is_part) return at;
      if (had_pair && (IsLineEnd(c) || c == ';' || c == '{' || c == '}')) return std::nullopt;
      if (c == '(') ++open;
      if (c == ')' && open > 0) --open;
      had_pair = had_pair || c == ')';
    }
    return std::nullopt;
  }

  // The first bracket that no path goes on behind.
  std::optional<std::size_t> EndBeforeOthers(std::size_t end) const {
    for (std::size_t at = css_.find(')', at_); at < end; at = css_.find(')', at + 1)) {
      const std::string_view next = css_.substr(at + 1, 1);
      if (next.empty() || (!IsOfCssName(next[0]) && next[0] != '/' && next[0] != '.' && next[0] != ')')) return at;
    }
    return std::nullopt;
  }

  // "C:\O'Hara\x": the mark before the closing bracket. False where there is none.
  bool SkipPathTo(Quote quote) {
    const std::size_t end = std::min(at_ + kLongestWindowsPath, css_.size());
    for (std::size_t at = at_; at < end && !IsLineEnd(css_[at]); ++at) {
      const Quote found = ReadQuote(css_.substr(at), place_);
      if (found.mark != quote.mark) continue;
      std::size_t behind = at + found.length;
      while (behind < css_.size() && IsSpace(css_[behind])) ++behind;
      if (behind == css_.size() || css_[behind] != ')') continue;
      at_ = at;
      return true;
    }
    return false;
  }

  void SkipTo(Quote quote) {
    while (at_ < css_.size() && !IsLineEnd(css_[at_]) && ReadQuote(css_.substr(at_), place_).mark != quote.mark) {
      SkipCharacter();
    }
  }

  void SkipCharacter() {
    const bool escape = css_[at_] == '\\';
    ++at_;
    if (escape && at_ < css_.size()) at_ += std::max<std::size_t>(1, ReadQuote(css_.substr(at_), place_).length);
    if (escape) escape_end_ = at_;
  }

  std::string_view css_;
  CssPlace place_;
  std::size_t at_ = 0;
  std::size_t escape_end_ = 0;  // of the last one; a blank in it is part of an address
  Found found_;
};

// Takes the escape at the start, behind its backslash, off the text.
void AppendEscape(std::string& out, std::string_view& rest) {
  std::size_t digits = 0;
  while (digits < std::min(rest.size(), kMostEscapeDigits) && IsHexDigit(rest[digits])) ++digits;
  if (digits == 0) {
    if (!rest.empty() && !IsLineEnd(rest.front())) out += rest.front();
    rest.remove_prefix(rest.starts_with("\r\n") ? 2 : std::min<std::size_t>(1, rest.size()));
    return;
  }
  std::uint32_t code = 0;
  std::from_chars(rest.data(), rest.data() + digits, code, 16);
  const bool valid = code != 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  platform::AppendUtf8(out, valid ? code : 0xFFFD);
  rest.remove_prefix(digits);
  if (rest.starts_with("\r\n")) rest.remove_prefix(1);
  if (!rest.empty() && IsSpace(rest.front())) rest.remove_prefix(1);
}

}  // namespace

std::vector<CssRange> FindCssAddresses(std::string_view css, CssPlace place) {
  return CssReader(css, place).Run().addresses;
}

std::vector<CssRange> FindCssImports(std::string_view css, CssPlace place) {
  return CssReader(css, place).Run().imports;
}

std::string DecodeCssAddress(std::string_view written, CssPlace place) {
  const std::string text = Written(written, place);
  return IsPathOfWindows(text) ? text : UnescapedCss(text);
}

std::string UnescapedCss(std::string_view text) {
  std::string out;
  for (std::string_view rest = text;;) {
    const std::size_t plain = rest.find('\\');
    out += rest.substr(0, plain);
    if (plain == std::string_view::npos) return out;
    rest.remove_prefix(plain + 1);
    AppendEscape(out, rest);
  }
}

}  // namespace quillcast::html
