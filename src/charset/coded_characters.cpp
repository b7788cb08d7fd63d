#include "charset/coded_characters.h"

#include <unicode/ucnv.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "charset/converter.h"
#include "platform/utf8.h"

namespace quillcast::charset {
namespace {

// Where a converter departs from the standard of the set, or readers disagree about the bytes: these are left out (0).
struct Correction {
  std::string_view converter;
  std::uint32_t bytes;
  char32_t code;
};
constexpr auto kCorrections = std::to_array<Correction>({
    {"ibm-5349_P100-1998", 0xAA, 0},  // windows-1253 has nothing here
    {"ibm-1383_P110-1999", 0xA3A7, 0xFF07}, {"ibm-954_P101-2007", 0xA1BD, 0x2015},
    {"ibm-954_P101-2007", 0xA1F1, 0xA2},    {"ibm-954_P101-2007", 0xA1F2, 0xA3},
    {"ibm-954_P101-2007", 0xA2CC, 0xAC},    {"ibm-954_P101-2007", 0x8FA2B7, 0},  // a second tilde
    {"windows-949-2000", 0xA4D4, 0},                                             // the filler of composed syllables
    {"windows-950-2000", 0xA145, 0},  // a bullet to some, a hyphenation point to others; and so on
    {"windows-950-2000", 0xA14E, 0},        {"windows-950-2000", 0xA1C2, 0},
    {"windows-950-2000", 0xA1E3, 0},        {"windows-950-2000", 0xA1F2, 0},
    {"windows-950-2000", 0xA1F3, 0},        {"windows-950-2000", 0xA241, 0},
    {"windows-950-2000", 0xA242, 0},        {"windows-950-2000", 0xA244, 0},
    {"windows-950-2000", 0xA246, 0},        {"windows-950-2000", 0xA247, 0},
    {"windows-950-2000", 0xA2CC, 0},                                          // A2CC and A2CE repeat A451 and A4CA
    {"windows-950-2000", 0xA2CE, 0},        {"windows-950-2000", 0xA3E1, 0},  // the euro sign came later
});

// The one character of these bytes, 0 when there is none. Private characters are the library's own stopgaps, and the
// control characters from U+0080 stand where a Windows set has nothing; where an ISO set does have them, readers that
// take it for its Windows neighbour see something else.
char32_t Converted(UConverter* converter, std::string_view name, std::uint32_t bytes) {
  for (const Correction& correction : kCorrections) {
    if (correction.bytes == bytes && correction.converter == name) return correction.code;
  }
  std::array<char, 4> packed{};
  std::size_t size = 0;
  for (int shift = 24; shift >= 0; shift -= 8) {
    if (size > 0 || (bytes >> shift) != 0) packed[size++] = static_cast<char>(bytes >> shift);
  }
  std::array<char16_t, 8> text{};
  UErrorCode status = U_ZERO_ERROR;
  const int length = ucnv_toUChars(converter, text.data(), text.size(), packed.data(), static_cast<int>(size), &status);
  const char32_t code = text[0];
  const bool is_private = code >= 0xE000 && code < 0xF900;
  if (U_FAILURE(status) || length != 1 || code < 0xA0 || is_private || code == platform::kReplacement) return 0;
  return code;
}

// The bytes of a text one after the other, 0 when a character is missing or they are more than four.
std::uint32_t Spelled(const CodedCharacters& characters, std::u16string_view text) {
  std::uint64_t all = 0;
  for (const char16_t code : text) {
    const std::uint32_t bytes = code < 0x80 ? code : characters.BytesOf(code);
    if (bytes == 0) return 0;
    for (std::uint32_t rest = bytes; rest != 0; rest >>= 8) all <<= 8;
    all |= bytes;
    if (all > 0xFFFFFFFF) return 0;
  }
  return static_cast<std::uint32_t>(all);
}

std::u16string Normalized(const UNormalizer2* form, std::u16string_view text) {
  std::array<char16_t, 16> normalized{};
  UErrorCode status = U_ZERO_ERROR;
  const int length =
      unorm2_normalize(form, text.data(), static_cast<int>(text.size()), normalized.data(), normalized.size(), &status);
  return U_FAILURE(status) ? std::u16string() : std::u16string(normalized.data(), static_cast<std::size_t>(length));
}

// A letter is spelled in full, or as a letter that the set has and one mark more: a, dot below, circumflex is written
// as a with circumflex, dot below. Two marks on the same side keep their order.
std::uint32_t SpelledLetter(const CodedCharacters& characters, std::u16string_view decomposed) {
  if (const std::uint32_t bytes = Spelled(characters, decomposed); bytes != 0) return bytes;
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* const composer = unorm2_getNFCInstance(&status);
  const UNormalizer2* const decomposer = unorm2_getNFDInstance(&status);
  for (std::size_t mark = 1; mark < decomposed.size(); ++mark) {
    std::u16string rest(decomposed);
    rest.erase(mark, 1);
    const std::u16string both = Normalized(composer, rest) + decomposed[mark];
    if (both.size() != 2 || Normalized(decomposer, both) != decomposed) continue;
    if (const std::uint32_t bytes = Spelled(characters, both); bytes != 0) return bytes;
  }
  return 0;
}

// Vietnamese letters and Hebrew presentation forms, in the sets that have the marks on their own.
void AddSpelledLetters(CodedCharacters& characters) {
  constexpr char32_t kAcute = 0x301;
  constexpr char32_t kSheva = 0x5B0;
  if (characters.BytesOf(kAcute) == 0 && characters.BytesOf(kSheva) == 0) return;
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* const decomposer = unorm2_getNFDInstance(&status);
  if (U_FAILURE(status)) return;
  const auto add = [&](char32_t first, char32_t last) {
    for (char32_t code = first; code <= last; ++code) {
      std::array<char16_t, 8> text{};
      const int length =
          unorm2_getDecomposition(decomposer, static_cast<UChar32>(code), text.data(), text.size(), &status);
      if (U_FAILURE(status) || length < 1 || characters.BytesOf(code) != 0) continue;
      characters.AddSpelling(SpelledLetter(characters, {text.data(), static_cast<std::size_t>(length)}), code);
    }
  };
  add(0xC0, 0x1FFF);
  add(0xFB1D, 0xFB4E);
}

}  // namespace

void CodedCharacters::Add(std::uint32_t bytes, char32_t code) {
  by_bytes_.push_back({bytes, code});
  AddSpelling(bytes, code);
}

void CodedCharacters::AddSpelling(std::uint32_t bytes, char32_t code) {
  if (bytes == 0) return;
  std::uint16_t& page = pages_[code >> 8];
  if (page == 0) {
    page = static_cast<std::uint16_t>(cells_.size() / 256);
    cells_.resize(cells_.size() + 256);
  }
  std::uint32_t& cell = cells_[page * 256U + (code & 0xFF)];
  if (cell == 0) cell = bytes;
}

char32_t CodedCharacters::CharacterOf(std::uint32_t bytes) const {
  const auto found = std::ranges::lower_bound(by_bytes_, bytes, {}, &Coded::bytes);
  return found != by_bytes_.end() && found->bytes == bytes ? found->code : platform::kReplacement;
}

CodedCharacters ReadCharacters(const CharacterSource& source) {
  constexpr char32_t kPrivate = 0xF700;
  CodedCharacters characters;
  Converter converter;
  if (source.converter != nullptr) {
    converter = OpenConverter(source.converter);
    if (!converter) return characters;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  }
  for (const ByteArea& area : source.areas) {
    for (std::uint32_t lead = area.first_lead; lead <= area.last_lead; ++lead) {
      for (std::uint32_t trail = area.first_trail; trail <= area.last_trail; ++trail) {
        const std::uint32_t bytes = lead << 8 | trail;
        const char32_t code = converter ? Converted(converter.get(), source.converter, bytes) : kPrivate + bytes;
        if (code != 0) characters.Add(source.recode != nullptr ? source.recode(bytes) : bytes, code);
      }
    }
  }
  AddSpelledLetters(characters);
  return characters;
}

}  // namespace quillcast::charset
