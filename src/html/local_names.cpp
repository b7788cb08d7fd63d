#include "html/local_names.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "html/html_css.h"
#include "html/html_tokenizer.h"
#include "html/local_name.h"
#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::string_view kEmptyComment = "<!---->";  // nothing beside it grows together
constexpr std::string_view kOfficeElement = "xml";

std::string WithoutNames(std::string_view html, bool is_in_comment);

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

// What an attribute is for. All that is no row may hold anything.
struct AttributeRow {
  std::string_view attribute;
  bool (*names_file)(std::string_view);
};
constexpr auto kAttributes = std::to_array<AttributeRow>({
    {"action", AddressNamesLocalFile},   {"background", AddressNamesLocalFile}, {"cite", AddressNamesLocalFile},
    {"codebase", AddressNamesLocalFile}, {"data", AddressNamesLocalFile},       {"formaction", AddressNamesLocalFile},
    {"href", AddressNamesLocalFile},     {"longdesc", AddressNamesLocalFile},   {"poster", AddressNamesLocalFile},
    {"src", AddressNamesLocalFile},      {"xlink:href", AddressNamesLocalFile}, {"imagesrcset", AddressesNameLocalFile},
    {"ping", AddressesNameLocalFile},    {"srcset", AddressesNameLocalFile},    {"abbr", WordsNameLocalFile},
    {"alt", WordsNameLocalFile},         {"class", WordsNameLocalFile},  // names like "file:mr-4"
    {"label", WordsNameLocalFile},       {"placeholder", WordsNameLocalFile},   {"summary", WordsNameLocalFile},
    {"title", WordsNameLocalFile},
});

// Which <meta> people read the content of, where a search or a preview shows it: "description", "og:title".
bool IsRead(std::string_view meta) {
  constexpr auto kRead = std::to_array<std::string_view>({"abstract", "description", "keywords", "subject", "title"});
  const std::string name = platform::AsciiLower(platform::Trim(meta.substr(meta.rfind(':') + 1)));
  return std::find(kRead.begin(), kRead.end(), name) != kRead.end();
}

class PageCleaner {
 public:
  PageCleaner(std::string_view html, bool is_in_comment) : html_(html), is_in_comment_(is_in_comment), tokens_(html) {}

  std::string Run() {
    HtmlToken token;
    while (tokens_.Next(token)) {
      out_ += Clean(token);
      element_ = token.kind == HtmlTokenKind::kStartTag ? token.name : std::string();
      if (token.name == kOfficeElement) is_in_office_ = token.kind == HtmlTokenKind::kStartTag;
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
        return std::string(is_in_comment_ && TextNames(source) ? " " : source);
      case HtmlTokenKind::kRawText:
        break;
    }
    if (element_ == "style") return CleanSheet(source);
    const bool is_read = element_ == "xmp" || element_ == "plaintext";
    return std::string(!is_read && NamesLocalFile(source) ? " " : source);
  }

  // What an office program keeps of its own there is nothing that people read.
  bool TextNames(std::string_view text) const {
    return is_in_office_ ? NamesLocalFile(text) : WordsNameLocalFile(text);
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
      clean += CleanValue(token, attribute);
      at = attribute.value_end;
    }
    const std::string_view end = html_.substr(at, token.end - at);
    clean += end;
    beside += end;
    return NamesLocalFile(beside) ? NameAlone(token) : clean;
  }

  // Whether the value of an attribute names one, by what it is for.
  bool NamesIn(const HtmlToken& token, const std::string& name, std::string_view value) const {
    const bool is_read = name.starts_with("aria-") ||
                         (name == "content" && token.name == "meta" &&
                          (IsRead(tokens_.Value(token, "name")) || IsRead(tokens_.Value(token, "property"))));
    if (is_read) return WordsNameLocalFile(value);
    const auto* const row = std::find_if(kAttributes.begin(), kAttributes.end(),
                                         [&](const AttributeRow& one) { return one.attribute == name; });
    return row == kAttributes.end() ? NamesLocalFile(value) : row->names_file(value);
  }

  std::string CleanValue(const HtmlToken& token, const HtmlAttribute& attribute) const {
    const std::string_view written = tokens_.RawValue(attribute);
    const std::string name = platform::AsciiLower(tokens_.RawName(attribute));
    const std::string value = DecodeCharacterReferences(written, true);
    if (!NamesIn(token, name, value)) return std::string(written);
    const std::string clean = name == "style" ? EscapedForHtml(CleanSheet(value), "&<>\"'") : std::string();
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
  bool is_in_office_ = false;
  std::string out_;
};

std::string WithoutNames(std::string_view html, bool is_in_comment) { return PageCleaner(html, is_in_comment).Run(); }

}  // namespace

std::string WithoutLocalNames(std::string_view html) { return WithoutNames(html, false); }

}  // namespace quillcast::html
