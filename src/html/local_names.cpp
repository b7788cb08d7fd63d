#include "html/local_names.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "html/html_css.h"
#include "html/html_tokenizer.h"
#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::string_view kEmptyComment = "<!---->";  // nothing beside it grows together

std::string WithoutNames(std::string_view html, bool is_in_comment);

bool IsSlash(char c) { return c == '/' || c == '\\'; }
bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }
bool IsHexDigit(char c) { return platform::AsciiIsAlnum(c) && platform::AsciiLower(c) <= 'f'; }
bool IsOfScheme(char c) { return platform::AsciiIsAlnum(c) || c == '+' || c == '-' || c == '.' || c == '_'; }

bool IsOfAddress(char c) { return IsOfScheme(c) || c == ':' || c == '/'; }

char At(std::string_view text, std::size_t at) { return at < text.size() ? text[at] : '\0'; }

bool IsOfTheNet(std::string_view text) {
  constexpr auto kNet = std::to_array<std::string_view>({"http:", "https:", "//", "mailto:"});
  return std::any_of(kNet.begin(), kNet.end(), [&](auto start) { return platform::Trim(text).starts_with(start); });
}

// "file:" and what belongs to it. Both texts here are in lower case.
bool NamesByScheme(std::string_view text) {
  constexpr std::string_view kScheme = "file:";
  const bool is_of_the_net = IsOfTheNet(text);
  const std::string_view whole = platform::Trim(text);
  if (whole.starts_with(kScheme) && whole.size() > kScheme.size() && whole.find(' ') == std::string_view::npos) {
    return true;
  }
  for (std::size_t at = text.find(kScheme); at != std::string_view::npos; at = text.find(kScheme, at)) {
    const bool is_end = at > 0 && IsOfScheme(text[at - 1]);  // of another scheme
    at += kScheme.size();
    if (is_end) continue;
    if (IsSlash(At(text, at)) || (platform::AsciiIsAlnum(At(text, at)) && At(text, at + 1) == '|')) return true;
    if (is_of_the_net) continue;
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
  std::size_t at = colon + 2;
  while (text[colon + 1] == '\\' && At(text, at) == '\\') ++at;  // as scripts write it
  return platform::AsciiIsAlnum(At(text, at)) || static_cast<unsigned char>(At(text, at)) >= 0x80;
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

// A sheet, or the content of a style attribute, decoded.
class SheetCleaner {
 public:
  explicit SheetCleaner(std::string_view css) : css_(css) {}

  std::string Run() {
    while (at_ < css_.size()) {
      const char c = css_[at_];
      if (css_.substr(at_).starts_with("/*")) {
        Keep(2);
        Take(std::min(css_.find("*/", at_), css_.size()));
        Keep(2);
      } else if (c == '"' || c == '\'') {
        Keep(1);
        Take(EndOfString(c));
        Keep(1);
      } else if (IsSeparator(c)) {
        Keep(1);
      } else {
        Take(EndOfRun());
      }
    }
    return NamesLocalFile(out_) ? std::string() : std::move(out_);
  }

 private:
  static bool IsSeparator(char c) { return c == ';' || c == '{' || c == '}'; }

  std::size_t EndOfString(char quote) const {
    std::size_t end = at_;
    while (end < css_.size() && css_[end] != quote && css_[end] != '\n') end += css_[end] == '\\' ? 2 : 1;
    return std::min(end, css_.size());
  }

  std::size_t EndOfRun() const {
    std::size_t end = at_ + 1;
    while (end < css_.size() && !IsSeparator(css_[end]) && css_[end] != '"' && css_[end] != '\'' &&
           !css_.substr(end).starts_with("/*")) {
      ++end;
    }
    return end;
  }

  void Keep(std::size_t count) {
    out_ += css_.substr(at_, count);
    at_ = std::min(at_ + count, css_.size());
  }

  void Take(std::size_t end) {
    const std::string_view piece = css_.substr(at_, end - at_);
    if (!NamesLocalFile(piece)) out_ += piece;
    at_ = end;
  }

  std::string_view css_;
  std::size_t at_ = 0;
  std::string out_;
};

std::string CleanSheet(std::string_view css) {
  return NamesLocalFile(css) ? SheetCleaner(css).Run() : std::string(css);
}

class PageCleaner {
 public:
  PageCleaner(std::string_view html, bool is_in_comment) : html_(html), is_in_comment_(is_in_comment), tokens_(html) {}

  std::string Run() {
    HtmlToken token;
    while (tokens_.Next(token)) {
      out_ += Clean(token);
      element_ = token.kind == HtmlTokenKind::kStartTag ? token.name : std::string();
    }
    return std::move(out_);
  }

 private:
  std::string Clean(const HtmlToken& token) const {
    const std::string_view source = tokens_.Source(token);
    switch (token.kind) {
      case HtmlTokenKind::kStartTag:
      case HtmlTokenKind::kEndTag:
        return CleanTag(token);
      case HtmlTokenKind::kComment:
        return CleanComment(source);
      case HtmlTokenKind::kDoctype:
        return NamesLocalFile(source) ? "<!DOCTYPE html>" : std::string(source);
      case HtmlTokenKind::kText:
        return std::string(is_in_comment_ && NamesLocalFile(source) ? " " : source);
      case HtmlTokenKind::kRawText:
        break;
    }
    if (element_ == "style") return CleanSheet(source);
    const bool is_read = element_ == "xmp" || element_ == "plaintext";
    return std::string(!is_read && NamesLocalFile(source) ? " " : source);
  }

  std::string CleanComment(std::string_view source) const {
    const std::string_view nothing = is_in_comment_ ? " " : kEmptyComment;
    const std::string_view content = is_in_comment_ ? std::string_view() : ConditionalContent(source);
    if (content.empty()) return std::string(NamesLocalFile(source) ? nothing : source);
    const auto begin = static_cast<std::size_t>(content.data() - source.data());
    const std::string_view before = source.substr(0, begin);
    const std::string_view behind = source.substr(begin + content.size());
    if (NamesLocalFile(before) || NamesLocalFile(behind)) return std::string(nothing);
    return std::string(before) + WithoutNames(content, true) + std::string(behind);
  }

  std::string CleanTag(const HtmlToken& token) const {
    std::string clean;
    std::string beside;  // the tag without its values
    std::size_t at = token.begin;
    for (const HtmlAttribute& attribute : token.attributes) {
      const std::string_view before = html_.substr(at, attribute.value_begin - at);
      clean += before;
      beside += before;
      clean += CleanValue(attribute);
      at = attribute.value_end;
    }
    const std::string_view end = html_.substr(at, token.end - at);
    clean += end;
    beside += end;
    return NamesLocalFile(beside) ? NameAlone(token) : clean;
  }

  std::string CleanValue(const HtmlAttribute& attribute) const {
    const std::string_view written = tokens_.RawValue(attribute);
    const std::string value = DecodeCharacterReferences(written, true);
    if (!NamesLocalFile(value)) return std::string(written);
    const bool is_style = platform::EqualsIgnoringAsciiCase(tokens_.RawName(attribute), "style");
    const std::string clean = is_style ? EscapedForHtml(CleanSheet(value), "&<>\"'") : std::string();
    const char before = html_[attribute.value_begin - 1];
    return before == '"' || before == '\'' ? clean : '"' + clean + '"';
  }

  std::string NameAlone(const HtmlToken& token) const {
    const std::string_view source = tokens_.Source(token);
    const std::size_t begin = token.kind == HtmlTokenKind::kEndTag ? 2 : 1;
    const std::string name(source.substr(0, begin + token.name.size()));
    if (NamesLocalFile(name)) return std::string(is_in_comment_ ? " " : kEmptyComment);
    return name + '>';
  }

  std::string_view html_;
  bool is_in_comment_;
  HtmlTokenizer tokens_;
  std::string element_;  // whose content comes next
  std::string out_;
};

std::string WithoutNames(std::string_view html, bool is_in_comment) { return PageCleaner(html, is_in_comment).Run(); }

}  // namespace

bool NamesLocalFile(std::string_view text) {
  constexpr int kRounds = 2;  // a page within an attribute has two
  if (NamesAsWritten(text)) return true;
  std::string read(text);
  for (int round = 0; round < kRounds; ++round) {
    for (const auto& decode : {WithoutReferences, BytesDecoded, Unescaped}) {
      if (read.find_first_of("&%\\") == std::string::npos) return false;
      std::string decoded = decode(read);
      if (decoded == read) continue;
      if (NamesAsWritten(decoded)) return true;
      read = std::move(decoded);
    }
  }
  return false;
}

std::string WithoutLocalNames(std::string_view html) { return WithoutNames(html, false); }

}  // namespace quillcast::html
