#include "document/page_walk.h"

#include <unicode/uchar.h>

#include <algorithm>

#include "document/single_blanks.h"
#include "document/way_out.h"
#include "html/html_elements.h"
#include "html/html_link.h"
#include "html/html_tokenizer.h"
#include "html/shown_tokens.h"
#include "html/unquoted_path.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::document {
namespace {

using html::HtmlRole;
using html::HtmlToken;
using html::HtmlTokenKind;

constexpr std::int64_t kNarrow = 300;  // pixels; what is narrower is a logo or a sign

bool IsIdeograph(char32_t code) {
  return (code >= 0x3041 && code <= 0x30FA) || (code >= 0x3400 && code <= 0x9FFF) ||
         (code >= 0xF900 && code <= 0xFAFF) || (code >= 0x20000 && code <= 0x3FFFF && code != platform::kNotUtf8);
}

// General punctuation, symbols and fillers make no word of their own.
bool IsOfWord(char32_t code) {
  if (code < 0x80) return platform::AsciiIsAlnum(static_cast<char>(code));
  return code >= 0xC0 && (code < 0x2000 || code > 0x303F) && code != 0xFEFF;
}

// Counts through any number of pieces; a word may go on in the next one.
class WordCounter {
 public:
  void Add(std::string_view text) {
    while (!text.empty()) {
      const auto [code, length] = platform::DecodeUtf8(text);
      text.remove_prefix(length);
      const bool single = IsIdeograph(code);
      const bool blank = code == ' ' || code == '\n' || code == '\t' || code == '\r' || code == '\f' || code == 0xA0;
      if (single || (!in_word_ && IsOfWord(code))) ++words_;
      in_word_ = !single && !blank && (in_word_ || IsOfWord(code));
    }
  }
  void End() { in_word_ = false; }
  std::int64_t words() const { return words_; }

 private:
  std::int64_t words_ = 0;
  bool in_word_ = false;
};

// Quotation marks, arrows and other signs before and behind what is said belong to no word.
std::string_view WithoutSignsRound(std::string_view words) {
  std::size_t begin = words.size();
  std::size_t end = begin;
  for (std::size_t at = 0; at < words.size();) {
    const auto [code, length] = platform::DecodeUtf8(words.substr(at));
    if (u_isalnum(static_cast<UChar32>(code)) != 0) {
      begin = std::min(begin, at);
      end = at + length;
    }
    at += length;
  }
  return words.substr(begin, end - begin);
}

class Walk {
 public:
  Walk(std::string_view html, const LinkVisitor& link) : tokenizer_(html), link_(link) {}

  PageFacts Run(const platform::CancelToken& cancel) {
    HtmlToken token;
    while (cancel.Requested() == platform::Stop::kNone && shown_.Next(token)) {
      if (token.kind == HtmlTokenKind::kStartTag) Start(token);
      if (token.kind == HtmlTokenKind::kEndTag) End(token);
      if (token.kind == HtmlTokenKind::kText && !dropping_) AddText(tokenizer_.Source(token));
    }
    EndLink();
    facts_.words = words_.words();
    facts_.speaks_of_leaving = way_out_.Found() || addresses_.Found() || links_.Found();
    return std::move(facts_);
  }

 private:
  void Start(const HtmlToken& token) {
    const HtmlRole role = html::RoleOf(token.name);
    dropping_ = role == HtmlRole::kDropped;
    if (dropping_) return;
    if (html::IsBlock(role)) EndBlock();
    if (role == HtmlRole::kBreak) words_.End(), way_out_.Add(" ");
    if (role == HtmlRole::kLink || role == HtmlRole::kArea) BeginLink(token);
    if (role == HtmlRole::kArea) AddToLink(tokenizer_.Value(token, "alt")), EndLink();
    if (role == HtmlRole::kPicture) AddPicture(token);
  }

  void End(const HtmlToken& token) {
    dropping_ = false;
    const HtmlRole role = html::RoleOf(token.name);
    if (html::IsBlock(role)) EndBlock();
    if (role == HtmlRole::kLink) EndLink();
  }

  void EndBlock() {
    words_.End();
    way_out_.Part();
  }

  void AddText(std::string_view source) {
    std::string decoded;
    if (source.find('&') != std::string_view::npos) source = decoded = html::DecodeCharacterReferences(source);
    words_.Add(source);
    AddToLink(source);
    way_out_.Add(source);
  }

  void BeginLink(const HtmlToken& token) {
    EndLink();
    const html::HtmlAttribute* const href = tokenizer_.Find(token, "href");
    if (href == nullptr) return;  // the name of a place
    in_link_ = true;
    target_ = html::DecodeCharacterReferences(html::WholeValue(tokenizer_, token, *href), true);
    addresses_.Add(target_);
    addresses_.Part();
    target_.resize(std::min(target_.size(), kLongestLink));
  }

  void AddToLink(std::string_view text) {
    if (in_link_) text_ += text.substr(0, kLongestLink - std::min(kLongestLink, text_.size()));
  }

  void EndLink() {
    if (!in_link_) return;
    in_link_ = false;
    const std::string words = WithSingleBlanks(text_);
    link_(target_, words);
    links_.Part();
    links_.Add(WithoutSignsRound(words));
    links_.Part();
    text_.clear();
  }

  void AddPicture(const HtmlToken& token) {
    const auto width = platform::ParseWholeNumber(tokenizer_.Value(token, "width"));
    const auto height = platform::ParseWholeNumber(tokenizer_.Value(token, "height"));
    if ((width && *width <= 1) || (height && *height <= 1)) return;  // it only counts who reads the letter
    words_.End();
    ++facts_.pictures;
    if (!width || *width >= kNarrow) ++facts_.large_pictures;
    if (tokenizer_.Find(token, "alt") == nullptr && ++facts_.without_text == 1) {
      facts_.first_without_text = tokenizer_.Value(token, "src");
    }
    const std::string alt = html::ReadableDescription(tokenizer_.Value(token, "alt"));
    facts_.has_described_picture |= !platform::Trim(alt).empty();
    AddToLink(alt);
    way_out_.Add(' ' + alt + ' ');
  }

  html::HtmlTokenizer tokenizer_;
  html::ShownTokens shown_{tokenizer_};
  const LinkVisitor& link_;
  WordCounter words_;
  WayOutSearch way_out_;    // in what is read
  WayOutSearch addresses_;  // in where links lead
  WayOutSearch links_;      // in the whole words of each, where one word may be enough
  PageFacts facts_;
  std::string target_;
  std::string text_;
  bool in_link_ = false;
  bool dropping_ = false;
};

}  // namespace

PageFacts WalkPage(std::string_view html, const LinkVisitor& link, const platform::CancelToken& cancel) {
  return Walk(html, link).Run(cancel);
}

}  // namespace quillcast::document
