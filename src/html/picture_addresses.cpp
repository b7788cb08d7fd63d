#include "html/picture_addresses.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "html/characters.h"
#include "html/unquoted_path.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// More candidates than this in one srcset are passed over; memory stays small on hostile input.
constexpr std::size_t kMostCandidates = 1000;

enum class PictureValue : std::uint8_t { kAddress, kCandidates, kCss };

// Which attributes hold pictures; an empty element stands for every one.
struct PictureAttribute {
  std::string_view element;
  std::string_view attribute;
  PictureValue holds;
};
constexpr std::array kPictureAttributes = {
    PictureAttribute{"img", "src", PictureValue::kAddress},
    PictureAttribute{"input", "src", PictureValue::kAddress},
    PictureAttribute{"v:fill", "src", PictureValue::kAddress},
    PictureAttribute{"v:image", "src", PictureValue::kAddress},
    PictureAttribute{"v:imagedata", "src", PictureValue::kAddress},
    PictureAttribute{"video", "poster", PictureValue::kAddress},
    PictureAttribute{"img", "srcset", PictureValue::kCandidates},
    PictureAttribute{"source", "srcset", PictureValue::kCandidates},
    PictureAttribute{"", "background", PictureValue::kAddress},
    PictureAttribute{"", "style", PictureValue::kCss},
};

const PictureAttribute* FindRow(std::string_view element, std::string_view attribute) {
  const auto* const row = std::find_if(kPictureAttributes.begin(), kPictureAttributes.end(), [&](const auto& it) {
    return (it.element.empty() || it.element == element) && platform::EqualsIgnoringAsciiCase(it.attribute, attribute);
  });
  return row == kPictureAttributes.end() ? nullptr : row;
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

// "2x", "300w": a number and what it counts.
bool IsDescription(std::string_view word) {
  if (word.empty() || std::string_view("xwh").find(platform::AsciiLower(word.back())) == std::string_view::npos) {
    return false;
  }
  word.remove_suffix(1);
  return !word.empty() && word.find_first_not_of("0123456789.+-eE") == std::string_view::npos;
}

// Of a path with blanks, put there as it is: all but its descriptions.
std::string_view WithoutDescriptions(std::string_view candidate) {
  for (;;) {
    candidate = Trimmed(candidate);
    const std::size_t blank = candidate.find_last_of(kSpaces);
    if (blank == std::string_view::npos || !IsDescription(candidate.substr(blank + 1))) return candidate;
    candidate = candidate.substr(0, blank);
  }
}

}  // namespace

void EachCandidate(std::string_view rest, const TakePicture& take) {
  for (std::size_t count = 0; count < kMostCandidates; ++count) {
    while (!rest.empty() && (IsSpace(rest.front()) || rest.front() == ',')) rest.remove_prefix(1);
    if (rest.empty()) return;
    const auto end = static_cast<std::size_t>(std::find_if(rest.begin(), rest.end(), IsSpace) - rest.begin());
    std::string_view address = rest.substr(0, end);
    const bool described = address.back() != ',';
    while (address.ends_with(',')) address.remove_suffix(1);
    const std::size_t next = described ? std::min(rest.find(',', end), rest.size()) : end;
    if (rest.substr(end, next - end).find_first_of("/\\") != std::string_view::npos) {
      address = WithoutDescriptions(rest.substr(0, next));
    }
    take(address, DecodeCharacterReferences(address, true));
    rest.remove_prefix(next);
  }
}

void EachPictureOf(const HtmlTokenizer& page, const HtmlToken& tag, const TakePicture& take) {
  for (const HtmlAttribute& attribute : tag.attributes) {
    const PictureAttribute* const row = FindRow(tag.name, page.RawName(attribute));
    if (row == nullptr || page.Find(tag, row->attribute) != &attribute) continue;  // the first of a name counts
    const std::string_view value = Trimmed(WholeValue(page, tag, attribute));
    if (row->holds == PictureValue::kAddress) take(value, DecodeCharacterReferences(value, true));
    if (row->holds == PictureValue::kCandidates) EachCandidate(value, take);
    if (row->holds == PictureValue::kCss) EachPictureInStyles(value, CssPlace::kAttribute, take);
  }
}

bool NamesPictures(std::string_view element, std::string_view attribute) {
  return FindRow(element, attribute) != nullptr;
}

void EachPictureInStyles(std::string_view css, CssPlace place, const TakePicture& take) {
  for (const CssRange& range : FindCssAddresses(css, place)) {
    const std::string_view written = css.substr(range.begin, range.end - range.begin);
    take(written, DecodeCssAddress(written, place));
  }
}

}  // namespace quillcast::html
