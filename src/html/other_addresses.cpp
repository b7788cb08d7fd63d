#include "html/other_addresses.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "html/characters.h"
#include "html/local_name.h"
#include "html/unquoted_path.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

enum class OtherValue : std::uint8_t { kAddress, kAddresses, kCandidates, kParameter, kRefresh };

// An empty element stands for every one.
struct OtherAttribute {
  std::string_view element;
  std::string_view attribute;
  OtherValue holds;
};
constexpr auto kOtherAttributes = std::to_array<OtherAttribute>({
    {"", "href", OtherValue::kAddress},         {"", "src", OtherValue::kAddress},
    {"", "longdesc", OtherValue::kAddress},     {"", "lowsrc", OtherValue::kAddress},
    {"", "dynsrc", OtherValue::kAddress},       {"", "action", OtherValue::kAddress},
    {"", "formaction", OtherValue::kAddress},   {"", "data", OtherValue::kAddress},
    {"", "cite", OtherValue::kAddress},         {"", "codebase", OtherValue::kAddress},
    {"", "archive", OtherValue::kAddress},      {"", "manifest", OtherValue::kAddress},
    {"", "classid", OtherValue::kAddress},      {"", "profile", OtherValue::kAddress},
    {"", "xlink:href", OtherValue::kAddress},   {"", "o:href", OtherValue::kAddress},
    {"", "ping", OtherValue::kAddresses},       {"", "imagesrcset", OtherValue::kCandidates},
    {"param", "value", OtherValue::kParameter}, {"meta", "content", OtherValue::kRefresh},
});

void Take(std::string_view written, const TakePicture& take) {
  take(written, DecodeCharacterReferences(written, true));
}

// None of those with a file among them: its path may have blanks, so that they go as a whole.
void EachBetweenBlanks(std::string_view value, const TakePicture& take) {
  if (AddressesNameLocalFile(DecodeCharacterReferences(value, true))) return;
  while (true) {
    const std::size_t begin = value.find_first_not_of(kSpaces);
    if (begin == std::string_view::npos) return;
    const std::size_t end = std::min(value.find_first_of(kSpaces, begin), value.size());
    Take(value.substr(begin, end - begin), take);
    value.remove_prefix(end);
  }
}

// "0; url=x.html", "5;URL='x.html'", "0;x.html".
void TakeRefresh(std::string_view value, const TakePicture& take) {
  const auto pass = [&value](std::string_view signs) {
    value.remove_prefix(std::min(value.find_first_not_of(signs), value.size()));
  };
  pass(" \n\t\r\f0123456789.");
  pass(" \n\t\r\f;,");
  if (platform::StartsWithIgnoringAsciiCase(value, "url")) {
    value.remove_prefix(3);
    pass(" \n\t\r\f=");
  }
  const bool is_quoted = value.starts_with('"') || value.starts_with('\'');
  const std::size_t end = is_quoted ? std::min(value.find(value.front(), 1), value.size()) : value.size();
  if (!value.empty()) Take(platform::Trim(value.substr(is_quoted ? 1 : 0, is_quoted ? end - 1 : end)), take);
}

// What a player or an applet of old is told to load.
bool IsAddress(std::string_view parameter) {
  constexpr auto kNames = std::to_array<std::string_view>({"data", "filename", "href", "movie", "src", "url"});
  return std::find(kNames.begin(), kNames.end(), platform::AsciiLower(platform::Trim(parameter))) != kNames.end();
}

bool IsRefresh(std::string_view directive) {
  return platform::EqualsIgnoringAsciiCase(platform::Trim(directive), "refresh");
}

}  // namespace

void EachOtherAddressOf(const HtmlTokenizer& page, const HtmlToken& tag, const TakePicture& take) {
  for (const HtmlAttribute& attribute : tag.attributes) {
    const std::string name = platform::AsciiLower(page.RawName(attribute));
    const auto* const row = std::find_if(kOtherAttributes.begin(), kOtherAttributes.end(), [&](const auto& it) {
      return it.attribute == name && (it.element.empty() || it.element == tag.name);
    });
    if (row == kOtherAttributes.end() || NamesPictures(tag.name, name)) continue;
    const std::string_view value = platform::Trim(WholeValue(page, tag, attribute));
    if (row->holds == OtherValue::kAddress) Take(value, take);
    if (row->holds == OtherValue::kAddresses) EachBetweenBlanks(value, take);
    if (row->holds == OtherValue::kCandidates) EachCandidate(value, take);
    if (row->holds == OtherValue::kParameter && IsAddress(page.Value(tag, "name"))) Take(value, take);
    if (row->holds == OtherValue::kRefresh && IsRefresh(page.Value(tag, "http-equiv"))) TakeRefresh(value, take);
  }
}

}  // namespace quillcast::html
