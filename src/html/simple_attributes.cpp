#include "html/simple_attributes.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// A property or attribute, and up to what number its value is one that people mean.
struct Known {
  std::string_view name;
  int most;
};

constexpr int kPage = 2000;  // pixels
constexpr auto kAttributes = std::to_array<Known>({{"align", 0},
                                                   {"alt", kPage},
                                                   {"bgcolor", kPage},
                                                   {"border", 20},
                                                   {"cellpadding", 100},
                                                   {"cellspacing", 100},
                                                   {"color", kPage},
                                                   {"colspan", 1000},
                                                   {"face", kPage},
                                                   {"height", kPage},
                                                   {"rowspan", 1000},
                                                   {"size", 7},
                                                   {"start", kPage},
                                                   {"type", 0},
                                                   {"valign", 0},
                                                   {"width", kPage}});
constexpr auto kProperties = std::to_array<Known>({{"background-color", kPage},
                                                   {"color", kPage},
                                                   {"font-family", kPage},
                                                   {"font-size", 100},
                                                   {"font-style", 0},
                                                   {"font-weight", 900},
                                                   {"list-style-type", 0},
                                                   {"margin-bottom", 100},
                                                   {"margin-left", 200},
                                                   {"margin-right", 200},
                                                   {"margin-top", 100},
                                                   {"text-align", 0},
                                                   {"text-decoration", 0},
                                                   {"text-indent", 200},
                                                   {"vertical-align", 0}});

template <typename Table>
const Known* FindIn(const Table& table, std::string_view name) {
  const auto found = std::find_if(table.begin(), table.end(), [&](const Known& known) { return known.name == name; });
  return found == table.end() ? nullptr : &*found;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Whether each number in it is at most that; those of a colour ("#336699") are none.
bool IsWithin(std::string_view value, int most) {
  if (value.starts_with('#')) return value.size() <= 9;
  for (std::size_t i = 0; i < value.size();) {
    if (!IsDigit(value[i])) {
      ++i;
      continue;
    }
    long number = 0;
    for (; i < value.size() && IsDigit(value[i]); ++i) number = std::min(number * 10 + (value[i] - '0'), 1000000L);
    if (number > most) return false;
  }
  return true;
}

void Append(std::string& out, std::string_view name, std::string_view value) {
  out.append(" ").append(name).append("=\"").append(EscapedForHtml(value)).append("\"");
}

bool IsPlainValue(std::string_view value) {
  const bool is_rgb = value.starts_with("rgb(") && value.ends_with(")");
  const std::string_view inner = is_rgb ? value.substr(4, value.size() - 5) : value;
  return inner.size() <= 200 && std::all_of(inner.begin(), inner.end(), [](unsigned char c) {
           return c >= 0x80 || std::string_view("#%.,- '").find(static_cast<char>(c)) != std::string_view::npos ||
                  platform::AsciiIsAlnum(static_cast<char>(c));
         });
}

// One declaration, "color: red", as it may be kept; empty where not.
std::string SimpleDeclaration(std::string_view declaration) {
  const std::size_t colon = declaration.find(':');
  if (colon == std::string_view::npos) return {};
  std::string name = platform::AsciiLower(platform::Trim(declaration.substr(0, colon)));
  std::string value(platform::Trim(declaration.substr(colon + 1)));
  if (const std::size_t important = value.find('!'); important != std::string::npos)
    value = platform::Trim(value.substr(0, important));
  std::replace(value.begin(), value.end(), '"', '\'');
  if (name == "background") name = "background-color";
  const Known* known = FindIn(kProperties, name);
  if (known == nullptr || value.empty() || !IsPlainValue(value) || !IsWithin(value, known->most)) return {};
  return name + ":" + value;
}

std::string SimpleStyle(std::string_view style) {
  std::string kept;
  while (!style.empty()) {
    const std::size_t end = std::min(style.find(';'), style.size());
    const std::string declaration = SimpleDeclaration(style.substr(0, end));
    if (!declaration.empty()) kept.append(kept.empty() ? "" : ";").append(declaration);
    style.remove_prefix(std::min(end + 1, style.size()));
  }
  return kept;
}

constexpr std::size_t kLongestAddress = 4000;

std::optional<std::string> SimpleAddress(const HtmlTokenizer& page, const HtmlToken& tag) {
  const bool is_link = tag.name == "a";
  std::string address = page.Value(tag, is_link ? "href" : "src");
  address = platform::Trim(address);
  const auto schemes = is_link ? std::vector<std::string_view>{"http:", "https:", "mailto:", "tel:"}
                               : std::vector<std::string_view>{"cid:"};
  const bool fits = std::any_of(schemes.begin(), schemes.end(), [&](std::string_view scheme) {
    return platform::StartsWithIgnoringAsciiCase(address, scheme);
  });
  if (!fits || address.size() > kLongestAddress) return std::nullopt;
  return address;
}

constexpr auto kFewSpans = std::to_array<Known>({{"colspan", 12}, {"rowspan", 4}});

}  // namespace

bool IsLongSpan(const HtmlTokenizer& page, const HtmlAttribute& attribute) {
  const Known* known = FindIn(kFewSpans, platform::AsciiLower(page.RawName(attribute)));
  return known != nullptr && !IsWithin(page.RawValue(attribute), known->most);
}

std::string SimpleAttributes(const HtmlTokenizer& page, const HtmlToken& tag, std::string_view written, Spans spans) {
  std::string kept;
  // The view paints the ground of a division by its style alone.
  const std::string ground = written == "div" ? page.Value(tag, "bgcolor") : std::string();
  const bool has_style = tag.name == "body" || !ground.empty();  // made of other attributes too
  if (has_style) {
    const std::string text = tag.name == "body" ? page.Value(tag, "text") : std::string();
    const std::string style =
        SimpleStyle("color:" + text + ";background-color:" + ground + ";" + page.Value(tag, "style"));
    if (!style.empty()) Append(kept, "style", style);
  }
  for (const HtmlAttribute& attribute : tag.attributes) {
    if (spans == Spans::kFew && IsLongSpan(page, attribute)) continue;
    const std::string_view whole = page.Source(tag);
    const std::string name =
        platform::AsciiLower(whole.substr(attribute.name_begin - tag.begin, attribute.name_end - attribute.name_begin));
    const std::string value = DecodeCharacterReferences(page.RawValue(attribute), true);
    if (has_style && (name == "style" || (name == "bgcolor" && !ground.empty()))) continue;
    if (name == "style") {
      const std::string style = SimpleStyle(value);
      if (!style.empty()) Append(kept, name, style);
    } else if (name == "alt") {
      Append(kept, name, std::string_view(value).substr(0, kLongestAddress));
    } else if (const Known* known = FindIn(kAttributes, name); known != nullptr &&
                                                               !(tag.name == "img" && name == "align") &&
                                                               IsPlainValue(value) && IsWithin(value, known->most)) {
      Append(kept, name, value);
    }
  }
  if (tag.name == "a" || tag.name == "img") {
    if (const auto address = SimpleAddress(page, tag)) Append(kept, tag.name == "a" ? "href" : "src", *address);
  }
  return kept;
}

}  // namespace quillcast::html
