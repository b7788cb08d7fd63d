#include "recipients/import/xml_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

#include "platform/text.h"
#include "platform/utf8.h"
#include "recipients/import/reading_given_up.h"

namespace quillcast::recipients {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool EndsName(char c) { return IsBlank(c) || c == '/' || c == '>' || c == '='; }

constexpr const char* kTooManyAttributes = "an element has attributes without end";
constexpr std::size_t kLongestReference = 16;
constexpr std::size_t kLongestPiece = std::size_t{64} * 1024;  // of a text, so that no copy of a large one is made

// Names and blanks are a few characters long: a loop is through before a search of the library has begun.
template <typename Ends>
std::size_t LengthUntil(std::string_view text, Ends ends) {
  std::size_t length = 0;
  while (length < text.size() && !ends(text[length])) ++length;
  return length;
}

std::string_view WithoutPrefix(std::string_view name) {
  const auto prefix = LengthUntil(name, [](char c) { return c == ':'; });
  return prefix == name.size() ? name : name.substr(prefix + 1);
}

// "&#38;" or "&#x26;" without its first two characters and its last; false where it is none.
bool AppendByNumber(std::string_view digits, std::string& out) {
  const bool is_hex = digits.starts_with('x');
  if (is_hex) digits.remove_prefix(1);
  std::uint32_t code = 0;
  const char* end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, code, is_hex ? 16 : 10);
  if (digits.empty() || read.ec != std::errc() || read.ptr != end) return false;
  if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return false;
  platform::AppendUtf8(out, code);
  return true;
}

// A reference without its "&" and ";". Entities of the document's own are not looked up: none of these formats has any.
bool AppendReference(std::string_view name, std::string& out) {
  constexpr std::array<std::pair<std::string_view, char>, 5> kNamed = {
      {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
  if (name.starts_with('#')) return AppendByNumber(name.substr(1), out);
  for (const auto& [known, character] : kNamed) {
    if (known != name) continue;
    out += character;
    return true;
  }
  return false;
}

bool HasReferences(std::string_view text) { return text.find('&') != std::string_view::npos; }

void Decode(std::string_view text, std::string& scratch) {
  scratch.clear();
  while (!text.empty()) {
    const auto reference = std::min(text.find('&'), text.size());
    scratch += text.substr(0, reference);
    text.remove_prefix(reference);
    if (text.empty()) break;
    const auto end = text.substr(0, kLongestReference).find(';');
    const bool is_one = end != std::string_view::npos && AppendReference(text.substr(1, end - 1), scratch);
    if (!is_one) scratch += '&';
    text.remove_prefix(is_one ? end + 1 : 1);
  }
}

// `scratch` holds the text where it is not as it stands.
std::string_view Decoded(std::string_view text, std::string& scratch) {
  if (!HasReferences(text)) return text;
  Decode(text, scratch);
  return scratch;
}

class Scanner {
 public:
  Scanner(std::string_view xml, XmlListener& listener, const platform::CancelToken* cancel)
      : rest_(xml), listener_(listener), cancel_(cancel) {}

  std::string Run() {
    while (failed_.empty() && !rest_.empty() && !listener_.HasEnough() && !IsGivenUp(cancel_)) {
      if (rest_.front() != '<') {
        TakeText();
      } else if (rest_.starts_with("</")) {
        TakeEnd();
      } else if (rest_.starts_with("<!--")) {
        TakeThrough("-->");
      } else if (rest_.starts_with("<![CDATA[")) {
        TakeLiteral();
      } else if (rest_.starts_with("<?")) {
        TakeThrough("?>");
      } else if (rest_.starts_with("<!")) {
        TakeThrough(">");
      } else {
        TakeBegin();
      }
    }
    if (failed_.empty() && rest_.empty() && (depth_ > 0 || !has_elements_)) Fail();
    return failed_;
  }

 private:
  void Fail() { failed_ = has_elements_ ? "it ends within an element" : "it is no XML"; }

  void TakeText() {
    std::string_view piece = rest_.substr(0, kLongestPiece);
    piece = piece.substr(0, piece.find('<'));
    if (piece.size() == kLongestPiece && piece.size() < rest_.size()) {
      const auto reference = piece.substr(piece.size() - kLongestReference).rfind('&');
      if (reference != std::string_view::npos)
        piece.remove_suffix(kLongestReference - reference);  // whole, in the next
    }
    if (depth_ > 0) listener_.Text(Decoded(piece, scratch_));
    rest_.remove_prefix(piece.size());
  }
  // Gives what stands before `end`; fails where that does not come.
  std::string_view TakeThrough(std::string_view end) { return TakeTo(rest_.find(end), end.size()); }
  std::string_view TakeThroughOne(char end) { return TakeTo(rest_.find(end), 1); }
  std::string_view TakeTo(std::size_t at, std::size_t end_size) {
    if (at == std::string_view::npos) {
      Fail();
      return {};
    }
    const std::string_view taken = rest_.substr(0, at);
    rest_.remove_prefix(at + end_size);
    return taken;
  }
  void TakeLiteral() {
    rest_.remove_prefix(std::string_view("<![CDATA[").size());
    const std::string_view text = TakeThrough("]]>");
    if (failed_.empty() && depth_ > 0) listener_.Text(text);
  }
  void TakeEnd() {
    const std::string_view tag = TakeThroughOne('>');
    if (failed_.empty() && depth_ == 0) Fail();
    if (!failed_.empty()) return;
    --depth_;
    listener_.End(WithoutPrefix(platform::Trim(tag.substr(2))));
  }
  void TakeBegin() {
    rest_.remove_prefix(1);
    const auto length = LengthUntil(rest_, EndsName);
    if (length == 0 || length == rest_.size()) return Fail();
    const std::string_view name = WithoutPrefix(rest_.substr(0, length));
    rest_.remove_prefix(length);
    attributes_.Clear();
    while (TakeAttribute()) {
    }
    if (!failed_.empty()) return;
    const bool is_closed = rest_.starts_with("/>");
    rest_.remove_prefix(is_closed ? 2 : 1);
    has_elements_ = true;
    listener_.Begin(name, attributes_);
    if (is_closed) {
      listener_.End(name);
    } else {
      ++depth_;
    }
  }
  // False at the end of the tag.
  bool TakeAttribute() {
    rest_.remove_prefix(LengthUntil(rest_, [](char c) { return !IsBlank(c); }));
    if (rest_.starts_with('>') || rest_.starts_with("/>")) return false;
    const auto equals = LengthUntil(rest_, EndsName);
    const auto open = equals + LengthUntil(rest_.substr(equals), [](char c) { return c != '=' && !IsBlank(c); });
    if (equals == 0 || open == rest_.size() || (rest_[open] != '"' && rest_[open] != '\'')) {
      Fail();
      return false;
    }
    const std::string_view name = WithoutPrefix(rest_.substr(0, equals));
    const char quote = rest_[open];
    rest_.remove_prefix(open + 1);
    const std::string_view value = TakeThroughOne(quote);
    if (failed_.empty() && !attributes_.Add(name, value)) failed_ = kTooManyAttributes;
    return failed_.empty();
  }

  std::string_view rest_;
  XmlListener& listener_;
  const platform::CancelToken* cancel_;
  XmlAttributes attributes_;
  std::string scratch_;
  std::size_t depth_ = 0;
  bool has_elements_ = false;
  std::string failed_;
};

}  // namespace

bool XmlAttributes::Add(std::string_view name, std::string_view raw) {
  bytes_ += name.size() + raw.size();
  if (attributes_.size() == kMost || bytes_ > kMostBytes) return false;
  const std::size_t begin = decoded_.size();
  const bool has_references = HasReferences(raw);
  if (has_references) {
    Decode(raw, scratch_);
    decoded_ += scratch_;
  }
  attributes_.push_back({name, raw, has_references, begin, decoded_.size() - begin});
  return true;
}

void XmlAttributes::Clear() {
  attributes_.clear();
  decoded_.clear();
  bytes_ = 0;
}

std::string_view XmlAttributes::Value(std::string_view name) const {
  for (const Attribute& attribute : attributes_) {
    if (attribute.name != name) continue;
    if (!attribute.has_references) return attribute.raw;
    return std::string_view(decoded_).substr(attribute.decoded_at, attribute.decoded_size);
  }
  return {};
}

std::uint32_t XmlAttributes::Number(std::string_view name) const {
  const std::string_view value = Value(name);
  std::uint32_t number = 0;
  const auto end = std::from_chars(value.data(), value.data() + value.size(), number);
  return end.ec == std::errc() ? number : 0;
}

std::string ReadXml(std::string_view xml, XmlListener& listener, const platform::CancelToken* cancel) {
  return Scanner(xml, listener, cancel).Run();
}

}  // namespace quillcast::recipients
