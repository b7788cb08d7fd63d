#include "html/simple_attributes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "html/colour_names.h"
#include "html/safe_page.h"
#include "html/said_colours.h"
#include "html/style_values.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// A property or attribute, and up to what number its value is one that people mean.
struct LimitedName {
  std::string_view name;
  int most;
};

constexpr int kPage = 2000;  // pixels
constexpr auto kSimpleAttributes = std::to_array<LimitedName>({{"align", 0},
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
constexpr auto kSimpleProperties = std::to_array<LimitedName>({{"background-color", kPage},
                                                               {"color", kPage},
                                                               {"font-family", kPage},
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
const LimitedName* FindIn(const Table& table, std::string_view name) {
  const auto found =
      std::find_if(table.begin(), table.end(), [&](const LimitedName& known) { return known.name == name; });
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

// A colour as the view reads it; empty for what is none.
std::string SimpleColour(std::string_view value) {
  const auto colour = ReadColour(value);
  if (!colour) return {};
  const bool is_short = value.starts_with('#') && (value.size() == 4 || value.size() == 7);
  const bool is_read = is_short || NamedColour(platform::AsciiLower(value)).has_value();
  return is_read ? std::string(value) : ColourInWords(*colour);
}

std::string AttributeColour(std::string_view value) {
  value = platform::Trim(value);
  std::string simple = SimpleColour(value);
  const auto colour = simple.empty() ? ReadAttributeColour(value) : std::nullopt;
  return colour ? ColourInWords(*colour) : simple;
}

// One declaration, "color:red", as it may be kept; empty where not.
std::string SimpleDeclaration(std::string_view property, std::string_view given, double points) {
  const bool is_ground = property == "background" || property == "background-color";
  const std::string_view name = is_ground ? "background-color" : property;
  std::string value(given);
  if (is_ground || name == "color") value = SimpleColour(is_ground ? GroundIn(given) : given);
  if (name.starts_with("margin-") || name == "text-indent") {
    const auto pixels = ReadLength(given, points, kUsualPoints);
    value = pixels ? fmt::format("{:.0f}px", *pixels) : std::string();
  }
  std::replace(value.begin(), value.end(), '"', '\'');
  const LimitedName* known = FindIn(kSimpleProperties, name);
  if (known == nullptr || value.empty() || !IsPlainValue(value) || !IsWithin(value, known->most)) return {};
  return std::string(name) + ":" + value;
}

std::string SimpleStyle(std::string_view style, const Told& told) {
  std::string kept = told.size.empty() ? "" : "font-size:" + told.size;
  if (!told.letters.empty()) kept.append(kept.empty() ? "" : ";").append("color:").append(told.letters);
  EachDeclaration(style, [&](std::string_view property, std::string_view value) {
    const std::string declaration = SimpleDeclaration(property, value, told.points);
    if (!declaration.empty()) kept.append(kept.empty() ? "" : ";").append(declaration);
  });
  return kept;
}

constexpr std::size_t kLongestAddress = 4000;

std::optional<std::string> SimpleAddress(const HtmlTokenizer& page, const HtmlToken& tag) {
  const bool is_link = tag.name == "a";
  std::string address = page.Value(tag, is_link ? "href" : "src");
  address = platform::Trim(address);
  const bool fits = is_link ? MayBeFollowed(address) && !address.starts_with('#')
                            : platform::StartsWithIgnoringAsciiCase(address, "cid:");
  if (!fits || address.size() > kLongestAddress) return std::nullopt;
  return address;
}

constexpr auto kFewSpans = std::to_array<LimitedName>({{"colspan", 12}, {"rowspan", 4}});

}  // namespace

std::string ColourInWords(std::uint32_t colour) { return fmt::format("#{:06x}", colour); }

bool IsLongSpan(const HtmlTokenizer& page, const HtmlAttribute& attribute) {
  const LimitedName* known = FindIn(kFewSpans, platform::AsciiLower(page.RawName(attribute)));
  return known != nullptr && !IsWithin(page.RawValue(attribute), known->most);
}

std::string ToldAttributes(std::string_view written, const Told& told) {
  std::string attributes;
  if (written == "table" && !told.ground.empty()) Append(attributes, "bgcolor", told.ground);
  const std::string style =
      SimpleStyle(written == "table" || told.ground.empty() ? "" : "background-color:" + told.ground, told);
  if (!style.empty()) Append(attributes, "style", style);
  return attributes;
}

// What a style says of the width or height of a table, cell or picture, which the view hears as an attribute alone;
// nothing where the attribute counts.
std::optional<std::string> StyledSide(const HtmlTokenizer& page, const HtmlToken& tag, std::string_view written,
                                      std::string_view side) {
  const bool is_picture = written == "img";
  if (!is_picture && (side != "width" || (written != "table" && written != "td" && written != "th"))) return {};
  std::optional<std::string> found;
  EachDeclaration(page.Value(tag, "style"), [&](std::string_view property, std::string_view value) {
    if (property != side) return;
    const auto number = platform::ParseWholeNumber(value.substr(0, value.find_first_not_of("0123456789")));
    const auto pixels = ReadLength(value, kUsualPoints, kUsualPoints);
    if (pixels && *pixels >= 1 && *pixels <= kPage) found = fmt::format("{:.0f}", *pixels);
    if (!is_picture && value.ends_with('%') && number && *number >= 1 && *number <= 100)
      found = fmt::format("{}%", *number);
    if (is_picture && platform::EqualsIgnoringAsciiCase(value, "auto")) found = "";
  });
  return found;
}

std::string SimpleAttributes(const HtmlTokenizer& page, const HtmlToken& tag, std::string_view written,
                             const Told& told, Spans spans) {
  std::string kept;
  const bool has_ground = written == "table" && !told.ground.empty();
  if (has_ground) Append(kept, "bgcolor", told.ground);
  // The view paints the ground of a division by its style alone.
  std::string own = written == "div" ? AttributeColour(page.Value(tag, "bgcolor")) : std::string();
  if (own.empty() && !has_ground) own = told.ground;
  const bool has_style =
      tag.name == "body" || !own.empty() || !told.size.empty() || !told.letters.empty();  // of other attributes too
  if (has_style) {
    const std::string text = tag.name == "body" ? AttributeColour(page.Value(tag, "text")) : std::string();
    const std::string style =
        SimpleStyle("color:" + text + ";background-color:" + own + ";" + page.Value(tag, "style"), told);
    if (!style.empty()) Append(kept, "style", style);
  }
  const auto width = StyledSide(page, tag, written, "width");
  const auto height = StyledSide(page, tag, written, "height");
  for (const HtmlAttribute& attribute : tag.attributes) {
    if (spans == Spans::kFew && IsLongSpan(page, attribute)) continue;
    const std::string_view whole = page.Source(tag);
    const std::string name =
        platform::AsciiLower(whole.substr(attribute.name_begin - tag.begin, attribute.name_end - attribute.name_begin));
    std::string value = DecodeCharacterReferences(page.RawValue(attribute), true);
    if (has_style && (name == "style" || (name == "bgcolor" && written == "div"))) continue;
    if ((name == "width" && width) || (name == "height" && height)) continue;
    if (name == "bgcolor" || name == "color") value = AttributeColour(value);
    if (value.empty() && (name == "bgcolor" || name == "color")) continue;
    if (name == "style") {
      const std::string style = SimpleStyle(value, told);
      if (!style.empty()) Append(kept, name, style);
    } else if (name == "alt") {
      Append(kept, name, std::string_view(value).substr(0, kLongestAddress));
    } else if (const LimitedName* known = FindIn(kSimpleAttributes, name);
               known != nullptr && !(tag.name == "img" && name == "align") && IsPlainValue(value) &&
               IsWithin(value, known->most)) {
      Append(kept, name, value);
    }
  }
  if (width && !width->empty()) Append(kept, "width", *width);
  if (height && !height->empty()) Append(kept, "height", *height);
  if (tag.name == "a" || tag.name == "img") {
    if (const auto address = SimpleAddress(page, tag)) Append(kept, tag.name == "a" ? "href" : "src", *address);
  }
  return kept;
}

}  // namespace quillcast::html
