// Cuts HTML into tags, text and comments as browsers do (the WHATWG tokenization states that matter for mail), without
// building a tree and without changing a byte: tokens are offsets into the source. Linear in time on any input.
//
// Not followed: "<!--" inside scripts does not hide "</script>"; CDATA sections are comments everywhere.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::html {

enum class HtmlTokenKind {
  kText,      // character references not yet decoded
  kRawText,   // the content of script, style and the like, which has no character references
  kStartTag,  // <a href=x>
  kEndTag,    // </a>
  kComment,   // comments, CDATA, processing instructions, and a tag that the source ends in
  kDoctype,
};

// Offsets of the name and of the value without its quotes. Both value offsets are equal when there is none.
struct HtmlAttribute {
  std::size_t name_begin = 0;
  std::size_t name_end = 0;
  std::size_t value_begin = 0;
  std::size_t value_end = 0;
};

// Offsets into the source, `end` behind the last byte.
struct HtmlToken {
  HtmlTokenKind kind = HtmlTokenKind::kText;
  std::size_t begin = 0;
  std::size_t end = 0;
  std::string name;                       // of a tag, in lower case
  std::vector<HtmlAttribute> attributes;  // of a start tag, at most kMostAttributes; the first of a name counts
};

// One pass, without a way back.
class HtmlTokenizer {
 public:
  // What stands after so many attributes of one tag is passed over; memory stays small on hostile input.
  static constexpr std::size_t kMostAttributes = 1000;

  // The source must outlive the tokenizer.
  explicit HtmlTokenizer(std::string_view html) : html_(html) {}

  // The next token, false at the end. Tokens follow each other without gaps. Pass the same token again to save
  // allocations.
  bool Next(HtmlToken& token);

  // A view of the HTML: the token with its markup, a value without its quotes. References are not decoded.
  std::string_view Source(const HtmlToken& token) const { return html_.substr(token.begin, token.end - token.begin); }
  std::string_view RawValue(const HtmlAttribute& attribute) const;
  std::string_view RawName(const HtmlAttribute& attribute) const;
  // The first attribute of that name (lower case), null when there is none.
  const HtmlAttribute* Find(const HtmlToken& token, std::string_view name) const;
  // Its value with character references decoded, empty when there is none.
  std::string Value(const HtmlToken& token, std::string_view name) const;

 private:
  bool StartsMarkup(std::size_t at) const;
  void ReadText(HtmlToken& token);
  void ReadRawText(HtmlToken& token);
  void ReadMarkup(HtmlToken& token);
  void ReadDeclaration(HtmlToken& token);
  void ReadTag(HtmlToken& token, bool is_end);
  std::size_t ReadAttribute(std::size_t at, HtmlToken& token) const;
  std::size_t AfterNext(std::string_view terminator, std::size_t from) const;

  std::string_view html_;
  std::size_t at_ = 0;
  std::string raw_text_element_;  // its content comes next
};

// What looks at a page's tags and styles, in their order. Those within conditional comments ("<!--[if mso]>...") count
// too, since some programs show them; such comments do not nest.
class HtmlVisitor {
 public:
  virtual ~HtmlVisitor() = default;
  // Also of elements that are not displayed. Both arguments hold for the call alone.
  virtual void StartTag(const HtmlTokenizer& tokenizer, const HtmlToken& token) = 0;
  // The content of a style element, a part of the page.
  virtual void StyleSheet(std::string_view css) = 0;
};
void VisitTagsAndStyles(std::string_view html, HtmlVisitor& visitor);

// Whether the content of an element, by its name in lower case, is text up to its end tag.
bool HasRawText(std::string_view name);

// What stands in a conditional comment: "<!--[if mso]>...<![endif]-->". Empty for other comments.
std::string_view ConditionalContent(std::string_view comment);

// Replaces "&amp;", "&#8364;", "&#x20AC;" and the usual names by their characters in UTF-8. In an attribute, a name
// without its semicolon before "=", a letter or a digit stays as it is, because it is part of an address.
std::string DecodeCharacterReferences(std::string_view text, bool in_attribute = false);

}  // namespace quillcast::html
