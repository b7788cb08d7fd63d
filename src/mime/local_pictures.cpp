#include "mime/local_pictures.h"

#include <algorithm>
#include <array>
#include <optional>

#include "mime/html_tokenizer.h"
#include "platform/text.h"

namespace quillcast::mime {
namespace {

using platform::StartsWithIgnoringAsciiCase;

enum class Holds { kAddress, kCandidates, kCss };

// Which attributes hold pictures; an empty element stands for every one.
struct PictureAttribute {
  std::string_view element;
  std::string_view attribute;
  Holds holds;
};
constexpr std::array kPictureAttributes = {
    PictureAttribute{"img", "src", Holds::kAddress},
    PictureAttribute{"input", "src", Holds::kAddress},
    PictureAttribute{"video", "poster", Holds::kAddress},
    PictureAttribute{"img", "srcset", Holds::kCandidates},
    PictureAttribute{"source", "srcset", Holds::kCandidates},
    PictureAttribute{"", "background", Holds::kAddress},
    PictureAttribute{"", "style", Holds::kCss},
};

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f'; }

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = platform::AsciiLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Nothing when a byte of the name would be 0, which no file has.
std::optional<std::string> PercentDecoded(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escape =
        text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0;
    out += escape ? static_cast<char>(HexValue(text[i + 1]) << 4 | HexValue(text[i + 2])) : text[i];
    if (escape) i += 2;
    if (out.back() == '\0') return std::nullopt;
  }
  return out;
}

// The length of a "scheme:" at the start, 0 when there is none. One letter is the drive of a Windows path.
std::size_t SchemeLength(std::string_view address) {
  std::size_t end = 0;
  while (end < address.size() && (platform::AsciiIsAlnum(address[end]) || (end > 0 && address[end] == '+') ||
                                  (end > 0 && address[end] == '-') || (end > 0 && address[end] == '.'))) {
    ++end;
  }
  return end > 1 && end < address.size() && address[end] == ':' ? end + 1 : 0;
}

// The file that an address names, as browsers read it. Nothing when it is no local file.
std::optional<std::string> LocalPath(std::string address) {
  std::erase_if(address, [](char c) { return c == '\n' || c == '\r' || c == '\t'; });
  std::replace(address.begin(), address.end(), '\\', '/');
  std::string_view rest = platform::Trim(address);
  if (rest.find("$*Merge") != std::string_view::npos) return std::nullopt;
  const std::size_t scheme = SchemeLength(rest);
  if (scheme > 0) {
    if (!StartsWithIgnoringAsciiCase(rest, "file:")) return std::nullopt;
    rest.remove_prefix(scheme);
    if (StartsWithIgnoringAsciiCase(rest, "//localhost/")) rest.remove_prefix(std::string_view("//localhost").size());
    if (rest.starts_with("///")) rest.remove_prefix(2);
  }
  if (rest.starts_with("//")) return std::nullopt;
  rest = rest.substr(0, rest.find_first_of("?#"));
  if (rest.empty()) return std::nullopt;
  return PercentDecoded(rest);
}

// Style sheets and fonts come by url() too.
bool IsPicture(std::string_view path) {
  constexpr std::array kOthers = {".css", ".woff", ".woff2", ".ttf", ".otf", ".eot"};
  const std::string lower = platform::AsciiLower(path);
  return std::none_of(kOthers.begin(), kOthers.end(), [&](const char* other) { return lower.ends_with(other); });
}

// The quote at the start of CSS; in an attribute it may be written as a character reference. Length 0: none.
struct Quote {
  char mark = 0;
  std::size_t length = 0;
};

Quote ReadQuote(std::string_view css, bool in_attribute) {
  if (css.empty()) return {};
  if (css.front() == '"' || css.front() == '\'') return {css.front(), 1};
  if (!in_attribute || css.front() != '&') return {};
  constexpr std::array<std::pair<std::string_view, char>, 6> kReferences = {
      {{"&quot;", '"'}, {"&#34;", '"'}, {"&#x22;", '"'}, {"&apos;", '\''}, {"&#39;", '\''}, {"&#x27;", '\''}}};
  for (const auto& [reference, mark] : kReferences) {
    if (StartsWithIgnoringAsciiCase(css, reference)) return {mark, reference.size()};
  }
  return {};
}

class Finder {
 public:
  explicit Finder(std::string_view html) : html_(html) {}

  std::vector<PictureReference> Run() {
    HtmlTokenizer tokenizer(html_);
    HtmlToken token;
    bool in_style = false;
    while (tokenizer.Next(token)) {
      if (token.kind == HtmlTokenKind::kStartTag) LookAtTag(tokenizer, token);
      if (token.kind == HtmlTokenKind::kRawText && in_style) LookAtCss(token.begin, token.end, false);
      in_style = token.kind == HtmlTokenKind::kStartTag && token.name == "style";
    }
    std::sort(found_.begin(), found_.end(), [](const auto& a, const auto& b) { return a.offset < b.offset; });
    return std::move(found_);
  }

 private:
  void LookAtTag(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
    for (const PictureAttribute& row : kPictureAttributes) {
      if (!row.element.empty() && row.element != token.name) continue;
      const HtmlAttribute* const attribute = tokenizer.Find(token, row.attribute);
      if (attribute == nullptr) continue;
      const std::size_t begin = attribute->value_begin;
      const std::size_t end = attribute->value_end;
      if (row.holds == Holds::kAddress) Add(begin, end, true);
      if (row.holds == Holds::kCandidates) LookAtCandidates(begin, end);
      if (row.holds == Holds::kCss) LookAtCss(begin, end, true);
    }
  }

  void Add(std::size_t begin, std::size_t end, bool decode) {
    while (begin < end && IsSpace(html_[begin])) ++begin;
    while (end > begin && IsSpace(html_[end - 1])) --end;
    const std::string_view raw = html_.substr(begin, end - begin);
    auto path = LocalPath(decode ? DecodeCharacterReferences(raw, true) : std::string(raw));
    if (path && IsPicture(*path)) found_.push_back({begin, end - begin, std::move(*path)});
  }

  // srcset: addresses without blanks, each with an optional description up to a comma.
  void LookAtCandidates(std::size_t at, std::size_t end) {
    while (at < end) {
      while (at < end && (IsSpace(html_[at]) || html_[at] == ',')) ++at;
      const std::size_t begin = at;
      while (at < end && !IsSpace(html_[at])) ++at;
      std::size_t address_end = at;
      while (address_end > begin && html_[address_end - 1] == ',') --address_end;
      if (address_end > begin) Add(begin, address_end, true);
      if (address_end == at) at = std::min(html_.find(',', at), end);
    }
  }

  void LookAtCss(std::size_t at, std::size_t end, bool in_attribute) {
    bool importing = false;  // from "@import" to its semicolon
    while (at < end) {
      const std::string_view rest = html_.substr(at, end - at);
      if (rest.starts_with("/*")) {
        const std::size_t close = rest.find("*/", 2);
        at = close == std::string_view::npos ? end : at + close + 2;
      } else if (StartsWithIgnoringAsciiCase(rest, "@import")) {
        importing = true;
        at += std::string_view("@import").size();
      } else if (StartsWithIgnoringAsciiCase(rest, "url(")) {
        at = ReadUrl(at + 4, end, in_attribute, importing);
      } else {
        importing = importing && rest.front() != ';';
        ++at;
      }
    }
  }

  // Reads what stands in url(...) and gives the offset to go on at.
  std::size_t ReadUrl(std::size_t at, std::size_t end, bool in_attribute, bool importing) {
    while (at < end && IsSpace(html_[at])) ++at;
    const Quote quote = ReadQuote(html_.substr(at, end - at), in_attribute);
    const std::size_t begin = at += quote.length;
    for (; at < end; ++at) {
      const char c = html_[at];
      if (quote.length == 0 ? c == ')'
                            : c == '\n' || ReadQuote(html_.substr(at, end - at), in_attribute).mark == quote.mark) {
        break;
      }
    }
    if (at < end && html_[at] != '\n' && !importing) Add(begin, at, in_attribute);
    return at;
  }

  std::string_view html_;
  std::vector<PictureReference> found_;
};

}  // namespace

std::vector<PictureReference> FindLocalPictures(std::string_view html) { return Finder(html).Run(); }

std::string RewriteReferences(std::string_view html, const std::vector<PictureReference>& references,
                              const std::vector<std::string>& replacements) {
  std::string out;
  std::size_t at = 0;
  for (std::size_t i = 0; i < references.size() && i < replacements.size(); ++i) {
    if (replacements[i].empty()) continue;
    out += html.substr(at, references[i].offset - at);
    out += replacements[i];
    at = references[i].offset + references[i].length;
  }
  out += html.substr(at);
  return out;
}

}  // namespace quillcast::mime
