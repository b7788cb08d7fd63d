#include "html/local_names.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "html/characters.h"
#include "html/html_css.h"
#include "html/html_tokenizer.h"
#include "html/local_name.h"
#include "html/local_pictures_address.h"
#include "html/office_fields.h"
#include "html/safe_page.h"
#include "html/unquoted_path.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::string_view kEmptyComment = "<!---->";  // nothing beside it grows together
constexpr std::string_view kOfficeElement = "xml";
constexpr std::string_view kOfficeParagraph = "o:p";

// Where a part of a page stands.
enum class Within : std::uint8_t {
  kPage,
  kCondition,  // a conditional comment: some readers show it
  kFields,     // one that no reader shows: what an office program computes its text from
};

std::string WithoutNames(std::string_view html, Folders known, Within within);

constexpr std::string_view kEndsUrl = " \t\r\n\f\"'()";

// A sheet, or the content of a style attribute, decoded.
class SheetCleaner {
 public:
  SheetCleaner(std::string_view css, Folders known) : css_(css), known_(known) {}

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
      } else if (BeginsUrl(at_)) {
        TakeUrl();
      } else if (IsSeparator(c)) {
        Keep(1);
      } else {
        Take(EndOfRun());
      }
    }
    return NamesLocalFile(beside_, known_) ? std::string() : std::move(out_);
  }

 private:
  bool BeginsUrl(std::size_t at) const { return platform::StartsWithIgnoringAsciiCase(css_.substr(at), kUrl); }

  // What stands in its brackets is one address; one that browsers do not read as such is as anything else.
  void TakeUrl() {
    Keep(kUrl.size());
    Keep(std::min(css_.find_first_not_of(kSpaces, at_), css_.size()) - at_);
    if (at_ == css_.size()) return;
    const char quote = css_[at_] == '"' || css_[at_] == '\'' ? css_[at_] : '\0';
    if (quote != '\0') Keep(1);
    const std::size_t end =
        quote == '\0' ? std::min(css_.find_first_of(kEndsUrl, at_), css_.size()) : EndOfString(quote);
    const std::size_t behind = std::min(css_.find_first_not_of(kSpaces, end + (quote == '\0' ? 0 : 1)), css_.size());
    if (behind == css_.size() || css_[behind] != ')') {
      if (quote != '\0') Take(end);
    } else if (AddressNamesLocalFile(css_.substr(at_, end - at_))) {
      at_ = end;
    } else {
      out_ += css_.substr(at_, end - at_);
      at_ = end;
    }
    if (quote != '\0') Keep(1);
  }

  static bool IsSeparator(char c) { return c == ';' || c == '{' || c == '}'; }

  std::size_t EndOfString(char quote) const {
    std::size_t end = at_;
    while (end < css_.size() && css_[end] != quote && css_[end] != '\n') end += css_[end] == '\\' ? 2 : 1;
    return std::min(end, css_.size());
  }

  std::size_t EndOfRun() const {
    std::size_t end = at_ + 1;
    while (end < css_.size() && !IsSeparator(css_[end]) && css_[end] != '"' && css_[end] != '\'' &&
           !css_.substr(end).starts_with("/*") && !BeginsUrl(end)) {
      ++end;
    }
    return end;
  }

  void Keep(std::size_t count) {
    out_ += css_.substr(at_, count);
    beside_ += css_.substr(at_, count);
    at_ = std::min(at_ + count, css_.size());
  }

  void Take(std::size_t end) {
    if (NamesLocalFile(css_.substr(at_, end - at_), known_)) {
      at_ = end;
    } else {
      Keep(end - at_);
    }
  }

  std::string_view css_;
  Folders known_;
  std::size_t at_ = 0;
  std::string out_;
  std::string beside_;  // without its addresses
};

std::string CleanSheet(std::string_view css, Folders known) {
  return NamesLocalFile(css, known) ? SheetCleaner(css, known).Run() : std::string(css);
}

// What an attribute is for. All that is no row may hold anything.
struct AttributeRow {
  std::string_view attribute;
  bool (*names_file)(std::string_view);
};
constexpr auto kNamingAttributes = std::to_array<AttributeRow>({
    {"action", AddressNamesLocalFile},   {"background", AddressNamesLocalFile}, {"cite", AddressNamesLocalFile},
    {"codebase", AddressNamesLocalFile}, {"data", AddressNamesLocalFile},       {"formaction", AddressNamesLocalFile},
    {"href", AddressNamesLocalFile},     {"longdesc", AddressNamesLocalFile},   {"poster", AddressNamesLocalFile},
    {"src", AddressNamesLocalFile},      {"xlink:href", AddressNamesLocalFile}, {"imagesrcset", AddressesNameLocalFile},
    {"ping", AddressesNameLocalFile},    {"srcset", AddressesNameLocalFile},    {"abbr", WordsNameLocalFile},
    {"alt", WordsNameLocalFile},         {"class", WordsNameLocalFile},  // names like "file:mr-4"
    {"label", WordsNameLocalFile},       {"placeholder", WordsNameLocalFile},   {"summary", WordsNameLocalFile},
    {"title", WordsNameLocalFile},
});

// Which <meta> people read the content of, where a search or a preview shows it: "description", "og:title",
// "twitter:image:alt".
bool IsRead(std::string_view meta) {
  constexpr auto kRead =
      std::to_array<std::string_view>({"abstract", "alt", "description", "keywords", "name", "subject", "title"});
  const std::string name = platform::AsciiLower(platform::Trim(meta.substr(meta.rfind(':') + 1)));
  return std::find(kRead.begin(), kRead.end(), name) != kRead.end();
}

// What a person reads on a button and in a field of text is as any text of the page.
bool ShowsValue(const HtmlTokenizer& tokens, const HtmlToken& token) {
  constexpr auto kHiding = std::to_array<std::string_view>({"checkbox", "file", "hidden", "image", "radio"});
  const std::string type = platform::AsciiLower(platform::Trim(tokens.Value(token, "type")));
  return token.name == "input" && std::find(kHiding.begin(), kHiding.end(), type) == kHiding.end();
}

class PageCleaner {
 public:
  PageCleaner(std::string_view html, Folders known, Within within)
      : html_(html),
        known_(known),
        is_in_comment_(within != Within::kPage),
        is_in_fields_(within == Within::kFields),
        tokens_(html) {}

  std::string Run() {
    fields_name_file_ = is_in_fields_ && FieldsNameFile(html_, known_);
    HtmlToken token;
    while (tokens_.Next(token)) {
      out_ += Clean(token);
      const bool is_open = token.kind == HtmlTokenKind::kStartTag && !tokens_.Source(token).ends_with("/>");
      element_ = is_open ? token.name : std::string();
      if (token.name == kOfficeElement) is_in_office_ = token.kind == HtmlTokenKind::kStartTag;
    }
    return std::move(out_);
  }

 private:
  bool NamesFile(std::string_view text) const { return NamesLocalFile(text, known_); }
  bool TellsFile(std::string_view note) const { return NamesFile(note) || HoldsHomeFolder(note); }

  std::string Clean(const HtmlToken& token) const {
    const std::string_view source = tokens_.Source(token);
    switch (token.kind) {
      case HtmlTokenKind::kStartTag:
      case HtmlTokenKind::kEndTag:
        return CleanTag(token);
      case HtmlTokenKind::kComment:
        return CleanComment(source);
      case HtmlTokenKind::kDoctype:
        return NamesFile(source) ? "<!DOCTYPE html>" : std::string(source);
      case HtmlTokenKind::kText:
        if (fields_name_file_ && source.find_first_not_of(kSpaces) != std::string_view::npos) return " ";
        return std::string(is_in_comment_ && IsOfOffice() && TellsFile(source) ? " " : source);
      case HtmlTokenKind::kRawText:
        break;
    }
    if (element_ == "style") return CleanSheet(source, known_);
    const bool is_read = element_ == "xmp" || element_ == "plaintext";
    return std::string(!is_read && NamesFile(source) ? " " : source);
  }

  // What an office program keeps of its own in a conditional comment is nothing that people read; all else there is
  // the letter, for some of its readers.
  bool IsOfOffice() const {
    const bool is_own = element_.starts_with("o:") || element_.starts_with("w:") || element_.starts_with("x:");
    return is_in_fields_ || is_in_office_ || (is_own && element_ != kOfficeParagraph);
  }

  std::string CleanComment(std::string_view source) const {
    const std::string_view nothing = is_in_comment_ ? " " : kEmptyComment;
    const std::string_view content = is_in_comment_ ? std::string_view() : ConditionalContent(source);
    if (content.empty()) return std::string(TellsFile(source) ? nothing : source);
    const auto begin = static_cast<std::size_t>(content.data() - source.data());
    const std::string_view before = source.substr(0, begin);
    const std::string_view behind = source.substr(begin + content.size());
    if (NamesFile(before) || NamesFile(behind)) return std::string(nothing);
    return std::string(before) +
           WithoutNames(content, known_, BeginsFields(before) ? Within::kFields : Within::kCondition) +
           std::string(behind);
  }

  std::string CleanTag(const HtmlToken& token) const {
    std::string clean;
    std::string beside;  // the tag without its values
    std::size_t at = token.begin;
    bool drops = false;
    // "{{ url("/home/a/b") }}" within quotation marks is a page of a server.
    const bool is_filled_in = HoldsPlaceholder(tokens_.Source(token));
    for (std::size_t i = 0; i < token.attributes.size(); ++i) {
      const HtmlAttribute& attribute = token.attributes[i];
      const bool dropped =
          std::exchange(drops, NamesFileBeside(token, i) || (!is_filled_in && NamesHomeBeside(token, i)) ||
                                   (drops && !HasValue(attribute)));
      const std::size_t end = drops ? attribute.name_begin : attribute.value_begin;
      const std::string_view before = drops && dropped ? std::string_view() : html_.substr(at, end - at);
      clean += before;
      beside += before;
      at = attribute.value_end;
      if (drops) {
        if (IsQuoted(attribute)) ++at;
        continue;
      }
      const std::string value = CleanValue(token, attribute);
      clean += value;
      if (value == tokens_.RawValue(attribute)) continue;
      if (const std::size_t last = LastOfValue(tokens_, token, i); last > i) {
        i = last;
        at = token.attributes[last].name_end;
      }
    }
    const std::string_view end = html_.substr(at, token.end - at);
    clean += end;
    beside += end;
    return NamesFile(beside) ? NameAlone(token) : clean;
  }

  static bool HasValue(const HtmlAttribute& attribute) { return attribute.value_begin > attribute.name_end; }
  bool IsQuoted(const HtmlAttribute& attribute) const {
    return HasValue(attribute) && attribute.value_end < html_.size() &&
           (html_[attribute.value_end] == '"' || html_[attribute.value_end] == '\'') &&
           html_[attribute.value_begin - 1] == html_[attribute.value_end];
  }

  // A quotation mark gone wrong leaves a path among the names, and its further words as names without a value.
  bool NamesFileBeside(const HtmlToken& token, std::size_t i) const {
    const HtmlAttribute& attribute = token.attributes[i];
    std::size_t end = attribute.name_end;
    if (!HasValue(attribute) && i + 1 < token.attributes.size()) {
      const HtmlAttribute& next = token.attributes[i + 1];
      const bool is_parted = html_[next.name_begin - 1] == '/';  // a name ends there: "C:/x" is two
      end = is_parted ? next.name_end : next.name_begin;
    }
    return NamesFile(html_.substr(attribute.name_begin, end - attribute.name_begin));
  }

  // `href="@Url.Content("~/x")"`, `href="<c:url value="/home/x"/>"`: what another program makes an address of.
  static bool IsAskedFor(std::string_view before) { return before.ends_with('(') || before.ends_with('='); }

  // The same of a path below a person's own folder, which is several names.
  bool NamesHomeBeside(const HtmlToken& token, std::size_t i) const {
    const std::size_t name = token.attributes[i].name_begin;
    const bool is_parted = html_[name - 1] == '/';
    if (is_parted && i > 0 && token.attributes[i - 1].value_end + 1 == name && !HasValue(token.attributes[i - 1])) {
      return false;  // seen with the name before
    }
    if (i > 0 && IsAskedFor(tokens_.RawValue(token.attributes[i - 1]))) return false;
    const std::size_t begin = name - (is_parted ? 1 : 0);
    return HoldsHomeFolder(html_.substr(begin, token.attributes[LastOfWord(tokens_, token, i)].name_end - begin));
  }

  // Whether the value of an attribute names one, by what it is for.
  bool NamesIn(const HtmlToken& token, const std::string& name, std::string_view value) const {
    const bool is_read = name.starts_with("aria-") ||
                         (name == "content" && token.name == "meta" &&
                          (IsRead(tokens_.Value(token, "name")) || IsRead(tokens_.Value(token, "property")) ||
                           IsRead(tokens_.Value(token, "itemprop"))));
    if (is_read) return WordsNameLocalFile(value);
    if (name == "content" && token.name == "meta" && WordsNameLocalFile(value)) return true;
    if (name == "value" && ShowsValue(tokens_, token)) return false;
    const auto* const row = std::find_if(kNamingAttributes.begin(), kNamingAttributes.end(),
                                         [&](const AttributeRow& one) { return one.attribute == name; });
    return row == kNamingAttributes.end() ? NamesFile(value) : row->names_file(value);
  }

  // As written where it names none, else what takes the place of all words that belong to it.
  std::string CleanValue(const HtmlToken& token, const HtmlAttribute& attribute) const {
    const std::string_view written = tokens_.RawValue(attribute);
    const std::string_view whole = WholeValue(tokens_, token, attribute);
    const std::string name = platform::AsciiLower(tokens_.RawName(attribute));
    const std::string value = DecodeCharacterReferences(whole, true);
    const bool is_longer = whole.size() > written.size();
    if (!NamesIn(token, name, value) &&
        !(is_longer && NamesIn(token, name, DecodeCharacterReferences(written, true)))) {
      return std::string(written);
    }
    const std::string clean = name == "style" ? EscapedForHtml(CleanSheet(value, known_), "&<>\"'") : std::string();
    const char before = html_[attribute.value_begin - 1];
    return before == '"' || before == '\'' ? clean : '"' + clean + '"';
  }

  std::string NameAlone(const HtmlToken& token) const {
    const std::string_view source = tokens_.Source(token);
    const std::size_t begin = token.kind == HtmlTokenKind::kEndTag ? 2 : 1;
    const std::string name(source.substr(0, begin + token.name.size()));
    if (NamesFile(name)) return std::string(is_in_comment_ ? " " : kEmptyComment);
    return name + '>';
  }

  std::string_view html_;
  Folders known_;
  bool is_in_comment_;
  bool is_in_fields_;
  bool fields_name_file_ = false;
  HtmlTokenizer tokens_;
  std::string element_;  // whose content comes next
  bool is_in_office_ = false;
  std::string out_;
};

std::string WithoutNames(std::string_view html, Folders known, Within within) {
  return PageCleaner(html, known, within).Run();
}

}  // namespace

std::string WithoutLocalNames(std::string_view html, Folders known) { return WithoutNames(html, known, Within::kPage); }

}  // namespace quillcast::html
